#include "sistema/inhibidor_logind.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane {
namespace {

using testing::ElementsAre;

// A system bus of the test's own; its address stands where every program looks for it.
class BusPropio {
   public:
    BusPropio() : demonio_({PROGRAMA_DBUS, "--session", "--nofork", "--print-address=1"}) {
        const auto direccion = demonio_.linea();
        if (!direccion) throw std::runtime_error(demonio_.errores());
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", direccion->c_str(), 1);
    }
    BusPropio(const BusPropio&) = delete;
    BusPropio& operator=(const BusPropio&) = delete;
    ~BusPropio() { ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

   private:
    Proceso demonio_;
};

// The login service as far as it is asked here: each inhibitor is the writing end of a pipe.
class LogindDeMentira {
   public:
    explicit LogindDeMentira(bool rehusa = false, bool calla = false) : rehusa_(rehusa), calla_(calla) {
        exigir(sd_bus_open_system(&bus_));
        exigir(sd_bus_add_object(bus_, nullptr, "/org/freedesktop/login1", atender, this));
        exigir(sd_bus_request_name(bus_, "org.freedesktop.login1", 0));
        exigir(::pipe2(fin_.data(), O_CLOEXEC));
        hilo_ = std::jthread([this] { servir(); });
    }
    LogindDeMentira(const LogindDeMentira&) = delete;
    LogindDeMentira& operator=(const LogindDeMentira&) = delete;
    ~LogindDeMentira() {
        ::close(fin_[1]);
        hilo_.join();
        ::close(fin_[0]);
        if (lectura_ >= 0) ::close(lectura_);
        sd_bus_flush_close_unref(bus_);
    }

    // What was asked for, after an answer came: what, who, why, mode.
    std::vector<std::string> pedido;

    // Nobody holds the inhibitor any more: its pipe has ended.
    bool soltado(int plazoMs) const {
        pollfd estado{lectura_, POLLIN, 0};
        return ::poll(&estado, 1, plazoMs) == 1 && (estado.revents & POLLHUP) != 0;
    }

   private:
    static void exigir(int resultado) {
        if (resultado < 0) throw std::runtime_error("bus: " + std::to_string(resultado));
    }

    void servir() {
        while (true) {
            while (sd_bus_process(bus_, nullptr) > 0) continue;
            std::array<pollfd, 2> vigilados{{{sd_bus_get_fd(bus_), POLLIN, 0}, {fin_[0], POLLIN, 0}}};
            if (::poll(vigilados.data(), vigilados.size(), -1) < 0 || vigilados[1].revents != 0) return;
        }
    }

    static int atender(sd_bus_message* mensaje, void* yo, sd_bus_error*) {
        return static_cast<LogindDeMentira*>(yo)->inhibir(mensaje);
    }

    int inhibir(sd_bus_message* mensaje) {
        if (sd_bus_message_is_method_call(mensaje, "org.freedesktop.login1.Manager", "Inhibit") <= 0)
            return 0;
        std::array<const char*, 4> textos{};
        exigir(sd_bus_message_read(mensaje, "ssss", &textos[0], &textos[1], &textos[2], &textos[3]));
        pedido.assign(textos.begin(), textos.end());
        if (calla_) return 1;
        if (rehusa_) return sd_bus_reply_method_errorf(mensaje, SD_BUS_ERROR_ACCESS_DENIED, "no");
        std::array<int, 2> tubo{};
        exigir(::pipe2(tubo.data(), O_CLOEXEC));
        lectura_ = tubo[0];
        const int resultado = sd_bus_reply_method_return(mensaje, "h", tubo[1]);
        // The answer holds a copy of its own, and lets go of it once it is sent.
        ::close(tubo[1]);
        exigir(sd_bus_flush(bus_));
        return resultado;
    }

    bool rehusa_;
    bool calla_;
    sd_bus* bus_ = nullptr;
    std::array<int, 2> fin_{};
    int lectura_ = -1;
    std::jthread hilo_;
};

TEST(InhibidorLogind, HoldsSleepOffForAsLongAsTheGuardLives) {
    const BusPropio bus;
    const LogindDeMentira logind;
    InhibidorLogind inhibidor("quien");
    auto guardia = inhibidor.inhibir("porque");
    ASSERT_NE(guardia, nullptr);
    EXPECT_THAT(logind.pedido, ElementsAre("sleep:idle", "quien", "porque", "block"));
    EXPECT_FALSE(logind.soltado(0));
    guardia.reset();
    EXPECT_TRUE(logind.soltado(20'000));
}

TEST(InhibidorLogind, ARefusalIsNoGuard) {
    const BusPropio bus;
    const LogindDeMentira logind(true);
    EXPECT_EQ(InhibidorLogind("quien").inhibir("porque"), nullptr);
}

TEST(InhibidorLogind, AServiceThatDoesNotAnswerIsNotWaitedForLong) {
    const BusPropio bus;
    const LogindDeMentira logind(false, true);
    EXPECT_EQ(InhibidorLogind("quien").inhibir("porque"), nullptr);
    EXPECT_EQ(logind.pedido.size(), 4U);
}

// Listens where the bus should be, and lets in whoever comes as far as its last line says.
class NadieEnElBus {
   public:
    explicit NadieEnElBus(const std::string& contesta = "")
        : oyente_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const auto ruta = (carpeta_.ruta() / "bus").string();
        sockaddr_un direccion{};
        direccion.sun_family = AF_UNIX;
        ruta.copy(direccion.sun_path, sizeof direccion.sun_path - 1);
        if (::bind(oyente_, reinterpret_cast<const sockaddr*>(&direccion), sizeof direccion) != 0 ||
            ::listen(oyente_, 4) != 0) {
            throw std::runtime_error("no socket at " + ruta);
        }
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + ruta).c_str(), 1);
        if (!contesta.empty()) {
            hilo_ = std::jthread([this, contesta] {
                const int cliente = ::accept(oyente_, nullptr, nullptr);
                static_cast<void>(!::write(cliente, contesta.data(), contesta.size()));
                std::array<char, 256> oido{};
                while (::read(cliente, oido.data(), oido.size()) > 0) continue;
                ::close(cliente);
            });
        }
    }
    NadieEnElBus(const NadieEnElBus&) = delete;
    NadieEnElBus& operator=(const NadieEnElBus&) = delete;
    ~NadieEnElBus() {
        if (hilo_.joinable()) hilo_.join();
        ::close(oyente_);
        ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    }

   private:
    CarpetaTemporal carpeta_;
    int oyente_;
    std::jthread hilo_;
};

void esperaPoco() {
    const auto comienzo = std::chrono::steady_clock::now();
    EXPECT_EQ(InhibidorLogind("quien").inhibir("porque"), nullptr);
    // Far from the minute and a half of the library, and from a busy machine's delays.
    EXPECT_LT(std::chrono::steady_clock::now() - comienzo, std::chrono::seconds(15));
}

TEST(InhibidorLogind, ABusThatLetsNobodyInIsNotWaitedForLong) {
    const NadieEnElBus mudo;
    esperaPoco();
}

TEST(InhibidorLogind, ABusThatLetsInAndDoesNotGreetIsNotWaitedForLong) {
    const NadieEnElBus sinSaludo("OK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n");
    esperaPoco();
}

TEST(InhibidorLogind, WithoutTheServiceThereIsNoGuard) {
    const BusPropio bus;
    EXPECT_EQ(InhibidorLogind("quien").inhibir("porque"), nullptr);
}

TEST(InhibidorLogind, WithoutABusThereIsNoGuard) {
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/no/such/bus", 1);
    EXPECT_EQ(InhibidorLogind("quien").inhibir("porque"), nullptr);
    ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

}  // namespace
}  // namespace telvane
