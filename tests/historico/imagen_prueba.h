// Memory images for the tests of the archive, slot by slot.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "data/muestra.h"
#include "data/registros.h"
#include "historico/canales.h"
#include "historico/imagen.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"

namespace telvane {

inline Instante momento(int anio, int mes, int dia, int hora = 0, int minuto = 0, int segundo = 0) {
    using namespace std::chrono;
    return local_days{year{anio} / mes / dia} + hours{hora} + minutes{minuto} + seconds{segundo};
}

inline const Instante kInicio = momento(2025, 3, 1);

// A record of the minute given, after kInicio; variante tells records of one stamp apart.
inline BytesMuestra registroDeMinuto(int minuto, int variante = 0) {
    BytesMuestra r{};
    escribirSello(r, kInicio + std::chrono::minutes(minuto));
    r[9] = static_cast<std::uint8_t>(200 + minuto % 50);
    r[11] = static_cast<std::uint8_t>(variante);
    return r;
}

class ImagenPrueba {
   public:
    explicit ImagenPrueba(const std::string& serie = "02080050") : bytes_(kBytesMemoria, 0xFF) {
        std::fill_n(bytes_.begin(), registro_config::kCabecera, std::uint8_t{' '});
        if (!serie.empty()) {
            const auto empacada = empacarSerie(serie);
            std::copy(empacada.begin(), empacada.end(), bytes_.begin());
        }
        bytes_[registro_config::kIntervalo] = 0x10;
        reloj(kInicio);
    }

    ImagenPrueba& reloj(Instante cuando) {
        BytesMuestra r{};
        escribirSello(r, cuando);
        std::copy_n(r.begin(), 6, bytes_.begin() + registro_config::kReloj);
        return *this;
    }
    ImagenPrueba& texto(std::size_t desde, const std::string& que) {
        std::copy(que.begin(), que.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(desde));
        return *this;
    }
    // ranura: from the first that holds samples.
    ImagenPrueba& poner(std::size_t ranura, const BytesMuestra& registro) {
        std::copy(registro.begin(), registro.end(),
                  bytes_.begin() + static_cast<std::ptrdiff_t>((kPrimeraRanura + ranura) * registro.size()));
        return *this;
    }
    // Records of consecutive steps from a minute on.
    ImagenPrueba& serie(std::size_t ranura, int desdeMinuto, int cuantos, int paso = 10) {
        for (int i = 0; i < cuantos; ++i) {
            poner(ranura + static_cast<std::size_t>(i), registroDeMinuto(desdeMinuto + i * paso));
        }
        return *this;
    }
    std::vector<std::uint8_t> bytes(std::size_t cuantos = kBytesMemoria) const {
        return {bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(cuantos)};
    }

   private:
    std::vector<std::uint8_t> bytes_;
};

}  // namespace telvane
