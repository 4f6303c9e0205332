// The line has no checksum: what is believed, what is read again, and what the operator is told when a write
// did not end well.
#include <fcntl.h>
#include <pty.h>
#include <signal.h>
#include <sys/file.h>

#include <new>
#include <set>
#include <tuple>

#include <nlohmann/json.hpp>

#include "cli/textos_cli.h"
#include "live/marco_en_linea.h"
#include "platform/descriptor.h"
#include "platform/motivos.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

class Dudas : public CliPrueba {
   protected:
    // One byte of the given reading's record, counted from 1 in this command, comes as another.
    void danarLectura(std::size_t vez, std::size_t lugar, std::uint8_t mascara) {
        puertos.manipular(kPuerto, [=, lecturas = std::size_t{0}](const ByteSaliente& saliente) mutable {
            if (saliente.intercambio != Intercambio::lectura) return Efecto::pasar(saliente.byte);
            if (saliente.indice == 1) ++lecturas;
            const bool este = lecturas == vez && saliente.indice == kAcuses + lugar;
            return Efecto::pasar(este ? static_cast<std::uint8_t>(saliente.byte ^ mascara) : saliente.byte);
        });
    }
    // One byte of the memory, in the given download of this command or in all of them (0).
    void danarDescarga(std::size_t vez, std::size_t lugar, std::uint8_t mascara) {
        descargas = 0;
        puertos.manipular(kPuerto, [=, this](const ByteSaliente& saliente) {
            if (saliente.intercambio != Intercambio::descarga) return Efecto::pasar(saliente.byte);
            if (saliente.indice == 1) ++descargas;
            const bool este = (vez == 0 || vez == descargas) && saliente.indice == kAcuses + lugar;
            return Efecto::pasar(este ? static_cast<std::uint8_t>(saliente.byte ^ mascara) : saliente.byte);
        });
    }
    FechaHora reloj() { return puertos.maquina(kPuerto).reloj(bucle.reloj().monotono()); }
    static std::size_t veces(const std::string& texto, const std::string& que) {
        std::size_t cuantas = 0;
        for (auto i = texto.find(que); i != std::string::npos; i = texto.find(que, i + 1)) ++cuantas;
        return cuantas;
    }
    // The given byte of the logger's answers in this exchange meets this, every time.
    void enElByte(Intercambio intercambio, std::size_t indice, const std::function<void(Efecto&)>& que) {
        puertos.manipular(kPuerto, [=](const ByteSaliente& saliente) {
            auto efecto = Efecto::pasar(saliente.byte);
            if (saliente.intercambio == intercambio && saliente.indice == indice) que(efecto);
            return efecto;
        });
    }
    void callarEn(Intercambio intercambio, std::size_t indice) {
        enElByte(intercambio, indice, [](Efecto& efecto) { efecto.callar = true; });
    }

    std::size_t descargas = 0;  // as danarDescarga counts them
};

// --- configurar

class Respaldo : public Dudas {
   protected:
    Resultado configurar(const std::string& nombre, const std::vector<std::string>& mas = {}) {
        std::vector<std::string> todos = {"configurar", "--altitud",      "555",
                                          "--respaldo", carpeta / nombre, "--borrar-memoria"};
        todos.insert(todos.end(), mas.begin(), mas.end());
        return correr(todos);
    }
    std::vector<std::uint8_t> imagen_ = puertos.maquina(kPuerto).imagen();
};

class RespaldoDanado : public Respaldo, public testing::WithParamInterface<std::size_t> {};

TEST_P(RespaldoDanado, TheOnlyCopyIsReadTwiceBeforeTheLoggerErasesItsMemory) {
    danarDescarga(GetParam(), 100 * kBytesBloque + 12, 0xFF);
    const auto r = configurar("antes.rgt");
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("el bloque 100 no coincide con la lectura anterior"));
    EXPECT_TRUE(leerTodo(carpeta / "antes.rgt") == comoTexto(imagen_));
    EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Lectura, RespaldoDanado, testing::Values(1U, 2U));

TEST_F(Respaldo, OneReadingIsTakenWhereSomebodyAsksForIt) {
    danarDescarga(2, 0, 0xFF);
    const auto r = configurar("antes.rgt", {"--sin-verificar"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(descargas, 1U);
    EXPECT_TRUE(leerTodo(carpeta / "antes.rgt") == comoTexto(imagen_));
}

TEST_F(Respaldo, ANumberThatTheLineDamagedOnceStandsInNoBackup) {
    danarDescarga(1, registro_config::kSerie, 0xFF);
    const auto r = configurar("antes.rgt");
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_TRUE(leerTodo(carpeta / "antes.rgt") == comoTexto(imagen_));
}

TEST_F(Respaldo, AMemoryThatBearsAnotherNumberIsNotErased) {
    danarDescarga(0, registro_config::kSerie, 0x30);
    for (const auto& mas : {std::vector<std::string>{}, {"--sin-verificar"}}) {
        const auto nombre = mas.empty() ? "un respaldo.rgt" : "otro.rgt";
        const auto r = configurar(nombre, mas);
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_THAT(r.errores, HasSubstr("dice Nro 02080050 y la memoria, Nro 32080050. Revise el cable"));
        EXPECT_THAT(r.errores, HasSubstr("No se envió nada: la configuración y la memoria siguen"));
        EXPECT_THAT(r.errores, HasSubstr("El respaldo de la memoria está en"));
        EXPECT_EQ(leerTodo(carpeta / nombre).size(), kBytesMemoria);
        EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 0U);
    }
    EXPECT_THAT(configurar("tercero de.rgt").errores,
                HasSubstr("repita la orden con --respaldo '" + (carpeta / "tercero de_2.rgt").string() +
                          "' (un respaldo no se reemplaza)"));
}

struct Percance {
    const char* nombre;
    void (*hacer)(const std::filesystem::path& respaldo);
};

void PrintTo(const Percance& percance, std::ostream* flujo) {
    *flujo << percance.nombre;
}

class RespaldoPerdido : public Respaldo, public testing::WithParamInterface<Percance> {
   protected:
    // Between the backup and the write, once.
    void despuesDelRespaldo(std::function<void()> hacer) {
        puertos.manipular(kPuerto, [=, copiada = false](const ByteSaliente& saliente) mutable {
            copiada = copiada || saliente.intercambio == Intercambio::descarga;
            if (copiada && saliente.intercambio == Intercambio::lectura) {
                copiada = false;
                hacer();
            }
            return Efecto::pasar(saliente.byte);
        });
    }
};

TEST_P(RespaldoPerdido, NothingIsErasedAndTheCopyIsSavedUnderAnotherName) {
    despuesDelRespaldo([this] { GetParam().hacer(carpeta / "v.rgt"); });
    const auto r = configurar("v.rgt", {"--sin-verificar"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 0U);
    EXPECT_TRUE(leerTodo(carpeta / "v_2.rgt") == comoTexto(imagen_));
    EXPECT_THAT(r.errores, HasSubstr("v.rgt no tiene lo que se descargó"));
    EXPECT_THAT(r.errores, HasSubstr("No se envió nada: la configuración y la memoria siguen como estaban."));
    EXPECT_THAT(r.errores, HasSubstr("El respaldo de la memoria está en " + (carpeta / "v_2.rgt").string()));
}

INSTANTIATE_TEST_SUITE_P(
    AntesDeEscribir, RespaldoPerdido,
    testing::Values(Percance{"quitado", [](const auto& ruta) { std::filesystem::remove(ruta); }},
                    Percance{"cortado", [](const auto& ruta) { std::filesystem::resize_file(ruta, 64000); }},
                    Percance{"alargado", [](const auto& ruta) { std::ofstream(ruta, std::ios::app) << "x"; }},
                    Percance{"reemplazado", [](const auto& ruta) { std::ofstream(ruta) << "ajeno"; }}),
    [](const auto& caso) { return caso.param.nombre; });

TEST_F(RespaldoPerdido, WithItsFolderNothingIsErasedAndThatThereIsNoneIsSaid) {
    std::filesystem::create_directory(carpeta / "d");
    despuesDelRespaldo([this] { std::filesystem::remove_all(carpeta / "d"); });
    const auto r = configurar("d/v.rgt", {"--sin-verificar"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 0U);
    EXPECT_THAT(r.errores, HasSubstr("no existe la carpeta"));
    EXPECT_THAT(r.errores, Not(HasSubstr("El respaldo de la memoria está en")));
}

// Whatever ends it before the first byte of the message: the operator is told what that means for the memory.
class AntesDeEnviar : public Respaldo {
   protected:
    void esperarNadaEnviado(const Resultado& r, CodigoSalida codigo, const std::string& motivo,
                            const std::string& repetir = "repita la orden.") {
        EXPECT_EQ(r.codigo, codigo) << r.errores;
        EXPECT_THAT(r.errores, HasSubstr(motivo));
        EXPECT_THAT(r.errores,
                    HasSubstr("\nNo se envió nada: la configuración y la memoria siguen como estaban. "
                              "Para intentarlo otra vez, " +
                              repetir));
        EXPECT_THAT(r.errores, Not(HasSubstr("El respaldo de la memoria está")));
        EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 0U);
    }
};

TEST_F(AntesDeEnviar, WhereNoLoggerIsFoundNothingWasSentEither) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        efecto.callar = true;
        return efecto;
    });
    const std::string busqueda =
        "telvane-cli: no hay conexión con el registrador: revise el cable y la alimentación, y los puertos "
        "con "
        "\"telvane-cli puertos\"\n";
    esperarNadaEnviado(configurar("v.rgt"), CodigoSalida::sinRegistrador,
                       busqueda.substr(0, busqueda.size() - 1));
    const auto sinCopia = correr({"configurar", "--reloj-pc", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(sinCopia.codigo, CodigoSalida::sinRegistrador);
    EXPECT_EQ(sinCopia.errores, busqueda +
                                    "No se envió nada: la configuración y la memoria siguen como estaban. "
                                    "Para intentarlo otra vez, repita la orden.\n"
                                    "No hay respaldo de la memoria: se pidió --sin-respaldo.\n");
    const auto serie = correr({"serie", "12345678"});
    EXPECT_EQ(serie.codigo, CodigoSalida::sinRegistrador);
    EXPECT_EQ(serie.errores, busqueda +
                                 "No se envió nada: el número y la memoria siguen como estaban. Para "
                                 "intentarlo otra vez, repita la orden.\n");
    // Interrupted before the search has ended.
    senalTras = {1s, SIGTERM};
    for (const auto& orden : {std::vector<std::string>{"serie", "12345678"},
                              {"configurar", "--reloj-pc", "--borrar-memoria", "--sin-respaldo"}}) {
        const auto r = correr(orden);
        EXPECT_EQ(r.codigo, CodigoSalida::interrumpido);
        EXPECT_THAT(r.errores, HasSubstr("telvane-cli: interrumpido\nNo se envió nada: "));
    }
}

TEST_F(AntesDeEnviar, ALineThatDiesSaysThatNothingWasSent) {
    callarEn(Intercambio::eleccion, 0);
    esperarNadaEnviado(configurar("v.rgt"), CodigoSalida::sinRegistrador, "el registrador no responde");
    callarEn(Intercambio::descarga, 5000);
    esperarNadaEnviado(configurar("v.rgt"), CodigoSalida::fallo, "dejó de responder a mitad");
    enElByte(Intercambio::descarga, 5000, [](Efecto& efecto) { efecto.cortar = true; });
    esperarNadaEnviado(configurar("v.rgt"), CodigoSalida::sinRegistrador, "el registrador no responde");
}

TEST_F(AntesDeEnviar, ADeviceThatGoesSaysThatNothingWasSent) {
    enElByte(Intercambio::descarga, 5000, [](Efecto& efecto) { efecto.colgar = true; });
    esperarNadaEnviado(configurar("v.rgt"), CodigoSalida::fallo, "");
}

TEST_F(AntesDeEnviar, ASignalSaysThatNothingWasSent) {
    enElByte(Intercambio::descarga, 5000, [](Efecto& efecto) { efecto.demora = 4s; });
    senalTras = {8s, SIGINT};
    esperarNadaEnviado(configurar("v.rgt"), CodigoSalida::interrumpido, "interrumpido");
    EXPECT_GT(leerTodo(carpeta / "v.rgt.parcial").size(), 0U);
}

TEST_F(AntesDeEnviar, ANameThatWasTakenMeanwhileSaysSoAndNamesAFreeOne) {
    enElByte(Intercambio::descarga, 5000, [this](Efecto&) { std::ofstream(carpeta / "v.rgt") << "ajeno"; });
    esperarNadaEnviado(configurar("v.rgt"), CodigoSalida::fallo, "v.rgt: ya existe",
                       "repita la orden con --respaldo " + (carpeta / "v_2.rgt").string() + " (un respaldo");
}

TEST_F(AntesDeEnviar, APartThatAnotherRunBeginsMeanwhileSaysThatNothingWasSent) {
    Descriptor ajeno;
    enElByte(Intercambio::lectura, 50, [&](Efecto&) {
        ajeno = Descriptor(::open((carpeta / "v.rgt.parcial").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        ASSERT_EQ(::flock(ajeno(), LOCK_EX | LOCK_NB), 0);
    });
    esperarNadaEnviado(configurar("v.rgt"), CodigoSalida::fallo, "v.rgt.parcial: ");
}

TEST_F(AntesDeEnviar, APartThatAnotherRunIsWritingIsToldBeforeTheLoggerHearsAnything) {
    const Descriptor ajeno(::open((carpeta / "v.rgt.parcial").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(::flock(ajeno(), LOCK_EX | LOCK_NB), 0);
    const auto r = configurar("v.rgt");
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("v.rgt.parcial: otro programa lo tiene en uso"));
    EXPECT_TRUE(puertos.emitidos(kPuerto).empty());
}

// What is asked of the operator is no failure.
TEST_F(AntesDeEnviar, AWordThatIsMissingIsAskedForAndNothingElseIsSaid) {
    const auto r = correr({"configurar", "--altitud", "555"});
    EXPECT_EQ(r.codigo, CodigoSalida::malUso);
    EXPECT_THAT(r.errores, Not(HasSubstr("No se envió nada")));
}

TEST_F(Dudas, AYearDamagedOnceIsNotSetAsTheLoggersClock) {
    for (const std::size_t vez : {1u, 2u}) {
        danarLectura(vez, registro_config::kReloj + 5, 0x10);  // the year, ten years off
        const auto r = correr(
            {"configurar", "--usuario", vez == 1 ? "Uno" : "Dos", "--borrar-memoria", "--sin-respaldo"});
        EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
        EXPECT_THAT(r.errores, HasSubstr("Dos lecturas de la configuración no coinciden"));
        EXPECT_EQ(reloj().anio, 2026);
    }
}

TEST_F(Dudas, AFieldDamagedOnceIsNeitherAnnouncedNorSentBack) {
    danarLectura(1, registro_config::kUbicacion, 0x01);
    const auto antes = puertos.maquina(kPuerto).texto(CampoTexto::ubicacion);
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(puertos.maquina(kPuerto).texto(CampoTexto::ubicacion), antes);
    EXPECT_THAT(r.errores, Not(HasSubstr("Ubicacion")));
}

TEST_F(Dudas, ReadingsThatNeverAgreeWriteNothing) {
    puertos.manipular(kPuerto, [vez = 0](const ByteSaliente& saliente) mutable {
        const bool este = saliente.intercambio == Intercambio::lectura && saliente.indice == kAcuses + 10;
        return Efecto::pasar(este ? static_cast<std::uint8_t>('a' + ++vez) : saliente.byte);
    });
    const auto r = correr({"configurar", "--altitud", "12", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("no se escribe nada"));
    EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 0U);
}

// A clock chip that tells anything can still be set.
TEST_F(Dudas, AClockThatIsNotSentBackNeedNotAgree) {
    puertos.manipular(kPuerto, [vez = 0](const ByteSaliente& saliente) mutable {
        const bool anio = saliente.intercambio == Intercambio::lectura &&
                          saliente.indice == kAcuses + registro_config::kReloj + 5 && ++vez <= 2;
        return Efecto::pasar(anio ? static_cast<std::uint8_t>(vez) : saliente.byte);
    });
    const auto r = correr({"configurar", "--reloj-pc", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(reloj().anio, 2026);
}

class Demorada : public Dudas {
   protected:
    // The first block of the download comes late, as the whole of it does on the real line.
    Demorada() {
        puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
            auto efecto = Efecto::pasar(saliente.byte);
            if (saliente.intercambio == Intercambio::descarga && saliente.indice % (64 * 64) == 2)
                efecto.demora = 2300ms;
            return efecto;
        });
    }
};

TEST_F(Demorada, TheTimeThatIsGivenGoesOnDuringTheBackup) {
    const auto inicio = bucle.reloj().monotono();
    const auto r = correr({"configurar", "--fecha", "31/12/2024", "--hora", "23:59:58", "--borrar-memoria",
                           "--respaldo", carpeta / "antes.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    const auto pasado = bucle.reloj().monotono() - inicio;
    ASSERT_GT(pasado, 2min);
    const auto ahora = reloj();
    EXPECT_EQ(ahora.anio, 2025);
    EXPECT_EQ(ahora.dia, 1);
    EXPECT_NEAR(std::chrono::duration<double>(ahora.deDia).count(),
                std::chrono::duration<double>(pasado - 2s).count(), 1.5);
}

TEST_F(Demorada, OnlyATimeKeepsTheLoggersDate) {
    puertos.maquina(kPuerto).ponerReloj({2026, 11, 19, 23h + 59min}, bucle.reloj().monotono());
    const auto r =
        correr({"configurar", "--hora", "10:00:00", "--borrar-memoria", "--respaldo", carpeta / "antes.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    // Given at 23:59 of the 19th; the backup ended on the 20th of the old clock.
    EXPECT_EQ(reloj().dia, 19);
    EXPECT_LT(reloj().deDia, 10h + 6min);
}

TEST_F(Dudas, ATimeOfSingleDigitsIsATime) {
    const auto r = correr({"configurar", "--hora", "1:2:3", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    const std::chrono::duration<double> pasado = reloj().deDia - (1h + 2min + 3s);
    EXPECT_NEAR(pasado.count(), 0, 60);
}

TEST_F(Dudas, OneBlockIsOne) {
    callarEn(Intercambio::descarga, kAcuses + kBytesBloque);
    auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    puertos.manipular(kPuerto, {});
    r = correr({"descargar", "--base", carpeta / "a.rgt"});
    EXPECT_THAT(r.errores, HasSubstr("a.rgt.parcial conserva 1 bloque de una descarga anterior\n"));
}

TEST_F(Dudas, ThePcsClockIsTakenWhenItIsSent) {
    const auto r = correr({"configurar", "--reloj-pc", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    const std::chrono::duration<double> atraso = bucle.reloj().ahora().deDia - reloj().deDia;
    EXPECT_NEAR(atraso.count(), 0, 1.0);
}

TEST_F(Dudas, AYearThatTheLoggersByteCannotHoldIsRefusedBeforeTheSearch) {
    EXPECT_EQ(correr({"configurar", "--fecha", "01/01/2065", "--borrar-memoria"}).codigo,
              CodigoSalida::malUso);
    for (const int anio : {1999, 2065}) {
        bucle.reloj().ponerHora({anio, 6, 1, 10h});
        const auto r = correr({"configurar", "--reloj-pc", "--borrar-memoria", "--sin-respaldo"});
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_THAT(r.errores, HasSubstr("ponga uno de 2000 a 2064"));
    }
    EXPECT_EQ(puertos.aperturas(kPuerto), 0U);
    bucle.reloj().ponerHora({2026, 6, 1, 10h});
    EXPECT_EQ(correr({"configurar", "--fecha", "31/12/2064", "--borrar-memoria", "--sin-respaldo"}).codigo,
              CodigoSalida::hecho);
}

// The clock goes on meanwhile: what could not be read back is not sent, and no year is named that nobody
// gave.
TEST_F(Dudas, AClockThatWouldReachItsEndMeanwhileIsRefusedBeforeTheMemoryIsTouched) {
    const auto rehusa = [&](std::vector<std::string> opciones, CodigoSalida codigo) {
        opciones.insert(opciones.begin(), {"configurar", "--borrar-memoria"});
        const auto r = correr(opciones);
        EXPECT_EQ(r.codigo, codigo) << r.errores;
        EXPECT_THAT(r.errores, HasSubstr("no pasa del año 2064, y llegaría a su final"));
        EXPECT_THAT(r.errores, Not(HasSubstr("2065")));
        EXPECT_THAT(r.errores, Not(HasSubstr("Se descarga la memoria")));
    };
    rehusa({"--fecha", "31/12/2064", "--hora", "23:59:59", "--sin-respaldo"}, CodigoSalida::malUso);
    rehusa({"--fecha", "31/12/2064", "--hora", "23:50:00"}, CodigoSalida::malUso);
    EXPECT_EQ(puertos.aperturas(kPuerto), 0U);
    const std::vector<std::string> cabe = {"configurar", "--borrar-memoria", "--sin-respaldo", "--fecha",
                                           "31/12/2064", "--hora",           "23:57:00"};
    EXPECT_EQ(correr(cabe).codigo, CodigoSalida::hecho);
    // The logger's own clock stands there now.
    rehusa({"--usuario", "Otro"}, CodigoSalida::fallo);
    rehusa({"--fecha", "31/12/2064"}, CodigoSalida::fallo);
    EXPECT_EQ(correr({"configurar", "--reloj-pc", "--borrar-memoria", "--sin-respaldo"}).codigo,
              CodigoSalida::hecho);
}

// At the order's start it was no moment of the logger's yet.
TEST_F(Dudas, AClockThatHasJustBegunToCountIsSet) {
    auto& maquina = puertos.maquina(kPuerto);
    maquina.ponerReloj({2000, 1, 1, 0s}, bucle.reloj().monotono());
    const auto r = correr({"configurar", "--hora", "10:00:00", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(reloj().anio, 2000);
    EXPECT_EQ(reloj().dia, 1);
}

class NoSeEnvia : public Dudas, public testing::WithParamInterface<const char*> {};

TEST_P(NoSeEnvia, TextWithControlCharactersIsRefused) {
    const auto r = correr({"configurar", "--usuario", GetParam(), "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::malUso);
    EXPECT_THAT(r.errores, HasSubstr("--usuario: hay un carácter"));
    EXPECT_EQ(puertos.aperturas(kPuerto), 0U);
}

INSTANTIATE_TEST_SUITE_P(Textos, NoSeEnvia,
                         testing::Values("a\nb", "a\x1b[2J", "a\x7f", "a\u0081", "a\u009b", "a\tb",
                                         "a\xffz"));

// --- where a write stands

TEST_F(Dudas, NothingSentSaysThatTheMemoryIsThere) {
    callarEn(Intercambio::escritura, 1);
    const auto respaldo = (carpeta / "antes.rgt").string();
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", respaldo});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("No se envió nada: la configuración y la memoria siguen como estaban."));
    EXPECT_THAT(r.errores, HasSubstr("El respaldo de la memoria está en " + respaldo));
    EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 0U);
    // The order that is named works.
    const auto otro = (carpeta / "antes_2.rgt").string();
    EXPECT_THAT(r.errores, HasSubstr("repita la orden con --respaldo " + otro + " (un respaldo"));
    puertos.manipular(kPuerto, {});
    EXPECT_EQ(correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", otro}).codigo,
              CodigoSalida::hecho);
}

// Whatever fails, and not the line alone.
TEST_F(Dudas, WhereMemoryRunsOutAWriteSaysWhereItStands) {
    const auto sinMemoria = [](Efecto&) { throw std::bad_alloc(); };
    const std::vector<std::string> configurar = {"configurar", "--usuario", "Otro", "--borrar-memoria",
                                                 "--sin-respaldo"};
    for (const auto& orden : {configurar, {"serie", "20800512"}}) {
        const bool deSerie = orden.front() == "serie";
        enElByte(deSerie ? Intercambio::serie : Intercambio::escritura, 3, sinMemoria);
        auto r = correr(orden);
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_THAT(r.errores, HasSubstr(std::string(motivoSinMemoria()) + "\nSe enviaron 2 de "));
        bucle.avanzar(10s);
        puertos.manipular(kPuerto, [=, enviado = false](const ByteSaliente& saliente) mutable {
            auto efecto = Efecto::pasar(saliente.byte);
            enviado = enviado || saliente.intercambio == Intercambio::escritura ||
                      saliente.intercambio == Intercambio::serie;
            if (enviado && saliente.intercambio == Intercambio::lectura) sinMemoria(efecto);
            return efecto;
        });
        r = correr(orden);
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_THAT(r.errores, HasSubstr(std::string(motivoSinMemoria()) + "\nSe envió todo y no se pudo"));
        bucle.avanzar(10s);
    }
}

TEST_F(Dudas, PartlySentSaysHowMuchAndWhatToDo) {
    callarEn(Intercambio::escritura, 41);
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("Se enviaron 40 de 107 bytes"));
    EXPECT_THAT(r.errores, HasSubstr("No hay respaldo de la memoria: se pidió --sin-respaldo."));
    EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 0U);
}

TEST_F(Dudas, SentAndNotConfirmedSaysThatTheMemoryIsGone) {
    puertos.manipular(kPuerto, [escrito = false](const ByteSaliente& saliente) mutable {
        auto efecto = Efecto::pasar(saliente.byte);
        escrito = escrito || saliente.intercambio == Intercambio::escritura;
        efecto.callar = escrito && saliente.intercambio == Intercambio::lectura;
        return efecto;
    });
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("Se envió todo y no se pudo confirmar. Dé la memoria por borrada"));
    EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 1U);
}

TEST_F(Dudas, AnInterruptedWriteSaysWhereItStands) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio == Intercambio::escritura && saliente.indice == 10) efecto.demora = 4s;
        return efecto;
    });
    senalTras = {8s, SIGINT};
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::interrumpido);
    EXPECT_THAT(r.errores, HasSubstr("de 107 bytes"));
}

TEST_F(Dudas, OneDamagedReadingAfterTheWriteIsNoFailure) {
    danarLectura(3, registro_config::kUsuario, 0x01);
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
}

TEST_F(Dudas, AnotherNumberAfterTheWriteIsReadAgain) {
    danarLectura(3, registro_config::kSerie + 2, 0x42);
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.salida, HasSubstr("Nro  : 02080050"));
}

// Nothing but the clock was to change, and the line spoils its year: only in what is read back, or in every
// reading, so that the old clock seems to go on.
TEST_F(Dudas, AClockAloneThatReadsBackWrongDoesNotSayThatTheMemoryIsThere) {
    for (const int desde : {3, 1}) {
        SCOPED_TRACE(desde);
        puertos.manipular(kPuerto, [desde, lecturas = 0](const ByteSaliente& saliente) mutable {
            const bool delAnio = saliente.intercambio == Intercambio::lectura &&
                                 saliente.indice == kAcuses + registro_config::kReloj + 5;
            return Efecto::pasar(delAnio && ++lecturas >= desde ? 0x09 : saliente.byte);
        });
        const auto antes = puertos.maquina(kPuerto).cambios();
        // With this machine's clock the one that was sent goes on like the old one but for that year.
        const auto r =
            desde == 1
                ? correr({"configurar", "--reloj-pc", "--borrar-memoria", "--sin-respaldo"})
                : correr({"configurar", "--fecha", "05/06/2030", "--borrar-memoria", "--sin-respaldo"});
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_EQ(puertos.maquina(kPuerto).cambios(), antes + 1);
        EXPECT_THAT(r.errores,
                    HasSubstr("lo leído después no es lo enviado (reloj). Dé la memoria por borrada"));
    }
}

TEST_F(Dudas, ALoggerOfAnotherNumberConfirmsNoConfiguration) {
    puertos.manipular(kPuerto, [lecturas = 0](const ByteSaliente& saliente) mutable {
        const bool deSerie = saliente.intercambio == Intercambio::lectura &&
                             saliente.indice == kAcuses + registro_config::kSerie;
        return Efecto::pasar(deSerie && ++lecturas > 2 ? 0x77 : saliente.byte);
    });
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("lo leído después no es lo enviado (Nro)"));
    EXPECT_THAT(r.salida, IsEmpty());
}

TEST_F(Dudas, ASerialNumberSentInPartSaysSo) {
    callarEn(Intercambio::serie, 3);
    const auto r = correr({"serie", "20800512"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("Se enviaron 2 de 5 bytes"));
    callarEn(Intercambio::serie, 2);
    EXPECT_THAT(correr({"serie", "20800512"}).errores, HasSubstr("Se envió 1 de 5 bytes"));
}

// --- readings of the configuration

TEST_F(Dudas, ABrokenReadingIsTriedAgain) {
    puertos.manipular(kPuerto, [hecho = false](const ByteSaliente& saliente) mutable {
        auto efecto = Efecto::pasar(saliente.byte);
        const bool aqui = saliente.intercambio == Intercambio::lectura && saliente.indice == 50;
        if (aqui && !std::exchange(hecho, true)) efecto.callar = true;
        return efecto;
    });
    const auto r = correr({"configuracion", "--json"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(nlohmann::json::parse(r.salida)["usuario"], "INTA Estacion Experimental");
    EXPECT_THAT(r.errores, HasSubstr("reintentos que quedan: 1"));
}

TEST_F(Dudas, ADownloadsReadingIsTriedAsOftenAsTheDownload) {
    callarEn(Intercambio::lectura, 50);
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, Not(HasSubstr("Se vuelve a empezar")));
}

// --- another device

TEST_F(Dudas, WhatAnswersAndIsNoLoggerIsToldWithTheWayToNameThePort) {
    const std::string remedio =
        ". Si lo que hay en COM3 es otro aparato, dé el puerto del registrador con --com 3=DISPOSITIVO "
        "(\"telvane-cli puertos\" los muestra)\n";
    callarEn(Intercambio::lectura, 1);
    auto r = correr({"configuracion"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("revise el cable y la alimentación, y repita" + remedio));
    // One that never stops talking.
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio != Intercambio::reposo) efecto.bytes.assign(20, '$');
        return efecto;
    });
    r = correr({"descargar", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("el registrador envió bytes de más. Revise el cable y el adaptador, y "
                                     "repita" +
                                     remedio));
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        return saliente.indice == 30 && saliente.numero >= kBytesMarco ? Efecto{}
                                                                       : Efecto::pasar(saliente.byte);
    });
    r = correr({"en-linea", "--cuenta", "1"});
    EXPECT_THAT(
        r.errores,
        HasSubstr("ninguna lectura llega entera: revise el cable y el adaptador, y repita" + remedio));
}

// The cable of this machine is not to blame for what lies beyond the network.
TEST_F(Dudas, AServersPortIsToldWithWhatStandsBeforeIt) {
    const std::vector<std::string> enRed = {"--com", "3=tcp://192.0.2.1:4001"};
    const auto correrEnRed = [&](std::vector<std::string> orden) {
        orden.insert(orden.begin(), enRed.begin(), enRed.end());
        return correr(orden);
    };
    callarEn(Intercambio::lectura, 50);
    EXPECT_THAT(
        correrEnRed({"configuracion"}).errores,
        HasSubstr("a mitad de la comunicación: revise la red, el servidor de puertos y su dirección, y el "
                  "cable y la alimentación del registrador, y repita"));
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        return saliente.indice == 30 && saliente.numero >= kBytesMarco ? Efecto{}
                                                                       : Efecto::pasar(saliente.byte);
    });
    EXPECT_THAT(
        correrEnRed({"en-linea", "--cuenta", "1"}).errores,
        HasSubstr("ninguna lectura llega entera: revise el servidor de puertos y el cable que va de él al "
                  "registrador, y repita"));
    puertos.manipular(kPuerto, [](const ByteSaliente&) { return Efecto{}; });
    auto r = correrEnRed({"buscar"});
    EXPECT_EQ(r.codigo, CodigoSalida::sinRegistrador);
    EXPECT_THAT(r.errores,
                HasSubstr("no hay conexión con el registrador: revise la red, el servidor de puertos y su "
                          "dirección"));
    EXPECT_THAT(
        correr({"buscar"}).errores,
        HasSubstr("no hay conexión con el registrador: revise el cable y la alimentación, y los puertos"));
}

TEST_F(Dudas, OneBlockIsToldAsOne) {
    callarEn(Intercambio::descarga, 2 + kBytesBloque);
    EXPECT_THAT(correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0"}).errores,
                HasSubstr("queda 1 de 4096 bloques"));
}

TEST_F(Dudas, WhatHasAnsweredAsALoggerIsOne) {
    callarEn(Intercambio::descarga, 5000);
    auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, Not(HasSubstr("otro aparato")));
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        return saliente.indice == 30 && saliente.numero >= 3 * kBytesMarco ? Efecto{}
                                                                           : Efecto::pasar(saliente.byte);
    });
    r = correr({"en-linea", "--cuenta", "5"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("ninguna lectura llega entera"));
    EXPECT_THAT(r.errores, Not(HasSubstr("otro aparato")));
}

// --- the serial number of a download

TEST_F(Dudas, TheImagesOwnSerialNumberDecidesTheColumns) {
    danarLectura(1, registro_config::kSerie + 3, 0x0F);
    danarLectura(1, registro_config::kSerie + 1, 0x80);
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--csv", carpeta / "a.csv"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("dice Nro 02880050 y la memoria, Nro 02080050: vale el de la memoria"));
    const auto csv = leerTodo(carpeta / "a.csv");
    EXPECT_THAT(csv, HasSubstr(",Eva parcial[mm]\r\n"));
    EXPECT_THAT(csv, HasSubstr("Nro  : 02080050\r\n"));
}

TEST_F(Dudas, AnImageWithAnotherNumberThanWasAskedForIsABrokenDownload) {
    const auto imagen = puertos.maquina(kPuerto).imagen();
    danarDescarga(1, registro_config::kSerie, 0x30);
    const auto r =
        correr({"descargar", "--base", carpeta / "a.rgt", "--serie", "02080050", "--reintentos", "1"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("la memoria descargada lleva el Nro 32080050, no el 02080050"));
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt") == comoTexto(imagen));
}

TEST_F(Dudas, OneDamagedReadingRefusesNoLoggerThatWasAskedFor) {
    danarLectura(1, registro_config::kSerie + 1, 0x81);
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--serie", "02080050"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
}

TEST_F(Dudas, AnImageThatKeepsBearingAnotherNumberTakesNoNameAndIsKept) {
    danarDescarga(0, registro_config::kSerie, 0x30);
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--csv", carpeta / "a.csv", "--ficha",
                           carpeta / "a.json", "--serie", "02080050", "--reintentos", "1"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_EQ(descargas, 2U);
    EXPECT_THAT(r.errores, HasSubstr("la memoria descargada lleva el Nro 32080050, no el 02080050"));
    EXPECT_THAT(r.errores, HasSubstr("quedan 4096 de 4096 bloques"));
    EXPECT_THAT(nombresEn(carpeta.ruta()), testing::ElementsAre("a.rgt.parcial"));
    // Whoever asks for no number gets it.
    EXPECT_EQ(correr({"descargar", "--base", carpeta / "a.rgt"}).codigo, CodigoSalida::hecho);
}

TEST_F(Dudas, TheImagesOwnTextsAndIntervalStandInTheTable) {
    danarLectura(1, registro_config::kUbicacion, 0x01);
    auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--csv", carpeta / "a.csv"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("no dicen lo mismo (ubicacion): vale lo de la memoria"));
    danarLectura(1, registro_config::kIntervalo, 0x11);
    r = correr({"descargar", "--base", carpeta / "b.rgt", "--csv", carpeta / "b.csv"});
    EXPECT_THAT(r.errores, HasSubstr("no dicen lo mismo (intervalo): vale lo de la memoria"));
    puertos.manipular(kPuerto, {});
    r = correr({"descargar", "--base", carpeta / "c.rgt", "--csv", carpeta / "c.csv"});
    EXPECT_THAT(r.errores, Not(HasSubstr("no dicen lo mismo")));
    // The moment of the table stands above its header.
    const auto cabecera = [&](const char* nombre) {
        const auto csv = leerTodo(carpeta / nombre);
        const auto desde = csv.find("Muestras cada");
        return csv.substr(desde, csv.find("Fecha,") - desde);
    };
    EXPECT_EQ(cabecera("a.csv"), cabecera("c.csv"));
    EXPECT_EQ(cabecera("b.csv"), cabecera("c.csv"));
}

// --- live readings

class Vivas : public Dudas {
   protected:
    // Something happens to one byte of one frame, counted from the first that is asked for after the probe.
    void enElMarco(std::size_t marco, std::size_t lugar, std::function<Efecto(std::uint8_t)> efecto) {
        puertos.manipular(kPuerto, [=](const ByteSaliente& saliente) {
            const bool este = saliente.numero == (marco + 1) * kBytesMarco + lugar;
            return este ? efecto(saliente.byte) : Efecto::pasar(saliente.byte);
        });
    }
    std::string limpias() {
        puertos.manipular(kPuerto, {});
        return correr(orden()).salida;
    }
    static std::vector<std::string> orden() { return {"en-linea", "--cuenta", "5"}; }
};

TEST_F(Vivas, ALostByteCostsOneReadingMoreAndIsTold) {
    const auto bien = limpias();
    enElMarco(1, 7, [](std::uint8_t) { return Efecto{}; });
    const auto r = correr(orden());
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("lectura repetida (1 desde el comienzo): llegaron 30 bytes de 31"));
    EXPECT_EQ(veces(r.salida, "[RH%]="), 5U);
    EXPECT_THAT(r.salida, Not(HasSubstr("[RH%]=-")));
    EXPECT_EQ(veces(bien, "[RH%]="), 5U);
}

TEST_F(Vivas, AByteTooManyCostsOneReadingMoreAndIsTold) {
    enElMarco(1, 0, [](std::uint8_t byte) {
        Efecto efecto = Efecto::pasar(0x42);
        efecto.bytes.push_back(byte);
        return efecto;
    });
    const auto r = correr(orden());
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("llegaron 32 bytes de 31"));
    EXPECT_EQ(veces(r.salida, "[RH%]="), 5U);
}

// Between two frames nobody asked for anything.
TEST_F(Vivas, AByteBetweenTwoFramesShiftsNothing) {
    const auto bien = limpias();
    const auto ruido =
        bucle.alarma(1500ms, [this] { puertos.inyectar(kPuerto, std::vector<std::uint8_t>{0x55}); });
    const auto r = correr(orden());
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(veces(r.salida, "[RH%]="), 5U);
    for (const auto* canal : {"Temp[ºC]=", "Presion Atm [kPa]="}) {
        EXPECT_EQ(r.salida.substr(r.salida.rfind(canal), 30), bien.substr(bien.rfind(canal), 30));
    }
}

TEST_F(Vivas, AnImpossibleValueIsAskedForAgain) {
    enElMarco(2, marco::kTemperatura, [](std::uint8_t byte) { return Efecto::pasar(byte | 0x80); });
    const auto r = correr(orden());
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("trae un valor que ningún sensor da"));
    EXPECT_THAT(r.salida, Not(HasSubstr("Temp[ºC]=-")));
}

// A sensor that is broken for good is the logger's own word.
TEST_F(Vivas, AnImpossibleValueThatStaysIsShownAndToldOnce) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        const bool temperatura = saliente.indice == marco::kTemperatura;
        return Efecto::pasar(temperatura ? 0x80 : saliente.byte);
    });
    const auto r = correr(orden());
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(veces(r.salida, "[RH%]="), 5U);
    EXPECT_EQ(veces(r.errores, "se muestra como llega"), 1U);
}

TEST_F(Vivas, ALineThatNeverBringsAWholeFrameEndsAsAFailure) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        return saliente.indice == 30 && saliente.numero >= kBytesMarco ? Efecto{}
                                                                       : Efecto::pasar(saliente.byte);
    });
    const auto r = correr(orden());
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("ninguna lectura llega entera: revise el cable"));
    EXPECT_EQ(r.salida, "");
}

TEST_F(Vivas, AMonitorOfDaysOutlivesALineThatLosesAByteAnHour) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        return saliente.numero % (kBytesMarco * 60) == 100 ? Efecto{} : Efecto::pasar(saliente.byte);
    });
    const auto r = correr({"en-linea", "--cuenta", "4320", "--cada", "60", "--json"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores.substr(0, 500);
    EXPECT_EQ(std::count(r.salida.begin(), r.salida.end(), '\n'), 4320);
    EXPECT_THAT(r.errores, HasSubstr("lectura repetida (70 desde el comienzo)"));
}

// Bytes of every frame, the probe's answer included, that come late, and what follows them with them.
class VivasTardias : public Vivas {
   protected:
    // de: what else becomes of a byte.
    void tardar(std::size_t lugar, std::chrono::milliseconds demora,
                std::function<void(const ByteSaliente&, Efecto&)> ademas = {}) {
        puertos.manipular(kPuerto, [=, this](const ByteSaliente& saliente) {
            marco_.at(saliente.indice) = saliente.byte;
            if (saliente.indice + 1 == kBytesMarco)
                enviados_.insert(marcoParaPersonas(decodificarMarco(marco_)));
            auto efecto = Efecto::pasar(saliente.byte);
            if (saliente.indice == lugar) efecto.demora = demora;
            if (ademas) ademas(saliente, efecto);
            return efecto;
        });
    }
    // Each reading is a frame as the logger sent it.
    void esperarEnPaso(const Resultado& r, std::size_t cuantas) {
        EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
        EXPECT_THAT(r.errores, Not(HasSubstr("insiste")));
        std::size_t mostradas = 0;
        for (std::size_t desde = 0; desde < r.salida.size(); ++mostradas) {
            const auto hasta = r.salida.find("\n\n", desde);
            ASSERT_NE(hasta, std::string::npos);
            const auto lectura = r.salida.substr(desde, hasta + 2 - desde);
            EXPECT_TRUE(enviados_.contains(lectura)) << mostradas << ":\n" << lectura << r.errores;
            desde = hasta + 2;
        }
        EXPECT_EQ(mostradas, cuantas);
    }

   private:
    std::array<std::uint8_t, kBytesMarco> marco_{};
    std::set<std::string> enviados_;
};

class CadaTardanza : public VivasTardias, public testing::WithParamInterface<std::tuple<std::size_t, int>> {};

TEST_P(CadaTardanza, EveryReadingIsInStepAndNoneIsAskedForTwice) {
    const auto [lugar, demora] = GetParam();
    tardar(lugar, std::chrono::milliseconds(demora));
    const auto r = correr(orden());
    esperarEnPaso(r, 5);
    EXPECT_EQ(r.errores, "");
}

// One byte too many in the second frame that is asked for: what is late of it would be the next one's first.
TEST_P(CadaTardanza, ALostStepIsFoundAgain) {
    const auto [lugar, demora] = GetParam();
    for (const std::size_t sobra : {0U, 5U, 30U}) {
        SCOPED_TRACE(sobra);
        tardar(lugar, std::chrono::milliseconds(demora),
               [sobra](const ByteSaliente& saliente, Efecto& efecto) {
                   if (saliente.numero == 2 * kBytesMarco + sobra) efecto.bytes.insert(0, 1, 0x42);
               });
        esperarEnPaso(correr(orden()), 5);
    }
}

INSTANTIATE_TEST_SUITE_P(DelFinal, CadaTardanza,
                         testing::Combine(testing::Values(28U, 29U, 30U),
                                          testing::Values(150, 300, 500, 900, 1500)),
                         [](const auto& caso) {
                             return fmt::format("Byte{}Tras{}", std::get<0>(caso.param),
                                                std::get<1>(caso.param));
                         });

// Beyond the limit a frame counts as incomplete, and what came of it is no part of the next.
TEST_F(VivasTardias, AByteBeyondTheLimitIsNoPartOfTheNextFrame) {
    tardar(kBytesMarco, 0ms, [](const ByteSaliente& saliente, Efecto& efecto) {
        if (saliente.numero == 2 * kBytesMarco + 30) efecto.demora = 3500ms;
    });
    const auto r = correr(orden());
    esperarEnPaso(r, 5);
    EXPECT_THAT(r.errores, HasSubstr("lectura repetida (1 desde el comienzo): llegaron 30 bytes de 31"));
}

TEST_F(VivasTardias, AHealthyLoggerGivesOneReadingAPeriod) {
    tardar(kBytesMarco, 0ms);
    const auto r = correr(orden());
    esperarEnPaso(r, 5);
    EXPECT_LT(r.duracion, 4500ms);
}

// --- what is shown

TEST_F(Dudas, ControlCharactersOfTheLoggerReachNoTerminal) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        constexpr std::string_view kMalo = "a\x1b[2J\x7f\x9d\x81\nb";
        const auto desde = kAcuses + registro_config::kUsuario;
        if (saliente.intercambio != Intercambio::lectura || saliente.indice < desde ||
            saliente.indice >= desde + kMalo.size())
            return Efecto::pasar(saliente.byte);
        return Efecto::pasar(static_cast<std::uint8_t>(kMalo[saliente.indice - desde]));
    });
    const auto r = correr({"configuracion"});
    EXPECT_THAT(r.salida, HasSubstr("Usuario: a[2Jb"));
    for (const char c : {'\x1b', '\x7f', '\x9d', '\x81'}) EXPECT_EQ(r.salida.find(c), std::string::npos);
    const auto json = correr({"configuracion", "--json"}).salida;
    EXPECT_THAT(json, HasSubstr("a\\u001b[2J\\u007f\\u009d\\u0081\\nb"));
    const auto cambio = correr({"configurar", "--usuario", "Otro"});
    EXPECT_THAT(cambio.errores, HasSubstr("Usuario: \"a[2Jb"));
    EXPECT_EQ(cambio.errores.find('\x1b'), std::string::npos);
}

TEST_F(Dudas, WhatAdaptersCallThemselvesReachesNoTerminal) {
    int maestro = -1;
    int esclavo = -1;
    std::array<char, 128> nombre{};
    ASSERT_EQ(::openpty(&maestro, &esclavo, nombre.data(), nullptr, nullptr), 0);
    const auto clase = carpeta / "sys/class/tty" / std::filesystem::path(nombre.data()).filename();
    std::filesystem::create_directories(clase / "device");
    std::ofstream(clase / "device/idVendor") << "0403\n";
    std::ofstream(clase / "device/product") << "UART\x1b]0;mal\x07\x9b\x7f\n";
    const auto com = std::string("1=") + nombre.data();
    const auto r = correr({"puertos", "--com", com});
    EXPECT_THAT(r.salida, HasSubstr("UART]0;mal"));
    for (const char c : {'\x1b', '\x07', '\x7f', '\x9b'}) EXPECT_EQ(r.salida.find(c), std::string::npos);
    const auto json = correr({"puertos", "--json", "--com", com}).salida;
    EXPECT_THAT(json, HasSubstr("UART\\u001b]0;mal\\u0007"));
    EXPECT_EQ(json.find('\x7f'), std::string::npos);
    ::close(maestro);
    ::close(esclavo);
}

// A table of it as well, which is a file's text otherwise.
TEST_F(Dudas, WhatALoggerSaysGivesNoOrdersToATerminalThatATableGoesTo) {
    auto parte = comoTexto(puertos.maquina(kPuerto).imagen()).substr(0, 512);
    parte.replace(4, 6, "a\x1b[2J\x7f");
    std::ofstream(carpeta / "a.rgt", std::ios::binary) << parte;
    EXPECT_THAT(correr({"convertir", carpeta / "a.rgt", "-"}).salida, HasSubstr("a\x1b[2J\x7f"));
    int maestro = -1;
    ASSERT_EQ(::openpty(&maestro, &salidaAjena.emplace(), nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(correr({"convertir", carpeta / "a.rgt", "-"}).codigo, CodigoSalida::hecho);
    std::string visto(4096, '\0');
    const auto n = ::read(maestro, visto.data(), visto.size());
    ASSERT_GT(n, 0);
    visto.resize(static_cast<std::size_t>(n));
    EXPECT_THAT(visto, HasSubstr("Usuario:  a[2J"));
    EXPECT_THAT(visto, HasSubstr("\r\nUbicacion : "));
    for (const char c : {'\x1b', '\x7f'}) EXPECT_EQ(visto.find(c), std::string::npos);
    ::close(maestro);
    ::close(*salidaAjena);
}

TEST_F(Dudas, ABackupWithoutItsFolderIsToldBeforeTheLoggerHearsAnything) {
    const auto rehusa = [&](const std::string& queja) {
        const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria"});
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_THAT(r.errores, HasSubstr(queja));
        EXPECT_EQ(puertos.aperturas(kPuerto), 0U);
    };
    ASSERT_EQ(::setenv("XDG_DATA_HOME", "/dev/null", 1), 0);
    rehusa(
        "no se pudo crear la carpeta /dev/null/telvane: una parte de la ruta no es una carpeta. Revise la "
        "ruta; indique "
        "--respaldo ARCHIVO");
    ::unsetenv("XDG_DATA_HOME");
    const char* antes = ::getenv("HOME");
    const auto casa = antes ? std::optional<std::string>(antes) : std::nullopt;
    ASSERT_EQ(::setenv("HOME", "relativa", 1), 0);
    rehusa("no hay carpeta de datos para el respaldo");
    casa ? ::setenv("HOME", casa->c_str(), 1) : ::unsetenv("HOME");
}

}  // namespace
}  // namespace telvane
