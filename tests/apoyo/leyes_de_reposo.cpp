#include "tests/apoyo/leyes_de_reposo.h"

#include <array>
#include <string_view>
#include <utility>

namespace telvane {

namespace {

constexpr int kCamposEdicion = 7;
constexpr int kIntervalos = 6;
constexpr std::string_view kAlEmpezar = "Reconectar con Registrador ?";
constexpr std::string_view kOfrece = " Conectar con Registrador ? ";
constexpr std::string_view kConectado = " Conexion en COM ";
constexpr std::string_view kEnviandoSerie = "comienzo transmision";

bool editando(const Vista& v) {
    return v.editables == kCamposEdicion;
}
bool esRotuloDeSerie(std::string_view texto) {
    return texto == "Nro de Serie" || texto == kEnviandoSerie || texto.starts_with("Nº Enviado  ");
}

using Ley = std::pair<bool, const char*>;

template <class Leyes>
std::string primeraRota(const Leyes& leyes) {
    for (const auto& [vale, cual] : leyes) {
        if (!vale) return cual;
    }
    return "";
}

}  // namespace

void LeyesDeReposo::mirar(const Vista& v) {
    cambiarVisto_ |= v.cambiar;
    unaSolaVista_ |= v.editables == 0 && v.opciones <= 1;
    respondido_ |= !v.rotuloConectar.empty() && v.rotuloConectar != kAlEmpezar;
    cerradaAlEditar_ = !v.leer && (editando(v) || cerradaAlEditar_);
    reconectable_ = v.conectar || (v.parar && (reconectable_ || v.rotuloConectar == kOfrece));
    editaEnLinea_ = editando(v) && (v.parar || paraba_ || editaEnLinea_);
    paraba_ = v.parar;
    if (v.procesado) {
        exportarApagado_ = false;
    } else if (!v.delante && !v.progreso && !v.exportar) {
        exportarApagado_ = true;
    }
}

std::string LeyesDeReposo::rota(const Vista& v) const {
    const bool conocido = v.rotuloConectar.starts_with(kConectado) || v.rotuloConectar == kOfrece ||
                          (v.rotuloConectar == kAlEmpezar && !respondido_);
    return primeraRota(std::array<Ley, 10>{{
        {v.salir, "\"Salir\" is always there"},
        {v.parar == v.lecturas, "readings are on show in live mode only"},
        {v.editables == 0 || editando(v), "the seven fields open and close together"},
        {v.ajustar == editando(v), "the PC's clock is offered in edit mode only"},
        {v.quienAjusta == v.ajustar, "the box of the PC's clock has its label"},
        {!v.enviar || (editando(v) && v.opciones == kIntervalos), "only what can be edited can be sent"},
        // Live mode that stands still may be left from within edit mode.
        {!v.enviar || (!v.cambiar && !v.leer) || editaEnLinea_,
         "what can be sent can neither be read nor edited as well"},
        {editando(v) || v.opciones <= 1 || (v.opciones == kIntervalos && !unaSolaVista_),
         "outside edit mode one interval is on show"},
        {v.serie || v.rotuloSerie == kEnviandoSerie, "the number's field is closed while it is sent only"},
        {conocido && esRotuloDeSerie(v.rotuloSerie), "the captions are the known ones"},
    }});
}

std::string LeyesDeReposo::rotaEnReposo(const Vista& v) const {
    const bool quieta = !v.progreso && !v.parar;
    const bool algo = v.leer || v.cambiar || v.enviar || v.descargar || v.exportar || v.abrir;
    return primeraRota(std::array<Ley, 6>{{
        {!v.progreso || !(algo || v.enLinea || v.conectar),
         "behind the progress dialog nothing can be pressed"},
        {!v.parar || reconectable_ || !algo, "in live mode only \"PARAR\" can be pressed"},
        {!quieta || (v.descargar && v.abrir && v.enLinea), "download, base file and live data are there"},
        // A read that leaves edit mode, and stands still, gives it back to nobody.
        {!quieta || v.leer || cerradaAlEditar_, "the configuration can be read, or it was being edited"},
        {!quieta || v.cambiar || v.enviar || !cambiarVisto_, "the configuration can be edited, or sent"},
        {!v.exportar || !exportarApagado_, "the export comes back with a base file only"},
    }});
}

}  // namespace telvane
