#include "historico/filas_sqlite.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <span>

namespace telvane {

namespace {

std::optional<Instante> opcionalEn(const Sentencia& s, int columna) {
    if (s.esNulo(columna)) return std::nullopt;
    return instanteDeSegundos(s.entero(columna));
}
std::chrono::sys_seconds utcEn(const Sentencia& s, int columna) {
    return std::chrono::sys_seconds(std::chrono::seconds(s.entero(columna)));
}

}  // namespace

void ponerOpcional(Sentencia& s, int cual, const std::optional<Instante>& instante) {
    if (instante) {
        s.poner(cual, segundosDe(*instante));
    } else {
        s.ponerNulo(cual);
    }
}

void ponerRegistro(Sentencia& s, int desde, const CanalesCrudos& canales) {
    for (std::size_t i = 0; i < CanalesCrudos::kCuantos; ++i) {
        s.poner(desde + static_cast<int>(i), std::int64_t{canales.crudos[i]});
    }
    s.poner(desde + static_cast<int>(CanalesCrudos::kCuantos),
            std::span<const std::uint8_t>(canales.resto.data(), canales.largoResto));
}

void ponerEstacion(Sentencia& s, const EstacionGuardada& e) {
    s.poner(1, e.id).poner(2, e.nombre).poner(3, e.serie).poner(4, std::int64_t{e.evaporacion});
}

Huella huellaEn(const Sentencia& s, int columna) {
    Huella huella{};
    const auto bytes = s.bytes(columna);
    std::copy_n(bytes.begin(), std::min(bytes.size(), huella.size()), huella.begin());
    return huella;
}

BytesMuestra registroEn(const Sentencia& s, int desde, Instante instante) {
    CanalesCrudos canales;
    for (std::size_t i = 0; i < CanalesCrudos::kCuantos; ++i) {
        canales.crudos[i] = static_cast<std::uint16_t>(s.entero(desde + static_cast<int>(i)));
    }
    const auto resto = s.bytes(desde + static_cast<int>(CanalesCrudos::kCuantos));
    canales.largoResto = std::min(resto.size(), canales.resto.size());
    std::copy_n(resto.begin(), canales.largoResto, canales.resto.begin());
    return registroDe(instante, canales);
}

EstacionGuardada estacionEn(const Sentencia& s) {
    EstacionGuardada e{.id = s.entero(0),
                       .nombre = s.texto(1),
                       .serie = s.texto(2),
                       .evaporacion = s.entero(3) != 0,
                       .resumen = {}};
    if (!s.esNulo(4)) e.resumen.masNueva = huellaEn(s, 4);
    e.resumen.imagenes = s.entero(5);
    e.resumen.muestras = s.entero(6);
    e.resumen.huecos = s.entero(7);
    e.resumen.conflictos = s.entero(8);
    e.resumen.desde = opcionalEn(s, 9);
    e.resumen.hasta = opcionalEn(s, 10);
    e.resumen.incorporada = incorporadaDe(utcEn(s, 11));
    const auto cabecera = s.bytes(12);
    e.resumen.cabecera.assign(cabecera.begin(), cabecera.end());
    return e;
}

FichaImagen fichaEn(const Sentencia& s) {
    return {.huella = huellaEn(s, 0),
            .bytes = static_cast<std::size_t>(s.entero(1)),
            .reloj = opcionalEn(s, 2),
            .desde = opcionalEn(s, 3),
            .hasta = opcionalEn(s, 4),
            .incorporada = incorporadaDe(utcEn(s, 5)),
            .origen = s.texto(6),
            .muestras = s.entero(7),
            .retrocesos = s.entero(8),
            .contenida = s.entero(9) != 0};
}

FichaDescarga descargaEn(const Sentencia& s, int desde) {
    FichaDescarga f{.descargada = utcEn(s, desde),
                    .puerto = s.entero(desde + 1),
                    .dispositivo = s.texto(desde + 2),
                    .desfase = {},
                    .verificada = s.entero(desde + 4) != 0,
                    .reintentos = s.entero(desde + 5),
                    .erroresDeLinea = s.entero(desde + 6)};
    if (!s.esNulo(desde + 3)) f.desfase = s.entero(desde + 3);
    return f;
}

}  // namespace telvane
