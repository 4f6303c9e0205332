// Live data: the toggle and the polling.
#include <algorithm>
#include <array>

#include "live/marco_en_linea.h"
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class EnLinea : public Banco {
   protected:
    // At the pace of the line: an answer that takes no time would be asked for again without end.
    EnLinea() : Banco(kBaudios) {}

    std::vector<bool> bloqueados() const {
        std::vector<bool> estados;
        for (auto* boton : {&forma.Command33, &forma.Command43, &forma.Command13, &forma.Command2,
                            &forma.Command3, &forma.configuracion}) {
            estados.push_back(!boton->enabled());
        }
        return estados;
    }
};

TEST_F(EnLinea, WithoutALoggerItOnlySaysSo) {
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    const auto antes = bloqueados();
    dialogos.responder(Boton::aceptar, kNoHay);
    pulsar(forma.Command4);
    EXPECT_EQ(bloqueados(), antes);
    EXPECT_EQ(forma.Command4.caption(), "DATOS EN LINEA");
    EXPECT_TRUE(forma.Command1.enabled());
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
}

TEST_F(EnLinea, ShowsEightLinesAndAsksForTheNextFrameAfterEach) {
    conectar();
    pulsar(forma.Command4);
    EXPECT_EQ(forma.Command4.caption(), "PARAR");
    EXPECT_TRUE(forma.Text60.visible());
    EXPECT_EQ(bloqueados(), std::vector<bool>(6, true));
    ASSERT_TRUE(bucle.correrHasta([&] { return puertos.escritos(1).size() >= 5; }, 5s));
    for (const auto byte : puertos.escritos(1)) EXPECT_EQ(byte, 0xBE);
    const std::string texto = forma.Text60.text();
    std::size_t desde = 0;
    for (const auto* rotulo : {"[RH%]=", "Temp[ºC]=", "Dir Viento [º]=", "vel Viento [Km/h]=",
                               "Rad Solar kW/m2=", "Presion Atm [kPa]=", "Pluv [mm]=", "Evaporacion="}) {
        ASSERT_EQ(texto.compare(desde, std::string(rotulo).size(), rotulo), 0) << texto;
        desde = texto.find("\r\n", desde) + 2;
    }
    EXPECT_EQ(desde, texto.size());
}

TEST_F(EnLinea, StoppingLeavesThePortToTheNextFrameAndTwoButtonsDisabled) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.indice == 0) efecto.demora = 1s;
        return efecto;
    });
    pulsar(forma.Command4);
    bucle.avanzar(1500ms);
    pulsar(forma.Command4);
    EXPECT_EQ(bloqueados(), (std::vector<bool>{true, false, false, false, true, false}));
    EXPECT_FALSE(forma.Text60.visible());
    EXPECT_NE(forma.Text60.text(), "");
    EXPECT_TRUE(puertos.abierto(1));
    bucle.avanzar(1s);
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_EQ(forma.Text60.text(), "");
}

TEST_F(EnLinea, IfNoFrameComesAfterTheStopThePortStaysOpenUntilTheNextExchangeTakesIt) {
    conectar();
    pulsar(forma.Command4);
    bucle.avanzar(100ms);
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
    bucle.avanzar(100ms);
    pulsar(forma.Command4);
    bucle.avanzar(1min);
    EXPECT_TRUE(puertos.abierto(1));
    puertos.manipular(1, {});
    pulsar(forma.configuracion);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    bucle.avanzar(300ms);
    EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
}

TEST_F(EnLinea, NoFirstFrameInTwoSecondsClosesThePortButKeepsTheRunningLook) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{}; });
    dialogos.responder(Boton::aceptar, kNoHay);
    pulsar(forma.Command4);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_EQ(forma.Command4.caption(), "PARAR");
    EXPECT_TRUE(forma.Text60.visible());
    EXPECT_EQ(bloqueados(), std::vector<bool>(6, true));
    EXPECT_TRUE(forma.Command1.enabled());
    pulsar(forma.Command4);
    EXPECT_EQ(forma.Command4.caption(), "DATOS EN LINEA");
}

// The frames that left the logger, as they are shown.
class EnLineaOtraVez : public EnLinea {
   protected:
    std::vector<std::string> marcos() const {
        const auto& bytes = puertos.emitidos(1);
        std::vector<std::string> textos;
        for (std::size_t i = 0; i + kBytesMarco <= bytes.size(); i += kBytesMarco) {
            std::array<std::uint8_t, kBytesMarco> marco{};
            std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(i), kBytesMarco, marco.begin());
            textos.push_back(lineasMarco(textosMarco(decodificarMarco(marco))));
        }
        return textos;
    }
    // Whether what is shown is a frame as the logger sent it.
    bool bienLeido() const {
        const auto todos = marcos();
        return std::find(todos.begin(), todos.end(), forma.Text60.text()) != todos.end();
    }
};

// A frame takes 16 ms on the line: stopped and started again at every millisecond of it.
TEST_F(EnLineaOtraVez, TheRestOfAFrameIsNotTakenForTheBeginningOfTheNext) {
    conectar();
    pulsar(forma.Command4);
    for (int vez = 0; vez < 40; ++vez) {
        bucle.avanzar(100ms + std::chrono::milliseconds(vez));
        pulsar(forma.Command4);
        pulsar(forma.Command4);
        EXPECT_EQ(forma.Command4.caption(), "PARAR");
        bucle.avanzar(100ms);
        ASSERT_TRUE(bienLeido()) << vez << ": " << forma.Text60.text();
    }
    EXPECT_EQ(std::count(forma.lineas().begin(), forma.lineas().end(), "falta"), 0);
    pulsar(forma.Command4);
    bucle.avanzar(100ms);
    EXPECT_FALSE(puertos.abierto(1));
}

// The rest of it is lost: after a second of silence the logger is asked anew, with nothing of it left.
TEST_F(EnLineaOtraVez, AFrameThatNeverComesWholeIsAskedForAnew) {
    conectar();
    pulsar(forma.Command4);
    ASSERT_TRUE(bucle.correrHasta([&] { return puertos.emitidos(1).size() > 10 * kBytesMarco; }));
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        efecto.callar = saliente.indice == 20;
        return efecto;
    });
    bucle.avanzar(1500ms);
    puertos.manipular(1, {});
    puertos.olvidarTrafico(1);
    pulsar(forma.Command4);
    pulsar(forma.Command4);
    EXPECT_EQ(forma.Text60.text(), "");
    ASSERT_TRUE(bucle.correrHasta([&] { return forma.Text60.text() != ""; }, 2s));
    EXPECT_TRUE(bienLeido()) << forma.Text60.text();
    EXPECT_EQ(dialogos.mensajes().size(), 2u) << "those of the start";
}

using EnLineaSinRitmo = Banco;

TEST_F(EnLineaSinRitmo, ThirtyTwoWaitingBytesPrintFalta) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.numero == 30) efecto.bytes.push_back(0x00);
        if (saliente.numero == 31) efecto.demora = 1s;
        return efecto;
    });
    pulsar(forma.Command4);
    bucle.avanzar(100ms);
    ASSERT_FALSE(lineas().empty());
    EXPECT_EQ(lineas()[1], "falta");
}

TEST_F(EnLinea, APortThatCannotBeOpenedIsALoggerThatDoesNotAnswer) {
    conectar();
    puertos.rehusar(1, MotivoPuerto::noExiste);
    dialogos.responder(Boton::aceptar, kNoHay);
    pulsar(forma.Command4);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    EXPECT_EQ(bloqueados(), std::vector<bool>(6, true)) << "each step was attempted";
    EXPECT_TRUE(fallos.empty());
}

}  // namespace
}  // namespace telvane
