// Start-up, the regional check, the exit button, the clock display.
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

using Arranque = Banco;

TEST_F(Arranque, LoadsTheProgressFormWithItsBarHiddenAndDoesNotShowIt) {
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    EXPECT_TRUE(inicio.progress.cargado());
    EXPECT_FALSE(inicio.progress.mostrado());
    EXPECT_FALSE(inicio.progress.ProgressBar1.visible());
}

TEST_F(Arranque, CancellingTheQuestionLeavesAUsableWindow) {
    puertos.conectar(1);
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    bucle.avanzar(1min);
    EXPECT_TRUE(forma.mostrado());
    EXPECT_TRUE(inicio.presenta.mostrado()) << "only a read or a failed search closes the splash";
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
    EXPECT_TRUE(forma.Command1.enabled());
    EXPECT_FALSE(forma.Command2.enabled());
    EXPECT_FALSE(forma.Command3.enabled());
    EXPECT_TRUE(forma.Command33.enabled());
    EXPECT_FALSE(forma.Check1.visible());
    EXPECT_FALSE(forma.Label3.visible());
    for (auto* campo : forma.camposTexto()) EXPECT_TRUE(campo->locked()) << campo->nombre();
    EXPECT_FALSE(forma.Timer1.enabled());
    EXPECT_FALSE(forma.Timer4.enabled());
    EXPECT_EQ(puertos.aperturas(1), 0u) << "the ports stay untouched";
    EXPECT_TRUE(lineas().empty());
}

TEST_F(Arranque, RightRegionalSettingsAskNothing) {
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    ASSERT_EQ(registro.leidos.size(), 8u);
    EXPECT_EQ(registro.leidos.front(), "HKEY_CURRENT_USER\\Control Panel\\International\\iDigits");
    EXPECT_EQ(registro.leidos.back(), "HKEY_CURRENT_USER\\Control Panel\\International\\sMonThousandSep");
    EXPECT_TRUE(registro.escritos.empty());
}

TEST_F(Arranque, OnlyTheDifferingValuesAreListedAndAllEightAreWrittenInTheirOrder) {
    registro.poner("sDecimal", ",");
    registro.poner("sShortDate", "d/M/yyyy");
    dialogos.responder(Boton::aceptar,
                       "Su Configuracion Regional no es la apropiada para este sistema.\r"
                       "Desea cambiar estos valores?\r"
                       "\rSeparador Decimal: ,\rFormato de Fecha: d/M/yyyy"
                       "\r\r Si decide Cancelar  el Sistema se Cerrará");
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    EXPECT_EQ(dialogos.mensajes()[0].icono, Icono::exclamacion);
    EXPECT_EQ(dialogos.mensajes()[0].botones, Botones::aceptarCancelar);
    std::vector<std::string> orden;
    for (const auto& nombre : registro.escritos) orden.push_back(nombre.substr(nombre.rfind('\\') + 1));
    EXPECT_EQ(orden, (std::vector<std::string>{"sList", "sTimeFormat", "sShortDate", "sDecimal", "sThousand",
                                               "iDigits", "sMonDecimalSep", "sMonThousandSep"}));
    for (const auto& valor : kValoresRegionales) {
        EXPECT_EQ(registro.valores[std::string(kClaveRegional) + std::string(valor.nombre)], valor.exigido);
    }
}

TEST_F(Arranque, NoTimerRunsWhileTheFirstQuestionWaits) {
    registro.poner("iDigits", "3");
    dialogos.dejarAbierto();
    inicio.cargar();
    bucle.avanzar(1min);
    EXPECT_EQ(forma.MaskEdBox2.text(), "");
    dialogos.contestar(Boton::cancelar);
}

TEST_F(Arranque, AValueThatDiffersOnlyInCaseCountsAsDifferent) {
    registro.poner("sTimeFormat", "hh:mm:ss");
    dialogos.responder(Boton::aceptar);
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    EXPECT_NE(dialogos.mensajes()[0].texto.find("Formato de Hora: hh:mm:ss"), std::string::npos);
}

TEST_F(Arranque, RefusingTheRegionalChangeEndsTheProgramBeforeAnyFormIsShown) {
    registro.poner("iDigits", "3");
    dialogos.responder(Boton::cancelar);
    inicio.cargar();
    EXPECT_EQ(terminaciones, std::vector<int>{0});
    EXPECT_FALSE(forma.mostrado());
    EXPECT_FALSE(inicio.presenta.mostrado());
    EXPECT_TRUE(registro.escritos.empty());
    EXPECT_EQ(dialogos.mensajes().size(), 1u);
}

TEST_F(Arranque, AValueThatCannotBeReadEndsWithTheRunTimeErrorReport) {
    registro.valores.clear();
    inicio.cargar();
    ASSERT_EQ(fallos.size(), 1u);
    EXPECT_NE(fallos[0].find("iDigits"), std::string::npos);
    EXPECT_FALSE(forma.mostrado());
}

TEST_F(Arranque, SalirEndsAtOnceFromInsideEveryWait) {
    puertos.conectar(1);
    dialogos.responder(Boton::aceptar, kPregunta);
    dialogos.responder(Boton::aceptar, " Conexion en COM 1  @ 19200 bps ");
    inicio.cargar();
    pulsar(forma.salir);  // inside the search
    EXPECT_EQ(terminaciones.size(), 1u);
    ASSERT_TRUE(bucle.correrHasta([&] { return bucle.enPausa(); }));
    pulsar(forma.salir);  // inside the wait that does not yield
    EXPECT_EQ(terminaciones, (std::vector<int>{0, 0}));
}

TEST_F(Arranque, TheLoggersClockAdvancesOneSecondATickWhateverTheRealTime) {
    conectar();
    ASSERT_TRUE(forma.Timer1.enabled());
    pulsar(forma.Command2);
    inicio.cambiar(forma.MaskEdBox2, "23:59:57");
    inicio.salirDe(forma.MaskEdBox2);
    forma.Timer1.enabled = true;
    for (const auto* esperado : {"23:59:58", "23:59:59", "00:00:00", "00:00:01"}) {
        bucle.avanzar(998ms);
        EXPECT_EQ(forma.MaskEdBox2.text(), esperado);
    }
}

TEST_F(Arranque, TheCoefficientsFormForgetsOnClosing) {
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    pulsar(forma.Command5);
    ASSERT_TRUE(inicio.coef.mostrado());
    inicio.cambiar(*inicio.coef.Text[31], "1.25");
    pulsar(inicio.coef.Command2);
    pulsar(inicio.coef.Command3);
    EXPECT_TRUE(inicio.coef.mostrado());
    EXPECT_EQ(inicio.coef.Text[31]->text(), "1.25");
    pulsar(inicio.coef.Command1);
    EXPECT_FALSE(inicio.coef.cargado());
    pulsar(forma.Command5);
    for (std::size_t i = 0; i < 32; ++i)
        EXPECT_EQ(inicio.coef.Text[i]->text(), "Text" + std::to_string(i + 1));
}

TEST_F(Arranque, EveryCaptionStandsAsDesigned) {
    const std::map<std::string, std::string> captions = {
        {"Command1", "Reconectar con Registrador ?"},
        {"configuracion", "Importar Configuracion"},
        {"Command2", "Cambiar configuracion"},
        {"Command3", "Enviar configuracion"},
        {"Command5", "Coeficientes"},
        {"Command4", "DATOS EN LINEA"},
        {"Command13", "Importar datos desde equipo y exportar a excell (csv)"},
        {"Command33", "Exportar Eventos (.txt) y Base de Datos (.xls)"},
        {"Command43", "Abrir Archivo Base (.rgt)"},
        {"salir", "Salir"},
        {"Label16", "NimbaRIS"},
        {"Label14", "Estacion Meteorologica Automatica"}};
    for (const auto& [nombre, caption] : captions) {
        const auto* control = forma.buscar(nombre);
        ASSERT_NE(control, nullptr) << nombre;
        EXPECT_EQ(control->caption(), caption);
    }
    EXPECT_EQ(forma.caption(), "Telvane de VELTRA v1.10");
    EXPECT_EQ(forma.controles().size(), 60u);
}

}  // namespace
}  // namespace telvane
