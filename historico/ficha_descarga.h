// How an image came from its logger, as it is kept with the image.
#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace telvane {

// Of anything else nobody knows when it was.
inline constexpr std::chrono::sys_seconds kPrimeraDescarga =
    std::chrono::sys_days{std::chrono::year{2000} / 1 / 1};
inline constexpr std::chrono::sys_seconds kUltimaDescarga =
    std::chrono::sys_days{std::chrono::year{2100} / 1 / 1};

struct FichaDescarga {
    std::chrono::sys_seconds descargada{};  // UTC, when its last block had come
    std::int64_t puerto = 0;                // COM number
    std::string dispositivo;                // "/dev/..." or "tcp://HOST:PORT"
    // The logger's clock minus the PC's, both as their walls show it, in seconds; nullopt: the logger's was
    // no date and time. Where the PC keeps daylight saving time and the logger does not, an hour of it is
    // that.
    std::optional<std::int64_t> desfase;
    bool verificada = false;          // read twice, with the same result
    std::int64_t reintentos = 0;      // attempts that broke off
    std::int64_t erroresDeLinea = 0;  // told by the line, over all attempts

    bool tieneMomento() const { return descargada >= kPrimeraDescarga && descargada <= kUltimaDescarga; }

    auto operator<=>(const FichaDescarga&) const =
        default;  // NOLINT(modernize-use-nullptr): what it is made of

    // Of several for one image the youngest is kept, whatever the order in which they came.
    bool ocupaElLugarDe(const FichaDescarga& otra) const { return *this > otra; }
};

}  // namespace telvane
