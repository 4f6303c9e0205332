#include "historico/filas_postgres.h"

#include <fmt/format.h>

namespace telvane {

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

// The server counts microseconds from here.
constexpr Instante kOrigen = kPrimerMomento;

constexpr std::string_view kComienzoDeCopia{"PGCOPY\n\377\r\n\0\0\0\0\0\0\0\0\0", 19};

std::optional<Instante> momentoEn(const ResultadoPostgres& r, int fila, int columna) {
    if (r.esNulo(fila, columna)) return std::nullopt;
    return instanteDeMicros(r.entero(fila, columna));
}
std::chrono::sys_seconds utcEn(const ResultadoPostgres& r, int fila, int columna) {
    return std::chrono::sys_seconds(instanteDeMicros(r.entero(fila, columna)).time_since_epoch());
}

}  // namespace

std::int64_t microsDe(Instante instante) {
    return microseconds(instante - kOrigen).count();
}

Instante instanteDeMicros(std::int64_t micros) {
    return kOrigen + std::chrono::duration_cast<seconds>(microseconds(micros));
}

std::string sinZona(int cual) {
    return fmt::format("(to_timestamp(${}::bigint) AT TIME ZONE 'UTC')", cual);
}

void ponerOpcional(Parametros& p, const std::optional<Instante>& instante) {
    if (instante) {
        p.entero(segundosDe(*instante));
    } else {
        p.nulo();
    }
}

EstacionGuardada estacionEn(const ResultadoPostgres& r, int fila) {
    EstacionGuardada e{.id = r.entero(fila, 0),
                       .nombre = r.texto(fila, 1),
                       .serie = r.texto(fila, 2),
                       .evaporacion = r.logico(fila, 3),
                       .resumen = {}};
    if (!r.esNulo(fila, 4)) e.resumen.masNueva = arregloEn<32>(r, fila, 4);
    const auto cabecera = r.bytes(fila, 5);
    e.resumen.cabecera.assign(cabecera.begin(), cabecera.end());
    e.resumen.imagenes = r.entero(fila, 6);
    e.resumen.muestras = r.entero(fila, 7);
    e.resumen.huecos = r.entero(fila, 8);
    e.resumen.conflictos = r.entero(fila, 9);
    e.resumen.desde = momentoEn(r, fila, 10);
    e.resumen.hasta = momentoEn(r, fila, 11);
    e.resumen.incorporada = incorporadaDe(utcEn(r, fila, 12));
    return e;
}

FichaImagen fichaEn(const ResultadoPostgres& r, int fila) {
    return {.huella = arregloEn<32>(r, fila, 0),
            .bytes = static_cast<std::size_t>(r.entero(fila, 1)),
            .reloj = momentoEn(r, fila, 2),
            .desde = momentoEn(r, fila, 3),
            .hasta = momentoEn(r, fila, 4),
            .incorporada = incorporadaDe(utcEn(r, fila, 5)),
            .origen = r.texto(fila, 6),
            .muestras = r.entero(fila, 7),
            .retrocesos = r.entero(fila, 8),
            .contenida = r.logico(fila, 9)};
}
FichaDescarga descargaEn(const ResultadoPostgres& r, int fila, int desde) {
    FichaDescarga f{.descargada = utcEn(r, fila, desde),
                    .puerto = r.entero(fila, desde + 1),
                    .dispositivo = r.texto(fila, desde + 2),
                    .desfase = {},
                    .verificada = r.logico(fila, desde + 4),
                    .reintentos = r.entero(fila, desde + 5),
                    .erroresDeLinea = r.entero(fila, desde + 6)};
    if (!r.esNulo(fila, desde + 3)) f.desfase = r.entero(fila, desde + 3);
    return f;
}

CopiaBinaria::CopiaBinaria(std::int16_t campos) : campos_(campos), bytes_(kComienzoDeCopia) {}

void CopiaBinaria::campo(std::span<const std::uint8_t> bytes) {
    agregarEntero(bytes_, static_cast<std::int32_t>(bytes.size()));
    bytes_.append(bytes.begin(), bytes.end());
}

const std::string& CopiaBinaria::terminar() {
    agregarEntero(bytes_, std::int16_t{-1});
    return bytes_;
}

}  // namespace telvane
