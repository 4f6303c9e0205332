#include "historico/imagen.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>

#include "data/registros.h"
#include "data/sello.h"
#include "loggerconfig/datos_config.h"

namespace telvane {

namespace {

constexpr std::size_t kBytesRegistro = registro_muestra::kBytes;

// Slots that both have whole.
std::size_t ranurasComunes(BytesImagen una, BytesImagen otra) {
    return std::min({una.size() / kBytesRegistro, otra.size() / kBytesRegistro, kRanuras});
}

bool igualesEn(BytesImagen una, BytesImagen otra, std::size_t ranura) {
    return std::memcmp(una.data() + ranura * kBytesRegistro, otra.data() + ranura * kBytesRegistro,
                       kBytesRegistro) == 0;
}

// A memory that is full goes on at its beginning: two rising runs.
template <typename T, typename Antes, typename LaMisma>
void ordenarDistintas(std::vector<T>& lista, Antes antes, LaMisma laMisma) {
    std::rotate(lista.begin(), std::is_sorted_until(lista.begin(), lista.end(), antes), lista.end());
    if (!std::is_sorted(lista.begin(), lista.end(), antes)) std::sort(lista.begin(), lista.end(), antes);
    lista.erase(std::unique(lista.begin(), lista.end(), laMisma), lista.end());
}
void ordenar(std::vector<Fila>& filas) {
    ordenarDistintas(filas, std::less<>(), std::mem_fn(&Fila::esLaMisma));
}

// A good stamp as a number that rises with time: year, month, day, hour, minute, second.
constexpr std::uint64_t enOrden(std::uint64_t palabra) {
    return (palabra & 0xFFFF'FF00'0000U) | (palabra & 0xFFU) << 16 | (palabra & 0xFF00U) |
           (palabra >> 16 & 0xFFU);
}
std::uint64_t enOrden(Instante momento) {
    const auto fecha = fechaDe(momento);
    const auto hora = horaDe(momento);
    constexpr int kPrimerAnio = 2000;
    constexpr int kAnios = 100;
    if (fecha.anio < kPrimerAnio) return 0;
    if (fecha.anio >= kPrimerAnio + kAnios) return UINT64_MAX;
    return enOrden(sello::palabra(empacarBcd(hora.hora), empacarBcd(hora.minuto), empacarBcd(hora.segundo),
                                  empacarBcd(fecha.dia), empacarBcd(fecha.mes),
                                  empacarBcd(fecha.anio - kPrimerAnio)));
}

}  // namespace

std::vector<Fila> filasDe(BytesImagen imagen) {
    return filasQueNoEstanEn(imagen, {});
}

std::vector<std::uint16_t> ranurasEnOrden(BytesImagen imagen, Instante desde, Instante hasta) {
    struct Sellada {
        std::uint64_t sello;
        std::uint16_t ranura;
    };
    const auto primero = enOrden(desde);
    const auto ultimo = enOrden(hasta);
    std::vector<Sellada> selladas;
    selladas.reserve(imagen.size() / kBytesRegistro);
    recorrerRegistros(imagen, [&](std::size_t ranura, BytesMuestraConst registro) {
        const auto suyo = enOrden(sello::palabra(registro));
        if (suyo >= primero && suyo <= ultimo) selladas.push_back({suyo, static_cast<std::uint16_t>(ranura)});
    });
    const auto bytes = [&](const Sellada& una) {
        return std::string_view(reinterpret_cast<const char*>(imagen.data()) + una.ranura * kBytesRegistro,
                                kBytesRegistro);
    };
    ordenarDistintas(
        selladas,
        [&](const Sellada& a, const Sellada& b) {
            return a.sello != b.sello ? a.sello < b.sello : bytes(a) < bytes(b);
        },
        [&](const Sellada& a, const Sellada& b) { return a.sello == b.sello && bytes(a) == bytes(b); });
    std::vector<std::uint16_t> ranuras(selladas.size());
    std::ranges::transform(selladas, ranuras.begin(), &Sellada::ranura);
    return ranuras;
}

CuentaDeRanuras contarRanuras(BytesImagen imagen) {
    CuentaDeRanuras cuenta;
    const auto hasta = ranurasComunes(imagen, imagen);
    for (std::size_t ranura = kPrimeraRanura; ranura < hasta; ++ranura) {
        const auto registro = enRanura(imagen, ranura);
        if (sello::bueno(registro, Perfil::ampliado)) continue;
        ++(sello::borrado(registro) ? cuenta.vacias : cuenta.descartadas);
    }
    return cuenta;
}

std::int64_t retrocesosDe(BytesImagen imagen) {
    std::int64_t cuantos = 0;
    std::size_t anterior = 0;
    std::uint64_t suyo = 0;
    recorrerRegistros(imagen, [&](std::size_t ranura, BytesMuestraConst registro) {
        const auto este = enOrden(sello::palabra(registro));
        if (ranura == anterior + 1 && este <= suyo) ++cuantos;
        anterior = ranura;
        suyo = este;
    });
    return cuantos;
}

std::optional<std::string> serieDe(BytesImagen imagen) {
    constexpr std::size_t kCuantos = 4;
    if (imagen.size() < kCuantos) return std::nullopt;
    const auto bytes = imagen.subspan(registro_config::kSerie, kCuantos);
    const auto todos = [&](std::uint8_t valor) {
        return std::all_of(bytes.begin(), bytes.end(), [&](auto b) { return b == valor; });
    };
    if (todos(0x00) || todos(0xFF)) return std::nullopt;
    std::string digitos;
    for (const auto byte : bytes) {
        const auto dos = digitosBcd(byte);
        digitos.append(dos.begin(), dos.end());
    }
    return digitos;
}

std::optional<Instante> relojDe(BytesImagen imagen) {
    // The clock is written as a record's stamp is.
    if (imagen.size() < registro_config::kFin) return std::nullopt;
    BytesMuestra sello{};
    const auto reloj =
        imagen.subspan(registro_config::kReloj, registro_config::kFin - registro_config::kReloj);
    std::copy(reloj.begin(), reloj.end(), sello.begin());
    if (!sello::bueno(sello, Perfil::ampliado)) return std::nullopt;
    return instanteDe(sello);
}

Trato comparar(BytesImagen una, BytesImagen otra) {
    std::size_t mismoSello = 0;
    std::size_t distintos = 0;
    const auto hasta = ranurasComunes(una, otra);
    for (std::size_t ranura = kPrimeraRanura; ranura < hasta; ++ranura) {
        const auto a = enRanura(una, ranura);
        const auto b = enRanura(otra, ranura);
        const bool buenos = sello::bueno(a, Perfil::ampliado) && sello::bueno(b, Perfil::ampliado);
        if (!buenos || sello::palabra(a) != sello::palabra(b)) continue;
        ++mismoSello;
        if (!igualesEn(una, otra, ranura)) ++distintos;
    }
    constexpr std::size_t kBastan = 3;
    if (mismoSello < kBastan) return Trato::ajenas;
    return 2 * distintos > mismoSello ? Trato::discrepan : Trato::concuerdan;
}

bool seParecen(BytesImagen una, BytesImagen otra) {
    std::size_t iguales = 0;
    const auto hasta = ranurasComunes(una, otra);
    for (std::size_t ranura = kPrimeraRanura; ranura < hasta; ++ranura) {
        if (igualesEn(una, otra, ranura)) ++iguales;
    }
    return iguales > 0 && 8 * iguales >= hasta - kPrimeraRanura;
}

bool contiene(BytesImagen entera, BytesImagen parte) {
    bool todas = true;
    recorrerRegistros(parte, [&](std::size_t ranura, BytesMuestraConst) {
        todas = todas && (ranura + 1) * kBytesRegistro <= entera.size() && igualesEn(entera, parte, ranura);
    });
    return todas;
}

std::vector<Fila> filasQueNoEstanEn(BytesImagen imagen, BytesImagen otra) {
    std::vector<Fila> filas;
    const auto comunes = ranurasComunes(imagen, otra);
    const auto hasta = ranurasComunes(imagen, imagen);
    if (comunes == 0) filas.reserve(hasta);
    for (std::size_t ranura = kPrimeraRanura; ranura < hasta; ++ranura) {
        if (ranura < comunes && igualesEn(imagen, otra, ranura)) continue;
        const auto registro = enRanura(imagen, ranura);
        if (sello::bueno(registro, Perfil::ampliado))
            filas.push_back({instanteDe(registro), copiaDe(registro)});
    }
    ordenar(filas);
    return filas;
}

}  // namespace telvane
