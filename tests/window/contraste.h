// How well two colours can be told apart, 1 to 21: WCAG 2.1, contrast ratio.
#pragma once

#include <algorithm>
#include <cmath>

#include <QColor>

namespace telvane {

inline double lineal(double canal) {
    return canal <= 0.04045 ? canal / 12.92 : std::pow((canal + 0.055) / 1.055, 2.4);
}

inline double luminancia(const QColor& color) {
    return 0.2126 * lineal(color.redF()) + 0.7152 * lineal(color.greenF()) + 0.0722 * lineal(color.blueF());
}

inline double contraste(const QColor& uno, const QColor& otro) {
    const auto [menor, mayor] = std::minmax({luminancia(uno), luminancia(otro)});
    return (mayor + 0.05) / (menor + 0.05);
}

}  // namespace telvane
