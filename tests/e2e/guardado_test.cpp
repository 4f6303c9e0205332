// Every file that is saved, with each call of its saving failing in turn, and with the program killed at
// each: always the old file whole or the new one whole, and the reason told.
#include <sys/mount.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apoyo/carpeta_temporal.h"
#include "apoyo/proceso.h"
#include "tests/e2e/datos_guardados.h"
#include "tests/e2e/llamadas.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::HasSubstr;

constexpr int kMatado = 128 + 9;

struct Falla {
    const char* error;
    const char* motivo;
};
constexpr Falla kFallas[] = {{"ENOSPC", "no queda espacio en el disco"},
                             {"EDQUOT", "la cuota de disco se ha agotado"},
                             {"EIO", "fallo de entrada o salida"}};

// Calls whose failure may end a save.
bool esDeGuardar(const std::string& nombre) {
    constexpr const char* kNombres[] = {"openat", "write",     "pwrite64", "fchmod", "fsync",
                                        "close",  "ftruncate", "rename",   "flock",  "unlink"};
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
        const auto nuevo = contenidoDe(archivo);
        ASSERT_NE(nuevo, viejo);
        ASSERT_THAT(llamadas, testing::Not(testing::IsEmpty()));
        for (const auto& llamada : llamadas) {
            SCOPED_TRACE(llamada.texto);
            matar(orden, llamada, archivo, viejo, nuevo);
            if (!esDeGuardar(llamada.nombre)) continue;
            for (const auto& falla : kFallas) fallar(orden, llamada, falla, archivo, viejo, nuevo);
        }
    }

    CarpetaTemporal temporal_;
    const fs::path carpeta_ = temporal_.ruta() / "guardados";
    std::size_t corridas_ = 0;

   private:
    void limpiar() const {
        fs::remove_all(carpeta_);
        fs::create_directory(carpeta_);
    }
    void matar(const std::vector<std::string>& orden, const LlamadaAlSistema& llamada,
               const fs::path& archivo, const std::string& viejo, const std::string& nuevo) {
        limpiar();
        poner(archivo, viejo);
        const auto fin = conLlamada(orden, llamada, "signal=SIGKILL");
        ++corridas_;
        EXPECT_EQ(fin.estado, kMatado);
        const auto queda = contenidoDe(archivo);
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
            EXPECT_TRUE(sinFecha(contenidoDe(archivo)) == sinFecha(nuevo));
        } else {
            EXPECT_EQ(fin.estado, 1);
            EXPECT_EQ(contenidoDe(archivo), viejo);
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
    ASSERT_EQ(contenidoDe(base), nuevo);
    std::size_t escritos = 0;
    for (const auto& llamada : llamadas) {
        for (const auto* efecto : {"signal=SIGKILL", "error=ENOSPC", "error=EDQUOT", "error=EIO"}) {
            if (efecto[0] == 'e' && !esDeGuardar(llamada.nombre)) continue;
            SCOPED_TRACE(llamada.texto + " " + efecto);
            fs::remove(parcial);
            poner(base, "viejo");
            const auto fin = conLlamada(orden, llamada, efecto);
            ++corridas_;
            const auto queda = contenidoDe(base);
            EXPECT_TRUE(queda == "viejo" || queda == nuevo);
            // Nothing that came is lost.
            EXPECT_GE(queda == nuevo ? queda.size() : contenidoDe(parcial).size(), escritos * kBloque);
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
        return {TELVANE_CLI, "--com", com_, "descargar", "--reintentos", "0", "--base", base.string()};
    }

    const fs::path memoria_ = temporal_.ruta() / "memoria.rgt";
    std::string com_;
    std::unique_ptr<Proceso> simulador_;
};

TEST_F(ArchivosDeLaConsola, TheCsv) {
    const auto archivo = carpeta_ / "a.csv";
    const auto corta = temporal_.ruta() / "corta.rgt";
    poner(corta, contenidoDe(memoria_).substr(0, 6400));
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
    EXPECT_EQ(contenidoDe(base), contenidoDe(memoria_));
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
    EXPECT_EQ(contenidoDe(base), "viejo");
    EXPECT_TRUE(contenidoDe(carpeta_ / "a.rgt.parcial") == contenidoDe(memoria_));
}

TEST_F(ArchivosDeLaConsola, AFullDiskKeepsTheOldBaseFileAndWhatCame) {
    if (::mount("tmpfs", carpeta_.c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "mounting is not permitted here";
    const auto base = carpeta_ / "a.rgt";
    poner(base, "viejo");
    Proceso proceso(descargar(base));
    EXPECT_EQ(proceso.terminar(), 1);
    EXPECT_THAT(proceso.errores(), HasSubstr("no queda espacio en el disco"));
    EXPECT_THAT(proceso.errores(), HasSubstr("de 4096 bloques"));
    EXPECT_EQ(contenidoDe(base), "viejo");
    const auto parcial = contenidoDe(carpeta_ / "a.rgt.parcial");
    EXPECT_GT(parcial.size(), 32u * 1024);
    EXPECT_EQ(parcial, contenidoDe(memoria_).substr(0, parcial.size()));
    ::umount(carpeta_.c_str());
}

}  // namespace
}  // namespace telvane
