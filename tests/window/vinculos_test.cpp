// What a control holds is what its widget shows; only the user's own editing goes the other way.
#include <QAccessible>
#include <QCheckBox>
#include <QClipboard>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <gmock/gmock.h>

#include "tests/window/ventana_prueba.h"
#include "ui/qt/campo_linea.h"
#include "ui/qt/vista_lineas.h"
#include "ui/teclas.h"

namespace telvane {
namespace {

using Lista = std::vector<std::string>;

TEST_F(VentanaSuelta, TheChangesOfAControlReachItsWidget) {
    forma.Command4.caption = "PARAR";
    EXPECT_EQ(de<QPushButton>(forma.Command4).text(), "PARAR");
    forma.Command4.enabled = false;
    EXPECT_FALSE(de<QPushButton>(forma.Command4).isEnabled());
    forma.Command4.hint = "ayuda";
    EXPECT_EQ(de<QPushButton>(forma.Command4).toolTip(), "ayuda");
    forma.Text2.text = "  INTA";
    EXPECT_EQ(de<QLineEdit>(forma.Text2).text(), "  INTA");
    forma.Text2.locked = true;
    EXPECT_TRUE(de<QLineEdit>(forma.Text2).isReadOnly());
    forma.Text60.visible = true;
    EXPECT_FALSE(de<QWidget>(forma.Text60).isHidden());
    forma.Option3.value = 1;
    EXPECT_TRUE(de<QRadioButton>(forma.Option3).isChecked());
}

TEST_F(VentanaSuelta, WhatAProgramWritesDoesNotCountAsEditing) {
    forma.Text2.text = "uno";
    forma.fecha1.text = "20/11/2026";
    forma.Option2.value = 1;
    forma.Check1.value = 1;
    EXPECT_TRUE(hecho.cambiados.empty());
    EXPECT_TRUE(hecho.pulsados.empty());
    EXPECT_EQ(forma.fecha1.text(), "20/11/2026");
}

TEST_F(VentanaSuelta, ALabelShowsMarkupAsText) {
    forma.Label4.caption = "Nro  : <b>1</b>&x";
    auto& rotulo = de<QLabel>(forma.Label4);
    EXPECT_EQ(rotulo.textFormat(), Qt::PlainText);
    EXPECT_EQ(rotulo.text(), "Nro  : <b>1</b>&x");
    EXPECT_EQ(rotulo.buddy(), nullptr) << "con un campo asociado, & sería un atajo";
}

TEST_F(VentanaSuelta, TheAmpersandOfACaptionIsNoShortcut) {
    forma.Command4.caption = "A & B";
    auto& boton = de<QPushButton>(forma.Command4);
    EXPECT_EQ(boton.text(), "A && B");
    EXPECT_TRUE(boton.shortcut().isEmpty());
    EXPECT_EQ(boton.accessibleName(), "A & B");
}

TEST_F(VentanaSuelta, ATextOfTheLoggerIsShownByteByByte) {
    const std::string raro("a\0<i>\xc2\x81\xc3\xb1", 9);
    forma.Text2.text = raro;
    EXPECT_EQ(de<QLineEdit>(forma.Text2).text().toStdString(), raro);
    EXPECT_EQ(forma.Text2.text(), raro);
}

TEST_F(VentanaSuelta, TypingIntoAFieldReachesTheControl) {
    QTest::keyClicks(&de<QLineEdit>(forma.Text4), "33 S");
    EXPECT_EQ(forma.Text4.text(), "33 S");
    EXPECT_EQ(hecho.cambiados.back(), "Text4=33 S");
}

TEST_F(VentanaSuelta, ALockedFieldIsNotWritten) {
    forma.Text4.locked = true;
    QTest::keyClicks(&de<QLineEdit>(forma.Text4), "33");
    EXPECT_TRUE(hecho.cambiados.empty());
}

TEST_F(VentanaSuelta, ALockedFieldHasTheWindowsBackground) {
    auto& campo = de<QLineEdit>(forma.Text4);
    const auto libre = campo.palette().color(QPalette::Base);
    forma.Text4.locked = true;
    EXPECT_EQ(campo.palette().color(QPalette::Base), ventana.palette().color(QPalette::Window));
    forma.Text4.locked = false;
    EXPECT_EQ(campo.palette().color(QPalette::Base), libre);
}

TEST_F(VentanaSuelta, ALockedFieldFollowsTheDesktopsColours) {
    forma.Text4.locked = true;
    const auto claros = QApplication::palette();
    QPalette oscuros(QColor(40, 42, 45));
    QApplication::setPalette(oscuros);
    QApplication::processEvents();
    const auto fondo = de<QLineEdit>(forma.Text4).palette().color(QPalette::Base);
    const auto esperado = ventana.palette().color(QPalette::Window);
    QApplication::setPalette(claros);
    QApplication::processEvents();
    EXPECT_EQ(fondo, esperado);
    EXPECT_NE(fondo, de<QLineEdit>(forma.Text4).palette().color(QPalette::Base));
}

TEST_F(VentanaSuelta, OuterBlanksTakeNoWidth) {
    forma.Text7.text = "   12";
    auto& campo = de<QLineEdit>(forma.Text7);
    campo.end(false);
    QTest::keyClicks(&campo, "3456");
    EXPECT_EQ(forma.Text7.text(), "   12345");
}

TEST_F(VentanaSuelta, AWidthIsCountedInCharactersAndNotInBytes) {
    auto& campo = de<QLineEdit>(forma.Text7);
    campo.insert(QStringLiteral("ñandúes"));
    EXPECT_EQ(texto(campo.text()), "ñandú");
    EXPECT_EQ(forma.Text7.text(), "ñandú");
}

void pegar(QLineEdit& campo, const QString& texto) {
    QApplication::clipboard()->setText(texto);
    campo.setFocus();
    QTest::keyClick(&campo, Qt::Key_V, Qt::ControlModifier);
}

TEST_F(VentanaSuelta, OfAPastedTextWhatFitsIsTaken) {
    auto& campo = de<QLineEdit>(forma.Text7);
    pegar(campo, QStringLiteral("   1234567   "));
    EXPECT_EQ(forma.Text7.text(), "   12345");
    EXPECT_EQ(texto(campo.text()), "   12345");
    EXPECT_EQ(hecho.cambiados, Lista{"Text7=   12345"});
    EXPECT_EQ(campo.cursorPosition(), 8);
}

TEST_F(VentanaSuelta, WhatIsPastedInTheMiddleKeepsWhatWasThere) {
    forma.Text7.text = "1289";
    auto& campo = de<QLineEdit>(forma.Text7);
    campo.setFocus();
    campo.setCursorPosition(2);
    pegar(campo, QStringLiteral("3456"));
    EXPECT_EQ(forma.Text7.text(), "12389");
    EXPECT_EQ(campo.cursorPosition(), 3);
    pegar(campo, QStringLiteral("x"));
    EXPECT_EQ(forma.Text7.text(), "12389") << "no cabe más";
    campo.setSelection(1, 2);
    pegar(campo, QStringLiteral("abcdef"));
    EXPECT_EQ(forma.Text7.text(), "1ab89");
}

TEST_F(VentanaSuelta, ACharacterOfTwoHalvesIsNotSplit) {
    auto& campo = de<QLineEdit>(forma.Text7);
    pegar(campo, QString::fromUtf8("1234\xF0\x9F\x8C\xA7\xF0\x9F\x8C\xA7"));
    EXPECT_EQ(forma.Text7.text(), "1234\xF0\x9F\x8C\xA7");
}

TEST_F(VentanaSuelta, APastedLineEndIsNoEnterAndDoesNotReachTheField) {
    std::vector<int> teclas;
    forma.Text10.alTeclear = [&](int& tecla) {
        teclas.push_back(tecla);
        if (tecla < '0' || tecla > '9') tecla = 0;
    };
    forma.Text10.maxLength = 8;
    pegar(de<QLineEdit>(forma.Text10), QStringLiteral("12-34-56-78-90\r\n"));
    EXPECT_EQ(forma.Text10.text(), "12345678");
    EXPECT_THAT(teclas, ::testing::Not(::testing::Contains(kTeclaIntro)));
    pegar(de<QLineEdit>(forma.Text2), QStringLiteral("uno\ndos\t"));
    EXPECT_EQ(forma.Text2.text(), "unodos");
}

TEST_F(VentanaSuelta, ErasingDoesNotTouchWhatTheLoggerSent) {
    forma.Text7.text =
        "x\x01"
        "abc";
    auto& campo = de<QLineEdit>(forma.Text7);
    campo.setFocus();
    campo.home(false);
    QTest::keyClick(&campo, Qt::Key_Delete);
    EXPECT_EQ(forma.Text7.text(),
              "\x01"
              "abc");
}

TEST_F(VentanaSuelta, APaddedFieldTakesWhatIsTypedAtItsEnd) {
    auto& campo = de<QLineEdit>(forma.Text3);
    campo.setFocus();
    for (const auto& [relleno, queda] :
         {std::pair{"Finca Norte" + std::string(24, ' '), std::string("Finca Norte 2")},
          {std::string(24, ' ') + "Finca Norte", std::string(24, ' ') + "Finca Norte 2"},
          {std::string(35, ' '), std::string(" 2")},
          {std::string("Finca "), std::string("Finca  2")}}) {
        forma.Text3.text = relleno;
        campo.end(false);
        QTest::keyClicks(&campo, " 2");
        EXPECT_EQ(forma.Text3.text(), queda);
        EXPECT_EQ(texto(campo.text()), queda);
        EXPECT_EQ(campo.cursorPosition(), campo.text().size());
    }
    forma.Text3.text = std::string(35, 'x');
    campo.end(false);
    QTest::keyClicks(&campo, "2");
    EXPECT_EQ(forma.Text3.text(), std::string(35, 'x')) << "full of text";
}

TEST_F(VentanaSuelta, WhatAssistiveTechnologyWritesCountsAsEditing) {
    const auto escribir = [](QLineEdit& campo, const QString& nuevo) {
        auto* accesible = QAccessible::queryAccessibleInterface(&campo);
        accesible->editableTextInterface()->replaceText(0, static_cast<int>(campo.text().size()), nuevo);
    };
    forma.Text4.text = "33 S";
    escribir(de<QLineEdit>(forma.Text4), QStringLiteral("34 S"));
    EXPECT_EQ(forma.Text4.text(), "34 S");
    escribir(de<QLineEdit>(forma.fecha1), QStringLiteral("31/12/2024"));
    EXPECT_EQ(forma.fecha1.text(), "31/12/2024");
    EXPECT_EQ(hecho.cambiados, (Lista{"Text4=34 S", "fecha1=31/12/2024"}));
    forma.Text4.locked = true;
    escribir(de<QLineEdit>(forma.Text4), QStringLiteral("35 S"));
    EXPECT_EQ(forma.Text4.text(), "34 S");
    EXPECT_EQ(texto(de<QLineEdit>(forma.Text4).text()), "34 S");
}

TEST_F(VentanaSuelta, TheTimeIsTypedOverItsMask) {
    auto& campo = de<QLineEdit>(forma.MaskEdBox2);
    campo.setFocus();
    campo.home(false);
    QTest::keyClicks(&campo, "145845");
    EXPECT_EQ(forma.MaskEdBox2.text(), "14:58:45");
    campo.home(false);
    QTest::keyClicks(&campo, "x");
    EXPECT_EQ(forma.MaskEdBox2.text(), "14:58:45");
}

TEST_F(VentanaSuelta, TheRunningClockDoesNotMoveTheTypistsCursor) {
    forma.MaskEdBox2.text = "10:00:00";
    auto& campo = de<QLineEdit>(forma.MaskEdBox2);
    campo.setFocus();
    campo.setCursorPosition(3);
    forma.MaskEdBox2.text = "10:00:01";
    EXPECT_EQ(campo.cursorPosition(), 3);
}

TEST_F(VentanaSuelta, LeavingAFieldIsToldOnce) {
    de<QLineEdit>(forma.MaskEdBox2).setFocus();
    hecho.salidos.clear();
    QTest::keyClick(&de<QLineEdit>(forma.MaskEdBox2), Qt::Key_Tab);
    EXPECT_EQ(hecho.salidos, Lista{"MaskEdBox2"});
}

TEST_F(VentanaSuelta, ChangingWindowsIsNotLeavingTheField) {
    auto& campo = de<QLineEdit>(forma.MaskEdBox2);
    campo.setFocus();
    hecho.salidos.clear();
    QFocusEvent otraVentana(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QApplication::sendEvent(&campo, &otraVentana);
    EXPECT_TRUE(hecho.salidos.empty());
}

TEST_F(VentanaSuelta, AtTheStartTheKeyboardIsOnNoButton) {
    EXPECT_EQ(ventana.focusWidget(), &de<QLineEdit>(forma.Text2));
}

TEST_F(VentanaSuelta, WhatClosesLeavesTheKeyboardWhereNothingStartsAndGetsItBack) {
    forma.Text10.alTeclear = [](int&) {};
    struct Caso {
        Control* cerrado;
        Control* refugio;
    };
    const std::vector<Caso> casos = {
        {&forma.Text10, &forma.RichTextBox1},    {&forma.configuracion, &forma.Text2},
        {&forma.Command2, &forma.Text2},         {&forma.Command3, &forma.RichTextBox1},
        {&forma.Command13, &forma.RichTextBox1}, {&forma.Command43, &forma.RichTextBox1},
        {&forma.Command1, &forma.Text2}};
    for (const auto& [cerrado, refugio] : casos) {
        auto* widget = ventana.widget(*cerrado);
        widget->setFocus();
        cerrado->enabled = false;
        EXPECT_EQ(ventana.focusWidget(), ventana.widget(*refugio)) << cerrado->nombre();
        cerrado->enabled = true;
        EXPECT_EQ(ventana.focusWidget(), widget) << cerrado->nombre();
    }
    // Hidden is closed as well.
    auto* opcion = ventana.widget(forma.Option3);
    opcion->setFocus();
    forma.Option3.visible = false;
    EXPECT_EQ(ventana.focusWidget(), ventana.widget(forma.RichTextBox1));
}

TEST_F(VentanaSuelta, WhoWentElsewhereStaysThere) {
    ventana.widget(forma.Command13)->setFocus();
    forma.Command13.enabled = false;
    ventana.widget(forma.salir)->setFocus();
    forma.Command13.enabled = true;
    EXPECT_EQ(ventana.focusWidget(), ventana.widget(forma.salir));
}

TEST_F(VentanaSuelta, AHeldKeyPressesOnce) {
    const auto golpe = [](QWidget* en, Qt::Key tecla, bool repetida) {
        QKeyEvent pulsada(QEvent::KeyPress, tecla, Qt::NoModifier, QStringLiteral("\r"), repetida);
        QApplication::sendEvent(en, &pulsada);
    };
    auto* boton = ventana.widget(forma.Command43);
    golpe(boton, Qt::Key_Return, false);
    golpe(boton, Qt::Key_Return, true);
    EXPECT_EQ(hecho.pulsados, Lista{"Command43"});
    int intros = 0;
    forma.Text10.alTeclear = [&](int& tecla) { intros += tecla == kTeclaIntro ? 1 : 0; };
    auto* serie = ventana.widget(forma.Text10);
    golpe(serie, Qt::Key_Return, false);
    golpe(serie, Qt::Key_Return, true);
    EXPECT_EQ(intros, 1);
}

TEST_F(VentanaSuelta, TheSerialNumbersKeysPassItsFilter) {
    std::vector<int> teclas;
    forma.Text10.alTeclear = [&](int& tecla) {
        teclas.push_back(tecla);
        if (tecla > ' ' && (tecla < '0' || tecla > '9')) tecla = 0;
    };
    auto& campo = de<QLineEdit>(forma.Text10);
    QTest::keyClicks(&campo, "2a");
    QTest::keyClick(&campo, Qt::Key_Backspace);
    QTest::keyClick(&campo, Qt::Key_Left);
    QTest::keyClick(&campo, Qt::Key_Return);
    EXPECT_EQ(texto(campo.text()), "");
    EXPECT_THAT(teclas, ::testing::IsSupersetOf(std::vector<int>{'2', 'a', 8, 13}));
    EXPECT_EQ(teclas.back(), 13);
}

TEST_F(VentanaSuelta, WhatIsPastedIntoTheSerialNumberPassesTheSameFilter) {
    forma.Text10.alTeclear = [](int& tecla) {
        if (tecla < '0' || tecla > '9') tecla = 0;
    };
    auto& campo = de<QLineEdit>(forma.Text10);
    QApplication::clipboard()->setText("20-80");
    campo.paste();
    EXPECT_EQ(forma.Text10.text(), "2080");
    EXPECT_EQ(texto(campo.text()), "2080");
}

TEST_F(VentanaSuelta, AnOptionIsMarkedWhenTheControlSaysSo) {
    auto& opcion = de<QRadioButton>(forma.Option2);
    QTest::mouseClick(&opcion, Qt::LeftButton);
    EXPECT_EQ(hecho.pulsados, Lista{"Option2"});
    EXPECT_FALSE(opcion.isChecked()) << "el control aún no vale 1";
    forma.Option2.value = 1;
    EXPECT_TRUE(opcion.isChecked());
    forma.Option2.value = 0;
    EXPECT_FALSE(opcion.isChecked()) << "ninguna puede estar marcada";
}

TEST_F(VentanaSuelta, TheArrowsChooseTheNeighbouringOption) {
    forma.Option1.value = 1;
    auto& primera = de<QRadioButton>(forma.Option1);
    primera.setFocus();
    QTest::keyClick(&primera, Qt::Key_Right);
    EXPECT_TRUE(de<QRadioButton>(forma.Option2).hasFocus());
    QTest::keyClick(ventana.focusWidget(), Qt::Key_Space);
    EXPECT_THAT(hecho.pulsados, ::testing::Each("Option2"));
    EXPECT_FALSE(hecho.pulsados.empty());
}

TEST_F(VentanaSuelta, WithNoneMarkedTheKeyboardReachesTheOptions) {
    de<QLineEdit>(forma.Text7).setFocus();
    QTest::keyClick(ventana.focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(ventana.focusWidget(), ventana.widget(forma.Option1));
    QTest::keyClick(ventana.focusWidget(), Qt::Key_Space);
    EXPECT_EQ(hecho.pulsados, Lista{"Option1"});
}

TEST_F(VentanaSuelta, EnterPressesTheButtonThatHasTheFocus) {
    QTest::keyClick(&de<QPushButton>(forma.Command5), Qt::Key_Return);
    QTest::keyClick(&de<QPushButton>(forma.Command5), Qt::Key_Space);
    EXPECT_EQ(hecho.pulsados, (Lista{"Command5", "Command5"}));
}

TEST_F(VentanaSuelta, ADisabledButtonIsNotPressed) {
    forma.Command5.enabled = false;
    QTest::mouseClick(&de<QPushButton>(forma.Command5), Qt::LeftButton);
    EXPECT_TRUE(hecho.pulsados.empty());
}

TEST_F(VentanaSuelta, WhatAScreenReaderMarksCountsAsAClick) {
    auto* accion = QAccessible::queryAccessibleInterface(&de<QRadioButton>(forma.Option5))->actionInterface();
    ASSERT_NE(accion, nullptr);
    accion->doAction(accion->actionNames().constFirst());
    QApplication::processEvents();
    EXPECT_EQ(hecho.pulsados, (std::vector<std::string>{"Option5"}));
    // A click is one click.
    de<QRadioButton>(forma.Option3).click();
    QApplication::processEvents();
    EXPECT_EQ(hecho.pulsados, (std::vector<std::string>{"Option5", "Option3"}));
}

}  // namespace
}  // namespace telvane
