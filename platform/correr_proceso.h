// The outermost of a program's main().
#pragma once

#include <functional>
#include <string_view>

namespace telvane {

// Runs the work, which gives the exit status. What it throws is told on standard error, and the status is 1.
int correrProceso(std::string_view programa, const std::function<int()>& trabajo) noexcept;

}  // namespace telvane
