// telvane-cli serie
#include <cstddef>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "cli/estado_envio.h"
#include "cli/lectura_firme.h"
#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "consola/codigos_salida.h"
#include "link/protocolo.h"
#include "link/puerto_serie.h"
#include "loggerconfig/pasos_serie.h"

namespace telvane {

namespace {

// A step, and where the write stands when it fails.
template <class Paso>
auto diciendo(const std::size_t& enviados, Paso paso) {
    return diciendoElEstado(paso, [&](CodigoSalida codigo, const std::string& motivo) {
        const auto estado = estadoDelEnvio(
            enviados, kBytesMensajeSerie, "el número y la memoria",
            "La memoria sigue como estaba; mire con \"telvane-cli configuracion\" qué número tiene, y "
            "repita la orden si no es el que quería.",
            "repita la orden");
        return ErrorCli(codigo, fmt::format("{}\n{}", motivo, estado));
    });
}

// The last byte may have left although the port refused it: then reading back tells.
void escribir(Consola& consola, RegistradorCli& registrador, const std::string& cifras) {
    std::size_t enviados = 0;
    diciendo(enviados, [&] {
        try {
            registrador.escribirSerie(empacarSerie(cifras), enviados);
        } catch (const ErrorPuerto& error) {
            if (enviados < kBytesMensajeSerie) throw;
            consola.aviso(error.what());
        }
    });
}

// Another one that answers may bear the number already.
[[noreturn]] void noConfirmado(const RegistradorCli& registrador, const std::string& leido,
                               const std::string& cifras) {
    throw ErrorCli(
        CodigoSalida::fallo,
        leido == cifras
            ? fmt::format("lo leído después lleva el número {}, y el resto de la configuración no es el de "
                          "antes: contestó otro registrador, o la línea estropea las lecturas. Escribir el "
                          "número no borra nada. Revise {}, y mire con \"telvane-cli configuracion\" "
                          "quién contesta",
                          cifras, registrador.queRevisarSiHayRuido())
            : fmt::format("lo leído después es el número {}, no {}. Escribir el número no borra nada: la "
                          "memoria sigue como estaba. Mire con \"telvane-cli configuracion\" qué número "
                          "tiene y, si no es el que quería, repita la orden",
                          leido, cifras));
}

// The logger confirms nothing: only reading it back tells, and a number that is not the one may be the line's
// fault.
void leerDeVuelta(RegistradorCli& registrador, const DatosConfig& antes, const std::string& cifras) {
    DatosConfig ahora;
    for (int i = 0; i < kLecturasDeVuelta; ++i) {
        ahora = diciendo(kBytesMensajeSerie, [&] { return registrador.leerConfiguracion(); });
        if (ahora.Nserie == cifras && mismosAjustes(ahora, antes)) return;
    }
    noConfirmado(registrador, ahora.Nserie, cifras);
}

void escribirSerie(ContextoCli& contexto, const std::string& cifras) {
    auto& consola = contexto.consola;
    consola.exigirSalida();
    SesionCli sesion(contexto.entorno, consola, contexto.com);
    auto& registrador = sesion.registrador();
    const auto antes = diciendo(0, [&] {
        sesion.buscar();
        return leerFirme(registrador, consola, contexto.entorno.reloj, false).datos;
    });
    consola.aviso(fmt::format("Nro de serie: {} -> {}", antes.Nserie, cifras));
    escribir(consola, registrador, cifras);
    leerDeVuelta(registrador, antes, cifras);
    consola.resultadoDe("el número quedó escrito y comprobado: no repita la orden",
                        fmt::format("{}\n", cifras));
}

}  // namespace

void declararSerie(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden = argumentos.orden("serie", "Escribe el número de serie en el registrador y lo comprueba");
    const auto cifras = std::make_shared<std::string>();
    orden.opcion(*cifras, {.nombre = "CIFRAS",
                           .valor = "",
                           .ayuda = "Las 8 cifras del número",
                           .comprobar = motivoSerie,
                           .obligatoria = true});
    orden.alElegir(
        [&contexto, cifras] { contexto.orden = [&contexto, cifras] { escribirSerie(contexto, *cifras); }; });
}

}  // namespace telvane
