#include "sistema/inhibidor_logind.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "platform/descriptor.h"

namespace telvane {

namespace {

using Reloj = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kEspera{500};

std::uint64_t microsegundosHasta(Reloj::time_point fin) {
    const auto quedan = std::chrono::duration_cast<std::chrono::microseconds>(fin - Reloj::now()).count();
    return static_cast<std::uint64_t>(std::max<std::int64_t>(quedan, 0));
}

// The service holds sleep off until every copy of this descriptor is closed: at the latest when we end.
class GuardiaLogind final : public Inhibidor::Guardia {
   public:
    explicit GuardiaLogind(int descriptor) : descriptor_(descriptor) {}

   private:
    Descriptor descriptor_;
};

// The library that speaks with the bus, loaded for one call. It stays in memory by its own choice.
class Biblioteca {
   public:
    Biblioteca() : asidero_(::dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL)) {}
    Biblioteca(const Biblioteca&) = delete;
    Biblioteca& operator=(const Biblioteca&) = delete;
    ~Biblioteca() {
        if (asidero_ != nullptr) ::dlclose(asidero_);
    }
    explicit operator bool() const { return asidero_ != nullptr; }
    // A routine of this library's first version is in every later one.
    template <class Rutina>
    Rutina* rutina(const char* nombre) const {
        return reinterpret_cast<Rutina*>(::dlsym(asidero_, nombre));
    }

   private:
    void* asidero_;
};

// Connected, let in and greeted. Whoever listens at the bus's address need not be a bus: left to itself the
// library waits for the greeting for a minute and a half.
bool llegar(const Biblioteca& biblioteca, sd_bus* bus, Reloj::time_point fin) {
    const auto listo = biblioteca.rutina<decltype(sd_bus_is_ready)>("sd_bus_is_ready");
    const auto avanzar = biblioteca.rutina<decltype(sd_bus_process)>("sd_bus_process");
    const auto esperar = biblioteca.rutina<decltype(sd_bus_wait)>("sd_bus_wait");
    for (int estado = listo(bus); estado <= 0; estado = listo(bus)) {
        if (estado < 0 || avanzar(bus, nullptr) < 0) return false;
        const auto quedan = microsegundosHasta(fin);
        if (quedan == 0 || esperar(bus, quedan) < 0) return false;
    }
    return true;
}

// -1: refused, or nobody there.
int pedir(const Biblioteca& biblioteca, sd_bus* bus, const std::string& quien, const std::string& porQue) {
    const auto llamar = biblioteca.rutina<decltype(sd_bus_call_method)>("sd_bus_call_method");
    const auto leer = biblioteca.rutina<decltype(sd_bus_message_read)>("sd_bus_message_read");
    const auto dejar = biblioteca.rutina<decltype(sd_bus_message_unref)>("sd_bus_message_unref");
    sd_bus_message* respuesta = nullptr;
    int descriptor = -1;
    if (llamar(bus, "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
               "Inhibit", nullptr, &respuesta, "ssss", "sleep:idle", quien.c_str(), porQue.c_str(),
               "block") >= 0) {
        // The message owns the descriptor that it brought.
        if (int suyo = -1; leer(respuesta, "h", &suyo) >= 0) descriptor = ::fcntl(suyo, F_DUPFD_CLOEXEC, 0);
    }
    dejar(respuesta);
    return descriptor;
}

}  // namespace

std::unique_ptr<Inhibidor::Guardia> InhibidorLogind::inhibir(const std::string& porQue) {
    const Biblioteca biblioteca;
    if (!biblioteca) return nullptr;
    const auto fin = Reloj::now() + kEspera;
    sd_bus* bus = nullptr;
    if (biblioteca.rutina<decltype(sd_bus_open_system)>("sd_bus_open_system")(&bus) < 0) return nullptr;
    int descriptor = -1;
    if (llegar(biblioteca, bus, fin)) {
        const auto plazo =
            biblioteca.rutina<decltype(sd_bus_set_method_call_timeout)>("sd_bus_set_method_call_timeout");
        // 0 would be the library's own limit.
        plazo(bus, std::max<std::uint64_t>(microsegundosHasta(fin), 1));
        descriptor = pedir(biblioteca, bus, quien_, porQue);
    }
    // Nothing is left to be sent, and nothing to be waited for.
    biblioteca.rutina<decltype(sd_bus_close_unref)>("sd_bus_close_unref")(bus);
    if (descriptor < 0) return nullptr;
    return std::make_unique<GuardiaLogind>(descriptor);
}

}  // namespace telvane
