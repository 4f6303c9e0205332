// The members of a download's data sheet, a JSON object beside the image: whoever writes, reads or recognises
// one takes their names from here.
#pragma once

namespace telvane::miembros_ficha {

inline constexpr const char* kDescargada = "descargada";  // UTC
inline constexpr const char* kPuerto = "puerto";
inline constexpr const char* kDispositivo = "dispositivo";
inline constexpr const char* kSerie = "serie";  // the image's own
inline constexpr const char* kReloj = "reloj";  // the logger's; null: it is no date and time
inline constexpr const char* kDesfase =
    "desfase_s";  // seconds by which it is ahead of the PC's; null likewise
inline constexpr const char* kVerificada = "verificada";
inline constexpr const char* kReintentos = "reintentos";
inline constexpr const char* kErroresDeLinea = "errores_de_linea";
inline constexpr const char* kBase = "base";      // the file's name without its folder; null: no file
inline constexpr const char* kImagen = "imagen";  // SHA-256

}  // namespace telvane::miembros_ficha
