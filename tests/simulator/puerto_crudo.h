// A program's end of a pty, opened by name: raw, read with a deadline.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace telvane {

class PuertoCrudo {
   public:
    using Bytes = std::vector<std::uint8_t>;

    explicit PuertoCrudo(const std::filesystem::path& ruta)
        : descriptor_(::open(ruta.c_str(), O_RDWR | O_NOCTTY)) {
        termios ajustes{};
        ::tcgetattr(descriptor_, &ajustes);
        ::cfmakeraw(&ajustes);
        ::tcsetattr(descriptor_, TCSANOW, &ajustes);
        ::tcflush(descriptor_, TCIOFLUSH);
    }
    PuertoCrudo(const PuertoCrudo&) = delete;
    PuertoCrudo& operator=(const PuertoCrudo&) = delete;
    ~PuertoCrudo() { ::close(descriptor_); }

    bool abierto() const { return descriptor_ >= 0; }
    bool colgado() const { return colgado_; }

    void escribir(std::uint8_t byte) { escrito_ = ::write(descriptor_, &byte, 1) == 1; }
    void escribir(const Bytes& bytes) {
        escrito_ = ::write(descriptor_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    }
    bool escrito() const { return escrito_; }

    // This many bytes, or those that came before the deadline or the hang-up.
    Bytes leer(std::size_t cuantos, std::chrono::milliseconds plazo = std::chrono::seconds(20)) {
        const auto fin = std::chrono::steady_clock::now() + plazo;
        Bytes bytes;
        while (bytes.size() < cuantos && !colgado_) {
            const auto falta =
                std::chrono::ceil<std::chrono::milliseconds>(fin - std::chrono::steady_clock::now());
            pollfd vigilado{descriptor_, POLLIN, 0};
            if (falta.count() <= 0 || ::poll(&vigilado, 1, static_cast<int>(falta.count())) <= 0) break;
            Bytes trozo(cuantos - bytes.size());
            const auto leidos = ::read(descriptor_, trozo.data(), trozo.size());
            colgado_ = leidos <= 0;
            if (!colgado_) bytes.insert(bytes.end(), trozo.begin(), trozo.begin() + leidos);
        }
        return bytes;
    }

    // One byte out, one byte back; 256 when none came.
    unsigned pedir(std::uint8_t byte) {
        escribir(byte);
        const auto respuesta = leer(1);
        return respuesta.empty() ? 256u : respuesta.front();
    }

   private:
    int descriptor_;
    bool colgado_ = false;
    bool escrito_ = false;
};

}  // namespace telvane
