#include "app/qt/opciones.h"

#include <algorithm>
#include <sstream>

#include <CLI/CLI.hpp>

#include "link/mapa_com.h"

namespace telvane {

namespace {

constexpr int kUsoIncorrecto = 2;

LineaDeOrdenes malUso(const std::string& que) {
    return {.opciones = std::nullopt,
            .estado = kUsoIncorrecto,
            .salida = {},
            .error = "telvane: " + que + "\nPruebe 'telvane --help'.\n"};
}

// Help and version come as exceptions with exit code 0.
LineaDeOrdenes terminada(const CLI::App& app, const CLI::ParseError& motivo) {
    if (motivo.get_exit_code() != 0) return malUso("falta el valor de una opción");
    std::ostringstream salida;
    app.exit(motivo, salida, salida);
    return {.opciones = std::nullopt, .estado = 0, .salida = salida.str(), .error = {}};
}

void ponerEnCastellano(CLI::App& app) {
    app.option_defaults()->group("Opciones");
    app.set_help_flag("-h,--help", "Muestra esta ayuda y termina");
    app.set_version_flag("--version", "telvane " TELVANE_VERSION, "Muestra la versión y termina");
    auto formato = app.get_formatter();
    formato->label("Usage", "Uso");
    formato->label("OPTIONS", "OPCIONES");
    formato->label("TEXT", "TEXTO");
}

}  // namespace

LineaDeOrdenes leerOrdenes(std::vector<std::string> argumentos) {
    Opciones opciones;
    std::string perfil = "estricto";
    CLI::App app("Acompañante de escritorio del registrador de una estación meteorológica automática",
                 "telvane");
    ponerEnCastellano(app);
    app.allow_extras();
    app.add_option("--com", opciones.com,
                   "Dispositivo del puerto COM N; los números que no se dan no existen. Se puede repetir")
        ->type_name("N=DISPOSITIVO")
        ->expected(1)
        ->take_all();
    app.add_option("--perfil", perfil,
                   "Sellos de tiempo que se aceptan: estricto (2001 a 2019) o ampliado (2000 a 2099)")
        ->type_name("estricto|ampliado")
        ->take_last();
    try {
        // The parser takes its arguments from the end.
        std::reverse(argumentos.begin(), argumentos.end());
        app.parse(std::move(argumentos));
        if (!app.remaining().empty()) return malUso("argumento desconocido: " + app.remaining().front());
        if (perfil != "estricto" && perfil != "ampliado") return malUso("perfil desconocido: " + perfil);
        if (!opciones.com.empty()) static_cast<void>(MapaCom::fijo(opciones.com));
    } catch (const CLI::ParseError& motivo) {
        return terminada(app, motivo);
    } catch (const ErrorPuerto& error) {
        return malUso(error.what());
    }
    opciones.perfil = perfil == "ampliado" ? Perfil::ampliado : Perfil::estricto;
    return {.opciones = std::move(opciones), .estado = 0, .salida = {}, .error = {}};
}

}  // namespace telvane
