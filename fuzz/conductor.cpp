// Runs a target without a fuzzer: its kept inputs, then as many changed ones as are asked for, always the
// same.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include "fuzz/azar.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Azar = std::mt19937;

constexpr std::size_t kMayor = 4096;

std::size_t menorQue(Azar& azar, std::size_t limite) {
    return limite == 0 ? 0 : azar() % limite;
}

// One small change.
void cambiar(Bytes& bytes, Azar& azar, const Bytes& otros) {
    const auto lugar = static_cast<std::ptrdiff_t>(menorQue(azar, bytes.size() + 1));
    const auto aqui = bytes.begin() + lugar;
    switch (azar() % 6) {
        case 0:
            bytes.insert(aqui, static_cast<std::uint8_t>(azar()));
            break;
        case 1:
            if (aqui != bytes.end()) bytes.erase(aqui);
            break;
        case 2:
            if (aqui != bytes.end()) *aqui = static_cast<std::uint8_t>(*aqui ^ (1u << (azar() % 8)));
            break;
        case 3:
            if (aqui != bytes.end()) *aqui = static_cast<std::uint8_t>(azar());
            break;
        case 4: {
            const auto cuantos = menorQue(azar, otros.size() + 1);
            bytes.insert(aqui, otros.begin(), otros.begin() + static_cast<std::ptrdiff_t>(cuantos));
            break;
        }
        default:
            bytes.resize(static_cast<std::size_t>(lugar));
    }
    bytes.resize(std::min(bytes.size(), kMayor));
}

std::vector<Bytes> leerCorpus(const std::filesystem::path& carpeta) {
    std::vector<std::filesystem::path> rutas;
    for (const auto& una : std::filesystem::directory_iterator(carpeta)) rutas.push_back(una.path());
    std::sort(rutas.begin(), rutas.end());
    std::vector<Bytes> corpus;
    for (const auto& ruta : rutas) {
        std::ifstream archivo(ruta, std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(archivo), std::istreambuf_iterator<char>());
    }
    return corpus;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const auto corpus = leerCorpus(argv[1]);
    const auto cuantas = std::strtoul(argv[2], nullptr, 10);
    if (corpus.empty()) return 2;
    for (const auto& bytes : corpus) LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    Azar azar(1);
    for (unsigned long i = 0; i < cuantas; ++i) {
        auto bytes = corpus[menorQue(azar, corpus.size())];
        const auto& otros = corpus[menorQue(azar, corpus.size())];
        for (auto cambios = 1 + azar() % 8; cambios > 0; --cambios) cambiar(bytes, azar, otros);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("%zu entradas guardadas, %lu cambiadas\n", corpus.size(), cuantas);
    return 0;
}
