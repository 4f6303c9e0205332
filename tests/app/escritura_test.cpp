// Sending the edited configuration.
#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class Escritura : public Banco {
   protected:
    static constexpr const char* kBorrara =
        "SE BORRARAN TODOS LOS DATOS DE MEMORIA!  \r\n\r\n\r\nesta seguro de cambiarla? ";

    void editar() {
        conectar();
        pulsar(forma.Command2);
    }
    void enviar() {
        dialogos.responder(Boton::aceptar, kBorrara);
        pulsar(forma.Command3);
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
        bucle.avanzar(200ms);
    }
    void fueraDeEdicion() {
        EXPECT_EQ(forma.Check1.value(), 0);
        EXPECT_FALSE(forma.Check1.visible());
        EXPECT_FALSE(forma.Label3.visible());
        EXPECT_TRUE(forma.Timer1.enabled());
        for (auto* campo : forma.camposTexto()) EXPECT_TRUE(campo->locked());
        for (auto* boton : {&forma.Command43, &forma.Command13, &forma.configuracion, &forma.Command2}) {
            EXPECT_TRUE(boton->enabled()) << boton->nombre();
        }
        EXPECT_FALSE(forma.Command3.enabled());
    }
};

TEST_F(Escritura, TheLoggerStoresItErasesItsMemoryAndAFollowingReadShowsIt) {
    editar();
    inicio.cambiar(forma.Text2, "Ana");
    inicio.cambiar(forma.Text7, "1234");
    pulsar(forma.Option5);
    inicio.cambiar(forma.MaskEdBox2, "23:59:50");
    inicio.salirDe(forma.MaskEdBox2);
    inicio.cambiar(forma.fecha1, "31/12/2024");
    enviar();
    EXPECT_EQ(dialogos.mensajes().back().icono, Icono::exclamacion);
    EXPECT_EQ(dialogos.mensajes().back().porDefecto, Boton::cancelar) << "Enter erases nothing";
    fueraDeEdicion();
    EXPECT_EQ(forma.Text2.text(), std::string(27, ' ') + "Ana") << "padded in place";
    EXPECT_EQ(forma.Text7.text(), " 1234");
    for (auto* opcion : forma.opciones()) EXPECT_EQ(opcion->visible(), opcion == &forma.Option5);
    EXPECT_FALSE(puertos.abierto(1));
    const auto& maquina = puertos.maquina(1);
    EXPECT_EQ(maquina.texto(CampoTexto::usuario), std::string(27, ' ') + "Ana");
    EXPECT_EQ(maquina.intervaloCodigo(), 0x30);
    EXPECT_EQ(maquina.imagen()[1000], 0xFF);
    pulsar(forma.configuracion);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    bucle.avanzar(200ms);
    EXPECT_EQ(forma.Text2.text(), std::string(27, ' ') + "Ana");
    EXPECT_EQ(forma.fecha1.text(), "31/12/2024");
    EXPECT_TRUE(forma.MaskEdBox2.text().starts_with("23:59:5"));
    EXPECT_EQ(forma.Option5.value(), 1);
}

TEST_F(Escritura, SendsTheTabledBytes) {
    editar();
    enviar();
    const auto& escritos = puertos.escritos(1);
    ASSERT_EQ(escritos.size(), 1u + 1 + 1 + 107);
    EXPECT_EQ(escritos[0], 0xBE);
    EXPECT_EQ(escritos[1], 0x55);
    EXPECT_EQ(escritos[2], 0x96);
}

TEST_F(Escritura, CancelSendsNothingKeepsTheTextsUnpaddedAndLeavesEditMode) {
    editar();
    inicio.cambiar(forma.Text2, "Ana");
    dialogos.responder(Boton::cancelar, kBorrara);
    pulsar(forma.Command3);
    EXPECT_EQ(forma.Text2.text(), "Ana");
    EXPECT_TRUE(puertos.escritos(1).empty());
    fueraDeEdicion();
}

TEST_F(Escritura, AStaleAnswerEndsTheWaitAtOnceSoAnAbsentLoggerGivesNoMessage) {
    editar();
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{}; });
    enviar();
    fueraDeEdicion();
    EXPECT_TRUE(puertos.abierto(1)) << "nothing times out";
    bucle.avanzar(1s);
    puertos.manipular(1, {});
    pulsar(forma.configuracion);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    bucle.avanzar(200ms);
    EXPECT_FALSE(puertos.abierto(1));
}

TEST_F(Escritura, NoAnswerWithoutAStaleOneGivesTheMessageAndLeavesEditMode) {
    editar();
    int tecla = '1';
    tecla = inicio.teclear(forma.Text10, tecla);  // a key there clears the answer
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{}; });
    dialogos.responder(Boton::aceptar, kBorrara);
    dialogos.responder(Boton::aceptar, kNoHay);
    pulsar(forma.Command3);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    EXPECT_TRUE(forma.Command1.enabled());
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
    EXPECT_FALSE(puertos.abierto(1));
    fueraDeEdicion();
}

TEST_F(Escritura, WhatCannotBeSentIsToldOnceAfterTheQuestionAndStaysAsTyped) {
    for (const auto* fecha : {"31/02/2024", "", "__/__/____"}) {
        SCOPED_TRACE(fecha);
        if (forma.Label4.caption().empty()) conectar();
        dialogos.olvidar();
        pulsar(forma.Command2);
        inicio.cambiar(forma.Text2, "Ana");
        inicio.cambiar(forma.fecha1, fecha);
        dialogos.responder(Boton::aceptar, kBorrara);
        dialogos.responder(Boton::aceptar, "Fecha incorrecta (ej. 31/12/2024)");
        pulsar(forma.Command3);
        EXPECT_EQ(dialogos.mensajes().size(), 2u);
        fueraDeEdicion();
        EXPECT_EQ(forma.fecha1.text(), fecha);
        EXPECT_EQ(forma.Text2.text(), "Ana") << "not padded: nothing was sent";
        EXPECT_TRUE(puertos.escritos(1).empty());
        EXPECT_EQ(puertos.aperturas(1), 3u) << "search, wake-up and read of the start";
    }
}

TEST_F(Escritura, AYearThatTheLoggersClockCannotHoldIsToldOnceAndStaysAsTyped) {
    for (const std::string anio : {"0001", "1999", "2065", "9999"}) {
        SCOPED_TRACE(anio);
        if (forma.Label4.caption().empty()) conectar();
        dialogos.olvidar();
        pulsar(forma.Command2);
        inicio.cambiar(forma.Text2, "Ana");
        inicio.cambiar(forma.fecha1, "31/12/" + anio);
        dialogos.responder(Boton::aceptar, kBorrara);
        dialogos.responder(Boton::aceptar,
                           fmt::format("Fecha incorrecta: el reloj del registrador no admite el año {}: "
                                       "ponga uno de 2000 a 2064",
                                       std::stoi(anio)));
        pulsar(forma.Command3);
        EXPECT_EQ(dialogos.mensajes().size(), 2u);
        fueraDeEdicion();
        EXPECT_EQ(forma.fecha1.text(), "31/12/" + anio);
        EXPECT_EQ(forma.Text2.text(), "Ana") << "not padded: nothing was sent";
        EXPECT_TRUE(puertos.escritos(1).empty());
        EXPECT_EQ(puertos.aperturas(1), 3u) << "search, wake-up and read of the start";
    }
}

TEST_F(Escritura, ACharacterThatTheLoggerLacksIsToldOnceWithItsFieldAndStaysAsTyped) {
    conectar();
    for (auto* campo : forma.camposTexto()) {
        SCOPED_TRACE(campo->nombreAccesible());
        dialogos.olvidar();
        pulsar(forma.Command2);
        inicio.cambiar(*campo, "a😀");
        dialogos.responder(Boton::aceptar, kBorrara);
        dialogos.responder(Boton::aceptar,
                           fmt::format("{}: hay un carácter que el registrador no tiene: cámbielo",
                                       campo->nombreAccesible()));
        pulsar(forma.Command3);
        EXPECT_EQ(dialogos.mensajes().size(), 2u);
        fueraDeEdicion();
        EXPECT_EQ(campo->text(), "a😀") << "not padded: nothing was sent";
        EXPECT_TRUE(puertos.escritos(1).empty());
        pulsar(forma.Command2);
        inicio.cambiar(*campo, "a€");
    }
    enviar();
    EXPECT_EQ(puertos.maquina(1).texto(CampoTexto::altitud), "   a€") << "of its characters it is one";
}

TEST_F(Escritura, TheFirstAndTheLastYearOfTheLoggersClockComeBackAsTheyWereSent) {
    conectar();
    for (const std::string fecha : {"01/01/2000", "31/12/2064"}) {
        SCOPED_TRACE(fecha);
        pulsar(forma.Command2);
        inicio.cambiar(forma.MaskEdBox2, "10:20:30");
        inicio.salirDe(forma.MaskEdBox2);
        inicio.cambiar(forma.fecha1, fecha);
        enviar();
        inicio.forma.fecha1.text = "";
        pulsar(forma.configuracion);
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
        bucle.avanzar(200ms);
        EXPECT_EQ(forma.fecha1.text(), fecha);
        EXPECT_EQ(std::count(forma.lineas().begin(), forma.lineas().end(), "fecha mal"), 0);
    }
}

// A reading whose day is beyond its month may carry over the last year.
TEST_F(Escritura, AClockThatCarriesOverTheLastYearIsNotSentBack) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        constexpr std::array<std::uint8_t, 3> kFecha = {0x31, 0x13, 0x64};
        const bool fecha = saliente.intercambio == Intercambio::lectura && saliente.indice >= 110;
        return Efecto::pasar(fecha ? kFecha[saliente.indice - 110] : saliente.byte);
    });
    pulsar(forma.configuracion);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0 && !puertos.abierto(1); }));
    EXPECT_EQ(forma.fecha1.text(), "31/01/2065");
    puertos.manipular(1, {});
    puertos.olvidarTrafico(1);
    pulsar(forma.Command2);
    dialogos.responder(Boton::aceptar, kBorrara);
    dialogos.responder(Boton::aceptar);
    pulsar(forma.Command3);
    EXPECT_TRUE(puertos.escritos(1).empty());
    fueraDeEdicion();
}

TEST_F(Escritura, CancelAsksNothingOfTheDate) {
    editar();
    inicio.cambiar(forma.fecha1, "");
    dialogos.responder(Boton::cancelar, kBorrara);
    dialogos.olvidar();
    pulsar(forma.Command3);
    EXPECT_EQ(dialogos.mensajes().size(), 1u);
    fueraDeEdicion();
}

TEST_F(Escritura, TheTimeIsCheckedBeforeSendingEvenIfItsFieldWasNeverLeft) {
    editar();
    dialogos.olvidar();
    inicio.cambiar(forma.MaskEdBox2, "25:00:00");
    inicio.cambiar(forma.fecha1, "31/02/2024");
    dialogos.responder(Boton::aceptar, kBorrara);
    dialogos.responder(Boton::aceptar, "Hora incorrecta (ej. 14:58:45)");
    pulsar(forma.Command3);
    EXPECT_EQ(dialogos.mensajes().size(), 2u) << "one reason is enough";
    EXPECT_TRUE(puertos.escritos(1).empty());
    fueraDeEdicion();
}

TEST_F(Escritura, AnIntervalThatIsNoneOfTheSixLeavesNoOptionVisible) {
    auto maquina = MaquinaRegistrador(memoriaSimulada(Clima()));
    conectar(1, std::move(maquina));
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        const bool intervalo = saliente.intercambio == Intercambio::lectura && saliente.indice == 106;
        return Efecto::pasar(intervalo ? std::uint8_t{0x20} : saliente.byte);
    });
    pulsar(forma.configuracion);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0 && !puertos.abierto(1); }));
    puertos.manipular(1, {});
    for (const auto respuesta : {Boton::cancelar, Boton::aceptar}) {
        pulsar(forma.Command2);
        for (auto* opcion : forma.opciones()) EXPECT_TRUE(opcion->visible());
        dialogos.responder(respuesta, kBorrara);
        pulsar(forma.Command3);
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
        bucle.avanzar(200ms);
        for (auto* opcion : forma.opciones()) EXPECT_FALSE(opcion->visible()) << opcion->nombre();
    }
    EXPECT_EQ(puertos.maquina(1).intervaloCodigo(), 0x20) << "what the logger had is sent back";
}

// The first reading broke off before it, so that the form has no interval of its own.
TEST_F(Escritura, AnIntervalThatNobodyToldOrChoseIsAskedForAndNothingIsSent) {
    puertos.conectar(1);
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        efecto.callar = saliente.intercambio == Intercambio::lectura && saliente.indice == 50;
        return efecto;
    });
    dialogos.responderSiempre(Boton::aceptar);
    inicio.cargar();
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0 && puertos.abierto(1); }));
    bucle.avanzar(10s);
    puertos.manipular(1, {});
    puertos.olvidarTrafico(1);
    dialogos.olvidar();
    pulsar(forma.Command2);
    pulsar(forma.Check1);
    pulsar(forma.Command3);
    ASSERT_EQ(dialogos.mensajes().size(), 2u);
    EXPECT_EQ(dialogos.textos().back(), "Falta el intervalo de muestreo: elija uno");
    EXPECT_TRUE(puertos.escritos(1).empty());
    fueraDeEdicion();
    pulsar(forma.Command2);
    pulsar(forma.Option4);
    pulsar(forma.Command3);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    bucle.avanzar(1s);
    EXPECT_EQ(puertos.maquina(1).intervaloCodigo(), 0x15);
}

TEST_F(Escritura, WhatIsTypedWhileItIsSentChangesNothingThatIsShown) {
    editar();
    pulsar(forma.Option2);
    inicio.cambiar(forma.Text2, "Ana");
    inicio.teclear(forma.Text10, '1');  // clears the answer of an earlier exchange
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio == Intercambio::eleccion && saliente.indice == 0) efecto.demora = 900ms;
        return efecto;
    });
    dialogos.responder(Boton::aceptar, kBorrara);
    pulsar(forma.Command3);
    for (const auto cuando : {1000ms, 1500ms}) {
        bucle.avanzar(cuando);
        ASSERT_EQ(inicio.operacionesEnCurso(), 1u);
        inicio.cambiar(forma.Text2, "Otra");
        inicio.cambiar(forma.fecha1, "01/01/2001");
        inicio.cambiar(forma.MaskEdBox2, "25:00:00");
        inicio.salirDe(forma.MaskEdBox2);
        pulsar(forma.Option6);
        pulsar(forma.Check1);
    }
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    bucle.avanzar(1s);
    EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
    EXPECT_EQ(forma.Text2.text(), std::string(27, ' ') + "Ana");
    for (auto* opcion : forma.opciones()) EXPECT_EQ(opcion->visible(), opcion == &forma.Option2);
    EXPECT_EQ(puertos.maquina(1).intervaloCodigo(), 0x05);
    EXPECT_NE(forma.fecha1.text(), "01/01/2001");
    fueraDeEdicion();
}

}  // namespace
}  // namespace telvane
