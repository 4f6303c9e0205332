#include <algorithm>
#include <iterator>
#include <vector>

#include <fmt/format.h>

#include "informe/grafico.h"
#include "informe/informe.h"
#include "informe/recursos.h"
#include "informe/tablas.h"
#include "informe/texto_html.h"
#include "informe/textos_cuenta.h"
#include "platform/contados.h"
#include "regional/formatos.h"

namespace telvane::informe {

namespace {

// A year of days fits a page; beyond that the months say enough.
constexpr std::size_t kDiasEnTabla = 400;
// Climate months of a page: the last ones, of more than a season all but one folded. Those that fit: what one
// memory holds is below 400 KB on the whole.
constexpr std::size_t kMesesDeClima = 14;
constexpr std::size_t kMesesAbiertos = 3;
constexpr std::size_t kMuestrasDeUnaMemoria = 8180;
constexpr std::size_t kBytesDeUnaMemoria = 390'000;

template <typename... Partes>
void agregar(std::string& html, fmt::format_string<Partes...> formato, Partes&&... partes) {
    fmt::format_to(std::back_inserter(html), formato, std::forward<Partes>(partes)...);
}

std::string plazoEnPalabras(const Estadistica& e) {
    return fmt::format("{} a {}", fechaHora(*e.primera()), fechaHora(*e.ultima()));
}

std::string nombreEnPalabras(const EstacionInformada& estacion) {
    auto lugar = deRegistrador(estacion[CampoTexto::ubicacion]);
    if (!lugar.empty()) return lugar;
    return estacion.nombre.empty() ? "Estación sin nombre" : "Estación " + deRegistrador(estacion.nombre);
}

void cabeza(std::string& html, const EstacionInformada& estacion, const Informe& informe, bool guiones) {
    agregar(html,
            "<!DOCTYPE html>\n<html lang=\"es\">\n<head>\n<meta charset=\"utf-8\">\n<meta "
            "http-equiv=\"Content-Security-Policy\" "
            "content=\"default-src 'none'; style-src '{}'{}; base-uri 'none'; form-action 'none'\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            "<meta name=\"color-scheme\" content=\"light dark\">\n<title>{}, {}: informe de "
            "Telvane</title>\n<style>{}</style>\n"
            "</head>\n<body>\n",
            recursos::huellaEstilo(),
            guiones ? fmt::format("; script-src '{}'", recursos::huellaGuion()) : "",
            nombreEnPalabras(estacion), plazoEnPalabras(informe.estadistica), recursos::estilo());
}

void encabezado(std::string& html, const EstacionInformada& estacion, const Informe& informe) {
    html += "<header>\n";
    agregar(html, "<p class=programa>Telvane: informe de estación</p>\n<h1><bdi>{}</bdi></h1>\n",
            nombreEnPalabras(estacion));
    agregar(html, "<p class=plazo>Muestras del {} al {}</p>\n", fechaHora(*informe.estadistica.primera()),
            fechaHora(*informe.estadistica.ultima()));
    html +=
        "<nav aria-label=\"Secciones\"><a href=\"#resumen\">Resumen</a> <a href=\"#graficos\">Gráficos</a> "
        "<a "
        "href=\"#rosa\">Rosa de los vientos</a> <a href=\"#meses\">Meses</a> <a href=\"#dias\">Días</a> <a "
        "href=\"#clima\">Clima</a> <a href=\"#calidad\">Calidad</a> <a "
        "href=\"#procedencia\">Procedencia</a></nav>\n"
        "</header>\n<main>\n";
}

void ficha(std::string& html, std::string_view clase, std::string_view nombre, const std::string& valor,
           std::string_view unidad, const std::string& detalle) {
    agregar(html,
            "<div class=\"ficha {}\"><dt>{}</dt><dd><b>{}</b> <span>{}</span><small>{}</small></dd></div>\n",
            clase, nombre, valor, unidad, detalle);
}

std::string deHasta(const Cuentas& c, Canal canal) {
    const auto& cuenta = c[canal];
    if (cuenta.valores == 0) return "sin valores";
    if (cuenta.minimo == cuenta.maximo) return "siempre";
    return minimoDe(cuenta, canal) + " a " + maximoDe(cuenta, canal);
}
std::string mediaDe(const Cuentas& c, Canal canal, int decimales) {
    const auto media = c.media(canal);
    return media ? numero(*media, decimales).append(asterisco(c[canal].conMarcados())) : "–";
}
std::string maximoCuando(const Cuentas& c, Canal canal) {
    const auto& cuenta = c[canal];
    return cuenta.valores == 0 ? "sin valores" : fechaHora(cuenta.cuandoMaximo);
}
std::string sumaDe(const Cuentas& c, Canal canal) {
    return numero(c[canal].suma, decimalesDe(canal)).append(asterisco(c[canal].conMarcados()));
}

void resumen(std::string& html, const EstacionInformada& estacion, const Informe& informe) {
    const auto& c = informe.estadistica.todo();
    html +=
        "<section id=resumen aria-labelledby=t-resumen>\n<h2 id=t-resumen>Resumen</h2>\n<dl class=fichas>\n";
    const auto conMedia = [&](std::string_view clase, std::string_view nombre, Canal canal, int decimales,
                              std::string_view unidad) {
        ficha(
            html, clase, nombre, mediaDe(c, canal, decimales), unidad,
            deHasta(c, canal) + (informe.estadistica.incompleta(canal) ? "<br>incompleto: faltan días" : ""));
    };
    const auto conMaximo = [&](std::string_view clase, std::string_view nombre, Canal canal,
                               std::string_view unidad) {
        ficha(html, clase, nombre, c[canal].valores == 0 ? "–" : maximoDe(c[canal], canal), unidad,
              maximoCuando(c, canal));
    };
    conMedia("temperatura", "Temperatura media", Canal::temperatura, 1, "ºC");
    conMedia("humedad", "Humedad media", Canal::humedad, 0, "%");
    conMedia("presion", "Presión media", Canal::presion, 1, "kPa");
    conMaximo("viento", "Viento máximo", Canal::velViento, "km/h");
    const auto rumbo = c.rumboDominante();
    ficha(html, "direccion", "Rumbo dominante",
          rumbo ? fmt::format("{}{}", kNombresRumbo[*rumbo], asterisco(c[Canal::dirViento].conMarcados()))
                : "–",
          "", fmt::format("calma {}%", numero(c.calmas * 100.0 / std::max(c.muestras, 1U), 0)));
    conMaximo("radiacion", "Radiación máxima", Canal::radSolar, "kW/m²");
    ficha(html, "lluvia", "Lluvia", sumaDe(c, Canal::lluvia), "mm",
          c.conAgujeros(Canal::lluvia) ? "incompleto: faltan valores" : "total del período");
    if (estacion.evaporacion) {
        ficha(html, "evaporacion", "Evaporación", sumaDe(c, Canal::evaporacion), "mm",
              c.conAgujeros(Canal::evaporacion) ? "incompleto: faltan valores" : "total del período");
    }
    html += "</dl>\n<dl class=cuentas>\n";
    const auto cuenta = [&](std::string_view nombre, const std::string& valor) {
        agregar(html, "<div><dt>{}</dt><dd>{}</dd></div>\n", nombre, valor);
    };
    const auto repetidas = c.muestras - c.sellos;
    cuenta("Muestras", fmt::format("{} de {}{}", c.sellos, contados(c.esperadas(), "esperada", "esperadas"),
                                   repetidas == 0 ? "" : fmt::format(", y {} más en conflicto", repetidas)));
    // Each sample stands for its interval: the last one reaches beyond its own stamp.
    cuenta("Horas con datos", numero(static_cast<double>(c.segundos) / 3600, 1));
    cuenta("Huecos", std::to_string(c.huecos));
    cuenta("Sellos en conflicto", std::to_string(c.conflictos));
    cuenta("Muestras marcadas", std::to_string(c.marcadas));
    html += "</dl>\n";
    html += tablaDeExtremos(informe, estacion.evaporacion);
    html +=
        "<p class=nota>*: entra un valor con marca de salto o de fijo. Incompleto: a un total le faltan "
        "valores, o a una media demasiados días.</p>\n</section>\n";
}

std::string enPalabras(const CanalInformado& canal, const Informe& informe) {
    const auto& e = informe.estadistica;
    const auto& cuenta = e.todo()[canal.canal];
    auto texto = fmt::format("{}{}{}, {}. ", canal.nombre, canal.unidad.empty() ? "" : " en ", canal.unidad,
                             plazoEnPalabras(e));
    const auto total = sumaDe(e.todo(), canal.canal) +
                       (e.todo().conAgujeros(canal.canal) ? " (incompleto: faltan valores)" : "");
    const auto maximo = maximoDe(cuenta, canal.canal);
    if (cuenta.valores == 0) {
        texto += "Sin valores.";
    } else if (canal.dibujo == Dibujo::puntos) {
        const auto rumbo = e.todo().rumboDominante();
        texto +=
            rumbo ? fmt::format("Sopla sobre todo del {}.", kNombresRumbo[*rumbo]) : "Sin viento con rumbo.";
        if (informe.columnas.porSectores())
            texto += " Puntos fuertes: el rumbo más frecuente de cada columna; claros: los demás.";
    } else if (canal.dibujo == Dibujo::barras && cuenta.maximo == 0) {
        texto += fmt::format("Total {}.", total);
    } else if (canal.dibujo == Dibujo::barras) {
        texto += fmt::format("Total {}, lo más en una muestra {} el {}.", total, maximo,
                             fechaHora(cuenta.cuandoMaximo));
    } else if (cuenta.minimo == cuenta.maximo) {
        texto += fmt::format("Siempre {}.", maximo);
    } else if (!canal.conMinimo) {
        texto += fmt::format("Hasta {} el {}.", maximo, fechaHora(cuenta.cuandoMaximo));
    } else {
        texto += fmt::format("De {} el {} a {} el {}.", minimoDe(cuenta, canal.canal),
                             fechaHora(cuenta.cuandoMinimo), maximo, fechaHora(cuenta.cuandoMaximo));
    }
    for (std::size_t m = 0; m < kMarcas; ++m) {
        if (cuenta.marcados[m] > 0) texto += " " + cuantas(cuenta.marcados[m], kMarcasInformadas[m]) + ".";
    }
    return texto;
}

void leyenda(std::string& html) {
    html +=
        "<ul class=leyenda aria-label=\"Leyenda\">\n"
        "<li><svg class=clave viewBox=\"0 0 24 14\" aria-hidden=true><path class=banda d=\"M1 4l8 -3 8 4 6 "
        "-2v6l-6 3 -8 -4 -8 "
        "2z\"/><path class=media d=\"M1 8l8 -3 8 4 6 -2\"/></svg> de mínimo a máximo, y la media</li>\n"
        "<li><svg class=clave viewBox=\"0 0 24 14\" aria-hidden=true><path class=vacio d=\"M2 "
        "0h20v14h-20z\"/></svg> hueco: sin "
        "muestras</li>\n";
    for (std::size_t m = 0; m < kMarcas; ++m) {
        const auto& marca = kMarcasInformadas[m];
        agregar(
            html,
            "<li><svg class=clave viewBox=\"0 0 24 14\" aria-hidden=true><path class=\"marca {}\" d=\"M12 "
            "7h{}\"/>{}</svg> {} "
            "({}): {}</li>\n",
            marca.id, m == static_cast<std::size_t>(Marca::rango) ? "1" : "0",
            m == static_cast<std::size_t>(Marca::salto) ? "<path class=\"marca dentro\" d=\"M12 7h0\"/>" : "",
            marca.nombre, marca.forma, marca.explicacion);
    }
    html +=
        "<li><svg class=clave viewBox=\"0 0 24 14\" aria-hidden=true><path class=conflicto d=\"M12 "
        "2v10\"/></svg> conflicto "
        "(raya arriba): más de un registro con el mismo sello</li>\n"
        "<li><b>*</b> entra un valor con marca de salto o de fijo</li>\n</ul>\n";
}

void graficos(std::string& html, const EstacionInformada& estacion, const Informe& informe) {
    html += "<section id=graficos aria-labelledby=t-graficos>\n<h2 id=t-graficos>Gráficos</h2>\n";
    leyenda(html);
    html += "<div id=mandos></div>\n";
    for (const auto& canal : kCanalesInformados) {
        if (canal.canal == Canal::evaporacion && !estacion.evaporacion) continue;
        const bool doble = canal.dibujo == Dibujo::barras;
        agregar(html,
                "<figure class=\"fila {0}\" id=\"g-{0}\">\n<figcaption><h3>{1} "
                "<span>{2}</span></h3>{3}</figcaption>\n",
                canal.id, canal.nombre, canal.unidad,
                doble ? "<p class=doble>barras: izquierda; total corrido: derecha</p>" : "");
        const auto palabras = enPalabras(canal, informe);
        agregar(html, "<div class=\"lienzo{}\" data-canal=\"{}\">{}</div>\n", doble ? " con-total" : "",
                canal.id, graficoDeCanal(canal, informe.estadistica, informe.columnas, palabras));
        agregar(html,
                "<p class=palabras>{}</p>\n<details><summary>{}: los datos como "
                "tabla</summary>{}</details>\n</figure>\n",
                palabras, canal.nombre, tablaDeCanal(canal, informe));
    }
    html += "</section>\n";
}

void rosa(std::string& html, const Informe& informe) {
    const auto& c = informe.estadistica.todo();
    const auto rumbo = c.rumboDominante();
    const auto direccion = c.direccionMedia();
    const auto dudosas = c[Canal::velViento].fueraDeRango();
    const auto& e = informe.estadistica;
    const bool conMarcados = c[Canal::dirViento].conMarcados() || c[Canal::velViento].conMarcados();
    const bool incompleta = e.incompleta(Canal::dirViento) || e.incompleta(Canal::velViento);
    const auto palabras = fmt::format(
        "Rosa de los vientos: de dónde sopla. {} Calma, menos de 1.8 km/h: {}; sin rumbo: {}; en "
        "total {}.{}",
        rumbo ? fmt::format("Sobre todo del {}, {}; dirección media del vector {}º{}{}.",
                            kNombresRumbo[*rumbo], contados(c.rumbos[*rumbo], "muestra", "muestras"),
                            direccion ? numero(*direccion, 0) : "–", asterisco(conMarcados),
                            incompleta ? " (incompleto: faltan días)" : "")
              : "Ninguna muestra con viento y rumbo.",
        contados(c.calmas, "muestra", "muestras"), c.sinRumbo, c.muestras,
        dudosas == 0
            ? ""
            : fmt::format(" De {} de ellas la velocidad está fuera de rango: la dirección media no las "
                          "cuenta.",
                          dudosas));
    agregar(html,
            "<section id=rosa aria-labelledby=t-rosa>\n<h2 id=t-rosa>Rosa de los vientos</h2>\n<figure "
            "class=rosa>\n{}\n"
            "<figcaption><p>{}</p><ul class=clases aria-label=\"Velocidad en km/h\">",
            rosaDeVientos(informe.estadistica, palabras), palabras);
    constexpr std::array<std::string_view, kClases> kNombresClase = {"1.8 a 10", "10 a 20", "20 a 40",
                                                                     "40 o más"};
    for (std::size_t i = 0; i < kClases; ++i) {
        agregar(html,
                "<li><svg class=clave viewBox=\"0 0 24 14\" aria-hidden=true><path class=clase{} d=\"M2 "
                "1h20v12h-20z\"/></svg> "
                "{} km/h</li>",
                i, kNombresClase[i]);
    }
    agregar(html,
            "</ul><details><summary>Rosa de los vientos: los datos como "
            "tabla</summary>{}</details></figcaption>\n</figure>\n"
            "</section>\n",
            tablaDeRosa(informe));
}

// The climate of the last months, as many as there is room for.
std::vector<std::string> climaDeLosUltimos(const Estadistica& e, std::size_t yaHay) {
    const auto& meses = e.meses();
    const bool unaMemoria = e.todo().muestras <= kMuestrasDeUnaMemoria;
    std::vector<std::string> tablas;
    for (std::size_t i = meses.size(); i > 0 && tablas.size() < kMesesDeClima; --i) {
        auto tabla = tablaDeClima(climaDe(e, meses[i - 1]));
        yaHay += tabla.size();
        if (unaMemoria && tablas.size() >= kMesesAbiertos && yaHay > kBytesDeUnaMemoria) break;
        tablas.push_back(std::move(tabla));
    }
    std::ranges::reverse(tablas);
    return tablas;
}

void clima(std::string& html, const Estadistica& e) {
    html += "<section id=clima aria-labelledby=t-clima>\n<h2 id=t-clima>Clima del mes</h2>\n";
    const auto& meses = e.meses();
    const auto tablas = climaDeLosUltimos(e, html.size());
    const bool plegados = meses.size() > kMesesAbiertos;
    if (tablas.size() < meses.size()) {
        agregar(html,
                "<p class=nota>Aquí, {}: más no caben en la página. Para otro, pida el "
                "informe de "
                "ese mes.</p>\n",
                tablas.size() == 1 ? "el último mes" : fmt::format("los últimos {} meses", tablas.size()));
    }
    if (plegados)
        html +=
            "<p class=nota>El último está a la vista y los demás, plegados; en papel sale el último.</p>\n";
    for (std::size_t i = 0; i < tablas.size(); ++i) {
        const auto& mes = meses[meses.size() - tablas.size() + i].mes;
        const bool plegado = plegados && i + 1 < tablas.size();
        if (plegado) agregar(html, "<details><summary>{} de {}</summary>", nombreDeMes(mes.mes), mes.anio);
        html += tablas[i];
        if (plegado) html += "</details>\n";
    }
    html += "</section>\n";
}

void tablas(std::string& html, const EstacionInformada& estacion, const Informe& informe) {
    const auto& e = informe.estadistica;
    agregar(html, "<section id=meses aria-labelledby=t-meses>\n<h2 id=t-meses>Meses</h2>\n{}\n</section>\n",
            tablaDeMeses(informe, estacion.evaporacion));
    html += "<section id=dias aria-labelledby=t-dias>\n<h2 id=t-dias>Días</h2>\n";
    if (e.dias().size() <= kDiasEnTabla) {
        html += tablaDeDias(informe, estacion.evaporacion);
    } else {
        agregar(html,
                "<p>Los días de un período de más de {} no caben en una página: pida uno más corto.</p>",
                kDiasEnTabla);
    }
    html += "</section>\n";
    clima(html, e);
}

void calidad(std::string& html, const EstacionInformada& estacion, const Informe& informe) {
    agregar(
        html,
        "<section id=calidad aria-labelledby=t-calidad>\n<h2 id=t-calidad>Calidad</h2>\n{}\n"
        "<p class=nota>Ninguna marca cambia ni quita un valor. Los que están fuera de rango quedan fuera "
        "de extremos, medias y "
        "sumas; los de salto y fijo entran, y un asterisco (*) lo dice: junto a una media o una suma, que "
        "hay alguno entre sus valores; junto a un extremo, que lo es él. Una muestra de un sello en "
        "conflicto lleva solo la marca de "
        "rango.</p>\n<p class=nota>Un día va de las 00:00, incluidas, a las 24:00, excluidas, de la hora "
        "del registrador. Una media "
        "se llama incompleto cuando a su mes le faltan más de 3 días seguidos o más de 5 en total, y la "
        "del período, cuando le faltan a uno de sus meses; un "
        "total de lluvia, cuando le "
        "falta cualquier muestra o alguna lleva la marca de rango. La dirección media es la del vector medio "
        "del "
        "viento; el rumbo "
        "dominante, el de más muestras "
        "desde 1.8 km/h, como en la rosa, que cuenta todas. Las esperadas son las horas con muestra y las "
        "que "
        "faltan según el intervalo vigente; dos registros de una misma hora son una.</p>\n</section>\n",
        tablaDeMarcas(informe, estacion.evaporacion));
}

void procedencia(std::string& html, const EstacionInformada& estacion, const Informe& informe) {
    html +=
        "<section id=procedencia aria-labelledby=t-procedencia>\n<h2 id=t-procedencia>Procedencia</h2>\n<dl "
        "class=datos>\n";
    const auto dato = [&](std::string_view nombre, const std::string& valor) {
        agregar(html, "<div><dt>{}</dt><dd><bdi>{}</bdi></dd></div>\n", nombre, valor.empty() ? "–" : valor);
    };
    dato("Estación", estacion.nombre.empty() ? "sin número de serie" : deRegistrador(estacion.nombre));
    dato("Usuario", deRegistrador(estacion[CampoTexto::usuario]));
    dato("Ubicación", deRegistrador(estacion[CampoTexto::ubicacion]));
    dato("Latitud", deRegistrador(estacion[CampoTexto::latitud]));
    dato("Longitud", deRegistrador(estacion[CampoTexto::longitud]));
    dato("Altitud", deRegistrador(estacion[CampoTexto::altitud]));
    dato("Intervalo de muestreo", estacion.intervalo ? fmt::format("{} min", *estacion.intervalo) : "");
    dato("Reloj del registrador", estacion.reloj ? fechaHora(*estacion.reloj) : "");
    const auto registros = [](const std::optional<std::int64_t>& cuantos) {
        return cuantos ? std::to_string(*cuantos) : "";
    };
    dato("Registros vacíos de la última imagen", registros(estacion.vacios));
    dato("Registros descartados de la última imagen", registros(estacion.descartados));
    std::int64_t retrocesos = 0;
    for (const auto& imagen : estacion.imagenes) retrocesos += imagen.retrocesos;
    dato("Retrocesos del reloj en las imágenes", std::to_string(retrocesos));
    dato("Sellos en conflicto en el período", std::to_string(informe.estadistica.todo().conflictos));
    dato("Muestras marcadas en el período", std::to_string(informe.estadistica.todo().marcadas));
    html += "</dl>\n";
    html += tablaDeImagenes(estacion);
    html += "</section>\n</main>\n";
}

}  // namespace

std::string pagina(const EstacionInformada& estacion, const Informe& informe,
                   const OpcionesPagina& opciones) {
    std::string html;
    cabeza(html, estacion, informe, opciones.guiones);
    encabezado(html, estacion, informe);
    resumen(html, estacion, informe);
    graficos(html, estacion, informe);
    rosa(html, informe);
    tablas(html, estacion, informe);
    calidad(html, estacion, informe);
    procedencia(html, estacion, informe);
    agregar(html, "<footer>\n<p>Hecho con Telvane {}</p>\n", opciones.version);
    // The only line that differs between two runs.
    agregar(html, "<p>el {}</p>\n", opciones.hecho);
    html += "</footer>\n";
    if (opciones.guiones) {
        agregar(html, "<script type=\"application/json\" id=\"datos\">{}</script>\n<script>{}</script>\n",
                datosDeGraficos(informe.estadistica, informe.columnas, estacion.evaporacion),
                recursos::guion());
    }
    html += "</body>\n</html>\n";
    return html;
}

}  // namespace telvane::informe
