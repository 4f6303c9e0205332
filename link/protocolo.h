// The logger's line protocol in constants; both sides of every exchange use these.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace telvane {

// Single bytes on the line.
inline constexpr std::uint8_t kSonda = 0xBE;           // PC: probe, wake-up, request for one live frame
inline constexpr std::uint8_t kApertura = 0x55;        // PC: opens an exchange; acknowledges a block
inline constexpr std::uint8_t kSaludo = 0xAA;          // both: download handshake
inline constexpr std::uint8_t kLeerConfig = 0x60;      // PC: configuration read
inline constexpr std::uint8_t kEscribirConfig = 0x96;  // PC: configuration write
inline constexpr std::uint8_t kEscribirSerie = 0x64;   // PC: serial number write

// Lengths in bytes.
inline constexpr std::size_t kBytesMarco = 31;                 // live frame
inline constexpr std::size_t kBytesSerie = 4;                  // serial number, packed decimal
inline constexpr std::size_t kDigitosSerie = 2 * kBytesSerie;  // as it is shown and typed
inline constexpr std::size_t kBytesConfig = 111;               // configuration record as read, clock included
// As written: a configuration leaves the serial number out, the last byte of a serial number goes out twice.
inline constexpr std::size_t kBytesMensajeConfig = kBytesConfig - kBytesSerie;
inline constexpr std::size_t kBytesMensajeSerie = kBytesSerie + 1;
inline constexpr std::size_t kBytesBloque = 64;
inline constexpr std::size_t kBloquesMemoria = 4096;
inline constexpr std::size_t kBytesMemoria = kBytesBloque * kBloquesMemoria;

// What the logger sends in an exchange: an answer to the opening byte, one to the byte that selects the
// exchange, then what it was asked for; in a write, an answer to each byte of the message but the last.
inline constexpr std::size_t kAcuses = 2;
inline constexpr std::size_t kRespuestasLectura = kAcuses + kBytesConfig;
inline constexpr std::size_t kRespuestasEscritura = kAcuses + kBytesMensajeConfig - 1;
inline constexpr std::size_t kRespuestasSerie = kAcuses + kBytesMensajeSerie - 1;
inline constexpr std::size_t kRespuestasDescarga = kAcuses + kBytesMemoria;

// Offsets in bytes within the live frame, from 0; two-byte quantities are big-endian and signed. Bytes 0 to 2
// and 18 to 30 are not used.
namespace marco {
inline constexpr std::size_t kHumedad = 3;
inline constexpr std::size_t kTemperatura = 5;
inline constexpr std::size_t kDirViento = 7;  // one byte, 2.25 degrees a step
inline constexpr std::size_t kVelViento = 8;
inline constexpr std::size_t kRadSolar = 10;
inline constexpr std::size_t kPresion = 12;  // a high byte above 3 makes both 0
inline constexpr std::size_t kLluvia = 14;
inline constexpr std::size_t kEvaporacion = 16;
}  // namespace marco

// Bytes that must wait before an exchange's next step is taken.
inline constexpr int kUmbralByte = 1;
inline constexpr int kUmbralBloque = static_cast<int>(kBytesBloque);
inline constexpr int kUmbralMarco = static_cast<int>(kBytesMarco);
inline constexpr int kUmbralSonda = 21;  // an answer to the probe counts as the logger's from here on

// No handshake, DTR and RTS low.
inline constexpr std::string_view kAjustesLinea = "19200,n,8,1";
inline constexpr int kBaudios = [] {
    int baudios = 0;
    for (const char cifra : kAjustesLinea.substr(0, kAjustesLinea.find(',')))
        baudios = baudios * 10 + (cifra - '0');
    return baudios;
}();
inline constexpr int kBitsPorByte = 10;  // a start bit, eight data bits, a stop bit

// Port numbers run from 1 to this one: those that a channel accepts, a map names and a search tries.
inline constexpr int kUltimoPuerto = 12;

// Waits.
inline constexpr std::chrono::seconds kDespertar{2};          // after the wake-up byte, without yielding
inline constexpr std::chrono::seconds kEsperaRespuesta{1};    // for the first byte of an exchange
inline constexpr std::chrono::seconds kSilencio{5};           // in an exchange, before somebody is told
inline constexpr std::chrono::seconds kEsperaMarco{2};        // for a live frame that was asked for
inline constexpr std::chrono::milliseconds kRestoMarco{100};  // behind one, for what is left of it
// Of a quiet line: whatever was late, as late as a frame may be, has come by then.
inline constexpr auto kMarcoTardio = kEsperaMarco + kRestoMarco;
inline constexpr std::chrono::seconds kEsperaSuceso{1};        // of a search: for a first receive event...
inline constexpr std::chrono::seconds kEsperaSonda{2};         // ...and for the whole answer
inline constexpr std::chrono::seconds kEsperaSegundaSonda{1};  // for the answer to a second probe

}  // namespace telvane
