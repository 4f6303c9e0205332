// What every fuzz target uses: it takes any bytes, and anything but a return is a finding.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos);

namespace telvane {

// A property of the target's own. Ends the program where it does not hold, so that the input is kept.
inline void exigirQue(bool vale) {
    if (!vale) std::abort();
}

// Takes bytes off the front; zeros once they are used up.
class Entrada {
   public:
    Entrada(const std::uint8_t* datos, std::size_t cuantos) : resto_(datos, cuantos) {}

    std::uint8_t byte() {
        if (resto_.empty()) return 0;
        const auto primero = resto_.front();
        resto_ = resto_.subspan(1);
        return primero;
    }
    std::span<const std::uint8_t> bytes(std::size_t cuantos) {
        const auto toma = resto_.first(std::min(cuantos, resto_.size()));
        resto_ = resto_.subspan(toma.size());
        return toma;
    }
    std::string texto(std::size_t cuantos = SIZE_MAX) {
        const auto toma = bytes(cuantos);
        return {toma.begin(), toma.end()};
    }
    // Up to the next line end, which is taken as well.
    std::string linea() {
        std::string texto;
        while (!resto_.empty()) {
            const auto uno = byte();
            if (uno == '\n') break;
            texto += static_cast<char>(uno);
        }
        return texto;
    }
    bool queda() const { return !resto_.empty(); }
    std::span<const std::uint8_t> resto() const { return resto_; }

   private:
    std::span<const std::uint8_t> resto_;
};

}  // namespace telvane
