// Whose configuration an exported file tells.
#include "data/config_de_archivo.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"

namespace telvane {
namespace {

constexpr const char* kCon = "02080051";  // of a logger that carries the evaporation channels
constexpr const char* kSin = "02080100";

std::vector<std::uint8_t> imagenDe(const std::string& serie) {
    std::vector<std::uint8_t> imagen(registro_config::kCabecera, 0x20);
    std::ranges::copy(empacarSerie(serie), imagen.begin() + registro_config::kSerie);
    return imagen;
}

TEST(ConfigDeArchivo, IsThatOfTheLoggerThatWasReadAndOtherwiseTheImagesOwn) {
    struct Fila {
        const char* leyenda;
        const char* deLaImagen;
        LoggerLeido leido;
        bool delLeido;
        bool evaporacion;
    };
    for (const auto& fila : {Fila{"none was read", kCon, {}, false, true},
                             Fila{"none was read, no channels", kSin, {}, false, false},
                             Fila{"a number without text is none", kSin, {"", 2080051}, false, false},
                             Fila{"read", kSin, {"Nro  : ", 2080051}, true, true},
                             Fila{"read, no channels", kCon, {"Nro  : ", 2080100}, true, false}}) {
        const auto imagen = imagenDe(fila.deLaImagen);
        const auto config = configDeArchivo(imagen, fila.leido);
        EXPECT_EQ(config.texto, fila.delLeido ? fila.leido.texto : leerCabecera(imagen).texto)
            << fila.leyenda;
        EXPECT_EQ(config.texto.find(fila.deLaImagen) != std::string::npos, !fila.delLeido) << fila.leyenda;
        EXPECT_EQ(config.evaporacion, fila.evaporacion) << fila.leyenda;
    }
}

}  // namespace
}  // namespace telvane
