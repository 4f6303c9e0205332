// A serial device server for tests, at a port of its own on this machine: accepts when told to, and
// misbehaves when told to.
#pragma once

#include <linux/filter.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "link/direccion_tcp.h"

namespace telvane {

class ServidorPrueba {
   public:
    // cola: connections that the system takes before they are accepted.
    explicit ServidorPrueba(int cola = 4) : escucha_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in donde{};
        donde.sin_family = AF_INET;
        donde.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t largo = sizeof donde;
        auto* generica = reinterpret_cast<sockaddr*>(&donde);
        if (escucha_ < 0 || ::bind(escucha_, generica, largo) != 0 || ::listen(escucha_, cola) != 0 ||
            ::getsockname(escucha_, generica, &largo) != 0) {
            throw std::system_error(errno, std::generic_category(), "servidor");
        }
        direccion_ = {"127.0.0.1", std::to_string(ntohs(donde.sin_port))};
    }
    ServidorPrueba(const ServidorPrueba&) = delete;
    ServidorPrueba& operator=(const ServidorPrueba&) = delete;
    ~ServidorPrueba() {
        colgar();
        dejarDeEscuchar();
    }

    const DireccionTcp& direccion() const { return direccion_; }

    // Waits for the next connection.
    void aceptar() {
        colgar();
        cliente_ = ::accept4(escucha_, nullptr, nullptr, SOCK_CLOEXEC);
        ASSERT_GE(cliente_, 0);
    }
    bool hayOtraConexion() const {
        pollfd estado{escucha_, POLLIN, 0};
        return ::poll(&estado, 1, 0) > 0;
    }
    void enviar(const std::string& texto) {
        ASSERT_EQ(::send(cliente_, texto.data(), texto.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(texto.size()));
    }
    // What the other side wrote, exactly this much, or less when it left.
    std::string recibir(std::size_t cuantos) {
        std::string bytes(cuantos, '\0');
        const auto n = ::recv(cliente_, bytes.data(), bytes.size(), MSG_WAITALL);
        bytes.resize(n < 0 ? 0 : static_cast<std::size_t>(n));
        return bytes;
    }
    void colgar() {
        if (cliente_ >= 0) ::close(cliente_);
        cliente_ = -1;
    }
    // The peer hears of it by a reset, as when a server loses its power and comes back.
    void cortar() {
        const linger sinDemora{1, 0};
        ::setsockopt(cliente_, SOL_SOCKET, SO_LINGER, &sinDemora, sizeof sinDemora);
        colgar();
    }
    // Half open: from here on it hears nothing, and acknowledges nothing, as when its machine or the way to
    // it is gone.
    void ensordecer() const {
        sock_filter nada = BPF_STMT(BPF_RET | BPF_K, 0);
        const sock_fprog filtro{1, &nada};
        ASSERT_EQ(::setsockopt(cliente_, SOL_SOCKET, SO_ATTACH_FILTER, &filtro, sizeof filtro), 0);
    }
    void dejarDeEscuchar() {
        if (escucha_ >= 0) ::close(escucha_);
        escucha_ = -1;
    }

   private:
    int escucha_;
    int cliente_ = -1;
    DireccionTcp direccion_;
};

}  // namespace telvane
