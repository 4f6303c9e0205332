#include "simulator/puertos_simulados.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/bucle_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Bytes = std::vector<std::uint8_t>;

const AjustesLinea kAjustes{kBaudios, 'n', 8, 1, false, false};

class ConPuertos : public testing::Test {
   protected:
    explicit ConPuertos(int baudios = 0) : puertos(bucle, bucle.reloj(), baudios) {}

    void abrir(int numero = 3) {
        puerto = puertos.abrir(numero, kAjustes, [this] {
            ++despertado;
            if (alDespertar) alDespertar();
        });
    }
    void escribir(std::uint8_t byte) { puerto->escribir(std::span(&byte, 1)); }
    Bytes leer(std::size_t cuantos = 1000) {
        Bytes bytes(cuantos);
        bytes.resize(puerto->leer(bytes));
        return bytes;
    }
    MotivoPuerto motivo(const std::function<void()>& paso) {
        try {
            paso();
        } catch (const ErrorPuerto& error) {
            return error.motivo();
        }
        ADD_FAILURE() << "nothing was refused";
        return MotivoPuerto::otro;
    }

    BuclePrueba bucle;
    PuertosSimulados puertos;
    int despertado = 0;
    std::function<void()> alDespertar;
    std::unique_ptr<PuertoSerie> puerto;
};

class PuertosSimuladosAlPaso : public ConPuertos {
   protected:
    PuertosSimuladosAlPaso() : ConPuertos(kBaudios) {}
};

using PuertosSimuladosPrueba = ConPuertos;

TEST_F(PuertosSimuladosPrueba, OnlyTheGivenNumbersExist) {
    puertos.agregar(2);
    puertos.conectar(3);
    EXPECT_FALSE(puertos.existe(1));
    EXPECT_TRUE(puertos.existe(2));
    EXPECT_TRUE(puertos.existe(3));
    EXPECT_EQ(motivo([&] { abrir(1); }), MotivoPuerto::noExiste);
}

TEST_F(PuertosSimuladosPrueba, APortWithoutALoggerIsSilent) {
    puertos.agregar(2);
    abrir(2);
    escribir(kSonda);
    bucle.avanzar(3s);
    EXPECT_EQ(despertado, 0);
    EXPECT_THAT(leer(), IsEmpty());
    EXPECT_THAT(puertos.escritos(2), ElementsAre(kSonda));
}

TEST_F(PuertosSimuladosPrueba, UnpacedTheAnswerComesWholeInTheNextTurn) {
    puertos.conectar(3);
    abrir();
    puerto->umbral(31);
    escribir(kSonda);
    EXPECT_THAT(leer(), IsEmpty());
    bucle.girar();
    EXPECT_EQ(despertado, 1);
    EXPECT_THAT(leer(), SizeIs(31));
}

TEST_F(PuertosSimuladosPrueba, TheThresholdDoesNotWakeEarlier) {
    puertos.conectar(3);
    abrir();
    puerto->umbral(32);
    escribir(kSonda);
    bucle.avanzar(1s);
    EXPECT_EQ(despertado, 0);
    puerto->umbral(31);
    bucle.avanzar(0s);
    EXPECT_EQ(despertado, 1);
}

TEST_F(PuertosSimuladosPrueba, WhatNobodyReadsDoesNotWakeAgain) {
    puertos.conectar(3);
    abrir();
    escribir(kSonda);
    EXPECT_TRUE(bucle.correr());
    EXPECT_EQ(despertado, 1);
    escribir(kSonda);
    EXPECT_TRUE(bucle.correr());
    EXPECT_EQ(despertado, 2);
}

TEST_F(PuertosSimuladosPrueba, WhatIsLeftAfterReadingSomethingWakesAgain) {
    puertos.conectar(3);
    abrir();
    alDespertar = [&] { leer(10); };
    escribir(kSonda);
    EXPECT_TRUE(bucle.correr());
    EXPECT_EQ(despertado, 4);
    EXPECT_THAT(leer(), IsEmpty());
}

TEST_F(PuertosSimuladosPrueba, OpeningDiscardsWhatWaited) {
    puertos.conectar(3);
    abrir();
    escribir(kSonda);
    puerto.reset();
    bucle.avanzar(1s);
    abrir();
    bucle.avanzar(1s);
    EXPECT_THAT(leer(), IsEmpty());
    EXPECT_EQ(despertado, 0);
    EXPECT_EQ(puertos.aperturas(3), 2u);
}

TEST_F(PuertosSimuladosPrueba, AnOpenPortIsBusy) {
    puertos.conectar(3);
    abrir();
    EXPECT_EQ(motivo([&] { abrir(); }), MotivoPuerto::ocupado);
    puerto.reset();
    EXPECT_FALSE(puertos.abierto(3));
    abrir();
    EXPECT_TRUE(puertos.abierto(3));
}

TEST_F(PuertosSimuladosPrueba, APortMayRefuseToOpen) {
    puertos.conectar(3);
    puertos.rehusar(3, MotivoPuerto::sinPermiso);
    EXPECT_EQ(motivo([&] { abrir(); }), MotivoPuerto::sinPermiso);
    puertos.rehusar(3, std::nullopt);
    abrir();
    EXPECT_NE(puerto, nullptr);
}

TEST_F(PuertosSimuladosPrueba, WithOtherSettingsTheLoggerUnderstandsNothing) {
    puertos.conectar(3);
    puerto = puertos.abrir(3, {9600, 'n', 8, 1, false, false}, [] {});
    escribir(kSonda);
    bucle.avanzar(1s);
    EXPECT_THAT(leer(), IsEmpty());
}

TEST_F(PuertosSimuladosPrueba, APauseHoldsBackTheNoticeButNotTheLogger) {
    puertos.conectar(3);
    abrir();
    escribir(kSonda);
    std::size_t alTerminar = 0;
    bucle.pausar(2s, [&] { alTerminar = leer().size(); });
    bucle.avanzar(2s - 1ns);
    EXPECT_EQ(despertado, 0);
    bucle.avanzar(1ns);
    EXPECT_EQ(alTerminar, 31u);
}

TEST_F(PuertosSimuladosPrueba, TheOwnerMayCloseThePortWhenWoken) {
    puertos.conectar(3);
    abrir();
    alDespertar = [&] { puerto.reset(); };
    escribir(kSonda);
    EXPECT_TRUE(bucle.correr());
    EXPECT_EQ(despertado, 1);
    EXPECT_FALSE(puertos.abierto(3));
}

TEST_F(PuertosSimuladosPrueba, AWholeDownloadIsTheImage) {
    puertos.conectar(3, MaquinaRegistrador(memoriaSimulada(Clima(1))));
    abrir();
    Bytes imagen;
    std::size_t recibidos = 0;
    alDespertar = [&] {
        const auto bytes = leer();
        if (++recibidos == 1) return escribir(kSaludo);
        if (recibidos == 2) return puerto->umbral(64), escribir(kApertura);
        imagen.insert(imagen.end(), bytes.begin(), bytes.end());
        escribir(kApertura);
    };
    escribir(kApertura);
    EXPECT_TRUE(bucle.correr());
    EXPECT_EQ(imagen, puertos.maquina(3).imagen());
    EXPECT_EQ(recibidos, 4098u);
    EXPECT_EQ(bucle.sucesosEntregados(), 4098u);
    EXPECT_EQ(puertos.emitidos(3).size(), 2 + kBytesMemoria);
    EXPECT_EQ(puertos.escritos(3).size(), 3u + kBloquesMemoria);
}

TEST_F(PuertosSimuladosAlPaso, ADownloadTakesAsLongAsTheLine) {
    puertos.conectar(3);
    abrir();
    std::size_t recibidos = 0;
    alDespertar = [&] {
        leer();
        if (++recibidos == 1) return escribir(kSaludo);
        if (recibidos == 2) puerto->umbral(64);
        escribir(kApertura);
    };
    const auto inicio = bucle.reloj().monotono();
    escribir(kApertura);
    EXPECT_TRUE(bucle.correr());
    const auto porByte = std::chrono::nanoseconds(520'833);
    EXPECT_EQ(bucle.reloj().monotono() - inicio, (4 + 4096 * 65 + 1) * porByte);
}

TEST_F(PuertosSimuladosAlPaso, TheThresholdWakesWithTheByteThatCompletesIt) {
    puertos.conectar(3);
    abrir();
    puerto->umbral(21);
    const auto inicio = bucle.reloj().monotono();
    escribir(kSonda);
    EXPECT_TRUE(bucle.correrHasta([&] { return despertado == 1; }));
    EXPECT_EQ(bucle.reloj().monotono() - inicio, 22 * std::chrono::nanoseconds(520'833));
    EXPECT_THAT(leer(), SizeIs(21));
}

TEST_F(PuertosSimuladosPrueba, TheTamperingSeesEachByteWithItsPlaceAndDecides) {
    puertos.conectar(3);
    std::vector<std::size_t> numeros;
    puertos.manipular(3, [&](const ByteSaliente& b) {
        numeros.push_back(b.numero);
        auto efecto = Efecto::pasar(b.byte);
        if (b.numero == 1) efecto.bytes = {1, 2, 3};
        if (b.numero > 1) efecto.bytes.clear();
        return efecto;
    });
    abrir();
    escribir(kApertura);
    bucle.correr();
    escribir(kLeerConfig);
    bucle.correr();
    escribir(kApertura);
    bucle.correr();
    EXPECT_THAT(leer(), ElementsAre(kApertura, 1, 2, 3));
    EXPECT_THAT(numeros, ElementsAre(0, 1, 2));
    EXPECT_THAT(puertos.emitidos(3), ElementsAre(kApertura, 1, 2, 3));
}

TEST_F(PuertosSimuladosPrueba, AHungUpPortWakesAndAlwaysSaysSo) {
    puertos.conectar(3);
    abrir();
    puerto->umbral(64);
    puertos.manipular(3, [](const ByteSaliente& b) {
        auto efecto = Efecto::pasar(b.byte);
        efecto.colgar = b.numero == 2;
        return efecto;
    });
    escribir(kSonda);
    EXPECT_TRUE(bucle.correr());
    EXPECT_EQ(despertado, 1);
    EXPECT_THAT(leer(), SizeIs(2));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(motivo([&] { leer(); }), MotivoPuerto::desaparecido);
        EXPECT_EQ(motivo([&] { escribir(kSonda); }), MotivoPuerto::desaparecido);
    }
    puerto.reset();
    EXPECT_FALSE(puertos.existe(3));
    puertos.manipular(3, {});
    puertos.reponer(3);
    abrir();
    escribir(kSonda);
    bucle.correr();
    EXPECT_THAT(leer(), SizeIs(31));
}

TEST_F(PuertosSimuladosPrueba, AReadErrorComesInItsPlaceAndOnce) {
    puertos.conectar(3);
    abrir();
    puerto->umbral(64);
    puertos.manipular(3, [](const ByteSaliente& b) {
        auto efecto = Efecto::pasar(b.byte);
        efecto.errorLectura = b.numero == 5;
        return efecto;
    });
    escribir(kSonda);
    EXPECT_TRUE(bucle.correr());
    EXPECT_EQ(despertado, 1);
    EXPECT_THAT(leer(), SizeIs(5));
    EXPECT_EQ(motivo([&] { leer(); }), MotivoPuerto::otro);
    EXPECT_THAT(leer(), SizeIs(26));
}

TEST_F(PuertosSimuladosPrueba, AWriteErrorFailsOnce) {
    puertos.conectar(3);
    abrir();
    puertos.fallarEscritura(3);
    EXPECT_EQ(motivo([&] { escribir(kSonda); }), MotivoPuerto::otro);
    escribir(kSonda);
    EXPECT_THAT(puertos.escritos(3), ElementsAre(kSonda));
}

TEST_F(PuertosSimuladosPrueba, AShortWritePassesItsHalfAndFailsOnce) {
    puertos.conectar(3);
    abrir();
    puertos.manipular(3, PlanDeFallos({Fallo::leer("sonda:escritura-corta")}));
    escribir(kSonda);
    bucle.correr();
    EXPECT_EQ(motivo([&] { puerto->escribir(Bytes{kApertura, 1, 2, 3}); }), MotivoPuerto::otro);
    EXPECT_THAT(puertos.escritos(3), ElementsAre(kSonda, kApertura, 1));
    escribir(2);
    EXPECT_THAT(puertos.escritos(3), SizeIs(4));
}

TEST_F(PuertosSimuladosPrueba, LineEventsWakeOnlyWhoWatchesThem) {
    puertos.conectar(3);
    abrir();
    puertos.suceder(3, 1004);
    bucle.correr();
    EXPECT_EQ(despertado, 0);
    EXPECT_THAT(puerto->sucesosDeLinea(), ElementsAre(1004));
    puerto->vigilarLinea(true);
    puertos.suceder(3, 5);
    bucle.correr();
    EXPECT_EQ(despertado, 1);
    EXPECT_THAT(puerto->sucesosDeLinea(), ElementsAre(5));
    EXPECT_THAT(puerto->sucesosDeLinea(), IsEmpty());
}

TEST_F(PuertosSimuladosPrueba, WhatIsInjectedComesUnasked) {
    puertos.conectar(3);
    abrir();
    puertos.inyectar(3, Bytes{9, 8});
    bucle.correr();
    EXPECT_EQ(despertado, 1);
    EXPECT_THAT(leer(), ElementsAre(9, 8));
}

TEST_F(PuertosSimuladosPrueba, RemembersTheOutputLines) {
    puertos.conectar(3);
    abrir();
    puerto->dtr(true);
    EXPECT_TRUE(puertos.ajustes(3).dtr);
    EXPECT_FALSE(puertos.ajustes(3).rts);
    EXPECT_EQ(puertos.ajustes(3).baudios, 19200);
}

}  // namespace
}  // namespace telvane
