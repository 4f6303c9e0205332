#include "cli/linea_registrador.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/apoyo/bucle_prueba.h"

namespace telvane {
namespace {

// What the line holds, and for how many more bytes a wake-up was asked.
struct Hilo {
    std::size_t esperan = 0;
    std::size_t llegaranAlPedir = 0;
    std::size_t pedidos = 0;
};

// A port on which bytes come just when the wake-up is asked for.
class PuertoConPrisa final : public PuertoSerie {
   public:
    explicit PuertoConPrisa(Hilo& hilo) : hilo_(hilo) {}

    void umbral(int bytes) override {
        hilo_.esperan += std::exchange(hilo_.llegaranAlPedir, 0);
        hilo_.pedidos = static_cast<std::size_t>(bytes);
    }
    std::size_t leer(std::span<std::uint8_t> destino) override {
        std::fill_n(destino.begin(), hilo_.esperan, std::uint8_t{0x42});
        return std::exchange(hilo_.esperan, 0);
    }
    void escribir(std::span<const std::uint8_t>) override {}
    void vaciarEntrada() override {}
    void dtr(bool) override {}
    void rts(bool) override {}
    void romper(bool) override {}
    std::vector<int> sucesosDeLinea() override { return {}; }
    void vigilarLinea(bool) override {}

   private:
    Hilo& hilo_;
};

class UnPuerto final : public Puertos {
   public:
    explicit UnPuerto(Hilo& hilo) : hilo_(hilo) {}
    bool existe(int) const override { return true; }
    std::unique_ptr<PuertoSerie> abrir(int, const AjustesLinea&, std::function<void()>) override {
        return std::make_unique<PuertoConPrisa>(hilo_);
    }

   private:
    Hilo& hilo_;
};

// A block comes in pieces, and a piece may come between looking and asking to be woken. The system counts
// what it still holds: whoever sleeps until more comes than is missing sleeps until the time is over, and the
// logger gives up.
TEST(LineaRegistrador, NeverSleepsUntilMoreComesThanIsMissing) {
    BuclePrueba bucle;
    Hilo hilo{.esperan = 16, .llegaranAlPedir = 18};
    const auto dormir = [&](const EntornoCli::Condicion& condicion, Bucle::Duracion) {
        if (condicion()) return true;
        hilo.esperan += 64 - 16 - 18;
        EXPECT_GE(hilo.esperan, hilo.pedidos) << "nothing wakes it";
        return condicion();
    };
    EntornoCli entorno{{.bucle = bucle, .reloj = bucle.reloj(), .correrHasta = dormir}, {}};
    UnPuerto puertos(hilo);
    LineaRegistrador linea(entorno, puertos, 1);

    EXPECT_TRUE(linea.esperarBytes(64, std::chrono::seconds(3)));
    EXPECT_EQ(linea.esperan(), 64u);
}

// The answer to a wake-up is left unread; woken by it, the tool would turn until the two seconds are over.
TEST(LineaRegistrador, APauseIsNotWokenByWhatComesMeanwhile) {
    BuclePrueba bucle;
    Hilo hilo;
    EntornoCli entorno{{.bucle = bucle,
                        .reloj = bucle.reloj(),
                        .correrHasta =
                            [&](const EntornoCli::Condicion& condicion, Bucle::Duracion) {
                                EXPECT_GT(hilo.pedidos, 31u);
                                return condicion();
                            }},
                       {}};
    UnPuerto puertos(hilo);
    LineaRegistrador linea(entorno, puertos, 1);
    linea.pausar(std::chrono::seconds(2));
    EXPECT_EQ(hilo.pedidos, 255u);
}

}  // namespace
}  // namespace telvane
