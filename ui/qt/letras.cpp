#include "ui/qt/letras.h"

#include <algorithm>

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QStringList>

namespace telvane {

namespace {

// What a window takes of the screen: so many letters' heights, and what does not grow with them.
struct Extension {
    double letras;
    double fijo;

    double letraQueCabe(int pixeles) const { return (pixeles - fijo) / letras; }
};
constexpr Extension kAnchoInicio{27.2, 34};
constexpr Extension kAnchoCoef{18.7, 152};
constexpr Extension kAltoInicio{8, 166};
constexpr double kMenorLetra = 6;

QFont ajustada(const QFont& letra) {
    const auto* pantalla = QGuiApplication::primaryScreen();
    return pantalla == nullptr ? letra : letraQueCabe(letra, pantalla->availableSize());
}

}  // namespace

QFont letraQueCabe(QFont letra, const QSize& pantalla) {
    const double cabe = std::max(kMenorLetra, std::min({kAnchoInicio.letraQueCabe(pantalla.width()),
                                                        kAnchoCoef.letraQueCabe(pantalla.width()),
                                                        kAltoInicio.letraQueCabe(pantalla.height())}));
    const double alto = QFontInfo(letra).pixelSize();
    if (alto <= cabe) return letra;
    if (letra.pixelSize() > 0) {
        letra.setPixelSize(static_cast<int>(cabe));
    } else {
        letra.setPointSizeF(letra.pointSizeF() * cabe / alto);
    }
    return letra;
}

QFont letraDeDiseno(const QString& familia, QFont otra) {
    if (QFontDatabase::isSmoothlyScalable(familia)) otra.setFamilies(QStringList(familia) + otra.families());
    return otra;
}

QFont letraDeControles(const QFont& delEscritorio) {
    return ajustada(letraDeDiseno(QStringLiteral("MS Sans Serif"), delEscritorio));
}

QFont letraDeColumnas() {
    return ajustada(
        letraDeDiseno(QStringLiteral("Courier New"), QFontDatabase::systemFont(QFontDatabase::FixedFont)));
}

}  // namespace telvane
