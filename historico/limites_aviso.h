// When something about a station is worth a word, and why then.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace telvane::limites_aviso {

using namespace std::chrono_literals;

// Images of a station that are looked at: a week of nights shows how often it is visited.
inline constexpr std::size_t kUltimas = 8;
// What is closer together is one visit, read twice.
inline constexpr auto kMismaVisita = 1h;
// With a single image: what the timer does.
inline constexpr auto kRitmoSupuesto = 24h;
// Silent: later than its rhythm by a quarter of it, because of two visits a month apart none falls on the
// day; and by six hours at least, because the night download goes on trying until the morning.
inline constexpr int kPartesDeRetraso = 4;
inline constexpr auto kRetrasoMinimo = 6h;
// A clock that is wrong by less puts no sample of the shortest interval in the place of another one.
inline constexpr auto kDesfase = 60s;
// Between two downloads a clock may move by as much, and by what a cheap crystal loses besides (100 parts in
// a million are 8.6 s a day).
inline constexpr auto kSalto = 60s;
inline constexpr auto kDerivaDiaria = 10s;
// Local time is ahead of UTC by 14 hours at most, and somebody may have been half a day late with the image:
// a clock beyond that is no time of its download. (The data bases sort by it: see Almacen::ultimas.)
inline constexpr auto kRelojFuturo = 26h;
// As far as the clocks of two machines that fill one archive may be apart.
inline constexpr auto kIncorporadaFutura = 1h;
// A memory must do for so many downloads: one may fail.
inline constexpr int kDescargasPorDelante = 2;
// Places for samples, less the two that some loggers keep for their header.
inline constexpr std::int64_t kRanurasDeMuestras = 8178;

}  // namespace telvane::limites_aviso
