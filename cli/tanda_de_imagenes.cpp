#include "cli/tanda_de_imagenes.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "data/archivo_base.h"
#include "platform/archivo.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

std::string de(const TandaDeImagenes::Par& par, std::string_view texto) {
    return fmt::format("{}: {}", nombreVisible(par.entrada), texto);
}

}  // namespace

TandaDeImagenes::TandaDeImagenes(EntornoConsola& entorno, Consola& consola,
                                 const TrabajoDeConversion& trabajo, const std::vector<Par>& lista)
    : entorno_(entorno),
      consola_(consola),
      trabajo_(trabajo),
      lista_(lista),
      aviso_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

std::size_t TandaDeImagenes::correr() {
    const auto obreros = contratar();
    try {
        obreros.empty() ? trabajar([this] { atender(); }) : esperarObreros();
    } catch (...) {
        siguiente_ = lista_.size();
        if (obreros.empty()) acabar();
        throw;
    }
    return fallidas_;
}

// As many as there are processors, or as the system has threads and memory for. None: whoever calls does the
// work, as it does where no descriptor is left to tell of their end.
std::vector<std::jthread> TandaDeImagenes::contratar() {
    const auto cuantos = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, lista_.size());
    std::vector<std::jthread> obreros;
    // Counted along, so that no early one takes himself for the last.
    enMarcha_ = 1;
    if (aviso_() < 0) return obreros;
    for (std::size_t i = 0; i < cuantos; ++i) {
        try {
            ++enMarcha_;
            obreros.emplace_back([this] { trabajar([] {}); });
        } catch (const std::exception&) {
            --enMarcha_;
            break;
        }
    }
    if (!obreros.empty()) acabar();
    return obreros;
}

void TandaDeImagenes::esperarObreros() {
    const auto vigilancia = entorno_.bucle.vigilarLectura(aviso_(), [this] { acabados_ = true; });
    while (!esperar(
        entorno_, [this] { return acabados_; }, std::chrono::hours(1)))
        continue;
}

// Nobody runs the loop meanwhile.
void TandaDeImagenes::atender() const {
    if (entorno_.senal != 0 || entorno_.senalEnEspera()) interrumpir();
}

void TandaDeImagenes::trabajar(const std::function<void()>& antesDeCada) {
    std::optional<Conversor> conversor;
    for (std::size_t i = siguiente_++; i < lista_.size(); i = siguiente_++) {
        antesDeCada();
        const auto& par = lista_[i];
        try {
            if (!conversor) conversor.emplace();
            convertir(*conversor, par);
        } catch (const ErrorLectura& error) {
            // It names the file.
            fallar(error.what());
        } catch (const std::exception& error) {
            fallar(de(par, motivoDe(error)));
        }
    }
    acabar();
}

// The last one saves what still waits for the disk.
void TandaDeImagenes::acabar() {
    if (--enMarcha_ > 0) return;
    guardado_.terminar();
    ::eventfd_write(aviso_(), 1);
}

void TandaDeImagenes::convertir(Conversor& conversor, const Par& par) {
    const auto bytes = leerArchivo(par.entrada, conversor.destino());
    const auto convertido = convertirImagen(conversor, trabajo_, bytes, nombreVisible(par.entrada));
    guardado_.agregar(par.salida, convertido.archivo.bytes(), reglaDeTabla(),
                      [this, &par, aviso = convertido.aviso](const std::string& motivo) {
                          motivo.empty() ? decir(de(par, aviso)) : fallar(de(par, motivo));
                      });
}

void TandaDeImagenes::fallar(const std::string& texto) {
    ++fallidas_;
    decir(texto);
}

void TandaDeImagenes::decir(const std::string& texto) {
    const std::scoped_lock turno(turno_);
    consola_.aviso(texto);
}

}  // namespace telvane
