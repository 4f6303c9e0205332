// A download's base file while it grows: what came is on the disk at every moment.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "consola/entorno_consola.h"
#include "platform/guardado.h"

namespace telvane {

// "<destination>.parcial" beside the destination, renamed to it once whole. It always holds the blocks of one
// reading of the memory: those of an attempt replace what an earlier one left only once they agree with all
// of it and reach further; where they do not agree, the earlier ones are set aside under a new name. Every
// failure throws ErrorGuardado.
class ArchivoParcial {
   public:
    using Bytes = std::span<const std::uint8_t>;
    // Whether a stretch of an image agrees with what stood there before, both from this byte on.
    using Coinciden = std::function<bool(std::size_t desde, Bytes antes, Bytes ahora)>;

    // Throws where something else than a file that may be written, or one that another run is writing, stands
    // in the partial file's place: known before the logger is asked for anything. Throws ErrorNombre where
    // the program's output or its errors lead to it: that text would go over the memory's blocks.
    static void revisar(const Destino& destino, const EntornoConsola& entorno);

    // Opens the file, with what an earlier run left in it. One that another run is writing is refused, and so
    // is anything that is not a file.
    ArchivoParcial(Destino destino, Coinciden coinciden);
    ArchivoParcial(const ArchivoParcial&) = delete;
    ArchivoParcial& operator=(const ArchivoParcial&) = delete;
    // A file that holds nothing is removed, if it was made here.
    ~ArchivoParcial();

    const std::filesystem::path& ruta() const { return ruta_; }
    // What stands in the file.
    const std::vector<std::uint8_t>& contenido() const { return contenido_; }

    // The image is read from its first block again.
    void empezar() { propio_ = false; }
    // imagen: what the attempt has by now, one block more than the last time. Gives the name under which
    // earlier blocks were set aside. A file that was taken away or cut short meanwhile is made anew, unless
    // its folder is gone as well; under another name, which ruta() tells, where something else stands there.
    std::optional<std::filesystem::path> recibir(Bytes imagen);
    // The whole image: flushes it and gives it its final name, under which it is read again. Throws
    // ErrorCopia where that file is not the image.
    void terminar(Bytes imagen);

   private:
    static void exigirSitio(const Destino& destino);
    void abrir();
    void leer();
    bool cortado() const;
    std::filesystem::path primerNombre(std::string_view delante, std::string_view detras,
                                       const std::function<bool(const std::filesystem::path&)>& sirve) const;
    void dejarElNombre();
    void reponer();
    std::filesystem::path apartar();
    void reemplazar(Bytes imagen);
    void agregar(Bytes imagen);
    void exigir(int motivo) const;

    Destino destino_;
    std::filesystem::path ruta_;
    Coinciden coinciden_;
    std::vector<std::uint8_t> contenido_;
    Descriptor descriptor_;
    bool propio_ = false;  // the file holds the running attempt's blocks and no others
    bool hecho_ = false;   // the file was not there before
    bool colocado_ = false;
};

}  // namespace telvane
