#include "historico/copia_previa.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "data/archivo_base.h"
#include "historico/almacen.h"
#include "platform/archivo.h"
#include "platform/descriptor.h"
#include "platform/destino.h"
#include "platform/guardado.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

// Behind its name, with the process's number before it, while it is made.
constexpr std::string_view kParcial = ".parcial";
constexpr std::string_view kVersion = ".version";

// Which process makes the copy that has this name; 0: it is none.
pid_t quienCopia(std::string_view nombre, const fs::path& archivo) {
    constexpr std::string_view kCifras = "0123456789";
    const auto tomar = [&](std::string_view que) {
        if (!nombre.starts_with(que)) return false;
        nombre.remove_prefix(que.size());
        return true;
    };
    const auto numero = [&] {
        const auto cifras = std::min(nombre.find_first_not_of(kCifras), nombre.size());
        pid_t valor = 0;
        const auto fin = std::from_chars(nombre.data(), nombre.data() + cifras, valor);
        nombre.remove_prefix(cifras);
        return cifras > 0 && fin.ec == std::errc() ? valor : 0;
    };
    if (!tomar(archivo.filename().string()) || !tomar(kVersion) || numero() == 0 || !tomar(".")) return 0;
    const auto proceso = numero();
    return tomar(kParcial) && (nombre.empty() || nombre == "-journal") ? proceso : 0;
}

// A copy that whoever made it did not finish is of no use; those of processes that live are theirs.
void quitarCopiasAMedias(const fs::path& archivo) {
    std::error_code sinMotivo;
    std::vector<fs::path> deNadie;
    fs::directory_iterator lugar(archivo.parent_path(), sinMotivo);
    for (; !sinMotivo && lugar != fs::directory_iterator(); lugar.increment(sinMotivo)) {
        const auto proceso = quienCopia(lugar->path().filename().string(), archivo);
        std::error_code ninguno;
        if (proceso > 0 && lugar->symlink_status(ninguno).type() == fs::file_type::regular &&
            ::kill(proceso, 0) != 0 && errno == ESRCH)
            deNadie.push_back(lugar->path());
    }
    for (const auto& ruta : deNadie) fs::remove(ruta, sinMotivo);
}

// Two regular files.
bool sonIguales(const fs::path& una, const fs::path& otra) {
    std::error_code sinMotivo;
    const auto largo = fs::file_size(una, sinMotivo);
    if (sinMotivo || fs::file_size(otra, sinMotivo) != largo || sinMotivo) return false;
    const Descriptor a(::open(una.c_str(), O_RDONLY | O_CLOEXEC));
    const Descriptor b(::open(otra.c_str(), O_RDONLY | O_CLOEXEC));
    constexpr std::size_t kBloque = 256 * 1024;
    std::vector<std::uint8_t> deUna(kBloque);
    std::vector<std::uint8_t> deOtra(kBloque);
    while (true) {
        const auto leidos = leerDe(a(), deUna);
        if (!leidos || leerDe(b(), deOtra) != leidos) return false;
        const auto fin = static_cast<std::ptrdiff_t>(*leidos);
        if (!std::equal(deUna.begin(), deUna.begin() + fin, deOtra.begin())) return false;
        if (*leidos < kBloque) return true;
    }
}

// Whether an earlier attempt, ended after its copy, left this very one under one of its names.
bool yaEstaCopiado(const fs::path& copia, const fs::path& nueva) {
    std::error_code sinMotivo;
    for (int vez = 1;; ++vez) {
        const auto una = rutaDeVez(copia, vez);
        if (!fs::exists(fs::symlink_status(una, sinMotivo))) return false;
        if (fs::is_regular_file(una, sinMotivo) && sonIguales(una, nueva)) return true;
    }
}

void ponerEnSuSitio(const fs::path& aMedias, const fs::path& copia) {
    int motivo = 0;
    do {
        const auto destino = revisarDestino(rutaLibre(copia), {.nuevo = true});
        motivo = colocar(aMedias, destino);
        if (motivo == 0) motivo = sincronizarCarpeta(destino.ruta.parent_path());
    } while (motivo == EEXIST);
    if (motivo != 0)
        throw ErrorAlmacen(
            fmt::format("{}: no se puede copiar: {}", nombreVisible(copia), motivoSistema(motivo)));
}

}  // namespace

void guardarCopiaPrevia(const fs::path& archivo, std::int64_t version,
                        const std::function<void(const fs::path&)>& hacer) {
    const auto entera = fs::absolute(archivo);
    const fs::path copia = fmt::format("{}{}{}", entera.string(), kVersion, version);
    const fs::path aMedias = fmt::format("{}.{}{}", copia.string(), ::getpid(), kParcial);
    quitarCopiasAMedias(entera);
    std::error_code sinMotivo;
    fs::remove(aMedias, sinMotivo);
    try {
        hacer(aMedias);
        if (yaEstaCopiado(copia, aMedias)) {
            fs::remove(aMedias, sinMotivo);
        } else {
            ponerEnSuSitio(aMedias, copia);
        }
    } catch (...) {
        fs::remove(aMedias, sinMotivo);
        throw;
    }
}

}  // namespace telvane
