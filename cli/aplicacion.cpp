#include "cli/aplicacion.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <memory>
#include <system_error>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "cli/codigos_salida.h"
#include "cli/consola.h"
#include "cli/ordenes.h"
#include "platform/guardado.h"

namespace telvane {

namespace {

constexpr const char* kPrograma = "telvane-cli";
constexpr const char* kOpciones = "Opciones";

void enEspanol(CLI::App& app) {
    app.option_defaults()->group(kOpciones);
    app.set_help_flag("-h,--help", "Muestra esta ayuda")->group(kOpciones);
    auto formato = std::make_shared<CLI::Formatter>();
    formato->label("Usage", "Uso");
    formato->label("OPTIONS", "OPCIONES");
    formato->label("SUBCOMMAND", "ORDEN");
    formato->label("Positionals", "Argumentos");
    formato->label("REQUIRED", "(obligatorio)");
    formato->label("TEXT", "");
    formato->column_width(28);
    app.formatter(formato);
}

void declarar(CLI::App& app, ContextoCli& contexto) {
    enEspanol(app);
    app.set_version_flag("--version", "telvane-cli " TELVANE_VERSION, "Muestra la versión")->group(kOpciones);
    app.add_option("--com", contexto.com,
                   "Puerto N (1 a 16) y su dispositivo; repetible. Sin ninguno, los presentes")
        ->type_name("N=DISPOSITIVO")
        ->expected(1)
        ->take_all();
    app.require_subcommand(1);
    // --com may stand behind the command as well.
    app.fallthrough();
    declararPuertos(app, contexto);
    declararBuscar(app, contexto);
    declararConfiguracion(app, contexto);
    declararEnLinea(app, contexto);
    declararDescargar(app, contexto);
    declararConvertir(app, contexto);
    declararConfigurar(app, contexto);
    declararSerie(app, contexto);
    for (auto* orden : app.get_subcommands({})) {
        orden->group("Órdenes");
        for (auto* opcion : orden->get_options()) opcion->group(kOpciones);
    }
    app.footer("Códigos de salida: 0 hecho, 1 fallo, 2 mal uso, 3 sin registrador, 130 interrumpido.");
}

// The library's own texts are in English; those of our checks stand behind the option's name.
std::string motivoDeUso(const CLI::App& app, const CLI::ParseError& error) {
    const std::string texto = error.what();
    const auto antesDe = [&](std::string_view marca) { return texto.substr(0, texto.find(marca)); };
    const auto sobran = fmt::format("{}", fmt::join(app.remaining(true), " "));
    switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
        case CLI::ExitCodes::RequiredError:
            if (!app.get_subcommands().empty()) return fmt::format("falta {}", antesDe(" "));
            return sobran.empty() ? "falta la orden" : fmt::format("no hay una orden \"{}\"", sobran);
        case CLI::ExitCodes::ExtrasError:
            return fmt::format("no se entiende \"{}\"", sobran);
        case CLI::ExitCodes::ArgumentMismatch:
            return fmt::format("{}: falta su valor o sobra alguno", antesDe(":"));
        default:
            return texto;
    }
}

int ejecutar(ContextoCli& contexto) {
    const auto fallar = [&](CodigoSalida codigo, const std::string& que) {
        contexto.consola.aviso(fmt::format("{}: {}", kPrograma, que));
        return static_cast<int>(codigo);
    };
    try {
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

int correrCli(const std::vector<std::string>& argumentos, EntornoCli& entorno) {
    Consola consola(entorno);
    ContextoCli contexto{.entorno = entorno, .consola = consola, .com = {}, .orden = {}};
    CLI::App app("El registrador desde la consola: buscarlo, leerlo, descargarlo y configurarlo", kPrograma);
    try {
        declarar(app, contexto);
        // The library takes them from the end.
        app.parse(std::vector<std::string>(argumentos.rbegin(), argumentos.rend()));
    } catch (const CLI::CallForHelp&) {
        contexto.orden = [&] { consola.resultado(app.help()); };
    } catch (const CLI::CallForVersion&) {
        contexto.orden = [&] { consola.resultado("telvane-cli " TELVANE_VERSION "\n"); };
    } catch (const CLI::ParseError& error) {
        const auto motivo = motivoDeUso(app, error);
        contexto.orden = [motivo] {
            throw ErrorCli(CodigoSalida::malUso, motivo + "\n(telvane-cli --help)");
        };
    } catch (const ErrorCli& error) {
        const ErrorCli copia = error;
        contexto.orden = [copia] { throw copia; };
    }
    return ejecutar(contexto);
}

}  // namespace telvane
