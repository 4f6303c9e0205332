#include "platform/flujos.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace telvane {

namespace {

int heredado(int descriptor) {
    if (::fcntl(descriptor, F_GETFD) >= 0) return descriptor;
    // Where there are no devices, a folder holds the number as well.
    if (::open("/dev/null", O_RDWR) < 0) static_cast<void>(::open("/", O_RDONLY | O_DIRECTORY));
    return -1;
}

}  // namespace

FlujosHeredados flujosHeredados() {
    const int entrada = heredado(STDIN_FILENO);
    const int salida = heredado(STDOUT_FILENO);
    const int errores = heredado(STDERR_FILENO);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    return {entrada, salida, errores};
}

}  // namespace telvane
