#include "historico/textos_historico.h"

#include <fmt/format.h>

#include "loggerconfig/datos_config.h"
#include "platform/cp1252.h"
#include "platform/numero.h"
#include "platform/recorte.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

// All of the text as one number.
std::optional<int> cifras(std::string_view texto) {
    return texto.starts_with('-') ? std::nullopt : numeroDe<int>(texto);
}

// Text of the header from desde to hasta; erased bytes are none.
std::string campo(std::span<const std::uint8_t> cabecera, std::size_t desde, std::size_t hasta) {
    if (cabecera.size() < hasta) return {};
    auto bytes = cabecera.subspan(desde, hasta - desde);
    while (!bytes.empty() && bytes.back() == 0xFF) bytes = bytes.first(bytes.size() - 1);
    const auto limpio = sinControles(utf8DeCp1252(bytes));
    return std::string(recortado(limpio));
}

}  // namespace

std::string isoDe(Instante instante) {
    const auto f = fechaDe(instante);
    const auto h = horaDe(instante);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", f.anio, f.mes, f.dia, h.hora, h.minuto,
                       h.segundo);
}

std::string isoDe(Incorporada momento) {
    return isoDe(Instante(momento.time_since_epoch())) + "Z";
}

std::optional<Instante> leerMomento(std::string_view texto) {
    constexpr std::size_t kSoloFecha = 10;
    constexpr std::size_t kConHora = 16;
    if (texto.size() != kSoloFecha && texto.size() != kConHora) return std::nullopt;
    if (texto[4] != '-' || texto[7] != '-') return std::nullopt;
    const auto anio = cifras(texto.substr(0, 4));
    const auto mes = cifras(texto.substr(5, 2));
    const auto dia = cifras(texto.substr(8, 2));
    if (!anio || !mes || !dia) return std::nullopt;
    using namespace std::chrono;
    const year_month_day fecha{year{*anio} / *mes / *dia};
    if (!fecha.ok()) return std::nullopt;
    Instante instante{local_days{fecha}};
    if (texto.size() == kSoloFecha) return instante;
    const auto hora = cifras(texto.substr(11, 2));
    const auto minuto = cifras(texto.substr(14, 2));
    const bool bien = texto[10] == 'T' && texto[13] == ':' && hora && minuto && *hora < 24 && *minuto < 60;
    if (!bien) return std::nullopt;
    return instante + hours{*hora} + minutes{*minuto};
}

std::string motivoMomento(const std::string& texto) {
    return leerMomento(texto) ? "" : "debe ser una fecha AAAA-MM-DD o un momento AAAA-MM-DDTHH:MM";
}

DatosDeEstacion datosDe(const EstacionGuardada& estacion) {
    namespace rc = registro_config;
    const std::span<const std::uint8_t> cabecera(estacion.resumen.cabecera);
    DatosDeEstacion datos{.ubicacion = campo(cabecera, rc::kUbicacion, rc::kLatitud),
                          .usuario = campo(cabecera, rc::kUsuario, rc::kUbicacion),
                          .intervalo = {}};
    if (cabecera.size() > rc::kIntervalo) {
        const auto indice = indiceIntervalo(cabecera[rc::kIntervalo]);
        if (indice) datos.intervalo = kIntervalos[*indice].minutos;
    }
    return datos;
}

}  // namespace telvane
