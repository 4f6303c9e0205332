// Every file that is saved, with each call of its saving failing in turn, and with the program killed at
// each: always the old file whole or the new one whole, and the reason told.
#include <linux/magic.h>
#include <sys/resource.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/apoyo/proceso.h"
#include "tests/e2e/datos_guardados.h"
#include "tests/e2e/llamadas.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::HasSubstr;

constexpr int kMatado = 128 + 9;
constexpr auto kPropios = fs::perms::owner_read | fs::perms::owner_write;

struct Falla {
    const char* error;
    const char* motivo;
};
constexpr Falla kFallas[] = {{"ENOSPC", "no queda espacio en el disco"},
                             {"EDQUOT", "la cuota de disco se ha agotado"},
                             {"EIO", "fallo de entrada o salida"}};

// Calls whose failure may end a save.
bool esDeGuardar(const std::string& nombre) {
    constexpr const char* kNombres[] = {"openat", "write",  "pwrite64", "fchmod", "fsync",
                                        "close",  "rename", "flock",    "unlink", "renameat2"};
    return std::find(std::begin(kNombres), std::end(kNombres), nombre) != std::end(kNombres);
}

// What a file says but for the moment at which it was written.
std::string sinFecha(std::string texto) {
    const auto desde = texto.find("proceso realizado el ");
    if (desde != std::string::npos) texto.erase(desde, texto.find('\n', desde) - desde);
    return texto;
}

class GuardadoInterrumpido : public ::testing::Test {
   protected:
    void SetUp() override {
        if (const auto por = porQueNoSeTraza(); !por.empty()) GTEST_SKIP() << por;
        fs::create_directory(carpeta_);
    }
    void TearDown() override {
        fmt::print("{}: {} corridas\n", ::testing::UnitTest::GetInstance()->current_test_info()->name(),
                   corridas_);
    }

    void poner(const fs::path& ruta, const std::string& texto) const {
        std::ofstream(ruta, std::ios::binary) << texto;
    }
    std::vector<std::string> nombres() const {
        std::vector<std::string> lista;
        for (const auto& una : fs::directory_iterator(carpeta_))
            lista.push_back(una.path().filename().string());
        return lista;
    }
    // The program, which replaces viejo by nuevo in the file, with each of its calls on the way.
    void interrumpir(const std::vector<std::string>& orden, const fs::path& archivo,
                     const std::string& viejo) {
        poner(archivo, viejo);
        const auto llamadas = trazar(orden, carpeta_.string());
        const auto nuevo = leerTodo(archivo);
        ASSERT_NE(nuevo, viejo);
        ASSERT_THAT(llamadas, testing::Not(testing::IsEmpty()));
        for (const auto& llamada : llamadas) {
            SCOPED_TRACE(llamada.texto);
            matar(orden, llamada, archivo, viejo, nuevo);
            if (!esDeGuardar(llamada.nombre)) continue;
            for (const auto& falla : kFallas) fallar(orden, llamada, falla, archivo, viejo, nuevo);
        }
        EXPECT_EQ(sinConfirmar_, 2 * std::size(kFallas)) << "a folder that does not open, or is not flushed";
    }

    CarpetaTemporal temporal_;
    const fs::path carpeta_ = temporal_.ruta() / "guardados";
    std::size_t corridas_ = 0;
    std::size_t sinConfirmar_ = 0;

   private:
    void limpiar() const {
        fs::remove_all(carpeta_);
        fs::create_directory(carpeta_);
    }
    void matar(const std::vector<std::string>& orden, const LlamadaAlSistema& llamada,
               const fs::path& archivo, const std::string& viejo, const std::string& nuevo) {
        limpiar();
        poner(archivo, viejo);
        fs::permissions(archivo, kPropios);
        const auto fin = conLlamada(orden, llamada, "signal=SIGKILL");
        ++corridas_;
        EXPECT_EQ(fin.estado, kMatado);
        // What replaces a file that nobody else reads is read by nobody else at any moment.
        for (const auto& nombre : nombres()) {
            if (!nombre.starts_with('.')) continue;
            EXPECT_EQ(fs::status(carpeta_ / nombre).permissions(), kPropios) << nombre;
        }
        const auto queda = leerTodo(archivo);
        EXPECT_TRUE(queda == viejo || sinFecha(queda) == sinFecha(nuevo)) << queda.size() << " bytes";
    }
    void fallar(const std::vector<std::string>& orden, const LlamadaAlSistema& llamada, const Falla& falla,
                const fs::path& archivo, const std::string& viejo, const std::string& nuevo) {
        SCOPED_TRACE(falla.error);
        limpiar();
        poner(archivo, viejo);
        const auto fin = conLlamada(orden, llamada, std::string("error=") + falla.error);
        ++corridas_;
        if (fin.estado == 0) {
            EXPECT_TRUE(sinFecha(leerTodo(archivo)) == sinFecha(nuevo));
        } else if (fin.errores.find("quedó escrito") != std::string::npos) {
            ++sinConfirmar_;
            EXPECT_EQ(fin.estado, 1);
            EXPECT_TRUE(sinFecha(leerTodo(archivo)) == sinFecha(nuevo));
            EXPECT_THAT(fin.errores, HasSubstr(falla.motivo));
        } else {
            EXPECT_EQ(fin.estado, 1);
            EXPECT_EQ(leerTodo(archivo), viejo);
            EXPECT_THAT(fin.errores, HasSubstr(falla.motivo));
        }
        // The temporary file goes, unless it is its going that fails.
        if (llamada.nombre != "unlink") {
            EXPECT_THAT(nombres(), testing::ElementsAre(archivo.filename().string()));
        }
    }
};

TEST_F(GuardadoInterrumpido, AnyFile) {
    const auto archivo = carpeta_ / "x.xls";
    interrumpir({GUARDADOR, "archivo", archivo.string(), std::string(20000, 'n')}, archivo, "viejo");
}

TEST_F(GuardadoInterrumpido, TheRegionalStore) {
    const auto archivo = carpeta_ / "regional";
    interrumpir({GUARDADOR, "regional", archivo.string(), "."}, archivo, "sDecimal=,\n");
}

// A download's file: each block as it comes, then its name.
TEST_F(GuardadoInterrumpido, ThePartialFileOfADownload) {
    constexpr std::size_t kBloque = 64;
    const auto base = carpeta_ / "a.rgt";
    const auto parcial = carpeta_ / "a.rgt.parcial";
    const std::vector<std::string> orden = {GUARDADOR, "parcial", base.string(), "n"};
    const std::string nuevo(4 * kBloque, 'n');
    poner(base, "viejo");
    const auto llamadas = trazar(orden, parcial.string());
    ASSERT_EQ(leerTodo(base), nuevo);
    std::size_t escritos = 0;
    for (const auto& llamada : llamadas) {
        for (const auto* efecto : {"signal=SIGKILL", "error=ENOSPC", "error=EDQUOT", "error=EIO"}) {
            if (efecto[0] == 'e' && !esDeGuardar(llamada.nombre)) continue;
            SCOPED_TRACE(llamada.texto + " " + efecto);
            fs::remove(parcial);
            poner(base, "viejo");
            const auto fin = conLlamada(orden, llamada, efecto);
            ++corridas_;
            const auto queda = leerTodo(base);
            EXPECT_TRUE(queda == "viejo" || queda == nuevo);
            // Nothing that came is lost.
            EXPECT_GE(queda == nuevo ? queda.size() : leerTodo(parcial).size(), escritos * kBloque);
            if (efecto[0] == 's') {
                EXPECT_EQ(fin.estado, kMatado);
            } else if (fin.estado == 0) {
                EXPECT_EQ(queda, nuevo);
            } else {
                EXPECT_EQ(fin.estado, 1);
                EXPECT_THAT(fin.errores, AnyOf(HasSubstr(kFallas[0].motivo), HasSubstr(kFallas[1].motivo),
                                               HasSubstr(kFallas[2].motivo)));
            }
        }
        if (llamada.nombre == "pwrite64") ++escritos;
    }
    EXPECT_EQ(escritos, 4u);
}

// What telvane-cli writes from a logger's memory.
class ArchivosDeLaConsola : public GuardadoInterrumpido {
   protected:
    void SetUp() override {
        GuardadoInterrumpido::SetUp();
        const auto enlace = (temporal_.ruta() / "COM1").string();
        simulador_ = std::make_unique<Proceso>(std::vector<std::string>{
            TELVANE_SIM, "--enlace", enlace, "--baudios", "0", "--memoria", memoria_.string()});
        ASSERT_TRUE(simulador_->linea()) << simulador_->errores();
        com_ = "1=" + enlace;
    }
    std::vector<std::string> descargar(const fs::path& base) const {
        return {TELVANE_CLI, "--com",        com_,     "descargar",  "--reintentos",
                "0",         "--reemplazar", "--base", base.string()};
    }

    const fs::path memoria_ = temporal_.ruta() / "memoria.rgt";
    std::string com_;
    std::unique_ptr<Proceso> simulador_;
};

TEST_F(ArchivosDeLaConsola, TheCsv) {
    const auto archivo = carpeta_ / "a.csv";
    const auto corta = temporal_.ruta() / "corta.rgt";
    poner(corta, leerTodo(memoria_).substr(0, 6400));
    interrumpir({TELVANE_CLI, "convertir", corta.string(), archivo.string()}, archivo, "viejo");
}

// The disk takes its time: what is whole already is not thrown away.
TEST_F(ArchivosDeLaConsola, ASignalDuringASlowSaveEndsTheProgramAfterIt) {
    const auto tabla = carpeta_ / "a.csv";
    const auto base = carpeta_ / "a.rgt";
    poner(tabla, "viejo");
    poner(base, "viejo");
    const auto lento = [&](std::vector<std::string> orden) {
        const auto por = conDemora("fsync", std::chrono::milliseconds(1500));
        orden.insert(orden.begin(), por.begin(), por.end());
        return std::make_unique<Proceso>(orden);
    };
    const auto convertir = lento({TELVANE_CLI, "convertir", memoria_.string(), tabla.string()});
    ASSERT_TRUE(esperarA([&] {
        const auto todos = nombres();
        const auto temporal = [](const auto& uno) { return uno.starts_with(".a.csv."); };
        return std::any_of(todos.begin(), todos.end(), temporal);
    }));
    convertir->senal(SIGTERM);
    EXPECT_EQ(convertir->terminar(), 0) << convertir->errores();
    EXPECT_GT(fs::file_size(tabla), 100'000U);
    const auto descarga = lento(descargar(base));
    ASSERT_TRUE(esperarA([&] {
        std::error_code todavia;
        return fs::file_size(carpeta_ / "a.rgt.parcial", todavia) == kBytesArchivoBase && !todavia;
    }));
    descarga->senal(SIGINT);
    EXPECT_EQ(descarga->terminar(), 0) << descarga->errores();
    EXPECT_EQ(leerTodo(base), leerTodo(memoria_));
    EXPECT_THAT(nombres(), testing::UnorderedElementsAre("a.csv", "a.rgt"));
    corridas_ = 2;
}

TEST_F(ArchivosDeLaConsola, ADownloadThatCannotBeFlushedKeepsTheOldBaseFileAndWhatCame) {
    const auto base = carpeta_ / "a.rgt";
    poner(base, "viejo");
    const auto fin = conLlamada(descargar(base), {"fsync", 1, ""}, "error=EIO");
    ++corridas_;
    EXPECT_EQ(fin.estado, 1);
    EXPECT_THAT(fin.errores, HasSubstr("fallo de entrada o salida"));
    EXPECT_THAT(fin.errores, HasSubstr("quedan 4096 de 4096 bloques"));
    EXPECT_EQ(leerTodo(base), "viejo");
    EXPECT_TRUE(leerTodo(carpeta_ / "a.rgt.parcial") == leerTodo(memoria_));
}

TEST_F(ArchivosDeLaConsola, ADiskThatFillsUpKeepsTheOldBaseFileAndWhatCame) {
    const auto base = carpeta_ / "a.rgt";
    poner(base, "viejo");
    const auto fin = conLlamada(descargar(base), {"pwrite64", 100, ""}, "error=ENOSPC");
    ++corridas_;
    EXPECT_EQ(fin.estado, 1);
    EXPECT_THAT(fin.errores, HasSubstr("a.rgt.parcial: no queda espacio en el disco"));
    EXPECT_THAT(fin.errores, HasSubstr("quedan 99 de 4096 bloques"));
    EXPECT_EQ(leerTodo(base), "viejo");
    EXPECT_TRUE(leerTodo(carpeta_ / "a.rgt.parcial") == leerTodo(memoria_).substr(0, 99 * 64));
}

TEST_F(ArchivosDeLaConsola, AFileSystemWithoutLocksTakesADownload) {
    const auto base = carpeta_ / "a.rgt";
    for (const auto* error : {"ENOLCK", "ENOSYS", "EOPNOTSUPP", "EINVAL"}) {
        fs::remove(base);
        auto orden = descargar(base);
        // Told by its path: the port has locks of its own, more of them the longer the logger takes to
        // answer.
        orden.insert(orden.begin(), {PROGRAMA_STRACE, "-f", "--seccomp-bpf", "-P", base.string() + ".parcial",
                                     "-o", "/dev/null", "-e", "trace=flock", "-e",
                                     fmt::format("inject=flock:error={}", error), "--"});
        Proceso proceso(orden);
        EXPECT_EQ(proceso.terminar(), 0) << error << ": " << proceso.errores();
        ++corridas_;
        EXPECT_TRUE(leerTodo(base) == leerTodo(memoria_));
    }
}

// Many tables with one sync: at whatever call the program dies or the disk fails, each is the old one or the
// new one, and those that are told to be done are.
class MuchasTablas : public ArchivosDeLaConsola {
   protected:
    static constexpr int kCuantas = 3;

    void SetUp() override {
        ArchivosDeLaConsola::SetUp();
        if (IsSkipped()) return;
        fs::create_directory(entradas_);
        const auto corta = leerTodo(memoria_).substr(0, 6400);
        orden_ = {TELVANE_CLI, "convertir", "--formato", "xls", "--en", carpeta_.string()};
        for (int i = 0; i < kCuantas; ++i) {
            poner(entradas_ / fmt::format("{}.rgt", i), corta);
            orden_.push_back((entradas_ / fmt::format("{}.rgt", i)).string());
        }
    }
    void viejas() const {
        fs::remove_all(carpeta_);
        fs::create_directory(carpeta_);
        for (int i = 0; i < kCuantas; ++i) poner(tabla(i), "vieja");
    }
    fs::path tabla(int i) const { return carpeta_ / fmt::format("{}.xls", i); }
    // How many are new; any is one or the other.
    int nuevas() const {
        int cuantas = 0;
        for (int i = 0; i < kCuantas; ++i) {
            const auto queda = leerTodo(tabla(i));
            EXPECT_TRUE(queda == "vieja" || queda == nueva_) << queda.size();
            cuantas += queda == nueva_ ? 1 : 0;
        }
        return cuantas;
    }

    const fs::path entradas_ = temporal_.ruta() / "entradas";
    std::vector<std::string> orden_;
    std::string nueva_;
};

TEST_F(MuchasTablas, AtEveryCall) {
    viejas();
    Proceso limpia(orden_);
    ASSERT_EQ(limpia.terminar(), 0) << limpia.errores();
    nueva_ = leerTodo(tabla(0));
    ASSERT_GT(nueva_.size(), 1000U);
    for (const auto* llamada : {"openat", "write", "fchmod", "syncfs", "close", "rename", "fsync"}) {
        // Of two workers each counts its own: the first calls of either are tried.
        for (std::size_t vez = 1; vez <= 4; ++vez) {
            for (const auto* efecto : {"signal=SIGKILL", "error=EIO"}) {
                SCOPED_TRACE(fmt::format("{} {} {}", llamada, vez, efecto));
                viejas();
                auto orden = orden_;
                const auto inyeccion = fmt::format("inject={}:{}:when={}", llamada, efecto, vez);
                orden.insert(orden.begin(),
                             {PROGRAMA_STRACE, "-f", "-P", carpeta_.string(), "-P", tabla(1).string(), "-o",
                              "/dev/null", "-e", fmt::format("trace={}", llamada), "-e", inyeccion, "--"});
                Proceso proceso(orden);
                const auto estado = proceso.terminar();
                ++corridas_;
                const int cuantas = nuevas();
                if (estado == 0) {
                    EXPECT_EQ(cuantas, kCuantas);
                }
                if (estado == 1) {
                    EXPECT_THAT(proceso.errores(), HasSubstr("sin convertir"));
                }
                EXPECT_TRUE(estado == 0 || estado == 1 || estado == kMatado) << proceso.errores();
                if (estado != kMatado) {
                    EXPECT_EQ(nombres().size(), std::size_t{kCuantas});
                }
            }
        }
    }
}

TEST_F(MuchasTablas, ADiskThatTellsOfAFailedSyncIsAskedFileByFile) {
    viejas();
    Proceso limpia(orden_);
    ASSERT_EQ(limpia.terminar(), 0) << limpia.errores();
    nueva_ = leerTodo(tabla(0));
    viejas();
    const auto bien = conLlamada(orden_, {"syncfs", 1, ""}, "error=EIO");
    EXPECT_EQ(bien.estado, 0) << "every file for itself is safe";
    EXPECT_EQ(nuevas(), kCuantas);
    viejas();
    auto orden = orden_;
    orden.insert(orden.begin(), {PROGRAMA_STRACE, "-f", "-o", "/dev/null", "-e", "trace=syncfs,fsync", "-e",
                                 "inject=syncfs:error=EIO", "-e", "inject=fsync:error=EIO:when=1", "--"});
    Proceso proceso(orden);
    EXPECT_EQ(proceso.terminar(), 1);
    EXPECT_THAT(proceso.errores(), HasSubstr("fallo de entrada o salida"));
    EXPECT_THAT(proceso.errores(), HasSubstr("1 de 3 archivos sin convertir"));
    EXPECT_EQ(nuevas(), kCuantas - 1);
    EXPECT_EQ(nombres().size(), std::size_t{kCuantas});
    corridas_ += 2;
}

// What many tables cost does not grow with their number: a batch waits for the disk once, and memory holds a
// batch at most.
class CientosDeTablas : public ArchivosDeLaConsola {
   protected:
    // A folder of its own where whole file systems are synced, which not every disk's takes.
    void SetUp() override {
        ArchivosDeLaConsola::SetUp();
        if (IsSkipped()) return;
        struct statfs disco {};
        if (::statfs("/dev/shm", &disco) != 0 || disco.f_type != TMPFS_MAGIC ||
            ::access("/dev/shm", W_OK) != 0)
            GTEST_SKIP() << "/dev/shm is no tmpfs to write to";
        fs::create_directory(tablas_);
        fs::create_directory(entradas_);
        poner(una_, leerTodo(memoria_).substr(0, 65536));
    }
    void TearDown() override {
        fs::remove_all(tablas_);
        ArchivosDeLaConsola::TearDown();
    }
    // One image under as many names.
    std::vector<std::string> orden(int cuantas) {
        fs::remove_all(tablas_);
        fs::create_directory(tablas_);
        std::vector<std::string> orden = {TELVANE_CLI, "convertir", "--en", tablas_.string()};
        for (int i = 0; i < cuantas; ++i) {
            const auto entrada = entradas_ / fmt::format("{}.rgt", i);
            if (!fs::exists(entrada)) fs::create_symlink(una_, entrada);
            orden.push_back(entrada.string());
        }
        ++corridas_;
        return orden;
    }
    // The most that any program of this test held until now, this one counted, in kB.
    double memoriaMayor(int cuantas) {
        Proceso proceso(orden(cuantas));
        EXPECT_EQ(proceso.terminar(), 0) << proceso.errores();
        EXPECT_EQ(tablas(), cuantas);
        rusage uso{};
        ::getrusage(RUSAGE_CHILDREN, &uso);
        return static_cast<double>(uso.ru_maxrss);
    }
    // How often the program waits for a disk.
    int sincronizaciones(int cuantas) {
        const auto traza = temporal_ / "traza";
        auto todo = orden(cuantas);
        todo.insert(todo.begin(), {PROGRAMA_STRACE, "-f", "--seccomp-bpf", "-o", traza.string(), "-e",
                                   "trace=fsync,fdatasync,sync,syncfs,sync_file_range,msync", "--"});
        Proceso proceso(todo);
        EXPECT_EQ(proceso.terminar(), 0) << proceso.errores();
        EXPECT_EQ(tablas(), cuantas);
        std::ifstream entrada(traza);
        const std::regex kLlamada("[0-9]+ +[a-z_]*sync[a-z_]*\\(.*");
        int veces = 0;
        for (std::string linea; std::getline(entrada, linea);)
            veces += std::regex_match(linea, kLlamada) ? 1 : 0;
        return veces;
    }
    int tablas() const {
        int cuantas = 0;
        for (const auto& una : fs::directory_iterator(tablas_))
            cuantas += una.path().filename().string().starts_with('.') ? 0 : 1;
        return cuantas;
    }

    const fs::path una_ = temporal_.ruta() / "una.bin";
    const fs::path entradas_ = temporal_.ruta() / "entradas";
    const fs::path tablas_ = fs::path("/dev/shm") / temporal_.ruta().filename();
};

TEST_F(CientosDeTablas, NeedNoMoreMemoryThanAFewAndOneWaitABatch) {
    const auto pocas = memoriaMayor(50);
    const auto muchas = memoriaMayor(300);
    // What they are made of, kept, would be several times as much.
    EXPECT_LT(muchas, 1.5 * pocas);
    const auto esperas = sincronizaciones(300);
    // Of each batch of 128: its disk and its folder.
    EXPECT_GE(esperas, 2);
    EXPECT_LE(esperas, 12);
    fmt::print("{} kB, {} kB, {} esperas\n", pocas, muchas, esperas);
}

}  // namespace
}  // namespace telvane
