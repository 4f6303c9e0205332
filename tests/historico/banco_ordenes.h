// The commands as a routine, on an archive of a test's own.
#pragma once

#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "historico/aplicacion.h"
#include "historico/esquema.h"
#include "historico/esquema_postgres.h"
#include "historico/esquema_sqlite.h"
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

    // What makes an archive's first version, and what makes of it the one of now.
    std::string primeras() const {
        return esArchivo() ? std::string(esquema::kTablas) + std::string(esquema::kVista)
                           : std::string(esquema_postgres::kTablas) + std::string(esquema_postgres::kVista);
    }
    std::string posteriores() const {
        std::string todo;
        for (const auto paso :
             esArchivo() ? std::span(esquema::kMigraciones) : std::span(esquema_postgres::kMigraciones))
            todo += paso;
        return todo;
    }
    // Which version it is says nothing of what is in it.
    Tablas tablas() const {
        auto todas = leerTablas(primeras() + posteriores());
        std::erase_if(todas, [](const Tabla& tabla) { return tabla.nombre == "esquema"; });
        return todas;
    }

    // The archive as it is now, to be put in place of whatever became of it.
    void guardarlo() {
        if (esArchivo()) return copiarArchivo(archivo(), archivo() + ".entero");
        sql("DROP SCHEMA IF EXISTS entero CASCADE; ALTER SCHEMA telvane RENAME TO entero");
    }
    void devolverlo() {
        if (esArchivo()) return copiarArchivo(archivo() + ".entero", archivo());
        sql("DROP SCHEMA IF EXISTS telvane CASCADE");
        const AlmacenPostgres vacio(archivo(), true, paciencia);
        std::string copia;
        for (const auto& tabla : tablas())
            copia += "INSERT INTO " + tabla.nombre + " SELECT * FROM entero." + tabla.nombre + ";";
        sql(copia);
    }

   private:
    static void copiarArchivo(const std::string& desde, const std::string& hasta) {
        for (const auto* sufijo : {"", "-wal", "-shm"}) {
            std::filesystem::remove(hasta + sufijo);
            if (std::filesystem::exists(desde + sufijo))
                std::filesystem::copy_file(desde + sufijo, hasta + sufijo);
        }
    }

    static constexpr const char* kBase = "ordenes";
    std::string direccion_;
};

}  // namespace telvane
