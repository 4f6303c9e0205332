// The commands as a routine, on an archive of a test's own.
#pragma once

#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "historico/aplicacion.h"
#include "historico/sqlite.h"
#include "tests/apoyo/bucle_prueba.h"
#include "tests/apoyo/flujo_en_memoria.h"
#include "tests/historico/banco_historico.h"

namespace telvane {

class Ordenes : public testing::Test {
   protected:
    struct Resultado {
        int codigo;
        std::string salida;
        std::string errores;
    };

    Resultado correr(std::vector<std::string> argumentos) {
        const FlujoEnMemoria salida;
        const auto [codigo, errores] = correrEn(salida.descriptor(), std::move(argumentos));
        return {codigo, salida.texto(), errores};
    }
    std::pair<int, std::string> correrEn(int salida, std::vector<std::string> argumentos) {
        const FlujoEnMemoria errores;
        EntornoHistorico entorno{
            {.bucle = bucle,
             .reloj = bucle.reloj(),
             .correrHasta = [this](const auto& condicion,
                                   auto plazo) { return bucle.correrHasta(condicion, plazo); },
             .salida = salida,
             .errores = errores.descriptor()},
            {.ahora = [this] { return ahora; }, .paciencia = paciencia}};
        entorno.senalEnEspera = senalEnEspera;
        if (argumentos.front() != "--en") argumentos.insert(argumentos.begin(), {"--en", archivo()});
        const int codigo = correrHistorico(argumentos, entorno);
        return {codigo, errores.texto()};
    }
    virtual std::string archivo() const { return carpeta / "h.sqlite"; }
    std::string guardar(const std::string& nombre, const std::vector<std::uint8_t>& bytes) {
        std::ofstream(carpeta / nombre, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return carpeta / nombre;
    }
    std::string imagen() { return guardar("a.rgt", ImagenPrueba().serie(0, 0, 50).bytes()); }
    // Whoever changes the tables by hand.
    virtual void sql(const std::string& texto) {
        BaseSqlite base(archivo(), BaseSqlite::Acceso::escritura, std::chrono::seconds(1));
        base.ejecutar(texto);
    }

    std::chrono::milliseconds paciencia{50};
    std::function<bool()> senalEnEspera = [] { return false; };
    BuclePrueba bucle;
    CarpetaTemporal carpeta;
    Incorporada ahora{std::chrono::hours(500'000)};
};

// The same on either store.
class OrdenesEnAmbos : public Ordenes, public testing::WithParamInterface<TipoAlmacen> {
   protected:
    void SetUp() override {
        if (!esArchivo()) direccion_ = ServidorPostgres::unico().baseVacia(kBase);
    }
    bool esArchivo() const { return GetParam() == TipoAlmacen::sqlite; }
    std::string archivo() const override { return esArchivo() ? Ordenes::archivo() : direccion_; }
    void sql(const std::string& texto) override {
        if (esArchivo()) {
            Ordenes::sql(texto);
        } else {
            ServidorPostgres::unico().ejecutar(
                kBase, "SET search_path=telvane; SET client_min_messages=error; " + texto);
        }
    }

   private:
    static constexpr const char* kBase = "ordenes";
    std::string direccion_;
};

}  // namespace telvane
