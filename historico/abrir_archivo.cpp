#include "historico/abrir_archivo.h"

#include <spawn.h>
#include <unistd.h>

#include <array>
#include <filesystem>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "platform/texto_visible.h"

namespace telvane {

// In a session of its own: what ends us, a terminal's interrupt included, does not end what was opened.
void abrirConElEscritorio(const std::string& ruta) {
    std::string programa = "xdg-open";
    // A name that begins with a dash is no option.
    std::string archivo = std::filesystem::absolute(ruta).string();
    const std::array<char*, 3> argumentos = {programa.data(), archivo.data(), nullptr};
    posix_spawnattr_t atributos;
    int error = ::posix_spawnattr_init(&atributos);
    if (error == 0) {
        ::posix_spawnattr_setflags(&atributos, POSIX_SPAWN_SETSID);
        pid_t proceso = 0;
        error = ::posix_spawnp(&proceso, programa.c_str(), nullptr, &atributos, argumentos.data(), ::environ);
        ::posix_spawnattr_destroy(&atributos);
    }
    if (error != 0) {
        throw ErrorCli(
            CodigoSalida::fallo,
            fmt::format("{} está guardado, pero no se pudo abrir: falta xdg-open (paquete xdg-utils)",
                        nombreVisible(ruta)));
    }
}

}  // namespace telvane
