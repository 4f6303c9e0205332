// A pipe for a process that a test starts.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace telvane {

// The end to read from, and the one to write to; no child inherits either.
inline std::array<int, 2> abrirTubo() {
    std::array<int, 2> extremos{};
    if (::pipe2(extremos.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    return extremos;
}

}  // namespace telvane
