#include "historico/almacen_sqlite.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <span>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "historico/canales.h"
#include "historico/esquema.h"
#include "historico/filas_sqlite.h"
#include "historico/limites_aviso.h"

namespace telvane {

namespace {

using std::chrono::seconds;

}  // namespace

AlmacenSqlite::AlmacenSqlite(const std::filesystem::path& ruta, BaseSqlite::Acceso acceso, Opciones opciones)
    : opciones_(std::move(opciones)),
      base_(ruta, acceso, opciones_.paciencia, opciones_.atender),
      tablas_(base_, opciones_.migraciones) {}

std::unique_ptr<AlmacenSqlite> AlmacenSqlite::abrirParaLeer(const std::filesystem::path& ruta,
                                                            Opciones opciones) {
    AperturaSqlite::exigirLegible(ruta, opciones.atender);
    std::unique_ptr<AlmacenSqlite> almacen(
        new AlmacenSqlite(ruta, BaseSqlite::Acceso::lectura, std::move(opciones)));
    almacen->base_.insistir([&] { almacen->apertura().paraLeer(); });
    return almacen;
}

std::unique_ptr<AlmacenSqlite> AlmacenSqlite::abrirParaEscribir(const std::filesystem::path& ruta, bool crear,
                                                                Opciones opciones) {
    AperturaSqlite::exigirEscribible(ruta, crear);
    std::unique_ptr<AlmacenSqlite> almacen(
        new AlmacenSqlite(ruta, BaseSqlite::Acceso::escritura, std::move(opciones)));
    almacen->base_.insistir([&] { almacen->apertura().paraEscribir(crear); });
    return almacen;
}

std::unique_ptr<AlmacenSqlite> AlmacenSqlite::temporal() {
    std::unique_ptr<AlmacenSqlite> almacen(new AlmacenSqlite({}, BaseSqlite::Acceso::escritura, {}));
    almacen->base_.ejecutar("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF");
    almacen->apertura().crearTablas();
    return almacen;
}

AperturaSqlite AlmacenSqlite::apertura() {
    return {*this, base_, tablas_, opciones_.migraciones};
}

std::vector<std::filesystem::path> AlmacenSqlite::archivos() const {
    // SQLite puts its own beside the file that a link leads to.
    std::error_code sinMotivo;
    const auto real = std::filesystem::weakly_canonical(base_.ruta(), sinMotivo);
    std::vector<std::filesystem::path> suyos = {base_.ruta()};
    for (const auto* sufijo : {"-wal", "-shm", "-journal"}) suyos.emplace_back(real.string() + sufijo);
    return suyos;
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
    static const auto kSql =
        fmt::format("SELECT {} FROM estaciones ORDER BY nombre", columnas_sqlite::kEstacion);
    auto& s = sentencia(kSql);
    s.correr([&] { lista.push_back(estacionEn(s)); });
    return lista;
}

std::optional<EstacionGuardada> AlmacenSqlite::estacion(const std::string& nombre) {
    std::optional<EstacionGuardada> hallada;
    static const auto kSql =
        fmt::format("SELECT {} FROM estaciones WHERE nombre=?1", columnas_sqlite::kEstacion);
    auto& s = sentencia(kSql);
    s.poner(1, nombre).correr([&] { hallada = estacionEn(s); });
    return hallada;
}

void AlmacenSqlite::agregarEstacion(const EstacionGuardada& e) {
    auto& s = sentencia("INSERT INTO estaciones(id,nombre,serie,evaporacion) VALUES(?1,?2,?3,?4)");
    ponerEstacion(s, e);
    s.correr();
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
    static const auto kSql = fmt::format("SELECT {} FROM imagenes WHERE estacion=?1 ORDER BY reloj,huella",
                                         columnas_sqlite::kFicha);
    return leerFichas(sentencia(kSql).poner(1, estacion));
}
std::vector<FichaImagen> AlmacenSqlite::parcialesSueltas(IdEstacion estacion) {
    static const auto kSql = fmt::format(
        "SELECT {} FROM imagenes WHERE estacion=?1 AND bytes<262144 AND contenida=0 ORDER BY reloj,huella",
        columnas_sqlite::kFicha);
    return leerFichas(sentencia(kSql).poner(1, estacion));
}
std::optional<FichaImagen> AlmacenSqlite::ficha(IdEstacion estacion, const Huella& huella) {
    static const auto kSql =
        fmt::format("SELECT {} FROM imagenes WHERE estacion=?1 AND huella=?2", columnas_sqlite::kFicha);
    auto lista = leerFichas(sentencia(kSql).poner(1, estacion).poner(2, std::span(huella)));
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
    static const auto kColumnas =
        columnasDe("i", columnas_sqlite::kFicha) + "," + columnasDe("d", columnas_sqlite::kDescarga);
    static const auto kPorReloj = fmt::format(
        "SELECT {} FROM imagenes i LEFT JOIN descargas d ON d.estacion=i.estacion AND d.imagen=i.huella "
        "WHERE i.estacion=?1 AND i.reloj<=i.incorporada+?3 ORDER BY i.reloj DESC,i.huella DESC LIMIT ?2",
        kColumnas);
    static const auto kPorDescarga = fmt::format(
        "SELECT {} FROM descargas d JOIN imagenes i ON i.estacion=d.estacion AND i.huella=d.imagen "
        "WHERE d.estacion=?1 ORDER BY d.descargada DESC,d.imagen DESC LIMIT ?2",
        kColumnas);
    for (const auto estacion : estaciones) {
        auto& suyas = ultimas[estacion];
        const auto leer = [&](Sentencia& s) {
            s.poner(1, estacion).poner(2, static_cast<std::int64_t>(cuantas));
            s.correr([&] {
                auto& llegada = suyas.emplace_back(Llegada{.imagen = fichaEn(s), .descarga = {}});
                if (s.esNulo(columnas_sqlite::kDeFicha)) return;
                if (auto ficha = descargaEn(s, columnas_sqlite::kDeFicha); ficha.tieneMomento())
                    llegada.descarga = std::move(ficha);
            });
        };
        leer(sentencia(kPorReloj).poner(3, seconds(limites_aviso::kRelojFuturo).count()));
        leer(sentencia(kPorDescarga));
    }
    return ultimas;
}
AlmacenSqlite::Descargas AlmacenSqlite::descargas(IdEstacion estacion) {
    static const auto kSql =
        fmt::format("SELECT imagen,{} FROM descargas WHERE estacion=?1", columnas_sqlite::kDescarga);
    return leerDescargas(sentencia(kSql).poner(1, estacion));
}
std::optional<FichaDescarga> AlmacenSqlite::descarga(IdEstacion estacion, const Huella& imagen) {
    static const auto kSql = fmt::format("SELECT imagen,{} FROM descargas WHERE estacion=?1 AND imagen=?2",
                                         columnas_sqlite::kDescarga);
    auto lista = leerDescargas(sentencia(kSql).poner(1, estacion).poner(2, std::span(imagen)));
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
        columnas_sqlite::kRegistro);
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
        columnas_sqlite::kRegistro);
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
        columnas_sqlite::kRegistro);
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
    auto& s = sentencia("UPDATE estaciones SET nombre=?2,serie=?3,evaporacion=?4 WHERE id=?1");
    ponerEstacion(s, e);
    s.correr();
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
    static const auto kSql = fmt::format("SELECT {},estacion FROM imagenes ORDER BY estacion,reloj,huella",
                                         columnas_sqlite::kFicha);
    auto& s = sentencia(kSql);
    s.correr(
        [&] { lista.push_back({.estacion = s.entero(columnas_sqlite::kDeFicha), .ficha = fichaEn(s)}); });
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
