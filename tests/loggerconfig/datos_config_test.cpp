#include "loggerconfig/datos_config.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "loggerconfig/pasos_lectura.h"
#include "platform/cp1252.h"
#include "ui/forma_inicio.h"

namespace telvane {
namespace {

// A header of 432 bytes: serial 02080050, the given texts padded with blanks, interval code.
std::vector<std::uint8_t> cabecera(std::uint8_t intervalo = 0x10, std::string_view usuario = "Ana") {
    using namespace registro_config;
    std::vector<std::uint8_t> bytes(kCabecera, 0xEE);
    std::fill(bytes.begin() + kUsuario, bytes.begin() + kIntervalo, std::uint8_t{' '});
    const std::uint8_t serie[] = {0x02, 0x08, 0x00, 0x50};
    std::copy(std::begin(serie), std::end(serie), bytes.begin());
    const auto poner = [&](std::size_t lugar, std::string_view texto) {
        std::copy(texto.begin(), texto.end(), bytes.begin() + static_cast<std::ptrdiff_t>(lugar));
    };
    poner(kUsuario, usuario);
    poner(kUbicacion, "Finca Norte");
    poner(kLatitud, "34 S");
    poner(kLongitud, "58 O");
    poner(kAltitud, "25");
    bytes[kIntervalo] = intervalo;
    return bytes;
}

TextoDeCabecera leer(const std::vector<std::uint8_t>& bytes) {
    TextoDeCabecera texto;
    for (std::size_t k = 0; k < bytes.size(); ++k) {
        EXPECT_TRUE(texto.config(static_cast<std::int32_t>(k), bytes[k])) << k;
    }
    return texto;
}

std::string rellenar(std::string_view texto, std::size_t ancho) {
    return std::string(texto) + std::string(ancho - texto.size(), ' ');
}

TEST(LoTieneElRegistrador, EveryCharacterOfItsCodePageAndNoOther) {
    std::vector<std::uint8_t> todos;
    for (unsigned b = 0; b < 256; ++b) todos.push_back(static_cast<std::uint8_t>(b));
    EXPECT_TRUE(loTieneElRegistrador(utf8DeCp1252(todos)));
    EXPECT_TRUE(loTieneElRegistrador(""));
    for (const auto* otro : {"Łódź", "日本", "😀", "Finca ≈", "n\u0303", "\xC3"})
        EXPECT_FALSE(loTieneElRegistrador(otro)) << otro;
}

TEST(RegistroConfig, TheFieldsAreWhereTheLoggerPutsThem) {
    using namespace registro_config;
    const std::array<std::size_t, 10> lugares = {kSerie,   kUsuario,   kUbicacion, kLatitud, kLongitud,
                                                 kAltitud, kIntervalo, kReloj,     kFin,     kCabecera};
    EXPECT_EQ(lugares, (std::array<std::size_t, 10>{0, 4, 34, 69, 84, 99, 104, 105, 111, 432}));
    EXPECT_EQ(kAnchos, (std::array<int, 5>{30, 35, 15, 15, 5}));
}

TEST(RegistroConfig, WhatNobodyReadIsEmpty) {
    const DatosConfig datos;
    EXPECT_EQ(datos.intervaloCodigo, 0);
    EXPECT_EQ(datos.Nserie, "");
    EXPECT_EQ(datos[CampoTexto::altitud], "");
}

TEST(Evaporacion, NumbersFrom2080000ToBefore2080100HaveIt) {
    EXPECT_TRUE(llevaEvaporacion(2080000.0f));
    EXPECT_TRUE(llevaEvaporacion(2080099.0f));
    EXPECT_FALSE(llevaEvaporacion(2080100.0f));
    EXPECT_FALSE(llevaEvaporacion(2079999.0f));
}

TEST(DigitosBcd, EachByteGivesItsTwoNibblesPlusTheZero) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        const auto digitos = digitosBcd(static_cast<std::uint8_t>(byte));
        EXPECT_EQ(digitos[0], static_cast<char>('0' + byte / 16)) << byte;
        EXPECT_EQ(digitos[1], static_cast<char>('0' + byte % 16)) << byte;
    }
}

TEST(DigitosBcd, ANibbleAboveNineGivesTheCharacterThatFollows) {
    EXPECT_EQ(digitosBcd(0x9A), (std::array<char, 2>{'9', ':'}));
    EXPECT_EQ(digitosBcd(0x1F), (std::array<char, 2>{'1', '?'}));
}

TEST(EmpacarBcd, IsTheInverseOfTheDigits) {
    for (int valor = 0; valor < 100; ++valor) {
        const auto digitos = digitosBcd(empacarBcd(valor));
        EXPECT_EQ((digitos[0] - '0') * 10 + digitos[1] - '0', valor);
    }
}

TEST(IndiceIntervalo, OnlySixCodesHaveOne) {
    const std::vector<std::pair<unsigned, std::string>> codigos = {{0x01, "1"},  {0x05, "5"},  {0x10, "10"},
                                                                   {0x15, "15"}, {0x30, "30"}, {0x60, "60"}};
    std::size_t encontrados = 0;
    for (unsigned byte = 0; byte < 256; ++byte) {
        const auto indice = indiceIntervalo(static_cast<std::uint8_t>(byte));
        if (encontrados < codigos.size() && codigos[encontrados].first == byte) {
            ASSERT_EQ(indice, encontrados) << byte;
            EXPECT_EQ(kIntervalos[*indice].texto, codigos[encontrados].second);
            EXPECT_EQ(std::to_string(kIntervalos[*indice].minutos), codigos[encontrados].second);
            ++encontrados;
        } else {
            EXPECT_EQ(indice, std::nullopt) << byte;
        }
    }
    EXPECT_EQ(encontrados, codigos.size());
}

TEST(NumeroDeSerie, AreTheLeadingDigitsInSinglePrecision) {
    EXPECT_EQ(numeroDeSerie("02080050"), 2080050.0f);
    EXPECT_EQ(numeroDeSerie("99999999"), 100000000.0f);
    EXPECT_EQ(numeroDeSerie("0208005:"), 208005.0f);
    EXPECT_EQ(numeroDeSerie(":2080050"), 0.0f);
    EXPECT_EQ(numeroDeSerie("1e5"), 1.0f);
    EXPECT_EQ(numeroDeSerie("12.5"), 12.0f);
    EXPECT_EQ(numeroDeSerie("-12"), 0.0f);
    EXPECT_EQ(numeroDeSerie(""), 0.0f);
}

TEST(Resumen, SevenLinesAndTwoEmptyOnesWithABlankBehindTheColon) {
    EXPECT_EQ(resumenTrasLectura("60", "Nro  : 12345678", {"Ana", "Finca", "34 S", "58 O", "25"}),
              "Muestras cada 60 Minutos\r\n"
              "Nro  : 12345678\r\n"
              "Usuario: Ana\r\n"
              "Ubicacion: Finca\r\n"
              "Latitud: 34 S\r\n"
              "Longitud: 58 O\r\n"
              "Altitud: 25\r\n"
              "\r\n"
              "\r\n");
}

TEST(Resumen, ABlankUserKeepsItsThirtyBlanks) {
    const std::string blancos(30, ' ');
    EXPECT_NE(resumenTrasLectura("1", "", {blancos, "", "", "", ""}).find("Usuario: " + blancos + "\r\n"),
              std::string::npos);
}

TEST(Config, TheHeadersTextHasLabelsOfItsOwn) {
    EXPECT_EQ(leer(cabecera()).texto,
              "Numero de serie : 02080050\r\n"
              "Usuario:  " +
                  rellenar("Ana", 30) + "\r\n" + "Ubicacion :  " + rellenar("Finca Norte", 35) + "\r\n" +
                  "Latitud  :  " + rellenar("34 S", 15) + "\r\n" + "Longitud:  " + rellenar("58 O", 15) +
                  "\r\n" + "Altitud :  " + rellenar("25", 5) + "\r\n" + "Muestras cada 10 Minutos\r\n");
}

TEST(Config, EachLineAppearsWithTheLastByteOfItsField) {
    const auto bytes = cabecera();
    TextoDeCabecera texto;
    std::vector<std::size_t> finales;
    for (std::size_t k = 0; k < bytes.size(); ++k) {
        const auto antes = texto.texto.size();
        texto.config(static_cast<std::int32_t>(k), bytes[k]);
        if (texto.texto.size() != antes) finales.push_back(k);
    }
    EXPECT_EQ(finales, (std::vector<std::size_t>{3, 33, 68, 83, 98, 103, 104}));
    EXPECT_EQ(texto.recogido, "");
}

TEST(Config, OfAWholeImageTheHeaderIsRead) {
    auto bytes = cabecera();
    const auto esperado = leer(bytes);
    bytes.resize(262144, 0x02);
    const auto leido = leerCabecera(bytes);
    EXPECT_EQ(leido.texto, esperado.texto);
    EXPECT_EQ(leido.digitosSerie, "02080050");
    EXPECT_EQ(leido.intervalo, "10");
    EXPECT_TRUE(leido.llevaEvaporacion());
}

TEST(Config, Code0x60GivesSixtyMinutes) {
    EXPECT_TRUE(leer(cabecera(0x60)).texto.ends_with("Muestras cada 60 Minutos\r\n"));
}

TEST(Config, AnUnknownCodeLeavesTheIntervalAsItWas) {
    TextoDeCabecera texto;
    texto.intervalo = "15";
    texto.config(104, 0x20);
    EXPECT_EQ(texto.intervalo, "15");
    EXPECT_EQ(texto.texto, "Muestras cada 15 Minutos\r\n");
}

TEST(Config, ASerialByte0x9AGivesNineAndAColon) {
    auto bytes = cabecera();
    bytes[0] = 0x9A;
    EXPECT_TRUE(leer(bytes).texto.starts_with("Numero de serie : 9:080050\r\n"));
}

TEST(Config, TheTextsAreWindows1252) {
    EXPECT_NE(leer(cabecera(0x10, "Mu\xF1oz \x80")).texto.find("Usuario:  Muñoz €"), std::string::npos);
}

TEST(Config, AddsOnlyAndNeverErasesTheText) {
    TextoDeCabecera texto;
    texto.texto = "antes";
    texto.config(104, 0x01);
    EXPECT_EQ(texto.texto, "antesMuestras cada 1 Minutos\r\n");
}

TEST(Config, OutsideTheHeaderItDoesNothing) {
    TextoDeCabecera texto;
    EXPECT_TRUE(texto.config(431, 0x20));
    EXPECT_FALSE(texto.config(432, 0x20));
    EXPECT_FALSE(texto.config(-1, 0x20));
    EXPECT_EQ(texto.texto, "");
    EXPECT_EQ(texto.digitosSerie, "");
}

// A field takes exactly what the record holds of it.
TEST(CamposDeLaForma, HaveTheRecordsWidths) {
    FormaInicio forma;
    const auto campos = forma.camposTexto();
    constexpr std::array<std::size_t, kAnchos.size() + 1> kLugares = {
        registro_config::kUsuario,  registro_config::kUbicacion, registro_config::kLatitud,
        registro_config::kLongitud, registro_config::kAltitud,   registro_config::kIntervalo};
    for (std::size_t i = 0; i < campos.size(); ++i) {
        EXPECT_EQ(campos[i]->maxLength(), kAnchos[i]) << campos[i]->nombre();
        EXPECT_EQ(kLugares[i + 1] - kLugares[i], static_cast<std::size_t>(kAnchos[i])) << campos[i]->nombre();
    }
    // Two digits a byte.
    EXPECT_EQ(static_cast<std::size_t>(forma.Text10.maxLength()),
              2 * (registro_config::kUsuario - registro_config::kSerie));
}

TEST(DatosDeCabecera, TakesEveryFieldOfAnImage) {
    auto bytes = cabecera(0x60, "Ana ");
    bytes.resize(262144, 0x02);
    const auto datos = datosDeCabecera(bytes);
    EXPECT_EQ(datos.Nserie, "02080050");
    EXPECT_EQ(datos[CampoTexto::usuario], rellenar("Ana", 30));
    EXPECT_EQ(datos[CampoTexto::ubicacion], rellenar("Finca Norte", 35));
    EXPECT_EQ(datos[CampoTexto::latitud], rellenar("34 S", 15));
    EXPECT_EQ(datos[CampoTexto::longitud], rellenar("58 O", 15));
    EXPECT_EQ(datos[CampoTexto::altitud], rellenar("25", 5));
    EXPECT_EQ(datos.intervaloCodigo, 0x60);
}

TEST(TextoConfig, HasTheLinesOfARead) {
    EXPECT_EQ(lineaSerie("02080050"), "Nro  : 02080050");
    EXPECT_EQ(textoConfig(datosDeCabecera(cabecera(0x60))),
              "Muestras cada 60 Minutos\r\n"
              "Nro  : 02080050\r\n"
              "Usuario: " +
                  rellenar("Ana", 30) + "\r\nUbicacion: " + rellenar("Finca Norte", 35) +
                  "\r\nLatitud: " + rellenar("34 S", 15) + "\r\nLongitud: " + rellenar("58 O", 15) +
                  "\r\nAltitud: " + rellenar("25", 5) + "\r\n\r\n\r\n");
    EXPECT_EQ(textoConfig(DatosConfig{}),
              "Muestras cada  Minutos\r\nNro  : \r\nUsuario: \r\nUbicacion: \r\nLatitud: "
              "\r\nLongitud: \r\nAltitud: \r\n\r\n\r\n")
        << "an interval that is none of the six has no text";
}

TEST(Lectura, SaysWhichPartOfTheClockIsBad) {
    EXPECT_EQ(avisoDe(HitoLectura::horaMala), "hora mal");
    EXPECT_EQ(avisoDe(HitoLectura::fechaMala), "fecha mal");
    EXPECT_EQ(avisoDe(HitoLectura::finFechaMala), "fecha mal");
    for (const auto hito :
         {HitoLectura::ninguno, HitoLectura::serie, HitoLectura::texto, HitoLectura::intervalo,
          HitoLectura::hora, HitoLectura::fin, HitoLectura::fueraDePaso})
        EXPECT_EQ(avisoDe(hito), "");
}

}  // namespace
}  // namespace telvane
