#include "platform/archivo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>

#include "platform/descriptor.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

constexpr std::string_view kNoEsArchivo = "no es un archivo. Dé el nombre de uno";

constexpr std::string_view kEnlaceSinFin = "es un enlace a algo que no existe. Revise a qué lleva";

std::string porQueNoSeAbre(const std::filesystem::path& ruta, int motivo) {
    // A socket, or a device that nobody drives.
    if (motivo == ENXIO) return std::string(kNoEsArchivo);
    struct stat datos {};
    const bool enlace = motivo == ENOENT && ::lstat(ruta.c_str(), &datos) == 0 && S_ISLNK(datos.st_mode);
    return enlace ? std::string(kEnlaceSinFin) : motivoSistema(motivo);
}

[[noreturn]] void fallar(const std::filesystem::path& ruta, std::string motivo) {
    throw ErrorLectura(ruta, std::move(motivo));
}

std::filesystem::path carpetaXdg(const char* variable, const char* porDefecto) {
    // A folder that is not absolute is to be ignored.
    if (const char* valor = std::getenv(variable); valor && *valor == '/') {
        return std::filesystem::path(valor) / "telvane";
    }
    if (const char* casa = std::getenv("HOME"); casa && *casa == '/') {
        return std::filesystem::path(casa) / porDefecto / "telvane";
    }
    return {};
}

}  // namespace

ErrorLectura::ErrorLectura(const std::filesystem::path& ruta, std::string motivo)
    : std::runtime_error("no se pudo leer " + nombreVisible(ruta) + ": " + motivo),
      motivo_(std::move(motivo)) {}

std::vector<std::uint8_t> leerArchivo(const std::filesystem::path& ruta, std::size_t maximo) {
    std::vector<std::uint8_t> bytes(maximo);
    bytes.resize(leerArchivo(ruta, std::span(bytes)));
    return bytes;
}

std::size_t leerArchivo(const std::filesystem::path& ruta, std::span<std::uint8_t> destino) {
    const Descriptor archivo(::open(ruta.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (archivo() < 0) fallar(ruta, porQueNoSeAbre(ruta, errno));
    struct stat datos {};
    if (::fstat(archivo(), &datos) != 0) fallar(ruta, motivoSistema(errno));
    if (S_ISDIR(datos.st_mode)) fallar(ruta, motivoSistema(EISDIR));
    if (!S_ISREG(datos.st_mode)) fallar(ruta, std::string(kNoEsArchivo));

    const auto leidos = leerDe(archivo(), destino);
    if (!leidos) fallar(ruta, motivoSistema(errno));
    return *leidos;
}

std::optional<std::size_t> leerDe(int descriptor, std::span<std::uint8_t> destino) {
    std::size_t leidos = 0;
    while (leidos < destino.size()) {
        const auto n = ::read(descriptor, destino.data() + leidos, destino.size() - leidos);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return std::nullopt;
        if (n == 0) break;
        leidos += static_cast<std::size_t>(n);
    }
    return leidos;
}

std::filesystem::path carpetaDeDatos() {
    return carpetaXdg("XDG_DATA_HOME", ".local/share");
}
std::filesystem::path carpetaDeAjustes() {
    return carpetaXdg("XDG_CONFIG_HOME", ".config");
}

}  // namespace telvane
