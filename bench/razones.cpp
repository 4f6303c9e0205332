#include "bench/razones.h"

#include <chrono>
#include <cstdio>

#include <benchmark/benchmark.h>

#include "bench/mediana.h"

namespace telvane::bench {

namespace {

using Tiempos = std::vector<double>;

double segundosDe(const Programa& programa) {
    const auto inicio = std::chrono::steady_clock::now();
    programa.corrida();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count();
}

void registrar(const Programa& programa) {
    const auto corrida = [&programa](benchmark::State& estado) {
        for (auto _ : estado) programa.corrida();
    };
    benchmark::RegisterBenchmark(programa.nombre.c_str(), corrida)->Unit(benchmark::kMicrosecond);
}

void imprimirRazones(const Programa& medido, const std::vector<Programa>& referencias) {
    constexpr int kRondas = 1001;
    Tiempos deMedido;
    std::vector<Tiempos> deReferencias(referencias.size());
    for (int ronda = 0; ronda < kRondas; ++ronda) {
        deMedido.push_back(segundosDe(medido));
        for (std::size_t i = 0; i < referencias.size(); ++i) {
            deReferencias[i].push_back(segundosDe(referencias[i]));
        }
    }
    for (std::size_t i = 0; i < referencias.size(); ++i) {
        std::printf("%s / %s = %.2f\n", medido.nombre.c_str(), referencias[i].nombre.c_str(),
                    mediana(deMedido) / mediana(deReferencias[i]));
    }
}

}  // namespace

int comparar(int argc, char** argv, const Programa& medido, const std::vector<Programa>& referencias) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    registrar(medido);
    for (const auto& referencia : referencias) registrar(referencia);
    benchmark::RunSpecifiedBenchmarks();
    imprimirRazones(medido, referencias);
    return 0;
}

}  // namespace telvane::bench
