// What an operator wants to hear of his stations: told by what the archive keeps of each of them and of its
// last downloads, without its samples. Rules only: whoever asks has read what they look at.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "historico/almacen.h"
#include "historico/llegadas.h"

namespace telvane {

enum class ClaseAviso : std::uint8_t {
    silencio,
    relojDesviado,
    relojSalto,
    relojIncorrecto,
    memoria,
    otroRegistrador,
    sinVerificar,
    parcial,
    conflictos,
    huecos,
    sinCopiar
};

// The words that programs know them by; they stay as they are.
struct CodigoAviso {
    ClaseAviso clase;
    std::string_view codigo;
};
inline constexpr std::array<CodigoAviso, 11> kCodigosAviso = {
    {{ClaseAviso::silencio, "silencio"},
     {ClaseAviso::relojDesviado, "reloj_desviado"},
     {ClaseAviso::relojSalto, "reloj_salto"},
     {ClaseAviso::relojIncorrecto, "reloj_incorrecto"},
     {ClaseAviso::memoria, "memoria"},
     {ClaseAviso::otroRegistrador, "otro_registrador"},
     {ClaseAviso::sinVerificar, "sin_verificar"},
     {ClaseAviso::parcial, "parcial"},
     {ClaseAviso::conflictos, "conflictos"},
     {ClaseAviso::huecos, "huecos"},
     {ClaseAviso::sinCopiar, "sin_copiar"}}};
constexpr std::string_view codigoDe(ClaseAviso clase) {
    return kCodigosAviso[static_cast<std::size_t>(clase)].codigo;
}

struct AvisoEstacion {
    ClaseAviso clase;
    std::string texto;  // in Spanish, with what to do
};

// A station and its last images.
struct Observada {
    EstacionGuardada estacion;
    Llegadas ultimas;  // the newest last, limites_aviso::kUltimas at most
    // When its last image came. None that a machine noted whose clock was ahead: nullopt where that are all.
    std::optional<Incorporada> llego;
    // What the last image brought besides what the last look held.
    std::int64_t huecosNuevos = 0;
    std::int64_t conflictosNuevos = 0;
    // Images that the archive it is copied to lacks, where somebody looked.
    std::optional<std::int64_t> sinCopiar;
};

struct Mirada {
    Incorporada ahora;
    // Silence that is told; nullopt: what each station's own rhythm says.
    std::optional<double> horasDeSilencio;
    // How the archive is called that they are copied to.
    std::string copia;
};
// Of each station, in the order of kCodigosAviso.
std::vector<std::vector<AvisoEstacion>> avisosDe(const std::vector<Observada>& flota, const Mirada& mirada);

}  // namespace telvane
