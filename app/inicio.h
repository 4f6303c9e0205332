// The main form with everything that lives as long as the process: controls, channels, shared state, memory
// image and operations. No toolkit: the window renders it, the tests drive it.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "data/rutinas_imagen.h"
#include "link/puerto_serie.h"
#include "platform/bucle.h"
#include "platform/dialogos.h"
#include "platform/inhibidor.h"
#include "platform/reloj.h"
#include "regional/registro.h"
#include "ui/forma_coef.h"
#include "ui/forma_inicio.h"
#include "ui/forma_presenta.h"
#include "ui/forma_progress.h"

namespace telvane {

// What comes in from outside; all of it outlives Inicio.
struct Entorno {
    Bucle& bucle;
    const Reloj& reloj;
    Puertos& puertos;
    Dialogos& dialogos;
    Registro& registro;
    // Ends the process at once with this exit status: nothing flushed, nothing asked.
    std::function<void(int estado)> terminar;
    // Reports what nobody expected in one critical message box; the process ends with status 1 afterwards.
    std::function<void(const std::string& que)> informeDeFallo;
    Perfil perfil = Perfil::estricto;
    // Where the raw images of downloads are kept; empty: nowhere, and the user is told.
    std::filesystem::path carpetaBase = {};
    // Keeps the machine awake during a download; none: it may sleep.
    Inhibidor* inhibidor = nullptr;
};

class Inicio {
   public:
    explicit Inicio(Entorno entorno);
    Inicio(const Inicio&) = delete;
    Inicio& operator=(const Inicio&) = delete;
    ~Inicio();

    FormaInicio forma;
    FormaProgress progress;
    FormaPresenta presenta;
    FormaCoef coef;

    // Start-up of the program (Form_Load): ends with the port search, which asks the user first.
    void cargar();

    // What the user did, as the shell saw it. A disabled or hidden control is not clicked; a disabled or
    // locked one, or one whose value is being sent, does not change.
    void pulsar(Control& control);
    void cambiar(Control& control, const std::string& texto);
    void salirDe(Control& control);
    // A key of the character code in a text field; 0 when the field is to swallow it.
    int teclear(Control& control, int tecla);

    // For who hands over a memory image byte by byte.
    RutinasImagen& imagen();

    // Operations that have not ended: waiting for the logger, a box or a dialog.
    std::size_t operacionesEnCurso() const;

   private:
    struct Partes;
    std::unique_ptr<Partes> partes_;
};

}  // namespace telvane
