// The tightest program that turns one memory image into its CSV sample lines: conversion_directa IN.rgt
// OUT.csv
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <vector>

#include "bench/decodificador_directo.h"
#include "data/linea_muestra.h"
#include "data/memoria.h"

int main(int argc, char** argv) {
    using namespace telvane;
    if (argc != 3) return 2;
    // The decoding loops look a little beyond the image.
    constexpr std::size_t kBytes = (static_cast<std::size_t>(kUltimoBloque) + 1) * kBytesBloque;
    std::vector<std::uint8_t> imagen(kBytes);
    const int entrada = ::open(argv[1], O_RDONLY | O_CLOEXEC);
    if (entrada < 0 || ::read(entrada, imagen.data(), kBytesMemoria) < 0) return 1;
    std::vector<char> texto(2 * kUltimoBloque * kLineaMaxima);
    const auto largo = bench::decodificarDirecto(imagen.data(), kUltimoBloque, texto.data());
    const int salida = ::open(argv[2], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return salida >= 0 && ::write(salida, texto.data(), largo) == static_cast<ssize_t>(largo) ? 0 : 1;
}
