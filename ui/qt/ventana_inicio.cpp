#include "ui/qt/ventana_inicio.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QAbstractButton>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QIcon>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>

#include "ui/qt/cuerpo_deslizable.h"
#include "ui/qt/fila_partible.h"
#include "ui/qt/franja_diagnostico.h"
#include "ui/qt/medida_pantalla.h"
#include "ui/qt/rejilla_opciones.h"
#include "ui/qt/texto_qt.h"
#include "ui/qt/ventana_accesible.h"

namespace telvane {

namespace {

constexpr QSize kMedida(1000, 650);
constexpr int kEntreSecciones = 14;
constexpr int kEntreFilas = 9;
constexpr double kAumentoTitulo = 1.5;
constexpr double kAumentoSeccion = 1.1;
// A label that changes with the progress of an operation must not push the fields about.
constexpr int kLetrasRotulo = 23;
constexpr int kLetrasBoton = 100;

void agrandar(QWidget& widget, double aumento) {
    auto fuente = widget.font();
    fuente.setBold(true);
    if (fuente.pointSizeF() > 0) {
        fuente.setPointSizeF(fuente.pointSizeF() * aumento);
    } else {
        fuente.setPixelSize(static_cast<int>(fuente.pixelSize() * aumento));
    }
    widget.setFont(fuente);
}

void conservarSitio(QWidget& widget) {
    auto politica = widget.sizePolicy();
    politica.setRetainSizeWhenHidden(true);
    widget.setSizePolicy(politica);
}

// Labels of both end at the same place, however wide the letters make one of them.
void alinearRotulos(QGridLayout& una, QGridLayout& otra) {
    int ancho = std::max(una.columnMinimumWidth(0), otra.columnMinimumWidth(0));
    for (const auto* rejilla : {&una, &otra}) {
        for (int fila = 0; fila < rejilla->rowCount(); ++fila) {
            if (const auto* rotulo = rejilla->itemAtPosition(fila, 0))
                ancho = std::max(ancho, rotulo->minimumSize().width());
        }
    }
    for (auto* rejilla : {&una, &otra}) rejilla->setColumnMinimumWidth(0, ancho);
}

template <class Disposicion>
Disposicion* sinMargen(Disposicion* disposicion) {
    disposicion->setContentsMargins(0, 0, 0, 0);
    return disposicion;
}

}  // namespace

VentanaInicio::VentanaInicio(FormaInicio& forma, Usuario usuario)
    : forma_(forma), vinculos_(forma, std::move(usuario)) {
    instalarAccesibilidadDeVentanas();
    setObjectName(aQt(forma.nombre()));
    // Made in the order in which the eye goes through them, which is the order of the keyboard.
    auto* todo = new QVBoxLayout(this);
    todo->addWidget(cabecera());
    todo->addWidget(crear(forma.Line1));
    todo->addWidget(cuerpo(), 1);
    todo->addWidget(crear(forma.Line5));
    todo->addLayout(pie());
    mostrarConexion();
    limitarBotones();
    observar();
    resize(cabeEnPantalla(*this, kMedida.expandedTo(sizeHint())));
    // A key too many at the first question presses no button.
    widget(forma.Text2)->setFocus();
    sincronizar();
}

QWidget* VentanaInicio::crear(Control& control, QWidget* padre) {
    return vinculos_.crear(control, padre == nullptr ? this : padre);
}

QWidget* VentanaInicio::encabezado(Control& control, Control& linea) {
    auto* fila = new QWidget(this);
    auto* disposicion = sinMargen(new QHBoxLayout(fila));
    auto* titulo = crear(control, fila);
    agrandar(*titulo, kAumentoSeccion);
    disposicion->addWidget(titulo);
    disposicion->addWidget(crear(linea, fila), 1, Qt::AlignVCenter);
    return fila;
}

QWidget* VentanaInicio::cabecera() {
    auto* partida = new FilaPartible(this);
    if (!pocasLineas(*this)) partida->fila().addWidget(titulos());
    partida->fila().addStretch();
    auto* conexion = new QWidget(partida);
    auto* fila = sinMargen(new QHBoxLayout(conexion));
    fila->addStretch();
    fila->addWidget(crear(forma_.Label12, conexion));
    fila->addWidget(crear(forma_.Command1, conexion));
    partida->fila().addWidget(conexion);
    return partida;
}

QWidget* VentanaInicio::titulos() {
    auto* titulos = new QWidget(this);
    auto* fila = sinMargen(new QHBoxLayout(titulos));
    auto* producto = crear(forma_.Label16, titulos);
    agrandar(*producto, kAumentoTitulo);
    fila->addWidget(producto, 0, Qt::AlignBaseline);
    fila->addSpacing(kEntreSecciones);
    fila->addWidget(crear(forma_.Label14, titulos), 0, Qt::AlignBaseline);
    fila->addStretch();
    return titulos;
}

QWidget* VentanaInicio::cuerpo() {
    cuerpo_ = new CuerpoDeslizable(this);
    // A form is as wide as its fields; what the window has to spare goes to the data.
    cuerpo_->agregar(columnaConfiguracion(), 0);
    cuerpo_->agregar(columnaDatos(), 1);
    return cuerpo_;
}

QLayout* VentanaInicio::columnaConfiguracion() {
    auto* columna = new QVBoxLayout;
    if (pocasLineas(*this)) columna->addWidget(titulos());
    columna->addWidget(encabezado(forma_.Label11, forma_.Line2));
    columna->addWidget(filaDeBotones(forma_.configuracion, forma_.Command2));
    auto* campos = camposConfiguracion();
    columna->addLayout(campos);
    columna->addWidget(filaDeBotones(forma_.Command3, forma_.Command5));
    columna->addSpacing(2 * kEntreSecciones);
    // A service of its own, away from the fields that are sent together.
    auto* serie = nuevaRejilla();
    filaDeCampo(*serie, 0, forma_.Label1, crear(forma_.Text10));
    columna->addLayout(serie);
    alinearRotulos(*campos, *serie);
    columna->addStretch();
    return columna;
}

QWidget* VentanaInicio::filaDeBotones(Control& izquierdo, Control& derecho) {
    auto* partida = new FilaPartible(this);
    partida->fila().addWidget(crear(izquierdo, partida), 1);
    partida->fila().addWidget(crear(derecho, partida), 1);
    return partida;
}

// Labels to the right of a fixed column, fields to the left of the other.
QGridLayout* VentanaInicio::nuevaRejilla() {
    auto* rejilla = new QGridLayout;
    rejilla->setVerticalSpacing(kEntreFilas);
    rejilla->setColumnMinimumWidth(
        0, std::min(fontMetrics().averageCharWidth() * kLetrasRotulo, anchoDeContenido(*this) / 3));
    rejilla->setColumnStretch(1, 1);
    return rejilla;
}

QGridLayout* VentanaInicio::camposConfiguracion() {
    auto* rejilla = nuevaRejilla();
    int fila = 0;
    rejilla->addWidget(crear(forma_.Label4), fila++, 1);
    const std::array<std::pair<Control*, Control*>, 5> campos = {{{&forma_.Label2, &forma_.Text2},
                                                                  {&forma_.Label6, &forma_.Text3},
                                                                  {&forma_.Label7, &forma_.Text4},
                                                                  {&forma_.Label13, &forma_.Text5},
                                                                  {&forma_.Label8, &forma_.Text7}}};
    for (const auto& [rotulo, campo] : campos) filaDeCampo(*rejilla, fila++, *rotulo, crear(*campo));
    auto* rotuloIntervalo = crear(forma_.Label5);
    rejilla->addWidget(rotuloIntervalo, fila, 0, Qt::AlignRight | Qt::AlignTop);
    rejilla->addWidget(opcionesDeIntervalo(), fila++, 1);
    rotuloIntervalo->setMinimumHeight(widget(forma_.Option1)->sizeHint().height());
    rejilla->addWidget(rotuloPropio(forma_.MaskEdBox2), fila, 0, Qt::AlignRight | Qt::AlignVCenter);
    rejilla->addWidget(camposDeReloj(), fila++, 1);
    rejilla->addWidget(casillaDeReloj(), fila++, 1);
    return rejilla;
}

// Fields are as wide as what they take, so that the eye sees how much that is.
void VentanaInicio::filaDeCampo(QGridLayout& rejilla, int fila, Control& rotulo, QWidget* campo) {
    rejilla.addWidget(crear(rotulo), fila, 0, Qt::AlignRight | Qt::AlignVCenter);
    rejilla.addWidget(campo, fila, 1, Qt::AlignLeft);
}

QWidget* VentanaInicio::opcionesDeIntervalo() {
    auto* opciones = new RejillaOpciones(this);
    for (auto* opcion : forma_.opciones()) opciones->agregar(crear(*opcion, opciones));
    return opciones;
}

// The design gives these fields no label of their own; what a screen reader says serves the eye as well.
QWidget* VentanaInicio::rotuloPropio(const Control& campo) {
    auto* rotulo = new QLabel(aQt(campo.nombreAccesible()), this);
    rotulo->setTextFormat(Qt::PlainText);
    return rotulo;
}

QWidget* VentanaInicio::camposDeReloj() {
    auto* partida = new FilaPartible(this);
    partida->fila().addWidget(crear(forma_.MaskEdBox2, partida));
    auto* fecha = new QWidget(partida);
    auto* fila = sinMargen(new QHBoxLayout(fecha));
    fila->addWidget(rotuloPropio(forma_.fecha1));
    fila->addWidget(crear(forma_.fecha1, fecha));
    fila->addStretch();
    partida->fila().addWidget(fecha, 1);
    return partida;
}

QWidget* VentanaInicio::casillaDeReloj() {
    auto* grupo = new QWidget(this);
    auto* fila = sinMargen(new QHBoxLayout(grupo));
    auto* casilla = crear(forma_.Check1, grupo);
    auto* rotulo = crear(forma_.Label3, grupo);
    conservarSitio(*casilla);
    conservarSitio(*rotulo);
    rotulo->installEventFilter(this);
    static_cast<QLabel*>(rotulo)->setWordWrap(true);
    fila->addWidget(casilla);
    fila->addWidget(rotulo, 1);
    return grupo;
}

QLayout* VentanaInicio::columnaDatos() {
    auto* columna = new QVBoxLayout;
    columna->addWidget(encabezado(forma_.Label9, forma_.Line3));
    for (auto* control : {&forma_.Command13, &forma_.Command33, &forma_.Command43}) {
        columna->addLayout(filaDeBoton(*control));
    }
    columna->addWidget(hojasDeTexto(), 1);
    columna->addSpacing(kEntreSecciones);
    columna->addWidget(encabezado(forma_.Label10, forma_.Line4));
    columna->addLayout(filaDeBoton(forma_.Command4));
    auto* lectura = crear(forma_.Text60);
    lectura->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    conservarSitio(*lectura);
    columna->addWidget(lectura);
    if (pocasLineas(*this)) columna->addWidget(crear(forma_.Label15));
    return columna;
}

QLayout* VentanaInicio::filaDeBoton(Control& control) {
    auto* fila = new QHBoxLayout;
    fila->addWidget(crear(control), 1);
    fila->addStretch();
    return fila;
}

// As wide as their column, up to where a button would stop looking like one.
void VentanaInicio::limitarBotones() const {
    for (auto* control : {&forma_.Command13, &forma_.Command33, &forma_.Command43, &forma_.Command4}) {
        widget(*control)->setMaximumWidth(fontMetrics().averageCharWidth() * kLetrasBoton);
    }
}

QWidget* VentanaInicio::hojasDeTexto() {
    hojas_ = new QTabWidget(this);
    hojas_->setAccessibleName(aQt(forma_.Label9.caption()));
    for (auto* control : {&forma_.RichTextBox1, &forma_.RichTextBox2}) {
        auto* hoja = crear(*control, hojas_);
        static_cast<QFrame*>(hoja)->setFrameShape(QFrame::NoFrame);
        hojas_->addTab(hoja, sinAtajo(aQt(control->nombreAccesible())));
    }
    return hojas_;
}

// A printed path takes the whole width; what stands still is below it.
QLayout* VentanaInicio::pie() {
    auto* columna = new QVBoxLayout;
    franja_ = new FranjaDiagnostico(forma_, this);
    franja_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    columna->addWidget(franja_);
    auto* partida = new FilaPartible(this);
    if (!pocasLineas(*this)) partida->fila().addWidget(crear(forma_.Label15, partida));
    partida->fila().addStretch();
    partida->fila().addWidget(crear(forma_.salir, partida));
    columna->addWidget(partida);
    return columna;
}

void VentanaInicio::observar() {
    observacion_ =
        forma_.observar({.alCambiar =
                             [this](Control& control, Que que) {
                                 if (&control == &forma_.Command1) mostrarConexion();
                                 if (&control == &forma_.Text60 && que == Que::visible) traerLecturas();
                                 // The pane written last is the one to look at.
                                 if (que != Que::text || control.text().empty()) return;
                                 if (&control != &forma_.RichTextBox1 && &control != &forma_.RichTextBox2)
                                     return;
                                 hojas_->setCurrentWidget(widget(control));
                             },
                         .alCambiarForma = [this] { sincronizar(); },
                         .alImprimir = [this](const std::string&) { franja_->refrescar(); }});
}

// On a small screen they would begin below its edge; where not all of it has room, the button that stops goes
// first.
void VentanaInicio::traerLecturas() {
    if (!forma_.Text60.visible()) return;
    for (const auto* control : {&forma_.Text60, &forma_.Command4}) {
        cuerpo_->ensureWidgetVisible(widget(*control), 0, 0);
    }
}

// A connection that stands is told, not offered: while its button is closed it reads as a line of text.
void VentanaInicio::mostrarConexion() const {
    auto* boton = static_cast<QPushButton*>(widget(forma_.Command1));
    boton->setFlat(!forma_.Command1.enabled());
    QPalette colores;
    colores.setResolveMask(0);
    for (const auto papel : {QPalette::ButtonText, QPalette::WindowText}) {
        colores.setColor(QPalette::Disabled, papel, colores.color(QPalette::Active, QPalette::WindowText));
    }
    boton->setPalette(colores);
}

void VentanaInicio::sincronizar() {
    setWindowTitle(aQt(forma_.caption()));
    if (forma_.mostrado() == isVisible()) return;
    setVisible(forma_.mostrado());
}

void VentanaInicio::trasPrimerCuadro(std::function<void()> accion) {
    if (pintada_ || !forma_.mostrado()) {
        accion();
    } else {
        trasPintar_.push_back(std::move(accion));
    }
}

bool VentanaInicio::event(QEvent* suceso) {
    const bool hecho = QWidget::event(suceso);
    // The frame reaches the screen once this event is done with.
    if (suceso->type() == QEvent::Paint && !pintada_) QTimer::singleShot(0, this, [this] { primerCuadro(); });
    return hecho;
}

bool VentanaInicio::focusNextPrevChild(bool siguiente) {
    const bool hay = QWidget::focusNextPrevChild(siguiente);
    if (hay) cuerpo_->mostrarFoco();
    return hay;
}

void VentanaInicio::changeEvent(QEvent* suceso) {
    QWidget::changeEvent(suceso);
    if (suceso->type() == QEvent::PaletteChange) mostrarConexion();
    if (suceso->type() == QEvent::FontChange) limitarBotones();
}

void VentanaInicio::primerCuadro() {
    pintada_ = true;
    setWindowIcon(QIcon(QStringLiteral(":/telvane/telvane-64.png")));
    for (const auto& accion : std::exchange(trasPintar_, {})) accion();
}

// The label beside the box is the box's own.
bool VentanaInicio::eventFilter(QObject* objeto, QEvent* suceso) {
    if (suceso->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(suceso)->button() == Qt::LeftButton) {
        static_cast<QAbstractButton*>(widget(forma_.Check1))->click();
    }
    return QWidget::eventFilter(objeto, suceso);
}

void VentanaInicio::closeEvent(QCloseEvent* suceso) {
    suceso->ignore();
    vinculos_.usuario().pulsar(forma_.salir);
}

}  // namespace telvane
