// Saves one text the way every file is saved, or one value of the regional store: a program to be
// interrupted.
#include <algorithm>
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
            ArchivoParcial parcial(revisarDestino(argv[2]), [](auto, auto antes, auto ahora) {
                return std::ranges::equal(antes, ahora);
            });
            std::vector<std::uint8_t> imagen;
            for (std::size_t numero = 0; numero < kBloques; ++numero) {
                imagen.insert(imagen.end(), kBytesBloque, static_cast<std::uint8_t>(*argv[3]));
                parcial.recibir(imagen);
            }
            parcial.terminar(imagen);
        } else {
            return 2;
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
