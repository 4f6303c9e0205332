// A counter that is out of step with the logger: each exchange says so and leaves its channel.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "link/busqueda_puerto.h"
#include "link/enlace.h"
#include "loggerconfig/edicion.h"
#include "loggerconfig/escritura.h"
#include "loggerconfig/lectura.h"
#include "loggerconfig/serie.h"
#include "simulator/puertos_simulados.h"
#include "tests/apoyo/bucle_prueba.h"
#include "tests/apoyo/dialogos_prueba.h"
#include "ui/forma_presenta.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

// The exchanges without their beginning, on a line where whatever is wanted arrives.
class FueraDePaso : public testing::Test {
   protected:
    FueraDePaso() {
        puertos.conectar(1);
        estado.numPuerto = 1;
    }
    // A byte comes while the counter stands there.
    void llega(MSComm& canal, std::function<void()> manejador, std::int32_t contador) {
        prepararCanal(canal, 1);
        canal.CommPort(1);
        canal.PortOpen(true);
        canal.alComunicar = std::move(manejador);
        estado.contador = contador;
        puertos.inyectar(1, std::vector<std::uint8_t>{0x55, 0x55});
        bucle.avanzar(1s);
        EXPECT_FALSE(canal.PortOpen());
        EXPECT_TRUE(puertos.escritos(1).empty()) << "nothing is answered";
        EXPECT_TRUE(estado.respuesta);
    }
    std::vector<std::string> lineas() const { return {forma.lineas().begin(), forma.lineas().end()}; }

    BuclePrueba bucle;
    DialogosPrueba dialogos;
    PuertosSimulados puertos{bucle, bucle.reloj()};
    FormaInicio forma;
    FormaPresenta presenta;
    Canales canales{puertos};
    EstadoEnlace estado;
    EstadoConfig config;
    Tareas tareas{[](const std::exception_ptr&) { ADD_FAILURE(); }};
    Esperas esperas{bucle, bucle.reloj(), tareas};
    Turno turno{bucle, bucle.reloj()};
    Enlace enlace{forma, canales, estado, bucle.reloj(), esperas, dialogos, turno};
    Edicion edicion{enlace, config};
};

TEST_F(FueraDePaso, ABytePastTheRecordIsPrintedAndClosesTheChannel) {
    LecturaConfig lectura(enlace, config, edicion, presenta);
    llega(
        canales.MSComm2, [&] { lectura.alComunicar(); }, 113);
    EXPECT_EQ(lineas(), std::vector<std::string>{"error en contador"});
}

TEST_F(FueraDePaso, ABytePastTheMessageIsPrintedAndGivesTheButtonsBack) {
    EscrituraConfig escritura(enlace, config, edicion);
    forma.Timer1.enabled = false;
    forma.Command13.enabled = false;
    llega(
        canales.MSComm5, [&] { escritura.alComunicar(); }, 108);
    EXPECT_EQ(lineas(), std::vector<std::string>{"error datos"});
    EXPECT_TRUE(forma.Timer1.enabled());
    EXPECT_TRUE(forma.Command13.enabled());
    EXPECT_FALSE(forma.Command3.enabled());
}

TEST_F(FueraDePaso, ASeventhByteOfTheSerialNumberIsPrintedAndTheCounterStays) {
    EscrituraSerie serie(enlace, config);
    llega(
        canales.MSComm3, [&] { serie.alComunicar(); }, 6);
    EXPECT_EQ(lineas(), std::vector<std::string>{"otro valor serie"});
    EXPECT_GE(estado.contador, 6);
}

}  // namespace
}  // namespace telvane
