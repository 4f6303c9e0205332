#include "data/decodificador.h"

#include <fmt/format.h>

#include "data/columnas.h"
#include "data/conversiones.h"
#include "data/linea_muestra.h"
#include "platform/contados.h"

namespace telvane {

namespace {

namespace rm = registro_muestra;

constexpr float enDecimas(std::int32_t valor) {
    return static_cast<float>(valor / 10.0);
}
constexpr float enCentesimas(std::int32_t valor) {
    return static_cast<float>(valor / 100.0);
}

void agregarLinea(std::string& lineas, BytesMuestraConst registro, bool evaporacion) {
    const auto largo = lineas.size();
    lineas.resize(largo + kLineaMaxima);
    const char* fin = escribirLinea(lineas.data() + largo, registro, evaporacion);
    lineas.resize(static_cast<std::size_t>(fin - lineas.data()));
}

}  // namespace

std::string Recuento::texto() const {
    auto linea = fmt::format("{}, {}, {} por fecha u hora incorrecta",
                             contados(escritas, "muestra escrita", "muestras escritas"),
                             contados(vacias, "registro vacio", "registros vacios"),
                             contados(descartadas, "descartado", "descartados"));
    if (valenAmpliado > descartadas / 2) {
        linea += fmt::format(" ({} con --perfil ampliado)", contados(valenAmpliado, "vale", "valen"));
    }
    return linea;
}

bool Decodificador::proceso(int posicion, std::uint8_t byte) {
    if (posicion < 0 || posicion >= static_cast<int>(kBytesBloque)) return false;
    const auto lugar = static_cast<unsigned>(posicion) % rm::kBytes;
    registro_[lugar] = byte;
    if (lugar == rm::kAnio && !sello::bueno(registro_, perfil_)) registroValido_ = false;
    if (lugar == rm::kBytes - 1) {
        const bool valido = std::exchange(registroValido_, true);
        recordar(registro_, valido);
        if (seLlevaAlPrimero(valido)) lineaMuestras.clear();
        if (valido) agregarLinea(lineaMuestras, registro_, evaporacion_);
    }
    return true;
}

Muestra Decodificador::muestra() const {
    if (!hayTerminado_) return {};
    auto valores = medidas(terminado_);
    valores.auxiliar2 = conversiones::auxiliar2(auxiliar2_);
    valores.evaporacion = conversiones::evaporacion(evaporacionMm_);
    auto muestra = muestraDe(valores);
    if (sello::bueno(terminado_, perfil_)) {
        muestra.fecha = sello::fecha(terminado_);
        muestra.hora = sello::hora(terminado_);
    }
    muestra.registroValido = terminadoValido_;
    return muestra;
}

Muestra muestraDe(const Medidas& valores) {
    return {.fecha = {},
            .hora = {},
            .auxiliar1 = enDecimas(valores.auxiliar1),
            .humedad = static_cast<float>(valores.humedad),
            .temperatura = enDecimas(valores.temperatura),
            .dirViento = enDecimas(valores.dirViento),
            .dirVientoR = columnas::nombreViento(valores.crudoDirViento),
            .velViento = enDecimas(valores.velViento),
            .radSolar = enCentesimas(valores.radSolar),
            .presion = enDecimas(valores.presion),
            .lluvia = enDecimas(valores.lluvia),
            .auxiliar2 = enCentesimas(valores.auxiliar2),
            .evaporacion = enCentesimas(valores.evaporacion)};
}

}  // namespace telvane
