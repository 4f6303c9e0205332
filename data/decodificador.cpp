#include "data/decodificador.h"

#include <cstring>
#include <utility>

#include <fmt/format.h>

#include "data/columnas.h"
#include "data/conversiones.h"

namespace telvane {

namespace {

namespace rm = registro_muestra;

// The longest line, and the room that the column routines want after it.
constexpr std::size_t kLineaMaxima = Decodificador::kBloqueMaximo / 2;

constexpr std::uint16_t par(BytesMuestraConst registro, unsigned posicion) {
    return static_cast<std::uint16_t>(registro[posicion] << 8 | registro[posicion + 1]);
}

// The line of a record with a good stamp. Gives its end.
[[gnu::always_inline]] inline char* escribirLinea(char* p, BytesMuestraConst r, bool evaporacion) {
    p = sello::escribir(p, r);
    p = columnas::humedad(p, par(r, rm::kHumedad));
    p = columnas::temperatura(p, par(r, rm::kTemperatura));
    p = columnas::viento(p, r[rm::kDirViento]);
    p = columnas::velViento(p, par(r, rm::kVelViento));
    p = columnas::radSolar(p, par(r, rm::kRadSolar));
    p = columnas::presion(p, par(r, rm::kPresion));
    p = columnas::lluvia(p, r[rm::kLluvia]);
    if (evaporacion) p = columnas::evaporacion(p, par(r, rm::kEvaporacion));
    // The line's end takes the place of the last comma.
    p[-1] = '\r';
    p[0] = '\n';
    return p + 1;
}

constexpr float enDecimas(std::int32_t valor) {
    return static_cast<float>(valor / 10.0);
}
constexpr float enCentesimas(std::int32_t valor) {
    return static_cast<float>(valor / 100.0);
}

std::string contados(std::uint32_t cuantos, std::string_view uno, std::string_view varios) {
    return fmt::format("{} {}", cuantos, cuantos == 1 ? uno : varios);
}

}  // namespace

std::string Recuento::texto() const {
    return fmt::format("{}, {}, {} por fecha u hora incorrecta",
                       contados(escritas, "muestra escrita", "muestras escritas"),
                       contados(vacias, "registro vacio", "registros vacios"),
                       contados(descartadas, "descartado", "descartados"));
}

bool Decodificador::proceso(int posicion, std::uint8_t byte) {
    if (posicion < 0 || posicion >= static_cast<int>(kBytesBloque)) return false;
    const auto lugar = static_cast<unsigned>(posicion) % rm::kBytes;
    registro_[lugar] = byte;
    if (lugar == rm::kAnio && !sello::bueno(registro_, perfil_)) registroValido_ = false;
    if (lugar == rm::kBytes - 1) {
        const bool valido = std::exchange(registroValido_, true);
        recordar(registro_, valido);
        const auto largo = lineaMuestras.size();
        lineaMuestras.resize(largo + kLineaMaxima);
        char* inicio = lineaMuestras.data();
        const auto lineas = terminarRegistro(registro_, valido, inicio, {inicio + largo, 0});
        lineaMuestras.resize(static_cast<std::size_t>(lineas.fin - inicio));
    }
    return true;
}

Decodificador::Lineas Decodificador::procesoBloque(Memoria::BloqueConst bloque, char* destino) {
    const auto primero = bloque.first<rm::kBytes>();
    const auto segundo = bloque.last<rm::kBytes>();
    // The end of the first record leaves the flag true, whatever it was.
    const bool primeroValido = std::exchange(registroValido_, true) && sello::bueno(primero, perfil_);
    const bool segundoValido = sello::bueno(segundo, perfil_);
    recordar(segundo, segundoValido);
    const auto lineas = terminarRegistro(primero, primeroValido, destino, {destino, 0});
    return terminarRegistro(segundo, segundoValido, destino, lineas);
}

inline void Decodificador::recordar(BytesMuestraConst registro, bool valido) {
    std::memcpy(terminado_.data(), registro.data(), rm::kBytes);
    hayTerminado_ = true;
    terminadoValido_ = valido;
    if (evaporacion_) {
        auxiliar2_ = par(registro, rm::kAuxiliar2);
        evaporacionMm_ = par(registro, rm::kEvaporacion);
    }
}

inline Decodificador::Lineas Decodificador::terminarRegistro(BytesMuestraConst registro, bool valido,
                                                             char* inicio, Lineas lineas) const {
    if (valido) return {escribirLinea(lineas.fin, registro, evaporacion_), lineas.cuantas + 1};
    // In the strict profile a bad second record takes the first one's line along.
    return perfil_ == Perfil::estricto ? Lineas{inicio, 0} : lineas;
}

Muestra Decodificador::muestra() const {
    namespace cv = conversiones;
    Muestra m;
    if (!hayTerminado_) return m;
    const BytesMuestraConst r(terminado_);
    if (sello::bueno(r, perfil_)) {
        m.fecha = sello::fecha(r);
        m.hora = sello::hora(r);
    }
    m.auxiliar1 = enDecimas(cv::auxiliar1(par(r, rm::kAuxiliar1)));
    m.humedad = static_cast<float>(cv::humedad(par(r, rm::kHumedad)));
    m.temperatura = enDecimas(cv::temperatura(par(r, rm::kTemperatura)));
    m.dirViento = enDecimas(cv::dirViento(r[rm::kDirViento]));
    m.dirVientoR = columnas::nombreViento(r[rm::kDirViento]);
    m.velViento = enDecimas(cv::velViento(par(r, rm::kVelViento)));
    m.radSolar = enCentesimas(cv::radSolar(par(r, rm::kRadSolar)));
    m.presion = enDecimas(cv::presion(par(r, rm::kPresion)));
    m.lluvia = enDecimas(cv::lluvia(r[rm::kLluvia]));
    m.auxiliar2 = enCentesimas(cv::auxiliar2(auxiliar2_));
    m.evaporacion = enCentesimas(cv::evaporacion(evaporacionMm_));
    m.registroValido = terminadoValido_;
    return m;
}

}  // namespace telvane
