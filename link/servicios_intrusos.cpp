#include "link/servicios_intrusos.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr std::array<std::pair<std::string_view, ServicioIntruso>, 2> kProcesos = {
    {{"ModemManager", ServicioIntruso::modem}, {"brltty", ServicioIntruso::braille}}};

bool esProceso(const fs::path& carpeta) {
    const auto nombre = carpeta.filename().string();
    return std::all_of(nombre.begin(), nombre.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

}  // namespace

std::vector<ServicioIntruso> serviciosIntrusos(const RaicesSistema& raices) {
    std::vector<ServicioIntruso> hallados;
    std::error_code error;
    for (fs::directory_iterator i(raices.proc, error), fin; !error && i != fin; i.increment(error)) {
        if (!esProceso(i->path())) continue;
        std::string nombre;
        std::getline(std::ifstream(i->path() / "comm") >> std::ws, nombre);
        for (const auto& [proceso, servicio] : kProcesos) {
            if (nombre == proceso) hallados.push_back(servicio);
        }
    }
    std::sort(hallados.begin(), hallados.end());
    hallados.erase(std::unique(hallados.begin(), hallados.end()), hallados.end());
    return hallados;
}

}  // namespace telvane
