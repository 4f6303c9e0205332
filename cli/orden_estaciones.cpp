// telvane-cli estaciones
#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli/ajustes_descarga.h"
#include "cli/ejecuciones.h"
#include "cli/ordenes.h"
#include "cli/textos_cli.h"
#include "consola/codigos_salida.h"
#include "consola/json.h"
#include "platform/contrasena.h"
#include "platform/motivos.h"
#include "platform/palabra_de_consola.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

struct OpcionesEstaciones {
    std::optional<std::string> en;
    std::string valores;
    bool nocturna = false;
    bool json = false;
};

struct Estacion {
    fs::path archivo;
    std::optional<AjustesDescarga> ajustes;  // none: they cannot be read
    std::string error;
    std::string unidad;
    std::optional<Ejecuciones> ejecuciones;  // none: nobody knows
    std::string ultimaImagen;                // name of the newest base file in its folder
};

std::string carpetaDe(const AjustesDescarga& ajustes) {
    return ajustes.carpeta.empty() ? (fs::path(TELVANE_CARPETA_DESCARGAS) / ajustes.nombre).string()
                                   : ajustes.carpeta;
}
std::string archivoDe(const AjustesDescarga& ajustes) {
    if (ajustes.sinArchivo) return {};
    return ajustes.archivo.empty() ? (fs::path(TELVANE_CARPETA_DESCARGAS) / "historico.sqlite").string()
                                   : ajustes.archivo;
}

// NAME_2026-11-21_021913.rgt
bool esImagenDe(const AjustesDescarga& ajustes, const std::string& archivo) {
    constexpr std::string_view kMomento = "_AAAA-MM-DD_HHMMSS.rgt";
    return archivo.size() == ajustes.nombre.size() + kMomento.size() &&
           archivo.starts_with(ajustes.nombre + "_2") && archivo.ends_with(".rgt");
}

// The moment is in the name: of one station the last name is the newest.
std::string ultimaImagen(const AjustesDescarga& ajustes) {
    std::string ultima;
    std::error_code sinMotivo;
    fs::directory_iterator lugar(carpetaDe(ajustes), sinMotivo);
    for (; !sinMotivo && lugar != fs::directory_iterator(); lugar.increment(sinMotivo)) {
        const auto nombre = lugar->path().filename().string();
        if (esImagenDe(ajustes, nombre)) ultima = std::max(ultima, nombre);
    }
    return ultima;
}

// pedida: somebody named it.
std::vector<fs::path> archivosDe(const fs::path& carpeta, bool pedida) {
    std::vector<fs::path> archivos;
    std::error_code motivo;
    fs::directory_iterator lugar(carpeta, motivo);
    for (; !motivo && lugar != fs::directory_iterator(); lugar.increment(motivo)) {
        const auto& ruta = lugar->path();
        if (ruta.extension() == ".conf" && !ruta.filename().string().starts_with('.'))
            archivos.push_back(ruta);
    }
    if (motivo == std::errc::permission_denied)
        throw ErrorCli(CodigoSalida::fallo, fmt::format("no se puede leer la carpeta {}: repita con sudo",
                                                        nombreVisible(carpeta)));
    // Before the first station the usual one may not be there.
    if (motivo && (pedida || motivo != std::errc::no_such_file_or_directory))
        throw ErrorCli(CodigoSalida::fallo,
                       fmt::format("no se puede leer la carpeta {}: {}", nombreVisible(carpeta),
                                   motivoSistema(motivo.value())));
    std::ranges::sort(archivos);
    return archivos;
}

Estacion leerEstacion(const fs::path& archivo) {
    Estacion estacion;
    estacion.archivo = archivo;
    try {
        estacion.ajustes = leerAjustes(archivo, ClaseAjustes::estacion);
        estacion.unidad = fmt::format("telvane-descarga{}@{}", estacion.ajustes->red() ? "-red" : "",
                                      estacion.ajustes->nombre);
        estacion.ultimaImagen = ultimaImagen(*estacion.ajustes);
    } catch (const ErrorAjustes& error) {
        estacion.error = error.what();
    }
    return estacion;
}

// Whether systemd could be asked.
bool preguntarCuando(const EntornoCli& entorno, std::vector<Estacion>& estaciones) {
    std::vector<std::string> unidades;
    for (const auto& una : estaciones) {
        if (una.ajustes) unidades.push_back(una.unidad);
    }
    const auto todas = ejecucionesDe(entorno.systemctl, unidades);
    if (!todas) return false;
    for (auto& una : estaciones) {
        if (una.ajustes) una.ejecuciones = todas->at(una.unidad);
    }
    return true;
}

Json oNulo(const std::string& texto) {
    return texto.empty() ? Json() : Json(texto);
}
Json oNulo(const std::optional<std::chrono::sys_seconds>& momento) {
    return momento ? Json(utcIso(*momento)) : Json();
}

Json objeto(const Estacion& estacion) {
    Json json;
    json.poner("nombre", estacion.archivo.stem().string());
    json.poner("ajustes", estacion.archivo.string());
    json.poner("error", oNulo(estacion.error));
    if (!estacion.ajustes) return json;
    const auto& a = *estacion.ajustes;
    json.poner("com", a.com.front());
    json.poner("serie", oNulo(a.serie));
    json.poner("como", oNulo(a.como));
    json.poner("carpeta", carpetaDe(a));
    json.poner("archivo", oNulo(sinContrasena(archivoDe(a))));
    json.poner("central", oNulo(sinContrasena(a.central)));
    json.poner("unidad", estacion.unidad);
    json.poner("ultima_imagen", oNulo(estacion.ultimaImagen));
    const auto& e = estacion.ejecuciones;
    json.poner("encendida", e ? Json(e->encendida) : Json());
    json.poner("en_marcha", e ? Json(e->enMarcha) : Json());
    json.poner("ultima", e ? oNulo(e->ultima) : Json());
    const bool conResultado = e && (e->ultima || e->resultado != "success");
    json.poner("resultado", conResultado ? oNulo(e->resultado) : Json());
    json.poner("codigo", e && e->ultima ? Json(e->codigo) : Json());
    json.poner("proxima", e ? oNulo(e->proxima) : Json());
    return json;
}

std::string comoFue(const Estacion& estacion) {
    const auto& e = *estacion.ejecuciones;
    if (e.enMarcha)
        return fmt::format(", en marcha desde {}", e.ultima ? utcIso(*e.ultima) : "hace un momento");
    // The machine lacked something, and nothing ran.
    const bool sinEmpezar = !e.resultado.empty() && e.resultado != "success" && e.codigo == 0;
    if (!e.ultima && sinEmpezar) return fmt::format(", la última no pudo empezar ({})", e.resultado);
    // systemd forgets a run that went well when no timer waits for the next one, and any run when the machine
    // starts.
    if (!e.ultima) return estacion.ultimaImagen.empty() ? ", ninguna imagen todavía" : "";
    // "systemctl reset-failed" forgets that it failed, and not with which status.
    const bool bien = e.resultado == "success" && e.codigo == 0;
    const auto como = bien         ? std::string("bien")
                      : sinEmpezar ? fmt::format("la de después no pudo empezar: {}", e.resultado)
                      : e.porSenal ? fmt::format("interrumpida, señal {}", e.codigo)
                                   : fmt::format("falló, código {}", e.codigo);
    return fmt::format(", la última {} ({})", utcIso(*e.ultima), como);
}

std::string cuandoToca(const Estacion& estacion) {
    const auto& e = *estacion.ejecuciones;
    if (!e.encendida) return fmt::format(", apagada: sudo systemctl enable --now {}.timer", estacion.unidad);
    return e.proxima ? fmt::format(", la próxima {}", utcIso(*e.proxima)) : "";
}

std::string linea(const Estacion& estacion) {
    const auto& a = *estacion.ajustes;
    std::string texto = fmt::format("{}: COM{}", a.nombre, a.com.front());
    if (!a.serie.empty()) texto += fmt::format(", registrador {}", a.serie);
    if (!a.como.empty()) texto += fmt::format(", como {}", a.como);
    if (estacion.ejecuciones) texto += comoFue(estacion) + cuandoToca(estacion);
    if (!estacion.ultimaImagen.empty()) texto += fmt::format(", última imagen {}", estacion.ultimaImagen);
    return sinControles(texto) + "\n";
}

std::string nombreDe(const std::string& unidad) {
    return unidad.substr(unidad.find('@') + 1);
}

// Timers that start nothing that is wanted: their file is gone, or says that it is another unit's turn.
std::vector<std::string> sobrantes(const EntornoCli& entorno, const std::vector<Estacion>& estaciones) {
    auto todos = temporizadoresDeEstaciones(entorno.systemctl);
    std::erase_if(todos, [&](const std::string& unidad) {
        return std::ranges::any_of(estaciones, [&](const Estacion& una) {
            return una.ajustes ? una.unidad == unidad : una.archivo.stem() == nombreDe(unidad);
        });
    });
    std::ranges::sort(todos, {}, nombreDe);
    return todos;
}

std::string lineaDeSobrante(const std::string& unidad, const std::vector<Estacion>& estaciones) {
    const auto nombre = nombreDe(unidad);
    const bool conArchivo =
        std::ranges::any_of(estaciones, [&](const Estacion& una) { return una.archivo.stem() == nombre; });
    return sinControles(fmt::format("{}: {}: sudo systemctl disable --now {}", nombre,
                                    conArchivo ? "tiene además otro temporizador, que no es el suyo"
                                               : "ya no tiene archivo, y su temporizador sigue encendido",
                                    palabraDeConsola(unidad + ".timer"))) +
           "\n";
}

void listar(ContextoCli& contexto, const OpcionesEstaciones& opciones) {
    auto& consola = contexto.consola;
    std::vector<Estacion> estaciones;
    const fs::path carpeta = opciones.en ? fs::path(*opciones.en)
                                         : contexto.entorno.estaciones.value_or(TELVANE_CARPETA_ESTACIONES);
    for (const auto& archivo : archivosDe(carpeta, opciones.en.has_value()))
        estaciones.push_back(leerEstacion(archivo));
    if (estaciones.empty())
        consola.aviso(
            fmt::format("no hay archivos de estación (.conf) en {}: haga uno con el ejemplo de "
                        "/usr/share/doc/telvane-cli/examples/estacion.conf",
                        nombreVisible(carpeta)));
    if (!preguntarCuando(contexto.entorno, estaciones))
        consola.aviso("aquí no corre systemd: no se sabe cuándo fue la última vez ni cuándo será la próxima");
    std::string texto;
    auto lista = Json::lista();
    std::size_t malas = 0;
    for (const auto& una : estaciones) {
        lista.agregar(objeto(una));
        if (una.ajustes) {
            texto += linea(una);
        } else {
            ++malas;
            consola.aviso(una.error);
        }
    }
    // Of another folder's files systemd knows nothing.
    const auto sobran = opciones.en ? std::vector<std::string>() : sobrantes(contexto.entorno, estaciones);
    auto deMas = Json::lista();
    for (const auto& unidad : sobran) {
        texto += lineaDeSobrante(unidad, estaciones);
        deMas.agregar(unidad);
    }
    Json json;
    json.poner("estaciones", std::move(lista));
    json.poner("temporizadores_de_mas", std::move(deMas));
    consola.resultado(opciones.json ? json.conSangria() : texto);
    if (malas > 0)
        throw ErrorCli(CodigoSalida::fallo,
                       fmt::format("archivos de estación que no se entienden: {}", malas));
}

// For the program that downloads: one NAME=value a line, as often as it has values.
void darValores(ContextoCli& contexto, const OpcionesEstaciones& opciones) {
    const auto clase = opciones.nocturna ? ClaseAjustes::nocturna : ClaseAjustes::estacion;
    AjustesDescarga a;
    try {
        a = leerAjustes(opciones.valores, clase);
    } catch (const ErrorAjustes& error) {
        throw ErrorCli(CodigoSalida::malUso, error.what());
    }
    std::string texto;
    const auto dar = [&](std::string_view nombre, const std::string& valor) {
        if (!valor.empty()) texto += fmt::format("{}={}\n", nombre, valor);
    };
    dar("NOMBRE", a.nombre);
    for (const auto& par : a.com) dar("COM", par);
    dar("CARPETA", opciones.nocturna && a.carpeta.empty() ? TELVANE_CARPETA_DESCARGAS : carpetaDe(a));
    dar("PERFIL", a.perfil);
    for (const auto& palabra : a.opciones) dar("OPCION", palabra);
    if (!opciones.nocturna) {
        dar("DISPOSITIVO", a.dispositivo());
        dar("SERIE", a.serie);
        dar("COMO", a.como);
        dar("ARCHIVO", archivoDe(a));
        dar("ARCHIVO_PEDIDO", a.archivo.empty() && a.central.empty() ? "" : "si");
        dar("CENTRAL", a.central);
        dar("HASTA", a.hasta);
        dar("RED", a.red() ? "si" : "");
    }
    contexto.consola.resultado(texto);
}

// What one of the two things that the command does would not look at.
void exigirQueVayanJuntas(const OpcionesEstaciones& opciones) {
    const bool valores = !opciones.valores.empty();
    exigirUso(valores || !opciones.nocturna, "--nocturna va con --valores ARCHIVO");
    exigirUso(!valores || !opciones.json, "--valores no va con --json");
    exigirUso(!valores || !opciones.en, "--valores no va con --en");
}

}  // namespace

void declararEstaciones(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden = argumentos.orden("estaciones", "Muestra las estaciones que se descargan de noche");
    const auto opciones = std::make_shared<OpcionesEstaciones>();
    orden.opcion(opciones->en, {.nombre = "--en",
                                .valor = "CARPETA",
                                .ayuda = "Carpeta de sus archivos; " TELVANE_CARPETA_ESTACIONES " si falta"});
    orden.bandera(opciones->json, "--json", "Un objeto JSON");
    orden.opcion(opciones->valores, {.nombre = "--valores",
                                     .valor = "ARCHIVO",
                                     .ayuda = "Los ajustes de ese archivo, para quien descarga"});
    orden.bandera(opciones->nocturna, "--nocturna",
                  "El de --valores es el de la descarga de una sola estación");
    orden.alElegir([&contexto, opciones] {
        contexto.orden = [&contexto, opciones] {
            exigirQueVayanJuntas(*opciones);
            opciones->valores.empty() ? listar(contexto, *opciones) : darValores(contexto, *opciones);
        };
    });
}

}  // namespace telvane
