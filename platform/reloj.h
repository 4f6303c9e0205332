// Time, handed in from outside.
#pragma once

#include <chrono>
#include <string>

namespace telvane {

// Local civil date and time to the nanosecond. mes 1..12, dia 1..31, deDia: time of day, 0 <= deDia < 24 h.
struct FechaHora {
    int anio = 1970;
    int mes = 1;
    int dia = 1;
    std::chrono::nanoseconds deDia{0};
};

class Reloj {
   public:
    virtual ~Reloj() = default;
    // The user's clock on the wall: it jumps at midnight, with daylight saving and when somebody sets it.
    virtual FechaHora ahora() const = 0;
    // Never goes back and is not set by anybody; only differences mean something.
    virtual std::chrono::nanoseconds monotono() const = 0;

    // Seconds since midnight, in single precision: the clock of the waits that yield.
    float segundosDelDia() const;
};

// A start second as the decimal text in which a wait keeps it (seven significant digits), and back.
std::string segundosComoTexto(float segundos);
double textoComoSegundos(const std::string& texto);

// The machine's clock.
class RelojSistema final : public Reloj {
   public:
    FechaHora ahora() const override;
    std::chrono::nanoseconds monotono() const override;
};

}  // namespace telvane
