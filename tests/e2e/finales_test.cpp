// Every way in which the window may end, inside every wait, before every box and during a save: at once, with
// the right status and nothing left running.
#include <csignal>
#include <fstream>
#include <functional>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "regional/almacen_usuario.h"
#include "regional/module1.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/e2e/datos_guardados.h"
#include "tests/e2e/llamadas.h"
#include "tests/e2e/marco.h"
#include "tests/e2e/ventana_e2e.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTitulo = "Telvane de VELTRA v1.10";
constexpr const char* kTituloDeCaja = "Telvane";
constexpr const char* kTituloDeCoeficientes = "coeficientes";
constexpr const char* kCajaRegional = "Su Configuracion Regional no es la apropiada";
constexpr const char* kPregunta = "Quiere conectarse con Registrador Veltra";
constexpr const char* kConexion = " Conexion en COM 1  @ 19200 bps ";
// An end that nobody would call slow, on a machine that has much to do.
constexpr Proceso::Plazo kPronto{5'000};

enum class Fin { term, interrupcion, cuelga, marco, salir, pantalla };
const std::vector<Fin> kFines = {Fin::term,  Fin::interrupcion, Fin::cuelga,
                                 Fin::marco, Fin::salir,        Fin::pantalla};

std::string nombreDe(Fin fin) {
    constexpr const char* kNombres[] = {"Term", "Int", "Hup", "Marco", "Salir", "Pantalla"};
    return kNombres[static_cast<int>(fin)];
}

// What stands before the main window, and so keeps the operator from it.
enum class Delante { nada, caja, soloCaja };

class Finales;

// How far the program has come when it ends.
struct Momento {
    const char* nombre;
    Delante delante;
    std::vector<std::string> registrador;  // options of the simulated logger
    std::function<void(Finales&)> llegar;
    // The end that ./test tries here; none: the slow run only.
    std::optional<Fin> muestra = {};
    int estado = 0;
};

struct Caso {
    Momento momento;
    Fin fin;
};

void PrintTo(const Caso& caso, std::ostream* flujo) {
    *flujo << caso.momento.nombre << nombreDe(caso.fin);
}

class FinalesBase : public VentanaE2e {
   protected:
    using VentanaE2e::VentanaE2e;

    // The program is there until now, and has started no other.
    void acaba(Fin fin, bool sinVentana = false) {
        ASSERT_EQ(programa_->terminar(Proceso::Plazo(0)), std::nullopt) << programa_->errores();
        std::string hijos;
        const auto proceso = fs::path("/proc") / std::to_string(programa_->pid()) / "task" /
                             std::to_string(programa_->pid()) / "children";
        std::getline(std::ifstream(proceso), hijos);
        EXPECT_EQ(hijos, "");
        provocar(fin, sinVentana);
    }
    // The port is free for the next program at once: nobody but the logger's own end holds it.
    void nadaQueda() {
        EXPECT_THAT(estadoDelPuerto(),
                    ::testing::MatchesRegex("COM1 .* ocupado por telvane-sim \\(pid [0-9]+\\)"));
    }
    // The line that the console tool has for COM1.
    std::string estadoDelPuerto() {
        Proceso consola({TELVANE_CLI, "--com", registrador_.com(), "puertos"});
        EXPECT_EQ(consola.terminar(), 0);
        const auto salida = consola.salida();
        EXPECT_THAT(salida, ::testing::StartsWith("COM1 "));
        return salida.substr(0, salida.find('\n'));
    }

   private:
    void provocar(Fin fin, bool sinVentana) {
        switch (fin) {
            case Fin::term:
                return programa_->senal(SIGTERM);
            case Fin::interrupcion:
                return programa_->senal(SIGINT);
            case Fin::cuelga:
                return programa_->senal(SIGHUP);
            case Fin::marco: {
                const auto* cual = sinVentana ? kTituloDeCaja : kTitulo;
                ASSERT_TRUE(esperarA([&] { return cerrarPorElMarco(escritorio_.pantalla(), cual); }));
                return;
            }
            case Fin::salir:
                ASSERT_TRUE(pulsar("Salir"));
                return;
            case Fin::pantalla:
                return escritorio_.apagarPantalla();
        }
    }
};

class Finales : public FinalesBase, public ::testing::WithParamInterface<Caso> {
   protected:
    Finales() : FinalesBase(GetParam().momento.registrador) {}

    void SetUp() override {
        if (GetParam().momento.estado != 0) {
            fs::create_directory(escritorio_.carpeta("config") / "telvane");
            std::ofstream(escritorio_.carpeta("config") / "telvane" / "regional") << "no es esto\n";
        }
        arrancar();
        GetParam().momento.llegar(*this);
    }

   public:
    void hastaLaPregunta() {
        ASSERT_TRUE(responder(kCajaRegional, "Aceptar"));
        ASSERT_TRUE(hay(kPregunta));
    }
    void sinConectar() {
        hastaLaPregunta();
        ASSERT_TRUE(responder(kPregunta, "Cancelar"));
        ASSERT_TRUE(hay(kPregunta, false));
    }
    void buscando() {
        hastaLaPregunta();
        ASSERT_TRUE(responder(kPregunta, "Aceptar"));
        ASSERT_TRUE(hay(kPregunta, false));
    }
    void leyendo() {
        buscando();
        ASSERT_TRUE(responder(kConexion, "Aceptar"));
        ASSERT_TRUE(hay(kConexion, false));
    }
    void editando() {
        conectar();
        ASSERT_TRUE(pulsar("Cambiar configuracion"));
        ASSERT_TRUE(habilitado("Enviar configuracion"));
    }
    void preguntandoSiEnvia() {
        editando();
        ASSERT_TRUE(pulsar("Enviar configuracion"));
        ASSERT_TRUE(hay("SE BORRARAN TODOS LOS DATOS DE MEMORIA!"));
    }
    void descargada() {
        conectar();
        ASSERT_TRUE(pulsar(kDescargar));
        ASSERT_TRUE(hay("La descarga de datos se realizó con exito"));
    }
    // A click counts as made after the wake-up: by the time of its window the exchange has begun.
    void trasElDespertar() {
        ASSERT_TRUE(pulsar("Coeficientes"));
        ASSERT_TRUE(hay("Sensores Veltra"));
        ASSERT_TRUE(cerrarPorElMarco(escritorio_.pantalla(), kTituloDeCoeficientes));
        ASSERT_TRUE(hay("Sensores Veltra", false));
    }
    void exportando() {
        sinConectar();
        ASSERT_TRUE(pulsar(kExportar));
        ASSERT_TRUE(hayDialogo("Guardar"));
    }
    ::testing::AssertionResult hayDialogo(const std::string& verbo) {
        if (esperarA([&] { return dialogoDeArchivo(verbo).has_value(); }))
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "no file dialog";
    }

    using VentanaE2e::conectar;
    using VentanaE2e::contiene;
    using VentanaE2e::elegir;
    using VentanaE2e::escritorio_;
    using VentanaE2e::habilitado;
    using VentanaE2e::hay;
    using VentanaE2e::pulsar;
    using VentanaE2e::responder;
    using VentanaE2e::teclear;
};

TEST_P(Finales, TheProgramEnds) {
    const auto& caso = GetParam();
    acaba(caso.fin, caso.momento.delante == Delante::soloCaja);
    EXPECT_EQ(programa_->terminar(kPronto), caso.fin == Fin::pantalla ? 1 : caso.momento.estado)
        << programa_->errores();
    nadaQueda();
}

const auto kNormal = RegistradorSimulado::kSinPausa;
std::vector<std::string> con(const std::string& fallo, const std::string& baudios = "0") {
    return {"--baudios", baudios, "--fallo", fallo};
}

const std::vector<Momento> kMomentos = {
    {"CajaRegional", Delante::soloCaja, kNormal, [](Finales& t) { ASSERT_TRUE(t.hay(kCajaRegional)); },
     Fin::marco},
    {"InformeDeFallo", Delante::soloCaja, kNormal,
     [](Finales& t) { ASSERT_TRUE(t.hay("Error en tiempo de ejecución")); }, Fin::term, 1},
    {"PrimeraPregunta", Delante::caja, kNormal, [](Finales& t) { t.hastaLaPregunta(); }, Fin::marco},
    {"Busqueda", Delante::nada, con("sonda:siempre:silencio"), [](Finales& t) { t.buscando(); }, Fin::salir},
    {"CajaDeConexion", Delante::caja, kNormal,
     [](Finales& t) {
         t.buscando();
         ASSERT_TRUE(t.hay(kConexion));
     },
     Fin::marco},
    {"Despertar", Delante::nada, kNormal, [](Finales& t) { t.leyendo(); }, Fin::cuelga},
    {"CajaSinEquipo", Delante::caja, con("lectura:byte=0:silencio"),
     [](Finales& t) {
         t.leyendo();
         ASSERT_TRUE(t.hay("No hay equipo conectado"));
     }},
    {"LecturaDetenida", Delante::nada, con("lectura:byte=50:silencio"),
     [](Finales& t) {
         t.leyendo();
         ASSERT_TRUE(t.habilitado("Cambiar configuracion"));
     },
     Fin::interrupcion},
    {"Edicion", Delante::nada, kNormal, [](Finales& t) { t.editando(); }},
    {"PreguntaAntesDeEnviar", Delante::caja, kNormal, [](Finales& t) { t.preguntandoSiEnvia(); }, Fin::marco},
    {"EscrituraDetenida", Delante::nada, con("escritura:byte=50:silencio"),
     [](Finales& t) {
         t.preguntandoSiEnvia();
         ASSERT_TRUE(t.responder("SE BORRARAN TODOS LOS DATOS DE MEMORIA!", "Aceptar"));
         t.trasElDespertar();
     }},
    {"SerieDetenida", Delante::nada, con("serie:byte=2:silencio"),
     [](Finales& t) {
         t.conectar();
         ASSERT_TRUE(t.teclear("Nro de Serie", "12345678", {"Return"}));
         ASSERT_TRUE(t.hay("comienzo transmision"));
         t.trasElDespertar();
     }},
    {"EnLinea", Delante::nada, kNormal,
     [](Finales& t) {
         t.conectar();
         ASSERT_TRUE(t.pulsar("DATOS EN LINEA"));
         ASSERT_TRUE(t.contiene("Medicion de Datos en linea", "[RH%]="));
     },
     Fin::pantalla},
    {"SaludoDetenido", Delante::nada, con("descarga:byte=1:silencio"),
     [](Finales& t) {
         t.conectar();
         ASSERT_TRUE(t.pulsar(kDescargar));
         ASSERT_TRUE(t.hay("00:00:0"));
     }},
    {"BloqueDetenido", Delante::nada, con("descarga:bloque=3:byte=30:silencio"),
     [](Finales& t) {
         t.conectar();
         ASSERT_TRUE(t.pulsar(kDescargar));
         ASSERT_TRUE(t.hay("00:00:0"));
     },
     Fin::marco},
    {"Descarga",
     Delante::nada,
     {"--baudios", "19200"},
     [](Finales& t) {
         t.conectar();
         ASSERT_TRUE(t.pulsar(kDescargar));
         ASSERT_TRUE(t.hay("00:00:0"));
     }},
    {"CajaDeExito", Delante::caja, kNormal, [](Finales& t) { t.descargada(); }},
    {"DialogoDeGuardar", Delante::caja, kNormal, [](Finales& t) { t.exportando(); }, Fin::marco},
    {"PreguntaDeReemplazo", Delante::caja, kNormal,
     [](Finales& t) {
         t.exportando();
         const auto viejo = t.escritorio_.carpeta("casa") / "viejo.xls";
         std::ofstream(viejo) << "viejo";
         ASSERT_TRUE(t.elegir("Guardar", viejo));
         ASSERT_TRUE(t.hay("El fichero viejo.xls ya existe"));
     },
     Fin::marco},
    {"PreguntaDeAbrir", Delante::caja, kNormal,
     [](Finales& t) {
         t.descargada();
         ASSERT_TRUE(t.responder("La descarga de datos se realizó con exito", "Aceptar"));
         ASSERT_TRUE(t.elegir("Guardar", t.escritorio_.carpeta("casa") / "a.CSV"));
         ASSERT_TRUE(t.hay("Desea Abrir Archivo"));
     }},
    {"DialogoDeAbrir", Delante::caja, kNormal,
     [](Finales& t) {
         t.sinConectar();
         ASSERT_TRUE(t.pulsar("Abrir Archivo Base (.rgt)"));
         ASSERT_TRUE(t.hayDialogo("Abrir"));
     }},
    {"Coeficientes", Delante::nada, kNormal,
     [](Finales& t) {
         t.sinConectar();
         ASSERT_TRUE(t.pulsar("Coeficientes"));
         ASSERT_TRUE(t.hay("Sensores Veltra"));
     },
     Fin::marco},
};

std::vector<Caso> casos(bool deMuestra) {
    std::vector<Caso> todos;
    for (const auto& momento : kMomentos) {
        for (const auto fin : kFines) {
            if (fin == Fin::salir && momento.delante != Delante::nada) continue;
            if ((momento.muestra == fin) == deMuestra) todos.push_back({momento, fin});
        }
    }
    return todos;
}

const auto nombrar = [](const auto& caso) {
    return std::string(caso.param.momento.nombre) + nombreDe(caso.param.fin);
};
INSTANTIATE_TEST_SUITE_P(Muestra, Finales, ::testing::ValuesIn(casos(true)), nombrar);
INSTANTIATE_TEST_SUITE_P(Resto, Finales, ::testing::ValuesIn(casos(false)), nombrar);

// The disk takes its time: a save that has begun is brought to its end, and then the program ends.
struct Guardado {
    const char* llamada;
    bool base;
    Fin fin;
};

void PrintTo(const Guardado& guardado, std::ostream* flujo) {
    *flujo << guardado.llamada << nombreDe(guardado.fin);
}

class FinalesAlGuardar : public FinalesBase, public ::testing::WithParamInterface<Guardado> {
   protected:
    // Time enough to be seen by a test that gets little of the machine.
    static constexpr std::chrono::milliseconds kDemora{4000};

    void SetUp() override {
        if (const auto por = porQueNoSeTraza(); !por.empty()) GTEST_SKIP() << por;
        // The save of the session's first box is not the one that is meant.
        const auto ajustes = escritorio_.carpeta("config") / "telvane";
        fs::create_directory(ajustes);
        AlmacenUsuario almacen(ajustes / "regional");
        for (const auto& valor : kValoresRegionales)
            almacen.RegWrite(std::string(kClaveRegional) + std::string(valor.nombre),
                             std::string(valor.exigido));
        arrancar(conDemora(GetParam().llamada, kDemora));
        GetParam().base ? guardarBase() : guardarPlanilla();
    }
    void guardarPlanilla() {
        ASSERT_TRUE(responder(kPregunta, "Cancelar"));
        ASSERT_TRUE(pulsar(kExportar));
        ASSERT_TRUE(elegir("Guardar", planilla()));
        ASSERT_TRUE(guardandoEn(escritorio_.carpeta("casa")));
    }
    void guardarBase() {
        ASSERT_TRUE(responder(kPregunta, "Aceptar"));
        ASSERT_TRUE(responder(kConexion, "Aceptar"));
        ASSERT_TRUE(contiene("Fecha", "/20"));
        ASSERT_TRUE(pulsar(kDescargar));
        ASSERT_TRUE(guardandoEn(escritorio_.carpeta("datos") / "telvane"));
    }
    // The file stands there under its hidden name: that of its serial number, or of its table.
    static constexpr const char* kTemporal = ".0";
    static bool guardandoEn(const fs::path& carpeta) {
        return esperarA([&] {
            std::error_code todavia;
            for (const auto& una : fs::directory_iterator(carpeta, todavia)) {
                if (una.path().filename().string().starts_with(kTemporal)) return true;
            }
            return false;
        });
    }
    fs::path planilla() const { return escritorio_.carpeta("casa") / "0.xls"; }
};

TEST_P(FinalesAlGuardar, WhatIsBeingSavedIsSavedWhole) {
    acaba(GetParam().fin);
    EXPECT_EQ(programa_->terminar(kPronto + kDemora), GetParam().fin == Fin::pantalla ? 1 : 0);
    nadaQueda();
    if (GetParam().base) {
        ASSERT_EQ(archivosBase().size(), 1U) << "the temporary file has gone";
        EXPECT_EQ(fs::file_size(archivosBase().front()), kBytesArchivoBase);
    } else {
        // Of a window that has downloaded nothing: the names of the columns, and no sample.
        EXPECT_EQ(leerTodo(planilla()),
                  "Fecha,Hora,Temperatura[\xBA"
                  "C],Precipitacion[mm]\r\n\r\n");
    }
}

std::string nombrarGuardado(const ::testing::TestParamInfo<Guardado>& caso) {
    return std::string(caso.param.base ? "Base" : "Planilla") + caso.param.llamada + nombreDe(caso.param.fin);
}
INSTANTIATE_TEST_SUITE_P(Muestra, FinalesAlGuardar, ::testing::Values(Guardado{"fsync", false, Fin::term}),
                         nombrarGuardado);
INSTANTIATE_TEST_SUITE_P(
    Resto, FinalesAlGuardar,
    ::testing::Values(Guardado{"fsync", false, Fin::marco}, Guardado{"fsync", false, Fin::pantalla},
                      Guardado{"rename", false, Fin::term}, Guardado{"fsync", true, Fin::cuelga},
                      Guardado{"fsync", true, Fin::marco}, Guardado{"fsync", true, Fin::pantalla},
                      Guardado{"renameat2", true, Fin::interrupcion}),
    nombrarGuardado);

// The window holds the port in the middle of an exchange; it dies, and nothing of it is in the way.
class DosProgramas : public FinalesBase {
   protected:
    explicit DosProgramas(const std::vector<std::string>& registrador = con("lectura:byte=50:silencio"))
        : FinalesBase(registrador) {}
    std::optional<int> buscar() {
        Proceso consola({TELVANE_CLI, "--com", registrador_.com(), "buscar"});
        const auto estado = consola.terminar();
        queja_ = consola.errores();
        return estado;
    }
    std::string queja_;
};

TEST_F(DosProgramas, TheSecondIsRefusedUntilTheFirstIsGoneHoweverItWent) {
    ASSERT_TRUE(responder(kCajaRegional, "Aceptar"));
    ASSERT_TRUE(responder(kPregunta, "Aceptar"));
    ASSERT_TRUE(responder(kConexion, "Aceptar"));
    ASSERT_TRUE(habilitado("Cambiar configuracion"));
    EXPECT_THAT(estadoDelPuerto(), ::testing::HasSubstr("telvane (pid "));
    EXPECT_EQ(buscar(), 3);
    EXPECT_THAT(queja_, ::testing::HasSubstr("está en uso por otro programa"));
    programa_->senal(SIGKILL);
    EXPECT_EQ(programa_->terminar(), 128 + SIGKILL);
    EXPECT_EQ(buscar(), 0) << queja_;
}

// The box's own frame is its negative button, and the program goes on.
class CajaPorSuMarco : public FinalesBase {};

TEST_F(CajaPorSuMarco, ClosesTheBoxAlone) {
    ASSERT_TRUE(responder(kCajaRegional, "Aceptar"));
    ASSERT_TRUE(hay(kPregunta));
    ASSERT_TRUE(cerrarPorElMarco(escritorio_.pantalla(), kTituloDeCaja));
    EXPECT_TRUE(hay(kPregunta, false));
    EXPECT_TRUE(pulsar("Coeficientes"));
    EXPECT_TRUE(hay("Sensores Veltra"));
}

}  // namespace
}  // namespace telvane
