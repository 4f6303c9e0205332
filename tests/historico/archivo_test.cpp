// The archive's sets: what an image adds, which record of a stamp counts, and that order means nothing.
#include <algorithm>
#include <cstdlib>
#include <numeric>

#include <rapidcheck.h>

#include "historico/recorrido_filas.h"
#include "tests/historico/banco_historico.h"
#include "tests/historico/imagenes_al_azar.h"

namespace telvane {
namespace {

class ArchivoPrueba : public testing::TestWithParam<TipoAlmacen> {
   protected:
    Incorporacion incorporar(const std::vector<std::uint8_t>& bytes, const Archivo::Destino& destino = {}) {
        return archivo.incorporar(bytes, destino, {"prueba", Incorporada(std::chrono::seconds(1))});
    }
    void todas(const std::vector<std::vector<std::uint8_t>>& imagenes) {
        for (const auto& imagen : imagenes) incorporar(imagen);
    }
    std::vector<std::pair<int, bool>> variantesDe(int minuto) {
        std::vector<std::pair<int, bool>> lista;
        const auto sello = kInicio + std::chrono::minutes(minuto);
        almacen->filas(1, sello, sello, [&](const Fila& f) { lista.emplace_back(f.registro[11], f.cuenta); });
        return lista;
    }

    Almacenes almacenes{GetParam()};
    std::unique_ptr<Almacen> almacen = almacenes.nuevo();
    Archivo archivo{*almacen};
};
INSTANTIATE_TEST_SUITE_P(En, ArchivoPrueba, testing::Values(TipoAlmacen::sqlite, TipoAlmacen::postgresql),
                         nombreDeTipoAlmacen);

TEST_P(ArchivoPrueba, TheSameImageTwiceChangesNothing) {
    const auto imagen = ImagenPrueba().serie(0, 0, 50).bytes();
    const auto primera = incorporar(imagen);
    EXPECT_EQ(primera.nuevas, 50);
    EXPECT_FALSE(primera.repetida);
    const auto antes = retrato(*almacen);
    const auto segunda = incorporar(imagen);
    EXPECT_TRUE(segunda.repetida);
    EXPECT_EQ(segunda.nuevas, 0);
    EXPECT_EQ(segunda.muestras, 50);
    EXPECT_EQ(retrato(*almacen), antes);
}

TEST_P(ArchivoPrueba, AFilesNameOfAnyBytesIsKeptAsValidText) {
    archivo.incorporar(ImagenPrueba().serie(0, 0, 10).bytes(), {},
                       {"a\xf1o\n.rgt", Incorporada(std::chrono::seconds(1))});
    Lectura lectura(*almacen);
    EXPECT_EQ(lectura.imagenes(lectura.estacion("02080050")).front().origen, "a\uFFFDo\n.rgt");
    EXPECT_FALSE(almacen->estacion("a\xf1o"));
}

TEST_P(ArchivoPrueba, AnImageThatOverlapsAddsWhatIsNew) {
    incorporar(ImagenPrueba().serie(0, 0, 50).bytes());
    EXPECT_EQ(incorporar(ImagenPrueba().serie(0, 0, 74).bytes()).nuevas, 24);
}

TEST_P(ArchivoPrueba, OfASpoiltByteTheTwoThatAgreeWin) {
    const auto sana = ImagenPrueba().serie(0, 0, 20);
    auto danada = sana;
    danada.reloj(kInicio + std::chrono::hours(1)).poner(5, registroDeMinuto(50, 1));
    auto otra = sana;
    otra.reloj(kInicio + std::chrono::hours(2));
    todas({danada.bytes(), sana.bytes()});
    // One against one: the smaller bytes.
    EXPECT_EQ(variantesDe(50), (std::vector<std::pair<int, bool>>{{0, true}, {1, false}}));
    EXPECT_EQ(incorporar(otra.bytes()).conflictos, 1);
    EXPECT_EQ(variantesDe(50), (std::vector<std::pair<int, bool>>{{0, true}, {1, false}}));
}

TEST_P(ArchivoPrueba, TheGreaterBytesWinWithMoreImages) {
    const auto base = ImagenPrueba().serie(0, 0, 20);
    std::vector<std::vector<std::uint8_t>> tres;
    for (int i = 0; i < 3; ++i) {
        auto una = base;
        una.reloj(kInicio + std::chrono::hours(i)).poner(5, registroDeMinuto(50, i == 0 ? 0 : 7));
        tres.push_back(una.bytes());
    }
    todas(tres);
    EXPECT_EQ(variantesDe(50), (std::vector<std::pair<int, bool>>{{0, false}, {7, true}}));
    exigirComoElOraculo(*almacen, "02080050", {tres.begin(), tres.end()});
}

TEST_P(ArchivoPrueba, OfAClockSetBackBothCount) {
    const auto imagen = ImagenPrueba().serie(0, 0, 20).poner(20, registroDeMinuto(50, 1)).bytes();
    const auto hecha = incorporar(imagen);
    EXPECT_EQ(hecha.conflictos, 1);
    EXPECT_EQ(variantesDe(50), (std::vector<std::pair<int, bool>>{{0, true}, {1, true}}));
}

// a and b share a slot, b and c another one.
TEST_P(ArchivoPrueba, AGroupReachesOverSharedSlots) {
    const auto a = ImagenPrueba().serie(0, 0, 20).poner(30, registroDeMinuto(5000, 1)).bytes();
    const auto b = ImagenPrueba()
                       .reloj(kInicio + std::chrono::hours(1))
                       .serie(0, 0, 20)
                       .poner(30, registroDeMinuto(5000, 2))
                       .poner(31, registroDeMinuto(5000, 2))
                       .bytes();
    const auto c = ImagenPrueba()
                       .reloj(kInicio + std::chrono::hours(2))
                       .serie(0, 0, 20)
                       .poner(31, registroDeMinuto(5000, 3))
                       .bytes();
    todas({a, b, c});
    EXPECT_EQ(variantesDe(5000), (std::vector<std::pair<int, bool>>{{1, true}, {2, false}, {3, false}}));
    exigirComoElOraculo(*almacen, "02080050", {a, b, c});
}

TEST_P(ArchivoPrueba, APartialImageHasNoVoteWhereAWholeOneContainsIt) {
    const auto sana = ImagenPrueba().serie(0, 0, 20);
    auto danada = sana;
    danada.reloj(kInicio + std::chrono::hours(1)).poner(5, registroDeMinuto(50, 1));
    const auto parcial = danada.bytes((kPrimeraRanura + 10) * 32 + 7);
    todas({parcial, sana.bytes()});
    EXPECT_EQ(variantesDe(50), (std::vector<std::pair<int, bool>>{{0, true}, {1, false}}));
    incorporar(danada.bytes());
    EXPECT_EQ(variantesDe(50), (std::vector<std::pair<int, bool>>{{0, true}, {1, false}}));
    exigirComoElOraculo(*almacen, "02080050", {parcial, sana.bytes(), danada.bytes()});
}

TEST_P(ArchivoPrueba, APartialImageWithoutSamplesIsTheSameBeforeAndAfterAWholeOne) {
    const auto entera = ImagenPrueba().serie(0, 0, 20).bytes();
    const auto parcial = ImagenPrueba().bytes(100);
    for (const auto& orden : {std::array{entera, parcial}, std::array{parcial, entera}}) {
        const auto otro = almacenes.nuevo();
        for (const auto& imagen : orden) Archivo(*otro).incorporar(imagen, {}, {});
        EXPECT_THAT(Archivo(*otro).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas, testing::IsEmpty());
    }
}

TEST_P(ArchivoPrueba, APartialImageOfEveryKindOfLengthIsTakenAsFarAsItReaches) {
    const auto entera = ImagenPrueba().serie(0, 0, 20);
    for (const std::size_t largo :
         {1U, 3U, 4U, 110U, 111U, 431U, 432U, 415U, 416U, 447U, 448U, 1000U, 262143U}) {
        const auto parcial = entera.bytes(largo);
        const auto hecha = incorporar(
            parcial,
            {.serie = largo < 4 ? std::optional<std::string>("02080050") : std::nullopt, .como = {}});
        EXPECT_TRUE(hecha.parcial) << largo;
        const auto enteras = largo / 32 > 12 ? static_cast<std::int64_t>(largo / 32 - 12) : 0;
        EXPECT_EQ(hecha.muestras, std::min<std::int64_t>(20, enteras)) << largo;
    }
}

TEST_P(ArchivoPrueba, AnotherLoggerWithTheSameNumberIsRefusedAndTakenUnderAName) {
    incorporar(ImagenPrueba().serie(0, 0, 20).bytes());
    ImagenPrueba otro;
    for (int i = 0; i < 20; ++i) otro.poner(static_cast<std::size_t>(i), registroDeMinuto(i * 10, 9));
    EXPECT_THROW(incorporar(otro.bytes()), ErrorImagen);
    const auto hecha = incorporar(otro.bytes(), {.serie = {}, .como = "norte"});
    EXPECT_EQ(hecha.estacion, "02080050/norte");
    EXPECT_EQ(hecha.nuevas, 20);
    // Its next image goes there only when it is said so.
    otro.serie(20, 200, 5);
    EXPECT_THROW(incorporar(otro.bytes()), ErrorImagen);
    EXPECT_EQ(incorporar(otro.bytes(), {.serie = {}, .como = "norte"}).nuevas, 5);
}

TEST_P(ArchivoPrueba, ThreeRecordsOfEqualStampsAreNeededToRefuse) {
    incorporar(ImagenPrueba().serie(0, 0, 2).bytes());
    ImagenPrueba dos;
    for (int i = 0; i < 2; ++i) dos.poner(static_cast<std::size_t>(i), registroDeMinuto(i * 10, 9));
    EXPECT_EQ(incorporar(dos.bytes()).conflictos, 2);
}

TEST_P(ArchivoPrueba, HalfOfThemDifferentIsNotMoreThanHalf) {
    incorporar(ImagenPrueba().serie(0, 0, 4).bytes());
    auto mitad = ImagenPrueba().serie(0, 0, 4);
    mitad.poner(0, registroDeMinuto(0, 9)).poner(1, registroDeMinuto(10, 9));
    EXPECT_NO_THROW(incorporar(mitad.bytes()));
    auto mas = ImagenPrueba().serie(0, 0, 4);
    for (int i = 0; i < 3; ++i) mas.poner(static_cast<std::size_t>(i), registroDeMinuto(i * 10, 20 + i));
    EXPECT_THROW(incorporar(mas.bytes()), ErrorImagen);
}

TEST_P(ArchivoPrueba, AnErasedHeaderNeedsItsNumber) {
    auto borrada = ImagenPrueba().serie(0, 0, 5);
    borrada.texto(0, std::string(4, '\0'));
    EXPECT_THROW(incorporar(borrada.bytes()), ErrorImagen);
    EXPECT_EQ(incorporar(borrada.bytes(), {.serie = "02080051", .como = {}}).estacion, "02080051");
    const auto propia = ImagenPrueba().serie(0, 0, 5).bytes();
    EXPECT_THROW(incorporar(propia, {.serie = "02080051", .como = {}}), ErrorImagen);
    EXPECT_EQ(incorporar(propia, {.serie = "02080050", .como = {}}).estacion, "02080050");
}

// Two archives took one image for two stations, and a third one has the word of both.
TEST_P(ArchivoPrueba, AnImageThatStandsInTwoStationsIsThereForEither) {
    const auto sinNumero = ImagenPrueba("").texto(0, std::string(4, '\xFF')).serie(0, 0, 5).bytes();
    const auto conNumero = ImagenPrueba().serie(0, 0, 5).bytes();
    for (const auto& [serie, como] : {std::pair("02080050", "norte"), std::pair("02080051", "sur")}) {
        const auto otro = almacenes.nuevo();
        Archivo suyo(*otro);
        suyo.incorporar(sinNumero, {serie, {}}, {"prueba", Incorporada(std::chrono::seconds(1))});
        suyo.incorporar(conNumero, {{}, como}, {"prueba", Incorporada(std::chrono::seconds(1))});
        archivo.copiarDe(suyo, {}, [] {});
    }
    const auto antes = retrato(*almacen);
    for (const std::string serie : {"02080050", "02080051"}) {
        const auto otraVez = incorporar(sinNumero, {serie, {}});
        EXPECT_TRUE(otraVez.repetida);
        EXPECT_EQ(otraVez.estacion, serie);
    }
    for (const std::string como : {"norte", "sur"}) {
        const auto otraVez = incorporar(conNumero, {{}, como});
        EXPECT_TRUE(otraVez.repetida);
        EXPECT_EQ(otraVez.estacion, "02080050/" + como);
    }
    EXPECT_EQ(incorporar(conNumero).estacion, "02080050/norte");
    EXPECT_THROW(incorporar(conNumero, {{}, "este"}), ErrorImagen);
    EXPECT_THROW(incorporar(sinNumero, {"02080052", {}}), ErrorImagen);
    EXPECT_EQ(retrato(*almacen), antes);
}

// A station's texts and interval are those of its newest image, whatever came last.
TEST_P(ArchivoPrueba, TheNewestImageIsTheOneOfTheLatestClock) {
    const auto imagen = [](const std::string& ubicacion, char intervalo, std::optional<int> hora) {
        ImagenPrueba una;
        una.texto(registro_config::kUbicacion, ubicacion);
        una.texto(registro_config::kIntervalo, std::string(1, intervalo));
        una.serie(0, 0, 5);
        if (hora) {
            una.reloj(kInicio + std::chrono::hours(*hora));
        } else {
            una.texto(registro_config::kReloj, std::string(6, '\xFF'));
        }
        return una.bytes();
    };
    const auto mayor = [](const std::vector<std::uint8_t>& una, const std::vector<std::uint8_t>& otra) {
        return huellaDe(una) < huellaDe(otra) ? otra : una;
    };
    const auto empate = imagen("empate", 0x30, 2);
    const auto nueva = imagen("nueva", 0x15, 2);
    const auto sinReloj = imagen("sin reloj", 0x60, {});
    const auto sinRelojOtra = imagen("sin reloj otra", 0x05, {});
    struct Caso {
        std::vector<std::vector<std::uint8_t>> imagenes;
        std::vector<std::uint8_t> laMasNueva;
    };
    const std::vector<Caso> casos = {
        {{imagen("vieja", 0x10, 1), nueva, sinReloj}, nueva},
        {{empate, nueva, sinReloj}, mayor(empate, nueva)},
        {{sinReloj, sinRelojOtra}, mayor(sinReloj, sinRelojOtra)},
    };
    for (const auto& caso : casos) {
        std::vector<std::size_t> orden(caso.imagenes.size());
        std::iota(orden.begin(), orden.end(), 0U);
        do {
            const auto otro = almacenes.nuevo();
            for (const auto cual : orden) {
                Archivo(*otro).incorporar(caso.imagenes[cual], {},
                                          {"prueba", Incorporada(std::chrono::seconds(1))});
            }
            const auto estacion = otro->estacion("02080050").value();
            EXPECT_EQ(estacion.resumen.masNueva, huellaDe(caso.laMasNueva));
            const auto deElla = std::span(caso.laMasNueva).first(registro_config::kCabecera);
            EXPECT_TRUE(std::ranges::equal(estacion.resumen.cabecera, deElla));
        } while (std::next_permutation(orden.begin(), orden.end()));
    }
}

TEST_P(ArchivoPrueba, AClockThatWasSetBackIsCountedInItsImage) {
    // Back at once, and standing still; behind an empty slot nobody knows.
    auto imagen = ImagenPrueba().serie(0, 0, 5).serie(5, 20, 2).poner(7, registroDeMinuto(30, 1));
    imagen.serie(9, 0, 2);
    incorporar(imagen.bytes());
    EXPECT_EQ(almacen->fichas(almacen->estacion("02080050")->id).front().retrocesos, 2);
}

TEST_P(ArchivoPrueba, AGapIsWiderThanTheIntervalInForce) {
    auto imagen = ImagenPrueba().serie(0, 0, 30, 10);
    imagen.serie(30, 320, 30, 60).serie(60, 320 + 30 * 60 + 120, 5, 60);
    const auto bytes = imagen.bytes();
    incorporar(bytes);
    exigirComoElOraculo(*almacen, "02080050", {bytes});
}

TEST_P(ArchivoPrueba, TheCenturysEnds) {
    const auto bytes = ImagenPrueba()
                           .poner(0,
                                  [] {
                                      BytesMuestra r{};
                                      escribirSello(r, momento(2000, 1, 1));
                                      return r;
                                  }())
                           .poner(1,
                                  [] {
                                      BytesMuestra r{};
                                      escribirSello(r, momento(2099, 12, 31, 23, 59, 59));
                                      return r;
                                  }())
                           .bytes();
    EXPECT_EQ(incorporar(bytes).nuevas, 2);
    exigirComoElOraculo(*almacen, "02080050", {bytes});
}

TEST_P(ArchivoPrueba, AnImageIsPackedUponOneThatIsLikeIt) {
    const auto registrada = [&](int desdeMinuto, int cuantos) {
        const auto hecha = incorporar(ImagenPrueba()
                                          .reloj(kInicio + std::chrono::minutes(desdeMinuto))
                                          .serie(0, desdeMinuto, cuantos)
                                          .bytes());
        return almacen->cadena(almacen->estacion("02080050")->id, hecha.imagen, 1).at(0).second;
    };
    EXPECT_FALSE(registrada(0, 8000).base);
    EXPECT_FALSE(registrada(100'000, 8000).base) << "nothing in it is the same";
    const auto noche = registrada(100'000, 8144);
    EXPECT_TRUE(noche.base);
    EXPECT_EQ(noche.profundidad, 1);
}

// What the rows say, and what is told in their place.
std::vector<std::pair<Instante, BytesMuestra>> filasDe(Almacen& almacen, Instante desde, Instante hasta) {
    std::vector<std::pair<Instante, BytesMuestra>> filas;
    almacen.filas(almacen.estacion("02080050")->id, desde, hasta,
                  [&](const Fila& f) { filas.emplace_back(f.instante, f.registro); });
    return filas;
}
std::vector<std::pair<Instante, BytesMuestra>> recorrido(Almacen& almacen, Instante desde, Instante hasta) {
    std::vector<std::pair<Instante, BytesMuestra>> filas;
    const auto agregar = [&](const auto& m) { filas.emplace_back(m.instante, m.registro); };
    const auto agregarUnica = [&](BytesMuestraConst registro) { agregar(unica(registro)); };
    recorrerFilas(
        almacen, almacen.estacion("02080050").value(), desde, hasta,
        {.tramo = [&](const TramoImagen& tramo) { tramo.recorrer(agregarUnica); }, .fila = agregar});
    return filas;
}

class ArchivoAlAzar : public testing::TestWithParam<TipoAlmacen> {
   protected:
    Almacenes almacenes{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(En, ArchivoAlAzar, testing::Values(TipoAlmacen::sqlite, TipoAlmacen::postgresql),
                         nombreDeTipoAlmacen);

TEST_P(ArchivoAlAzar, HoldsWhatTheImagesDemand) {
    EXPECT_TRUE(rc::check([&] {
        const auto imagenes = *rc::gen::container<std::vector<std::vector<std::uint8_t>>>(
            *rc::gen::inRange(1, 6), unaDeLaEstacion());
        const auto almacen = almacenes.nuevo();
        Archivo archivo(*almacen);
        for (const auto& imagen : imagenes) {
            tomarSinRehusar(*almacen, imagen);
        }
        exigirComoElOraculo(*almacen, "02080050", {imagenes.begin(), imagenes.end()});
        const auto antes = retrato(*almacen);
        const auto desde = kInicio + std::chrono::minutes(*rc::gen::inRange(-10, 400));
        const auto hasta = desde + std::chrono::minutes(*rc::gen::inRange(0, 1000));
        RC_ASSERT(recorrido(*almacen, desde, hasta) == filasDe(*almacen, desde, hasta));
        archivo.rehacer([] {});
        RC_ASSERT(retrato(*almacen) == antes);
    }));
}

TEST_P(ArchivoAlAzar, JoiningIsCommutativeAndAssociative) {
    EXPECT_TRUE(rc::check([&] {
        const auto partes = *rc::gen::container<std::vector<std::vector<std::uint8_t>>>(6, unaDeLaEstacion());
        const auto de = [&](std::size_t desde, std::size_t hasta) {
            auto almacen = almacenes.nuevo();
            for (auto i = desde; i < hasta; ++i) {
                tomarSinRehusar(*almacen, partes[i]);
            }
            return almacen;
        };
        const auto unir = [](Almacen& en, Almacen& otro) {
            Archivo ajeno(otro);
            Archivo(en).copiarDe(ajeno, std::nullopt, [] {});
        };
        const auto a = de(0, 2), b = de(2, 4), c = de(4, 6);
        const auto ab_c = de(0, 0), bc_a = de(0, 0), bc = de(0, 0);
        unir(*ab_c, *a);
        unir(*ab_c, *b);
        unir(*ab_c, *c);
        unir(*bc, *c);
        unir(*bc, *b);
        unir(*bc_a, *bc);
        unir(*bc_a, *a);
        RC_ASSERT(retrato(*ab_c) == retrato(*bc_a));
        // What is there already changes nothing.
        unir(*ab_c, *bc);
        RC_ASSERT(retrato(*ab_c) == retrato(*bc_a));
    }));
}

TEST_P(ArchivoAlAzar, GivesEveryByteOfAnImageBack) {
    EXPECT_TRUE(rc::check([&] {
        const auto almacen = almacenes.nuevo();
        const auto imagenes = *rc::gen::container<std::vector<std::vector<std::uint8_t>>>(
            *rc::gen::inRange(1, 40), unaDeLaEstacion());
        for (const auto& imagen : imagenes) {
            tomarSinRehusar(*almacen, imagen);
        }
        Lectura lectura(*almacen);
        const auto estacion = lectura.estacion("02080050");
        for (const auto& imagen : imagenes) RC_ASSERT(lectura.bytesDe(huellaDe(imagen)) == imagen);
    }));
}

// Six images that overlap, with a spoilt byte, a clock set back, an interval that changes, an erased memory
// and a download that broke off.
using ArchivoEnTodoOrden = ArchivoAlAzar;
INSTANTIATE_TEST_SUITE_P(En, ArchivoEnTodoOrden,
                         testing::Values(TipoAlmacen::sqlite, TipoAlmacen::postgresql), nombreDeTipoAlmacen);

TEST_P(ArchivoEnTodoOrden, All720OrdersOfSixImagesGiveTheSame) {
    const auto base = ImagenPrueba().serie(0, 0, 40);
    auto danada = base;
    danada.reloj(kInicio + std::chrono::hours(1)).poner(7, registroDeMinuto(70, 5)).serie(40, 400, 10);
    auto otra = base;
    otra.reloj(kInicio + std::chrono::hours(2)).serie(40, 400, 10).serie(50, 505, 30, 5);
    auto atrasada = otra;
    atrasada.reloj(kInicio + std::chrono::hours(3)).poner(80, registroDeMinuto(300, 2));
    const auto borrada = ImagenPrueba().reloj(kInicio + std::chrono::hours(4)).serie(0, 700, 30);
    std::vector<std::vector<std::uint8_t>> seis = {base.bytes(),     danada.bytes(),  otra.bytes(),
                                                   atrasada.bytes(), borrada.bytes(), danada.bytes(900)};
    std::vector<std::size_t> orden(seis.size());
    std::iota(orden.begin(), orden.end(), 0U);
    std::string primero;
    int cuantos = 0;
    // A server needs minutes for all of them.
    const int cadaCuantos =
        GetParam() == TipoAlmacen::sqlite || std::getenv("TELVANE_ORDENES") != nullptr ? 1 : 60;
    do {
        if (cuantos++ % cadaCuantos != 0) continue;
        const auto almacen = almacenes.nuevo();
        Archivo archivo(*almacen);
        for (const auto i : orden)
            archivo.incorporar(seis[i], {}, {"prueba", Incorporada(std::chrono::seconds(1))});
        const auto este = retrato(*almacen);
        if (primero.empty()) {
            primero = este;
            exigirComoElOraculo(*almacen, "02080050", {seis.begin(), seis.end()});
        }
        ASSERT_EQ(este, primero);
    } while (std::next_permutation(orden.begin(), orden.end()));
    EXPECT_EQ(cuantos, 720);
}

}  // namespace
}  // namespace telvane
