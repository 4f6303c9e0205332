#include "cli/copia_en_disco.h"

#include <algorithm>

#include <fmt/format.h>

#include "data/archivo_base.h"
#include "platform/archivo.h"
#include "platform/guardado.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

// Why the file of this name does not count for these bytes; empty: it holds them and no others.
std::string queLeFalta(const fs::path& ruta, std::span<const std::uint8_t> bytes) {
    try {
        if (std::ranges::equal(leerArchivo(ruta, bytes.size() + 1), bytes)) return "";
    } catch (const ErrorLectura& error) {
        // Of one that is there nobody has done anything to it that is known.
        std::error_code sinMotivo;
        if (fs::exists(fs::symlink_status(ruta, sinMotivo)))
            return fmt::format("no se pudo volver a leer {}: {}", nombreVisible(ruta), error.motivo());
    }
    return fmt::format("{} no tiene lo que se descargó: otro programa lo quitó o lo cambió",
                       nombreVisible(ruta));
}

}  // namespace

bool contiene(const fs::path& ruta, std::span<const std::uint8_t> bytes) {
    return queLeFalta(ruta, bytes).empty();
}

void exigirEnDisco(const fs::path& ruta, std::span<const std::uint8_t> imagen) {
    const auto que = queLeFalta(ruta, imagen);
    if (que.empty()) return;
    // Never the name that did not keep it, whether or not something stands there.
    const auto otro = rutaLibre(rutaDeVez(ruta, 2));
    try {
        guardarAtomico(otro, imagen, reglaDeBase());
    } catch (const ErrorGuardado& error) {
        throw ErrorCopia(fmt::format("{}, y {}", que, error.what()), std::nullopt);
    }
    if (!contiene(otro, imagen)) {
        throw ErrorCopia(
            fmt::format("{}, y tampoco {} lo tiene: repita en otra carpeta", que, nombreVisible(otro)),
            std::nullopt);
    }
    throw ErrorCopia(
        fmt::format("{}. Lo descargado quedó, entero, en {}: use ese archivo", que, nombreVisible(otro)),
        otro);
}

}  // namespace telvane
