#include "loggerconfig/edicion.h"

#include <array>

#include "loggerconfig/datos_config.h"
#include "platform/numero.h"
#include "regional/formatos.h"

namespace telvane {

namespace {

constexpr std::string_view kHoraIncorrecta = "Hora incorrecta (ej. 14:58:45)";
constexpr std::string_view kMascaraHora = "##:##:##";

std::chrono::seconds segundosDe(const FechaHora& momento) {
    return std::chrono::floor<std::chrono::seconds>(momento.deDia);
}

}  // namespace

std::optional<std::chrono::seconds> leerHora(std::string_view texto) {
    constexpr std::array<int, 3> kLimites = {24, 60, 60};
    std::int64_t total = 0;
    for (std::size_t parte = 0; parte < kLimites.size(); ++parte) {
        const auto fin = std::min(texto.find(':'), texto.size());
        const auto cifras = texto.substr(0, fin);
        const bool ultima = parte + 1 == kLimites.size();
        if (cifras.empty() || cifras.size() > 2 || (fin == texto.size()) != ultima) return std::nullopt;
        const auto valor = numeroDe<int>(cifras);
        if (!valor || cifras.front() == '-' || *valor >= kLimites[parte]) return std::nullopt;
        total = total * 60 + *valor;
        texto.remove_prefix(ultima ? fin : fin + 1);
    }
    return std::chrono::seconds(total);
}

void Edicion::alCambiarConfiguracion() {
    auto& forma = enlace_.forma;
    forma.Timer1.enabled = false;
    forma.Check1.visible = true;
    forma.Label3.visible = true;
    for (auto* opcion :
         {&forma.Option1, &forma.Option3, &forma.Option4, &forma.Option2, &forma.Option5, &forma.Option6}) {
        opcion->visible = true;
    }
    for (auto* campo : forma.camposEdicion()) campo->locked = false;
    forma.configuracion.enabled = false;
    forma.Command3.enabled = true;
    forma.Command2.enabled = false;
}

void Edicion::alElegirIntervalo(std::size_t indice) {
    config_.intervaloCodigo = kIntervalos[indice].codigo;
}

void Edicion::alCambiarFecha() {
    config_.fechaConfig = enlace_.forma.fecha1.text();
}

Tarea<> Edicion::alSalirDeHora() {
    if (editando()) co_await validarHora();
}

Tarea<bool> Edicion::validarHora() {
    auto& forma = enlace_.forma;
    const bool valida = leerHora(forma.MaskEdBox2.text()).has_value();
    if (!valida) {
        // Before the message: a tick must not write over what it is about.
        forma.Timer1.enabled = false;
        co_await enlace_.avisar(kHoraIncorrecta);
        forma.MaskEdBox2.text = horaLarga(enlace_.reloj.ahora());
        forma.MaskEdBox2.mask = std::string(kMascaraHora);
    }
    if (const auto hora = leerHora(forma.MaskEdBox2.text())) config_.horaConfig = *hora;
    co_return valida;
}

void Edicion::alTomarRelojPc() {
    auto& forma = enlace_.forma;
    forma.Timer1.enabled = true;
    const auto ahora = enlace_.reloj.ahora();
    forma.fecha1.text = fechaCorta(ahora);
    alCambiarFecha();
    config_.horaConfig = segundosDe(ahora);
    forma.MaskEdBox2.text = horaLarga(config_.horaConfig);
}

void Edicion::alTictac() {
    config_.horaConfig = (config_.horaConfig + std::chrono::seconds(1)) % std::chrono::hours(24);
    enlace_.forma.MaskEdBox2.text = horaLarga(config_.horaConfig);
}

void Edicion::dejar() {
    if (editando()) cerrar();
}

void Edicion::cerrar() {
    auto& forma = enlace_.forma;
    forma.Check1.value = 0;
    forma.Check1.visible = false;
    forma.Label3.visible = false;
    for (auto* campo : forma.camposEdicion()) campo->locked = true;
    forma.Command3.enabled = false;
    // A code that is none of the six leaves none of them.
    const auto opciones = forma.opciones();
    for (std::size_t i = 0; i < opciones.size(); ++i) {
        opciones[i]->visible = kIntervalos[i].codigo == config_.intervaloCodigo;
    }
}

void Edicion::salirDeEdicion() {
    auto& forma = enlace_.forma;
    cerrar();
    forma.Timer1.enabled = true;
    for (auto* boton : {&forma.Command43, &forma.Command13, &forma.configuracion}) boton->enabled = true;
    forma.Command2.enabled = true;
}

}  // namespace telvane
