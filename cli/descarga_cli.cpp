#include "cli/descarga_cli.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>

#include <fmt/format.h>

#include "cli/archivo_parcial.h"
#include "cli/codigos_salida.h"
#include "cli/progreso.h"
#include "data/muestra.h"
#include "link/puerto_serie.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"
#include "ui/textos.h"

namespace telvane {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kRegistro = registro_muestra::kBytes;

bool borrado(std::span<const std::uint8_t> registro) {
    const auto todos = [&](std::uint8_t valor) {
        return std::all_of(registro.begin(), registro.end(), [&](std::uint8_t b) { return b == valor; });
    };
    return todos(0xFF) || todos(0x00);
}

// The header's clock and its reserved bytes belong to the running logger.
std::size_t firmes(std::size_t desde) {
    if (desde >= registro_config::kCabecera) return kRegistro;
    if (desde >= registro_config::kReloj) return 0;
    return std::min(kRegistro, registro_config::kReloj - desde);
}

// Long enough for the logger to give the broken exchange up, and for an adapter to come back.
constexpr std::chrono::seconds kEntreIntentos{2};

void decir(Consola& consola, const std::exception_ptr& fallo) {
    try {
        std::rethrow_exception(fallo);
    } catch (const std::exception& error) {
        consola.aviso(error.what());
    }
}

class Descargador {
   public:
    Descargador(EntornoCli& entorno, Consola& consola, RegistradorCli& registrador,
                const PeticionDescarga& peticion)
        : entorno_(entorno), consola_(consola), registrador_(registrador), peticion_(peticion) {
        if (!peticion.base.empty()) parcial_.emplace(peticion.base);
    }

    Bytes correr(const std::string& serie);

   private:
    void revisarAnterior(const std::string& serie);
    void leerHastaQueValga();
    std::exception_ptr intentar();
    std::exception_ptr cotejar() const;
    void decirResto();

    EntornoCli& entorno_;
    Consola& consola_;
    RegistradorCli& registrador_;
    const PeticionDescarga& peticion_;
    std::optional<ArchivoParcial> parcial_;
    Bytes imagen_;    // of the running attempt
    Bytes anterior_;  // of the attempt that got furthest before it
};

// What an earlier run left is worth keeping until it is overtaken, if it comes from this logger.
void Descargador::revisarAnterior(const std::string& serie) {
    if (!parcial_ || parcial_->contenido().empty()) return;
    const auto empacada = empacarSerie(serie);
    if (std::equal(empacada.begin(), empacada.end(), parcial_->contenido().begin())) {
        consola_.aviso(fmt::format("{} conserva {} bloques de una descarga anterior",
                                   parcial_->ruta().string(), parcial_->contenido().size() / kBytesBloque));
        return;
    }
    parcial_->apartar();
    consola_.aviso(fmt::format("{} era de otro registrador y se guardó como {}.anterior",
                               parcial_->ruta().string(), parcial_->ruta().string()));
}

Bytes Descargador::correr(const std::string& serie) {
    try {
        revisarAnterior(serie);
        leerHastaQueValga();
        if (parcial_) parcial_->terminar();
    } catch (...) {
        decirResto();
        throw;
    }
    return std::move(imagen_);
}

void Descargador::leerHastaQueValga() {
    int reintentos = peticion_.reintentos;
    while (true) {
        auto fallo = intentar();
        if (!fallo) fallo = cotejar();
        const bool segunda = anterior_.size() == kBytesMemoria;
        if (!fallo && (segunda || !peticion_.verificar)) return;
        if (imagen_.size() >= anterior_.size()) anterior_ = imagen_;
        if (!fallo) {
            consola_.aviso("Segunda lectura, para comparar.");
            continue;
        }
        if (reintentos-- == 0) std::rethrow_exception(fallo);
        decir(consola_, fallo);
        consola_.aviso(fmt::format("Se vuelve a empezar; reintentos que quedan: {}.", reintentos));
        pausar(entorno_, kEntreIntentos);
    }
}

// Null: every block came; otherwise what another attempt may mend.
std::exception_ptr Descargador::intentar() {
    imagen_.clear();
    imagen_.reserve(kBytesMemoria);
    Progreso progreso(consola_, entorno_.reloj, kBloquesMemoria);
    try {
        registrador_.descargar([&](std::size_t numero, RegistradorCli::Bloque bloque) {
            if (parcial_) parcial_->escribir(numero, bloque);
            imagen_.insert(imagen_.end(), bloque.begin(), bloque.end());
            progreso.avance(numero + 1);
        });
    } catch (const ErrorIntercambio&) {
        return std::current_exception();
    } catch (const ErrorPuerto&) {
        return std::current_exception();
    }
    return nullptr;
}

// Null: nothing contradicts the attempts before.
std::exception_ptr Descargador::cotejar() const {
    const auto bloque = primeraDiferencia(anterior_, imagen_);
    if (!bloque) return nullptr;
    return std::make_exception_ptr(ErrorIntercambio(
        CodigoSalida::fallo,
        fmt::format("el bloque {} no coincide con la lectura anterior: revise el cable", *bloque)));
}

void Descargador::decirResto() {
    if (!parcial_ || parcial_->contenido().empty()) return;
    consola_.aviso(fmt::format("En {} quedan {} de {} bloques.", parcial_->ruta().string(),
                               parcial_->contenido().size() / kBytesBloque, kBloquesMemoria));
}

}  // namespace

std::vector<std::uint8_t> descargarImagen(EntornoCli& entorno, Consola& consola, RegistradorCli& registrador,
                                          const std::string& serie, const PeticionDescarga& peticion) {
    const auto despierta =
        entorno.inhibidor ? entorno.inhibidor->inhibir(std::string(textos::kPorQueDespierta)) : nullptr;
    return Descargador(entorno, consola, registrador, peticion).correr(serie);
}

std::optional<std::size_t> primeraDiferencia(std::span<const std::uint8_t> antes,
                                             std::span<const std::uint8_t> ahora) {
    const std::size_t comun = std::min(antes.size(), ahora.size());
    for (std::size_t desde = 0; desde + kRegistro <= comun; desde += kRegistro) {
        const auto viejo = antes.subspan(desde, kRegistro);
        const auto nuevo = ahora.subspan(desde, kRegistro);
        const auto cuantos = static_cast<std::ptrdiff_t>(firmes(desde));
        if (std::equal(viejo.begin(), viejo.begin() + cuantos, nuevo.begin())) continue;
        if (desde >= registro_config::kCabecera && borrado(viejo)) continue;
        return desde / kBytesBloque;
    }
    return std::nullopt;
}

}  // namespace telvane
