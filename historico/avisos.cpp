#include "historico/avisos.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>

#include <fmt/format.h>

#include "historico/limites_aviso.h"
#include "historico/textos_historico.h"
#include "platform/contados.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace limites = limites_aviso;
using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using Flota = std::vector<Observada>;

double enHoras(seconds cuanto) {
    return std::chrono::duration<double, hours::period>(cuanto).count();
}

// "95 segundos", "12 minutos", "3 horas", "4 días"
std::string enPalabras(seconds cuanto) {
    const auto largo = abs(cuanto);
    if (largo < minutes(2)) return contados(largo.count(), "segundo", "segundos");
    if (largo < hours(2)) return fmt::format("{} minutos", floor<minutes>(largo).count());
    if (largo < days(2)) return fmt::format("{} horas", floor<hours>(largo).count());
    return fmt::format("{} días", floor<days>(largo).count());
}

// The newest of which it is known how it came.
std::vector<const FichaDescarga*> descargasConocidas(const Llegadas& ultimas) {
    std::vector<const FichaDescarga*> conocidas;
    for (const auto& llegada : ultimas) {
        if (llegada.descarga) conocidas.push_back(&*llegada.descarga);
    }
    return conocidas;
}

seconds retrasoQueCuenta(const Llegadas& ultimas) {
    const auto ritmo = ritmoDe(ultimas);
    return ritmo + std::max<seconds>(ritmo / limites::kPartesDeRetraso, limites::kRetrasoMinimo);
}

bool calla(const Observada& o, const Mirada& mirada) {
    if (!o.llego) return true;
    const seconds hace = mirada.ahora - *o.llego;
    return mirada.horasDeSilencio ? enHoras(hace) > *mirada.horasDeSilencio
                                  : hace > retrasoQueCuenta(o.ultimas);
}

// Each rule gives the text of its warning, or nothing.
using Texto = std::optional<std::string>;

Texto silencio(const Observada& o, const Mirada& mirada) {
    if (!calla(o, mirada)) return std::nullopt;
    const auto anotada = o.estacion.resumen.incorporada;
    if (!o.llego) {
        return fmt::format(
            "sus imágenes figuran incorporadas después de ahora, hasta el {}: revise el reloj "
            "de este equipo; si está bien, calla hasta la próxima imagen",
            isoDe(anotada));
    }
    const seconds hace = mirada.ahora - *o.llego;
    const auto enteras = std::chrono::floor<hours>(hace).count();
    return fmt::format("sin imágenes desde hace {}, la última es de {}",
                       enteras > 0 ? contados(enteras, "hora", "horas") : enPalabras(hace), isoDe(*o.llego));
}

Texto relojDesviado(const Observada& o) {
    const auto conocidas = descargasConocidas(o.ultimas);
    if (conocidas.empty() || !conocidas.back()->desfase) return std::nullopt;
    const seconds desfase(*conocidas.back()->desfase);
    if (std::chrono::abs(desfase) <= limites::kDesfase) return std::nullopt;
    return fmt::format(
        "su reloj va {} {} (descarga de {}): póngalo en hora con telvane-cli configurar --reloj-pc "
        "--borrar-memoria{}",
        enPalabras(desfase), desfase.count() > 0 ? "adelantado" : "atrasado",
        isoDe(conocidas.back()->descargada),
        std::chrono::abs(std::chrono::abs(desfase) - hours(1)) <= limites::kDesfase
            ? ", si no es el horario de verano de este equipo"
            : "");
}

Texto relojSalto(const Observada& o) {
    std::vector<const FichaDescarga*> conReloj;
    for (const auto* descarga : descargasConocidas(o.ultimas)) {
        if (descarga->desfase) conReloj.push_back(descarga);
    }
    if (conReloj.size() < 2) return std::nullopt;
    const auto& antes = *conReloj[conReloj.size() - 2];
    const auto& ahora = *conReloj.back();
    const seconds salto(*ahora.desfase - *antes.desfase);
    const auto dias = std::chrono::ceil<std::chrono::days>(ahora.descargada - antes.descargada).count();
    if (std::chrono::abs(salto) <= limites::kSalto + dias * limites::kDerivaDiaria) return std::nullopt;
    return fmt::format("su reloj saltó {} hacia {} entre las descargas de {} y {}: mire quién lo cambió",
                       enPalabras(salto), salto.count() > 0 ? "delante" : "atrás", isoDe(antes.descargada),
                       isoDe(ahora.descargada));
}

Texto relojIncorrecto(const Observada& o) {
    constexpr std::string_view kRemedio =
        "póngalo en hora con telvane-cli configurar --reloj-pc --borrar-memoria";
    const auto conocidas = descargasConocidas(o.ultimas);
    const auto cuando = o.llego.value_or(o.estacion.resumen.incorporada);
    const bool alDia = !o.ultimas.empty() && o.ultimas.back().imagen.incorporada >= cuando;
    if (alDia) {
        if (conocidas.empty() || conocidas.back()->desfase) return std::nullopt;
        return fmt::format("su reloj no es una fecha: {}", kRemedio);
    }
    // What came last has no time of its own.
    const auto reloj = relojDe(o.estacion.resumen.cabecera);
    if (!reloj) return fmt::format("el reloj de su imagen no es una fecha: {}", kRemedio);
    // Nobody knows any more when it came.
    if (cuando == kPrimeraIncorporada) return std::nullopt;
    const seconds delante = reloj->time_since_epoch() - cuando.time_since_epoch();
    if (delante <= limites::kRelojFuturo) return std::nullopt;
    return fmt::format("el reloj de su imagen está en el futuro ({}): {}", isoDe(*reloj), kRemedio);
}

Texto memoria(const Observada& o) {
    const auto intervalo = datosDe(o.estacion).intervalo;
    const auto pronostico = intervalo ? pronosticar(o.ultimas, minutes(*intervalo)) : std::nullopt;
    const auto ritmo = ritmoDe(o.ultimas);
    if (!pronostico || pronostico->plazo >= limites::kDescargasPorDelante * ritmo) return std::nullopt;
    constexpr std::string_view kVaciar = "telvane-cli configurar --reloj-pc --borrar-memoria";
    if (pronostico->sobrescribe) {
        return fmt::format(
            "su memoria guarda {} y se descarga cada {}: descárguela más a menudo o alargue el intervalo",
            enPalabras(pronostico->plazo), enPalabras(ritmo));
    }
    if (pronostico->libres == 0)
        return fmt::format("su memoria está llena desde {}: vacíela con {}", isoDe(pronostico->llena),
                           kVaciar);
    return fmt::format("su memoria se llena hacia {}, antes de las dos próximas descargas: vacíela con {}",
                       isoDe(pronostico->llena), kVaciar);
}

// Stations that came to a device within their last downloads, each with the first of them there. Who has been
// at a device of that name for longer has it in another machine.
struct Relevo {
    const Observada* quien;
    const FichaDescarga* primera;
};
using Relevos = std::multimap<std::string_view, Relevo>;

Relevos relevosDe(const Flota& flota) {
    Relevos relevos;
    for (const auto& o : flota) {
        const bool esNueva = static_cast<std::size_t>(o.estacion.resumen.imagenes) == o.ultimas.size();
        std::set<std::string_view> vistos;
        for (const auto* descarga : descargasConocidas(o.ultimas)) {
            const bool llega = !vistos.empty() || esNueva;
            if (vistos.insert(descarga->dispositivo).second && llega)
                relevos.insert({descarga->dispositivo, {&o, descarga}});
        }
    }
    return relevos;
}

// When somebody last reached it. A memory that is the same as the night before brings no new image, but the
// record of its download.
Incorporada ultimaNoticia(const Observada& o) {
    auto ultima = o.llego.value_or(kPrimeraIncorporada);
    for (const auto* descarga : descargasConocidas(o.ultimas))
        ultima = std::max(ultima, descarga->descargada);
    return ultima;
}

// Only of a station that is late: one name in two machines is no news while both are heard of.
Texto otroRegistrador(const Observada& o, const Relevos& relevos, const Mirada& mirada) {
    const auto conocidas = descargasConocidas(o.ultimas);
    const seconds hace = mirada.ahora - ultimaNoticia(o);
    if (conocidas.empty() || hace <= ritmoDe(o.ultimas)) return std::nullopt;
    const auto& suya = *conocidas.back();
    const auto [primero, ultimo] = relevos.equal_range(suya.dispositivo);
    const auto relevo = std::find_if(primero, ultimo, [&](const auto& r) {
        return r.second.quien != &o && r.second.primera->descargada > suya.descargada;
    });
    if (relevo == ultimo) return std::nullopt;
    return fmt::format("en su puerto ({}) responde desde {} la estación {}: revise los cables",
                       sinControles(suya.dispositivo), isoDe(relevo->second.primera->descargada),
                       relevo->second.quien->estacion.nombre);
}

// Of a station whose downloads are read twice.
Texto sinVerificar(const Observada& o) {
    const auto conocidas = descargasConocidas(o.ultimas);
    const bool suelen =
        std::ranges::any_of(conocidas, [](const auto* descarga) { return descarga->verificada; });
    if (!suelen || conocidas.back()->verificada) return std::nullopt;
    return fmt::format("la descarga de {} no se verificó, y otras sí: mire por qué en el diario",
                       isoDe(conocidas.back()->descargada));
}

Texto parcial(const Observada& o) {
    if (o.ultimas.empty()) return std::nullopt;
    const auto& ultima = o.ultimas.back().imagen;
    if (!ultima.parcial()) return std::nullopt;
    return fmt::format("su última imagen es parcial, {} de {}: descárguela otra vez",
                       contados(static_cast<std::int64_t>(ultima.bytes), "byte", "bytes"), kBytesMemoria);
}

Texto conflictos(const Observada& o) {
    if (o.conflictosNuevos == 0) return std::nullopt;
    return fmt::format("la última imagen trae {} en conflicto: mire exportar --todo",
                       contados(o.conflictosNuevos, "hora", "horas"));
}

Texto huecos(const Observada& o) {
    if (o.huecosNuevos == 0) return std::nullopt;
    return fmt::format("la última imagen trae {}: mire la alimentación del registrador",
                       contados(o.huecosNuevos, "hueco", "huecos"));
}

Texto sinCopiar(const Observada& o, const Mirada& mirada) {
    if (o.sinCopiar.value_or(0) == 0) return std::nullopt;
    return fmt::format("{} en {}: copie con copiar --a",
                       contados(*o.sinCopiar, "imagen no está", "imágenes no están"), mirada.copia);
}

}  // namespace

std::vector<std::vector<AvisoEstacion>> avisosDe(const Flota& flota, const Mirada& mirada) {
    std::vector<std::vector<AvisoEstacion>> todos;
    todos.reserve(flota.size());
    const auto relevos = relevosDe(flota);
    for (const auto& o : flota) {
        std::vector<AvisoEstacion> suyos;
        const auto agregar = [&](ClaseAviso clase, Texto texto) {
            if (texto) suyos.push_back({clase, std::move(*texto)});
        };
        agregar(ClaseAviso::silencio, silencio(o, mirada));
        agregar(ClaseAviso::relojDesviado, relojDesviado(o));
        agregar(ClaseAviso::relojSalto, relojSalto(o));
        agregar(ClaseAviso::relojIncorrecto, relojIncorrecto(o));
        agregar(ClaseAviso::memoria, memoria(o));
        agregar(ClaseAviso::otroRegistrador, otroRegistrador(o, relevos, mirada));
        agregar(ClaseAviso::sinVerificar, sinVerificar(o));
        agregar(ClaseAviso::parcial, parcial(o));
        agregar(ClaseAviso::conflictos, conflictos(o));
        agregar(ClaseAviso::huecos, huecos(o));
        agregar(ClaseAviso::sinCopiar, sinCopiar(o, mirada));
        todos.push_back(std::move(suyos));
    }
    return todos;
}

}  // namespace telvane
