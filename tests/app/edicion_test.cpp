// Editing the configuration on the form.
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

using EdicionTest = Banco;

TEST_F(EdicionTest, CambiarConfiguracionUnlocksTheFieldsAndShowsEveryOption) {
    conectar();
    pulsar(forma.Command2);
    EXPECT_FALSE(forma.Timer1.enabled());
    EXPECT_TRUE(forma.Check1.visible());
    EXPECT_TRUE(forma.Label3.visible());
    for (auto* opcion : forma.opciones()) EXPECT_TRUE(opcion->visible());
    for (auto* campo : forma.camposTexto()) EXPECT_FALSE(campo->locked());
    EXPECT_FALSE(forma.configuracion.enabled());
    EXPECT_TRUE(forma.Command3.enabled());
    EXPECT_FALSE(forma.Command2.enabled());
}

TEST_F(EdicionTest, AnInvalidTimeIsReplacedByThePcsAfterTheMessage) {
    conectar();
    pulsar(forma.Command2);
    inicio.cambiar(forma.MaskEdBox2, "25:00:00");
    dialogos.responder(Boton::aceptar, "Hora incorrecta (ej. 14:58:45)");
    inicio.salirDe(forma.MaskEdBox2);
    EXPECT_TRUE(forma.MaskEdBox2.text().starts_with("10:00:"));
    EXPECT_EQ(forma.MaskEdBox2.mask(), "##:##:##");
    EXPECT_FALSE(forma.Timer1.enabled());
}

TEST_F(EdicionTest, TheTimeThatReplacesAnInvalidOneIsTheOneThatIsSent) {
    conectar();
    pulsar(forma.Command2);
    pulsar(forma.Check1);  // the clock runs again
    inicio.cambiar(forma.MaskEdBox2, "25:00:00");
    dialogos.dejarAbierto("Hora incorrecta (ej. 14:58:45)");
    inicio.salirDe(forma.MaskEdBox2);
    bucle.avanzar(5s);
    EXPECT_EQ(forma.MaskEdBox2.text(), "25:00:00") << "no tick writes over what the message is about";
    dialogos.contestar(Boton::aceptar);
    const auto hora = forma.MaskEdBox2.text();
    EXPECT_TRUE(hora.starts_with("10:00:"));
    dialogos.responder(Boton::aceptar);
    pulsar(forma.Command3);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    bucle.avanzar(200ms);
    const auto& enviados = puertos.escritos(1);
    ASSERT_EQ(enviados.size(), 110u);
    const auto bcd = [&](std::size_t desde) {
        const auto valor = std::stoi(hora.substr(desde, 2));
        return valor / 10 * 16 + valor % 10;
    };
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(enviados[3 + 101 + i], bcd(3 * i));
}

TEST_F(EdicionTest, TheDateAndTheTimeCanBeWrittenInEditModeOnly) {
    conectar();
    const auto fecha = forma.fecha1.text();
    const auto intentar = [&] {
        inicio.cambiar(forma.fecha1, "01/02/2003");
        inicio.cambiar(forma.MaskEdBox2, "25:00:00");
        inicio.salirDe(forma.MaskEdBox2);
    };
    EXPECT_TRUE(forma.fecha1.locked());
    EXPECT_TRUE(forma.MaskEdBox2.locked());
    intentar();
    EXPECT_EQ(forma.fecha1.text(), fecha);
    pulsar(forma.Command2);
    EXPECT_FALSE(forma.fecha1.locked());
    EXPECT_FALSE(forma.MaskEdBox2.locked());
    dialogos.responder(Boton::cancelar);
    pulsar(forma.Command3);
    intentar();
    EXPECT_EQ(forma.fecha1.text(), fecha);
    EXPECT_EQ(dialogos.mensajes().size(), 3u) << "no message about a time that nobody could type";
}

TEST_F(EdicionTest, LeavingTheTimeFieldUntouchedOutsideEditModeAsksNothing) {
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    inicio.salirDe(forma.MaskEdBox2);
    EXPECT_EQ(dialogos.mensajes().size(), 1u);
}

TEST_F(EdicionTest, CheckingAndUncheckingTakeThePcClockBothTimes) {
    conectar();
    pulsar(forma.Command2);
    for (const int marcado : {1, 0}) {
        inicio.cambiar(forma.MaskEdBox2, "01:02:03");
        inicio.cambiar(forma.fecha1, "01/02/2003");
        pulsar(forma.Check1);
        EXPECT_EQ(forma.Check1.value(), marcado);
        EXPECT_TRUE(forma.MaskEdBox2.text().starts_with("10:00:"));
        EXPECT_EQ(forma.fecha1.text(), "20/11/2026");
        EXPECT_TRUE(forma.Timer1.enabled());
        forma.Timer1.enabled = false;
    }
}

TEST_F(EdicionTest, ChoosingAnIntervalUnchecksTheOthers) {
    conectar();
    pulsar(forma.Command2);
    pulsar(forma.Option2);
    for (auto* opcion : forma.opciones()) EXPECT_EQ(opcion->value(), opcion == &forma.Option2 ? 1 : 0);
}

}  // namespace
}  // namespace telvane
