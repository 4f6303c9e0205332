// What either store asks and says of an archive before it is opened.
#pragma once

#include <cstdint>
#include <string>

#include "historico/almacen.h"

namespace telvane {

// nombre: of the archive.
ErrorAlmacen noHayArchivo(const std::string& nombre);
ErrorAlmacen esDeVersionAnterior(const std::string& nombre, std::int64_t version);
ErrorAlmacen esDeVersionMasNueva(const std::string& nombre, std::int64_t version, std::int64_t deAhora);

// Throws ErrorAlmacen where something keeps the tables antiguas from being brought up to those of now.
// reponer: what is missing of them is going to be made good first, and keeps from nothing.
template <typename TablasDeAlmacen>
void exigirSinEstorbo(const std::string& nombre, TablasDeAlmacen& deAhora, TablasDeAlmacen antiguas,
                      bool reponer) {
    auto lista = deAhora.estorbos(antiguas);
    if (lista.empty() && !reponer) lista = antiguas.faltanTablas();
    if (!lista.empty()) throw ErrorAlmacen(nombre + ": " + lista.front());
}

}  // namespace telvane
