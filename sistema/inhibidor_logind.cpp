#include "sistema/inhibidor_logind.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cstdint>

namespace telvane {

namespace {

constexpr std::uint64_t kEspera = 500'000;  // microseconds

// The service holds sleep off until every copy of this descriptor is closed: at the latest when we end.
class GuardiaLogind final : public Inhibidor::Guardia {
   public:
    explicit GuardiaLogind(int descriptor) : descriptor_(descriptor) {}
    GuardiaLogind(const GuardiaLogind&) = delete;
    GuardiaLogind& operator=(const GuardiaLogind&) = delete;
    ~GuardiaLogind() override { ::close(descriptor_); }

   private:
    int descriptor_;
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
    sd_bus* bus = nullptr;
    if (biblioteca.rutina<decltype(sd_bus_open_system)>("sd_bus_open_system")(&bus) < 0) return nullptr;
    biblioteca.rutina<decltype(sd_bus_set_method_call_timeout)>("sd_bus_set_method_call_timeout")(bus,
                                                                                                  kEspera);
    const int descriptor = pedir(biblioteca, bus, quien_, porQue);
    biblioteca.rutina<decltype(sd_bus_flush_close_unref)>("sd_bus_flush_close_unref")(bus);
    if (descriptor < 0) return nullptr;
    return std::make_unique<GuardiaLogind>(descriptor);
}

}  // namespace telvane
