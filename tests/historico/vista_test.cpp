// The view that others query says what the decoder says, for every raw value.
#include <cmath>

#include "data/columnas.h"
#include "data/medidas.h"
#include "historico/postgres.h"
#include "historico/sqlite.h"
#include "tests/historico/banco_historico.h"

namespace telvane {
namespace {

constexpr int kCrudos = 65536;

// One record for each raw value, in all channels at once; a minute apart.
std::vector<Fila> filasDeTodo() {
    std::vector<Fila> filas;
    for (int crudo = 0; crudo < kCrudos; ++crudo) {
        Fila fila{.instante = kInicio + std::chrono::minutes(crudo), .registro = {}};
        escribirSello(fila.registro, fila.instante);
        for (const auto& [desde, bytes] : kLugares) {
            fila.registro[desde + bytes - 1] = static_cast<std::uint8_t>(crudo & 0xFF);
            if (bytes == 2) fila.registro[desde] = static_cast<std::uint8_t>(crudo >> 8);
        }
        filas.push_back(fila);
    }
    return filas;
}

void llenar(Almacen& almacen, const std::vector<Fila>& filas) {
    Transaccion transaccion(almacen, Almacen::Modo::escritura);
    const auto estacion = almacen.crearEstacion("02080050", "02080050", true);
    almacen.agregarFilas(estacion.id, filas);
    transaccion.confirmar();
}

constexpr std::string_view kColumnas =
    "humedad_pct,temperatura_c,viento_grados,viento_kmh,radiacion_kw_m2,presion_kpa,lluvia_mm,evaporacion_mm,"
    "viento_desde_grados,coalesce(viento_rumbo,'---'),estacion";

// A row of the view against the record that it comes from. columna: gives the text of one of kColumnas.
template <typename Columna>
void comparar(const Fila& fila, Columna&& columna) {
    const auto m = medidas(fila.registro);
    const std::array<double, 9> valores = {static_cast<double>(m.humedad),
                                           m.temperatura / 10.0,
                                           m.dirViento / 10.0,
                                           m.velViento / 10.0,
                                           m.radSolar / 100.0,
                                           m.presion / 10.0,
                                           m.lluvia / 10.0,
                                           m.evaporacion / 100.0,
                                           (7200 - m.dirViento) % 3600 / 10.0};
    for (std::size_t i = 0; i < valores.size(); ++i) {
        ASSERT_EQ(std::stod(columna(static_cast<int>(i))), valores[i]) << "column " << i;
    }
    ASSERT_EQ(columna(9), columnas::nombreViento(m.crudoDirViento));
    // By its degrees a reader leaves out the bytes that have no direction, as the report does.
    const auto grados = std::stod(columna(2));
    const bool conRumbo = grados > 0 && grados <= 360;
    ASSERT_EQ(conRumbo, m.crudoDirViento >= 1 && m.crudoDirViento <= 160);
    constexpr double kRedondeo = 0.051;
    if (conRumbo) {
        ASSERT_NEAR(std::stod(columna(8)), (160 - m.crudoDirViento) * 2.25, kRedondeo);
    }
    ASSERT_EQ(columna(10), "02080050");
}

TEST(Vista, SqliteSaysWhatTheDecoderSays) {
    const CarpetaTemporal carpeta;
    const auto filas = filasDeTodo();
    llenar(*AlmacenSqlite::abrirParaEscribir(carpeta / "h.sqlite", true, {}), filas);
    const BaseSqlite base(carpeta / "h.sqlite", BaseSqlite::Acceso::lectura, std::chrono::seconds(1));
    Sentencia s(base, "SELECT " + std::string(kColumnas) + ",hora FROM lecturas ORDER BY hora");
    for (const auto& fila : filas) {
        ASSERT_TRUE(s.paso());
        comparar(fila, [&](int columna) { return s.texto(columna); });
        ASSERT_FALSE(testing::Test::HasFatalFailure());
    }
    EXPECT_EQ(s.texto(11), "2025-04-15T12:15:00");
    EXPECT_FALSE(s.paso());
}

TEST(Vista, PostgresqlSaysWhatTheDecoderSays) {
    const auto filas = filasDeTodo();
    const auto url = ServidorPostgres::unico().baseVacia("vista");
    AlmacenPostgres almacen(url, true, std::chrono::seconds(1));
    llenar(almacen, filas);
    BasePostgres base(url);
    std::string columnas;
    for (std::string_view resto = kColumnas; !resto.empty();) {
        // The coalesce has a comma of its own.
        const auto fin =
            resto.starts_with("coalesce") ? resto.find(')') + 1 : std::min(resto.find(','), resto.size());
        columnas += (columnas.empty() ? "" : ",") + std::string(resto.substr(0, fin)) + "::text";
        resto.remove_prefix(std::min(fin + 1, resto.size()));
    }
    const auto r = base.consultar("SELECT " + columnas + " FROM telvane.lecturas ORDER BY hora");
    ASSERT_EQ(r.filas(), kCrudos);
    for (int i = 0; i < kCrudos; ++i) {
        comparar(filas[static_cast<std::size_t>(i)], [&](int columna) { return r.texto(i, columna); });
        ASSERT_FALSE(testing::Test::HasFatalFailure());
    }
}

// An archive that several programs have open.
class EnUso : public testing::TestWithParam<TipoAlmacen> {
   protected:
    EnUso() {
        if (GetParam() == TipoAlmacen::postgresql) ServidorPostgres::unico().baseVacia("en_uso");
    }
    std::unique_ptr<Almacen> abrir(bool escribir) const {
        if (GetParam() == TipoAlmacen::postgresql) {
            return std::make_unique<AlmacenPostgres>(ServidorPostgres::unico().url("en_uso"), escribir,
                                                     std::chrono::seconds(10));
        }
        if (escribir) return AlmacenSqlite::abrirParaEscribir(carpeta / "h.sqlite", true, {});
        return AlmacenSqlite::abrirParaLeer(carpeta / "h.sqlite", {});
    }
    static void incorporar(Almacen& almacen, const ImagenPrueba& imagen,
                           const Archivo::Destino& destino = {}) {
        Archivo(almacen).incorporar(imagen.bytes(), destino,
                                    {"prueba", Incorporada(std::chrono::seconds(1))});
    }
    // The rows of the view, in its order of stations and times.
    std::vector<std::string> lecturas(const std::string& columnas) const {
        const auto sql = "SELECT " + columnas + " FROM " +
                         (GetParam() == TipoAlmacen::postgresql ? "telvane." : "") +
                         "lecturas ORDER BY estacion,hora,temperatura_c";
        std::vector<std::string> filas;
        if (GetParam() == TipoAlmacen::postgresql) {
            BasePostgres base(ServidorPostgres::unico().url("en_uso"));
            const auto r = base.consultar(sql);
            for (int i = 0; i < r.filas(); ++i) filas.push_back(r.texto(i, 0));
            return filas;
        }
        const BaseSqlite base(carpeta / "h.sqlite", BaseSqlite::Acceso::lectura, std::chrono::seconds(1));
        Sentencia s(base, sql);
        s.correr([&] { filas.push_back(s.texto(0)); });
        return filas;
    }

    CarpetaTemporal carpeta;
};
INSTANTIATE_TEST_SUITE_P(En, EnUso, testing::Values(TipoAlmacen::sqlite, TipoAlmacen::postgresql),
                         nombreDeTipoAlmacen);

TEST_P(EnUso, TheViewShowsWhatCountsUnderItsStationsName) {
    const auto almacen = abrir(true);
    const auto dia = [](int cual) { return kInicio + std::chrono::hours(24 * cual); };
    // Two images agree about the record in the slot that a third one has spoilt.
    incorporar(*almacen, ImagenPrueba().reloj(dia(1)).serie(0, 0, 3));
    incorporar(*almacen, ImagenPrueba().reloj(dia(2)).serie(0, 0, 3).poner(1, registroDeMinuto(10, 50)));
    incorporar(*almacen, ImagenPrueba().reloj(dia(3)).serie(0, 0, 3).texto(34, "otra"));
    // A station whose number has no evaporation, under a name.
    incorporar(*almacen, ImagenPrueba("01990001").serie(0, 0, 1), {{}, "sur"});
    EXPECT_THAT(
        lecturas(
            "estacion || CASE WHEN conflicto THEN ' conflicto ' ELSE ' ' END || CASE WHEN evaporacion_mm IS "
            "NULL THEN 'sin' ELSE 'con' END || CASE WHEN temperatura_c > -37.5 THEN ' mala' ELSE '' END"),
        testing::ElementsAre("01990001/sur sin", "02080050 con", "02080050 conflicto con", "02080050 con"));
}

TEST_P(EnUso, AReaderSeesTheArchiveAsItWasUntilAnImageIsIn) {
    const auto escritor = abrir(true);
    incorporar(*escritor, ImagenPrueba().serie(0, 0, 10));
    const auto lector = abrir(false);
    const auto antes = retrato(*lector);
    const auto otro = abrir(false);
    {
        Lectura desdeAntes(*otro);
        EXPECT_EQ(desdeAntes.estacion("02080050").resumen.muestras, 10);
        Transaccion transaccion(*escritor, Almacen::Modo::escritura);
        auto estacion = escritor->estacion("02080050").value();
        const std::vector<Fila> filas = {{kInicio + std::chrono::hours(50), registroDeMinuto(3000)}};
        escritor->agregarFilas(estacion.id, filas);
        estacion.resumen.muestras = 11;
        escritor->guardarResumen(estacion.id, estacion.resumen);
        EXPECT_EQ(retrato(*lector), antes);
        transaccion.confirmar();
        EXPECT_NE(retrato(*lector), antes);
        EXPECT_EQ(desdeAntes.estacion("02080050").resumen.muestras, 10)
            << "it goes on seeing what it began with";
    }
    EXPECT_EQ(Lectura(*otro).estacion("02080050").resumen.muestras, 11);
}

}  // namespace
}  // namespace telvane
