// telvane-historico incorporar
#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "consola/json.h"
#include "consola/nombres.h"
#include "consola/progreso.h"
#include "historico/ficha.h"
#include "historico/ordenes.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/archivo.h"
#include "platform/contados.h"
#include "platform/minusculas.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kTuberia = "-";

struct OpcionesIncorporar {
    std::vector<std::string> archivos;
    std::optional<std::string> serie;
    std::optional<std::string> como;
    bool json = false;
};

// What another system writes beside a file on a stick, under its name with this before it.
bool acompanaAOtro(const fs::path& ruta) {
    constexpr std::string_view kDelante = "._";
    const auto nombre = ruta.filename().string();
    std::error_code ninguno;
    return nombre.starts_with(kDelante) &&
           fs::exists(ruta.parent_path() / nombre.substr(kDelante.size()), ninguno);
}

// What our programs have not finished ends otherwise.
bool esArchivoBase(const fs::path& ruta) {
    return !acompanaAOtro(ruta) && enMinusculas(ruta.extension().string()) == ".rgt";
}

// The base files in a folder, by name. Throws fs::filesystem_error.
std::vector<std::string> archivosBaseEn(const std::string& carpeta) {
    std::vector<std::string> suyos;
    std::error_code ninguno;
    for (const auto& entrada : fs::directory_iterator(carpeta)) {
        if (esArchivoBase(entrada.path()) && !fs::is_directory(entrada.path(), ninguno))
            suyos.push_back(entrada.path().string());
    }
    std::sort(suyos.begin(), suyos.end());
    return suyos;
}

struct PorIncorporar {
    std::string archivo;
    // Why there is nothing to be read of it; empty: nobody has tried yet.
    std::string motivo = {};
};

// A folder stands for the base files in it; one that cannot be read for itself.
std::vector<PorIncorporar> expandir(const std::vector<std::string>& dados) {
    std::vector<PorIncorporar> lista;
    for (const auto& dado : dados) {
        std::error_code ninguno;
        if (dado == kTuberia || !fs::is_directory(dado, ninguno)) {
            lista.push_back({dado});
            continue;
        }
        try {
            for (auto& suyo : archivosBaseEn(dado)) lista.push_back({std::move(suyo)});
        } catch (const fs::filesystem_error& error) {
            const auto motivo = motivoSistema(error.code().value());
            lista.push_back({dado, fmt::format("no se pudo leer la carpeta: {}", motivo)});
        }
    }
    return lista;
}

std::string objeto(const std::string& archivo, const Incorporacion& i) {
    Json json;
    json.poner("archivo", archivo);
    json.poner("estacion", i.estacion);
    json.poner("imagen", textoDe(i.imagen));
    json.poner("repetida", i.repetida);
    json.poner("parcial", i.parcial);
    json.poner("muestras", i.muestras);
    json.poner("nuevas", i.nuevas);
    json.poner("conflictos", i.conflictos);
    json.poner("vacios", i.vacios);
    json.poner("descartados", i.descartados);
    return json.enUnaLinea();
}

std::string linea(const std::string& archivo, const Incorporacion& i) {
    return fmt::format("{}: estación {}, {} muestras, {} nuevas, {} en conflicto\n", nombreVisible(archivo),
                       i.estacion, i.muestras, i.nuevas, i.conflictos);
}

class Tanda {
   public:
    Tanda(ContextoHistorico& contexto, const OpcionesIncorporar& opciones)
        : contexto_(contexto),
          opciones_(opciones),
          almacen_(contexto.abrir(Uso::incorporar)),
          archivo_(*almacen_),
          relato_(contexto.consola) {}

    // Throws ErrorCli where a file failed, each of which was told, or could not be told of.
    void correr(const std::vector<PorIncorporar>& archivos) {
        const auto fallidos = todos(archivos);
        relato_.terminar(fallidos == 0 ? ""
                                       : fmt::format("{} de {} sin incorporar", fallidos,
                                                     contados(std::ssize(archivos), "archivo", "archivos")),
                         "lo incorporado está dentro: véalo con telvane-historico imagenes");
    }

   private:
    // How many failed.
    std::size_t todos(const std::vector<PorIncorporar>& archivos) {
        Progreso progreso(contexto_.consola, contexto_.entorno.reloj, archivos.size(), {"archivos"});
        std::size_t fallidos = 0;
        for (std::size_t i = 0; i < archivos.size(); ++i) {
            contexto_.atender();
            const auto& [archivo, motivo] = archivos[i];
            if (!(motivo.empty() ? una(archivo) : fallar(archivo, motivo))) ++fallidos;
            progreso.avance(i + 1);
        }
        return fallidos;
    }

    bool una(const std::string& archivo) {
        try {
            const auto bytes = leer(archivo);
            const auto hecha =
                archivo_.incorporar(bytes, {opciones_.serie, opciones_.como},
                                    {archivo, contexto_.entorno.ahora(), fichaDe(archivo, bytes)});
            relato_.decir(opciones_.json ? objeto(archivo, hecha) : linea(archivo, hecha));
            if (hecha.repuesta) {
                contexto_.consola.aviso(
                    fmt::format("{}: esa imagen se había perdido en el archivo, y vuelve a estar: vea "
                                "telvane-historico comprobar",
                                nombreVisible(archivo)));
            }
            if (hecha.pareceAjena) {
                contexto_.consola.aviso(fmt::format(
                    "{}: más de la mitad de sus horas ya tenían otros datos en la estación {}: si es de otro "
                    "registrador con el mismo número de serie, haga un archivo nuevo y déle allí otra "
                    "estación con --como NOMBRE; si alguien atrasó el reloj, está bien",
                    nombreVisible(archivo), hecha.estacion));
            }
            if (hecha.parcial) {
                contexto_.consola.aviso(fmt::format("{}: imagen parcial, {} de {}", nombreVisible(archivo),
                                                    contados(std::ssize(bytes), "byte", "bytes"),
                                                    kBytesMemoria));
            }
            return true;
        } catch (const ErrorImagen& error) {
            return fallar(archivo, error.what());
        } catch (const ErrorLectura& error) {
            contexto_.consola.aviso(error.what());
            return false;
        } catch (const ErrorAlmacen& error) {
            // Each of the others would wait as long.
            if (error.clase() == ErrorAlmacen::Clase::agotada) throw;
            return fallar(archivo, error.what());
        }
    }

    bool fallar(const std::string& archivo, const std::string& que) {
        contexto_.consola.aviso(fmt::format("{}: {}", nombreVisible(archivo), que));
        return false;
    }

    // Without it the image counts as much.
    std::optional<FichaDescarga> fichaDe(const std::string& archivo, BytesImagen bytes) {
        if (archivo == kTuberia) return std::nullopt;
        auto hallada = fichaJuntoA({archivo, bytes, contexto_.entorno.ahora()});
        const auto* conCual =
            hallada.ficha ? "la imagen se incorpora con la otra ficha" : "la imagen se incorpora sin ella";
        for (const auto& defecto : hallada.defectos)
            contexto_.consola.aviso(fmt::format("{}; {}", sinControles(defecto), conCual));
        return std::move(hallada.ficha);
    }

    std::vector<std::uint8_t> leer(const std::string& archivo) {
        // One byte more than an image shows that it is none.
        constexpr auto kMaximo = kBytesMemoria + 1;
        if (archivo == kTuberia) return contexto_.consola.leerEntrada(kMaximo);
        return leerArchivo(archivo, kMaximo);
    }

    ContextoHistorico& contexto_;
    const OpcionesIncorporar& opciones_;
    std::unique_ptr<Almacen> almacen_;
    Archivo archivo_;
    Relato relato_;
};

void incorporar(ContextoHistorico& contexto, const OpcionesIncorporar& opciones) {
    const auto archivos = expandir(opciones.archivos);
    std::vector<std::string> leidos;
    leidos.reserve(archivos.size());
    for (const auto& una : archivos) leidos.push_back(una.archivo);
    contexto.exigirFlujosLibres(leidos);
    Tanda(contexto, opciones).correr(archivos);
    if (archivos.empty()) contexto.consola.aviso("no hay archivos .rgt que incorporar");
}

}  // namespace

void declararIncorporar(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden = argumentos.orden("incorporar", "Incorpora archivos base (.rgt), o los de una carpeta");
    const auto opciones = std::make_shared<OpcionesIncorporar>();
    orden.opcion(opciones->archivos, {.nombre = "ARCHIVO",
                                      .valor = "",
                                      .ayuda = "Archivos base, o carpetas con ellos; - es la entrada",
                                      .obligatoria = true});
    orden.opcion(opciones->serie, {.nombre = "--serie",
                                   .valor = "CIFRAS",
                                   .ayuda = "Número de serie, 8 cifras, de una imagen que no lo lleva",
                                   .comprobar = motivoSerieMostrada});
    orden.opcion(opciones->como, {.nombre = "--como",
                                  .valor = "NOMBRE",
                                  .ayuda = "Otro registrador con el mismo número: la estación SERIE/NOMBRE",
                                  .comprobar = motivoNombre});
    orden.bandera(opciones->json, "--json", "Un objeto JSON por archivo");
    orden.alElegir([&contexto, opciones] {
        contexto.orden = [&contexto, opciones] { incorporar(contexto, *opciones); };
    });
}

}  // namespace telvane
