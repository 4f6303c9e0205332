#include "ui/qt/letras.h"

#include <QFontDatabase>
#include <QStringList>

namespace telvane {

QFont letraDeDiseno(const QString& familia, QFont otra) {
    if (QFontDatabase::isSmoothlyScalable(familia)) otra.setFamilies(QStringList(familia) + otra.families());
    return otra;
}

QFont letraDeControles(const QFont& delEscritorio) {
    return letraDeDiseno(QStringLiteral("MS Sans Serif"), delEscritorio);
}

QFont letraDeColumnas() {
    return letraDeDiseno(QStringLiteral("Courier New"), QFontDatabase::systemFont(QFontDatabase::FixedFont));
}

}  // namespace telvane
