// The conversation with the logger, one exchange after the other, each from its first to its last byte.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "cli/entorno_cli.h"
#include "cli/linea_registrador.h"
#include "cli/reintentos.h"
#include "consola/consola.h"
#include "link/paso.h"
#include "link/protocolo.h"
#include "live/canales_propios.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/reloj.h"

namespace telvane {

// Every wait has a deadline on the monotonic clock. Each exchange throws ErrorPuerto when the port fails,
// ErrorIntercambio when the logger is silent (sinRegistrador for the first byte) or answers wrong (fallo),
// and ErrorCli (interrumpido) on a signal.
class RegistradorCli {
   public:
    using Marco = std::array<std::uint8_t, kBytesMarco>;
    using Bloque = std::span<const std::uint8_t, kBytesBloque>;
    using AlBloque = std::function<void(std::size_t numero, Bloque bloque)>;

    using EnRed = std::function<bool(int numero)>;

    // enRed: whether a server on the network stands before that number's line.
    RegistradorCli(EntornoCli& entorno, Consola& consola, Puertos& puertos, EnRed enRed)
        : entorno_(entorno), consola_(consola), puertos_(puertos), enRed_(std::move(enRed)) {}

    // Longest silence of the logger within an exchange.
    void espera(Bucle::Duracion espera) { espera_ = espera; }

    // Probes COM1 to COM12, passing over numbers without a device and telling why a port could not be tried;
    // the first with an answer stays for the exchanges. Throws ErrorCli (sinRegistrador).
    int buscar();

    // What to look at where the line brings nothing, and where it brings what nobody sent: "el cable y …".
    std::string queRevisarSiCalla() const;
    std::string queRevisarSiHayRuido() const;

    // Attempts beyond the first that a configuration reading has.
    void reintentos(int cuantos) { reintentos_ = cuantos; }
    // A failure before the first one that succeeds says that another device may be on this port.
    DatosConfig leerConfiguracion();
    // What the PC's clock showed when the logger's stood as the last reading says, to half the time that the
    // reading took.
    const FechaHora& momentoDeLectura() const { return momentoDeLectura_; }
    // alBloque gets each of the 4096 blocks once it is acknowledged, while the next one travels; one whose
    // acknowledgement cannot leave as well, before the failure is thrown.
    void descargar(const AlBloque& alBloque);
    // That the line told during all downloads so far, each kind once a block.
    std::size_t erroresDeLinea() const { return erroresDeLinea_; }
    // mensaje: makes the kBytesMensajeConfig characters once the logger is awake, so that the clock in them
    // is that of their sending. The logger erases its data. enviados counts what was handed to the line, also
    // when an exception ends it; a byte that the port refused is counted, for it may have left.
    void escribirConfiguracion(const std::function<std::string()>& mensaje, std::size_t& enviados);
    // The same; of kBytesMensajeSerie.
    void escribirSerie(const SerieEmpacada& serie, std::size_t& enviados);

    // Live frames for as long as the object lives. A frame has neither a checksum nor an end mark: one that
    // came with bytes missing or too many, or with an impossible value (canalesImposibles), is asked for
    // again, told and counted. What of it is late would stand before the next one, which is asked for once
    // the line has fallen quiet. Channels that stay impossible then are the logger's own: they are told once.
    class EnLinea {
       public:
        explicit EnLinea(RegistradorCli& registrador);
        Marco pedir();
        // Lets the time pass, whatever the line brings meanwhile.
        void pausar(Bucle::Duracion duracion) { linea_.pausar(duracion); }

       private:
        struct Llegada {
            std::size_t bytes = 0;
            Marco marco{};
        };
        Llegada intentar();
        std::string defecto(const Llegada& llegada, bool callada);

        RegistradorCli& registrador_;
        LineaRegistrador linea_;
        Consola& consola_;
        std::string otroAparato_;  // until a frame came whole
        bool enPaso_;              // nothing of an earlier answer can still come
        std::size_t repetidas_ = 0;
        CanalesPropios propios_;
    };

   private:
    bool sondear(int numero);
    std::string otroAparato() const;
    std::string noResponde() const;
    [[noreturn]] void fueraDePaso(std::string_view que) const;
    DatosConfig leerUnaVez();
    void despertar();
    // pasoDe: what the logger's byte of this counter is answered with.
    void enviarPorPasos(const std::function<Paso<HitoEnvio>(std::int32_t contador)>& pasoDe,
                        std::size_t& enviados);
    void recibirMemoria(LineaRegistrador& linea, const AlBloque& alBloque);
    std::uint8_t recibir(LineaRegistrador& linea, std::int32_t contador, std::size_t cuantos = 1);
    void recibirBloque(LineaRegistrador& linea, std::uint8_t primero, std::size_t numero,
                       const AlBloque& alBloque);

    EntornoCli& entorno_;
    Consola& consola_;
    Puertos& puertos_;
    EnRed enRed_;
    Bucle::Duracion espera_ = kSilencio;
    int reintentos_ = Reintentos::kUsuales;
    int numero_ = 0;
    bool sondaEntera_ = false;  // the answer to the search's probe is no frame's part
    bool conocido_ = false;     // what is on the port is a logger
    FechaHora momentoDeLectura_;
    std::size_t erroresDeLinea_ = 0;
};

}  // namespace telvane
