// Editing the configuration on the form.
#include "loggerconfig/edicion.h"

#include "app/banco.h"

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

TEST(LeerHora, TakesTimesOfTheDayOnly) {
    EXPECT_EQ(leerHora("00:00:00"), 0s);
    EXPECT_EQ(leerHora("23:59:59"), 86399s);
    EXPECT_EQ(leerHora("1:2:3"), 3723s);
    for (const auto* mala : {"", "24:00:00", "12:60:00", "12:00:60", "12:00", "12:00:00:00", " 1:00:00",
                             "__:__:__", "::", "-1:00:00", "1a:00:00", "120:00:00"}) {
        EXPECT_FALSE(leerHora(mala)) << mala;
    }
}

}  // namespace
}  // namespace telvane
