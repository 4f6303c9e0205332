#include "platform/flujos.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <new>

#include <fmt/format.h>

#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

int heredado(int descriptor) {
    if (::fcntl(descriptor, F_GETFD) >= 0) return descriptor;
    // Where there are no devices, a folder holds the number as well.
    if (::open("/dev/null", O_RDWR) < 0) static_cast<void>(::open("/", O_RDONLY | O_DIRECTORY));
    return -1;
}

// How soon whoever waits for a reader that takes nothing looks up.
constexpr int kVistazoMs = 100;

// How much a descriptor that is ready takes without making its writer wait.
std::size_t trozoDe(int descriptor) {
    struct stat datos {};
    const bool archivo = ::fstat(descriptor, &datos) == 0 && S_ISREG(datos.st_mode);
    return archivo ? SIZE_MAX : std::size_t{PIPE_BUF};
}

// Until the descriptor takes bytes, or refuses them; false once the wait was ended.
bool esperarSitio(int descriptor, const std::function<bool()>& parar) {
    pollfd salida{descriptor, POLLOUT, 0};
    // One that was closed at the start never becomes ready.
    while (descriptor >= 0 && ::poll(&salida, 1, kVistazoMs) == 0) {
        if (parar && parar()) return false;
    }
    return true;
}

std::string quejaDe(std::string_view porque) {
    return fmt::format("no se pudo escribir en la salida: {}", porque);
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

int escribirTodo(int descriptor, std::string_view texto, const std::function<bool()>& parar) {
    const auto trozo = trozoDe(descriptor);
    while (!texto.empty()) {
        if (!esperarSitio(descriptor, parar)) return EINTR;
        const auto n = ::write(descriptor, texto.data(), std::min(texto.size(), trozo));
        if (n >= 0) {
            texto.remove_prefix(static_cast<std::size_t>(n));
        } else if (errno != EAGAIN && errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void decirFinal(int descriptor, std::string_view programa, const std::exception& error,
                const std::function<bool()>& parar) noexcept {
    std::string motivo;
    try {
        motivo = lineasSinControles(motivoDe(error));
    } catch (const std::bad_alloc&) {
        motivo.clear();
    }
    for (const auto parte :
         {programa, std::string_view(": "), motivo.empty() ? motivoSinMemoria() : std::string_view(motivo),
          std::string_view("\n")})
        static_cast<void>(escribirTodo(descriptor, parte, parar));
}

std::string quejaDeEntrada(int motivo) {
    return fmt::format(
        "no se pudo leer la entrada: {}",
        motivo == EBADF ? "está cerrada. Ábrala, por ejemplo con <archivo, y repita" : motivoSistema(motivo));
}

std::string quejaDeSalida(int motivo) {
    return quejaDe(motivo == EBADF ? "está cerrada. Ábrala, por ejemplo con >archivo, y repita"
                                   : motivoEscritura(motivo));
}

std::string quejaDeSalida(int motivo, std::string_view hecho) {
    return fmt::format("{}; {}", quejaDe(motivoSinConsejo(motivo)), hecho);
}

}  // namespace telvane
