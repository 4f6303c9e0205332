// What an archive's tables are made of. The statements that make them say it; whatever an archive has is held
// against that.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace telvane {

struct Columna {
    std::string nombre;
    std::string tipo;
    bool obligatoria = false;
    // All that is said of it behind its name; nothing of one that was found.
    std::string declaracion = {};
};

// The columns that no two rows have alike.
using Clave = std::vector<std::string>;

struct Tabla {
    std::string nombre;
    std::vector<Columna> columnas = {};
    std::vector<Clave> claves = {};  // the primary one first
    // Its rows lie with other servers, which look after its keys.
    bool ajena = false;

    const Columna* columna(std::string_view cual) const;
    bool tieneClave(const Clave& cual) const;
};
using Tablas = std::vector<Tabla>;

const Tabla* buscarTabla(const Tablas& tablas, std::string_view cual);

// The tables that CREATE TABLE statements make, a column a line.
Tablas leerTablas(std::string_view sql);

// A table, index or view, and the statement that makes it.
struct Parte {
    std::string clase;
    std::string nombre;
    std::string sql;
};

// What is not there as it must be.
struct Falta {
    enum class Clase { tabla, columna, forma, clave };
    Clase clase;
    std::string tabla;
    Columna columna = {};
    Clave clave = {};
    // Only whether there may be nothing in it.
    bool soloNulos = false;
};
std::vector<Falta> faltasDe(const Tablas& deben, const Tablas& hay);
// For people, without what to do.
std::string textoDe(const Falta& falta);
using Remedio = std::string (*)(const Falta& falta);
// What of it is to be told, a line each with what to do. remedio: of what is not only under another name.
std::vector<std::string> avisosDeFaltas(const Tablas& deben, const Tablas& hay, Remedio remedio);
// Of each table that is of no use where it stands, or empty, and whose place is another's with rows, which
// bears another name: a line with what to do. vacia: whether the table of this name has no row.
std::vector<std::string> avisosDeUsurpadas(const Tablas& deben, const Tablas& hay, Remedio remedio,
                                           std::string_view prefijo,
                                           const std::function<bool(const std::string& tabla)>& vacia);
// What is not as it must be of those tables that an older version, which had antes, did not have yet: it is
// somebody else's, and in the way of a migration. A line a table with what to do.
std::vector<std::string> avisosDeEstorbos(const Tablas& deben, const Tablas& antes, const Tablas& hay,
                                          std::string_view prefijo);
// The statements that give back their names to tables and columns that stand under other ones, two in each
// other's place as well: a table is known by its columns, and a column by being the only one of its kind that
// is missing where only one is too many, or by what the table is once two have exchanged their names.
std::vector<std::string> devolverNombres(const Tablas& deben, const Tablas& hay, std::string_view prefijo);

// Something else stands where a part of ours must; clase: as its DROP calls it.
std::string avisoDeIntruso(std::string_view clase, std::string_view nombre);

// What is told again, by the images as a rule: a whole table, or a column of one.
bool seObtiene(std::string_view tabla);
bool seObtiene(std::string_view tabla, std::string_view columna);
// What to do about a table or a column that is missing; kRecuperar where images are lost with it.
std::string remedioDe(const Falta& falta, std::string_view prefijo);
// Whether rehacer does what such a remedy promises.
bool loHaceRehacer(std::string_view remedio);
// Of a table whose rows tell nothing any more, or are somebody else's, while the images are there.
std::string quitarTabla(std::string_view prefijo, std::string_view tabla);
// Of a table whose rows cannot all be right.
std::string sinSusFilas(std::string_view prefijo, std::string_view tabla);

// How a data base writes what every value of a type satisfies, and a moment from seconds since 1970: ours,
// and one of a logger.
struct Dialecto {
    std::string_view prefijo;  // of a table
    std::string (*delTipo)(const Columna& columna);
    std::string (*momento)(std::int64_t segundos);
    std::string (*momentoDelRegistrador)(std::int64_t segundos);
    std::string_view no;
    std::string_view si;
    // A name that somebody else has given, as a statement takes it.
    std::string (*comoSeEscribe)(const std::string& nombre);
    // What to do about a key that is not ours.
    std::string_view claveAjena;
};
// The columns that nobody asked for, and the keys.
std::vector<std::string> sobrasDe(const Tablas& deben, const Tablas& hay, const Dialecto& dialecto);
std::string avisoDeColumna(std::string_view tabla, const std::string& columna, const Dialecto& dialecto);
// The rows that hold a value that this program writes nowhere.
std::string filasImposibles(const Tabla& tabla, const Dialecto& dialecto);
// The first row that a statement answers, which is all of whole numbers.
using LeerCuentas = std::function<std::vector<std::int64_t>(const std::string& sql, std::size_t columnas)>;
// What is told of such values, a line for each column that holds some.
std::vector<std::string> avisosDeImposibles(const Tablas& deben, const Dialecto& dialecto,
                                            const LeerCuentas& leer);

// With a value for the rows that there are, until the images have told theirs.
std::string agregarColumna(const std::string& tabla, const Columna& columna);
std::string valorDeRelleno(std::string_view tipo);
std::string textoDe(const Clave& clave);
// "a,b" as "t.a,t.b", of the table that a query calls t: somebody may have given a column of one table the
// name of another's.
std::string columnasDe(std::string_view tabla, std::string_view columnas);
// A name as a statement takes it, whatever it holds.
std::string entreComillas(std::string_view nombre);

inline constexpr std::string_view kRecuperar =
    "recupere su copia, o haga otro archivo con los .rgt guardados";
inline constexpr std::string_view kReponer = "repóngalo con rehacer";
inline constexpr std::string_view kSinContenidos =
    "recupere su copia; si no la tiene, haga rehacer e incorpore otra vez los .rgt guardados";
inline constexpr std::string_view kSinDescargas =
    "rehacer quita esas fichas de descarga; incorpore después sus .rgt con su .json otra vez";

}  // namespace telvane
