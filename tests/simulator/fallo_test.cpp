#include "simulator/fallo.h"

#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/linea_simulada.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;

TEST(Fallo, ReadsTheExampleOfTheHelp) {
    const auto fallo = Fallo::leer("descarga:bloque=2047:byte=12:cortar");
    EXPECT_EQ(fallo.operacion, Fallo::Operacion::descarga);
    EXPECT_EQ(fallo.clase, Fallo::Clase::cortar);
    EXPECT_EQ(fallo.indice, 2u + 2047u * 64u + 12u);
    EXPECT_EQ(fallo.vez, 1u);
    EXPECT_THAT(ayudaFallo(), testing::HasSubstr("descarga:bloque=2047:byte=12:cortar"));
    for (const auto* bytes : {"(bytes 0 a 112: ", "(bytes 0 a 107)", "(bytes 0 a 5)"})
        EXPECT_THAT(ayudaFallo(), testing::HasSubstr(bytes));
}

TEST(Fallo, ReadsValuesAndTimes) {
    EXPECT_EQ(Fallo::leer("lectura:byte=5:cambiar=fF").valor, 0xFFu);
    EXPECT_EQ(Fallo::leer("lectura:byte=5:demora=250").valor, 250u);
    EXPECT_EQ(Fallo::leer("serie:vez=3:perder").vez, 3u);
    EXPECT_EQ(Fallo::leer("serie:siempre:perder").vez, 0u);
    EXPECT_EQ(Fallo::leer("en-linea:cuadro=4:byte=30:doblar").cuadro, 4u);
}

TEST(Fallo, KnowsThatWhatIsOfThePortItselfDoesNotPassAPseudoTerminal) {
    for (const auto* texto : {"lectura:suceso=1004", "lectura:error-lectura", "lectura:error-escritura",
                              "lectura:escritura-corta"}) {
        EXPECT_TRUE(Fallo::leer(texto).enElPc()) << texto;
    }
    for (const auto* texto : {"lectura:invertir", "lectura:colgar", "lectura:silencio"}) {
        EXPECT_FALSE(Fallo::leer(texto).enElPc()) << texto;
    }
}

class FalloMalEscrito : public testing::TestWithParam<const char*> {};

TEST_P(FalloMalEscrito, IsRefused) {
    EXPECT_THROW(Fallo::leer(GetParam()), std::invalid_argument);
}

INSTANTIATE_TEST_SUITE_P(CadaUno, FalloMalEscrito,
                         testing::Values("", ":", "otra:silencio", "sonda", "sonda:", "sonda:nada",
                                         "sonda:silencio:perder", "sonda:silencio=1", "sonda=1:silencio",
                                         "sonda:byte=31:perder", "sonda:byte=-1:perder",
                                         "sonda:byte=x:perder", "sonda:byte:perder", "sonda:bloque=1:perder",
                                         "lectura:byte=113:perder", "escritura:byte=108:perder",
                                         "serie:byte=6:perder", "serie:vez=0:perder",
                                         "descarga:bloque=4096:perder", "descarga:bloque=1:byte=64:perder",
                                         "descarga:byte=262146:perder", "descarga:cambiar=100",
                                         "descarga:cambiar", "descarga:demora=", "serie:suceso=1012",
                                         "serie:error-lectura=1", "descarga:insertar=99999999999999999999"));

TEST(FalloMalEscrito, SaysWhatIsWrong) {
    const auto queja = [](const char* texto) {
        try {
            static_cast<void>(Fallo::leer(texto));
        } catch (const std::invalid_argument& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(queja("serie:bloque=1:perder"), "fallo \"serie:bloque=1:perder\": bloque= es solo de descarga");
    EXPECT_EQ(queja("sonda:cuadro=1:perder"), "fallo \"sonda:cuadro=1:perder\": cuadro= es solo de en-linea");
    for (const std::string texto :
         {"serie:byte=1:byte=2:perder", "serie:vez=2:siempre:perder", "descarga:bloque=1:bloque=2:perder"})
        EXPECT_THAT(queja(texto.c_str()), testing::EndsWith("no va con lo anterior: deje uno de los dos"));
}

struct Pareja {
    std::vector<const char*> fallos;
    // Which of them can never happen; -1: both can.
    int nunca = -1;
};
class FallosJuntos : public testing::TestWithParam<Pareja> {};

TEST_P(FallosJuntos, AreRefusedWhereOneCanNeverHappen) {
    std::vector<Fallo> fallos;
    for (const auto* texto : GetParam().fallos) fallos.push_back(Fallo::leer(texto));
    const auto chocan = fallosQueChocan(fallos);
    EXPECT_EQ(chocan ? static_cast<int>(chocan->nunca) : -1, GetParam().nunca);
}

INSTANTIATE_TEST_SUITE_P(
    CadaUno, FallosJuntos,
    testing::Values(
        // At one byte.
        Pareja{{"lectura:byte=5:cambiar=01", "lectura:byte=5:cambiar=02"}, 0},
        Pareja{{"lectura:byte=5:cambiar=01", "lectura:byte=5:silencio"}, 0},
        Pareja{{"lectura:byte=5:perder", "lectura:byte=5:demora=9"}},
        Pareja{{"lectura:byte=5:silencio", "lectura:byte=5:demora=9"}, 1},
        Pareja{{"lectura:byte=5:invertir", "lectura:byte=5:cambiar=01"}, 0},
        Pareja{{"lectura:byte=5:cambiar=5A", "lectura:byte=5:invertir"}},
        Pareja{{"lectura:byte=5:cambiar=01", "lectura:byte=5:doblar"}},
        Pareja{{"lectura:byte=5:cortar", "lectura:byte=5:silencio"}, 1},
        Pareja{{"lectura:byte=5:perder", "lectura:byte=5:perder"}, 1},
        Pareja{{"lectura:byte=5:insertar=1", "lectura:insertar=1:byte=5"}, 1},
        // Not always at once.
        Pareja{{"lectura:byte=5:cambiar=01", "lectura:byte=5:vez=2:cambiar=02"}},
        Pareja{{"lectura:byte=5:siempre:cambiar=01", "lectura:byte=5:vez=2:cambiar=02"}},
        Pareja{{"lectura:byte=5:vez=2:cambiar=01", "lectura:byte=5:siempre:cambiar=02"}, 0},
        // In the same place by another name, and not.
        Pareja{{"lectura:siempre:perder", "serie:siempre:silencio"}, 0},
        Pareja{{"lectura:byte=1:perder", "serie:byte=1:silencio"}},
        Pareja{{"sonda:byte=3:perder", "en-linea:cuadro=0:byte=3:silencio"}, 0},
        Pareja{{"en-linea:cuadro=2:byte=3:perder", "en-linea:cuadro=3:byte=3:silencio"}},
        Pareja{{"en-linea:cuadro=2:byte=3:perder", "en-linea:byte=3:silencio"}},
        Pareja{{"en-linea:cuadro=2:byte=3:perder", "en-linea:byte=3:siempre:silencio"}, 0},
        // Behind what ends the exchange.
        Pareja{{"descarga:bloque=3:siempre:silencio", "descarga:bloque=3:byte=1:perder"}, 1},
        Pareja{{"descarga:bloque=3:silencio", "descarga:bloque=3:byte=1:perder"}},
        Pareja{{"descarga:bloque=3:siempre:silencio", "descarga:bloque=2:byte=1:perder"}},
        Pareja{{"descarga:bloque=9:colgar", "descarga:bloque=3:cortar"}, 0},
        Pareja{{"descarga:bloque=9:colgar", "descarga:bloque=3:vez=2:cortar"}},
        Pareja{{"descarga:bloque=9:vez=2:colgar", "descarga:bloque=3:vez=2:cortar"}, 0},
        Pareja{{"descarga:bloque=9:siempre:perder", "descarga:bloque=3:vez=2:cortar"}},
        Pareja{{"serie:siempre:silencio", "descarga:bloque=3:cortar"}, 1},
        Pareja{{"sonda:siempre:silencio", "en-linea:cuadro=4:byte=3:perder"}},
        Pareja{{"sonda:siempre:silencio", "lectura:byte=3:perder"}}));

// What arrives at the PC when these bytes are sent one after the other.
struct Oyente {
    explicit Oyente(const char* fallo, int baudios = 0) : linea(MaquinaRegistrador(), baudios) {
        linea.manipular(PlanDeFallos({Fallo::leer(fallo)}));
    }
    Bytes enviar(std::uint8_t byte) {
        ahora += 100ms;
        linea.enviar(byte, ahora);
        linea.alDia(ahora + 50ms);
        Bytes bytes;
        for (; !linea.llegadas().empty() && linea.llegadas().front().cuando <= ahora + 50ms;
             linea.llegadas().pop_front()) {
            if (linea.llegadas().front().que == QueLlega::byte) {
                bytes.push_back(static_cast<std::uint8_t>(linea.llegadas().front().valor));
            }
        }
        return bytes;
    }
    LineaSimulada linea;
    std::chrono::nanoseconds ahora{1h};
};

TEST(PlanDeFallos, SilenceLastsToTheEndOfTheExchange) {
    Oyente pc("lectura:byte=1:silencio");
    EXPECT_THAT(pc.enviar(kApertura), ElementsAre(kApertura));
    EXPECT_THAT(pc.enviar(kLeerConfig), IsEmpty());
    EXPECT_THAT(pc.enviar(kApertura), IsEmpty());
    EXPECT_THAT(pc.enviar(0x00), IsEmpty());
    pc.ahora += MaquinaRegistrador::kSilencioMaximo;
    EXPECT_THAT(pc.enviar(kApertura), ElementsAre(kApertura));
    EXPECT_THAT(pc.enviar(kLeerConfig), ElementsAre(kApertura));
}

TEST(PlanDeFallos, EachFaultDoesItsOwn) {
    EXPECT_THAT(Oyente("lectura:cambiar=7E").enviar(kApertura), ElementsAre(0x7E));
    EXPECT_THAT(Oyente("lectura:invertir").enviar(kApertura), ElementsAre(0xAA));
    EXPECT_THAT(Oyente("serie:insertar=2").enviar(kApertura), ElementsAre(kApertura, 0, 0));
    EXPECT_THAT(Oyente("escritura:perder").enviar(kApertura), IsEmpty());
    EXPECT_THAT(Oyente("descarga:doblar").enviar(kApertura), ElementsAre(kApertura, kApertura));
    EXPECT_THAT(Oyente("descarga:demora=60").enviar(kApertura), IsEmpty());
}

TEST(PlanDeFallos, AByteOfABlockIsLostAndTheNextBlockComesWhole) {
    Oyente pc("descarga:bloque=1:byte=63:perder");
    pc.enviar(kApertura);
    pc.enviar(kSaludo);
    EXPECT_EQ(pc.enviar(kApertura).size(), 64u);
    EXPECT_EQ(pc.enviar(kApertura).size(), 63u);
    EXPECT_EQ(pc.enviar(kApertura).size(), 64u);
}

TEST(PlanDeFallos, TheProbeIsTheFirstAnswerAndTheFramesThoseInARow) {
    Oyente sonda("sonda:vez=2:silencio");
    EXPECT_EQ(sonda.enviar(kSonda).size(), 31u);
    EXPECT_EQ(sonda.enviar(kSonda).size(), 31u);
    sonda.ahora += 600ms;
    EXPECT_EQ(sonda.enviar(kSonda).size(), 0u);

    Oyente enLinea("en-linea:cuadro=2:byte=30:perder");
    EXPECT_EQ(enLinea.enviar(kSonda).size(), 31u);
    EXPECT_EQ(enLinea.enviar(kSonda).size(), 31u);
    EXPECT_EQ(enLinea.enviar(kSonda).size(), 30u);
    EXPECT_EQ(enLinea.enviar(kSonda).size(), 31u);
}

TEST(PlanDeFallos, AlwaysIsEveryTime) {
    Oyente pc("sonda:siempre:silencio");
    for (int i = 0; i < 3; ++i) {
        EXPECT_THAT(pc.enviar(kSonda), IsEmpty());
        pc.ahora += 600ms;
    }
}

TEST(PlanDeFallos, ACutCableCarriesNothingUntilItIsMended) {
    Oyente pc("lectura:byte=1:cortar");
    pc.enviar(kApertura);
    EXPECT_THAT(pc.enviar(kLeerConfig), IsEmpty());
    pc.ahora += 5s;
    EXPECT_THAT(pc.enviar(kSonda), IsEmpty());
    pc.linea.reponer();
    EXPECT_EQ(pc.enviar(kSonda).size(), 31u);
}

TEST(PlanDeFallos, AHungUpPortSaysSoAfterWhatWasOnItsWay) {
    Oyente pc("sonda:byte=3:colgar");
    EXPECT_EQ(pc.enviar(kSonda).size(), 3u);
    EXPECT_TRUE(pc.linea.colgada());
}

TEST(LineaSimulada, At19200BaudEachByteTakesItsTime) {
    LineaSimulada linea(MaquinaRegistrador(), kBaudios);
    const auto porByte = std::chrono::nanoseconds(520'833);
    linea.enviar(kSonda, 1s);
    EXPECT_THAT(linea.llegadas(), IsEmpty());
    EXPECT_EQ(linea.proximaRecepcion(), 1s + porByte);
    linea.alDia(1s + porByte);
    ASSERT_EQ(linea.llegadas().size(), kBytesMarco);
    EXPECT_EQ(linea.llegadas().front().cuando, 1s + 2 * porByte);
    EXPECT_EQ(linea.llegadas().back().cuando, 1s + 32 * porByte);
}

}  // namespace
}  // namespace telvane
