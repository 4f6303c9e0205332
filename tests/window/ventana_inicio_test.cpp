// The main window as a whole: its layout, its keyboard order, its strip of printed lines, its closing.
#include <QAccessible>
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

#include "tests/window/ventana_prueba.h"
#include "ui/qt/letras.h"
#include "ui/qt/vista_lineas.h"

namespace telvane {
namespace {

void soloVisible(FormaInicio& forma, Control& cual) {
    for (auto* opcion : forma.opciones()) opcion->visible = opcion == &cual;
    QApplication::processEvents();
}

TEST_F(VentanaSuelta, TheReadingsHaveTheLetterOfColumns) {
    ASSERT_NE(letraDeColumnas().families(), QApplication::font().families());
    EXPECT_EQ(ventana.widget(forma.Text60)->font().families(), letraDeColumnas().families());
    EXPECT_EQ(ventana.widget(forma.Text10)->font().families(), QApplication::font().families());
}

TEST_F(VentanaSuelta, HiddenOptionsLeaveNoGap) {
    const auto primera = de<QWidget>(forma.Option1).pos();
    soloVisible(forma, forma.Option5);
    disponer();
    EXPECT_EQ(de<QWidget>(forma.Option5).pos(), primera);
}

TEST_F(VentanaSuelta, HidingOptionsMovesNothingElse) {
    const auto donde = [&] {
        std::vector<QPoint> lugares;
        for (auto* control :
             {&forma.Text2, &forma.MaskEdBox2, &forma.Command3, &forma.Text10, &forma.Command13}) {
            lugares.push_back(de<QWidget>(*control).mapTo(&ventana, QPoint(0, 0)));
        }
        return lugares;
    };
    disponer();
    const auto antes = donde();
    soloVisible(forma, forma.Option4);
    disponer();
    EXPECT_EQ(donde(), antes);
}

TEST_F(VentanaSuelta, ShowingTheLiveReadingMovesNothingWhereTheWindowHasRoom) {
    ventana.resize(1280, 900);
    QApplication::processEvents();
    disponer();
    const auto antes = de<QWidget>(forma.Command4).mapTo(&ventana, QPoint(0, 0));
    const auto hojas = de<QWidget>(forma.RichTextBox1).size();
    forma.Text60.visible = true;
    disponer();
    EXPECT_EQ(de<QWidget>(forma.Command4).mapTo(&ventana, QPoint(0, 0)), antes);
    EXPECT_EQ(de<QWidget>(forma.RichTextBox1).size(), hojas);
}

TEST_F(VentanaSuelta, TheEightLiveLinesFitWithoutScrolling) {
    forma.Text60.visible = true;
    forma.Text60.text = "1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n";
    QApplication::processEvents();
    auto& vista = de<VistaLineas>(forma.Text60);
    EXPECT_EQ(vista.lineas(), 8);
    EXPECT_GE(vista.viewport()->height(), 8 * vista.fontMetrics().lineSpacing());
}

TEST_F(VentanaSuelta, EverythingIsSeenInTenTwentyFourBySevenHundred) {
    forma.Text60.visible = true;
    // What a title bar and a border leave.
    ventana.resize(1024, 668);
    QApplication::processEvents();
    for (const auto* control : forma.controles()) {
        auto* widget = ventana.widget(*control);
        if (widget == nullptr || control == &forma.RichTextBox2) continue;
        ASSERT_TRUE(widget->isVisible()) << control->nombre();
        // A pane is covered by its own viewport.
        if (auto* vista = dynamic_cast<VistaLineas*>(widget)) widget = vista->viewport();
        EXPECT_EQ(widget->visibleRegion().boundingRect(), widget->rect()) << control->nombre();
    }
}

TEST_F(VentanaSuelta, WithLargeLettersThePanelsStandOneBelowTheOther) {
    const auto original = QApplication::font();
    auto grande = original;
    grande.setPointSizeF(original.pointSizeF() * 1.8);
    QApplication::setFont(grande);
    ventana.resize(1024, 668);
    const auto lugar = [&](const Control& control) {
        return de<QWidget>(control).mapTo(&ventana, QPoint(0, 0));
    };
    const bool alineados =
        QTest::qWaitFor([&] { return lugar(forma.Label11).x() == lugar(forma.Label9).x(); });
    const bool debajo = lugar(forma.Label9).y() > lugar(forma.Label11).y();
    QApplication::setFont(original);
    EXPECT_TRUE(alineados);
    EXPECT_TRUE(debajo);
}

TEST_F(VentanaSuelta, OnAWideScreenAButtonIsStillAButton) {
    ventana.resize(1920, 1050);
    QApplication::processEvents();
    const auto hojas = de<QWidget>(forma.RichTextBox1).width();
    for (auto* control : {&forma.Command13, &forma.Command33, &forma.Command43, &forma.Command4}) {
        const auto& boton = de<QPushButton>(*control);
        EXPECT_LT(boton.width(), hojas * 3 / 4) << control->nombre();
        EXPECT_GE(boton.width(), boton.sizeHint().width()) << control->nombre();
    }
    ventana.resize(1000, 650);
    QApplication::processEvents();
    EXPECT_EQ(de<QWidget>(forma.Command13).width(), de<QWidget>(forma.Text60).width());
}

TEST_F(VentanaSuelta, AReadOnlyFieldDoesNotStaySelected) {
    auto& campo = de<QLineEdit>(forma.Text2);
    forma.Text2.text = "INTA";
    forma.Text2.locked = true;
    // It has the focus from the start.
    de<QWidget>(forma.Text3).setFocus();
    campo.setFocus(Qt::TabFocusReason);
    EXPECT_FALSE(campo.hasSelectedText());
    EXPECT_EQ(campo.cursorPosition(), 0);
    de<QWidget>(forma.Text3).setFocus();
    forma.Text2.locked = false;
    campo.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(texto(campo.selectedText()), "INTA");
}

TEST_F(VentanaSuelta, AScreenReaderTakesItForAWindow) {
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&ventana)->role(), QAccessible::Window);
}

TEST_F(VentanaSuelta, TabFollowsTheEye) {
    for (auto* control : {&forma.Text60, &forma.Check1}) control->visible = true;
    forma.Option1.value = 1;
    auto* primero = &de<QWidget>(forma.Command1);
    primero->setFocus();
    std::vector<std::string> orden;
    for (int i = 0; i < 60; ++i) {
        auto* actual = ventana.focusWidget();
        orden.push_back(texto(actual->objectName()));
        QTest::keyClick(actual, Qt::Key_Tab);
        if (ventana.focusWidget() == primero) break;
    }
    // The options are one stop, the arrows go on within.
    const std::vector<std::string> esperado = {"Command1",
                                               "configuracion",
                                               "Command2",
                                               "Text2",
                                               "Text3",
                                               "Text4",
                                               "Text5",
                                               "Text7",
                                               "Option1",
                                               "MaskEdBox2",
                                               "fecha1",
                                               "Check1",
                                               "Command3",
                                               "Command5",
                                               "Text10",
                                               "Command13",
                                               "Command33",
                                               "Command43",
                                               "qt_tabwidget_tabbar",
                                               "RichTextBox1",
                                               "Command4",
                                               "Text60",
                                               "Diagnostico",
                                               "salir"};
    EXPECT_EQ(orden, esperado);
}

TEST_F(VentanaSuelta, ThePageWrittenLastStaysInSight) {
    auto* hojas = ventana.findChild<QTabWidget*>();
    forma.RichTextBox1.text = "datos";
    forma.RichTextBox2.text = "informe";
    EXPECT_EQ(hojas->currentWidget(), ventana.widget(forma.RichTextBox2));
    forma.RichTextBox1.text = "otros datos";
    EXPECT_EQ(hojas->currentWidget(), ventana.widget(forma.RichTextBox1));
    EXPECT_EQ(texto(hojas->tabText(0)), "Datos");
    EXPECT_EQ(texto(hojas->tabText(1)), "Informe");
}

TEST_F(VentanaSuelta, WhatIsPrintedStandsInTheStripTheNewestBelow) {
    auto* franja = dynamic_cast<VistaLineas*>(ventana.findChild<QWidget*>("Diagnostico"));
    ASSERT_NE(franja, nullptr);
    for (int i = 0; i < 20; ++i) forma.imprimir("<b>" + std::to_string(i) + "</b>");
    EXPECT_EQ(franja->lineas(), 20);
    EXPECT_EQ(texto(franja->linea(19)), "<b>19</b>");
    auto* accesible = QAccessible::queryAccessibleInterface(franja);
    EXPECT_EQ(texto(accesible->text(QAccessible::Name)), "Diagnostico");
    ASSERT_NE(accesible->textInterface(), nullptr);
    EXPECT_TRUE(accesible->textInterface()->text(0, 100000).endsWith("<b>19</b>\n"));
    QApplication::clipboard()->setText(QStringLiteral("antes"));
    QTest::mouseClick(franja->viewport(), Qt::LeftButton, {}, QPoint(10, 10));
    QTest::keyClick(franja, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(franja, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(texto(QApplication::clipboard()->text()), "antes") << "part of the surface, nobody's text";
}

TEST_F(VentanaSuelta, ClosingByTheFrameIsPressingSalirAndClosesNothing) {
    ventana.close();
    EXPECT_EQ(hecho.pulsados, std::vector<std::string>{"salir"});
    EXPECT_TRUE(ventana.isVisible());
}

TEST_F(VentanaSuelta, TheCheckBoxesLabelPressesIt) {
    forma.Check1.visible = true;
    forma.Label3.visible = true;
    QApplication::processEvents();
    QTest::mouseClick(&de<QLabel>(forma.Label3), Qt::LeftButton);
    EXPECT_EQ(hecho.pulsados, std::vector<std::string>{"Check1"});
}

TEST_F(VentanaSuelta, TheEstablishedConnectionIsReadAsText) {
    auto& boton = de<QPushButton>(forma.Command1);
    EXPECT_FALSE(boton.isFlat());
    forma.Command1.enabled = false;
    EXPECT_TRUE(boton.isFlat());
    EXPECT_EQ(boton.palette().color(QPalette::Disabled, QPalette::ButtonText),
              boton.palette().color(QPalette::Active, QPalette::WindowText));
}

TEST_F(VentanaSuelta, TheActionAfterTheFirstFrameRunsWithTheWindowPainted) {
    EXPECT_TRUE(QTest::qWaitFor([&] { return ventana.enPantalla(); }));
    bool corrio = false;
    ventana.trasPrimerCuadro([&] { corrio = true; });
    EXPECT_TRUE(corrio);
}

TEST(VentanaSinMostrar, AppearsWhenItsFormIsShown) {
    FormaInicio forma;
    UsuarioPrueba hecho;
    VentanaInicio ventana(forma, hecho.usuario());
    EXPECT_FALSE(ventana.isVisible());
    bool corrio = false;
    ventana.trasPrimerCuadro([&] { corrio = true; });
    EXPECT_TRUE(corrio) << "nada que esperar mientras la forma no se muestre";
    forma.mostrar();
    EXPECT_TRUE(ventana.isVisible());
}

}  // namespace
}  // namespace telvane
