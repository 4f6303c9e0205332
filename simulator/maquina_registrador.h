// The logger's side of every exchange: bytes in, bytes out. No port and no clock of its own; a value that can
// be copied and compared against.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "link/protocolo.h"
#include "loggerconfig/datos_config.h"
#include "platform/reloj.h"
#include "simulator/clima.h"
#include "simulator/memoria_simulada.h"

namespace telvane {

// What the logger is in the middle of.
enum class Intercambio : std::uint8_t {
    reposo,    // waits for the probe byte or the opening byte
    eleccion,  // opened: waits for the byte that selects the exchange
    descarga,
    lectura,    // of the configuration
    escritura,  // of the configuration
    serie       // serial number write
};

class MaquinaRegistrador {
   public:
    // Longest silence inside an exchange; after it the logger is at rest again.
    static constexpr std::chrono::milliseconds kSilencioMaximo{1500};

    // A logger with the default configuration and nothing measured.
    MaquinaRegistrador();
    // imagen: up to 262144 bytes, the missing ones count as erased. Its header gives configuration and clock;
    // a header without a serial number gets the default configuration.
    explicit MaquinaRegistrador(std::vector<std::uint8_t> imagen, Clima clima = Clima());

    // Takes one byte that reached the logger at ahora, which never goes back, and returns what it answers. A
    // byte that does not belong where it comes ends the exchange without an answer.
    std::vector<std::uint8_t> recibir(std::uint8_t byte, std::chrono::nanoseconds ahora);
    // The last byte of an answer left the logger: silence counts from here.
    void terminoDeEnviar(std::chrono::nanoseconds ahora);

    Intercambio intercambio() const { return intercambio_; }
    // Bytes taken since the exchange was selected, the selecting byte not counted.
    std::size_t contador() const { return contador_; }

    // The whole memory, 262144 bytes. The header's clock is that of the last write; the running one is
    // reloj().
    const std::vector<std::uint8_t>& imagen() const { return imagen_; }
    // The record that a read at this moment gets.
    std::array<std::uint8_t, kBytesConfig> registro(std::chrono::nanoseconds ahora) const;
    std::string serie() const;
    // UTF-8, padding kept.
    std::string texto(CampoTexto campo) const;
    std::uint8_t intervaloCodigo() const { return imagen_[registro_config::kIntervalo]; }

    // Until it is set, the clock starts from the header's at the first byte.
    void ponerReloj(const FechaHora& hora, std::chrono::nanoseconds ahora);
    FechaHora reloj(std::chrono::nanoseconds ahora) const;

    void ponerSerie(std::string_view digitos);
    // Downloads begin with this block instead of block 0: a test of the last ones need not wait for the
    // others.
    void empezarDescargasEn(std::size_t bloque) { primerBloque_ = bloque; }
    // Counts the writes that changed what the logger keeps.
    std::size_t cambios() const { return cambios_; }

   private:
    using Bytes = std::vector<std::uint8_t>;

    Bytes enReposo(std::uint8_t byte, std::chrono::nanoseconds ahora);
    Bytes elegir(std::uint8_t byte);
    Bytes descargar(std::uint8_t byte);
    Bytes leerConfig(std::uint8_t byte, std::chrono::nanoseconds ahora);
    Bytes escribirConfig(std::uint8_t byte, std::chrono::nanoseconds ahora);
    Bytes escribirSerie(std::uint8_t byte);
    Bytes seguir(Intercambio intercambio, std::uint8_t respuesta);
    Bytes terminar();
    void guardarConfig(std::chrono::nanoseconds ahora);

    std::vector<std::uint8_t> imagen_;
    Clima clima_;

    bool relojEnMarcha_ = false;
    std::chrono::nanoseconds relojBase_{0};   // local time since 1970 ...
    std::chrono::nanoseconds relojDesde_{0};  // ... at this moment

    Intercambio intercambio_ = Intercambio::reposo;
    std::chrono::nanoseconds ultimaActividad_{0};
    std::size_t contador_ = 0;
    std::size_t primerBloque_ = 0;
    std::array<std::uint8_t, kBytesConfig> enviado_{};
    Bytes recibido_;
    std::size_t cambios_ = 0;
};

}  // namespace telvane
