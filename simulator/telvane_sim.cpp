// telvane-sim: a logger on a pty, for trying and testing everything that talks to one.
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <charconv>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "link/protocolo.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/archivo.h"
#include "platform/argumentos.h"
#include "platform/descriptor.h"
#include "platform/flujos.h"
#include "platform/guardado.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"
#include "simulator/memoria_simulada.h"
#include "simulator/programa_simulador.h"
#include "simulator/reserva.h"

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
    std::string baudios = std::to_string(kBaudios);
    std::vector<std::string> fallos;
};

std::optional<std::uint32_t> numero(const std::string& texto) {
    std::uint32_t valor = 0;
    const auto* fin = texto.data() + texto.size();
    const auto [hasta, error] = std::from_chars(texto.data(), fin, valor);
    if (error != std::errc() || hasta != fin) return std::nullopt;
    return valor;
}

std::string comprobarSemilla(const std::string& texto) {
    return numero(texto) ? "" : "debe ser un número, 0 a 4294967295";
}

std::string comprobarBaudios(const std::string& texto) {
    return texto == std::to_string(kBaudios) || texto == "0" ? "" : fmt::format("debe ser {} o 0", kBaudios);
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

void declarar(Argumentos& argumentos, Opciones& opciones) {
    auto programa = argumentos.programa();
    programa.opcion(opciones.enlace, {.nombre = "--enlace",
                                      .valor = "RUTA",
                                      .ayuda = "Nombre del enlace que lleva al registrador",
                                      .obligatoria = true});
    programa.opcion(opciones.serie, {.nombre = "--serie",
                                     .valor = "CIFRAS",
                                     .ayuda = "Número de serie, 8 cifras",
                                     .comprobar = motivoSerie});
    programa.opcion(opciones.memoria, {.nombre = "--memoria",
                                       .valor = "ARCHIVO",
                                       .ayuda = "Archivo base (.rgt) con la memoria; recibe los cambios"});
    programa.opcion(opciones.semilla, {.nombre = "--semilla",
                                       .valor = "N",
                                       .ayuda = "Número del que sale el tiempo medido; 1 si falta",
                                       .comprobar = comprobarSemilla});
    programa.opcion(
        opciones.baudios,
        {.nombre = "--baudios",
         .valor = "N",
         .ayuda = fmt::format("{0}, el paso de la línea, o 0, sin esperas; {0} si falta", kBaudios),
         .comprobar = comprobarBaudios});
    programa.opcion(opciones.fallos, {.nombre = "--fallo",
                                      .valor = "FALLO",
                                      .ayuda = "Fallo de la línea, repetible",
                                      .comprobar = comprobarFallo});
    programa.pie("\n" + std::string(kAyudaFallo));
}

std::vector<std::uint8_t> leerImagen(const fs::path& ruta) {
    auto imagen = leerArchivo(ruta, kBytesMemoria + 1);
    if (imagen.size() > kBytesMemoria)
        throw ErrorLectura(
            fmt::format("{} tiene más de {} bytes: dé otro --memoria", ruta.string(), kBytesMemoria));
    // It is written over with the first change: somebody's letter named by mistake is not ours.
    const auto nombre = ruta.filename().string();
    const bool suyo = nombre.ends_with(".rgt") || nombre.ends_with(".rgt.parcial");
    if (imagen.size() != kBytesMemoria && !suyo) {
        throw ErrorLectura(
            fmt::format("{} no parece una memoria, que mide {} bytes o termina en .rgt: dé otro --memoria",
                        ruta.string(), kBytesMemoria));
    }
    return imagen;
}

// Two that write one file would each lose what the other was told.
std::optional<Descriptor> reservarMemoria(const std::string& memoria) {
    if (memoria.empty()) return std::nullopt;
    std::error_code error;
    auto reserva = reservar("telvane-sim memoria", fs::weakly_canonical(fs::absolute(memoria, error), error));
    if (reserva) return reserva;
    throw std::runtime_error(
        fmt::format("otro telvane-sim usa la memoria {}: termínelo o dé otro --memoria", memoria));
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
    const auto reserva = reservarMemoria(opciones.memoria);
    LineaSimulada linea(prepararMaquina(opciones), opciones.baudios == "0" ? 0 : kBaudios);
    std::vector<Fallo> fallos;
    for (const auto& texto : opciones.fallos) fallos.push_back(Fallo::leer(texto));
    if (!fallos.empty()) linea.manipular(PlanDeFallos(std::move(fallos)));

    // The kernel would otherwise let every deadline pass by up to 50 us.
    ::prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    const int senales = abrirSenales();
    const auto memoria = opciones.memoria.empty() ? std::nullopt : std::optional<fs::path>(opciones.memoria);
    ProgramaSimulador programa(std::move(linea), opciones.enlace, memoria);
    fmt::print("telvane-sim: registrador en {} ({})\n", nombreVisible(opciones.enlace),
               programa.dispositivo());
    std::fflush(stdout);
    programa.servir(senales);
    ::close(senales);
}

}  // namespace
}  // namespace telvane

int main(int argc, char** argv) {
    using namespace telvane;
    const auto flujos = flujosHeredados();
    Opciones opciones;
    Argumentos argumentos("telvane-sim", TELVANE_VERSION, "Registrador simulado en un pseudoterminal");
    declarar(argumentos, opciones);
    const auto leida = argumentos.leer({argv + (argc > 0), argv + argc});
    if (leida.que == LineaLeida::Que::malUso) {
        fmt::print(stderr, "telvane-sim: {}\n", leida.texto);
        return kMalUso;
    }
    try {
        if (leida.que == LineaLeida::Que::terminar) {
            if (const int motivo = escribirTodo(flujos.salida, leida.texto))
                throw std::runtime_error(quejaDeSalida(motivo));
        } else {
            correr(opciones);
        }
        return 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "telvane-sim: {}\n", sinControles(motivoDe(error)));
        return kFallo;
    }
}
