// Writing the serial number.
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class Serie : public Banco {
   protected:
    void enviar(const std::string& digitos) {
        escribir(forma.Text10, digitos);
        inicio.teclear(forma.Text10, 13);
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
        bucle.avanzar(200ms);
    }
    // "12345678" did not go out whole.
    void esperarNoEnviado() {
        EXPECT_EQ(forma.Label1.caption(), "comienzo transmision");
        EXPECT_EQ(lineas().back(), "error al escribir en el puerto");
        EXPECT_EQ(forma.Text10.text(), "12345678") << "to be sent again";
        EXPECT_TRUE(forma.Text10.enabled());
        EXPECT_FALSE(puertos.abierto(1));
    }
};

TEST_F(Serie, WritesTheNumberAndShowsIt) {
    conectar();
    enviar("20800512");
    EXPECT_EQ(forma.Label1.caption(), "Nº Enviado  20800512");
    EXPECT_EQ(forma.Text10.text(), "");
    EXPECT_TRUE(forma.Text10.enabled());
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_EQ(puertos.maquina(1).serie(), "20800512");
    EXPECT_EQ(puertos.escritos(1),
              (std::vector<std::uint8_t>{0xBE, 0x55, 0x64, 0x20, 0x80, 0x05, 0x12, 0x12}));
}

TEST_F(Serie, AShortEntryIsFilledWithZerosOnTheRight) {
    conectar();
    enviar("123");
    EXPECT_EQ(puertos.maquina(1).serie(), "12300000");
}

TEST_F(Serie, EnterOnAnEmptyFieldSendsZeros) {
    conectar();
    enviar("");
    EXPECT_EQ(puertos.maquina(1).serie(), "00000000");
}

TEST_F(Serie, OnlyDigitsAreTakenEightAtMostAndBackspaceWorks) {
    conectar();
    escribir(forma.Text10, "a1-2 3.x456789");
    EXPECT_EQ(forma.Text10.text(), "12345678");
    EXPECT_EQ(inicio.teclear(forma.Text10, 8), 8);
    EXPECT_EQ(inicio.teclear(forma.Text10, 'x'), 0);
    EXPECT_EQ(forma.Text10.maxLength(), 8);
}

TEST_F(Serie, NoAnswerGivesTheFieldBack) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{}; });
    dialogos.responder(Boton::aceptar, kNoHay);
    escribir(forma.Text10, "1");
    inicio.teclear(forma.Text10, 13);
    bucle.avanzar(1s);
    EXPECT_FALSE(forma.Text10.enabled());
    EXPECT_EQ(forma.Label1.caption(), "comienzo transmision");
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    EXPECT_TRUE(forma.Text10.enabled());
    EXPECT_TRUE(forma.Command1.enabled());
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
    EXPECT_FALSE(puertos.abierto(1));
    EXPECT_EQ(puertos.maquina(1).serie(), "02080050");
}

TEST_F(Serie, ANumberWhoseLastByteDidNotGoOutIsNotShownAsSent) {
    conectar();
    const auto antes = puertos.maquina(1).serie();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        efecto.errorEscritura = saliente.intercambio == Intercambio::serie && saliente.indice == 5;
        return efecto;
    });
    enviar("12345678");
    esperarNoEnviado();
    EXPECT_EQ(puertos.maquina(1).serie(), antes);
}

// A line that loses a byte and sends some of its own carries the exchange to its end all the same.
TEST_F(Serie, ANumberOfWhichAnyByteDidNotGoOutIsNotShownAsSent) {
    conectar();
    for (std::size_t perdido = 0; perdido < 5; ++perdido) {
        SCOPED_TRACE(perdido);
        puertos.manipular(1, [perdido](const ByteSaliente& saliente) {
            auto efecto = Efecto::pasar(saliente.byte);
            const auto lugar = saliente.intercambio == Intercambio::eleccion ? 0 : saliente.indice;
            const bool suyo =
                saliente.intercambio == Intercambio::eleccion || saliente.intercambio == Intercambio::serie;
            if (suyo && lugar == perdido) {
                efecto.errorEscritura = true;
                efecto.bytes.append(5 - perdido, 0x55);
            }
            return efecto;
        });
        enviar("12345678");
        esperarNoEnviado();
        inicio.cambiar(forma.Text10, "");
        bucle.avanzar(10s);  // the logger gives the broken exchange up
    }
}

TEST_F(Serie, AStalledWriteLeavesTheFieldClosedUntilTheNextRead) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        if (saliente.intercambio == Intercambio::serie && saliente.indice >= 2) return Efecto{};
        return Efecto::pasar(saliente.byte);
    });
    enviar("1");
    bucle.avanzar(1min);
    EXPECT_FALSE(forma.Text10.enabled());
    puertos.manipular(1, {});
    pulsar(forma.configuracion);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    EXPECT_TRUE(forma.Text10.enabled());
}

TEST_F(Serie, TwoBytesAtOnceAreTwoEvents) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio == Intercambio::eleccion) efecto.bytes.insert(efecto.bytes.end(), 6, 0x55);
        return efecto;
    });
    enviar("12345678");
    EXPECT_EQ(forma.Label1.caption(), "Nº Enviado  12345678")
        << "the sixth byte ends it, the seventh is dropped";
}

}  // namespace
}  // namespace telvane
