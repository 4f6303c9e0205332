// telvane-cli descargar
#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "cli/archivo_parcial.h"
#include "cli/argumentos.h"
#include "cli/descarga_cli.h"
#include "cli/ficha_cli.h"
#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "cli/textos_cli.h"
#include "consola/codigos_salida.h"
#include "consola/salida_consola.h"
#include "data/archivo_base.h"
#include "data/conversion.h"
#include "data/formato.h"
#include "data/sello.h"
#include "link/protocolo.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/motivos.h"
#include "platform/palabra_de_consola.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

struct OpcionesDescargar {
    std::string base;
    std::string csv;
    std::string ficha;
    std::string serie;
    std::string perfil = "estricto";
    std::string espera = std::to_string(kSilencio.count());
    std::string reintentos = std::to_string(Reintentos::kUsuales);
    bool verificar = false;
    bool reemplazar = false;
};

// Error: what it is that a file stands there already.
template <class Error>
SalidaConsola salidaNueva(const OpcionesDescargar& opciones, const std::string& nombre,
                          ReglaDestino (*regla)(bool reemplazar)) {
    try {
        return {nombre, regla(opciones.reemplazar)};
    } catch (const ErrorNombre&) {
        throw;
    } catch (const ErrorGuardado& error) {
        std::error_code sinMotivo;
        if (opciones.reemplazar || !std::filesystem::is_regular_file(nombre, sinMotivo)) throw;
        // What that would not replace either is told as itself.
        static_cast<void>(revisarDestino(nombre, regla(true)));
        throw Error(fmt::format("{}, o --reemplazar", error.what()));
    }
}

struct SalidaNombrada {
    std::string_view opcion;
    const SalidaConsola& salida;
};

// What they are is known before the logger hears anything.
void revisarJuntas(const EntornoConsola& entorno, const SalidaNombrada& una, const SalidaNombrada& otra) {
    if (una.salida.estandar() && otra.salida.estandar()) {
        throw ErrorUso(fmt::format("solo uno de {} y {} puede ir a la salida: dé un archivo al otro",
                                   una.opcion, otra.opcion));
    }
    const auto cual = [&](const SalidaConsola& salida) {
        return salida.estandar() ? identidad(entorno.salida)
                                 : std::optional(identidad(std::filesystem::path(salida.nombre())));
    };
    if ((una.salida.archivo() || otra.salida.archivo()) && cual(una.salida) == cual(otra.salida)) {
        throw ErrorUso(sonElMismoArchivo(una.opcion, otra.opcion, otra.salida.nombre()));
    }
}

class Salidas {
   public:
    Salidas(const EntornoConsola& entorno, const OpcionesDescargar& opciones)
        : base(salidaNueva<ErrorGuardado>(opciones, opciones.base, reglaDeBase)) {
        if (!opciones.csv.empty()) csv.emplace(opciones.csv, reglaDeTabla());
        if (!opciones.ficha.empty())
            ficha.emplace(salidaNueva<ErrorNombre>(opciones, opciones.ficha, reglaDeFicha));
        std::vector<SalidaNombrada> todas = {{"--base", base}};
        if (csv) todas.push_back({"--csv", *csv});
        if (ficha) todas.push_back({"--ficha", *ficha});
        for (std::size_t i = 1; i < todas.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) revisarJuntas(entorno, todas[j], todas[i]);
        }
    }

    bool algunaEstandar() const {
        return base.estandar() || (csv && csv->estandar()) || (ficha && ficha->estandar());
    }

    SalidaConsola base;
    std::optional<SalidaConsola> csv;
    std::optional<SalidaConsola> ficha;
};

// One damaged byte makes another number of the one that is asked for.
DatosConfig leerConSuNumero(RegistradorCli& registrador, const std::string& serie) {
    constexpr int kLecturas = 3;
    auto datos = registrador.leerConfiguracion();
    for (int i = 1; i < kLecturas && !serie.empty() && datos.Nserie != serie; ++i)
        datos = registrador.leerConfiguracion();
    return datos;
}

// Another logger's memory would be taken for this one's.
void exigirSerie(const OpcionesDescargar& opciones, int numero, const std::string& hallada) {
    if (opciones.serie.empty() || opciones.serie == hallada) return;
    throw ErrorCli(
        CodigoSalida::fallo,
        fmt::format("en COM{} responde el registrador {}, no el {}: revise los cables, o el número", numero,
                    hallada, opciones.serie));
}

// The CSV as it was asked for, from the base file.
std::string ordenDeLaPlanilla(const OpcionesDescargar& opciones) {
    std::string orden = "telvane-cli convertir";
    if (formatoDelNombre(opciones.csv).value_or(Formato::csv) != Formato::csv) orden += " --formato csv";
    if (opciones.perfil != OpcionesDescargar{}.perfil) orden += " --perfil " + opciones.perfil;
    for (const auto* nombre : {&opciones.base, &opciones.csv}) orden += " " + palabraDeConsola(*nombre);
    return fmt::format(". Haga la planilla con \"{}\"", sinControles(orden));
}

// Behind a whole base file: the same order would now be refused, or replace it. What fails says where the
// memory is, and what is to be done yet.
template <class Paso>
void trasLaBase(const SalidaConsola& base, const std::string& queHacer, const Paso& paso) {
    const auto conLaBase = [&](const std::string& motivo) {
        if (!base.archivo()) return motivo;
        return fmt::format("{}. No hace falta descargar otra vez: la memoria está entera en {}{}", motivo,
                           nombreVisible(base.nombre()), queHacer);
    };
    try {
        paso();
    } catch (const ErrorCli& error) {
        throw ErrorCli(error.codigo(), conLaBase(error.what()));
    } catch (const ErrorNombre& error) {
        throw ErrorNombre(conLaBase(error.what()));
    } catch (const std::exception& error) {
        throw ErrorGuardado(conLaBase(motivoDe(error)));
    }
}

void escribirFicha(ContextoCli& contexto, const OpcionesDescargar& opciones, const Salidas& salidas,
                   const DatosDeDescarga& datos, std::span<const std::uint8_t> imagen) {
    if (!salidas.ficha) return;
    const auto planilla = salidas.csv ? ordenDeLaPlanilla(opciones) : "";
    trasLaBase(salidas.base, ", y vale sin la ficha" + planilla, [&] {
        salidas.ficha->escribir(contexto.entorno, contexto.consola, fichaJson(datos, imagen));
    });
}

void escribirCsv(ContextoCli& contexto, const OpcionesDescargar& opciones, const Salidas& salidas,
                 std::span<const std::uint8_t> imagen) {
    if (!salidas.csv) return;
    trasLaBase(salidas.base, ordenDeLaPlanilla(opciones), [&] {
        const auto propios = datosDeCabecera(imagen);
        const auto archivo = Conversor().convertir(
            imagen, Formato::csv, leerPerfil(opciones.perfil), contexto.entorno.reloj.ahora(),
            {.leido = {textoConfig(propios), numeroDeSerie(propios.Nserie)}});
        salidas.csv->escribir(contexto.entorno, contexto.consola, archivo.bytes());
        contexto.consola.aviso(archivo.recuento.texto());
    });
}

void descargar(ContextoCli& contexto, const OpcionesDescargar& opciones) {
    const Salidas salidas(contexto.entorno, opciones);
    const auto& base = salidas.base;
    auto& consola = contexto.consola;
    if (salidas.algunaEstandar()) consola.exigirSalidaPropia();
    if (base.archivo()) ArchivoParcial::revisar(base.destino(), contexto.entorno);
    SesionCli sesion(contexto.entorno, consola, contexto.com);
    auto& registrador = sesion.registrador();
    registrador.espera(std::chrono::seconds(leerEntero(opciones.espera)));
    registrador.reintentos(leerEntero(opciones.reintentos));
    const int numero = sesion.buscar();
    consola.aviso(fmt::format("Registrador en COM{}: se lee la configuración.", numero));
    const auto datos = leerConSuNumero(registrador, opciones.serie);
    exigirSerie(opciones, numero, datos.Nserie);
    consola.aviso(fmt::format("Nro {}: se descarga la memoria.", datos.Nserie));

    PeticionDescarga peticion;
    if (base.archivo()) peticion.base = base.destino();
    peticion.verificar = opciones.verificar;
    peticion.reintentos = leerEntero(opciones.reintentos);
    peticion.serie = opciones.serie;
    const auto descarga = descargarImagen(contexto.entorno, consola, registrador, peticion);
    const auto& imagen = descarga.bytes;
    decirOtraCabecera(consola, datos, imagen);
    if (!base.archivo()) {
        base.escribir(contexto.entorno, consola,
                      {reinterpret_cast<const char*>(imagen.data()), imagen.size()});
    }
    if (!base.estandar()) consola.aviso(fmt::format("Archivo base: {}", nombreVisible(base.nombre())));
    escribirFicha(contexto, opciones, salidas,
                  {.descargada = contexto.entorno.ahoraUtc(),
                   .puerto = numero,
                   .dispositivo = sesion.dispositivo(numero),
                   // Another logger may have come to the cable since.
                   .reloj = datos.Nserie == leerCabecera(imagen).digitosSerie ? relojDe(datos) : std::nullopt,
                   .relojPc = registrador.momentoDeLectura(),
                   .verificada = opciones.verificar,
                   .reintentos = descarga.reintentos,
                   .erroresDeLinea = registrador.erroresDeLinea(),
                   .base = base.estandar() ? "" : base.nombre()},
                  imagen);
    escribirCsv(contexto, opciones, salidas, imagen);
}

// What its name alone says, wherever it is to be written.
std::string motivoDeFicha(const std::string& nombre) {
    const auto motivo = motivoDeTerminacion(nombre, reglaDeFicha().vedadas);
    return motivo.empty() ? "" : noGuardado(nombre, motivo).what();
}

void declararOpciones(OrdenDeLinea& orden, OpcionesDescargar& opciones) {
    orden.opcion(opciones.base, {.nombre = "--base",
                                 .valor = "ARCHIVO",
                                 .ayuda = "Archivo base (.rgt) que se escribe; - es la salida",
                                 .obligatoria = true});
    orden.opcion(opciones.csv, {.nombre = "--csv",
                                .valor = "ARCHIVO",
                                .ayuda = "Además, los datos como archivo CSV; - es la salida"});
    orden.opcion(opciones.ficha, {.nombre = "--ficha",
                                  .valor = "ARCHIVO",
                                  .ayuda = "Además, cuándo, de dónde y cómo se descargó, como JSON; - es la "
                                           "salida",
                                  .comprobar = motivoDeFicha});
    orden.opcion(opciones.serie, {.nombre = "--serie",
                                  .valor = "CIFRAS",
                                  .ayuda = "Número de serie, 8 cifras: otro registrador se rechaza",
                                  .comprobar = motivoSerieMostrada});
    orden.bandera(opciones.reemplazar, "--reemplazar",
                  "El archivo base, o la ficha, puede ser otro que ya existe");
    orden.bandera(opciones.verificar, "--verificar", "Descarga dos veces y compara");
    orden.opcion(opciones.espera,
                 {.nombre = "--espera",
                  .valor = "S",
                  .ayuda = fmt::format("Segundos sin respuesta que se toleran; {} si falta", opciones.espera),
                  .comprobar = motivoSegundos});
    orden.opcion(opciones.reintentos,
                 {.nombre = "--reintentos",
                  .valor = "N",
                  .ayuda = fmt::format("Veces que se vuelve a empezar tras un fallo; {} si falta",
                                       opciones.reintentos),
                  .comprobar = motivoReintentos});
    orden.opcion(
        opciones.perfil,
        {.nombre = "--perfil",
         .valor = "PERFIL",
         .ayuda = fmt::format("Fechas que valen en el CSV: estricto (2001 a 2019) o ampliado; {} si falta",
                              opciones.perfil),
         .comprobar = motivoPerfil});
}

}  // namespace

std::string motivoOpcionesDescargar(const std::vector<std::string>& palabras) {
    if (std::ranges::find(palabras, "--") != palabras.end()) return "-- no vale aquí";
    Argumentos linea("telvane-cli", "", "");
    OpcionesDescargar opciones;
    auto programa = linea.programa();
    declararOpciones(programa, opciones);
    std::vector<std::string> argumentos = {"--base=x"};
    argumentos.insert(argumentos.end(), palabras.begin(), palabras.end());
    const auto leida = linea.leer(std::move(argumentos));
    if (leida.que == LineaLeida::Que::terminar) return "--help y --version no descargan nada: quítelas";
    return leida.texto.substr(0, leida.texto.find('\n'));
}

void declararDescargar(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden = argumentos.orden("descargar", "Descarga la memoria del registrador a un archivo base");
    const auto opciones = std::make_shared<OpcionesDescargar>();
    declararOpciones(orden, *opciones);
    orden.pie(
        "Cada bloque llega al disco en cuanto se recibe, en ARCHIVO.parcial, que toma su nombre al "
        "completarse. Si se\n"
        "interrumpe, lo recibido queda allí.");
    orden.alElegir([&contexto, opciones] {
        contexto.orden = [&contexto, opciones] { descargar(contexto, *opciones); };
    });
}

}  // namespace telvane
