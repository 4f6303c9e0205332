#include "consola/aplicacion_consola.h"

#include <exception>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "platform/motivos.h"

namespace telvane {

namespace {

using Declarar = std::function<void(Argumentos&)>;

std::string dondeMirar(const ProgramaConsola& programa, const std::vector<std::string>& argumentos,
                       const Declarar& declarar) {
    Argumentos linea(programa.nombre, programa.version, programa.descripcion);
    declarar(linea);
    return linea.dondeMirar(argumentos);
}

// What the line is read with has gone when the command begins: it may need the memory.
void leerLinea(const ProgramaConsola& programa, Consola& consola, const std::vector<std::string>& argumentos,
               OrdenElegida& elegida, const Declarar& declarar) {
    Argumentos linea(programa.nombre, programa.version, programa.descripcion);
    declarar(linea);
    const auto leida = linea.leer(argumentos);
    if (leida.que == LineaLeida::Que::malUso) throw ErrorCli(CodigoSalida::malUso, leida.texto);
    if (leida.que == LineaLeida::Que::terminar) {
        elegida = [&consola, texto = leida.texto] {
            consola.exigirSalida();
            consola.resultado(texto);
        };
    }
}

// Throws what finds no memory to be told.
int correrYDecir(const ProgramaConsola& programa, Consola& consola,
                 const std::vector<std::string>& argumentos, OrdenElegida& elegida,
                 const Declarar& declarar) {
    const auto fallar = [&](CodigoSalida codigo, const std::string& que) {
        consola.aviso(fmt::format("{}: {}", programa.nombre, que));
        return static_cast<int>(codigo);
    };
    try {
        consola.exigirFlujosLibres(programa.flujos);
        leerLinea(programa, consola, argumentos, elegida, declarar);
        elegida();
        return static_cast<int>(CodigoSalida::hecho);
    } catch (const ErrorUso& error) {
        return fallar(error.codigo(), error.what() + dondeMirar(programa, argumentos, declarar));
    } catch (const ErrorCli& error) {
        return fallar(error.codigo(), error.what());
    } catch (const ErrorNombre& error) {
        return fallar(CodigoSalida::malUso, error.what());
    } catch (const std::exception& error) {
        return fallar(CodigoSalida::fallo, motivoDe(error));
    }
}

}  // namespace

int correrPrograma(const ProgramaConsola& programa, Consola& consola,
                   const std::vector<std::string>& argumentos, OrdenElegida& elegida,
                   const std::function<void(Argumentos&)>& declarar) {
    try {
        return correrYDecir(programa, consola, argumentos, elegida, declarar);
    } catch (const std::exception& error) {
        consola.avisoFinal(programa.nombre, error);
        return static_cast<int>(CodigoSalida::fallo);
    }
}

}  // namespace telvane
