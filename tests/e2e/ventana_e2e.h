// The window on a desktop of the test's own, driven by accessible names alone.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "apoyo/proceso.h"
#include "tests/e2e/accesible.h"
#include "tests/e2e/escritorio.h"
#include "tests/e2e/registrador_simulado.h"

namespace telvane {

inline constexpr const char* kBoton = "push button";
inline constexpr const char* kRotulo = "label";
inline constexpr const char* kCampo = "text";

class VentanaE2e : public ::testing::Test {
   protected:
    void SetUp() override { arrancar(registrador_.com()); }

    // The desktop's accessibility is up before the program is: it announces itself once.
    void arrancar(const std::string& com) {
        accesibilidad_ = std::make_unique<Accesibilidad>(escritorio_.bus());
        static_cast<void>(raiz().hijos());
        programa_ =
            std::make_unique<Proceso>(std::vector<std::string>{TELVANE, "--com", com}, escritorio_.entorno());
    }

    void TearDown() override {
        if (!HasFailure() || !programa_) return;
        ADD_FAILURE() << "telvane: " << programa_->errores() << "\n" << raiz().arbol();
    }

    Accesible raiz() const { return accesibilidad_->raiz(); }

    static bool empiezaPor(const std::string& texto, const std::string& comienzo) {
        return texto.compare(0, comienzo.size(), comienzo) == 0;
    }

    // The box with this text is on the screen: presses that button of it.
    ::testing::AssertionResult responder(const std::string& texto, const std::string& boton) {
        const auto pulsado = esperarA([&] {
            const auto caja = raiz().buscar([&](const Accesible& uno) {
                return uno.papel() == kRotulo && empiezaPor(uno.nombre(), texto);
            });
            const auto cual = caja ? raiz().buscar(kBoton, boton) : std::nullopt;
            return cual && cual->pulsar();
        });
        if (!pulsado) return ::testing::AssertionFailure() << "no box \"" << texto << "\" with " << boton;
        return ::testing::AssertionSuccess();
    }

    // The button can be pressed, and is.
    ::testing::AssertionResult pulsar(const std::string& nombre) {
        const auto pulsado = esperarA([&] {
            const auto boton = raiz().buscar(kBoton, nombre);
            return boton && boton->habilitado() && boton->pulsar();
        });
        if (!pulsado) return ::testing::AssertionFailure() << "no button " << nombre;
        return ::testing::AssertionSuccess();
    }

    ::testing::AssertionResult habilitado(const std::string& nombre) {
        const auto visto = esperarA([&] {
            const auto boton = raiz().buscar(kBoton, nombre);
            return boton && boton->habilitado();
        });
        if (!visto) return ::testing::AssertionFailure() << nombre << " stays disabled";
        return ::testing::AssertionSuccess();
    }

    // The file dialog is on the screen: gives it this file.
    ::testing::AssertionResult guardarComo(const std::filesystem::path& ruta) {
        const auto guardado = esperarA([&] {
            const auto dialogo = raiz().buscar(
                [](const Accesible& uno) { return empiezaPor(uno.nombre(), "Guardar archivo"); });
            const auto campo = dialogo ? dialogo->buscar(kCampo, "Nombre:") : std::nullopt;
            const auto boton = dialogo ? dialogo->buscar(kBoton, "Guardar") : std::nullopt;
            return campo && boton && campo->escribir(ruta.string()) && boton->pulsar();
        });
        if (!guardado) return ::testing::AssertionFailure() << "no file dialog";
        return ::testing::AssertionSuccess();
    }

    std::vector<std::filesystem::path> archivosBase() const {
        std::vector<std::filesystem::path> rutas;
        const auto carpeta = escritorio_.carpeta("datos") / "telvane";
        if (!std::filesystem::exists(carpeta)) return rutas;
        for (const auto& entrada : std::filesystem::directory_iterator(carpeta))
            rutas.push_back(entrada.path());
        return rutas;
    }

    RegistradorSimulado registrador_;
    Escritorio escritorio_;
    std::unique_ptr<Proceso> programa_;
    std::unique_ptr<Accesibilidad> accesibilidad_;
};

}  // namespace telvane
