// The dark colours can be read, and without a bus nothing happens.
#include "app/qt/colores_escritorio.h"

#include <utility>

#include <QApplication>
#include <QDBusMessage>
#include <QDBusVariant>
#include <gtest/gtest.h>

#include "app/qt/paleta_oscura.h"
#include "tests/window/contraste.h"

namespace telvane {
namespace {

struct Pareja {
    const char* que;
    QPalette::ColorRole texto;
    QPalette::ColorRole fondo;
};

// A locked field shows its text on the window's ground.
constexpr Pareja kParejas[] = {{"label", QPalette::WindowText, QPalette::Window},
                               {"field", QPalette::Text, QPalette::Base},
                               {"locked field", QPalette::Text, QPalette::Window},
                               {"second row", QPalette::Text, QPalette::AlternateBase},
                               {"placeholder", QPalette::PlaceholderText, QPalette::Base},
                               {"button", QPalette::ButtonText, QPalette::Button},
                               {"selection", QPalette::HighlightedText, QPalette::Highlight},
                               {"tool tip", QPalette::ToolTipText, QPalette::ToolTipBase},
                               {"link", QPalette::Link, QPalette::Window},
                               {"visited link", QPalette::LinkVisited, QPalette::Window},
                               {"link in a field", QPalette::Link, QPalette::Base}};

TEST(PaletaOscura, TextStandsAtSevenToOneAndWhatIsOffAtThreeToOne) {
    const auto paleta = paletaOscura();
    EXPECT_NEAR(contraste(Qt::white, Qt::black), 21.0, 0.01);
    for (const auto& pareja : kParejas) {
        for (const auto& [grupo, minimo] :
             {std::pair{QPalette::Active, 7.0}, {QPalette::Inactive, 7.0}, {QPalette::Disabled, 3.0}}) {
            EXPECT_GE(contraste(paleta.color(grupo, pareja.texto), paleta.color(grupo, pareja.fondo)), minimo)
                << pareja.que << ", group " << grupo;
        }
    }
}

TEST(PaletaOscura, NoRoleIsLeftToTheToolkit) {
    const auto paleta = paletaOscura();
    for (const auto grupo : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        for (int rol = 0; rol < QPalette::NColorRoles; ++rol) {
            if (rol == QPalette::NoRole) continue;
            EXPECT_TRUE(paleta.isBrushSet(grupo, static_cast<QPalette::ColorRole>(rol))) << grupo << rol;
        }
    }
}

// What the desktop says, as its answer comes from the bus.
void decir(ColoresDelEscritorio& colores, uint preferencia) {
    auto mensaje =
        QDBusMessage::createSignal(QStringLiteral("/x"), QStringLiteral("x.x"), QStringLiteral("x"));
    mensaje << QVariant::fromValue(QDBusVariant(preferencia));
    ASSERT_TRUE(QMetaObject::invokeMethod(&colores, "alSaber", Q_ARG(QDBusMessage, mensaje)));
}

class Preferencia : public ::testing::Test {
   protected:
    ~Preferencia() override { QApplication::setPalette(antes); }

    static constexpr uint kOscuro = 1;
    static constexpr uint kClaro = 2;
    QPalette antes = QApplication::palette();
    ColoresDelEscritorio colores{QDBusConnection(QStringLiteral("ninguno"))};
};

TEST_F(Preferencia, AThemeThatIsDarkAlreadyIsLeftAsItIs) {
    const QPalette suya(QColor(60, 20, 20));
    QApplication::setPalette(suya);
    const auto propia = QApplication::palette();
    decir(colores, kOscuro);
    EXPECT_EQ(QApplication::palette(), propia);
}

TEST_F(Preferencia, LightAgainTheThemesOwnChangesCountOnceMore) {
    decir(colores, kOscuro);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), paletaOscura().color(QPalette::Window));
    decir(colores, kClaro);
    EXPECT_EQ(QApplication::palette(), antes);
    EXPECT_EQ(QApplication::palette().resolveMask(), antes.resolveMask()) << "no colour is ours any more";
}

TEST(ColoresDelEscritorio, WithoutABusTheColoursStayAsTheyAre) {
    const auto antes = QApplication::palette();
    const ColoresDelEscritorio colores(QDBusConnection(QStringLiteral("ninguno")));
    QApplication::processEvents();
    EXPECT_EQ(QApplication::palette(), antes);
}

}  // namespace
}  // namespace telvane
