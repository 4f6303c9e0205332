// The statistics of a period: its days with what they hold, one after the other, and the months made of them.
// Memory grows with the days, not with the samples.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "informe/cuentas.h"
#include "informe/periodo.h"

namespace telvane::informe {

struct Dia {
    Instante comienzo{};  // its 00:00
    Cuentas cuentas;
    // Mean temperature of each hour, tenths of ºC.
    std::array<std::optional<std::int16_t>, 24> horas;
    bool entero = false;  // the whole day lies in the period
    // A sum that some of the day's samples are missing in.
    bool conAgujeros(Canal canal) const { return !entero || cuentas.conAgujeros(canal); }
};

struct MesContado {
    Mes mes;
    Cuentas cuentas;
    std::size_t primero = 0;  // its days among all
    std::size_t dias = 0;     // of the period
    bool entero = false;      // the whole month lies in the period
    // Too many days without a value of the channel: of the calendar month, and of its days in the period.
    std::array<bool, kCanales> incompletas{};
    std::array<bool, kCanales> incompletasEnElPlazo{};
    bool incompleta(Canal canal) const { return incompletas[static_cast<std::size_t>(canal)]; }
    // A sum that some of the month's samples are missing in.
    bool conAgujeros(Canal canal) const { return !entero || cuentas.conAgujeros(canal); }
};

class Estadistica {
   public:
    explicit Estadistica(const Plazo& plazo);

    // In order of time; all within the period.
    void agregar(const Juzgada& juzgada);
    // What is missing to the period's end, then the months and the whole.
    void terminar();

    const Plazo& plazo() const { return plazo_; }
    const std::vector<Dia>& dias() const { return dias_; }  // every one of the period
    const std::vector<MesContado>& meses() const { return meses_; }
    const Cuentas& todo() const { return todo_; }
    // Whether so much of one of the months is missing that the period's mean is none.
    bool incompleta(Canal canal) const;
    // Samples of the rose: by sector and class of speed.
    using Rosa = std::array<std::array<std::uint32_t, kClases>, kRumbos>;
    const Rosa& rosa() const { return rosa_; }
    std::optional<Instante> primera() const { return primera_; }
    std::optional<Instante> ultima() const { return ultima_; }
    // Hours of a period that is short enough to be shown by hours; else none.
    static constexpr std::chrono::days kPorHoras{3};
    const std::vector<Cuentas>& horas() const { return horas_; }

   private:
    Dia& dia(Instante momento);
    void contarFaltan(Instante desde, Instante hasta, int intervalo);
    void juzgarMes(MesContado& mes) const;
    void cerrarHora();
    void abrirHora(Instante momento);

    Plazo plazo_;
    std::vector<Dia> dias_;
    std::vector<MesContado> meses_;
    std::vector<Cuentas> horas_;
    Cuentas todo_;
    Rosa rosa_{};
    std::optional<Instante> primera_;
    std::optional<Instante> ultima_;
    int intervalo_ = 60;
    // The hour of the day under way.
    std::size_t diaActual_ = 0;
    std::size_t horaActual_ = 0;
    Instante finDeHora_ = Instante::min();
    std::int64_t sumaHora_ = 0;
    std::int32_t valoresHora_ = 0;
};

}  // namespace telvane::informe
