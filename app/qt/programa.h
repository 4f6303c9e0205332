// The parts of the window program, put together once.
#pragma once

#include <string>

#include "app/inicio.h"
#include "app/opciones.h"
#include "app/qt/aplicacion.h"
#include "app/qt/bucle_qt.h"
#include "app/qt/cierre_del_marco.h"
#include "app/qt/colores_escritorio.h"
#include "app/qt/dialogos_qt.h"
#include "app/qt/senales.h"
#include "link/puerto_termios.h"
#include "platform/reloj.h"
#include "regional/almacen_usuario.h"
#include "sistema/inhibidor_logind.h"
#include "ui/qt/aparicion.h"
#include "ui/qt/ventana_inicio.h"

namespace telvane {

class Programa {
   public:
    // Throws std::system_error when the system gives no descriptor.
    Programa(Aplicacion& aplicacion, const Opciones& opciones);
    Programa(const Programa&) = delete;
    Programa& operator=(const Programa&) = delete;
    ~Programa();

    // Runs until "Salir", which does not come back, or a signal. Exit status.
    int correr();

   private:
    Entorno entorno(const Opciones& opciones);
    Usuario usuario();
    int estadoFinal(int pedido) const;
    // Tells what nobody expected, in one box; the process ends with it.
    void informar(const std::string& que);

    Aplicacion& aplicacion_;
    // Asked first, so that the answer is there as early as it can be.
    ColoresDelEscritorio colores_;
    RelojSistema reloj_;
    BucleQt bucle_;
    PuertosSistema puertos_;
    AlmacenUsuario registro_;
    DialogosQt dialogos_;
    InhibidorLogind inhibidor_{"Telvane"};
    Inicio inicio_;
    VentanaInicio ventana_;
    CierreDelMarco cierre_{ventana_};
    Aparicion progress_;
    Aparicion presenta_;
    Aparicion coef_;
    SenalesDeFin senales_;
    bool fallando_ = false;
};

}  // namespace telvane
