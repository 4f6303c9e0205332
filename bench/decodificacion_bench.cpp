// A full memory image into CSV text, against the tightest decoder and against copying the same bytes.
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/decodificador_directo.h"
#include "bench/imagen.h"
#include "bench/razones.h"
#include "data/bloques_texto.h"
#include "data/linea_muestra.h"

namespace telvane::bench {

namespace {

// Nothing is allocated while the clock runs; each side has its buffers warm.
struct Banco {
    Memoria memoria = imagenLlena();
    Decodificador decodificador;
    BloquesTexto bloques;
    std::vector<char> destino = std::vector<char>(2 * kUltimoBloque * kLineaMaxima);

    void decodificar() {
        bloques.decodificar(memoria, decodificador, kUltimoBloque);
        benchmark::ClobberMemory();
    }
    std::size_t directo() {
        const auto largo = decodificarDirecto(memoria.bloque(0).data(), kUltimoBloque, destino.data());
        benchmark::ClobberMemory();
        return largo;
    }
    void copiar() {
        const auto imagen = memoria.imagen();
        std::memcpy(destino.data(), imagen.data(), imagen.size());
        benchmark::DoNotOptimize(destino.data());
        benchmark::ClobberMemory();
    }
    bool iguales() {
        decodificar();
        return bloques.unidos() == std::string_view(destino.data(), directo());
    }
};

}  // namespace

}  // namespace telvane::bench

int main(int argc, char** argv) {
    using namespace telvane::bench;
    Banco banco;
    if (!banco.iguales()) {
        std::fputs("the two decoders disagree\n", stderr);
        return 1;
    }
    return comparar(argc, argv, {"decodificar", [&] { banco.decodificar(); }},
                    {{"directo", [&] { banco.directo(); }}, {"copiar", [&] { banco.copiar(); }}});
}
