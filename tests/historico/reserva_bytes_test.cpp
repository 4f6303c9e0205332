#include "historico/reserva_bytes.h"

#include <thread>

#include <gtest/gtest.h>

namespace telvane {
namespace {

TEST(ReservaBytes, WhatTheLastOneLetGoOfIsUsedAgain) {
    ReservaBytes reserva;
    auto uno = reserva.tomar();
    uno->assign(1000, 7);
    const auto* donde = uno->data();
    std::shared_ptr<const ReservaBytes::Bytes> compartido = uno;
    uno.reset();
    EXPECT_NE(reserva.tomar()->data(), donde) << "somebody still reads it";
    std::thread([otro = std::move(compartido)]() mutable { otro.reset(); }).join();
    EXPECT_EQ(reserva.tomar()->data(), donde);
}

TEST(ReservaBytes, WhatIsTakenOutlivesIt) {
    std::shared_ptr<ReservaBytes::Bytes> uno;
    {
        ReservaBytes reserva;
        uno = reserva.tomar();
    }
    uno->assign(1000, 7);
    EXPECT_EQ(uno->back(), 7);
}

TEST(ReservaBytes, KeepsAFewAndFreesTheRest) {
    ReservaBytes reserva;
    std::vector<std::shared_ptr<ReservaBytes::Bytes>> muchos;
    for (int i = 0; i < 100; ++i) {
        muchos.push_back(reserva.tomar());
        muchos.back()->assign(1, 1);
    }
    muchos.clear();
    std::size_t usados = 0;
    for (int i = 0; i < 100; ++i) {
        muchos.push_back(reserva.tomar());
        if (!muchos.back()->empty()) ++usados;
    }
    EXPECT_EQ(usados, 4U);
}

}  // namespace
}  // namespace telvane
