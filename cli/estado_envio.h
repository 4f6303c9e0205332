// Where a write to the logger stands when it did not end well.
#pragma once

#include <cstddef>
#include <string>

namespace telvane {

// How often what was written is read back before what differs is believed: it may be the line's fault.
inline constexpr int kLecturasDeVuelta = 3;

// enviados: bytes of total that were handed to the line. quePasa: what stays as it was until the last of them
// ("la configuración y la memoria"). comprobar: what to do about a write that was sent and not confirmed.
// repetir: what to do about one that was not ("repita la orden").
std::string estadoDelEnvio(std::size_t enviados, std::size_t total, const std::string& quePasa,
                           const std::string& comprobar, const std::string& repetir);

}  // namespace telvane
