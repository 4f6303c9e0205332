#include "platform/bucle_posix.h"

#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <map>
#include <system_error>
#include <utility>

#include "platform/como_timespec.h"

namespace telvane {

namespace {

using Instante = std::chrono::steady_clock::time_point;

Instante ahora() {
    return std::chrono::steady_clock::now();
}

// Far enough to be never, near enough not to overflow the clock.
constexpr Bucle::Duracion kPlazoMaximo = std::chrono::hours(24 * 365);

Instante dentroDe(Bucle::Duracion plazo) {
    return ahora() + std::clamp(plazo, Bucle::Duracion(0), kPlazoMaximo);
}

}  // namespace

// Shared with the handles, which may outlive both their event and the loop.
struct BuclePosix::Fuentes {
    struct Descriptor {
        int numero;
        bool activo;
        Accion accion;
    };
    // Due time, then the order of arming.
    using ClaveAlarma = std::pair<Instante, std::uint64_t>;

    std::map<std::uint64_t, Descriptor> lecturas;
    std::map<ClaveAlarma, Accion> alarmas;
    std::uint64_t siguiente = 0;

    // The last poll, with the source of each entry.
    std::vector<pollfd> sondeo;
    std::vector<std::uint64_t> sondeadas;
};

class BuclePosix::LecturaPosix final : public Bucle::Lectura {
   public:
    LecturaPosix(std::shared_ptr<Fuentes> fuentes, std::uint64_t clave)
        : fuentes_(std::move(fuentes)), clave_(clave) {}
    LecturaPosix(const LecturaPosix&) = delete;
    LecturaPosix& operator=(const LecturaPosix&) = delete;
    ~LecturaPosix() override { fuentes_->lecturas.erase(clave_); }
    void activa(bool si) override { fuentes_->lecturas.at(clave_).activo = si; }

   private:
    std::shared_ptr<Fuentes> fuentes_;
    std::uint64_t clave_;
};

class BuclePosix::AlarmaPosix final : public Bucle::Vigilancia {
   public:
    AlarmaPosix(std::shared_ptr<Fuentes> fuentes, Fuentes::ClaveAlarma clave)
        : fuentes_(std::move(fuentes)), clave_(std::move(clave)) {}
    AlarmaPosix(const AlarmaPosix&) = delete;
    AlarmaPosix& operator=(const AlarmaPosix&) = delete;
    ~AlarmaPosix() override { fuentes_->alarmas.erase(clave_); }

   private:
    std::shared_ptr<Fuentes> fuentes_;
    Fuentes::ClaveAlarma clave_;
};

BuclePosix::BuclePosix() : fuentes_(std::make_shared<Fuentes>()) {}
BuclePosix::~BuclePosix() = default;

std::unique_ptr<Bucle::Lectura> BuclePosix::fuenteLectura(int descriptor, Accion accion) {
    const auto clave = fuentes_->siguiente++;
    // First the handle: what is thrown leaves nothing behind.
    auto asidero = std::make_unique<LecturaPosix>(fuentes_, clave);
    fuentes_->lecturas.emplace(clave, Fuentes::Descriptor{descriptor, true, std::move(accion)});
    return asidero;
}

Bucle::Asidero BuclePosix::fuenteAlarma(Duracion plazo, Accion accion) {
    const Fuentes::ClaveAlarma clave{dentroDe(plazo), fuentes_->siguiente++};
    auto asidero = std::make_unique<AlarmaPosix>(fuentes_, clave);
    fuentes_->alarmas.emplace(clave, std::move(accion));
    return asidero;
}

void BuclePosix::correr() {
    static_cast<void>(correrHasta([] { return false; }));
}

bool BuclePosix::correrHasta(const Fin& condicion, std::optional<Duracion> limite) {
    // The wait's own alarm is no event: it only bounds the sleep.
    const auto final = limite ? std::optional(dentroDe(*limite)) : std::nullopt;
    const Fin fin = [&] { return terminar_ || condicion(); };
    terminar_ = false;
    bool acabo = fin();
    while (!acabo) {
        const auto falta = final ? std::optional<Duracion>(*final - ahora()) : std::nullopt;
        if (falta && *falta <= Duracion(0)) break;
        if (!dormir(falta)) break;
        acabo = entregarLecturas(fin) || entregarAlarmas(fin);
    }
    terminar_ = false;
    return condicion();
}

// False: nothing is watched, so nothing could ever end the sleep.
bool BuclePosix::dormir(std::optional<Duracion> limite) {
    auto& f = *fuentes_;
    f.sondeo.clear();
    f.sondeadas.clear();
    for (const auto& [clave, lectura] : f.lecturas) {
        if (!lectura.activo) continue;
        f.sondeo.push_back({lectura.numero, POLLIN, 0});
        f.sondeadas.push_back(clave);
    }
    if (f.sondeo.empty() && f.alarmas.empty() && !limite) return false;

    if (!f.alarmas.empty()) {
        const Duracion falta = std::max(Duracion(0), Duracion(f.alarmas.begin()->first.first - ahora()));
        limite = limite ? std::min(*limite, falta) : falta;
    }
    const timespec plazo = limite ? comoTimespec(*limite) : timespec{};
    const int listos = ::ppoll(f.sondeo.data(), f.sondeo.size(), limite ? &plazo : nullptr, nullptr);
    ++despertares_;
    if (listos >= 0) return true;
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "ppoll");
    f.sondeadas.clear();
    return true;
}

bool BuclePosix::entregarLecturas(const Fin& fin) {
    // Events may add and remove sources, and run the loop again: walk over a copy and ask for each whether it
    // is still there.
    const auto sondeo = std::exchange(fuentes_->sondeo, {});
    const auto sondeadas = std::exchange(fuentes_->sondeadas, {});
    for (std::size_t i = 0; i < sondeadas.size(); ++i) {
        if (sondeo[i].revents == 0) continue;
        const auto lectura = fuentes_->lecturas.find(sondeadas[i]);
        if (lectura == fuentes_->lecturas.end() || !lectura->second.activo) continue;
        // A descriptor that its owner closed under the watch would report for ever.
        if (sondeo[i].revents & POLLNVAL) lectura->second.activo = false;
        // Calling it may destroy the watch and with it the original.
        const Accion accion = lectura->second.accion;
        accion();
        if (fin()) return true;
    }
    return false;
}

bool BuclePosix::entregarAlarmas(const Fin& fin) {
    // Only what was armed and due by now: an alarm that arms the next one for at once does not starve the
    // descriptors.
    const auto momento = ahora();
    const auto armadas = fuentes_->siguiente;
    while (true) {
        auto alarma = fuentes_->alarmas.begin();
        while (alarma != fuentes_->alarmas.end() && alarma->first.first <= momento &&
               alarma->first.second >= armadas) {
            ++alarma;
        }
        if (alarma == fuentes_->alarmas.end() || alarma->first.first > momento) return false;
        // Taken out first: calling it may destroy the handle that armed it.
        const auto vencida = fuentes_->alarmas.extract(alarma);
        vencida.mapped()();
        if (fin()) return true;
    }
}

Senales::Senales(Bucle& bucle, const std::vector<int>& cuales, std::function<void(int)> alLlegar)
    : alLlegar_(std::move(alLlegar)) {
    sigset_t conjunto;
    sigemptyset(&conjunto);
    for (const int senal : cuales) sigaddset(&conjunto, senal);
    pthread_sigmask(SIG_BLOCK, &conjunto, &anterior_);
    descriptor_ = ::signalfd(-1, &conjunto, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor_ < 0) {
        const int motivo = errno;
        pthread_sigmask(SIG_SETMASK, &anterior_, nullptr);
        throw std::system_error(motivo, std::generic_category(), "signalfd");
    }
    vigilancia_ = bucle.vigilarLectura(descriptor_, [this] { leer(); });
}

Senales::~Senales() {
    vigilancia_.reset();
    // What is still pending was meant for us: it must not kill the process once it is let through again.
    signalfd_siginfo datos;
    while (::read(descriptor_, &datos, sizeof datos) > 0) continue;
    ::close(descriptor_);
    pthread_sigmask(SIG_SETMASK, &anterior_, nullptr);
}

bool Senales::enEspera() const {
    pollfd sondeo{descriptor_, POLLIN, 0};
    return ::poll(&sondeo, 1, 0) > 0;
}

void Senales::leer() {
    signalfd_siginfo datos;
    if (::read(descriptor_, &datos, sizeof datos) != static_cast<ssize_t>(sizeof datos)) return;
    // The owner may end us from its handler.
    const auto alLlegar = alLlegar_;
    alLlegar(static_cast<int>(datos.ssi_signo));
}

}  // namespace telvane
