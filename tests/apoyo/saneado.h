// Whether the sanitizers watch the program that runs. A test is compiled once and linked with and without
// them.
#pragma once

extern "C" [[gnu::weak]] void __asan_init();

namespace telvane {

inline bool saneado() {
    return &__asan_init != nullptr;
}

}  // namespace telvane
