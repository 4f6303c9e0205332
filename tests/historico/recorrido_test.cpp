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

using Datos = std::vector<std::uint8_t>;

// Three images in a file, and what is kept of them changed behind the archive's back.
class RecorridoDeUnArchivo : public testing::Test {
   protected:
    void SetUp() override {
        const auto almacen = AlmacenSqlite::abrirParaEscribir(ruta, true, {});
        for (int i = 0; i < 3; ++i) {
            Archivo(*almacen).incorporar(ImagenPrueba().serie(0, i * 1000, 100).bytes(), {},
                                         {"prueba", Incorporada(std::chrono::seconds(1))});
        }
    }
    Datos contenido(int cual) const {
        Datos datos;
        conSentencia("SELECT datos FROM contenidos WHERE rowid=?2", [&](sqlite3_stmt* s) {
            sqlite3_bind_int(s, 2, cual);
            EXPECT_EQ(sqlite3_step(s), SQLITE_ROW);
            const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(s, 0));
            datos.assign(bytes, bytes + sqlite3_column_bytes(s, 0));
        });
        return datos;
    }
    void cambiar(int cual, const Datos& datos) const {
        conSentencia("UPDATE contenidos SET datos=?1 WHERE rowid=?2", [&](sqlite3_stmt* s) {
            sqlite3_bind_blob(s, 1, datos.data(), static_cast<int>(datos.size()), SQLITE_STATIC);
            sqlite3_bind_int(s, 2, cual);
            EXPECT_EQ(sqlite3_step(s), SQLITE_DONE);
        });
    }
    // What is told, and by how many images.
    std::pair<std::vector<Fila>, int> recorrer() const {
        const auto almacen = AlmacenSqlite::abrirParaLeer(ruta, {});
        std::pair<std::vector<Fila>, int> todo;
        recorrerFilas(*almacen, almacen->estacion("02080050").value(), kPrimerMomento, kUltimoMomento,
                      {.tramo =
                           [&](const TramoImagen& tramo) {
                               ++todo.second;
                               tramo.recorrer([&](BytesMuestraConst registro) {
                                   todo.first.push_back({instanteDe(registro), copiaDe(registro)});
                               });
                           },
                       .fila = [&](const Fila& f) { todo.first.push_back(f); }});
        return todo;
    }
    static bool iguales(const std::vector<Fila>& unas, const std::vector<Fila>& otras) {
        return std::ranges::equal(unas, otras, std::mem_fn(&Fila::esLaMisma));
    }

    // No other one is packed upon it.
    static constexpr int kUltima = 3;
    const CarpetaTemporal carpeta;
    const std::filesystem::path ruta = carpeta / "h.sqlite";

   private:
    template <typename Con>
    void conSentencia(const char* sql, Con con) const {
        sqlite3* base = nullptr;
        ASSERT_EQ(sqlite3_open(ruta.c_str(), &base), SQLITE_OK);
        sqlite3_stmt* s = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(base, sql, -1, &s, nullptr), SQLITE_OK);
        con(s);
        sqlite3_finalize(s);
        sqlite3_close(base);
    }
};

TEST_F(RecorridoDeUnArchivo, GoesPastADamagedImage) {
    const auto [filas, deImagenes] = recorrer();
    ASSERT_EQ(filas.size(), 300U);
    ASSERT_EQ(deImagenes, 3);
    const auto sano = contenido(kUltima);
    for (std::size_t i = 0; i < sano.size(); ++i) {
        auto danado = sano;
        danado[i] ^= 1;
        cambiar(kUltima, danado);
        const auto [suyas, imagenes] = recorrer();
        EXPECT_TRUE(iguales(suyas, filas)) << "byte " << i << " of " << sano.size();
    }
    cambiar(kUltima, {0});
    const auto [suyas, imagenes] = recorrer();
    EXPECT_TRUE(iguales(suyas, filas));
    EXPECT_EQ(imagenes, 2);
}

TEST_F(RecorridoDeUnArchivo, TellsNothingOfAnotherImageInTheRightOnesPlace) {
    const auto [filas, deImagenes] = recorrer();
    cambiar(kUltima, comprimir(ImagenPrueba().serie(0, 7000, 100).bytes()));
    const auto [suyas, imagenes] = recorrer();
    EXPECT_TRUE(iguales(suyas, filas));
    EXPECT_EQ(imagenes, 2);
}

TEST_F(RecorridoDeUnArchivo, ReadsAnImageThatWasPackedWithoutAChecksumAndFindsItsDamage) {
    const auto [filas, deImagenes] = recorrer();
    // Without its checksum, as earlier versions packed them.
    constexpr std::size_t kDescriptor = 4;
    constexpr std::size_t kBytesSuma = 4;
    auto datos = contenido(1);
    ASSERT_TRUE(conSuma(datos));
    datos[kDescriptor] ^= 4;
    datos.resize(datos.size() - kBytesSuma);
    ASSERT_FALSE(conSuma(datos));
    cambiar(1, datos);
    EXPECT_EQ(recorrer().second, 3);
    for (std::size_t i = 0; i < datos.size(); ++i) {
        auto danado = datos;
        danado[i] ^= 1;
        cambiar(1, danado);
        const auto [suyas, imagenes] = recorrer();
        EXPECT_TRUE(iguales(suyas, filas)) << "byte " << i << " of " << datos.size();
    }
}

TEST(ImagenesDeUnArchivo, OfAChainTheEndTellsOfADamageBelow) {
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
