#include "calidad/marcas.h"

namespace telvane {

std::vector<std::string> Marcas::lista() const {
    std::vector<std::string> todas;
    if (ninguna()) return todas;
    for (std::size_t canal = 0; canal < kCanales; ++canal) {
        for (std::size_t marca = 0; marca < kMarcas; ++marca) {
            if (!tiene(static_cast<Canal>(canal), static_cast<Marca>(marca))) continue;
            todas.push_back(std::string(kNombresCanal[canal]) + ':' + std::string(kNombresMarca[marca]));
        }
    }
    if (hueco()) todas.emplace_back("hueco");
    if (conflicto()) todas.emplace_back("conflicto");
    return todas;
}

std::string Marcas::texto() const {
    std::string junto;
    for (const auto& una : lista()) {
        if (!junto.empty()) junto += ' ';
        junto += una;
    }
    return junto;
}

}  // namespace telvane
