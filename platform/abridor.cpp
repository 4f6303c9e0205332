#include "platform/abridor.h"

#include <spawn.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>
#include <system_error>

namespace telvane {

namespace {

void exigir(int error) {
    if (error != 0) throw std::system_error(error, std::generic_category(), "xdg-open");
}

class Atributos {
   public:
    Atributos() {
        exigir(::posix_spawnattr_init(&atributos_));
        sigset_t senales;
        ::sigemptyset(&senales);
        ::posix_spawnattr_setsigmask(&atributos_, &senales);
        // Our programs hear of these by what fails.
        ::sigaddset(&senales, SIGPIPE);
        ::sigaddset(&senales, SIGXFSZ);
        ::posix_spawnattr_setsigdefault(&atributos_, &senales);
        ::posix_spawnattr_setflags(&atributos_,
                                   POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    Atributos(const Atributos&) = delete;
    Atributos& operator=(const Atributos&) = delete;
    ~Atributos() { ::posix_spawnattr_destroy(&atributos_); }

    const posix_spawnattr_t* operator()() const { return &atributos_; }

   private:
    posix_spawnattr_t atributos_{};
};

}  // namespace

pid_t lanzarAbridor(const std::filesystem::path& ruta) {
    std::string programa = "xdg-open";
    // A name that begins with a dash is no option.
    std::string archivo = std::filesystem::absolute(ruta).string();
    const std::array<char*, 3> argumentos = {programa.data(), archivo.data(), nullptr};
    const Atributos atributos;
    pid_t proceso = 0;
    exigir(::posix_spawnp(&proceso, argumentos.front(), nullptr, atributos(), argumentos.data(), ::environ));
    return proceso;
}

}  // namespace telvane
