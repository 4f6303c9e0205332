#include "app/opciones.h"

#include <utility>

#include <fmt/format.h>

#include "link/mapa_com.h"
#include "platform/argumentos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

constexpr int kUsoIncorrecto = 2;

LineaDeOrdenes malUso(const std::string& que) {
    return {.opciones = std::nullopt,
            .estado = kUsoIncorrecto,
            .salida = {},
            .error = "telvane: " + lineasSinControles(que) + "\n"};
}

}  // namespace

LineaDeOrdenes leerOrdenes(std::vector<std::string> argumentos) {
    Opciones opciones;
    std::string perfil = "estricto";
    Argumentos linea("telvane", TELVANE_VERSION,
                     "Acompañante de escritorio del registrador de una estación meteorológica automática");
    linea.programa().opcion(
        opciones.com,
        {.nombre = "--com",
         .valor = "N=DISPOSITIVO",
         .ayuda = "Dispositivo del puerto COM N; los números que no se dan no existen. Se puede repetir"});
    linea.programa().opcion(
        perfil,
        {.nombre = "--perfil",
         .valor = "PERFIL",
         .ayuda = fmt::format(
             "Fechas que valen: estricto (2001 a 2019) o ampliado (2000 a 2099); {} si falta", perfil),
         .comprobar = motivoPerfil});
    linea.alLeer([&] {
        if (!opciones.com.empty()) static_cast<void>(MapaCom::fijo(opciones.com));
    });
    try {
        const auto leida = linea.leer(std::move(argumentos));
        if (leida.que == LineaLeida::Que::malUso) return malUso(leida.texto);
        if (leida.que == LineaLeida::Que::terminar)
            return {.opciones = std::nullopt, .estado = 0, .salida = leida.texto, .error = {}};
    } catch (const ErrorPuerto& error) {
        return malUso(error.what());
    }
    opciones.perfil = leerPerfil(perfil);
    return {.opciones = std::move(opciones), .estado = 0, .salida = {}, .error = {}};
}

}  // namespace telvane
