// The console tool's arguments, one a line; read, never carried out.
#include <fcntl.h>

#include <algorithm>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/codigos_salida.h"
#include "cli/ordenes.h"
#include "fuzz/azar.h"
#include "platform/bucle_posix.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    static const int nadie = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    static BuclePosix bucle;
    static const RelojSistema reloj;
    EntornoCli entorno{.bucle = bucle,
                       .reloj = reloj,
                       .correrHasta = [](const auto&, auto) { return true; },
                       .abrirPuertos = [](const MapaCom&) { return nullptr; },
                       .entrada = nadie,
                       .salida = nadie,
                       .errores = nadie};
    Consola consola(entorno);
    ContextoCli contexto{.entorno = entorno, .consola = consola, .com = {}, .orden = {}};
    CLI::App app("azar", "telvane-cli");
    app.add_option("--com", contexto.com)->expected(1)->take_all();
    app.require_subcommand(1);
    app.fallthrough();
    for (auto* declarar : {declararPuertos, declararBuscar, declararConfiguracion, declararEnLinea,
                           declararDescargar, declararConvertir, declararConfigurar, declararSerie}) {
        declarar(app, contexto);
    }
    Entrada entrada(datos, cuantos);
    std::vector<std::string> argumentos;
    while (entrada.queda()) argumentos.push_back(entrada.linea());
    std::reverse(argumentos.begin(), argumentos.end());
    try {
        app.parse(argumentos);
        exigirQue(static_cast<bool>(contexto.orden));
    } catch (const CLI::ParseError&) {
    } catch (const ErrorCli& error) {
        exigirQue(error.codigo() == CodigoSalida::malUso);
    }
    return 0;
}
