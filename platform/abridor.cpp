#include "platform/abridor.h"

#include <spawn.h>
#include <unistd.h>

#include <array>
#include <string>

namespace telvane {

std::optional<pid_t> lanzarAbridor(const std::filesystem::path& ruta) {
    std::string programa = "xdg-open";
    // A name that begins with a dash is no option.
    std::string archivo = std::filesystem::absolute(ruta).string();
    const std::array<char*, 3> argumentos = {programa.data(), archivo.data(), nullptr};
    posix_spawnattr_t atributos;
    if (::posix_spawnattr_init(&atributos) != 0) return std::nullopt;
    ::posix_spawnattr_setflags(&atributos, POSIX_SPAWN_SETSID);
    pid_t proceso = 0;
    const int error =
        ::posix_spawnp(&proceso, argumentos.front(), nullptr, &atributos, argumentos.data(), ::environ);
    ::posix_spawnattr_destroy(&atributos);
    return error == 0 ? std::optional(proceso) : std::nullopt;
}

}  // namespace telvane
