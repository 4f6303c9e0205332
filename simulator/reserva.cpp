#include "simulator/reserva.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace fs = std::filesystem;

fs::path lugarDeNombre(const fs::path& ruta) {
    std::error_code error;
    return fs::weakly_canonical(fs::absolute(ruta, error).parent_path(), error) / ruta.filename();
}

std::optional<Descriptor> reservar(std::string_view clase, const fs::path& ruta) {
    sockaddr_un direccion{};
    direccion.sun_family = AF_UNIX;
    const auto nombre = fmt::format("{} {:016x}", clase, std::hash<std::string>()(ruta.string()));
    std::copy(nombre.begin(), nombre.end(), direccion.sun_path + 1);
    const auto largo = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + nombre.size());
    Descriptor reserva(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (reserva() >= 0 && ::bind(reserva(), reinterpret_cast<const sockaddr*>(&direccion), largo) == 0)
        return reserva;
    if (reserva() >= 0 && errno == EADDRINUSE) return std::nullopt;
    throw std::runtime_error(
        fmt::format("no se pudo reservar {}: {}", nombreVisible(ruta), motivoSistema(errno)));
}

}  // namespace telvane
