// A folder with files of every sort, a logger on a pty, and what stood there before a command ran.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/apoyo/azar.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane {

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
