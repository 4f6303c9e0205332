// An archive for a test, on each of the stores.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "historico/almacen_postgres.h"
#include "historico/almacen_sqlite.h"
#include "historico/archivo.h"
#include "historico/lectura.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/historico/imagen_prueba.h"
#include "tests/historico/oraculo.h"
#include "tests/historico/servidor_postgres.h"

namespace telvane {

// The stores that every rule of an archive is tried on.
enum class TipoAlmacen { sqlite, postgresql };
inline std::string nombreDeTipoAlmacen(const testing::TestParamInfo<TipoAlmacen>& info) {
    return info.param == TipoAlmacen::sqlite ? "sqlite" : "postgresql";
}

// Empty ones; those of PostgreSQL are not to be more than kALaVez at a time.
class Almacenes {
   public:
    static constexpr int kALaVez = 8;
    explicit Almacenes(TipoAlmacen tipo) : tipo_(tipo) {}
    std::unique_ptr<Almacen> nuevo() {
        if (tipo_ == TipoAlmacen::sqlite) return AlmacenSqlite::temporal();
        const auto base = "h" + std::to_string(siguiente_++ % kALaVez);
        return std::make_unique<AlmacenPostgres>(ServidorPostgres::unico().baseVacia(base), true,
                                                 std::chrono::seconds(10));
    }

   private:
    TipoAlmacen tipo_;
    int siguiente_ = 0;
};

// Compared as text, so that a difference can be read.
inline std::string retrato(Almacen& almacen) {
    Lectura lectura(almacen);
    std::string texto;
    for (const auto& e : lectura.estaciones()) {
        const auto& r = e.resumen;
        texto += e.nombre + " imagenes " + std::to_string(r.imagenes) + " muestras " +
                 std::to_string(r.muestras) + " huecos " + std::to_string(r.huecos) + " conflictos " +
                 std::to_string(r.conflictos) + " nueva " + (r.masNueva ? textoDe(*r.masNueva) : "ninguna") +
                 " cabecera " + textoDe(huellaDe(r.cabecera)) + "\n";
        almacen.filas(e.id, kPrimerMomento, kUltimoMomento, [&](const Fila& f) {
            texto += std::to_string(f.instante.time_since_epoch().count()) + " " +
                     std::to_string(f.registro[11]) + (f.cuenta ? " cuenta\n" : " no\n");
        });
    }
    return texto;
}

// What the images demand of their station.
inline void exigirComoElOraculo(Almacen& almacen, const std::string& estacion,
                                const std::set<Oraculo::Imagen>& imagenes) {
    const auto esperado = Oraculo::de(imagenes);
    Lectura lectura(almacen);
    const auto e = lectura.estacion(estacion);
    std::vector<Fila> filas;
    almacen.filas(e.id, kPrimerMomento, kUltimoMomento, [&](const Fila& f) { filas.push_back(f); });
    ASSERT_EQ(filas.size(), esperado.filas.size());
    for (std::size_t i = 0; i < filas.size(); ++i) {
        ASSERT_TRUE(filas[i].esLaMisma(esperado.filas[i])) << i;
        ASSERT_EQ(filas[i].cuenta, esperado.filas[i].cuenta) << i;
    }
    EXPECT_EQ(e.resumen.muestras, esperado.cuentan);
    EXPECT_EQ(e.resumen.conflictos, esperado.conflictos);
    EXPECT_EQ(e.resumen.huecos, esperado.huecos);
    EXPECT_EQ(e.resumen.imagenes, static_cast<std::int64_t>(imagenes.size()));
}

}  // namespace telvane
