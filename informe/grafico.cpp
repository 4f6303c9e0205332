#include "informe/grafico.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

#include <fmt/format.h>

#include "informe/texto_html.h"
#include "informe/trazo.h"

namespace telvane::informe {

namespace {

constexpr std::int64_t kAlto = 1500;  // of the drawing, tenths of a pixel
constexpr int kAltoPuntos = 150;

void poner(std::string& svg, std::string_view clase, const Trazo& trazo) {
    if (trazo.vacio()) return;
    fmt::format_to(std::back_inserter(svg), "<path class=\"{}\" d=\"{}\"/>", clase, trazo.texto());
}

bool hayValores(const std::vector<Columna>& columnas) {
    return std::ranges::any_of(columnas, [](const Columna& c) { return c.valores > 0; });
}

Escala escalaDe(const CanalInformado& canal, const std::vector<Columna>& columnas) {
    if (!hayValores(columnas)) return escalaPara(0, 1);
    std::int64_t minimo = INT32_MAX;
    std::int64_t maximo = INT32_MIN;
    for (const auto& c : columnas) {
        if (c.valores == 0) continue;
        minimo = std::min<std::int64_t>(minimo, c.minimo);
        maximo = std::max<std::int64_t>(maximo, c.maximo);
    }
    // Wind and radiation are measured from nothing.
    if (!canal.conMinimo) minimo = std::min<std::int64_t>(minimo, 0);
    return escalaPara(minimo, maximo);
}

// Runs of columns that no gap parts, those without values left out.
std::vector<std::vector<std::size_t>> tramosDe(const std::vector<Columna>& columnas,
                                               const ColumnasGrafico& todas) {
    std::vector<std::vector<std::size_t>> tramos;
    bool corte = true;
    for (std::size_t i = 0; i < columnas.size(); ++i) {
        corte = corte || todas.cortada(i);
        if (columnas[i].valores == 0) continue;
        if (corte) tramos.emplace_back();
        tramos.back().push_back(i);
        corte = false;
    }
    return tramos;
}

void dibujarBanda(std::string& svg, const std::vector<Columna>& columnas, const ColumnasGrafico& todas,
                  const Escala& escala) {
    Trazo banda;
    Trazo media;
    Trazo solas;
    for (const auto& tramo : tramosDe(columnas, todas)) {
        const auto x = [](std::size_t i) { return static_cast<std::int64_t>(i); };
        const auto y = [&](std::int64_t valor) { return escala.lugar(valor, kAlto); };
        banda.mover(x(tramo.front()), y(columnas[tramo.front()].maximo));
        for (const auto i : tramo) {
            if (i != tramo.front()) banda.hacia(x(i), y(columnas[i].maximo));
        }
        for (auto i = tramo.rbegin(); i != tramo.rend(); ++i) banda.hacia(x(*i), y(columnas[*i].minimo));
        banda.cerrar();
        const auto deMedia = [&](std::size_t i) {
            return y(std::llround(static_cast<double>(columnas[i].suma) / columnas[i].valores));
        };
        media.mover(x(tramo.front()), deMedia(tramo.front()));
        if (tramo.size() == 1) solas.punto(x(tramo.front()), deMedia(tramo.front()));
        for (const auto i : tramo) {
            if (i != tramo.front()) media.hacia(x(i), deMedia(i));
        }
    }
    poner(svg, "banda", banda);
    poner(svg, "media", media);
    poner(svg, "media sola", solas);
}

void dibujarDirecciones(std::string& svg, const ColumnasGrafico& todas) {
    constexpr std::size_t kPasos = 160;
    const auto y = [](std::size_t paso) {
        return kAlto - static_cast<std::int64_t>(paso) * kAlto / static_cast<std::int64_t>(kPasos);
    };
    Trazo puntos;
    for (const auto& tramo : todas.tramosDeRumbos()) {
        puntos.mover(static_cast<std::int64_t>(tramo.columna), y(tramo.desde));
        puntos.hacia(static_cast<std::int64_t>(tramo.columna), y(tramo.hasta));
    }
    poner(svg, todas.porSectores() ? "puntos tenues" : "puntos", puntos);
    if (!todas.porSectores()) return;
    Trazo dominantes;
    for (const auto& uno : todas.dominantes())
        dominantes.punto(static_cast<std::int64_t>(uno.columna), y(uno.paso));
    poner(svg, "puntos", dominantes);
}

// Columns with a mark beyond which its shapes are drawn small, or they would hide what they mark.
constexpr std::ptrdiff_t kMarcasDensas = 250;

// Marked values stand where they are; those beyond the axis at its end. The worst are drawn last, over what
// else their samples are marked.
void dibujarMarcas(std::string& svg, const std::vector<Columna>& columnas, const Escala& escala) {
    for (std::size_t m = kMarcas; m-- > 0;) {
        Trazo puntos;
        const bool rango = m == static_cast<std::size_t>(Marca::rango);
        const auto ponerUna = [&](std::int64_t x, std::int64_t y) {
            puntos.punto(x, y);
            // A square of no length is not drawn on paper.
            if (rango) puntos.hacia(x + 1, y);
        };
        for (std::size_t i = 0; i < columnas.size(); ++i) {
            const auto& marcados = columnas[i].marcados[m];
            if (!marcados.hay) continue;
            const auto x = static_cast<std::int64_t>(i);
            const auto abajo = escala.lugar(marcados.minimo, kAlto);
            const auto arriba = escala.lugar(marcados.maximo, kAlto);
            ponerUna(x, arriba);
            if (abajo != arriba) ponerUna(x, abajo);
        }
        if (puntos.vacio()) continue;
        const bool densas = std::ranges::count_if(columnas, [&](const Columna& c) {
                                return c.marcados[m].hay;
                            }) > kMarcasDensas;
        const auto clase = fmt::format("marca {}{}", kMarcasInformadas[m].id, densas ? " densa" : "");
        poner(svg, clase, puntos);
        // The inside of the ring.
        if (m == static_cast<std::size_t>(Marca::salto)) poner(svg, "marca dentro", puntos);
    }
}

void dibujarConflictos(std::string& svg, const ColumnasGrafico& todas) {
    Trazo rayas;
    for (std::size_t i = 0; i < kColumnas; ++i) {
        if (!todas.conflictos()[i]) continue;
        rayas.mover(static_cast<std::int64_t>(i), 0);
        rayas.hacia(static_cast<std::int64_t>(i), 90);
    }
    poner(svg, "conflicto", rayas);
}

void dibujarFondo(std::string& svg, const ColumnasGrafico& todas, int divisiones,
                  const std::vector<MarcaDeTiempo>& tiempos) {
    Trazo vacios;
    for (const auto& vacio : todas.vacios()) {
        const auto desde = std::llround(vacio.desde);
        const auto hasta = std::max(std::llround(vacio.hasta), desde + 1);
        vacios.mover(desde, 0);
        vacios.hacia(hasta, 0);
        vacios.hacia(hasta, kAlto);
        vacios.hacia(desde, kAlto);
        vacios.cerrar();
    }
    poner(svg, "vacio", vacios);
    Trazo rejilla;
    for (const auto& tiempo : tiempos) {
        const auto x = std::llround(todas.lugar(tiempo.momento));
        rejilla.mover(x, 0);
        rejilla.hacia(x, kAlto);
    }
    for (int i = 0; i <= divisiones; ++i) {
        const auto y = i * kAlto / divisiones;
        rejilla.mover(0, y);
        rejilla.hacia(static_cast<std::int64_t>(kColumnas), y);
    }
    poner(svg, "rejilla", rejilla);
}

void rotularTiempo(std::string& svg, const ColumnasGrafico& todas,
                   const std::vector<MarcaDeTiempo>& tiempos) {
    svg += "<g class=\"tiempo\">";
    for (const auto& tiempo : tiempos) {
        fmt::format_to(std::back_inserter(svg), "<text x=\"{}%\" y=\"{}\"{}>{}</text>",
                       numero(todas.lugar(tiempo.momento) / 10, 2), kAltoPuntos + 17,
                       tiempo.menor ? " class=\"menor\"" : "", tiempo.texto);
    }
    svg += "</g>";
}

void rotularEscala(std::string& svg, const Escala& escala, int decimales, bool derecha) {
    svg += derecha ? "<g class=\"escala derecha\">" : "<g class=\"escala\">";
    // No more decimals than the steps have.
    auto quitar = decimales;
    auto paso = escala.paso;
    while (quitar > 0 && paso % 10 == 0 && escala.desde / (escala.paso / paso) % 10 == 0) {
        paso /= 10;
        --quitar;
    }
    std::int64_t divisor = 1;
    for (int i = quitar; i < decimales; ++i) divisor *= 10;
    for (int i = 0; i <= escala.divisiones(); ++i) {
        const auto valor = escala.hasta - i * escala.paso;
        fmt::format_to(std::back_inserter(svg), "<text x=\"{}\"{} y=\"{}\">{}</text>", derecha ? "100%" : "0",
                       derecha ? " dx=\"8\"" : " dx=\"-8\"", i * kAltoPuntos / escala.divisiones() + 4,
                       numero(valor / divisor, quitar));
    }
    svg += "</g>";
}

void rotularRumbos(std::string& svg) {
    constexpr std::array<std::string_view, 5> kRotulos = {"N", "O", "S", "E", "N"};
    svg += "<g class=\"escala\">";
    for (std::size_t i = 0; i < kRotulos.size(); ++i) {
        fmt::format_to(std::back_inserter(svg), "<text x=\"0\" dx=\"-8\" y=\"{}\">{}</text>",
                       static_cast<int>(i) * kAltoPuntos / 4 + 4, kRotulos[i]);
    }
    svg += "</g>";
}

// The bars on the left scale, their running total on the right one.
struct EscalasDeBarras {
    Escala barras;
    Escala total;
};

EscalasDeBarras dibujarBarras(std::string& svg, const std::vector<Barra>& barras,
                              const ColumnasGrafico& todas) {
    std::int64_t mayor = 0;
    std::int64_t total = 0;
    for (const auto& barra : barras) {
        mayor = std::max(mayor, barra.suma);
        total += barra.suma;
    }
    const EscalasDeBarras escalas{.barras = escalaPara(0, std::max<std::int64_t>(mayor, 1)),
                                  .total = escalaPara(0, std::max<std::int64_t>(total, 1))};
    Trazo columnas;
    Trazo acumulado;
    std::int64_t suma = 0;
    acumulado.mover(0, kAlto);
    const auto borde = [&](Instante m) {
        return std::clamp<std::int64_t>(std::llround(todas.lugar(m)), 0, kColumnas);
    };
    for (const auto& barra : barras) {
        const auto x0 = borde(barra.plazo.desde);
        const auto x1 = std::max(borde(barra.plazo.hasta), x0 + 1);
        const auto margen = x1 - x0 > 6 ? (x1 - x0) / 8 : 0;
        acumulado.hacia(x0, escalas.total.lugar(suma, kAlto));
        suma += barra.suma;
        acumulado.hacia(x1, escalas.total.lugar(suma, kAlto));
        if (barra.suma == 0) continue;
        const auto y = escalas.barras.lugar(barra.suma, kAlto);
        columnas.mover(x0 + margen, kAlto);
        columnas.hacia(x0 + margen, y);
        columnas.hacia(x1 - margen, y);
        columnas.hacia(x1 - margen, kAlto);
        columnas.cerrar();
    }
    poner(svg, "barras", columnas);
    poner(svg, "total", acumulado);
    return escalas;
}

}  // namespace

std::vector<Barra> barrasDe(const Estadistica& estadistica, Canal canal) {
    std::vector<Barra> barras;
    const auto agregar = [&](Instante desde, Instante hasta, const Cuentas& cuentas) {
        barras.push_back({.plazo = {.desde = desde, .hasta = hasta}, .suma = cuentas[canal].suma});
    };
    const auto& dias = estadistica.dias();
    if (!estadistica.horas().empty()) {
        const auto desde = dias.front().comienzo;
        for (std::size_t i = 0; i < estadistica.horas().size(); ++i) {
            const auto hora = desde + std::chrono::hours(i);
            if (hora + std::chrono::hours(1) <= estadistica.plazo().desde ||
                hora >= estadistica.plazo().hasta)
                continue;
            agregar(hora, hora + std::chrono::hours(1), estadistica.horas()[i]);
        }
    } else if (dias.size() <= 400) {
        for (const auto& dia : dias) agregar(dia.comienzo, dia.comienzo + std::chrono::days(1), dia.cuentas);
    } else {
        for (const auto& mes : estadistica.meses())
            agregar(mes.mes.plazo().desde, mes.mes.plazo().hasta, mes.cuentas);
    }
    return barras;
}

std::string graficoDeCanal(const CanalInformado& canal, const Estadistica& estadistica,
                           const ColumnasGrafico& columnas, const std::string& alternativo) {
    const auto& suyas = columnas.canal(canal.canal);
    const auto tiempos = marcasDeTiempo(estadistica.plazo());
    const auto escala = canal.dibujo == Dibujo::puntos ? Escala{.desde = 0, .hasta = 3600, .paso = 900}
                                                       : escalaDe(canal, suyas);
    std::string dibujo;
    EscalasDeBarras escalas;
    if (canal.dibujo == Dibujo::barras) {
        escalas = dibujarBarras(dibujo, barrasDe(estadistica, canal.canal), columnas);
        dibujarMarcas(dibujo, suyas, escalas.barras);
    } else if (canal.dibujo == Dibujo::puntos) {
        dibujarDirecciones(dibujo, columnas);
        dibujarMarcas(dibujo, suyas, escala);
    } else {
        dibujarBanda(dibujo, suyas, columnas, escala);
        dibujarMarcas(dibujo, suyas, escala);
    }
    dibujarConflictos(dibujo, columnas);

    std::string svg = fmt::format(
        "<svg class=\"grafico\" role=\"img\" aria-label=\"{}\" width=\"100%\" height=\"{}\">"
        "<svg width=\"100%\" height=\"{}\" viewBox=\"-.5 0 {} {}\" preserveAspectRatio=\"none\" "
        "class=\"trazos\">",
        alternativo, kAltoPuntos + 24, kAltoPuntos, kColumnas, kAlto);
    const bool barras = canal.dibujo == Dibujo::barras;
    dibujarFondo(svg, columnas, barras ? escalas.barras.divisiones() : escala.divisiones(), tiempos);
    svg += dibujo;
    svg += "</svg>";
    rotularTiempo(svg, columnas, tiempos);
    if (canal.dibujo == Dibujo::puntos) {
        rotularRumbos(svg);
    } else {
        rotularEscala(svg, barras ? escalas.barras : escala, decimalesDe(canal.canal), false);
    }
    if (barras) rotularEscala(svg, escalas.total, decimalesDe(canal.canal), true);
    svg += "</svg>";
    return svg;
}

namespace {

constexpr double kCentro = 220;
constexpr double kRadio = 170;
constexpr double kRadioCalma = 30;

struct Punto {
    double x;
    double y;
};

// Degrees clockwise from north.
Punto enCirculo(double grados, double radio) {
    const double a = grados * std::numbers::pi / 180;
    return {kCentro + radio * std::sin(a), kCentro - radio * std::cos(a)};
}

std::string petalo(double grados, double dentro, double fuera) {
    constexpr double kMitad = 9.5;
    const auto a = enCirculo(grados - kMitad, dentro);
    const auto b = enCirculo(grados - kMitad, fuera);
    const auto c = enCirculo(grados + kMitad, fuera);
    const auto d = enCirculo(grados + kMitad, dentro);
    return fmt::format(
        "M{:.1f} {:.1f}L{:.1f} {:.1f}A{:.1f} {:.1f} 0 0 1 {:.1f} {:.1f}L{:.1f} {:.1f}A{:.1f} {:.1f} "
        "0 0 0 {:.1f} {:.1f}z",
        a.x, a.y, b.x, b.y, fuera, fuera, c.x, c.y, d.x, d.y, dentro, dentro, a.x, a.y);
}

}  // namespace

std::string rosaDeVientos(const Estadistica& estadistica, const std::string& alternativo) {
    const auto& todo = estadistica.todo();
    const auto total = static_cast<double>(std::max(todo.muestras, 1U));
    const auto mayor = *std::ranges::max_element(todo.rumbos) * 100.0 / total;
    const auto anillo = mayor <= 8 ? 2 : mayor <= 20 ? 5 : mayor <= 40 ? 10 : 25;
    const auto anillos = std::max(1, static_cast<int>(std::ceil(mayor / anillo)));
    const auto radio = [&](double porCiento) {
        return kRadioCalma + porCiento / (anillos * anillo) * (kRadio - kRadioCalma);
    };
    std::string svg = fmt::format(
        "<svg class=\"rosa\" role=\"img\" aria-label=\"{}\" viewBox=\"0 0 440 440\">", alternativo);
    for (int i = 1; i <= anillos; ++i) {
        fmt::format_to(std::back_inserter(svg),
                       "<circle class=\"anillo\" cx=\"{0}\" cy=\"{0}\" r=\"{1:.1f}\"/>", kCentro,
                       radio(i * anillo));
    }
    for (std::size_t clase = 0; clase < kClases; ++clase) {
        std::string trazo;
        for (std::size_t r = 0; r < kRumbos; ++r) {
            std::uint32_t antes = 0;
            for (std::size_t c = 0; c < clase; ++c) antes += estadistica.rosa()[r][c];
            const auto suyas = estadistica.rosa()[r][clase];
            if (suyas == 0) continue;
            trazo += petalo(static_cast<double>(r) * 22.5, radio(antes * 100.0 / total),
                            radio((antes + suyas) * 100.0 / total));
        }
        if (!trazo.empty())
            fmt::format_to(std::back_inserter(svg), "<path class=\"clase{}\" d=\"{}\"/>", clase, trazo);
    }
    fmt::format_to(
        std::back_inserter(svg),
        "<circle class=\"calma\" cx=\"{0}\" cy=\"{0}\" r=\"{1}\"/><text class=\"encalma\" x=\"{0}\" "
        "y=\"{2}\">{3}%</text><text class=\"encalma chico\" x=\"{0}\" y=\"{4}\">calma</text>",
        kCentro, kRadioCalma - 2, kCentro, numero(todo.calmas * 100 / total, 0), kCentro + 13);
    for (std::size_t r = 0; r < kRumbos; ++r) {
        const auto p = enCirculo(static_cast<double>(r) * 22.5, kRadio + 22);
        fmt::format_to(std::back_inserter(svg), "<text class=\"{}\" x=\"{:.1f}\" y=\"{:.1f}\">{}</text>",
                       r % 4 == 0 ? "cardinal" : "rumbo", p.x, p.y + 5, kNombresRumbo[r]);
    }
    for (int i = 1; i <= anillos; ++i) {
        const auto p = enCirculo(11.25, radio(i * anillo));
        fmt::format_to(std::back_inserter(svg),
                       "<text class=\"porciento\" x=\"{:.1f}\" y=\"{:.1f}\">{}%</text>", p.x, p.y + 4,
                       i * anillo);
    }
    svg += "</svg>";
    return svg;
}

void Recorrido::agregar(std::int32_t valor) {
    minimo = std::min(minimo, valor);
    maximo = std::max(maximo, valor);
}

std::string lineaMinima(const std::vector<std::optional<std::int32_t>>& valores, const Recorrido& recorrido) {
    const auto [minimo, maximo] = recorrido;
    if (std::ranges::none_of(valores, [](const auto& v) { return v.has_value(); })) return "";
    constexpr std::int64_t kAltoLinea = 18;
    Trazo trazo;
    bool seguido = false;
    for (std::size_t i = 0; i < valores.size(); ++i) {
        if (valores[i]) {
            const auto x = static_cast<std::int64_t>(i) * 3;
            const auto y =
                maximo == minimo ? kAltoLinea / 2 : kAltoLinea * (maximo - *valores[i]) / (maximo - minimo);
            if (seguido) trazo.hacia(x, y);
            if (!seguido) trazo.punto(x, y);
        }
        seguido = valores[i].has_value();
    }
    return fmt::format("<svg class=mini aria-hidden=true viewBox=\"-1 -1 {} {}\"><path d=\"{}\"/></svg>",
                       std::max<std::size_t>(valores.size() * 3, 4), kAltoLinea + 2, trazo.texto());
}

namespace {

// Appends numbers parted by commas.
class Lista {
   public:
    explicit Lista(std::string& texto) : texto_(texto) { texto_ += '['; }
    template <typename N>
    void agregar(N n) {
        if (texto_.back() != '[') texto_ += ',';
        texto_ += std::to_string(n);
    }
    void cerrar() { texto_ += ']'; }

   private:
    std::string& texto_;
};

void datosDeColumnas(std::string& json, const std::vector<Columna>& columnas, const ColumnasGrafico& todas) {
    const auto lista = [&](std::string_view nombre, auto valor) {
        fmt::format_to(std::back_inserter(json), ",\"{}\":", nombre);
        Lista l(json);
        for (std::size_t i = 0; i < columnas.size(); ++i)
            if (columnas[i].valores > 0) l.agregar(valor(i));
        l.cerrar();
    };
    lista("x", [](std::size_t i) { return i; });
    lista("a", [&](std::size_t i) { return columnas[i].minimo; });
    lista("m", [&](std::size_t i) {
        return std::llround(static_cast<double>(columnas[i].suma) / columnas[i].valores);
    });
    lista("b", [&](std::size_t i) { return columnas[i].maximo; });
    json += ",\"c\":";
    Lista cortes(json);
    for (std::size_t i = 0; i < columnas.size(); ++i)
        if (todas.cortada(i)) cortes.agregar(i);
    cortes.cerrar();
}

void datosDeMarcas(std::string& json, const std::vector<Columna>& columnas) {
    for (std::size_t m = 0; m < kMarcas; ++m) {
        fmt::format_to(std::back_inserter(json), ",\"{}\":", kMarcasInformadas[m].id);
        Lista l(json);
        for (std::size_t i = 0; i < columnas.size(); ++i) {
            const auto& marcados = columnas[i].marcados[m];
            if (!marcados.hay) continue;
            l.agregar(i);
            l.agregar(marcados.maximo);
            if (marcados.minimo == marcados.maximo) continue;
            l.agregar(i);
            l.agregar(marcados.minimo);
        }
        l.cerrar();
    }
}

void datosDeDominantes(std::string& json, const ColumnasGrafico& columnas) {
    json += ",\"dominantes\":";
    Lista l(json);
    for (const auto& uno : columnas.dominantes()) {
        l.agregar(uno.columna);
        l.agregar(uno.paso);
    }
    l.cerrar();
}

}  // namespace

std::string datosDeGraficos(const Estadistica& estadistica, const ColumnasGrafico& columnas,
                            bool evaporacion) {
    const auto& plazo = estadistica.plazo();
    std::string json = fmt::format("{{\"desde\":{},\"dura\":{},\"columnas\":{},\"vacios\":",
                                   plazo.desde.time_since_epoch().count(), plazo.dura().count(), kColumnas);
    Lista vacios(json);
    for (const auto& vacio : columnas.vacios()) {
        vacios.agregar(std::llround(vacio.desde));
        vacios.agregar(std::max(std::llround(vacio.hasta), std::llround(vacio.desde) + 1));
    }
    vacios.cerrar();
    json += ",\"conflictos\":";
    Lista conflictos(json);
    for (std::size_t i = 0; i < kColumnas; ++i)
        if (columnas.conflictos()[i]) conflictos.agregar(i);
    conflictos.cerrar();
    json += ",\"canales\":{";
    bool primero = true;
    for (const auto& canal : kCanalesInformados) {
        if (canal.canal == Canal::evaporacion && !evaporacion) continue;
        const auto& suyas = columnas.canal(canal.canal);
        fmt::format_to(std::back_inserter(json), "{}\"{}\":{{\"d\":{}", primero ? "" : ",", canal.id,
                       decimalesDe(canal.canal));
        primero = false;
        if (canal.dibujo == Dibujo::banda) datosDeColumnas(json, suyas, columnas);
        if (canal.dibujo == Dibujo::barras) {
            json += ",\"barras\":";
            Lista l(json);
            for (const auto& barra : barrasDe(estadistica, canal.canal)) {
                l.agregar((barra.plazo.desde - plazo.desde).count());
                l.agregar((barra.plazo.hasta - plazo.desde).count());
                l.agregar(barra.suma);
            }
            l.cerrar();
        }
        if (canal.dibujo == Dibujo::puntos) {
            json += ",\"puntos\":";
            Lista l(json);
            for (const auto& tramo : columnas.tramosDeRumbos()) {
                l.agregar(tramo.columna);
                l.agregar(tramo.desde);
                l.agregar(tramo.hasta);
            }
            l.cerrar();
            if (columnas.porSectores()) datosDeDominantes(json, columnas);
        }
        datosDeMarcas(json, suyas);
        json += '}';
    }
    return json + "}}";
}

}  // namespace telvane::informe
