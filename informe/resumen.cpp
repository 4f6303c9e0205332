// The month as text.
#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "informe/clima.h"
#include "informe/informe.h"
#include "informe/texto_html.h"
#include "informe/textos_cuenta.h"
#include "platform/contados.h"
#include "platform/cp1252.h"
#include "regional/formatos.h"

namespace telvane::informe {

namespace {

constexpr std::size_t kAncho = 80;

void agregarLinea(std::string& texto, std::string_view linea) {
    const auto cabe = primerosCaracteres(linea, kAncho);
    texto += cabe.substr(0, cabe.find_last_not_of(' ') + 1);
    texto += '\n';
}

std::string valor(const Cuentas* cuentas, Canal canal, bool maximo) {
    if (cuentas == nullptr || (*cuentas)[canal].valores == 0) return "-";
    const auto& c = (*cuentas)[canal];
    return numero(std::int64_t{maximo ? c.maximo : c.minimo}, 1);
}
std::string cuando(const Cuentas* cuentas, Canal canal, bool maximo) {
    if (cuentas == nullptr || (*cuentas)[canal].valores == 0) return "-";
    const auto& c = (*cuentas)[canal];
    return hora(maximo ? c.cuandoMaximo : c.cuandoMinimo);
}
std::string media(const Cuentas* cuentas, Canal canal) {
    const auto m = cuentas != nullptr ? cuentas->media(canal) : std::nullopt;
    return m ? numero(*m, 1) : "-";
}
std::string opcional(const std::optional<double>& valor) {
    return valor ? numero(*valor, 1) : "-";
}
std::string lluvia(const Cuentas* cuentas) {
    if (cuentas == nullptr || (*cuentas)[Canal::lluvia].valores == 0) return "-";
    return numero((*cuentas)[Canal::lluvia].suma, 1);
}
std::string rumbo(const Cuentas* cuentas) {
    const auto r = cuentas != nullptr ? cuentas->rumboDominante() : std::nullopt;
    return r ? std::string(kNombresRumbo[*r]) : "-";
}

// Right in their columns, a cell's mark behind it. What is wider than its own takes from those behind it, and
// where the line ends from those before it: a blank always parts two.
constexpr std::size_t kColumnas = 13;
using Marcas = std::array<std::string_view, kColumnas>;
std::string fila(const std::array<std::string, kColumnas>& celdas, const Marcas& marcas = {}) {
    constexpr std::array<std::size_t, kColumnas> kAnchosDeColumna = {3, 6, 6, 7, 6, 7, 7, 7, 8, 6, 6, 7, 4};
    std::array<std::size_t, kColumnas> blancos{};
    std::array<std::size_t, kColumnas> minimos{};
    std::size_t largo = 0;
    std::size_t hasta = 0;
    for (std::size_t i = 0; i < kColumnas; ++i) {
        hasta += kAnchosDeColumna[i];
        const auto suyo = caracteres(celdas[i]);
        minimos[i] = i == 0 || suyo == 0 ? 0 : 1;
        blancos[i] = hasta > largo + suyo ? std::max(hasta - largo - suyo, minimos[i]) : minimos[i];
        largo += blancos[i] + suyo + marcas[i].size();
    }
    std::string linea;
    for (std::size_t i = kColumnas; i-- > 0;) {
        const auto sobra = std::min(largo - std::min(largo, kAncho), blancos[i] - minimos[i]);
        largo -= sobra;
        linea.insert(0, std::string(blancos[i] - sobra, ' ').append(celdas[i]).append(marcas[i]));
    }
    return linea;
}

// An asterisk where a value marked salto or fijo is in, an i at rain that samples are missing in.
Marcas marcasDe(const Cuentas* c, bool lluviaConAgujeros) {
    Marcas marcas;
    if (c == nullptr) return marcas;
    const auto& temperatura = (*c)[Canal::temperatura];
    const auto& viento = (*c)[Canal::velViento];
    marcas[1] = asterisco(temperatura.conMarcados());
    marcas[2] = asterisco(temperatura.maximoMarcado);
    marcas[4] = asterisco(temperatura.minimoMarcado);
    if ((*c)[Canal::lluvia].valores > 0 && lluviaConAgujeros) marcas[8] = "i";
    marcas[9] = asterisco(viento.conMarcados());
    marcas[10] = asterisco(viento.maximoMarcado);
    marcas[12] = asterisco((*c)[Canal::dirViento].conMarcados());
    return marcas;
}

std::string filaDe(const std::string& nombre, const Cuentas* c, const std::string& calefaccion,
                   const std::string& refrigeracion, bool conHoras, bool lluviaConAgujeros) {
    const auto horaDe = [&](Canal canal, bool maximo) { return conHoras ? cuando(c, canal, maximo) : ""; };
    return fila(
        {nombre, media(c, Canal::temperatura), valor(c, Canal::temperatura, true),
         horaDe(Canal::temperatura, true), valor(c, Canal::temperatura, false),
         horaDe(Canal::temperatura, false), calefaccion, refrigeracion, lluvia(c), media(c, Canal::velViento),
         valor(c, Canal::velViento, true), horaDe(Canal::velViento, true), rumbo(c)},
        marcasDe(c, lluviaConAgujeros));
}

void encabezar(std::string& texto, const EstacionInformada& estacion, const MesContado& mes) {
    const auto titulo = fmt::format("Resumen climático de {} de {}", nombreDeMes(mes.mes.mes), mes.mes.anio);
    agregarLinea(texto, std::string((kAncho - std::min(caracteres(titulo), kAncho)) / 2, ' ') + titulo);
    agregarLinea(texto, "");
    const auto dato = [&](CampoTexto campo) { return llanoDeRegistrador(estacion[campo]); };
    agregarLinea(texto,
                 fmt::format("Estación:  {}", estacion.nombre.empty() ? "sin número de serie"
                                                                      : llanoDeRegistrador(estacion.nombre)));
    agregarLinea(texto, fmt::format("Ubicación: {}", dato(CampoTexto::ubicacion)));
    agregarLinea(texto, fmt::format("Usuario:   {}", dato(CampoTexto::usuario)));
    agregarLinea(texto, fmt::format("Latitud:   {}   Longitud: {}   Altitud: {}", dato(CampoTexto::latitud),
                                    dato(CampoTexto::longitud), dato(CampoTexto::altitud)));
    agregarLinea(texto, "");
}

void ponerTabla(std::string& texto, const ClimaDelMes& clima, const MesContado& mes) {
    agregarLinea(texto, "           Temperatura (ºC)            Grados-día   Lluvia      Viento (km/h)");
    agregarLinea(texto, fila({"Día", "Media", "Máx.", "Hora", "Mín.", "Hora", "Cal.", "Refr.", "mm", "Media",
                              "Máx.", "Hora", "De"}));
    agregarLinea(texto, std::string(80, '-'));
    for (const auto& dia : clima.dias) {
        agregarLinea(texto, filaDe(std::to_string(dia.dia), dia.cuentas, opcional(dia.calefaccion),
                                   opcional(dia.refrigeracion), true, dia.lluviaConAgujeros));
    }
    agregarLinea(texto, std::string(80, '-'));
    agregarLinea(texto, filaDe("Mes", &mes.cuentas, numero(clima.calefaccion, 1),
                               numero(clima.refrigeracion, 1), false, mes.conAgujeros(Canal::lluvia)));
    agregarLinea(texto, "");
}

void ponerExtremosYDias(std::string& texto, const ClimaDelMes& clima, const Cuentas& c) {
    const auto diaHora = [](Instante m) { return fmt::format("día {} a las {}", fechaDe(m).dia, hora(m)); };
    const auto& temperatura = c[Canal::temperatura];
    if (temperatura.valores > 0) {
        const auto extremo = [&](std::string_view nombre, std::int32_t v, bool marcado, Instante m) {
            agregarLinea(texto, fmt::format("Temperatura {} {}{} ºC, {}", nombre, numero(std::int64_t{v}, 1),
                                            asterisco(marcado), diaHora(m)));
        };
        extremo("máxima", temperatura.maximo, temperatura.maximoMarcado, temperatura.cuandoMaximo);
        extremo("mínima", temperatura.minimo, temperatura.minimoMarcado, temperatura.cuandoMinimo);
    }
    agregarLinea(texto, fmt::format("Días con máxima de 32.0 ºC o más: {};  de 0.0 ºC o menos: {}",
                                    clima.maximaDesde32, clima.maximaHasta0));
    agregarLinea(texto, fmt::format("Días con mínima de 0.0 ºC o menos: {};  de -18.0 ºC o menos: {}",
                                    clima.minimaHasta0, clima.minimaHasta18Bajo0));
    agregarLinea(texto, fmt::format("Días con lluvia de 0.2 mm o más: {};  de 2.0: {};  de 20.0: {}",
                                    clima.lluviaDesde02, clima.lluviaDesde2, clima.lluviaDesde20));
    if (clima.diaMasLluvioso)
        agregarLinea(texto, fmt::format("Día de más lluvia: {}", *clima.diaMasLluvioso));
    agregarLinea(texto, fmt::format("Calma (menos de 1.8 km/h): {};  sin rumbo: {}",
                                    contados(c.calmas, "muestra", "muestras"), c.sinRumbo));
    agregarLinea(texto, "");
}

// How much the month rests on, and what its marks say.
void ponerPie(std::string& texto, const MesContado& mes) {
    const auto& c = mes.cuentas;
    agregarLinea(texto, fmt::format("Muestras: {} de {};  huecos: {};  conflictos: {};  marcadas: {}",
                                    c.sellos, contados(c.esperadas(), "esperada", "esperadas"), c.huecos,
                                    c.conflictos, c.marcadas));
    std::uint32_t fuera = 0;
    for (const auto& canal : c.canales) fuera += canal.fueraDeRango();
    if (fuera > 0) {
        agregarLinea(
            texto,
            fmt::format("Valores fuera de rango, que no entran en extremos, medias ni sumas: {}", fuera));
    }
    if (mes.incompleta(Canal::temperatura))
        agregarLinea(texto, "Temperatura media: incompleto (faltan días)");
    if (mes.incompleta(Canal::velViento)) agregarLinea(texto, "Viento medio: incompleto (faltan días)");
    if (mes.conAgujeros(Canal::lluvia))
        agregarLinea(texto, "Lluvia total: incompleto (faltan valores); lo mismo los días con i");
    if (c[Canal::temperatura].conMarcados() || c[Canal::velViento].conMarcados() ||
        c[Canal::dirViento].conMarcados())
        agregarLinea(texto, "*: entra un valor con marca de salto o de fijo");
    agregarLinea(texto,
                 fmt::format("Grados-día con base {} ºC. Un día va de las 00:00 a las 24:00 del registrador.",
                             numero(kBaseGradosDia, 1)));
}

}  // namespace

std::string resumenDelMes(const EstacionInformada& estacion, const Informe& informe, const MesContado& mes) {
    const auto clima = climaDe(informe.estadistica, mes);
    std::string texto;
    encabezar(texto, estacion, mes);
    ponerTabla(texto, clima, mes);
    ponerExtremosYDias(texto, clima, mes.cuentas);
    ponerPie(texto, mes);
    return texto;
}

}  // namespace telvane::informe
