#include "ui/qt/vinculos.h"

#include <algorithm>
#include <chrono>

#include <QCheckBox>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QTimer>
#include <QValidator>

#include "ui/qt/boton_holgado.h"
#include "ui/qt/campo_linea.h"
#include "ui/qt/letras.h"
#include "ui/qt/tapada.h"
#include "ui/qt/texto_qt.h"
#include "ui/qt/vista_lineas.h"

namespace telvane {

namespace {

// Eight lines: the whole live reading.
constexpr int kFilasTextoLargo = 8;
// More often than this no display shows it.
constexpr std::chrono::milliseconds kCuadro{16};

// A button, an option or a check box.
template <class Boton>
class VinculoBoton final : public Vinculo {
   public:
    VinculoBoton(Control& control, const Usuario& usuario, Boton& boton)
        : Vinculo(control, usuario, boton), boton_(boton) {
        QObject::connect(&boton, &QAbstractButton::clicked, contexto(), [this] { pulsado(); });
        // What a screen reader does to an option marks it without a click.
        QObject::connect(&boton, &QAbstractButton::toggled, contexto(), [this](bool marcado) {
            if (marcado == (this->control().value() != 0) || (!marcado && boton_.autoExclusive())) return;
            sinClic_ = true;
            QMetaObject::invokeMethod(
                contexto(),
                [this] {
                    if (sinClic_) pulsado();
                },
                Qt::QueuedConnection);
        });
    }

   private:
    void pulsado() {
        sinClic_ = false;
        // The control decides what is marked, and when.
        if (boton_.isCheckable()) marcar();
        usuario().pulsar(control());
    }

    void aplicarPropio(Que que) override {
        if (que == Que::caption && control().clase() != Clase::casilla) {
            const auto texto = aQt(control().caption());
            boton_.setText(sinAtajo(texto));
            boton_.setAccessibleName(texto);
        }
        if (que == Que::value && boton_.isCheckable()) marcar();
    }

    void marcar() {
        const bool exclusivo = boton_.autoExclusive();
        // An exclusive group would insist on one marked option.
        boton_.setAutoExclusive(false);
        boton_.setChecked(control().value() != 0);
        boton_.setAutoExclusive(exclusivo);
    }

    Boton& boton_;
    bool sinClic_ = false;
};

// What a user adds to a field, typed, pasted or dropped: no line ends or other codes, nothing that the
// field's key filter refuses, and of the rest as much as fits its width, outer blanks not counted.
class ValidadorCampo final : public QValidator {
   public:
    ValidadorCampo(Control& control, const Usuario& usuario, QObject* padre)
        : QValidator(padre), control_(control), usuario_(usuario) {}

    State validate(QString& texto, int& cursor) const override {
        const auto anterior = aQt(control_.text());
        // Something was taken away, nothing added.
        if (anterior.endsWith(texto)) return cabe(texto) ? Acceptable : Invalid;
        // What was added ends at the cursor; a text that was put in as a whole has none.
        const auto hasta = cursor > 0 ? std::min<qsizetype>(cursor, texto.size()) : texto.size();
        const auto cola = texto.sliced(hasta);
        const auto igual =
            std::clamp<qsizetype>(anterior.size() - cola.size(), 0, std::min(hasta, anterior.size()));
        const auto desde =
            std::mismatch(texto.cbegin(), texto.cbegin() + igual, anterior.cbegin()).first - texto.cbegin();
        const auto comienzo = cola.isEmpty() ? sinRelleno(texto.first(desde)) : texto.first(desde);
        const auto agregado = loQueCabe(comienzo, admitido(texto.sliced(desde, hasta - desde)), cola);
        if (agregado.isEmpty() && hasta > desde) return Invalid;
        texto = comienzo + agregado + cola;
        if (cursor > 0) cursor = static_cast<int>(texto.size() - cola.size());
        return cabe(texto) ? Acceptable : Invalid;
    }

   private:
    bool cabe(const QString& texto) const {
        const int maximo = control_.maxLength();
        return maximo == 0 || caracteres(texto) <= maximo;
    }

    // Blanks that fill a field up to its width are nobody's text: what is typed after them takes their place.
    QString sinRelleno(QString comienzo) const {
        const int ancho = control_.maxLength();
        if (ancho == 0 || comienzo.size() != ancho) return comienzo;
        while (comienzo.endsWith(QLatin1Char(' '))) comienzo.chop(1);
        return comienzo;
    }

    // The key filter hears of characters alone: a pasted line end is nobody's Enter.
    QString admitido(QString agregado) const {
        const auto sobra = [this](QChar c) {
            return c.category() == QChar::Other_Control ||
                   (control_.alTeclear && usuario_.teclear(control_, c.unicode()) == 0);
        };
        agregado.erase(std::remove_if(agregado.begin(), agregado.end(), sobra), agregado.end());
        return agregado;
    }

    QString loQueCabe(const QString& comienzo, const QString& agregado, const QString& cola) const {
        qsizetype caben = 0;
        // One more never needs less room, and the second half of a character none at all.
        for (qsizetype demasiados = agregado.size() + 1; demasiados - caben > 1;) {
            const auto medio = (caben + demasiados) / 2;
            (cabe(comienzo + agregado.first(medio) + cola) ? caben : demasiados) = medio;
        }
        return agregado.first(caben);
    }

    static std::ptrdiff_t caracteres(const QString& texto) {
        const auto blanco = [](QChar c) { return c == QLatin1Char(' '); };
        const auto desde = std::find_if_not(texto.begin(), texto.end(), blanco);
        const auto hasta = std::find_if_not(texto.rbegin(), std::make_reverse_iterator(desde), blanco).base();
        return std::count_if(desde, hasta, [](QChar c) { return !c.isLowSurrogate(); });
    }

    Control& control_;
    const Usuario& usuario_;
};

class VinculoCampo final : public Vinculo {
   public:
    VinculoCampo(Control& control, const Usuario& usuario, CampoLinea& campo)
        : Vinculo(control, usuario, campo), campo_(campo) {
        if (control.clase() == Clase::texto)
            campo.setValidator(new ValidadorCampo(control, this->usuario(), &campo));
        campo.filtroDeTeclas([this](int tecla) { return this->usuario().teclear(this->control(), tecla); });
        campo.alSalir([this] { this->usuario().salirDe(this->control()); });
        // Typed, pasted, or written by assistive technology, which asks the field and no key.
        QObject::connect(&campo, &QLineEdit::textChanged, contexto(), [this] { cambiado(); });
    }
    ~VinculoCampo() override {
        campo_.filtroDeTeclas({});
        campo_.alSalir({});
    }

   private:
    void aplicarPropio(Que que) override {
        switch (que) {
            case Que::text:
                mostrar(aQt(control().text()));
                break;
            case Que::locked:
                campo_.bloquear(control().locked());
                break;
            case Que::maxLength:
                campo_.anchoEnCaracteres(control().maxLength());
                break;
            case Que::mask:
                enmascarar();
                break;
            default:
                break;
        }
    }

    // The cursor of somebody who is in the field stays where it is.
    void mostrar(const QString& texto) {
        if (campo_.text() == texto) return;
        const QScopedValueRollback mostrando(mostrando_, true);
        const int cursor = campo_.cursorPosition();
        campo_.setText(texto);
        campo_.setCursorPosition(campo_.hasFocus() ? cursor : 0);
    }

    void enmascarar() {
        if (control().mask().empty()) return;
        auto mascara = aQt(control().mask()).replace(QLatin1Char('#'), QLatin1Char('0'));
        campo_.anchoEnCaracteres(static_cast<int>(mascara.size()));
        {
            const QScopedValueRollback mostrando(mostrando_, true);
            campo_.setInputMask(mascara + QLatin1String(";_"));
        }
        mostrar(aQt(control().text()));
    }

    void cambiado() {
        if (mostrando_) return;
        if (!campo_.isReadOnly()) usuario().cambiar(control(), campo_.text().toStdString());
        // What was not taken does not stay on show.
        mostrar(aQt(control().text()));
    }

    CampoLinea& campo_;
    bool mostrando_ = false;  // by us, not edited
};

class VinculoTextoLargo final : public Vinculo {
   public:
    VinculoTextoLargo(Control& control, const Usuario& usuario, VistaLineas& vista)
        : Vinculo(control, usuario, vista), vista_(vista) {}
    ~VinculoTextoLargo() override { vista_.texto({}); }

   private:
    void aplicarPropio(Que que) override {
        if (que == Que::text) vista_.texto(control().text());
    }

    VistaLineas& vista_;
};

class VinculoRotulo final : public Vinculo {
   public:
    VinculoRotulo(Control& control, const Usuario& usuario, QLabel& rotulo)
        : Vinculo(control, usuario, rotulo), rotulo_(rotulo) {}

   private:
    void aplicarPropio(Que que) override {
        if (que == Que::caption) rotulo_.setText(aQt(control().caption()));
    }

    QLabel& rotulo_;
};

// Thousands of steps may come within one frame; the bar repaints itself at once for each that it is given.
class VinculoProgreso final : public Vinculo {
   public:
    VinculoProgreso(Control& control, const Usuario& usuario, QProgressBar& barra)
        : Vinculo(control, usuario, barra), barra_(barra) {
        cuadro_.setSingleShot(true);
        QObject::connect(&cuadro_, &QTimer::timeout, contexto(), [this] { pintar(); });
        pintar();
    }

   private:
    void aplicarPropio(Que que) override {
        if ((que == Que::value || que == Que::maximum) && !cuadro_.isActive()) cuadro_.start(kCuadro);
    }

    void pintar() {
        // A bar without a range would run an animation.
        barra_.setRange(0, std::max(1, control().maximum()));
        barra_.setValue(control().value());
    }

    QProgressBar& barra_;
    QTimer cuadro_;
};

class VinculoAdorno final : public Vinculo {
   public:
    using Vinculo::Vinculo;

   private:
    void aplicarPropio(Que) override {}
};

// A hairline that is as quiet in dark colours as in light ones.
class LineaFina final : public QFrame {
   public:
    explicit LineaFina(QWidget* padre) : QFrame(padre) { setFrameShape(QFrame::HLine); }

   protected:
    void paintEvent(QPaintEvent*) override {
        auto color = palette().color(QPalette::WindowText);
        color.setAlphaF(0.25F);
        QPainter(this).fillRect(0, height() / 2, width(), 1, color);
    }
};

// Takes the keyboard, and neither a key there nor leaving it starts anything.
bool inocuo(const Control& control) {
    if (!control.enabled() || !control.visible() || control.alTeclear) return false;
    return control.clase() == Clase::texto || control.clase() == Clase::textoLargo;
}

}  // namespace

Vinculo::Vinculo(Control& control, const Usuario& usuario, QWidget& widget)
    : control_(control), usuario_(usuario), widget_(widget) {
    widget.setObjectName(aQt(control.nombre()));
    if (!control.nombreAccesible().empty()) widget.setAccessibleName(aQt(control.nombreAccesible()));
}

void Vinculo::aplicar(Que que) {
    switch (que) {
        case Que::hint:
            widget_.setToolTip(aQt(control_.hint()));
            widget_.setAccessibleDescription(aQt(control_.hint()));
            break;
        case Que::enabled:
            widget_.setEnabled(control_.enabled());
            break;
        case Que::visible:
            widget_.setVisible(control_.visible());
            break;
        default:
            aplicarPropio(que);
            break;
    }
}

void Vinculo::aplicarTodo() {
    for (const auto que : {Que::caption, Que::maxLength, Que::mask, Que::text, Que::hint, Que::enabled,
                           Que::locked, Que::maximum, Que::value, Que::visible}) {
        aplicar(que);
    }
}

Vinculos::Vinculos(Formulario& forma, Usuario usuario)
    : usuario_(std::move(usuario)), alAlcance_(soloAlAlcance()) {
    observacion_ =
        forma.observar({.alCambiar = [this](Control& control, Que que) { alCambiar(control, que); },
                        .alCambiarForma = {},
                        .alImprimir = {}});
}

// What a box stands before takes nothing from anybody. That a field was left is told all the same: the box
// may be what made the keyboard leave it.
Usuario Vinculos::soloAlAlcance() {
    const auto alcance = [this](const Control& control) { return !tapada(*widget(control)); };
    return {.pulsar =
                [this, alcance](Control& control) {
                    if (alcance(control)) usuario_.pulsar(control);
                },
            .cambiar =
                [this, alcance](Control& control, const std::string& texto) {
                    if (alcance(control)) usuario_.cambiar(control, texto);
                },
            .salirDe = usuario_.salirDe,
            .teclear = [this, alcance](
                           Control& control,
                           int tecla) { return alcance(control) ? usuario_.teclear(control, tecla) : 0; }};
}

void Vinculos::alCambiar(const Control& control, Que que) {
    const auto lugar = vinculos_.find(&control);
    if (lugar == vinculos_.end()) return;
    auto& vinculo = *lugar->second;
    const bool seAbreOCierra = que == Que::enabled || que == Que::visible;
    const bool abierto = control.enabled() && control.visible();
    if (seAbreOCierra && !abierto) apartarFoco(vinculo.widget());
    vinculo.aplicar(que);
    if (seAbreOCierra && abierto) devolverFoco(vinculo.widget());
}

// The toolkit would hand it to the next control in turn, where the next key presses a button that nobody
// chose.
void Vinculos::apartarFoco(QWidget& widget) {
    if (widget.window()->focusWidget() != &widget) return;
    for (auto* otro = widget.nextInFocusChain(); otro != &widget; otro = otro->nextInFocusChain()) {
        const auto suyo = std::find_if(vinculos_.begin(), vinculos_.end(),
                                       [&](const auto& uno) { return &uno.second->widget() == otro; });
        if (suyo == vinculos_.end() || !inocuo(*suyo->first) || !otro->isVisibleTo(widget.window())) continue;
        otro->setFocus(Qt::OtherFocusReason);
        apartado_ = &widget;
        refugio_ = otro;
        return;
    }
}

void Vinculos::devolverFoco(QWidget& widget) {
    if (apartado_ != &widget) return;
    if (refugio_ != nullptr && widget.window()->focusWidget() == refugio_)
        widget.setFocus(Qt::OtherFocusReason);
    apartado_ = nullptr;
}

QWidget* Vinculos::crear(Control& control, QWidget* padre) {
    auto& vinculo = vinculos_[&control];
    vinculo = vincular(control, padre);
    vinculo->aplicarTodo();
    return &vinculo->widget();
}

QWidget* Vinculos::widget(const Control& control) const {
    const auto lugar = vinculos_.find(&control);
    return lugar == vinculos_.end() ? nullptr : &lugar->second->widget();
}

std::unique_ptr<Vinculo> Vinculos::vincular(Control& control, QWidget* padre) {
    switch (control.clase()) {
        case Clase::boton: {
            auto* boton = new BotonHolgado(padre);
            // Enter presses the button that has the focus.
            boton->setAutoDefault(true);
            return std::make_unique<VinculoBoton<QPushButton>>(control, alAlcance_, *boton);
        }
        case Clase::opcion:
            return std::make_unique<VinculoBoton<QRadioButton>>(control, alAlcance_,
                                                                *new QRadioButton(padre));
        case Clase::casilla:
            return std::make_unique<VinculoBoton<QCheckBox>>(control, alAlcance_, *new QCheckBox(padre));
        case Clase::texto:
        case Clase::mascara:
            return std::make_unique<VinculoCampo>(control, alAlcance_, *new CampoLinea(padre));
        case Clase::textoLargo: {
            auto* vista = new VistaLineas(padre, kFilasTextoLargo);
            vista->setFont(letraDeColumnas());
            return std::make_unique<VinculoTextoLargo>(control, alAlcance_, *vista);
        }
        case Clase::progreso:
            return std::make_unique<VinculoProgreso>(control, alAlcance_, *new QProgressBar(padre));
        case Clase::linea:
            return std::make_unique<VinculoAdorno>(control, alAlcance_, *new LineaFina(padre));
        default: {
            auto* rotulo = new QLabel(padre);
            rotulo->setTextFormat(Qt::PlainText);
            return std::make_unique<VinculoRotulo>(control, alAlcance_, *rotulo);
        }
    }
}

}  // namespace telvane
