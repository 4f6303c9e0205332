// One whole image as CSV, byte for byte against the kept file. TELVANE_REHACER_DORADOS=1 in the environment
// writes the kept file anew; look at the difference before it is committed.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "data/informe.h"
#include "loggerconfig/datos_config.h"
#include "platform/guardado.h"
#include "regional/formatos.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/data/registro_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

const std::filesystem::path kDorado = std::filesystem::path(TELVANE_CARPETA_DORADOS) / "imagen.csv";

void escribir(std::span<std::uint8_t> cabecera, std::size_t lugar, std::string_view texto) {
    std::copy(texto.begin(), texto.end(), cabecera.begin() + static_cast<std::ptrdiff_t>(lugar));
}

void ponerCabecera(std::span<std::uint8_t> imagen) {
    using namespace registro_config;
    std::fill_n(imagen.begin() + kUsuario, kIntervalo - kUsuario, std::uint8_t{' '});
    std::copy_n(std::array<std::uint8_t, 4>{0x02, 0x08, 0x00, 0x50}.begin(), 4, imagen.begin());
    escribir(imagen, kUsuario, "Mu\xF1oz");
    escribir(imagen, kUbicacion, "Finca Norte");
    escribir(imagen, kLatitud, "34\xBA 36' S");
    escribir(imagen, kLongitud, "58\xBA 22' O");
    escribir(imagen, kAltitud, "25");
    imagen[kIntervalo] = 0x30;
}

// Half-hourly records over New Year's Eve, with raw values that walk through every range, small and large.
RegistroPrueba registro(unsigned n) {
    const auto fecha = fechaConAcarreo(2018, 12, 31 + static_cast<int>(n / 48));
    return {.sello = {empacarBcd(static_cast<int>(n / 2 % 24)), empacarBcd(static_cast<int>(n % 2 * 30)), 0,
                      empacarBcd(fecha.dia), empacarBcd(fecha.mes), empacarBcd(fecha.anio % 100)},
            .humedad = static_cast<std::uint16_t>(150 + n * 9),
            .temperatura = static_cast<std::uint16_t>(300 + n * 7),
            .viento = static_cast<std::uint8_t>(n * 5),
            .velViento = static_cast<std::uint16_t>(120 + n * n % 97),
            .radSolar = static_cast<std::uint16_t>(n * 41),
            .presion = static_cast<std::uint16_t>(n * 13),
            .lluvia = static_cast<std::uint8_t>(n % 7),
            .evaporacion = static_cast<std::uint16_t>(n * 17)};
}

Memoria imagen() {
    Memoria memoria;
    const auto bytes = memoria.imagen();
    std::fill(bytes.begin(), bytes.end(), std::uint8_t{0xFF});
    ponerCabecera(bytes);
    constexpr unsigned kRegistros = 96;
    for (unsigned n = 0; n < kRegistros; ++n) {
        // Spread over the first, second and last buffers of the logger's memory.
        const std::size_t bloque = n / 2 + (n < 40 ? 6 : n < 80 ? 490 : 4040);
        ponerRegistro(memoria.bloque(bloque), n % 2, registro(n));
    }
    ponerRegistro(memoria.bloque(10), 1, {.sello = kSelloMalo});
    ponerRegistro(memoria.bloque(12), 0, {.sello = kSelloMalo});
    return memoria;
}

std::string csv() {
    const auto memoria = imagen();
    const auto cabecera = leerCabecera(memoria.imagen());
    Decodificador decodificador;
    decodificador.evaporacion(cabecera.llevaEvaporacion());
    const FechaHora momento{2026, 11, 20, 17h + 4min + 9s};
    const auto archivo =
        archivoDatos(Formato::csv, memoria, decodificador, kUltimoBloque, momento, cabecera.texto);
    return std::string(archivo.bytes());
}

TEST(ImagenDorada, TheCsvOfAWholeImageIsTheKeptOne) {
    if (std::getenv("TELVANE_REHACER_DORADOS")) guardarAtomico(kDorado, csv());
    const auto guardado = leerTodo(kDorado);
    ASSERT_NE(guardado, "") << "missing: " << kDorado;
    EXPECT_EQ(csv(), guardado);
}

}  // namespace
}  // namespace telvane
