// telvane-sim: a logger on a pty, for trying and testing everything that talks to one.
#include <sys/prctl.h>
#include <sys/signalfd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "link/protocolo.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/argumentos.h"
#include "platform/correr_proceso.h"
#include "platform/descriptor.h"
#include "platform/destino.h"
#include "platform/flujos.h"
#include "platform/motivos.h"
#include "platform/numero.h"
#include "platform/senales_de_fin.h"
#include "platform/texto_visible.h"
#include "simulator/memoria_guardada.h"
#include "simulator/memoria_simulada.h"
#include "simulator/programa_simulador.h"
#include "simulator/reserva.h"

namespace telvane {
namespace {

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

std::string comprobarSemilla(const std::string& texto) {
    return numeroDe<std::uint32_t>(texto) ? "" : "debe ser un número, 0 a 4294967295";
}

std::string comprobarBaudios(const std::string& texto) {
    return texto == std::to_string(kBaudios) || texto == "0" ? "" : fmt::format("debe ser {} o 0", kBaudios);
}

std::string comprobarMemoria(const std::string& texto) {
    return texto == "-" ? "debe ser un archivo; uno de ese nombre se escribe ./-" : "";
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
                                       .ayuda = "Archivo base (.rgt) con la memoria; recibe los cambios",
                                       .comprobar = comprobarMemoria});
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
    programa.pie("\n" + ayudaFallo());
}

MaquinaRegistrador prepararMaquina(const Opciones& opciones, const std::optional<MemoriaGuardada>& memoria) {
    const Clima clima(numeroDe<std::uint32_t>(opciones.semilla).value_or(1));
    MaquinaRegistrador maquina(memoria && memoria->leida() ? *memoria->leida() : memoriaSimulada(clima),
                               clima);
    if (!opciones.serie.empty()) maquina.ponerSerie(opciones.serie);
    const RelojSistema reloj;
    maquina.ponerReloj(reloj.ahora(), reloj.monotono());
    return maquina;
}

// The signals that end the program, to be read instead of interrupting it.
Descriptor abrirSenales() {
    sigset_t senales;
    sigemptyset(&senales);
    for (const int senal : senalesQueTerminan()) sigaddset(&senales, senal);
    if (::sigprocmask(SIG_BLOCK, &senales, nullptr) != 0)
        throw std::system_error(errno, std::generic_category());
    Descriptor descriptor(::signalfd(-1, &senales, SFD_CLOEXEC));
    if (descriptor() < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
    return descriptor;
}

// One that was caught so, and not read.
bool senalEnEspera() {
    sigset_t pendientes;
    return ::sigpending(&pendientes) == 0 && std::ranges::any_of(senalesQueTerminan(), [&](int senal) {
               return sigismember(&pendientes, senal) == 1;
           });
}

void decir(const FlujosHeredados& flujos, const std::string& que, const std::function<bool()>& parar) {
    static_cast<void>(escribirTodo(flujos.errores, fmt::format("telvane-sim: {}\n", que), parar));
}

// A service's output may be closed; one that is full or broken is told, and no reason not to serve.
void decirDonde(const FlujosHeredados& flujos, const std::string& enlace, const std::string& dispositivo) {
    if (flujos.salida < 0) return;
    const auto texto =
        fmt::format("telvane-sim: registrador en {} ({})\n", nombreVisible(enlace), dispositivo);
    const int motivo = escribirTodo(flujos.salida, texto, senalEnEspera);
    if (motivo != 0 && motivo != EINTR) decir(flujos, quejaDeSalida(motivo), senalEnEspera);
}

std::vector<Fallo> fallosDe(const Opciones& opciones) {
    std::vector<Fallo> fallos;
    for (const auto& texto : opciones.fallos) fallos.push_back(Fallo::leer(texto));
    return fallos;
}

// Gives the exit status.
int correr(const Opciones& opciones, const FlujosHeredados& flujos) {
    std::optional<MemoriaGuardada> memoria;
    if (!opciones.memoria.empty()) memoria.emplace(opciones.memoria);
    LineaSimulada linea(prepararMaquina(opciones, memoria), opciones.baudios == "0" ? 0 : kBaudios);
    if (auto fallos = fallosDe(opciones); !fallos.empty()) linea.manipular(PlanDeFallos(std::move(fallos)));

    // The kernel would otherwise let every deadline pass by up to 50 us.
    ::prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    const auto senales = abrirSenales();
    ProgramaSimulador programa(std::move(linea), opciones.enlace, std::move(memoria),
                               // Whoever does not read it holds no logger up.
                               [&](const std::string& que) { decir(flujos, que, [] { return true; }); });
    decirDonde(flujos, opciones.enlace, programa.dispositivo());
    return programa.servir(senales()) ? 0 : kFallo;
}

// What cannot be known of one option alone; empty: nothing.
std::string revisarJuntas(const Opciones& opciones) {
    const bool mismo =
        !opciones.memoria.empty() && lugarDeNombre(opciones.enlace) == lugarDeNombre(opciones.memoria);
    if (mismo) return sonElMismoArchivo("--enlace", "--memoria", opciones.memoria);
    const auto chocan = fallosQueChocan(fallosDe(opciones));
    if (chocan && Fallo::leer(opciones.fallos[chocan->nunca]) == Fallo::leer(opciones.fallos[chocan->otro]))
        return fmt::format("fallo \"{}\": se dio dos veces: quite uno", opciones.fallos[chocan->nunca]);
    return chocan ? fmt::format("fallo \"{}\": con \"{}\" no ocurre nunca: quite uno de los dos",
                                opciones.fallos[chocan->nunca], opciones.fallos[chocan->otro])
                  : "";
}

// Returns the exit status; throws what ends the program with a failure.
int ejecutar(std::vector<std::string> linea, const FlujosHeredados& flujos) {
    Opciones opciones;
    Argumentos argumentos("telvane-sim", TELVANE_VERSION, "Registrador simulado en un pseudoterminal");
    declarar(argumentos, opciones);
    const auto leida = argumentos.leer(std::move(linea));
    if (leida.que == LineaLeida::Que::terminar) {
        if (const int motivo = escribirTodo(flujos.salida, leida.texto))
            throw std::runtime_error(quejaDeSalida(motivo));
        return 0;
    }
    const auto queja = leida.que == LineaLeida::Que::malUso ? leida.texto : revisarJuntas(opciones);
    if (!queja.empty()) {
        decir(flujos, queja, senalEnEspera);
        return kMalUso;
    }
    return correr(opciones, flujos);
}

int correrCon(int argc, char** argv) {
    const auto flujos = flujosHeredados();
    try {
        return ejecutar({argv + (argc > 0), argv + argc}, flujos);
    } catch (const ErrorNombre& error) {
        decirFinal(flujos.errores, "telvane-sim", error, senalEnEspera);
        return kMalUso;
    } catch (const std::exception& error) {
        decirFinal(flujos.errores, "telvane-sim", error, senalEnEspera);
        return kFallo;
    }
}

}  // namespace
}  // namespace telvane

int main(int argc, char** argv) {
    return telvane::correrProceso("telvane-sim", [&] { return telvane::correrCon(argc, argv); });
}
