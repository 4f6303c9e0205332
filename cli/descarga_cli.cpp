#include "cli/descarga_cli.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "cli/archivo_parcial.h"
#include "cli/cotejo_lecturas.h"
#include "cli/error_intercambio.h"
#include "consola/codigos_salida.h"
#include "consola/progreso.h"
#include "link/puerto_serie.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/contados.h"
#include "platform/texto_visible.h"
#include "ui/textos.h"

namespace telvane {

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Lectura {
    Bytes bytes;
    std::chrono::nanoseconds comienzo{0};  // monotonic
};

// The image's own number counts.
void decirOtraSerie(Consola& consola, const std::string& leida, std::span<const std::uint8_t> imagen) {
    const auto propia = leerCabecera(imagen).digitosSerie;
    if (propia == leida) return;
    consola.aviso(fmt::format(
        "La configuración leída dice Nro {} y la memoria, Nro {}: vale el de la memoria.", leida, propia));
}

class Descargador {
   public:
    Descargador(EntornoCli& entorno, Consola& consola, RegistradorCli& registrador,
                const PeticionDescarga& peticion)
        : entorno_(entorno), consola_(consola), registrador_(registrador), peticion_(peticion) {
        if (peticion.base) {
            parcial_.emplace(*peticion.base, [](std::size_t desde, auto antes, auto ahora) {
                return !primeraDiferencia(antes, ahora, desde);
            });
        }
    }

    ImagenDescargada correr();

   private:
    std::int64_t bloquesEnElParcial() const;
    std::string loQueHayEnElParcial() const;
    void decirAnterior();
    void recibir(RegistradorCli::Bloque bloque);
    void leerHastaQueValga();
    std::exception_ptr intentar();
    std::exception_ptr exigirSerie() const;
    void recordar();
    bool repiteOtra() const;
    bool cabeceraRepetida() const;
    std::exception_ptr cotejar() const;
    bool basta();
    void decirResto();

    EntornoCli& entorno_;
    Consola& consola_;
    RegistradorCli& registrador_;
    const PeticionDescarga& peticion_;
    std::optional<ArchivoParcial> parcial_;
    Lectura lectura_;                    // of the running attempt
    Lectura anterior_;                   // of the attempt that got furthest before it
    std::vector<Lectura> contradichas_;  // whole ones before that, of which none has agreed with another yet
    bool cabeceraEnDuda_ = false;        // one more reading was asked for its sake
    int gastados_ = 0;
};

std::int64_t Descargador::bloquesEnElParcial() const {
    return static_cast<std::int64_t>(parcial_->contenido().size() / kBytesBloque);
}

std::string Descargador::loQueHayEnElParcial() const {
    if (const auto bloques = bloquesEnElParcial(); bloques > 0) return contados(bloques, "bloque", "bloques");
    const auto bytes = static_cast<std::int64_t>(parcial_->contenido().size());
    return fmt::format("menos de un bloque ({})", contados(bytes, "byte", "bytes"));
}

void Descargador::decirAnterior() {
    if (!parcial_ || parcial_->contenido().empty()) return;
    consola_.aviso(fmt::format("{} conserva {} de una descarga anterior", nombreVisible(parcial_->ruta()),
                               loQueHayEnElParcial()));
}

// The block is on the disk before anything else is done with it.
void Descargador::recibir(RegistradorCli::Bloque bloque) {
    lectura_.bytes.insert(lectura_.bytes.end(), bloque.begin(), bloque.end());
    if (!parcial_) return;
    if (const auto aparte = parcial_->recibir(lectura_.bytes)) {
        consola_.aviso(fmt::format("{} no coincide con lo que se lee ahora y se guardó como {}",
                                   nombreVisible(parcial_->ruta()), nombreVisible(*aparte)));
    }
}

ImagenDescargada Descargador::correr() {
    try {
        decirAnterior();
        leerHastaQueValga();
        if (parcial_) parcial_->terminar(lectura_.bytes);
    } catch (...) {
        decirResto();
        throw;
    }
    return {.bytes = std::move(lectura_.bytes), .reintentos = gastados_};
}

void Descargador::leerHastaQueValga() {
    Reintentos reintentos(entorno_, consola_, peticion_.reintentos);
    while (true) {
        auto fallo = intentar();
        // What bears another number is compared with nothing.
        const auto deOtro = fallo ? nullptr : exigirSerie();
        if (!fallo) fallo = deOtro ? deOtro : cotejar();
        if (!fallo && basta()) return;
        if (!deOtro && lectura_.bytes.size() >= anterior_.bytes.size()) recordar();
        if (!fallo) continue;
        reintentos.gastar(fallo);
        ++gastados_;
    }
}

// What contradicts nothing: whether no further reading is needed. What the logger may change by itself is
// read once more where it differs; where it does so again, it is the logger's.
bool Descargador::basta() {
    if (!peticion_.verificar) return true;
    if (anterior_.bytes.size() < kBytesMemoria) {
        consola_.aviso("Segunda lectura, para comparar.");
        return false;
    }
    if (cabeceraRepetida()) return true;
    consola_.aviso(cabeceraEnDuda_
                       ? "El reloj de la cabecera, o lo que hay detrás de él, cambia de una lectura a otra: "
                         "queda como se leyó la última vez."
                       : "El reloj de la cabecera, o lo que hay detrás de él, no se leyó dos veces igual: se "
                         "lee otra vez.");
    return std::exchange(cabeceraEnDuda_, true);
}

// Null: every block came; otherwise what another attempt may mend.
std::exception_ptr Descargador::intentar() {
    lectura_ = {.bytes = {}, .comienzo = entorno_.reloj.monotono()};
    lectura_.bytes.reserve(kBytesMemoria);
    if (parcial_) parcial_->empezar();
    Progreso progreso(consola_, entorno_.reloj, kBloquesMemoria, {"bloques", kBytesBloque});
    try {
        registrador_.descargar([&](std::size_t numero, RegistradorCli::Bloque bloque) {
            recibir(bloque);
            progreso.avance(numero + 1);
        });
    } catch (const ErrorIntercambio&) {
        return std::current_exception();
    } catch (const ErrorPuerto&) {
        return std::current_exception();
    }
    return nullptr;
}

// Null: the image is the logger's that was asked for.
std::exception_ptr Descargador::exigirSerie() const {
    const auto propia = leerCabecera(lectura_.bytes).digitosSerie;
    if (peticion_.serie.empty() || peticion_.serie == propia) return nullptr;
    return std::make_exception_ptr(ErrorIntercambio(
        CodigoSalida::fallo,
        fmt::format("la memoria descargada lleva el Nro {}, no el {}: revise los cables, o el número de "
                    "--serie, y repita",
                    propia, peticion_.serie)));
}

void Descargador::recordar() {
    constexpr std::size_t kCuantas = 4;
    if (anterior_.bytes.size() == kBytesMemoria) contradichas_.push_back(std::move(anterior_));
    if (contradichas_.size() > kCuantas) contradichas_.erase(contradichas_.begin());
    anterior_ = lectura_;
}

// One damaged reading may stand between two that agree.
bool Descargador::repiteOtra() const {
    return lectura_.bytes.size() == kBytesMemoria &&
           std::ranges::any_of(contradichas_, [&](const Lectura& otra) {
               return !primeraDiferencia(otra.bytes, lectura_.bytes);
           });
}

// Of a whole one.
bool Descargador::cabeceraRepetida() const {
    const auto repite = [&](const Lectura& otra) {
        return !primeraDiferencia(otra.bytes, lectura_.bytes) &&
               mismaCabecera(otra.bytes, lectura_.bytes, lectura_.comienzo - otra.comienzo);
    };
    return repite(anterior_) || std::ranges::any_of(contradichas_, repite);
}

// Null: nothing contradicts the attempts before, or two whole ones say the same.
std::exception_ptr Descargador::cotejar() const {
    const auto bloque = primeraDiferencia(anterior_.bytes, lectura_.bytes);
    if (!bloque || repiteOtra()) return nullptr;
    return std::make_exception_ptr(ErrorIntercambio(
        CodigoSalida::fallo, fmt::format("el bloque {} no coincide con la lectura anterior: revise {}",
                                         *bloque, registrador_.queRevisarSiHayRuido())));
}

void Descargador::decirResto() {
    if (!parcial_ || parcial_->contenido().empty()) return;
    const auto donde = nombreVisible(parcial_->ruta());
    const auto cuantos = bloquesEnElParcial();
    if (cuantos == 0) return consola_.aviso(fmt::format("En {} queda {}.", donde, loQueHayEnElParcial()));
    consola_.aviso(fmt::format("En {} {} {} de {} bloques.", donde, cuantos == 1 ? "queda" : "quedan",
                               cuantos, kBloquesMemoria));
}

}  // namespace

ImagenDescargada descargarImagen(EntornoCli& entorno, Consola& consola, RegistradorCli& registrador,
                                 const PeticionDescarga& peticion) {
    const auto despierta =
        entorno.inhibidor ? entorno.inhibidor->inhibir(std::string(textos::kPorQueDespierta)) : nullptr;
    return Descargador(entorno, consola, registrador, peticion).correr();
}

void decirOtraCabecera(Consola& consola, const DatosConfig& leida, std::span<const std::uint8_t> imagen) {
    constexpr std::array<std::string_view, kAnchos.size()> kNombres = {"usuario", "ubicacion", "latitud",
                                                                       "longitud", "altitud"};
    decirOtraSerie(consola, leida.Nserie, imagen);
    const auto propia = datosDeCabecera(imagen);
    std::vector<std::string_view> distinto;
    for (std::size_t i = 0; i < kNombres.size(); ++i) {
        if (leida.textos[i] != propia.textos[i]) distinto.push_back(kNombres[i]);
    }
    if (leida.intervaloCodigo != propia.intervaloCodigo) distinto.emplace_back("intervalo");
    if (distinto.empty()) return;
    consola.aviso(
        fmt::format("La configuración leída y la memoria no dicen lo mismo ({}): vale lo de la memoria.",
                    fmt::join(distinto, ", ")));
}

}  // namespace telvane
