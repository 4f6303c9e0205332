#include "simulator/linea_simulada.h"

#include <algorithm>
#include <utility>

#include "link/protocolo.h"

namespace telvane {

namespace {

// What separates an answer from its request where bytes take no time.
constexpr std::chrono::nanoseconds kInstante{1};
// Live frames asked for at most this long after the one before belong to one row.
constexpr std::chrono::milliseconds kSeguido{500};

std::chrono::nanoseconds duracionDeByte(int baudios) {
    if (baudios == 0) return std::chrono::nanoseconds(0);
    return std::chrono::nanoseconds(kBitsPorByte * std::nano::den / baudios);
}

}  // namespace

LineaSimulada::LineaSimulada(MaquinaRegistrador maquina, int baudios)
    : maquina_(std::move(maquina)),
      porByte_(duracionDeByte(baudios)),
      demoraMinima_(baudios == 0 ? kInstante : Momento(0)) {}

void LineaSimulada::manipular(Manipulador manipulador) {
    manipulador_ = std::move(manipulador);
    numero_ = 0;
}

void LineaSimulada::enviar(std::uint8_t byte, Momento ahora) {
    if (cortada_ || colgada_ || haciaRegistrador_.size() >= kEnCaminoMaximo) return;
    libreHaciaRegistrador_ = std::max(libreHaciaRegistrador_, ahora) + porByte_;
    haciaRegistrador_.push_back({byte, libreHaciaRegistrador_});
    alDia(ahora);
}

void LineaSimulada::alDia(Momento ahora) {
    while (!haciaRegistrador_.empty() && haciaRegistrador_.front().cuando <= ahora) {
        const auto enCamino = haciaRegistrador_.front();
        haciaRegistrador_.pop_front();
        recibir(enCamino);
    }
}

std::optional<LineaSimulada::Momento> LineaSimulada::proximaRecepcion() const {
    if (haciaRegistrador_.empty()) return std::nullopt;
    return haciaRegistrador_.front().cuando;
}

void LineaSimulada::recibir(const EnCamino& enCamino) {
    if (llegadas_.size() >= kEnCaminoMaximo) return;
    const auto respuesta = maquina_.recibir(enCamino.byte, enCamino.cuando);
    intercambio_ = maquina_.intercambio();
    const bool marco = !respuesta.empty() && intercambio_ == Intercambio::reposo;
    if (marco) contarCuadro(enCamino.cuando);
    if (marco || intercambio_ == Intercambio::eleccion) {
        indice_ = 0;
        callada_ = false;
    }
    huboMarco_ = marco;
    for (const auto byte : respuesta) salir(byte, enCamino.cuando + demoraMinima_);
    if (!respuesta.empty()) maquina_.terminoDeEnviar(libreHaciaPc_);
}

void LineaSimulada::contarCuadro(Momento ahora) {
    const bool seguido = huboMarco_ && ahora - libreHaciaPc_ <= kSeguido;
    cuadro_ = seguido ? cuadro_ + 1 : 0;
}

// One byte of the logger's, through whatever tampers with it.
void LineaSimulada::salir(std::uint8_t byte, Momento desde) {
    const ByteSaliente saliente{intercambio_, indice_++, cuadro_, numero_, byte};
    if (callada_ || cortada_ || colgada_) return;
    ++numero_;
    if (!manipulador_) {
        llegar(QueLlega::byte, byte, finDeByte(desde));
        return;
    }
    const auto efecto = manipulador_(saliente);
    errorEscritura_ = errorEscritura_ || efecto.errorEscritura;
    escrituraCorta_ = escrituraCorta_ || efecto.escrituraCorta;
    const auto inicio = std::max(desde, libreHaciaPc_) + efecto.demora;
    if (efecto.suceso) llegar(QueLlega::suceso, *efecto.suceso, finDeByte(inicio));
    if (efecto.errorLectura) llegar(QueLlega::errorLectura, 0, finDeByte(inicio));
    callada_ = efecto.callar;
    cortada_ = efecto.cortar;
    if (efecto.colgar) colgar(inicio);
    if (callada_ || cortada_ || colgada_) return;
    for (const auto uno : efecto.bytes) llegar(QueLlega::byte, uno, finDeByte(inicio));
    // A lost byte takes its time as well.
    if (efecto.bytes.empty()) libreHaciaPc_ = finDeByte(inicio);
}

LineaSimulada::Momento LineaSimulada::finDeByte(Momento desde) const {
    return std::max(desde, libreHaciaPc_) + porByte_;
}

void LineaSimulada::llegar(QueLlega que, int valor, Momento cuando) {
    if (que == QueLlega::byte) {
        libreHaciaPc_ = cuando;
        if (anotador_) anotador_(static_cast<std::uint8_t>(valor));
    }
    llegadas_.push_back({que, valor, cuando});
}

void LineaSimulada::emitir(std::uint8_t byte, Momento ahora) {
    if (!cortada_ && !colgada_) llegar(QueLlega::byte, byte, finDeByte(ahora + demoraMinima_));
}

void LineaSimulada::suceder(int codigo, Momento ahora) {
    llegar(QueLlega::suceso, codigo, std::max(ahora, libreHaciaPc_));
}

void LineaSimulada::colgar(Momento ahora) {
    if (colgada_) return;
    colgada_ = true;
    haciaRegistrador_.clear();
    llegar(QueLlega::colgado, 0, std::max(ahora, libreHaciaPc_));
}

void LineaSimulada::reponer() {
    colgada_ = false;
    cortada_ = false;
    errorEscritura_ = false;
    escrituraCorta_ = false;
    haciaRegistrador_.clear();
    llegadas_.clear();
}

bool LineaSimulada::tomarErrorEscritura() {
    return std::exchange(errorEscritura_, false);
}

bool LineaSimulada::tomarEscrituraCorta() {
    return std::exchange(escrituraCorta_, false);
}

}  // namespace telvane
