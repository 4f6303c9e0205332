// How large a window may be to stand on its screen whole.
#pragma once

#include <QScreen>
#include <QWidget>

namespace telvane {

// What a title bar and edges take: how much exactly nobody knows before the window stands there.
inline constexpr QSize kMarcoDeVentana(8, 40);

inline QSize cabeEnPantalla(const QWidget& ventana, const QSize& medida) {
    const auto* pantalla = ventana.screen();
    return pantalla == nullptr ? medida : medida.boundedTo(pantalla->availableSize() - kMarcoDeVentana);
}

}  // namespace telvane
