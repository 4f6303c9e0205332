// Files of the console tool: what may be written where, and what is left of what was there before.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <csignal>
#include <optional>
#include <thread>

#include <fmt/format.h>

#include "cli/archivo_parcial.h"
#include "data/archivo_base.h"
#include "platform/descriptor.h"
#include "platform/texto_visible.h"
#include "tests/apoyo/disco_chico.h"
#include "tests/apoyo/usuario_corriente.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

class Archivos : public CliPrueba {
   protected:
    std::string imagen() { return comoTexto(puertos.maquina(kPuerto).imagen()); }
    fs::path poner(const std::string& nombre, const std::string& bytes = "viejo") {
        std::ofstream(carpeta / nombre, std::ios::binary) << bytes;
        return carpeta / nombre;
    }
    std::string parcial() { return leerTodo(carpeta / "a.rgt.parcial"); }
    Resultado descargar() { return correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0"}); }
    // The next download stops before this block, and something else is done before that one.
    void cortarEn(std::size_t bloque, std::size_t antesDe = kBloquesMemoria,
                  const std::function<void()>& hacer = {}) {
        puertos.manipular(kPuerto, [=, this, hecho = false](const ByteSaliente& saliente) mutable {
            auto efecto = Efecto::pasar(saliente.byte);
            if (saliente.intercambio != Intercambio::descarga) return efecto;
            enviados = saliente.indice;
            if (saliente.indice == 2 + antesDe * kBytesBloque) hacer();
            efecto.callar = !hecho && saliente.indice == 2 + bloque * kBytesBloque;
            hecho = hecho || efecto.callar;
            return efecto;
        });
    }
    std::size_t enviados = 0;  // bytes of the last download that left the logger
    // oidas: openings of the port that came before.
    std::size_t oidas = 0;
    void esperarRehusado(const Resultado& r, CodigoSalida codigo, const std::string& motivo) {
        EXPECT_EQ(r.codigo, codigo) << r.errores;
        EXPECT_THAT(r.errores, HasSubstr(motivo));
        EXPECT_EQ(puertos.aperturas(kPuerto), oidas) << "the logger heard something";
    }
};

TEST_F(Archivos, ABackupNeverReplacesWhatIsThere) {
    poner("antes.rgt");
    const auto r =
        correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", carpeta / "antes.rgt"});
    esperarRehusado(r, CodigoSalida::fallo,
                    noGuardado(carpeta / "antes.rgt", "ya existe. Dé otro nombre").what());
    EXPECT_EQ(leerTodo(carpeta / "antes.rgt"), "viejo");
}

TEST_F(Archivos, ABackupIsAFileThatCanBeFoundAgain) {
    const auto respaldar = [&](const std::string& donde) {
        return correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", donde});
    };
    esperarRehusado(respaldar("-"), CodigoSalida::malUso, "--respaldo necesita un archivo");
    esperarRehusado(respaldar("/dev/stdout"), CodigoSalida::malUso, "--respaldo necesita un archivo");
    ASSERT_EQ(::mkfifo((carpeta / "tubo").c_str(), 0600), 0);
    esperarRehusado(respaldar(carpeta / "tubo"), CodigoSalida::fallo, "no es un archivo normal");
    esperarRehusado(respaldar(carpeta / "no/x.rgt"), CodigoSalida::fallo, "no existe la carpeta");
}

TEST_F(Archivos, ABaseFileIsANewFileUnlessSomebodySaysOtherwise) {
    poner("a.rgt");
    const auto r = descargar();
    esperarRehusado(r, CodigoSalida::fallo, "ya existe. Dé otro nombre, o --reemplazar");
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), "viejo");
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt"));
    EXPECT_EQ(correr({"descargar", "--reemplazar", "--base", carpeta / "a.rgt"}).codigo, CodigoSalida::hecho);
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt") == imagen());
}

TEST_F(Archivos, WhereTheSystemKeepsNoFilesIsToldBeforeTheLoggerHearsAnything) {
    const std::string base = carpeta / "a.rgt";
    const std::string csv = "/proc/x.csv";
    esperarRehusado(correr({"descargar", "--base", base, "--csv", csv}), CodigoSalida::fallo,
                    noGuardado(csv, "ahí el sistema no guarda archivos; dé otra carpeta").what());
}

// Somebody else's download was faster.
TEST_F(Archivos, ABaseFileThatAppearsMeanwhileStaysAndTheDownloadIsKept) {
    puertos.manipular(kPuerto, [this](const ByteSaliente& saliente) {
        if (saliente.intercambio == Intercambio::descarga && saliente.indice == 5000) poner("a.rgt");
        return Efecto::pasar(saliente.byte);
    });
    const auto r = descargar();
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr(noGuardado(carpeta / "a.rgt", "ya existe").what()));
    EXPECT_THAT(r.errores, HasSubstr("quedan 4096 de 4096 bloques"));
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), "viejo");
    EXPECT_TRUE(parcial() == imagen());
}

TEST_F(Archivos, TheNameOfABackupIsFreeAlsoWithinOneSecond) {
    const FechaHora momento{2026, 11, 21, std::chrono::hours(2)};
    const auto primera = rutaBaseLibre(carpeta.ruta(), "02080050", momento);
    EXPECT_EQ(primera.filename(), "02080050_20261121_020000.rgt");
    poner("02080050_20261121_020000.rgt");
    fs::create_symlink("nada", carpeta / "02080050_20261121_020000_2.rgt");
    EXPECT_EQ(rutaBaseLibre(carpeta.ruta(), "02080050", momento).filename(),
              "02080050_20261121_020000_3.rgt");
}

// The next download of a.rgt would take it for its own part, and end it.
TEST_F(Archivos, ABaseFileNeverTakesTheNameOfAPartOfOne) {
    for (const std::string nombre : {"a.rgt.parcial", "a.rgt.parcial.anterior", "nuevo.PARCIAL"}) {
        const auto ruta = poner(nombre);
        const std::vector<std::string> ordenes[] = {
            {"descargar", "--base", ruta},
            {"descargar", "--base", ruta, "--reemplazar"},
            {"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", ruta}};
        for (const auto& orden : ordenes)
            esperarRehusado(correr(orden), CodigoSalida::malUso,
                            "son de otra clase de archivo. Dé otro nombre\n");
        EXPECT_EQ(leerTodo(ruta), "viejo");
    }
}

TEST_F(Archivos, ATableNeverTakesTheNameOfABaseFile) {
    const auto a = poner("a.rgt", imagen()).string();
    const auto b = poner("b.rgt").string();
    fs::create_symlink("b.rgt", carpeta / "b.csv");
    for (const auto& salida : {b, (carpeta / "c.RGT").string(), (carpeta / "b.csv").string(),
                               (carpeta / "b.rgt.parcial").string(), (carpeta / "x.anterior").string()}) {
        const auto r = correr({"convertir", a, salida});
        EXPECT_EQ(r.codigo, CodigoSalida::malUso) << salida;
        EXPECT_THAT(r.errores, HasSubstr("son de otra clase de archivo")) << salida;
        esperarRehusado(correr({"descargar", "--base", carpeta / "d.rgt", "--csv", salida}),
                        CodigoSalida::malUso, "son de otra clase de archivo");
    }
    EXPECT_EQ(leerTodo(b), "viejo");
    EXPECT_THAT(nombresEn(carpeta.ruta()), UnorderedElementsAre("a.rgt", "b.rgt", "b.csv"));
}

TEST_F(Archivos, ATableTakesNoMemorysPlaceWhateverItsName) {
    const auto a = poner("a.rgt", imagen()).string();
    for (const auto largo : {std::size_t{64}, std::size_t{6400}, std::size_t{100'000}, kBytesMemoria}) {
        const auto otra = poner("estacion", imagen().substr(0, largo));
        const auto r = correr({"convertir", a, otra.string()});
        EXPECT_EQ(r.codigo, CodigoSalida::malUso);
        EXPECT_THAT(r.errores, HasSubstr("estacion: ahí está lo que parece un archivo base"));
        for (const std::string opcion : {"--csv", "--ficha"}) {
            esperarRehusado(correr({"descargar", "--base", carpeta / "d.rgt", opcion, otra, "--reemplazar"}),
                            CodigoSalida::malUso, "ahí está lo que parece un archivo base");
        }
        EXPECT_TRUE(leerTodo(otra) == imagen().substr(0, largo));
    }
    EXPECT_EQ(correr({"convertir", a, poner("larga", imagen() + imagen()).string()}).codigo,
              CodigoSalida::malUso);
    // Nor that of one whose number the line has spoilt.
    for (const auto& serie : {std::string("\x02\x0A\x00\x50", 4), std::string("\xAA\xBC\xDE\xFA"),
                              std::string("\x02\xFF\xFF\xFF")}) {
        for (const auto largo : {std::size_t{6400}, kBytesMemoria}) {
            const auto danada = imagen().replace(0, serie.size(), serie).substr(0, largo);
            const auto otra = poner("estacion", danada);
            EXPECT_EQ(correr({"convertir", a, otra.string()}).codigo, CodigoSalida::malUso) << largo;
            EXPECT_TRUE(leerTodo(otra) == danada);
        }
    }
    const auto vacia = poner("estacion", std::string(kBytesMemoria, '\xFF'));
    EXPECT_EQ(correr({"convertir", a, vacia.string()}).codigo, CodigoSalida::malUso);
    // What a spreadsheet program made of an earlier table is a table.
    for (const std::string comienzo : {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", "PK\x03\x04"}) {
        const auto hoja = poner("hoja.xls", comienzo + std::string(512 - comienzo.size(), '\0'));
        EXPECT_EQ(correr({"convertir", a, hoja.string()}).codigo, CodigoSalida::hecho);
    }
    // The texts of a logger that nobody configured are no text, and stand in its table.
    auto sinTextos = imagen();
    sinTextos.replace(4, 100, 100, '\0');
    const auto b = poner("b.rgt", sinTextos).string();
    for (int vez = 0; vez < 2; ++vez)
        EXPECT_EQ(correr({"convertir", b, carpeta / "b.csv"}).codigo, CodigoSalida::hecho) << vez;
    EXPECT_EQ(correr({"convertir", a, poner("otra", sinTextos).string()}).codigo, CodigoSalida::malUso);
    // A text of a memory's length is a text.
    const auto tabla = poner("tabla", std::string(kBytesMemoria, 'x'));
    EXPECT_EQ(correr({"convertir", a, tabla.string()}).codigo, CodigoSalida::hecho);
    EXPECT_EQ(correr({"convertir", a, poner("nada", "").string()}).codigo, CodigoSalida::hecho);
}

// What it tells of a download stands nowhere else.
TEST_F(Archivos, ADataSheetsPlaceIsTakenByAnotherOneOnly) {
    const std::string base = carpeta / "a.rgt";
    const std::string ficha = carpeta / "a.rgt.json";
    ASSERT_EQ(correr({"descargar", "--base", base, "--ficha", ficha}).codigo, CodigoSalida::hecho);
    oidas = puertos.aperturas(kPuerto);
    const auto dicha = leerTodo(ficha);
    const auto motivo =
        noGuardado(ficha, "ahí está la ficha de una descarga; quítela de ahí, o dé otro nombre");
    const auto r = correr({"convertir", base, ficha});
    EXPECT_EQ(r.codigo, CodigoSalida::malUso);
    EXPECT_THAT(r.errores, HasSubstr(motivo.what()));
    esperarRehusado(correr({"descargar", "--base", carpeta / "b.rgt", "--csv", ficha}), CodigoSalida::malUso,
                    motivo.what());
    EXPECT_EQ(leerTodo(ficha), dicha);
    // Somebody tidied it up; and a table of samples is none, whatever a station's name says.
    poner("otra.json", R"( {"errores_de_linea": 0, "descargada": "2026-01-02T03:04:05Z"})");
    EXPECT_EQ(correr({"convertir", base, carpeta / "otra.json"}).codigo, CodigoSalida::malUso);
    poner("marcada.json", "\xEF\xBB\xBF" + dicha);
    EXPECT_EQ(correr({"convertir", base, carpeta / "marcada.json"}).codigo, CodigoSalida::malUso);
    std::string ancha = "\xFF\xFE";
    for (const char c : dicha) ancha.append({c, '\0'});
    poner("ancha.json", ancha);
    EXPECT_EQ(correr({"convertir", base, carpeta / "ancha.json"}).codigo, CodigoSalida::malUso);
    poner("tabla.jsonl", R"({"usuario": "\"descargada\" y \"errores_de_linea\""})");
    EXPECT_EQ(correr({"convertir", base, carpeta / "tabla.jsonl"}).codigo, CodigoSalida::hecho);
    EXPECT_EQ(correr({"descargar", "--base", base, "--reemplazar", "--ficha", ficha}).codigo,
              CodigoSalida::hecho);
}

// Not even a memory's, whoever asked for that: a backup asks for nothing's place.
TEST_F(Archivos, NoMemoryTakesADataSheetsPlace) {
    const std::string ficha = carpeta / "a.rgt.json";
    ASSERT_EQ(correr({"descargar", "--base", carpeta / "a.rgt", "--ficha", ficha}).codigo,
              CodigoSalida::hecho);
    oidas = puertos.aperturas(kPuerto);
    const auto dicha = leerTodo(ficha);
    fs::create_symlink("a.rgt.json", carpeta / "enlace.rgt");
    poner("otra.json", R"( {"errores_de_linea": 0, "descargada": "2026-01-02T03:04:05Z"})");
    for (const std::string nombre : {"a.rgt.json", "enlace.rgt", "otra.json"}) {
        const std::string ruta = carpeta / nombre;
        const auto motivo =
            noGuardado(ruta, "ahí está la ficha de una descarga; quítela de ahí, o dé otro nombre\n");
        esperarRehusado(correr({"descargar", "--base", ruta}), CodigoSalida::malUso, motivo.what());
        esperarRehusado(correr({"descargar", "--base", ruta, "--reemplazar"}), CodigoSalida::malUso,
                        motivo.what());
        esperarRehusado(correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", ruta}),
                        CodigoSalida::fallo, noGuardado(ruta, "ya existe. Dé otro nombre").what());
    }
    EXPECT_TRUE(leerTodo(ficha) == dicha);
    // A logger whose texts say the same is one.
    auto ajena = imagen();
    ajena.replace(4, 31, R"("descargada""errores_de_linea" )");
    const auto otra = poner("otra.rgt", ajena).string();
    EXPECT_EQ(correr({"descargar", "--base", otra, "--reemplazar"}).codigo, CodigoSalida::hecho);
}

// It says of another download what stands nowhere else, and a text is somebody's.
TEST_F(Archivos, ADataSheetIsANewFile) {
    const auto ficha = (carpeta / "a.rgt.json").string();
    const auto pedir = [&](std::vector<std::string> mas) {
        mas.insert(mas.begin(), {"descargar", "--base", carpeta / "b.rgt", "--ficha"});
        return correr(mas);
    };
    ASSERT_EQ(correr({"descargar", "--base", carpeta / "a.rgt", "--ficha", ficha}).codigo,
              CodigoSalida::hecho);
    oidas = puertos.aperturas(kPuerto);
    const auto dicha = leerTodo(ficha);
    const auto nota = poner("nota.txt", "mirar el cable\n").string();
    esperarRehusado(pedir({ficha}), CodigoSalida::malUso, "ya existe. Dé otro nombre, o --reemplazar");
    EXPECT_EQ(leerTodo(ficha), dicha);
    // What --reemplazar does not replace either is told as itself.
    for (const auto& nombre : {nota, poner("nada", "").string()}) {
        const auto motivo = "ahí está lo que no es la ficha de una descarga";
        esperarRehusado(pedir({nombre}), CodigoSalida::malUso, motivo);
        esperarRehusado(pedir({nombre, "--reemplazar"}), CodigoSalida::malUso, motivo);
    }
    EXPECT_EQ(leerTodo(nota), "mirar el cable\n");
    EXPECT_EQ(pedir({ficha, "--reemplazar"}).codigo, CodigoSalida::hecho);
    EXPECT_THAT(leerTodo(ficha), HasSubstr("\"base\": \"b.rgt\""));
}

// The same order would be refused, or replace what it saved.
TEST_F(Archivos, WhatFailsBehindAWholeBaseFileSaysThatNothingIsToBeDownloadedAgain) {
    const std::string base = carpeta / "con blanco.rgt";
    const auto estorbar = [&](const std::string& nombre) {
        fs::remove_all(carpeta.ruta());
        fs::create_directory(carpeta.ruta());
        puertos.manipular(kPuerto, [this, nombre](const ByteSaliente& saliente) {
            if (saliente.intercambio == Intercambio::descarga && saliente.indice == 5000)
                fs::create_directory(carpeta / nombre);
            return Efecto::pasar(saliente.byte);
        });
    };
    const auto entera = fmt::format(". No hace falta descargar otra vez: la memoria está entera en {}", base);
    const auto planilla = [&](const std::string& opciones, const std::string& tabla) {
        return fmt::format(". Haga la planilla con \"telvane-cli convertir{} '{}' {}\"\n", opciones, base,
                           tabla);
    };
    const auto fallar = [&](std::vector<std::string> mas, const std::string& motivo) {
        mas.insert(mas.begin(), {"descargar", "--base", base});
        const auto r = correr(mas);
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_THAT(r.errores, HasSubstr("Archivo base: " + base + "\n"));
        EXPECT_THAT(r.errores, EndsWith(motivo));
        EXPECT_TRUE(leerTodo(base) == imagen());
    };
    const std::string csv = carpeta / "a.csv";
    const std::string xls = carpeta / "a.xls";
    const std::string ficha = carpeta / "a.json";
    const std::string esCarpeta = ": es una carpeta. Dé el nombre de un archivo";
    estorbar("a.csv");
    fallar({"--csv", csv, "--ficha", ficha}, csv + esCarpeta + entera + planilla("", csv));
    EXPECT_TRUE(fs::exists(ficha));
    estorbar("a.xls");
    fallar({"--csv", xls, "--perfil", "ampliado"},
           xls + esCarpeta + entera + planilla(" --formato csv --perfil ampliado", xls));
    estorbar("a.json");
    fallar({"--ficha", ficha}, ficha + esCarpeta + entera + ", y vale sin la ficha\n");
    estorbar("a.json");
    fallar({"--ficha", ficha, "--csv", csv},
           ficha + esCarpeta + entera + ", y vale sin la ficha" + planilla("", csv));
    // Nor where it is the output that fails.
    estorbar("nada");
    const Descriptor lleno(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    salidaAjena = lleno();
    fallar({"--csv", "-"},
           ": no queda espacio en el disco. Haga sitio y repita" + entera + planilla("", "-"));
    salidaAjena.reset();
    // Where the memory went through the output, nobody knows who has it.
    estorbar("a.csv");
    EXPECT_THAT(correr({"descargar", "--base", "-", "--csv", csv}).errores, EndsWith(esCarpeta + "\n"));
    // What the order says is done.
    puertos.manipular(kPuerto, {});
    ASSERT_EQ(correr({"descargar", "--base", base, "--csv", carpeta / "b.csv"}).codigo, CodigoSalida::hecho);
    EXPECT_EQ(correr({"convertir", base, carpeta / "c.csv"}).codigo, CodigoSalida::hecho);
    // But for the lines above them.
    const auto muestras = [this](const std::string& nombre) {
        const auto tabla = leerTodo(carpeta / nombre);
        return tabla.substr(tabla.find("\n20/11/2018"));
    };
    EXPECT_TRUE(muestras("b.csv") == muestras("c.csv"));
}

TEST_F(Archivos, WhileNobodyReadsAPipeThePortIsFreeAndThatIsSaid) {
    const auto tubo = (carpeta / "p.csv").string();
    ASSERT_EQ(::mkfifo(tubo.c_str(), 0600), 0);
    std::optional<bool> tomado;
    const auto mirada = bucle.alarma(std::chrono::minutes(5), [&] { tomado = puertos.abierto(kPuerto); });
    senalTras = {std::chrono::minutes(10), SIGINT};
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--csv", tubo});
    EXPECT_EQ(r.codigo, CodigoSalida::interrumpido);
    EXPECT_EQ(tomado, false);
    EXPECT_THAT(r.errores, HasSubstr("p.csv: se espera a quien lea esa tubería"));
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt") == imagen());
}

// A shell makes the file before the program begins.
TEST_F(Archivos, AnOutputThatLeadsToTheDownloadsPartIsRefused) {
    const Descriptor parte(::open((carpeta / "a.rgt.parcial").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    salidaAjena = parte();
    const std::string base = carpeta / "a.rgt";
    const std::vector<std::string> ordenes[] = {
        {"descargar", "--base", base, "--csv", "-"},
        {"descargar", "--base", base, "--ficha", "/dev/stdout"},
        {"descargar", "--base", base},
        {"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", base}};
    for (const auto& orden : ordenes)
        esperarRehusado(correr(orden), CodigoSalida::malUso, "la salida de la orden");
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt.parcial"));
    EXPECT_EQ(leerTodo(carpeta / "a.rgt.parcial"), "");
}

TEST_F(Archivos, AnOutputIsNeverOneOfTheInputsByAnyName) {
    const auto a = poner("a.bin", imagen());
    fs::create_hard_link(a, carpeta / "duro.csv");
    fs::create_symlink("a.bin", carpeta / "simbolico.csv");
    fs::create_directory(carpeta / "d");
    for (const auto& salida :
         {carpeta / "a.bin", carpeta / "d/../a.bin", carpeta / "duro.csv", carpeta / "simbolico.csv"}) {
        const auto r = correr({"convertir", a, salida});
        EXPECT_EQ(r.codigo, CodigoSalida::malUso) << salida;
        EXPECT_THAT(r.errores, HasSubstr("de ahí se lee lo que se guarda"));
    }
    // Of many, the output of one may be another one.
    const auto r = correr({"convertir", "--en", carpeta.ruta(), carpeta / "d/duro.rgt", a});
    EXPECT_THAT(r.errores, HasSubstr("no se pudo guardar " + carpeta.ruta().string() +
                                     "/duro.csv: de ahí se lee lo que se guarda"));
    EXPECT_TRUE(leerTodo(a) == imagen());
}

TEST_F(Archivos, TheOutputThatAShellAppendsToAnInputIsRefused) {
    // Also one that is no memory for sure.
    for (const auto& [contenido, porque] :
         {std::pair(imagen(), "ahí está lo que parece un archivo base"),
          std::pair(std::string("notas"), "de ahí se lee lo que se guarda")}) {
        const auto a = poner("a.rgt", contenido);
        const Descriptor abierto(::open(a.c_str(), O_RDWR | O_APPEND | O_CLOEXEC));
        salidaAjena = abierto();
        const auto r = correr({"convertir", a, "-"});
        EXPECT_EQ(r.codigo, CodigoSalida::malUso);
        EXPECT_THAT(r.errores, HasSubstr(std::string("la salida de la orden: ") + porque));
        EXPECT_TRUE(leerTodo(a) == contenido);
    }
}

TEST_F(Archivos, NothingIsSaidIntoAnInput) {
    const auto a = poner("a.rgt", imagen());
    const Descriptor abierto(::open(a.c_str(), O_RDWR | O_CLOEXEC));
    salidaAjena = abierto();
    const auto r = correr({"convertir", a, carpeta / "a.csv"});
    EXPECT_EQ(r.codigo, CodigoSalida::malUso);
    EXPECT_FALSE(fs::exists(carpeta / "a.csv"));
    EXPECT_TRUE(leerTodo(a) == imagen());
}

TEST_F(Archivos, TwoOutputsAreTwoFiles) {
    fs::create_directory(carpeta / "d");
    fs::create_directory_symlink("d", carpeta / "e");
    const auto juntos = [&](const fs::path& base, const fs::path& csv) {
        return correr({"descargar", "--base", base, "--csv", csv});
    };
    esperarRehusado(
        juntos(carpeta / "x", carpeta / "x"), CodigoSalida::malUso,
        "son el mismo archivo: " + (carpeta / "x").string() + "; dé otro nombre a uno de los dos");
    esperarRehusado(juntos(carpeta / "d/x", carpeta / "e/x"), CodigoSalida::malUso, "son el mismo archivo");
    poner("d/uno");
    fs::create_symlink("d/uno", carpeta / "otro");
    esperarRehusado(
        correr({"descargar", "--reemplazar", "--base", carpeta / "d/uno", "--csv", carpeta / "otro"}),
        CodigoSalida::malUso, "son el mismo archivo");
    EXPECT_EQ(leerTodo(carpeta / "d/uno"), "viejo");
}

TEST_F(Archivos, WhatCanBeKnownIsToldBeforeTheLoggerHearsAnything) {
    esperarRehusado(correr({"descargar", "--base", carpeta / "no/a.rgt"}), CodigoSalida::fallo,
                    noGuardado(carpeta / "no/a.rgt", "no existe la carpeta").what());
    esperarRehusado(correr({"descargar", "--base", carpeta / "a.rgt", "--csv", carpeta / "no/a.csv"}),
                    CodigoSalida::fallo, noGuardado(carpeta / "no/a.csv", "no existe la carpeta").what());
    esperarRehusado(correr({"descargar", "--base", carpeta.ruta()}), CodigoSalida::fallo, "es una carpeta");
    // Replacing is no way out where there is no file.
    EXPECT_THAT(correr({"descargar", "--base", carpeta.ruta()}).errores, Not(HasSubstr("--reemplazar")));
    const DiscoChico disco(carpeta / "disco");
    if (!disco.montado()) GTEST_SKIP() << "mounting is not permitted here";
    esperarRehusado(correr({"descargar", "--base", carpeta / "disco/a.rgt"}), CodigoSalida::fallo,
                    noGuardado(carpeta / "disco/a.rgt", "no queda espacio en el disco").what());
    ASSERT_TRUE(disco.soloLectura());
    esperarRehusado(correr({"descargar", "--base", carpeta / "disco/a.rgt"}), CodigoSalida::fallo,
                    "el disco es de solo lectura");
}

TEST_F(Archivos, TheLongestNameThereIsWillDo) {
    const std::string largo = std::string(251, 'n') + ".rgt";
    EXPECT_EQ(correr({"descargar", "--base", carpeta / largo}).codigo, CodigoSalida::hecho);
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre(largo));
    oidas = puertos.aperturas(kPuerto);
    esperarRehusado(correr({"descargar", "--base", carpeta / ("n" + largo)}), CodigoSalida::fallo,
                    "n" + largo + ": el nombre es demasiado largo");
}

// --- what is no file

class NoEsArchivo : public Archivos {
   protected:
    // What comes through a FIFO while the tool runs.
    std::string porTubo(const std::vector<std::string>& argumentos) {
        std::string todo;
        std::jthread lector([&] { todo = leerTodo(carpeta / "tubo"); });
        const auto r = correr(argumentos);
        EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
        lector.join();
        EXPECT_TRUE(fs::is_fifo(carpeta / "tubo"));
        return todo;
    }
};

TEST_F(NoEsArchivo, AFifoIsWrittenToAndStaysOne) {
    ASSERT_EQ(::mkfifo((carpeta / "tubo").c_str(), 0600), 0);
    EXPECT_TRUE(porTubo({"descargar", "--base", carpeta / "tubo"}) == imagen());
    poner("a.rgt", imagen());
    EXPECT_THAT(porTubo({"convertir", carpeta / "a.rgt", carpeta / "tubo"}),
                StartsWith(" Equipo Registrador VELTRA"));
    EXPECT_THAT(nombresEn(carpeta.ruta()), UnorderedElementsAre("tubo", "a.rgt"));
}

TEST_F(NoEsArchivo, ADeviceIsNotReplaced) {
    const auto nulo = carpeta / "nulo";
    if (::mknod(nulo.c_str(), S_IFCHR | 0666, makedev(1, 3)) != 0)
        GTEST_SKIP() << "making devices is not permitted here";
    EXPECT_EQ(correr({"descargar", "--base", nulo, "--csv", nulo}).codigo, CodigoSalida::hecho);
    EXPECT_TRUE(fs::is_character_file(nulo));
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("nulo"));
    const auto lleno = carpeta / "lleno";
    ASSERT_EQ(::mknod(lleno.c_str(), S_IFCHR | 0666, makedev(1, 7)), 0);
    const auto r = correr({"descargar", "--base", nulo, "--csv", lleno});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr(noGuardado(lleno, "no es un archivo normal. Dé otro nombre").what()));
    EXPECT_THAT(r.errores, Not(HasSubstr("se descarga la memoria"))) << "known before the logger is asked";
}

TEST_F(NoEsArchivo, TheOutputByItsOtherNamesIsTheOutput) {
    poner("a.rgt", imagen());
    const auto derecha = correr({"convertir", carpeta / "a.rgt", "-"}).salida;
    EXPECT_TRUE(correr({"convertir", carpeta / "a.rgt", "/dev/stdout"}).salida == derecha);
    entrada.llenar(imagen());
    EXPECT_TRUE(correr({"convertir", "/dev/stdin", "/dev/fd/1"}).salida == derecha);
    EXPECT_TRUE(correr({"descargar", "--base", "/dev/stdout"}).salida == imagen());
}

// --- what an earlier run left

class Parcial : public Archivos {
   protected:
    std::size_t bloques() { return parcial().size() / kBytesBloque; }
};

TEST_F(Parcial, OfAnotherLoggerIsSetAsideAndNeverOverAnEarlierOne) {
    for (const auto* serie : {"uno", "dos", "tres"}) {
        poner("a.rgt.parcial", serie + std::string(6400, 'x'));
        cortarEn(50);
        EXPECT_EQ(descargar().codigo, CodigoSalida::fallo);
        EXPECT_TRUE(parcial() == imagen().substr(0, 50 * kBytesBloque));
    }
    EXPECT_THAT(leerTodo(carpeta / "a.rgt.parcial.anterior"), StartsWith("uno"));
    EXPECT_THAT(leerTodo(carpeta / "a.rgt.parcial.2.anterior"), StartsWith("dos"));
    EXPECT_THAT(leerTodo(carpeta / "a.rgt.parcial.3.anterior"), StartsWith("tres"));
}

// Every length at which the system's longest name is near, and every place at which a character may stand.
TEST_F(Parcial, SetAsideUnderALongNameIsStillOne) {
    const auto letra = [](char c) {
        return std::vector<std::uint8_t>(kBytesBloque, static_cast<std::uint8_t>(c));
    };
    for (std::size_t largo = 240; largo <= 255; ++largo) {
        for (const std::string_view caracter : {"n", "ñ", "€", "𝄞"}) {
            const CarpetaTemporal lugar;
            std::string nombre((largo - 4) % caracter.size(), 'n');
            while (nombre.size() + 4 < largo) nombre += caracter;
            nombre += ".rgt";
            std::vector<std::string> apartados;
            for (const char c : {'a', 'b', 'c'}) {
                ArchivoParcial parcial(revisarDestino(lugar / nombre),
                                       [](auto, auto, auto) { return false; });
                if (const auto aparte = parcial.recibir(letra(c))) apartados.push_back(aparte->filename());
                EXPECT_THAT(parcial.ruta().filename().string(), EndsWith(".parcial"));
            }
            ASSERT_THAT(apartados,
                        ElementsAre(EndsWith(".parcial.anterior"), EndsWith(".parcial.2.anterior")))
                << nombre;
            for (const auto& apartado : apartados) {
                EXPECT_LE(apartado.size(), 255U) << nombre;
                EXPECT_EQ(utf8Valido(apartado), apartado);
                EXPECT_EQ(leerTodo(lugar / apartado), comoTexto(letra(apartado == apartados[0] ? 'a' : 'b')));
            }
            EXPECT_THAT(nombresEn(lugar.ruta()), testing::SizeIs(3));
        }
    }
}

TEST_F(Parcial, OfOtherContentIsSetAsideWhole) {
    auto otro = imagen().substr(0, 1000 * kBytesBloque);
    otro[500 * kBytesBloque + 7] ^= 1;
    poner("a.rgt.parcial", otro);
    cortarEn(600);
    const auto r = descargar();
    EXPECT_THAT(r.errores, HasSubstr("no coincide con lo que se lee ahora y se guardó como"));
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt.parcial.anterior") == otro);
    EXPECT_TRUE(parcial() == imagen().substr(0, 600 * kBytesBloque));
}

TEST_F(Parcial, ThatReachesFurtherStaysAsItIs) {
    auto viejo = imagen().substr(0, 1000 * kBytesBloque);
    viejo[107] ^= 1;  // the clock runs
    poner("a.rgt.parcial", viejo);
    cortarEn(999);
    descargar();
    EXPECT_TRUE(parcial() == viejo) << "blocks of two readings stand in it";
    // Overtaken, it is the new reading's from its first block on.
    cortarEn(1001);
    descargar();
    EXPECT_TRUE(parcial() == imagen().substr(0, 1001 * kBytesBloque));
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt.parcial"));
}

TEST_F(Parcial, WhoseNameIsTakenAwayMeanwhileIsMadeAnew) {
    cortarEn(1000, 700, [this] { fs::remove(carpeta / "a.rgt.parcial"); });
    EXPECT_EQ(descargar().codigo, CodigoSalida::fallo);
    EXPECT_TRUE(parcial() == imagen().substr(0, 1000 * kBytesBloque));
    cortarEn(kBloquesMemoria, 1500, [this] { fs::rename(carpeta / "a.rgt.parcial", carpeta / "mio"); });
    EXPECT_EQ(descargar().codigo, CodigoSalida::hecho);
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt") == imagen());
    EXPECT_NEAR(static_cast<double>(fs::file_size(carpeta / "mio") / kBytesBloque), 1500, 1);
}

TEST_F(Parcial, LeavesItsNameToAnotherFileThatTookItAndLosesNothing) {
    const auto cambiar = [this] {
        fs::remove(carpeta / "a.rgt.parcial");
        poner("a.rgt.parcial", "ajeno");
    };
    poner("a.rgt.2.parcial", "otro");
    cortarEn(1000, 700, cambiar);
    const auto r = descargar();
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("a.rgt.3.parcial quedan 1000 de 4096 bloques"));
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt.3.parcial") == imagen().substr(0, 1000 * kBytesBloque));
    EXPECT_EQ(parcial(), "ajeno");
    fs::remove(carpeta / "a.rgt.parcial");
    cortarEn(kBloquesMemoria, 1500, cambiar);
    EXPECT_EQ(descargar().codigo, CodigoSalida::hecho);
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt") == imagen());
    EXPECT_EQ(parcial(), "ajeno");
    EXPECT_EQ(leerTodo(carpeta / "a.rgt.2.parcial"), "otro");
    EXPECT_THAT(nombresEn(carpeta.ruta()),
                UnorderedElementsAre("a.rgt", "a.rgt.parcial", "a.rgt.2.parcial", "a.rgt.3.parcial"));
}

// Its own blocks are put back, and no zeroes stand where they were.
TEST_F(Parcial, ThatAnotherProgramCutsShortIsMadeWholeAgain) {
    const auto cortar = [this] { fs::resize_file(carpeta / "a.rgt.parcial", 1000); };
    cortarEn(1000, 700, cortar);
    EXPECT_EQ(descargar().codigo, CodigoSalida::fallo);
    EXPECT_TRUE(parcial() == imagen().substr(0, 1000 * kBytesBloque));
    cortarEn(kBloquesMemoria, 1500, cortar);
    EXPECT_EQ(descargar().codigo, CodigoSalida::hecho);
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt") == imagen());
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt"));
}

TEST_F(Parcial, ThatAnotherProgramWritesIntoTakesNoNameAsItIs) {
    cortarEn(kBloquesMemoria, 1500, [this] {
        std::fstream(carpeta / "a.rgt.parcial", std::ios::in | std::ios::out | std::ios::binary) << "ajeno";
    });
    EXPECT_EQ(descargar().codigo, CodigoSalida::hecho);
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt") == imagen());
}

// The file is looked at by the name that was asked for, whatever became of it meanwhile.
TEST_F(Archivos, ADownloadIsReadAgainByItsName) {
    fs::create_symlink("b.rgt", carpeta / "a.rgt");
    cortarEn(kBloquesMemoria, 1500, [this] {
        fs::remove(carpeta / "a.rgt");
        poner("a.rgt", "ajeno");
    });
    const auto r = descargar();
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("a.rgt no tiene lo que se descargó: otro programa lo quitó o lo cambió. "
                                     "Lo descargado quedó, entero, en " +
                                     (carpeta / "a_2.rgt").string()));
    EXPECT_THAT(r.errores, Not(HasSubstr("Archivo base:")));
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), "ajeno");
    EXPECT_TRUE(leerTodo(carpeta / "a_2.rgt") == imagen());
}

// Two minutes more would be for nothing.
// A copy that its owner cannot read is none, and the next run would not know what it is.
TEST_F(Archivos, WhateverTheUmaskADownloadIsItsOwnersToRead) {
    const UsuarioCorriente corriente(carpeta.ruta());
    ASSERT_TRUE(corriente.hecho());
    for (const mode_t mascara : {0477U, 0777U, 0277U, 0077U}) {
        const Mascara nueva(mascara);
        const auto base = carpeta / fmt::format("{:o}.rgt", mascara);
        const auto tabla = base.string() + ".csv";
        // What may not be written is not replaced either.
        const int veces = (mascara & S_IWUSR) == 0 ? 2 : 1;
        for (int vez = 0; vez < veces; ++vez) {
            const auto r = correr({"descargar", "--base", base, "--csv", tabla, "--reemplazar"});
            EXPECT_EQ(r.codigo, CodigoSalida::hecho) << mascara << " " << vez << r.errores;
        }
        EXPECT_EQ(nombresEn(carpeta.ruta()).size(), 2U);
        EXPECT_TRUE(leerTodo(base) == comoTexto(puertos.maquina(kPuerto).imagen()));
        struct stat datos {};
        ASSERT_EQ(::stat(base.c_str(), &datos), 0);
        EXPECT_EQ(datos.st_mode & 0777U, (0666U & ~mascara) | S_IRUSR);
        fs::remove(base);
        fs::remove(tabla);
    }
}

// A shell may still stand in it.
TEST_F(Archivos, AFolderThatWasRemovedUnderTheToolIsToldBeforeTheLoggerHearsAnything) {
    const auto antes = fs::current_path();
    fs::create_directory(carpeta / "quitada");
    fs::current_path(carpeta / "quitada");
    fs::remove(carpeta / "quitada");
    struct stat datos {};
    const bool loDice = ::stat(".", &datos) == 0 && datos.st_nlink == 0;
    const auto r = correr({"descargar", "--base", "x.rgt"});
    fs::current_path(antes);
    if (!loDice) GTEST_SKIP() << "this file system does not tell";
    esperarRehusado(r, CodigoSalida::fallo,
                    "no se pudo guardar x.rgt: esa carpeta se ha borrado. Dé otra carpeta");
}

TEST_F(Archivos, AFolderThatLetsNobodyInIsToldAsWhatKeepsTheFileOut) {
    const UsuarioCorriente corriente(carpeta.ruta());
    fs::create_directory(carpeta / "cerrada");
    for (const mode_t modo : {0000U, 0200U, 0500U, 0600U}) {
        ASSERT_EQ(::chmod((carpeta / "cerrada").c_str(), modo), 0);
        for (const std::string opcion : {"--base", "--ficha"}) {
            const auto r = correr({"descargar", opcion, carpeta / "cerrada/x",
                                   opcion == "--base" ? "--ficha" : "--base", carpeta / "y"});
            esperarRehusado(r, CodigoSalida::fallo,
                            "no se pudo guardar " + (carpeta / "cerrada/x").string() + ": no hay permiso.");
        }
    }
    ASSERT_EQ(::chmod((carpeta / "cerrada").c_str(), 0700), 0);
}

TEST_F(Archivos, WhateverTheUmaskABackupCountsBeforeTheLoggerErasesItsMemory) {
    const UsuarioCorriente corriente(carpeta.ruta());
    const Mascara nueva(0477);
    const auto imagen = puertos.maquina(kPuerto).imagen();
    const auto r =
        correr({"configurar", "--altitud", "555", "--borrar-memoria", "--respaldo", carpeta / "antes.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_TRUE(leerTodo(carpeta / "antes.rgt") == comoTexto(imagen));
    EXPECT_EQ(nombresEn(carpeta.ruta()).size(), 1U);
}

TEST_F(Parcial, ThatItsOwnerCannotReadIsToldWithWhatToDo) {
    const UsuarioCorriente corriente(carpeta.ruta());
    poner("a.rgt.parcial");
    for (const mode_t modo : {0200U, 0400U, 0000U}) {
        ASSERT_EQ(::chmod((carpeta / "a.rgt.parcial").c_str(), modo), 0);
        const auto r = correr({"descargar", "--base", carpeta / "a.rgt"});
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_THAT(r.errores, HasSubstr("a.rgt.parcial: sus permisos no dejan leerlo y escribirlo ni a su "
                                         "dueño. Déselos con chmod u+rw, o dé otro nombre al archivo base"));
        EXPECT_EQ(puertos.aperturas(kPuerto), 0U);
    }
}

TEST_F(Parcial, WhoseFolderIsGoneEndsTheDownloadAtOnceAndNothingIsSaidToStand) {
    fs::create_directory(carpeta / "d");
    cortarEn(kBloquesMemoria, 700, [this] { fs::remove_all(carpeta / "d"); });
    const auto r = correr({"descargar", "--base", carpeta / "d/a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, EndsWith("a.rgt.parcial: no existe la carpeta " + (carpeta / "d").string() +
                                    ". Créela, o dé otra\n"));
    EXPECT_THAT(r.errores, Not(HasSubstr("quedan")));
    EXPECT_LT(enviados, 800 * kBytesBloque);
}

TEST_F(Parcial, IsNotLostBecauseItIsShort) {
    poner("a.rgt.parcial", "corta");
    cortarEn(0);
    descargar();
    EXPECT_EQ(parcial(), "corta");
    cortarEn(1);
    descargar();
    EXPECT_EQ(leerTodo(carpeta / "a.rgt.parcial.anterior"), "corta");
    EXPECT_EQ(bloques(), 1U);
}

TEST_F(Parcial, WithAPieceOfABlockGoesOn) {
    poner("a.rgt.parcial", imagen().substr(0, 200 * kBytesBloque + 13));
    cortarEn(300);
    descargar();
    EXPECT_EQ(bloques(), 300U);
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt.parcial"));
}

TEST_F(Parcial, LongerThanAnImageIsNone) {
    poner("a.rgt.parcial", imagen() + "y algo");
    EXPECT_EQ(descargar().codigo, CodigoSalida::hecho);
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt.parcial.anterior") == imagen() + "y algo");
}

TEST_F(Parcial, WholeFromAnEarlierRunIsReadAgainAndReplaced) {
    auto viejo = imagen();
    viejo[107] ^= 1;
    poner("a.rgt.parcial", viejo);
    EXPECT_EQ(descargar().codigo, CodigoSalida::hecho);
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt") == imagen());
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt"));
}

// In the place of a partial file: what is there, and what is said of it.
struct Estorbo {
    const char* dicho;
    void (*poner)(const fs::path& ruta);
};

TEST_F(Parcial, WhatIsNoFileInItsPlaceIsToldBeforeTheSearch) {
    const Estorbo estorbos[] = {
        {"es un enlace", [](const fs::path& ruta) { fs::create_symlink("nada", ruta); }},
        {"es una carpeta", [](const fs::path& ruta) { fs::create_directory(ruta); }},
        {"no es un archivo normal", [](const fs::path& ruta) { ASSERT_EQ(::mkfifo(ruta.c_str(), 0600), 0); }},
    };
    const auto ruta = carpeta / "a.rgt.parcial";
    for (const auto& estorbo : estorbos) {
        estorbo.poner(ruta);
        const auto dicho =
            fmt::format("no se pudo guardar {}: {}. Quítelo de ahí, o dé otro nombre al archivo base",
                        ruta.string(), estorbo.dicho);
        esperarRehusado(descargar(), CodigoSalida::fallo, dicho);
        esperarRehusado(
            correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", carpeta / "a.rgt"}),
            CodigoSalida::fallo, dicho);
        fs::remove(ruta);
    }
}

TEST_F(Parcial, ALinkInItsPlaceIsNotFollowed) {
    poner("ajeno", "valioso");
    fs::create_symlink("ajeno", carpeta / "a.rgt.parcial");
    const auto r = descargar();
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr(noGuardado(carpeta / "a.rgt.parcial", "es un enlace").what()));
    EXPECT_EQ(leerTodo(carpeta / "ajeno"), "valioso");
}

TEST_F(Parcial, AFifoInItsPlaceIsRefused) {
    ASSERT_EQ(::mkfifo((carpeta / "a.rgt.parcial").c_str(), 0600), 0);
    EXPECT_THAT(descargar().errores, HasSubstr("a.rgt.parcial: no es un archivo normal"));
}

// --- outputs and names

TEST_F(Archivos, AnOutputThatWasClosedIsToldBeforeTheLoggerHearsAnything) {
    salidaAjena = -1;
    const std::string base = carpeta / "a.rgt";
    for (const auto& orden : std::vector<std::vector<std::string>>{
             {"descargar", "--base", "-"},
             {"descargar", "--base", base, "--csv", "-"},
             {"buscar"},
             {"puertos"},
             {"--help"},
             {"--version"},
             {"convertir", "--help"},
             {"convertir", "no.rgt", "-"},
             {"configuracion"},
             {"en-linea", "--cuenta", "1"},
             {"serie", "02080051"},
             {"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"}}) {
        SCOPED_TRACE(orden.front());
        esperarRehusado(correr(orden), CodigoSalida::fallo,
                        "está cerrada. Ábrala, por ejemplo con >archivo, y repita");
    }
    EXPECT_THAT(nombresEn(carpeta.ruta()), IsEmpty());
    // What is to stand in a file needs no output.
    EXPECT_EQ(correr({"descargar", "--base", base}).codigo, CodigoSalida::hecho);
}

TEST_F(Archivos, ALineEndInANameSplitsNoMessage) {
    const std::string nombre = carpeta / "dos\nlineas";
    const std::vector<std::vector<std::string>> ordenes = {
        {"convertir", nombre, "-"},
        {"convertir", nombre, nombre},
        {"convertir", nombre, nombre + "/x.csv"},
        {"convertir", "--en", nombre, "a.rgt"},
        {"descargar", "--base", nombre, "--csv", nombre},
        {"descargar", "--base", nombre + "/x.rgt"},
        {"--com", "1=" + nombre, "buscar", "dos\nlineas"},
        {"--com", "uno\n" + nombre, "buscar"},
    };
    for (const auto& orden : ordenes) {
        const auto r = correr(orden);
        EXPECT_NE(r.codigo, CodigoSalida::hecho);
        EXPECT_THAT(r.errores, HasSubstr("dos\uFFFDlineas"));
    }
    const auto r = correr({"descargar", "--base", nombre + ".rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.errores, HasSubstr("dos\uFFFDlineas.rgt\n"));
}

// --- converting

TEST_F(Archivos, AnInputLongerThanAnImageIsTold) {
    poner("a.rgt", imagen());
    EXPECT_THAT(correr({"convertir", carpeta / "a.rgt", "-"}).errores, Not(HasSubstr("aviso")));
    poner("a.rgt", imagen() + "x");
    EXPECT_THAT(correr({"convertir", carpeta / "a.rgt", "-"}).errores,
                HasSubstr("aviso: en " + (carpeta / "a.rgt").string() +
                          " hay más de los 262144 bytes de una imagen"));
    entrada.llenar(imagen() + std::string(100'000, 'x'));
    EXPECT_THAT(correr({"convertir", "-", "-"}).errores,
                HasSubstr("aviso: en la entrada hay más de los 262144 bytes"));
}

TEST_F(Archivos, TheEndingOfAnOutputCountsInAnyCase) {
    poner("a.rgt", imagen());
    const auto hecho = [&](const std::string& nombre) {
        EXPECT_EQ(correr({"convertir", carpeta / "a.rgt", carpeta / nombre}).codigo, CodigoSalida::hecho);
        return leerTodo(carpeta / nombre);
    };
    EXPECT_TRUE(hecho("a.XLS") == hecho("a.xls"));
    EXPECT_TRUE(hecho("a.Jsonl") == hecho("a.jsonl"));
    EXPECT_THAT(hecho("a.CSV"), StartsWith(" Equipo"));
}

TEST_F(Archivos, AFolderThatIsNotThereIsToldOnce) {
    poner("a.rgt", imagen());
    const auto r = correr({"convertir", "--en", carpeta / "no", carpeta / "a.rgt", carpeta / "b.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores,
                EndsWith("no existe la carpeta " + (carpeta / "no").string() + ". Créela, o dé otra\n"));
    EXPECT_EQ(std::count(r.errores.begin(), r.errores.end(), '\n'), 1);
}

}  // namespace
}  // namespace telvane
