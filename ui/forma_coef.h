// The sensor coefficients form: sixteen labelled rows of two fields. Nothing reads them.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "ui/formulario.h"

namespace telvane {

struct FormaCoef final : Formulario {
    FormaCoef();

    static constexpr std::size_t kFilas = 8;    // per block: sensors, then auxiliary inputs
    static constexpr std::size_t kCampos = 32;  // Text1 to Text32, two a row

    Control Label1{*this, "Label1", Clase::rotulo, {.caption = "Sensores Veltra"}};
    Control Label2{*this, "Label2", Clase::rotulo, {.caption = "Entradas Auxiliares"}};
    Control Label6{*this, "Label6", Clase::rotulo, {.caption = "* Vo +"}};
    Control Label5{*this, "Label5", Clase::rotulo, {}};
    Control Line1{*this, "Line1", Clase::linea, {}};
    Control Command1{*this, "Command1", Clase::boton, {.caption = "Salir"}};
    Control Command2{*this, "Command2", Clase::boton, {.caption = "Command2"}};
    Control Command3{*this, "Command3", Clase::boton, {.caption = "Command3"}};

    // Rows of Label4 (sensors) and Label3 (auxiliary inputs), and the fields in the order of the rows.
    std::vector<std::unique_ptr<Control>> Label4;
    std::vector<std::unique_ptr<Control>> Label3;
    std::vector<std::unique_ptr<Control>> Text;

   private:
    std::vector<std::string> nombres_;
};

}  // namespace telvane
