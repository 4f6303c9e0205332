// The colours of the window on a desktop that prefers dark ones.
#pragma once

#include <QPalette>

namespace telvane {

// Every role of every group is set. Text stands at 7:1 or more against its ground, what is switched off at
// 3:1 or more.
QPalette paletaOscura();

}  // namespace telvane
