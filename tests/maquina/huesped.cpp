// Runs inside the virtual machine: huesped DEVICE. Says, a line each, what our port does to a real serial
// driver and what it is told by it. Stops where a break is expected until one came.
#include <fcntl.h>
#include <linux/serial.h>
#include <sys/ioctl.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "data/memoria.h"
#include "data/pasos_descarga.h"
#include "link/mscomm.h"
#include "link/protocolo.h"
#include "link/puerto_termios.h"
#include "platform/bucle_posix.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using Reloj = std::chrono::steady_clock;

// Looks at the line from beside the port.
class Mirilla {
   public:
    explicit Mirilla(const char* dispositivo)
        : descriptor_(::open(dispositivo, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {}

    int lineas() const {
        int valor = -1;
        ::ioctl(descriptor_, TIOCMGET, &valor);
        return valor;
    }
    serial_icounter_struct cuentas() const {
        serial_icounter_struct valor{};
        ::ioctl(descriptor_, TIOCGICOUNT, &valor);
        return valor;
    }
    bool bajaLatencia() const {
        serial_struct valor{};
        ::ioctl(descriptor_, TIOCGSERIAL, &valor);
        return (static_cast<unsigned>(valor.flags) & ASYNC_LOW_LATENCY) != 0;
    }

   private:
    int descriptor_;  // the system closes it at the end
};

void decir(const char* que, long cuanto) {
    std::printf("%s=%ld\n", que, cuanto);
}

void decirLineas(const Mirilla& mirilla) {
    const int lineas = mirilla.lineas();
    std::printf("lineas:%s%s%s%s%s\n", (lineas & TIOCM_DTR) != 0 ? " DTR" : "",
                (lineas & TIOCM_RTS) != 0 ? " RTS" : "", (lineas & TIOCM_CTS) != 0 ? " CTS" : "",
                (lineas & TIOCM_DSR) != 0 ? " DSR" : "", (lineas & TIOCM_CD) != 0 ? " CD" : "");
}

class Sesion {
   public:
    explicit Sesion(const char* dispositivo)
        : mirilla_(dispositivo),
          puerto_(bucle_, dispositivo, AjustesLinea::leer("19200,n,8,1"), [this] { leer(); }) {}

    void abierta() {
        std::printf("== abierto\n");
        decirLineas(mirilla_);
        decir("baja latencia", mirilla_.bajaLatencia() ? 1 : 0);
        puerto_.dtr(true);
        decirLineas(mirilla_);
        puerto_.dtr(false);
    }

    // One live frame, asked for and counted by the driver.
    void cuadro() {
        std::printf("== cuadro\n");
        constexpr std::uint8_t kPedir = 0xBE;
        constexpr int kBytes = 31;
        const auto antes = mirilla_.cuentas();
        const auto inicio = Reloj::now();
        puerto_.umbral(kBytes);
        puerto_.escribir(std::span(&kPedir, 1));
        decir("entero", bucle_.correrHasta([&] { return recibidos_ >= kBytes; }, 5s) ? 1 : 0);
        const auto duro = std::chrono::duration_cast<std::chrono::milliseconds>(Reloj::now() - inicio);
        decir("al paso de la linea", duro >= 16ms ? 1 : 0);
        const auto ahora = mirilla_.cuentas();
        decir("recibidos", ahora.rx - antes.rx);
        decir("enviados", ahora.tx - antes.tx);
        decir("sucesos", static_cast<long>(puerto_.sucesosDeLinea().size()));
    }

    // Told by a wake-up; the zero that the driver makes of a break does not come as a byte.
    void parada() {
        recibidos_ = 0;
        puerto_.vigilarLinea(true);
        std::printf("== se espera la parada\n");
        decir("llego", bucle_.correrHasta([&] { return !sucesos_.empty(); }, 30s) ? 1 : 0);
        for (const int codigo : sucesos_) decir("suceso", codigo);
        decir("bytes", recibidos_);
    }

   private:
    void leer() {
        std::array<std::uint8_t, 64> trozo;
        while (const auto n = puerto_.leer(trozo)) recibidos_ += static_cast<int>(n);
        const auto nuevos = puerto_.sucesosDeLinea();
        sucesos_.insert(sucesos_.end(), nuevos.begin(), nuevos.end());
    }

    Mirilla mirilla_;
    BuclePosix bucle_;
    int recibidos_ = 0;
    std::vector<int> sucesos_;
    PuertoTermios puerto_;
};

// The first blocks of a download on the window's channel, which the driver wakes once for each.
class Bloques {
   public:
    explicit Bloques(const char* dispositivo)
        : puertos_(bucle_, MapaCom::fijo({std::string("1=") + dispositivo})), canal_(puertos_, tenencia_) {
        canal_.CommPort(1);
        canal_.Settings("19200,n,8,1");
        canal_.RThreshold(1);
        canal_.alComunicar = [this] { alComunicar(); };
    }

    void recibir() {
        std::printf("== bloques\n");
        constexpr int kCuantos = 60;
        canal_.PortOpen(true);
        canal_.Output(kApertura);
        decir("todos", bucle_.correrHasta([&] { return bloques_ == kCuantos || fallo_; }, 20s) ? 1 : 0);
        decir("fallo", fallo_ ? 1 : 0);
        canal_.PortOpen(false);
    }

   private:
    void alComunicar() {
        if (canal_.CommEvent() != suceso::kRecibido) return;
        const auto paso = pasoDescarga(++contador_, kUltimoBloque, canal_.InputByte());
        if (paso.respuesta) canal_.Output(*paso.respuesta);
        if (paso.hito == HitoDescarga::comienzo) canal_.RThreshold(kBytesBloque);
        fallo_ = fallo_ || paso.hito == HitoDescarga::error;
        if (paso.hito != HitoDescarga::bloque) return;
        for (std::size_t i = 1; i < kBytesBloque; ++i) canal_.InputByte();
        const auto acuse = finDeBloque(canal_.InBufferCount()).respuesta;
        fallo_ = fallo_ || !acuse;
        ++bloques_;
        if (acuse) canal_.Output(*acuse);
    }

    BuclePosix bucle_;
    PuertosSistema puertos_;
    Tenencia tenencia_;
    MSComm canal_;
    std::int32_t contador_ = 0;
    int bloques_ = 0;
    bool fallo_ = false;
};

}  // namespace
}  // namespace telvane

int main(int argc, char** argv) {
    using namespace telvane;
    if (argc != 2) return 2;
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    try {
        const Mirilla mirilla(argv[1]);
        {
            Sesion sesion(argv[1]);
            sesion.abierta();
            sesion.cuadro();
            sesion.parada();
        }
        std::printf("== cerrado\n");
        decir("baja latencia", mirilla.bajaLatencia() ? 1 : 0);
        Bloques(argv[1]).recibir();
        return 0;
    } catch (const std::exception& error) {
        std::printf("error: %s\n", error.what());
        return 1;
    }
}
