// The window's colours follow what the desktop prefers, as far as it says so.
#include <cstdint>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/e2e/color_en_pantalla.h"
#include "tests/e2e/portal_de_mentira.h"
#include "tests/e2e/ventana_e2e.h"

namespace telvane {
namespace {

const QVariant kNinguna(0U);
const QVariant kOscuro(1U);
const QVariant kClaro(2U);

class ColoresE2e : public VentanaE2e {
   protected:
    void SetUp() override {}

    void conPortal(const QVariant& preferencia) {
        portal_ = std::make_unique<PortalDeMentira>(escritorio_.bus(), preferencia);
    }

    // Up to the first question; the portal answers meanwhile.
    void abrir() {
        arrancar();
        if (portal_) {
            ASSERT_TRUE(esperarA([&] { return portal_->preguntado(); }));
        }
        ASSERT_TRUE(responder("Su Configuracion Regional no es la apropiada", "Aceptar"));
        ASSERT_TRUE(esperarA([&] { return fondo().has_value(); }));
    }

    // The window's own ground, beside everything that stands on it.
    std::optional<std::uint32_t> fondo() const {
        constexpr int kBorde = 2;
        const auto marco =
            raiz().buscar([](const Accesible& uno) { return uno.nombre() == "Telvane de VELTRA v1.10"; });
        if (!marco) return std::nullopt;
        const auto lugar = marco->lugar();
        return colorEnPantalla(escritorio_.variable("DISPLAY"), lugar.x + kBorde, lugar.y + kBorde);
    }

    bool esClaro() const { return fondo() == 0xefefefU; }
    bool esOscuro() const { return fondo() == 0x2b2d30U; }
    ::testing::AssertionResult seAclara() const {
        return espera([&] { return esClaro(); });
    }
    ::testing::AssertionResult seOscurece() const {
        return espera([&] { return esOscuro(); });
    }

    std::unique_ptr<PortalDeMentira> portal_;

   private:
    ::testing::AssertionResult espera(const std::function<bool()>& condicion) const {
        if (esperarA(condicion)) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "ground is " << std::hex << fondo().value_or(0);
    }
};

TEST_F(ColoresE2e, DarkFromTheStartAndEveryChangeFollowed) {
    conPortal(kOscuro);
    abrir();
    EXPECT_TRUE(seOscurece());
    portal_->cambiar(kClaro);
    EXPECT_TRUE(seAclara());
    portal_->cambiar(kOscuro);
    EXPECT_TRUE(seOscurece());
    portal_->cambiar(kNinguna);
    EXPECT_TRUE(seAclara());
}

TEST_F(ColoresE2e, AnAnswerThatIsNoPreferenceChangesNothing) {
    conPortal(QStringLiteral("1"));
    abrir();
    // The window has the answer before what is asked of it afterwards.
    EXPECT_TRUE(esClaro());
    portal_->cambiar(1.0);
    portal_->cambiar(QVariant::fromValue(QStringList{QStringLiteral("1")}));
    EXPECT_TRUE(responder("Quiere conectarse con Registrador Veltra", "Cancelar"));
    EXPECT_TRUE(esClaro());
    portal_->cambiar(kOscuro);
    EXPECT_TRUE(seOscurece());
    portal_->cambiar(QStringLiteral("2"));
    portal_->cambiar(kClaro);
    EXPECT_TRUE(seAclara());
}

TEST_F(ColoresE2e, AnAnswerIsNotWaitedForAndTakenWhenItComes) {
    auto lento = std::make_unique<PortalDeMentira>(escritorio_.bus(), kOscuro);
    abrir();
    EXPECT_TRUE(esClaro());
    EXPECT_TRUE(esperarA([&] { return lento->preguntado(); }));
    EXPECT_TRUE(seOscurece());
}

TEST_F(ColoresE2e, APortalThatComesLaterIsHeard) {
    abrir();
    EXPECT_TRUE(esClaro());
    conPortal(kOscuro);
    portal_->cambiar(kOscuro);
    EXPECT_TRUE(seOscurece());
}

}  // namespace
}  // namespace telvane
