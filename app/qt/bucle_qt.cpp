#include "app/qt/bucle_qt.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <QSocketNotifier>
#include <QTimer>

namespace telvane {

namespace {

// An object of the toolkit that may be let go of inside its own signal.
struct DespuesDelSuceso {
    void operator()(QObject* objeto) const {
        objeto->disconnect();
        objeto->deleteLater();
    }
};

class LecturaQt final : public Bucle::Lectura {
   public:
    LecturaQt(int descriptor, Bucle::Accion accion, std::shared_ptr<bool> corre)
        : aviso_(new QSocketNotifier(descriptor, QSocketNotifier::Read)) {
        QObject::connect(aviso_.get(), &QSocketNotifier::activated, aviso_.get(),
                         [accion = std::move(accion), corre = std::move(corre)] {
                             // The action may end the watch, and this closure with it.
                             const auto mia = accion;
                             if (*corre) mia();
                         });
    }
    // The descriptor may be closed, and its number used again, before the object goes.
    ~LecturaQt() override { aviso_->setEnabled(false); }

    void activa(bool si) override { aviso_->setEnabled(si); }

   private:
    std::unique_ptr<QSocketNotifier, DespuesDelSuceso> aviso_;
};

class AlarmaQt final : public Bucle::Vigilancia {
   public:
    AlarmaQt(int milisegundos, Bucle::Accion accion, std::shared_ptr<bool> corre) : reloj_(new QTimer) {
        reloj_->setSingleShot(true);
        reloj_->setTimerType(Qt::PreciseTimer);
        QObject::connect(reloj_.get(), &QTimer::timeout, reloj_.get(),
                         [accion = std::move(accion), corre = std::move(corre)] {
                             const auto mia = accion;
                             if (*corre) mia();
                         });
        reloj_->start(milisegundos);
    }
    ~AlarmaQt() override { reloj_->stop(); }

   private:
    std::unique_ptr<QTimer, DespuesDelSuceso> reloj_;
};

}  // namespace

std::unique_ptr<Bucle::Lectura> BucleQt::fuenteLectura(int descriptor, Accion accion) {
    return std::make_unique<LecturaQt>(descriptor, std::move(accion), corre_);
}

Bucle::Asidero BucleQt::fuenteAlarma(Duracion plazo, Accion accion) {
    // Never early: a deadline is looked at once it has passed.
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(plazo).count();
    constexpr std::int64_t kMaximo = std::numeric_limits<int>::max();
    return std::make_unique<AlarmaQt>(static_cast<int>(std::clamp<std::int64_t>(ms, 0, kMaximo)),
                                      std::move(accion), corre_);
}

}  // namespace telvane
