// Samples told by images: the same as the rows, whatever the images are like.
#include <sqlite3.h>

#include "historico/recorrido_filas.h"
#include "tests/historico/banco_historico.h"

namespace telvane {
namespace {

class Recorrido : public testing::TestWithParam<TipoAlmacen> {
   protected:
    void incorporar(const ImagenPrueba& imagen) {
        Archivo(*almacen).incorporar(imagen.bytes(), {}, {"prueba", Incorporada(std::chrono::seconds(1))});
    }
    // As the rows are; how many of them the images told.
    std::ptrdiff_t contadasPorImagenes(Instante desde = kPrimerMomento, Instante hasta = kUltimoMomento) {
        const auto estacion = almacen->estacion("02080050").value();
        std::vector<Fila> filas, recorridas;
        almacen->filas(estacion.id, desde, hasta, [&](const Fila& f) { filas.push_back(f); });
        std::ptrdiff_t deImagenes = 0;
        recorrerFilas(*almacen, estacion, desde, hasta,
                      {.tramo =
                           [&](const TramoImagen& tramo) {
                               tramo.recorrer([&](BytesMuestraConst registro) {
                                   const auto muestra = unica(registro);
                                   recorridas.push_back({muestra.instante, muestra.registro});
                                   ++deImagenes;
                               });
                           },
                       .fila = [&](const Fila& f) { recorridas.push_back(f); }});
        const auto iguales = [](const Fila& a, const Fila& b) {
            return a.esLaMisma(b) && a.cuenta == b.cuenta;
        };
        EXPECT_TRUE(std::ranges::equal(filas, recorridas, iguales));
        return deImagenes;
    }
    static ImagenPrueba noche(int cual) {
        return ImagenPrueba().reloj(kInicio + std::chrono::hours(cual)).serie(0, cual * 60, 100);
    }

    std::unique_ptr<Almacen> almacen = Almacenes(GetParam()).nuevo();
};
INSTANTIATE_TEST_SUITE_P(En, Recorrido, testing::Values(TipoAlmacen::sqlite, TipoAlmacen::postgresql),
                         nombreDeTipoAlmacen);

TEST_P(Recorrido, ImagesThatFollowOneAnotherTellEverything) {
    for (int i = 0; i < 40; ++i) incorporar(ImagenPrueba().serie(0, i * 1000, 100));
    EXPECT_EQ(contadasPorImagenes(), 4000);
    EXPECT_EQ(contadasPorImagenes(kInicio + std::chrono::minutes(500), kInicio + std::chrono::minutes(1500)),
              101);
}

TEST_P(Recorrido, ImagesThatOverlapTellEverything) {
    for (int i = 0; i < 40; ++i) incorporar(noche(i));
    EXPECT_EQ(contadasPorImagenes(), 39 * 6 + 100);
    EXPECT_EQ(contadasPorImagenes(kInicio, kInicio), 1);
}

TEST_P(Recorrido, AMemoryThatBeganAnewIsToldInOrderOfStamp) {
    incorporar(ImagenPrueba().serie(0, 1000, 30).serie(30, 0, 30).poner(60, registroDeMinuto(290)));
    EXPECT_EQ(contadasPorImagenes(), 60);
    incorporar(ImagenPrueba().serie(0, 5000, 10).serie(10, 4000, 10).serie(20, 3000, 10));
    EXPECT_EQ(contadasPorImagenes(), 90);
}

TEST_P(Recorrido, StampsAtBothEndsOfTheCalendarAreTold) {
    auto primero = registroDeMinuto(0);
    auto ultimo = registroDeMinuto(0);
    escribirSello(primero, momento(2000, 1, 1));
    escribirSello(ultimo, momento(2099, 12, 31, 23, 59, 59));
    incorporar(ImagenPrueba().poner(0, ultimo).poner(1, primero).serie(2, 0, 10));
    EXPECT_EQ(contadasPorImagenes(), 12);
    EXPECT_EQ(contadasPorImagenes(momento(1990, 1, 1), momento(2110, 1, 1)), 12);
    EXPECT_EQ(contadasPorImagenes(momento(2000, 1, 1), momento(2099, 12, 31, 23, 59, 58)), 11);
    EXPECT_EQ(contadasPorImagenes(momento(2000, 1, 1, 0, 0, 1), momento(2099, 12, 31, 23, 59, 59)), 11);
}

TEST_P(Recorrido, AStretchWithAConflictIsReadRowByRow) {
    for (int i = 0; i < 40; ++i) incorporar(noche(i));
    incorporar(noche(40).poner(50, registroDeMinuto(40 * 60 + 500, 1)));
    const auto deImagenes = contadasPorImagenes();
    EXPECT_GT(deImagenes, 100);
    EXPECT_LT(deImagenes, 40 * 6 + 100);
}

TEST_P(Recorrido, AnImageTellsNothingOfAStretchThatItDoesNotHoldWhole) {
    // The second one reaches over the third.
    incorporar(ImagenPrueba().serie(0, 0, 20));
    incorporar(ImagenPrueba().serie(0, 200, 20).poner(20, registroDeMinuto(10'000)));
    incorporar(ImagenPrueba().serie(0, 400, 20));
    EXPECT_EQ(contadasPorImagenes(), 21);
}

TEST_P(Recorrido, WithoutSamplesNothingIsTold) {
    incorporar(ImagenPrueba());
    EXPECT_EQ(contadasPorImagenes(), 0);
}

TEST(RecorridoDeUnArchivo, GoesPastADamagedImage) {
    const CarpetaTemporal carpeta;
    {
        const auto almacen = AlmacenSqlite::abrirParaEscribir(carpeta / "h.sqlite", true, {});
        for (int i = 0; i < 3; ++i) {
            Archivo(*almacen).incorporar(ImagenPrueba().serie(0, i * 1000, 100).bytes(), {},
                                         {"prueba", Incorporada(std::chrono::seconds(1))});
        }
    }
    sqlite3* base = nullptr;
    ASSERT_EQ(sqlite3_open((carpeta / "h.sqlite").c_str(), &base), SQLITE_OK);
    ASSERT_EQ(
        sqlite3_exec(base, "UPDATE contenidos SET datos=x'00' WHERE rowid=2", nullptr, nullptr, nullptr),
        SQLITE_OK);
    sqlite3_close(base);
    const auto almacen = AlmacenSqlite::abrirParaLeer(carpeta / "h.sqlite", {});
    int filas = 0;
    recorrerFilas(*almacen, almacen->estacion("02080050").value(), kPrimerMomento, kUltimoMomento,
                  {.tramo = [&](const TramoImagen& tramo) { tramo.recorrer([&](auto) { ++filas; }); },
                   .fila = [&](const Fila&) { ++filas; }});
    EXPECT_EQ(filas, 300);
}

TEST(RecorridoDeUnArchivo, OfAChainTheEndTellsOfADamageBelow) {
    const CarpetaTemporal carpeta;
    const auto hecha = [&] {
        const auto almacen = AlmacenSqlite::abrirParaEscribir(carpeta / "h.sqlite", true, {});
        Archivo archivo(*almacen);
        archivo.incorporar(ImagenPrueba().serie(0, 0, 100).bytes(), {}, {});
        return archivo.incorporar(ImagenPrueba().serie(0, 0, 150).bytes(), {}, {});
    }();
    // Another one of the same length in place of the first.
    const auto otra = comprimir(ImagenPrueba().serie(0, 7, 100).bytes());
    sqlite3* base = nullptr;
    ASSERT_EQ(sqlite3_open((carpeta / "h.sqlite").c_str(), &base), SQLITE_OK);
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(base, "UPDATE contenidos SET datos=?1 WHERE base IS NULL", -1, &s, nullptr);
    sqlite3_bind_blob(s, 1, otra.data(), static_cast<int>(otra.size()), SQLITE_STATIC);
    EXPECT_EQ(sqlite3_step(s), SQLITE_DONE);
    sqlite3_finalize(s);
    sqlite3_close(base);
    const auto almacen = AlmacenSqlite::abrirParaLeer(carpeta / "h.sqlite", {});
    Imagenes imagenes(*almacen, almacen->estacion("02080050")->id);
    EXPECT_THROW(imagenes.bytes(hecha.imagen), ErrorImagen);
    EXPECT_THROW(imagenes.bytes(hecha.imagen), ErrorImagen) << "nor from what is at hand";
}

TEST(ConvienenImagenes, ForThePartOfAStationThatHasManyRows) {
    EstacionGuardada estacion;
    EXPECT_FALSE(convienenImagenes(estacion, kPrimerMomento, kUltimoMomento));
    estacion.resumen.desde = kInicio;
    estacion.resumen.hasta = kInicio + std::chrono::hours(1000) - std::chrono::seconds(1);
    estacion.resumen.muestras = 60'000;
    EXPECT_TRUE(convienenImagenes(estacion, kPrimerMomento, kUltimoMomento));
    EXPECT_TRUE(convienenImagenes(estacion, kInicio, kInicio + std::chrono::hours(334)));
    EXPECT_FALSE(convienenImagenes(estacion, kInicio, kInicio + std::chrono::hours(333)));
    estacion.resumen.muestras = 20'000;
    EXPECT_FALSE(convienenImagenes(estacion, kPrimerMomento, kUltimoMomento));
}

}  // namespace
}  // namespace telvane
