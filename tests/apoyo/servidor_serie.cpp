#include "tests/apoyo/servidor_serie.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <deque>
#include <string>
#include <system_error>
#include <utility>

namespace telvane {

namespace {

using Reloj = std::chrono::steady_clock;

[[noreturn]] void fallar(const char* que) {
    throw std::system_error(errno, std::generic_category(), que);
}

// Bytes on their way, which come out when they have travelled long enough.
class Camino {
   public:
    explicit Camino(std::chrono::milliseconds demora) : demora_(demora) {}

    // False: the source has no more.
    bool tomarDe(int origen) {
        std::array<char, 4096> trozo;
        const auto n = ::read(origen, trozo.data(), trozo.size());
        if (n < 0) return errno == EAGAIN || errno == EINTR;
        if (n == 0) return false;
        viajan_.push_back({Reloj::now() + demora_, std::string(trozo.data(), static_cast<std::size_t>(n))});
        return true;
    }
    // False: the destination takes no more.
    bool darA(int destino) {
        while (!viajan_.empty() && viajan_.front().llega <= Reloj::now()) {
            auto& bytes = viajan_.front().bytes;
            auto n = ::send(destino, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (n < 0 && errno == ENOTSOCK) n = ::write(destino, bytes.data(), bytes.size());
            if (n < 0 && (errno == EAGAIN || errno == EINTR)) return true;
            if (n < 0) return false;
            bytes.erase(0, static_cast<std::size_t>(n));
            if (bytes.empty()) viajan_.pop_front();
        }
        return true;
    }
    // Milliseconds for poll; -1: nothing is on its way.
    int espera() const {
        if (viajan_.empty()) return -1;
        const auto falta = viajan_.front().llega - Reloj::now();
        const auto enMs = std::chrono::ceil<std::chrono::milliseconds>(falta).count();
        return enMs > 0 ? static_cast<int>(enMs) : 1;
    }

   private:
    struct Trozo {
        Reloj::time_point llega;
        std::string bytes;
    };
    std::chrono::milliseconds demora_;
    std::deque<Trozo> viajan_;
};

Descriptor abrirCrudo(const std::filesystem::path& ruta) {
    Descriptor dispositivo(::open(ruta.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    termios ajustes{};
    if (dispositivo() >= 0 && ::tcgetattr(dispositivo(), &ajustes) == 0) {
        ::cfmakeraw(&ajustes);
        static_cast<void>(::cfsetspeed(&ajustes, B19200));
        static_cast<void>(::tcsetattr(dispositivo(), TCSANOW, &ajustes));
        static_cast<void>(::tcflush(dispositivo(), TCIOFLUSH));
    }
    return dispositivo;
}

int menorEspera(int una, int otra) {
    if (una < 0) return otra;
    return otra < 0 ? una : std::min(una, otra);
}

}  // namespace

ServidorSerie::ServidorSerie(std::filesystem::path dispositivo, Red red)
    : dispositivo_(std::move(dispositivo)), red_(red), fin_(::eventfd(0, EFD_CLOEXEC)) {
    const bool v6 = red.familia == Familia::ipv6;
    escucha_ = Descriptor(::socket(v6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (escucha_() < 0) fallar("socket");
    sockaddr_storage donde{};
    socklen_t largo = v6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
    auto* generica = reinterpret_cast<sockaddr*>(&donde);
    if (v6) {
        auto* suya = reinterpret_cast<sockaddr_in6*>(&donde);
        suya->sin6_family = AF_INET6;
        suya->sin6_addr = in6addr_loopback;
    } else {
        auto* suya = reinterpret_cast<sockaddr_in*>(&donde);
        suya->sin_family = AF_INET;
        suya->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }
    if (::bind(escucha_(), generica, largo) != 0) fallar("bind");
    if (::listen(escucha_(), 4) != 0) fallar("listen");
    if (::getsockname(escucha_(), generica, &largo) != 0) fallar("getsockname");
    // The port stands at the same place in both.
    const auto puerto = ntohs(reinterpret_cast<const sockaddr_in*>(&donde)->sin_port);
    direccion_ = (v6 ? "tcp://[::1]:" : "tcp://127.0.0.1:") + std::to_string(puerto);
    hilo_ = std::thread([this] { servir(); });
}

ServidorSerie::~ServidorSerie() {
    static_cast<void>(::eventfd_write(fin_(), 1));
    hilo_.join();
}

void ServidorSerie::servir() {
    while (true) {
        std::array<pollfd, 2> estados = {{{fin_(), POLLIN, 0}, {escucha_(), POLLIN, 0}}};
        if (::poll(estados.data(), estados.size(), -1) < 0) continue;
        if (estados[0].revents != 0) return;
        const Descriptor cliente(::accept4(escucha_(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (cliente() < 0) continue;
        ++conexiones_;
        const int si = 1;
        static_cast<void>(::setsockopt(cliente(), IPPROTO_TCP, TCP_NODELAY, &si, sizeof si));
        // Without its device the box hangs up at once.
        const auto dispositivo = abrirCrudo(dispositivo_);
        if (dispositivo() >= 0) pasar(cliente(), dispositivo());
    }
}

void ServidorSerie::pasar(int cliente, int dispositivo) const {
    Camino ida(red_.demora);
    Camino vuelta(red_.demora);
    while (true) {
        std::array<pollfd, 3> estados = {
            {{fin_(), POLLIN, 0}, {cliente, POLLIN, 0}, {dispositivo, POLLIN, 0}}};
        const int espera = menorEspera(ida.espera(), vuelta.espera());
        if (::poll(estados.data(), estados.size(), espera) < 0) continue;
        if (estados[0].revents != 0) return;
        if (estados[1].revents != 0 && !ida.tomarDe(cliente)) return;
        if (estados[2].revents != 0 && !vuelta.tomarDe(dispositivo)) {
            // What it had said before arrives.
            while (vuelta.espera() >= 0 && vuelta.darA(cliente))
                static_cast<void>(::poll(nullptr, 0, std::max(vuelta.espera(), 0)));
            return;
        }
        if (!ida.darA(dispositivo) || !vuelta.darA(cliente)) return;
    }
}

}  // namespace telvane
