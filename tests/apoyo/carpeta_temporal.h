// A folder of its own for each test, gone with it.
#pragma once

#include <filesystem>
#include <string>

namespace telvane {

class CarpetaTemporal {
   public:
    CarpetaTemporal();
    CarpetaTemporal(const CarpetaTemporal&) = delete;
    CarpetaTemporal& operator=(const CarpetaTemporal&) = delete;
    ~CarpetaTemporal();

    const std::filesystem::path& ruta() const { return ruta_; }
    std::filesystem::path operator/(const std::string& nombre) const { return ruta_ / nombre; }

   private:
    std::filesystem::path ruta_;
};

}  // namespace telvane
