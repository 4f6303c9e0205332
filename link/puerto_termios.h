// A serial port of the system.
#pragma once

#include <linux/serial.h>
#include <termios.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "link/mapa_com.h"
#include "link/puerto_serie.h"
#include "link/puerto_tcp.h"
#include "platform/bucle.h"

namespace telvane {

// Opened for us alone: a second opener, ours or not, gets "ocupado". Raw bytes, no flow control, modem lines
// ignored; damaged bytes come through as they were received, so that counts stay right, and are told by
// sucesosDeLinea. Closing gives the line its former settings back, once the last bytes have left: at another
// speed they would be damaged. The terminal in which the program itself runs is refused.
class PuertoTermios final : public PuertoSerie {
   public:
    // Throws ErrorPuerto. alDespertar: see Puertos.
    PuertoTermios(Bucle& bucle, const std::filesystem::path& dispositivo, const AjustesLinea& ajustes,
                  std::function<void()> alDespertar);
    PuertoTermios(const PuertoTermios&) = delete;
    PuertoTermios& operator=(const PuertoTermios&) = delete;
    ~PuertoTermios() override;

    // Waits up to a second for room whenever the system takes no more.
    void escribir(std::span<const std::uint8_t> bytes) override;
    std::size_t leer(std::span<std::uint8_t> destino) override;
    void umbral(int bytes) override;
    void vaciarEntrada() override;
    void dtr(bool alto) override;
    void rts(bool alto) override;
    void romper(bool encendido) override;
    std::vector<int> sucesosDeLinea() override;
    void vigilarLinea(bool si) override;

   private:
    // Ours alone once reserved; closed whatever the constructor throws.
    class Descriptor {
       public:
        explicit Descriptor(int numero) : numero_(numero) {}
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        ~Descriptor();
        int operator()() const { return numero_; }
        // False, with errno: somebody else has it.
        bool reservar();
        // What the destructor puts back.
        void recordar(const termios& ajustes) { previos_ = ajustes; }

       private:
        int numero_;
        bool reservado_ = false;
        std::optional<termios> previos_;
    };

    void configurar(const AjustesLinea& ajustes);
    void pedirBajaLatencia();
    void alLlegar();
    bool colgado() const;
    void primeraMirada();
    void mirarCuentas();
    void mirarLineas();
    void anotar(const std::vector<int>& codigos);
    void armarRevision();
    void ponerLinea(int linea, bool alta);
    [[noreturn]] void desaparecio();

    Bucle& bucle_;
    std::filesystem::path dispositivo_;
    std::function<void()> alDespertar_;
    Descriptor descriptor_;
    int umbral_ = 1;
    std::optional<int> banderasPrevias_;  // of the driver, when we changed them

    // At the last look; none: not told, or not needed.
    std::optional<serial_icounter_struct> cuentas_;
    std::optional<int> lineas_;
    std::vector<int> sucesos_;

    Bucle::Asidero vigilancia_;
    Bucle::Asidero revision_;
};

// Codes (see CommEvent) of what happened between two looks at the driver's counters, or at its modem lines
// (TIOCM_...): each at most once, errors first.
std::vector<int> cambiosDeCuentas(const serial_icounter_struct& antes, const serial_icounter_struct& ahora);
std::vector<int> cambiosDeLineas(int antes, int ahora);

// The ports of the machine, by number.
class PuertosSistema final : public Puertos {
   public:
    PuertosSistema(Bucle& bucle, MapaCom mapa) : bucle_(bucle), mapa_(std::move(mapa)) {}

    // Whether the number has a device and the device is there. A server far away counts as there.
    bool existe(int numero) const override;
    std::unique_ptr<PuertoSerie> abrir(int numero, const AjustesLinea& ajustes,
                                       std::function<void()> alDespertar) override;

    const MapaCom& mapa() const { return mapa_; }

   private:
    Bucle& bucle_;
    ConexionesTcp conexiones_{bucle_};
    // Follows the adapters that come and go.
    mutable MapaCom mapa_;
};

}  // namespace telvane
