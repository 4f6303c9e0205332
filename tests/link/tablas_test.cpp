// What both sides of the line have agreed on, in numbers and words.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "link/protocolo.h"
#include "link/sucesos.h"
#include "link/velocidades.h"

namespace telvane {
namespace {

TEST(Protocolo, TheBytesOnTheLine) {
    EXPECT_EQ(kSonda, 0xBE);
    EXPECT_EQ(kApertura, 0x55);
    EXPECT_EQ(kSaludo, 0xAA);
    EXPECT_EQ(kLeerConfig, 0x60);
    EXPECT_EQ(kEscribirConfig, 0x96);
    EXPECT_EQ(kEscribirSerie, 0x64);
}

TEST(Protocolo, TheLengthsAndWaits) {
    EXPECT_EQ(kBytesMarco, 31u);
    EXPECT_EQ(kBytesSerie, 4u);
    EXPECT_EQ(kDigitosSerie, 8u);
    EXPECT_EQ(kBytesConfig, 111u);
    EXPECT_EQ(kBytesMensajeConfig, 107u);
    EXPECT_EQ(kBytesMensajeSerie, 5u);
    EXPECT_EQ(kBytesBloque, 64u);
    EXPECT_EQ(kBloquesMemoria, 4096u);
    EXPECT_EQ(kBytesMemoria, 262144u);
    EXPECT_EQ(kRespuestasLectura, 113u);
    EXPECT_EQ(kRespuestasEscritura, 108u);
    EXPECT_EQ(kRespuestasSerie, 6u);
    EXPECT_EQ(kRespuestasDescarga, 262146u);
    EXPECT_EQ(kUmbralByte, 1);
    EXPECT_EQ(kUmbralBloque, 64);
    EXPECT_EQ(kUmbralMarco, 31);
    EXPECT_EQ(kUmbralSonda, 21);
    EXPECT_EQ(kBaudios, 19200);
    EXPECT_EQ(kBitsPorByte, 10);
    EXPECT_EQ(kUltimoPuerto, 12);
    EXPECT_EQ(kDespertar, std::chrono::milliseconds(2000));
    EXPECT_EQ(kEsperaRespuesta, std::chrono::seconds(1));
    EXPECT_EQ(kEsperaMarco, std::chrono::seconds(2));
    EXPECT_EQ(kRestoMarco, std::chrono::milliseconds(100));
    EXPECT_EQ(kMarcoTardio, std::chrono::milliseconds(2100));
    EXPECT_EQ(kEsperaSuceso, std::chrono::seconds(1));
    EXPECT_EQ(kEsperaSonda, std::chrono::seconds(2));
    EXPECT_EQ(kEsperaSegundaSonda, std::chrono::seconds(1));
}

TEST(Protocolo, TheReadingsStandWhereTheLoggerPutsThemInALiveFrame) {
    const std::vector<std::size_t> lugares = {marco::kHumedad,   marco::kTemperatura, marco::kDirViento,
                                              marco::kVelViento, marco::kRadSolar,    marco::kPresion,
                                              marco::kLluvia,    marco::kEvaporacion};
    EXPECT_EQ(lugares, (std::vector<std::size_t>{3, 5, 7, 8, 10, 12, 14, 16}));
}

TEST(Velocidades, EachHasTheSystemsCodeAndNoOtherNumberHasOne) {
    const std::vector<std::pair<int, speed_t>> conocidas = {
        {110, B110},       {300, B300},       {600, B600},       {1200, B1200},    {2400, B2400},
        {4800, B4800},     {9600, B9600},     {19200, B19200},   {38400, B38400},  {57600, B57600},
        {115200, B115200}, {230400, B230400}, {460800, B460800}, {921600, B921600}};
    std::size_t halladas = 0;
    for (int baudios = -1; baudios <= 1000000; ++baudios) {
        const auto codigo = codigoDeVelocidad(baudios);
        if (!codigo) continue;
        ASSERT_LT(halladas, conocidas.size()) << baudios;
        EXPECT_EQ(baudios, conocidas[halladas].first);
        EXPECT_EQ(*codigo, conocidas[halladas].second) << baudios;
        ++halladas;
    }
    EXPECT_EQ(halladas, conocidas.size());
}

TEST(Sucesos, EachCodeHasItsLine) {
    const std::vector<std::pair<int, std::string>> lineas = {
        {1, ""},
        {2, ""},
        {3, "cambio en CTS"},
        {4, "Detectado cambio en DSR"},
        {5, "Detectado cambio en CD"},
        {6, "El teléfono está sonando"},
        {7, "Detectado el final del archivo"},
        {1001, "Parada recibida"},
        {1002, "Soprepasado el tiempo de espera de CTS"},
        {1003, "Sobrepasado el tiempo de espera de DSR"},
        {1004, "Error de marco"},
        {1006, "Error de sobrecarga"},
        {1007, "Sobrepasado el tiempo de espera de detección de portadora"},
        {1008, "Desbordamiento en el búfer de recepción"},
        {1009, "Error de paridad"},
        {1010, "Búfer de transmisión lleno"},
        {1011, "Error recibiendo DCB"}};
    std::size_t lugar = 0;
    for (int codigo = -1; codigo < 2000; ++codigo) {
        if (lugar < lineas.size() && lineas[lugar].first == codigo) {
            EXPECT_EQ(textoDeSuceso(codigo), lineas[lugar++].second) << codigo;
        } else {
            EXPECT_EQ(textoDeSuceso(codigo), "Error o evento desconocido") << codigo;
        }
    }
}

}  // namespace
}  // namespace telvane
