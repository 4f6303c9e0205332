// The typefaces of the design, where the system has them.
#pragma once

#include <QFont>
#include <QSize>

namespace telvane {

// The named face in the size and weight of the other one; the other one itself where that face is not
// installed, or only as bitmaps, which follow neither large letters nor dense displays.
QFont letraDeDiseno(const QString& familia, QFont otra);

// A letter that a screen of this size has room for: the one given, or as much smaller as needed for every
// window to stand there whole, its buttons included. 20 points at 96 dots an inch go with 800x600.
QFont letraQueCabe(QFont letra, const QSize& pantalla);

// For every control.
QFont letraDeControles(const QFont& delEscritorio);
// For what stands in columns.
QFont letraDeColumnas();

}  // namespace telvane
