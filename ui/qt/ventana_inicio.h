// The main window: the form `inicio` laid out as a person works.
#pragma once

#include <functional>
#include <vector>

#include <QWidget>

#include "ui/forma_inicio.h"
#include "ui/qt/vinculos.h"

class QGridLayout;
class QLayout;
class QTabWidget;

namespace telvane {

class CuerpoDeslizable;
class FranjaDiagnostico;

// On the screen while the form is shown. Closing it by its frame is a click on "Salir".
class VentanaInicio final : public QWidget {
   public:
    VentanaInicio(FormaInicio& forma, Usuario usuario);

    // Whether it has stood painted on the screen.
    bool enPantalla() const { return pintada_; }
    // Runs the action once the window stands painted on the screen; at once when the form is not shown.
    void trasPrimerCuadro(std::function<void()> accion);
    // nullptr for a control without a surface.
    QWidget* widget(const Control& control) const { return vinculos_.widget(control); }

   protected:
    bool event(QEvent* suceso) override;
    bool focusNextPrevChild(bool siguiente) override;
    void changeEvent(QEvent* suceso) override;
    bool eventFilter(QObject* objeto, QEvent* suceso) override;
    void closeEvent(QCloseEvent* suceso) override;

   private:
    QWidget* crear(Control& control, QWidget* padre = nullptr);
    QWidget* encabezado(Control& control, Control& linea);
    QWidget* cabecera();
    QWidget* titulos();
    QWidget* cuerpo();
    QLayout* columnaConfiguracion();
    QWidget* filaDeBotones(Control& izquierdo, Control& derecho);
    QGridLayout* nuevaRejilla();
    QGridLayout* camposConfiguracion();
    void filaDeCampo(QGridLayout& rejilla, int fila, Control& rotulo, QWidget* campo);
    QWidget* opcionesDeIntervalo();
    QWidget* rotuloPropio(const Control& campo);
    QWidget* camposDeReloj();
    QWidget* casillaDeReloj();
    QLayout* columnaDatos();
    QLayout* filaDeBoton(Control& control);
    void limitarBotones() const;
    QWidget* hojasDeTexto();
    QLayout* pie();
    void observar();
    void mostrarConexion() const;
    void traerLecturas();
    void sincronizar();
    void primerCuadro();

    FormaInicio& forma_;
    Vinculos vinculos_;
    Formulario::Observacion observacion_;
    CuerpoDeslizable* cuerpo_ = nullptr;
    QTabWidget* hojas_ = nullptr;
    FranjaDiagnostico* franja_ = nullptr;
    bool pintada_ = false;
    std::vector<std::function<void()>> trasPintar_;
};

}  // namespace telvane
