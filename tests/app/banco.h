// The whole program without a window: the forms as data, simulated loggers on the ports, a clock and dialogs
// of the test.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/inicio.h"
#include "regional/module1.h"
#include "simulator/puertos_simulados.h"
#include "tests/apoyo/bucle_prueba.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/dialogos_prueba.h"
#include "tests/apoyo/inhibidor_prueba.h"
#include "tests/apoyo/puerto_en_red.h"

namespace telvane {

// The eight values, right from the start; every access is noted.
class RegistroRegionalPrueba final : public Registro {
   public:
    RegistroRegionalPrueba() {
        for (const auto& valor : kValoresRegionales)
            poner(std::string(valor.nombre), std::string(valor.exigido));
    }
    void poner(const std::string& corto, const std::string& valor) {
        valores[std::string(kClaveRegional) + corto] = valor;
    }
    std::string RegRead(const std::string& nombre) override {
        leidos.push_back(nombre);
        const auto lugar = valores.find(nombre);
        if (lugar == valores.end()) throw ErrorRegistro("no se puede leer " + nombre);
        return lugar->second;
    }
    void RegWrite(const std::string& nombre, const std::string& valor) override {
        escritos.push_back(nombre);
        valores[nombre] = valor;
    }

    std::map<std::string, std::string> valores;
    std::vector<std::string> leidos;
    std::vector<std::string> escritos;
};

class Banco : public ::testing::Test {
   protected:
    // red: makes the network through which COM1 is reached; none: the port stands in the PC.
    using HacerRed = std::function<std::unique_ptr<PuertoEnRed>(BuclePrueba&, PuertosSimulados&)>;
    explicit Banco(int baudios = 0, Perfil perfil = Perfil::estricto, const HacerRed& hacerRed = {});

    using ms = std::chrono::milliseconds;

    // Start-up with a logger on this port, the question answered with OK, through the configuration read.
    void conectar(int numero = 1, MaquinaRegistrador maquina = MaquinaRegistrador(memoriaSimulada(Clima())));
    // Lets time pass in virtual time.
    void pasar(std::chrono::nanoseconds tiempo) { bucle.avanzar(tiempo); }
    void pulsar(Control& control) { inicio.pulsar(control); }
    // Types a text into a field, key by key.
    void escribir(Control& control, const std::string& texto);

    std::vector<std::string> lineas() const {
        return {inicio.forma.lineas().begin(), inicio.forma.lineas().end()};
    }

    CarpetaTemporal carpeta;
    BuclePrueba bucle;
    DialogosPrueba dialogos;
    RegistroRegionalPrueba registro;
    InhibidorPrueba inhibidor;
    PuertosSimulados puertos;
    std::unique_ptr<PuertoEnRed> red;
    std::vector<int> terminaciones;
    std::vector<std::string> fallos;
    Inicio inicio;
    FormaInicio& forma = inicio.forma;
};

inline constexpr const char* kPregunta = "Quiere conectarse con Registrador Veltra";
inline constexpr const char* kNoHay = "No hay equipo conectado ,Intente Reconectar ";
inline constexpr const char* kOfrecer = " Conectar con Registrador ? ";

}  // namespace telvane
