// How an image came from its logger: what the image does not say, written beside it. telvane-historico takes
// it up with the image (historico/ficha.h).
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "platform/reloj.h"

namespace telvane {

struct DatosDeDescarga {
    std::chrono::sys_seconds descargada{};  // UTC
    int puerto = 0;
    std::filesystem::path dispositivo;
    std::optional<FechaHora> reloj;  // the logger's; none: it is no date and time
    FechaHora relojPc;               // when the logger's stood so
    bool verificada = false;
    int reintentos = 0;
    std::size_t erroresDeLinea = 0;
    std::filesystem::path base;  // empty: no file
};

// One object, of the members that data/miembros_ficha.h names.
std::string fichaJson(const DatosDeDescarga& datos, std::span<const std::uint8_t> imagen);

}  // namespace telvane
