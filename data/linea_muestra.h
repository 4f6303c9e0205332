// A sample record as text: a line of the tables, an object of JSON Lines. Plain ASCII.
//
// Each routine writes at p and gives the place after the text. The columns are copied as whole cells, so that
// up to 16 bytes after a text are overwritten; the rooms named here hold them too. The record's stamp is
// good.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "data/columnas.h"
#include "data/conversiones.h"
#include "data/medidas.h"
#include "data/muestra.h"
#include "data/sello.h"

namespace telvane {

// Room that the longest line wants, and the longest object.
inline constexpr std::size_t kLineaMaxima = 96;
inline constexpr std::size_t kObjetoMaximo = 224;

// The columns, each with its comma: who has one more puts it, and its comma, behind them.
[[gnu::always_inline]] inline char* escribirColumnas(char* p, BytesMuestraConst r, bool evaporacion) {
    namespace rm = registro_muestra;
    p = sello::escribir(p, r);
    p = columnas::humedad(p, crudoDeDosBytes(r, rm::kHumedad));
    p = columnas::temperatura(p, crudoDeDosBytes(r, rm::kTemperatura));
    p = columnas::viento(p, r[rm::kDirViento]);
    p = columnas::velViento(p, crudoDeDosBytes(r, rm::kVelViento));
    p = columnas::radSolar(p, crudoDeDosBytes(r, rm::kRadSolar));
    p = columnas::presion(p, crudoDeDosBytes(r, rm::kPresion));
    p = columnas::lluvia(p, r[rm::kLluvia]);
    if (evaporacion) p = columnas::evaporacion(p, crudoDeDosBytes(r, rm::kEvaporacion));
    return p;
}

// The line's end takes the place of the last comma.
inline char* cerrarLinea(char* p) {
    p[-1] = '\r';
    p[0] = '\n';
    return p + 1;
}

// "20/11/2018,17:04:09,64,21.5,90,O,13,0.85,100.7,0.6" and CR LF.
[[gnu::always_inline]] inline char* escribirLinea(char* p, BytesMuestraConst r, bool evaporacion) {
    return cerrarLinea(escribirColumnas(p, r, evaporacion));
}

inline char* escribirTexto(char* p, std::string_view texto) {
    return std::copy(texto.begin(), texto.end(), p);
}

// The object's opening and its members, each with its comma.
inline char* escribirMiembros(char* p, BytesMuestraConst r, bool evaporacion) {
    namespace rm = registro_muestra;
    // The stamp as the lines have it, its parts in the order of ISO 8601.
    std::array<char, 20> momento;
    sello::escribir(momento.data(), r);
    const std::string_view sello(momento.data(), momento.size());
    p = escribirTexto(p, R"({"hora":")");
    p = escribirTexto(p, sello.substr(6, 4));
    *p++ = '-';
    p = escribirTexto(p, sello.substr(3, 2));
    *p++ = '-';
    p = escribirTexto(p, sello.substr(0, 2));
    *p++ = 'T';
    p = escribirTexto(p, sello.substr(11, 8));
    p = escribirTexto(p, R"(","humedad":)");
    p = columnas::humedad(p, crudoDeDosBytes(r, rm::kHumedad));
    p = escribirTexto(p, R"("temperatura":)");
    p = columnas::temperatura(p, crudoDeDosBytes(r, rm::kTemperatura));
    p = escribirTexto(p, R"("dir_viento":)");
    p = columnas::columnaNumero(p, conversiones::dirViento(r[rm::kDirViento]), 1);
    p = escribirTexto(p, R"("dir_viento_r":")");
    p = escribirTexto(p, columnas::nombreViento(r[rm::kDirViento]));
    p = escribirTexto(p, R"(","vel_viento":)");
    p = columnas::velViento(p, crudoDeDosBytes(r, rm::kVelViento));
    p = escribirTexto(p, R"("rad_solar":)");
    p = columnas::radSolar(p, crudoDeDosBytes(r, rm::kRadSolar));
    p = escribirTexto(p, R"("presion":)");
    p = columnas::presion(p, crudoDeDosBytes(r, rm::kPresion));
    p = escribirTexto(p, R"("lluvia":)");
    p = columnas::lluvia(p, r[rm::kLluvia]);
    if (!evaporacion) return p;
    p = escribirTexto(p, R"("evaporacion":)");
    return columnas::evaporacion(p, crudoDeDosBytes(r, rm::kEvaporacion));
}

// The brace takes the place of the last comma.
inline char* cerrarObjeto(char* p) {
    p[-1] = '}';
    p[0] = '\n';
    return p + 1;
}

// {"hora":"2018-11-20T17:04:09","humedad":64,...,"lluvia":0.6} and LF.
inline char* escribirObjeto(char* p, BytesMuestraConst r, bool evaporacion) {
    return cerrarObjeto(escribirMiembros(p, r, evaporacion));
}

}  // namespace telvane
