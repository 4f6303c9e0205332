#include "app/qt/dialogos_qt.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QStandardPaths>
#include <QTimer>
#include <QTreeView>

#include "app/qt/clases_de_archivo.h"
#include "ui/qt/medida_pantalla.h"
#include "ui/qt/tapada.h"
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

// Wide enough for name, size, kind and date of a file, in letters and lines.
constexpr int kLetrasDialogo = 110;
constexpr int kLineasDialogo = 28;

struct Filtro {
    QString descripcion;
    QString extension;  // without its dot
};

Filtro leerFiltro(const std::string& filtro) {
    const auto partes = aQt(filtro).split(QLatin1Char('|'));
    const auto patron = partes.value(1, QStringLiteral("*"));
    return {partes.value(0), patron.mid(patron.lastIndexOf(QLatin1Char('.')) + 1)};
}

// The dialogs take any dot for that of an ending: a name with a dot of its own gets the right one from here.
QString conExtension(QString nombre, const QString& extension) {
    const auto punto = QLatin1Char('.') + extension;
    if (!nombre.contains(QLatin1Char('.')) || nombre.endsWith(punto, Qt::CaseInsensitive)) return nombre;
    while (nombre.endsWith(QLatin1Char('.'))) nombre.chop(1);
    return nombre + punto;
}

// The name takes what the rest leaves, and of the rest goes what leaves it too little. A dialog of the
// desktop's own has no such list.
void repartirColumnas(const QFileDialog& dialogo) {
    auto* lista = dialogo.findChild<QTreeView*>(QStringLiteral("treeView"));
    if (lista == nullptr) return;
    auto* cabecera = lista->header();
    cabecera->setSectionResizeMode(QHeaderView::ResizeToContents);
    cabecera->setSectionResizeMode(0, QHeaderView::Stretch);
    // Kind, size and date, with the letters that the list must have room for to show them too.
    constexpr std::array<std::pair<int, int>, 3> kSobrantes = {{{2, 100}, {1, 80}, {3, 76}}};
    const int letras = dialogo.width() / dialogo.fontMetrics().averageCharWidth();
    for (const auto& [columna, necesarias] : kSobrantes)
        cabecera->setSectionHidden(columna, letras < necesarias);
}

// Its kinds of files outlive it, and the thread in which it reads folders.
class DialogoDeArchivo final : private ClasesDeArchivo, public QFileDialog {
   public:
    DialogoDeArchivo(QWidget* padre, const QString& titulo, const QString& carpeta, const QString& filtro)
        : QFileDialog(padre, titulo, carpeta, filtro) {
        setIconProvider(this);
    }

    // Before the dialog looks whether the file exists already. One of the desktop's own has no such field.
    void accept() override {
        if (tapada(*this)) return;
        auto* campo = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        if (campo != nullptr && acceptMode() == AcceptSave) campo->setText(nombreEntero(campo->text()));
        QFileDialog::accept();
    }

    // Not while it asks whether to replace a file: its own question would outlive it.
    void reject() override {
        if (!tapada(*this)) QFileDialog::reject();
    }

   protected:
    void resizeEvent(QResizeEvent* suceso) override {
        QFileDialog::resizeEvent(suceso);
        repartirColumnas(*this);
    }

   private:
    QString nombreEntero(QString escrito) const {
        const auto casa = QLatin1String("~/");
        const auto ruta =
            escrito.startsWith(casa) ? QDir::home().filePath(escrito.mid(casa.size())) : escrito;
        if (escrito == QLatin1String("~") || QFileInfo(directory(), ruta).isDir()) return escrito;
        // One file has one name: a quotation mark in it parts nothing.
        escrito.replace(QLatin1Char('"'), QLatin1Char('_'));
        const auto barra = escrito.lastIndexOf(QLatin1Char('/')) + 1;
        return escrito.first(barra) + conExtension(escrito.mid(barra), defaultSuffix());
    }
};

QFileDialog* nuevoDialogo(const PeticionArchivo& peticion, QWidget* padre) {
    const auto filtro = leerFiltro(peticion.filtro);
    const auto titulo =
        peticion.guardar ? QStringLiteral("Guardar archivo - ") : QStringLiteral("Abrir archivo - ");
    auto* dialogo = new DialogoDeArchivo(padre, titulo + aQt(peticion.carpeta), carpetaDeDocumentos(),
                                         filtro.descripcion);
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
    const auto letra = dialogo->fontMetrics();
    dialogo->resize(cabeEnPantalla(
        *dialogo, {letra.averageCharWidth() * kLetrasDialogo, letra.height() * kLineasDialogo}));
    if (peticion.guardar) dialogo->setDefaultSuffix(filtro.extension);
    if (!peticion.nombre.empty()) {
        dialogo->selectFile(conExtension(aQt(peticion.nombre), filtro.extension));
    }
    return dialogo;
}

std::optional<std::filesystem::path> elegido(const QFileDialog& dialogo, int resultado) {
    const auto archivos = dialogo.selectedFiles();
    if (resultado != QDialog::Accepted || archivos.isEmpty()) return std::nullopt;
    return std::filesystem::path(QFile::encodeName(archivos.front()).toStdString());
}

// The toolkit breaks a box's lines at half the screen, cuts what has no blank to break at, and lets a long
// text push the buttons off a small one.
void acomodar(QMessageBox& caja) {
    auto* texto = caja.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    const auto* pantalla = caja.screen();
    if (texto == nullptr || pantalla == nullptr) return;
    // Beside the text, and above and below it.
    const auto resto = caja.sizeHint() - texto->sizeHint();
    // The toolkit lets no box be wider on a large screen.
    const int ancho = pantalla->availableSize().width();
    const QSize maximo(ancho <= 1024 ? ancho : std::min(ancho - 480, 1000),
                       pantalla->availableSize().height());
    constexpr int kIntentos = 8;
    constexpr double kMenor = 0.9;
    for (int i = 0; i < kIntentos; ++i) {
        texto->setWordWrap(false);
        const int cabe =
            std::min(texto->sizeHint().width(), maximo.width() - kMarcoDeVentana.width() - resto.width());
        texto->setMinimumWidth(cabe);
        texto->setWordWrap(true);
        if (texto->heightForWidth(cabe) + resto.height() <= maximo.height() - kMarcoDeVentana.height())
            return;
        auto letra = texto->font();
        letra.setPointSizeF(QFontInfo(letra).pointSizeF() * kMenor);
        texto->setFont(letra);
    }
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
        if (mensaje.porDefecto ? cual.codigo == *mensaje.porDefecto : caja->defaultButton() == nullptr) {
            caja->setDefaultButton(boton);
        }
    }
    caja->setEscapeButton(boton);
    acomodar(*caja);
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
    presentar(*caja);
}

// What is read first is not answered before.
void DialogosQt::presentar(QDialog& dialogo) {
    teclas_.aparece(dialogo);
    const QPointer<QWidget> anterior = QApplication::activeWindow();
    QObject::connect(&dialogo, &QDialog::finished, &dialogo, [this, anterior] { devolverTeclado(anterior); });
    dialogo.show();
}

// The window that a box belongs to gets the keyboard after it; another one may have had it, or need it now.
void DialogosQt::devolverTeclado(QWidget* anterior) const {
    if (QApplication::activeModalWidget() != nullptr) return;
    auto* enCurso = enCurso_ ? enCurso_() : nullptr;
    auto* cual = enCurso != nullptr ? enCurso : anterior;
    if (cual != nullptr && cual->isVisible() && !cual->isMinimized()) cual->activateWindow();
}

void DialogosQt::archivo(const PeticionArchivo& peticion,
                         std::function<void(std::optional<std::filesystem::path>)> listo) {
    auto* dialogo = nuevoDialogo(peticion, padre());
    QObject::connect(dialogo, &QDialog::finished, dialogo,
                     [this, dialogo, listo = std::move(listo)](int resultado) {
                         const auto ruta = elegido(*dialogo, resultado);
                         bucle_.entregar([listo, ruta] { listo(ruta); });
                     });
    presentar(*dialogo);
}

void DialogosQt::abrirDocumento(const std::filesystem::path& ruta, std::function<void()> alFallar) {
    abridor_.abrir(ruta, alFallar);
}

}  // namespace telvane
