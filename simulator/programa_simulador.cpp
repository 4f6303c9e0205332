#include "simulator/programa_simulador.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/como_timespec.h"
#include "platform/guardado.h"

namespace telvane {

namespace {

using std::chrono::nanoseconds;

// Bytes of one answer leave together as they fall due, so that the processor sleeps meanwhile: at most this
// many, none of them later than this behind its own time.
constexpr std::size_t kBytesPorGrupo = 8;
constexpr nanoseconds kAtrasoDeGrupo = std::chrono::milliseconds(4);

// What an answer is not charged with: of our own delay in sending what it answers, at most the first; for the
// wake-ups, the second.
constexpr nanoseconds kAtrasoDescontado = std::chrono::milliseconds(2);
constexpr nanoseconds kCosteDePty = std::chrono::microseconds(100);

constexpr std::chrono::seconds kVuelveTrasColgar{2};

}  // namespace

ProgramaSimulador::ProgramaSimulador(LineaSimulada linea, std::filesystem::path enlace,
                                     std::optional<MemoriaGuardada> memoria, Decir decir)
    : linea_(std::move(linea)),
      terminal_(std::move(enlace)),
      memoria_(std::move(memoria)),
      decir_(std::move(decir)) {
    if (memoria_ && !memoria_->leida()) memoria_->guardar(linea_.maquina().imagen());
}

bool ProgramaSimulador::servir(int senales) {
    for (;;) {
        linea_.alDia(reloj_.monotono());
        entregar();
        guardarSiCambio();
        std::optional<timespec> plazo;
        if (const auto cuando = proximo())
            plazo = comoTimespec(std::max(*cuando - reloj_.monotono(), nanoseconds(0)));
        std::array<pollfd, 2> vigilados = {{{senales, POLLIN, 0}, {terminal_.descriptor(), POLLIN, 0}}};
        if (::ppoll(vigilados.data(), vigilados.size(), plazo ? &*plazo : nullptr, nullptr) < 0 &&
            errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "poll");
        }
        if (vigilados[0].revents != 0) break;
        if (vigilados[1].revents != 0) escuchar();
    }
    if (!porQueNo_.empty()) guardar();
    return porQueNo_.empty();
}

// A wire carries an answer on at once; here two processes have to be woken first. What the PC wrote sets out
// on the wire when it would have without that, but never before the byte that it answers had arrived.
void ProgramaSimulador::escuchar() {
    const auto ahora = reloj_.monotono();
    const auto salio = std::max(ahora - std::min(atraso_, kAtrasoDescontado) - kCosteDePty, ultimaLlegada_);
    for (const auto byte : terminal_.leer()) linea_.enviar(byte, salio);
    atraso_ = Momento(0);
}

void ProgramaSimulador::entregar() {
    const auto ahora = reloj_.monotono();
    if (vuelve_ && *vuelve_ <= ahora) {
        vuelve_.reset();
        linea_.reponer();
        terminal_.reabrir();
    }
    auto& llegadas = linea_.llegadas();
    std::vector<std::uint8_t> bytes;
    bool cuelga = false;
    while (!llegadas.empty() && llegadas.front().cuando <= ahora) {
        const auto& llegada = llegadas.front();
        if (llegada.que == QueLlega::byte) bytes.push_back(static_cast<std::uint8_t>(llegada.valor));
        cuelga = cuelga || llegada.que == QueLlega::colgado;
        ultimaLlegada_ = llegada.cuando;
        atraso_ = ahora - llegada.cuando;
        llegadas.pop_front();
    }
    if (terminal_.descriptor() >= 0) terminal_.escribir(bytes);
    if (cuelga) {
        terminal_.colgar();
        vuelve_ = ahora + kVuelveTrasColgar;
    }
}

void ProgramaSimulador::guardarSiCambio() {
    const auto cambios = linea_.maquina().cambios();
    if (!memoria_ || guardados_ == cambios) return;
    guardados_ = cambios;
    guardar();
}

// A memory that cannot be saved is told; the logger goes on with it.
void ProgramaSimulador::guardar() {
    try {
        memoria_->guardar(linea_.maquina().imagen());
        porQueNo_.clear();
    } catch (const ErrorGuardado& error) {
        if (porQueNo_ != error.what()) decir_(error.what());
        porQueNo_ = error.what();
    }
}

std::optional<ProgramaSimulador::Momento> ProgramaSimulador::proximo() const {
    auto cuando = linea_.proximaRecepcion();
    const auto antes = [&](Momento otro) { cuando = cuando ? std::min(*cuando, otro) : otro; };
    const auto& llegadas = linea_.llegadas();
    if (!llegadas.empty()) {
        const auto& ultima = llegadas[std::min(llegadas.size(), kBytesPorGrupo) - 1];
        antes(std::min(ultima.cuando, llegadas.front().cuando + kAtrasoDeGrupo));
    }
    if (vuelve_) antes(*vuelve_);
    return cuando;
}

}  // namespace telvane
