// An archive's rows, as SQLite's statements take and give them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "historico/almacen.h"
#include "historico/canales.h"
#include "historico/filas.h"
#include "historico/sqlite.h"

namespace telvane {

// Of each kind of row the columns in the order in which it is read.
namespace columnas_sqlite {
inline constexpr std::string_view kEstacion =
    "id,nombre,serie,evaporacion,mas_nueva,imagenes,muestras,huecos,conflictos,desde,hasta,incorporada,"
    "cabecera";
inline constexpr std::string_view kRegistro =
    "auxiliar1,humedad,temperatura,viento,velocidad,radiacion,presion,lluvia,libre,auxiliar2,evaporacion,"
    "resto";
inline constexpr std::string_view kFicha =
    "huella,bytes,reloj,desde,hasta,incorporada,origen,muestras,retrocesos,contenida";
using columnas_de_filas::kDeFicha;
using columnas_de_filas::kDescarga;
}  // namespace columnas_sqlite

// The other way of segundosDe.
inline Instante instanteDeSegundos(std::int64_t cuantos) {
    return Instante(std::chrono::seconds(cuantos));
}

// cual: the parameter.
void ponerOpcional(Sentencia& s, int cual, const std::optional<Instante>& instante);
// A record's columns, from the parameter given on.
void ponerRegistro(Sentencia& s, int desde, const CanalesCrudos& canales);
// Its number, its name, its serial number and its variant, from the first parameter on.
void ponerEstacion(Sentencia& s, const EstacionGuardada& estacion);

// Whatever stands there: what is too short is filled with zeros, and what is too long is cut.
Huella huellaEn(const Sentencia& s, int columna);
BytesMuestra registroEn(const Sentencia& s, int desde, Instante instante);
EstacionGuardada estacionEn(const Sentencia& s);
FichaImagen fichaEn(const Sentencia& s);
FichaDescarga descargaEn(const Sentencia& s, int desde);

}  // namespace telvane
