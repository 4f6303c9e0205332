#include "platform/correr_proceso.h"

#include <sys/stat.h>
#include <unistd.h>

#include <exception>

#include "platform/flujos.h"

namespace telvane {

// Nobody may have looked yet what a file behind the standard error is: it may be a memory.
int correrProceso(std::string_view programa, const std::function<int()>& trabajo) noexcept {
    try {
        return trabajo();
    } catch (const std::exception& error) {
        struct stat datos {};
        if (::fstat(STDERR_FILENO, &datos) == 0 && !S_ISREG(datos.st_mode))
            decirFinal(STDERR_FILENO, programa, error);
        return 1;
    }
}

}  // namespace telvane
