// Where a command's results go: the standard output, a stream, or a file.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "consola/consola.h"
#include "platform/descriptor.h"
#include "platform/destino.h"
#include "platform/guardado.h"

namespace telvane {

// "-", and the names that the system has for the same.
bool esEntradaEstandar(const std::string& nombre);
bool esSalidaEstandar(const std::string& nombre);

// What an output's name says against it alone: ErrorNombre where it is read for itself. The standard output
// counts as the file that a shell put there.
void exigirQueNoSeLea(const EntornoConsola& entorno, const std::string& salida, const ArchivosLeidos& leidos);

class SalidaConsola {
   public:
    // Looks at the place before anything is done for it. Throws ErrorGuardado.
    SalidaConsola(std::string nombre, ReglaDestino regla);

    const std::string& nombre() const { return nombre_; }
    bool estandar() const { return estandar_; }
    // A file that is saved whole, and neither of the others.
    bool archivo() const { return !estandar_ && !destino_.corriente; }
    const Destino& destino() const { return destino_; }

    // Everything at once. Waits for whoever reads. Throws ErrorGuardado, ErrorCli.
    void escribir(EntornoConsola& entorno, Consola& consola, std::string_view bytes) const;

   private:
    friend class EscrituraConsola;

    std::string nombre_;
    ReglaDestino regla_;
    bool estandar_;
    Destino destino_;
};

// The same piece by piece. A file is there whole after terminar; left before, nothing has happened to it.
class EscrituraConsola {
   public:
    // Waits for whoever reads. It and what it is written with throw ErrorGuardado, ErrorCli. What it is given
    // outlives it.
    EscrituraConsola(const SalidaConsola& salida, EntornoConsola& entorno, Consola& consola);

    void escribir(std::string_view bytes);
    void terminar();

   private:
    void exigir(int motivo) const;

    const SalidaConsola& salida_;
    Consola& consola_;
    std::optional<Descriptor> corriente_;
    std::optional<GuardadoAtomico> archivo_;
};

}  // namespace telvane
