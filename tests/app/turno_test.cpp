// The exchange that runs goes first: what the operator does meanwhile waits for its end, or is not begun.
#include <algorithm>

#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

constexpr const char* kEnCurso = "hay un intercambio en curso: espere a que termine";

class TurnoDeLinea : public Banco {
   protected:
    TurnoDeLinea() : Banco(kBaudios) {}

    void terminar() {
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0 && !puertos.abierto(1); },
                                      10min));
        // The last byte is still on its way to the logger.
        if (inicio.operacionesEnCurso() == 0) pasar(10ms);
    }
    void intro() { inicio.teclear(forma.Text10, 13); }
    // Lets the logger's answer of an exchange begin this late.
    void tardar(std::chrono::milliseconds cuanto) {
        puertos.manipular(1, [cuanto](const ByteSaliente& saliente) {
            auto efecto = Efecto::pasar(saliente.byte);
            if (saliente.intercambio == Intercambio::eleccion && saliente.indice == 0) efecto.demora = cuanto;
            return efecto;
        });
    }
    void detenerTras(Intercambio cual, std::size_t bytes) {
        puertos.manipular(1, [=](const ByteSaliente& saliente) {
            if (saliente.intercambio == cual && saliente.indice >= bytes) return Efecto{};
            return Efecto::pasar(saliente.byte);
        });
    }
    std::size_t veces(const std::string& linea) const {
        const auto todas = lineas();
        return static_cast<std::size_t>(std::count(todas.begin(), todas.end(), linea));
    }
    // As many wake-ups and openings went out as this many exchanges make.
    std::size_t intercambios() const {
        const auto& escritos = puertos.escritos(1);
        return static_cast<std::size_t>(std::count(escritos.begin(), escritos.end(), 0xBE));
    }
};

TEST_F(TurnoDeLinea, ClicksWithinThePauseWaitForTheEndOfTheExchange) {
    conectar();
    pulsar(forma.configuracion);
    pasar(1s);
    pulsar(forma.configuracion);
    pulsar(forma.Command5);
    ASSERT_TRUE(bucle.correrHasta([&] { return forma.Text2.text().size() == 30; }));
    EXPECT_EQ(intercambios(), 1u);
    EXPECT_FALSE(inicio.coef.mostrado()) << "the block is still coming";
    ASSERT_TRUE(bucle.correrHasta([&] { return bucle.enPausa(); }));
    EXPECT_EQ(forma.Text2.text(), "") << "the second read, after the first";
    EXPECT_NE(forma.Label4.caption(), "");
    EXPECT_FALSE(inicio.coef.mostrado()) << "in its order, after the second read";
    terminar();
    EXPECT_TRUE(inicio.coef.mostrado());
    EXPECT_EQ(intercambios(), 2u);
    EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
    EXPECT_EQ(dialogos.mensajes().size(), 2u) << "those of the start";
}

TEST_F(TurnoDeLinea, WhatWasHeldBackDoesNotWaitForTheEndOfLiveDataThatBeganBeforeIt) {
    conectar();
    pulsar(forma.configuracion);
    pasar(1s);
    pulsar(forma.Command4);
    pulsar(forma.Command5);
    EXPECT_TRUE(bucle.correrHasta([&] { return inicio.coef.mostrado(); }));
    EXPECT_EQ(forma.Command4.caption(), "PARAR");
    EXPECT_NE(forma.Label4.caption(), "") << "the read came first";
}

TEST_F(TurnoDeLinea, AWriteClickedAgainAsksOnceAndIsWhole) {
    conectar();
    pulsar(forma.Command2);
    inicio.cambiar(forma.Text2, "Ana");
    dialogos.olvidar();
    dialogos.dejarAbierto();
    pulsar(forma.Command3);
    pulsar(forma.Command3);
    EXPECT_EQ(dialogos.abiertos(), 1u);
    EXPECT_EQ(veces(kEnCurso), 1u);
    dialogos.contestar(Boton::aceptar);
    pasar(1s);
    pulsar(forma.Command3);
    pulsar(forma.configuracion);
    pulsar(forma.Option6);
    terminar();
    EXPECT_EQ(dialogos.mensajes().size(), 1u) << "the button is disabled by then";
    EXPECT_EQ(puertos.maquina(1).texto(CampoTexto::usuario), std::string(27, ' ') + "Ana");
    EXPECT_EQ(forma.Text2.text(), std::string(27, ' ') + "Ana");
}

TEST_F(TurnoDeLinea, TwoEntersWriteTheNumberAndADownloadWaits) {
    conectar();
    escribir(forma.Text10, "12345678");
    dialogos.responderSiempre(Boton::aceptar);
    dialogos.responderArchivoSiempre(std::nullopt);
    intro();
    intro();
    pasar(1s);
    pulsar(forma.Command13);
    ASSERT_TRUE(bucle.correrHasta([&] { return forma.Text10.enabled(); }));
    EXPECT_EQ(forma.Label1.caption(), "Nº Enviado  12345678");
    EXPECT_FALSE(inicio.progress.mostrado());
    terminar();
    EXPECT_EQ(dialogos.archivos().size(), 1u);
    EXPECT_EQ(puertos.maquina(1).serie(), "12345678");
    EXPECT_EQ(forma.Label1.caption(), "Nº Enviado  12345678");
}

TEST_F(TurnoDeLinea, TwoEntersWithinAPauseWriteTheNumberOnce) {
    conectar();
    pulsar(forma.configuracion);
    pasar(1s);
    escribir(forma.Text10, "12345678");
    intro();
    intro();
    ASSERT_TRUE(bucle.correrHasta([&] { return forma.Label1.caption() == "Nº Enviado  12345678"; }));
    pasar(10s);
    EXPECT_EQ(puertos.maquina(1).serie(), "12345678");
    EXPECT_EQ(intercambios(), 2u);
}

TEST_F(TurnoDeLinea, AnEnterThatWasHeldBackSendsTheNumberThatStoodThereOrNone) {
    conectar();
    pulsar(forma.configuracion);
    pasar(1s);
    escribir(forma.Text10, "12");
    intro();
    escribir(forma.Text10, "34");
    terminar();
    EXPECT_EQ(puertos.maquina(1).serie(), "02080050");
    EXPECT_EQ(forma.Text10.text(), "1234");
    intro();
    terminar();
    EXPECT_EQ(puertos.maquina(1).serie(), "12340000");
}

TEST_F(TurnoDeLinea, AButtonPressedTwiceWithinAPauseIsPressedOnce) {
    conectar();
    dialogos.responderSiempre(Boton::aceptar);
    dialogos.responderArchivoSiempre(std::nullopt);
    intro();
    pasar(1s);
    pulsar(forma.Command13);
    pulsar(forma.Command13);
    ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.archivos().size() == 1; }, 10min));
    pasar(10min);
    EXPECT_EQ(dialogos.archivos().size(), 1u) << "one download";
    EXPECT_EQ(intercambios(), 2u);
}

TEST_F(TurnoDeLinea, AKeyWithinThePauseOfAReadDoesNotClearItsAnswer) {
    conectar();
    tardar(500ms);
    pulsar(forma.configuracion);
    pasar(1s);
    inicio.teclear(forma.Text10, '1');
    terminar();
    EXPECT_EQ(dialogos.mensajes().size(), 2u);
}

class TurnoDe : public TurnoDeLinea {
   protected:
    // Everything that would take the port, as far as its control can be used.
    void todoLoDemas() {
        for (auto* boton :
             {&forma.Command1, &forma.configuracion, &forma.Command4, &forma.Command3, &forma.Command13}) {
            if (boton != &forma.Command4 || forma.Command4.caption() != "PARAR") pulsar(*boton);
        }
        intro();
    }
};

TEST_F(TurnoDe, NothingTakesThePortOfADownload) {
    conectar();
    escribir(forma.Text10, "123");
    dialogos.responderSiempre(Boton::aceptar);
    dialogos.responderArchivoSiempre(std::nullopt);
    pulsar(forma.Command13);
    pasar(20s);
    const auto bloques = inicio.progress.ProgressBar1.value();
    ASSERT_GT(bloques, 100);
    todoLoDemas();
    EXPECT_EQ(veces(kEnCurso), 1u) << "Enter; the buttons are disabled";
    pasar(10s);
    EXPECT_GT(inicio.progress.ProgressBar1.value(), bloques);
    terminar();
    EXPECT_EQ(dialogos.archivos().size(), 1u);
    EXPECT_EQ(puertos.maquina(1).serie(), "02080050");
    EXPECT_EQ(forma.Text10.text(), "123");
}

TEST_F(TurnoDe, NothingBeginsWhileTheProgressDialogStands) {
    conectar();
    detenerTras(Intercambio::descarga, 70);
    pulsar(forma.Command13);
    pasar(1min);
    ASSERT_TRUE(inicio.progress.mostrado());
    const auto antes = puertos.escritos(1).size();
    todoLoDemas();
    EXPECT_EQ(veces(kEnCurso), 1u);
    pasar(5s);
    EXPECT_EQ(puertos.escritos(1).size(), antes);
    pulsar(inicio.progress.Command45);
    puertos.manipular(1, {});
    pasar(5s);
    intro();
    terminar();
    EXPECT_EQ(puertos.maquina(1).serie(), "00000000");
}

TEST_F(TurnoDe, NothingTakesThePortOfLiveData) {
    conectar();
    pulsar(forma.Command4);
    pasar(5s);
    todoLoDemas();
    EXPECT_EQ(veces(kEnCurso), 1u);
    const auto antes = puertos.escritos(1).size();
    pasar(5s);
    EXPECT_GT(puertos.escritos(1).size(), antes + 10);
    EXPECT_EQ(puertos.maquina(1).serie(), "02080050");
    pulsar(forma.Command4);
    intro();
    terminar();
    EXPECT_EQ(puertos.maquina(1).serie(), "00000000") << "stopped is no longer in progress";
}

TEST_F(TurnoDe, NothingTakesThePortOfAReadOrOfItsWait) {
    conectar();
    tardar(800ms);
    pulsar(forma.configuracion);
    for (const auto cuando : {2500ms, 350ms}) {
        pasar(cuando);
        todoLoDemas();
    }
    EXPECT_EQ(veces(kEnCurso), 2u * 4) << "read, live data, download, Enter; the write is not enabled";
    terminar();
    EXPECT_EQ(intercambios(), 1u);
    EXPECT_EQ(dialogos.mensajes().size(), 2u) << "no false message";
    EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
}

TEST_F(TurnoDe, NothingTakesThePortOfTheSearchAndTheFirstQuestionIsAskedOnce) {
    puertos.conectar(3);
    dialogos.dejarAbierto(kPregunta);
    inicio.cargar();
    pulsar(forma.Command1);
    EXPECT_EQ(dialogos.mensajes().size(), 1u);
    dialogos.contestar(Boton::aceptar);
    pasar(1s);
    todoLoDemas();
    dialogos.responder(Boton::aceptar, " Conexion en COM 3  @ 19200 bps ");
    ASSERT_TRUE(bucle.correrHasta([&] { return forma.Timer1.enabled(); }, 1min));
    EXPECT_EQ(dialogos.mensajes().size(), 2u);
    EXPECT_EQ(puertos.maquina(3).serie(), "02080050");
}

// Where one wait of it ends and the next begins the clock's text is some milliseconds off.
TEST_F(TurnoDe, NothingTakesThePortOfTheSearchAtTheEndOfAnyOfItsWaits) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{}; });
    dialogos.responderSiempre(Boton::aceptar);
    forma.Command1.enabled = true;
    pulsar(forma.Command1);
    for (int i = 0; i < 12'500; ++i) {
        pulsar(forma.Command13);
        ASSERT_TRUE(forma.Command13.enabled()) << "begun " << i << " ms after the search";
        pasar(1ms);
    }
    EXPECT_EQ(intercambios(), 1u);
}

TEST_F(TurnoDe, AConfigurationThatWasReadUnderTheQuestionIsNotSent) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio == Intercambio::lectura && saliente.indice == 20) efecto.demora = 5s;
        return efecto;
    });
    pulsar(forma.configuracion);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    pasar(2s);
    pulsar(forma.Command2);
    ASSERT_FALSE(forma.Text2.locked()) << "it stands still";
    dialogos.dejarAbierto();
    pulsar(forma.Command3);
    pasar(5s);
    ASSERT_TRUE(forma.Text2.locked()) << "it has ended";
    const auto antes = puertos.maquina(1).imagen();
    dialogos.contestar(Boton::aceptar);
    pasar(5s);
    const auto& despues = puertos.maquina(1).imagen();
    EXPECT_TRUE(std::equal(antes.begin() + 448, antes.end(), despues.begin() + 448)) << "nothing was erased";
    EXPECT_EQ(veces("se acaba de leer otra vez la configuración: no se envió nada, vuelva a cambiarla"), 1u);
    EXPECT_EQ(inicio.operacionesEnCurso(), 0u);
    EXPECT_TRUE(forma.Command2.enabled());
}

TEST_F(TurnoDe, AnExchangeThatStandsStillMayBeTakenOver) {
    for (const auto cual : {Intercambio::lectura, Intercambio::escritura}) {
        if (forma.Label4.caption().empty()) conectar();
        detenerTras(cual, 20);
        if (cual == Intercambio::escritura) {
            pulsar(forma.Command2);
            dialogos.responder(Boton::aceptar);
            pulsar(forma.Command3);
        } else {
            pulsar(forma.configuracion);
        }
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
        pasar(2s);
        ASSERT_TRUE(puertos.abierto(1));
        puertos.manipular(1, {});
        const auto antes = veces(kEnCurso);
        pulsar(forma.configuracion);
        terminar();
        EXPECT_EQ(veces(kEnCurso), antes);
        EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
    }
}

// A click that was held back is not kept for ever by an exchange that stands still.
TEST_F(TurnoDe, AHeldClickTakesOverAnExchangeThatStandsStill) {
    conectar();
    detenerTras(Intercambio::lectura, 20);
    pulsar(forma.configuracion);
    pasar(1s);
    pulsar(forma.Command5);
    pasar(1200ms);
    EXPECT_FALSE(inicio.coef.mostrado());
    pasar(1s);
    EXPECT_TRUE(inicio.coef.mostrado());
}

TEST_F(TurnoDe, WhatWasHeldBackWaitsForTheMessageOfItsExchangeToo) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
    pulsar(forma.configuracion);
    pasar(1s);
    pulsar(forma.Command5);
    dialogos.dejarAbierto(kNoHay);
    ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.abiertos() == 1; }));
    pasar(1min);
    EXPECT_FALSE(inicio.coef.mostrado()) << "the operator is reading";
    dialogos.contestar(Boton::aceptar);
    pasar(1s);
    EXPECT_TRUE(inicio.coef.mostrado());
}

TEST_F(TurnoDe, SalirDoesNotWait) {
    conectar();
    pulsar(forma.configuracion);
    pasar(1s);
    pulsar(forma.salir);
    EXPECT_EQ(terminaciones, std::vector<int>{0});
}

TEST_F(TurnoDe, CancelWithinTheFirstSecondOfASilentDownloadEndsItWithoutABox) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
    dialogos.olvidar();
    pulsar(forma.Command13);
    pasar(2500ms);
    ASSERT_TRUE(inicio.progress.mostrado());
    pulsar(inicio.progress.Command45);
    EXPECT_FALSE(inicio.progress.mostrado());
    EXPECT_EQ(inicio.operacionesEnCurso(), 0u);
    EXPECT_FALSE(puertos.abierto(1));
    pasar(5s);
    EXPECT_TRUE(dialogos.mensajes().empty());
    EXPECT_TRUE(forma.Command13.enabled());
}

TEST_F(TurnoDe, PararWithinTheFirstSecondsOfSilentLiveDataEndsItWithoutABox) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
    dialogos.olvidar();
    pulsar(forma.Command4);
    pasar(500ms);
    pulsar(forma.Command4);
    EXPECT_EQ(inicio.operacionesEnCurso(), 0u);
    pasar(5s);
    EXPECT_TRUE(dialogos.mensajes().empty());
    puertos.manipular(1, {});
    dialogos.responder(Boton::aceptar, kNoHay);
    pulsar(forma.configuracion);
    EXPECT_EQ(veces(kEnCurso), 0u) << "stopped, it holds nothing back";
}

TEST_F(TurnoDe, AStaleReadingIsNotShownWhenLiveDataStartsAgain) {
    conectar();
    pulsar(forma.Command4);
    pasar(1s);
    ASSERT_NE(forma.Text60.text(), "");
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
    pasar(1s);
    pulsar(forma.Command4);
    ASSERT_NE(forma.Text60.text(), "") << "hidden, as it was";
    dialogos.dejarAbierto(kNoHay);
    pulsar(forma.Command4);
    EXPECT_EQ(forma.Text60.text(), "");
    EXPECT_TRUE(forma.Text60.visible());
    ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.abiertos() == 1; }));
    EXPECT_EQ(forma.Text60.text(), "");
}

TEST_F(TurnoDe, APortThatGoesAwayPrintsItsLineOnce) {
    conectar();
    pulsar(forma.Command4);
    pasar(1s);
    puertos.colgar(1);
    pasar(1min);
    EXPECT_EQ(veces("el dispositivo desapareció"), 1u);
    EXPECT_EQ(forma.Command4.caption(), "PARAR");
    pulsar(forma.Command4);
    puertos.reponer(1);
    pulsar(forma.configuracion);
    terminar();
    EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
    EXPECT_EQ(veces("el dispositivo desapareció"), 1u);
}

TEST_F(TurnoDe, AfterAPortWentAwayInLiveModeTheNextOperationOffersTheSearch) {
    conectar();
    pulsar(forma.Command4);
    pasar(1s);
    puertos.colgar(1);
    pasar(1min);
    EXPECT_EQ(forma.Command1.caption(), " Conexion en COM 1  @ 19200 bps ")
        << "as with a logger that falls silent";
    EXPECT_FALSE(forma.Command1.enabled());
    pulsar(forma.Command4);
    EXPECT_TRUE(forma.Command13.enabled());
    EXPECT_FALSE(forma.Command33.enabled()) << "as after every live run";
    dialogos.responder(Boton::aceptar, kNoHay);
    pulsar(forma.Command4);
    terminar();
    EXPECT_EQ(forma.Command1.caption(), " Conectar con Registrador ? ");
    EXPECT_TRUE(forma.Command1.enabled());
}

TEST_F(TurnoDe, ASearchGivesTheFieldOfAStalledNumberBackWhateverItsEnd) {
    for (const bool declinada : {true, false}) {
        if (forma.Label4.caption().empty()) conectar();
        detenerTras(Intercambio::serie, 2);
        escribir(forma.Text10, "1");
        intro();
        pasar(10s);
        ASSERT_FALSE(forma.Text10.enabled());
        puertos.manipular(1, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
        dialogos.responder(declinada ? Boton::cancelar : Boton::aceptar, kPregunta);
        if (!declinada) dialogos.responder(Boton::aceptar);
        forma.Command1.enabled = true;
        pulsar(forma.Command1);
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
        EXPECT_TRUE(forma.Text10.enabled()) << declinada;
    }
}

TEST_F(TurnoDe, TheNumberThatIsShownAsSentIsTheOneThatWasSent) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio == Intercambio::serie && saliente.indice == 1) efecto.demora = 1400ms;
        return efecto;
    });
    escribir(forma.Text10, "11111111");
    intro();
    pasar(3250ms);
    dialogos.responder(Boton::cancelar, kPregunta);
    forma.Command1.enabled = true;
    pulsar(forma.Command1);
    ASSERT_TRUE(forma.Text10.enabled());
    inicio.cambiar(forma.Text10, "22222222");
    terminar();
    EXPECT_EQ(puertos.maquina(1).serie(), "11111111");
    EXPECT_EQ(forma.Label1.caption(), "Nº Enviado  11111111");
}

TEST_F(TurnoDe, ANumberThatNobodyAnsweredDoesNotNameTheNextBaseFile) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
    dialogos.responderSiempre(Boton::aceptar);
    dialogos.responderArchivoSiempre(std::nullopt);
    escribir(forma.Text10, "99999999");
    intro();
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    puertos.manipular(1, {});
    pasar(5s);
    pulsar(forma.Command13);
    ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.archivos().size() == 1; }, 10min));
    const auto base =
        std::filesystem::directory_iterator(carpeta.ruta() / "base")->path().filename().string();
    EXPECT_EQ(base.substr(0, 9), "02080050_");
}

// ---- An exchange waits for as long as the logger takes; the operator is told after five seconds.

constexpr const char* kCalla = "el registrador dejó de contestar: ";

class Callado : public TurnoDeLinea {
   protected:
    std::vector<std::string> dichas() const {
        auto todas = lineas();
        std::erase_if(todas, [](const std::string& linea) { return !linea.starts_with(kCalla); });
        return todas;
    }
};

TEST_F(Callado, AReadingThatStandsStillIsToldOnce) {
    conectar();
    detenerTras(Intercambio::lectura, 50);
    pulsar(forma.configuracion);
    pasar(7s);
    EXPECT_TRUE(dichas().empty());
    pasar(60s);
    EXPECT_EQ(dichas(), (std::vector<std::string>{std::string(kCalla) +
                                                  "su configuración no llegó entera, impórtela otra vez"}));
}

TEST_F(Callado, AWriteThatStandsStillDoesNotLookLikeOneThatArrived) {
    conectar();
    pulsar(forma.Command2);
    inicio.cambiar(forma.Text2, "Ana");
    detenerTras(Intercambio::escritura, 50);
    dialogos.responderSiempre(Boton::aceptar);
    pulsar(forma.Command3);
    pasar(20s);
    EXPECT_EQ(dichas(), (std::vector<std::string>{std::string(kCalla) +
                                                  "la configuración no le llegó entera, impórtela y mire qué "
                                                  "guarda"}));
}

TEST_F(Callado, ASerialNumberThatStandsStillIsTold) {
    conectar();
    detenerTras(Intercambio::serie, 3);
    forma.Text10.text = "12345678";
    intro();
    pasar(20s);
    EXPECT_EQ(dichas(), (std::vector<std::string>{std::string(kCalla) +
                                                  "el número no le llegó entero, escríbalo otra vez"}));
}

TEST_F(Callado, AReadingThatIsNoLongerLiveIsNotTakenForOne) {
    conectar();
    pulsar(forma.Command4);
    pasar(30s);
    EXPECT_TRUE(dichas().empty());
    detenerTras(Intercambio::reposo, 0);
    pasar(10s);
    EXPECT_EQ(dichas(), (std::vector<std::string>{std::string(kCalla) +
                                                  "la lectura que se ve es la última que llegó"}));
    pulsar(forma.Command4);
    pasar(20s);
    EXPECT_EQ(dichas().size(), 1U);
}

TEST_F(Callado, AReadingThatWasStoppedInItsSilenceIsNoConcern) {
    conectar();
    pulsar(forma.Command4);
    pasar(30s);
    detenerTras(Intercambio::reposo, 0);
    pasar(3s);
    pulsar(forma.Command4);
    pasar(20s);
    EXPECT_EQ(dichas(), std::vector<std::string>{});
}

TEST_F(Callado, TheIntervalOfTheLoggerBeforeIsSentToNobody) {
    conectar();
    detenerTras(Intercambio::lectura, 60);
    pulsar(forma.configuracion);
    pasar(20s);
    puertos.manipular(1, {});
    puertos.reponer(1);
    pulsar(forma.Command2);
    dialogos.olvidar();
    dialogos.responderSiempre(Boton::aceptar);
    puertos.olvidarTrafico(1);
    pulsar(forma.Command3);
    pasar(20s);
    EXPECT_EQ(dialogos.mensajes().size(), 2U);
    EXPECT_EQ(dialogos.textos().back(), "Falta el intervalo de muestreo: elija uno");
    EXPECT_TRUE(puertos.escritos(1).empty());
}

}  // namespace
}  // namespace telvane
