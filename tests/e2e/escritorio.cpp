#include "tests/e2e/escritorio.h"

#include <unistd.h>

#include <stdexcept>

namespace telvane {

namespace {

// The first line tells where it can be reached, once it can.
std::string esperarDireccion(Proceso& proceso, const std::string& quien) {
    const auto linea = proceso.linea();
    if (!linea) throw std::runtime_error(quien + ": " + proceso.errores());
    return *linea;
}

}  // namespace

Escritorio::Escritorio() {
    for (const auto* nombre : {"casa", "config", "datos", "ejecucion"})
        std::filesystem::create_directory(carpeta_ / nombre);
    std::filesystem::permissions(carpeta_ / "ejecucion", std::filesystem::perms::owner_all);
    entorno_ = {"HOME=" + (carpeta_ / "casa").string(), "XDG_CONFIG_HOME=" + (carpeta_ / "config").string(),
                "XDG_DATA_HOME=" + (carpeta_ / "datos").string(),
                "XDG_RUNTIME_DIR=" + (carpeta_ / "ejecucion").string(), "LC_ALL=C.UTF-8",
                "QT_QPA_PLATFORM=xcb", "QT_QPA_PLATFORMTHEME=", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1",
                // A file dialog's thread is detached: the leak checker, which stops every thread at the end,
                // fails on one that is just going. The window's tests in process look for leaks.
                "ASAN_OPTIONS=detect_leaks=0"};

    // A display that no other test has: servers that choose one themselves take no lock, and one that ends
    // takes away the socket of the one that has just chosen the same. It says when it can be reached. One
    // that begins anew when its last window has gone starts a compiler of keyboards, which would hold the
    // display for a moment longer than the server that is killed then.
    constexpr int kPrimera = 1000;
    constexpr int kPantallas = 58000;
    pantalla_ = std::make_unique<Proceso>(std::vector<std::string>{
        PROGRAMA_XVFB, ":" + std::to_string(kPrimera + ::getpid() % kPantallas), "-displayfd", "1",
        "-noreset", "-nolisten", "tcp", "-screen", "0", "1280x1024x24"});
    nombrePantalla_ = ":" + esperarDireccion(*pantalla_, "Xvfb");
    entorno_.push_back("DISPLAY=" + nombrePantalla_);
    sesion_ = std::make_unique<Proceso>(
        std::vector<std::string>{PROGRAMA_DBUS, "--session", "--nofork", "--print-address=1"}, entorno_);
    bus_ = esperarDireccion(*sesion_, "dbus-daemon");
    entorno_.push_back("DBUS_SESSION_BUS_ADDRESS=" + bus_);
}

std::string Escritorio::variable(const std::string& nombre) const {
    for (const auto& una : entorno_) {
        if (una.starts_with(nombre + "=")) return una.substr(nombre.size() + 1);
    }
    return "";
}

}  // namespace telvane
