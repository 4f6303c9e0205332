#include "data/bloques_texto.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "data/linea_muestra.h"
#include "data/registros.h"
#include "tests/data/registro_prueba.h"

namespace telvane {
namespace {

constexpr std::int32_t kUltimaDeTodas = static_cast<std::int32_t>(Memoria::kBloques) - 1;

// One good record in the second half of each given block; everything else never written.
Memoria memoriaCon(const std::vector<std::size_t>& bloques) {
    Memoria memoria;
    for (const auto numero : bloques) ponerRegistro(memoria.bloque(numero), 1, {});
    return memoria;
}

std::size_t lineasEn(std::string_view texto) {
    return static_cast<std::size_t>(std::count(texto.begin(), texto.end(), '\n'));
}

class Bloques : public ::testing::Test {
   protected:
    Recuento decodificar(const Memoria& memoria, std::int32_t ultimo = kUltimoBloque) {
        return bloques_.decodificar(memoria, decodificador_, ultimo);
    }
    Decodificador decodificador_;
    BloquesTexto bloques_;
};

TEST_F(Bloques, TheHeadersBlocksAreDecodedAndDropped) {
    const auto recuento = decodificar(memoriaCon({0, 1, 5, 6}));
    EXPECT_EQ(bloques_.unidos(), lineaDe({}));
    EXPECT_EQ(recuento.escritas, 1u);
}

TEST_F(Bloques, EachBufferTakesFiveHundredBlocks) {
    decodificar(memoriaCon({6, 499, 500, 999, 1000, 4095}));
    EXPECT_EQ(lineasEn(bloques_.bufer(0)), 2u);
    EXPECT_EQ(lineasEn(bloques_.bufer(1)), 2u);
    EXPECT_EQ(lineasEn(bloques_.bufer(2)), 1u);
    EXPECT_EQ(lineasEn(bloques_.bufer(8)), 1u);
    for (std::size_t i = 9; i < BloquesTexto::kBuferes; ++i) EXPECT_EQ(bloques_.bufer(i), "") << i;
}

TEST_F(Bloques, BlocksFrom8000OnAreDropped) {
    const auto recuento = decodificar(memoriaCon({7500, 7999, 8000, 18000}), kUltimaDeTodas);
    EXPECT_EQ(lineasEn(bloques_.bufer(15)), 2u);
    EXPECT_EQ(lineasEn(bloques_.unidos()), 2u);
    EXPECT_EQ(recuento.escritas, 2u);
}

TEST_F(Bloques, ALastBlockOutsideTheMemoryIsNotRead) {
    EXPECT_EQ(decodificar(memoriaCon({7}), kUltimaDeTodas + 1000).escritas, 1u);
    EXPECT_EQ(decodificar(memoriaCon({7}), -1).escritas, 0u);
    EXPECT_EQ(bloques_.unidos(), "");

    std::size_t vistos = 0;
    bloques_.decodificar(Memoria(), decodificador_, kUltimaDeTodas + 1000, [&](std::int32_t) { ++vistos; });
    EXPECT_EQ(vistos, Memoria::kBloques);
}

TEST_F(Bloques, ASecondRunReplacesTheFirst) {
    decodificar(memoriaCon({6, 7, 600}));
    decodificar(memoriaCon({8}));
    EXPECT_EQ(bloques_.unidos(), lineaDe({}));
}

TEST_F(Bloques, BeforeTheFirstRunTheyAreEmpty) {
    EXPECT_EQ(bloques_.unidos(), "");
    EXPECT_EQ(bloques_.bufer(0), "");
}

TEST(BloquesEnteros, ThereIsRoomForTheLongestSamples) {
    constexpr std::size_t kMuestras = (8000 - 6) * 2;
    EXPECT_EQ(BloquesTexto::capacidad(Redaccion::linea), kMuestras * kLineaMaxima);
    EXPECT_EQ(BloquesTexto::capacidad(Redaccion::objeto), kMuestras * kObjetoMaximo);
}

// The end is longer than everything between: nothing of it stands where there is no room.
TEST(BloquesEnteros, HeaderAndFootSurroundTheSamples) {
    const std::string cabecera = "cabecera\r\n";
    for (const auto redaccion : {Redaccion::linea, Redaccion::objeto}) {
        const std::string pie(BloquesTexto::capacidad(Redaccion::objeto) * 2, 'p');
        Decodificador decodificador;
        BloquesTexto solas({}, {}, redaccion);
        BloquesTexto bloques(cabecera, pie, redaccion);
        EXPECT_EQ(bloques.unidos(), "") << "before the first run";
        const auto memoria = memoriaCon({0, 6, 499, 500, 4095});
        solas.decodificar(memoria, decodificador, kUltimoBloque);
        bloques.decodificar(memoria, decodificador, kUltimoBloque);
        EXPECT_FALSE(solas.unidos().empty());
        EXPECT_EQ(bloques.unidos(), solas.unidos());
        EXPECT_EQ(bloques.bufer(0), solas.bufer(0));
        EXPECT_EQ(bloques.bufer(1), solas.bufer(1));
        EXPECT_TRUE(bloques.entero() == cabecera + std::string(solas.unidos()) + pie);
    }
}

TEST_F(Bloques, TellsOfEachBlockOnceAndInOrder) {
    std::vector<std::int32_t> vistos;
    bloques_.decodificar(Memoria(), decodificador_, kUltimoBloque,
                         [&](std::int32_t n) { vistos.push_back(n); });
    ASSERT_EQ(vistos.size(), static_cast<std::size_t>(kUltimoBloque) + 1);
    for (std::size_t i = 0; i < vistos.size(); ++i) ASSERT_EQ(vistos[i], static_cast<std::int32_t>(i));
}

TEST_F(Bloques, TheFlagGoesFromOneRunToTheNext) {
    decodificar(Memoria(), 0);
    EXPECT_TRUE(decodificador_.registroValido());
    Memoria memoria;
    ponerRegistro(memoria.bloque(6), 0, {});
    ponerRegistro(memoria.bloque(6), 1, {});
    EXPECT_EQ(decodificar(memoria).escritas, 2u);
}

TEST_F(Bloques, TheCountTellsEmptyOnesFromDroppedOnes) {
    Memoria memoria;
    ponerRegistro(memoria.bloque(6), 0, {});
    ponerRegistro(memoria.bloque(6), 1, {.sello = kSelloMalo});  // takes the first along
    ponerRegistro(memoria.bloque(7), 0, {.sello = kSelloMalo});
    ponerRegistro(memoria.bloque(7), 1, {});
    ponerRegistro(memoria.bloque(8), 0, {});
    ponerRegistro(memoria.bloque(8), 1, {.sello = kSelloBorrado});  // takes the first along, too
    const auto recuento = decodificar(memoria);
    EXPECT_EQ(recuento.escritas, 1u);
    EXPECT_EQ(recuento.descartadas, 4u);
    EXPECT_EQ(recuento.vacias, (4096u - 9u) * 2 + 1);
}

TEST_F(Bloques, TheCountKnowsHowManyWouldHoldInTheExtendedProfile) {
    constexpr std::array<std::uint8_t, 6> kDeHoy = {0x10, 0x20, 0x30, 0x21, 0x11, 0x26};
    constexpr std::array<std::uint8_t, 6> kDia39 = {0x10, 0x20, 0x30, 0x39, 0x11, 0x26};
    Memoria memoria;
    ponerRegistro(memoria.bloque(6), 0, {.sello = kDeHoy});
    ponerRegistro(memoria.bloque(6), 1, {.sello = kDeHoy});
    ponerRegistro(memoria.bloque(7), 0, {});  // taken along by the second
    ponerRegistro(memoria.bloque(7), 1, {.sello = kDeHoy});
    ponerRegistro(memoria.bloque(8), 0, {.sello = kDeHoy});
    ponerRegistro(memoria.bloque(8), 1, {});  // written
    ponerRegistro(memoria.bloque(9), 0, {.sello = kDia39});
    ponerRegistro(memoria.bloque(9), 1, {.sello = kSelloMalo});
    const auto recuento = decodificar(memoria);
    EXPECT_EQ(recuento.escritas, 1u);
    EXPECT_EQ(recuento.descartadas, 7u);
    EXPECT_EQ(recuento.valenAmpliado, 5u);
    Decodificador ampliado(Perfil::ampliado);
    EXPECT_EQ(bloques_.decodificar(memoria, ampliado, kUltimoBloque).valenAmpliado, 0u);
    EXPECT_EQ(bloques_.decodificar(memoria, ampliado, kUltimoBloque).escritas, 6u)
        << "what the line promised";
}

TEST_F(Bloques, EmptyOnesBeyondTheLoggersMemoryAreNotCounted) {
    Memoria memoria;
    ponerRegistro(memoria.bloque(4096), 0, {.sello = kSelloMalo});
    const auto recuento = decodificar(memoria, kUltimaDeTodas);
    EXPECT_EQ(recuento.vacias, 4090u * 2);
    EXPECT_EQ(recuento.descartadas, 1u);
}

TEST_F(Bloques, TheExtendedProfileKeepsTheFirstAndDropsTheSecondOnly) {
    Memoria memoria;
    ponerRegistro(memoria.bloque(6), 0, {});
    ponerRegistro(memoria.bloque(6), 1, {.sello = kSelloMalo});
    Decodificador ampliado(Perfil::ampliado);
    const auto recuento = bloques_.decodificar(memoria, ampliado, kUltimoBloque);
    EXPECT_EQ(recuento.escritas, 1u);
    EXPECT_EQ(recuento.descartadas, 1u);
}

// --- whole random images
// -----------------------------------------------------------------------------------------

// Bytes that are often good stamps, sometimes erased, sometimes anything.
std::uint8_t byteDeSello(std::size_t lugar) {
    constexpr std::array<std::uint8_t, 6> kMaximo = {0x29, 0x59, 0x59, 0x39, 0x19, 0x19};
    return *rc::gen::weightedOneOf<std::uint8_t>(
        {{6, rc::gen::inRange<std::uint8_t>(0, static_cast<std::uint8_t>(kMaximo[lugar] + 1))},
         {1, rc::gen::element<std::uint8_t>(0x00, 0xFF, 0x1A, 0x70, 0x20)}});
}

Memoria memoriaAlAzar(std::size_t bloques) {
    Memoria memoria;
    for (std::size_t numero = 0; numero < bloques; ++numero) {
        const auto bloque = memoria.bloque(numero);
        const auto resto =
            *rc::gen::container<std::vector<std::uint8_t>>(kBytesBloque, rc::gen::arbitrary<std::uint8_t>());
        std::copy(resto.begin(), resto.end(), bloque.begin());
        for (const std::size_t mitad : {std::size_t{0}, std::size_t{32}}) {
            for (std::size_t i = 0; i < 6; ++i) bloque[mitad + i] = byteDeSello(i);
        }
    }
    return memoria;
}

constexpr std::size_t kBloquesAlAzar = 24;

RC_GTEST_PROP(ImagenAlAzar, ByteByByteGivesTheSameAsBlockByBlock, (bool ampliado, bool evaporacion)) {
    const auto memoria = memoriaAlAzar(kBloquesAlAzar);
    Decodificador porBytes(ampliado ? Perfil::ampliado : Perfil::estricto);
    porBytes.evaporacion(evaporacion);
    auto porBloques = porBytes;
    for (std::size_t numero = 0; numero < kBloquesAlAzar; ++numero) {
        const auto bloque = memoria.bloque(numero);
        for (std::size_t i = 0; i < bloque.size(); ++i) porBytes.proceso(static_cast<int>(i), bloque[i]);
        std::string texto;
        const auto buenos = porBloques.procesoBloque(bloque);
        buenos.recorrer([&](BytesMuestraConst registro) { texto += lineaDe(registro, evaporacion); });
        RC_ASSERT(texto == porBytes.lineaMuestras);
        RC_ASSERT(buenos.cuantos() == lineasEn(texto));
        RC_ASSERT(porBytes.muestra().temperatura == porBloques.muestra().temperatura);
        RC_ASSERT(porBytes.muestra().fecha == porBloques.muestra().fecha);
        RC_ASSERT(porBytes.muestra().evaporacion == porBloques.muestra().evaporacion);
        RC_ASSERT(porBytes.muestra().registroValido == porBloques.muestra().registroValido);
        porBytes.lineaMuestras.clear();
    }
}

RC_GTEST_PROP(ImagenAlAzar, TheCountAddsUpToAllRecordsAndItsLines, (bool ampliado)) {
    const auto memoria = memoriaAlAzar(kBloquesAlAzar);
    Decodificador decodificador(ampliado ? Perfil::ampliado : Perfil::estricto);
    BloquesTexto bloques;
    const auto recuento =
        bloques.decodificar(memoria, decodificador, static_cast<std::int32_t>(kBloquesAlAzar) - 1);
    RC_ASSERT(recuento.escritas == lineasEn(bloques.unidos()));
    RC_ASSERT(recuento.escritas + recuento.vacias + recuento.descartadas == (kBloquesAlAzar - 6) * 2);
}

// What the archive takes of an image is what the extended profile writes.
RC_GTEST_PROP(ImagenAlAzar, TheRecordsOneByOneAreThoseOfTheExtendedProfile, (bool evaporacion)) {
    const auto memoria = memoriaAlAzar(kBloquesAlAzar);
    Decodificador decodificador(Perfil::ampliado);
    decodificador.evaporacion(evaporacion);
    BloquesTexto bloques;
    bloques.decodificar(memoria, decodificador, kUltimoBloque);
    std::string texto;
    recorrerRegistros(memoria.imagen(), [&](std::size_t ranura, BytesMuestraConst registro) {
        RC_ASSERT(registro.data() == memoria.imagen().data() + ranura * registro_muestra::kBytes);
        texto += lineaDe(registro, evaporacion);
    });
    RC_ASSERT(texto == bloques.unidos());
}

TEST(Registros, OfAnImageOfAnyLengthThoseThatAreWholeAndNoneBeyondTheMemory) {
    const auto registro = RegistroPrueba{}.bytes();
    std::vector<std::uint8_t> imagen;
    for (std::size_t ranura = 0; ranura < 8200; ++ranura)
        imagen.insert(imagen.end(), registro.begin(), registro.end());
    const std::size_t largos[] = {0,         1,         12 * 32,   13 * 32 - 1,
                                  13 * 32,   14 * 32,   8191 * 32, 8192 * 32 - 1,
                                  8192 * 32, 8193 * 32, 8200 * 32};
    for (const auto largo : largos) {
        // Of its own length, so that a read beyond it is seen.
        const std::vector<std::uint8_t> suya(imagen.begin(),
                                             imagen.begin() + static_cast<std::ptrdiff_t>(largo));
        std::vector<std::size_t> ranuras;
        recorrerRegistros(suya, [&](std::size_t ranura, BytesMuestraConst) { ranuras.push_back(ranura); });
        const auto fin = std::min<std::size_t>(largo / 32, 8192);
        ASSERT_EQ(ranuras.size(), fin > 12 ? fin - 12 : 0) << largo;
        for (std::size_t i = 0; i < ranuras.size(); ++i) ASSERT_EQ(ranuras[i], 12 + i) << largo;
    }
}

RC_GTEST_PROP(ImagenAlAzar, EachLineHasItsColumnsAndAsciiOnly, (bool evaporacion)) {
    const auto memoria = memoriaAlAzar(kBloquesAlAzar);
    Decodificador decodificador;
    decodificador.evaporacion(evaporacion);
    BloquesTexto bloques;
    bloques.decodificar(memoria, decodificador, static_cast<std::int32_t>(kBloquesAlAzar) - 1);
    const auto texto = bloques.unidos();
    const auto comas = static_cast<std::size_t>(std::count(texto.begin(), texto.end(), ','));
    RC_ASSERT(comas == lineasEn(texto) * (evaporacion ? 10 : 9));
    for (const char c : texto) RC_ASSERT((c >= ' ' && c < 0x7F) || c == '\r' || c == '\n');
}

}  // namespace
}  // namespace telvane
