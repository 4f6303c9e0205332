// Exchanges that end without an answer: no port was chosen, the port cannot be had, or the logger is late.
#include <functional>

#include <gmock/gmock.h>

#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class SinRespuesta;

struct Intercambiador {
    const char* nombre;
    std::function<void(SinRespuesta&)> empezar;
    const char* mensaje;
};

void PrintTo(const Intercambiador& cual, std::ostream* flujo) {
    *flujo << cual.nombre;
}

class SinRespuesta : public Banco, public testing::WithParamInterface<Intercambiador> {
   protected:
    SinRespuesta() : Banco(kBaudios) {}
    void empezar() {
        dialogos.olvidar();
        GetParam().empezar(*this);
        ASSERT_TRUE(bucle.correrHasta([&] { return !dialogos.mensajes().empty(); }, 5s));
    }
    void nadaSeEnvio() {
        empezar();
        EXPECT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }, 10s));
        EXPECT_EQ(dialogos.textos(), std::vector<std::string>{GetParam().mensaje});
        EXPECT_TRUE(puertos.escritos(1).empty());
        EXPECT_TRUE(forma.Command1.enabled());
        EXPECT_EQ(forma.Command1.caption(), kOfrecer);
        EXPECT_TRUE(fallos.empty());
    }

   public:
    // Into edit mode and through the question of the write, which is forgotten.
    void enviar() {
        inicio.teclear(forma.Text10, '1');  // clears the answer of an earlier exchange
        enviarConRespuesta();
    }
    void enviarConRespuesta() {
        forma.Command2.enabled = true;
        pulsar(forma.Command2);
        inicio.cambiar(forma.fecha1, "31/12/2024");
        inicio.cambiar(forma.MaskEdBox2, "10:00:00");
        dialogos.responder(Boton::aceptar);
        dialogos.responderSiempre(Boton::aceptar);
        pulsar(forma.Command3);
        dialogos.olvidar();
    }
    using Banco::forma;
    using Banco::inicio;
    using Banco::pulsar;
};

const Intercambiador kDescarga = {"descarga", [](SinRespuesta& t) { t.pulsar(t.forma.Command13); },
                                  "No hay equipo conectado (Intente Reconectar) "};
const Intercambiador kSerie = {"serie", [](SinRespuesta& t) { t.inicio.teclear(t.forma.Text10, 13); },
                               kNoHay};
const Intercambiador kEscritura = {"escritura", [](SinRespuesta& t) { t.enviar(); }, kNoHay};
const Intercambiador kEscrituraTrasOtra = {"escrituraTrasOtra",
                                           [](SinRespuesta& t) { t.enviarConRespuesta(); }, kNoHay};
const Intercambiador kLectura = {"lectura", [](SinRespuesta& t) { t.pulsar(t.forma.configuracion); }, kNoHay};
const Intercambiador kEnLinea = {"enLinea", [](SinRespuesta& t) { t.pulsar(t.forma.Command4); }, kNoHay};

std::string nombreDelIntercambio(const testing::TestParamInfo<Intercambiador>& caso) {
    return caso.param.nombre;
}

using SinPuerto = SinRespuesta;

TEST_P(SinPuerto, ADeclinedQuestionLeavesNoPortAndNothingIsSent) {
    puertos.conectar(1);
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    dialogos.responderSiempre(Boton::aceptar);
    nadaSeEnvio();
    EXPECT_EQ(puertos.aperturas(1), 0u);
}

TEST_P(SinPuerto, AFailedSearchLeavesNoPortAndNothingIsSent) {
    puertos.conectar(12);
    puertos.agregar(1);
    puertos.manipular(12, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
    dialogos.responderSiempre(Boton::aceptar);
    inicio.cargar();
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }, 1min));
    puertos.manipular(12, {});
    puertos.olvidarTrafico(1);
    puertos.olvidarTrafico(12);
    nadaSeEnvio();
    EXPECT_TRUE(puertos.escritos(12).empty()) << "the last candidate is nobody's port";
}

INSTANTIATE_TEST_SUITE_P(Cada, SinPuerto,
                         testing::Values(kDescarga, kSerie, kEscritura, kEscrituraTrasOtra, kLectura,
                                         kEnLinea),
                         nombreDelIntercambio);

// The logger was on COM2; then it was gone, and another search, which tries every port, did not find it.
class OtraBusqueda : public SinRespuesta {
   protected:
    void SetUp() override {
        puertos.agregar(1);
        puertos.agregar(12);
        conectar(2);
        puertos.manipular(2, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
        dialogos.responderSiempre(Boton::aceptar);
        forma.Command1.enabled = true;
        pulsar(forma.Command1);
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }, 1min));
        ASSERT_TRUE(dialogos.textos().back().starts_with("   No Hay Conexion Con Equipo Registrador"));
        for (const int numero : {1, 2, 12}) puertos.olvidarTrafico(numero);
    }
    void intercambiar() {
        empezar();
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }, 10s));
        EXPECT_TRUE(puertos.escritos(1).empty());
        EXPECT_TRUE(puertos.escritos(12).empty()) << "the last candidate is nobody's port";
    }
    void salePorElDelRegistrador() {
        const std::string nombre = GetParam().nombre;
        const bool preguntaAntes = nombre == "lectura" || nombre == "enLinea";
        EXPECT_EQ(puertos.escritos(2), preguntaAntes ? std::vector<std::uint8_t>()
                                                     : (std::vector<std::uint8_t>{kSonda, kApertura}))
            << "a reading needs an answer that was there before";
    }
};

TEST_P(OtraBusqueda, ThatFindsNobodyLeavesThePortOnWhichTheLoggerAnswered) {
    intercambiar();
    EXPECT_EQ(dialogos.textos(), std::vector<std::string>{GetParam().mensaje});
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
    salePorElDelRegistrador();
}

TEST_P(OtraBusqueda, ThatWasDeclinedLeavesItAsWell) {
    dialogos.responder(Boton::cancelar, kPregunta);
    forma.Command1.enabled = true;
    pulsar(forma.Command1);
    intercambiar();
    EXPECT_EQ(dialogos.textos(), std::vector<std::string>{GetParam().mensaje});
    salePorElDelRegistrador();
}

INSTANTIATE_TEST_SUITE_P(Cada, OtraBusqueda,
                         testing::Values(kDescarga, kSerie, kEscritura, kLectura, kEnLinea),
                         nombreDelIntercambio);

using VuelveTrasOtraBusqueda = OtraBusqueda;

TEST_P(VuelveTrasOtraBusqueda, ALoggerThatIsThereAgainIsReachedWithoutAThirdOne) {
    puertos.manipular(2, {});
    dialogos.olvidar();
    dialogos.responderArchivoSiempre(std::nullopt);
    GetParam().empezar(*this);
    const auto acabado = [&] { return inicio.operacionesEnCurso() == 0 && !puertos.abierto(2); };
    ASSERT_TRUE(bucle.correrHasta(acabado, 5min));
    EXPECT_THAT(dialogos.textos(), testing::Not(testing::Contains(GetParam().mensaje)));
    EXPECT_GE(puertos.escritos(2).size(), 2u + 1 + 5) << "the whole exchange";
}

INSTANTIATE_TEST_SUITE_P(Cada, VuelveTrasOtraBusqueda, testing::Values(kDescarga, kSerie, kEscritura),
                         nombreDelIntercambio);

using PuertoPerdido = SinRespuesta;

TEST_P(PuertoPerdido, APortThatCannotBeHadIsALoggerThatDoesNotAnswer) {
    conectar();
    puertos.rehusar(1, MotivoPuerto::ocupado);
    dialogos.responderSiempre(Boton::aceptar);
    nadaSeEnvio();
}

INSTANTIATE_TEST_SUITE_P(Cada, PuertoPerdido,
                         testing::Values(kDescarga, kSerie, kEscritura, kEscrituraTrasOtra, kLectura,
                                         kEnLinea),
                         nombreDelIntercambio);

using Tardio = SinRespuesta;

TEST_P(Tardio, WhatComesAfterTheLimitStartsNothingBehindTheMessage) {
    conectar();
    const bool enLinea = GetParam().nombre == std::string("enLinea");
    puertos.manipular(1, [enLinea](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        const bool primera = saliente.intercambio == (enLinea ? Intercambio::reposo : Intercambio::eleccion);
        if (primera && saliente.indice == 0) efecto.demora = enLinea ? 2100ms : 1100ms;
        return efecto;
    });
    GetParam().empezar(*this);
    dialogos.dejarAbierto(GetParam().mensaje);
    ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.abiertos() == 1; }, 5s));
    EXPECT_FALSE(puertos.abierto(1));
    const auto antes = puertos.escritos(1).size();
    pasar(2s);
    EXPECT_EQ(puertos.escritos(1).size(), antes) << "nothing is answered while the operator reads";
    EXPECT_FALSE(forma.Timer4.enabled());
    dialogos.contestar(Boton::aceptar);
    EXPECT_EQ(inicio.operacionesEnCurso(), 0u);
    EXPECT_EQ(forma.Command1.caption(), kOfrecer);
}

INSTANTIATE_TEST_SUITE_P(Cada, Tardio, testing::Values(kDescarga, kSerie, kEscritura, kLectura, kEnLinea),
                         nombreDelIntercambio);

}  // namespace
}  // namespace telvane
