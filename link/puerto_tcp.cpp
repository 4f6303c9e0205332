#include "link/puerto_tcp.h"

#include <poll.h>

#include <algorithm>
#include <utility>

namespace telvane {

namespace {

// Between closing and opening lie at most the two seconds of a wake-up that somebody else's exchange began.
constexpr std::chrono::seconds kReposo{3};

bool colgada(int descriptor) {
    pollfd estado{descriptor, POLLRDHUP, 0};
    return ::poll(&estado, 1, 0) > 0 && (estado.revents & (POLLRDHUP | POLLHUP | POLLERR)) != 0;
}

}  // namespace

std::shared_ptr<ConexionTcp> ConexionesTcp::tomar(const DireccionTcp& direccion) {
    const auto lugar = std::find_if(guardadas_.begin(), guardadas_.end(),
                                    [&](const Guardada& g) { return g.conexion->direccion() == direccion; });
    if (lugar != guardadas_.end()) {
        auto conexion = std::move(lugar->conexion);
        guardadas_.erase(lugar);
        conexion->vaciar();
        if (conexion->sirve()) return conexion;
    }
    return std::make_shared<ConexionTcp>(direccion);
}

void ConexionesTcp::devolver(std::shared_ptr<ConexionTcp> conexion) {
    if (!conexion->sirve()) return;
    const auto lugar = guardadas_.insert(guardadas_.end(), Guardada{std::move(conexion), nullptr});
    lugar->fin = bucle_.alarma(kReposo, [this, lugar] { guardadas_.erase(lugar); });
}

PuertoTcp::PuertoTcp(Bucle& bucle, ConexionesTcp& conexiones, const DireccionTcp& direccion,
                     std::function<void()> alDespertar)
    : bucle_(bucle),
      conexiones_(conexiones),
      alDespertar_(std::move(alDespertar)),
      conexion_(conexiones.tomar(direccion)) {
    if (conexion_->anunciada()) {
        vigilar();
    } else {
        vigilancia_ = bucle_.vigilarLectura(conexion_->aviso(), [this] { alDecidirse(); });
    }
}

PuertoTcp::~PuertoTcp() {
    vigilancia_.reset();
    conexion_->vaciar();
    conexiones_.devolver(std::move(conexion_));
}

void PuertoTcp::alDecidirse() {
    vigilancia_.reset();
    conexion_->anunciar();
    if (conexion_->socket() >= 0) vigilar();
    // The owner may destroy us from here.
    const auto despertar = alDespertar_;
    despertar();
}

void PuertoTcp::vigilar() {
    conexion_->umbral(umbral_);
    vigilancia_ = bucle_.vigilarLectura(conexion_->socket(), [this] { alLlegar(); });
}

void PuertoTcp::alLlegar() {
    // A connection that broke is readable for ever: the owner is told once.
    if (colgada(conexion_->socket())) vigilancia_.reset();
    const auto despertar = alDespertar_;
    despertar();
}

void PuertoTcp::escribir(std::span<const std::uint8_t> bytes) {
    conexion_->escribir(bytes);
}

std::size_t PuertoTcp::leer(std::span<std::uint8_t> destino) {
    try {
        return conexion_->leer(destino);
    } catch (const ErrorPuerto&) {
        vigilancia_.reset();
        throw;
    }
}

void PuertoTcp::umbral(int bytes) {
    const int pedido = std::clamp(bytes, 1, kUmbralMaximo);
    if (pedido == umbral_) return;
    umbral_ = pedido;
    conexion_->umbral(umbral_);
}

}  // namespace telvane
