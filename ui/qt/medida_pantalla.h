// How large a window may be to stand on its screen whole.
#pragma once

#include <QScreen>
#include <QStyle>
#include <QWidget>

namespace telvane {

// What a title bar and edges take: how much exactly nobody knows before the window stands there.
inline constexpr QSize kMarcoDeVentana(8, 40);

inline QSize cabeEnPantalla(const QWidget& ventana, const QSize& medida) {
    const auto* pantalla = ventana.screen();
    return pantalla == nullptr ? medida : medida.boundedTo(pantalla->availableSize() - kMarcoDeVentana);
}

// What is left of a line of such a window beside its margins and a scroll bar.
inline int anchoDeContenido(const QWidget& widget) {
    const auto* pantalla = widget.screen();
    if (pantalla == nullptr) return QWIDGETSIZE_MAX;
    const auto& estilo = *widget.style();
    return pantalla->availableSize().width() - 2 * kMarcoDeVentana.width() -
           estilo.pixelMetric(QStyle::PM_LayoutLeftMargin) -
           estilo.pixelMetric(QStyle::PM_LayoutRightMargin) -
           2 * estilo.pixelMetric(QStyle::PM_ScrollBarExtent);
}

// A screen with so few lines of the window's letters has none to spare for what is only looked at.
inline bool pocasLineas(const QWidget& ventana) {
    constexpr int kLineas = 24;
    const auto* pantalla = ventana.screen();
    return pantalla != nullptr &&
           pantalla->availableSize().height() < kLineas * ventana.fontMetrics().height();
}

}  // namespace telvane
