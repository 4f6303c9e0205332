// A console program's surroundings inside the test: streams in memory, virtual time.
#pragma once

#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "consola/codigos_salida.h"
#include "consola/consola.h"
#include "tests/apoyo/bucle_prueba.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/flujo_en_memoria.h"

namespace telvane {

class ConsolaPrueba : public testing::Test {
   protected:
    // The exit status and the text that something ends with.
    template <class Cosa>
    static std::pair<CodigoSalida, std::string> final(const Cosa& cosa) {
        try {
            cosa();
        } catch (const ErrorCli& error) {
            return {error.codigo(), error.what()};
        }
        return {CodigoSalida::hecho, ""};
    }

    CarpetaTemporal carpeta;
    BuclePrueba bucle;
    FlujoEnMemoria entrada;
    FlujoEnMemoria salida;
    FlujoEnMemoria errores;
    EntornoConsola entorno{.bucle = bucle,
                           .reloj = bucle.reloj(),
                           .correrHasta = [this](const auto& condicion,
                                                 auto plazo) { return bucle.correrHasta(condicion, plazo); },
                           .entrada = entrada.descriptor(),
                           .salida = salida.descriptor(),
                           .errores = errores.descriptor()};
};

}  // namespace telvane
