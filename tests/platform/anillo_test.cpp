#include "platform/anillo.h"

#include <deque>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace telvane {
namespace {

// Whatever goes in and out, it holds what a common queue holds.
RC_GTEST_PROP(Anillo, IsAQueue, ()) {
    Anillo<int> anillo;
    std::deque<int> cola;
    const auto pasos = *rc::gen::container<std::vector<int>>(rc::gen::inRange(-3, 200));
    for (const int paso : pasos) {
        if (paso == -3) {
            anillo.clear();
            cola.clear();
        }
        // Some at once, so that it grows while it goes round.
        for (int i = 0; i < paso; ++i) {
            anillo.push_back(i);
            cola.push_back(i);
        }
        for (int i = 0; i < paso / 2; ++i) cola.pop_front();
        if (paso > 1) anillo.pop_front(static_cast<std::size_t>(paso / 2));
        RC_ASSERT(anillo.size() == cola.size());
        RC_ASSERT(anillo.empty() == cola.empty());
        for (std::size_t i = 0; i < cola.size(); ++i) RC_ASSERT(anillo[i] == cola[i]);
        if (!cola.empty()) RC_ASSERT(anillo.front() == cola.front() && anillo.back() == cola.back());
    }
}

}  // namespace
}  // namespace telvane
