#include "platform/guardado_en_tanda.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/motivos.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/disco_chico.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/apoyo/saneado.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;

class GuardadoJuntos : public ::testing::Test {
   protected:
    fs::path ruta(const std::string& nombre) const { return temporal_ / nombre; }
    std::size_t entradas(const fs::path& carpeta) const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(carpeta), fs::directory_iterator()));
    }
    void agregar(const fs::path& archivo, std::string_view bytes, const ReglaDestino& regla = {}) {
        guardado_.agregar(archivo, bytes, regla, [this](const std::exception_ptr& fallo) {
            // What is told to be saved stands under its name.
            fallo ? ++mal_ : ++bien_;
            if (!fallo) return;
            const std::scoped_lock turno(cerrojo_);
            motivos_.push_back(queDice(fallo));
        });
    }

    CarpetaTemporal temporal_;
    GuardadoEnTanda guardado_;
    std::atomic<int> bien_ = 0;
    std::atomic<int> mal_ = 0;
    std::mutex cerrojo_;
    std::vector<std::string> motivos_;
};

TEST_F(GuardadoJuntos, NoneHasItsNameUntilAllAreOnTheDisk) {
    std::ofstream(ruta("a")) << "viejo";
    agregar(ruta("a"), "nuevo");
    agregar(ruta("b"), "otro");
    EXPECT_EQ(leerTodo(ruta("a")), "viejo");
    EXPECT_FALSE(fs::exists(ruta("b")));
    EXPECT_EQ(bien_, 0);
    guardado_.terminar();
    EXPECT_EQ(leerTodo(ruta("a")), "nuevo");
    EXPECT_EQ(leerTodo(ruta("b")), "otro");
    EXPECT_EQ(bien_, 2);
    EXPECT_EQ(entradas(temporal_.ruta()), 2U);
}

TEST_F(GuardadoJuntos, ThoseThatWaitHaveALimit) {
    constexpr int kMuchos = 300;
    std::size_t masTemporales = 0;
    for (int i = 0; i < kMuchos; ++i) {
        agregar(ruta(std::to_string(i)), "x");
        masTemporales = std::max(masTemporales, entradas(temporal_.ruta()) - static_cast<std::size_t>(bien_));
    }
    EXPECT_LE(masTemporales, 128U);
    EXPECT_GE(bien_, 256);
    guardado_.terminar();
    EXPECT_EQ(bien_, kMuchos);
    EXPECT_EQ(entradas(temporal_.ruta()), static_cast<std::size_t>(kMuchos));
}

TEST_F(GuardadoJuntos, OneThatFailsInTheMiddleIsToldAndTheOthersAreSaved) {
    fs::create_directory(ruta("2"));
    for (int i = 0; i < 5; ++i) agregar(ruta(std::to_string(i)), "x");
    EXPECT_EQ(mal_, 1);
    guardado_.terminar();
    EXPECT_EQ(bien_, 4);
    ASSERT_EQ(motivos_.size(), 1U);
    EXPECT_EQ(motivos_[0], noGuardado(ruta("2"), "es una carpeta. Dé el nombre de un archivo").what());
    EXPECT_EQ(entradas(temporal_.ruta()), 5U);
}

TEST_F(GuardadoJuntos, ADiskThatFillsLosesThoseThatDoNotFitAndNoneOfTheOldOnes) {
    const DiscoChico disco(ruta("disco"), "256k");
    if (!disco.montado()) GTEST_SKIP() << "mounting is not permitted here";
    for (int i = 0; i < 4; ++i) std::ofstream(ruta("disco") / std::to_string(i)) << "viejo";
    const std::string mucho(100'000, 'n');
    for (int i = 0; i < 4; ++i) agregar(ruta("disco") / std::to_string(i), mucho);
    guardado_.terminar();
    EXPECT_EQ(bien_ + mal_, 4);
    EXPECT_GE(bien_, 1);
    EXPECT_GE(mal_, 1);
    int nuevos = 0;
    for (int i = 0; i < 4; ++i) {
        const auto queda = leerTodo(ruta("disco") / std::to_string(i));
        EXPECT_TRUE(queda == "viejo" || queda == mucho);
        nuevos += queda == mucho ? 1 : 0;
    }
    EXPECT_EQ(nuevos, bien_);
    EXPECT_EQ(entradas(ruta("disco")), 4U);
}

// Each as if it were saved alone: what failed before it, and what waits for its name, is not in its way.
TEST_F(GuardadoJuntos, WhatFitsIsSavedBehindWhatDoesNot) {
    const DiscoChico disco(ruta("disco"), "256k");
    if (!disco.montado()) GTEST_SKIP() << "mounting is not permitted here";
    agregar(ruta("disco") / "grande", std::string(300'000, 'g'));
    agregar(ruta("disco") / "mayor", std::string(400'000, 'g'));
    agregar(ruta("disco") / "chico", std::string(8'000, 'c'));
    EXPECT_EQ(mal_, 2);
    guardado_.terminar();
    EXPECT_EQ(bien_, 1);
    EXPECT_EQ(leerTodo(ruta("disco") / "chico").size(), 8'000U);
    EXPECT_EQ(entradas(ruta("disco")), 1U);
}

TEST_F(GuardadoJuntos, ADiskWithRoomForOneMoreTakesThemAllOverTheOldOnes) {
    const DiscoChico disco(ruta("disco"), "256k");
    if (!disco.montado()) GTEST_SKIP() << "mounting is not permitted here";
    for (const auto* nombre : {"a", "b", "c"})
        std::ofstream(ruta("disco") / nombre) << std::string(60'000, 'v');
    const std::string nuevo(60'000, 'n');
    {
        std::vector<std::jthread> hilos;
        for (const auto* nombre : {"a", "b", "c"})
            hilos.emplace_back([&, nombre] { agregar(ruta("disco") / nombre, nuevo); });
    }
    guardado_.terminar();
    EXPECT_EQ(bien_, 3);
    EXPECT_EQ(mal_, 0);
    for (const auto* nombre : {"a", "b", "c"}) EXPECT_EQ(leerTodo(ruta("disco") / nombre), nuevo);
}

TEST_F(GuardadoJuntos, FromSeveralThreadsToEverywhere) {
    const DiscoChico disco(ruta("disco"), "4m");
    if (!disco.montado()) fs::create_directories(ruta("disco"));
    {
        std::vector<std::jthread> hilos;
        for (int hilo = 0; hilo < 4; ++hilo) {
            hilos.emplace_back([this, hilo] {
                for (int i = 0; i < 100; ++i) {
                    const auto carpeta = i % 2 == 0 ? temporal_.ruta() : ruta("disco");
                    agregar(carpeta / fmt::format("{}-{}", hilo, i), "x");
                }
            });
        }
    }
    guardado_.terminar();
    EXPECT_EQ(bien_, 400);
    EXPECT_EQ(entradas(ruta("disco")), 200U);
    EXPECT_EQ(entradas(temporal_.ruta()), 201U);
}

// The one descriptor that there is writes the file: none is left to stand for its disk.
TEST_F(GuardadoJuntos, WithoutASecondDescriptorEachIsSafeByItself) {
    if (saneado()) GTEST_SKIP() << "a sanitizer opens a pipe to look at an object";
    const int siguiente = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
    ASSERT_GE(siguiente, 0);
    ::close(siguiente);
    rlimit antes{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &antes), 0);
    auto justo = antes;
    justo.rlim_cur = static_cast<rlim_t>(siguiente) + 1;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &justo), 0);
    for (const auto* nombre : {"a", "b"}) agregar(ruta(nombre), "x");
    guardado_.terminar();
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &antes), 0);
    EXPECT_EQ(bien_, 2);
    EXPECT_THAT(motivos_, testing::IsEmpty());
    EXPECT_EQ(entradas(temporal_.ruta()), 2U);
}

TEST_F(GuardadoJuntos, WhatNobodyFinishesLeavesNothing) {
    {
        GuardadoEnTanda otro;
        otro.agregar(ruta("a"), "nuevo", {}, [](const std::exception_ptr&) {});
    }
    EXPECT_EQ(entradas(temporal_.ruta()), 0U);
}

}  // namespace
}  // namespace telvane
