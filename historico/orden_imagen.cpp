// telvane-historico imagen
#include <memory>
#include <string>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "data/archivo_base.h"
#include "historico/ordenes.h"

namespace telvane {

namespace {

struct OpcionesImagen {
    std::string huella;
    std::string salida;
};

std::string motivoHuella(const std::string& texto) {
    return PrincipioDeHuella::leer(texto) ? "" : "debe ser un SHA-256: de 8 a 64 cifras, de 0 a 9 y de a a f";
}

std::vector<std::uint8_t> buscar(Lectura& lectura, const PrincipioDeHuella& cual) {
    std::optional<Huella> hallada;
    for (const auto& estacion : lectura.estaciones()) {
        for (const auto& ficha : lectura.imagenes(estacion)) {
            if (!cual.esDe(ficha.huella)) continue;
            if (hallada && hallada != ficha.huella) {
                throw ErrorCli(
                    CodigoSalida::fallo,
                    fmt::format("varias imágenes empiezan por {}: escriba más cifras", cual.digitos()));
            }
            hallada = ficha.huella;
        }
    }
    if (!hallada) {
        throw ErrorCli(CodigoSalida::fallo,
                       fmt::format("ninguna imagen empieza por {}: vea imagenes", cual.digitos()));
    }
    return lectura.bytesDe(*hallada);
}

void imagen(ContextoHistorico& contexto, const OpcionesImagen& opciones) {
    const auto almacen = contexto.abrir(Uso::leer);
    const auto salida = contexto.salida(opciones.salida, reglaDeBase(), almacen.get());
    Lectura lectura(*almacen);
    const auto bytes = buscar(lectura, PrincipioDeHuella::leer(opciones.huella).value());
    salida.escribir(contexto.entorno, contexto.consola,
                    {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace

void declararImagen(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden = argumentos.orden("imagen", "Devuelve una imagen, byte por byte");
    const auto opciones = std::make_shared<OpcionesImagen>();
    orden.opcion(opciones->huella, {.nombre = "HUELLA",
                                    .valor = "",
                                    .ayuda = "Su SHA-256, o al menos sus 8 primeras cifras",
                                    .comprobar = motivoHuella,
                                    .obligatoria = true});
    orden.opcion(opciones->salida, {.nombre = "SALIDA",
                                    .valor = "",
                                    .ayuda = "Archivo base que se escribe; - es la salida",
                                    .obligatoria = true});
    orden.alElegir(
        [&contexto, opciones] { contexto.orden = [&contexto, opciones] { imagen(contexto, *opciones); }; });
}

}  // namespace telvane
