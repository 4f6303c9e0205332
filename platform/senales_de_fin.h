// The signals that end our programs.
#pragma once

#include <csignal>
#include <vector>

namespace telvane {

// SIGHUP is not one of them where whoever started us ("nohup") left it ignored: the program is to outlive its
// terminal. SIGINT always is, for a shell without job control ignores it for whatever it puts into the
// background.
inline std::vector<int> senalesQueTerminan() {
    std::vector<int> senales = {SIGINT, SIGTERM};
    struct sigaction heredada {};
    const bool seSabe = ::sigaction(SIGHUP, nullptr, &heredada) == 0;
    if (!seSabe || heredada.sa_handler != SIG_IGN) senales.push_back(SIGHUP);
    return senales;
}

}  // namespace telvane
