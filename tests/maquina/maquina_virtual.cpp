#include "tests/maquina/maquina_virtual.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <stdexcept>

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr const char* kQemu = PROGRAMA_QEMU;
constexpr const char* kBusybox = PROGRAMA_BUSYBOX;

// The newest kernel that this user can read; empty: none.
fs::path nucleo() {
    fs::path elegido;
    std::error_code sinCarpeta;
    for (const auto& entrada : fs::directory_iterator("/boot", sinCarpeta)) {
        const auto nombre = entrada.path().filename().string();
        if (nombre.rfind("vmlinuz-", 0) != 0 || ::access(entrada.path().c_str(), R_OK) != 0) continue;
        elegido = std::max(elegido, entrada.path());
    }
    return elegido;
}

std::string salidaDe(const std::vector<std::string>& orden) {
    Proceso proceso(orden);
    const auto estado = proceso.terminar();
    if (estado != 0) throw std::runtime_error(orden.front() + ": " + proceso.errores());
    return proceso.salida();
}

// What the loader would load for it, the loader included.
std::set<fs::path> bibliotecasDe(const fs::path& programa) {
    std::set<fs::path> rutas;
    const auto texto = salidaDe({"/usr/bin/ldd", programa.string()});
    for (auto desde = texto.find('/'); desde != std::string::npos; desde = texto.find('/', desde)) {
        const auto hasta = texto.find_first_of(" \n", desde);
        rutas.insert(texto.substr(desde, hasta - desde));
        desde = hasta;
    }
    return rutas;
}

void copiar(const fs::path& desde, const fs::path& hacia) {
    fs::create_directories(hacia.parent_path());
    fs::copy_file(desde, hacia, fs::copy_options::skip_existing);
}

}  // namespace

std::string MaquinaVirtual::queFalta() {
    if (*kQemu == '\0') return "qemu-system-x86_64 (paquete qemu-system-x86)";
    if (*kBusybox == '\0') return "busybox (paquete busybox-static)";
    if (nucleo().empty()) return "un núcleo legible en /boot (paquete linux-image-cloud-amd64)";
    return "";
}

MaquinaVirtual::MaquinaVirtual(const std::vector<fs::path>& programas,
                               const std::vector<std::string>& ordenes, const fs::path& linea)
    : mando_(carpeta_ / "mando") {
    const auto disco = prepararDisco(programas, ordenes);
    emulador_ = std::make_unique<Proceso>(
        std::vector<std::string>{kQemu,
                                 "-machine",
                                 "pc,accel=tcg",
                                 "-nodefaults",
                                 "-display",
                                 "none",
                                 "-no-reboot",
                                 "-m",
                                 "256",
                                 "-kernel",
                                 nucleo().string(),
                                 "-initrd",
                                 disco.string(),
                                 "-append",
                                 "console=ttyS0 quiet panic=-1",
                                 "-chardev",
                                 "stdio,id=consola,signal=off",
                                 "-serial",
                                 "chardev:consola",
                                 "-chardev",
                                 "socket,id=linea,path=" + linea.string(),
                                 "-serial",
                                 "chardev:linea",
                                 "-monitor",
                                 "unix:" + mando_.string() + ",server=on,wait=off"});
}

fs::path MaquinaVirtual::prepararDisco(const std::vector<fs::path>& programas,
                                       const std::vector<std::string>& ordenes) const {
    const auto raiz = carpeta_ / "raiz";
    for (const auto* punto : {"proc", "sys", "dev", "tmp"}) fs::create_directories(raiz / punto);
    copiar(kBusybox, raiz / "bin/busybox");
    for (const auto& programa : programas) {
        copiar(programa, raiz / "bin" / programa.filename());
        for (const auto& biblioteca : bibliotecasDe(programa)) {
            copiar(fs::canonical(biblioteca), raiz / biblioteca.relative_path());
        }
    }
    {
        std::ofstream inicio(raiz / "init");
        inicio << "#!/bin/busybox sh\n"
                  "/bin/busybox mount -t proc proc /proc\n"
                  "/bin/busybox mount -t sysfs sys /sys\n"
                  "/bin/busybox mount -t devtmpfs dev /dev\n"
                  "/bin/busybox --install -s /bin\n"
                  "export PATH=/bin LC_ALL=C.UTF-8\n"
                  "cd /tmp\n";
        for (const auto& orden : ordenes) inicio << orden << '\n';
        inicio << "poweroff -f\n";
    }
    fs::permissions(raiz / "init", fs::perms::owner_exec, fs::perm_options::add);
    const auto disco = carpeta_ / "disco";
    salidaDe({kBusybox, "sh", "-c",
              "cd \"$1\" && " + std::string(kBusybox) + " find . | " + kBusybox + " cpio -o -H newc >\"$2\"",
              "sh", raiz.string(), disco.string()});
    return disco;
}

std::optional<std::string> MaquinaVirtual::linea() {
    auto texto = emulador_->linea(kPlazo);
    if (texto) std::erase(*texto, '\r');
    return texto;
}

std::string MaquinaVirtual::resto() {
    std::string todo;
    while (const auto una = linea()) todo += *una + "\n";
    if (emulador_->terminar(kPlazo) != 0) throw std::runtime_error("qemu: " + emulador_->errores());
    return todo;
}

void MaquinaVirtual::cortarLinea() {
    const int enchufe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un direccion{};
    direccion.sun_family = AF_UNIX;
    mando_.string().copy(direccion.sun_path, sizeof direccion.sun_path - 1);
    constexpr std::string_view kOrden = "chardev-send-break linea\n";
    const bool hecho =
        ::connect(enchufe, reinterpret_cast<const sockaddr*>(&direccion), sizeof direccion) == 0 &&
        ::write(enchufe, kOrden.data(), kOrden.size()) == static_cast<ssize_t>(kOrden.size());
    // The order is carried out once the monitor prompts again: its greeting, then the prompt after the order.
    std::string dicho;
    char letra = 0;
    while (hecho && std::count(dicho.begin(), dicho.end(), ')') < 2 && ::read(enchufe, &letra, 1) == 1) {
        dicho += letra;
    }
    ::close(enchufe);
    if (!hecho) throw std::runtime_error("el mando de la máquina no responde");
}

std::string huella(const fs::path& ruta) {
    const auto texto = salidaDe({kBusybox, "sha256sum", ruta.string()});
    return texto.substr(0, texto.find(' '));
}

}  // namespace telvane
