// Where a write to the logger stands when it did not end well.
#pragma once

#include <cstddef>
#include <string>

namespace telvane {

// enviados: bytes of total that were handed to the line. quePasa: what stays as it was until the last of them
// ("la configuración y la memoria"). comprobar: what to do about a write that was sent and not confirmed.
std::string estadoDelEnvio(std::size_t enviados, std::size_t total, const std::string& quePasa,
                           const std::string& comprobar);

}  // namespace telvane
