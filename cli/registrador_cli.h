// The conversation with the logger, one exchange after the other, each from its first to its last byte.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

#include "cli/consola.h"
#include "cli/entorno_cli.h"
#include "cli/linea_registrador.h"
#include "link/protocolo.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"

namespace telvane {

// Every wait has a deadline on the monotonic clock. Each exchange throws ErrorPuerto when the port fails,
// ErrorIntercambio when the logger is silent (sinRegistrador for the first byte) or answers wrong (fallo),
// and ErrorCli (interrumpido) on a signal.
class RegistradorCli {
   public:
    using Marco = std::array<std::uint8_t, kBytesMarco>;
    using Bloque = std::span<const std::uint8_t, kBytesBloque>;
    using AlBloque = std::function<void(std::size_t numero, Bloque bloque)>;

    static constexpr std::chrono::seconds kEspera{5};

    RegistradorCli(EntornoCli& entorno, Consola& consola, Puertos& puertos)
        : entorno_(entorno), consola_(consola), puertos_(puertos) {}

    // Longest silence of the logger within an exchange.
    void espera(Bucle::Duracion espera) { espera_ = espera; }

    // Probes COM1 to COM12, passing over numbers without a device and telling why a port could not be tried;
    // the first with an answer stays for the exchanges. Throws ErrorCli (sinRegistrador).
    int buscar();

    DatosConfig leerConfiguracion();
    // alBloque gets each of the 4096 blocks before it is acknowledged.
    void descargar(const AlBloque& alBloque);
    // mensaje: kBytesMensajeConfig characters. The logger erases its data.
    void escribirConfiguracion(std::string_view mensaje);
    void escribirSerie(const SerieEmpacada& serie);

    // Live frames for as long as the object lives.
    class EnLinea {
       public:
        explicit EnLinea(RegistradorCli& registrador);
        Marco pedir();

       private:
        LineaRegistrador linea_;
    };

   private:
    bool sondear(int numero);
    void despertar();
    std::uint8_t recibir(LineaRegistrador& linea, std::int32_t contador, std::size_t cuantos = 1);
    void recibirBloque(LineaRegistrador& linea, std::uint8_t primero, std::size_t numero,
                       const AlBloque& alBloque);

    EntornoCli& entorno_;
    Consola& consola_;
    Puertos& puertos_;
    Bucle::Duracion espera_ = kEspera;
    int numero_ = 0;
};

}  // namespace telvane
