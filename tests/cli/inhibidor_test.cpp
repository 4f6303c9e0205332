// The machine stays awake while the console tool downloads, and may sleep again however that ends.
#include <csignal>

#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class InhibidorCli : public CliPrueba {
   protected:
    // Notes whether the machine was kept awake when the byte went out.
    void vigilar(std::size_t indice, Efecto efecto) {
        puertos.manipular(kPuerto, [this, indice, efecto](const ByteSaliente& saliente) {
            const bool suyo = saliente.intercambio == Intercambio::descarga && saliente.indice == indice;
            if (suyo) durante = inhibidor.vigentes;
            return suyo ? efecto : Efecto::pasar(saliente.byte);
        });
    }
    std::string base() const { return (carpeta / "a.rgt").string(); }

    int durante = -1;
};

TEST_F(InhibidorCli, HeldDuringADownloadOnly) {
    vigilar(5000, Efecto::pasar(0));
    EXPECT_EQ(correr({"buscar"}).codigo, CodigoSalida::hecho);
    EXPECT_EQ(inhibidor.pedidas, 0);
    EXPECT_EQ(correr({"descargar", "--base", base()}).codigo, CodigoSalida::hecho);
    EXPECT_EQ(durante, 1);
    EXPECT_EQ(inhibidor.pedidas, 1);
    EXPECT_EQ(inhibidor.vigentes, 0);
}

TEST_F(InhibidorCli, LetGoAfterAFailure) {
    vigilar(5000, Efecto{.bytes = {}, .callar = true});
    EXPECT_EQ(correr({"descargar", "--base", base(), "--reintentos", "0"}).codigo, CodigoSalida::fallo);
    EXPECT_EQ(durante, 1);
    EXPECT_EQ(inhibidor.vigentes, 0);
}

TEST_F(InhibidorCli, LetGoWhenInterrupted) {
    vigilar(5000, Efecto{.bytes = {}, .callar = true});
    senalTras = {20s, SIGTERM};
    EXPECT_EQ(correr({"descargar", "--base", base(), "--espera", "3600"}).codigo, CodigoSalida::interrumpido);
    EXPECT_EQ(durante, 1);
    EXPECT_EQ(inhibidor.vigentes, 0);
}

TEST_F(InhibidorCli, ASystemThatRefusesDoesNotStopTheDownload) {
    inhibidor.rehusar = true;
    EXPECT_EQ(correr({"descargar", "--base", base()}).codigo, CodigoSalida::hecho);
    EXPECT_EQ(inhibidor.pedidas, 1);
}

}  // namespace
}  // namespace telvane
