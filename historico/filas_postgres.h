// An archive's rows, as the server takes and gives them.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "historico/almacen.h"
#include "historico/filas.h"
#include "historico/postgres.h"

namespace telvane {

// Of each kind of row the columns in the order in which it is read.
namespace columnas_postgres {
inline constexpr std::string_view kEstacion =
    "id::bigint,nombre,serie,evaporacion,mas_nueva,cabecera,imagenes,muestras,huecos,conflictos,desde,hasta,"
    "incorporada";
inline constexpr std::string_view kFicha =
    "huella,bytes::bigint,reloj,desde,hasta,incorporada,origen,muestras::bigint,retrocesos::bigint,contenida";
using columnas_de_filas::kDeDescarga;
using columnas_de_filas::kDeFicha;
using columnas_de_filas::kDescarga;
}  // namespace columnas_postgres

// A moment of the logger as the server counts it, in microseconds of its own local time.
std::int64_t microsDe(Instante instante);
Instante instanteDeMicros(std::int64_t micros);
// An expression: the moment of the logger that the parameter given holds in seconds.
std::string sinZona(int cual);
void ponerOpcional(Parametros& p, const std::optional<Instante>& instante);

// Whatever stands there: what is too short is filled with zeros, and what is too long is cut.
template <std::size_t N>
std::array<std::uint8_t, N> arregloEn(const ResultadoPostgres& r, int fila, int columna) {
    std::array<std::uint8_t, N> arreglo{};
    const auto bytes = r.bytes(fila, columna);
    std::copy_n(bytes.begin(), std::min(bytes.size(), N), arreglo.begin());
    return arreglo;
}

EstacionGuardada estacionEn(const ResultadoPostgres& r, int fila);
FichaImagen fichaEn(const ResultadoPostgres& r, int fila);
// From the column given on.
FichaDescarga descargaEn(const ResultadoPostgres& r, int fila, int desde);
template <typename Leer>
auto deCadaFila(const ResultadoPostgres& r, Leer leer) {
    std::vector<decltype(leer(0))> lista;
    lista.reserve(static_cast<std::size_t>(r.filas()));
    for (int i = 0; i < r.filas(); ++i) lista.push_back(leer(i));
    return lista;
}

// The rows of a binary COPY: its beginning, fields with their lengths, and its end.
class CopiaBinaria {
   public:
    // campos: of each row.
    explicit CopiaBinaria(std::int16_t campos);

    void empezarFila() { agregarEntero(bytes_, campos_); }
    void campo(std::span<const std::uint8_t> bytes);
    template <typename Entero>
    void numero(Entero valor) {
        agregarEntero(bytes_, static_cast<std::int32_t>(sizeof(Entero)));
        agregarEntero(bytes_, valor);
    }
    // Nothing follows.
    const std::string& terminar();

   private:
    std::int16_t campos_;
    std::string bytes_;
};

}  // namespace telvane
