// The exchanges of the configuration, byte by byte.
#include <array>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "loggerconfig/pasos_escritura.h"
#include "loggerconfig/pasos_lectura.h"
#include "loggerconfig/pasos_serie.h"

namespace telvane {
namespace {

// The record as the logger sends it: every text has its own letter, the clock says 23:59:58 of 31/12/26.
std::vector<std::uint8_t> registro() {
    std::vector<std::uint8_t> bytes = {0x02, 0x08, 0x00, 0x51};
    const auto agregar = [&](std::size_t cuantos, char letra) {
        bytes.insert(bytes.end(), cuantos, static_cast<std::uint8_t>(letra));
    };
    agregar(30, 'u');
    agregar(35, 'b');
    agregar(15, 'a');
    agregar(15, 'o');
    agregar(5, 'h');
    const std::uint8_t resto[] = {0x30, 0x23, 0x59, 0x58, 0x31, 0x12, 0x26};
    bytes.insert(bytes.end(), std::begin(resto), std::end(resto));
    return bytes;
}

// The record's byte 0 comes with this counter.
constexpr std::int32_t kPrimero = 3;
constexpr std::int32_t kHora = kPrimero + 105;

TEST(PasoLectura, TheTwoAcknowledgesAreAnsweredWhateverTheySay) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        DatosConfig datos;
        const auto primero = pasoLectura(1, static_cast<std::uint8_t>(byte), datos);
        const auto segundo = pasoLectura(2, static_cast<std::uint8_t>(byte), datos);
        EXPECT_EQ(primero.respuesta, 0x60);
        EXPECT_EQ(primero.hito, HitoLectura::ninguno);
        EXPECT_EQ(segundo.respuesta, 0x55);
        EXPECT_EQ(segundo.hito, HitoLectura::ninguno);
        EXPECT_EQ(datos.Nserie, "");
    }
}

TEST(PasoLectura, EveryByteOfTheRecordIsEchoedAndStored) {
    const auto bytes = registro();
    ASSERT_EQ(bytes.size(), 111u);
    DatosConfig datos;
    datos.Nserie = "of another read";
    for (std::size_t k = 0; k < bytes.size(); ++k) {
        EXPECT_EQ(pasoLectura(kPrimero + static_cast<std::int32_t>(k), bytes[k], datos).respuesta, bytes[k])
            << k;
    }
    EXPECT_EQ(datos.Nserie, "02080051");
    EXPECT_EQ(datos[CampoTexto::usuario], std::string(30, 'u'));
    EXPECT_EQ(datos[CampoTexto::ubicacion], std::string(35, 'b'));
    EXPECT_EQ(datos[CampoTexto::latitud], std::string(15, 'a'));
    EXPECT_EQ(datos[CampoTexto::longitud], std::string(15, 'o'));
    EXPECT_EQ(datos[CampoTexto::altitud], std::string(5, 'h'));
    EXPECT_EQ(datos.intervaloCodigo, 0x30);
    EXPECT_EQ(datos.reloj, (std::array<std::string, 6>{"23", "59", "58", "31", "12", "26"}));
}

TEST(PasoLectura, EachByteSaysWhatItCompleted) {
    const auto bytes = registro();
    DatosConfig datos;
    const std::array<std::size_t, 6> fines = {4, 34, 69, 84, 99, 104};  // of the number and of the five texts
    for (std::size_t k = 0; k < bytes.size(); ++k) {
        const auto paso = pasoLectura(kPrimero + static_cast<std::int32_t>(k), bytes[k], datos);
        auto esperado = HitoLectura::ninguno;
        if (k == 3) esperado = HitoLectura::serie;
        if (k >= 4 && k < 104) esperado = HitoLectura::texto;
        if (k == 104) esperado = HitoLectura::intervalo;
        if (k == 107) esperado = HitoLectura::hora;
        if (k == 110) esperado = HitoLectura::fin;
        EXPECT_EQ(paso.hito, esperado) << k;
        EXPECT_EQ(paso.campo.has_value(), esperado == HitoLectura::texto) << k;
        if (!paso.campo) continue;
        const auto campo = static_cast<std::size_t>(*paso.campo);
        EXPECT_TRUE(k >= fines[campo] && k < fines[campo + 1]) << k;
    }
}

TEST(PasoLectura, TheSerialNumberIsThereWithItsFourthByteOnly) {
    DatosConfig datos;
    pasoLectura(3, 0x12, datos);
    pasoLectura(4, 0x34, datos);
    EXPECT_EQ(pasoLectura(5, 0x9A, datos).hito, HitoLectura::ninguno);
    EXPECT_EQ(pasoLectura(6, 0x78, datos).hito, HitoLectura::serie);
    EXPECT_EQ(datos.Nserie, "12349:78");
}

TEST(PasoLectura, AClockByteIsGoodUpToItsBoundAsARawValue) {
    const std::array<unsigned, 6> cotas = {0x23, 0x59, 0x59, 0x59, 0x59, 0x64};
    for (std::size_t parte = 0; parte < cotas.size(); ++parte) {
        for (unsigned byte = 0; byte < 256; ++byte) {
            DatosConfig datos;
            const auto paso =
                pasoLectura(kHora + static_cast<std::int32_t>(parte), static_cast<std::uint8_t>(byte), datos);
            const bool bueno = byte <= cotas[parte];
            auto esperado = HitoLectura::ninguno;
            if (parte == 2) esperado = HitoLectura::hora;
            if (parte == 5) esperado = HitoLectura::fin;
            if (!bueno) esperado = parte < 3 ? HitoLectura::horaMala : HitoLectura::fechaMala;
            if (!bueno && parte == 5) esperado = HitoLectura::finFechaMala;
            EXPECT_EQ(paso.hito, esperado) << parte << ": " << byte;
            EXPECT_EQ(paso.respuesta, byte) << "a refused byte is echoed as well";
            const std::string digitos = {static_cast<char>('0' + byte / 16),
                                         static_cast<char>('0' + byte % 16)};
            EXPECT_EQ(datos.reloj[parte], bueno ? digitos : std::to_string(byte)) << parte;
        }
    }
}

TEST(PasoLectura, ACounterOutOfStepIsNeitherStoredNorAnswered) {
    for (const std::int32_t contador : {-1, 0, 114, 115, 1 << 30, -(1 << 30)}) {
        DatosConfig datos;
        const auto paso = pasoLectura(contador, 0x11, datos);
        EXPECT_EQ(paso.hito, HitoLectura::fueraDePaso) << contador;
        EXPECT_FALSE(paso.respuesta) << contador;
        EXPECT_EQ(datos.Nserie, "") << contador;
        EXPECT_EQ(datos.reloj, (std::array<std::string, 6>{})) << contador;
    }
}

TEST(PasoLectura, TheLastByteIsTheHundredAndThirteenth) {
    EXPECT_EQ(kContadorFinLectura, 113);
    DatosConfig datos;
    EXPECT_EQ(pasoLectura(kContadorFinLectura, 0x26, datos).hito, HitoLectura::fin);
}

TEST(Reloj, ItsSlotsAreSecondsOfTheDay) {
    EXPECT_EQ(segundosDeReloj({"01", "02", "03", "", "", ""}), 3723);
    EXPECT_EQ(segundosDeReloj({"23", "59", "59", "", "", ""}), 86399);
    EXPECT_EQ(segundosDeReloj({"24", "00", "00", "", "", ""}), 0) << "a refused hour carries on";
    EXPECT_EQ(segundosDeReloj({"36", "00", "01", "", "", ""}), 43201);
    EXPECT_EQ(segundosDeReloj({"1?", "", "x", "", "", ""}), 3600) << "leading digits only";
}

TEST(Reloj, ItsSlotsAreADate) {
    const auto dia = diaDeReloj({"", "", "", "31", "12", "26"});
    EXPECT_EQ(dia.anio, 2026);
    EXPECT_EQ(dia.mes, 12);
    EXPECT_EQ(dia.dia, 31);
    EXPECT_EQ(diaDeReloj({"", "", "", "", "", ""}).anio, 2000);
    EXPECT_EQ(diaDeReloj({"", "", "", "", "", ""}).dia, 0);
}

TEST(RelojAceptado, EverySlotEndsAtItsBound) {
    using Reloj = std::array<std::string, 6>;
    EXPECT_TRUE(relojAceptado({"00", "00", "00", "00", "00", "00"}));
    EXPECT_TRUE(relojAceptado({"23", "59", "58", "31", "12", "26"}));
    // Days and months go further than the calendar.
    const Reloj cotas = {"23", "59", "59", "59", "59", "64"};
    EXPECT_TRUE(relojAceptado(cotas));
    for (std::size_t parte = 0; parte < cotas.size(); ++parte) {
        for (int valor = 0; valor < 100; ++valor) {
            Reloj reloj = cotas;
            reloj[parte] = {static_cast<char>('0' + valor / 10), static_cast<char>('0' + valor % 10)};
            EXPECT_EQ(relojAceptado(reloj), reloj[parte] <= cotas[parte]) << parte << ' ' << valor;
        }
    }
}

TEST(RelojAceptado, ASlotIsTwoDecimalDigits) {
    const std::array<std::string, 6> bueno = {"01", "01", "01", "01", "01", "01"};
    ASSERT_TRUE(relojAceptado(bueno));
    for (std::size_t parte = 0; parte < bueno.size(); ++parte) {
        for (const char* malo : {"", "1", "001", "0:", ":0", "0/", "/0", " 1", "1A"}) {
            auto reloj = bueno;
            reloj[parte] = malo;
            EXPECT_FALSE(relojAceptado(reloj)) << parte << ' ' << malo;
        }
    }
}

TEST(Rellenado, BlanksGoInFrontUpToTheWidth) {
    EXPECT_EQ(rellenado("12", 5), "   12");
    EXPECT_EQ(rellenado("12345", 5), "12345");
    EXPECT_EQ(rellenado("", 3), "   ");
    EXPECT_EQ(rellenado("ñ", 3), "  ñ") << "characters are counted, not bytes";
    EXPECT_EQ(rellenado(" 1 ", 5), "   1 ") << "what fits is left as it is";
}

TEST(Rellenado, ALongerTextLosesItsOuterBlanksAndThenItsTail) {
    EXPECT_EQ(rellenado("  1234   ", 5), " 1234") << "those behind first";
    EXPECT_EQ(rellenado("1234   ", 5), "1234 ") << "only as many as must go";
    EXPECT_EQ(rellenado("   1234", 5), " 1234");
    EXPECT_EQ(rellenado("   12345", 5), "12345");
    EXPECT_EQ(rellenado(" 123456 ", 5), "12345");
    EXPECT_EQ(rellenado("ñandúes", 5), "ñandú");
}

ConfigAEnviar configuracion() {
    return {.textos = {"Ana", "Norte", "34 S", "58 O", "1234"},
            .intervaloCodigo = 0x15,
            .hora = 23,
            .minuto = 59,
            .segundo = 58,
            .dia = 31,
            .mes = 12,
            .anio = 2026};
}

TEST(MensajeConfig, HasTheTabledBytes) {
    const auto mensaje = mensajeConfig({.textos = {"", "Norte", "", "", "1234"},
                                        .intervaloCodigo = 0x30,
                                        .hora = 23,
                                        .minuto = 59,
                                        .segundo = 58,
                                        .dia = 31,
                                        .mes = 12,
                                        .anio = 2024});
    ASSERT_EQ(mensaje.size(), 107u);
    EXPECT_EQ(mensaje.substr(0, 30), std::string(30, ' '));
    EXPECT_EQ(mensaje.substr(30, 35), std::string(30, ' ') + "Norte");
    EXPECT_EQ(mensaje.substr(95, 5), " 1234");
    EXPECT_EQ(mensaje.substr(100), "\x30\x23\x59\x58\x31\x12\x24");
}

TEST(MensajeConfig, IsAlways107BytesWhateverTheTexts) {
    const std::string largo(50, 'x');
    const std::string conTildes = "Estación ñandú º €";
    const std::string malFormado(60, '\x80');
    for (const auto& texto : {largo, conTildes, fmt::format("  {}{:40}", conTildes, ""), std::string("漢字"),
                              malFormado, malFormado + "ñ"}) {
        EXPECT_EQ(mensajeConfig({.textos = {texto, texto, texto, texto, texto}}).size(), 107u) << texto;
    }
}

TEST(MensajeConfig, HasEveryFieldInItsPlace) {
    EXPECT_EQ(mensajeConfig(configuracion()), std::string(27, ' ') + "Ana" + std::string(30, ' ') + "Norte" +
                                                  std::string(11, ' ') + "34 S" + std::string(11, ' ') +
                                                  "58 O" + " 1234" + "\x15\x23\x59\x58\x31\x12\x26");
}

TEST(MensajeConfig, TheYearIsSentWithoutItsCentury) {
    auto config = configuracion();
    for (const auto& [anio, byte] :
         {std::pair{2000, '\x00'}, {2009, '\x09'}, {2099, '\x99'}, {1999, '\x99'}}) {
        config.anio = anio;
        EXPECT_EQ(mensajeConfig(config).back(), byte) << anio;
    }
}

TEST(MensajeConfig, WhatNobodySetIsMidnightOfTheFirstDayOf2000) {
    EXPECT_EQ(mensajeConfig({}), std::string(100, ' ') + std::string("\0\0\0\0\x01\x01\0", 7));
}

TEST(PasoEscritura, OneByteOfTheMessageForEachByteOfTheLogger) {
    const auto mensaje = mensajeConfig(configuracion());
    const auto orden = pasoEscritura(1, mensaje);
    EXPECT_EQ(orden.respuesta, 0x96);
    EXPECT_EQ(orden.hito, HitoEnvio::ninguno);
    for (std::size_t k = 0; k < 107; ++k) {
        const auto paso = pasoEscritura(static_cast<std::int32_t>(k) + 2, mensaje);
        EXPECT_EQ(paso.respuesta, static_cast<std::uint8_t>(mensaje[k])) << k;
        EXPECT_EQ(paso.hito, k == 106 ? HitoEnvio::fin : HitoEnvio::ninguno) << k;
    }
}

TEST(PasoEscritura, AByteOutOfStepIsNotAnswered) {
    const auto mensaje = mensajeConfig(configuracion());
    for (const std::int32_t contador : {-1, 0, 109, 110, 1 << 30}) {
        const auto paso = pasoEscritura(contador, mensaje);
        EXPECT_EQ(paso.hito, HitoEnvio::fueraDePaso) << contador;
        EXPECT_FALSE(paso.respuesta) << contador;
    }
}

TEST(EmpacarSerie, TwoDigitsAByteAndZerosBehindAShortEntry) {
    EXPECT_EQ(empacarSerie("12345678"), (SerieEmpacada{0x12, 0x34, 0x56, 0x78}));
    EXPECT_EQ(empacarSerie("2080"), (SerieEmpacada{0x20, 0x80, 0, 0}));
    EXPECT_EQ(empacarSerie("90909"), (SerieEmpacada{0x90, 0x90, 0x90, 0}));
    EXPECT_EQ(empacarSerie(""), SerieEmpacada{});
    EXPECT_EQ(empacarSerie("123456789"), (SerieEmpacada{0x12, 0x34, 0x56, 0x78}));
    EXPECT_EQ(empacarSerie(std::string_view("2080999").substr(0, 4)), (SerieEmpacada{0x20, 0x80, 0, 0}));
    EXPECT_EQ(empacarSerie("9:@O////"), (SerieEmpacada{0x9A, 0x0F, 0xFF, 0xFF})) << "the low nibble alone";
}

TEST(MotivoSerie, EightDigitsAndNothingElse) {
    EXPECT_EQ(motivoSerie("00000000"), "");
    EXPECT_EQ(motivoSerie("99999999"), "");
    EXPECT_NE(motivoSerie("0208:05?"), "") << "a logger is given digits";
    EXPECT_EQ(motivoSerieMostrada("0208:05?"), "");
    EXPECT_EQ(motivoSerieMostrada("00000000"), "");
    for (const auto* malo : {"0208005", "020800500", "0208005A", "0208005a", "0208005@", "0208005/"})
        EXPECT_EQ(motivoSerieMostrada(malo), "el número de serie tiene 8 cifras, ceros incluidos") << malo;
    for (const auto* malo : {"", "1234567", "123456789", "1234567x", "/1234567", ":1234567", " 2080051"}) {
        EXPECT_EQ(motivoSerie(malo), "el número de serie tiene 8 cifras, ceros incluidos") << malo;
    }
}

TEST(PasoSerie, TheCommandTheFourBytesAndTheLastOnceMore) {
    const SerieEmpacada serie = {0x02, 0x08, 0x05, 0x12};
    struct Fila {
        const char* leyenda;
        std::int32_t contador;
        std::uint8_t respuesta;
        HitoEnvio hito;
    };
    for (const auto& fila : {Fila{"the command", 1, 0x64, HitoEnvio::ninguno},
                             {"first byte", 2, 0x02, HitoEnvio::ninguno},
                             {"second byte", 3, 0x08, HitoEnvio::ninguno},
                             {"third byte", 4, 0x05, HitoEnvio::ninguno},
                             {"fourth byte", 5, 0x12, HitoEnvio::ninguno},
                             {"the fourth once more", 6, 0x12, HitoEnvio::fin}}) {
        const auto paso = pasoSerie(fila.contador, serie);
        EXPECT_EQ(paso.respuesta, fila.respuesta) << fila.leyenda;
        EXPECT_EQ(paso.hito, fila.hito) << fila.leyenda;
    }
}

TEST(PasoSerie, AByteBeyondTheSixthIsUnexpectedAndNotAnswered) {
    for (const std::int32_t contador : {-1, 0, 7, 701}) {
        const auto paso = pasoSerie(contador, {});
        EXPECT_EQ(paso.hito, HitoEnvio::fueraDePaso) << contador;
        EXPECT_FALSE(paso.respuesta) << contador;
    }
}

}  // namespace
}  // namespace telvane
