// What a file is, as far as its bytes tell: a memory image bears no mark.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace telvane {

// For all that anybody can tell a logger's memory, whole or not: nothing of ours takes its place. Zeros alone
// are none.
bool pareceImagen(std::span<const std::uint8_t> bytes);

// What text is appended to: it begins with a line of text, whatever control characters other programs have
// left behind it, or with zeros before that, where it was emptied under a program that went on where it was;
// or it is longer than a memory.
bool pareceDiario(std::span<const std::uint8_t> bytes);

// A download's data sheet, also one that an editor tidied up or saved as UTF-16.
bool pareceFicha(std::span<const std::uint8_t> bytes);

// What is no memory beyond doubt: "un texto". Empty for all that may be one, of whatever length, damaged,
// erased or by a logger whose clock stood still.
std::string_view otraClase(std::span<const std::uint8_t> bytes);
// What is told of it by whoever reads memories, and what to do; empty likewise.
std::string quejaDeOtraClase(std::span<const std::uint8_t> bytes);

}  // namespace telvane
