// Windows-1252, the code page of the logger's texts and of the saved files. Inside the program text is UTF-8.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace telvane {

// One byte is one character. The five bytes without a character there (0x81 0x8D 0x8F 0x90 0x9D) become the
// control characters of the same number, so that every byte survives the round trip.
void agregarUtf8(std::string& texto, std::uint8_t byte);
std::string utf8DeCp1252(std::span<const std::uint8_t> bytes);

// The bytes of a UTF-8 text; a character without a place there, and each malformed byte, becomes "?".
std::string cp1252DeUtf8(std::string_view texto);

// Number of characters of a UTF-8 text; a malformed byte is one.
std::size_t caracteres(std::string_view texto);
// The first so many of them, or the whole text.
std::string_view primerosCaracteres(std::string_view texto, std::size_t cuantos);

}  // namespace telvane
