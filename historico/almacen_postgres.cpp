#include "historico/almacen_postgres.h"

#include <algorithm>
#include <span>
#include <utility>

#include <fmt/format.h>

#include "historico/apertura_postgres.h"
#include "historico/esquema_postgres.h"
#include "historico/filas_postgres.h"
#include "historico/limites_aviso.h"

namespace telvane {

namespace {

namespace columnas = columnas_postgres;

const std::string kEstacion = fmt::format("SELECT {} FROM telvane.estaciones", columnas::kEstacion);

// Nobody else writes meanwhile.
constexpr std::string_view kBloqueo = "LOCK TABLE telvane.estaciones IN SHARE ROW EXCLUSIVE MODE";

}  // namespace

bool AlmacenPostgres::esDireccion(std::string_view destino) {
    return destino.starts_with("postgresql://") || destino.starts_with("postgres://");
}

AlmacenPostgres::AlmacenPostgres(const std::string& url, bool crear, std::chrono::milliseconds paciencia,
                                 std::function<void()> atender)
    : AlmacenPostgres(url, crear ? AperturaPostgres::Para::crear : AperturaPostgres::Para::leer, paciencia,
                      std::move(atender)) {}

std::unique_ptr<AlmacenPostgres> AlmacenPostgres::abrirParaReponer(const std::string& url,
                                                                   std::chrono::milliseconds paciencia,
                                                                   std::function<void()> atender) {
    return std::unique_ptr<AlmacenPostgres>(
        new AlmacenPostgres(url, AperturaPostgres::Para::reponer, paciencia, std::move(atender)));
}

AlmacenPostgres::AlmacenPostgres(const std::string& url, AperturaPostgres::Para para,
                                 std::chrono::milliseconds paciencia, std::function<void()> atender)
    : base_(url, std::move(atender)), tablas_(base_, esquema_postgres::kMigraciones), paciencia_(paciencia) {
    apertura().abrir(para);
}

AperturaPostgres AlmacenPostgres::apertura() {
    return {*this, base_, tablas_};
}

// What a transaction goes by, whatever is set for the server, the data base or the role: it waits so long for
// whoever holds a table, and otherwise takes what it takes; rows that are kept from this role are a right
// that it lacks, not rows that are lost; types are called as they are here. Not every server has a time limit
// for a whole transaction.
std::string AlmacenPostgres::condiciones() const {
    return fmt::format(
        "SET LOCAL statement_timeout=0; SET LOCAL lock_timeout={}; SET LOCAL "
        "idle_in_transaction_session_timeout=0; SET LOCAL row_security=off; SET LOCAL "
        "quote_all_identifiers=off; SELECT set_config(plazo,'0',true) FROM (VALUES('transaction_timeout')) "
        "p(plazo) WHERE current_setting(plazo,true) IS NOT NULL",
        paciencia_.count());
}

void AlmacenPostgres::empezar(Modo modo) {
    // Somebody may hold the tables for himself alone: who reads waits no longer than who writes.
    std::string sql = modo == Modo::lectura ? "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY; "
                                            : "BEGIN ISOLATION LEVEL READ COMMITTED; ";
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
        if (base_.viva() && base_.enTransaccion()) base_.ejecutar("ROLLBACK", BasePostgres::Atencion::breve);
    } catch (const ErrorAlmacen&) {
        // A server that has gone has undone it.
        return;
    }
}

std::vector<EstacionGuardada> AlmacenPostgres::estaciones() {
    const auto r = base_.consultar(kEstacion + " ORDER BY nombre");
    return deCadaFila(r, [&](int i) { return estacionEn(r, i); });
}
std::optional<EstacionGuardada> AlmacenPostgres::estacion(const std::string& nombre) {
    const auto r = base_.consultar(kEstacion + " WHERE nombre=$1", Parametros().texto(nombre));
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
    ponerOpcional(p, r.desde);
    ponerOpcional(p, r.hasta);
    base_.cambiarUna(kSql, p.entero(r.incorporada.time_since_epoch().count()));
}

std::vector<FichaImagen> AlmacenPostgres::fichasCon(const std::string& condicion,
                                                    const Parametros& parametros) {
    const auto r = base_.consultar(
        fmt::format("SELECT {} FROM telvane.imagenes WHERE estacion=$1{} ORDER BY reloj NULLS FIRST,huella",
                    columnas::kFicha, condicion),
        parametros);
    return deCadaFila(r, [&](int i) { return fichaEn(r, i); });
}
std::vector<FichaImagen> AlmacenPostgres::fichas(IdEstacion estacion) {
    return fichasCon("", Parametros().entero(estacion));
}
// One question for all of them: a server is far away.
std::map<IdEstacion, std::vector<Llegada>> AlmacenPostgres::ultimas(std::size_t cuantas) {
    static const std::string kColumnas =
        columnasDe("i", columnas::kFicha) + "," + columnasDe("d", columnas::kDescarga);
    static const std::string kSql = fmt::format(
        "SELECT u.*,e.id::bigint FROM telvane.estaciones e CROSS JOIN LATERAL ((SELECT {0} FROM "
        "telvane.imagenes i LEFT JOIN telvane.descargas d ON d.estacion=i.estacion AND d.imagen=i.huella "
        "WHERE i.estacion=e.id AND i.reloj<=(i.incorporada AT TIME ZONE 'UTC')+$2::bigint*interval '1 "
        "second' "
        "ORDER BY i.reloj DESC,i.huella DESC LIMIT $1) UNION ALL (SELECT {0} FROM telvane.descargas d JOIN "
        "telvane.imagenes i ON i.estacion=d.estacion AND i.huella=d.imagen WHERE d.estacion=e.id ORDER BY "
        "d.descargada DESC,d.imagen DESC LIMIT $1)) u",
        kColumnas);
    const auto r =
        base_.consultar(kSql, Parametros()
                                  .entero(static_cast<std::int64_t>(cuantas))
                                  .entero(std::chrono::seconds(limites_aviso::kRelojFuturo).count()));
    constexpr int kTrasLaFicha = columnas::kDeFicha;
    constexpr int kIdEstacion = kTrasLaFicha + columnas::kDeDescarga;
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
    ponerOpcional(p, f.reloj);
    ponerOpcional(p, f.desde);
    ponerOpcional(p, f.hasta);
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
    const auto r = base_.consultar(fmt::format("SELECT imagen,{} FROM telvane.descargas WHERE estacion=$1{}",
                                               columnas::kDescarga, condicion),
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
    CopiaBinaria copia(kCampos);
    for (const auto& fila : filas) {
        copia.empezarFila();
        copia.numero(static_cast<std::int32_t>(estacion));
        copia.numero(microsDe(fila.instante));
        copia.campo(fila.registro);
        copia.numero(static_cast<std::int8_t>(fila.cuenta ? 1 : 0));
    }
    base_.copiar("COPY telvane.muestras(estacion,hora,registro,cuenta) FROM STDIN (FORMAT binary)",
                 copia.terminar(), filas.size());
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
    ponerOpcional(p, imagen.desde);
    ponerOpcional(p, imagen.hasta);
    return base_.consultar(kSql, p).entero(0, 0);
}

std::vector<Instante> AlmacenPostgres::sellosDe(IdEstacion estacion, const Huella& imagen) {
    return sellos("SELECT DISTINCT hora FROM telvane.testigos WHERE estacion=$1 AND imagen=$2 ORDER BY hora",
                  Parametros().entero(estacion).bytes(imagen));
}
void AlmacenPostgres::agregarTestigos(IdEstacion estacion, std::span<const Testigo> testigos) {
    if (testigos.empty()) return;
    constexpr std::int16_t kCampos = 5;
    CopiaBinaria copia(kCampos);
    for (const auto& t : testigos) {
        copia.empezarFila();
        copia.numero(static_cast<std::int32_t>(estacion));
        copia.numero(microsDe(t.instante));
        copia.campo(t.registro);
        copia.numero(static_cast<std::int32_t>(t.ranura));
        copia.campo(t.imagen);
    }
    base_.copiar("COPY telvane.testigos(estacion,hora,registro,ranura,imagen) FROM STDIN (FORMAT binary)",
                 copia.terminar(), testigos.size());
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
    ponerOpcional(p, f.reloj);
    ponerOpcional(p, f.desde);
    ponerOpcional(p, f.hasta);
    p.entero(f.muestras).entero(f.retrocesos).entero(f.incorporada.time_since_epoch().count());
    base_.consultar(kSql, p.entero(static_cast<std::int64_t>(f.bytes)));
}

// Nothing of what that makes stays.
std::vector<std::string> AlmacenPostgres::partesQueFaltan() {
    const Transaccion transaccion(*this, Modo::arreglo);
    return tablas_.faltan();
}

void AlmacenPostgres::reponer() {
    Transaccion transaccion(*this, Modo::arreglo);
    tablas_.exigirSinIntrusos();
    if (base_.consultar("SELECT to_regclass('telvane.estaciones') IS NOT NULL").logico(0, 0))
        base_.ejecutar(std::string(kBloqueo));
    tablas_.reponer();
    apertura().reponerVersion();
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
    const auto r = base_.consultar(fmt::format(
        "SELECT {},estacion::bigint FROM telvane.imagenes ORDER BY estacion,reloj NULLS FIRST,huella",
        columnas::kFicha));
    return deCadaFila(r, [&](int i) {
        return FichaGuardada{.estacion = r.entero(i, columnas::kDeFicha), .ficha = fichaEn(r, i)};
    });
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
