// Live data: the toggle and the polling.
#include <algorithm>
#include <array>
#include <numeric>
#include <set>
#include <utility>

#include <gmock/gmock.h>

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
    bucle.avanzar(100ms);
    const auto aperturas = puertos.aperturas(1);
    for (int vez = 0; vez < 40; ++vez) {
        bucle.avanzar(100ms + std::chrono::milliseconds(vez));
        pulsar(forma.Command4);
        pulsar(forma.Command4);
        EXPECT_EQ(forma.Command4.caption(), "PARAR");
        bucle.avanzar(100ms);
        ASSERT_TRUE(bienLeido()) << vez << ": " << forma.Text60.text();
    }
    EXPECT_EQ(puertos.aperturas(1), aperturas) << "the frame that was asked for before the stop is the first";
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

// What the logger measured, whatever the line made of it, and what was shown.
class EnLineaDesplazada : public EnLinea {
   protected:
    using Dano = std::function<void(const ByteSaliente&, Efecto&)>;

    // From now on the line does this to each byte of a frame.
    void danar(Dano dano) {
        puertos.manipular(1, [this, dano = std::move(dano)](const ByteSaliente& saliente) {
            auto efecto = Efecto::pasar(saliente.byte);
            if (saliente.intercambio != Intercambio::reposo) return efecto;
            marco_.at(saliente.indice) = saliente.byte;
            if (saliente.indice + 1 == kBytesMarco)
                medidos_.insert(lineasMarco(textosMarco(decodificarMarco(marco_))));
            dano(saliente, efecto);
            return efecto;
        });
        medidos_.clear();
        mostrados_.clear();
        observacion_ = forma.observar({.alCambiar =
                                           [this](Control& control, Que que) {
                                               if (&control != &forma.Text60 || que != Que::text) return;
                                               if (control.text() != "") mostrados_.push_back(control.text());
                                           },
                                       .alCambiarForma = {},
                                       .alImprimir = {}});
    }
    // Of the frames shown since then: wrong ones, and whether the last one is right.
    std::size_t erradas() const {
        const auto bien = [this](const auto& texto) { return medidos_.contains(texto); };
        return mostrados_.size() -
               static_cast<std::size_t>(std::count_if(mostrados_.begin(), mostrados_.end(), bien));
    }
    bool enPaso() const { return !mostrados_.empty() && medidos_.contains(mostrados_.back()); }
    std::ptrdiff_t faltas() const {
        return std::count(forma.lineas().begin(), forma.lineas().end(), "falta");
    }

    std::set<std::string> medidos_;
    std::vector<std::string> mostrados_;

   private:
    std::array<std::uint8_t, kBytesMarco> marco_{};
    Formulario::Observacion observacion_;
};

// At the pace of the wire the bytes too many come when their frame has been taken already.
TEST_F(EnLineaDesplazada, BytesTooManyAnywhereInAFrameAreToldAndTheNextReadingsAreInStepAgain) {
    conectar();
    pulsar(forma.Command4);
    for (const std::size_t cuantos : {1u, 2u, 30u}) {
        for (std::size_t lugar = 0; lugar < kBytesMarco; ++lugar) {
            SCOPED_TRACE(std::to_string(cuantos) + " at " + std::to_string(lugar));
            bool hecho = false;
            danar([&](const ByteSaliente& saliente, Efecto& efecto) {
                if (saliente.indice != lugar || std::exchange(hecho, true)) return;
                efecto.bytes.insert(efecto.bytes.end(), cuantos, 0x41);
            });
            const auto antes = faltas();
            const auto pedidos = puertos.escritos(1).size();
            bucle.avanzar(1s);
            EXPECT_TRUE(hecho);
            EXPECT_GE(faltas(), antes + 1);
            EXPECT_LE(faltas(), antes + 2);
            EXPECT_LE(erradas(), 2u);
            EXPECT_TRUE(enPaso()) << forma.Text60.text();
            EXPECT_GT(puertos.escritos(1).size(), pedidos + 40) << "at its pace: a frame takes 17 ms";
        }
    }
}

// A line that always keeps one too many must not fill the channel with answers that nobody waits for.
TEST_F(EnLineaDesplazada, AByteTooManyInEveryFrameLeavesEverySecondReadingRightAndOneRequestAtATime) {
    conectar();
    danar([](const ByteSaliente& saliente, Efecto& efecto) {
        if (saliente.indice + 1 == kBytesMarco) efecto.bytes.push_back(0x41);
    });
    pulsar(forma.Command4);
    bucle.avanzar(10min);
    EXPECT_GE(faltas(), 1);
    EXPECT_LE(erradas(), mostrados_.size() / 2 + 1);
    const auto pedidos = puertos.escritos(1).size();
    EXPECT_GT(pedidos, 1000u);
    EXPECT_NEAR(static_cast<double>(mostrados_.size()), static_cast<double>(pedidos), 1);
}

// A wrong sensor is no reason to be slower for ever.
TEST_F(EnLineaDesplazada, AChannelThatIsAlwaysImpossibleIsTheLoggersOwnAndIsShownAtItsPace) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        const bool veleta = saliente.intercambio == Intercambio::reposo && saliente.indice == 7;
        return Efecto::pasar(veleta ? std::uint8_t{0xFF} : saliente.byte);
    });
    pulsar(forma.Command4);
    bucle.avanzar(1s);
    const auto antes = puertos.escritos(1).size();
    EXPECT_THAT(forma.Text60.text(), testing::HasSubstr("Dir Viento [º]=573.8\r\n"));
    bucle.avanzar(1s);
    EXPECT_GT(puertos.escritos(1).size(), antes + 40) << "a frame takes 17 ms";
    EXPECT_EQ(faltas(), 0);
}

TEST_F(EnLineaDesplazada, StoppedAndStartedWhileTheLineIsLeftToFallSilentItIsInStepAsWell) {
    conectar();
    pulsar(forma.Command4);
    for (const auto despues : {0ms, 1ms, 50ms, 99ms}) {
        bool hecho = false;
        danar([&](const ByteSaliente& saliente, Efecto& efecto) {
            if (saliente.indice == 3 && !std::exchange(hecho, true)) efecto.bytes.push_back(0x41);
        });
        ASSERT_TRUE(bucle.correrHasta([&] { return erradas() > 0; }, 2s));
        bucle.avanzar(despues);
        pulsar(forma.Command4);
        pulsar(forma.Command4);
        const auto pedidos = puertos.escritos(1).size();
        bucle.avanzar(1s);
        EXPECT_TRUE(enPaso()) << despues.count() << ": " << forma.Text60.text();
        EXPECT_GT(puertos.escritos(1).size(), pedidos + 40);
    }
    EXPECT_EQ(dialogos.mensajes().size(), 2u) << "those of the start";
}

TEST_F(EnLineaDesplazada, StoppedWhileTheLineIsLeftToFallSilentItEndsThen) {
    conectar();
    danar([](const ByteSaliente& saliente, Efecto& efecto) {
        if (saliente.indice == 3) efecto.bytes.push_back(0x41);
    });
    pulsar(forma.Command4);
    ASSERT_TRUE(bucle.correrHasta([&] { return erradas() > 0; }, 2s));
    pulsar(forma.Command4);
    EXPECT_TRUE(puertos.abierto(1));
    const auto pedidos = puertos.escritos(1).size();
    bucle.avanzar(200ms);
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_EQ(forma.Text60.text(), "");
    EXPECT_EQ(puertos.escritos(1).size(), pedidos);
}

using EnLineaSinRitmo = Banco;

// What waits behind a frame begins the next one, whatever it is; only then is the line put in step.
TEST_F(EnLineaSinRitmo, BytesThatWaitBehindAFrameBeginTheNextOneOnce) {
    conectar();
    std::vector<std::string> mostrados;
    const auto observacion = forma.observar({.alCambiar =
                                                 [&](Control& control, Que que) {
                                                     if (&control == &forma.Text60 && que == Que::text)
                                                         mostrados.push_back(control.text());
                                                 },
                                             .alCambiarForma = {},
                                             .alImprimir = {}});
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(static_cast<std::uint8_t>(saliente.indice));
        if (saliente.numero == 30) efecto.bytes.push_back(0xFF);
        if (saliente.indice == 0 && saliente.numero > 0) efecto.demora = 1s;
        return efecto;
    });
    pulsar(forma.Command4);
    bucle.avanzar(2500ms);
    const auto bytes = [](std::uint8_t primero) {
        std::array<std::uint8_t, kBytesMarco> marco{};
        std::iota(marco.begin(), marco.end(), primero);
        return lineasMarco(textosMarco(decodificarMarco(marco)));
    };
    EXPECT_EQ(mostrados, (std::vector<std::string>{bytes(0), bytes(0xFF), bytes(0)}));
}

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
