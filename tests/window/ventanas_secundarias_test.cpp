// The progress dialog, the splash and the coefficients window.
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QWindow>

#include "tests/window/ventana_prueba.h"
#include "ui/qt/aparicion.h"
#include "ui/qt/dialogo_progress.h"
#include "ui/qt/letras.h"
#include "ui/qt/ventana_coef.h"
#include "ui/qt/ventana_presenta.h"

namespace telvane {
namespace {

using Lista = std::vector<std::string>;

class Progreso : public ::testing::Test {
   protected:
    FormaProgress forma;
    UsuarioPrueba hecho;
    DialogoProgress dialogo{forma, hecho.usuario(), nullptr};
    QProgressBar& barra = *dialogo.findChild<QProgressBar*>("ProgressBar1");
};

TEST_F(Progreso, HasItsThreeControls) {
    EXPECT_EQ(texto(dialogo.windowTitle()), "Estado de Comunicacion");
    EXPECT_FALSE(dialogo.isModal());
    auto* cancelar = dialogo.findChild<QPushButton*>("Command45");
    EXPECT_EQ(texto(cancelar->text()), "Cancel");
    EXPECT_EQ(texto(cancelar->toolTip()), "Si cancela se interrunpira la comunicacion");
    EXPECT_EQ(texto(dialogo.findChild<QLabel*>("Label1")->text()), "00:00:00");
}

TEST_F(Progreso, TheBarReachesTheControlsValue) {
    forma.mostrarConBarra(4098);
    for (int i = 0; i <= 2049; ++i) forma.ProgressBar1.value = i;
    EXPECT_LT(barra.value(), 2049) << "miles de pasos en un cuadro se pintan una vez";
    EXPECT_TRUE(QTest::qWaitFor([&] { return barra.value() == 2049; }));
    EXPECT_EQ(barra.maximum(), 4098);
}

TEST_F(Progreso, WithoutAMaximumNothingMoves) {
    EXPECT_GT(barra.maximum(), barra.minimum());
}

TEST_F(Progreso, ClosingItIsPressingItsButton) {
    dialogo.show();
    dialogo.close();
    QTest::keyClick(&dialogo, Qt::Key_Escape);
    EXPECT_EQ(hecho.pulsados, (Lista{"Command45", "Command45"}));
    EXPECT_TRUE(dialogo.isVisible()) << "solo su forma lo quita de la pantalla";
}

TEST_F(Progreso, TheTitleChangesWithTheForm) {
    forma.caption("Generacion de Archivo");
    EXPECT_EQ(texto(dialogo.windowTitle()), "Generacion de Archivo");
}

TEST(AparicionDeVentanas, TheWindowIsThereWhileTheFormIsShown) {
    FormaProgress forma;
    UsuarioPrueba hecho;
    Aparicion aparicion(forma,
                        [&] { return std::make_unique<DialogoProgress>(forma, hecho.usuario(), nullptr); });
    forma.cargar();
    QApplication::processEvents();
    EXPECT_EQ(aparicion.ventana(), nullptr) << "cargada no es mostrada";
    forma.mostrar();
    QApplication::processEvents();
    ASSERT_NE(aparicion.ventana(), nullptr);
    EXPECT_TRUE(aparicion.ventana()->isVisible());
    forma.descargar();
    QApplication::processEvents();
    EXPECT_EQ(aparicion.ventana(), nullptr);
}

TEST(AparicionDeVentanas, WhatComesAndGoesWithinOneEventDoesNotFlicker) {
    FormaProgress forma;
    int hechas = 0;
    const Aparicion aparicion(forma, [&] {
        ++hechas;
        return std::make_unique<QWidget>();
    });
    forma.mostrar();
    forma.descargar();
    QApplication::processEvents();
    EXPECT_EQ(hechas, 0);
}

TEST(Presenta, ShowsItsPictureAndOnlyItsFormClosesIt) {
    FormaPresenta forma;
    QWidget principal;
    principal.resize(800, 600);
    principal.show();
    VentanaPresenta presenta(forma, principal);
    presenta.show();
    EXPECT_TRUE(presenta.windowFlags().testFlag(Qt::FramelessWindowHint));
    presenta.close();
    EXPECT_TRUE(presenta.isVisible());
    const auto foto = presenta.grab().toImage();
    EXPECT_NE(foto.pixelColor(10, 10), foto.pixelColor(10, foto.height() - 10)) << "cielo y suelo";
    const auto centro = principal.frameGeometry().center();
    EXPECT_TRUE(presenta.geometry().contains(centro));
}

class PresentaDelante : public ::testing::Test {
   protected:
    PresentaDelante() {
        principal.show();
        presenta.show();
        QApplication::setActiveWindow(&principal);
    }
    // Window managers keep it above the window that it belongs to.
    bool delante() const {
        return presenta.isVisible() && presenta.windowHandle()->transientParent() == principal.windowHandle();
    }
    bool detras() const {
        return presenta.isVisible() && presenta.windowHandle()->transientParent() == nullptr;
    }

    FormaPresenta forma;
    QLineEdit principal;
    VentanaPresenta presenta{forma, principal};
};

TEST_F(PresentaDelante, AClickPutsItBehind) {
    EXPECT_TRUE(delante());
    QTest::mouseClick(&presenta, Qt::LeftButton);
    EXPECT_TRUE(detras());
}

TEST_F(PresentaDelante, AKeyInTheWindowPutsItBehindAndIsStillTyped) {
    QKeyEvent sostenida(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), true);
    QCoreApplication::sendEvent(principal.windowHandle(), &sostenida);
    EXPECT_TRUE(delante()) << "held since the box before";
    QDialog caja(&principal);
    caja.setModal(true);
    caja.show();
    QTest::keyClick(principal.windowHandle(), Qt::Key_8);
    EXPECT_TRUE(delante()) << "the box takes the keys";
    caja.close();
    QTest::keyClick(principal.windowHandle(), Qt::Key_7);
    EXPECT_TRUE(detras());
    EXPECT_EQ(texto(principal.text()), "7");
}

TEST(Presenta, LeavesTheWindowInSightAroundItOnASmallScreenToo) {
    EXPECT_EQ(medidaDePresenta({800, 600}), QSize(480, 280));
    // 800x600 with letters of 20 points, which is a screen of fewer dots; and an upright one.
    for (const QSize pantalla : {QSize(361, 270), QSize(320, 800)}) {
        const auto medida = medidaDePresenta(pantalla);
        EXPECT_LE(medida.width(), (pantalla.width() * 3 + 3) / 4);
        EXPECT_LE(medida.height(), (pantalla.height() * 3 + 3) / 4);
        EXPECT_NEAR(medida.width() / 480.0, medida.height() / 280.0, 0.01) << "as it was drawn";
    }
}

TEST_F(Progreso, EnterCancelsNothingAndTabReachesTheButton) {
    dialogo.show();
    QApplication::setActiveWindow(&dialogo);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialogo));
    const auto golpe = [&](Qt::Key tecla, bool repetida = false) {
        QTest::simulateEvent(dialogo.windowHandle(), true, tecla, Qt::NoModifier, {}, repetida);
        QTest::simulateEvent(dialogo.windowHandle(), false, tecla, Qt::NoModifier, {}, false);
    };
    golpe(Qt::Key_Return);
    golpe(Qt::Key_Enter);
    golpe(Qt::Key_Return, true);
    golpe(Qt::Key_Escape, true);
    golpe(Qt::Key_Space);
    EXPECT_EQ(hecho.pulsados, Lista{});
    golpe(Qt::Key_Tab);
    auto* cancelar = dialogo.findChild<QPushButton*>("Command45");
    EXPECT_EQ(QApplication::focusWidget(), cancelar);
    golpe(Qt::Key_Return);
    golpe(Qt::Key_Escape);
    EXPECT_EQ(hecho.pulsados, (Lista{"Command45", "Command45"}));
}

TEST(AparicionDeVentana, ShowingAgainBringsItBackMinimisedOrCovered) {
    FormaCoef forma;
    UsuarioPrueba hecho;
    const Aparicion aparicion(forma,
                              [&] { return std::make_unique<VentanaCoef>(forma, hecho.usuario(), nullptr); });
    forma.mostrar();
    ASSERT_TRUE(QTest::qWaitFor([&] { return aparicion.ventana() != nullptr; }));
    auto* ventana = aparicion.ventana();
    ventana->showMinimized();
    ASSERT_TRUE(ventana->isMinimized());
    forma.mostrar();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !ventana->isMinimized(); }));
    QWidget otra;
    otra.show();
    otra.activateWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &otra; }));
    forma.mostrar();
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == ventana; }));
    EXPECT_EQ(aparicion.ventana(), ventana);
}

class Coeficientes : public ::testing::Test {
   protected:
    FormaCoef forma;
    UsuarioPrueba hecho;
    VentanaCoef ventana{forma, hecho.usuario(), nullptr};
};

TEST_F(Coeficientes, HasThirtyTwoFieldsWithTheirNameAsText) {
    EXPECT_EQ(texto(ventana.windowTitle()), "coeficientes");
    for (int i = 1; i <= 32; ++i) {
        const auto nombre = QStringLiteral("Text%1").arg(i);
        auto* campo = ventana.findChild<QLineEdit*>(nombre);
        ASSERT_NE(campo, nullptr) << i;
        EXPECT_EQ(campo->text(), nombre);
        EXPECT_EQ(campo->accessibleName(), nombre);
    }
    EXPECT_EQ(ventana.findChildren<QLabel*>("Label4").size(), 8);
    EXPECT_EQ(ventana.findChildren<QLabel*>("Label3").size(), 8);
}

TEST_F(Coeficientes, TheLabelsHaveTheLetterOfColumnsAndTheFieldsThatOfControls) {
    ASSERT_NE(letraDeColumnas().families(), QApplication::font().families());
    const auto rotulos = ventana.findChildren<QLabel*>();
    EXPECT_EQ(rotulos.size(), 20) << "two headings, sixteen rows, the columns' and the empty one";
    for (const auto* rotulo : rotulos)
        EXPECT_EQ(rotulo->font().families(), letraDeColumnas().families()) << texto(rotulo->text());
    for (const auto* campo : ventana.findChildren<QLineEdit*>())
        EXPECT_EQ(campo->font().families(), QApplication::font().families());
}

TEST_F(Coeficientes, TwoFieldsARowInTheOrderOfTheRows) {
    ventana.show();
    QApplication::processEvents();
    const auto lugar = [&](int i) {
        return ventana.findChild<QLineEdit*>(QStringLiteral("Text%1").arg(i))->pos();
    };
    EXPECT_EQ(lugar(1).y(), lugar(2).y());
    EXPECT_LT(lugar(1).x(), lugar(2).x());
    for (int i = 3; i <= 32; i += 2) EXPECT_GT(lugar(i).y(), lugar(i - 2).y()) << i;
}

TEST_F(Coeficientes, ClosingItIsPressingSalir) {
    ventana.show();
    ventana.close();
    QTest::keyClick(&ventana, Qt::Key_Escape);
    EXPECT_EQ(hecho.pulsados, (Lista{"Command1", "Command1"}));
}

}  // namespace
}  // namespace telvane
