// "Salir" inside every wait: at once, status 0, nothing asked. And a form that goes while operations wait:
// each test ends so.
#include <functional>

#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class Finales;

struct Momento {
    const char* nombre;
    std::function<void(Finales&)> llegar;
};

void PrintTo(const Momento& momento, std::ostream* flujo) {
    *flujo << momento.nombre;
}

class Finales : public Banco, public testing::WithParamInterface<Momento> {
   protected:
    Finales() : Banco(kBaudios) {}

   public:
    void conectado() {
        conectar();
        dialogos.responderSiempre(Boton::aceptar);
    }
    void mudo() {
        puertos.manipular(1, [](const ByteSaliente&) { return Efecto{.bytes = {}, .callar = true}; });
    }
    void enLaEspera(Control& control, std::chrono::milliseconds cuanto) {
        conectado();
        mudo();
        pulsar(control);
        pasar(cuanto);
    }
    void buscando(std::chrono::milliseconds cuanto) {
        dialogos.responder(Boton::aceptar, kPregunta);
        inicio.cargar();
        pasar(cuanto);
    }

    using Banco::dialogos;
    using Banco::forma;
    using Banco::inicio;
    using Banco::pasar;
    using Banco::pulsar;
};

TEST_P(Finales, SalirEndsAtOnceFromHere) {
    GetParam().llegar(*this);
    const auto antes = dialogos.mensajes().size();
    pulsar(forma.salir);
    EXPECT_EQ(terminaciones, std::vector<int>{0});
    EXPECT_EQ(dialogos.mensajes().size(), antes) << "nothing is asked";
    EXPECT_TRUE(fallos.empty());
}

const std::vector<Momento> kMomentos = {
    {"LaPrimeraPregunta",
     [](Finales& t) {
         t.dialogos.dejarAbierto(kPregunta);
         t.inicio.cargar();
     }},
    {"LaPrimeraEsperaDeLaBusqueda", [](Finales& t) { t.buscando(500ms); }},
    {"LaSegundaEsperaDeLaBusqueda", [](Finales& t) { t.buscando(2s); }},
    {"ElDespertar", [](Finales& t) { t.enLaEspera(t.forma.configuracion, 1s); }},
    {"LaEsperaDeLaLectura", [](Finales& t) { t.enLaEspera(t.forma.configuracion, 2500ms); }},
    {"LaMitadDeLaLectura",
     [](Finales& t) {
         t.conectado();
         t.pulsar(t.forma.configuracion);
         t.pasar(2050ms);
     }},
    {"LaEsperaDeLaSerie",
     [](Finales& t) {
         t.conectado();
         t.mudo();
         t.inicio.teclear(t.forma.Text10, 13);
         t.pasar(2500ms);
     }},
    {"LaConfirmacionDeEnviar",
     [](Finales& t) {
         t.conectado();
         t.pulsar(t.forma.Command2);
         t.dialogos.dejarAbierto();
         t.pulsar(t.forma.Command3);
     }},
    {"LaMitadDelEnvio",
     [](Finales& t) {
         t.conectado();
         t.pulsar(t.forma.Command2);
         t.pulsar(t.forma.Command3);
         t.pasar(2050ms);
     }},
    {"LaEsperaEnLinea", [](Finales& t) { t.enLaEspera(t.forma.Command4, 1s); }},
    {"LosDatosEnLinea",
     [](Finales& t) {
         t.conectado();
         t.pulsar(t.forma.Command4);
         t.pasar(5s);
     }},
    {"LaEsperaDeLaDescarga", [](Finales& t) { t.enLaEspera(t.forma.Command13, 2500ms); }},
    {"LaMitadDeLaDescarga",
     [](Finales& t) {
         t.conectado();
         t.pulsar(t.forma.Command13);
         t.pasar(60s);
     }},
    {"ElExitoDeLaDescarga",
     [](Finales& t) {
         t.conectado();
         t.dialogos.dejarAbierto("La descarga de datos se realizó con exito");
         t.pulsar(t.forma.Command13);
         t.pasar(200s);
     }},
    {"ElDialogoDeGuardar",
     [](Finales& t) {
         t.conectado();
         t.dialogos.dejarAbiertoArchivo();
         t.pulsar(t.forma.Command33);
     }},
    {"ElDialogoDeAbrir", [](Finales& t) {
         t.conectado();
         t.dialogos.dejarAbiertoArchivo();
         t.pulsar(t.forma.Command43);
     }}};

INSTANTIATE_TEST_SUITE_P(Desde, Finales, testing::ValuesIn(kMomentos),
                         [](const auto& caso) { return std::string(caso.param.nombre); });

}  // namespace
}  // namespace telvane
