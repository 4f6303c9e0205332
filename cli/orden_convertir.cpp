// telvane-cli convertir
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "cli/argumentos.h"
#include "cli/codigos_salida.h"
#include "cli/conversion.h"
#include "cli/ordenes.h"
#include "data/sello.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/archivo.h"
#include "platform/guardado.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kTuberia = "-";

struct Opciones {
    std::vector<std::string> archivos;
    std::string carpeta;
    std::string formato;
    std::string serie;
    std::string perfil = "estricto";
};

// What all images of one run share.
struct Trabajo {
    Formato formato;
    Perfil perfil;
    OrigenConfig origen;
    FechaHora momento;
};

struct Par {
    std::string entrada;
    std::string salida;
};

std::string motivoFormato(const std::string& texto) {
    return leerFormato(texto) ? "" : "debe ser csv, xls o jsonl";
}

// As asked for, or as the output's name tells.
Formato formatoDe(const Opciones& opciones) {
    if (!opciones.formato.empty()) return leerFormato(opciones.formato).value();
    if (!opciones.carpeta.empty()) return Formato::csv;
    const auto ending = fs::path(opciones.archivos.back()).extension().string();
    return leerFormato(std::string_view(ending).substr(ending.empty() ? 0 : 1)).value_or(Formato::csv);
}

std::vector<Par> pares(const Opciones& opciones, Formato formato) {
    if (opciones.carpeta.empty()) {
        if (opciones.archivos.size() != 2) {
            throw ErrorCli(CodigoSalida::malUso,
                           "se esperan ENTRADA y SALIDA, o --en CARPETA y las entradas");
        }
        return {{opciones.archivos[0], opciones.archivos[1]}};
    }
    std::vector<Par> lista;
    std::set<std::string> usadas;
    for (const auto& entrada : opciones.archivos) {
        if (entrada == kTuberia) throw ErrorCli(CodigoSalida::malUso, "--en no admite la entrada -");
        auto salida = fs::path(opciones.carpeta) / fs::path(entrada).stem();
        salida += extension(formato);
        if (!usadas.insert(salida.string()).second) {
            throw ErrorCli(CodigoSalida::malUso, fmt::format("dos entradas darían {}", salida.string()));
        }
        lista.push_back({entrada, salida.string()});
    }
    return lista;
}

// A file and what is to be told about it.
struct Convertido {
    ArchivoDatos archivo;
    std::string aviso;
};

// The image's first bytes stand where the converter reads them.
Convertido convertirImagen(Conversor& conversor, const Trabajo& trabajo, std::size_t bytes) {
    auto archivo =
        conversor.convertir(bytes, trabajo.formato, trabajo.perfil, trabajo.momento, trabajo.origen);
    auto aviso = archivo.recuento.texto();
    if (bytes < kBytesMemoria) {
        aviso += fmt::format("\naviso: hay {} bytes de los {} de una imagen completa", bytes, kBytesMemoria);
    }
    return {std::move(archivo), std::move(aviso)};
}

std::size_t leerTuberia(Consola& consola, std::span<std::uint8_t> destino) {
    const auto imagen = consola.leerEntrada(destino.size());
    std::copy(imagen.begin(), imagen.end(), destino.begin());
    return imagen.size();
}

void convertirUna(ContextoCli& contexto, const Trabajo& trabajo, const Par& par) {
    Conversor conversor;
    const auto bytes = par.entrada == kTuberia ? leerTuberia(contexto.consola, conversor.destino())
                                               : leerArchivo(par.entrada, conversor.destino());
    const auto convertido = convertirImagen(conversor, trabajo, bytes);
    if (par.salida == kTuberia) {
        contexto.consola.resultado(convertido.archivo.bytes());
    } else {
        guardarAtomico(par.salida, convertido.archivo.bytes());
    }
    contexto.consola.aviso(convertido.aviso);
}

// Many images on all processors; the loop meanwhile only listens to signals, which end the run between two
// images.
class Tanda {
   public:
    Tanda(ContextoCli& contexto, const Trabajo& trabajo, const std::vector<Par>& lista)
        : contexto_(contexto),
          trabajo_(trabajo),
          lista_(lista),
          aviso_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        if (aviso_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    Tanda(const Tanda&) = delete;
    Tanda& operator=(const Tanda&) = delete;
    ~Tanda() { ::close(aviso_); }

    // Number of images that failed; each was told.
    std::size_t correr() {
        const auto vigilancia = contexto_.entorno.bucle.vigilarLectura(aviso_, [this] { acabados_ = true; });
        std::vector<std::jthread> obreros;
        const auto cuantos = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, lista_.size());
        enMarcha_ = cuantos;
        for (std::size_t i = 0; i < cuantos; ++i) obreros.emplace_back([this] { trabajar(); });
        try {
            while (!esperar(
                contexto_.entorno, [this] { return acabados_; }, std::chrono::hours(1)))
                continue;
        } catch (...) {
            siguiente_ = lista_.size();
            throw;
        }
        return fallidas_;
    }

   private:
    void trabajar() {
        Conversor conversor;
        for (std::size_t i = siguiente_++; i < lista_.size(); i = siguiente_++) {
            const auto& par = lista_[i];
            std::string texto;
            try {
                const auto convertido =
                    convertirImagen(conversor, trabajo_, leerArchivo(par.entrada, conversor.destino()));
                // Reading the process's file mode mask, which a save does, means setting it for a moment.
                const std::scoped_lock cerrojo(guardando_);
                guardarAtomico(par.salida, convertido.archivo.bytes());
                texto = convertido.aviso;
            } catch (const std::exception& error) {
                ++fallidas_;
                texto = error.what();
            }
            const std::scoped_lock cerrojo(turno_);
            contexto_.consola.aviso(fmt::format("{}: {}", par.entrada, texto));
        }
        if (--enMarcha_ == 0) ::eventfd_write(aviso_, 1);
    }

    ContextoCli& contexto_;
    const Trabajo& trabajo_;
    const std::vector<Par>& lista_;
    int aviso_;
    bool acabados_ = false;
    std::atomic<std::size_t> siguiente_ = 0;
    std::atomic<std::size_t> enMarcha_ = 0;
    std::atomic<std::size_t> fallidas_ = 0;
    std::mutex guardando_;
    std::mutex turno_;
};

void convertir(ContextoCli& contexto, const Opciones& opciones) {
    Trabajo trabajo{.formato = formatoDe(opciones),
                    .perfil = leerPerfil(opciones.perfil),
                    .origen = {},
                    .momento = contexto.entorno.reloj.ahora()};
    if (!opciones.serie.empty()) trabajo.origen.serie = opciones.serie;
    const auto lista = pares(opciones, trabajo.formato);
    if (lista.size() == 1) {
        convertirUna(contexto, trabajo, lista.front());
        return;
    }
    const auto fallidas = Tanda(contexto, trabajo, lista).correr();
    if (fallidas > 0) {
        throw ErrorCli(CodigoSalida::fallo,
                       fmt::format("{} de {} archivos sin convertir", fallidas, lista.size()));
    }
}

}  // namespace

void declararConvertir(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden = argumentos.orden("convertir", "Convierte archivos base (.rgt) sin el registrador");
    const auto opciones = std::make_shared<Opciones>();
    orden.opcion(opciones->archivos,
                 {.nombre = "ARCHIVO",
                  .valor = "",
                  .ayuda = "ENTRADA SALIDA; con --en, todas las entradas. - es la tubería",
                  .obligatoria = true});
    orden.opcion(opciones->carpeta,
                 {.nombre = "--en",
                  .valor = "CARPETA",
                  .ayuda = "Carpeta de las salidas, cada una con el nombre de su entrada"});
    orden.opcion(opciones->formato, {.nombre = "--formato",
                                     .valor = "FORMATO",
                                     .ayuda = "csv, xls o jsonl; si falta, el de la SALIDA, o csv",
                                     .comprobar = motivoFormato});
    orden.opcion(opciones->serie, {.nombre = "--serie",
                                   .valor = "CIFRAS",
                                   .ayuda = "Número de serie, 8 cifras; si falta, el de la imagen",
                                   .comprobar = motivoSerie});
    orden.opcion(opciones->perfil, {.nombre = "--perfil",
                                    .valor = "PERFIL",
                                    .ayuda = "Fechas que valen: estricto (2001 a 2019) o ampliado",
                                    .comprobar = motivoPerfil});
    orden.alElegir([&contexto, opciones] {
        contexto.orden = [&contexto, opciones] { convertir(contexto, *opciones); };
    });
}

}  // namespace telvane
