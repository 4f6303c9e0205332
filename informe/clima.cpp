#include "informe/clima.h"

#include <algorithm>

namespace telvane::informe {

namespace {

// By how much the mean lies above the base. Of whole tenths: of two doubles nearly alike little is left.
double gradosDia(const CuentaCanal& temperatura) {
    const std::int64_t decimas = temperatura.suma - kBaseGradosDia * temperatura.valores;
    return static_cast<double>(decimas) / temperatura.valores / 10;
}

}  // namespace

ClimaDelMes climaDe(const Estadistica& estadistica, const MesContado& mes) {
    ClimaDelMes clima;
    clima.mes = &mes;
    std::int64_t masLluvia = 0;
    for (int d = 1; d <= mes.mes.dias(); ++d) {
        DiaDeClima dia;
        dia.dia = d;
        for (std::size_t i = 0; i < mes.dias; ++i) {
            const auto& contado = estadistica.dias()[mes.primero + i];
            if (fechaDe(contado.comienzo).dia != d) continue;
            dia.cuentas = &contado.cuentas;
            dia.lluviaConAgujeros = contado.conAgujeros(Canal::lluvia);
        }
        if (dia.cuentas != nullptr) {
            const auto& temperatura = (*dia.cuentas)[Canal::temperatura];
            if (temperatura.valores > 0) {
                const auto grados = gradosDia(temperatura);
                dia.calefaccion = std::max(-grados, 0.0);
                dia.refrigeracion = std::max(grados, 0.0);
                clima.calefaccion += *dia.calefaccion;
                clima.refrigeracion += *dia.refrigeracion;
                if (temperatura.maximo >= 320) ++clima.maximaDesde32;
                if (temperatura.maximo <= 0) ++clima.maximaHasta0;
                if (temperatura.minimo <= 0) ++clima.minimaHasta0;
                if (temperatura.minimo <= -180) ++clima.minimaHasta18Bajo0;
            }
            const auto lluvia = (*dia.cuentas)[Canal::lluvia].suma;
            if (lluvia >= 2) ++clima.lluviaDesde02;
            if (lluvia >= 20) ++clima.lluviaDesde2;
            if (lluvia >= 200) ++clima.lluviaDesde20;
            if (lluvia > masLluvia) {
                masLluvia = lluvia;
                clima.diaMasLluvioso = d;
            }
        }
        clima.dias.push_back(dia);
    }
    return clima;
}

}  // namespace telvane::informe
