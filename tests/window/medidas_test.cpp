// Small screens and large letters: everything can be reached, nothing is cut.
#include <algorithm>

#include <QBoxLayout>
#include <QFontDatabase>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include "tests/window/ventana_prueba.h"
#include "ui/qt/fila_partible.h"
#include "ui/qt/letras.h"
#include "ui/qt/medida_pantalla.h"
#include "ui/qt/ventana_coef.h"

namespace telvane {
namespace {

constexpr QSize kPantallaChica(800, 600);
// 1280x1024 with everything doubled.
constexpr QSize kPantallaDoble(640, 512);
constexpr int kPuntosGrandes = 20;

// All windows have these letters for as long as this lives.
class Letras {
   public:
    explicit Letras(int puntos) : antes_(QApplication::font()) {
        auto otras = antes_;
        otras.setPointSize(puntos);
        QApplication::setFont(otras);
    }
    Letras(const Letras&) = delete;
    Letras& operator=(const Letras&) = delete;
    ~Letras() { QApplication::setFont(antes_); }

   private:
    QFont antes_;
};

bool dentro(const QWidget& ventana, const QWidget& widget) {
    const QRect lugar(widget.mapTo(&ventana, QPoint()), widget.size());
    return ventana.rect().contains(lugar) && widget.width() >= widget.minimumSizeHint().width();
}

// Header and foot stay; the middle scrolls.
void entraEn(VentanaInicio& ventana, const FormaInicio& forma, QSize pantalla) {
    const auto sitio = pantalla - kMarcoDeVentana;
    ventana.resize(sitio);
    QApplication::processEvents();
    EXPECT_EQ(ventana.size(), sitio);
    auto* medio = ventana.findChild<QScrollArea*>();
    ASSERT_NE(medio, nullptr);
    for (const auto* control :
         {&forma.Command1, &forma.salir, &forma.Label14, &forma.Label15, &forma.Label16}) {
        // Those that are only looked at may scroll.
        if (control->clase() == Clase::rotulo && medio->isAncestorOf(ventana.widget(*control))) continue;
        EXPECT_TRUE(dentro(ventana, *ventana.widget(*control))) << control->nombre();
    }
    EXPECT_GT(medio->viewport()->height(), 60);
    for (auto* boton : medio->widget()->findChildren<QPushButton*>()) {
        medio->ensureWidgetVisible(boton);
        const QRect lugar(boton->mapTo(medio->viewport(), QPoint()), boton->size());
        EXPECT_TRUE(medio->viewport()->rect().contains(lugar)) << texto(boton->objectName());
    }
}

// Whether all of the widget shows in what scrolls around it.
bool aLaVista(const QScrollArea& medio, const QWidget& widget) {
    return medio.viewport()->rect().contains(QRect(widget.mapTo(medio.viewport(), QPoint()), widget.size()));
}

TEST_F(VentanaSuelta, OnASmallScreenEverythingIsReached) {
    entraEn(ventana, forma, kPantallaChica);
    entraEn(ventana, forma, kPantallaDoble);
}

TEST_F(VentanaSuelta, OnASmallScreenTheReadingsAreOnShowWhenTheyBegin) {
    auto* medio = ventana.findChild<QScrollArea*>();
    const auto seVe = [&](const Control& control) { return aLaVista(*medio, *ventana.widget(control)); };
    for (const auto& pantalla : {kPantallaChica, kPantallaDoble}) {
        ventana.resize(pantalla - kMarcoDeVentana);
        QApplication::processEvents();
        medio->ensureWidgetVisible(ventana.widget(forma.Command4), 0, 0);
        ASSERT_FALSE(seVe(forma.Text60));
        forma.Text60.visible = true;
        QApplication::processEvents();
        EXPECT_TRUE(seVe(forma.Text60));
        EXPECT_TRUE(seVe(forma.Command4));
        forma.Text60.visible = false;
        QApplication::processEvents();
        EXPECT_TRUE(seVe(forma.Command4)) << "the form stays where it was";
        medio->verticalScrollBar()->setValue(0);
    }
}

TEST_F(VentanaSuelta, OnASmallScreenTabComesToWhatIsInSightFromOutsideTheFormAsWell) {
    ventana.resize(kPantallaChica - kMarcoDeVentana);
    QApplication::processEvents();
    auto& medio = *ventana.findChild<QScrollArea*>();
    medio.ensureWidgetVisible(ventana.widget(forma.Command4), 0, 0);
    auto* primero = ventana.widget(forma.configuracion);
    ASSERT_FALSE(aLaVista(medio, *primero));
    ventana.widget(forma.Command1)->setFocus();
    QTest::keyClick(ventana.focusWidget(), Qt::Key_Tab);
    ASSERT_EQ(ventana.focusWidget(), primero);
    EXPECT_TRUE(aLaVista(medio, *primero));
    auto* ultimo = ventana.widget(forma.Command4);
    ventana.findChild<QWidget*>("Diagnostico")->setFocus();
    QTest::keyClick(ventana.focusWidget(), Qt::Key_Backtab);
    ASSERT_EQ(ventana.focusWidget(), ultimo);
    EXPECT_TRUE(aLaVista(medio, *ultimo));
}

TEST(Medidas, TabComesToTheFirstCoefficientAndItIsInSight) {
    FormaCoef forma;
    UsuarioPrueba hecho;
    VentanaCoef ventana(forma, hecho.usuario(), nullptr);
    ventana.resize(kPantallaDoble - kMarcoDeVentana);
    ventana.show();
    QApplication::setActiveWindow(&ventana);
    QApplication::processEvents();
    auto& medio = *ventana.findChild<QScrollArea*>();
    auto* primero = ventana.findChild<QWidget*>("Text1");
    medio.verticalScrollBar()->setValue(medio.verticalScrollBar()->maximum());
    ASSERT_FALSE(aLaVista(medio, *primero));
    ventana.findChild<QWidget*>("Command1")->setFocus();
    QTest::keyClick(ventana.focusWidget(), Qt::Key_Tab);
    ASSERT_EQ(ventana.focusWidget(), primero);
    EXPECT_TRUE(aLaVista(medio, *primero));
}

TEST(Medidas, WithLettersOfTwentyPointsNothingIsCut) {
    const Letras grandes(kPuntosGrandes);
    FormaInicio forma;
    UsuarioPrueba hecho;
    VentanaInicio ventana(forma, hecho.usuario());
    forma.mostrar();
    forma.Command1.caption = " Conexion en COM 12  @ 19200 bps ";
    entraEn(ventana, forma, {1280, 1024});
}

// A screen as small as that, with letters as large, shows every line whole without going sideways.
TEST(Medidas, WithLettersOfTwentyPointsASmallScreenScrollsDownwardsOnly) {
    const Letras grandes(kPuntosGrandes);
    FormaInicio forma;
    UsuarioPrueba hecho;
    VentanaInicio ventana(forma, hecho.usuario());
    forma.mostrar();
    entraEn(ventana, forma, {800, 600});
    auto* medio = ventana.findChild<QScrollArea*>();
    EXPECT_EQ(medio->horizontalScrollBar()->maximum(), 0);
    for (const auto* boton : medio->widget()->findChildren<QPushButton*>()) {
        const auto texto = boton->fontMetrics().boundingRect(boton->rect(), Qt::TextWordWrap, boton->text());
        EXPECT_LE(texto.height(), boton->height()) << boton->text().toStdString();
        EXPECT_LE(texto.width(), boton->width()) << boton->text().toStdString();
    }
}

// Titles and maker's line would leave the form two lines of its own.
TEST(Medidas, WhereTheScreenHasFewLinesWhatIsOnlyLookedAtScrollsWithTheForm) {
    const Letras grandes(QApplication::primaryScreen()->availableSize().height() / 20);
    FormaInicio forma;
    UsuarioPrueba hecho;
    const VentanaInicio ventana(forma, hecho.usuario());
    const auto* medio = ventana.findChild<QScrollArea*>();
    ASSERT_NE(medio, nullptr);
    for (const auto* control : {&forma.Label14, &forma.Label15, &forma.Label16})
        EXPECT_TRUE(medio->isAncestorOf(ventana.widget(*control))) << control->nombre();
    for (const auto* control : {&forma.Command1, &forma.salir})
        EXPECT_FALSE(medio->isAncestorOf(ventana.widget(*control))) << control->nombre();
}

TEST(Medidas, TheLabelsOfAllFieldsEndAtTheSamePlace) {
    for (const int puntos : {9, kPuntosGrandes}) {
        const Letras letras(puntos);
        FormaInicio forma;
        UsuarioPrueba hecho;
        VentanaInicio ventana(forma, hecho.usuario());
        forma.mostrar();
        ventana.resize(kPantallaChica - kMarcoDeVentana);
        QApplication::processEvents();
        const auto fin = [&](const Control& rotulo) {
            const auto& widget = *ventana.widget(rotulo);
            return widget.mapTo(&ventana, widget.rect().topRight()).x();
        };
        for (const auto* rotulo :
             {&forma.Label5, &forma.Label6, &forma.Label7, &forma.Label8, &forma.Label13, &forma.Label1})
            EXPECT_EQ(fin(*rotulo), fin(forma.Label2)) << rotulo->nombre() << " at " << puntos << " points";
    }
}

TEST(Medidas, TheWindowIsBornWithItsFrameInsideTheScreen) {
    const Letras grandes(kPuntosGrandes);
    FormaInicio forma;
    UsuarioPrueba hecho;
    const VentanaInicio ventana(forma, hecho.usuario());
    const auto sitio = ventana.screen()->availableSize() - kMarcoDeVentana;
    EXPECT_LE(ventana.width(), sitio.width());
    EXPECT_LE(ventana.height(), sitio.height());
}

TEST(Medidas, TheCoefficientsScrollWhereTheyDoNotFit) {
    FormaCoef forma;
    UsuarioPrueba hecho;
    VentanaCoef ventana(forma, hecho.usuario(), nullptr);
    ventana.resize(kPantallaDoble - kMarcoDeVentana);
    ventana.show();
    QApplication::processEvents();
    EXPECT_EQ(ventana.size(), kPantallaDoble - kMarcoDeVentana);
    EXPECT_TRUE(dentro(ventana, *ventana.findChild<QWidget*>("Command1")));
    EXPECT_FALSE(dentro(ventana, *ventana.findChild<QWidget*>("Text32"))) << "for the scroll bar";
    ventana.resize(ventana.sizeHint());
    QApplication::processEvents();
    EXPECT_TRUE(dentro(ventana, *ventana.findChild<QWidget*>("Text32")))
        << "where there is room, all of it shows";
}

// Larger letters than any screen has room for: the window stands on it whole, its buttons too.
TEST(Medidas, TheCoefficientsAreBornWithTheirFrameInsideTheScreen) {
    for (const int puntos : {9, kPuntosGrandes, 2 * kPuntosGrandes}) {
        SCOPED_TRACE(puntos);
        const Letras letras(puntos);
        QWidget principal;
        principal.move(10'000, 10'000);
        FormaCoef forma;
        UsuarioPrueba hecho;
        VentanaCoef ventana(forma, hecho.usuario(), &principal);
        const auto sitio = ventana.screen()->availableGeometry();
        EXPECT_LE(ventana.width(), sitio.width() - kMarcoDeVentana.width());
        EXPECT_LE(ventana.height(), sitio.height() - kMarcoDeVentana.height());
        EXPECT_TRUE(sitio.contains(ventana.pos()));
        ventana.show();
        QApplication::processEvents();
        EXPECT_TRUE(sitio.contains(QRect(ventana.pos(), ventana.size())));
        EXPECT_TRUE(dentro(ventana, *ventana.findChild<QWidget*>("Command1")));
    }
}

TEST(Medidas, TheRowBreaksWhereItDoesNotFit) {
    QWidget ventana;
    ventana.resize(800, 100);
    FilaPartible fila(&ventana);
    auto* uno = new QPushButton(QStringLiteral("uno, largo como pocos"), &fila);
    auto* otro = new QPushButton(QStringLiteral("otro"), &fila);
    fila.fila().addWidget(uno);
    fila.fila().addStretch();
    fila.fila().addWidget(otro);
    fila.resize(800, 100);
    ventana.show();
    QApplication::processEvents();
    EXPECT_EQ(uno->y(), otro->y());
    fila.resize(fila.minimumSizeHint().width(), 100);
    QApplication::processEvents();
    EXPECT_LT(uno->y(), otro->y());
    EXPECT_GE(uno->width(), uno->minimumSizeHint().width());
}

TEST(Letra, IsAsLargeAsTheScreenHasRoomForItsWindows) {
    auto grande = QApplication::font();
    grande.setPixelSize(27);  // 20 points at 96 dots an inch
    const auto alto = [&](const QSize& pantalla) {
        return QFontInfo(letraQueCabe(grande, pantalla)).pixelSize();
    };
    EXPECT_EQ(alto({1280, 1024}), 27);
    EXPECT_EQ(alto({800, 600}), 27);
    EXPECT_EQ(alto({640, 512}), 22) << "1280x1024 with everything doubled";
    EXPECT_EQ(alto({100, 100}), 6);
    // Large letters may also come as a screen with fewer dots.
    auto normal = QApplication::font();
    normal.setPixelSize(12);
    EXPECT_EQ(letraQueCabe(normal, {640, 512}), normal);
    EXPECT_EQ(QFontInfo(letraQueCabe(normal, {288, 231})).pixelSize(), 7);
    auto enPuntos = QApplication::font();
    enPuntos.setPointSizeF(30);
    EXPECT_LT(letraQueCabe(enPuntos, {640, 512}).pointSizeF(), 25);
}

TEST(Letra, TheDesignsWhereItIsThereAndScalesElseTheDesktops) {
    const auto escritorio = QApplication::font();
    EXPECT_EQ(letraDeDiseno(QStringLiteral("No Such Face"), escritorio), escritorio);
    QString otra;
    for (const auto& familia : QFontDatabase::families()) {
        if (familia != escritorio.family() && QFontDatabase::isSmoothlyScalable(familia)) otra = familia;
    }
    if (otra.isEmpty()) GTEST_SKIP() << "one face alone is installed";
    const auto propia = letraDeDiseno(otra, escritorio);
    EXPECT_EQ(propia.families(), QStringList(otra) + escritorio.families());
    EXPECT_EQ(propia.pointSizeF(), escritorio.pointSizeF());
    // A family may be another name of one that is installed ("Serif").
    EXPECT_EQ(QFontInfo(propia).family(), QFontInfo(QFont(otra)).family());
}

}  // namespace
}  // namespace telvane
