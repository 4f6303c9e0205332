// Where a serial device server listens: "tcp://HOST:PORT" wherever the path of a device may stand.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace telvane {

struct DireccionTcp {
    // One port has one name: letters are small, and the number has no zeros before it.
    std::string maquina;  // name, IPv4 or IPv6 address, the latter without brackets
    std::string puerto;   // decimal, 1 to 65535

    // "HOST:PORT", an IPv6 address in brackets again.
    std::string texto() const;
    // "tcp://" before it.
    std::string completa() const;
    bool operator==(const DireccionTcp&) const = default;
};

// Whether the text names a server and not a device of this machine; "TCP://" does as well.
bool esDireccionTcp(std::string_view texto);

// nullopt: not "tcp://HOST:PORT" ("tcp://[ADDRESS]:PORT" for IPv6), or a port outside 1 to 65535.
std::optional<DireccionTcp> leerDireccionTcp(std::string_view texto);

}  // namespace telvane
