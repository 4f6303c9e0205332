// The configuration read.
#include "platform/cp1252.h"
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class Lectura : public Banco {
   protected:
    // A read of a record in which the byte at this place has this value.
    void leerCon(std::size_t indiceRegistro, std::uint8_t byte) {
        puertos.manipular(1, [=](const ByteSaliente& saliente) {
            const bool es =
                saliente.intercambio == Intercambio::lectura && saliente.indice == indiceRegistro + kAcuses;
            return Efecto::pasar(es ? byte : saliente.byte);
        });
        leer();
    }
    void leer() {
        pulsar(forma.configuracion);
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
        bucle.avanzar(200ms);
    }
};

TEST_F(Lectura, ShowsEveryField) {
    conectar();
    EXPECT_EQ(forma.Label4.caption(), "Nro  : 02080050");
    EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
    EXPECT_EQ(forma.Text2.text().size(), 30u) << "padding kept";
    EXPECT_EQ(forma.Text3.text(), puertos.maquina(1).texto(CampoTexto::ubicacion));
    EXPECT_EQ(forma.Text4.text(), puertos.maquina(1).texto(CampoTexto::latitud));
    EXPECT_EQ(forma.Text5.text(), puertos.maquina(1).texto(CampoTexto::longitud));
    EXPECT_EQ(forma.Text7.text(), puertos.maquina(1).texto(CampoTexto::altitud));
    EXPECT_TRUE(forma.Option6.visible());
    EXPECT_EQ(forma.Option6.value(), 1);
    EXPECT_FALSE(forma.Option1.visible());
    EXPECT_TRUE(forma.Timer1.enabled());
    EXPECT_TRUE(forma.Command2.enabled());
    EXPECT_FALSE(forma.Command3.enabled());
    EXPECT_FALSE(puertos.abierto(1));
}

TEST_F(Lectura, SendsTheTabledBytesAndEchoesTheRecord) {
    conectar();
    leer();
    const auto& escritos = puertos.escritos(1);
    ASSERT_EQ(escritos.size(), 1u + 1 + 2 + 111);
    EXPECT_EQ(escritos[0], 0xBE);
    EXPECT_EQ(escritos[1], 0x55);
    EXPECT_EQ(escritos[2], 0x60);
    EXPECT_EQ(escritos[3], 0x55);
    EXPECT_EQ(escritos[4], 0x02) << "the first serial byte, echoed";
    EXPECT_EQ(escritos[7], 0x50);
}

TEST_F(Lectura, WithoutALoggerItOnlySaysSo) {
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    dialogos.responder(Boton::aceptar, kNoHay);
    pulsar(forma.configuracion);
    EXPECT_FALSE(inicio.presenta.cargado());
    EXPECT_TRUE(forma.Command1.enabled());
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
    EXPECT_FALSE(forma.Command2.enabled());
}

TEST_F(Lectura, ALoggerThatIsGoneGivesTheMessageAfterTheSecondAndOffersToReconnect) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{}; });
    dialogos.responder(Boton::aceptar, kNoHay);
    const auto desde = bucle.reloj().monotono();
    pulsar(forma.configuracion);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    EXPECT_NEAR(std::chrono::duration<double>(bucle.reloj().monotono() - desde).count(), 3.0, 0.05);
    EXPECT_TRUE(forma.Command1.enabled());
    EXPECT_TRUE(forma.Command2.enabled());
    EXPECT_FALSE(forma.Command3.enabled());
    EXPECT_TRUE(forma.configuracion.enabled());
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_EQ(forma.Text2.text(), "") << "cleared when the read began";
}

TEST_F(Lectura, NibblesAboveNineAreShownAsTheyFollowInTheCharacterTable) {
    conectar();
    leerCon(registro_config::kSerie, 0x9A);
    EXPECT_EQ(forma.Label4.caption(), "Nro  : 9:080050");
}

TEST_F(Lectura, TheIntervalCodeShowsItsOptionOnly) {
    conectar();
    leerCon(registro_config::kIntervalo, 0x15);
    for (auto* opcion : forma.opciones()) EXPECT_EQ(opcion->visible(), opcion == &forma.Option4);
    EXPECT_EQ(forma.Option4.value(), 1);
}

TEST_F(Lectura, AnUnknownIntervalCodeChangesNothing) {
    conectar();
    leerCon(registro_config::kIntervalo, 0x20);
    for (auto* opcion : forma.opciones()) EXPECT_EQ(opcion->visible(), opcion == &forma.Option6);
}

TEST_F(Lectura, ARefusedClockByteIsPrintedAndTheReadGoesOn) {
    conectar();
    const auto hora = forma.MaskEdBox2.text();
    leerCon(registro_config::kReloj, 0x24);
    EXPECT_EQ(lineas().back(), "hora mal");
    EXPECT_TRUE(forma.MaskEdBox2.text().starts_with("12:")) << "36 hours, as the raw value reads";
    leerCon(registro_config::kReloj + 2, 0x60);
    EXPECT_EQ(lineas().back(), "hora mal");
    leerCon(registro_config::kReloj + 3, 0x5A);
    EXPECT_EQ(lineas().back(), "fecha mal");
    const auto fecha = forma.fecha1.text();
    leerCon(registro_config::kReloj + 5, 0x65);
    EXPECT_EQ(lineas().back(), "fecha mal");
    EXPECT_EQ(forma.fecha1.text(), fecha) << "a refused year leaves the date as it was";
    EXPECT_FALSE(puertos.abierto(1));
}

TEST_F(Lectura, AnHourNibbleAboveNinePassesTheBoundAndReadsAsItsLeadingDigits) {
    conectar();
    leerCon(registro_config::kReloj, 0x1F);
    EXPECT_TRUE(forma.MaskEdBox2.text().starts_with("01:"));
    for (const auto& linea : lineas()) EXPECT_NE(linea, "hora mal");
}

TEST_F(Lectura, ADayBeyondTheMonthCarriesOn) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        const bool lectura = saliente.intercambio == Intercambio::lectura;
        std::uint8_t byte = saliente.byte;
        if (lectura && saliente.indice == kAcuses + registro_config::kReloj + 3) byte = 0x45;
        if (lectura && saliente.indice == kAcuses + registro_config::kReloj + 4) byte = 0x01;
        if (lectura && saliente.indice == kAcuses + registro_config::kReloj + 5) byte = 0x24;
        return Efecto::pasar(byte);
    });
    leer();
    EXPECT_EQ(forma.fecha1.text(), "14/02/2024");
}

TEST_F(Lectura, ALoggerThatStopsInMidBlockIsFoundAgainByTheNextRead) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        if (saliente.intercambio != Intercambio::lectura || saliente.indice < 50)
            return Efecto::pasar(saliente.byte);
        return Efecto{.bytes = {}, .callar = true};
    });
    leer();
    bucle.avanzar(1min);
    EXPECT_TRUE(puertos.abierto(1)) << "nothing times out once the first byte has come";
    puertos.manipular(1, {});
    leer();
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
}

TEST_F(Lectura, ADeviceThatHangsUpInMidBlockLeavesTheNextReadPossible) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio == Intercambio::lectura && saliente.indice == 40) efecto.colgar = true;
        return efecto;
    });
    leer();
    bucle.avanzar(10s);
    puertos.reponer(1);
    puertos.manipular(1, {});
    leer();
    EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
    EXPECT_TRUE(fallos.empty());
}

TEST_F(Lectura, LeavesEditModeWholly) {
    conectar();
    pulsar(forma.Command2);
    pulsar(forma.Option6);
    inicio.cambiar(forma.fecha1, "01/02/2003");
    dialogos.responder(Boton::aceptar, kPregunta);
    dialogos.responder(Boton::aceptar, " Conexion en COM 1  @ 19200 bps ");
    forma.Command1.enabled = true;
    pulsar(forma.Command1);
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(bucle.correrHasta([&] { return i == 0 ? bucle.enPausa() : forma.Timer1.enabled(); }));
        for (auto* campo : forma.camposEdicion()) EXPECT_TRUE(campo->locked()) << campo->nombre();
        EXPECT_FALSE(forma.Check1.visible());
        EXPECT_FALSE(forma.Label3.visible());
    }
    EXPECT_FALSE(forma.Command3.enabled());
    EXPECT_TRUE(forma.Command2.enabled());
    EXPECT_NE(forma.fecha1.text(), "01/02/2003");
    EXPECT_EQ(forma.Option6.visible(), puertos.maquina(1).intervaloCodigo() == 0x60);
}

TEST_F(Lectura, OneThatStoodStillAndGoesOnDuringEditingEndsIt) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio == Intercambio::lectura && saliente.indice == 50) efecto.demora = 3s;
        return efecto;
    });
    pulsar(forma.configuracion);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    pulsar(forma.Command2);
    EXPECT_FALSE(forma.Command3.enabled()) << "the read is under way";
    EXPECT_EQ(lineas().back(), "hay un intercambio en curso: espere a que termine");
    bucle.avanzar(1500ms);
    pulsar(forma.Command2);
    EXPECT_TRUE(forma.Command3.enabled()) << "it stands still";
    bucle.avanzar(3s);
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_FALSE(forma.Command3.enabled());
    EXPECT_TRUE(forma.Command2.enabled());
    for (auto* campo : forma.camposEdicion()) EXPECT_TRUE(campo->locked()) << campo->nombre();
    EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
}

TEST_F(Lectura, TextsOfAnyByteValueAreKept) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        const bool enUsuario = saliente.intercambio == Intercambio::lectura &&
                               saliente.indice >= kAcuses + 4 && saliente.indice < kAcuses + 4 + 30;
        return Efecto::pasar(enUsuario ? static_cast<std::uint8_t>(0x7C + saliente.indice) : saliente.byte);
    });
    leer();
    std::string bytes;
    for (int i = 0; i < 30; ++i) bytes += static_cast<char>(0x82 + i);
    EXPECT_EQ(cp1252DeUtf8(forma.Text2.text()), bytes);
    EXPECT_FALSE(puertos.abierto(1));
}

}  // namespace
}  // namespace telvane
