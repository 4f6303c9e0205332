#include "historico/tablas_sqlite.h"

#include <sqlite3.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "historico/almacen.h"
#include "historico/esquema_sqlite.h"

namespace telvane {

namespace {

// As SQL takes it.
std::string comoSeEscribe(const std::string& nombre) {
    constexpr std::string_view kSinMas = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
    const bool sinMas = !nombre.empty() && nombre.find_first_not_of(kSinMas) == std::string::npos &&
                        (nombre.front() < '0' || nombre.front() > '9') &&
                        sqlite3_keyword_check(nombre.c_str(), static_cast<int>(nombre.size())) == 0;
    return sinMas ? nombre : entreComillas(nombre);
}

constexpr Dialecto kDialecto{
    .prefijo = TablasSqlite::kPrefijo,
    .delTipo =
        [](const Columna& columna) {
            const auto* clase = columna.tipo == "INTEGER" ? "integer"
                                : columna.tipo == "TEXT"  ? "text"
                                                          : "blob";
            return fmt::format("typeof({}) IN ('{}'{})", columna.nombre, clase,
                               columna.obligatoria ? "" : ",'null'");
        },
    .momento = [](std::int64_t segundos) { return std::to_string(segundos); },
    .momentoDelRegistrador = [](std::int64_t segundos) { return std::to_string(segundos); },
    .no = "0",
    .si = "1",
    .comoSeEscribe = comoSeEscribe,
    // No statement takes one away.
    .claveAjena = kReponer};

// A table of another form is made anew with what is in it.
std::string remedioAqui(const Falta& falta) {
    const bool deForma = falta.clase == Falta::Clase::forma || falta.clase == Falta::Clase::clave;
    return deForma ? std::string(kReponer) : remedioDe(falta, kDialecto.prefijo);
}

}  // namespace

void TablasSqlite::crear() {
    base_.ejecutar(std::string(esquema::kTablas));
    base_.ejecutar(std::string(esquema::kVista));
    // A new archive is an old one brought up to date: there is one way to every version.
    for (const auto migracion : migraciones_) base_.ejecutar(std::string(migracion));
}

bool TablasSqlite::estanLasDeSiempre() const {
    return faltasDe(leerTablas(esquema::kTablas), hay()).empty();
}

std::vector<std::string> TablasSqlite::estorbos(const TablasSqlite& antiguas) const {
    auto lista = intrusos();
    std::ranges::move(avisosDeEstorbos(debidas(), antiguas.debidas(), hay(), kDialecto.prefijo),
                      std::back_inserter(lista));
    return lista;
}

std::vector<std::string> TablasSqlite::usurpadas() const {
    return avisosDeUsurpadas(debidas(), hay(), remedioAqui, kPrefijo, [&](const std::string& tabla) {
        return base_.numero(fmt::format("SELECT NOT EXISTS(SELECT 1 FROM {})", entreComillas(tabla))) != 0;
    });
}

std::vector<std::string> TablasSqlite::faltanTablas() const {
    if (auto lista = usurpadas(); !lista.empty()) return lista;
    return avisosDeFaltas(debidas(), hay(), remedioAqui);
}

std::vector<Parte> TablasSqlite::partes() const {
    std::vector<Parte> lista;
    Sentencia s(base_,
                "SELECT type,name,sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY type DESC,name");
    s.correr([&] { lista.push_back({.clase = s.texto(0), .nombre = s.texto(1), .sql = s.texto(2)}); });
    return lista;
}

std::vector<Parte> TablasSqlite::recienHechas() const {
    BaseSqlite otra({}, BaseSqlite::Acceso::escritura, {});
    TablasSqlite suyas(otra, migraciones_);
    suyas.crear();
    return suyas.partes();
}

// Word for word what this program makes.
std::vector<Parte> TablasSqlite::partesPorReponer() const {
    const auto estan = partes();
    auto deben = recienHechas();
    std::erase_if(deben, [&](const Parte& debe) {
        return debe.clase == "table" || std::ranges::any_of(estan, [&](const Parte& una) {
                   return una.clase == debe.clase && una.nombre == debe.nombre && una.sql == debe.sql;
               });
    });
    return deben;
}

Tablas TablasSqlite::debidas() const {
    std::string sql(esquema::kTablas);
    for (const auto migracion : migraciones_) sql += migracion;
    return leerTablas(sql);
}

Tablas TablasSqlite::hay(Claves cuales) const {
    Tablas tablas;
    Sentencia s(base_,
                "SELECT m.name,c.name,c.type,c.\"notnull\" OR c.pk>0,c.pk FROM sqlite_master m JOIN "
                "pragma_table_xinfo(m.name) c WHERE m.type='table' ORDER BY m.name,c.cid");
    s.correr([&] {
        if (tablas.empty() || tablas.back().nombre != s.texto(0)) tablas.push_back({.nombre = s.texto(0)});
        auto& tabla = tablas.back();
        tabla.columnas.push_back({.nombre = s.texto(1), .tipo = s.texto(2), .obligatoria = s.entero(3) != 0});
        const auto lugar = static_cast<std::size_t>(s.entero(4));
        if (lugar == 0) return;
        if (tabla.claves.empty()) tabla.claves.emplace_back();
        auto& clave = tabla.claves.front();
        clave.resize(std::max(clave.size(), lugar));
        clave[lugar - 1] = s.texto(1);
    });
    Sentencia k(
        base_,
        "SELECT m.name,i.name,k.name FROM sqlite_master m JOIN pragma_index_list(m.name) i JOIN "
        "pragma_index_info(i.name) k WHERE m.type='table' AND i.\"unique\" AND i.origin IN ('u',?1) AND NOT "
        "i.partial ORDER BY m.name,i.name,k.seqno");
    std::string anterior;
    k.poner(1, std::string_view(cuales == Claves::todas ? "c" : "u")).correr([&] {
        auto& claves = std::ranges::find(tablas, k.texto(0), &Tabla::nombre)->claves;
        if (std::exchange(anterior, k.texto(1)) != k.texto(1)) claves.emplace_back();
        claves.back().push_back(k.texto(2));
    });
    return tablas;
}

// A view by a table's name, and the like.
std::vector<std::string> TablasSqlite::intrusos() const {
    std::vector<std::string> lista;
    const auto deben = recienHechas();
    for (const auto& una : partes()) {
        const auto debe = std::ranges::find(deben, una.nombre, &Parte::nombre);
        if (debe == deben.end() || debe->clase == una.clase || una.clase == "trigger") continue;
        lista.push_back(avisoDeIntruso(una.clase == "view"    ? "VIEW"
                                       : una.clase == "index" ? "INDEX"
                                                              : "TABLE",
                                       una.nombre));
    }
    return lista;
}

std::vector<std::string> TablasSqlite::faltan() const {
    auto lista = intrusos();
    if (!lista.empty()) return lista;
    lista = faltanTablas();
    // Of a table that is not there nothing else is either.
    if (!lista.empty()) return lista;
    for (const auto& parte : partesPorReponer()) {
        lista.push_back(
            fmt::format("falta {}, o no es como este programa lo hace: {}", parte.nombre, kReponer));
    }
    return lista;
}

std::vector<std::string> TablasSqlite::sobras() const {
    const auto deben = debidas();
    auto lista = sobrasDe(deben, hay(Claves::declaradas), kDialecto);
    std::ranges::move(indicesAjenos(deben), std::back_inserter(lista));
    std::ranges::move(disparadoresAjenos(deben), std::back_inserter(lista));
    return lista;
}

// Other tables and views are whoever's; what hangs on ours changes what they hold.
std::vector<std::string> TablasSqlite::disparadoresAjenos(const Tablas& deben) const {
    std::vector<std::string> lista;
    Sentencia s(base_, "SELECT name,tbl_name FROM sqlite_master WHERE type='trigger' ORDER BY name");
    s.correr([&] {
        const auto tabla = s.texto(1);
        if (buscarTabla(deben, tabla) == nullptr && tabla != "lecturas") return;
        lista.push_back(
            fmt::format("{} tiene un disparador que no es de este programa, {}: quítelo con DROP TRIGGER {}",
                        tabla, s.texto(0), comoSeEscribe(s.texto(0))));
    });
    return lista;
}

// One that refuses rows of ours. A key that is ours may be held by an index of somebody else.
std::vector<std::string> TablasSqlite::indicesAjenos(const Tablas& deben) const {
    struct Indice {
        std::string nombre;
        const Tabla* tabla;
        bool propio;  // of a part of the rows, or of what is made of a column
        Clave clave;
    };
    std::vector<Indice> indices;
    Sentencia s(base_,
                "SELECT m.name,i.name,i.partial OR k.name IS NULL,k.name FROM sqlite_master m JOIN "
                "pragma_index_list(m.name) i JOIN pragma_index_info(i.name) k WHERE m.type='table' AND "
                "i.\"unique\" AND i.origin='c' ORDER BY i.name,k.seqno");
    s.correr([&] {
        if (indices.empty() || indices.back().nombre != s.texto(1))
            indices.push_back({s.texto(1), buscarTabla(deben, s.texto(0)), false, {}});
        indices.back().propio |= s.entero(2) != 0;
        indices.back().clave.push_back(s.texto(3));
    });
    std::vector<std::string> lista;
    for (const auto& indice : indices) {
        const bool estorba =
            indice.tabla != nullptr && (indice.propio || !indice.tabla->tieneClave(indice.clave));
        if (estorba)
            lista.push_back(
                fmt::format("{} tiene un índice que no es de este programa, {}: quítelo con DROP INDEX {}",
                            indice.tabla->nombre, indice.nombre, comoSeEscribe(indice.nombre)));
    }
    return lista;
}

void TablasSqlite::reponerTablas() {
    const auto deben = debidas();
    const auto nombres = devolverNombres(deben, hay(), kDialecto.prefijo);
    // It names the tables, and is made anew.
    if (!nombres.empty()) base_.ejecutar("DROP VIEW IF EXISTS lecturas");
    for (const auto& sentencia : nombres) base_.ejecutar(sentencia);
    if (const auto lista = usurpadas(); !lista.empty())
        throw ErrorAlmacen(fmt::format("{}: {}", nombreVisible(base_.ruta()), lista.front()));
    const auto faltas = faltasDe(deben, hay());
    std::set<std::string> deNuevo;
    std::set<std::string> deOtraForma;
    for (const auto& falta : faltas) {
        if (const auto remedio = remedioAqui(falta); !loHaceRehacer(remedio))
            throw ErrorAlmacen(
                fmt::format("{}: {}: {}", nombreVisible(base_.ruta()), textoDe(falta), remedio));
        if (seObtiene(falta.tabla) || falta.clase == Falta::Clase::tabla) {
            deNuevo.insert(falta.tabla);
        } else if (falta.clase != Falta::Clase::columna) {
            deOtraForma.insert(falta.tabla);
        }
    }
    for (const auto& tabla : hay(Claves::declaradas)) {
        const auto* debe = buscarTabla(deben, tabla.nombre);
        if (debe != nullptr &&
            std::ranges::any_of(tabla.claves, [&](const Clave& clave) { return !debe->tieneClave(clave); }))
            deOtraForma.insert(tabla.nombre);
    }
    for (const auto& falta : faltas) {
        if (deNuevo.contains(falta.tabla) || falta.clase != Falta::Clase::columna) continue;
        // What it said is known to nobody.
        if (remedioAqui(falta) == kSinDescargas) base_.ejecutar("DELETE FROM descargas");
        base_.ejecutar(agregarColumna(falta.tabla, falta.columna));
    }
    for (const auto& parte : recienHechas()) {
        if (deNuevo.contains(parte.nombre)) {
            base_.ejecutar("DROP TABLE IF EXISTS " + parte.nombre);
            base_.ejecutar(parte.sql);
        } else if (deOtraForma.contains(parte.nombre)) {
            hacerDeNuevo(*buscarTabla(deben, parte.nombre), parte.sql);
        }
    }
}

// With the rows that are in it, each once.
void TablasSqlite::hacerDeNuevo(const Tabla& tabla, const std::string& sql) {
    constexpr std::string_view kVieja = "telvane_de_otra_forma";
    const auto tablas = hay();
    for (const auto& columna : buscarTabla(tablas, tabla.nombre)->columnas) {
        if (tabla.columna(columna.nombre) != nullptr) continue;
        throw ErrorAlmacen(fmt::format("{}: {}, y haga rehacer", nombreVisible(base_.ruta()),
                                       avisoDeColumna(tabla.nombre, columna.nombre, kDialecto)));
    }
    std::string columnas;
    std::string valores;
    for (const auto& columna : tabla.columnas) {
        const auto* coma = columnas.empty() ? "" : ",";
        columnas += coma + columna.nombre;
        valores += coma + (columna.obligatoria
                               ? fmt::format("coalesce({},{})", columna.nombre, valorDeRelleno(columna.tipo))
                               : columna.nombre);
    }
    base_.ejecutar("DROP VIEW IF EXISTS lecturas");
    base_.ejecutar(fmt::format("ALTER TABLE {} RENAME TO {}", tabla.nombre, kVieja));
    base_.ejecutar(sql);
    const auto filas = fmt::format("SELECT DISTINCT {} FROM {}", valores, kVieja);
    base_.ejecutar(fmt::format("INSERT OR IGNORE INTO {}({}) {}", tabla.nombre, columnas, filas));
    if (base_.numero(fmt::format("SELECT count(*) FROM ({})", filas)) !=
        base_.numero(fmt::format("SELECT count(*) FROM {}", tabla.nombre))) {
        throw ErrorAlmacen(
            fmt::format("{}: la tabla {} no es como este programa la hace, y tiene filas que se "
                        "contradicen: {}",
                        nombreVisible(base_.ruta()), tabla.nombre, sinSusFilas(kPrefijo, tabla.nombre)));
    }
    base_.ejecutar(fmt::format("DROP TABLE {}", kVieja));
}

std::vector<std::string> TablasSqlite::imposibles() const {
    return avisosDeImposibles(debidas(), kDialecto, [&](const std::string& sql, std::size_t columnas) {
        Sentencia s(base_, sql);
        s.paso();
        std::vector<std::int64_t> cuentas;
        for (std::size_t i = 0; i < columnas; ++i) cuentas.push_back(s.entero(static_cast<int>(i)));
        return cuentas;
    });
}

// A value of another kind becomes what it was read as. Of two rows that are one image's by then the second
// goes, but for a content: what it holds says which image it is, whatever it is called. What a record of a
// download says that cannot be is known to nobody.
void TablasSqlite::reponerValores() {
    const auto deben = debidas();
    for (const auto& tabla : deben) {
        if (seObtiene(tabla.nombre)) continue;
        for (const auto& columna : tabla.columnas) {
            base_.ejecutar(fmt::format("UPDATE OR IGNORE {0} SET {1}=CAST({1} AS {2}) WHERE NOT ({3})",
                                       tabla.nombre, columna.nombre, columna.tipo,
                                       kDialecto.delTipo(columna)));
        }
    }
    for (const auto& [tabla, columna] : kHuellasDeClave) {
        if (buscarTabla(deben, tabla) == nullptr) continue;
        base_.ejecutar(fmt::format(
            "UPDATE OR IGNORE {0} SET {1}=substr(CAST({1}||zeroblob(32) AS BLOB),1,32) WHERE length({1})<>32",
            tabla, columna));
        // Another row bears that name already.
        base_.ejecutar((tabla == "contenidos" ? "UPDATE contenidos SET huella=randomblob(32)"
                                              : fmt::format("DELETE FROM {}", tabla)) +
                       fmt::format(" WHERE typeof({0})<>'blob' OR length({0})<>32", columna));
    }
    base_.ejecutar(
        "UPDATE contenidos SET base=substr(CAST(base||zeroblob(32) AS BLOB),1,32) WHERE length(base)<>32");
    if (const auto* descargas = buscarTabla(deben, "descargas"))
        base_.ejecutar("DELETE FROM descargas WHERE " + filasImposibles(*descargas, kDialecto));
}

void TablasSqlite::reponer() {
    if (const auto ajenos = intrusos(); !ajenos.empty())
        throw ErrorAlmacen(fmt::format("{}: {}", nombreVisible(base_.ruta()), ajenos.front()));
    reponerTablas();
    reponerValores();
    for (const auto& parte : partesPorReponer()) {
        base_.ejecutar(fmt::format("DROP {} IF EXISTS {}", parte.clase, parte.nombre));
        base_.ejecutar(parte.sql);
    }
}

}  // namespace telvane
