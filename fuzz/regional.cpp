// The user's regional store, whatever stands in the file.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "fuzz/azar.h"
#include "regional/almacen_usuario.h"
#include "regional/module1.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    // In memory where the system has such a folder.
    static const auto ruta = (std::filesystem::exists("/dev/shm") ? std::filesystem::path("/dev/shm")
                                                                  : std::filesystem::temp_directory_path()) /
                             ("telvane-azar-" + std::to_string(::getpid()));
    std::ofstream(ruta, std::ios::binary)
        .write(reinterpret_cast<const char*>(datos), static_cast<std::streamsize>(cuantos));
    AlmacenUsuario almacen(ruta);
    for (const auto& valor : kValoresRegionales) {
        const auto nombre = std::string(kClaveRegional) + std::string(valor.nombre);
        try {
            static_cast<void>(almacen.RegRead(nombre));
        } catch (const ErrorRegistro&) {
        }
    }
    std::filesystem::remove(ruta);
    return 0;
}
