#include "app/qt/abridor.h"

#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <string>

namespace telvane {

namespace {

constexpr const char* kPrograma = "xdg-open";
// Without a desktop the opener stays until the opened program ends: how that ends says nothing about the
// opening.
constexpr std::chrono::minutes kAbierto{1};

// In a session of its own: what ends us, a terminal's interrupt included, does not end what was opened.
std::optional<pid_t> lanzar(std::string ruta) {
    std::string programa = kPrograma;
    const std::array<char*, 3> argumentos = {programa.data(), ruta.data(), nullptr};
    posix_spawnattr_t atributos;
    if (::posix_spawnattr_init(&atributos) != 0) return std::nullopt;
    ::posix_spawnattr_setflags(&atributos, POSIX_SPAWN_SETSID);
    pid_t proceso = 0;
    const int error = ::posix_spawnp(&proceso, kPrograma, nullptr, &atributos, argumentos.data(), ::environ);
    ::posix_spawnattr_destroy(&atributos);
    return error == 0 ? std::optional(proceso) : std::nullopt;
}

}  // namespace

Abridor::~Abridor() {
    for (const auto& uno : enMarcha_) ::close(uno.descriptor);
}

void Abridor::abrir(const std::filesystem::path& ruta, const std::function<void()>& alFallar) {
    const auto proceso = lanzar(ruta.string());
    if (!proceso) {
        bucle_.entregar(alFallar);
        return;
    }
    const auto descriptor = static_cast<int>(::syscall(SYS_pidfd_open, *proceso, 0));
    // Opened all the same; nobody hears how it went.
    if (descriptor < 0) return;
    const auto lugar = enMarcha_.insert(enMarcha_.end(), {descriptor, reloj_.monotono(), alFallar});
    lugar->vigilancia = bucle_.vigilarLectura(descriptor, [this, lugar] { terminado(lugar); });
}

void Abridor::terminado(Lugar cual) {
    siginfo_t como{};
    const bool sabido = ::waitid(P_PIDFD, static_cast<id_t>(cual->descriptor), &como, WEXITED) == 0;
    const bool bien = !sabido || (como.si_code == CLD_EXITED && como.si_status == 0);
    const bool pronto = reloj_.monotono() - cual->comienzo < kAbierto;
    const auto alFallar = cual->alFallar;
    cual->vigilancia.reset();
    ::close(cual->descriptor);
    enMarcha_.erase(cual);
    if (!bien && pronto) alFallar();
}

}  // namespace telvane
