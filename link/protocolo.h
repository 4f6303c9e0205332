// The logger's line protocol in constants; both sides of every exchange use these.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace telvane {

// Single bytes on the line.
inline constexpr std::uint8_t kSonda = 0xBE;           // PC: probe, wake-up, request for one live frame
inline constexpr std::uint8_t kApertura = 0x55;        // PC: opens an exchange; acknowledges a block
inline constexpr std::uint8_t kSaludo = 0xAA;          // both: download handshake
inline constexpr std::uint8_t kLeerConfig = 0x60;      // PC: configuration read
inline constexpr std::uint8_t kEscribirConfig = 0x96;  // PC: configuration write
inline constexpr std::uint8_t kEscribirSerie = 0x64;   // PC: serial number write

// Lengths in bytes.
inline constexpr std::size_t kBytesMarco = 31;           // live frame
inline constexpr std::size_t kBytesConfig = 111;         // configuration record as read, clock included
inline constexpr std::size_t kBytesMensajeConfig = 107;  // configuration message as written
inline constexpr std::size_t kBytesBloque = 64;
inline constexpr std::size_t kBloquesMemoria = 4096;
inline constexpr std::size_t kBytesMemoria = kBytesBloque * kBloquesMemoria;

// An answer to the probe counts as the logger's from this many bytes on.
inline constexpr int kUmbralSonda = 21;

// Line: "19200,n,8,1", no handshake; one byte is ten bits.
inline constexpr int kBaudios = 19200;

// Waits.
inline constexpr std::chrono::seconds kDespertar{2};  // after the wake-up byte, without yielding
inline constexpr double kEsperaRespuesta = 1.0;       // seconds for the first byte of an exchange

}  // namespace telvane
