// Google Benchmark with the ratios that matter printed after its table.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace telvane::bench {

struct Programa {
    std::string nombre;
    std::function<void()> corrida;
};

// Runs the first program against the references: Google Benchmark's table of each, then the ratio of the
// first one's median time to each reference's. For the ratios the programs take turns, one run each, so that
// what else the machine does falls on all of them alike. The process's exit status.
int comparar(int argc, char** argv, const Programa& medido, const std::vector<Programa>& referencias);

}  // namespace telvane::bench
