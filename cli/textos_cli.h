// The logger's records as the console tool writes them: text for people, JSON for programs. UTF-8, lines
// ended by LF.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "live/marco_en_linea.h"
#include "loggerconfig/datos_config.h"
#include "platform/reloj.h"

namespace telvane {

// The record's clock; nullopt: one of its bytes was refused.
std::optional<FechaHora> relojDe(const DatosConfig& datos);

// "2026-11-20T17:04:09"
std::string fechaIso(const FechaHora& momento);

// "2026-11-20T17:04:09Z"
std::string utcIso(std::chrono::sys_seconds momento);

// Control characters of the logger's texts are left out here, and escaped in JSON.
std::string configuracionParaPersonas(const DatosConfig& datos);
// One object: puerto, dispositivo, serie, usuario, ubicacion, latitud, longitud, altitud, intervalo_minutos,
// reloj, evaporacion. null where the logger's value is none.
std::string configuracionJson(const DatosConfig& datos, int puerto, const std::string& dispositivo);

std::string marcoParaPersonas(const MarcoEnLinea& marco);
// One object on one line; numbers with the decimals that are shown.
std::string marcoJson(const MarcoEnLinea& marco, const FechaHora& momento);

}  // namespace telvane
