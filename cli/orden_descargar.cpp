// telvane-cli descargar
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <fmt/format.h>

#include "cli/archivo_parcial.h"
#include "cli/argumentos.h"
#include "cli/descarga_cli.h"
#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "cli/textos_cli.h"
#include "consola/codigos_salida.h"
#include "consola/salida_consola.h"
#include "data/archivo_base.h"
#include "data/conversion.h"
#include "data/sello.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

struct Opciones {
    std::string base;
    std::string csv;
    std::string perfil = "estricto";
    std::string espera = "5";
    std::string reintentos = "2";
    bool verificar = false;
    bool reemplazar = false;
};

SalidaConsola salidaBase(const Opciones& opciones) {
    try {
        return {opciones.base, reglaDeBase(opciones.reemplazar)};
    } catch (const ErrorGuardado& error) {
        if (opciones.reemplazar || !std::filesystem::is_regular_file(opciones.base)) throw;
        throw ErrorGuardado(fmt::format("{}, o --reemplazar", error.what()));
    }
}

// What both are is known before the logger hears anything.
void revisarJuntas(const EntornoConsola& entorno, const SalidaConsola& base, const SalidaConsola& csv) {
    if (base.estandar() && csv.estandar()) {
        throw ErrorCli(CodigoSalida::malUso, "solo uno de --base y --csv puede ir a la salida");
    }
    const auto cual = [&](const SalidaConsola& salida) {
        return salida.estandar() ? identidad(entorno.salida)
                                 : std::optional(identidad(std::filesystem::path(salida.nombre())));
    };
    if ((base.archivo() || csv.archivo()) && cual(base) == cual(csv)) {
        throw ErrorCli(CodigoSalida::malUso,
                       fmt::format("--base y --csv son el mismo archivo: {}", nombreVisible(csv.nombre())));
    }
}

void descargar(ContextoCli& contexto, const Opciones& opciones) {
    std::optional<SalidaConsola> csv;
    if (!opciones.csv.empty()) csv.emplace(opciones.csv, reglaDeTabla());
    const auto base = salidaBase(opciones);
    if (csv) revisarJuntas(contexto.entorno, base, *csv);
    auto& consola = contexto.consola;
    if (base.estandar() || (csv && csv->estandar())) consola.exigirSalida();
    if (base.archivo()) ArchivoParcial::revisar(base.destino());
    SesionCli sesion(contexto.entorno, consola, contexto.com);
    sesion.registrador().espera(std::chrono::seconds(leerEntero(opciones.espera)));
    sesion.registrador().reintentos(leerEntero(opciones.reintentos));
    const int numero = sesion.buscar();
    consola.aviso(fmt::format("Registrador en COM{}: se lee la configuración.", numero));
    const auto datos = sesion.registrador().leerConfiguracion();
    consola.aviso(fmt::format("Nro {}: se descarga la memoria.", datos.Nserie));

    PeticionDescarga peticion;
    if (base.archivo()) peticion.base = base.destino();
    peticion.verificar = opciones.verificar;
    peticion.reintentos = leerEntero(opciones.reintentos);
    const auto imagen = descargarImagen(contexto.entorno, consola, sesion.registrador(), peticion);
    decirOtraCabecera(consola, datos, imagen);
    if (!base.archivo()) {
        base.escribir(contexto.entorno, consola,
                      {reinterpret_cast<const char*>(imagen.data()), imagen.size()});
    }
    if (!base.estandar()) consola.aviso(fmt::format("Archivo base: {}", nombreVisible(base.nombre())));
    if (!csv) return;

    const auto propios = datosDeCabecera(imagen);
    const auto archivo = Conversor().convertir(
        imagen, Formato::csv, leerPerfil(opciones.perfil), contexto.entorno.reloj.ahora(),
        {.leido = {textoConfig(propios), numeroDeSerie(propios.Nserie)}});
    csv->escribir(contexto.entorno, consola, archivo.bytes());
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
    orden.bandera(opciones->reemplazar, "--reemplazar", "El archivo base puede ser uno que ya existe");
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
