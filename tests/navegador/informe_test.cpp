// The report as a browser shows it: nothing leaves the page, nobody is kept out, it prints, it fits a phone.
#include "informe/informe.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/clima.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/informe/juzgadas.h"
#include "tests/navegador/navegador.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using informe::Informe;
using testing::HasSubstr;
using testing::IsEmpty;

// A month of weather with what a report must show: a gap, a spike, a broken sensor, a conflict.
Informe mesCompleto() {
    const Clima clima(7);
    std::vector<Observacion> todas;
    for (int i = 0; i < 30 * 144; ++i) {
        const Instante t = instante({.anio = 2018, .mes = 11, .dia = 1}) + i * 10min;
        if (i > 2000 && i < 2100) continue;
        const auto f = fechaDe(t);
        const auto registro = registroDeMuestra(
            clima.en(t.time_since_epoch()), FechaHora{.anio = f.anio,
                                                      .mes = f.mes,
                                                      .dia = f.dia,
                                                      .deDia = t - std::chrono::floor<std::chrono::days>(t)});
        Observacion o{.instante = t, .medidas = medidas(registro)};
        if (i == 500) o.medidas.temperatura = 500;
        if (i > 3000 && i < 3200) o.medidas.temperatura = 211;
        if (i > 3500 && i < 3520) o.medidas.temperatura = -375;
        o.conflicto = i == 4000;
        todas.push_back(o);
    }
    return informe::informeDe(todas);
}

informe::EstacionInformada estacion(const std::string& ubicacion = "Finca Norte") {
    informe::EstacionInformada e;
    e.nombre = "02080050";
    e.textos = {"INTA", ubicacion, "32 53 S", "68 50 O", "827"};
    e.evaporacion = true;
    e.intervalo = 10;
    e.imagenes.push_back(
        {.huella = std::string(64, 'a'), .reloj = informe::kInicio, .bytes = 262144, .muestras = 8178});
    return e;
}

// Scrolls to each chart until it is made.
constexpr const char* kVerTodo =
    "(async () => { for (const e of document.querySelectorAll('.lienzo')) { e.scrollIntoView();"
    " while (!e.querySelector('canvas')) await new Promise(r => setTimeout(r, 5)); } })()";

class EnElNavegador : public testing::Test {
   protected:
    void SetUp() override {
        if (std::string(PROGRAMA_CHROMIUM).empty()) GTEST_SKIP() << "No hay navegador: falta chromium";
    }
    std::filesystem::path guardar(bool guiones, const informe::EstacionInformada& e = estacion()) {
        static const auto kInforme = mesCompleto();
        return guardar(guiones, e, kInforme);
    }
    std::filesystem::path guardar(bool guiones, const informe::EstacionInformada& e, const Informe& informe) {
        const auto ruta = carpeta_.ruta() / "informe.html";
        std::ofstream(ruta) << informe::pagina(
            e, informe, {.guiones = guiones, .hecho = "21/11/2026 10:00", .version = "9.9"});
        return ruta;
    }
    CarpetaTemporal carpeta_;
};

TEST_F(EnElNavegador, NothingLeavesThePageAndNothingIsRefused) {
    for (const bool guiones : {false, true}) {
        Navegador navegador(PROGRAMA_CHROMIUM, {});
        navegador.abrir(guardar(guiones));
        // The zoom's pictures and styles are made here too, each when its chart comes near.
        if (guiones) navegador.valor(kVerTodo);
        const auto lienzos = navegador.valor("document.querySelectorAll('canvas').length").get<int>();
        EXPECT_GE(lienzos, guiones ? 16 : 0);
        EXPECT_THAT(navegador.pedidos(), IsEmpty());
        EXPECT_THAT(navegador.quejas(), IsEmpty());
    }
}

TEST_F(EnElNavegador, ThePolicyHoldsAgainstWhateverWouldAsk) {
    Navegador navegador(PROGRAMA_CHROMIUM, {});
    navegador.abrir(guardar(true));
    const auto rehusado = navegador.valor(
        "new Promise(listo => { document.addEventListener('securitypolicyviolation', e => "
        "listo(e.violatedDirective));"
        "const i = new Image(); i.src = 'file:///etc/hostname'; document.body.append(i); })");
    EXPECT_EQ(rehusado, "img-src");
}

TEST_F(EnElNavegador, NoWidthScrollsSideways) {
    Navegador navegador(PROGRAMA_CHROMIUM, {});
    for (const bool guiones : {false, true}) {
        for (const int ancho : {360, 768, 1280, 1600, 3840}) {
            navegador.pantalla({.ancho = ancho, .alto = 800});
            navegador.abrir(guardar(guiones));
            EXPECT_LE(navegador.valor("document.documentElement.scrollWidth").get<int>(), ancho) << guiones;
        }
    }
}

TEST_F(EnElNavegador, TheKeyboardReachesEveryControlAndZoomsAllCharts) {
    Navegador navegador(PROGRAMA_CHROMIUM, {});
    navegador.abrir(guardar(true));
    const auto controles =
        navegador.valor("document.querySelectorAll('a[href],button,input,summary,[tabindex=\"0\"]').length")
            .get<int>();
    navegador.valor(
        "window.vistos = new Set(); document.addEventListener('focusin', e => vistos.add(e.target))");
    for (int i = 0; i <= controles; ++i) navegador.tecla("Tab", 9);
    // What stands in a closed part is reached when it is open.
    const auto alcanzables =
        navegador
            .valor(
                "[...document.querySelectorAll('a[href],button,input,summary,[tabindex=\"0\"]')]"
                ".filter(e => e.checkVisibility()).length")
            .get<int>();
    EXPECT_EQ(navegador.valor("vistos.size").get<int>(), alcanzables);
    navegador.valor("[...document.querySelectorAll('button')].find(b => b.textContent == 'Acercar').focus()");
    navegador.tecla("Enter", 13);
    EXPECT_THAT(navegador.valor("document.querySelector('[role=status]').textContent").get<std::string>(),
                testing::MatchesRegex("..\\/11\\/2018 ..:.. a ..\\/11\\/2018 ..:.."));
}

TEST_F(EnElNavegador, TheKeyboardChoosesWhereTheChartsBeginAndEnd) {
    Navegador navegador(PROGRAMA_CHROMIUM, {});
    navegador.abrir(guardar(true));
    navegador.valor(kVerTodo);
    const auto dicho = [&] {
        return navegador.valor("document.querySelector('[role=status]').textContent").get<std::string>();
    };
    const auto enfocar = [&](const std::string& nombre) {
        navegador.valor("[...document.querySelectorAll('label')].find(l => l.textContent == '" + nombre +
                        "').querySelector('input').focus()");
        EXPECT_NE(navegador.valor("getComputedStyle(document.activeElement).outlineStyle"), "none");
    };
    // A thousandth of the period each.
    enfocar("Desde");
    for (int i = 0; i < 10; ++i) navegador.tecla("ArrowRight", 39);
    EXPECT_EQ(dicho(), "01/11/2018 07:11 a 30/11/2018 23:50");
    EXPECT_EQ(navegador.valor("document.activeElement.getAttribute('aria-valuetext')"), "01/11/2018 07:11");
    enfocar("Hasta");
    navegador.tecla("Home", 36);
    EXPECT_THAT(dicho(), testing::StartsWith("01/11/2018 00:00 a ")) << "one end pushes the other before it";
    navegador.tecla("End", 35);
    EXPECT_EQ(dicho(), "01/11/2018 00:00 a 30/11/2018 23:50");
    enfocar("Desde");
    navegador.tecla("End", 35);
    EXPECT_EQ(navegador.valor("[...document.querySelectorAll('.dy')].every(e => /^30 nov$/.test("
                              "e.querySelector('.dygraph-axis-label-x').textContent) || /:/.test("
                              "e.querySelector('.dygraph-axis-label-x').textContent))"),
              true);
    EXPECT_THAT(navegador.quejas(), IsEmpty());
}

TEST_F(EnElNavegador, AChartThatComesIntoViewLaterShowsWhatTheOthersShow) {
    Navegador navegador(PROGRAMA_CHROMIUM, {});
    navegador.abrir(guardar(true));
    EXPECT_LT(navegador.valor("document.querySelectorAll('.lienzo.vivo').length").get<int>(), 8);
    navegador.valor("[...document.querySelectorAll('button')].find(b => b.textContent == 'Acercar').click()");
    navegador.valor(kVerTodo);
    const auto ejes = navegador.valor(
        "[...document.querySelectorAll('.dy')].map(e => [...e.querySelectorAll('.dygraph-axis-label-x')]"
        ".map(r => r.textContent)[1])");
    ASSERT_EQ(ejes.size(), 8U);
    for (const auto& eje : ejes) EXPECT_EQ(eje, ejes[0]);
    EXPECT_THAT(navegador.quejas(), IsEmpty());
}

TEST_F(EnElNavegador, AnyTextOfALoggerIsText) {
    Navegador navegador(PROGRAMA_CHROMIUM, {});
    const auto elementos = [&](const std::string& texto) {
        auto e = estacion(texto);
        for (auto& campo : e.textos) campo = texto;
        navegador.abrir(guardar(false, e));
        EXPECT_THAT(navegador.quejas(), IsEmpty()) << texto;
        return navegador
            .valor("[...document.querySelectorAll('*')].map(e => e.tagName + e.getAttributeNames()).join()")
            .get<std::string>();
    };
    const auto buena = elementos("Finca");
    for (const std::string texto :
         {"<script>document.title='x'</script>", "</title></style><img src=x onerror=alert(1)>",
          "\"><b onclick='x'>", "' autofocus onfocus='alert(1)", "<!--", "]]><svg/onload=alert(1)>",
          "\xE2\x80\xAE<i>\xED\xA0\x80\x01&lt;"}) {
        EXPECT_EQ(elementos(texto), buena) << texto;
    }
}

TEST_F(EnElNavegador, PrintsOnA4WithItsDrawings) {
    for (const bool guiones : {false, true}) {
        Navegador navegador(PROGRAMA_CHROMIUM, {.oscura = true});
        navegador.abrir(guardar(guiones));
        const auto pdf = navegador.imprimir();
        EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
        // Upright or on its side, every page is an A4.
        const std::regex caja("/MediaBox ?\\[ ?0 0 ([0-9.]+) ([0-9.]+)");
        int paginas = 0;
        for (auto i = std::sregex_iterator(pdf.begin(), pdf.end(), caja); i != std::sregex_iterator();
             ++i, ++paginas) {
            const double menor = std::min(std::stod((*i)[1]), std::stod((*i)[2]));
            const double mayor = std::max(std::stod((*i)[1]), std::stod((*i)[2]));
            EXPECT_NEAR(menor, 595, 1.5);
            EXPECT_NEAR(mayor, 842, 1.5);
        }
        EXPECT_GE(paginas, 3);
        EXPECT_LE(paginas, 14);
        navegador.orden("Emulation.setEmulatedMedia", {{"media", "print"}});
        EXPECT_EQ(
            navegador.valor(
                "[...document.querySelectorAll('svg.grafico')].filter(e => e.checkVisibility()).length"),
            8);
    }
}

TEST_F(EnElNavegador, FollowsTheDesktopsColours) {
    const auto fondo = [&](bool oscura) {
        Navegador navegador(PROGRAMA_CHROMIUM, {.oscura = oscura});
        navegador.abrir(guardar(true));
        return navegador.valor("getComputedStyle(document.body).backgroundColor").get<std::string>();
    };
    EXPECT_EQ(fondo(false), "rgb(251, 251, 249)");
    EXPECT_EQ(fondo(true), "rgb(20, 24, 31)");
}

TEST_F(EnElNavegador, AxeFindsNothing) {
    const auto axe = leerTodo(ARCHIVO_AXE);
    if (axe.empty()) GTEST_SKIP() << "No hay axe-core en " << ARCHIVO_AXE;
    Navegador navegador(PROGRAMA_CHROMIUM, {});
    const auto buscar = [&](bool guiones, const Informe& informe) {
        navegador.pantalla({.oscura = guiones});
        navegador.abrir(guardar(guiones, estacion(), informe));
        if (guiones) navegador.valor(kVerTodo);
        navegador.valor(axe + ";0");
        navegador.valor("document.querySelectorAll('details').forEach(d => d.open = true)");
        const auto hallado = navegador.valor(
            "axe.run().then(r => r.violations.map(v => v.id + ' ' + v.impact + ': ' + v.nodes.slice(0, "
            "3).map(n => n.html)"
            ".join(' | ')).join('\\n'))");
        EXPECT_EQ(hallado.get<std::string>(), "") << guiones;
    };
    // With the zoom in dark colours, the drawings in light ones.
    for (const bool guiones : {false, true}) buscar(guiones, mesCompleto());
    // One sample, years, nothing but doubtful values.
    buscar(true, informe::informeDe(informe::serie(1)));
    buscar(true, informe::informeDe(informe::serie(20'000, 1h)));
    auto rota = informe::serie(50);
    for (auto& o : rota) o.medidas = {.humedad = 900, .temperatura = -375, .velViento = -250, .presion = 881};
    buscar(false, informe::informeDe(rota));
}

}  // namespace
}  // namespace telvane
