// A word of a command that somebody is to paste into a shell.
#pragma once

#include <string>
#include <string_view>

namespace telvane {

// In single quotes where a shell would read it otherwise.
inline std::string palabraDeConsola(std::string_view palabra) {
    constexpr std::string_view kSinComillas =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./:@%+,";
    if (!palabra.empty() && palabra.find_first_not_of(kSinComillas) == std::string_view::npos)
        return std::string(palabra);
    std::string citada = "'";
    for (const char c : palabra) citada += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return citada + "'";
}

}  // namespace telvane
