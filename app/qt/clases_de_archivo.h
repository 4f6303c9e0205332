// What a file dialog tells about a file, by its name alone.
#pragma once

#include <QAbstractFileIconProvider>
#include <QIcon>

namespace telvane {

// The toolkit's own provider reads the desktop's whole data base of file kinds for it, which takes megabytes,
// and does not speak Spanish. Used from the dialog's own thread as well: nothing changes once it is made.
class ClasesDeArchivo final : public QAbstractFileIconProvider {
   public:
    ClasesDeArchivo();
    QIcon icon(IconType clase) const override;
    QIcon icon(const QFileInfo& archivo) const override;
    QString type(const QFileInfo& archivo) const override;

   private:
    QIcon carpeta_;
    QIcon archivo_;
};

}  // namespace telvane
