#include "cli/aplicacion.h"

#include <exception>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "cli/codigos_salida.h"
#include "cli/consola.h"
#include "cli/ordenes.h"
#include "platform/guardado.h"

namespace telvane {

namespace {

constexpr const char* kPrograma = "telvane-cli";
// Reads the line; the order that it gives stands in the context afterwards.
void leerLinea(const std::vector<std::string>& argumentos, ContextoCli& contexto) {
    Argumentos linea(kPrograma, TELVANE_VERSION,
                     "El registrador desde la consola: buscarlo, leerlo, descargarlo y configurarlo");
    declararOrdenes(linea, contexto);
    const auto leida = linea.leer(argumentos);
    if (leida.que == LineaLeida::Que::malUso) throw ErrorCli(CodigoSalida::malUso, leida.texto);
    if (leida.que == LineaLeida::Que::terminar) {
        contexto.orden = [&contexto, texto = leida.texto] { contexto.consola.resultado(texto); };
    }
}

int ejecutar(ContextoCli& contexto, const std::vector<std::string>& argumentos) {
    const auto fallar = [&](CodigoSalida codigo, const std::string& que) {
        contexto.consola.aviso(fmt::format("{}: {}", kPrograma, que));
        return static_cast<int>(codigo);
    };
    try {
        leerLinea(argumentos, contexto);
        contexto.orden();
        return static_cast<int>(CodigoSalida::hecho);
    } catch (const ErrorCli& error) {
        return fallar(error.codigo(), error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        return fallar(CodigoSalida::fallo,
                      fmt::format("{}: {}", error.path1().string(), motivoSistema(error.code().value())));
    } catch (const std::system_error& error) {
        return fallar(CodigoSalida::fallo, motivoSistema(error.code().value()));
    } catch (const std::exception& error) {
        return fallar(CodigoSalida::fallo, error.what());
    }
}

}  // namespace

void declararOrdenes(Argumentos& argumentos, ContextoCli& contexto) {
    argumentos.programa().opcion(
        contexto.com, {.nombre = "--com",
                       .valor = "N=DISPOSITIVO",
                       .ayuda = "Puerto N (1 a 16) y su dispositivo; repetible. Sin ninguno, los presentes"});
    declararPuertos(argumentos, contexto);
    declararBuscar(argumentos, contexto);
    declararConfiguracion(argumentos, contexto);
    declararEnLinea(argumentos, contexto);
    declararDescargar(argumentos, contexto);
    declararConvertir(argumentos, contexto);
    declararConfigurar(argumentos, contexto);
    declararSerie(argumentos, contexto);
    argumentos.programa().pie(
        "Códigos de salida: 0 hecho, 1 fallo, 2 mal uso, 3 sin registrador, 130 interrumpido.");
}

int correrCli(const std::vector<std::string>& argumentos, EntornoCli& entorno) {
    Consola consola(entorno);
    ContextoCli contexto{.entorno = entorno, .consola = consola, .com = {}, .orden = {}};
    return ejecutar(contexto, argumentos);
}

}  // namespace telvane
