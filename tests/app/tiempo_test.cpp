// What the clock on the wall may do while an operation waits: midnight, an hour's jump either way (somebody
// sets it, or daylight saving), and a machine that slept.
#include <functional>
#include <optional>

#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

class Tiempo;

// A wait for the logger's first word.
struct Espera {
    const char* nombre;
    std::function<void(Tiempo&)> empezar;
    std::chrono::seconds antes;   // spent before the wait, without yielding
    std::chrono::seconds limite;  // of the wait
};

void PrintTo(const Espera& espera, std::ostream* flujo) {
    *flujo << espera.nombre;
}

class Tiempo : public Banco {
   protected:
    Tiempo() : Banco(kBaudios) {}

   public:
    // The logger's first word of the next exchange comes this late; never: not at all. The answer to a
    // wake-up is not its first word.
    void callar(std::optional<nanoseconds> cuanto, bool alMarco) {
        puertos.manipular(1, [=](const ByteSaliente& saliente) {
            auto efecto = Efecto::pasar(saliente.byte);
            const bool primera =
                saliente.intercambio == Intercambio::eleccion ||
                (alMarco && saliente.intercambio == Intercambio::reposo && saliente.cuadro == 0);
            if (!primera || saliente.indice != 0) return efecto;
            efecto.callar = !cuanto;
            efecto.demora = cuanto.value_or(0ns);
            return efecto;
        });
    }
    void empezar(const Espera& espera) {
        espera.empezar(*this);
        // Into the wait, which is well under way then.
        pasar(espera.antes + 300ms);
        ASSERT_EQ(inicio.operacionesEnCurso(), 1u);
    }
    bool termina(nanoseconds limite) {
        return bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }, limite);
    }
    // The window goes on answering meanwhile.
    void sigueViva() {
        pulsar(forma.Command5);
        EXPECT_TRUE(inicio.coef.mostrado());
        pulsar(inicio.coef.Command1);
        EXPECT_FALSE(inicio.coef.mostrado());
    }
    void despuesTodoVaBien() {
        puertos.manipular(1, {});
        if (forma.Command4.caption() == "PARAR") pulsar(forma.Command4);
        if (inicio.progress.mostrado()) pulsar(inicio.progress.Command45);
        pasar(5s);
        forma.Command1.enabled = true;
        pulsar(forma.Command1);
        ASSERT_TRUE(termina(1min));
        pasar(1s);
        EXPECT_EQ(forma.Label4.caption(), "Nro  : " + puertos.maquina(1).serie());
        EXPECT_FALSE(puertos.abierto(1));
        EXPECT_TRUE(fallos.empty());
    }

    using Banco::dialogos;
    using Banco::forma;
    using Banco::inicio;
};

class CadaEspera : public Tiempo, public testing::WithParamInterface<Espera> {
   protected:
    void SetUp() override {
        conectar();
        dialogos.responderSiempre(Boton::aceptar);
        dialogos.responderArchivoSiempre(std::nullopt);
        dialogos.olvidar();
    }
    bool alMarco() const { return GetParam().antes == 0s; }
};

TEST_P(CadaEspera, AnHourBackAndTheAnswerEndsItAsEver) {
    callar(700ms, alMarco());
    empezar(GetParam());
    bucle.reloj().saltar(-1h);
    EXPECT_TRUE(termina(1s));
    EXPECT_TRUE(dialogos.mensajes().empty());
    despuesTodoVaBien();
}

TEST_P(CadaEspera, AnHourBackWithoutAnAnswerLastsUntilTheClockIsThereAgainAndTheWindowLives) {
    callar(std::nullopt, alMarco());
    empezar(GetParam());
    bucle.reloj().saltar(-1h);
    EXPECT_FALSE(termina(59min));
    sigueViva();
    EXPECT_TRUE(termina(2min));
    EXPECT_EQ(dialogos.mensajes().size(), 1u) << "no logger";
    despuesTodoVaBien();
}

TEST_P(CadaEspera, AnHourForwardEndsItAtOnce) {
    callar(std::nullopt, alMarco());
    empezar(GetParam());
    bucle.reloj().saltar(1h);
    EXPECT_TRUE(termina(1s)) << "the clock is looked at every second";
    EXPECT_EQ(dialogos.mensajes().size(), 1u) << "no logger";
    despuesTodoVaBien();
}

TEST_P(CadaEspera, OverMidnightTheAnswerEndsItAndWithoutOneTheWindowLives) {
    for (const bool responde : {true, false}) {
        SCOPED_TRACE(responde);
        callar(responde ? std::optional<nanoseconds>(700ms) : std::nullopt, alMarco());
        bucle.reloj().ponerHora({2026, 11, 20, 24h - GetParam().antes - 100ms});
        GetParam().empezar(*this);
        pasar(GetParam().antes + 300ms);
        EXPECT_EQ(termina(10min), responde);
        EXPECT_TRUE(dialogos.mensajes().empty());
        sigueViva();
        if (!responde) {
            // Whatever the logger says at last ends it.
            puertos.inyectar(1, std::vector<std::uint8_t>(kBytesMarco, kApertura));
            EXPECT_TRUE(termina(1s));
        }
        dialogos.olvidar();
        despuesTodoVaBien();
        dialogos.olvidar();
    }
}

TEST_P(CadaEspera, AMachineThatSleptFindsWhatCameBefore) {
    callar(700ms, alMarco());
    empezar(GetParam());
    bucle.reloj().dejarPasar(5min);
    EXPECT_TRUE(termina(1s));
    EXPECT_TRUE(dialogos.mensajes().empty()) << "the answer was there in time";
    despuesTodoVaBien();
}

class CadaDespertar : public CadaEspera {};

TEST_P(CadaDespertar, TheWaitThatDoesNotYieldTakesItsTwoSecondsWhateverTheClockDoes) {
    for (const auto salto : {nanoseconds(1h), nanoseconds(-1h), nanoseconds(13h + 59min + 59s)}) {
        callar(500ms, alMarco());
        puertos.olvidarTrafico(1);
        GetParam().empezar(*this);
        pasar(1s);
        bucle.reloj().saltar(salto);
        pasar(900ms);
        EXPECT_EQ(puertos.escritos(1).size(), 1u) << "the wake-up and nothing more";
        pasar(200ms);
        EXPECT_EQ(puertos.escritos(1).size(), 2u);
        EXPECT_TRUE(termina(3s));
        dialogos.olvidar();
        despuesTodoVaBien();
        dialogos.olvidar();
    }
}

const std::vector<Espera> kConDespertar = {
    {"lectura", [](Tiempo& t) { t.inicio.pulsar(t.forma.configuracion); }, 2s, 1s},
    {"escritura",
     [](Tiempo& t) {
         t.inicio.teclear(t.forma.Text10, '1');  // clears the answer of an earlier exchange
         t.inicio.pulsar(t.forma.Command2);
         t.inicio.pulsar(t.forma.Command3);
         t.dialogos.olvidar();
     },
     2s, 1s},
    {"serie", [](Tiempo& t) { t.inicio.teclear(t.forma.Text10, 13); }, 2s, 1s},
    {"descarga", [](Tiempo& t) { t.inicio.pulsar(t.forma.Command13); }, 2s, 1s}};
const std::vector<Espera> kSinDespertar = {
    {"enLinea", [](Tiempo& t) { t.inicio.pulsar(t.forma.Command4); }, 0s, 2s}};

std::string nombreDe(const testing::TestParamInfo<Espera>& caso) {
    return caso.param.nombre;
}

INSTANTIATE_TEST_SUITE_P(Esperas, CadaEspera, testing::ValuesIn(kConDespertar), nombreDe);
INSTANTIATE_TEST_SUITE_P(SinDespertar, CadaEspera, testing::ValuesIn(kSinDespertar), nombreDe);
INSTANTIATE_TEST_SUITE_P(Esperas, CadaDespertar, testing::ValuesIn(kConDespertar), nombreDe);

// The search: both waits of one candidate.
class TiempoDeBusqueda : public Tiempo, public testing::WithParamInterface<std::chrono::milliseconds> {
   protected:
    void SetUp() override {
        puertos.conectar(1);
        puertos.manipular(1, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
        dialogos.responder(Boton::aceptar, kPregunta);
        inicio.cargar();
        pasar(GetParam());
    }
};

TEST_P(TiempoDeBusqueda, AJumpEndsTheCandidateOrMakesItLastAndTheWindowLives) {
    bucle.reloj().saltar(1h);
    dialogos.dejarAbierto();
    EXPECT_TRUE(bucle.correrHasta([&] { return dialogos.abiertos() == 1; }, 37s)) << "the search goes on";
    dialogos.contestar(Boton::aceptar);
    EXPECT_TRUE(forma.Command1.enabled());
}

TEST_P(TiempoDeBusqueda, AnHourBackWithoutAnAnswerIsStillTheSameCandidate) {
    bucle.reloj().saltar(-1h);
    pasar(10min);
    EXPECT_EQ(puertos.aperturas(1), 1u);
    EXPECT_TRUE(puertos.abierto(1));
    sigueViva();
    pulsar(forma.salir);
    EXPECT_EQ(terminaciones, std::vector<int>{0});
}

TEST_P(TiempoDeBusqueda, AnHourBackAndAnAnswerFindsTheLogger) {
    bucle.reloj().saltar(-1h);
    puertos.manipular(1, {});
    dialogos.responder(Boton::aceptar, " Conexion en COM 1  @ 19200 bps ");
    puertos.inyectar(1, std::vector<std::uint8_t>(kBytesMarco, 0x41));
    EXPECT_TRUE(termina(10s));
    pasar(1s);
    EXPECT_EQ(forma.Label4.caption(), "Nro  : 02080050");
}

INSTANTIATE_TEST_SUITE_P(PrimeraYSegunda, TiempoDeBusqueda, testing::Values(500ms, 1500ms));

class TiempoDeDescarga : public Tiempo {};

TEST_F(TiempoDeDescarga, RunsThroughMidnightAndThroughJumpsAndLosesNothing) {
    conectar();
    dialogos.responderSiempre(Boton::aceptar);
    dialogos.responderArchivoSiempre(std::nullopt);
    bucle.reloj().ponerHora({2026, 11, 20, 23h + 59min + 30s});
    pulsar(forma.Command13);
    for (const auto salto : {nanoseconds(0), nanoseconds(1h), nanoseconds(-1h), nanoseconds(-2h)}) {
        pasar(30s);
        bucle.reloj().saltar(salto);
        pasar(2s);
        EXPECT_EQ(inicio.progress.Label1.caption().size(), 8u) << inicio.progress.Label1.caption();
    }
    ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.archivos().size() == 1; }, 10min));
    EXPECT_TRUE(fallos.empty());
}

}  // namespace
}  // namespace telvane
