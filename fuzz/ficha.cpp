// The record of a download as it may stand beside any image: it is taken as it is meant, or refused.
#include "historico/ficha.h"

#include <array>

#include "fuzz/azar.h"
#include "historico/almacen_sqlite.h"
#include "link/protocolo.h"
#include "platform/texto_visible.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    // Nobody guesses a SHA-256: the kept input that names one names this.
    static constexpr std::array<std::uint8_t, 4> kImagen = {0x02, 0x08, 0x00, 0x50};
    static const auto kHuella = huellaDe(kImagen);
    const Incorporada ahora(std::chrono::hours(24 * 365 * 60));
    try {
        const auto ficha = leerFicha(Entrada(datos, cuantos).texto(),
                                     {.archivo = "a.rgt", .bytes = kImagen, .ahora = ahora});
        exigirQue(ficha.descargada <= ahora + std::chrono::hours(1));
        exigirQue(ficha.puerto >= 1 && ficha.puerto <= kUltimoPuerto);
        exigirQue(!ficha.dispositivo.empty() && sinControles(ficha.dispositivo) == ficha.dispositivo);
        const auto almacen = AlmacenSqlite::temporal();
        const auto estacion = almacen->crearEstacion("02080050", "02080050", false);
        almacen->guardarDescarga(estacion.id, kHuella, ficha);
        exigirQue(almacen->descarga(estacion.id, kHuella) == ficha);
    } catch (const ErrorFicha&) {
        return 0;
    }
    return 0;
}
