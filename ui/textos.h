// Texts that several operations show, each in this one place. UTF-8, blanks as they stand.
#pragma once

#include <string_view>

namespace telvane::textos {

inline constexpr std::string_view kPrograma = "Telvane";
inline constexpr std::string_view kNoHayEquipo = "No hay equipo conectado ,Intente Reconectar ";
inline constexpr std::string_view kConectar = " Conectar con Registrador ? ";
// The button of the live data while none runs.
inline constexpr std::string_view kEnLinea = "DATOS EN LINEA";
inline constexpr std::string_view kErrorContador = "error en contador";
// Why the machine stays awake, for the user who asks.
inline constexpr std::string_view kPorQueDespierta = "Descarga de la memoria del registrador";
inline constexpr std::string_view kFinLinea = "\r\n";
inline constexpr std::string_view kCarpetaDocumentos = "C:\\Mis Documentos\\";

}  // namespace telvane::textos
