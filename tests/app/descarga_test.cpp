// The memory download.
#include <fstream>

#include "tests/apoyo/leer_todo.h"
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class DescargaTest : public Banco {
   protected:
    explicit DescargaTest(int baudios = 0) : Banco(baudios) {}

    static constexpr const char* kExito = "La descarga de datos se realizó con exito";

    // The download of a good logger, cancelled at the file dialog.
    void descargar() {
        dialogos.responder(Boton::aceptar, kExito);
        dialogos.responderArchivo(std::nullopt);
        pulsar(forma.Command13);
        ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.archivos().size() == 1; }, 10min));
    }
    // Changes byte n of the download's answer: 0 and 1 are the replies, 2 on are the blocks.
    void alterar(std::size_t indice, Efecto efecto) {
        puertos.manipular(1, [=](const ByteSaliente& saliente) {
            const bool primero = saliente.intercambio == Intercambio::eleccion && indice == 0;
            const bool otro = saliente.intercambio == Intercambio::descarga && saliente.indice == indice;
            return primero || otro ? efecto : Efecto::pasar(saliente.byte);
        });
    }
    std::vector<std::filesystem::path> basesGuardadas() const {
        std::vector<std::filesystem::path> rutas;
        if (!std::filesystem::exists(carpeta.ruta() / "base")) return rutas;
        for (const auto& entrada : std::filesystem::directory_iterator(carpeta.ruta() / "base")) {
            rutas.push_back(entrada.path());
        }
        return rutas;
    }
};

TEST_F(DescargaTest, SendsTheTabledBytes) {
    conectar();
    descargar();
    const auto& escritos = puertos.escritos(1);
    ASSERT_EQ(escritos.size(), 1u + 3 + 4096);
    EXPECT_EQ(escritos[0], 0xBE);
    EXPECT_EQ(escritos[1], 0x55);
    EXPECT_EQ(escritos[2], 0xAA);
    for (std::size_t i = 3; i < escritos.size(); ++i) ASSERT_EQ(escritos[i], 0x55) << i;
    EXPECT_FALSE(puertos.abierto(1));
}

TEST_F(DescargaTest, KeepsTheRawImageAsABaseFileBeforeTheExport) {
    conectar();
    descargar();
    const auto bases = basesGuardadas();
    ASSERT_EQ(bases.size(), 1u);
    EXPECT_EQ(bases[0].filename(), "02080050_20261120_100004.rgt");
    const auto& imagen = puertos.maquina(1).imagen();
    EXPECT_EQ(leerTodo(bases[0]), std::string(imagen.begin(), imagen.end()));
    const auto impresas = lineas();
    EXPECT_NE(std::find(impresas.begin(), impresas.end(), "archivo base: " + bases[0].string()),
              impresas.end());
}

TEST_F(DescargaTest, ABaseFileThatCannotBeKeptIsToldAndTheExportGoesOn) {
    std::ofstream(carpeta.ruta() / "base") << "no es una carpeta";
    conectar();
    descargar();
    const auto impresas = lineas();
    EXPECT_TRUE(std::any_of(impresas.begin(), impresas.end(),
                            [](const auto& linea) { return linea.starts_with("archivo base: no se pudo"); }));
}

TEST_F(DescargaTest, LocksTheOperationsWhileItRuns) {
    conectar();
    alterar(100, Efecto{.bytes = {}, .callar = true});
    pulsar(forma.Command13);
    bucle.avanzar(3s);
    for (auto* boton : {&forma.Command43, &forma.Command33, &forma.Command13, &forma.Command2,
                        &forma.Command3, &forma.configuracion, &forma.Command4, &forma.Command1}) {
        EXPECT_FALSE(boton->enabled()) << boton->nombre();
    }
    EXPECT_TRUE(inicio.progress.mostrado());
    EXPECT_TRUE(inicio.progress.ProgressBar1.visible());
    EXPECT_EQ(inicio.progress.ProgressBar1.maximum(), 4098);
    EXPECT_EQ(inicio.progress.ProgressBar1.value(), 1);
    EXPECT_TRUE(forma.Timer4.enabled());
}

TEST_F(DescargaTest, ShowsTheElapsedTimeOverMidnight) {
    conectar();
    bucle.reloj().ponerHora({2026, 11, 20, 23h + 59min + 50s});
    alterar(100, Efecto{.bytes = {}, .callar = true});
    pulsar(forma.Command13);
    bucle.avanzar(2s + 65s);
    EXPECT_TRUE(inicio.progress.Label1.caption() == "00:01:06" ||
                inicio.progress.Label1.caption() == "00:01:07")
        << inicio.progress.Label1.caption();
}

TEST_F(DescargaTest, NoReplyGivesTheMessageAndTheButtonsBack) {
    conectar();
    alterar(0, Efecto{});
    dialogos.responder(Boton::aceptar, "No hay equipo conectado (Intente Reconectar) ");
    pulsar(forma.Command13);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    EXPECT_FALSE(inicio.progress.mostrado());
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_TRUE(forma.Command1.enabled());
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
    for (auto* boton :
         {&forma.Command43, &forma.Command13, &forma.Command2, &forma.configuracion, &forma.Command4}) {
        EXPECT_TRUE(boton->enabled()) << boton->nombre();
    }
    EXPECT_FALSE(forma.Command33.enabled());
    EXPECT_FALSE(forma.Command3.enabled());
}

TEST_F(DescargaTest, AWrongFirstOrSecondReplyFails) {
    for (const std::size_t indice : {0u, 1u}) {
        SCOPED_TRACE(indice);
        if (indice == 0) conectar();
        alterar(indice, Efecto::pasar(0x54));
        dialogos.responder(Boton::aceptar, "Error en comunicacion ");
        pulsar(forma.Command13);
        bucle.avanzar(4s);
        EXPECT_EQ(inicio.operacionesEnCurso(), 0u);
        EXPECT_FALSE(puertos.abierto(1));
        EXPECT_FALSE(forma.Timer4.enabled());
        EXPECT_TRUE(inicio.progress.mostrado()) << "Cancel is the way back";
        pulsar(inicio.progress.Command45);
        EXPECT_FALSE(inicio.progress.mostrado());
        EXPECT_TRUE(forma.Command13.enabled());
    }
    puertos.manipular(1, {});
    descargar();
}

TEST_F(DescargaTest, ABlockWithBytesLeftOverIsStoredAndEndsTheExchange) {
    conectar();
    alterar(2 + 64 * 3 - 1, Efecto{.bytes = {1, 2, 3}});
    dialogos.responder(Boton::aceptar, "Error en comunicacion AQQUI");
    pulsar(forma.Command13);
    bucle.avanzar(4s);
    EXPECT_EQ(lineas().back(), "InBufferCount=2");
    EXPECT_EQ(inicio.progress.ProgressBar1.value(), 2) << "the bar counts acknowledged blocks";
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_FALSE(forma.Timer4.enabled());
    pulsar(inicio.progress.Command45);
    puertos.manipular(1, {});
    descargar();
}

TEST_F(DescargaTest, CancelInMidTransferClosesThePortAndKeepsTheStateOfThreeButtons) {
    conectar();
    alterar(100, Efecto{.bytes = {}, .callar = true});
    pulsar(forma.Command13);
    bucle.avanzar(10s);
    pulsar(inicio.progress.Command45);
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_FALSE(forma.Timer4.enabled());
    EXPECT_FALSE(inicio.progress.mostrado());
    EXPECT_EQ(inicio.progress.Label1.caption(), "00:00:00") << "the next load starts anew";
    EXPECT_FALSE(forma.Command1.enabled());
    EXPECT_FALSE(forma.Command33.enabled());
    EXPECT_FALSE(forma.Command3.enabled());
    puertos.manipular(1, {});
    bucle.avanzar(2s);
    descargar();
}

TEST_F(DescargaTest, CancelWithNoPortOpenOnlyClosesTheDialogAndEnablesTheButtons) {
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    forma.Command13.enabled = false;
    inicio.progress.mostrar();
    pulsar(inicio.progress.Command45);
    EXPECT_FALSE(inicio.progress.mostrado());
    EXPECT_TRUE(forma.Command13.enabled());
}

TEST_F(DescargaTest, ALoggerThatHangsUpIsLeftWithCancelAndFoundAgain) {
    conectar();
    auto colgar = Efecto::pasar(0);
    colgar.colgar = true;
    alterar(500, colgar);
    pulsar(forma.Command13);
    bucle.avanzar(1min);
    EXPECT_TRUE(inicio.progress.mostrado());
    pulsar(inicio.progress.Command45);
    puertos.reponer(1);
    puertos.manipular(1, {});
    descargar();
    EXPECT_TRUE(fallos.empty());
}

class DescargaALaVelocidadDeLaLinea : public DescargaTest {
   protected:
    DescargaALaVelocidadDeLaLinea() : DescargaTest(19200) {}
};

TEST_F(DescargaALaVelocidadDeLaLinea, TakesTheTimeOfTheWireWithinHalfAPercent) {
    conectar();
    dialogos.dejarAbierto(kExito);
    pulsar(forma.Command13);
    ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.abiertos() == 0 && forma.Timer4.enabled(); }));
    const auto desde = bucle.reloj().monotono();
    ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.abiertos() == 1; }, 10min));
    const double tardo = std::chrono::duration<double>(bucle.reloj().monotono() - desde).count();
    EXPECT_NEAR(tardo, 138.67, 138.67 * 0.005);
    EXPECT_EQ(inicio.progress.Label1.caption(), "00:02:20");
    dialogos.responderArchivo(std::nullopt);
    dialogos.contestar(Boton::aceptar);
}

}  // namespace
}  // namespace telvane
