// An archive in a PostgreSQL data base, schema telvane.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "historico/almacen.h"
#include "historico/apertura_postgres.h"
#include "historico/postgres.h"
#include "historico/tablas_postgres.h"

namespace telvane {

class AlmacenPostgres final : public Almacen {
   public:
    // Whether a destination names one.
    static bool esDireccion(std::string_view destino);
    // crear: makes its tables where there are none yet. paciencia: how long to wait for another program that
    // writes. atender: called while the server works; what it throws ends that.
    AlmacenPostgres(const std::string& url, bool crear, std::chrono::milliseconds paciencia,
                    std::function<void()> atender = {});
    // To be put right: also one that does not say of which version it is.
    static std::unique_ptr<AlmacenPostgres> abrirParaReponer(const std::string& url,
                                                             std::chrono::milliseconds paciencia,
                                                             std::function<void()> atender = {});

    std::string nombre() const override { return base_.nombre(); }
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
    std::vector<std::string> partesQueFaltan() override;
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
    AlmacenPostgres(const std::string& url, AperturaPostgres::Para para, std::chrono::milliseconds paciencia,
                    std::function<void()> atender);

    std::string_view prefijo() const override { return TablasPostgres::kPrefijo; }
    std::int64_t numero(const std::string& sql) override;
    AperturaPostgres apertura();
    std::string condiciones() const;
    std::vector<FichaImagen> fichasCon(const std::string& condicion, const Parametros& parametros);
    Descargas descargasCon(const std::string& condicion, const Parametros& parametros);
    std::vector<Instante> sellos(const std::string& sql, const Parametros& parametros);

    BasePostgres base_;
    TablasPostgres tablas_;
    std::chrono::milliseconds paciencia_;
};

}  // namespace telvane
