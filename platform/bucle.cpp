#include "platform/bucle.h"

#include <utility>

namespace telvane {

namespace {

// Keeps the bare source; what it queued is dropped once this is gone.
template <class Fuente>
struct Vigilada final : Bucle::Vigilancia {
    std::shared_ptr<bool> vive = std::make_shared<bool>(true);
    Fuente fuente;

    Vigilada() = default;
    Vigilada(const Vigilada&) = delete;
    Vigilada& operator=(const Vigilada&) = delete;
    ~Vigilada() override { *vive = false; }
};

}  // namespace

Bucle::Asidero Bucle::vigilarLectura(int descriptor, Accion accion) {
    auto vigilada = std::make_unique<Vigilada<std::unique_ptr<Lectura>>>();
    auto* yo = vigilada.get();
    vigilada->fuente = fuenteLectura(descriptor, [this, yo, accion = std::move(accion)] {
        if (!enPausa_) {
            entregar(accion);
            return;
        }
        // A readable descriptor would report again at once: it stays silent until the pause ends.
        yo->fuente->activa(false);
        entregar([yo, vive = yo->vive] {
            if (*vive) yo->fuente->activa(true);
        });
    });
    return vigilada;
}

Bucle::Asidero Bucle::alarma(Duracion plazo, Accion accion) {
    auto vigilada = std::make_unique<Vigilada<Asidero>>();
    vigilada->fuente = fuenteAlarma(plazo, [this, vive = vigilada->vive, accion = std::move(accion)] {
        entregar([vive, accion] {
            if (*vive) accion();
        });
    });
    return vigilada;
}

void Bucle::entregar(const Accion& accion) {
    if (enPausa_) {
        aplazadas_.push_back(accion);
        return;
    }
    llamar(accion);
}

void Bucle::llamar(const Accion& accion) {
    try {
        accion();
        if (tras_) tras_();
    } catch (...) {
        if (!alFallar_) throw;
        alFallar_(std::current_exception());
    }
}

void Bucle::pausar(Duracion duracion, Accion luego) {
    enPausa_ = true;
    aplazadas_.push_front(std::move(luego));
    finDePausa_ = fuenteAlarma(duracion, [this] { reanudar(); });
}

void Bucle::reanudar() {
    enPausa_ = false;
    auto pendientes = std::exchange(aplazadas_, {});
    while (!pendientes.empty()) {
        auto accion = std::move(pendientes.front());
        pendientes.pop_front();
        entregar(accion);
    }
}

}  // namespace telvane
