// What the archive tells: moments, names of files, a station's header.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "historico/almacen.h"

namespace telvane {

// "2026-11-20T17:04:09"
std::string isoDe(Instante instante);
// "2026-11-20T17:04:09Z"
std::string isoDe(Incorporada momento);
// "2026-11-20" or "2026-11-20T17:04", a real date and time of any year; nullopt for anything else.
std::optional<Instante> leerMomento(std::string_view texto);
// Why a text is none of these; empty when it is.
std::string motivoMomento(const std::string& texto);

// What the newest image says of its station, for people and programs: no control characters, no outer blanks.
struct DatosDeEstacion {
    std::string ubicacion;
    std::string usuario;
    std::optional<int> intervalo;  // minutes
};
DatosDeEstacion datosDe(const EstacionGuardada& estacion);

}  // namespace telvane
