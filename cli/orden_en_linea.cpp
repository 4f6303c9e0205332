// telvane-cli en-linea
#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "cli/argumentos.h"
#include "cli/descubrimiento.h"
#include "cli/lectura_firme.h"
#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "cli/textos_cli.h"
#include "consola/codigos_salida.h"

namespace telvane {

namespace {

struct OpcionesEnLinea {
    std::string cuenta;
    std::string cada;
    bool json = false;
    bool descubrimiento = false;
};

// A broker keeps what it says: of one damaged byte there would be a second station for ever.
void mostrarDescubrimiento(ContextoCli& contexto, std::chrono::seconds cada) {
    SesionCli sesion(contexto.entorno, contexto.consola, contexto.com);
    sesion.buscar();
    const auto lectura = leerFirme(sesion.registrador(), contexto.consola, contexto.entorno.reloj, false);
    contexto.consola.resultado(descubrimientoJson(lectura.datos, cada));
}

// What tells readings has nothing to say of sensors.
void rehusarConDescubrimiento(const OpcionesEnLinea& opciones) {
    const auto sobra = !opciones.cuenta.empty() ? "--cuenta" : opciones.json ? "--json" : "";
    exigirUso(*sobra == '\0', fmt::format("--descubrimiento no da lecturas: quite {}", sobra));
}

void mostrarEnLinea(ContextoCli& contexto, const OpcionesEnLinea& opciones) {
    contexto.consola.exigirSalida();
    const std::chrono::seconds cada(opciones.cada.empty() ? 1 : leerEntero(opciones.cada));
    if (opciones.descubrimiento) {
        rehusarConDescubrimiento(opciones);
        mostrarDescubrimiento(contexto, cada);
        return;
    }
    SesionCli sesion(contexto.entorno, contexto.consola, contexto.com);
    sesion.buscar();
    RegistradorCli::EnLinea enLinea(sesion.registrador());
    const bool sinFin = opciones.cuenta.empty();
    const int cuenta = leerEntero(opciones.cuenta);
    const auto& reloj = contexto.entorno.reloj;
    auto toca = reloj.monotono();
    for (int i = 0; sinFin || i < cuenta; ++i) {
        // From request to request, whatever an answer takes; one that is late is not caught up with.
        if (i > 0) toca = std::max(toca + cada, reloj.monotono());
        if (i > 0) enLinea.pausar(toca - reloj.monotono());
        const auto marco = decodificarMarco(enLinea.pedir());
        contexto.consola.resultado(opciones.json ? marcoJson(marco, contexto.entorno.reloj.ahora())
                                                 : marcoParaPersonas(marco));
    }
}

}  // namespace

void declararEnLinea(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden = argumentos.orden("en-linea", "Escribe las lecturas actuales del registrador");
    const auto opciones = std::make_shared<OpcionesEnLinea>();
    orden.opcion(opciones->cuenta, {.nombre = "--cuenta",
                                    .valor = "N",
                                    .ayuda = "Lecturas que se piden; sin ella, hasta Ctrl-C",
                                    .comprobar = motivoCuenta});
    orden.opcion(opciones->cada, {.nombre = "--cada",
                                  .valor = "S",
                                  .ayuda = "Segundos entre lecturas; 1 si falta",
                                  .comprobar = motivoSegundos});
    orden.bandera(opciones->json, "--json", "Un objeto JSON por línea");
    orden.bandera(opciones->descubrimiento, "--descubrimiento",
                  "En lugar de lecturas, qué sensores hay, para MQTT: un objeto JSON por línea");
    orden.alElegir([&contexto, opciones] {
        contexto.orden = [&contexto, opciones] { mostrarEnLinea(contexto, *opciones); };
    });
}

}  // namespace telvane
