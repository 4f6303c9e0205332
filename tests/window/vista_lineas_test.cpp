// The line view: any text at once, at the cost of an offset per line.
#include "ui/qt/vista_lineas.h"

#include <malloc.h>

#include <chrono>
#include <string>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>

namespace telvane {
namespace {

std::string nueveMilLineas() {
    std::string texto;
    for (int i = 0; i < 9000; ++i) {
        texto += std::to_string(i) + ",12/03/2019,14:10:00,45,22.4,180.0, S ,12.3,0.455,93.2,0.0\r\n";
    }
    return texto;
}

class Vista : public ::testing::Test {
   protected:
    Vista() {
        vista.resize(500, 200);
        vista.show();
        QApplication::processEvents();
    }
    VistaLineas vista{nullptr};
};

TEST_F(Vista, TheThreeLineEndsAllCount) {
    vista.texto("uno\r\ndos\ntres\rcuatro\r\n\r\nseis");
    ASSERT_EQ(vista.lineas(), 6);
    EXPECT_EQ(vista.linea(1).toStdString(), "dos");
    EXPECT_EQ(vista.linea(2).toStdString(), "tres");
    EXPECT_EQ(vista.linea(3).toStdString(), "cuatro");
    EXPECT_EQ(vista.linea(4).toStdString(), "");
    EXPECT_EQ(vista.linea(5).toStdString(), "seis");
}

TEST_F(Vista, AnEmptyTextHasNoLines) {
    vista.texto("algo");
    vista.texto("");
    EXPECT_EQ(vista.lineas(), 0);
    EXPECT_EQ(vista.verticalScrollBar()->maximum(), 0);
}

TEST_F(Vista, NineThousandLinesAreSetAtOnce) {
    const auto texto = nueveMilLineas();
    const auto antes = std::chrono::steady_clock::now();
    vista.texto(texto);
    vista.repaint();
    const auto tardo = std::chrono::steady_clock::now() - antes;
    EXPECT_EQ(vista.lineas(), 9000);
    EXPECT_LT(tardo, std::chrono::milliseconds(500));
}

TEST_F(Vista, NineThousandLinesCostOneScrollEach) {
    const auto texto = nueveMilLineas();
    vista.texto("x");
    vista.repaint();
    const auto antes = mallinfo2().uordblks;
    for (int veces = 0; veces < 3; ++veces) vista.texto(texto);
    vista.repaint();
    const auto despues = mallinfo2().uordblks;
    // Offsets and what one screen of lines needs; the text itself is not copied.
    EXPECT_LT(despues, antes + 9000 * sizeof(std::uint32_t) + 100'000);
}

TEST_F(Vista, MarkupIsText) {
    vista.texto("<b>x</b>\n");
    EXPECT_EQ(vista.linea(0).toStdString(), "<b>x</b>");
}

TEST_F(Vista, ANewTextIsSeenFromItsBeginning) {
    const auto texto = nueveMilLineas();
    vista.texto(texto);
    vista.verticalScrollBar()->setValue(4000);
    vista.texto(texto);
    EXPECT_EQ(vista.verticalScrollBar()->value(), 0);
}

TEST_F(Vista, FollowingTheEndTheLatestIsSeen) {
    vista.seguirElFinal(true);
    const auto texto = nueveMilLineas();
    vista.texto(texto);
    EXPECT_EQ(vista.verticalScrollBar()->value(), vista.verticalScrollBar()->maximum());
    EXPECT_GT(vista.verticalScrollBar()->maximum(), 8900);
}

TEST_F(Vista, TheLinesAreCopied) {
    vista.texto("uno\r\ndos\r\ntres\r\n");
    QTest::keyClick(&vista, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&vista, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "uno\ndos\ntres\n");
}

TEST_F(Vista, AViewThatCannotBeSelectedCopiesNothing) {
    QApplication::clipboard()->setText("lo de antes");
    vista.seleccionable(false);
    vista.texto("uno\r\n");
    QTest::keyClick(&vista, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&vista, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "lo de antes");
}

TEST_F(Vista, TheKeyboardReachesBeginningAndEnd) {
    const auto texto = nueveMilLineas();
    vista.texto(texto);
    QTest::keyClick(&vista, Qt::Key_End);
    EXPECT_EQ(vista.verticalScrollBar()->value(), vista.verticalScrollBar()->maximum());
    QTest::keyClick(&vista, Qt::Key_Home);
    EXPECT_EQ(vista.verticalScrollBar()->value(), 0);
    QTest::keyClick(&vista, Qt::Key_PageDown);
    EXPECT_GT(vista.verticalScrollBar()->value(), 1);
}

TEST_F(Vista, AScreenReaderReadsTheText) {
    vista.texto("uno\r\ndos\r\n");
    auto* accesible = QAccessible::queryAccessibleInterface(&vista);
    ASSERT_NE(accesible, nullptr);
    EXPECT_TRUE(accesible->state().readOnly);
    ASSERT_NE(accesible->textInterface(), nullptr);
    EXPECT_EQ(accesible->textInterface()->characterCount(), 8);
    EXPECT_EQ(accesible->textInterface()->text(4, 7).toStdString(), "dos");
}

}  // namespace
}  // namespace telvane
