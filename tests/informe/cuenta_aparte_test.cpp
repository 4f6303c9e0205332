// The page's tables against a count of our own that starts from the exported samples and knows nothing of how
// the report counts.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <numbers>
#include <optional>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "simulator/memoria_simulada.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane {
namespace {

using Json = nlohmann::json;

struct Muestra {
    std::string dia;
    std::string hora;
    std::int64_t segundo = 0;
    Json valores;
    std::set<std::string> marcas;

    bool fueraDeRango(const std::string& canal) const { return marcas.contains(canal + ":rango"); }
    bool marcada() const {
        return std::ranges::any_of(marcas, [](const auto& m) { return m.find(':') != std::string::npos; });
    }
    int crudo() const { return static_cast<int>(std::lround(valores["dir_viento"].get<double>() / 2.25)); }
    double viento() const { return valores["vel_viento"]; }
};

std::int64_t segundoDe(const std::string& hora) {
    int anio = 0, mes = 0, dia = 0, h = 0, m = 0, s = 0;
    std::sscanf(hora.c_str(), "%d-%d-%dT%d:%d:%d", &anio, &mes, &dia, &h, &m, &s);
    const std::chrono::sys_days d = std::chrono::year{anio} / mes / dia;
    return std::int64_t{d.time_since_epoch().count()} * 86400 + h * 3600 + m * 60 + s;
}

std::vector<Muestra> leerMuestras(const std::string& lineas) {
    std::vector<Muestra> todas;
    std::istringstream texto(lineas);
    for (std::string linea; std::getline(texto, linea);) {
        const auto j = Json::parse(linea);
        const std::string hora = j["hora"];
        todas.push_back({.dia = hora.substr(8, 2) + "/" + hora.substr(5, 2) + "/" + hora.substr(0, 4),
                         .hora = hora.substr(11, 5),
                         .segundo = segundoDe(hora),
                         .valores = j,
                         .marcas = j["calidad"].get<std::set<std::string>>()});
    }
    return todas;
}

// The cells of the rows of one section, by the row's name: each its first text and its small second one.
struct Celda {
    std::string valor;
    std::string cuando;
};
using Filas = std::map<std::string, std::vector<Celda>>;

std::string sinMarcas(std::string html) {
    html = std::regex_replace(html, std::regex("<(svg|small).*?</(svg|small)>"), "");
    html = std::regex_replace(html, std::regex("<[^>]*>|\\*"), "");
    return html;
}

Filas filasDe(const std::string& html, const std::string& seccion) {
    Filas filas;
    const auto desde = html.find("<section id=" + seccion);
    std::istringstream texto(html.substr(desde, html.find("</section>", desde) - desde));
    for (std::string linea; std::getline(texto, linea);) {
        const auto nombre = linea.find("<tr><th scope=row>");
        if (nombre == std::string::npos) continue;
        std::vector<std::string> partes;
        std::size_t i = nombre + 18;
        for (auto fin = linea.find("<td>", i); fin != std::string::npos; fin = linea.find("<td>", i)) {
            partes.push_back(linea.substr(i, fin - i));
            i = fin + 4;
        }
        partes.push_back(linea.substr(i));
        auto& fila = filas[sinMarcas(partes.front())];
        for (std::size_t c = 1; c < partes.size(); ++c) {
            const auto cuando = partes[c].find("<i>");
            fila.push_back(
                {.valor = sinMarcas(partes[c].substr(0, cuando)),
                 .cuando = cuando == std::string::npos ? "" : sinMarcas(partes[c].substr(cuando))});
        }
    }
    return filas;
}

// A number that the page shows with so many decimals.
void esperar(const Celda& celda, const std::optional<double>& valor, int decimales, const std::string& que) {
    if (!valor) {
        EXPECT_EQ(celda.valor, "–") << que;
        return;
    }
    ASSERT_NE(celda.valor, "–") << que;
    EXPECT_NEAR(std::stod(celda.valor), *valor, 0.5 * std::pow(10, -decimales) + 1e-6) << que;
    const auto punto = celda.valor.find('.');
    EXPECT_EQ(punto == std::string::npos ? 0 : static_cast<int>(celda.valor.size() - punto) - 1, decimales)
        << que << ' ' << celda.valor;
}

struct Canal {
    std::string nombre;
    int decimales = 1;
};

// One day or one month, counted the long way.
class Cuenta {
   public:
    explicit Cuenta(std::vector<Muestra> muestras, bool conDia)
        : todas_(std::move(muestras)), conDia_(conDia) {}

    std::optional<double> media(const Canal& canal) const {
        double suma = 0;
        int cuantas = 0;
        for (const auto& m : todas_) {
            if (m.fueraDeRango(canal.nombre)) continue;
            suma += m.valores[canal.nombre].get<double>();
            ++cuantas;
        }
        return cuantas == 0 ? std::nullopt : std::optional(suma / cuantas);
    }
    std::optional<double> suma(const Canal& canal) const {
        const auto m = media(canal);
        if (!m) return std::nullopt;
        return *m * static_cast<double>(std::ranges::count_if(
                        todas_, [&](const auto& una) { return !una.fueraDeRango(canal.nombre); }));
    }
    // signo 1: the greatest; -1: the least. The earliest of equal ones.
    void extremo(const Celda& celda, const Canal& canal, int signo, const std::string& que) const {
        const Muestra* mejor = nullptr;
        for (const auto& m : todas_) {
            if (m.fueraDeRango(canal.nombre)) continue;
            const auto valor = m.valores[canal.nombre].get<double>();
            if (mejor == nullptr || signo * valor > signo * mejor->valores[canal.nombre].get<double>())
                mejor = &m;
        }
        if (mejor == nullptr) return esperar(celda, std::nullopt, 0, que);
        esperar(celda, mejor->valores[canal.nombre].get<double>(), canal.decimales, que);
        EXPECT_EQ(celda.cuando, (conDia_ ? mejor->dia.substr(0, 2) + " " : "") + mejor->hora) << que;
    }
    void viento(const Celda& rumbo, const Celda& direccion, const std::string& que) const {
        std::map<std::string, int> veces;
        double norte = 0;
        double este = 0;
        // By name: the logger counts towards the west.
        static const std::vector<std::string> kHaciaElOeste{"N", "NNO", "NO", "ONO", "O", "OSO", "SO", "SSO",
                                                            "S", "SSE", "SE", "ESE", "E", "ENE", "NE", "NNE"};
        for (const auto& m : todas_) {
            if (m.viento() < 1.8 || m.crudo() == 0 || m.crudo() > 160) continue;
            ++veces[kHaciaElOeste[static_cast<std::size_t>((m.crudo() + 5) / 10 % 16)]];
            if (m.fueraDeRango("vel_viento")) continue;
            const double angulo = -m.crudo() * 2.25 * std::numbers::pi / 180;
            norte += m.viento() * std::cos(angulo);
            este += m.viento() * std::sin(angulo);
        }
        if (veces.empty()) {
            EXPECT_EQ(rumbo.valor, "–") << que;
            return;
        }
        const auto mayor =
            std::ranges::max_element(veces, {}, [](const auto& v) { return v.second; })->second;
        EXPECT_EQ(veces[rumbo.valor], mayor) << que << ' ' << rumbo.valor;
        if (std::hypot(norte, este) < 1) return;
        const double grados = std::fmod(std::atan2(este, norte) * 180 / std::numbers::pi + 360, 360);
        const double distancia = std::abs(std::stod(direccion.valor) - grados);
        EXPECT_LE(std::min(distancia, 360 - distancia), 0.51) << que;
    }
    void cuentas(const Celda& muestras, const Celda& conflictos, const Celda& marcadas,
                 const std::string& que) const {
        std::set<std::int64_t> sellos;
        std::set<std::int64_t> enConflicto;
        for (const auto& m : todas_) {
            sellos.insert(m.segundo);
            if (m.marcas.contains("conflicto")) enConflicto.insert(m.segundo);
        }
        EXPECT_EQ(muestras.valor, std::to_string(sellos.size())) << que;
        EXPECT_EQ(conflictos.valor, std::to_string(enConflicto.size())) << que;
        EXPECT_EQ(marcadas.valor, std::to_string(std::ranges::count_if(todas_, &Muestra::marcada))) << que;
    }

   private:
    std::vector<Muestra> todas_;
    bool conDia_;
};

void comparar(const std::vector<Celda>& celdas, const Cuenta& cuenta, const std::string& que) {
    ASSERT_EQ(celdas.size(), 25U) << que;
    std::size_t c = 0;
    const auto conMinimo = [&](const Canal& canal, int decimalesMedia) {
        esperar(celdas[c], cuenta.media(canal), decimalesMedia, que + " media de " + canal.nombre);
        cuenta.extremo(celdas[c + 1], canal, -1, que + " mínimo de " + canal.nombre);
        cuenta.extremo(celdas[c + 2], canal, 1, que + " máximo de " + canal.nombre);
        c += 3;
    };
    conMinimo({"temperatura", 1}, 1);
    ++c;  // the small line
    conMinimo({"humedad", 0}, 0);
    conMinimo({"presion", 1}, 1);
    esperar(celdas[c], cuenta.media({"vel_viento"}), 1, que + " viento medio");
    cuenta.extremo(celdas[c + 1], {"vel_viento", 1}, 1, que + " viento máximo");
    cuenta.viento(celdas[c + 2], celdas[c + 3], que);
    esperar(celdas[c + 4], cuenta.media({"rad_solar"}), 2, que + " radiación media");
    cuenta.extremo(celdas[c + 5], {"rad_solar", 2}, 1, que + " radiación máxima");
    esperar(celdas[c + 6], cuenta.suma({"lluvia"}), 1, que + " lluvia");
    cuenta.extremo(celdas[c + 7], {"lluvia", 1}, 1, que + " lluvia máxima");
    esperar(celdas[c + 8], cuenta.suma({"evaporacion"}), 2, que + " evaporación");
    cuenta.extremo(celdas[c + 9], {"evaporacion", 2}, 1, que + " evaporación máxima");
    cuenta.cuentas(celdas[c + 10], celdas[c + 13], celdas[c + 14], que);
}

// Any weather and any nonsense: broken sensors, calms, directions without a name, rain, gaps, a clock set
// back.
std::vector<std::uint8_t> imagenAlAzar(unsigned semilla) {
    std::mt19937 azar(semilla);
    const auto uno = [&](int n) { return static_cast<int>(azar() % static_cast<unsigned>(n)); };
    ConfiguracionSimulada configuracion;
    configuracion.serie = "02080014";  // evaporation
    auto bytes = memoriaVacia(configuracion, {});
    const Clima clima(semilla);
    auto momento = segundosCiviles(FechaHora{.anio = 2023, .mes = 12, .dia = 27});
    for (std::size_t ranura = 0; ranura < 3000; ++ranura) {
        auto tiempo = clima.en(momento);
        tiempo.temperatura -= 25;
        const int capricho = uno(40);
        if (capricho == 0) tiempo.temperatura = 150;
        if (capricho == 1) tiempo.humedad = 180;
        if (capricho == 2) tiempo.presion = 20;
        if (capricho == 3) tiempo.lluvia = 30;
        if (capricho == 4) tiempo.viento = 700;
        if (capricho > 4 && capricho < 12) tiempo.viento = 0;
        auto registro = registroDeMuestra(tiempo, fechaHoraDe(momento));
        if (capricho > 20) registro[registro_muestra::kDirViento] = static_cast<std::uint8_t>(uno(256));
        std::copy(registro.begin(), registro.end(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(kInicioRegistros + ranura * registro.size()));
        momento += std::chrono::minutes(uno(300) == 0 ? uno(9000) : 10);
        if (uno(900) == 0) momento -= std::chrono::minutes(10 * uno(60));
    }
    return bytes;
}

TEST(CuentaAparte, TheTablesSayWhatTheExportedSamplesAddUpTo) {
    const CarpetaTemporal carpeta;
    const auto correr = [&](std::vector<std::string> argumentos) {
        argumentos.insert(argumentos.begin(), {TELVANE_HISTORICO, "--en", (carpeta / "h.sqlite").string()});
        Proceso proceso(argumentos, {"TZ=UTC"});
        EXPECT_EQ(proceso.terminar(), 0) << proceso.errores();
        return proceso.salida();
    };
    const auto bytes = imagenAlAzar(5);
    std::ofstream(carpeta / "a.rgt", std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    correr({"incorporar", (carpeta / "a.rgt").string()});
    const auto todas =
        leerMuestras(correr({"exportar", "-", "--estacion", "02080014", "--formato", "jsonl", "--calidad"}));
    ASSERT_GT(todas.size(), 2000U);
    const auto pagina = correr({"informe", "-", "--estacion", "02080014", "--sin-guiones"});

    std::map<std::string, std::vector<Muestra>> dias;
    std::map<std::string, std::vector<Muestra>> meses;
    static const std::vector<std::string> kMeses{"ene", "feb", "mar", "abr", "may", "jun",
                                                 "jul", "ago", "sep", "oct", "nov", "dic"};
    for (const auto& m : todas) {
        dias[m.dia].push_back(m);
        meses[kMeses[std::stoul(m.dia.substr(3, 2)) - 1] + " " + m.dia.substr(6)].push_back(m);
    }
    const auto filasDias = filasDe(pagina, "dias");
    std::uint64_t contadas = 0;
    for (const auto& [dia, celdas] : filasDias) {
        const auto suyas = dias.contains(dia) ? dias[dia] : std::vector<Muestra>{};
        comparar(celdas, Cuenta(suyas, false), dia);
        contadas += suyas.size();
    }
    EXPECT_EQ(contadas, todas.size()) << "each sample on one day of the table";
    const auto filasMeses = filasDe(pagina, "meses");
    EXPECT_GE(filasMeses.size(), meses.size());
    for (const auto& [mes, suyas] : meses) {
        ASSERT_TRUE(filasMeses.contains(mes)) << mes;
        comparar(filasMeses.at(mes), Cuenta(suyas, true), mes);
    }
    // The rose: all of them, each in one place.
    const auto rosa = filasDe(pagina, "rosa");
    std::size_t enLaRosa = 0;
    for (const auto& [nombre, celdas] : rosa)
        if (nombre != "total") enLaRosa += std::stoul(celdas[4].valor);
    EXPECT_EQ(enLaRosa, todas.size());
    EXPECT_EQ(rosa.at("total")[4].valor, std::to_string(todas.size()));
    EXPECT_EQ(rosa.at("calma")[4].valor,
              std::to_string(std::ranges::count_if(todas, [](const auto& m) { return m.viento() < 1.8; })));
}

}  // namespace
}  // namespace telvane
