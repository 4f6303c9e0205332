// A pseudo-terminal for tests: what a logger would be at the other end of the cable.
#pragma once

#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

namespace telvane {

class PtyPrueba {
   public:
    PtyPrueba() {
        std::array<char, 256> nombre{};
        if (::openpty(&maestro_, &esclavo_, nombre.data(), nullptr, nullptr) != 0) {
            throw std::system_error(errno, std::generic_category(), "openpty");
        }
        ruta_ = nombre.data();
    }
    PtyPrueba(const PtyPrueba&) = delete;
    PtyPrueba& operator=(const PtyPrueba&) = delete;
    ~PtyPrueba() {
        colgar();
        ::close(esclavo_);
    }

    const std::filesystem::path& ruta() const { return ruta_; }
    int maestro() const { return maestro_; }

    void enviar(std::span<const std::uint8_t> bytes) {
        ASSERT_EQ(::write(maestro_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    void enviar(const std::string& texto) {
        enviar(std::span(reinterpret_cast<const std::uint8_t*>(texto.data()), texto.size()));
    }
    // What the other side wrote, exactly this much.
    std::vector<std::uint8_t> recibir(std::size_t cuantos) {
        std::vector<std::uint8_t> bytes(cuantos);
        std::size_t leidos = 0;
        while (leidos < cuantos) {
            const auto n = ::read(maestro_, bytes.data() + leidos, cuantos - leidos);
            if (n <= 0) break;
            leidos += static_cast<std::size_t>(n);
        }
        bytes.resize(leidos);
        return bytes;
    }
    // The cable is pulled.
    void colgar() {
        if (maestro_ >= 0) ::close(maestro_);
        maestro_ = -1;
    }

   private:
    int maestro_ = -1;
    // Kept open, so that the pair outlives a port that is closed and opened again.
    int esclavo_ = -1;
    std::filesystem::path ruta_;
};

}  // namespace telvane
