// Standard input, output and error of a console program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "consola/entorno_consola.h"

namespace telvane {

struct ReglaDestino;

class Consola {
   public:
    // entorno outlives it.
    explicit Consola(EntornoConsola& entorno);
    Consola(const Consola&) = delete;
    Consola& operator=(const Consola&) = delete;
    ~Consola();

    // Results: at once, as they stand, but for control characters on a terminal. Throws ErrorCli: fallo when
    // nobody takes them any more, interrumpido on a signal while whoever takes them is slow.
    void resultado(std::string_view texto);
    // The same of work that is done by then and stays done: what is thrown says so with hecho.
    void resultadoDe(std::string_view hecho, std::string_view texto);
    // For work whose results are to stand there: an output that was closed when the program started takes
    // none. Throws ErrorCli (fallo).
    void exigirSalida() const;
    // The same, and throws ErrorNombre where what is told would get into the same file, which is to hold what
    // the command gives and nothing else.
    void exigirSalidaPropia() const;
    // As resultado, to a descriptor of another kind: 0, or an errno value. Throws ErrorCli (interrumpido).
    int escribirEn(int descriptor, std::string_view texto);
    // A shell may have put the standard output or error onto a file that nothing may be written into: one
    // that is read, or of a kind that the rule keeps from being replaced, or a data base. Throws ErrorNombre,
    // and what is told from then on goes where it may.
    void exigirFlujosLibres(const ReglaDestino& regla);
    // Talk on standard error, over the progress line, without control characters: a line, or several with
    // "\n" between them. Failures to write it are nobody's business. From any thread, one at a time.
    void aviso(std::string_view linea);
    // What ends the program, as its last line, also where memory is short. Throws nothing.
    void avisoFinal(std::string_view programa, const std::exception& error) noexcept;
    // The line that tells how far the work is, drawn over the last one; only on a terminal, and cut to its
    // width. Empty: taken away.
    void progreso(const std::string& linea);
    // Characters that fit into a line of the terminal now.
    std::size_t ancho() const;
    // Whether somebody watches standard error.
    bool hayTerminal() const { return hayTerminal_; }

    // Standard input up to its end or to maximo bytes. Throws ErrorCli (fallo, interrumpido).
    std::vector<std::uint8_t> leerEntrada(std::size_t maximo);

   private:
    void esperarEntrada();
    int mostrar(std::string_view texto);
    // 0, or the reason why not everything could be written: EINTR after a signal.
    int escribir(int descriptor, std::string_view texto) const;

    EntornoConsola& entorno_;
    bool hayTerminal_;
    bool salidaEnTerminal_;
    bool hayProgreso_ = false;
};

}  // namespace telvane
