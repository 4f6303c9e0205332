#include "informe/tablas.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include <fmt/format.h>

#include "informe/grafico.h"
#include "informe/texto_html.h"
#include "informe/textos_cuenta.h"
#include "regional/formatos.h"

namespace telvane::informe {

namespace {

// A table under construction. Rows and cells need no end marks.
class Tabla {
   public:
    // What it is, for who cannot see it; clase: of the table.
    Tabla(std::string_view titulo, std::string_view clase) {
        fmt::format_to(std::back_inserter(html_),
                       "<div class=\"tabla {1}-filas\" role=region tabindex=0 aria-label=\"{0}\"><table "
                       "class=\"{1}\"><caption>{0}"
                       "</caption>",
                       titulo, clase);
    }
    void cabecera(const std::vector<std::string>& nombres) {
        html_ += "<thead><tr>";
        for (const auto& nombre : nombres) html_ += "<th scope=col>" + nombre;
        html_ += "<tbody>\n";
    }
    void fila(std::string_view nombre) {
        fmt::format_to(std::back_inserter(html_), "<tr><th scope=row>{}", nombre);
    }
    void celda(std::string_view contenido) {
        html_ += "<td>";
        html_ += contenido;
    }
    void finFila() { html_ += '\n'; }
    std::string html() && { return std::move(html_) + "</table></div>"; }

   private:
    std::string html_;
};

constexpr std::string_view kNada = "–";

using Cuando = std::string (*)(Instante);

std::string diaYHora(Instante momento) {
    return fmt::format("{:02} {}", fechaDe(momento).dia, hora(momento));
}

std::string_view incompleto(bool loEs) {
    return loEs ? "<small class=aviso>incompleto</small>" : "";
}

std::string maximo(const Cuentas& c, Canal canal, Cuando cuando) {
    if (c[canal].valores == 0) return std::string(kNada);
    return fmt::format("{}<i>{}</i>", maximoDe(c[canal], canal), cuando(c[canal].cuandoMaximo));
}
std::string minimo(const Cuentas& c, Canal canal, Cuando cuando) {
    if (c[canal].valores == 0) return std::string(kNada);
    return fmt::format("{}<i>{}</i>", minimoDe(c[canal], canal), cuando(c[canal].cuandoMinimo));
}

std::string media(const Cuentas& c, Canal canal, bool incompleta = false) {
    const auto m = c.media(canal);
    if (!m) return std::string(kNada);
    const auto decimales = std::max(decimalesDe(canal), canal == Canal::humedad ? 0 : 1);
    return fmt::format("{}{}{}", numero(*m, decimales), asterisco(c[canal].conMarcados()),
                       incompleto(incompleta));
}
std::string suma(const Cuentas& c, Canal canal, bool conAgujeros) {
    if (c[canal].valores == 0) return std::string(kNada);
    return fmt::format("{}{}{}", numero(c[canal].suma, decimalesDe(canal)), asterisco(c[canal].conMarcados()),
                       incompleto(conAgujeros));
}
std::string rumbo(const Cuentas& c) {
    const auto r = c.rumboDominante();
    return r ? fmt::format("{}{}", kNombresRumbo[*r], asterisco(c[Canal::dirViento].conMarcados()))
             : std::string(kNada);
}
std::string direccion(const Cuentas& c, const std::function<bool(Canal)>& incompleta) {
    const auto grados = c.direccionMedia();
    if (!grados) return std::string(kNada);
    return fmt::format("{}º{}{}", numero(*grados, 0),
                       asterisco(c[Canal::dirViento].conMarcados() || c[Canal::velViento].conMarcados()),
                       incompleto(incompleta(Canal::dirViento) || incompleta(Canal::velViento)));
}

// "temperatura: 2 fuera de rango, 3 saltos".
std::string marcasDe(const Cuentas& c, bool evaporacion) {
    std::string texto;
    for (const auto& canal : kCanalesInformados) {
        if (canal.canal == Canal::evaporacion && !evaporacion) continue;
        std::string suyas;
        for (std::size_t m = 0; m < kMarcas; ++m) {
            const auto cuenta = c[canal.canal].marcados[m];
            if (cuenta == 0) continue;
            suyas += (suyas.empty() ? "" : ", ") + cuantas(cuenta, kMarcasInformadas[m]);
        }
        if (!suyas.empty()) texto += fmt::format("{}{}: {}", texto.empty() ? "" : "; ", canal.id, suyas);
    }
    return texto.empty() ? "" : "<small>" + texto + "</small>";
}

// "3", and below it "temperatura: 2, lluvia: 1": of the channels that a climate table shows.
std::string fueraDeRango(const Cuentas& c) {
    std::uint32_t todos = 0;
    std::string cuales;
    for (const auto& canal : kCanalesInformados) {
        const auto cuantos = c[canal.canal].fueraDeRango();
        const bool enLaTabla = canal.canal == Canal::temperatura || canal.canal == Canal::velViento ||
                               canal.canal == Canal::lluvia;
        if (!enLaTabla || cuantos == 0) continue;
        todos += cuantos;
        cuales += fmt::format("{}{}: {}", cuales.empty() ? "" : ", ", canal.id, cuantos);
    }
    return cuales.empty() ? "0" : fmt::format("{}<small>{}</small>", todos, cuales);
}

// A row of day or month, but for its name.
struct Fila {
    const Cuentas& cuentas;
    Cuando cuando;
    std::string linea;
    std::function<bool(Canal)> incompleta;
    std::function<bool(Canal)> conAgujeros;
};

std::vector<std::string> nombresDeColumnas(const std::string& primera, bool evaporacion) {
    std::vector<std::string> nombres = {primera,
                                        "Temp.<small>ºC, media</small>",
                                        "mín.",
                                        "máx.",
                                        "curso<small>de la temp.</small>",
                                        "Humedad<small>%, media</small>",
                                        "mín.",
                                        "máx.",
                                        "Presión<small>kPa, media</small>",
                                        "mín.",
                                        "máx.",
                                        "Viento<small>km/h, medio</small>",
                                        "máx.",
                                        "rumbo<small>dominante</small>",
                                        "dir.<small>media</small>",
                                        "Radiación<small>kW/m², media</small>",
                                        "máx.",
                                        "Lluvia<small>mm</small>",
                                        "máx.<small>por muestra</small>"};
    if (evaporacion)
        nombres.insert(nombres.end(), {"Evap.<small>mm</small>", "máx.<small>por muestra</small>"});
    nombres.insert(nombres.end(),
                   {"Muestras<small>de esperadas</small>", "Horas", "Huecos", "Conflictos", "Marcadas"});
    return nombres;
}

void celdas(Tabla& tabla, const Fila& fila, bool evaporacion) {
    const auto& c = fila.cuentas;
    const auto conExtremos = [&](Canal canal) {
        tabla.celda(media(c, canal, fila.incompleta(canal)));
        tabla.celda(minimo(c, canal, fila.cuando));
        tabla.celda(maximo(c, canal, fila.cuando));
    };
    conExtremos(Canal::temperatura);
    tabla.celda(fila.linea);
    conExtremos(Canal::humedad);
    conExtremos(Canal::presion);
    tabla.celda(media(c, Canal::velViento, fila.incompleta(Canal::velViento)));
    tabla.celda(maximo(c, Canal::velViento, fila.cuando));
    tabla.celda(rumbo(c));
    tabla.celda(direccion(c, fila.incompleta));
    tabla.celda(media(c, Canal::radSolar, fila.incompleta(Canal::radSolar)));
    tabla.celda(maximo(c, Canal::radSolar, fila.cuando));
    for (const auto canal : {Canal::lluvia, Canal::evaporacion}) {
        if (canal == Canal::evaporacion && !evaporacion) continue;
        tabla.celda(suma(c, canal, fila.conAgujeros(canal)));
        tabla.celda(maximo(c, canal, fila.cuando));
    }
    tabla.celda(fmt::format("{}<i>de {}</i>", c.sellos, c.esperadas()));
    tabla.celda(numero(static_cast<double>(c.segundos) / 3600, 1));
    tabla.celda(std::to_string(c.huecos));
    tabla.celda(std::to_string(c.conflictos));
    tabla.celda(std::to_string(c.marcadas) + marcasDe(c, evaporacion));
    tabla.finFila();
}

std::string cursoDelDia(const Dia& dia, const Recorrido& recorrido) {
    std::vector<std::optional<std::int32_t>> valores(dia.horas.begin(), dia.horas.end());
    return lineaMinima(valores, recorrido);
}
Recorrido recorridoDeLasHoras(const Estadistica& estadistica) {
    Recorrido recorrido;
    for (const auto& dia : estadistica.dias()) {
        for (const auto& hora : dia.horas)
            if (hora) recorrido.agregar(*hora);
    }
    return recorrido;
}

std::optional<std::int32_t> mediaEnDecimas(const Dia& dia) {
    const auto media = dia.cuentas.media(Canal::temperatura);
    return media ? std::optional(static_cast<std::int32_t>(*media * 10)) : std::nullopt;
}
Recorrido recorridoDeLosDias(const Estadistica& estadistica) {
    Recorrido recorrido;
    for (const auto& dia : estadistica.dias())
        if (const auto media = mediaEnDecimas(dia)) recorrido.agregar(*media);
    return recorrido;
}

std::string cursoDelMes(const Estadistica& estadistica, const MesContado& mes, const Recorrido& recorrido) {
    std::vector<std::optional<std::int32_t>> valores(static_cast<std::size_t>(mes.mes.dias()));
    for (std::size_t i = 0; i < mes.dias; ++i) {
        const auto& dia = estadistica.dias()[mes.primero + i];
        valores[static_cast<std::size_t>(fechaDe(dia.comienzo).dia - 1)] = mediaEnDecimas(dia);
    }
    return lineaMinima(valores, recorrido);
}

bool nunca(Canal) {
    return false;
}

std::string fechaDeMes(const Mes& mes) {
    return fmt::format("{} {}", mesCorto(mes.mes), mes.anio);
}

}  // namespace

std::string tablaDeExtremos(const Informe& informe, bool evaporacion) {
    const auto& todo = informe.estadistica.todo();
    const auto incompleta = [&](Canal canal) { return informe.estadistica.incompleta(canal); };
    Tabla tabla("Extremos y medias del período", "extremos");
    tabla.cabecera({"Canal", "mínimo", "cuándo", "máximo", "cuándo", "media", "suma", "valores",
                    "fuera de rango", "saltos", "fijos"});
    for (const auto& canal : kCanalesInformados) {
        if (canal.canal == Canal::evaporacion && !evaporacion) continue;
        const auto& c = todo[canal.canal];
        const bool direccionDelViento = canal.dibujo == Dibujo::puntos;
        const bool hay = c.valores > 0 && !direccionDelViento;
        const bool sumas = canal.dibujo == Dibujo::barras;
        tabla.fila(fmt::format("{} <small>{}</small>", canal.nombre, canal.unidad));
        // Wind and radiation have none: they fall to nothing every night.
        const bool conMinimo = hay && (canal.conMinimo || sumas);
        tabla.celda(conMinimo ? minimoDe(c, canal.canal) : std::string(kNada));
        tabla.celda(conMinimo ? fechaHora(c.cuandoMinimo) : std::string(kNada));
        tabla.celda(hay ? maximoDe(c, canal.canal) : std::string(kNada));
        tabla.celda(hay ? fechaHora(c.cuandoMaximo) : std::string(kNada));
        tabla.celda(direccionDelViento ? direccion(todo, incompleta)
                    : sumas            ? std::string(kNada)
                                       : media(todo, canal.canal, incompleta(canal.canal)));
        bool agujeros = todo.conAgujeros(canal.canal);
        tabla.celda(sumas ? suma(todo, canal.canal, agujeros) : std::string(kNada));
        tabla.celda(std::to_string(c.valores));
        for (const auto cuantos : c.marcados) tabla.celda(std::to_string(cuantos));
        tabla.finFila();
    }
    return std::move(tabla).html();
}

std::string tablaDeMeses(const Informe& informe, bool evaporacion) {
    Tabla tabla("Los meses del período", "muchas");
    tabla.cabecera(nombresDeColumnas("Mes", evaporacion));
    const auto recorrido = recorridoDeLosDias(informe.estadistica);
    for (const auto& mes : informe.estadistica.meses()) {
        tabla.fila(fechaDeMes(mes.mes));
        celdas(tabla,
               {.cuentas = mes.cuentas,
                .cuando = diaYHora,
                .linea = cursoDelMes(informe.estadistica, mes, recorrido),
                .incompleta = [&](Canal canal) { return mes.incompleta(canal); },
                .conAgujeros = [&](Canal canal) { return mes.conAgujeros(canal); }},
               evaporacion);
    }
    return std::move(tabla).html();
}

std::string tablaDeDias(const Informe& informe, bool evaporacion) {
    Tabla tabla("Los días del período", "muchas");
    tabla.cabecera(nombresDeColumnas("Día", evaporacion));
    const auto recorrido = recorridoDeLasHoras(informe.estadistica);
    for (const auto& dia : informe.estadistica.dias()) {
        tabla.fila(fecha(dia.comienzo));
        celdas(tabla,
               {.cuentas = dia.cuentas,
                .cuando = hora,
                .linea = cursoDelDia(dia, recorrido),
                .incompleta = nunca,
                .conAgujeros = [&](Canal canal) { return dia.conAgujeros(canal); }},
               evaporacion);
    }
    return std::move(tabla).html();
}

std::string tablaDeCanal(const CanalInformado& canal, const Informe& informe) {
    const auto& e = informe.estadistica;
    Tabla tabla(fmt::format("{}: datos del gráfico", canal.nombre), "datos");
    const bool puntos = canal.dibujo == Dibujo::puntos;
    const bool barras = canal.dibujo == Dibujo::barras;
    std::vector<std::string> nombres = {"Cuándo"};
    if (puntos) {
        nombres.insert(nombres.end(), {"rumbo dominante", "dirección media", "calmas", "sin rumbo"});
    } else if (barras) {
        nombres.insert(nombres.end(), {"suma", "total corrido", "máximo por muestra"});
    } else {
        nombres.insert(nombres.end(), {"mínimo", "media", "máximo"});
    }
    nombres.insert(nombres.end(), {"valores", "fuera de rango", "saltos", "fijos"});
    tabla.cabecera(nombres);
    std::int64_t total = 0;
    bool totalConAgujeros = false;
    const auto agregar = [&](const std::string& nombre, const Cuentas& c, Cuando cuando, bool conAgujeros) {
        totalConAgujeros = totalConAgujeros || c.conAgujeros(canal.canal);
        tabla.fila(nombre);
        const auto& cuenta = c[canal.canal];
        if (puntos) {
            tabla.celda(rumbo(c));
            tabla.celda(direccion(c, nunca));
            tabla.celda(std::to_string(c.calmas));
            tabla.celda(std::to_string(c.sinRumbo));
        } else if (barras) {
            total += cuenta.suma;
            tabla.celda(suma(c, canal.canal, conAgujeros));
            tabla.celda(
                fmt::format("{}{}", numero(total, decimalesDe(canal.canal)), incompleto(totalConAgujeros)));
            tabla.celda(maximo(c, canal.canal, cuando));
        } else {
            tabla.celda(minimo(c, canal.canal, cuando));
            tabla.celda(media(c, canal.canal));
            tabla.celda(maximo(c, canal.canal, cuando));
        }
        tabla.celda(std::to_string(cuenta.valores));
        for (const auto cuantos : cuenta.marcados) tabla.celda(std::to_string(cuantos));
        tabla.finFila();
    };
    if (!e.horas().empty()) {
        for (std::size_t i = 0; i < e.horas().size(); ++i) {
            const auto desde = e.dias().front().comienzo + std::chrono::hours(i);
            const auto& c = e.horas()[i];
            const bool entera = e.plazo().desde <= desde && desde + std::chrono::hours(1) <= e.plazo().hasta;
            if (c.muestras + c.faltan == 0) continue;
            agregar(fechaHora(desde), c, hora, !entera || c.conAgujeros(canal.canal));
        }
    } else if (e.dias().size() <= 62) {
        for (const auto& dia : e.dias())
            agregar(fecha(dia.comienzo), dia.cuentas, hora, dia.conAgujeros(canal.canal));
    } else {
        for (const auto& mes : e.meses())
            agregar(fechaDeMes(mes.mes), mes.cuentas, diaYHora, mes.conAgujeros(canal.canal));
    }
    return std::move(tabla).html();
}

std::string tablaDeRosa(const Informe& informe) {
    const auto& e = informe.estadistica;
    const auto& todo = e.todo();
    Tabla tabla("Rosa de los vientos: muestras por rumbo y velocidad en km/h", "datos");
    tabla.cabecera({"Rumbo", "1.8 a 10", "10 a 20", "20 a 40", "40 o más", "todas", "%"});
    const auto total = static_cast<double>(std::max(todo.muestras, 1U));
    for (std::size_t r = 0; r < kRumbos; ++r) {
        tabla.fila(kNombresRumbo[r]);
        for (const auto cuantas : e.rosa()[r]) tabla.celda(std::to_string(cuantas));
        tabla.celda(std::to_string(todo.rumbos[r]));
        tabla.celda(numero(todo.rumbos[r] * 100.0 / total, 1));
        tabla.finFila();
    }
    const auto aparte = [&](std::string_view nombre, std::uint32_t cuantas) {
        tabla.fila(nombre);
        for (std::size_t i = 0; i < kClases; ++i) tabla.celda("");
        tabla.celda(std::to_string(cuantas));
        tabla.celda(numero(cuantas * 100.0 / total, 1));
        tabla.finFila();
    };
    aparte("calma", todo.calmas);
    aparte("sin rumbo", todo.sinRumbo);
    aparte("total", todo.muestras);
    return std::move(tabla).html();
}

std::string tablaDeClima(const ClimaDelMes& clima) {
    const auto& mes = *clima.mes;
    Tabla tabla(fmt::format("Clima de {} de {}", nombreDeMes(mes.mes.mes), mes.mes.anio), "clima");
    tabla.cabecera({"Día", "Temp. media<small>ºC</small>", "máx.", "mín.",
                    "Grados-día<small>calefacción</small>", "Grados-día<small>refrigeración</small>",
                    "Lluvia<small>mm</small>", "Viento medio<small>km/h</small>", "máx.",
                    "rumbo<small>dominante</small>", "Fuera de rango<small>valores</small>"});
    const auto gradosDia = [](const std::optional<double>& g) {
        return g ? numero(*g, 1) : std::string(kNada);
    };
    for (const auto& dia : clima.dias) {
        tabla.fila(std::to_string(dia.dia));
        static const Cuentas kSinNada;
        const auto& c = dia.cuentas != nullptr ? *dia.cuentas : kSinNada;
        tabla.celda(media(c, Canal::temperatura));
        tabla.celda(maximo(c, Canal::temperatura, hora));
        tabla.celda(minimo(c, Canal::temperatura, hora));
        tabla.celda(gradosDia(dia.calefaccion));
        tabla.celda(gradosDia(dia.refrigeracion));
        tabla.celda(suma(c, Canal::lluvia, dia.lluviaConAgujeros));
        tabla.celda(media(c, Canal::velViento));
        tabla.celda(maximo(c, Canal::velViento, hora));
        tabla.celda(rumbo(c));
        tabla.celda(fueraDeRango(c));
        tabla.finFila();
    }
    tabla.fila("Mes");
    tabla.celda(media(mes.cuentas, Canal::temperatura, mes.incompleta(Canal::temperatura)));
    tabla.celda(maximo(mes.cuentas, Canal::temperatura, diaYHora));
    tabla.celda(minimo(mes.cuentas, Canal::temperatura, diaYHora));
    tabla.celda(numero(clima.calefaccion, 1));
    tabla.celda(numero(clima.refrigeracion, 1));
    tabla.celda(suma(mes.cuentas, Canal::lluvia, mes.conAgujeros(Canal::lluvia)));
    tabla.celda(media(mes.cuentas, Canal::velViento, mes.incompleta(Canal::velViento)));
    tabla.celda(maximo(mes.cuentas, Canal::velViento, diaYHora));
    tabla.celda(rumbo(mes.cuentas));
    tabla.celda(fueraDeRango(mes.cuentas));
    tabla.finFila();
    return std::move(tabla).html() + fmt::format(
                                         "<p class=nota>Días con máxima de 32.0 ºC o más: {}; de 0.0 ºC o "
                                         "menos: {}. Días con mínima de "
                                         "0.0 ºC o menos: {}; de -18.0 ºC o menos: {}. Días con lluvia de "
                                         "0.2 mm o más: {}; de 2.0: {}; de "
                                         "20.0: {}. Grados-día con base {} ºC.</p>",
                                         clima.maximaDesde32, clima.maximaHasta0, clima.minimaHasta0,
                                         clima.minimaHasta18Bajo0, clima.lluviaDesde02, clima.lluviaDesde2,
                                         clima.lluviaDesde20, numero(kBaseGradosDia, 1));
}

std::string tablaDeMarcas(const Informe& informe, bool evaporacion) {
    Tabla tabla("Valores marcados", "datos");
    tabla.cabecera({"Canal", "fuera de rango", "saltos", "fijos"});
    for (const auto& canal : kCanalesInformados) {
        if (canal.canal == Canal::evaporacion && !evaporacion) continue;
        tabla.fila(canal.nombre);
        for (const auto cuantos : informe.estadistica.todo()[canal.canal].marcados)
            tabla.celda(std::to_string(cuantos));
        tabla.finFila();
    }
    return std::move(tabla).html();
}

std::string tablaDeImagenes(const EstacionInformada& estacion) {
    Tabla tabla("Imágenes de memoria", "datos imagenes");
    tabla.cabecera({"SHA-256", "Reloj del registrador", "Bytes", "Muestras", "Retrocesos del reloj"});
    for (const auto& imagen : estacion.imagenes) {
        tabla.fila("<code>" + imagen.huella + "</code>");
        tabla.celda(imagen.reloj ? fechaHora(*imagen.reloj) : std::string(kNada));
        tabla.celda(std::to_string(imagen.bytes) + (imagen.parcial ? "<small>parcial</small>" : ""));
        tabla.celda(std::to_string(imagen.muestras));
        tabla.celda(std::to_string(imagen.retrocesos));
        tabla.finFila();
    }
    return std::move(tabla).html();
}

}  // namespace telvane::informe
