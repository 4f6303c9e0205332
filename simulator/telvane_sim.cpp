// telvane-sim: a logger on a pty, for trying and testing everything that talks to one.
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "platform/archivo.h"
#include "platform/guardado.h"
#include "simulator/memoria_simulada.h"
#include "simulator/programa_simulador.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;

constexpr int kFallo = 1;
constexpr int kMalUso = 2;

struct Opciones {
    std::string enlace;
    std::string serie;
    std::string memoria;
    std::string semilla = "1";
    std::string baudios = "19200";
    std::vector<std::string> fallos;
};

std::optional<std::uint32_t> numero(const std::string& texto) {
    std::uint32_t valor = 0;
    const auto* fin = texto.data() + texto.size();
    const auto [hasta, error] = std::from_chars(texto.data(), fin, valor);
    if (error != std::errc() || hasta != fin) return std::nullopt;
    return valor;
}

std::string comprobarSerie(const std::string& texto) {
    const bool cifras = std::all_of(texto.begin(), texto.end(), [](char c) { return c >= '0' && c <= '9'; });
    return cifras && texto.size() == 8 ? "" : "debe tener 8 cifras";
}

std::string comprobarSemilla(const std::string& texto) {
    return numero(texto) ? "" : "debe ser un número, 0 a 4294967295";
}

std::string comprobarBaudios(const std::string& texto) {
    return texto == "19200" || texto == "0" ? "" : "debe ser 19200 o 0";
}

std::string comprobarFallo(const std::string& texto) {
    try {
        if (!Fallo::leer(texto).enElPc()) return "";
        return fmt::format("fallo \"{}\": ocurre en el puerto del PC y un pseudoterminal no lo puede mostrar",
                           texto);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

void declarar(CLI::App& app, Opciones& opciones) {
    app.option_defaults()->group("Opciones");
    app.set_help_flag("-h,--help", "Muestra esta ayuda")->group("Opciones");
    app.set_version_flag("--version", "telvane-sim " TELVANE_VERSION, "Muestra la versión")
        ->group("Opciones");
    auto formato = std::make_shared<CLI::Formatter>();
    formato->label("Usage", "Uso");
    formato->label("OPTIONS", "OPCIONES");
    formato->label("REQUIRED", "(obligatoria)");
    formato->column_width(26);
    app.formatter(formato);
    const auto con = [](auto comprobar) { return CLI::Validator(comprobar, ""); };
    app.add_option("--enlace", opciones.enlace, "Nombre del enlace que lleva al registrador")
        ->type_name("RUTA")
        ->required();
    app.add_option("--serie", opciones.serie, "Número de serie, 8 cifras")
        ->type_name("CIFRAS")
        ->check(con(comprobarSerie));
    app.add_option("--memoria", opciones.memoria, "Archivo base (.rgt) con la memoria; recibe los cambios")
        ->type_name("ARCHIVO");
    app.add_option("--semilla", opciones.semilla, "Número del que sale el tiempo medido; 1 si falta")
        ->type_name("N")
        ->check(con(comprobarSemilla));
    app.add_option("--baudios", opciones.baudios,
                   "19200, el paso de la línea, o 0, sin esperas; 19200 si falta")
        ->type_name("N")
        ->check(con(comprobarBaudios));
    app.add_option("--fallo", opciones.fallos, "Fallo de la línea, repetible")
        ->type_name("FALLO")
        ->check(con(comprobarFallo))
        ->expected(1)
        ->take_all();
    app.footer("\n" + std::string(kAyudaFallo));
}

// The library's own texts are in English.
std::string motivoDeUso(const CLI::App& app, const CLI::ParseError& error) {
    const auto clase = error.get_name();
    if (clase == "RequiredError") return "falta --enlace";
    if (clase == "ExtrasError") return fmt::format("no se entiende \"{}\"", fmt::join(app.remaining(), " "));
    if (clase == "ArgumentMismatch") return "a una opción le falta su valor o le sobra";
    return error.what();
}

std::vector<std::uint8_t> leerImagen(const fs::path& ruta) {
    auto imagen = leerArchivo(ruta, kBytesMemoria + 1);
    if (imagen.size() > kBytesMemoria)
        throw ErrorLectura(fmt::format("tiene más de {} bytes", kBytesMemoria));
    return imagen;
}

MaquinaRegistrador prepararMaquina(const Opciones& opciones) {
    const Clima clima(numero(opciones.semilla).value_or(1));
    const bool guardada = !opciones.memoria.empty() && fs::exists(opciones.memoria);
    MaquinaRegistrador maquina(guardada ? leerImagen(opciones.memoria) : memoriaSimulada(clima), clima);
    if (!opciones.serie.empty()) maquina.ponerSerie(opciones.serie);
    // A file that cannot be written is told now and not after the first change.
    if (!opciones.memoria.empty() && !guardada) guardarAtomico(opciones.memoria, maquina.imagen());
    const RelojSistema reloj;
    maquina.ponerReloj(reloj.ahora(), reloj.monotono());
    return maquina;
}

// The signals that end the program, to be read instead of interrupting it.
int abrirSenales() {
    sigset_t senales;
    sigemptyset(&senales);
    for (const int senal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&senales, senal);
    if (::sigprocmask(SIG_BLOCK, &senales, nullptr) != 0)
        throw std::system_error(errno, std::generic_category());
    const int descriptor = ::signalfd(-1, &senales, SFD_CLOEXEC);
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
    return descriptor;
}

void correr(const Opciones& opciones) {
    LineaSimulada linea(prepararMaquina(opciones), opciones.baudios == "0" ? 0 : kBaudios);
    std::vector<Fallo> fallos;
    for (const auto& texto : opciones.fallos) fallos.push_back(Fallo::leer(texto));
    if (!fallos.empty()) linea.manipular(PlanDeFallos(std::move(fallos)));

    // The kernel would otherwise let every deadline pass by up to 50 us.
    ::prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    const int senales = abrirSenales();
    const auto memoria = opciones.memoria.empty() ? std::nullopt : std::optional<fs::path>(opciones.memoria);
    ProgramaSimulador programa(std::move(linea), opciones.enlace, memoria);
    fmt::print("telvane-sim: registrador en {} ({})\n", opciones.enlace, programa.dispositivo());
    std::fflush(stdout);
    programa.servir(senales);
    ::close(senales);
}

}  // namespace
}  // namespace telvane

int main(int argc, char** argv) {
    using namespace telvane;
    CLI::App app("Registrador simulado en un pseudoterminal", "telvane-sim");
    Opciones opciones;
    declarar(app, opciones);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error);
        fmt::print(stderr, "telvane-sim: {}\n(telvane-sim --help)\n", motivoDeUso(app, error));
        return kMalUso;
    }
    try {
        correr(opciones);
        return 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "telvane-sim: {}\n", error.what());
        return kFallo;
    }
}
