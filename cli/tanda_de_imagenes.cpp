#include "cli/tanda_de_imagenes.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <string_view>
#include <thread>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "data/archivo_base.h"
#include "platform/archivo.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

// That one of them has open at once: the image, or its table and the disk's witness.
constexpr std::size_t kDescriptoresDeCadaUno = 2;

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
      aviso_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      sinMemoria_(lista.size(), 0) {}

std::size_t TandaDeImagenes::correr() {
    {
        std::list<Hilo> obreros;
        contratar(obreros);
        try {
            obreros.empty() ? trabajar([this] { atender(); }) : esperarObreros();
        } catch (...) {
            siguiente_ = lista_.size();
            if (obreros.empty()) acabar();
            throw;
        }
    }
    repetirSinMemoria();
    return fallidas_;
}

// As many as there are processors, and as find the descriptors that they need.
std::size_t TandaDeImagenes::cuantosObreros() const {
    const auto cuantos = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, lista_.size());
    std::list<Descriptor> suyos;
    while (aviso_() >= 0 && suyos.size() < cuantos * kDescriptoresDeCadaUno) {
        if (suyos.emplace_back(::fcntl(aviso_(), F_DUPFD_CLOEXEC, 0))() >= 0) continue;
        suyos.pop_back();
        break;
    }
    return suyos.size() / kDescriptoresDeCadaUno;
}

// Or as the system has threads and memory for. None: whoever calls does the work, and nobody is told of its
// end.
void TandaDeImagenes::contratar(std::list<Hilo>& obreros) {
#ifdef M_ARENA_MAX
    // One heap for all: what a worker's own has grown to would stay its own when he is gone.
    static_cast<void>(::mallopt(M_ARENA_MAX, 1));
#endif
    // Counted along, so that no early one takes himself for the last.
    enMarcha_ = 1;
    try {
        for (auto faltan = cuantosObreros(); faltan > 0; --faltan) {
            ++enMarcha_;
            obreros.emplace_back([this] { trabajar([] {}); });
        }
    } catch (const std::exception&) {
        enMarcha_ -= enMarcha_ > 1 ? 1 : 0;
    }
    obreros.empty() ? static_cast<void>(aviso_.cerrar()) : acabar();
}

void TandaDeImagenes::esperarObreros() {
    try {
        const auto vigilancia = entorno_.bucle.vigilarLectura(aviso_(), [this] { acabados_ = true; });
        while (!esperar(
            entorno_, [this] { return acabados_; }, std::chrono::hours(1)))
            continue;
    } catch (const std::bad_alloc&) {
        // To look at signals meanwhile needs memory, and their work none of it.
    }
}

// Nobody runs the loop meanwhile.
void TandaDeImagenes::atender() const {
    atenderSenalSinBucle(entorno_);
}

void TandaDeImagenes::trabajar(const std::function<void()>& antesDeCada) {
    std::optional<Conversor> conversor;
    for (std::size_t i = siguiente_++; i < lista_.size(); i = siguiente_++) {
        antesDeCada();
        intentar(conversor, i);
    }
    acabar();
}

// The last one saves what still waits for the disk.
void TandaDeImagenes::acabar() noexcept {
    if (--enMarcha_ > 0) return;
    guardado_.terminar();
    ::eventfd_write(aviso_(), 1);
}

void TandaDeImagenes::intentar(std::optional<Conversor>& conversor, std::size_t cual) noexcept {
    try {
        if (!conversor) conversor.emplace();
        convertir(*conversor, cual);
    } catch (...) {
        contar(cual, std::current_exception(), "");
    }
}

void TandaDeImagenes::convertir(Conversor& conversor, std::size_t cual) {
    const auto& par = lista_[cual];
    const auto bytes = leerArchivo(par.entrada, conversor.destino());
    const auto convertido = convertirImagen(conversor, trabajo_, bytes, nombreVisible(par.entrada));
    guardado_.agregar(par.salida, convertido.archivo.bytes(), reglaDeTabla(),
                      [this, cual, aviso = convertido.aviso](const std::exception_ptr& fallo) {
                          contar(cual, fallo, aviso);
                      });
}

// By then the others have given back what they held.
void TandaDeImagenes::repetirSinMemoria() {
    for (std::size_t i = 0; i < lista_.size(); ++i) {
        if (sinMemoria_[i] == 0) continue;
        atender();
        sinMemoria_[i] = 0;
        {
            std::optional<Conversor> conversor;
            intentar(conversor, i);
        }
        guardado_.terminar();
        if (sinMemoria_[i] == 0) continue;
        ++fallidas_;
        decir(de(lista_[i], motivoSinMemoria()));
    }
}

void TandaDeImagenes::contar(std::size_t cual, const std::exception_ptr& fallo,
                             const std::string& aviso) noexcept {
    try {
        fallo ? fallar(lista_[cual], fallo) : decir(de(lista_[cual], aviso));
    } catch (const std::bad_alloc&) {
        // A table that is safe by then is made again, to be told.
        sinMemoria_[cual] = 1;
    }
}

void TandaDeImagenes::fallar(const Par& par, const std::exception_ptr& fallo) {
    try {
        std::rethrow_exception(fallo);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const ErrorLectura& error) {
        // It names the file.
        decir(error.what());
    } catch (const std::exception& error) {
        decir(de(par, motivoDe(error)));
    }
    ++fallidas_;
}

void TandaDeImagenes::decir(const std::string& texto) {
    const std::scoped_lock turno(turno_);
    consola_.aviso(texto);
}

}  // namespace telvane
