#include <algorithm>
#include <array>
#include <sstream>
#include <string>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "informe/informe.h"
#include "informe/recursos.h"
#include "informe/texto_html.h"
#include "platform/cp1252.h"
#include "regional/formatos.h"
#include "tests/informe/juzgadas.h"

namespace telvane::informe {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

EstacionInformada estacionBuena() {
    EstacionInformada e;
    e.nombre = "02080050";
    e.textos = {"INTA", "Finca Norte", "32 53 S", "68 50 O", "  827"};
    e.intervalo = 10;
    e.imagenes.push_back({.huella = std::string(64, 'a'),
                          .reloj = kInicio,
                          .bytes = 262144,
                          .muestras = 300,
                          .retrocesos = 2});
    return e;
}
std::string paginaDe(const EstacionInformada& estacion, bool guiones = false,
                     const Informe& informe = informeDe(serie(300))) {
    return pagina(estacion, informe, {.guiones = guiones, .hecho = "21/11/2026 10:00", .version = "9.9"});
}

// The page without the texts that people wrote: what is left are our own marks.
std::string armazon(const std::string& html) {
    std::string marcas;
    bool dentro = false;
    for (const char c : html) {
        if (c == '<') dentro = true;
        if (dentro) marcas += c;
        if (c == '>') dentro = false;
    }
    return marcas;
}

TEST(Pagina, AsksForNothingFromOutside) {
    for (const bool guiones : {false, true}) {
        auto html = paginaDe(estacionBuena(), guiones);
        const auto cabeza = html.substr(0, html.find("<body>"));
        EXPECT_THAT(cabeza, HasSubstr("default-src 'none'; style-src '" + recursos::huellaEstilo() + "'"));
        EXPECT_EQ(cabeza.find("script-src '" + recursos::huellaGuion()) != std::string::npos, guiones);
        EXPECT_THAT(html, Not(HasSubstr("sourceMappingURL")));
        html.resize(std::min(html.find("<script>"), html.size()));
        EXPECT_THAT(html, Not(HasSubstr("<link")));
        EXPECT_THAT(html, Not(HasSubstr(" src=")));
        EXPECT_THAT(html, Not(HasSubstr(" style=")));
        EXPECT_THAT(html, Not(HasSubstr("href=\"http")));
    }
}

TEST(Pagina, AQuietMonthIsToldInItsOwnWords) {
    auto quieto = serie(300);
    for (auto& o : quieto) o.medidas.presion = 908;
    const auto html = paginaDe(estacionBuena(), false, informeDe(quieto));
    EXPECT_THAT(html, HasSubstr("22/11/2018 01:50. Siempre 90.8."));
    EXPECT_THAT(html, HasSubstr("kPa</span><small>siempre</small>"));
    EXPECT_THAT(html, HasSubstr("22/11/2018 01:50. Total 0.0.</p>")) << "no drop has a time";
}

TEST(Pagina, WithoutScriptsThereIsNone) {
    EXPECT_THAT(paginaDe(estacionBuena(), false), Not(HasSubstr("<script")));
    EXPECT_THAT(paginaDe(estacionBuena(), true), HasSubstr("Dygraph"));
}

TEST(Pagina, TwoRunsDifferInTheLineThatSaysWhen) {
    const auto informe = informeDe(serie(300));
    const auto una =
        pagina(estacionBuena(), informe, {.guiones = true, .hecho = "21/11/2026 10:00", .version = "9.9"});
    auto otra =
        pagina(estacionBuena(), informe, {.guiones = true, .hecho = "22/11/2027 11:11", .version = "9.9"});
    EXPECT_NE(una, otra);
    const std::string linea = "\n<p>el 22/11/2027 11:11</p>\n";
    ASSERT_NE(otra.find(linea), std::string::npos);
    otra.replace(otra.find(linea), linea.size(), "\n<p>el 21/11/2026 10:00</p>\n");
    EXPECT_EQ(una, otra);
}

TEST(Pagina, SaysWhereItsDataComeFrom) {
    const auto html = paginaDe(estacionBuena());
    EXPECT_THAT(html, HasSubstr(std::string(64, 'a')));
    EXPECT_THAT(html, HasSubstr("262144"));
    EXPECT_THAT(html, HasSubstr("<dt>Usuario</dt><dd><bdi>INTA</bdi>"));
    EXPECT_THAT(html, HasSubstr("<dt>Altitud</dt><dd><bdi>827</bdi>"));
    EXPECT_THAT(html, HasSubstr("10 min"));
}

TEST(Pagina, AnImageWithoutASerialNumberIsShownWithoutOne) {
    auto estacion = estacionBuena();
    estacion.nombre.clear();
    EXPECT_THAT(paginaDe(estacion), HasSubstr("sin número de serie"));
    estacion.textos = {};
    EXPECT_THAT(paginaDe(estacion), HasSubstr("Estación sin nombre"));
}

TEST(Pagina, EvaporationIsShownWhereThereIsSome) {
    auto estacion = estacionBuena();
    EXPECT_THAT(paginaDe(estacion), Not(HasSubstr("Evaporación")));
    estacion.evaporacion = true;
    EXPECT_THAT(paginaDe(estacion), HasSubstr("g-evaporacion"));
}

TEST(Pagina, EveryChartHasWordsAndATable) {
    const auto html = paginaDe(estacionBuena());
    const auto veces = [&](std::string_view que) {
        std::size_t n = 0;
        for (auto i = html.find(que); i != std::string::npos; i = html.find(que, i + 1)) ++n;
        return n;
    };
    EXPECT_EQ(veces("role=\"img\" aria-label=\""), 8U) << "seven channels and the rose";
    EXPECT_EQ(veces("los datos como tabla"), 8U);
}

TEST(Pagina, ItsSizeDoesNotGrowWithTheSamples) {
    const auto corta = informeDe(serie(30'000, 10min));
    const auto larga = informeDe(serie(300'000, 1min));
    EXPECT_LT(paginaDe(estacionBuena(), false, larga).size(),
              paginaDe(estacionBuena(), false, corta).size() * 13 / 10);
}

// The rows of a table, by its title.
std::string tabla(const std::string& html, const std::string& titulo) {
    const auto desde = html.find("<caption>" + titulo);
    return desde == std::string::npos ? "" : html.substr(desde, html.find("</table>", desde) - desde);
}
std::string fila(const std::string& tabla, const std::string& nombre) {
    const auto desde = tabla.find("<tr><th scope=row>" + nombre);
    return desde == std::string::npos ? "" : tabla.substr(desde, tabla.find('\n', desde) - desde);
}
constexpr auto kIncompleto = "<small class=aviso>incompleto</small>";

// A week of rain of which some hours of the third day are missing, or are there.
std::string paginaDeUnaSemana(bool conHueco) {
    auto todas = serie(7 * 144);
    for (auto& o : todas) o.medidas.lluvia = 2;
    if (conHueco) todas.erase(todas.begin() + 300, todas.begin() + 320);
    return paginaDe(estacionBuena(), false, informeDe(todas, {.desde = kInicio, .hasta = kInicio + 24h * 7}));
}

TEST(Pagina, ARainTotalWithAHoleSaysSoWhereverItStands) {
    const auto html = paginaDeUnaSemana(true);
    EXPECT_THAT(html, HasSubstr("Total 197.6 (incompleto: faltan valores), lo más"));
    const auto datos = tabla(html, "Lluvia: datos");
    EXPECT_THAT(fila(datos, "21/11/2018"), Not(HasSubstr(kIncompleto)));
    EXPECT_THAT(fila(datos, "22/11/2018"),
                HasSubstr(std::string("<td>24.8") + kIncompleto + "<td>82.4" + kIncompleto));
    EXPECT_THAT(fila(datos, "23/11/2018"), HasSubstr(std::string("<td>28.8<td>111.2") + kIncompleto))
        << "the day is whole, and the running total is not";
    const auto clima = tabla(html, "Clima de noviembre");
    EXPECT_THAT(fila(clima, "21"), Not(HasSubstr(kIncompleto)));
    EXPECT_THAT(fila(clima, "22"), HasSubstr(kIncompleto));
    const auto entera = paginaDeUnaSemana(false);
    EXPECT_THAT(entera, HasSubstr("Total 201.6, lo más"));
    EXPECT_THAT(tabla(entera, "Lluvia: datos"), Not(HasSubstr(kIncompleto)));
}

TEST(Pagina, AnHourOfRainWithAHoleSaysSo) {
    auto todas = serie(140);
    todas.erase(todas.begin() + 25, todas.begin() + 36);
    const auto html =
        paginaDe(estacionBuena(), false, informeDe(todas, {.desde = kInicio, .hasta = kInicio + 24h}));
    const auto datos = tabla(html, "Lluvia: datos");
    EXPECT_THAT(fila(datos, "20/11/2018 03:00"), Not(HasSubstr(kIncompleto)));
    EXPECT_THAT(fila(datos, "20/11/2018 04:00"), HasSubstr(kIncompleto));
    EXPECT_THAT(fila(datos, "20/11/2018 05:00"), HasSubstr("<td>–")) << "nothing is there, and that is told";
}

TEST(Pagina, AMeanOfAPeriodThatLacksDaysSaysSo) {
    auto todas = serie(14 * 144);
    todas.erase(todas.begin() + 144, todas.begin() + 5 * 144);
    for (std::size_t i = 0; i < todas.size(); i += 16)
        todas[i].medidas.velViento += 50;  // a wind on the whole
    const auto html = paginaDe(estacionBuena(), false, informeDe(todas));
    EXPECT_THAT(html,
                testing::ContainsRegex("<dt>Temperatura media</dt>[^\n]*incompleto: faltan días</small>"));
    EXPECT_THAT(html,
                testing::ContainsRegex("dirección media del vector [0-9]+º \\(incompleto: faltan días\\)"));
    const auto extremos = tabla(html, "Extremos");
    for (const auto* canal : {"Temperatura", "Presión", "Velocidad", "Dirección", "Radiación"})
        EXPECT_THAT(fila(extremos, canal), HasSubstr(kIncompleto)) << canal;
    EXPECT_THAT(fila(tabla(html, "Los meses"), "nov 2018"), testing::ContainsRegex("º<small class=aviso>"))
        << "the mean direction";
    EXPECT_THAT(paginaDeUnaSemana(false), Not(HasSubstr("faltan días")));
}

TEST(Pagina, ExtremesAndDirectionsWithMarkedValuesCarryAnAsterisk) {
    auto todas = serie(400);
    todas[200].medidas.temperatura = 400;  // a jump
    for (int i = 0; i < 60; ++i) todas[static_cast<std::size_t>(300 + i)].medidas.crudoDirViento = 40;
    for (auto& o : todas) o.medidas.dirViento = o.medidas.crudoDirViento * 45 / 2;  // a vane that stood still
    const auto html = paginaDe(estacionBuena(), false, informeDe(todas));
    const auto extremos = tabla(html, "Extremos");
    EXPECT_THAT(fila(extremos, "Temperatura"), HasSubstr("<td>40.0*<td>"));
    EXPECT_THAT(fila(extremos, "Temperatura"), HasSubstr("<td>18.0<td>")) << "the least one did not jump";
    EXPECT_THAT(fila(extremos, "Dirección"), HasSubstr("º*"));
    const auto dia = fila(tabla(html, "Los días"), "21/11/2018");
    EXPECT_THAT(dia, HasSubstr("<td>40.0*<i>09:20</i>"));
    EXPECT_THAT(fila(tabla(html, "Los días"), "20/11/2018"), Not(HasSubstr("*")));
    EXPECT_THAT(html, HasSubstr("18.0 a 40.0*"));
    EXPECT_THAT(html, HasSubstr("a 40.0* el 21/11/2018 09:20"));
    EXPECT_THAT(html, HasSubstr("<li><b>*</b> entra un valor")) << "the legend says what it is";
}

TEST(Pagina, TheTablesSayHowManyValuesOutOfRangeStayedOut) {
    auto todas = serie(400);
    todas[200].medidas.temperatura = 900;
    todas[201].medidas.temperatura = 900;
    todas[210].medidas.lluvia = 300;
    const auto html = paginaDe(estacionBuena(), false, informeDe(todas));
    const auto clima = tabla(html, "Clima de noviembre");
    EXPECT_THAT(fila(clima, "20"), testing::EndsWith("<td>0"));
    EXPECT_THAT(fila(clima, "21"), testing::EndsWith("<td>3<small>temperatura: 2, lluvia: 1</small>"));
    EXPECT_THAT(fila(clima, "Mes"), testing::EndsWith("<td>3<small>temperatura: 2, lluvia: 1</small>"));
    // Values, out of range, jumps, stuck: the way back from nonsense is a jump.
    EXPECT_THAT(fila(tabla(html, "Temperatura: datos"), "21/11/2018 09:00"),
                testing::EndsWith("<td>4<td>2<td>2<td>0"));
}

TEST(Pagina, RainHasItsLeastSampleToo) {
    auto todas = serie(100);
    for (auto& o : todas) o.medidas.lluvia = 4;
    todas[30].medidas.lluvia = 2;
    const auto extremos = tabla(paginaDe(estacionBuena(), false, informeDe(todas)), "Extremos");
    EXPECT_THAT(fila(extremos, "Lluvia"),
                HasSubstr("<td>0.2<td>20/11/2018 05:00<td>0.4<td>20/11/2018 00:00"));
    EXPECT_THAT(fila(extremos, "Velocidad"), HasSubstr("</small><td>–<td>–<td>"));
}

TEST(Pagina, AllMonthsHaveTheirClimateOrThePageSaysWhyNot) {
    const auto de = [](int muestras, std::chrono::seconds paso) {
        return paginaDe(estacionBuena(), false,
                        informeDe(serie(muestras, paso, instante({.anio = 2018, .mes = 1, .dia = 1}))));
    };
    const auto anio = de(365 * 48, 30min);
    for (int mes = 1; mes <= 12; ++mes)
        EXPECT_FALSE(tabla(anio, fmt::format("Clima de {} de 2018", nombreDeMes(mes))).empty()) << mes;
    EXPECT_THAT(anio, HasSubstr("<details><summary>enero de 2018</summary>"));
    EXPECT_THAT(anio, Not(HasSubstr("<summary>diciembre de 2018"))) << "the last one is in sight";
    EXPECT_THAT(anio, HasSubstr("plegados"));
    EXPECT_THAT(anio, Not(HasSubstr("no caben")));
    const auto dosAnios = de(730 * 24, 1h);
    EXPECT_TRUE(tabla(dosAnios, "Clima de octubre de 2018").empty());
    EXPECT_FALSE(tabla(dosAnios, "Clima de noviembre de 2018").empty());
    EXPECT_FALSE(tabla(dosAnios, "Clima de diciembre de 2019").empty());
    EXPECT_THAT(dosAnios, HasSubstr("los últimos 14 meses: más no caben"));
    EXPECT_THAT(de(60 * 24, 1h), Not(HasSubstr("plegados")));
}

TEST(Pagina, ACardSaysWhetherItShowsAMeanOrAMaximum) {
    const auto html = paginaDe(estacionBuena());
    for (const auto* nombre : {"Temperatura media", "Viento máximo", "Radiación máxima"})
        EXPECT_THAT(html, HasSubstr("<dt>" + std::string(nombre) + "</dt>"));
}

// What a logger may hold: any bytes, and above all those that mean something to a browser.
std::string textoHostil() {
    static const std::vector<std::string> kTrozos{"<script>alert(1)</script>",
                                                  "</title><img src=x onerror=alert(1)>",
                                                  "\"><svg onload=alert(1)>",
                                                  "' onmouseover='x",
                                                  "-->",
                                                  "<!--",
                                                  "]]>",
                                                  "&lt;b&gt;",
                                                  "&#60;b&#62;",
                                                  "javascript:alert(1)",
                                                  "</style><b>",
                                                  "`${alert(1)}`",
                                                  "\xE2\x80\xA8",
                                                  "\xE2\x80\xAE",
                                                  "\xED\xA0\x80",
                                                  "\xC0\xBC",
                                                  "\xF0\x9F\x98",
                                                  "\x01",
                                                  "\x7F",
                                                  "\xC2\x85",
                                                  "\r\n",
                                                  "\t",
                                                  "{{x}}",
                                                  "ñandú"};
    std::string texto;
    for (const auto& trozo : *rc::gen::container<std::vector<std::string>>(
             rc::gen::oneOf(rc::gen::elementOf(kTrozos), rc::gen::arbitrary<std::string>()))) {
        texto += trozo;
    }
    return texto;
}

RC_GTEST_PROP(Pagina, AnyTextOfALoggerIsText, ()) {
    static const auto kInforme = informeDe(serie(30));
    static const auto kArmazon = armazon(paginaDe(estacionBuena(), false, kInforme));
    auto estacion = estacionBuena();
    for (auto& texto : estacion.textos) texto = textoHostil();
    estacion.nombre = "0208" + textoHostil();
    const auto html = paginaDe(estacion, false, kInforme);
    RC_ASSERT(armazon(html) == kArmazon);
    for (const unsigned char c : html) RC_ASSERT((c >= 0x20 && c != 0x7F) || c == '\n');
}

RC_GTEST_PROP(TextoDeRegistrador, ShowsNothingThatActs, (const std::string& texto)) {
    const auto limpio = deRegistrador(texto + textoHostil());
    RC_ASSERT(limpio.find_first_of("<>\"'`") == std::string::npos);
    for (const char* prohibido :
         {"\xE2\x80\xA8", "\xE2\x80\xA9", "\xE2\x80\xAE", "\xE2\x81\xA6", "\xC2\x80", "\xED\xA0"})
        RC_ASSERT(limpio.find(prohibido) == std::string::npos);
    for (const unsigned char c : limpio) RC_ASSERT(c >= 0x20 && c != 0x7F);
    RC_ASSERT(caracteres(limpio) == caracteres(cp1252DeUtf8(limpio)));
}

TEST(TextoDeRegistrador, KeepsWhatPeopleWrite) {
    EXPECT_EQ(deRegistrador("  Finca Ñandú & Cía. "), "Finca Ñandú &amp; Cía.");
    EXPECT_EQ(deRegistrador("\x01"
                            "A\xC2\x9F"),
              "\uFFFD"
              "A\uFFFD");
    EXPECT_EQ(llanoDeRegistrador("a<b"), "a<b");
}

// Between the widest values too.
// A gale from the north-northeast, each value of it marked.
TEST(Resumen, TheNameOfADirectionIsNeverCut) {
    auto observaciones = serie(300);
    for (auto& o : observaciones) {
        o.medidas.velViento = 2304;
        o.medidas.crudoDirViento = 150;
        o.medidas.dirViento = 3375;
    }
    const auto informe = informeDe(observaciones);
    const auto texto = resumenDelMes(estacionBuena(), informe, informe.estadistica.meses().front());
    EXPECT_THAT(texto, HasSubstr("230.4* 230.4* 00:00 NNE*\n"));
    std::istringstream lineas(texto);
    for (std::string linea; std::getline(lineas, linea);) EXPECT_LE(caracteres(linea), 80U) << linea;
}

TEST(Resumen, KeepsItsColumnsApart) {
    for (const int decimas : {550, -500}) {
        auto todas = serie(30 * 144, 10min, instante({.anio = 2018, .mes = 11, .dia = 1}));
        for (auto& o : todas) {
            o.medidas.temperatura = decimas;
            o.medidas.lluvia = 80;
        }
        const auto informe = informeDe(todas);
        const auto texto = resumenDelMes(estacionBuena(), informe, informe.estadistica.meses().front());
        EXPECT_THAT(texto, testing::ContainsRegex(decimas > 0 ? "Mes[^\n]* 0[.]0 +1101[.]0 +[0-9]"
                                                              : "Mes[^\n]* 2049[.]0 +0[.]0 +[0-9]"));
        std::size_t desde = 0;
        for (auto fin = texto.find('\n'); fin != std::string::npos; fin = texto.find('\n', desde)) {
            EXPECT_LE(caracteres(std::string_view(texto).substr(desde, fin - desde)), 80U);
            desde = fin + 1;
        }
    }
}

TEST(Resumen, IsNoWiderThanEightyColumns) {
    auto todas = serie(30 * 144, 10min, instante({.anio = 2018, .mes = 11, .dia = 1}));
    for (auto& o : todas) o.medidas.lluvia = 50;
    todas.erase(todas.begin() + 500, todas.begin() + 2000);
    auto estacion = estacionBuena();
    for (auto& texto : estacion.textos) texto = std::string(35, 'M') + "\x1B[31m";
    const auto informe = informeDe(todas);
    const auto texto = resumenDelMes(estacion, informe, informe.estadistica.meses().front());
    std::size_t desde = 0;
    for (auto fin = texto.find('\n'); fin != std::string::npos; fin = texto.find('\n', desde)) {
        EXPECT_LE(caracteres(std::string_view(texto).substr(desde, fin - desde)), 80U);
        desde = fin + 1;
    }
    EXPECT_EQ(desde, texto.size());
    EXPECT_EQ(texto.find('\x1B'), std::string::npos);
    EXPECT_THAT(texto, HasSubstr("Temperatura media: incompleto"));
    EXPECT_THAT(texto, HasSubstr("Lluvia total: incompleto"));
}

TEST(Resumen, MarksWhatMarkedValuesAreInAndRainThatIsMissed) {
    const Mes noviembre{.anio = 2018, .mes = 11};
    auto todas = serie(30 * 144, 10min, noviembre.plazo().desde);
    for (auto& o : todas) o.medidas.lluvia = 2;
    todas[200].medidas.temperatura = 400;  // a jump
    todas.erase(todas.begin() + 300, todas.begin() + 310);
    const auto informe = informeDe(todas, noviembre.plazo());
    const auto texto = resumenDelMes(estacionBuena(), informe, informe.estadistica.meses().front());
    EXPECT_THAT(texto, HasSubstr("\n  1  20.8  23.6  01:20  18.0"));
    EXPECT_THAT(texto, HasSubstr("\n  2  20.9* 40.0* 09:20  18.0"));
    EXPECT_THAT(texto, testing::ContainsRegex("\n  2 [^\n]*    28.8 "));
    EXPECT_THAT(texto, testing::ContainsRegex("\n  3 [^\n]*    26.8i"));
    EXPECT_THAT(texto, HasSubstr("Temperatura máxima 40.0* ºC"));
    EXPECT_THAT(texto, HasSubstr("*: entra un valor"));
    EXPECT_THAT(texto, HasSubstr("los días con i"));
}

}  // namespace
}  // namespace telvane::informe
