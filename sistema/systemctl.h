// What systemd knows of its units.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace telvane {

// Runs systemctl with these arguments and gives its standard output. nullopt: this machine does not run on
// systemd, or it does not answer. enMarcha: the folder that is there where it does.
std::optional<std::string> preguntarASystemctl(const std::vector<std::string>& argumentos,
                                               const std::filesystem::path& enMarcha = "/run/systemd/system");

}  // namespace telvane
