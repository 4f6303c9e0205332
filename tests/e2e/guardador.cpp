// Saves one text the way every file is saved, or one value of the regional store: a program to be
// interrupted.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "cli/archivo_parcial.h"
#include "link/protocolo.h"
#include "platform/guardado.h"
#include "regional/almacen_usuario.h"
#include "regional/module1.h"

constexpr std::size_t kBloques = 4;

int main(int argc, char** argv) {
    using namespace telvane;
    try {
        const std::string que = argc == 4 ? argv[1] : "";
        if (que == "archivo") {
            guardarAtomico(argv[2], std::string_view(argv[3]));
        } else if (que == "regional") {
            AlmacenUsuario(argv[2]).RegWrite(std::string(kClaveRegional) + "sDecimal", argv[3]);
        } else if (que == "parcial") {
            ArchivoParcial parcial(argv[2]);
            const std::vector<std::uint8_t> bloque(kBytesBloque, static_cast<std::uint8_t>(*argv[3]));
            for (std::size_t numero = 0; numero < kBloques; ++numero) parcial.escribir(numero, bloque);
            parcial.terminar();
        } else {
            return 2;
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
