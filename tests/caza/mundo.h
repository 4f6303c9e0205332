// A folder with files of every sort, a logger on a pty, and what stood there before a command ran.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane {

using Azar = std::mt19937;

// 0 to hasta - 1.
inline std::size_t tirar(Azar& azar, std::size_t hasta) {
    return std::uniform_int_distribution<std::size_t>(0, hasta - 1)(azar);
}
template <class Lista>
const auto& uno(Azar& azar, const Lista& lista) {
    return lista[tirar(azar, std::size(lista))];
}
inline bool vez(Azar& azar, std::size_t deCada) {
    return tirar(azar, deCada) == 0;
}

class Mundo {
   public:
    // simulador: path of the program.
    Mundo(Azar& azar, std::string simulador);

    std::filesystem::path carpeta() const { return temporal_ / "mundo"; }
    std::filesystem::path puerto() const { return temporal_ / "COM1"; }
    const std::vector<std::string>& fallos() const { return fallos_; }

    // A logger for one command, on a line that misbehaves in its own way; what it did to its memory is on
    // the disk once it was switched off.
    void encender(Azar& azar);
    void apagar();

    // Names for a command to read and write, as it would be given them in the folder.
    std::string nombre(Azar& azar) const;

    // Every file below the folder by its name there: what it holds; of a link, where it points.
    std::map<std::string, std::string> fotografiar() const;
    // The memory of the logger, which is off.
    std::string memoria() const;

   private:
    void poblar(Azar& azar);

    CarpetaTemporal temporal_;
    std::string programa_;
    std::vector<std::string> fallos_;
    std::unique_ptr<Proceso> simulador_;
};

}  // namespace telvane
