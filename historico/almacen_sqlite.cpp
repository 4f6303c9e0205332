#include "historico/almacen_sqlite.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <fstream>
#include <iterator>
#include <utility>

#include <fmt/format.h>

#include "data/archivo_base.h"
#include "historico/canales.h"
#include "historico/limites_aviso.h"
#include "platform/destino.h"
#include "platform/guardado.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

using std::chrono::seconds;

constexpr std::string_view kColumnasMuestra =
    "auxiliar1,humedad,temperatura,viento,velocidad,radiacion,presion,lluvia,libre,auxiliar2,evaporacion,"
    "resto";

std::int64_t segundosDe(Instante instante) {
    return instante.time_since_epoch().count();
}
Instante instanteDeSegundos(std::int64_t cuantos) {
    return Instante(seconds(cuantos));
}

void ponerOpcional(Sentencia& s, int cual, const std::optional<Instante>& instante) {
    if (instante) {
        s.poner(cual, segundosDe(*instante));
    } else {
        s.ponerNulo(cual);
    }
}
std::optional<Instante> opcional(const Sentencia& s, int columna) {
    if (s.esNulo(columna)) return std::nullopt;
    return instanteDeSegundos(s.entero(columna));
}

Huella huellaEn(const Sentencia& s, int columna) {
    Huella huella{};
    const auto bytes = s.bytes(columna);
    std::copy_n(bytes.begin(), std::min(bytes.size(), huella.size()), huella.begin());
    return huella;
}

// A record's columns from the parameter or column given on.
void ponerRegistro(Sentencia& s, int desde, const CanalesCrudos& canales) {
    for (std::size_t i = 0; i < CanalesCrudos::kCuantos; ++i) {
        s.poner(desde + static_cast<int>(i), std::int64_t{canales.crudos[i]});
    }
    s.poner(desde + static_cast<int>(CanalesCrudos::kCuantos),
            std::span<const std::uint8_t>(canales.resto.data(), canales.largoResto));
}
BytesMuestra registroEn(const Sentencia& s, int desde, Instante instante) {
    CanalesCrudos canales;
    for (std::size_t i = 0; i < CanalesCrudos::kCuantos; ++i) {
        canales.crudos[i] = static_cast<std::uint16_t>(s.entero(desde + static_cast<int>(i)));
    }
    const auto resto = s.bytes(desde + static_cast<int>(CanalesCrudos::kCuantos));
    canales.largoResto = std::min(resto.size(), canales.resto.size());
    std::copy_n(resto.begin(), canales.largoResto, canales.resto.begin());
    return registroDe(instante, canales);
}

void correrCon(Sentencia& s, const EstacionGuardada& e) {
    s.poner(1, e.id).poner(2, e.nombre).poner(3, e.serie).poner(4, std::int64_t{e.evaporacion}).correr();
}

EstacionGuardada estacionEn(const Sentencia& s) {
    EstacionGuardada e{.id = s.entero(0),
                       .nombre = s.texto(1),
                       .serie = s.texto(2),
                       .evaporacion = s.entero(3) != 0,
                       .resumen = {}};
    if (!s.esNulo(4)) e.resumen.masNueva = huellaEn(s, 4);
    e.resumen.imagenes = s.entero(5);
    e.resumen.muestras = s.entero(6);
    e.resumen.huecos = s.entero(7);
    e.resumen.conflictos = s.entero(8);
    e.resumen.desde = opcional(s, 9);
    e.resumen.hasta = opcional(s, 10);
    e.resumen.incorporada = incorporadaDe(Incorporada(seconds(s.entero(11))));
    const auto cabecera = s.bytes(12);
    e.resumen.cabecera.assign(cabecera.begin(), cabecera.end());
    return e;
}
constexpr std::string_view kEstaciones =
    "SELECT "
    "id,nombre,serie,evaporacion,mas_nueva,imagenes,muestras,huecos,conflictos,desde,hasta,incorporada,"
    "cabecera FROM estaciones ORDER BY nombre";
constexpr std::string_view kEstacion =
    "SELECT "
    "id,nombre,serie,evaporacion,mas_nueva,imagenes,muestras,huecos,conflictos,desde,hasta,incorporada,"
    "cabecera FROM estaciones WHERE nombre=?1";

constexpr std::string_view kFichas =
    "SELECT huella,bytes,reloj,desde,hasta,incorporada,origen,muestras,retrocesos,contenida FROM imagenes "
    "WHERE estacion=?1 ORDER BY reloj,huella";
constexpr std::string_view kFicha =
    "SELECT huella,bytes,reloj,desde,hasta,incorporada,origen,muestras,retrocesos,contenida FROM imagenes "
    "WHERE estacion=?1 AND huella=?2";
constexpr std::string_view kSueltas =
    "SELECT huella,bytes,reloj,desde,hasta,incorporada,origen,muestras,retrocesos,contenida FROM imagenes "
    "WHERE estacion=?1 AND bytes<262144 AND contenida=0 ORDER BY reloj,huella";

FichaImagen fichaEn(const Sentencia& s) {
    return {.huella = huellaEn(s, 0),
            .bytes = static_cast<std::size_t>(s.entero(1)),
            .reloj = opcional(s, 2),
            .desde = opcional(s, 3),
            .hasta = opcional(s, 4),
            .incorporada = incorporadaDe(Incorporada(seconds(s.entero(5)))),
            .origen = s.texto(6),
            .muestras = s.entero(7),
            .retrocesos = s.entero(8),
            .contenida = s.entero(9) != 0};
}
// From the column given on.
FichaDescarga descargaEn(const Sentencia& s, int desde) {
    FichaDescarga f{.descargada = std::chrono::sys_seconds(seconds(s.entero(desde))),
                    .puerto = s.entero(desde + 1),
                    .dispositivo = s.texto(desde + 2),
                    .desfase = {},
                    .verificada = s.entero(desde + 4) != 0,
                    .reintentos = s.entero(desde + 5),
                    .erroresDeLinea = s.entero(desde + 6)};
    if (!s.esNulo(desde + 3)) f.desfase = s.entero(desde + 3);
    return f;
}
// An image, and how it came beside it.
constexpr std::string_view kUltimasPorReloj =
    "SELECT "
    "i.huella,i.bytes,i.reloj,i.desde,i.hasta,i.incorporada,i.origen,i.muestras,i.retrocesos,i.contenida,"
    "d.descargada,d.puerto,d.dispositivo,d.desfase_s,d.verificada,d.reintentos,d.errores_de_linea "
    "FROM imagenes i LEFT JOIN descargas d ON d.estacion=i.estacion AND d.imagen=i.huella "
    "WHERE i.estacion=?1 AND i.reloj<=i.incorporada+?3 ORDER BY i.reloj DESC,i.huella DESC LIMIT ?2";
constexpr std::string_view kUltimasPorDescarga =
    "SELECT "
    "i.huella,i.bytes,i.reloj,i.desde,i.hasta,i.incorporada,i.origen,i.muestras,i.retrocesos,i.contenida,"
    "d.descargada,d.puerto,d.dispositivo,d.desfase_s,d.verificada,d.reintentos,d.errores_de_linea "
    "FROM descargas d JOIN imagenes i ON i.estacion=d.estacion AND i.huella=d.imagen "
    "WHERE d.estacion=?1 ORDER BY d.descargada DESC,d.imagen DESC LIMIT ?2";

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

// The copy before a migration; while it is made, the process's number and this stand behind its name.
std::string nombreDeCopia(const std::filesystem::path& archivo, std::int64_t version) {
    return fmt::format("{}.version{}", archivo.string(), version);
}
constexpr std::string_view kParcial = ".parcial";

// Which process makes the copy that has this name; 0: it is none.
pid_t quienCopia(std::string_view nombre, const std::filesystem::path& archivo) {
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
    if (!tomar(archivo.filename().string()) || !tomar(".version") || numero() == 0 || !tomar(".")) return 0;
    const auto proceso = numero();
    return tomar(kParcial) && (nombre.empty() || nombre == "-journal") ? proceso : 0;
}

// A copy that whoever made it did not finish is of no use; those of processes that live are theirs.
void quitarCopiasAMedias(const std::filesystem::path& archivo) {
    namespace fs = std::filesystem;
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

bool sonIguales(const std::filesystem::path& una, const std::filesystem::path& otra) {
    std::error_code sinMotivo;
    const auto largo = std::filesystem::file_size(una, sinMotivo);
    if (sinMotivo || std::filesystem::file_size(otra, sinMotivo) != largo || sinMotivo) return false;
    std::ifstream a(una, std::ios::binary);
    std::ifstream b(otra, std::ios::binary);
    return a && b && std::equal(std::istreambuf_iterator<char>(a), {}, std::istreambuf_iterator<char>(b));
}

// Whether an earlier attempt, ended after its copy, left this very one under one of its names.
bool yaEstaCopiado(const std::filesystem::path& copia, const std::filesystem::path& nueva) {
    std::error_code sinMotivo;
    const auto libre = rutaLibre(copia);
    auto una = copia;
    for (int vez = 2; una != libre; ++vez) {
        if (std::filesystem::is_regular_file(una, sinMotivo) && sonIguales(una, nueva)) return true;
        una.replace_filename(fmt::format("{}_{}{}", copia.stem().string(), vez, copia.extension().string()));
    }
    return false;
}

[[noreturn]] void noHayArchivo(const std::filesystem::path& ruta) {
    throw ErrorAlmacen(
        fmt::format("{}: no hay archivo histórico todavía: lo hace el primer telvane-historico incorporar",
                    nombreVisible(ruta)));
}

}  // namespace

AlmacenSqlite::AlmacenSqlite(const std::filesystem::path& ruta, BaseSqlite::Acceso acceso, Opciones opciones)
    : opciones_(std::move(opciones)),
      base_(ruta, acceso, opciones_.paciencia, opciones_.atender),
      tablas_(base_, opciones_.migraciones) {}

std::unique_ptr<AlmacenSqlite> AlmacenSqlite::abrirParaLeer(const std::filesystem::path& ruta,
                                                            Opciones opciones) {
    if (queHay(ruta) != QueHay::archivo) noHayArchivo(ruta);
    if (quedoAMedias(ruta, opciones.atender))
        throw ErrorAlmacen(fmt::format("{}: {}", nombreVisible(ruta), BaseSqlite::kAMedias));
    std::unique_ptr<AlmacenSqlite> almacen(
        new AlmacenSqlite(ruta, BaseSqlite::Acceso::lectura, std::move(opciones)));
    if (almacen->deNadie()) noHayArchivo(ruta);
    almacen->exigirVersion();
    return almacen;
}

std::unique_ptr<AlmacenSqlite> AlmacenSqlite::abrirParaEscribir(const std::filesystem::path& ruta, bool crear,
                                                                Opciones opciones) {
    const auto hay = queHay(ruta);
    if (hay != QueHay::archivo && !crear) noHayArchivo(ruta);
    // SQLite does not say why it can make none.
    if (hay == QueHay::nada) static_cast<void>(revisarDestino(ruta));
    if (hay != QueHay::nada) exigirDiscoEscribible(ruta);
    std::unique_ptr<AlmacenSqlite> almacen(
        new AlmacenSqlite(ruta, BaseSqlite::Acceso::escritura, std::move(opciones)));
    almacen->prepararEscritura(crear);
    return almacen;
}

std::unique_ptr<AlmacenSqlite> AlmacenSqlite::temporal() {
    std::unique_ptr<AlmacenSqlite> almacen(new AlmacenSqlite({}, BaseSqlite::Acceso::escritura, {}));
    almacen->base_.ejecutar("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF");
    almacen->crearTablas();
    return almacen;
}

std::vector<std::filesystem::path> AlmacenSqlite::archivos() const {
    // SQLite puts its own beside the file that a link leads to.
    std::error_code sinMotivo;
    const auto real = std::filesystem::weakly_canonical(base_.ruta(), sinMotivo);
    std::vector<std::filesystem::path> suyos = {base_.ruta()};
    for (const auto* sufijo : {"-wal", "-shm", "-journal"}) suyos.emplace_back(real.string() + sufijo);
    return suyos;
}

// Begun, and nothing made in it yet.
bool AlmacenSqlite::deNadie() {
    return base_.numero("PRAGMA application_id") == 0 && base_.numero("PRAGMA user_version") == 0 &&
           base_.numero("SELECT count(*) FROM sqlite_master") == 0;
}

// What copies the tables with another program into a new file leaves behind the two numbers that say whose
// it is and of which version.
bool AlmacenSqlite::callaQueEsNuestro() {
    const auto deQuien = base_.numero("PRAGMA application_id");
    const bool calla =
        deQuien == 0 || (deQuien == esquema::kDeTelvane && base_.numero("PRAGMA user_version") < 1);
    return calla && tablas_.faltasDeSiempre().empty();
}

void AlmacenSqlite::prepararEscritura(bool crear) {
    const bool sinHacer = deNadie();
    if (sinHacer && !crear) noHayArchivo(base_.ruta());
    const bool porDecir = !crear && callaQueEsNuestro();
    // Of another program nothing is touched.
    if (!sinHacer && !porDecir) exigirNuestro();
    base_.ejecutar("PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA journal_size_limit=1048576");
    if (sinHacer) return crearTablas();
    // The migrations find what is there already.
    if (porDecir)
        base_.ejecutar(fmt::format("PRAGMA application_id={}; PRAGMA user_version=1", esquema::kDeTelvane));
    if (const auto version = base_.numero("PRAGMA user_version"); version < versionDeAhora()) migrar(version);
}

void AlmacenSqlite::crearTablas() {
    Transaccion transaccion(*this, Modo::escritura);
    // Two may begin at once: the second finds it done.
    if (base_.numero("PRAGMA application_id") == 0) {
        tablas_.crear();
        base_.ejecutar(fmt::format("PRAGMA application_id={}; PRAGMA user_version={}", esquema::kDeTelvane,
                                   versionDeAhora()));
    }
    transaccion.confirmar();
}

// Under a name that nothing has: an earlier copy, or whatever else stands there, stays; of one that is the
// same there is no second.
void AlmacenSqlite::copiarAntesDeMigrar(std::int64_t desde) {
    const auto archivo = std::filesystem::absolute(base_.ruta());
    const std::filesystem::path ruta = nombreDeCopia(archivo, desde);
    const std::filesystem::path aMedias = fmt::format("{}.{}{}", ruta.string(), ::getpid(), kParcial);
    quitarCopiasAMedias(archivo);
    std::error_code sinMotivo;
    std::filesystem::remove(aMedias, sinMotivo);
    try {
        Sentencia(base_, "VACUUM INTO ?1").poner(1, std::string_view(aMedias.native())).correr();
        if (yaEstaCopiado(ruta, aMedias)) {
            std::filesystem::remove(aMedias, sinMotivo);
            return;
        }
        int motivo = 0;
        do {
            auto destino = revisarDestino(rutaLibre(ruta), {.nuevo = true});
            motivo = colocar(aMedias, destino);
            if (motivo == 0) motivo = sincronizarCarpeta(destino.ruta.parent_path());
        } while (motivo == EEXIST);
        if (motivo != 0)
            throw ErrorAlmacen(
                fmt::format("{}: no se puede copiar: {}", nombreVisible(ruta), motivoSistema(motivo)));
    } catch (...) {
        std::filesystem::remove(aMedias, sinMotivo);
        throw;
    }
}

void AlmacenSqlite::migrar(std::int64_t desde) {
    // What every version had: without it there is nothing to begin with.
    if (const auto faltas = tablas_.faltasDeSiempre(); !faltas.empty())
        throw ErrorAlmacen(fmt::format("{}: {}: {}", nombre(), textoDe(faltas.front()), kRecuperar));
    copiarAntesDeMigrar(desde);
    Transaccion transaccion(*this, Modo::escritura);
    for (auto version = base_.numero("PRAGMA user_version"); version < versionDeAhora(); ++version) {
        base_.ejecutar(std::string(opciones_.migraciones[static_cast<std::size_t>(version) - 1]));
    }
    base_.ejecutar(fmt::format("PRAGMA user_version={}", versionDeAhora()));
    transaccion.confirmar();
}

void AlmacenSqlite::exigirNuestro() {
    if (callaQueEsNuestro()) {
        throw ErrorAlmacen(fmt::format(
            "{}: no dice que es un archivo histórico de Telvane, ni de qué versión: {}", nombre(), kReponer));
    }
    if (base_.numero("PRAGMA application_id") != esquema::kDeTelvane) base_.fallar(SQLITE_NOTADB);
    const auto version = base_.numero("PRAGMA user_version");
    // There was never one before the first: nobody knows what such a file holds.
    if (version < 1) {
        throw ErrorAlmacen(fmt::format("{}: dice ser de una versión que nunca hubo ({}): {}", nombre(),
                                       version, kRecuperar));
    }
    if (version > versionDeAhora()) {
        throw ErrorAlmacen(
            fmt::format("{}: es de una versión más nueva ({}) que la de este programa ({}): actualice "
                        "telvane-historico",
                        nombre(), version, versionDeAhora()));
    }
}

void AlmacenSqlite::exigirVersion() {
    exigirNuestro();
    if (const auto version = base_.numero("PRAGMA user_version"); version < versionDeAhora()) {
        throw ErrorAlmacen(fmt::format(
            "{}: es de una versión anterior ({}): la pone al día el próximo incorporar", nombre(), version));
    }
}

Sentencia& AlmacenSqlite::sentencia(std::string_view sql) {
    auto& lugar = sentencias_[sql];
    if (!lugar) lugar = std::make_unique<Sentencia>(base_, sql);
    return *lugar;
}

void AlmacenSqlite::empezar(Modo modo) {
    base_.ejecutar(modo == Modo::lectura ? "BEGIN" : "BEGIN IMMEDIATE");
}
void AlmacenSqlite::confirmar() {
    base_.ejecutar("COMMIT");
}
void AlmacenSqlite::abandonar() noexcept {
    // After some errors SQLite has done it already.
    if (sqlite3_get_autocommit(base_.conexion()) == 0) {
        static_cast<void>(sqlite3_exec(base_.conexion(), "ROLLBACK", nullptr, nullptr, nullptr));
    }
}

std::vector<EstacionGuardada> AlmacenSqlite::estaciones() {
    std::vector<EstacionGuardada> lista;
    auto& s = sentencia(kEstaciones);
    s.correr([&] { lista.push_back(estacionEn(s)); });
    return lista;
}

std::optional<EstacionGuardada> AlmacenSqlite::estacion(const std::string& nombre) {
    std::optional<EstacionGuardada> hallada;
    auto& s = sentencia(kEstacion);
    s.poner(1, nombre).correr([&] { hallada = estacionEn(s); });
    return hallada;
}

void AlmacenSqlite::agregarEstacion(const EstacionGuardada& e) {
    correrCon(sentencia("INSERT INTO estaciones(id,nombre,serie,evaporacion) VALUES(?1,?2,?3,?4)"), e);
}
void AlmacenSqlite::quitarEstacion(IdEstacion estacion) {
    sentencia("DELETE FROM estaciones WHERE id=?1").poner(1, estacion).correr();
}
void AlmacenSqlite::guardarResumen(IdEstacion estacion, const ResumenEstacion& r) {
    auto& s = sentencia(
        "UPDATE estaciones SET "
        "mas_nueva=?2,imagenes=?3,muestras=?4,huecos=?5,conflictos=?6,desde=?7,hasta=?8,"
        "incorporada=?9,cabecera=?10 WHERE id=?1");
    s.poner(1, estacion).poner(3, r.imagenes).poner(4, r.muestras).poner(5, r.huecos).poner(6, r.conflictos);
    if (r.masNueva) {
        s.poner(2, std::span<const std::uint8_t>(*r.masNueva));
    } else {
        s.ponerNulo(2);
    }
    ponerOpcional(s, 7, r.desde);
    ponerOpcional(s, 8, r.hasta);
    s.poner(9, r.incorporada.time_since_epoch().count());
    s.poner(10, std::span<const std::uint8_t>(r.cabecera)).correr();
}

std::vector<FichaImagen> AlmacenSqlite::leerFichas(Sentencia& s) {
    std::vector<FichaImagen> lista;
    s.correr([&] { lista.push_back(fichaEn(s)); });
    return lista;
}

std::vector<FichaImagen> AlmacenSqlite::fichas(IdEstacion estacion) {
    return leerFichas(sentencia(kFichas).poner(1, estacion));
}
std::vector<FichaImagen> AlmacenSqlite::parcialesSueltas(IdEstacion estacion) {
    return leerFichas(sentencia(kSueltas).poner(1, estacion));
}
std::optional<FichaImagen> AlmacenSqlite::ficha(IdEstacion estacion, const Huella& huella) {
    auto lista = leerFichas(sentencia(kFicha).poner(1, estacion).poner(2, std::span(huella)));
    return lista.empty() ? std::nullopt : std::optional(std::move(lista.front()));
}

// By the key, which begins with the station.
std::set<IdEstacion> AlmacenSqlite::estacionesCon(const Huella& huella) {
    std::set<IdEstacion> cuales;
    auto& s = sentencia(
        "SELECT id FROM estaciones WHERE EXISTS(SELECT 1 FROM imagenes WHERE estacion=id AND huella=?1)");
    s.poner(1, std::span(huella)).correr([&] { cuales.insert(s.entero(0)); });
    return cuales;
}

std::vector<Huella> AlmacenSqlite::imagenesSolas(IdEstacion estacion) {
    std::vector<Huella> lista;
    auto& s = sentencia("SELECT huella FROM contenidos WHERE estacion=?1 AND base IS NULL");
    s.poner(1, estacion).correr([&] { lista.push_back(huellaEn(s, 0)); });
    return lista;
}

Almacen::Cadena AlmacenSqlite::cadena(IdEstacion estacion, const Huella& huella, std::size_t cuantas) {
    auto& s = sentencia("SELECT base,profundidad,datos FROM contenidos WHERE estacion=?1 AND huella=?2");
    Cadena cadena;
    for (std::optional<Huella> cual = huella; cual && cadena.size() < cuantas;) {
        const auto buscada = *std::exchange(cual, std::nullopt);
        s.poner(1, estacion).poner(2, std::span(buscada)).correr([&] {
            auto& guardada = cadena.emplace_back(buscada, ImagenGuardada{}).second;
            if (!s.esNulo(0)) cual = guardada.base = huellaEn(s, 0);
            guardada.profundidad = static_cast<int>(s.entero(1));
            const auto datos = s.bytes(2);
            guardada.datos.assign(datos.begin(), datos.end());
        });
    }
    return cadena;
}

void AlmacenSqlite::agregarFicha(IdEstacion estacion, const FichaImagen& f) {
    auto& s = sentencia(
        "INSERT INTO "
        "imagenes(estacion,huella,bytes,reloj,desde,hasta,incorporada,origen,muestras,retrocesos) "
        "VALUES(?1,?2,?3,?4,?5,?6,?7,?8,?9,?10)");
    s.poner(1, estacion).poner(2, std::span(f.huella)).poner(3, static_cast<std::int64_t>(f.bytes));
    ponerOpcional(s, 4, f.reloj);
    ponerOpcional(s, 5, f.desde);
    ponerOpcional(s, 6, f.hasta);
    s.poner(7, f.incorporada.time_since_epoch().count()).poner(8, f.origen);
    s.poner(9, f.muestras).poner(10, f.retrocesos).correr();
}
void AlmacenSqlite::quitarFicha(IdEstacion estacion, const Huella& huella) {
    sentencia("DELETE FROM imagenes WHERE estacion=?1 AND huella=?2")
        .poner(1, estacion)
        .poner(2, std::span(huella))
        .correr();
}

void AlmacenSqlite::guardarContenido(IdEstacion estacion, const Huella& huella,
                                     const ImagenGuardada& imagen) {
    auto& c = sentencia(
        "INSERT OR REPLACE INTO contenidos(estacion,huella,base,profundidad,datos) VALUES(?1,?2,?3,?4,?5)");
    c.poner(1, estacion).poner(2, std::span(huella)).poner(4, imagen.profundidad);
    if (imagen.base) {
        c.poner(3, std::span<const std::uint8_t>(*imagen.base));
    } else {
        c.ponerNulo(3);
    }
    c.poner(5, std::span<const std::uint8_t>(imagen.datos)).correr();
}
void AlmacenSqlite::quitarContenido(IdEstacion estacion, const Huella& huella) {
    sentencia("DELETE FROM contenidos WHERE estacion=?1 AND huella=?2")
        .poner(1, estacion)
        .poner(2, std::span(huella))
        .correr();
}
bool AlmacenSqlite::conserva(IdEstacion estacion, const Huella& huella) {
    bool esta = false;
    auto& s = sentencia("SELECT profundidad FROM contenidos WHERE estacion=?1 AND huella=?2");
    s.poner(1, estacion).poner(2, std::span(huella)).correr([&] { esta = s.entero(0) >= 0; });
    return esta;
}

AlmacenSqlite::Descargas AlmacenSqlite::leerDescargas(Sentencia& s) {
    Descargas lista;
    s.correr([&] {
        if (auto ficha = descargaEn(s, 1); ficha.tieneMomento())
            lista.emplace_back(huellaEn(s, 0), std::move(ficha));
    });
    return lista;
}
std::map<IdEstacion, std::vector<Llegada>> AlmacenSqlite::ultimas(std::size_t cuantas) {
    std::vector<IdEstacion> estaciones;
    auto& todas = sentencia("SELECT id FROM estaciones");
    todas.correr([&] { estaciones.push_back(todas.entero(0)); });
    std::map<IdEstacion, std::vector<Llegada>> ultimas;
    constexpr int kTrasLaFicha = 10;
    for (const auto estacion : estaciones) {
        auto& suyas = ultimas[estacion];
        const auto leer = [&](Sentencia& s) {
            s.poner(1, estacion).poner(2, static_cast<std::int64_t>(cuantas));
            s.correr([&] {
                auto& llegada = suyas.emplace_back(Llegada{.imagen = fichaEn(s), .descarga = {}});
                if (s.esNulo(kTrasLaFicha)) return;
                if (auto ficha = descargaEn(s, kTrasLaFicha); ficha.tieneMomento())
                    llegada.descarga = std::move(ficha);
            });
        };
        leer(sentencia(kUltimasPorReloj).poner(3, seconds(limites_aviso::kRelojFuturo).count()));
        leer(sentencia(kUltimasPorDescarga));
    }
    return ultimas;
}
AlmacenSqlite::Descargas AlmacenSqlite::descargas(IdEstacion estacion) {
    return leerDescargas(
        sentencia("SELECT imagen,descargada,puerto,dispositivo,desfase_s,verificada,reintentos,"
                  "errores_de_linea FROM descargas WHERE estacion=?1")
            .poner(1, estacion));
}
std::optional<FichaDescarga> AlmacenSqlite::descarga(IdEstacion estacion, const Huella& imagen) {
    auto lista =
        leerDescargas(sentencia("SELECT imagen,descargada,puerto,dispositivo,desfase_s,verificada,reintentos,"
                                "errores_de_linea FROM descargas WHERE estacion=?1 AND imagen=?2")
                          .poner(1, estacion)
                          .poner(2, std::span(imagen)));
    return lista.empty() ? std::nullopt : std::optional(std::move(lista.front().second));
}
void AlmacenSqlite::guardarDescarga(IdEstacion estacion, const Huella& imagen, const FichaDescarga& f) {
    auto& s = sentencia(
        "INSERT OR REPLACE INTO descargas(estacion,imagen,descargada,puerto,dispositivo,desfase_s,verificada,"
        "reintentos,errores_de_linea) VALUES(?1,?2,?3,?4,?5,?6,?7,?8,?9)");
    s.poner(1, estacion).poner(2, std::span(imagen)).poner(3, f.descargada.time_since_epoch().count());
    s.poner(4, f.puerto).poner(5, f.dispositivo);
    if (f.desfase) {
        s.poner(6, *f.desfase);
    } else {
        s.ponerNulo(6);
    }
    s.poner(7, std::int64_t{f.verificada}).poner(8, f.reintentos).poner(9, f.erroresDeLinea).correr();
}

void AlmacenSqlite::marcarContenida(IdEstacion estacion, const Huella& huella, bool contenida) {
    sentencia("UPDATE imagenes SET contenida=?3 WHERE estacion=?1 AND huella=?2")
        .poner(1, estacion)
        .poner(2, std::span(huella))
        .poner(3, std::int64_t{contenida})
        .correr();
}

void AlmacenSqlite::filas(IdEstacion estacion, Instante desde, Instante hasta, const AlLeerFila& alLeer) {
    static const std::string kSql = fmt::format(
        "SELECT hora,cuenta,{0} FROM muestras WHERE estacion=?1 AND hora BETWEEN ?2 AND ?3 ORDER BY hora,{0}",
        kColumnasMuestra);
    // One of its own: whoever is told of a row may ask for others.
    Sentencia s(base_, kSql);
    s.poner(1, estacion).poner(2, segundosDe(desde)).poner(3, segundosDe(hasta));
    while (s.paso()) {
        const auto instante = instanteDeSegundos(s.entero(0));
        alLeer({instante, registroEn(s, 2, instante), s.entero(1) != 0});
    }
}

std::int64_t AlmacenSqlite::contarFilas(IdEstacion estacion, Instante desde, Instante hasta) {
    std::int64_t cuantas = 0;
    auto& s = sentencia("SELECT count(*) FROM muestras WHERE estacion=?1 AND hora BETWEEN ?2 AND ?3");
    s.poner(1, estacion).poner(2, segundosDe(desde)).poner(3, segundosDe(hasta));
    s.correr([&] { cuantas = s.entero(0); });
    return cuantas;
}

std::vector<Instante> AlmacenSqlite::sellosAntes(IdEstacion estacion, Instante de, std::size_t cuantos) {
    std::vector<Instante> lista;
    auto& s = sentencia(
        "SELECT DISTINCT hora FROM muestras WHERE estacion=?1 AND hora<?2 ORDER BY hora DESC LIMIT ?3");
    s.poner(1, estacion).poner(2, segundosDe(de)).poner(3, static_cast<std::int64_t>(cuantos));
    s.correr([&] { lista.push_back(instanteDeSegundos(s.entero(0))); });
    std::reverse(lista.begin(), lista.end());
    return lista;
}
std::vector<Instante> AlmacenSqlite::sellosDespues(IdEstacion estacion, Instante de, std::size_t cuantos) {
    std::vector<Instante> lista;
    auto& s =
        sentencia("SELECT DISTINCT hora FROM muestras WHERE estacion=?1 AND hora>?2 ORDER BY hora LIMIT ?3");
    s.poner(1, estacion).poner(2, segundosDe(de)).poner(3, static_cast<std::int64_t>(cuantos));
    s.correr([&] { lista.push_back(instanteDeSegundos(s.entero(0))); });
    return lista;
}

void AlmacenSqlite::agregarFilas(IdEstacion estacion, std::span<const Fila> filas) {
    static const std::string kSql = fmt::format(
        "INSERT INTO muestras(estacion,hora,cuenta,{}) VALUES(?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,?12,"
        "?13,?14,?15)",
        kColumnasMuestra);
    auto& s = sentencia(kSql);
    for (const auto& fila : filas) {
        const auto canales = canalesDe(fila.registro);
        s.poner(1, estacion).poner(2, segundosDe(fila.instante)).poner(3, std::int64_t{fila.cuenta});
        ponerRegistro(s, 4, canales);
        s.correr();
    }
}

void AlmacenSqlite::cambiarCuenta(IdEstacion estacion, const Fila& fila) {
    static const std::string kSql = fmt::format(
        "UPDATE muestras SET cuenta=?3 WHERE estacion=?1 AND hora=?2 AND ({})=(?4,?5,?6,?7,?8,?9,?10,"
        "?11,?12,?13,?14,?15)",
        kColumnasMuestra);
    auto& s = sentencia(kSql);
    const auto canales = canalesDe(fila.registro);
    s.poner(1, estacion).poner(2, segundosDe(fila.instante)).poner(3, std::int64_t{fila.cuenta});
    ponerRegistro(s, 4, canales);
    s.correr();
}

std::vector<Testigo> AlmacenSqlite::testigos(IdEstacion estacion, Instante desde, Instante hasta) {
    std::vector<Testigo> lista;
    auto& s = sentencia(
        "SELECT t.hora,t.registro,t.ranura,t.imagen,i.contenida FROM testigos t JOIN imagenes i ON "
        "i.estacion=t.estacion AND i.huella=t.imagen WHERE t.estacion=?1 AND t.hora BETWEEN ?2 AND ?3 ORDER "
        "BY "
        "t.hora");
    s.poner(1, estacion).poner(2, segundosDe(desde)).poner(3, segundosDe(hasta)).correr([&] {
        Testigo t{.instante = instanteDeSegundos(s.entero(0)),
                  .registro = {},
                  .ranura = static_cast<std::size_t>(s.entero(2)),
                  .imagen = huellaEn(s, 3),
                  .vota = s.entero(4) == 0};
        const auto registro = s.bytes(1);
        std::copy_n(registro.begin(), std::min(registro.size(), t.registro.size()), t.registro.begin());
        lista.push_back(t);
    });
    return lista;
}

std::int64_t AlmacenSqlite::conflictosDeMas(IdEstacion estacion, const FichaImagen& imagen,
                                            const Huella& otra) {
    std::int64_t cuantos = 0;
    auto& s = sentencia(
        "SELECT count(DISTINCT hora) FROM ("
        "SELECT hora,registro FROM testigos WHERE estacion=?1 AND hora BETWEEN ?4 AND ?5 AND imagen=?2 "
        "EXCEPT "
        "SELECT hora,registro FROM testigos WHERE estacion=?1 AND hora BETWEEN ?4 AND ?5 AND imagen=?3)");
    s.poner(1, estacion).poner(2, std::span(imagen.huella)).poner(3, std::span(otra));
    ponerOpcional(s, 4, imagen.desde);
    ponerOpcional(s, 5, imagen.hasta);
    s.correr([&] { cuantos = s.entero(0); });
    return cuantos;
}

std::vector<Instante> AlmacenSqlite::sellosDe(IdEstacion estacion, const Huella& imagen) {
    std::vector<Instante> lista;
    auto& s = sentencia("SELECT DISTINCT hora FROM testigos WHERE estacion=?1 AND imagen=?2 ORDER BY hora");
    s.poner(1, estacion).poner(2, std::span(imagen));
    s.correr([&] { lista.push_back(instanteDeSegundos(s.entero(0))); });
    return lista;
}

void AlmacenSqlite::agregarTestigos(IdEstacion estacion, std::span<const Testigo> testigos) {
    auto& s = sentencia("INSERT INTO testigos(estacion,hora,registro,ranura,imagen) VALUES(?1,?2,?3,?4,?5)");
    for (const auto& t : testigos) {
        s.poner(1, estacion)
            .poner(2, segundosDe(t.instante))
            .poner(3, std::span<const std::uint8_t>(t.registro));
        s.poner(4, static_cast<std::int64_t>(t.ranura)).poner(5, std::span(t.imagen)).correr();
    }
}

void AlmacenSqlite::vaciarDerivado(IdEstacion estacion) {
    sentencia("DELETE FROM muestras WHERE estacion=?1").poner(1, estacion).correr();
    sentencia("DELETE FROM testigos WHERE estacion=?1").poner(1, estacion).correr();
    sentencia("UPDATE imagenes SET contenida=0 WHERE estacion=?1 AND contenida IS NOT 0")
        .poner(1, estacion)
        .correr();
}

void AlmacenSqlite::corregirEstacion(const EstacionGuardada& e) {
    correrCon(sentencia("UPDATE estaciones SET nombre=?2,serie=?3,evaporacion=?4 WHERE id=?1"), e);
}

void AlmacenSqlite::corregirFicha(IdEstacion estacion, const FichaImagen& f) {
    auto& s = sentencia(
        "UPDATE imagenes SET reloj=?3,desde=?4,hasta=?5,muestras=?6,retrocesos=?7,incorporada=?8,bytes=?9 "
        "WHERE estacion=?1 AND huella=?2");
    s.poner(1, estacion).poner(2, std::span(f.huella));
    ponerOpcional(s, 3, f.reloj);
    ponerOpcional(s, 4, f.desde);
    ponerOpcional(s, 5, f.hasta);
    s.poner(6, f.muestras).poner(7, f.retrocesos);
    s.poner(8, f.incorporada.time_since_epoch().count());
    s.poner(9, static_cast<std::int64_t>(f.bytes)).correr();
}

void AlmacenSqlite::reponer() {
    Transaccion transaccion(*this, Modo::arreglo);
    tablas_.reponer();
    transaccion.confirmar();
}

// What tells of an image that another station has goes there.
void AlmacenSqlite::limpiar() {
    base_.ejecutar(
        "UPDATE OR IGNORE descargas SET estacion=(SELECT i.estacion FROM imagenes i WHERE "
        "i.huella=descargas.imagen) WHERE NOT EXISTS (SELECT 1 FROM imagenes i WHERE "
        "i.estacion=descargas.estacion AND i.huella=descargas.imagen) AND (SELECT count(*) FROM imagenes i "
        "WHERE i.huella=descargas.imagen)=1;"
        "DELETE FROM descargas WHERE NOT EXISTS (SELECT 1 FROM imagenes i WHERE "
        "i.estacion=descargas.estacion AND i.huella=descargas.imagen) AND NOT EXISTS (SELECT 1 FROM "
        "contenidos c WHERE c.estacion=descargas.estacion AND c.huella=descargas.imagen);"
        "DELETE FROM muestras WHERE estacion NOT IN (SELECT id FROM estaciones);"
        "DELETE FROM testigos WHERE estacion NOT IN (SELECT id FROM estaciones) OR NOT EXISTS (SELECT 1 FROM "
        "imagenes i WHERE i.estacion=testigos.estacion AND i.huella=testigos.imagen)");
}

std::vector<Almacen::FichaGuardada> AlmacenSqlite::fichasGuardadas() {
    std::vector<FichaGuardada> lista;
    auto& s = sentencia(
        "SELECT huella,bytes,reloj,desde,hasta,incorporada,origen,muestras,retrocesos,contenida,estacion "
        "FROM "
        "imagenes ORDER BY estacion,reloj,huella");
    s.correr([&] { lista.push_back({.estacion = s.entero(10), .ficha = fichaEn(s)}); });
    return lista;
}

std::vector<Almacen::Eslabon> AlmacenSqlite::eslabones() {
    std::vector<Eslabon> lista;
    auto& s = sentencia("SELECT estacion,huella,base,profundidad FROM contenidos ORDER BY estacion,huella");
    s.correr([&] {
        auto& eslabon = lista.emplace_back(
            Eslabon{.estacion = s.entero(0), .huella = huellaEn(s, 1), .profundidad = s.entero(3)});
        if (!s.esNulo(2)) eslabon.base = huellaEn(s, 2);
    });
    return lista;
}

// Under a name that is not as long as one it is not found by that.
std::vector<std::uint8_t> AlmacenSqlite::datosDe(const Eslabon& eslabon) {
    std::vector<std::uint8_t> datos;
    const auto tomar = [&](const Sentencia& s, int columna) {
        const auto bytes = s.bytes(columna);
        datos.assign(bytes.begin(), bytes.end());
    };
    auto& uno = sentencia("SELECT datos FROM contenidos WHERE estacion=?1 AND huella=?2");
    uno.poner(1, eslabon.estacion).poner(2, std::span(eslabon.huella)).correr([&] { tomar(uno, 0); });
    if (!datos.empty()) return datos;
    auto& todos = sentencia("SELECT estacion,huella,datos FROM contenidos");
    todos.correr([&] {
        if (todos.entero(0) == eslabon.estacion && huellaEn(todos, 1) == eslabon.huella) tomar(todos, 2);
    });
    return datos;
}
void AlmacenSqlite::corregirProfundidad(IdEstacion estacion, const Huella& huella, std::int64_t profundidad) {
    sentencia("UPDATE contenidos SET profundidad=?3 WHERE estacion=?1 AND huella=?2")
        .poner(1, estacion)
        .poner(2, std::span(huella))
        .poner(3, profundidad)
        .correr();
}

std::int64_t AlmacenSqlite::numero(const std::string& sql) {
    return base_.numero(sql);
}

std::vector<std::string> AlmacenSqlite::defectos() {
    std::vector<std::string> lista;
    Sentencia s(base_, "PRAGMA integrity_check");
    s.correr([&] {
        const auto texto = s.texto(0);
        if (texto != "ok")
            lista.push_back(fmt::format("{}: {}: recupere su copia, o páselo a otro archivo con copiar",
                                        nombre(), texto));
    });
    return lista;
}

}  // namespace telvane
