#include "app/qt/dialogos_qt.h"

#include <utility>
#include <vector>

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTimer>
#include <QTreeView>
#include <QUrl>

#include "ui/qt/texto_qt.h"
#include "ui/qt/ventana_inicio.h"
#include "ui/textos.h"

namespace telvane {

namespace {

struct BotonDeCaja {
    Boton codigo;
    const char* texto;
    QMessageBox::ButtonRole papel;
};

// The last one is what closing the box means.
std::vector<BotonDeCaja> botonesDe(Botones botones) {
    const BotonDeCaja aceptar{Boton::aceptar, "Aceptar", QMessageBox::AcceptRole};
    switch (botones) {
        case Botones::aceptarCancelar:
            return {aceptar, {Boton::cancelar, "Cancelar", QMessageBox::RejectRole}};
        case Botones::siNo:
            return {{Boton::si, "Sí", QMessageBox::YesRole}, {Boton::no, "No", QMessageBox::NoRole}};
        case Botones::aceptar:
            break;
    }
    return {aceptar};
}

QMessageBox::Icon iconoDe(Icono icono) {
    switch (icono) {
        case Icono::exclamacion:
            return QMessageBox::Warning;
        case Icono::critico:
            return QMessageBox::Critical;
        case Icono::ninguno:
            break;
    }
    return QMessageBox::NoIcon;
}

QString conSaltos(const std::string& texto) {
    auto lineas = aQt(texto);
    lineas.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    return lineas.replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

constexpr const char* kPropiedadCodigo = "codigo";

// The folder that the user is promised is the user's documents folder here.
QString carpetaDeDocumentos() {
    const auto documentos = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QDir(documentos).exists() ? documentos : QDir::homePath();
}

// Wide enough for name, size, kind and date of a file.
constexpr int kAnchoDialogo = 780;
constexpr int kAltoDialogo = 460;

struct Filtro {
    QString descripcion;
    QString extension;  // without its dot
};

Filtro leerFiltro(const std::string& filtro) {
    const auto partes = aQt(filtro).split(QLatin1Char('|'));
    const auto patron = partes.value(1, QStringLiteral("*"));
    return {partes.value(0), patron.mid(patron.lastIndexOf(QLatin1Char('.')) + 1)};
}

// A name with a dot of its own would pass for one that has its extension.
QString nombrePropuesto(const QString& nombre, const QString& extension) {
    const auto punto = QLatin1Char('.') + extension;
    return nombre.contains(QLatin1Char('.')) && !nombre.endsWith(punto) ? nombre + punto : nombre;
}

// The name takes what the rest leaves. A dialog of the desktop's own has no such list.
void ensancharColumnas(QFileDialog& dialogo) {
    auto* lista = dialogo.findChild<QTreeView*>(QStringLiteral("treeView"));
    if (lista == nullptr) return;
    lista->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    lista->header()->setSectionResizeMode(0, QHeaderView::Stretch);
}

QFileDialog* nuevoDialogo(const PeticionArchivo& peticion, QWidget* padre) {
    const auto filtro = leerFiltro(peticion.filtro);
    const auto titulo =
        peticion.guardar ? QStringLiteral("Guardar archivo - ") : QStringLiteral("Abrir archivo - ");
    auto* dialogo =
        new QFileDialog(padre, titulo + aQt(peticion.carpeta), carpetaDeDocumentos(), filtro.descripcion);
    dialogo->setAttribute(Qt::WA_DeleteOnClose);
    dialogo->setWindowModality(Qt::ApplicationModal);
    dialogo->setAcceptMode(peticion.guardar ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialogo->setFileMode(peticion.guardar ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialogo->setLabelText(QFileDialog::Accept,
                          peticion.guardar ? QStringLiteral("Guardar") : QStringLiteral("Abrir"));
    dialogo->setLabelText(QFileDialog::Reject, QStringLiteral("Cancelar"));
    dialogo->setLabelText(QFileDialog::FileName, QStringLiteral("Nombre:"));
    dialogo->setLabelText(QFileDialog::LookIn, QStringLiteral("Carpeta:"));
    dialogo->setLabelText(QFileDialog::FileType, QStringLiteral("Tipo:"));
    dialogo->resize(kAnchoDialogo, kAltoDialogo);
    ensancharColumnas(*dialogo);
    if (peticion.guardar) dialogo->setDefaultSuffix(filtro.extension);
    if (!peticion.nombre.empty()) {
        dialogo->selectFile(nombrePropuesto(aQt(peticion.nombre), filtro.extension));
    }
    return dialogo;
}

std::optional<std::filesystem::path> elegido(const QFileDialog& dialogo, int resultado) {
    const auto archivos = dialogo.selectedFiles();
    if (resultado != QDialog::Accepted || archivos.isEmpty()) return std::nullopt;
    return std::filesystem::path(QFile::encodeName(archivos.front()).toStdString());
}

}  // namespace

QMessageBox* nuevaCaja(const Mensaje& mensaje, QWidget* padre) {
    auto* caja = new QMessageBox(padre);
    caja->setAttribute(Qt::WA_DeleteOnClose);
    caja->setWindowModality(Qt::ApplicationModal);
    caja->setWindowTitle(aQt(textos::kPrograma));
    caja->setIcon(iconoDe(mensaje.icono));
    caja->setTextFormat(Qt::PlainText);
    caja->setText(conSaltos(mensaje.texto));
    QPushButton* boton = nullptr;
    for (const auto& cual : botonesDe(mensaje.botones)) {
        boton = caja->addButton(QString::fromUtf8(cual.texto), cual.papel);
        boton->setProperty(kPropiedadCodigo, static_cast<int>(cual.codigo));
        if (caja->defaultButton() == nullptr) caja->setDefaultButton(boton);
    }
    caja->setEscapeButton(boton);
    return caja;
}

QWidget* DialogosQt::padre() const {
    return ventana_ != nullptr && ventana_->isVisible() ? ventana_ : nullptr;
}

// At start-up the question comes after the window and the splash are on the screen.
void DialogosQt::mensaje(const Mensaje& mensaje, std::function<void(Boton)> listo) {
    if (ventana_ == nullptr || ventana_->enPantalla()) {
        mostrarMensaje(mensaje, std::move(listo));
        return;
    }
    ventana_->trasPrimerCuadro([this, mensaje, listo = std::move(listo)] {
        QTimer::singleShot(0, ventana_, [this, mensaje, listo] { mostrarMensaje(mensaje, listo); });
    });
}

void DialogosQt::mostrarMensaje(const Mensaje& mensaje, std::function<void(Boton)> listo) {
    auto* caja = nuevaCaja(mensaje, padre());
    QObject::connect(caja, &QDialog::finished, caja, [this, caja, listo = std::move(listo)] {
        // Closed by its frame, the box has no clicked button yet.
        const auto* boton = caja->clickedButton() != nullptr ? caja->clickedButton() : caja->escapeButton();
        const auto codigo = static_cast<Boton>(boton->property(kPropiedadCodigo).toInt());
        bucle_.entregar([listo, codigo] { listo(codigo); });
    });
    caja->show();
}

void DialogosQt::archivo(const PeticionArchivo& peticion,
                         std::function<void(std::optional<std::filesystem::path>)> listo) {
    if (!clases_) clases_ = std::make_unique<ClasesDeArchivo>();
    auto* dialogo = nuevoDialogo(peticion, padre());
    dialogo->setIconProvider(clases_.get());
    QObject::connect(dialogo, &QDialog::finished, dialogo,
                     [this, dialogo, listo = std::move(listo)](int resultado) {
                         const auto ruta = elegido(*dialogo, resultado);
                         bucle_.entregar([listo, ruta] { listo(ruta); });
                     });
    dialogo->show();
}

bool DialogosQt::abrirDocumento(const std::filesystem::path& ruta) {
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QFile::decodeName(ruta.c_str())));
}

}  // namespace telvane
