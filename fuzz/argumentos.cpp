// The console tool's arguments, one a line; read, never carried out.
#include <fcntl.h>

#include <vector>

#include "cli/ordenes.h"
#include "consola/codigos_salida.h"
#include "fuzz/azar.h"
#include "platform/bucle_posix.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    static const int nadie = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    static BuclePosix bucle;
    static const RelojSistema reloj;
    EntornoCli entorno{{.bucle = bucle,
                        .reloj = reloj,
                        .correrHasta = [](const auto&, auto) { return true; },
                        .entrada = nadie,
                        .salida = nadie,
                        .errores = nadie},
                       {.abrirPuertos = [](const MapaCom&) { return nullptr; }}};
    Consola consola(entorno);
    ContextoCli contexto{.entorno = entorno, .consola = consola, .com = {}, .orden = {}};
    Argumentos linea("telvane-cli", "0", "azar");
    declararOrdenes(linea, contexto);
    Entrada entrada(datos, cuantos);
    std::vector<std::string> argumentos;
    while (entrada.queda()) argumentos.push_back(entrada.linea());
    try {
        const auto leida = linea.leer(argumentos);
        exigirQue((leida.que == LineaLeida::Que::correr) == static_cast<bool>(contexto.orden));
        exigirQue((leida.que == LineaLeida::Que::correr) == leida.texto.empty());
    } catch (const ErrorCli& error) {
        exigirQue(error.codigo() == CodigoSalida::malUso);
    }
    return 0;
}
