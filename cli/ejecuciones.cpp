#include "cli/ejecuciones.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "platform/numero.h"

namespace telvane {

namespace {

using Propiedades = std::map<std::string, std::string, std::less<>>;

// "NAME=value" lines, an empty one between two units.
std::map<std::string, Propiedades> leerUnidades(std::string_view texto) {
    std::map<std::string, Propiedades> unidades;
    Propiedades una;
    const auto cerrar = [&] {
        if (const auto id = una.find("Id"); id != una.end()) unidades[id->second] = una;
        una.clear();
    };
    while (!texto.empty()) {
        const auto fin = std::min(texto.find('\n'), texto.size());
        const auto linea = texto.substr(0, fin);
        texto.remove_prefix(std::min(fin + 1, texto.size()));
        const auto igual = linea.find('=');
        if (linea.empty()) cerrar();
        if (igual != std::string_view::npos) una.emplace(linea.substr(0, igual), linea.substr(igual + 1));
    }
    cerrar();
    return unidades;
}

std::string_view propiedad(const Propiedades& unidad, std::string_view nombre) {
    const auto lugar = unidad.find(nombre);
    return lugar == unidad.end() ? std::string_view{} : std::string_view(lugar->second);
}

// "Sat 2026-11-21 02:17:03 UTC"
std::optional<std::chrono::sys_seconds> momentoEscrito(std::string_view texto) {
    using namespace std::chrono;
    constexpr std::size_t kLargo = 27;
    if (texto.size() != kLargo || !texto.ends_with(" UTC")) return std::nullopt;
    const auto parte = [&](std::size_t desde, std::size_t cifras) {
        return numeroDe<int>(texto.substr(desde, cifras)).value_or(-1);
    };
    const year_month_day dia{year(parte(4, 4)), month(static_cast<unsigned>(parte(9, 2))),
                             day(static_cast<unsigned>(parte(12, 2)))};
    const int hora = parte(15, 2);
    const int minuto = parte(18, 2);
    const int segundo = parte(21, 2);
    if (!dia.ok() || hora < 0 || minuto < 0 || segundo < 0) return std::nullopt;
    return sys_days(dia) + hours(hora) + minutes(minuto) + seconds(segundo);
}

// "@1795141023", and of some of them, which it writes out whatever it is asked for, the date; nothing for a
// moment that never was.
std::optional<std::chrono::sys_seconds> momento(std::string_view texto) {
    if (!texto.starts_with('@')) return momentoEscrito(texto);
    const auto segundos = numeroDe<std::int64_t>(texto.substr(1));
    if (!segundos || *segundos <= 0) return std::nullopt;
    return std::chrono::sys_seconds(std::chrono::seconds(*segundos));
}

// The unit of a station's timer, without ".timer"; nothing for another unit.
std::optional<std::string> temporizador(std::string_view unidad) {
    constexpr std::string_view kFinal = ".timer";
    const bool deEstacion =
        unidad.starts_with("telvane-descarga@") || unidad.starts_with("telvane-descarga-red@");
    if (!deEstacion || !unidad.ends_with(kFinal)) return std::nullopt;
    return std::string(unidad.substr(0, unidad.size() - kFinal.size()));
}

}  // namespace

std::vector<std::string> temporizadoresDeEstaciones(const Systemctl& systemctl) {
    const auto texto = systemctl ? systemctl({"show", "--property=Id,ActiveState,Wants", "timers.target",
                                              "telvane-descarga@*.timer", "telvane-descarga-red@*.timer"})
                                 : std::nullopt;
    std::set<std::string> todos;
    const auto agregar = [&](std::string_view unidad) {
        if (auto uno = temporizador(unidad)) todos.insert(std::move(*uno));
    };
    for (const auto& [id, propiedades] : leerUnidades(texto.value_or(""))) {
        if (propiedad(propiedades, "ActiveState") == "active") agregar(id);
        std::istringstream quiere{std::string(propiedad(propiedades, "Wants"))};
        for (std::string una; quiere >> una;) agregar(una);
    }
    return {todos.begin(), todos.end()};
}

std::optional<std::map<std::string, Ejecuciones>> ejecucionesDe(const Systemctl& systemctl,
                                                                const std::vector<std::string>& unidades) {
    std::map<std::string, Ejecuciones> todas;
    if (unidades.empty()) return todas;
    std::vector<std::string> argumentos = {
        "show", "--timestamp=unix",
        "--property=Id,ActiveState,NextElapseUSecRealtime,ExecMainStartTimestamp,Result,ExecMainCode,"
        "ExecMainStatus"};
    for (const auto& unidad : unidades) {
        argumentos.push_back(unidad + ".timer");
        argumentos.push_back(unidad + ".service");
    }
    const auto texto = systemctl ? systemctl(argumentos) : std::nullopt;
    if (!texto) return std::nullopt;
    const auto dichas = leerUnidades(*texto);
    for (const auto& unidad : unidades) {
        auto& suya = todas[unidad];
        if (const auto t = dichas.find(unidad + ".timer"); t != dichas.end()) {
            suya.encendida = propiedad(t->second, "ActiveState") == "active";
            suya.proxima = momento(propiedad(t->second, "NextElapseUSecRealtime"));
        }
        if (const auto s = dichas.find(unidad + ".service"); s != dichas.end()) {
            suya.enMarcha = propiedad(s->second, "ActiveState") == "activating";
            suya.ultima = momento(propiedad(s->second, "ExecMainStartTimestamp"));
            suya.resultado = propiedad(s->second, "Result");
            suya.codigo = numeroDe<int>(propiedad(s->second, "ExecMainStatus")).value_or(0);
            // CLD_KILLED, CLD_DUMPED
            const auto final = propiedad(s->second, "ExecMainCode");
            suya.porSenal = final == "2" || final == "3";
        }
    }
    return todas;
}

}  // namespace telvane
