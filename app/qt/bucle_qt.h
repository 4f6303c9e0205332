// The event loop of the core on that of the toolkit.
#pragma once

#include "platform/bucle.h"

namespace telvane {

class BucleQt final : public Bucle {
   public:
    // No source reports any more: what is left to do is to tell the user what went wrong.
    void detener() { *corre_ = false; }

   protected:
    std::unique_ptr<Lectura> fuenteLectura(int descriptor, Accion accion) override;
    Asidero fuenteAlarma(Duracion plazo, Accion accion) override;

   private:
    std::shared_ptr<bool> corre_ = std::make_shared<bool>(true);
};

}  // namespace telvane
