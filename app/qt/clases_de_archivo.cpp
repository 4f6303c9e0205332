#include "app/qt/clases_de_archivo.h"

#include <QApplication>
#include <QFileInfo>
#include <QStyle>

namespace telvane {

ClasesDeArchivo::ClasesDeArchivo()
    : carpeta_(QApplication::style()->standardIcon(QStyle::SP_DirIcon)),
      archivo_(QApplication::style()->standardIcon(QStyle::SP_FileIcon)) {}

QIcon ClasesDeArchivo::icon(IconType clase) const {
    return clase == File ? archivo_ : carpeta_;
}

QIcon ClasesDeArchivo::icon(const QFileInfo& archivo) const {
    return archivo.isDir() ? carpeta_ : archivo_;
}

QString ClasesDeArchivo::type(const QFileInfo& archivo) const {
    if (archivo.isDir()) return QStringLiteral("Carpeta");
    const auto extension = archivo.suffix().toUpper();
    return extension.isEmpty() ? QStringLiteral("Archivo") : QStringLiteral("Archivo ") + extension;
}

}  // namespace telvane
