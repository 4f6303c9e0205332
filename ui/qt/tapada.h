// Whether a box that has to be answered first stands before a window.
#pragma once

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

namespace telvane {

// Mouse and keyboard do not reach such a window; assistive technology, which asks the widget itself, does.
inline bool tapada(const QWidget& widget) {
    const auto* caja = QGuiApplication::modalWindow();
    const auto* suya = widget.window()->windowHandle();
    return caja != nullptr && suya != nullptr && caja != suya && !caja->isAncestorOf(suya);
}

}  // namespace telvane
