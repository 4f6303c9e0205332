// Whatever became by hand of a part of the archive, of this version or of an older one: each message names
// one command or one statement, which leads on, and what is told to be lost is.
#include <cstdlib>
#include <regex>
#include <string>
#include <vector>

#include "tests/historico/banco_ordenes.h"

namespace telvane {
namespace {

using testing::HasSubstr;

// One change, in both stores.
struct Mano {
    std::string objeto;
    std::string sql;
};

class Consejo : public OrdenesEnAmbos {
   protected:
    // Nobody holds an archive here on purpose, but a busy server lets go of it late.
    Consejo() { paciencia = std::chrono::seconds(10); }

    struct Original {
        std::string archivo;
        std::vector<std::uint8_t> bytes;
    };
    std::vector<Original> originales;

    void incorporarTodas() {
        auto noches = ImagenPrueba().serie(0, 0, 60);
        const auto tomar = [&](const std::vector<std::uint8_t>& bytes) {
            const auto nombre = std::to_string(originales.size());
            std::ofstream(carpeta / (nombre + ".json"))
                << R"({"descargada":"2026-11-20T02:17:03Z","puerto":1,"dispositivo":"/dev/ttyUSB0",)"
                << R"("desfase_s":-75,"verificada":false,"reintentos":0,"errores_de_linea":0})";
            originales.push_back({guardar(nombre + ".rgt", bytes), bytes});
            ASSERT_EQ(correr({"incorporar", originales.back().archivo}).errores, "");
        };
        tomar(noches.bytes());
        tomar(noches.reloj(kInicio + std::chrono::hours(24)).poner(7, registroDeMinuto(70, 9)).bytes());
        tomar(ImagenPrueba("32080051").serie(0, 3, 40).bytes());
    }
    // As the first version left it.
    void hacerPrimera() {
        sql("DROP TABLE descargas; DROP INDEX imagenes_por_reloj; " +
            std::string(esArchivo() ? "PRAGMA user_version=1" : "UPDATE esquema SET version=1"));
    }

    std::string prefijo() const { return esArchivo() ? "" : "telvane."; }
    static std::vector<std::string> nombres(const std::string& sql, const std::string& clase) {
        const std::regex parte("CREATE " + clase + R"( (?:IF NOT EXISTS )?(?:telvane\.)?(\w+))");
        std::vector<std::string> lista;
        for (std::sregex_iterator una(sql.begin(), sql.end(), parte); una != std::sregex_iterator(); ++una)
            lista.push_back((*una)[1]);
        return lista;
    }

    // Something else under that name.
    std::vector<std::string> ajenos(const std::string& nombre) const {
        const std::string otra = nombre == "estaciones" ? "imagenes(bytes)" : "estaciones(serie)";
        std::vector<std::string> lista = {"CREATE TABLE " + nombre + "(a integer)",
                                          "CREATE VIEW " + nombre + " AS SELECT 1 AS a",
                                          "CREATE INDEX " + nombre + " ON " + otra};
        if (esArchivo()) return lista;
        const std::string servidor =
            "DROP FOREIGN DATA WRAPPER IF EXISTS nada CASCADE; CREATE FOREIGN DATA WRAPPER nada; CREATE "
            "SERVER nada FOREIGN DATA WRAPPER nada; ";
        for (const auto& mas : {"CREATE TABLE " + nombre + "()", "CREATE SEQUENCE " + nombre,
                                "CREATE TYPE " + nombre + " AS (a integer)",
                                "CREATE MATERIALIZED VIEW " + nombre + " AS SELECT 1 AS a",
                                servidor + "CREATE FOREIGN TABLE " + nombre + "(a integer) SERVER nada"})
            lista.push_back(mas);
        return lista;
    }
    void conAjenos(std::vector<Mano>& todas, const std::string& nombre, const std::string& antes) const {
        for (const auto& ajeno : ajenos(nombre)) todas.push_back({nombre, antes + ajeno});
    }
    void cambiosDeTabla(std::vector<Mano>& todas, const Tabla& tabla) const {
        const auto& t = tabla.nombre;
        const std::string quitar = "DROP TABLE " + t + (esArchivo() ? "" : " CASCADE");
        todas.push_back({t, quitar});
        conAjenos(todas, t, quitar + "; ");
        for (const auto& falta : tabla.columnas) {
            std::string quedan = "1 AS otra";
            for (const auto& columna : tabla.columnas)
                if (columna.nombre != falta.nombre) quedan += "," + columna.nombre;
            todas.push_back({t, "CREATE TABLE telvane_otra AS SELECT " + quedan + " FROM " + t + "; " +
                                    quitar + "; " + (esArchivo() ? "DROP VIEW IF EXISTS lecturas; " : "") +
                                    "ALTER TABLE telvane_otra RENAME TO " + t});
        }
        todas.push_back({t, "ALTER TABLE " + t + " RENAME TO otra_" + t});
        for (const auto& ajeno : ajenos(t))
            todas.push_back({"nada", "ALTER TABLE " + t + " RENAME TO otra_" + t + "; " + ajeno});
        todas.push_back({t, "ALTER TABLE " + t + " ADD COLUMN otra integer"});
        todas.push_back({t, "CREATE TABLE telvane_otra AS SELECT *,1 AS otra FROM " + t + "; " + quitar +
                                "; " + (esArchivo() ? "DROP VIEW IF EXISTS lecturas; " : "") +
                                "ALTER TABLE telvane_otra RENAME TO " + t});
    }
    // Of the parts in sql.
    void cambiosDe(std::vector<Mano>& todas, const std::string& sql) const {
        for (const auto& tabla : leerTablas(sql)) cambiosDeTabla(todas, tabla);
        for (const auto* clase : {"INDEX", "VIEW"}) {
            for (const auto& nombre : nombres(sql, clase)) {
                const auto quitar = std::string("DROP ") + clase + " " + nombre;
                todas.push_back({nombre, quitar});
                conAjenos(todas, nombre, quitar + "; ");
            }
        }
    }

    // What is told of what was done last; empty: all is well.
    std::string seguir() {
        constexpr int kPasos = 4;
        static const std::regex kSentencia(R"((DROP|ALTER TABLE) [^,\n]+)");
        std::vector<std::string> orden = {"incorporar", originales.back().archivo};
        std::string relato;
        for (int mensajes = 0; mensajes <= kPasos;) {
            const auto r = correr(orden);
            const auto dicho = r.salida + r.errores;
            relato += orden[0] + ": " + dicho;
            if (r.codigo == 0) {
                if (orden[0] == "comprobar") return "";
                orden = {"comprobar"};
                continue;
            }
            ++mensajes;
            std::smatch sentencia;
            if (std::regex_search(dicho, sentencia, kSentencia)) {
                relato += "SQL: " + sentencia.str() + "\n";
                sql(sentencia.str());
                orden = {dicho.find("haga rehacer") != std::string::npos ? "rehacer" : "comprobar"};
            } else if (dicho.find("vuelva a incorporarla") != std::string::npos && orden[0] == "rehacer") {
                for (const auto& uno : originales) correr({"incorporar", uno.archivo});
                orden = {"comprobar"};
            } else if (dicho.find("rehacer") != std::string::npos) {
                orden = {"rehacer"};
            } else if (dicho.find("recupere su copia") != std::string::npos) {
                return dicho;
            } else if (dicho.find("comprobar") != std::string::npos) {
                orden = {"comprobar"};
            } else {
                orden = {"incorporar", originales.back().archivo};
            }
        }
        ADD_FAILURE() << "en círculo:\n" << relato;
        return relato;
    }
    void exigirImagenes() {
        for (const auto& uno : originales) {
            const auto r = correr({"imagen", textoDe(huellaDe(uno.bytes)), "-"});
            EXPECT_EQ(r.codigo, 0) << r.errores;
            EXPECT_TRUE(std::ranges::equal(r.salida, uno.bytes, {}, [](char c) {
                return static_cast<std::uint8_t>(c);
            })) << uno.archivo;
        }
    }

    void exigirQueLleveAdelante(const std::vector<Mano>& todas, bool deLaPrimera) {
        guardarlo();
        // All of them take a minute.
        const int deCada = std::getenv("TELVANE_CONSEJOS") ? 1 : 5;
        int cual = 0;
        for (const auto& [objeto, cambio] : todas) {
            if (cual++ % deCada != 0) continue;
            SCOPED_TRACE(cambio);
            devolverlo();
            if (deLaPrimera) hacerPrimera();
            sql(cambio);
            if (const auto perdido = seguir(); !perdido.empty()) {
                EXPECT_EQ(objeto, "contenidos") << perdido;
                continue;
            }
            exigirImagenes();
        }
    }
};
INSTANTIATE_TEST_SUITE_P(En, Consejo, testing::Values(TipoAlmacen::sqlite, TipoAlmacen::postgresql),
                         nombreDeTipoAlmacen);

TEST_P(Consejo, OfThisVersionLeadsOn) {
    incorporarTodas();
    std::vector<Mano> todas;
    cambiosDe(todas, primeras() + posteriores());
    exigirQueLleveAdelante(todas, false);
}

TEST_P(Consejo, OfTheFirstVersionLeadsOn) {
    incorporarTodas();
    std::vector<Mano> todas{{"", "SELECT 1"}};
    cambiosDe(todas, primeras());
    for (const auto* clase : {"TABLE", "INDEX"}) {
        for (const auto& nombre : nombres(posteriores(), clase)) conAjenos(todas, nombre, "");
    }
    exigirQueLleveAdelante(todas, true);
}

}  // namespace
}  // namespace telvane
