#include "app/qt/abridor.h"

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <iterator>
#include <system_error>
#include <utility>

#include "platform/abridor.h"

namespace telvane {

namespace {

// Without a desktop the opener stays until the opened program ends: how that ends says nothing about the
// opening.
constexpr std::chrono::minutes kAbierto{1};

}  // namespace

void Abridor::abrir(const std::filesystem::path& ruta, const std::function<void()>& alFallar) {
    pid_t cual = 0;
    try {
        cual = lanzarAbridor(ruta);
    } catch (const std::system_error&) {
        bucle_.entregar(alFallar);
        return;
    }
    Descriptor proceso(static_cast<int>(::syscall(SYS_pidfd_open, cual, 0)));
    // Opened all the same; nobody hears how it went.
    if (proceso() < 0) return;
    auto& uno = enMarcha_.emplace_back(EnMarcha{.proceso = std::move(proceso),
                                                .comienzo = reloj_.monotono(),
                                                .alFallar = alFallar,
                                                .vigilancia = {}});
    uno.vigilancia = bucle_.vigilarLectura(uno.proceso(),
                                           [this, lugar = std::prev(enMarcha_.end())] { terminado(lugar); });
}

void Abridor::terminado(Lugar cual) {
    siginfo_t como{};
    const bool sabido = ::waitid(P_PIDFD, static_cast<id_t>(cual->proceso()), &como, WEXITED) == 0;
    const bool bien = !sabido || (como.si_code == CLD_EXITED && como.si_status == 0);
    const bool pronto = reloj_.monotono() - cual->comienzo < kAbierto;
    const auto alFallar = cual->alFallar;
    enMarcha_.erase(cual);
    if (!bien && pronto) alFallar();
}

}  // namespace telvane
