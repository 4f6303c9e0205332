// Every way in which the window may end, inside the waits and during a save: at once, with nothing left
// running.
#include <csignal>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/marco.h"
#include "tests/e2e/ventana_e2e.h"

namespace telvane {
namespace {

constexpr const char* kTitulo = "Telvane de VELTRA v1.10";

// How far the program has come when it ends.
enum class Donde { pregunta, busqueda, lectura, descarga };

const char* nombreDe(Donde donde) {
    constexpr const char* kNombres[] = {"pregunta", "busqueda", "lectura", "descarga"};
    return kNombres[static_cast<int>(donde)];
}

// A logger at the pace of the line, silent where the program is to wait.
class Finales : public VentanaE2e, public ::testing::WithParamInterface<Donde> {
   protected:
    void SetUp() override {
        std::vector<std::string> orden = {TELVANE_SIM, "--enlace", enlace().string(), "--baudios", "19200"};
        if (GetParam() == Donde::busqueda) orden.insert(orden.end(), {"--fallo", "sonda:siempre:silencio"});
        if (GetParam() == Donde::lectura) orden.insert(orden.end(), {"--fallo", "lectura:byte=50:silencio"});
        lento_ = std::make_unique<Proceso>(orden);
        ASSERT_TRUE(lento_->linea());
        arrancar("1=" + enlace().string());
        llegar();
    }
    void llegar() {
        ASSERT_TRUE(responder("Su Configuracion Regional no es la apropiada", "Aceptar"));
        if (GetParam() == Donde::pregunta) {
            ASSERT_TRUE(hay("Quiere conectarse con Registrador Veltra"));
            return;
        }
        ASSERT_TRUE(responder("Quiere conectarse con Registrador Veltra", "Aceptar"));
        ASSERT_TRUE(hay("Quiere conectarse con Registrador Veltra", false));
        if (GetParam() == Donde::busqueda) return;
        ASSERT_TRUE(responder(" Conexion en COM 1  @ 19200 bps ", "Aceptar"));
        if (GetParam() == Donde::lectura) {
            ASSERT_TRUE(habilitado("Cambiar configuracion"));
            return;
        }
        ASSERT_TRUE(pulsar("Importar datos desde equipo y exportar a excell (csv)"));
        ASSERT_TRUE(hay("00:00:0"));
    }
    ::testing::AssertionResult hay(const std::string& texto, bool siONo = true) {
        if (esperarA([&] {
                const auto rotulo = raiz().buscar([&](const Accesible& uno) {
                    return uno.papel() == kRotulo && empiezaPor(uno.nombre(), texto);
                });
                return rotulo.has_value() == siONo;
            })) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << (siONo ? "no label " : "still there: ") << texto;
    }
    // The port is free for the next program at once.
    void nadaQueda() {
        Proceso consola({TELVANE_CLI, "--com", "1=" + enlace().string(), "puertos"});
        EXPECT_EQ(consola.terminar(), 0);
        EXPECT_THAT(consola.salida(), ::testing::Not(::testing::HasSubstr("en uso")));
    }
    std::filesystem::path enlace() const { return escritorio_.carpeta("casa") / "COM1"; }
    std::string pantalla() const {
        for (const auto& una : escritorio_.entorno()) {
            if (una.starts_with("DISPLAY=")) return una.substr(8);
        }
        return "";
    }

    std::unique_ptr<Proceso> lento_;
};

TEST_P(Finales, PorUnaSenal) {
    programa_->senal(GetParam() == Donde::busqueda  ? SIGINT
                     : GetParam() == Donde::lectura ? SIGHUP
                                                    : SIGTERM);
    EXPECT_EQ(programa_->terminar(), 0);
    nadaQueda();
}

TEST_P(Finales, PorLaPantallaQueSePierde) {
    escritorio_.apagarPantalla();
    const auto estado = programa_->terminar();
    ASSERT_TRUE(estado.has_value()) << "still running without a display";
    EXPECT_EQ(estado, 1);
    nadaQueda();
}

INSTANTIATE_TEST_SUITE_P(Donde, Finales,
                         ::testing::Values(Donde::pregunta, Donde::busqueda, Donde::lectura, Donde::descarga),
                         [](const auto& caso) { return std::string(nombreDe(caso.param)); });

// Where no box stands before the window.
class FinalesSinCaja : public Finales {};

TEST_P(FinalesSinCaja, PorElMarco) {
    ASSERT_TRUE(esperarA([&] { return cerrarPorElMarco(pantalla(), kTitulo); }));
    EXPECT_EQ(programa_->terminar(), 0);
    nadaQueda();
}

TEST_P(FinalesSinCaja, PorSalir) {
    ASSERT_TRUE(pulsar("Salir"));
    EXPECT_EQ(programa_->terminar(), 0);
    nadaQueda();
}

INSTANTIATE_TEST_SUITE_P(Donde, FinalesSinCaja, ::testing::Values(Donde::busqueda, Donde::lectura),
                         [](const auto& caso) { return std::string(nombreDe(caso.param)); });

// The window holds the port in the middle of an exchange; it dies, and nothing of it is in the way.
class DosProgramas : public Finales {
   protected:
    std::optional<int> buscar() {
        Proceso consola({TELVANE_CLI, "--com", "1=" + enlace().string(), "buscar"});
        const auto estado = consola.terminar();
        queja_ = consola.errores();
        return estado;
    }
    std::string queja_;
};

TEST_P(DosProgramas, TheSecondIsRefusedUntilTheFirstIsGoneHoweverItWent) {
    EXPECT_EQ(buscar(), 3);
    EXPECT_THAT(queja_, ::testing::HasSubstr("está en uso por otro programa"));
    programa_->senal(SIGKILL);
    EXPECT_EQ(programa_->terminar(), 128 + SIGKILL);
    EXPECT_EQ(buscar(), 0) << queja_;
}

INSTANTIATE_TEST_SUITE_P(Donde, DosProgramas, ::testing::Values(Donde::lectura, Donde::descarga),
                         [](const auto& caso) { return std::string(nombreDe(caso.param)); });

}  // namespace
}  // namespace telvane
