#include "historico/apertura_sqlite.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "historico/apertura.h"
#include "historico/copia_previa.h"
#include "historico/esquema.h"
#include "historico/esquema_sqlite.h"
#include "platform/descriptor.h"
#include "platform/destino.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

// What stands at a path that is to be an archive. Opening some of it would hang, or tell less.
enum class QueHay { nada, vacio, archivo };
QueHay queHay(const std::filesystem::path& ruta) {
    struct stat datos {};
    if (::stat(ruta.c_str(), &datos) != 0) {
        if (errno == ENOENT) return QueHay::nada;
        throw ErrorAlmacen(
            fmt::format("{}: no se puede abrir: {}", nombreVisible(ruta), motivoSistema(errno)));
    }
    if (S_ISDIR(datos.st_mode)) {
        throw ErrorAlmacen(fmt::format("{}: es una carpeta: nombre un archivo", nombreVisible(ruta)));
    }
    if (!S_ISREG(datos.st_mode)) {
        throw ErrorAlmacen(fmt::format("{}: no es un archivo: nombre otro", nombreVisible(ruta)));
    }
    return datos.st_size == 0 ? QueHay::vacio : QueHay::archivo;
}

// A writer that was killed before its first commit leaves a log with a beginning and nothing behind it. Who
// may not write beside it tries in vain to make sense of that, for ten seconds; who writes just now is soon
// further.
bool quedoAMedias(const std::filesystem::path& ruta, const std::function<void()>& atender) {
    constexpr int kVistazos = 15;
    constexpr int kVistazoMs = 20;
    constexpr std::uintmax_t kSoloElComienzo = 32;
    std::error_code sinMotivo;
    const auto real = std::filesystem::weakly_canonical(ruta, sinMotivo).string();
    for (int i = 0; i < kVistazos; ++i) {
        const auto largo = std::filesystem::file_size(real + "-wal", sinMotivo);
        if (sinMotivo || largo != kSoloElComienzo || ::access((real + "-shm").c_str(), W_OK) == 0)
            return false;
        if (atender) atender();
        sqlite3_sleep(kVistazoMs);
    }
    return true;
}

// SQLite opens what it may not write for reading, and fails over the files that it wants beside it: it then
// says that they are not there.
void exigirDiscoEscribible(const std::filesystem::path& ruta) {
    if (::faccessat(AT_FDCWD, ruta.c_str(), W_OK, AT_EACCESS) == 0 || errno != EROFS) return;
    throw ErrorAlmacen(
        fmt::format("{}: no se puede escribir en él: {}; monte ese disco para escribir, o copie el archivo a "
                    "otro y nómbrelo",
                    nombreVisible(ruta), motivoSinConsejo(EROFS)));
}

// SQLite does not say why it can make none. Of two that begin at once one finds what the other has made.
void exigirQueSePuedaHacer(const std::filesystem::path& ruta) {
    try {
        // SQLite makes these beside it, once it is there.
        for (const auto* suyo : {"", "-wal", "-shm", "-journal"})
            static_cast<void>(revisarDestino(ruta.string() + suyo));
    } catch (const std::exception&) {
        if (queHay(ruta) == QueHay::nada) throw;
    }
}

// Whatever the umask. An empty one is a new archive, and what SQLite puts beside it gets its mode.
void hacerParaSuDueno(const std::filesystem::path& ruta) {
    exigirQueSePuedaHacer(ruta);
    constexpr mode_t kDeTodos = 0666;
    constexpr mode_t kDeSuDueno = S_IRUSR | S_IWUSR;
    const Descriptor nuevo(::open(ruta.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kDeTodos));
    struct stat datos {};
    // SQLite says why there can be none.
    if (nuevo() < 0 || ::fstat(nuevo(), &datos) != 0 || (datos.st_mode & kDeSuDueno) == kDeSuDueno) return;
    static_cast<void>(::fchmod(nuevo(), (datos.st_mode & kDeTodos) | kDeSuDueno));
}

}  // namespace

void AperturaSqlite::exigirLegible(const std::filesystem::path& ruta, const std::function<void()>& atender) {
    if (queHay(ruta) != QueHay::archivo) throw noHayArchivo(nombreVisible(ruta));
    if (quedoAMedias(ruta, atender))
        throw ErrorAlmacen(fmt::format("{}: {}", nombreVisible(ruta), BaseSqlite::kAMedias));
}

void AperturaSqlite::exigirEscribible(const std::filesystem::path& ruta, bool crear) {
    const auto hay = queHay(ruta);
    if (hay != QueHay::archivo && !crear) throw noHayArchivo(nombreVisible(ruta));
    if (hay == QueHay::nada) hacerParaSuDueno(ruta);
    if (hay != QueHay::nada) exigirDiscoEscribible(ruta);
}

void AperturaSqlite::paraLeer() {
    if (deNadie()) throw noHayArchivo(nombreVisible(base_.ruta()));
    exigirNuestro();
    const auto version = base_.numero("PRAGMA user_version");
    if (version >= versionDeAhora()) return;
    exigirSinEstorbo(almacen_.nombre(), tablas_, tablas_.deVersion(version), false);
    throw esDeVersionAnterior(almacen_.nombre(), version);
}

void AperturaSqlite::paraEscribir(bool crear) {
    const bool sinHacer = deNadie();
    if (sinHacer && !crear) throw noHayArchivo(nombreVisible(base_.ruta()));
    const bool porDecir = !crear && callaQueEsNuestro();
    // Of another program nothing is touched.
    if (!sinHacer && !porDecir) exigirNuestro();
    base_.ejecutar("PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA journal_size_limit=1048576");
    if (sinHacer) return crearTablas();
    // The migrations find what is there already.
    if (porDecir)
        base_.ejecutar(fmt::format("PRAGMA application_id={}; PRAGMA user_version=1", esquema::kDeTelvane));
    if (const auto version = base_.numero("PRAGMA user_version"); version < versionDeAhora())
        migrar(version, !crear);
}

void AperturaSqlite::crearTablas() {
    Transaccion transaccion(almacen_, Almacen::Modo::escritura);
    // Two may begin at once: the second finds it done.
    if (base_.numero("PRAGMA application_id") == 0) {
        tablas_.crear();
        base_.ejecutar(fmt::format("PRAGMA application_id={}; PRAGMA user_version={}", esquema::kDeTelvane,
                                   versionDeAhora()));
    }
    transaccion.confirmar();
}

// Begun, and nothing made in it yet.
bool AperturaSqlite::deNadie() {
    return base_.numero("PRAGMA application_id") == 0 && base_.numero("PRAGMA user_version") == 0 &&
           base_.numero("SELECT count(*) FROM sqlite_master") == 0;
}

// What copies the tables with another program into a new file leaves behind the two numbers that say whose
// it is and of which version.
bool AperturaSqlite::callaQueEsNuestro() {
    const auto deQuien = base_.numero("PRAGMA application_id");
    const bool calla =
        deQuien == 0 || (deQuien == esquema::kDeTelvane && base_.numero("PRAGMA user_version") < 1);
    return calla && tablas_.estanLasDeSiempre();
}

void AperturaSqlite::migrar(std::int64_t desde, bool reponer) {
    exigirSinEstorbo(almacen_.nombre(), tablas_, tablas_.deVersion(desde), reponer);
    guardarCopiaPrevia(base_.ruta(), desde, [&](const std::filesystem::path& copia) {
        Sentencia(base_, "VACUUM INTO ?1").poner(1, std::string_view(copia.native())).correr();
    });
    Transaccion transaccion(almacen_, Almacen::Modo::escritura);
    if (reponer) tablas_.deVersion(desde).reponer();
    for (auto version = base_.numero("PRAGMA user_version"); version < versionDeAhora(); ++version) {
        base_.ejecutar(std::string(migraciones_[static_cast<std::size_t>(version) - 1]));
    }
    base_.ejecutar(fmt::format("PRAGMA user_version={}", versionDeAhora()));
    transaccion.confirmar();
}

void AperturaSqlite::exigirNuestro() {
    if (callaQueEsNuestro()) {
        throw ErrorAlmacen(
            fmt::format("{}: no dice que es un archivo histórico de Telvane, ni de qué versión: {}",
                        almacen_.nombre(), kReponer));
    }
    if (base_.numero("PRAGMA application_id") != esquema::kDeTelvane) base_.fallar(SQLITE_NOTADB);
    const auto version = base_.numero("PRAGMA user_version");
    // There was never one before the first: nobody knows what such a file holds.
    if (version < 1) {
        throw ErrorAlmacen(fmt::format("{}: dice ser de una versión que nunca hubo ({}): {}",
                                       almacen_.nombre(), version, kRecuperar));
    }
    if (version > versionDeAhora()) throw esDeVersionMasNueva(almacen_.nombre(), version, versionDeAhora());
}

}  // namespace telvane
