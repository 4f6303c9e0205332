// The window on a desktop of the test's own, driven by accessible names alone.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/apoyo/proceso.h"
#include "tests/e2e/accesible.h"
#include "tests/e2e/escritorio.h"
#include "tests/e2e/registrador_simulado.h"

namespace telvane {

inline constexpr const char* kBoton = "push button";
inline constexpr const char* kRotulo = "label";
inline constexpr const char* kCampo = "text";

inline constexpr const char* kDescargar = "Importar datos desde equipo y exportar a excell (csv)";
inline constexpr const char* kExportar = "Exportar Eventos (.txt) y Base de Datos (.xls)";
inline constexpr const char* kImportarConfiguracion = "Importar Configuracion";

class VentanaE2e : public ::testing::Test {
   protected:
    explicit VentanaE2e(const std::vector<std::string>& registrador = RegistradorSimulado::kSinPausa)
        : registrador_(registrador) {}
    void SetUp() override { arrancar(); }

    // The desktop's accessibility is up before the program is: it announces itself once.
    // por: a command that runs the program.
    void arrancar(const std::vector<std::string>& por = {}) {
        accesibilidad_ = std::make_unique<Accesibilidad>(escritorio_.bus());
        auto orden = por;
        orden.insert(orden.end(), {TELVANE, "--com", registrador_.com()});
        programa_ = std::make_unique<Proceso>(orden, escritorio_.entorno());
    }

    void TearDown() override {
        if (!HasFailure() || !programa_) return;
        const auto lineas = raiz().buscar(kCampo, "Diagnostico");
        const auto estado = programa_->terminar(Proceso::Plazo(0));
        ADD_FAILURE() << "telvane " << (estado ? "ended with " + std::to_string(*estado) : "runs") << ": "
                      << programa_->errores() << "\n"
                      << (lineas ? lineas->texto() : "") << raiz().arbol();
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

    // A label that begins so is on the screen, or has gone from it.
    ::testing::AssertionResult hay(const std::string& texto, bool siONo = true) {
        const auto visto = esperarA([&] {
            const auto rotulo = raiz().buscar([&](const Accesible& uno) {
                return uno.papel() == kRotulo && empiezaPor(uno.nombre(), texto);
            });
            return rotulo.has_value() == siONo;
        });
        if (visto) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << (siONo ? "no label " : "still there: ") << texto;
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

    std::optional<Accesible> dialogoDeArchivo(const std::string& verbo) const {
        return raiz().buscar(
            [&](const Accesible& uno) { return empiezaPor(uno.nombre(), verbo + " archivo"); });
    }

    // The file dialog with this verb is on the screen: gives it this file.
    ::testing::AssertionResult elegir(const std::string& verbo, const std::filesystem::path& ruta) {
        const auto guardado = esperarA([&] {
            const auto dialogo = dialogoDeArchivo(verbo);
            const auto campo = dialogo ? dialogo->buscar(kCampo, "Nombre:") : std::nullopt;
            const auto boton = dialogo ? dialogo->buscar(kBoton, verbo) : std::nullopt;
            return campo && boton && campo->escribir(ruta.string()) && boton->pulsar();
        });
        if (!guardado) return ::testing::AssertionFailure() << "no file dialog";
        return ::testing::AssertionSuccess();
    }

    void conectar() {
        ASSERT_TRUE(responder("Su Configuracion Regional no es la apropiada", "Aceptar"));
        ASSERT_TRUE(responder("Quiere conectarse con Registrador Veltra", "Aceptar"));
        ASSERT_TRUE(responder(" Conexion en COM 1  @ 19200 bps ", "Aceptar"));
        // The date is the last thing that a configuration read fills in.
        ASSERT_TRUE(contiene("Fecha", "/20"));
        ASSERT_TRUE(habilitado("Cambiar configuracion"));
        ASSERT_TRUE(habilitado(kImportarConfiguracion));
    }

    ::testing::AssertionResult contiene(const std::string& campo, const std::string& texto) {
        std::string visto;
        const auto esta = esperarA([&] {
            const auto cual = raiz().buscar(kCampo, campo);
            if (cual) visto = cual->texto();
            return visto.find(texto) != std::string::npos;
        });
        if (!esta) return ::testing::AssertionFailure() << campo << " holds \"" << visto << '"';
        return ::testing::AssertionSuccess();
    }

    ::testing::AssertionResult seLee(const std::string& rotulo) {
        if (esperarA([&] { return raiz().buscar(kRotulo, rotulo).has_value(); }))
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "no label \"" << rotulo << '"';
    }

    // No window manager gives the window the keyboard here.
    ::testing::AssertionResult ventanaConTeclado() {
        return xdotool({"search", "--name", "Telvane de VELTRA", "windowfocus", "--sync", "%1"});
    }

    ::testing::AssertionResult tecla(const std::string& nombre) {
        return xdotool({"key", "--clearmodifiers", nombre});
    }

    // Types into a field with the keyboard, in the place of what it holds.
    ::testing::AssertionResult teclear(const std::string& campo, const std::string& texto,
                                       const std::vector<std::string>& despues = {}) {
        if (auto lista = ventanaConTeclado(); !lista) return lista;
        std::optional<Accesible> cual;
        const auto hallado = esperarA([&] {
            cual = raiz().buscar(kCampo, campo);
            return cual && cual->habilitado();
        });
        const auto enfocado = hallado && cual->enfocar() && esperarA([&] { return cual->enfocado(); });
        if (!enfocado) return ::testing::AssertionFailure() << "no field " << campo;
        if (auto todo = tecla("ctrl+a"); !todo) return todo;
        if (auto letras = xdotool({"type", "--delay", "5", texto}); !letras) return letras;
        for (const auto& nombre : despues) {
            if (auto una = tecla(nombre); !una) return una;
        }
        return ::testing::AssertionSuccess();
    }

    ::testing::AssertionResult xdotool(std::vector<std::string> orden) {
        orden.insert(orden.begin(), PROGRAMA_XDOTOOL);
        Proceso teclado(orden, escritorio_.entorno());
        if (teclado.terminar() == 0) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << teclado.errores();
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
