// The splash: one picture, no controls to use.
#pragma once

#include "ui/formulario.h"

namespace telvane {

struct FormaPresenta final : Formulario {
    FormaPresenta() : Formulario("presenta", "Telvane") {}

    Control Image1{*this, "Image1", Clase::imagen, {}};
};

}  // namespace telvane
