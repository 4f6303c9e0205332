#include "historico/esquema.h"

#include <algorithm>
#include <array>
#include <set>
#include <sstream>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "historico/almacen.h"
#include "historico/ficha_descarga.h"
#include "link/protocolo.h"
#include "platform/recorte.h"

namespace telvane {

namespace {

constexpr std::string_view kEntreColumnas = " \n\t,";
constexpr std::string_view kClavePrimaria = "PRIMARY KEY";

Clave leerClave(std::string_view columnas) {
    Clave clave;
    while (!columnas.empty()) {
        const auto hasta = std::min(columnas.find(','), columnas.size());
        clave.emplace_back(recortado(columnas.substr(0, hasta), kEntreColumnas));
        columnas.remove_prefix(std::min(hasta + 1, columnas.size()));
    }
    return clave;
}

Columna leerColumna(std::string_view linea) {
    const auto blanco = linea.find(' ');
    Columna columna{.nombre = std::string(linea.substr(0, blanco)), .tipo = {}};
    const auto declaracion = recortado(linea.substr(blanco), kEntreColumnas);
    auto finDelTipo = declaracion.size();
    for (const std::string_view palabra :
         {" PRIMARY", " NOT", " DEFAULT", " COLLATE", " UNIQUE", " REFERENCES"})
        finDelTipo = std::min(finDelTipo, declaracion.find(palabra));
    columna.tipo = declaracion.substr(0, finDelTipo);
    columna.obligatoria = declaracion.find("NOT NULL") != std::string_view::npos ||
                          declaracion.find(kClavePrimaria) != std::string_view::npos;
    columna.declaracion = declaracion;
    return columna;
}

void leerLinea(std::string_view linea, Tabla& tabla) {
    if (linea.starts_with(kClavePrimaria)) {
        const auto desde = linea.find('(') + 1;
        tabla.claves.push_back(leerClave(linea.substr(desde, linea.rfind(')') - desde)));
        return;
    }
    auto& columna = tabla.columnas.emplace_back(leerColumna(linea));
    const bool sola = columna.declaracion.find(kClavePrimaria) != std::string::npos ||
                      columna.declaracion.find("UNIQUE") != std::string::npos;
    if (sola) tabla.claves.push_back({columna.nombre});
}

// The commas inside of brackets part nothing.
void leerCuerpo(std::string_view cuerpo, Tabla& tabla) {
    int abiertos = 0;
    std::size_t desde = 0;
    for (std::size_t i = 0; i <= cuerpo.size(); ++i) {
        const char letra = i < cuerpo.size() ? cuerpo[i] : ',';
        abiertos += letra == '(' ? 1 : letra == ')' ? -1 : 0;
        if (letra != ',' || abiertos > 0) continue;
        leerLinea(recortado(cuerpo.substr(desde, i - desde), kEntreColumnas), tabla);
        desde = i + 1;
    }
}

// When an image came and from where they do not tell; without it they are as good.
constexpr std::array kDeLasImagenes = {
    ColumnaDeTabla{"estaciones", "evaporacion"}, ColumnaDeTabla{"estaciones", "serie"},
    ColumnaDeTabla{"estaciones", "mas_nueva"},   ColumnaDeTabla{"estaciones", "cabecera"},
    ColumnaDeTabla{"estaciones", "imagenes"},    ColumnaDeTabla{"estaciones", "muestras"},
    ColumnaDeTabla{"estaciones", "huecos"},      ColumnaDeTabla{"estaciones", "conflictos"},
    ColumnaDeTabla{"estaciones", "desde"},       ColumnaDeTabla{"estaciones", "hasta"},
    ColumnaDeTabla{"estaciones", "incorporada"}, ColumnaDeTabla{"imagenes", "bytes"},
    ColumnaDeTabla{"imagenes", "reloj"},         ColumnaDeTabla{"imagenes", "desde"},
    ColumnaDeTabla{"imagenes", "hasta"},         ColumnaDeTabla{"imagenes", "incorporada"},
    ColumnaDeTabla{"imagenes", "origen"},        ColumnaDeTabla{"imagenes", "muestras"},
    ColumnaDeTabla{"imagenes", "retrocesos"},    ColumnaDeTabla{"imagenes", "contenida"},
    ColumnaDeTabla{"contenidos", "base"},        ColumnaDeTabla{"contenidos", "profundidad"},
    ColumnaDeTabla{"muestras", "cuenta"}};

// What a column's type leaves open. {0}: the column; {1} and {2}: the first and the last moment of a
// download; {3} and {4}: no and yes; {5}: the last port; {6} and {7}: the first and the last moment of an
// incorporation; {8} and {9}: of a logger.
struct Regla {
    std::string_view columna;  // "table.column", or a column of any table
    std::string_view condicion;
};
constexpr std::array kReglas = {
    Regla{.columna = "huella", .condicion = "length({0})=32"},
    Regla{.columna = "base", .condicion = "length({0})=32"},
    Regla{.columna = "imagen", .condicion = "length({0})=32"},
    Regla{.columna = "mas_nueva", .condicion = "length({0})=32"},
    Regla{.columna = "registro", .condicion = "length({0})=32"},
    Regla{.columna = "bytes", .condicion = "{0} BETWEEN 1 AND 262144"},
    Regla{.columna = "serie", .condicion = "length({0})=8"},
    // The two bytes of a count, and the one of some.
    Regla{.columna = "auxiliar1", .condicion = "{0} BETWEEN 0 AND 65535"},
    Regla{.columna = "humedad", .condicion = "{0} BETWEEN 0 AND 65535"},
    Regla{.columna = "temperatura", .condicion = "{0} BETWEEN 0 AND 65535"},
    Regla{.columna = "viento", .condicion = "{0} BETWEEN 0 AND 255"},
    Regla{.columna = "velocidad", .condicion = "{0} BETWEEN 0 AND 65535"},
    Regla{.columna = "radiacion", .condicion = "{0} BETWEEN 0 AND 65535"},
    Regla{.columna = "presion", .condicion = "{0} BETWEEN 0 AND 65535"},
    Regla{.columna = "lluvia", .condicion = "{0} BETWEEN 0 AND 255"},
    Regla{.columna = "libre", .condicion = "{0} BETWEEN 0 AND 255"},
    Regla{.columna = "auxiliar2", .condicion = "{0} BETWEEN 0 AND 65535"},
    Regla{.columna = "muestras.evaporacion", .condicion = "{0} BETWEEN 0 AND 65535"},
    Regla{.columna = "resto", .condicion = "length({0})<=7 AND substr({0},length({0}),1)<>x'00'"},
    Regla{.columna = "incorporada", .condicion = "{0} BETWEEN {6} AND {7}"},
    Regla{.columna = "reloj", .condicion = "{0} BETWEEN {8} AND {9}"},
    Regla{.columna = "desde", .condicion = "{0} BETWEEN {8} AND {9}"},
    Regla{.columna = "hasta", .condicion = "{0} BETWEEN {8} AND {9}"},
    Regla{.columna = "hora", .condicion = "{0} BETWEEN {8} AND {9}"},
    Regla{.columna = "cuenta", .condicion = "{0} IN ({3},{4})"},
    Regla{.columna = "contenida", .condicion = "{0} IN ({3},{4})"},
    Regla{.columna = "estaciones.evaporacion", .condicion = "{0} IN ({3},{4})"},
    Regla{.columna = "verificada", .condicion = "{0} IN ({3},{4})"},
    Regla{.columna = "descargada", .condicion = "{0} BETWEEN {1} AND {2}"},
    Regla{.columna = "puerto", .condicion = "{0} BETWEEN 1 AND {5}"},
    Regla{.columna = "reintentos", .condicion = "{0} BETWEEN 0 AND 1000000000000"},
    Regla{.columna = "errores_de_linea", .condicion = "{0} BETWEEN 0 AND 1000000000000"},
    Regla{.columna = "desfase_s", .condicion = "{0} BETWEEN -3162240000 AND 3162240000"}};

// What must hold; "true" where anything does.
std::string condicionDe(const Tabla& tabla, const Columna& columna, const Dialecto& dialecto) {
    auto condicion = dialecto.delTipo(columna);
    for (const auto& regla : kReglas) {
        const bool suya =
            regla.columna == columna.nombre || regla.columna == tabla.nombre + "." + columna.nombre;
        if (!suya) continue;
        condicion += " AND ";
        const auto segundos = [](auto momento) { return momento.time_since_epoch().count(); };
        condicion += fmt::format(
            fmt::runtime(regla.condicion), columna.nombre, dialecto.momento(segundos(kPrimeraDescarga)),
            dialecto.momento(segundos(kUltimaDescarga)), dialecto.no, dialecto.si, kUltimoPuerto,
            dialecto.momento(segundos(kPrimeraIncorporada)), dialecto.momento(segundos(kUltimaIncorporada)),
            dialecto.momentoDelRegistrador(segundos(kPrimerMomento)),
            dialecto.momentoDelRegistrador(segundos(kUltimoMomento)));
    }
    return condicion;
}

}  // namespace

const Columna* Tabla::columna(std::string_view cual) const {
    const auto lugar = std::ranges::find(columnas, cual, &Columna::nombre);
    return lugar == columnas.end() ? nullptr : &*lugar;
}
bool Tabla::tieneClave(const Clave& cual) const {
    return std::ranges::find(claves, cual) != claves.end();
}

const Tabla* buscarTabla(const Tablas& tablas, std::string_view cual) {
    const auto lugar = std::ranges::find(tablas, cual, &Tabla::nombre);
    return lugar == tablas.end() ? nullptr : &*lugar;
}

Tablas leerTablas(std::string_view sql) {
    constexpr std::string_view kComienzo = "CREATE TABLE ";
    Tablas tablas;
    std::istringstream texto{std::string(sql)};
    for (std::string sentencia; std::getline(texto, sentencia, ';');) {
        const auto toda = recortado(sentencia, kEntreColumnas);
        if (!toda.starts_with(kComienzo)) continue;
        const auto abre = toda.find('(');
        auto nombre = toda.substr(kComienzo.size(), abre - kComienzo.size());
        if (const auto blanco = nombre.rfind(' '); blanco != std::string_view::npos)
            nombre.remove_prefix(blanco + 1);
        if (const auto punto = nombre.find('.'); punto != std::string_view::npos)
            nombre.remove_prefix(punto + 1);
        auto& tabla = tablas.emplace_back(Tabla{.nombre = std::string(nombre)});
        leerCuerpo(toda.substr(abre + 1, toda.rfind(')') - abre - 1), tabla);
    }
    return tablas;
}

std::vector<Falta> faltasDe(const Tablas& deben, const Tablas& hay) {
    using Clase = Falta::Clase;
    std::vector<Falta> faltas;
    for (const auto& debe : deben) {
        const auto* tabla = buscarTabla(hay, debe.nombre);
        if (tabla == nullptr) {
            faltas.push_back({.clase = Clase::tabla, .tabla = debe.nombre});
            continue;
        }
        for (const auto& columna : debe.columnas) {
            const auto* suya = tabla->columna(columna.nombre);
            const bool igual =
                suya != nullptr && suya->tipo == columna.tipo && suya->obligatoria == columna.obligatoria;
            if (igual) continue;
            faltas.push_back({.clase = suya == nullptr ? Clase::columna : Clase::forma,
                              .tabla = debe.nombre,
                              .columna = columna,
                              .clave = {},
                              .soloNulos = suya != nullptr && suya->tipo == columna.tipo});
        }
        for (const auto& clave : debe.claves) {
            if (tabla->ajena || tabla->tieneClave(clave)) continue;
            faltas.push_back({.clase = Clase::clave, .tabla = debe.nombre, .columna = {}, .clave = clave});
        }
    }
    return faltas;
}

std::string textoDe(const Falta& falta) {
    switch (falta.clase) {
        case Falta::Clase::tabla:
            return fmt::format("falta la tabla {}", falta.tabla);
        case Falta::Clase::columna:
            return fmt::format("a la tabla {} le falta la columna {}", falta.tabla, falta.columna.nombre);
        case Falta::Clase::forma:
            return fmt::format("la columna {} de la tabla {} no es como este programa la hace ({})",
                               falta.columna.nombre, falta.tabla, falta.columna.declaracion);
        default:
            return fmt::format("a la tabla {} le falta su clave ({})", falta.tabla, textoDe(falta.clave));
    }
}

std::string avisoDeColumna(std::string_view tabla, const std::string& columna, const Dialecto& dialecto) {
    return fmt::format(
        "la tabla {0} tiene una columna que no es de este programa, {1}: quítela con ALTER TABLE {2}{0} DROP "
        "COLUMN {3}",
        tabla, columna, dialecto.prefijo, dialecto.comoSeEscribe(columna));
}

std::vector<std::string> sobrasDe(const Tablas& deben, const Tablas& hay, const Dialecto& dialecto) {
    std::vector<std::string> sobras;
    for (const auto& debe : deben) {
        const auto* tabla = buscarTabla(hay, debe.nombre);
        if (tabla == nullptr) continue;
        for (const auto& columna : tabla->columnas) {
            if (debe.columna(columna.nombre) == nullptr)
                sobras.push_back(avisoDeColumna(debe.nombre, columna.nombre, dialecto));
        }
        for (const auto& clave : tabla->claves) {
            if (debe.tieneClave(clave)) continue;
            sobras.push_back(fmt::format("la tabla {} tiene una clave que no es de este programa, ({}): {}",
                                         debe.nombre, textoDe(clave), dialecto.claveAjena));
        }
    }
    return sobras;
}

std::string avisoDeIntruso(std::string_view clase, std::string_view nombre) {
    return fmt::format("lo que se llama {1} no es de este programa: quítelo con DROP {0} {1}, y haga rehacer",
                       clase, nombre);
}

bool seObtiene(std::string_view tabla) {
    // The tables themselves tell of which version they are.
    return tabla == "muestras" || tabla == "testigos" || tabla == "esquema";
}
bool seObtiene(std::string_view tabla, std::string_view columna) {
    return std::ranges::any_of(kDeLasImagenes, [&](const ColumnaDeTabla& una) {
        return una.tabla == tabla && una.columna == columna;
    });
}

std::string quitarTabla(std::string_view prefijo, std::string_view tabla) {
    return fmt::format("quítela con DROP TABLE {}{}, y haga rehacer", prefijo, tabla);
}

std::string sinSusFilas(std::string_view prefijo, std::string_view tabla) {
    return tabla == "contenidos" ? std::string(kRecuperar) : quitarTabla(prefijo, tabla);
}

std::string remedioDe(const Falta& falta, std::string_view prefijo) {
    const bool toda = falta.clase == Falta::Clase::tabla;
    const auto& columna = falta.columna.nombre;
    if (falta.tabla == "contenidos" && (toda || columna == "datos")) return std::string(kSinContenidos);
    // Without these nobody knows of which image it is.
    const bool deQuien = columna == "estacion" || columna == "imagen";
    if (falta.tabla == "descargas" && (toda || !deQuien)) return std::string(kSinDescargas);
    if (toda || seObtiene(falta.tabla) || seObtiene(falta.tabla, columna)) return std::string(kReponer);
    return sinSusFilas(prefijo, falta.tabla);
}

bool loHaceRehacer(std::string_view remedio) {
    return remedio == kReponer || remedio == kSinContenidos || remedio == kSinDescargas;
}

std::string columnasDe(std::string_view tabla, std::string_view columnas) {
    std::string con = fmt::format("{}.", tabla);
    for (const char c : columnas) {
        con += c;
        if (c == ',') con += fmt::format("{}.", tabla);
    }
    return con;
}

std::string entreComillas(std::string_view nombre) {
    std::string texto = "\"";
    for (const char letra : nombre) texto.append(letra == '"' ? 2 : 1, letra);
    return texto + '"';
}

namespace {

bool esComo(const Tabla& debe, Tabla otra) {
    const auto esDeEllas = [&](const Columna& una) { return debe.columna(una.nombre) != nullptr; };
    const auto esDeSusClaves = [&](const Clave& una) { return debe.tieneClave(una); };
    otra.nombre = debe.nombre;
    const Tablas una{std::move(otra)};
    return faltasDe({debe}, una).empty() && std::ranges::all_of(una.front().columnas, esDeEllas) &&
           std::ranges::all_of(una.front().claves, esDeSusClaves);
}

template <typename Lista, typename Condicion>
auto unicaQue(const Lista& lista, Condicion condicion) -> decltype(&lista.front()) {
    const auto una = std::ranges::find_if(lista, condicion);
    if (una == lista.end() || std::find_if(una + 1, lista.end(), condicion) != lista.end()) return nullptr;
    return &*una;
}

// A table that stands under another name, maybe that of another one of them. It is known by its columns.
struct Mudanza {
    std::string desde;
    std::string hasta;
};

bool tieneTodo(const Tabla& debe, Tabla una) {
    una.nombre = debe.nombre;
    return faltasDe({debe}, {std::move(una)}).empty();
}

std::vector<Mudanza> mudanzasDe(const Tablas& deben, const Tablas& hay) {
    const auto estaBien = [&](const Tabla& una) {
        const auto* debe = buscarTabla(deben, una.nombre);
        return debe != nullptr && tieneTodo(*debe, una);
    };
    std::vector<Mudanza> mudanzas;
    for (const auto& debe : deben) {
        const auto* suya = buscarTabla(hay, debe.nombre);
        if (suya != nullptr && estaBien(*suya)) continue;
        const auto* otra =
            unicaQue(hay, [&](const Tabla& una) { return !estaBien(una) && esComo(debe, una); });
        if (otra == nullptr)
            otra = unicaQue(hay, [&](const Tabla& una) { return !estaBien(una) && tieneTodo(debe, una); });
        if (otra != nullptr) mudanzas.push_back({.desde = otra->nombre, .hasta = debe.nombre});
    }
    // Nothing is pushed out of a place where it may belong.
    const auto ocupado = [&](const Mudanza& una) {
        return buscarTabla(hay, una.hasta) != nullptr &&
               std::ranges::find(mudanzas, una.hasta, &Mudanza::desde) == mudanzas.end();
    };
    for (auto una = mudanzas.begin(); una != mudanzas.end();) {
        // Without it the place that it was to leave stays taken.
        una = ocupado(*una) ? (mudanzas.erase(una), mudanzas.begin()) : una + 1;
    }
    return mudanzas;
}

// The one of its kind that is too many, where this is the only one of its kind that is missing.
const Columna* conOtroNombre(const Tablas& deben, const Tablas& hay, const Falta& falta) {
    if (falta.clase != Falta::Clase::columna) return nullptr;
    const auto& debe = *buscarTabla(deben, falta.tabla);
    const auto* suya = buscarTabla(hay, falta.tabla);
    const auto esDeEsas = [&](const Columna& una) {
        return una.tipo == falta.columna.tipo && una.obligatoria == falta.columna.obligatoria;
    };
    const auto* faltaSola = unicaQue(debe.columnas, [&](const Columna& una) {
        return esDeEsas(una) && suya->columna(una.nombre) == nullptr;
    });
    return faltaSola == nullptr ? nullptr : unicaQue(suya->columnas, [&](const Columna& una) {
        return esDeEsas(una) && debe.columna(una.nombre) == nullptr;
    });
}

Tabla conTrocadas(Tabla tabla, const std::string& una, const std::string& otra) {
    const auto trocar = [&](std::string& nombre) {
        if (nombre == una) {
            nombre = otra;
        } else if (nombre == otra) {
            nombre = una;
        }
    };
    for (auto& columna : tabla.columnas) trocar(columna.nombre);
    for (auto& clave : tabla.claves) std::ranges::for_each(clave, trocar);
    return tabla;
}

// Two columns of a table that bear each other's names.
struct Trocadas {
    std::string tabla;
    std::string una;
    std::string otra;
};

bool seMuda(const std::vector<Mudanza>& mudanzas, std::string_view tabla) {
    return std::ranges::find(mudanzas, tabla, &Mudanza::hasta) != mudanzas.end();
}

std::vector<Trocadas> trocadasDe(const Tablas& deben, const Tablas& hay,
                                 const std::vector<Mudanza>& mudanzas) {
    std::vector<Trocadas> todas;
    for (const auto& debe : deben) {
        const auto* suya = buscarTabla(hay, debe.nombre);
        if (suya == nullptr || seMuda(mudanzas, debe.nombre) || tieneTodo(debe, *suya)) continue;
        std::vector<Trocadas> suyas;
        for (auto una = debe.columnas.begin(); una != debe.columnas.end(); ++una) {
            for (auto otra = una + 1; otra != debe.columnas.end(); ++otra) {
                if (tieneTodo(debe, conTrocadas(*suya, una->nombre, otra->nombre)))
                    suyas.push_back({debe.nombre, una->nombre, otra->nombre});
            }
        }
        if (suyas.size() == 1) todas.push_back(std::move(suyas.front()));
    }
    return todas;
}

}  // namespace

std::vector<std::string> avisosDeUsurpadas(const Tablas& deben, const Tablas& hay, Remedio remedio,
                                           std::string_view prefijo,
                                           const std::function<bool(const std::string& tabla)>& vacia) {
    const auto faltas = faltasDe(deben, hay);
    const auto hechas = mudanzasDe(deben, hay);
    const auto noSirve = [&](const Falta& falta) {
        const auto que = remedio(falta);
        return falta.clase == Falta::Clase::columna && (que == kRecuperar || que == kSinContenidos) &&
               conOtroNombre(deben, hay, falta) == nullptr;
    };
    std::vector<std::string> lista;
    // What the others hold is told again, or may well be nothing.
    for (const auto* cual : {"estaciones", "imagenes", "contenidos"}) {
        const auto* debe = buscarTabla(deben, cual);
        if (debe == nullptr || buscarTabla(hay, cual) == nullptr || seMuda(hechas, cual)) continue;
        const auto* otra = unicaQue(hay, [&](const Tabla& una) {
            return buscarTabla(deben, una.nombre) == nullptr && tieneTodo(*debe, una) && !vacia(una.nombre);
        });
        if (otra == nullptr) continue;
        const bool sinUso = std::ranges::any_of(
            faltas, [&](const Falta& falta) { return falta.tabla == cual && noSirve(falta); });
        if (sinUso || vacia(cual))
            lista.push_back(fmt::format("la tabla {} lleva el nombre {}, y otra lleva el suyo: {}", cual,
                                        otra->nombre, quitarTabla(prefijo, cual)));
    }
    return lista;
}

std::vector<std::string> avisosDeFaltas(const Tablas& deben, const Tablas& hay, Remedio remedio) {
    std::vector<std::string> lista;
    std::set<std::string> dichas;
    const auto mudanzas = mudanzasDe(deben, hay);
    for (const auto& una : mudanzas)
        lista.push_back(fmt::format("la tabla {} lleva el nombre {}: {}", una.hasta, una.desde, kReponer));
    auto faltas = faltasDe(deben, hay);
    std::erase_if(faltas, [&](const Falta& falta) { return seMuda(mudanzas, falta.tabla); });
    for (const auto& trocadas : trocadasDe(deben, hay, mudanzas)) {
        lista.push_back(
            fmt::format("en la tabla {} las columnas {} y {} llevan cada una el nombre de la otra: {}",
                        trocadas.tabla, trocadas.una, trocadas.otra, kReponer));
        std::erase_if(faltas, [&](const Falta& falta) { return falta.tabla == trocadas.tabla; });
    }
    // What only bears another name is not lost.
    const auto suRemedio = [&](const Falta& falta) {
        return conOtroNombre(deben, hay, falta) != nullptr ? std::string(kReponer) : remedio(falta);
    };
    // Of a table that must go nothing else matters.
    for (const auto& falta : faltas) {
        if (loHaceRehacer(suRemedio(falta)) || !dichas.insert(falta.tabla).second) continue;
        lista.push_back(fmt::format("{}: {}", textoDe(falta), suRemedio(falta)));
    }
    for (const auto& falta : faltas) {
        if (!dichas.contains(falta.tabla))
            lista.push_back(fmt::format("{}: {}", textoDe(falta), suRemedio(falta)));
    }
    return lista;
}

std::vector<std::string> avisosDeEstorbos(const Tablas& deben, const Tablas& antes, const Tablas& hay,
                                          std::string_view prefijo) {
    std::vector<std::string> lista;
    std::set<std::string> dichas;
    for (const auto& falta : faltasDe(deben, hay)) {
        if (falta.clase == Falta::Clase::tabla || buscarTabla(antes, falta.tabla) != nullptr) continue;
        if (dichas.insert(falta.tabla).second)
            lista.push_back(fmt::format("{}: {}", textoDe(falta), quitarTabla(prefijo, falta.tabla)));
    }
    return lista;
}

std::vector<std::string> devolverNombres(const Tablas& deben, const Tablas& hay, std::string_view prefijo) {
    std::vector<std::string> sentencias;
    const auto llamar = [&](const std::string& una, const std::string& nombre) {
        sentencias.push_back(
            fmt::format("ALTER TABLE {}{} RENAME TO {}", prefijo, entreComillas(una), nombre));
    };
    // Two may stand in each other's place.
    const auto provisional = [](const Mudanza& una) { return "telvane_de_" + una.hasta; };
    const auto mudanzas = mudanzasDe(deben, hay);
    for (const auto& una : mudanzas) llamar(una.desde, provisional(una));
    for (const auto& una : mudanzas) llamar(provisional(una), una.hasta);
    const auto renombrar = [&](const std::string& tabla, const std::string& de, const std::string& a) {
        sentencias.push_back(
            fmt::format("ALTER TABLE {}{} RENAME COLUMN {} TO {}", prefijo, tabla, entreComillas(de), a));
    };
    for (const auto& [tabla, una, otra] : trocadasDe(deben, hay, mudanzas)) {
        const auto provisionalmente = "telvane_de_" + otra;
        renombrar(tabla, una, provisionalmente);
        renombrar(tabla, otra, una);
        renombrar(tabla, provisionalmente, otra);
    }
    for (const auto& falta : faltasDe(deben, hay)) {
        const auto* otra = seMuda(mudanzas, falta.tabla) ? nullptr : conOtroNombre(deben, hay, falta);
        if (otra != nullptr) renombrar(falta.tabla, otra->nombre, falta.columna.nombre);
    }
    return sentencias;
}

std::string filasImposibles(const Tabla& tabla, const Dialecto& dialecto) {
    std::string alguna;
    for (const auto& columna : tabla.columnas)
        alguna +=
            fmt::format("{}NOT ({})", alguna.empty() ? "" : " OR ", condicionDe(tabla, columna, dialecto));
    return alguna;
}

std::vector<std::string> avisosDeImposibles(const Tablas& deben, const Dialecto& dialecto,
                                            const LeerCuentas& leer) {
    std::vector<std::string> lista;
    for (const auto& tabla : deben) {
        std::string cuentas;
        for (const auto& columna : tabla.columnas) {
            cuentas += fmt::format("{}count(*) FILTER (WHERE NOT ({}))", cuentas.empty() ? "" : ",",
                                   condicionDe(tabla, columna, dialecto));
        }
        const auto hay = leer(fmt::format("SELECT {} FROM {}{}", cuentas, dialecto.prefijo, tabla.nombre),
                              tabla.columnas.size());
        for (std::size_t i = 0; i < hay.size(); ++i) {
            if (hay[i] == 0) continue;
            lista.push_back(
                fmt::format("la tabla {} tiene en su columna {} valores que este programa no escribe: {}: {}",
                            tabla.nombre, tabla.columnas[i].nombre, hay[i],
                            tabla.nombre == "descargas" ? kSinDescargas : kReponer));
        }
    }
    return lista;
}

std::string valorDeRelleno(std::string_view tipo) {
    const auto es = [&](std::string_view cual) { return tipo == cual; };
    if (es("boolean")) return "false";
    if (es("text") || es("TEXT") || es("bytea")) return "''";
    if (es("BLOB")) return "x''";
    return tipo.starts_with("timestamp") ? "'epoch'" : "0";
}

std::string agregarColumna(const std::string& tabla, const Columna& columna) {
    const bool sinValor = columna.obligatoria && columna.declaracion.find("DEFAULT") == std::string::npos;
    return fmt::format("ALTER TABLE {} ADD COLUMN {} {}{}", tabla, columna.nombre, columna.declaracion,
                       sinValor ? " DEFAULT " + valorDeRelleno(columna.tipo) : "");
}
std::string textoDe(const Clave& clave) {
    return fmt::format("{}", fmt::join(clave, ","));
}

}  // namespace telvane
