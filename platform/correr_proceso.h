// The outermost of a program's main().
#pragma once

#include <functional>
#include <string_view>

namespace telvane {

// Runs the work, which gives the exit status. A std::exception that it throws makes the status 1 and is told
// on standard error, unless a file stands there: nobody may have looked yet whether it may be written into.
int correrProceso(std::string_view programa, const std::function<int()>& trabajo) noexcept;

}  // namespace telvane
