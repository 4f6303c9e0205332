// The machine stays awake while a download goes on, and may sleep again however it ends.
#include <chrono>

#include <gtest/gtest.h>

#include "link/protocolo.h"
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class InhibidorTest : public Banco {
   protected:
    InhibidorTest() : Banco(kBaudios) {}
    // From this byte of the memory on the logger does what the effect says.
    void alterar(std::size_t desde, Efecto efecto) {
        puertos.manipular(1, [=](const ByteSaliente& saliente) {
            const bool suyo = saliente.intercambio == Intercambio::descarga && saliente.indice == desde;
            return suyo ? efecto : Efecto::pasar(saliente.byte);
        });
    }
    static constexpr std::size_t kSegundaRespuesta = 1;
    static constexpr std::size_t kBloque100 = 2 + 64 * 100;
};

TEST_F(InhibidorTest, NothingButADownloadKeepsTheMachineAwake) {
    conectar();
    pulsar(forma.configuracion);
    pasar(10s);
    pulsar(forma.Command4);
    pasar(10s);
    EXPECT_EQ(inhibidor.pedidas, 0);
}

TEST_F(InhibidorTest, HeldFromTheClickUntilTheImageIsKept) {
    conectar();
    pulsar(forma.Command13);
    EXPECT_EQ(inhibidor.vigentes, 1);
    EXPECT_EQ(inhibidor.motivo, "Descarga de la memoria del registrador");
    dialogos.dejarAbierto("La descarga de datos se realizó con exito");
    pasar(130s);
    EXPECT_EQ(inhibidor.vigentes, 1) << "the whole transfer";
    ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.abiertos() == 1; }, 60s));
    EXPECT_EQ(inhibidor.vigentes, 0) << "nobody has to be there for the boxes that follow";
    EXPECT_EQ(inhibidor.pedidas, 1);
    dialogos.responderArchivo(std::nullopt);
    dialogos.contestar(Boton::aceptar);
}

TEST_F(InhibidorTest, LetGoWhenNobodyAnswers) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{}; });
    dialogos.responder(Boton::aceptar, "No hay equipo conectado (Intente Reconectar) ");
    pulsar(forma.Command13);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    EXPECT_EQ(inhibidor.pedidas, 1);
    EXPECT_EQ(inhibidor.vigentes, 0);
}

TEST_F(InhibidorTest, LetGoWhenTheTransferFails) {
    conectar();
    alterar(kSegundaRespuesta, Efecto::pasar(0x54));
    dialogos.responder(Boton::aceptar, "Error en comunicacion ");
    pulsar(forma.Command13);
    EXPECT_EQ(inhibidor.vigentes, 1);
    pasar(10s);
    EXPECT_EQ(inhibidor.vigentes, 0);
    EXPECT_TRUE(inicio.progress.mostrado());
}

TEST_F(InhibidorTest, LetGoOnCancel) {
    conectar();
    pulsar(forma.Command13);
    pasar(10s);
    ASSERT_EQ(inhibidor.vigentes, 1);
    pulsar(inicio.progress.Command45);
    EXPECT_EQ(inhibidor.vigentes, 0);
    pasar(5min);
    EXPECT_EQ(inhibidor.pedidas, 1);
}

TEST_F(InhibidorTest, ATransferThatStandsStillDoesNotKeepTheMachineAwakeForEver) {
    conectar();
    alterar(kBloque100, Efecto{.bytes = {}, .callar = true});
    pulsar(forma.Command13);
    pasar(30s);
    EXPECT_EQ(inhibidor.vigentes, 1) << "it may still go on";
    pasar(2min);
    EXPECT_EQ(inhibidor.vigentes, 0);
    EXPECT_TRUE(inicio.progress.mostrado());
}

TEST_F(InhibidorTest, ASystemThatRefusesIsAskedOnceAndTheDownloadGoesOn) {
    inhibidor.rehusar = true;
    conectar();
    pulsar(forma.Command13);
    pasar(30s);
    EXPECT_GT(inicio.progress.ProgressBar1.value(), 500);
    EXPECT_EQ(inhibidor.pedidas, 1);
}

TEST_F(InhibidorTest, EachDownloadTakesItAnew) {
    conectar();
    for (int vez = 1; vez <= 2; ++vez) {
        pulsar(forma.Command13);
        pasar(10s);
        EXPECT_EQ(inhibidor.pedidas, vez);
        EXPECT_EQ(inhibidor.vigentes, 1);
        pulsar(inicio.progress.Command45);
        pasar(3s);
    }
}

}  // namespace
}  // namespace telvane
