// Faults of the logger's side of the line: what happens to a byte on its way to the PC, and faults written as
// text.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/maquina_registrador.h"

namespace telvane {

// A byte that the logger is about to send.
struct ByteSaliente {
    Intercambio
        intercambio;     // reposo: a live frame; eleccion: the answer to the opening byte, whatever follows
    std::size_t indice;  // within everything the logger sends in this exchange, from 0
    std::size_t cuadro;  // live frames asked for in a row before this one
    std::size_t numero;  // within everything sent since the tampering was set, from 0
    std::uint8_t byte;
};

// What becomes of it. As it stands: it arrives.
struct Efecto {
    // What arrives in its place; empty: it is lost. A string, because a few bytes need no memory of their own
    // there.
    std::basic_string<std::uint8_t> bytes;
    std::chrono::nanoseconds demora{0};  // how much later it leaves, and all that follows with it
    bool callar = false;                 // neither it nor anything else of this exchange leaves
    bool cortar = false;                 // from here on nothing passes in either direction
    bool colgar = false;                 // the device disappears before it
    bool errorLectura = false;           // reading fails once before it
    bool errorEscritura = false;         // the PC's next write fails
    bool escrituraCorta = false;         // the driver takes half of the PC's next write and no more
    std::optional<int> suceso = {};      // a line event (see CommEvent) right before it

    bool operator==(const Efecto&) const = default;

    static Efecto pasar(std::uint8_t byte) {
        Efecto efecto;
        efecto.bytes.push_back(byte);
        return efecto;
    }
};

using Manipulador = std::function<Efecto(const ByteSaliente&)>;

struct Fallo {
    enum class Operacion : std::uint8_t { sonda, enLinea, lectura, escritura, serie, descarga };
    enum class Clase : std::uint8_t {
        silencio,
        demora,
        cambiar,
        invertir,
        insertar,
        perder,
        doblar,
        cortar,
        colgar,
        // Of the PC's own end of the line, which a pseudo-terminal cannot show.
        suceso,
        errorLectura,
        errorEscritura,
        escrituraCorta
    };

    Operacion operacion = Operacion::sonda;
    Clase clase = Clase::silencio;
    std::optional<std::size_t> cuadro;  // enLinea: that frame of a row only
    std::size_t indice = 0;             // of the byte within the exchange
    std::size_t valor = 0;              // milliseconds, byte value, number of bytes or event code
    std::size_t vez = 1;                // the how manieth time it is reached; 0: every time

    // Reads "OPERATION[:bloque=K|:cuadro=K][:byte=B][:vez=N|:siempre]:FAULT[=VALUE]" (see ayudaFallo).
    // Throws std::invalid_argument with the reason in Spanish.
    static Fallo leer(std::string_view texto);
    bool operator==(const Fallo&) const = default;
    // Whether it happens in the PC's own driver, and so in process only.
    bool enElPc() const { return clase >= Clase::suceso; }
};

// What the fault does to its byte, wherever that is.
Efecto efectoDe(const Fallo& fallo, std::uint8_t byte);

// One that can never happen, and another one beside which it cannot: that stands in its place, or before it
// where nothing more arrives. nullopt: all can. Of one that is told
// twice the second is one too many.
struct FallosQueChocan {
    std::size_t nunca;
    std::size_t otro;
};
std::optional<FallosQueChocan> fallosQueChocan(const std::vector<Fallo>& fallos);

// The grammar for the user.
std::string ayudaFallo();

// Faults at work; each remembers how often its byte came by.
class PlanDeFallos {
   public:
    explicit PlanDeFallos(std::vector<Fallo> fallos) : fallos_(std::move(fallos)), veces_(fallos_.size()) {}
    Efecto operator()(const ByteSaliente& saliente);

   private:
    std::vector<Fallo> fallos_;
    std::vector<std::size_t> veces_;
};

}  // namespace telvane
