#include "historico/almacen_postgres.h"

#include <algorithm>
#include <span>
#include <utility>

#include <fmt/format.h>

#include "historico/esquema_postgres.h"
#include "historico/limites_aviso.h"

namespace telvane {

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

// The server counts microseconds from here.
constexpr Instante kOrigen = kPrimerMomento;

std::int64_t microsDe(Instante instante) {
    return microseconds(instante - kOrigen).count();
}
Instante instanteDeMicros(std::int64_t micros) {
    return kOrigen + std::chrono::duration_cast<seconds>(microseconds(micros));
}
std::int64_t segundosDe(Instante instante) {
    return instante.time_since_epoch().count();
}

void poner(Parametros& p, const std::optional<Instante>& instante) {
    if (instante) {
        p.entero(segundosDe(*instante));
    } else {
        p.nulo();
    }
}
std::optional<Instante> momentoEn(const ResultadoPostgres& r, int fila, int columna) {
    if (r.esNulo(fila, columna)) return std::nullopt;
    return instanteDeMicros(r.entero(fila, columna));
}
std::chrono::sys_seconds utcEn(const ResultadoPostgres& r, int fila, int columna) {
    return std::chrono::sys_seconds(instanteDeMicros(r.entero(fila, columna)).time_since_epoch());
}

template <std::size_t N>
std::array<std::uint8_t, N> arregloEn(const ResultadoPostgres& r, int fila, int columna) {
    std::array<std::uint8_t, N> arreglo{};
    const auto bytes = r.bytes(fila, columna);
    std::copy_n(bytes.begin(), std::min(bytes.size(), N), arreglo.begin());
    return arreglo;
}

// Of the logger's moments, $n being seconds since 1970.
std::string sinZona(int cual) {
    return fmt::format("(to_timestamp(${}::bigint) AT TIME ZONE 'UTC')", cual);
}

const std::string kEstacion =
    "SELECT "
    "id::bigint,nombre,serie,evaporacion,mas_nueva,cabecera,imagenes,muestras,huecos,conflictos,desde,hasta,"
    "incorporada FROM telvane.estaciones ";

EstacionGuardada estacionEn(const ResultadoPostgres& r, int fila) {
    EstacionGuardada e{.id = r.entero(fila, 0),
                       .nombre = r.texto(fila, 1),
                       .serie = r.texto(fila, 2),
                       .evaporacion = r.logico(fila, 3),
                       .resumen = {}};
    if (!r.esNulo(fila, 4)) e.resumen.masNueva = arregloEn<32>(r, fila, 4);
    const auto cabecera = r.bytes(fila, 5);
    e.resumen.cabecera.assign(cabecera.begin(), cabecera.end());
    e.resumen.imagenes = r.entero(fila, 6);
    e.resumen.muestras = r.entero(fila, 7);
    e.resumen.huecos = r.entero(fila, 8);
    e.resumen.conflictos = r.entero(fila, 9);
    e.resumen.desde = momentoEn(r, fila, 10);
    e.resumen.hasta = momentoEn(r, fila, 11);
    e.resumen.incorporada = incorporadaDe(utcEn(r, fila, 12));
    return e;
}

FichaImagen fichaEn(const ResultadoPostgres& r, int fila) {
    return {.huella = arregloEn<32>(r, fila, 0),
            .bytes = static_cast<std::size_t>(r.entero(fila, 1)),
            .reloj = momentoEn(r, fila, 2),
            .desde = momentoEn(r, fila, 3),
            .hasta = momentoEn(r, fila, 4),
            .incorporada = incorporadaDe(utcEn(r, fila, 5)),
            .origen = r.texto(fila, 6),
            .muestras = r.entero(fila, 7),
            .retrocesos = r.entero(fila, 8),
            .contenida = r.logico(fila, 9)};
}
// From the column given on.
FichaDescarga descargaEn(const ResultadoPostgres& r, int fila, int desde) {
    FichaDescarga f{.descargada = utcEn(r, fila, desde),
                    .puerto = r.entero(fila, desde + 1),
                    .dispositivo = r.texto(fila, desde + 2),
                    .desfase = {},
                    .verificada = r.logico(fila, desde + 4),
                    .reintentos = r.entero(fila, desde + 5),
                    .erroresDeLinea = r.entero(fila, desde + 6)};
    if (!r.esNulo(fila, desde + 3)) f.desfase = r.entero(fila, desde + 3);
    return f;
}

template <typename Leer>
auto deCadaFila(const ResultadoPostgres& r, Leer leer) {
    std::vector<decltype(leer(0))> lista;
    lista.reserve(static_cast<std::size_t>(r.filas()));
    for (int i = 0; i < r.filas(); ++i) lista.push_back(leer(i));
    return lista;
}

// Nobody else writes meanwhile.
constexpr std::string_view kBloqueo = "LOCK TABLE telvane.estaciones IN SHARE ROW EXCLUSIVE MODE";

bool esVieja(std::int64_t version) {
    return version >= 0 && version < esquema_postgres::kVersion;
}

// A binary COPY: this, rows of fields with their lengths, and the end.
constexpr std::string_view kComienzoDeCopia{"PGCOPY\n\377\r\n\0\0\0\0\0\0\0\0\0", 19};
void agregarCampo(std::string& copia, std::span<const std::uint8_t> bytes) {
    agregarEntero(copia, static_cast<std::int32_t>(bytes.size()));
    copia.append(bytes.begin(), bytes.end());
}
template <typename Entero>
void agregarNumero(std::string& copia, Entero valor) {
    agregarEntero(copia, static_cast<std::int32_t>(sizeof(Entero)));
    agregarEntero(copia, valor);
}
void terminarCopia(std::string& copia) {
    agregarEntero(copia, std::int16_t{-1});
}

}  // namespace

bool AlmacenPostgres::esDireccion(std::string_view destino) {
    return destino.starts_with("postgresql://") || destino.starts_with("postgres://");
}

AlmacenPostgres::AlmacenPostgres(const std::string& url, bool crear, std::chrono::milliseconds paciencia,
                                 std::function<void()> atender)
    : AlmacenPostgres(url, crear ? Apertura::crear : Apertura::leer, paciencia, std::move(atender)) {}

std::unique_ptr<AlmacenPostgres> AlmacenPostgres::abrirParaReponer(const std::string& url,
                                                                   std::chrono::milliseconds paciencia,
                                                                   std::function<void()> atender) {
    return std::unique_ptr<AlmacenPostgres>(
        new AlmacenPostgres(url, Apertura::reponer, paciencia, std::move(atender)));
}

AlmacenPostgres::AlmacenPostgres(const std::string& url, Apertura como, std::chrono::milliseconds paciencia,
                                 std::function<void()> atender)
    : base_(url, std::move(atender)), tablas_(base_, esquema_postgres::kMigraciones), paciencia_(paciencia) {
    auto hay = versionQueHay();
    const bool reponer = como == Apertura::reponer;
    if (esVieja(hay) && (como == Apertura::crear || (reponer && hay != kSinTablas)))
        hay = ponerAlDia(reponer);
    if (reponer && hay == kCallada) return;
    exigirTablas(hay);
}

std::int64_t AlmacenPostgres::version() {
    // A schema without anything in it is what whoever administers the server makes for somebody.
    const auto hay = base_.consultar(
        "SELECT EXISTS(SELECT 1 FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n ON "
        "n.oid=c.relnamespace WHERE n.nspname='telvane'),EXISTS(SELECT 1 FROM pg_catalog.pg_attribute a "
        "WHERE "
        "a.attrelid=to_regclass('telvane.esquema') AND a.attname='version' AND "
        "a.atttypid='integer'::regtype)");
    if (!hay.logico(0, 0)) return kSinTablas;
    if (hay.logico(0, 1)) {
        const auto r = base_.consultar("SELECT version::bigint FROM telvane.esquema");
        if (r.filas() == 1 && r.entero(0, 0) > 0) return r.entero(0, 0);
    }
    return tablas_.estanLasDeSiempre() ? kCallada : kNoLoDice;
}

std::int64_t AlmacenPostgres::versionQueHay() {
    const Transaccion transaccion(*this, Modo::lectura);
    return version();
}

// What a transaction goes by, whatever is set for the server, the data base or the role: it waits so long for
// whoever holds a table, and otherwise takes what it takes; rows that are kept from this role are a right
// that it lacks, not rows that are lost; types are called as they are here.
std::string AlmacenPostgres::condiciones() const {
    return fmt::format(
        "SET LOCAL lock_timeout={}; SET LOCAL statement_timeout=0; SET LOCAL "
        "idle_in_transaction_session_timeout=0; SET LOCAL row_security=off; SET LOCAL "
        "quote_all_identifiers=off",
        paciencia_.count());
}

TablasPostgres AlmacenPostgres::tablasDe(std::int64_t cual) {
    return {base_, std::span(esquema_postgres::kMigraciones).first(static_cast<std::size_t>(cual) - 1)};
}

std::string AlmacenPostgres::estorbo(std::int64_t desde, bool reponer) {
    auto antiguas = tablasDe(desde);
    auto lista = tablas_.estorbos(antiguas);
    if (lista.empty() && !reponer) lista = antiguas.faltanTablas();
    return lista.empty() ? std::string() : lista.front();
}

void AlmacenPostgres::migrar(std::int64_t desde, bool reponer) {
    if (desde == kSinTablas) {
        tablas_.crear();
        desde = 1;
    } else {
        if (const auto que = estorbo(desde, reponer); !que.empty())
            throw ErrorAlmacen(fmt::format("{}: {}", nombre(), que));
        if (reponer) tablasDe(desde).reponer();
    }
    for (const auto paso :
         std::span(esquema_postgres::kMigraciones).subspan(static_cast<std::size_t>(desde) - 1))
        base_.ejecutar(std::string(paso));
    base_.ejecutar(fmt::format("UPDATE telvane.esquema SET version={}", esquema_postgres::kVersion));
}

std::int64_t AlmacenPostgres::ponerAlDia(bool reponer) {
    base_.ejecutar("BEGIN");
    try {
        // Two may begin at once: the second finds it done.
        base_.ejecutar(condiciones() + "; SELECT pg_advisory_xact_lock(hashtext('telvane'))");
        if (const auto desde = version(); esVieja(desde)) migrar(desde, reponer);
        base_.ejecutar("COMMIT");
    } catch (...) {
        abandonar();
        throw;
    }
    return versionQueHay();
}

void AlmacenPostgres::exigirTablas(std::int64_t cual) {
    constexpr auto kAhora = esquema_postgres::kVersion;
    if (cual == kAhora) return;
    if (cual == kSinTablas) {
        throw ErrorAlmacen(fmt::format(
            "{}: no hay archivo histórico todavía: lo hace el primer telvane-historico incorporar",
            nombre()));
    }
    if (cual == kNoLoDice || cual == kCallada) {
        throw ErrorAlmacen(fmt::format("{}: no dice de qué versión es, en su tabla telvane.esquema: {}",
                                       nombre(), cual == kCallada ? kReponer : kRecuperar));
    }
    if (cual < kAhora) {
        const Transaccion transaccion(*this, Modo::lectura);
        if (const auto que = estorbo(cual, false); !que.empty())
            throw ErrorAlmacen(fmt::format("{}: {}", nombre(), que));
        throw ErrorAlmacen(fmt::format(
            "{}: es de una versión anterior ({}): la pone al día el próximo incorporar", nombre(), cual));
    }
    throw ErrorAlmacen(
        fmt::format("{}: es de una versión más nueva ({}) que la de este programa ({}): actualice "
                    "telvane-historico",
                    nombre(), cual, kAhora));
}

void AlmacenPostgres::empezar(Modo modo) {
    // Somebody may hold the tables for himself alone: who reads waits no longer than who writes.
    std::string sql = modo == Modo::lectura ? "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY; " : "BEGIN; ";
    sql += condiciones();
    if (modo == Modo::escritura) sql += fmt::format("; {}", kBloqueo);
    if (base_.viva()) {
        try {
            base_.ejecutar(sql);
            return;
        } catch (const ErrorAlmacen& error) {
            abandonar();
            if (error.clase() != ErrorAlmacen::Clase::pasajera) throw;
        }
    }
    // The server was away between two transactions: nothing is lost yet.
    base_.reconectar();
    base_.ejecutar(sql);
}
void AlmacenPostgres::confirmar() {
    base_.ejecutar("COMMIT");
}
void AlmacenPostgres::abandonar() noexcept {
    try {
        if (base_.viva() && base_.enTransaccion())
            base_.ejecutar("ROLLBACK", BasePostgres::Atencion::ninguna);
    } catch (const ErrorAlmacen&) {
        // A server that has gone has undone it.
        return;
    }
}

std::vector<EstacionGuardada> AlmacenPostgres::estaciones() {
    const auto r = base_.consultar(kEstacion + "ORDER BY nombre");
    return deCadaFila(r, [&](int i) { return estacionEn(r, i); });
}
std::optional<EstacionGuardada> AlmacenPostgres::estacion(const std::string& nombre) {
    const auto r = base_.consultar(kEstacion + "WHERE nombre=$1", Parametros().texto(nombre));
    return r.filas() == 0 ? std::nullopt : std::optional(estacionEn(r, 0));
}
void AlmacenPostgres::agregarEstacion(const EstacionGuardada& e) {
    base_.cambiarUna("INSERT INTO telvane.estaciones(id,nombre,serie,evaporacion) VALUES($1,$2,$3,$4::int=1)",
                     Parametros().entero(e.id).texto(e.nombre).texto(e.serie).entero(e.evaporacion ? 1 : 0));
}
void AlmacenPostgres::quitarEstacion(IdEstacion estacion) {
    base_.consultar("DELETE FROM telvane.estaciones WHERE id=$1", Parametros().entero(estacion));
}
void AlmacenPostgres::guardarResumen(IdEstacion estacion, const ResumenEstacion& r) {
    static const std::string kSql = fmt::format(
        "UPDATE telvane.estaciones SET "
        "mas_nueva=$2,cabecera=$3,imagenes=$4,muestras=$5,huecos=$6,conflictos=$7,"
        "desde={},hasta={},incorporada=to_timestamp($10::bigint) WHERE id=$1",
        sinZona(8), sinZona(9));
    Parametros p;
    p.entero(estacion);
    if (r.masNueva) {
        p.bytes(*r.masNueva);
    } else {
        p.nulo();
    }
    p.bytes(r.cabecera).entero(r.imagenes).entero(r.muestras).entero(r.huecos).entero(r.conflictos);
    poner(p, r.desde);
    poner(p, r.hasta);
    base_.cambiarUna(kSql, p.entero(r.incorporada.time_since_epoch().count()));
}

std::vector<FichaImagen> AlmacenPostgres::fichasCon(const std::string& condicion,
                                                    const Parametros& parametros) {
    const auto r = base_.consultar(
        "SELECT "
        "huella,bytes::bigint,reloj,desde,hasta,incorporada,origen,muestras::bigint,retrocesos::bigint,"
        "contenida "
        "FROM telvane.imagenes WHERE estacion=$1" +
            condicion + " ORDER BY reloj NULLS FIRST,huella",
        parametros);
    return deCadaFila(r, [&](int i) { return fichaEn(r, i); });
}
std::vector<FichaImagen> AlmacenPostgres::fichas(IdEstacion estacion) {
    return fichasCon("", Parametros().entero(estacion));
}
// One question for all of them: a server is far away.
std::map<IdEstacion, std::vector<Llegada>> AlmacenPostgres::ultimas(std::size_t cuantas) {
    static const std::string kColumnas =
        "i.huella,i.bytes::bigint,i.reloj,i.desde,i.hasta,i.incorporada,i.origen,i.muestras::bigint,"
        "i.retrocesos::bigint,i.contenida,d.descargada,d.puerto,d.dispositivo,d.desfase_s,d.verificada,"
        "d.reintentos,d.errores_de_linea";
    static const std::string kSql = fmt::format(
        "SELECT u.*,e.id::bigint FROM telvane.estaciones e CROSS JOIN LATERAL ((SELECT {0} FROM "
        "telvane.imagenes i LEFT JOIN telvane.descargas d ON d.estacion=i.estacion AND d.imagen=i.huella "
        "WHERE i.estacion=e.id AND i.reloj<=(i.incorporada AT TIME ZONE 'UTC')+$2::bigint*interval '1 "
        "second' "
        "ORDER BY i.reloj DESC,i.huella DESC LIMIT $1) UNION ALL (SELECT {0} FROM telvane.descargas d JOIN "
        "telvane.imagenes i ON i.estacion=d.estacion AND i.huella=d.imagen WHERE d.estacion=e.id ORDER BY "
        "d.descargada DESC,d.imagen DESC LIMIT $1)) u",
        kColumnas);
    const auto r = base_.consultar(kSql, Parametros()
                                             .entero(static_cast<std::int64_t>(cuantas))
                                             .entero(seconds(limites_aviso::kRelojFuturo).count()));
    constexpr int kTrasLaFicha = 10;
    constexpr int kIdEstacion = 17;
    std::map<IdEstacion, std::vector<Llegada>> ultimas;
    for (int i = 0; i < r.filas(); ++i) {
        auto& suyas = ultimas[r.entero(i, kIdEstacion)];
        auto& llegada = suyas.emplace_back(Llegada{.imagen = fichaEn(r, i), .descarga = {}});
        if (r.esNulo(i, kTrasLaFicha)) continue;
        if (auto ficha = descargaEn(r, i, kTrasLaFicha); ficha.tieneMomento())
            llegada.descarga = std::move(ficha);
    }
    return ultimas;
}
std::vector<FichaImagen> AlmacenPostgres::parcialesSueltas(IdEstacion estacion) {
    return fichasCon(" AND bytes<262144 AND NOT contenida", Parametros().entero(estacion));
}
std::optional<FichaImagen> AlmacenPostgres::ficha(IdEstacion estacion, const Huella& huella) {
    auto lista = fichasCon(" AND huella=$2", Parametros().entero(estacion).bytes(huella));
    return lista.empty() ? std::nullopt : std::optional(std::move(lista.front()));
}

std::set<IdEstacion> AlmacenPostgres::estacionesCon(const Huella& huella) {
    const auto r = base_.consultar(
        "SELECT id::bigint FROM telvane.estaciones e WHERE EXISTS(SELECT 1 FROM telvane.imagenes i WHERE "
        "i.estacion=e.id AND i.huella=$1)",
        Parametros().bytes(huella));
    std::set<IdEstacion> cuales;
    for (int i = 0; i < r.filas(); ++i) cuales.insert(r.entero(i, 0));
    return cuales;
}

std::vector<Huella> AlmacenPostgres::imagenesSolas(IdEstacion estacion) {
    const auto r = base_.consultar("SELECT huella FROM telvane.contenidos WHERE estacion=$1 AND base IS NULL",
                                   Parametros().entero(estacion));
    return deCadaFila(r, [&](int i) { return arregloEn<32>(r, i, 0); });
}

// One question for all of them: a server is far away.
Almacen::Cadena AlmacenPostgres::cadena(IdEstacion estacion, const Huella& huella, std::size_t cuantas) {
    const auto r = base_.consultar(
        "WITH RECURSIVE cadena(lugar,huella,base) AS (SELECT 1::bigint,huella,base FROM telvane.contenidos "
        "WHERE estacion=$1 AND huella=$2 UNION ALL SELECT a.lugar+1,c.huella,c.base FROM cadena a JOIN "
        "telvane.contenidos c ON c.estacion=$1 AND c.huella=a.base WHERE a.lugar<$3) "
        "SELECT a.huella,a.base,c.profundidad::bigint,c.datos FROM cadena a JOIN telvane.contenidos c ON "
        "c.estacion=$1 AND c.huella=a.huella ORDER BY a.lugar",
        Parametros().entero(estacion).bytes(huella).entero(static_cast<std::int64_t>(cuantas)));
    Cadena cadena;
    for (int i = 0; i < r.filas(); ++i) {
        auto& [cual, guardada] = cadena.emplace_back(arregloEn<32>(r, i, 0), ImagenGuardada{});
        if (!r.esNulo(i, 1)) guardada.base = arregloEn<32>(r, i, 1);
        guardada.profundidad = static_cast<int>(r.entero(i, 2));
        const auto datos = r.bytes(i, 3);
        guardada.datos.assign(datos.begin(), datos.end());
    }
    return cadena;
}
void AlmacenPostgres::agregarFicha(IdEstacion estacion, const FichaImagen& f) {
    static const std::string kSql = fmt::format(
        "INSERT INTO "
        "telvane.imagenes(estacion,huella,bytes,reloj,desde,hasta,incorporada,origen,muestras,retrocesos) "
        "VALUES($1,$2,$3,{},{},{},to_timestamp($7::bigint),$8,$9,$10)",
        sinZona(4), sinZona(5), sinZona(6));
    Parametros p;
    p.entero(estacion).bytes(f.huella).entero(static_cast<std::int64_t>(f.bytes));
    poner(p, f.reloj);
    poner(p, f.desde);
    poner(p, f.hasta);
    p.entero(f.incorporada.time_since_epoch().count())
        .texto(f.origen)
        .entero(f.muestras)
        .entero(f.retrocesos);
    base_.cambiarUna(kSql, p);
}
void AlmacenPostgres::quitarFicha(IdEstacion estacion, const Huella& huella) {
    base_.consultar("DELETE FROM telvane.imagenes WHERE estacion=$1 AND huella=$2",
                    Parametros().entero(estacion).bytes(huella));
}

// There is hardly ever one: that is asked for where one stands in the way.
void AlmacenPostgres::guardarContenido(IdEstacion estacion, const Huella& huella,
                                       const ImagenGuardada& imagen) {
    Parametros c;
    c.entero(estacion).bytes(huella);
    if (imagen.base) {
        c.bytes(*imagen.base);
    } else {
        c.nulo();
    }
    c.entero(imagen.profundidad).bytes(imagen.datos);
    const auto guardar = [&] {
        return base_.consultar(
            "INSERT INTO telvane.contenidos(estacion,huella,base,profundidad,datos) VALUES($1,$2,$3,$4,$5) "
            "ON CONFLICT DO NOTHING",
            c);
    };
    if (guardar().tocadas() > 0) return;
    quitarContenido(estacion, huella);
    base_.exigirTocadas(guardar(), 1);
}
void AlmacenPostgres::quitarContenido(IdEstacion estacion, const Huella& huella) {
    base_.consultar("DELETE FROM telvane.contenidos WHERE estacion=$1 AND huella=$2",
                    Parametros().entero(estacion).bytes(huella));
}
bool AlmacenPostgres::conserva(IdEstacion estacion, const Huella& huella) {
    const auto r =
        base_.consultar("SELECT profundidad>=0 FROM telvane.contenidos WHERE estacion=$1 AND huella=$2",
                        Parametros().entero(estacion).bytes(huella));
    return r.filas() > 0 && r.logico(0, 0);
}
AlmacenPostgres::Descargas AlmacenPostgres::descargasCon(const std::string& condicion,
                                                         const Parametros& parametros) {
    const auto r = base_.consultar(
        "SELECT imagen,descargada,puerto,dispositivo,desfase_s,verificada,reintentos,errores_de_linea FROM "
        "telvane.descargas WHERE estacion=$1" +
            condicion,
        parametros);
    Descargas lista;
    for (int i = 0; i < r.filas(); ++i) {
        if (auto ficha = descargaEn(r, i, 1); ficha.tieneMomento())
            lista.emplace_back(arregloEn<32>(r, i, 0), std::move(ficha));
    }
    return lista;
}
AlmacenPostgres::Descargas AlmacenPostgres::descargas(IdEstacion estacion) {
    return descargasCon("", Parametros().entero(estacion));
}
std::optional<FichaDescarga> AlmacenPostgres::descarga(IdEstacion estacion, const Huella& imagen) {
    auto lista = descargasCon(" AND imagen=$2", Parametros().entero(estacion).bytes(imagen));
    return lista.empty() ? std::nullopt : std::optional(std::move(lista.front().second));
}
void AlmacenPostgres::guardarDescarga(IdEstacion estacion, const Huella& imagen, const FichaDescarga& f) {
    base_.consultar("DELETE FROM telvane.descargas WHERE estacion=$1 AND imagen=$2",
                    Parametros().entero(estacion).bytes(imagen));
    Parametros p;
    p.entero(estacion).bytes(imagen).entero(f.descargada.time_since_epoch().count());
    p.entero(f.puerto).texto(f.dispositivo);
    if (f.desfase) {
        p.entero(*f.desfase);
    } else {
        p.nulo();
    }
    base_.cambiarUna(
        "INSERT INTO telvane.descargas(estacion,imagen,descargada,puerto,dispositivo,desfase_s,verificada,"
        "reintentos,errores_de_linea) VALUES($1,$2,to_timestamp($3::bigint),$4,$5,$6,($7::int=1),$8,$9)",
        p.entero(f.verificada ? 1 : 0).entero(f.reintentos).entero(f.erroresDeLinea));
}

void AlmacenPostgres::marcarContenida(IdEstacion estacion, const Huella& huella, bool contenida) {
    base_.consultar("UPDATE telvane.imagenes SET contenida=($3::int=1) WHERE estacion=$1 AND huella=$2",
                    Parametros().entero(estacion).bytes(huella).entero(contenida ? 1 : 0));
}

void AlmacenPostgres::filas(IdEstacion estacion, Instante desde, Instante hasta, const AlLeerFila& alLeer) {
    // Page by page, each from the key where the one before it ended. Column by column: a comparison of rows
    // is none that a server sends on to where a foreign partition is, and it would fetch all up to here anew.
    constexpr int kPorPagina = 5000;
    static const std::string kSql = fmt::format(
        "SELECT hora,registro,cuenta FROM telvane.muestras WHERE estacion=$1 AND hora BETWEEN {0} AND {1} "
        "AND "
        "(hora>{0} OR registro>$3) ORDER BY hora,registro LIMIT {2}",
        sinZona(2), sinZona(4), kPorPagina);
    Instante ultimo = desde;
    BytesMuestra registro{};
    std::size_t largo = 0;
    for (int leidas = kPorPagina; leidas == kPorPagina;) {
        const auto r = base_.consultar(kSql, Parametros()
                                                 .entero(estacion)
                                                 .entero(segundosDe(ultimo))
                                                 .bytes(std::span(registro).first(largo))
                                                 .entero(segundosDe(hasta)));
        leidas = r.filas();
        for (int i = 0; i < leidas; ++i) {
            ultimo = instanteDeMicros(r.entero(i, 0));
            registro = arregloEn<32>(r, i, 1);
            alLeer({ultimo, registro, r.logico(i, 2)});
        }
        largo = registro.size();
    }
}

std::int64_t AlmacenPostgres::contarFilas(IdEstacion estacion, Instante desde, Instante hasta) {
    static const std::string kSql =
        fmt::format("SELECT count(*) FROM telvane.muestras WHERE estacion=$1 AND hora BETWEEN {} AND {}",
                    sinZona(2), sinZona(3));
    return base_
        .consultar(kSql, Parametros().entero(estacion).entero(segundosDe(desde)).entero(segundosDe(hasta)))
        .entero(0, 0);
}

std::vector<Instante> AlmacenPostgres::sellos(const std::string& sql, const Parametros& parametros) {
    const auto r = base_.consultar(sql, parametros);
    return deCadaFila(r, [&](int i) { return instanteDeMicros(r.entero(i, 0)); });
}
std::vector<Instante> AlmacenPostgres::sellosAntes(IdEstacion estacion, Instante de, std::size_t cuantos) {
    static const std::string kSql = fmt::format(
        "SELECT DISTINCT hora FROM telvane.muestras WHERE estacion=$1 AND hora<{} ORDER BY hora DESC LIMIT "
        "$3",
        sinZona(2));
    auto lista = sellos(
        kSql,
        Parametros().entero(estacion).entero(segundosDe(de)).entero(static_cast<std::int64_t>(cuantos)));
    std::reverse(lista.begin(), lista.end());
    return lista;
}
std::vector<Instante> AlmacenPostgres::sellosDespues(IdEstacion estacion, Instante de, std::size_t cuantos) {
    static const std::string kSql = fmt::format(
        "SELECT DISTINCT hora FROM telvane.muestras WHERE estacion=$1 AND hora>{} ORDER BY hora LIMIT $3",
        sinZona(2));
    return sellos(
        kSql,
        Parametros().entero(estacion).entero(segundosDe(de)).entero(static_cast<std::int64_t>(cuantos)));
}
void AlmacenPostgres::agregarFilas(IdEstacion estacion, std::span<const Fila> filas) {
    if (filas.empty()) return;
    constexpr std::int16_t kCampos = 4;
    std::string copia(kComienzoDeCopia);
    for (const auto& fila : filas) {
        agregarEntero(copia, kCampos);
        agregarNumero(copia, static_cast<std::int32_t>(estacion));
        agregarNumero(copia, microsDe(fila.instante));
        agregarCampo(copia, fila.registro);
        agregarNumero(copia, static_cast<std::int8_t>(fila.cuenta ? 1 : 0));
    }
    terminarCopia(copia);
    base_.copiar("COPY telvane.muestras(estacion,hora,registro,cuenta) FROM STDIN (FORMAT binary)", copia,
                 filas.size());
}
void AlmacenPostgres::cambiarCuenta(IdEstacion estacion, const Fila& fila) {
    static const std::string kSql = fmt::format(
        "UPDATE telvane.muestras SET cuenta=($4::int=1) WHERE estacion=$1 AND hora={} AND registro=$3",
        sinZona(2));
    base_.cambiarUna(kSql, Parametros()
                               .entero(estacion)
                               .entero(segundosDe(fila.instante))
                               .bytes(fila.registro)
                               .entero(fila.cuenta ? 1 : 0));
}

std::vector<Testigo> AlmacenPostgres::testigos(IdEstacion estacion, Instante desde, Instante hasta) {
    static const std::string kSql = fmt::format(
        "SELECT t.hora,t.registro,t.ranura::bigint,t.imagen,i.contenida FROM telvane.testigos t JOIN "
        "telvane.imagenes i ON "
        "i.estacion=t.estacion AND i.huella=t.imagen WHERE t.estacion=$1 AND t.hora BETWEEN {} AND {} ORDER "
        "BY t.hora",
        sinZona(2), sinZona(3));
    const auto r = base_.consultar(
        kSql, Parametros().entero(estacion).entero(segundosDe(desde)).entero(segundosDe(hasta)));
    return deCadaFila(r, [&](int i) {
        return Testigo{.instante = instanteDeMicros(r.entero(i, 0)),
                       .registro = arregloEn<32>(r, i, 1),
                       .ranura = static_cast<std::size_t>(r.entero(i, 2)),
                       .imagen = arregloEn<32>(r, i, 3),
                       .vota = !r.logico(i, 4)};
    });
}
std::int64_t AlmacenPostgres::conflictosDeMas(IdEstacion estacion, const FichaImagen& imagen,
                                              const Huella& otra) {
    static const std::string kDe = fmt::format(
        "SELECT hora,registro FROM telvane.testigos WHERE estacion=$1 AND hora BETWEEN {} AND {} AND imagen=",
        sinZona(4), sinZona(5));
    static const std::string kSql =
        "SELECT count(DISTINCT hora) FROM (" + kDe + "$2 EXCEPT " + kDe + "$3) nuevas";
    Parametros p;
    p.entero(estacion).bytes(imagen.huella).bytes(otra);
    poner(p, imagen.desde);
    poner(p, imagen.hasta);
    return base_.consultar(kSql, p).entero(0, 0);
}

std::vector<Instante> AlmacenPostgres::sellosDe(IdEstacion estacion, const Huella& imagen) {
    return sellos("SELECT DISTINCT hora FROM telvane.testigos WHERE estacion=$1 AND imagen=$2 ORDER BY hora",
                  Parametros().entero(estacion).bytes(imagen));
}
void AlmacenPostgres::agregarTestigos(IdEstacion estacion, std::span<const Testigo> testigos) {
    if (testigos.empty()) return;
    constexpr std::int16_t kCampos = 5;
    std::string copia(kComienzoDeCopia);
    for (const auto& t : testigos) {
        agregarEntero(copia, kCampos);
        agregarNumero(copia, static_cast<std::int32_t>(estacion));
        agregarNumero(copia, microsDe(t.instante));
        agregarCampo(copia, t.registro);
        agregarNumero(copia, static_cast<std::int32_t>(t.ranura));
        agregarCampo(copia, t.imagen);
    }
    terminarCopia(copia);
    base_.copiar("COPY telvane.testigos(estacion,hora,registro,ranura,imagen) FROM STDIN (FORMAT binary)",
                 copia, testigos.size());
}
void AlmacenPostgres::vaciarDerivado(IdEstacion estacion) {
    const Parametros p = Parametros().entero(estacion);
    base_.consultar("DELETE FROM telvane.muestras WHERE estacion=$1", p);
    base_.consultar("DELETE FROM telvane.testigos WHERE estacion=$1", p);
    base_.consultar("UPDATE telvane.imagenes SET contenida=false WHERE estacion=$1 AND contenida", p);
}

void AlmacenPostgres::corregirEstacion(const EstacionGuardada& e) {
    base_.consultar("UPDATE telvane.estaciones SET nombre=$2,serie=$3,evaporacion=($4::int=1) WHERE id=$1",
                    Parametros().entero(e.id).texto(e.nombre).texto(e.serie).entero(e.evaporacion ? 1 : 0));
}
void AlmacenPostgres::corregirFicha(IdEstacion estacion, const FichaImagen& f) {
    static const std::string kSql = fmt::format(
        "UPDATE telvane.imagenes SET reloj={},desde={},hasta={},muestras=$6,retrocesos=$7,"
        "incorporada=to_timestamp($8::bigint),bytes=$9 WHERE estacion=$1 AND huella=$2",
        sinZona(3), sinZona(4), sinZona(5));
    Parametros p;
    p.entero(estacion).bytes(f.huella);
    poner(p, f.reloj);
    poner(p, f.desde);
    poner(p, f.hasta);
    p.entero(f.muestras).entero(f.retrocesos).entero(f.incorporada.time_since_epoch().count());
    base_.consultar(kSql, p.entero(static_cast<std::int64_t>(f.bytes)));
}

std::vector<std::string> AlmacenPostgres::partesQueFaltan() {
    base_.ejecutar("BEGIN; " + condiciones());
    std::vector<std::string> lista;
    try {
        lista = tablas_.faltan();
    } catch (const ErrorAlmacen&) {
        abandonar();
        throw;
    }
    base_.ejecutar("ROLLBACK");
    return lista;
}

// All that this version has is there by now.
void AlmacenPostgres::reponerVersion() {
    if (version() > 0) return;
    base_.ejecutar(fmt::format("DELETE FROM telvane.esquema; INSERT INTO telvane.esquema VALUES({})",
                               esquema_postgres::kVersion));
}

void AlmacenPostgres::reponer() {
    Transaccion transaccion(*this, Modo::arreglo);
    tablas_.exigirSinIntrusos();
    if (base_.consultar("SELECT to_regclass('telvane.estaciones') IS NOT NULL").logico(0, 0))
        base_.ejecutar(std::string(kBloqueo));
    tablas_.reponer();
    reponerVersion();
    transaccion.confirmar();
}

// What tells of an image that another station has goes there.
void AlmacenPostgres::limpiar() {
    constexpr std::string_view kSuImagen =
        "SELECT 1 FROM telvane.imagenes i WHERE i.estacion=d.estacion AND i.huella=d.imagen";
    base_.ejecutar(fmt::format(
        "UPDATE telvane.descargas d SET estacion=u.estacion FROM (SELECT huella,min(estacion) AS estacion "
        "FROM telvane.imagenes GROUP BY huella HAVING count(*)=1) u WHERE u.huella=d.imagen AND "
        "u.estacion<>d.estacion AND NOT EXISTS ({0}) AND NOT EXISTS (SELECT 1 FROM telvane.descargas o WHERE "
        "o.estacion=u.estacion AND o.imagen=d.imagen);"
        "DELETE FROM telvane.descargas d WHERE NOT EXISTS ({0}) AND NOT EXISTS (SELECT 1 FROM "
        "telvane.contenidos c WHERE c.estacion=d.estacion AND c.huella=d.imagen);"
        "DELETE FROM telvane.muestras WHERE estacion NOT IN (SELECT id FROM telvane.estaciones);"
        "DELETE FROM telvane.testigos t WHERE estacion NOT IN (SELECT id FROM telvane.estaciones) OR NOT "
        "EXISTS (SELECT 1 FROM telvane.imagenes i WHERE i.estacion=t.estacion AND i.huella=t.imagen)",
        kSuImagen));
}

std::vector<Almacen::FichaGuardada> AlmacenPostgres::fichasGuardadas() {
    const auto r = base_.consultar(
        "SELECT huella,bytes::bigint,reloj,desde,hasta,incorporada,origen,muestras::bigint,"
        "retrocesos::bigint,contenida,estacion::bigint FROM telvane.imagenes ORDER BY estacion,reloj NULLS "
        "FIRST,huella");
    return deCadaFila(
        r, [&](int i) { return FichaGuardada{.estacion = r.entero(i, 10), .ficha = fichaEn(r, i)}; });
}

std::vector<Almacen::Eslabon> AlmacenPostgres::eslabones() {
    const auto r = base_.consultar(
        "SELECT estacion::bigint,huella,base,profundidad::bigint FROM telvane.contenidos ORDER BY "
        "estacion,huella");
    return deCadaFila(r, [&](int i) {
        Eslabon eslabon{.estacion = r.entero(i, 0),
                        .huella = arregloEn<32>(r, i, 1),
                        .base = {},
                        .profundidad = r.entero(i, 3)};
        if (!r.esNulo(i, 2)) eslabon.base = arregloEn<32>(r, i, 2);
        return eslabon;
    });
}

// Under a name that is not as long as one it is not found by that.
std::vector<std::uint8_t> AlmacenPostgres::datosDe(const Eslabon& eslabon) {
    const std::string sql = "SELECT datos FROM telvane.contenidos WHERE estacion=$1 AND ";
    const auto suya = Parametros().entero(eslabon.estacion).bytes(eslabon.huella);
    auto r = base_.consultar(sql + "huella=$2", suya);
    if (r.filas() == 0)
        r = base_.consultar(fmt::format("{}{}=$2", sql, TablasPostgres::comoHuella("huella")), suya);
    if (r.filas() == 0) return {};
    const auto datos = r.bytes(0, 0);
    return {datos.begin(), datos.end()};
}
void AlmacenPostgres::corregirProfundidad(IdEstacion estacion, const Huella& huella,
                                          std::int64_t profundidad) {
    base_.consultar("UPDATE telvane.contenidos SET profundidad=$3 WHERE estacion=$1 AND huella=$2",
                    Parametros().entero(estacion).bytes(huella).entero(profundidad));
}

std::int64_t AlmacenPostgres::numero(const std::string& sql) {
    return base_.consultar(sql).entero(0, 0);
}

std::vector<std::string> AlmacenPostgres::defectos() {
    // The server looks after its own files (data_checksums, amcheck); what the images say is looked at above.
    return {};
}

}  // namespace telvane
