#include "bench/imagen.h"

#include <cmath>
#include <cstdint>
#include <random>

#include "data/muestra.h"
#include "loggerconfig/datos_config.h"
#include "regional/formatos.h"

namespace telvane::bench {

namespace {

namespace rm = registro_muestra;

constexpr int kMinutos = 10;
constexpr int kMinutosDia = 1440;

// Some noise over a daily wave.
class Tiempo {
   public:
    std::uint16_t onda(double medio, double amplitud, double ruido, int minuto) {
        const double fase = 2 * 3.14159265358979 * minuto / kMinutosDia;
        std::normal_distribution<double> azar(0, ruido);
        const double valor = medio + amplitud * std::sin(fase) + azar(motor_);
        return static_cast<std::uint16_t>(std::lround(valor < 0 ? 0 : valor));
    }
    std::uint8_t rumbo() { return static_cast<std::uint8_t>(motor_() % 161); }
    std::uint8_t lluvia() { return static_cast<std::uint8_t>(motor_() % 8 == 0 ? motor_() % 20 : 0); }

   private:
    std::mt19937 motor_{2018};
};

void ponerSello(std::uint8_t* registro, int numero) {
    const int minutos = numero * kMinutos;
    const auto fecha = fechaConAcarreo(2018, 11, 3 + minutos / kMinutosDia);
    registro[rm::kHora] = empacarBcd(minutos / 60 % 24);
    registro[rm::kHora + 1] = empacarBcd(minutos % 60);
    registro[rm::kHora + 2] = 0;
    registro[rm::kDia] = empacarBcd(fecha.dia);
    registro[rm::kMes] = empacarBcd(fecha.mes);
    registro[rm::kAnio] = empacarBcd(fecha.anio % 100);
}

void ponerPar(std::uint8_t* registro, unsigned lugar, std::uint16_t crudo) {
    registro[lugar] = static_cast<std::uint8_t>(crudo >> 8);
    registro[lugar + 1] = static_cast<std::uint8_t>(crudo & 0xFF);
}

void ponerRegistro(std::uint8_t* registro, int numero, Tiempo& tiempo) {
    const int minuto = numero * kMinutos % kMinutosDia;
    ponerSello(registro, numero);
    ponerPar(registro, rm::kHumedad, tiempo.onda(700, -150, 40, minuto));
    ponerPar(registro, rm::kTemperatura, tiempo.onda(550, 100, 10, minuto));
    registro[rm::kDirViento] = tiempo.rumbo();
    ponerPar(registro, rm::kVelViento, tiempo.onda(190, 40, 40, minuto));
    ponerPar(registro, rm::kRadSolar, tiempo.onda(120, 200, 20, minuto));
    ponerPar(registro, rm::kPresion, tiempo.onda(14, 2, 1, minuto));
    registro[rm::kLluvia] = tiempo.lluvia();
    ponerPar(registro, rm::kEvaporacion, tiempo.onda(60, 40, 10, minuto));
}

}  // namespace

Memoria imagenLlena() {
    Memoria memoria;
    Tiempo tiempo;
    int numero = 0;
    const auto imagen = memoria.imagen();
    for (std::size_t lugar = 0; lugar < imagen.size(); lugar += rm::kBytes) {
        ponerRegistro(imagen.data() + lugar, numero++, tiempo);
    }
    return memoria;
}

}  // namespace telvane::bench
