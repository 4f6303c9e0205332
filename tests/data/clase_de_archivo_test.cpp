#include "data/clase_de_archivo.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "loggerconfig/datos_config.h"
#include "simulator/memoria_simulada.h"

namespace telvane {
namespace {

using Imagen = std::vector<std::uint8_t>;

std::string_view claseDe(const std::string& texto) {
    return otraClase(std::span(reinterpret_cast<const std::uint8_t*>(texto.data()), texto.size()));
}

// As an editor saves it that calls this "Unicode".
std::string enUtf16(const std::string& texto, bool menorDelante) {
    std::string ancho = menorDelante ? "\xFF\xFE" : "\xFE\xFF";
    for (const char c : texto) {
        if (!menorDelante) ancho += '\0';
        ancho += c;
        if (menorDelante) ancho += '\0';
    }
    return ancho;
}

std::string repetido(std::string_view texto, int veces) {
    std::string todo;
    for (int i = 0; i < veces; ++i) todo += texto;
    return todo;
}

TEST(OtraClase, ATextIsNoMemoryWhateverItsLength) {
    for (const int veces : {1, 3, 30, 20'000}) {
        const auto tabla = repetido("20/11/2018,00:00:00,55.1,20.3,180,S,3.6,0.1,101.3,0\r\n", veces);
        EXPECT_EQ(claseDe(tabla), "un texto") << veces;
        EXPECT_EQ(claseDe(enUtf16(tabla, true)), "un texto") << veces;
        EXPECT_EQ(claseDe(enUtf16(tabla, false)), "un texto") << veces;
        EXPECT_EQ(claseDe(repetido(" Equipo Registrador VELTRA \r\n", veces)), "un texto") << veces;
        EXPECT_EQ(claseDe(repetido("2023-01-02\t7\n", veces)), "un texto") << veces;
        EXPECT_EQ(claseDe(repetido("Estación: la niña\n", veces)), "un texto") << veces;
    }
}

// Also one that a program wrote without a line's end.
TEST(OtraClase, ADataSheetIsAText) {
    EXPECT_EQ(claseDe(R"({"descargada":"2026-01-02T03:04:05Z","errores_de_linea":0})"), "un texto");
    EXPECT_EQ(claseDe(R"({"descargada":"2026-01-02T03:04:05Z","modelo":"x"})"), "");
    Imagen imagen = memoriaSimulada(Clima(7));
    std::ranges::copy(std::string_view(R"("descargada""errores_de_linea" )"), imagen.begin() + 4);
    EXPECT_EQ(otraClase(imagen), "");
}

TEST(OtraClase, OtherKindsAreKnownByTheirBeginning) {
    EXPECT_EQ(claseDe("\x89PNG\r\n\x1A\n" + std::string(1000, '\x7E')), "una imagen PNG");
    EXPECT_EQ(claseDe("PK\x03\x04" + std::string(100, '\0')), "un archivo comprimido o una planilla");
    EXPECT_EQ(claseDe("\x1F\x8B\x08" + std::string(100, '\0')), "un archivo comprimido");
    EXPECT_EQ(claseDe("%PDF-1.7\n"), "un documento PDF");
    EXPECT_EQ(claseDe("GIF89a" + std::string(100, '\0')), "una imagen GIF");
    EXPECT_EQ(claseDe("PGDMP" + std::string(100, '\0')), "una base de datos");
    EXPECT_EQ(claseDe("\xEF\xBB\xBFhola"), "un texto");
    EXPECT_EQ(claseDe("nombre" + std::string(251, '\0') + "ustar" + std::string(100, '\0')),
              "un archivo tar");
    EXPECT_EQ(claseDe("SQLite format 3" + std::string(85, '\0')), "una base de datos");
}

TEST(OtraClase, EveryBeginningOfAMemoryIsOne) {
    const Imagen imagen = memoriaSimulada(Clima(7));
    auto sinSerie = imagen;
    for (const auto i : {0U, 1U, 2U, 3U}) sinSerie[i] = 'x';
    auto sinReloj = imagen;
    for (std::size_t i = 448; i < sinReloj.size(); i += 32) std::fill_n(sinReloj.begin() + long(i), 6, 0xA5);
    for (const auto& una :
         {imagen, sinSerie, sinReloj, Imagen(imagen.size(), 0xFF), Imagen(imagen.size(), 0x00),
          Imagen(imagen.size(), 'x'), Imagen(imagen.size(), '\n')}) {
        for (std::size_t largo = 0; largo <= 2000; ++largo)
            EXPECT_EQ(otraClase(std::span(una).first(largo)), "") << largo;
        EXPECT_EQ(otraClase(una), "");
    }
}

// A number, an interval and a clock that are letters all: nothing of it tells but where they stand.
TEST(OtraClase, AHeaderOfLettersIsAMemorysBeginning) {
    Imagen cabecera(384, ' ');
    std::fill_n(cabecera.begin(), 4, 0x42);
    cabecera[registro_config::kIntervalo] = 0x30;
    cabecera[registro_config::kReloj + 1] = '\t';
    cabecera[200] = '\n';
    EXPECT_EQ(otraClase(cabecera), "");
    cabecera[registro_config::kIntervalo] = 'F';
    EXPECT_EQ(otraClase(cabecera), "un texto");
}

TEST(OtraClase, RandomBytesMayBeAMemory) {
    std::uint32_t azar = 1;
    for (int vez = 0; vez < 200; ++vez) {
        Imagen bytes(4096);
        for (auto& b : bytes) b = static_cast<std::uint8_t>((azar = azar * 1664525U + 1013904223U) >> 24U);
        EXPECT_EQ(otraClase(bytes), "") << vez;
    }
}

TEST(PareceFicha, AlsoWhereAnEditorMadeItWide) {
    const std::string ficha = R"({"descargada": "2026-01-02T03:04:05Z", "errores_de_linea": 0})";
    const auto parece = [](const std::string& texto) {
        return pareceFicha(std::span(reinterpret_cast<const std::uint8_t*>(texto.data()), texto.size()));
    };
    EXPECT_TRUE(parece(ficha));
    EXPECT_TRUE(parece(enUtf16(ficha, true)));
    EXPECT_TRUE(parece(enUtf16(ficha, false)));
    EXPECT_FALSE(parece(enUtf16("Fecha,Hora", true)));
}

}  // namespace
}  // namespace telvane
