// On a dark window the frames of what can be filled in are seen; on a light one the style is the toolkit's.
#include "app/qt/estilo.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QStyleFactory>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include "app/qt/paleta_oscura.h"
#include "tests/window/contraste.h"

namespace telvane {
namespace {

// A field, a box and an option, none of them focused.
class Controles : public QWidget {
   public:
    Controles(QStyle& estilo, const QPalette& paleta) {
        setPalette(paleta);
        setAutoFillBackground(true);
        auto* columna = new QVBoxLayout(this);
        for (QWidget* control : std::initializer_list<QWidget*>{&campo, &casilla, &opcion, &marcada}) {
            control->setStyle(&estilo);
            columna->addWidget(control);
        }
        marcada.setChecked(true);
        resize(200, 160);
    }
    ~Controles() override { qDeleteAll(findChildren<QLayout*>()); }

    QImage imagen() { return grab().toImage(); }

    QLineEdit campo{this};
    QCheckBox casilla{this};
    QRadioButton opcion{this};
    QRadioButton marcada{this};
};

// The frame's best pixel in the first ones from the control's left, at half its height.
double contrasteDelMarco(const QImage& imagen, const QWidget& control) {
    double mejor = 0;
    constexpr int kPrimeros = 4;
    const int y = control.geometry().center().y();
    for (int x = 0; x < kPrimeros; ++x) {
        const auto pixel = imagen.pixelColor(control.x() + x, y);
        mejor = std::max(mejor, contraste(pixel, paletaOscura().color(QPalette::Window)));
    }
    return mejor;
}

TEST(EstiloDeControles, OnADarkWindowFramesStandAtThreeToOne) {
    Estilo estilo;
    for (const bool activos : {true, false}) {
        Controles controles(estilo, paletaOscura());
        controles.setEnabled(activos);
        const auto imagen = controles.imagen();
        for (const QWidget* control : std::initializer_list<const QWidget*>{
                 &controles.campo, &controles.casilla, &controles.opcion, &controles.marcada}) {
            EXPECT_GE(contrasteDelMarco(imagen, *control), activos ? 3.0 : 2.0)
                << control->metaObject()->className() << activos;
        }
        if (const auto donde = qEnvironmentVariable("TELVANE_CUADROS"); !donde.isEmpty() && activos)
            imagen.save(donde + QStringLiteral("/estilo.png"));
    }
}

TEST(EstiloDeControles, OnALightWindowItIsTheToolkits) {
    Estilo nuestro;
    const std::unique_ptr<QStyle> suyo(QStyleFactory::create(QStringLiteral("fusion")));
    EXPECT_EQ(Controles(nuestro, suyo->standardPalette()).imagen(),
              Controles(*suyo, suyo->standardPalette()).imagen());
}

}  // namespace
}  // namespace telvane
