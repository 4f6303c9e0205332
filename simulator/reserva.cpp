#include "simulator/reserva.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>

#include <fmt/format.h>

#include "platform/motivos.h"

namespace telvane {

std::optional<Descriptor> reservar(std::string_view clase, const std::filesystem::path& ruta) {
    sockaddr_un direccion{};
    direccion.sun_family = AF_UNIX;
    const auto nombre = fmt::format("{} {:016x}", clase, std::hash<std::string>()(ruta.string()));
    std::copy(nombre.begin(), nombre.end(), direccion.sun_path + 1);
    const auto largo = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + nombre.size());
    Descriptor reserva(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (reserva() >= 0 && ::bind(reserva(), reinterpret_cast<const sockaddr*>(&direccion), largo) == 0)
        return reserva;
    if (reserva() >= 0 && errno == EADDRINUSE) return std::nullopt;
    throw std::runtime_error(fmt::format("no se pudo reservar {}: {}", ruta.string(), motivoSistema(errno)));
}

}  // namespace telvane
