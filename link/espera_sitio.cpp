#include "link/espera_sitio.h"

#include <poll.h>

namespace telvane {

bool esperarSitio(int descriptor, std::chrono::steady_clock::time_point final) {
    pollfd estado{descriptor, POLLOUT, 0};
    while (true) {
        const auto falta =
            std::chrono::ceil<std::chrono::milliseconds>(final - std::chrono::steady_clock::now()).count();
        if (falta <= 0) return false;
        // Below 0: a signal came.
        const int listos = ::poll(&estado, 1, static_cast<int>(falta));
        if (listos >= 0) return listos > 0;
    }
}

}  // namespace telvane
