#include "ui/forma_coef.h"

namespace telvane {

namespace {

constexpr std::array<std::string_view, FormaCoef::kFilas> kSensores = {
    "humedad", "Temperatura", "P. Atm", "Rad.", "Ane.", "Pluvio.", "humedad", "humedad"};
constexpr std::array<std::string_view, FormaCoef::kFilas> kAuxiliares = {"aux00", "aux10", "aux01", "aux11",
                                                                         "aux02", "aux12", "aux03", "aux13"};

}  // namespace

FormaCoef::FormaCoef() : Formulario("coef", "coeficientes") {
    for (const auto rotulo : kSensores) {
        Label4.push_back(
            std::make_unique<Control>(*this, "Label4", Clase::rotulo, Inicial{.caption = rotulo}));
    }
    for (const auto rotulo : kAuxiliares) {
        Label3.push_back(
            std::make_unique<Control>(*this, "Label3", Clase::rotulo, Inicial{.caption = rotulo}));
    }
    // Each field starts with its own name as its text; the names outlive the controls that refer to them.
    nombres_.reserve(kCampos);
    for (std::size_t i = 1; i <= kCampos; ++i) {
        const auto& nombre = nombres_.emplace_back("Text" + std::to_string(i));
        Text.push_back(std::make_unique<Control>(*this, nombre, Clase::texto,
                                                 Inicial{.nombreAccesible = nombre, .text = nombre}));
    }
}

}  // namespace telvane
