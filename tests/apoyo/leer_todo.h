// A whole file as it stands.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace telvane {

// Empty when it cannot be read.
inline std::string leerTodo(const std::filesystem::path& ruta) {
    std::ifstream archivo(ruta, std::ios::binary);
    return {std::istreambuf_iterator<char>(archivo), {}};
}

}  // namespace telvane
