// Where a write to the logger stands when it did not end well.
#pragma once

#include <cstddef>
#include <exception>
#include <string>

#include "consola/codigos_salida.h"
#include "platform/motivos.h"

namespace telvane {

// How often what was written is read back before what differs is believed: it may be the line's fault.
inline constexpr int kLecturasDeVuelta = 3;

// enviados: bytes of total that were handed to the line. quePasa: what stays as it was until the last of them
// ("la configuración y la memoria"). comprobar: what to do about a write that was sent and not confirmed.
// repetir: what to do about one that was not ("repita la orden").
std::string estadoDelEnvio(std::size_t enviados, std::size_t total, const std::string& quePasa,
                           const std::string& comprobar, const std::string& repetir);

// Runs a step. Whatever ends it goes to conEstado, which makes of a status and a reason the ErrorCli that is
// thrown instead; a line that asks for what cannot be is thrown as it is.
template <class Paso, class ConEstado>
auto diciendoElEstado(Paso paso, ConEstado conEstado) {
    try {
        return paso();
    } catch (const ErrorCli& error) {
        if (error.codigo() == CodigoSalida::malUso) throw;
        throw conEstado(error.codigo(), error.what());
    } catch (const std::exception& error) {
        throw conEstado(CodigoSalida::fallo, motivoDe(error));
    }
}

}  // namespace telvane
