#include "historico/tablas_postgres.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <utility>

#include <fmt/format.h>

#include "historico/almacen.h"
#include "historico/esquema_postgres.h"
#include "platform/texto_visible.h"
#include "platform/utf8.h"

namespace telvane {

namespace {

// A name that somebody else has given, as a statement takes it. What is not shown as it is, and would be lost
// on the way to whoever is to type it, is written by its number.
std::string comoSeEscribe(const std::string& nombre) {
    if (sinControles(nombre) == nombre) return entreComillas(nombre);
    std::string escapado;
    for (std::size_t i = 0; i < nombre.size();) {
        const auto caracter = caracterEn(nombre, i);
        const auto letra = nombre.substr(i, caracter.bytes);
        if (letra == "\\" || (caracter.bueno && sinControles(letra) != letra)) {
            escapado += fmt::format("\\+{:06X}", static_cast<unsigned>(caracter.punto));
        } else {
            escapado += letra;
        }
        i += caracter.bytes;
    }
    return "U&" + entreComillas(escapado);
}

constexpr Dialecto kDialecto{
    .prefijo = TablasPostgres::kPrefijo,
    .delTipo =
        [](const Columna& columna) {
            // The logger and we count whole seconds.
            return columna.tipo.starts_with("timestamp")
                       ? fmt::format("isfinite({0}) AND date_trunc('second',{0})={0}", columna.nombre)
                       : std::string("true");
        },
    .momento = [](std::int64_t segundos) { return fmt::format("to_timestamp({})", segundos); },
    .momentoDelRegistrador =
        [](std::int64_t segundos) { return fmt::format("(to_timestamp({}) AT TIME ZONE 'UTC')", segundos); },
    .no = "false",
    .si = "true",
    .comoSeEscribe = comoSeEscribe,
    .claveAjena =
        "quítela con ALTER TABLE … DROP CONSTRAINT, o DROP INDEX (su nombre lo muestra \\d de psql)"};

// What is in a column of another type is taken along.
std::string remedioAqui(const Falta& falta) {
    const bool deForma = falta.clase == Falta::Clase::forma || falta.clase == Falta::Clase::clave;
    return deForma ? std::string(kReponer) : remedioDe(falta, kDialecto.prefijo);
}

// orden: DROP and what it drops.
std::string sentenciaQueLoQuita(const std::string& orden, const std::string& tabla,
                                const std::string& nombre) {
    const auto suTabla = fmt::format("{}{}", TablasPostgres::kPrefijo, tabla);
    return orden == "DROP CONSTRAINT"
               ? fmt::format("ALTER TABLE {} {} {}", suTabla, orden, comoSeEscribe(nombre))
               : fmt::format("{} {} ON {}", orden, comoSeEscribe(nombre), suTabla);
}

// It says of which version the others are.
constexpr std::string_view kEsquema = "esquema";

}  // namespace

void TablasPostgres::crear() {
    if (base_.consultar("SELECT to_regnamespace('telvane') IS NULL").logico(0, 0))
        base_.ejecutar("CREATE SCHEMA telvane");
    base_.ejecutar(std::string(esquema_postgres::kTablas));
    base_.ejecutar(std::string(esquema_postgres::kVista));
    base_.ejecutar("INSERT INTO telvane.esquema VALUES(1)");
}

std::vector<std::string> TablasPostgres::estorbos(const TablasPostgres& antiguas) {
    auto lista = intrusos();
    std::ranges::move(avisosDeEstorbos(debidas(), antiguas.debidas(), hay(), kDialecto.prefijo),
                      std::back_inserter(lista));
    return lista;
}

std::vector<std::string> TablasPostgres::usurpadas() {
    return avisosDeUsurpadas(debidas(), hay(), remedioAqui, kPrefijo, [&](const std::string& tabla) {
        return base_
            .consultar(fmt::format("SELECT NOT EXISTS(SELECT 1 FROM {}{})", kPrefijo, entreComillas(tabla)))
            .logico(0, 0);
    });
}

std::vector<std::string> TablasPostgres::faltanTablas() {
    if (auto lista = usurpadas(); !lista.empty()) return lista;
    return avisosDeFaltas(debidas(), hay(), remedioAqui);
}

bool TablasPostgres::estanLasDeSiempre() {
    const auto tablas = hay();
    return std::ranges::all_of(leerTablas(esquema_postgres::kTablas), [&](const Tabla& debe) {
        return debe.nombre == kEsquema || buscarTabla(tablas, debe.nombre) != nullptr;
    });
}

bool TablasPostgres::hayAlgunaNuestra() {
    const auto tablas = hay();
    return std::ranges::any_of(debidas(), [&](const Tabla& debe) {
        return debe.nombre != kEsquema && std::ranges::any_of(tablas, [&](const Tabla& una) {
                   return std::ranges::all_of(debe.columnas, [&](const Columna& columna) {
                       return una.columna(columna.nombre) != nullptr;
                   });
               });
    });
}

std::string TablasPostgres::comoHuella(std::string_view columna) {
    return fmt::format("substring({}||decode(repeat('00',32),'hex'),1,32)", columna);
}

// What the statements of the schema make, in their order.
std::vector<Parte> TablasPostgres::partes() const {
    std::string todo = std::string(esquema_postgres::kTablas) + std::string(esquema_postgres::kVista);
    for (const auto paso : migraciones_) todo += paso;
    std::vector<Parte> lista;
    std::istringstream texto(todo);
    for (std::string sentencia; std::getline(texto, sentencia, ';');) {
        std::istringstream palabras(sentencia);
        std::string verbo;
        std::string clase;
        std::string nombre;
        palabras >> verbo >> clase >> nombre;
        if (nombre == "IF") palabras >> nombre >> nombre >> nombre;
        if (verbo != "CREATE") continue;
        if (nombre.starts_with(kPrefijo)) nombre.erase(0, kPrefijo.size());
        lista.push_back({clase, nombre.substr(0, nombre.find('(')), sentencia});
    }
    return lista;
}

// A view by a table's name, and the like.
std::vector<std::string> TablasPostgres::intrusos() {
    const auto r = base_.consultar(
        "SELECT relname::text,CASE relkind WHEN 'v' THEN 'VIEW' WHEN 'm' THEN 'MATERIALIZED VIEW' WHEN 'i' "
        "THEN "
        "'INDEX' WHEN 'I' THEN 'INDEX' WHEN 'S' THEN 'SEQUENCE' WHEN 'c' THEN 'TYPE' WHEN 'f' THEN 'FOREIGN "
        "TABLE' ELSE 'TABLE' END FROM "
        "pg_catalog.pg_class WHERE relnamespace=to_regnamespace('telvane') ORDER BY 1");
    const auto deben = partes();
    const auto faltas = faltasDe(debidas(), hay());
    // A table that another server keeps is as good, where it is like ours; to change it is its server's.
    const auto sirve = [&](const Parte& debe, const std::string& clase) {
        return debe.clase == clase || (debe.clase == "TABLE" && clase == "FOREIGN TABLE" &&
                                       std::ranges::find(faltas, debe.nombre, &Falta::tabla) == faltas.end());
    };
    std::vector<std::string> lista;
    for (int i = 0; i < r.filas(); ++i) {
        const auto debe = std::ranges::find(deben, r.texto(i, 0), &Parte::nombre);
        if (debe != deben.end() && !sirve(*debe, r.texto(i, 1)))
            lista.push_back(avisoDeIntruso(r.texto(i, 1), "telvane." + r.texto(i, 0)));
    }
    return lista;
}

// Whether the view is the one that this program makes: the server writes out what it keeps of each, and does
// so alike. Who may make nothing there cannot ask. In a transaction.
bool TablasPostgres::vistaEsLaNuestra() {
    auto debida = std::string(esquema_postgres::kVista);
    constexpr std::string_view kSuNombre = "telvane.lecturas";
    debida.replace(debida.find(kSuNombre), kSuNombre.size(), "pg_temp.lecturas_debida");
    bool igual = true;
    base_.ejecutar("SAVEPOINT comparacion");
    try {
        base_.ejecutar(debida);
        const auto r = base_.consultar(
            "SELECT "
            "pg_get_viewdef(to_regclass('telvane.lecturas'))=pg_get_viewdef(to_regclass('pg_temp.lecturas_"
            "debida'))");
        igual = r.logico(0, 0);
    } catch (const ErrorAlmacen&) {
        if (!base_.viva()) throw;
    }
    base_.ejecutar("ROLLBACK TO comparacion");
    return igual;
}

std::vector<Parte> TablasPostgres::partesPorReponer() {
    const auto r = base_.consultar(
        "SELECT c.relname::text FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n ON "
        "n.oid=c.relnamespace WHERE n.nspname='telvane'");
    std::set<std::string> hay;
    for (int i = 0; i < r.filas(); ++i) hay.insert(r.texto(i, 0));
    auto deben = partes();
    std::erase_if(deben, [&](const Parte& parte) {
        if (parte.clase == "TABLE") return true;
        return hay.contains(parte.nombre) && (parte.clase != "VIEW" || vistaEsLaNuestra());
    });
    return deben;
}

Tablas TablasPostgres::debidas() const {
    std::string sql(esquema_postgres::kTablas);
    for (const auto paso : migraciones_) sql += paso;
    return leerTablas(sql);
}

Tablas TablasPostgres::hay() {
    const auto r = base_.consultar(
        "SELECT c.relname::text,a.attname::text,format_type(a.atttypid,a.atttypmod),a.attnotnull,"
        "c.relkind='f' OR EXISTS(SELECT 1 FROM pg_catalog.pg_inherits h JOIN pg_catalog.pg_class p ON "
        "p.oid=h.inhrelid WHERE h.inhparent=c.oid AND p.relkind='f') FROM pg_catalog.pg_class c LEFT JOIN "
        "pg_catalog.pg_attribute a ON a.attrelid=c.oid AND a.attnum>0 AND NOT a.attisdropped WHERE "
        "c.relnamespace=to_regnamespace('telvane') AND c.relkind IN ('r','p','f') ORDER BY "
        "c.relname,a.attnum");
    Tablas tablas;
    for (int i = 0; i < r.filas(); ++i) {
        if (tablas.empty() || tablas.back().nombre != r.texto(i, 0))
            tablas.push_back(
                {.nombre = r.texto(i, 0), .columnas = {}, .claves = {}, .ajena = r.logico(i, 4)});
        // There may be none.
        if (r.esNulo(i, 1)) continue;
        tablas.back().columnas.push_back(
            {.nombre = r.texto(i, 1), .tipo = r.texto(i, 2), .obligatoria = r.logico(i, 3)});
    }
    leerClaves(tablas);
    return tablas;
}

void TablasPostgres::leerClaves(Tablas& tablas) {
    const auto r = base_.consultar(
        "SELECT c.relname::text,i.indexrelid::bigint,a.attname::text FROM pg_catalog.pg_index i JOIN "
        "pg_catalog.pg_class c ON c.oid=i.indrelid CROSS JOIN LATERAL unnest(i.indkey::int2[]) WITH "
        "ORDINALITY "
        "k(columna,lugar) JOIN pg_catalog.pg_attribute a ON a.attrelid=c.oid AND a.attnum=k.columna WHERE "
        "c.relnamespace=to_regnamespace('telvane') AND c.relkind IN ('r','p') AND i.indisunique AND "
        "i.indisvalid "
        "AND k.lugar<=i.indnkeyatts ORDER BY 1,i.indisprimary DESC,2,k.lugar");
    std::int64_t anterior = 0;
    for (int i = 0; i < r.filas(); ++i) {
        auto& claves = std::ranges::find(tablas, r.texto(i, 0), &Tabla::nombre)->claves;
        if (std::exchange(anterior, r.entero(i, 1)) != r.entero(i, 1)) claves.emplace_back();
        claves.back().push_back(r.texto(i, 2));
    }
}

std::vector<std::string> TablasPostgres::faltan() {
    auto lista = intrusos();
    if (lista.empty()) lista = faltanTablas();
    // Of a table that is not there nothing else is either.
    for (const auto& parte : lista.empty() ? partesPorReponer() : std::vector<Parte>()) {
        lista.push_back(
            fmt::format("falta {}, o no es como este programa lo hace: {}", parte.nombre, kReponer));
    }
    return lista;
}

// Other tables and views are whoever's; what hangs on ours changes what they hold. What refuses rows may
// refuse them from whoever is to bring them. A trigger that is disabled does nothing.
std::vector<std::string> TablasPostgres::sobras() {
    const auto deben = debidas();
    auto lista = sobrasDe(deben, hay(), kDialecto);
    const auto r = base_.consultar(
        "SELECT c.relname::text,o.que,o.nombre,o.orden,o.orden='DROP TRIGGER' AND c.relkind<>'v' FROM "
        "pg_catalog.pg_class c JOIN (SELECT tgrelid AS "
        "tabla,'un disparador' AS que,tgname::text AS nombre,'DROP TRIGGER' AS orden FROM "
        "pg_catalog.pg_trigger "
        "WHERE NOT tgisinternal AND tgparentid=0 AND tgenabled<>'D' UNION ALL SELECT ev_class,'una "
        "regla',rulename::text,'DROP RULE' "
        "FROM pg_catalog.pg_rewrite WHERE rulename<>'_RETURN' UNION ALL SELECT conrelid,'una "
        "condición',conname::text,'DROP CONSTRAINT' FROM pg_catalog.pg_constraint WHERE contype IN "
        "('c','f','x')) o ON o.tabla=c.oid WHERE c.relnamespace=to_regnamespace('telvane') ORDER BY 1,3");
    for (int i = 0; i < r.filas(); ++i) {
        const auto tabla = r.texto(i, 0);
        if (buscarTabla(deben, tabla) == nullptr && tabla != "lecturas") continue;
        const auto nombre = r.texto(i, 2);
        lista.push_back(fmt::format(
            "{} tiene {} que no es de este programa, {}: que quien administra el servidor ejecute {}{}",
            tabla, r.texto(i, 1), nombre, sentenciaQueLoQuita(r.texto(i, 3), tabla, nombre),
            r.logico(i, 4)
                ? fmt::format(" (o, para que quede sin actuar, ALTER TABLE {}{} DISABLE TRIGGER {})",
                              kPrefijo, tabla, comoSeEscribe(nombre))
                : std::string()));
    }
    return lista;
}

// Of a table that the images fill again nothing needs to stay.
void TablasPostgres::reponerForma(const Falta& falta) {
    const auto tabla = "telvane." + falta.tabla;
    const auto& columna = falta.columna;
    const bool seSabe = seObtiene(falta.tabla) || seObtiene(falta.tabla, columna.nombre);
    if (falta.soloNulos) {
        if (columna.obligatoria && seSabe)
            base_.ejecutar(fmt::format("UPDATE {0} SET {1}={2} WHERE {1} IS NULL", tabla, columna.nombre,
                                       valorDeRelleno(columna.tipo)));
        base_.ejecutar(fmt::format("ALTER TABLE {} ALTER {} {} NOT NULL", tabla, columna.nombre,
                                   columna.obligatoria ? "SET" : "DROP"));
        return;
    }
    if (falta.clase == Falta::Clase::forma && !seSabe) return cambiarTipo(falta);
    const bool deLaClave = seObtiene(falta.tabla) && !seObtiene(falta.tabla, columna.nombre);
    if (deLaClave) base_.ejecutar("DELETE FROM " + tabla);
    if (falta.clase == Falta::Clase::forma)
        base_.ejecutar(fmt::format("DROP VIEW IF EXISTS telvane.lecturas; ALTER TABLE {} DROP COLUMN {}",
                                   tabla, columna.nombre));
    base_.ejecutar(agregarColumna(tabla, columna));
}

// With what is in it.
void TablasPostgres::cambiarTipo(const Falta& falta) {
    const auto cambio = fmt::format(
        "DROP VIEW IF EXISTS telvane.lecturas; ALTER TABLE telvane.{0} ALTER {1} "
        "DROP DEFAULT, ALTER {1} TYPE {2} USING {1}::{2}, ALTER {1} {3} NOT NULL",
        falta.tabla, falta.columna.nombre, falta.columna.tipo, falta.columna.obligatoria ? "SET" : "DROP");
    try {
        base_.ejecutar(cambio);
    } catch (const ErrorAlmacen&) {
        if (!base_.viva()) throw;
        throw ErrorAlmacen(
            fmt::format("{}: {}: {}", base_.nombre(), textoDe(falta), sinSusFilas(kPrefijo, falta.tabla)));
    }
}

void TablasPostgres::reponerClave(const Falta& falta) {
    const auto columnas = textoDe(falta.clave);
    const auto repetidas = [&] {
        return base_
            .consultar(fmt::format("SELECT EXISTS(SELECT 1 FROM telvane.{} GROUP BY {} HAVING count(*)>1)",
                                   falta.tabla, columnas))
            .logico(0, 0);
    };
    // Of two rows that say the same one is enough; the samples count anew.
    if (repetidas()) {
        base_.ejecutar(fmt::format(
            "DELETE FROM telvane.{0} WHERE (tableoid,ctid) IN (SELECT f.tabla,f.lugar FROM (SELECT "
            "t.tableoid "
            "AS tabla,t.ctid AS lugar,row_number() OVER (PARTITION BY {1}{2}) AS vez FROM telvane.{0} t) f "
            "WHERE f.vez>1)",
            falta.tabla, columnas, seObtiene(falta.tabla) ? "" : ",t"));
    }
    if (repetidas()) {
        throw ErrorAlmacen(fmt::format("{}: {}, y tiene filas que se contradicen: {}", base_.nombre(),
                                       textoDe(falta), sinSusFilas(kPrefijo, falta.tabla)));
    }
    const auto deben = debidas();
    const bool primaria = buscarTabla(deben, falta.tabla)->claves.front() == falta.clave;
    base_.ejecutar(fmt::format("ALTER TABLE telvane.{} ADD {}({})", falta.tabla,
                               primaria ? "PRIMARY KEY" : "UNIQUE", columnas));
}

void TablasPostgres::reponerTablas() {
    const auto deben = debidas();
    for (const auto& sentencia : devolverNombres(deben, hay(), kDialecto.prefijo)) base_.ejecutar(sentencia);
    if (const auto lista = usurpadas(); !lista.empty())
        throw ErrorAlmacen(fmt::format("{}: {}", base_.nombre(), lista.front()));
    const auto faltas = faltasDe(deben, hay());
    for (const auto& falta : faltas) {
        if (const auto remedio = remedioAqui(falta); !loHaceRehacer(remedio))
            throw ErrorAlmacen(fmt::format("{}: {}: {}", base_.nombre(), textoDe(falta), remedio));
        // What it said is known to nobody.
        if (falta.clase == Falta::Clase::columna && remedioAqui(falta) == kSinDescargas)
            base_.ejecutar("DELETE FROM telvane.descargas");
    }
    for (const auto& parte : partes()) {
        const bool falta = parte.clase == "TABLE" && std::ranges::any_of(faltas, [&](const Falta& una) {
                               return una.clase == Falta::Clase::tabla && una.tabla == parte.nombre;
                           });
        if (falta) base_.ejecutar(parte.sql);
    }
    for (const auto& falta : faltas) {
        if (falta.clase == Falta::Clase::columna || falta.clase == Falta::Clase::forma) reponerForma(falta);
    }
    // A column takes along the keys that it stands in.
    for (const auto& falta : faltasDe(debidas(), hay())) {
        if (falta.clase == Falta::Clase::clave) reponerClave(falta);
    }
}

void TablasPostgres::exigirSinIntrusos() {
    if (const auto ajenos = intrusos(); !ajenos.empty())
        throw ErrorAlmacen(fmt::format("{}: {}", base_.nombre(), ajenos.front()));
}

void TablasPostgres::reponerValores() {
    const auto deben = debidas();
    // Of two rows that are one image's by then the second goes, but for a content: what it holds says which
    // image it is, whatever it is called.
    for (const auto& [tabla, columna] : kHuellasDeClave) {
        if (buscarTabla(deben, tabla) == nullptr) continue;
        base_.ejecutar(fmt::format(
            "UPDATE telvane.{0} t SET {1}={2} WHERE length({1})<>32 AND NOT EXISTS (SELECT 1 FROM "
            "telvane.{0} o WHERE o.estacion=t.estacion AND o.{1}={3})",
            tabla, columna, comoHuella(columna), comoHuella(fmt::format("t.{}", columna))));
        base_.ejecutar((tabla == "contenidos"
                            ? "UPDATE telvane.contenidos SET "
                              "huella=decode(md5(random()::text)||md5(random()::text),'hex')"
                            : fmt::format("DELETE FROM telvane.{}", tabla)) +
                       fmt::format(" WHERE length({})<>32", columna));
    }
    base_.ejecutar(
        fmt::format("UPDATE telvane.contenidos SET base={} WHERE length(base)<>32", comoHuella("base")));
    // What a record of a download says that cannot be is known to nobody.
    if (const auto* descargas = buscarTabla(deben, "descargas"))
        base_.ejecutar("DELETE FROM telvane.descargas WHERE " + filasImposibles(*descargas, kDialecto));
}

void TablasPostgres::reponer() {
    reponerTablas();
    for (const auto& parte : partesPorReponer()) {
        if (parte.clase == "VIEW") base_.ejecutar("DROP VIEW IF EXISTS telvane." + parte.nombre);
        base_.ejecutar(parte.sql);
    }
    reponerValores();
}

std::vector<std::string> TablasPostgres::imposibles() {
    return avisosDeImposibles(debidas(), kDialecto, [&](const std::string& sql, std::size_t columnas) {
        const auto r = base_.consultar(sql);
        std::vector<std::int64_t> cuentas;
        for (std::size_t i = 0; i < columnas; ++i) cuentas.push_back(r.entero(0, static_cast<int>(i)));
        return cuentas;
    });
}

}  // namespace telvane
