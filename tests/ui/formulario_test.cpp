// Forms as data: state, observers, printed lines.
#include "ui/formulario.h"

#include <set>

#include <gtest/gtest.h>

#include "ui/forma_coef.h"
#include "ui/forma_inicio.h"
#include "ui/forma_presenta.h"
#include "ui/forma_progress.h"

namespace telvane {
namespace {

TEST(Formulario, AnObserverHearsAChangeOnceAndOnlyWhileItIsKept) {
    FormaInicio forma;
    std::vector<std::pair<std::string, Que>> oidos;
    auto observacion =
        forma.observar({.alCambiar = [&](Control& c, Que que) { oidos.emplace_back(c.nombre(), que); },
                        .alCambiarForma = {},
                        .alImprimir = {}});
    forma.Command13.enabled = false;
    forma.Command13.enabled = false;
    forma.Label1.caption = "x";
    EXPECT_EQ(oidos, (std::vector<std::pair<std::string, Que>>{{"Command13", Que::enabled},
                                                               {"Label1", Que::caption}}));
    observacion.reset();
    forma.Label1.caption = "y";
    EXPECT_EQ(oidos.size(), 2u);
}

TEST(Formulario, UnloadingGoesBackToTheStateAtLoad) {
    FormaProgress progress;
    progress.mostrarConBarra(4098);
    progress.ProgressBar1.value = 12;
    progress.Label1.caption = "00:01:00";
    progress.Command45.visible = false;
    progress.caption("Procesando Archivo");
    progress.descargar();
    EXPECT_FALSE(progress.cargado());
    EXPECT_FALSE(progress.mostrado());
    EXPECT_EQ(progress.caption(), "Estado de Comunicacion");
    EXPECT_EQ(progress.ProgressBar1.value(), 0);
    EXPECT_EQ(progress.Label1.caption(), "00:00:00");
    EXPECT_TRUE(progress.Command45.visible());
}

TEST(Formulario, KeepsTheLastPrintedLines) {
    FormaInicio forma;
    std::string ultima;
    const auto observacion =
        forma.observar({.alCambiar = {}, .alCambiarForma = {}, .alImprimir = [&](const std::string& linea) {
                            ultima = linea;
                        }});
    for (int i = 0; i < 600; ++i) forma.imprimir(std::to_string(i));
    EXPECT_EQ(ultima, "599");
    EXPECT_EQ(forma.lineas().size(), 500u);
    EXPECT_EQ(forma.lineas().front(), "100");
}

TEST(Formulario, EveryControlIsFoundByItsDesignerName) {
    FormaInicio forma;
    std::set<std::string_view> nombres;
    for (auto* control : forma.controles()) {
        EXPECT_TRUE(nombres.insert(control->nombre()).second) << control->nombre();
        EXPECT_EQ(forma.buscar(control->nombre()), control);
    }
    EXPECT_EQ(forma.buscar("Command99"), nullptr);
    for (const auto* nombre :
         {"Option1", "Option6", "Check1", "Text2", "Text10", "Text60", "MaskEdBox2", "fecha1", "RichTextBox1",
          "RichTextBox2", "CommonDialog1", "MSComm1", "MSComm6", "Timer1", "Timer4", "Label16", "Line5"}) {
        EXPECT_NE(forma.buscar(nombre), nullptr) << nombre;
    }
}

TEST(FormaInicio, TimersHaveTheirDesignedIntervals) {
    FormaInicio forma;
    EXPECT_EQ(forma.Timer1.interval(), 998);
    EXPECT_EQ(forma.Timer2.interval(), 20);
    EXPECT_EQ(forma.Timer3.interval(), 0);
    EXPECT_FALSE(forma.Timer3.enabled());
    EXPECT_EQ(forma.Timer4.interval(), 1000);
}

TEST(FormaCoef, HasTwoFieldsForEachOfSixteenRows) {
    FormaCoef coef;
    EXPECT_EQ(coef.caption(), "coeficientes");
    ASSERT_EQ(coef.Text.size(), 32u);
    ASSERT_EQ(coef.Label4.size(), 8u);
    ASSERT_EQ(coef.Label3.size(), 8u);
    EXPECT_EQ(coef.Text[0]->text(), "Text1");
    EXPECT_EQ(coef.Text[31]->nombre(), "Text32");
    EXPECT_EQ(coef.Label4[7]->caption(), "humedad");
    EXPECT_EQ(coef.Label3[7]->caption(), "aux13");
    EXPECT_EQ(coef.Label6.caption(), "* Vo +");
}

}  // namespace
}  // namespace telvane
