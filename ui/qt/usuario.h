// What a user did to a control, as the widgets saw it. Whoever owns the windows passes it on to the
// operations.
#pragma once

#include <functional>
#include <string>

#include "ui/control.h"

namespace telvane {

// Every callback is set. Only the user's own doing is reported, never what a program wrote into a widget.
struct Usuario {
    std::function<void(Control&)> pulsar;
    // texto: UTF-8, what stands in the field now.
    std::function<void(Control&, const std::string& texto)> cambiar;
    std::function<void(Control&)> salirDe;
    // tecla: character code (13 Enter, 8 Backspace). 0 back: the field swallows the key.
    std::function<int(Control&, int tecla)> teclear;
};

}  // namespace telvane
