#include "cli/linea_registrador.h"

#include <algorithm>
#include <span>

#include <fmt/format.h>

#include "link/codigos_suceso.h"
#include "link/conexion_tcp.h"
#include "link/protocolo.h"

namespace telvane {

namespace {

// Connecting, and finding the name before it.
constexpr auto kEsperaConexion = 2 * ConexionTcp::kPlazo;

// No logger has as much to say that nobody asked for; what comes beyond is nobody's.
constexpr std::size_t kCabe = 65536;

}  // namespace

LineaRegistrador::LineaRegistrador(EntornoCli& entorno, Puertos& puertos, int numero)
    : entorno_(entorno),
      puerto_(puertos.abrir(numero, AjustesLinea::leer(std::string(kAjustesLinea)), [] {})) {
    // A port far away is being connected; why it cannot be is told by the first byte that is sent.
    const auto listo = [this] { return puerto_->listo(); };
    if (!listo() && !esperar(entorno_, listo, kEsperaConexion))
        throw ErrorPuerto(MotivoPuerto::noExiste, fmt::format("COM{} no contesta", numero));
}

void LineaRegistrador::enviar(std::uint8_t byte) {
    puerto_->escribir(std::span(&byte, 1));
}

bool LineaRegistrador::esperarBytes(std::size_t cuantos, Bucle::Duracion plazo) {
    return esperar(
        entorno_,
        [&] {
            if (entrada_.esperan() < cuantos) entrada_.llenar(*puerto_, kCabe);
            if (entrada_.esperan() >= cuantos) return true;
            // One wake-up once the missing ones are here. Counted anew after each reading: the system does
            // not count those that it has handed over.
            puerto_->umbral(static_cast<int>(cuantos - entrada_.esperan()));
            return false;
        },
        plazo);
}

// A byte that nobody reads would wake us again and again until the time is over: the answer to a wake-up is
// shorter than the most that a port can wait for.
void LineaRegistrador::pausar(Bucle::Duracion duracion) {
    puerto_->umbral(PuertoSerie::kUmbralMaximo);
    telvane::pausar(entorno_, duracion);
}

std::size_t LineaRegistrador::esperan() {
    entrada_.llenar(*puerto_, kCabe);
    return entrada_.esperan();
}

std::size_t LineaRegistrador::erroresDeLinea() const {
    const auto sucesos = puerto_->sucesosDeLinea();
    return static_cast<std::size_t>(
        std::ranges::count_if(sucesos, [](int codigo) { return codigo >= suceso::kParada; }));
}

void LineaRegistrador::descartar() {
    puerto_->vaciarEntrada();
    entrada_.vaciar();
}

bool LineaRegistrador::descartarHastaCallar(Bucle::Duracion silencio, Bucle::Duracion plazo) {
    const auto final = entorno_.reloj.monotono() + plazo;
    bool callo = false;
    do {
        descartar();
        callo = !esperarBytes(1, silencio);
    } while (!callo && entorno_.reloj.monotono() < final);
    return callo;
}

}  // namespace telvane
