// Many images into as many tables, on all processors where the system lets us, with one wait for the disk for
// many of them. What finds no memory beside the others is done again alone, behind them.
#pragma once

#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cli/conversion_cli.h"
#include "consola/consola.h"
#include "platform/descriptor.h"
#include "platform/guardado_en_tanda.h"
#include "platform/hilo.h"

namespace telvane {

class TandaDeImagenes {
   public:
    struct Par {
        std::string entrada;
        std::string salida;
    };

    // All of them outlive it.
    TandaDeImagenes(EntornoConsola& entorno, Consola& consola, const TrabajoDeConversion& trabajo,
                    const std::vector<Par>& lista);
    TandaDeImagenes(const TandaDeImagenes&) = delete;
    TandaDeImagenes& operator=(const TandaDeImagenes&) = delete;

    // Number of images that failed; what became of each was told, once its table was safe. The loop meanwhile
    // only listens to signals, which end the run between two images: ErrorCli (interrumpido).
    std::size_t correr();

   private:
    std::size_t cuantosObreros() const;
    void contratar(std::list<Hilo>& obreros);
    void esperarObreros();
    void atender() const;
    // antesDeCada: before each image; what it throws ends the work.
    void trabajar(const std::function<void()>& antesDeCada);
    void acabar() noexcept;
    void intentar(std::optional<Conversor>& conversor, std::size_t cual) noexcept;
    void convertir(Conversor& conversor, std::size_t cual);
    void repetirSinMemoria();
    // What became of it; fallo: null where its table is safe.
    void contar(std::size_t cual, const std::exception_ptr& fallo, const std::string& aviso) noexcept;
    void fallar(const Par& par, const std::exception_ptr& fallo);
    void decir(const std::string& texto);

    EntornoConsola& entorno_;
    Consola& consola_;
    const TrabajoDeConversion& trabajo_;
    const std::vector<Par>& lista_;
    Descriptor aviso_;
    GuardadoEnTanda guardado_;
    bool acabados_ = false;
    std::atomic<std::size_t> siguiente_ = 0;
    std::atomic<std::size_t> enMarcha_ = 0;
    std::atomic<std::size_t> fallidas_ = 0;
    std::mutex turno_;
    std::vector<char> sinMemoria_;  // of each image: whether it found none
};

}  // namespace telvane
