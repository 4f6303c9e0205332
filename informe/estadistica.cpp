#include "informe/estadistica.h"

#include <algorithm>
#include <limits>

namespace telvane::informe {

namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::seconds;

Instante comienzoDelDia(Instante momento) {
    return std::chrono::floor<days>(momento);
}

// Days without a value, one after the other.
class Faltas {
   public:
    void falta(int dias) {
        seguidas_ += dias;
        todas_ += dias;
        masSeguidas_ = std::max(masSeguidas_, seguidas_);
    }
    void hay() { seguidas_ = 0; }
    bool demasiadas() const { return masSeguidas_ > 3 || todas_ > 5; }

   private:
    int seguidas_ = 0;
    int masSeguidas_ = 0;
    int todas_ = 0;
};

}  // namespace

Estadistica::Estadistica(const Plazo& plazo) : plazo_(plazo) {
    for (auto d = comienzoDelDia(plazo.desde); d < plazo.hasta; d += days(1)) {
        dias_.push_back({.comienzo = d,
                         .cuentas = {},
                         .horas = {},
                         .entero = plazo.desde <= d && d + days(1) <= plazo.hasta});
    }
    if (plazo.dura() <= kPorHoras) horas_.resize(dias_.size() * 24);
}

Dia& Estadistica::dia(Instante momento) {
    return dias_[static_cast<std::size_t>((comienzoDelDia(momento) - dias_.front().comienzo) / days(1))];
}

// The stamps between two moments, both excluded, that an interval would have had; each counts on its day, and
// in its hour where hours are shown.
void Estadistica::contarFaltan(Instante desde, Instante hasta, int intervalo) {
    const std::int64_t paso = std::int64_t{intervalo} * 60;
    // Stamps desde + k paso with k from 1 on, as far as half an interval before the next one there is.
    const auto cuantas = [&](Instante fin) {
        const auto distancia = (std::min(fin, hasta - seconds(paso / 2)) - desde).count();
        return distancia <= 0 ? 0 : (distancia - 1) / paso;
    };
    const auto repartir = [&](seconds largo, const auto& cuentasDe) {
        std::int64_t antes = 0;
        for (auto fin = comienzoDelDia(desde) + largo; antes < cuantas(hasta); fin += largo) {
            const auto ahora = cuantas(fin);
            if (ahora > antes) cuentasDe(fin - largo).faltan += static_cast<std::uint32_t>(ahora - antes);
            antes = ahora;
        }
    };
    repartir(days(1), [&](Instante comienzo) -> Cuentas& { return dia(comienzo).cuentas; });
    if (horas_.empty()) return;
    repartir(hours(1), [&](Instante comienzo) -> Cuentas& {
        return horas_[static_cast<std::size_t>((comienzo - dias_.front().comienzo) / hours(1))];
    });
}

void Estadistica::cerrarHora() {
    if (valoresHora_ == 0) return;
    constexpr std::int64_t kTope = std::numeric_limits<std::int16_t>::max();
    dias_[diaActual_].horas[horaActual_] =
        static_cast<std::int16_t>(std::clamp<std::int64_t>(sumaHora_ / valoresHora_, -kTope, kTope));
    sumaHora_ = 0;
    valoresHora_ = 0;
}

void Estadistica::abrirHora(Instante momento) {
    cerrarHora();
    const auto comienzo = std::chrono::floor<hours>(momento);
    const auto horas = (comienzo - dias_.front().comienzo) / hours(1);
    diaActual_ = static_cast<std::size_t>(horas / 24);
    horaActual_ = static_cast<std::size_t>(horas % 24);
    finDeHora_ = comienzo + hours(1);
}

void Estadistica::agregar(const Juzgada& juzgada) {
    const auto momento = juzgada.observacion.instante;
    const bool primeraDelSello = ultima_ != momento;
    const auto paso = seconds(juzgada.paso.intervalo * 60);
    if (!primera_) {
        primera_ = momento;
        if (momento - plazo_.desde >= paso)
            contarFaltan(plazo_.desde - paso, momento, juzgada.paso.intervalo);
    } else if (primeraDelSello && juzgada.paso.hueco) {
        contarFaltan(*ultima_, momento, juzgada.paso.intervalo);
    }
    if (momento >= finDeHora_) abrirHora(momento);
    if (!juzgada.marcas.tiene(Canal::temperatura, Marca::rango)) {
        sumaHora_ += juzgada.observacion.medidas.temperatura;
        ++valoresHora_;
    }
    dias_[diaActual_].cuentas.agregar(juzgada, primeraDelSello);
    if (!horas_.empty()) horas_[diaActual_ * 24 + horaActual_].agregar(juzgada, primeraDelSello);

    const auto& medidas = juzgada.observacion.medidas;
    const auto rumbo = rumboDe(medidas.crudoDirViento);
    if (medidas.velViento >= kCalma && rumbo) ++rosa_[*rumbo][claseDe(medidas.velViento)];
    ultima_ = momento;
    intervalo_ = juzgada.paso.intervalo;
}

void Estadistica::terminar() {
    cerrarHora();
    if (!ultima_) return;
    contarFaltan(*ultima_, plazo_.hasta + seconds(std::int64_t{intervalo_} * 30), intervalo_);
    for (std::size_t i = 0; i < dias_.size(); ++i) {
        const auto mes = mesDe(dias_[i].comienzo);
        if (meses_.empty() || meses_.back().mes != mes) {
            meses_.push_back({.mes = mes, .cuentas = {}, .primero = i, .dias = 0, .entero = false});
        }
        meses_.back().cuentas.agregar(dias_[i].cuentas);
        ++meses_.back().dias;
        todo_.agregar(dias_[i].cuentas);
    }
    for (auto& mes : meses_) juzgarMes(mes);
}

void Estadistica::juzgarMes(MesContado& mes) const {
    mes.entero = plazo_.desde <= mes.mes.plazo().desde && mes.mes.plazo().hasta <= plazo_.hasta;
    const auto antes = fechaDe(dias_[mes.primero].comienzo).dia - 1;
    const auto despues = mes.mes.dias() - antes - static_cast<int>(mes.dias);
    for (std::size_t c = 0; c < kCanales; ++c) {
        const auto hay = [&](std::size_t dia) {
            return dias_[mes.primero + dia].cuentas.canales[c].valores > 0;
        };
        Faltas enElPlazo;
        Faltas enElMes;
        enElMes.falta(antes);
        for (std::size_t i = 0; i < mes.dias; ++i) {
            for (auto* faltas : {&enElPlazo, &enElMes}) {
                if (hay(i)) {
                    faltas->hay();
                } else {
                    faltas->falta(1);
                }
            }
        }
        enElMes.falta(despues);
        mes.incompletas[c] = enElMes.demasiadas();
        mes.incompletasEnElPlazo[c] = enElPlazo.demasiadas();
    }
}

bool Estadistica::incompleta(Canal canal) const {
    return std::ranges::any_of(meses_, [&](const MesContado& mes) {
        return mes.incompletasEnElPlazo[static_cast<std::size_t>(canal)];
    });
}

}  // namespace telvane::informe
