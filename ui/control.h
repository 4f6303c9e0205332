// A control of a form as data: what it shows and whether it can be used. The window renders it; tests and
// operations read and write it. No toolkit here.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace telvane {

class Control;
class Formulario;

enum class Clase : std::uint8_t {
    boton,
    opcion,
    casilla,
    texto,       // one line
    textoLargo,  // several lines, read only
    mascara,
    rotulo,
    linea,
    progreso,
    imagen,
    temporizador,
    dialogo,
    canal
};

// Which property of a control changed.
enum class Que : std::uint8_t {
    caption,
    text,
    hint,
    enabled,
    visible,
    locked,
    value,
    maximum,
    maxLength,
    mask,
    interval
};

// A value that tells its control's form when it changes to something else.
template <class T, Que cual>
class Propiedad {
   public:
    Propiedad(Control& control, T inicial) : control_(control), valor_(std::move(inicial)) {}
    Propiedad(const Propiedad&) = delete;
    Propiedad& operator=(const Propiedad&) = delete;

    Propiedad& operator=(T nuevo);
    operator const T&() const { return valor_; }
    const T& operator()() const { return valor_; }

   private:
    Control& control_;
    T valor_;
};

// State at load; what is not named keeps the default. Its texts are not copied: they stay for as long
// as the control is used.
struct Inicial {
    std::string_view caption = {};
    std::string_view hint = {};
    // Name for assistive technology where the caption does not serve; on the screen too, where nothing else
    // labels the control.
    std::string_view nombreAccesible = {};
    bool enabled = true;
    bool visible = true;
    bool locked = false;
    int maxLength = 0;  // characters; 0: no limit
    std::string_view mask = {};
    int interval = 0;  // milliseconds
    std::string_view text = {};
};

class Control {
   public:
    Control(Formulario& formulario, std::string_view nombre, Clase clase, const Inicial& inicial);
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    // Designer name, class and accessible name never change.
    std::string_view nombre() const { return nombre_; }
    Clase clase() const { return clase_; }
    std::string_view nombreAccesible() const { return nombreAccesible_; }
    Formulario& formulario() const { return formulario_; }

    // Back to the state at load (an unloaded form starts again from it).
    void restablecer();

   private:
    Formulario& formulario_;
    std::string_view nombre_;
    Clase clase_;
    std::string_view nombreAccesible_;
    Inicial inicial_;

   public:
    // UTF-8 plain text; it may hold anything that the logger sent.
    Propiedad<std::string, Que::caption> caption;
    Propiedad<std::string, Que::text> text;
    Propiedad<std::string, Que::hint> hint;
    Propiedad<bool, Que::enabled> enabled;
    Propiedad<bool, Que::visible> visible;
    Propiedad<bool, Que::locked> locked;
    Propiedad<int, Que::value> value;  // progress; 1 or 0 for an option or a check box
    Propiedad<int, Que::maximum> maximum;
    Propiedad<int, Que::maxLength> maxLength;
    Propiedad<std::string, Que::mask> mask;
    Propiedad<int, Que::interval> interval;  // milliseconds

    // What a user (or a program) does with it; empty where nothing is to happen.
    std::function<void()> alPulsar;             // click, or a timer's tick
    std::function<void()> alCambiar;            // text changed by the user
    std::function<void()> alSalir;              // focus leaves the field
    std::function<void(int& tecla)> alTeclear;  // character code; set to 0 to swallow the key
};

}  // namespace telvane
