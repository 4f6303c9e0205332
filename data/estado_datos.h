// The form's state that the download, the exports and the base files share.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>

#include "data/bloques_texto.h"
#include "data/decodificador.h"
#include "data/memoria.h"
#include "platform/reloj.h"
#include "ui/forma_inicio.h"

namespace telvane {

struct EstadoDatos {
    explicit EstadoDatos(Perfil perfil) : decodificador(perfil) {}

    Memoria memoria;
    Decodificador decodificador;
    BloquesTexto bloquesTexto;
    std::int32_t ultimoBloque = 0;      // set at start-up; last block of the decoding loops
    std::int32_t bloqueActual = 0;      // next block of memoria to fill
    FechaHora horaInicio;               // start of the running download
    std::filesystem::path carpetaBase;  // where downloaded images are kept; empty: nowhere
};

inline constexpr std::size_t kOperaciones = 7;
using BotonesHabilitados = std::array<bool, kOperaciones>;

// The buttons of every operation on data, disabled in this order while it runs. Gives which were enabled...
BotonesHabilitados bloquearOperaciones(FormaInicio& forma);
// ...enabled again after it; Command33 and Command3 stay as they are...
void liberarOperaciones(FormaInicio& forma);
// ...or as they were before, after one that did not take place: what an exchange enabled meanwhile stays so,
// and nothing can be sent outside edit mode.
void devolverOperaciones(FormaInicio& forma, const BotonesHabilitados& antes, bool editando);

}  // namespace telvane
