#include "app/qt/abridor.h"

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/abridor.h"

namespace telvane {

namespace {

// Without a desktop the opener stays until the opened program ends: how that ends says nothing about the
// opening.
constexpr std::chrono::minutes kAbierto{1};

}  // namespace

Abridor::~Abridor() {
    for (const auto& uno : enMarcha_) ::close(uno.descriptor);
}

void Abridor::abrir(const std::filesystem::path& ruta, const std::function<void()>& alFallar) {
    const auto proceso = lanzarAbridor(ruta);
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
