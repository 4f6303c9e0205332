// Waiting for a descriptor that takes no more at the moment.
#pragma once

#include <chrono>

namespace telvane {

// Until it can be written, or final; false: the time was over first.
bool esperarSitio(int descriptor, std::chrono::steady_clock::time_point final);

}  // namespace telvane
