// What the console tool gets from outside besides its console: the logger's side of things.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "cli/ejecuciones.h"
#include "consola/entorno_consola.h"
#include "link/mapa_com.h"
#include "link/puerto_serie.h"
#include "platform/inhibidor.h"

namespace telvane {

// Where the logger's ports come from, and what a download may hold on to.
struct EquipoCli {
    std::function<std::unique_ptr<Puertos>(const MapaCom&)> abrirPuertos;
    RaicesSistema raices = {};
    // Keeps the machine awake during a download; none: it may sleep.
    Inhibidor* inhibidor = nullptr;
    // Who is asked for runs of the download; none: nobody.
    Systemctl systemctl = {};
    // Of the stations' files that systemd's units read; none: the usual one.
    std::optional<std::filesystem::path> estaciones = {};
    std::function<std::chrono::sys_seconds()> ahoraUtc = [] {
        return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    };
};

struct EntornoCli : EntornoConsola, EquipoCli {};

}  // namespace telvane
