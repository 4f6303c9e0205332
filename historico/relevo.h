// One thread reads, another one counts: what goes in comes out over there, in order, in batches.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace telvane {

template <typename T, std::size_t kLote = 4096>
class Relevo {
   public:
    // alRecibir is called in the other thread only, until terminar() returns.
    explicit Relevo(std::function<void(T&&)> alRecibir)
        : alRecibir_(std::move(alRecibir)), hilo_([this] { recibir(); }) {}
    Relevo(const Relevo&) = delete;
    Relevo& operator=(const Relevo&) = delete;
    ~Relevo() { cerrar(); }

    // Waits while too much has not been taken yet; throws what taking it has thrown.
    void dar(T uno) {
        lote_.push_back(std::move(uno));
        if (lote_.size() == kLote) entregar();
    }
    // Returns when all has been taken; throws what taking it has thrown.
    void terminar() {
        entregar();
        cerrar();
        if (error_) std::rethrow_exception(error_);
    }

   private:
    static constexpr std::size_t kLotesEnCamino = 4;

    void entregar() {
        std::unique_lock cerrojo(turno_);
        cambio_.wait(cerrojo, [this] { return camino_.size() < kLotesEnCamino; });
        if (error_) std::rethrow_exception(std::exchange(error_, nullptr));
        camino_.push_back(std::exchange(lote_, {}));
        lote_.reserve(kLote);
        cambio_.notify_all();
    }

    void cerrar() {
        if (!hilo_.joinable()) return;
        {
            const std::scoped_lock cerrojo(turno_);
            cerrado_ = true;
        }
        cambio_.notify_all();
        hilo_.join();
    }

    void recibir() {
        for (bool fallo = false;;) {
            std::vector<T> lote;
            {
                std::unique_lock cerrojo(turno_);
                cambio_.wait(cerrojo, [this] { return !camino_.empty() || cerrado_; });
                if (camino_.empty()) return;
                lote = std::move(camino_.front());
                camino_.pop_front();
            }
            cambio_.notify_all();
            if (fallo) continue;
            try {
                for (auto& uno : lote) alRecibir_(std::move(uno));
            } catch (...) {
                fallo = true;
                const std::scoped_lock cerrojo(turno_);
                error_ = std::current_exception();
            }
        }
    }

    std::function<void(T&&)> alRecibir_;
    std::vector<T> lote_;
    std::mutex turno_;
    std::condition_variable cambio_;
    std::deque<std::vector<T>> camino_;
    bool cerrado_ = false;
    std::exception_ptr error_;
    std::thread hilo_;
};

}  // namespace telvane
