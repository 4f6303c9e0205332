// telvane-cli descargar
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "cli/argumentos.h"
#include "cli/codigos_salida.h"
#include "cli/conversion.h"
#include "cli/descarga_cli.h"
#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "cli/textos_cli.h"
#include "data/sello.h"
#include "platform/guardado.h"

namespace telvane {

namespace {

struct Opciones {
    std::string base;
    std::string csv;
    std::string perfil = "estricto";
    std::string espera = "5";
    std::string reintentos = "2";
    bool verificar = false;
};

constexpr std::string_view kSalida = "-";

void guardar(ContextoCli& contexto, const std::string& ruta, std::string_view bytes) {
    if (ruta == kSalida) {
        contexto.consola.resultado(bytes);
    } else {
        guardarAtomico(ruta, bytes);
    }
}

void descargar(ContextoCli& contexto, const Opciones& opciones) {
    if (opciones.base == kSalida && opciones.csv == kSalida) {
        throw ErrorCli(CodigoSalida::malUso, "solo uno de --base y --csv puede ir a la salida");
    }
    auto& consola = contexto.consola;
    SesionCli sesion(contexto.entorno, consola, contexto.com);
    sesion.registrador().espera(std::chrono::seconds(leerEntero(opciones.espera)));
    const int numero = sesion.buscar();
    consola.aviso(fmt::format("Registrador en COM{}: se lee la configuración.", numero));
    const auto datos = sesion.registrador().leerConfiguracion();
    consola.aviso(fmt::format("Nro {}: se descarga la memoria.", datos.Nserie));

    PeticionDescarga peticion;
    if (opciones.base != kSalida) peticion.base = opciones.base;
    peticion.verificar = opciones.verificar;
    peticion.reintentos = leerEntero(opciones.reintentos);
    const auto imagen =
        descargarImagen(contexto.entorno, consola, sesion.registrador(), datos.Nserie, peticion);
    if (opciones.base == kSalida) {
        consola.resultado({reinterpret_cast<const char*>(imagen.data()), imagen.size()});
    } else {
        consola.aviso(fmt::format("Archivo base: {}", opciones.base));
    }
    if (opciones.csv.empty()) return;

    const auto archivo = Conversor().convertir(imagen, Formato::csv, leerPerfil(opciones.perfil),
                                               contexto.entorno.reloj.ahora(),
                                               {.serie = datos.Nserie, .texto = textoConfig(datos)});
    guardar(contexto, opciones.csv, archivo.bytes());
    consola.aviso(archivo.recuento.texto());
}

}  // namespace

void declararDescargar(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden = argumentos.orden("descargar", "Descarga la memoria del registrador a un archivo base");
    const auto opciones = std::make_shared<Opciones>();
    orden.opcion(opciones->base, {.nombre = "--base",
                                  .valor = "ARCHIVO",
                                  .ayuda = "Archivo base (.rgt) que se escribe; - es la salida",
                                  .obligatoria = true});
    orden.opcion(opciones->csv, {.nombre = "--csv",
                                 .valor = "ARCHIVO",
                                 .ayuda = "Además, los datos como archivo CSV; - es la salida"});
    orden.bandera(opciones->verificar, "--verificar", "Descarga dos veces y compara");
    orden.opcion(opciones->espera, {.nombre = "--espera",
                                    .valor = "S",
                                    .ayuda = "Segundos sin respuesta que se toleran; 5 si falta",
                                    .comprobar = motivoSegundos});
    orden.opcion(opciones->reintentos, {.nombre = "--reintentos",
                                        .valor = "N",
                                        .ayuda = "Veces que se vuelve a empezar tras un fallo; 2 si falta",
                                        .comprobar = motivoReintentos});
    orden.opcion(opciones->perfil, {.nombre = "--perfil",
                                    .valor = "PERFIL",
                                    .ayuda = "Fechas que valen en el CSV: estricto (2001 a 2019) o ampliado",
                                    .comprobar = motivoPerfil});
    orden.pie(
        "Cada bloque llega al disco en cuanto se recibe, en ARCHIVO.parcial, que toma su nombre al "
        "completarse. Si se\n"
        "interrumpe, lo recibido queda allí.");
    orden.alElegir([&contexto, opciones] {
        contexto.orden = [&contexto, opciones] { descargar(contexto, *opciones); };
    });
}

}  // namespace telvane
