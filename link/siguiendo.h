// The one place where a step on a port may fail without stopping what follows.
#pragma once

#include <utility>

#include "link/puerto_serie.h"

namespace telvane {

// Runs a step on a port; a refusal is passed over and the caller goes on with its next step. The absent
// answer that follows is what the user is told. True: the step was done.
template <class Paso>
bool siguiendo(Paso&& paso) {
    try {
        std::forward<Paso>(paso)();
        return true;
    } catch (const ErrorPuerto&) {
        return false;
    }
}

}  // namespace telvane
