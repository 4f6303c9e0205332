// telvane-cli puertos
#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "consola/json.h"
#include "link/protocolo.h"
#include "link/servicios_intrusos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

std::string ocupantes(const FichaPuerto& ficha) {
    std::vector<std::string> partes;
    for (const auto& [pid, nombre] : ficha.ocupantes)
        partes.push_back(fmt::format("{} (pid {})", nombre, pid));
    return fmt::format("{}", fmt::join(partes, ", "));
}

std::string_view nombreEstado(EstadoPuerto estado) {
    switch (estado) {
        case EstadoPuerto::libre:
            return "libre";
        case EstadoPuerto::ocupado:
            return "ocupado";
        case EstadoPuerto::sinPermiso:
            return "sin permiso";
        case EstadoPuerto::enRed:
            return "en red";
        case EstadoPuerto::ausente:
            break;
    }
    return "ausente";
}

// The state, and what it takes to change it.
std::string estado(const FichaPuerto& ficha) {
    std::string texto(nombreEstado(ficha.estado));
    if (ficha.estado == EstadoPuerto::ocupado) texto += " por " + ocupantes(ficha);
    if (!ficha.grupo.empty()) texto += fmt::format(": entre en el grupo {}", ficha.grupo);
    return texto;
}

std::string adaptador(const FichaPuerto& ficha) {
    std::vector<std::string> partes;
    for (const auto& parte : {ficha.fabricante, ficha.producto, ficha.serie}) {
        if (!parte.empty()) partes.push_back(parte);
    }
    return fmt::format("{}", fmt::join(partes, " "));
}

// One line: what is told stands in columns, what is not told is left out at the end.
std::string linea(int numero, const FichaPuerto& ficha) {
    auto texto = fmt::format("{:<6} {:<14} {}", fmt::format("COM{}", numero),
                             ficha.dispositivo.empty() ? "-" : ficha.dispositivo.string(), estado(ficha));
    for (const auto& parte : {adaptador(ficha), ficha.nombreEstable.string()}) {
        if (!parte.empty()) texto += "  " + parte;
    }
    return sinControles(texto) + "\n";
}

Json objeto(int numero, const FichaPuerto& ficha) {
    Json json;
    json.poner("puerto", numero);
    json.poner("dispositivo", ficha.dispositivo.string());
    json.poner("estado", nombreEstado(ficha.estado));
    json.poner("nombre_estable", ficha.nombreEstable.string());
    json.poner("fabricante", ficha.fabricante);
    json.poner("producto", ficha.producto);
    json.poner("serie", ficha.serie);
    json.poner("grupo", ficha.grupo);
    auto ocupantes = Json::lista();
    for (const auto& [pid, nombre] : ficha.ocupantes) {
        Json ocupante;
        ocupante.poner("pid", pid);
        ocupante.poner("nombre", nombre);
        ocupantes.agregar(std::move(ocupante));
    }
    json.poner("ocupantes", std::move(ocupantes));
    return json;
}

std::string_view remedio(ServicioIntruso servicio) {
    switch (servicio) {
        case ServicioIntruso::modem:
            return "ModemManager está en marcha: ocupa cada adaptador recién enchufado hasta medio minuto.\n"
                   "  Espere y repita. Si aquí nadie usa un módem: sudo systemctl disable --now ModemManager";
        case ServicioIntruso::braille:
            break;
    }
    return "brltty (líneas braille) está en marcha: puede adueñarse del adaptador, que así desaparece.\n"
           "  Si aquí nadie usa una línea braille: sudo systemctl disable --now brltty, y vuelva a "
           "enchufarlo";
}

// What keeps ports from being used, and what to do about it.
std::vector<std::string> remedios(const std::vector<FichaPuerto>& fichas, const RaicesSistema& raices) {
    std::vector<std::string> lista;
    std::set<std::string> grupos;
    for (const auto& ficha : fichas) {
        if (!ficha.grupo.empty()) grupos.insert(ficha.grupo);
    }
    lista.reserve(grupos.size());
    for (const auto& grupo : grupos) {
        lista.push_back(fmt::format(
            "Sin permiso: sudo adduser \"$USER\" {}, cierre la sesión y vuelva a entrar.", grupo));
    }
    const bool alguno = std::any_of(fichas.begin(), fichas.end(),
                                    [](const auto& f) { return f.estado != EstadoPuerto::ausente; });
    if (!alguno) lista.emplace_back("No hay ningún puerto serie: enchufe el adaptador del registrador.");
    for (const auto servicio : serviciosIntrusos(raices)) lista.emplace_back(remedio(servicio));
    return lista;
}

void mostrarPuertos(ContextoCli& contexto, bool json) {
    contexto.consola.exigirSalida();
    const auto mapa = leerMapa(contexto.entorno, contexto.com);
    auto lista = Json::lista();
    std::string texto;
    std::vector<FichaPuerto> fichas;
    for (int numero = 1; numero <= kUltimoPuerto; ++numero) {
        const auto dispositivo = mapa.dispositivo(numero);
        const auto ficha =
            dispositivo ? describirPuerto(*dispositivo, contexto.entorno.raices) : FichaPuerto{};
        texto += linea(numero, ficha);
        lista.agregar(objeto(numero, ficha));
        fichas.push_back(ficha);
    }
    contexto.consola.resultado(json ? lista.conSangria() : texto);
    for (const auto& que : remedios(fichas, contexto.entorno.raices)) contexto.consola.aviso(que);
}

}  // namespace

void declararPuertos(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden =
        argumentos.orden("puertos", fmt::format("Muestra qué hay detrás de COM1 a COM{}", kUltimoPuerto));
    const auto json = std::make_shared<bool>(false);
    orden.bandera(*json, "--json", "Como lista JSON");
    orden.alElegir(
        [&contexto, json] { contexto.orden = [&contexto, json] { mostrarPuertos(contexto, *json); }; });
}

}  // namespace telvane
