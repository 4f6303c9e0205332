// The main window over the whole program without a display: simulated loggers, the test's clock and dialogs.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <QApplication>
#include <QLayout>
#include <QScrollArea>
#include <QTest>

#include "tests/app/banco.h"
#include "ui/qt/ventana_inicio.h"

namespace telvane {

// What a window reports goes into a list; a text is stored as the operations store it.
struct UsuarioPrueba {
    Usuario usuario() {
        return {.pulsar = [this](Control& control) { pulsados.emplace_back(control.nombre()); },
                .cambiar =
                    [this](Control& control, const std::string& texto) {
                        cambiados.push_back(std::string(control.nombre()) + "=" + texto);
                        control.text = texto;
                    },
                .salirDe = [this](Control& control) { salidos.emplace_back(control.nombre()); },
                .teclear =
                    [this](Control& control, int tecla) {
                        if (control.alTeclear) control.alTeclear(tecla);
                        return tecla;
                    }};
    }

    std::vector<std::string> pulsados;
    std::vector<std::string> cambiados;
    std::vector<std::string> salidos;
};

// The window of a form that nothing operates.
class VentanaSuelta : public ::testing::Test {
   protected:
    VentanaSuelta() {
        forma.mostrar();
        QApplication::setActiveWindow(&ventana);
        QApplication::processEvents();
    }

    template <class Widget>
    Widget& de(const Control& control) const {
        auto* widget = dynamic_cast<Widget*>(ventana.widget(control));
        if (widget == nullptr) throw std::logic_error("no es ese widget: " + std::string(control.nombre()));
        return *widget;
    }

    // The layouts ask each other for room by events that come later; this is where all of them will have
    // ended.
    void disponer() const {
        QApplication::processEvents();
        ventana.findChild<QScrollArea*>()->widget()->layout()->activate();
    }

    FormaInicio forma;
    UsuarioPrueba hecho;
    VentanaInicio ventana{forma, hecho.usuario()};
};

// The window of the program as it starts, up to the first question, which stays open.
class VentanaAlArrancar : public Banco {
   protected:
    VentanaAlArrancar() {
        dialogos.dejarAbierto(kPregunta);
        inicio.cargar();
        QApplication::processEvents();
    }

    VentanaInicio ventana{
        forma,
        {.pulsar = [this](Control& control) { inicio.pulsar(control); },
         .cambiar = [this](Control& control, const std::string& texto) { inicio.cambiar(control, texto); },
         .salirDe = [this](Control& control) { inicio.salirDe(control); },
         .teclear = [this](Control& control, int tecla) { return inicio.teclear(control, tecla); }}};
};

inline std::string texto(const QString& qt) {
    return qt.toStdString();
}

}  // namespace telvane
