// The fault grid of the window's operations: one fault at one byte of one exchange, what the operator then
// finds, and a clean exchange that must succeed.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/app/banco.h"
#include "tests/app/rejilla_fallos.h"

namespace telvane {

// What the operator finds when nothing moves any more.
struct Pantalla {
    std::string_view habilitados;  // of the watched controls, see kVigilados; blank separated
    bool ofrece;                   // Command1 offers to connect
    bool abierto;                  // the exchange's channel stays open, for the next one to take its port
};

// How an exchange ends, from what the operator was told and can do.
struct Fin {
    std::string_view nombre;
    std::vector<std::string_view> mensajes;  // boxes, in order
    Pantalla pantalla;
    bool entero;  // the exchange was carried through
};

// First match decides. A place is the byte's number within what the logger sends, from 0.
struct Regla {
    std::size_t desde;
    std::size_t hasta;
    unsigned clases;
    const Fin* fin;
};

class Rejilla : public Banco {
   protected:
    explicit Rejilla(int baudios = 0);

    // Connected, nothing running, every line forgotten.
    void SetUp() override;
    // The state in which each run starts: idle after a configuration read.
    void enReposo();
    // Which fault the next exchange meets; SCOPED_TRACE with what is returned.
    std::string armar(std::string_view operacion, std::size_t lugar, std::string_view fallo);
    // Until nothing is running and a logger that lost its place has given up.
    void asentar();
    void pulsarYAsentar(Control& control) {
        pulsar(control);
        asentar();
    }

    static const Fin& finDe(std::span<const Regla> reglas, std::size_t lugar, ClaseDeDano clase);
    void esperar(const Fin& fin) const;
    // After the fault: the line is whole again and the operator is connected.
    void reponer();
    // A read of the configuration without a fault.
    void lecturaLimpia();

    // By the program.
    bool abierto() const { return red ? red->abierto() : puertos.abierto(1); }
    bool enPedazos() const { return red && red->enPedazos(); }
    std::vector<FalloDeRejilla> losFallos() const { return fallosDeRejilla(red != nullptr); }

    // Lines printed since the run began.
    std::vector<std::string> impresas;
    std::vector<std::string> perdidas;   // the same, of a port that went away
    std::vector<std::string> silencios;  // the same, of a logger that fell silent in the middle
    CuentaDeCorridas corridas;
    // Waits put before each live frame, so that frames take time on a line that has none.
    bool conRitmo = false;

   private:
    std::string habilitados() const;
    Formulario::Observacion observacion_;
};

}  // namespace telvane
