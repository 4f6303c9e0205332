// A working day of the window on a simulated logger at 19200 baud: what it costs while it waits, shows live
// data and downloads. Takes about three minutes, most of them the download.
//   jornada_bench [PATH_OF_TELVANE_SIM]
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

#include <QApplication>

#include "app/qt/bucle_qt.h"
#include "bench/consumo.h"
#include "bench/ventana_viva.h"
#include "link/protocolo.h"
#include "platform/esperas.h"
#include "platform/reloj.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane::bench {

namespace {

using namespace std::chrono_literals;

constexpr auto kBusqueda = 60s;
constexpr auto kDescarga = 300s;

// One measured figure beside its goal.
void imprimir(const char* que, double valor, double meta, const char* unidad) {
    std::printf("%-46s %9.3f %-3s  goal %7.2f  ratio %.2f\n", que, valor, unidad, meta, valor / meta);
    std::fflush(stdout);
}

void medirReposo() {
    const auto antes = segundosDeProcesador();
    VentanaViva::dejarCorrer(10s);
    imprimir("idle for 10 s, processor time", (segundosDeProcesador() - antes) * 1e3, 10.0, "ms");
}

// The wait that does not yield, while nothing else of the window moves: no clock ticks in edit mode.
void medirEspera(VentanaViva& ventana) {
    ventana.pulsar("Command2");
    VentanaViva::dejarCorrer(1s);
    BucleQt bucle;
    const RelojSistema reloj;
    Tareas tareas([](const std::exception_ptr&) {});
    Esperas esperas(bucle, reloj, tareas);
    const auto esperar = [](Esperas& en) -> Tarea<> { co_await en.sinCeder(2s); };
    const auto antes = segundosDeProcesador();
    tareas.lanzar(esperar(esperas));
    while (tareas.enCurso() > 0) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    imprimir("a 2 s wait, processor time", (segundosDeProcesador() - antes) * 1e3, 1.0, "ms");
}

void medirEnLinea(VentanaViva& ventana) {
    ventana.pulsar("Command4");
    VentanaViva::dejarCorrer(3s);
    const auto antes = segundosDeProcesador();
    const auto marcosAntes = ventana.lecturas();
    VentanaViva::dejarCorrer(10s);
    const auto marcos = static_cast<double>(ventana.lecturas() - marcosAntes);
    const auto gastado = segundosDeProcesador() - antes;
    std::printf("live frames in 10 s: %.0f\n", marcos);
    imprimir("a live frame, processor time", gastado * 1e3 / marcos, 0.5, "ms");
    ventana.pulsar("Command4");
    ventana.esperarHabilitado("Command13", kBusqueda);
    VentanaViva::dejarCorrer(1s);
}

// From the opening byte, two seconds after the click, to the last acknowledgement.
void medirDescarga(VentanaViva& ventana) {
    constexpr double kCable =
        static_cast<double>(kBytesMemoria + kBloquesMemoria + 5) * kBitsPorByte / kBaudios;
    const auto antes = segundosDeProcesador();
    const auto inicio = std::chrono::steady_clock::now();
    ventana.pulsar("Command13");
    double pico = 0;
    ventana.esperar(
        [&] {
            pico = picoDeMemoria();
            return ventana.cajas("La descarga de datos") > 0;
        },
        kDescarga);
    const auto segundos =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio - 2s).count();
    const auto gastado = segundosDeProcesador() - antes;
    imprimir("download at 19200 baud", segundos, kCable, "s");
    imprimir("a block, processor time", gastado * 1e3 / static_cast<double>(kBloquesMemoria), 0.8, "ms");
    imprimir("most memory held before the file dialog", pico, 40.0, "MiB");
    ventana.esperarHabilitado("Command13", kBusqueda);
    std::printf("%-46s %9.3f MiB\n", "most memory held, the toolkit's file dialog included", picoDeMemoria());
}

int medir(const std::string& simulador) {
    const CarpetaTemporal carpeta;
    const auto enlace = (carpeta.ruta() / "COM1").string();
    Proceso registrador({simulador, "--enlace", enlace, "--baudios", "19200"});
    if (!registrador.linea()) {
        std::fprintf(stderr, "telvane-sim: %s\n", registrador.errores().c_str());
        return 1;
    }
    return VentanaViva::correr(enlace, carpeta.ruta(), [](VentanaViva& ventana) {
        ventana.conectar();
        medirReposo();
        medirEnLinea(ventana);
        medirDescarga(ventana);
        medirEspera(ventana);
    });
}

}  // namespace

}  // namespace telvane::bench

int main(int argc, char** argv) {
    const auto propio = std::filesystem::canonical(argv[0]).parent_path() / "telvane-sim";
    return telvane::bench::medir(argc > 1 ? argv[1] : propio.string());
}
