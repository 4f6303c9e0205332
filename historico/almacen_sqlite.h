// An archive in one SQLite file.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "historico/almacen.h"
#include "historico/apertura_sqlite.h"
#include "historico/esquema_sqlite.h"
#include "historico/sqlite.h"
#include "historico/tablas_sqlite.h"

namespace telvane {

class AlmacenSqlite final : public Almacen {
   public:
    struct Opciones {
        // How long to wait for another program that writes.
        std::chrono::milliseconds paciencia = std::chrono::seconds(10);
        // Called while waiting for it; what it throws ends the wait.
        std::function<void()> atender = {};
        // What makes of an older archive the next version; the version of now is one more than there are.
        std::vector<std::string_view> migraciones = {esquema::kMigraciones.begin(),
                                                     esquema::kMigraciones.end()};
    };
    // Only what is there; nothing is written.
    static std::unique_ptr<AlmacenSqlite> abrirParaLeer(const std::filesystem::path& ruta, Opciones opciones);
    // crear: makes it where there is none yet, or an empty file; otherwise it is to be put right, and may be
    // one that does not say so. An older version is migrated, after a copy.
    static std::unique_ptr<AlmacenSqlite> abrirParaEscribir(const std::filesystem::path& ruta, bool crear,
                                                            Opciones opciones);
    // Seen by nobody else and gone with it.
    static std::unique_ptr<AlmacenSqlite> temporal();

    std::string nombre() const override { return nombreVisible(base_.ruta()); }
    std::filesystem::path limitesAlLado() const override {
        return base_.ruta().parent_path() / "calidad.ini";
    }
    std::vector<std::filesystem::path> archivos() const override;
    void empezar(Modo modo) override;
    void confirmar() override;
    void abandonar() noexcept override;
    std::vector<EstacionGuardada> estaciones() override;
    std::optional<EstacionGuardada> estacion(const std::string& nombre) override;
    void agregarEstacion(const EstacionGuardada& estacion) override;
    void quitarEstacion(IdEstacion estacion) override;
    void guardarResumen(IdEstacion estacion, const ResumenEstacion& resumen) override;
    std::vector<FichaImagen> fichas(IdEstacion estacion) override;
    std::optional<FichaImagen> ficha(IdEstacion estacion, const Huella& huella) override;
    std::set<IdEstacion> estacionesCon(const Huella& huella) override;
    std::map<IdEstacion, std::vector<Llegada>> ultimas(std::size_t cuantas) override;
    std::vector<FichaImagen> parcialesSueltas(IdEstacion estacion) override;
    std::vector<Huella> imagenesSolas(IdEstacion estacion) override;
    Cadena cadena(IdEstacion estacion, const Huella& huella, std::size_t cuantas) override;
    void agregarFicha(IdEstacion estacion, const FichaImagen& ficha) override;
    void quitarFicha(IdEstacion estacion, const Huella& huella) override;
    void guardarContenido(IdEstacion estacion, const Huella& huella, const ImagenGuardada& imagen) override;
    void quitarContenido(IdEstacion estacion, const Huella& huella) override;
    bool conserva(IdEstacion estacion, const Huella& huella) override;
    Descargas descargas(IdEstacion estacion) override;
    std::optional<FichaDescarga> descarga(IdEstacion estacion, const Huella& imagen) override;
    void guardarDescarga(IdEstacion estacion, const Huella& imagen, const FichaDescarga& ficha) override;
    void marcarContenida(IdEstacion estacion, const Huella& huella, bool contenida) override;
    void filas(IdEstacion estacion, Instante desde, Instante hasta, const AlLeerFila& alLeer) override;
    std::int64_t contarFilas(IdEstacion estacion, Instante desde, Instante hasta) override;
    std::vector<Instante> sellosAntes(IdEstacion estacion, Instante de, std::size_t cuantos) override;
    std::vector<Instante> sellosDespues(IdEstacion estacion, Instante de, std::size_t cuantos) override;
    void agregarFilas(IdEstacion estacion, std::span<const Fila> filas) override;
    void cambiarCuenta(IdEstacion estacion, const Fila& fila) override;
    std::vector<Testigo> testigos(IdEstacion estacion, Instante desde, Instante hasta) override;
    std::vector<Instante> sellosDe(IdEstacion estacion, const Huella& imagen) override;
    std::int64_t conflictosDeMas(IdEstacion estacion, const FichaImagen& imagen, const Huella& otra) override;
    void agregarTestigos(IdEstacion estacion, std::span<const Testigo> testigos) override;
    void vaciarDerivado(IdEstacion estacion) override;
    void corregirEstacion(const EstacionGuardada& estacion) override;
    void corregirFicha(IdEstacion estacion, const FichaImagen& ficha) override;
    std::vector<std::string> partesQueFaltan() override { return tablas_.faltan(); }
    void reponer() override;
    void limpiar() override;
    std::vector<std::string> sobras() override { return tablas_.sobras(); }
    std::vector<FichaGuardada> fichasGuardadas() override;
    std::vector<Eslabon> eslabones() override;
    std::vector<std::uint8_t> datosDe(const Eslabon& eslabon) override;
    void corregirProfundidad(IdEstacion estacion, const Huella& huella, std::int64_t profundidad) override;
    std::vector<std::string> valoresImposibles() override { return tablas_.imposibles(); }
    std::vector<std::string> defectos() override;

   private:
    std::string_view prefijo() const override { return TablasSqlite::kPrefijo; }
    std::int64_t numero(const std::string& sql) override;
    AlmacenSqlite(const std::filesystem::path& ruta, BaseSqlite::Acceso acceso, Opciones opciones);

    AperturaSqlite apertura();
    // Prepared once, under its own text.
    Sentencia& sentencia(std::string_view sql);
    std::vector<FichaImagen> leerFichas(Sentencia& s);
    Descargas leerDescargas(Sentencia& s);

    Opciones opciones_;
    BaseSqlite base_;
    TablasSqlite tablas_;
    std::map<std::string_view, std::unique_ptr<Sentencia>> sentencias_;
};

}  // namespace telvane
