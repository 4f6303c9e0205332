// From a memory image to a file's bytes, as the window would save them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "data/config_de_archivo.h"
#include "data/formato.h"
#include "data/informe.h"
#include "data/memoria.h"
#include "data/sello.h"
#include "platform/reloj.h"

namespace telvane {

// Where the file's configuration comes from.
struct OrigenConfig {
    // Serial number's 8 digits instead of those in the image's header.
    std::optional<std::string> serie = {};
    LoggerLeido leido = {};
};

// Keeps its buffers from one image to the next; not a thing of several threads.
class Conversor {
   public:
    // Bytes of an image that are looked at; what a file holds beyond them is nothing.
    static constexpr std::size_t kAlcance = (static_cast<std::size_t>(kUltimoBloque) + 1) * kBytesBloque;

    // Where an image is read to, kAlcance bytes.
    std::span<std::uint8_t> destino() { return memoria_.primeros(kAlcance / kBytesBloque); }
    // bytes: how many of them the image has; missing ones count as 0, and so does a record that is cut.
    // momento: the time that the file tells as its own. jsonl: one object a line, UTF-8; the other formats
    // are Windows-1252.
    ArchivoDatos convertir(std::size_t bytes, Formato formato, Perfil perfil, const FechaHora& momento,
                           const OrigenConfig& origen = {});
    // The same for an image that stands elsewhere.
    ArchivoDatos convertir(std::span<const std::uint8_t> imagen, Formato formato, Perfil perfil,
                           const FechaHora& momento, const OrigenConfig& origen = {});

   private:
    void marcarSerie(const std::string& serie);

    Memoria memoria_;
    std::size_t usados_ = 0;  // by the image before
};

}  // namespace telvane
