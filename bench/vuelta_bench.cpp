// Turnaround of a download: from the logger's 64th byte of a block to the acknowledgement on the line, each
// as it comes, on a pty. The window and the console tool against a bare loop of poll, read and write.
//   vuelta_bench [PATH_OF_TELVANE_CLI]
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/mediana.h"
#include "bench/ventana_viva.h"
#include "link/protocolo.h"
#include "simulator/maquina_registrador.h"
#include "simulator/memoria_simulada.h"
#include "simulator/terminal_simulado.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane::bench {

namespace {

using namespace std::chrono_literals;
using Reloj = std::chrono::steady_clock;

// The logger, unpaced, on a thread of its own; it notes how long each block waited for its acknowledgement.
class RegistradorConReloj {
   public:
    explicit RegistradorConReloj(const std::filesystem::path& enlace)
        : terminal_(enlace), maquina_(memoriaSimulada(Clima())), hilo_([this] { servir(); }) {}
    RegistradorConReloj(const RegistradorConReloj&) = delete;
    RegistradorConReloj& operator=(const RegistradorConReloj&) = delete;
    ~RegistradorConReloj() {
        fin_ = true;
        hilo_.join();
    }

    // Median in microseconds of the download that ends about now.
    double mediana() {
        std::unique_lock cerrojo(candado_);
        if (!completa_.wait_for(cerrojo, 5s, [this] { return vueltas_.size() >= kBloquesMemoria; })) {
            throw std::runtime_error("la descarga no terminó");
        }
        return bench::mediana(std::exchange(vueltas_, {}));
    }

   private:
    void servir() {
        pollfd espera{terminal_.descriptor(), POLLIN, 0};
        while (!fin_) {
            if (::poll(&espera, 1, 100) <= 0) continue;
            const auto bytes = terminal_.leer();
            const auto llegada = Reloj::now();
            if (enviado_ != Reloj::time_point()) {
                anotar(std::chrono::duration<double, std::micro>(llegada - enviado_).count());
                enviado_ = {};
            }
            for (const auto byte : bytes) contestar(byte, llegada.time_since_epoch());
        }
    }

    void anotar(double vuelta) {
        const std::lock_guard cerrojo(candado_);
        vueltas_.push_back(vuelta);
        if (vueltas_.size() >= kBloquesMemoria) completa_.notify_one();
    }

    void contestar(std::uint8_t byte, std::chrono::nanoseconds ahora) {
        const auto respuesta = maquina_.recibir(byte, ahora);
        if (respuesta.empty()) return;
        if (respuesta.size() == kBytesBloque) enviado_ = Reloj::now();
        terminal_.escribir(respuesta);
        maquina_.terminoDeEnviar(ahora);
    }

    TerminalSimulado terminal_;
    MaquinaRegistrador maquina_;
    std::mutex candado_;
    std::condition_variable completa_;
    std::vector<double> vueltas_;
    Reloj::time_point enviado_;
    std::atomic<bool> fin_ = false;
    std::thread hilo_;
};

// The reference: what any program must do for a download, and no more.
class LineaDesnuda {
   public:
    explicit LineaDesnuda(const std::string& ruta) : descriptor_(::open(ruta.c_str(), O_RDWR | O_NOCTTY)) {
        if (descriptor_ < 0) throw std::runtime_error("no se pudo abrir " + ruta);
        ::tcgetattr(descriptor_, &linea_);
        ::cfmakeraw(&linea_);
        umbral(1);
    }
    LineaDesnuda(const LineaDesnuda&) = delete;
    LineaDesnuda& operator=(const LineaDesnuda&) = delete;
    ~LineaDesnuda() { ::close(descriptor_); }

    void descargar(std::span<std::uint8_t> imagen) {
        enviar(kApertura);
        recibir(imagen.first(1));
        enviar(kSaludo);
        recibir(imagen.first(1));
        umbral(kBytesBloque);
        enviar(kApertura);
        for (std::size_t i = 0; i < kBloquesMemoria; ++i) {
            recibir(imagen.subspan(i * kBytesBloque, kBytesBloque));
            enviar(kApertura);
        }
    }

   private:
    void umbral(std::size_t bytes) {
        linea_.c_cc[VMIN] = static_cast<cc_t>(bytes);
        linea_.c_cc[VTIME] = 0;
        ::tcsetattr(descriptor_, TCSANOW, &linea_);
    }
    void enviar(std::uint8_t byte) const {
        if (::write(descriptor_, &byte, 1) != 1) throw std::runtime_error("write");
    }
    void recibir(std::span<std::uint8_t> destino) const {
        pollfd espera{descriptor_, POLLIN, 0};
        while (!destino.empty()) {
            ::poll(&espera, 1, -1);
            const auto n = ::read(descriptor_, destino.data(), destino.size());
            if (n <= 0) throw std::runtime_error("read");
            destino = destino.subspan(static_cast<std::size_t>(n));
        }
    }

    int descriptor_;
    termios linea_{};
};

// One median a round.
struct Rondas {
    std::vector<double> desnuda;
    std::vector<double> ventana;
    std::vector<double> consola;
};

void descargarConConsola(const std::string& cli, const std::string& com, const std::filesystem::path& base) {
    Proceso consola({cli, "--com", "1=" + com, "descargar", "--base", base.string()});
    if (consola.terminar(60s) != 0) throw std::runtime_error(consola.errores());
    std::filesystem::remove(base);
}

int medir(const std::string& cli) {
    constexpr int kRondas = 5;
    const CarpetaTemporal carpeta;
    const auto enlace = (carpeta / "COM1").string();
    RegistradorConReloj registrador(enlace);
    return VentanaViva::correr(enlace, carpeta.ruta(), [&](VentanaViva& ventana) {
        ventana.conectar();
        Rondas rondas;
        std::vector<std::uint8_t> imagen(kBytesMemoria);
        for (int ronda = 0; ronda < kRondas; ++ronda) {
            LineaDesnuda(enlace).descargar(imagen);
            rondas.desnuda.push_back(registrador.mediana());
            ventana.pulsar("Command13");
            VentanaViva::dejarCorrer(100ms);
            ventana.esperarHabilitado("Command13", 60s);
            rondas.ventana.push_back(registrador.mediana());
            descargarConConsola(cli, enlace, carpeta / "consola.rgt");
            rondas.consola.push_back(registrador.mediana());
        }
        const auto desnuda = mediana(rondas.desnuda);
        std::printf("bare loop %.1f us\n", desnuda);
        std::printf("window / bare loop = %.2f  (goal 1.30)\n", mediana(rondas.ventana) / desnuda);
        std::printf("console tool / bare loop = %.2f  (goal 1.30)\n", mediana(rondas.consola) / desnuda);
    });
}

}  // namespace

}  // namespace telvane::bench

int main(int argc, char** argv) {
    const auto propio = std::filesystem::canonical(argv[0]).parent_path() / "telvane-cli";
    return telvane::bench::medir(argc > 1 ? argv[1] : propio.string());
}
