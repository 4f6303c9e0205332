// What an operator sees of the main form, and what holds of it whatever he did.
#pragma once

#include <string>

namespace telvane {

// The form as it was when it was looked at: what can be pressed, and what is on show.
struct Vista {
    bool delante = false;    // a box or a file dialog stands before it
    bool progreso = false;   // the progress dialog
    bool procesado = false;  // the box that tells of a base file that was loaded

    bool conectar = false;  // Command1
    bool leer = false;      // configuracion
    bool cambiar = false;   // Command2
    bool enviar = false;    // Command3
    bool enLinea = false;   // Command4
    bool descargar = false;
    bool exportar = false;
    bool abrir = false;
    bool salir = false;
    bool serie = false;  // Text10

    bool parar = false;        // what Command4 reads
    bool lecturas = false;     // Text60
    bool ajustar = false;      // Check1
    bool quienAjusta = false;  // its label
    int editables = 0;         // of the seven fields of the configuration
    int opciones = 0;          // of the six intervals
    std::string rotuloConectar;
    std::string rotuloSerie;

    bool operator==(const Vista&) const = default;
};

class LeyesDeReposo {
   public:
    // Takes notice of what was seen; to be told of every look.
    void mirar(const Vista& vista);
    // The law of every moment that does not hold; empty: none.
    std::string rota(const Vista& vista) const;
    // The same of those that hold when nothing runs any more but live data or a search, and no box is open.
    std::string rotaEnReposo(const Vista& vista) const;

   private:
    bool cambiarVisto_ = false;     // Command2 could be pressed
    bool unaSolaVista_ = false;     // outside edit mode, one interval at most
    bool respondido_ = false;       // the first question has been
    bool cerradaAlEditar_ = false;  // configuracion has been disabled since edit mode was entered
    bool reconectable_ = false;     // Command1 could be pressed in live mode, or just before
    bool paraba_ = false;           // at the last look it was in live mode
    bool editaEnLinea_ = false;     // edit mode was entered in live mode
    bool exportarApagado_ = false;  // and no base file was loaded since
};

}  // namespace telvane
