#include "informe/ejes.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "informe/texto_html.h"

namespace telvane::informe {

namespace {

using namespace std::chrono_literals;
using std::chrono::days;

constexpr std::int64_t haciaAbajo(std::int64_t valor, std::int64_t paso) {
    const auto resto = valor % paso;
    return valor - (resto < 0 ? resto + paso : resto);
}

// Every so many hours or days from the day before the period on.
std::vector<MarcaDeTiempo> cada(const Plazo& plazo, std::chrono::hours paso, bool conHora) {
    std::vector<MarcaDeTiempo> marcas;
    const auto comienzo = std::chrono::floor<days>(plazo.desde);
    int numero = 0;
    for (Instante m = comienzo; m < plazo.hasta; m += paso, ++numero) {
        if (m < plazo.desde) continue;
        const auto f = fechaDe(m);
        const bool medianoche = horaDe(m).hora == 0;
        auto texto = conHora && !medianoche ? hora(m) : fmt::format("{} {}", f.dia, mesCorto(f.mes));
        marcas.push_back({.momento = m, .texto = std::move(texto), .menor = numero % 2 != 0});
    }
    return marcas;
}

std::vector<MarcaDeTiempo> cadaMeses(const Plazo& plazo, int meses) {
    std::vector<MarcaDeTiempo> marcas;
    auto mes = mesDe(plazo.desde);
    mes.mes = (mes.mes - 1) / std::min(meses, 12) * std::min(meses, 12) + 1;
    if (meses > 12) mes.anio = mes.anio / (meses / 12) * (meses / 12);
    for (int numero = 0; mes.plazo().desde < plazo.hasta; ++numero) {
        if (mes.plazo().desde >= plazo.desde) {
            auto texto = mes.mes == 1 ? std::to_string(mes.anio) : mesCorto(mes.mes);
            marcas.push_back(
                {.momento = mes.plazo().desde, .texto = std::move(texto), .menor = numero % 2 != 0});
        }
        for (int i = 0; i < meses; ++i) mes = mes.siguiente();
    }
    return marcas;
}

}  // namespace

std::int64_t Escala::lugar(std::int64_t valor, std::int64_t alto) const {
    const auto dentro = std::clamp(valor, desde, hasta);
    return ((hasta - dentro) * alto + (hasta - desde) / 2) / (hasta - desde);
}

Escala escalaPara(std::int64_t minimo, std::int64_t maximo) {
    // What never moves runs through the middle.
    if (minimo == maximo && minimo != 0) return {.desde = minimo - 1, .hasta = minimo + 1, .paso = 1};
    constexpr std::array<std::int64_t, 3> kPasos = {1, 2, 5};
    for (std::int64_t potencia = 1;; potencia *= 10) {
        for (const auto uno : kPasos) {
            const auto paso = uno * potencia;
            const auto desde = haciaAbajo(minimo, paso);
            auto hasta = haciaAbajo(maximo, paso);
            if (hasta < maximo) hasta += paso;
            if (hasta - desde < 2 * paso) hasta = desde + 2 * paso;
            if ((hasta - desde) / paso <= 5) return {.desde = desde, .hasta = hasta, .paso = paso};
        }
    }
}

std::vector<MarcaDeTiempo> marcasDeTiempo(const Plazo& plazo) {
    const auto dura = plazo.dura();
    if (dura <= 12h) return cada(plazo, 1h, true);
    if (dura <= 36h) return cada(plazo, 3h, true);
    if (dura <= days(3)) return cada(plazo, 6h, true);
    if (dura <= days(14)) return cada(plazo, 24h, false);
    if (dura <= days(35)) return cada(plazo, 72h, false);
    if (dura <= days(100)) return cada(plazo, 168h, false);
    if (dura <= days(420)) return cadaMeses(plazo, 1);
    if (dura <= days(3 * 366)) return cadaMeses(plazo, 3);
    for (int anios = 1;; anios *= anios == 2 ? 5 : 2) {
        if (dura <= days(366 * 13 * anios)) return cadaMeses(plazo, 12 * anios);
    }
}

}  // namespace telvane::informe
