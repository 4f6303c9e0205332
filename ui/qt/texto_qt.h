// Between the core's UTF-8 and the toolkit's strings.
#pragma once

#include <string>
#include <string_view>

#include <QString>

namespace telvane {

inline QString aQt(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

// A button takes "&" for the mark of a shortcut; a caption has none.
inline QString sinAtajo(QString texto) {
    return texto.replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace telvane
