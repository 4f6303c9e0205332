// What went wrong, in words.
#pragma once

#include <exception>
#include <filesystem>
#include <string>
#include <string_view>

namespace telvane {

// The reason of an errno value in Spanish, whatever the locale, and what to do about it: "no queda espacio en
// el disco. Haga sitio y repita".
std::string motivoSistema(int numero);
// The same for a write to a file, where the session's own limit may be what stops it.
std::string motivoEscritura(int numero);
// Whether the session allows only so much of it; recurso: RLIMIT_FSIZE and the like.
bool hayLimite(int recurso);
// Of what found no memory; needs none itself.
std::string_view motivoSinMemoria();
// The reason alone, for who knows better what is to be done.
std::string motivoSinConsejo(int numero);
// A device, a socket and the like stand where a file is meant; without advice as well.
inline constexpr std::string_view kNoEsArchivoNormal = "no es un archivo normal";
// What to do where the name is at fault.
std::string conOtroNombre(std::string_view motivo);
// The system's own views of itself take no new file, whoever asks and whatever their permissions say.
bool esVistaDelSistema(const std::filesystem::path& carpeta);
inline constexpr std::string_view kSinArchivos = "ahí el sistema no guarda archivos; dé otra carpeta";
// Why nothing can be put into this one, and what to do.
std::string motivoSinCarpeta(const std::filesystem::path& carpeta);

// The text of an exception for the user, in Spanish whoever threw it: those of the system and of the standard
// library speak English.
std::string motivoDe(const std::exception& error);
// The same of whatever was thrown.
std::string queDice(const std::exception_ptr& fallo);

}  // namespace telvane
