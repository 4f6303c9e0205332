// What came on a line and was not taken yet: filling, counting, taking, the bound.
#include "link/buffer_de_entrada.h"

#include <algorithm>
#include <deque>
#include <numeric>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace telvane {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes seguidos(std::size_t cuantos, std::uint8_t desde = 0) {
    Bytes bytes(cuantos);
    std::iota(bytes.begin(), bytes.end(), desde);
    return bytes;
}

// A port that gives what it was told to, and, once it has gone, throws when that is read.
class PuertoDado final : public PuertoSerie {
   public:
    void llegan(const Bytes& bytes) { esperan_.insert(esperan_.end(), bytes.begin(), bytes.end()); }
    void irse() { fue_ = true; }
    void noParar() { sinFin_ = true; }

    std::size_t leer(std::span<std::uint8_t> destino) override {
        if (sinFin_) return destino.size();
        if (esperan_.empty() && fue_) throw ErrorPuerto(MotivoPuerto::desaparecido, "se fue");
        const auto n = std::min(destino.size(), esperan_.size());
        const auto fin = esperan_.begin() + static_cast<std::ptrdiff_t>(n);
        std::copy(esperan_.begin(), fin, destino.begin());
        esperan_.erase(esperan_.begin(), fin);
        return n;
    }
    void escribir(std::span<const std::uint8_t>) override {}
    void umbral(int) override {}
    void vaciarEntrada() override {}
    void dtr(bool) override {}
    void rts(bool) override {}
    void romper(bool) override {}
    std::vector<int> sucesosDeLinea() override { return {}; }
    void vigilarLinea(bool) override {}

   private:
    std::deque<std::uint8_t> esperan_;
    bool fue_ = false;
    bool sinFin_ = false;
};

TEST(BufferDeEntrada, GivesTheBytesInTheirOrderAndCountsThoseThatWait) {
    PuertoDado puerto;
    BufferDeEntrada buffer;
    buffer.llenar(puerto);
    EXPECT_EQ(buffer.esperan(), 0u) << "nothing came";
    puerto.llegan({1, 2, 3});
    EXPECT_EQ(buffer.esperan(), 0u) << "what the system holds counts once it is taken over";
    buffer.llenar(puerto);
    EXPECT_EQ(buffer.esperan(), 3u);
    EXPECT_EQ(buffer.tomar(), 1);
    EXPECT_EQ(buffer.esperan(), 2u);
    puerto.llegan({4, 5});
    buffer.llenar(puerto);
    EXPECT_EQ(buffer.esperan(), 4u) << "what was left over stays in front";
    EXPECT_EQ(buffer.tomar(3), (Bytes{2, 3, 4}));
    EXPECT_EQ(buffer.tomar(3), (Bytes{5})) << "fewer wait";
    EXPECT_EQ(buffer.tomar(3), Bytes{});
}

TEST(BufferDeEntrada, TakesOverAllThatTheSystemHoldsHoweverMuch) {
    for (const std::size_t cuantos : {4095, 4096, 4097, 3 * 4096 + 5}) {
        PuertoDado puerto;
        BufferDeEntrada buffer;
        puerto.llegan(seguidos(cuantos));
        buffer.llenar(puerto);
        EXPECT_EQ(buffer.tomar(cuantos + 1), seguidos(cuantos)) << cuantos;
    }
}

TEST(BufferDeEntrada, ALineThatNeverStopsDoesNotKeepItsReader) {
    PuertoDado puerto;
    puerto.noParar();
    BufferDeEntrada buffer;
    buffer.llenar(puerto);
    EXPECT_EQ(buffer.esperan(), BufferDeEntrada::kTrozo * BufferDeEntrada::kTrozosDeUnaVez);
    buffer.vaciar();
    for (int i = 0; i < 3; ++i) buffer.llenar(puerto, 1000);
    EXPECT_EQ(buffer.esperan(), 1000u);
    EXPECT_TRUE(buffer.desbordado());
}

TEST(BufferDeEntrada, WhatIsBeyondTheBoundIsLostAndToldOnce) {
    struct Fila {
        const char* leyenda;
        std::size_t llegan;
        std::size_t tomados;
        std::size_t despues;
        std::size_t esperan;
        bool desborda;
    };
    constexpr std::size_t kCota = 10;
    for (const auto& fila :
         {Fila{"below it", 9, 0, 0, 9, false}, Fila{"just full", 10, 0, 0, 10, false},
          Fila{"one too many", 11, 0, 0, 10, true}, Fila{"full, and more", 10, 0, 5, 10, true},
          Fila{"what was taken makes room", 10, 4, 4, 10, false},
          Fila{"but no more than that", 10, 4, 5, 10, true}}) {
        PuertoDado puerto;
        BufferDeEntrada buffer;
        puerto.llegan(seguidos(fila.llegan));
        buffer.llenar(puerto, kCota);
        buffer.tomar(fila.tomados);
        puerto.llegan(seguidos(fila.despues, static_cast<std::uint8_t>(fila.llegan)));
        buffer.llenar(puerto, kCota);
        EXPECT_EQ(buffer.esperan(), fila.esperan) << fila.leyenda;
        EXPECT_EQ(buffer.desbordado(), fila.desborda) << fila.leyenda;
        EXPECT_FALSE(buffer.desbordado()) << fila.leyenda;
        EXPECT_EQ(buffer.tomar(fila.esperan), seguidos(fila.esperan, static_cast<std::uint8_t>(fila.tomados)))
            << fila.leyenda << ": the older bytes are those that stay";
    }
}

TEST(BufferDeEntrada, ABoundBelowWhatWaitsTakesNothingMoreAndDropsNothing) {
    PuertoDado puerto;
    BufferDeEntrada buffer;
    puerto.llegan(seguidos(10));
    buffer.llenar(puerto);
    puerto.llegan({99});
    buffer.llenar(puerto, 4);
    EXPECT_TRUE(buffer.desbordado());
    EXPECT_EQ(buffer.tomar(20), seguidos(10));
}

TEST(BufferDeEntrada, WhatCameBeforeTheDeviceHasGoneStays) {
    PuertoDado puerto;
    BufferDeEntrada buffer;
    puerto.llegan(seguidos(4096));
    puerto.irse();
    EXPECT_THROW(buffer.llenar(puerto), ErrorPuerto);
    EXPECT_EQ(buffer.tomar(5000), seguidos(4096));
}

TEST(BufferDeEntrada, WhatWaitsIsForgottenAndWhatComesThenIsNot) {
    PuertoDado puerto;
    BufferDeEntrada buffer;
    puerto.llegan(seguidos(6));
    buffer.llenar(puerto);
    buffer.tomar(2);
    buffer.vaciar();
    EXPECT_EQ(buffer.esperan(), 0u);
    puerto.llegan({7, 8});
    buffer.llenar(puerto);
    EXPECT_EQ(buffer.tomar(9), (Bytes{7, 8}));
}

}  // namespace
}  // namespace telvane
