// A number of things, as Spanish says it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace telvane {

// "1 muestra", "0 muestras".
inline std::string contados(std::int64_t cuantos, std::string_view uno, std::string_view varios) {
    return std::to_string(cuantos).append(1, ' ').append(cuantos == 1 ? uno : varios);
}

}  // namespace telvane
