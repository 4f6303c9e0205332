#include "app/qt/paleta_oscura.h"

#include <array>
#include <utility>

namespace telvane {

namespace {

using Rol = QPalette::ColorRole;

// The style draws a button's face lighter than its colour: the colour leaves room for that. And it draws
// frames darker than the window: a field is seen by its lighter ground.
constexpr std::array<std::pair<Rol, QRgb>, 20> kColores{{
    {QPalette::Window, 0xff2b2d30},
    {QPalette::WindowText, 0xffececec},
    {QPalette::Base, 0xff3d4045},
    {QPalette::AlternateBase, 0xff373a3f},
    {QPalette::Text, 0xffececec},
    {QPalette::PlaceholderText, 0xffd6d9dc},
    {QPalette::Button, 0xff2f3134},
    {QPalette::ButtonText, 0xfff0f0f0},
    {QPalette::BrightText, 0xffffa0a0},
    {QPalette::ToolTipBase, 0xff3d4045},
    {QPalette::ToolTipText, 0xfff0f0f0},
    {QPalette::Highlight, 0xff86b3ec},
    {QPalette::HighlightedText, 0xff10151c},
    {QPalette::Link, 0xffc6dcff},
    {QPalette::LinkVisited, 0xffd3baff},
    {QPalette::Light, 0xff4a4d52},
    {QPalette::Midlight, 0xff3c3f43},
    {QPalette::Mid, 0xff202224},
    {QPalette::Dark, 0xff18191b},
    {QPalette::Shadow, 0xff0e0f10},
}};

constexpr QRgb kApagado = 0xff96999d;

}  // namespace

QPalette paletaOscura() {
    QPalette paleta;
    for (const auto& [rol, color] : kColores) paleta.setColor(rol, QColor(color));
    for (const auto rol : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                           QPalette::PlaceholderText, QPalette::Link, QPalette::LinkVisited}) {
        paleta.setColor(QPalette::Disabled, rol, QColor(kApagado));
    }
    // What is switched off lies flat on the window, and a selection in it does not shine.
    paleta.setColor(QPalette::Disabled, QPalette::Base, paleta.color(QPalette::Window));
    paleta.setColor(QPalette::Disabled, QPalette::Highlight, paleta.color(QPalette::Light));
    paleta.setColor(QPalette::Disabled, QPalette::HighlightedText, paleta.color(QPalette::WindowText));
    return paleta;
}

}  // namespace telvane
