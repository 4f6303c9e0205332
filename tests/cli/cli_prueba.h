// The console tool run inside the test: simulated loggers, virtual time, its three streams in memory.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/aplicacion.h"
#include "consola/codigos_salida.h"
#include "simulator/puertos_simulados.h"
#include "tests/apoyo/bucle_prueba.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/flujo_en_memoria.h"
#include "tests/apoyo/inhibidor_prueba.h"
#include "tests/apoyo/leer_todo.h"

namespace telvane {

// The names in a folder, in no order.
inline std::vector<std::string> nombresEn(const std::filesystem::path& carpeta) {
    std::vector<std::string> lista;
    for (const auto& entrada : std::filesystem::directory_iterator(carpeta)) {
        lista.push_back(entrada.path().filename().string());
    }
    return lista;
}

inline std::string comoTexto(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

struct Resultado {
    CodigoSalida codigo;
    std::string salida;
    std::string errores;
    std::chrono::nanoseconds duracion;
};

class CliPrueba : public testing::Test {
   protected:
    // COM3 has a logger with a year of samples. baudios: 0 for answers at once.
    explicit CliPrueba(int baudios = 0) : puertos(bucle, bucle.reloj(), baudios) {
        MaquinaRegistrador maquina(memoriaSimulada(Clima(7)), Clima(7));
        maquina.ponerReloj(bucle.reloj().ahora(), bucle.reloj().monotono());
        puertos.conectar(kPuerto, maquina);
    }

    static constexpr int kPuerto = 3;
    static constexpr auto kCualquiera = std::chrono::hours(2);

    Resultado correr(const std::vector<std::string>& argumentos) {
        FlujoEnMemoria salida;
        FlujoEnMemoria errores;
        EntornoCli entorno{
            {.bucle = bucle,
             .reloj = bucle.reloj(),
             .correrHasta = [this](const auto& condicion,
                                   auto plazo) { return bucle.correrHasta(condicion, plazo); },
             .entrada = entrada.descriptor(),
             .salida = salidaAjena ? *salidaAjena : salida.descriptor(),
             .errores = erroresAjenos ? *erroresAjenos : errores.descriptor()},
            {.abrirPuertos = [this](const MapaCom&) { return std::make_unique<Prestados>(*losPuertos); },
             .raices = {carpeta / "dev", carpeta / "sys", carpeta / "proc"},
             .inhibidor = &inhibidor,
             .systemctl = systemctl,
             .estaciones = estaciones}};
        const auto inicio = bucle.reloj().monotono();
        Bucle::Asidero alarma;
        if (senalTras.first > std::chrono::nanoseconds(0)) {
            alarma = bucle.alarma(senalTras.first, [&] { entorno.senal = senalTras.second; });
        }
        const int codigo = correrCli(argumentos, entorno);
        return {static_cast<CodigoSalida>(codigo), salida.texto(), errores.texto(),
                bucle.reloj().monotono() - inicio};
    }

    BuclePrueba bucle;
    PuertosSimulados puertos;
    Puertos* losPuertos = &puertos;  // that the tool finds
    CarpetaTemporal carpeta;
    InhibidorPrueba inhibidor;
    Systemctl systemctl;
    std::optional<std::filesystem::path> estaciones;  // of the files that systemd's units read
    FlujoEnMemoria entrada;
    std::optional<int> salidaAjena;  // -1: closed when the program started
    std::optional<int> erroresAjenos;
    // A signal some time after the start.
    std::pair<std::chrono::nanoseconds, int> senalTras{0, 0};

   private:
    // The tool owns its ports; these belong to the test.
    class Prestados final : public Puertos {
       public:
        explicit Prestados(Puertos& puertos) : puertos_(puertos) {}
        bool existe(int numero) const override { return puertos_.existe(numero); }
        std::unique_ptr<PuertoSerie> abrir(int numero, const AjustesLinea& ajustes,
                                           std::function<void()> alDespertar) override {
            return puertos_.abrir(numero, ajustes, std::move(alDespertar));
        }

       private:
        Puertos& puertos_;
    };
};

}  // namespace telvane
