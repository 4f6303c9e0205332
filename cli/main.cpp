// telvane-cli: the logger without a window.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include "cli/aplicacion.h"
#include "link/puerto_termios.h"
#include "platform/bucle_posix.h"
#include "platform/reloj.h"
#include "sistema/inhibidor_logind.h"

namespace {

// The descriptor, or -1 when it was closed at the start: then its number is taken, so that no file of ours
// gets it.
int heredado(int descriptor) {
    if (::fcntl(descriptor, F_GETFD) >= 0) return descriptor;
    static_cast<void>(::open("/dev/null", O_RDWR));
    return -1;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace telvane;
    const int entrada = heredado(STDIN_FILENO);
    const int salida = heredado(STDOUT_FILENO);
    const int errores = heredado(STDERR_FILENO);
    // A reader that goes away is an error of writing like any other.
    std::signal(SIGPIPE, SIG_IGN);

    BuclePosix bucle;
    InhibidorLogind inhibidor("telvane-cli");
    const RelojSistema reloj;
    EntornoCli entorno{
        .bucle = bucle,
        .reloj = reloj,
        .correrHasta = [&](const auto& condicion, auto plazo) { return bucle.correrHasta(condicion, plazo); },
        .abrirPuertos = [&](const MapaCom& mapa) { return std::make_unique<PuertosSistema>(bucle, mapa); },
        .entrada = entrada,
        .salida = salida,
        .errores = errores,
        .inhibidor = &inhibidor};
    const Senales senales(bucle, {SIGINT, SIGTERM, SIGHUP}, [&](int senal) { entorno.senal = senal; });
    entorno.senalEnEspera = [&] { return senales.enEspera(); };
    return correrCli(std::vector<std::string>(argv + (argc > 0), argv + argc), entorno);
}
