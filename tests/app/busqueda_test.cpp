// The search for the logger's port, and what its channel prints.
#include "link/sucesos.h"
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class Busqueda : public Banco {
   protected:
    // Time from the answered question to the next message.
    std::chrono::nanoseconds buscar(Boton final = Boton::aceptar) {
        dialogos.responder(Boton::aceptar, kPregunta);
        dialogos.dejarAbierto();
        const auto desde = bucle.reloj().monotono();
        inicio.cargar();
        EXPECT_TRUE(bucle.correrHasta([&] { return dialogos.abiertos() == 1; }, 2min));
        const auto tardo = bucle.reloj().monotono() - desde;
        dialogos.contestar(final);
        return tardo;
    }
};

TEST_F(Busqueda, ALoggerOnTheFirstPortEndsTheSearchThere) {
    puertos.conectar(1);
    EXPECT_LT(buscar(), 1s);
    EXPECT_EQ(dialogos.textos().back(), " Conexion en COM 1  @ 19200 bps ");
    EXPECT_EQ(forma.Command1.caption(), " Conexion en COM 1  @ 19200 bps ");
    EXPECT_FALSE(forma.Command1.enabled());
    EXPECT_EQ(lineas().front(), " 31");
}

TEST_F(Busqueda, EveryPortWithoutAnAnswerCostsThreeSeconds) {
    puertos.agregar(2);
    puertos.conectar(12);
    const auto tardo = buscar();
    EXPECT_GE(tardo, 33s);
    EXPECT_LT(tardo, 33s + 500ms);
    EXPECT_EQ(forma.Command1.caption(), " Conexion en COM 12  @ 19200 bps ");
}

TEST_F(Busqueda, ALoggerBeyondTheTwelfthPortIsNeverFound) {
    puertos.conectar(13);
    const auto tardo = buscar();
    EXPECT_GE(tardo, 36s);
    EXPECT_LT(tardo, 37s);
    EXPECT_EQ(dialogos.textos().back(),
              "   No Hay Conexion Con Equipo Registrador\r\n"
              "(si el problema persiste consultar Servicio Tecnico)\r\n"
              "        servicio.tecnico@veltra.example     ");
    EXPECT_EQ(dialogos.mensajes().back().icono, Icono::critico);
    EXPECT_TRUE(forma.Command1.enabled());
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
    EXPECT_FALSE(inicio.presenta.cargado()) << "a failed search closes the splash";
    EXPECT_TRUE(lineas().empty());
}

TEST_F(Busqueda, TwentyBytesAreNotTheLogger) {
    puertos.conectar(1);
    puertos.manipular(
        1, [](const ByteSaliente& byte) { return byte.indice < 20 ? Efecto::pasar(byte.byte) : Efecto{}; });
    EXPECT_GE(buscar(), 36s);
}

TEST_F(Busqueda, TwentyOneBytesAreTheLoggerWhateverTheySay) {
    puertos.conectar(1);
    puertos.manipular(
        1, [](const ByteSaliente& byte) { return byte.indice < 21 ? Efecto::pasar(0xFF) : Efecto{}; });
    EXPECT_LT(buscar(), 1s);
    EXPECT_EQ(lineas().front(), " 21");
}

// A first byte that comes soon, and the rest of the answer this long after the probe.
class BusquedaLenta : public Busqueda {
   protected:
    std::chrono::nanoseconds buscar(std::chrono::milliseconds primero, std::chrono::milliseconds resto) {
        puertos.conectar(1);
        puertos.manipular(1, [=](const ByteSaliente& byte) {
            auto efecto = Efecto::pasar(byte.byte);
            if (byte.indice == 0) efecto.demora = primero;
            if (byte.indice == 1) efecto.demora = resto - primero;
            return efecto;
        });
        return Busqueda::buscar();
    }
};

TEST_F(BusquedaLenta, AnAnswerWithinTheThreeSecondsCounts) {
    const auto tardo = buscar(100ms, 2900ms);
    EXPECT_GE(tardo, 2900ms);
    EXPECT_LT(tardo, 3s);
    EXPECT_EQ(forma.Command1.caption(), " Conexion en COM 1  @ 19200 bps ");
}

TEST_F(BusquedaLenta, AnAnswerAfterTheThreeSecondsDoesNotCount) {
    EXPECT_GE(buscar(100ms, 3100ms), 36s) << "the other eleven are tried as well";
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
    EXPECT_TRUE(lineas().empty());
}

TEST_F(BusquedaLenta, AnAnswerAtOnceOfALoggerThatTakes2900MillisecondsCounts) {
    const auto tardo = buscar(2900ms, 2900ms);
    EXPECT_GE(tardo, 2900ms);
    EXPECT_LT(tardo, 3s);
    EXPECT_EQ(forma.Command1.caption(), " Conexion en COM 1  @ 19200 bps ");
}

TEST_F(BusquedaLenta, AnAnswerAtOnceOfALoggerThatTakes3100MillisecondsDoesNot) {
    EXPECT_GE(buscar(3100ms, 3100ms), 36s);
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
}

TEST_F(Busqueda, ARefusedPortIsAsSilentAsOneWithoutALogger) {
    for (const auto motivo : {MotivoPuerto::ocupado, MotivoPuerto::sinPermiso, MotivoPuerto::noEsTerminal}) {
        puertos.agregar(static_cast<int>(motivo) + 1);
        puertos.rehusar(static_cast<int>(motivo) + 1, motivo);
    }
    puertos.conectar(9);
    const auto tardo = buscar();
    EXPECT_GE(tardo, 24s);
    EXPECT_LT(tardo, 25s);
}

TEST_F(Busqueda, FoundReadsTheConfigurationByItself) {
    conectar(3);
    EXPECT_EQ(forma.Label4.caption(), "Nro  : 02080050");
    EXPECT_FALSE(inicio.presenta.cargado());
    EXPECT_FALSE(puertos.abierto(3));
}

TEST_F(Busqueda, CancelAfterAClickLeavesTheButtonDisabled) {
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    dialogos.responder(Boton::cancelar, kPregunta);
    pulsar(forma.Command1);
    EXPECT_FALSE(forma.Command1.enabled());
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
}

TEST_F(Busqueda, ALaterSearchStartsAgainFromTheFirstPortWithTheFullWaits) {
    conectar(2);
    puertos.rehusar(2, MotivoPuerto::noExiste);  // the logger is gone
    puertos.conectar(3);
    forma.Command1.enabled = true;
    dialogos.responder(Boton::aceptar, kPregunta);
    dialogos.dejarAbierto(" Conexion en COM 3  @ 19200 bps ");
    const auto desde = bucle.reloj().monotono();
    pulsar(forma.Command1);
    EXPECT_FALSE(forma.Command1.enabled());
    ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.abiertos() == 1; }));
    EXPECT_GE(bucle.reloj().monotono() - desde, 6s);
}

TEST_F(Busqueda, JustBeforeMidnightTheWaitEndsOnlyWithTheAnswer) {
    puertos.agregar(1);
    bucle.reloj().ponerHora({2026, 11, 20, 23h + 59min + 59s});
    dialogos.responder(Boton::aceptar, kPregunta);
    inicio.cargar();
    bucle.avanzar(1h);
    EXPECT_EQ(puertos.aperturas(1), 1u);
    EXPECT_TRUE(puertos.abierto(1)) << "the first candidate is still being waited for";
}

TEST_F(Busqueda, EveryChannelEventPrintsItsLine) {
    puertos.conectar(1);
    puertos.manipular(1, [](const ByteSaliente&) { return Efecto{}; });
    dialogos.responder(Boton::aceptar, kPregunta);
    inicio.cargar();
    std::vector<std::string> esperadas;
    for (const int codigo :
         {3, 4, 5, 6, 7, 1001, 1002, 1003, 1004, 1006, 1007, 1008, 1009, 1010, 1011, 1005, 0}) {
        puertos.suceder(1, codigo);
        bucle.avanzar(1ms);
        esperadas.emplace_back(textoDeSuceso(codigo));
    }
    puertos.suceder(1, 1);
    bucle.avanzar(1ms);
    EXPECT_EQ(lineas(), esperadas);
}

TEST_F(Busqueda, AReceiveEventWithTwentyBytesEmptiesTheBufferAndLeavesRespuestaFalse) {
    puertos.conectar(1);
    Canales canales(puertos);
    EstadoEnlace estado;
    Tareas tareas([](std::exception_ptr) {});
    Esperas esperas(bucle, bucle.reloj(), tareas);
    Turno turno{bucle, bucle.reloj()};
    Enlace enlace{forma, canales, estado, bucle.reloj(), esperas, dialogos, turno};
    canales.MSComm1.CommPort(1);
    canales.MSComm1.Settings("19200,n,8,1");
    canales.MSComm1.RThreshold(20);
    canales.MSComm1.alComunicar = [&] { alComunicarSonda(enlace); };
    canales.MSComm1.PortOpen(true);
    puertos.inyectar(1, std::vector<std::uint8_t>(20, 0x41));
    bucle.avanzar(100ms);
    EXPECT_EQ(lineas(), (std::vector<std::string>{"PEPE 20", "otro valor eventos"}));
    EXPECT_FALSE(estado.respuesta);
    EXPECT_EQ(canales.MSComm1.InBufferCount(), 0u);
}

}  // namespace
}  // namespace telvane
