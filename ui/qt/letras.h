// The typefaces of the design, where the system has them.
#pragma once

#include <QFont>

namespace telvane {

// The named face in the size and weight of the other one; the other one itself where that face is not
// installed, or only as bitmaps, which follow neither large letters nor dense displays.
QFont letraDeDiseno(const QString& familia, QFont otra);

// For every control.
QFont letraDeControles(const QFont& delEscritorio);
// For what stands in columns.
QFont letraDeColumnas();

}  // namespace telvane
