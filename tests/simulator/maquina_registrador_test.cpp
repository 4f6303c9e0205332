#include "simulator/maquina_registrador.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/cliente.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;

TEST(MaquinaRegistrador, TheProbeGetsAFrameAndTheLoggerStaysAtRest) {
    MaquinaRegistrador maquina;
    Cliente pc(maquina);
    EXPECT_THAT(pc.enviar(kSonda), SizeIs(kBytesMarco));
    EXPECT_EQ(maquina.intercambio(), Intercambio::reposo);
    EXPECT_THAT(pc.enviar(kSonda), SizeIs(kBytesMarco));
}

TEST(MaquinaRegistrador, AtRestItHearsTheProbeAndTheOpeningOnly) {
    for (int byte = 0; byte < 256; ++byte) {
        MaquinaRegistrador maquina;
        const auto respuesta = Cliente(maquina).enviar(static_cast<std::uint8_t>(byte));
        const std::size_t esperado = byte == kSonda ? kBytesMarco : byte == kApertura ? 1 : 0;
        EXPECT_THAT(respuesta, SizeIs(esperado)) << byte;
    }
}

TEST(MaquinaRegistrador, OnlyFourBytesSelectAnExchange) {
    for (int byte = 0; byte < 256; ++byte) {
        MaquinaRegistrador maquina;
        Cliente pc(maquina);
        pc.enviar(kApertura);
        const auto respuesta = pc.enviar(static_cast<std::uint8_t>(byte));
        const bool elige =
            byte == kSaludo || byte == kLeerConfig || byte == kEscribirConfig || byte == kEscribirSerie;
        EXPECT_THAT(respuesta, SizeIs(elige ? 1 : 0)) << byte;
        EXPECT_EQ(maquina.intercambio() != Intercambio::reposo, elige) << byte;
    }
}

TEST(MaquinaRegistrador, AReadingGivesTheRecordWithTheClockOfNow) {
    MaquinaRegistrador maquina;
    Cliente pc(maquina);
    maquina.ponerReloj({2026, 2, 28, 23h + 59min + 59s}, pc.ahora());
    pc.callar(1s);
    const auto registro = pc.leerConfig();
    ASSERT_THAT(registro, SizeIs(kBytesConfig));
    EXPECT_TRUE(
        std::equal(registro.begin(), registro.begin() + registro_config::kReloj, maquina.imagen().begin()));
    EXPECT_EQ(Bytes(registro.begin() + registro_config::kReloj, registro.end()),
              (Bytes{0x00, 0x00, 0x00, 0x01, 0x03, 0x26}));
    EXPECT_EQ(maquina.intercambio(), Intercambio::reposo);
}

TEST(MaquinaRegistrador, TheReadingGoesOnWithAnyEcho) {
    MaquinaRegistrador maquina;
    Cliente pc(maquina);
    pc.enviar(kApertura);
    pc.enviar(kLeerConfig);
    Bytes registro = pc.enviar(kApertura);
    while (registro.size() < kBytesConfig) {
        const auto respuesta = pc.enviar(static_cast<std::uint8_t>(registro.back() ^ 0x01));
        ASSERT_THAT(respuesta, SizeIs(1)) << registro.size();
        registro.push_back(respuesta.front());
    }
    EXPECT_TRUE(
        std::equal(registro.begin(), registro.begin() + registro_config::kReloj, maquina.imagen().begin()));
    EXPECT_THAT(pc.enviar(0x00), IsEmpty());
    EXPECT_EQ(maquina.intercambio(), Intercambio::reposo);
}

TEST(MaquinaRegistrador, TheReadingBeginsWithTheOpeningByteOnly) {
    MaquinaRegistrador maquina;
    Cliente pc(maquina);
    pc.enviar(kApertura);
    pc.enviar(kLeerConfig);
    EXPECT_THAT(pc.enviar(kSaludo), IsEmpty());
    EXPECT_EQ(maquina.intercambio(), Intercambio::reposo);
}

TEST(MaquinaRegistrador, AWriteGets108BytesAndTheReadingShowsIt) {
    MaquinaRegistrador maquina(memoriaSimulada(Clima(1)));
    Cliente pc(maquina);
    const auto mensaje = mensajeDePrueba();
    EXPECT_EQ(pc.escribirConfig(mensaje), 108u);
    EXPECT_EQ(maquina.intercambio(), Intercambio::reposo);

    const auto registro = pc.leerConfig();
    ASSERT_THAT(registro, SizeIs(kBytesConfig));
    EXPECT_EQ(maquina.serie(), "02080050");
    EXPECT_TRUE(std::equal(mensaje.begin(), mensaje.end(), registro.begin() + registro_config::kUsuario));
    EXPECT_EQ(maquina.intervaloCodigo(), 0x30);
}

TEST(MaquinaRegistrador, AWriteErasesTheSamplesAndStartsTheClock) {
    MaquinaRegistrador maquina(memoriaSimulada(Clima(1)));
    Cliente pc(maquina);
    pc.escribirConfig(mensajeDePrueba());
    EXPECT_THAT(Bytes(maquina.imagen().begin() + registro_config::kFin, maquina.imagen().end()), Each(0xFF));
    const auto reloj = maquina.reloj(pc.ahora() + 3s);
    EXPECT_EQ(reloj.anio, 2025);
    EXPECT_EQ(reloj.mes, 1);
    EXPECT_EQ(reloj.dia, 1);
    EXPECT_EQ(reloj.deDia, 1s);
}

TEST(MaquinaRegistrador, AnUnfinishedWriteChangesNothing) {
    MaquinaRegistrador maquina(memoriaSimulada(Clima(1)));
    const auto antes = maquina.imagen();
    Cliente pc(maquina);
    auto mensaje = mensajeDePrueba();
    mensaje.pop_back();
    pc.escribirConfig(mensaje);
    EXPECT_EQ(maquina.intercambio(), Intercambio::escritura);
    EXPECT_EQ(maquina.imagen(), antes);
    EXPECT_EQ(maquina.cambios(), 0u);
}

TEST(MaquinaRegistrador, TheSerialNumberIsKeptWithTheFourthByteOnceMore) {
    MaquinaRegistrador maquina;
    Cliente pc(maquina);
    EXPECT_EQ(pc.escribirSerie({0x20, 0x80, 0x05, 0x12, 0x12}), 6u);
    EXPECT_EQ(maquina.serie(), "20800512");
    EXPECT_EQ(maquina.cambios(), 1u);
    EXPECT_EQ(maquina.intercambio(), Intercambio::reposo);
}

TEST(MaquinaRegistrador, ADifferentRepetitionKeepsNoSerialNumber) {
    MaquinaRegistrador maquina;
    Cliente pc(maquina);
    pc.escribirSerie({0x20, 0x80, 0x05, 0x12, 0x13});
    EXPECT_EQ(maquina.serie(), "02080050");
    EXPECT_EQ(maquina.cambios(), 0u);
}

TEST(MaquinaRegistrador, TheSerialNumberErasesNoSamples) {
    MaquinaRegistrador maquina(memoriaSimulada(Clima(1)));
    const Bytes antes(maquina.imagen().begin() + 4, maquina.imagen().end());
    Cliente(maquina).escribirSerie({0x20, 0x80, 0x05, 0x12, 0x12});
    EXPECT_EQ(Bytes(maquina.imagen().begin() + 4, maquina.imagen().end()), antes);
}

TEST(MaquinaRegistrador, TheDownloadIsTheImageAndEndsWithTheLastAcknowledge) {
    MaquinaRegistrador maquina(memoriaSimulada(Clima(7)));
    Cliente pc(maquina);
    EXPECT_EQ(pc.descargar(), maquina.imagen());
    EXPECT_EQ(maquina.intercambio(), Intercambio::reposo);
    EXPECT_THAT(pc.enviar(kSonda), SizeIs(kBytesMarco));
}

TEST(MaquinaRegistrador, AWrongAcknowledgeEndsTheDownloadWithoutAnAnswer) {
    MaquinaRegistrador maquina;
    Cliente pc(maquina);
    pc.enviar(kApertura);
    pc.enviar(kSaludo);
    pc.enviar(kApertura);
    EXPECT_THAT(pc.enviar(kSaludo), IsEmpty());
    EXPECT_EQ(maquina.intercambio(), Intercambio::reposo);
}

struct Abierto {
    const char* nombre;
    Bytes bytes;
};

class TrasUnSilencio : public testing::TestWithParam<Abierto> {};

TEST_P(TrasUnSilencio, OfMoreThanASecondAndAHalfTheLoggerIsAtRest) {
    MaquinaRegistrador maquina;
    Cliente pc(maquina);
    for (const auto byte : GetParam().bytes) pc.enviar(byte);
    ASSERT_NE(maquina.intercambio(), Intercambio::reposo);
    pc.callar(1500ms);
    EXPECT_THAT(pc.enviar(kSonda), SizeIs(kBytesMarco));
}

TEST_P(TrasUnSilencio, OfASecondAndAHalfTheExchangeGoesOn) {
    MaquinaRegistrador maquina;
    Cliente pc(maquina);
    for (const auto byte : GetParam().bytes) pc.enviar(byte);
    pc.callar(1499ms);
    EXPECT_THAT(pc.enviar(kSonda), SizeIs(testing::Le(1)));
}

INSTANTIATE_TEST_SUITE_P(EnCadaIntercambio, TrasUnSilencio,
                         testing::Values(Abierto{"eleccion", {0x55}}, Abierto{"lectura", {0x55, 0x60}},
                                         Abierto{"registro", {0x55, 0x60, 0x55}},
                                         Abierto{"saludo", {0x55, 0xAA}},
                                         Abierto{"bloque", {0x55, 0xAA, 0x55}},
                                         Abierto{"escritura", {0x55, 0x96, 0x41}},
                                         Abierto{"serie", {0x55, 0x64, 0x20}}),
                         [](const auto& caso) { return std::string(caso.param.nombre); });

TEST(MaquinaRegistrador, SilenceIsCountedFromTheEndOfItsAnswer) {
    MaquinaRegistrador maquina;
    maquina.recibir(kApertura, 10s);
    maquina.terminoDeEnviar(14s);
    EXPECT_THAT(maquina.recibir(kLeerConfig, 15s), SizeIs(1));
}

TEST(MaquinaRegistrador, AnImageWithoutASerialNumberGetsTheDefaultConfiguration) {
    const MaquinaRegistrador maquina(Bytes{});
    EXPECT_THAT(maquina.imagen(), SizeIs(kBytesMemoria));
    EXPECT_EQ(maquina.serie(), "02080050");
    EXPECT_EQ(maquina.texto(CampoTexto::ubicacion), "Finca Norte" + std::string(24, ' '));
    EXPECT_EQ(maquina.texto(CampoTexto::altitud), "  827");
}

TEST(MaquinaRegistrador, AnImageKeepsItsOwnHeader) {
    ConfiguracionSimulada config;
    config.serie = "12345678";
    config.textos[0] = "Señor Núñez";
    const MaquinaRegistrador maquina(memoriaVacia(config, {2020, 5, 6, 7h}));
    EXPECT_EQ(maquina.serie(), "12345678");
    EXPECT_EQ(maquina.texto(CampoTexto::usuario), "Señor Núñez" + std::string(19, ' '));
}

TEST(MaquinaRegistrador, ACopyGoesItsOwnWay) {
    MaquinaRegistrador original;
    Cliente(original).enviar(kApertura);
    auto copia = original;
    Cliente(copia).enviar(kSonda);
    EXPECT_EQ(original.intercambio(), Intercambio::eleccion);
    EXPECT_EQ(copia.intercambio(), Intercambio::reposo);
}

}  // namespace
}  // namespace telvane
