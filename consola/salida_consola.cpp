#include "consola/salida_consola.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include <fmt/format.h>

#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

// How often a FIFO is looked at that nobody reads yet.
constexpr std::chrono::milliseconds kVistazo{50};
// How often until it is told: who reads it may just be starting.
constexpr int kVistazosCallados = 20;

template <std::size_t N>
bool esUnoDe(const std::array<std::string_view, N>& nombres, const std::string& nombre) {
    return std::find(nombres.begin(), nombres.end(), nombre) != nombres.end();
}

}  // namespace

bool esEntradaEstandar(const std::string& nombre) {
    return esUnoDe(std::to_array<std::string_view>({"-", "/dev/stdin", "/dev/fd/0", "/proc/self/fd/0"}),
                   nombre);
}

bool esSalidaEstandar(const std::string& nombre) {
    return esUnoDe(std::to_array<std::string_view>({"-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}),
                   nombre);
}

void exigirQueNoSeLea(const EntornoConsola& entorno, const std::string& salida,
                      const ArchivosLeidos& leidos) {
    esSalidaEstandar(salida) ? leidos.exigirOtro(entorno.salida, "la salida de la orden")
                             : leidos.exigirOtro(salida);
}

SalidaConsola::SalidaConsola(std::string nombre, ReglaDestino regla)
    : nombre_(std::move(nombre)), regla_(std::move(regla)), estandar_(esSalidaEstandar(nombre_)) {
    if (estandar_) return;
    regla_.corriente = true;
    destino_ = revisarDestino(nombre_, regla_);
}

void SalidaConsola::escribir(EntornoConsola& entorno, Consola& consola, std::string_view bytes) const {
    EscrituraConsola escritura(*this, entorno, consola);
    escritura.escribir(bytes);
    escritura.terminar();
}

EscrituraConsola::EscrituraConsola(const SalidaConsola& salida, EntornoConsola& entorno, Consola& consola)
    : salida_(salida), consola_(consola) {
    if (salida.estandar()) exigirQueNoSeLea(entorno, salida.nombre_, salida.regla_.leidos);
    if (salida.archivo()) {
        auto regla = salida.regla_;
        regla.corriente = false;
        archivo_.emplace(salida.nombre_, regla);
    } else if (!salida.estandar()) {
        corriente_.emplace(abrirCorriente(salida.destino_));
        for (int vez = 1; (*corriente_)() < 0; ++vez) {
            if (vez == kVistazosCallados)
                consola.aviso(fmt::format("{}: se espera a quien lea esa tubería; Ctrl+C lo termina",
                                          nombreVisible(salida.nombre_)));
            pausar(entorno, kVistazo);
            corriente_.emplace(abrirCorriente(salida.destino_));
        }
    }
}

void EscrituraConsola::exigir(int motivo) const {
    if (motivo != 0) throw noGuardado(salida_.destino_.pedido, motivoEscritura(motivo));
}

void EscrituraConsola::escribir(std::string_view bytes) {
    if (archivo_) {
        archivo_->escribir(bytes);
    } else if (corriente_) {
        exigir(consola_.escribirEn((*corriente_)(), bytes));
    } else {
        consola_.resultado(bytes);
    }
}

void EscrituraConsola::terminar() {
    if (archivo_) archivo_->terminar();
    if (corriente_) exigir(corriente_->cerrar());
}

}  // namespace telvane
