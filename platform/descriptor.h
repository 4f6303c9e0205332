// A descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace telvane {

class Descriptor {
   public:
    explicit Descriptor(int numero = -1) : numero_(numero) {}
    Descriptor(Descriptor&& otro) noexcept : numero_(std::exchange(otro.numero_, -1)) {}
    Descriptor& operator=(Descriptor&& otro) noexcept {
        std::swap(numero_, otro.numero_);
        return *this;
    }
    ~Descriptor() {
        if (numero_ >= 0) ::close(numero_);
    }

    int operator()() const { return numero_; }
    // 0, or why what was written before may be lost: a delayed write may report its failure only here.
    int cerrar() {
        const int resultado = ::close(std::exchange(numero_, -1));
        // After EINTR the descriptor is gone all the same.
        return resultado == 0 || errno == EINTR ? 0 : errno;
    }

   private:
    int numero_;
};

}  // namespace telvane
