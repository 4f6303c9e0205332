// Reading a file that a user chose, and the folders of the user's own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace telvane {

// "no se pudo leer carpeta/x.rgt: MOTIVO": the name as it was given.
class ErrorLectura : public std::runtime_error {
   public:
    ErrorLectura(const std::filesystem::path& ruta, std::string motivo);
    // By itself, for who names the file.
    const std::string& motivo() const { return motivo_; }

   private:
    std::string motivo_;
};

// The first bytes of a regular file, at most maximo. Throws ErrorLectura with the reason in Spanish for
// anything that is no regular file or cannot be read to that point. Never waits for a FIFO.
std::vector<std::uint8_t> leerArchivo(const std::filesystem::path& ruta, std::size_t maximo);
// The same into destino; gives how many.
std::size_t leerArchivo(const std::filesystem::path& ruta, std::span<std::uint8_t> destino);

// The same of an open descriptor, up to its end; nothing, and errno, where it fails.
std::optional<std::size_t> leerDe(int descriptor, std::span<std::uint8_t> destino);

// Folder of the user's data, $XDG_DATA_HOME/telvane or ~/.local/share/telvane; empty when there is no home.
std::filesystem::path carpetaDeDatos();
// Folder of the user's settings, $XDG_CONFIG_HOME/telvane or ~/.config/telvane; empty when there is no home.
std::filesystem::path carpetaDeAjustes();

}  // namespace telvane
