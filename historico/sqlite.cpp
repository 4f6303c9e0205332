#include "historico/sqlite.h"

#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "historico/almacen.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

constexpr int kSoloCodigo = 0xFF;

constexpr const char* kSinEspacio =
    "no queda espacio en el disco: libere espacio y repita; lo que ya estaba sigue entero";
constexpr std::string_view kSinLosSuyos =
    "le faltan sus archivos -wal y -shm y aquí no hay permiso para hacerlos: los repone el próximo "
    "incorporar";

// How often whoever waits for a lock looks at it, and at what else there is to do.
constexpr int kVistazoMs = 20;

ErrorAlmacen::Clase claseDe(int codigo) {
    switch (codigo & kSoloCodigo) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return ErrorAlmacen::Clase::agotada;
        case SQLITE_CONSTRAINT:
        case SQLITE_TOOBIG:
            return ErrorAlmacen::Clase::delDato;
        case SQLITE_NOTADB:
            return ErrorAlmacen::Clase::ajeno;
        default:
            return ErrorAlmacen::Clase::otra;
    }
}

// What it maps of a file beside its own it takes for the disk's.
bool faltaMemoria(int codigo, int sistema) {
    const int clase = codigo & kSoloCodigo;
    return clase == SQLITE_NOMEM || codigo == SQLITE_IOERR_NOMEM ||
           (clase == SQLITE_IOERR && sistema == ENOMEM);
}

// SQLite loses the system's reason, a number, where it tidies up after a write: of a session that allows no
// larger file it is known all the same.
std::string motivoDelDisco(int codigo, int sistema) {
    if (sistema == ENOSPC) return kSinEspacio;
    if (sistema == EFBIG || (sistema == 0 && codigo == SQLITE_IOERR_WRITE && hayLimite(RLIMIT_FSIZE)))
        return fmt::format("{}; lo que ya estaba sigue entero", motivoEscritura(EFBIG));
    return fmt::format("el disco falla: {}; lo que ya estaba sigue entero, repita cuando esté resuelto",
                       motivoSinConsejo(sistema != 0 ? sistema : EIO));
}

}  // namespace

BaseSqlite::BaseSqlite(const std::filesystem::path& ruta, Acceso acceso, std::chrono::milliseconds paciencia,
                       std::function<void()> atender)
    : ruta_(ruta), acceso_(acceso), paciencia_(paciencia), atender_(std::move(atender)) {
    const int modo =
        acceso == Acceso::lectura ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    // A whole path is a file's: to SQLite some names are addresses, or its memory.
    const auto entera = ruta.empty() ? ruta : std::filesystem::absolute(ruta);
    // To SQLite a file of one byte is empty.
    std::error_code sinMedida;
    if (std::filesystem::file_size(entera, sinMedida) == 1)
        throw ErrorAlmacen(fmt::format("{}: {}", nombreVisible(ruta), motivo(SQLITE_NOTADB)));
    // SQLite takes for the system's reason whatever that said last, also where it never asked.
    errno = 0;
    const int codigo =
        sqlite3_open_v2(entera.c_str(), &base_, modo | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    if (codigo != SQLITE_OK) {
        if (base_ == nullptr) throw std::bad_alloc();
        const auto que = fmt::format("{}: {}", nombreVisible(ruta), motivo(codigo));
        sqlite3_close(base_);
        throw ErrorAlmacen(que);
    }
    sqlite3_busy_handler(
        base_,
        [](void* esta, int vez) { return static_cast<BaseSqlite*>(esta)->seguirEsperando(vez) ? 1 : 0; },
        this);
    // Whoever hung some on our tables hung them there for himself: they may take away what is kept.
    sqlite3_db_config(base_, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    // Who may only read is shut out once the last writer has taken these files away.
    int quedan = 1;
    sqlite3_file_control(base_, "main", SQLITE_FCNTL_PERSIST_WAL, &quedan);
}

BaseSqlite::~BaseSqlite() {
    sqlite3_close(base_);
}

std::string BaseSqlite::motivo(int codigo) const {
    const int sistema = base_ != nullptr ? sqlite3_system_errno(base_) : 0;
    // Who may only read cannot tidy up after a writer that was killed.
    if (codigo == SQLITE_PROTOCOL || codigo == SQLITE_READONLY_RECOVERY ||
        codigo == SQLITE_READONLY_CANTINIT) {
        return std::string(kAMedias);
    }
    // Whoever only reads takes nothing back.
    if (codigo == SQLITE_READONLY_ROLLBACK) {
        return "hay a su lado un -journal: un corte dejó a medias lo que se escribía en él, y lo termina el "
               "próximo "
               "incorporar";
    }
    switch (codigo & kSoloCodigo) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return "otro programa escribe en él: repita cuando termine";
        case SQLITE_CONSTRAINT:
            return "lo que hay en él se contradice: vea telvane-historico comprobar";
        case SQLITE_FULL:
            return kSinEspacio;
        case SQLITE_READONLY:
        case SQLITE_PERM:
            if (acceso_ == Acceso::lectura) return std::string(kSinLosSuyos);
            return "no se puede escribir en él: revise sus permisos y los de su carpeta";
        case SQLITE_CANTOPEN:
            // It is there: it is one of those two that a writer, killed, had not yet made, or somebody took.
            if (std::error_code sinMotivo;
                acceso_ == Acceso::lectura && sistema == ENOENT && std::filesystem::exists(ruta_, sinMotivo))
                return std::string(quedaDiario() ? kAMedias : kSinLosSuyos);
            return fmt::format("no se puede abrir: {}", porQueNoSeAbre(sistema));
        case SQLITE_IOERR:
            return motivoDelDisco(codigo, sistema);
        case SQLITE_NOTADB:
            return "no es un archivo histórico de Telvane: nombre otro";
        case SQLITE_ERROR:
            // Our own statements are right where all of it is there.
            return "le falta una parte: vea telvane-historico comprobar";
        case SQLITE_CORRUPT:
            // A read that the disk fails at is told as the same.
            return "está dañado, o el disco falla al leerlo: repita y, si sigue, recupere su copia, o haga "
                   "otro "
                   "archivo con los .rgt guardados";
        default:
            return base_ != nullptr ? sqlite3_errmsg(base_) : sqlite3_errstr(codigo);
    }
}

// Whether a writer's last commits stand beside it.
bool BaseSqlite::quedaDiario() const {
    std::error_code sinMotivo;
    const auto largo = std::filesystem::file_size(ruta_.string() + "-wal", sinMotivo);
    return !sinMotivo && largo > 0;
}

// What could not be made SQLite tries to read: of its folder the reason is known.
std::string BaseSqlite::porQueNoSeAbre(int sistema) const {
    if (sistema == ENOENT && acceso_ != Acceso::lectura)
        return motivoSinCarpeta(std::filesystem::absolute(ruta_).parent_path());
    return sistema != 0 ? motivoSistema(sistema) : "revise sus permisos y los de su carpeta";
}

bool BaseSqlite::seguirEsperando(int vez) {
    const auto ahora = std::chrono::steady_clock::now();
    if (vez == 0) hastaCuando_ = ahora + paciencia_;
    if (ahora >= hastaCuando_) return false;
    try {
        if (atender_) atender_();
    } catch (...) {
        interrupcion_ = std::current_exception();
        return false;
    }
    sqlite3_sleep(kVistazoMs);
    return true;
}

void BaseSqlite::insistir(const std::function<void()>& paso) {
    const auto hasta = std::chrono::steady_clock::now() + paciencia_;
    while (true) {
        try {
            return paso();
        } catch (const ErrorAlmacen& error) {
            if (error.clase() != ErrorAlmacen::Clase::agotada || std::chrono::steady_clock::now() >= hasta)
                throw;
        }
        if (atender_) atender_();
        sqlite3_sleep(kVistazoMs);
    }
}

void BaseSqlite::fallar(int codigo) const {
    if (interrupcion_) std::rethrow_exception(std::exchange(interrupcion_, nullptr));
    if (faltaMemoria(codigo, sqlite3_system_errno(base_))) throw std::bad_alloc();
    throw ErrorAlmacen(fmt::format("{}: {}", nombreVisible(ruta_), motivo(codigo)), claseDe(codigo));
}

void BaseSqlite::exigir(int codigo) const {
    if (codigo != SQLITE_OK) fallar(codigo);
}

void BaseSqlite::ejecutar(const std::string& sql) {
    exigir(sqlite3_exec(base_, sql.c_str(), nullptr, nullptr, nullptr));
}

std::int64_t BaseSqlite::numero(const std::string& sql) {
    Sentencia sentencia(*this, sql);
    return sentencia.paso() ? sentencia.entero(0) : 0;
}

Sentencia::Sentencia(const BaseSqlite& base, std::string_view sql) : base_(base) {
    base.exigir(sqlite3_prepare_v3(base.conexion(), sql.data(), static_cast<int>(sql.size()),
                                   SQLITE_PREPARE_PERSISTENT, &sentencia_, nullptr));
}

Sentencia::~Sentencia() {
    sqlite3_finalize(sentencia_);
}

Sentencia& Sentencia::poner(int cual, std::int64_t valor) {
    base_.exigir(sqlite3_bind_int64(sentencia_, cual, valor));
    return *this;
}
Sentencia& Sentencia::poner(int cual, std::string_view texto) {
    base_.exigir(
        sqlite3_bind_text(sentencia_, cual, texto.data(), static_cast<int>(texto.size()), SQLITE_TRANSIENT));
    return *this;
}
Sentencia& Sentencia::poner(int cual, std::span<const std::uint8_t> bytes) {
    // No bytes are a value, not the absence of one.
    static constexpr std::uint8_t kNada = 0;
    const void* desde = bytes.empty() ? &kNada : bytes.data();
    base_.exigir(sqlite3_bind_blob(sentencia_, cual, desde, static_cast<int>(bytes.size()), SQLITE_STATIC));
    return *this;
}
Sentencia& Sentencia::ponerNulo(int cual) {
    base_.exigir(sqlite3_bind_null(sentencia_, cual));
    return *this;
}

bool Sentencia::paso() {
    const int codigo = sqlite3_step(sentencia_);
    if (codigo == SQLITE_ROW) return true;
    if (codigo == SQLITE_DONE) return false;
    volver();
    base_.fallar(codigo);
}

void Sentencia::correr(const std::function<void()>& alFila) {
    try {
        while (paso()) {
            if (alFila) alFila();
        }
    } catch (...) {
        volver();
        throw;
    }
    volver();
}

void Sentencia::volver() {
    // What the run said has been told by paso.
    static_cast<void>(sqlite3_reset(sentencia_));
}

bool Sentencia::esNulo(int columna) const {
    return sqlite3_column_type(sentencia_, columna) == SQLITE_NULL;
}
std::int64_t Sentencia::entero(int columna) const {
    return sqlite3_column_int64(sentencia_, columna);
}
std::string Sentencia::texto(int columna) const {
    const auto* texto = reinterpret_cast<const char*>(sqlite3_column_text(sentencia_, columna));
    const auto largo = static_cast<std::size_t>(sqlite3_column_bytes(sentencia_, columna));
    return texto == nullptr ? std::string() : std::string(texto, largo);
}
std::span<const std::uint8_t> Sentencia::bytes(int columna) const {
    const auto* desde = static_cast<const std::uint8_t*>(sqlite3_column_blob(sentencia_, columna));
    return {desde, static_cast<std::size_t>(sqlite3_column_bytes(sentencia_, columna))};
}

}  // namespace telvane
