// What a report says of one station and one period, and the two forms that it has: a page and a text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "informe/columnas_grafico.h"
#include "informe/estadistica.h"
#include "loggerconfig/datos_config.h"

namespace telvane::informe {

struct ImagenInformada {
    std::string huella;  // 64 digits
    std::optional<Instante> reloj;
    std::size_t bytes = 0;
    std::int64_t muestras = 0;
    std::int64_t retrocesos = 0;
    bool parcial = false;
};

struct EstacionInformada {
    std::string nombre;                 // as the archive calls it; empty: no serial number
    std::array<std::string, 5> textos;  // UTF-8, as the logger had them; index with CampoTexto
    std::optional<int> intervalo;       // minutes
    std::optional<Instante> reloj;
    bool evaporacion = false;
    std::vector<ImagenInformada> imagenes;
    // Slots of the newest image; nothing where it cannot be read any more.
    std::optional<std::int64_t> vacios;
    std::optional<std::int64_t> descartados;

    const std::string& operator[](CampoTexto campo) const { return textos[static_cast<std::size_t>(campo)]; }
};
// Takes over what the header of a memory image says: texts, interval, clock. 432 bytes, or fewer.
void tomarCabecera(EstacionInformada& estacion, std::span<const std::uint8_t> cabecera);

// Takes the whole series of a station in order and counts what lies in the period.
class Informe {
   public:
    explicit Informe(const Plazo& plazo) : estadistica(plazo), columnas(plazo) {}

    void agregar(const Juzgada& juzgada) {
        if (!estadistica.plazo().contiene(juzgada.observacion.instante)) return;
        estadistica.agregar(juzgada);
        columnas.agregar(juzgada);
    }
    void terminar() { estadistica.terminar(); }
    bool vacio() const { return !estadistica.primera(); }

    Estadistica estadistica;
    ColumnasGrafico columnas;
};

struct OpcionesPagina {
    bool guiones = true;
    std::string hecho;    // the line that says when: "20/11/2026 17:04"
    std::string version;  // of the program
};

// A page that needs nothing but itself.
std::string pagina(const EstacionInformada& estacion, const Informe& informe, const OpcionesPagina& opciones);

// The climate of a month of the period as plain text, 80 columns wide.
std::string resumenDelMes(const EstacionInformada& estacion, const Informe& informe, const MesContado& mes);

}  // namespace telvane::informe
