#include "link/mapa_com.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>

#include <fmt/format.h>

#include "link/direccion_tcp.h"
#include "link/protocolo.h"
#include "platform/numero.h"
#include "platform/recorte.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kEnPlaca = "ttyS";
// Prefixes in the order of the numbering.
constexpr std::array<std::pair<std::string_view, int>, 3> kFamilias = {
    {{"ttyUSB", 0}, {"ttyACM", 0}, {kEnPlaca, 1}}};

// First line of a small file, without outer blanks; nullopt: it cannot be read.
std::optional<std::string> primeraLinea(const fs::path& archivo) {
    std::ifstream entrada(archivo);
    std::string linea;
    if (!std::getline(entrada, linea)) return std::nullopt;
    return std::string(recortado(linea, " \t"));
}

// The entries of a folder; one that cannot be read has none.
std::vector<fs::path> entradas(const fs::path& carpeta) {
    std::vector<fs::path> lista;
    std::error_code error;
    for (fs::directory_iterator i(carpeta, error), fin; !error && i != fin; i.increment(error)) {
        lista.push_back(i->path());
    }
    return lista;
}

// The kernel lists on-board ports that no machine has; those have no type of chip. A kernel that shows the
// type to root only still tells by the driver: the catch-all one holds the phantoms.
bool tieneHardware(const fs::path& clase) {
    if (const auto tipo = primeraLinea(clase / "type")) return *tipo != "0";
    std::error_code error;
    const auto controlador = fs::read_symlink(clase / "device" / "driver", error);
    return !error && controlador.filename() != "serial8250";
}

// What a device sorts by: family, number, name.
using Orden = std::tuple<int, unsigned, std::string>;

std::optional<Orden> ordenDe(const std::string& nombre) {
    for (const auto& [prefijo, familia] : kFamilias) {
        if (!nombre.starts_with(prefijo)) continue;
        if (const auto numero = numeroDe<unsigned>(std::string_view(nombre).substr(prefijo.size()))) {
            return Orden(familia, *numero, nombre);
        }
    }
    return std::nullopt;
}

struct Dispositivo {
    fs::path ruta;  // without links
    dev_t sistema;
    ino_t nodo;
    dev_t numero;  // of the driver
};

std::optional<Dispositivo> dispositivoDe(const fs::path& archivo) {
    struct stat datos {};
    std::error_code error;
    auto ruta = fs::canonical(archivo, error);
    if (error || ::stat(ruta.c_str(), &datos) != 0 || !S_ISCHR(datos.st_mode)) return std::nullopt;
    return Dispositivo{std::move(ruta), datos.st_dev, datos.st_ino, datos.st_rdev};
}

void anotar(std::vector<Ocupante>& ocupantes, pid_t pid, const fs::path& proc) {
    const auto nombre = primeraLinea(proc / std::to_string(pid) / "comm");
    ocupantes.push_back({pid, nombre.value_or("")});
}

fs::path destinoDe(const fs::path& enlace) {
    std::error_code error;
    return fs::read_symlink(enlace, error);
}

// A container has its own pseudo-terminals under the same names and with the same numbers of the driver.
bool esElMismo(const fs::path& descriptor, const Dispositivo& buscado) {
    constexpr unsigned kPrimeraPty = 136;
    constexpr unsigned kUltimaPty = 143;
    struct stat datos {};
    if (::stat(descriptor.c_str(), &datos) != 0 || datos.st_rdev != buscado.numero) return false;
    const bool pty = major(datos.st_rdev) >= kPrimeraPty && major(datos.st_rdev) <= kUltimaPty;
    return !pty || datos.st_dev == buscado.sistema;
}

// Processes with the device open. Only our own user's descriptors may be looked at. Their names are compared
// first: asking about a file of a network disk may take for ever.
void buscarDescriptores(const Dispositivo& buscado, const fs::path& proc, std::vector<Ocupante>& ocupantes) {
    for (const auto& proceso : entradas(proc)) {
        const auto pid = numeroDe<pid_t>(proceso.filename().native());
        if (!pid) continue;
        const auto descriptores = entradas(proceso / "fd");
        if (std::any_of(descriptores.begin(), descriptores.end(), [&](const fs::path& d) {
                return destinoDe(d) == buscado.ruta && esElMismo(d, buscado);
            })) {
            anotar(ocupantes, *pid, proc);
        }
    }
}

// Processes with a lock on the device: anybody may see those, whoever runs them. A line reads
// "1: FLOCK ADVISORY WRITE 8411 00:1a:3 0 EOF", the device in hexadecimal, then the node.
void buscarCerrojos(const Dispositivo& buscado, const fs::path& proc, std::vector<Ocupante>& ocupantes) {
    const auto clave =
        fmt::format("{:02x}:{:02x}:{}", major(buscado.sistema), minor(buscado.sistema), buscado.nodo);
    std::ifstream entrada(proc / "locks");
    std::string orden;
    std::string clase;
    std::string aviso;
    std::string modo;
    std::string pid;
    std::string lugar;
    std::string resto;
    while (entrada >> orden >> clase >> aviso >> modo >> pid >> lugar && std::getline(entrada, resto)) {
        const auto numero = numeroDe<pid_t>(pid);
        if (lugar == clave && numero && *numero > 0) anotar(ocupantes, *numero, proc);
    }
}

std::vector<Ocupante> ocupantesDe(const Dispositivo& buscado, const fs::path& proc) {
    std::vector<Ocupante> ocupantes;
    buscarDescriptores(buscado, proc, ocupantes);
    buscarCerrojos(buscado, proc, ocupantes);
    std::sort(ocupantes.begin(), ocupantes.end(),
              [](const Ocupante& a, const Ocupante& b) { return a.pid < b.pid; });
    ocupantes.erase(std::unique(ocupantes.begin(), ocupantes.end()), ocupantes.end());
    return ocupantes;
}

fs::path nombreEstable(const Dispositivo& buscado, const fs::path& dev) {
    auto nombres = entradas(dev / "serial" / "by-id");
    std::sort(nombres.begin(), nombres.end());
    const auto nombre = std::find_if(nombres.begin(), nombres.end(), [&](const fs::path& n) {
        std::error_code error;
        return fs::canonical(n, error) == buscado.ruta;
    });
    return nombre == nombres.end() ? fs::path() : *nombre;
}

// The adapter's own words stand at the USB device, some levels above the port.
void describirAdaptador(const std::string& nombre, const fs::path& sys, FichaPuerto& ficha) {
    constexpr int kNiveles = 6;
    std::error_code error;
    auto carpeta = fs::canonical(sys / "class" / "tty" / nombre / "device", error);
    for (int i = 0; !error && i < kNiveles && carpeta.has_relative_path(); ++i) {
        if (fs::exists(carpeta / "idVendor", error)) {
            ficha.producto = primeraLinea(carpeta / "product").value_or("");
            ficha.fabricante = primeraLinea(carpeta / "manufacturer").value_or("");
            ficha.serie = primeraLinea(carpeta / "serial").value_or("");
            return;
        }
        carpeta = carpeta.parent_path();
    }
}

bool puedeUsarse(const fs::path& archivo) {
    return ::faccessat(AT_FDCWD, archivo.c_str(), R_OK | W_OK, AT_EACCESS) == 0;
}

// Whether a device's place holds what was meant as an address: of no file that is named so does a user stand
// before its first folder.
bool pareceDireccion(std::string_view dispositivo) {
    return dispositivo.find("://") != std::string_view::npos || dispositivo.starts_with("tcp:") ||
           dispositivo.substr(0, dispositivo.find('/')).find('@') != std::string_view::npos;
}

// What stands before the "@" of an address may be a secret.
std::string parVisible(const std::string& par) {
    const auto arroba = par.rfind('@');
    const auto igual = par.find('=');
    const auto dispositivo = igual == std::string::npos ? 0 : igual + 1;
    if (arroba == std::string::npos || !pareceDireccion(std::string_view(par).substr(dispositivo)))
        return nombreVisible(par);
    const auto esquema = par.find("://", dispositivo);
    const auto desde = esquema < arroba ? esquema + 3 : dispositivo;
    return nombreVisible(par.substr(0, desde) + "…" + par.substr(arroba));
}

// One "N=DEVICE", and what stands before it in a message.
struct ParDicho {
    const std::string& texto;
    std::string_view opcion;
};

[[noreturn]] void rehusarPar(const ParDicho& par, const std::string& que) {
    throw ErrorPuerto(MotivoPuerto::lineaInvalida,
                      fmt::format("{} {}: {}", par.opcion, parVisible(par.texto), que));
}

// A device's path, or an address as it is always written. par: the pair that it stands in.
fs::path dispositivoDelPar(const ParDicho& par, std::string_view donde) {
    if (donde.empty()) rehusarPar(par, "falta el dispositivo");
    const auto direccion = leerDireccionTcp(donde);
    if (direccion) return direccion->completa();
    if (pareceDireccion(donde)) {
        rehusarPar(par,
                   "se espera tcp://MÁQUINA:PUERTO, con el puerto de 1 a 65535, por ejemplo "
                   "tcp://192.168.1.20:4001");
    }
    return donde;
}

}  // namespace

std::vector<fs::path> dispositivosPresentes(const RaicesSistema& raices) {
    std::vector<std::pair<Orden, fs::path>> hallados;
    for (const auto& archivo : entradas(raices.dev)) {
        const auto nombre = archivo.filename().string();
        const auto orden = ordenDe(nombre);
        if (!orden) continue;
        const bool enPlaca = nombre.starts_with(kEnPlaca);
        if (enPlaca && !tieneHardware(raices.sys / "class" / "tty" / nombre)) continue;
        hallados.emplace_back(*orden, archivo);
    }
    std::sort(hallados.begin(), hallados.end());
    std::vector<fs::path> presentes;
    presentes.reserve(hallados.size());
    for (auto& hallado : hallados) presentes.push_back(std::move(hallado.second));
    return presentes;
}

MapaCom MapaCom::automatico(RaicesSistema raices) {
    MapaCom mapa;
    mapa.raices_ = std::move(raices);
    mapa.actualizar();
    return mapa;
}

MapaCom MapaCom::fijo(const std::vector<std::string>& pares, std::string_view opcion) {
    MapaCom mapa;
    for (const auto& texto : pares) {
        const ParDicho par{texto, opcion};
        const auto igual = texto.find('=');
        if (igual == std::string::npos)
            rehusarPar(par, "se espera NÚMERO=DISPOSITIVO, por ejemplo 1=/dev/ttyUSB0");
        const auto numero = numeroDe<int>(std::string_view(texto).substr(0, igual));
        if (!numero || *numero < 1 || *numero > kUltimoPuerto) {
            rehusarPar(par, fmt::format("el número va de 1 a {}", kUltimoPuerto));
        }
        auto dispositivo = dispositivoDelPar(par, std::string_view(texto).substr(igual + 1));
        if (!mapa.dispositivos_.emplace(*numero, std::move(dispositivo)).second) {
            rehusarPar(par, fmt::format("el número {} ya tiene dispositivo", *numero));
        }
    }
    return mapa;
}

std::optional<fs::path> MapaCom::dispositivo(int numero) const {
    const auto lugar = dispositivos_.find(numero);
    return lugar == dispositivos_.end() ? std::nullopt : std::optional(lugar->second);
}

std::vector<int> MapaCom::numeros() const {
    std::vector<int> lista;
    for (const auto& [numero, dispositivo] : dispositivos_) lista.push_back(numero);
    return lista;
}

void MapaCom::actualizar() {
    if (!raices_) return;
    for (const auto& presente : dispositivosPresentes(*raices_)) {
        const bool conocido = std::any_of(dispositivos_.begin(), dispositivos_.end(),
                                          [&](const auto& lugar) { return lugar.second == presente; });
        if (!conocido) alojar(presente);
    }
}

void MapaCom::alojar(const fs::path& dispositivo) {
    for (int numero = 1; numero <= kUltimoPuerto; ++numero) {
        auto& lugar = dispositivos_[numero];
        std::error_code error;
        if (!lugar.empty() && fs::exists(lugar, error)) continue;
        lugar = dispositivo;
        return;
    }
}

FichaPuerto describirPuerto(const fs::path& dispositivo, const RaicesSistema& raices) {
    FichaPuerto ficha;
    ficha.dispositivo = dispositivo;
    if (esDireccionTcp(dispositivo.native())) {
        ficha.estado = EstadoPuerto::enRed;
        return ficha;
    }
    const auto presente = dispositivoDe(dispositivo);
    if (!presente) return ficha;

    describirAdaptador(presente->ruta.filename().string(), raices.sys, ficha);
    ficha.nombreEstable = nombreEstable(*presente, raices.dev);
    ficha.ocupantes = ocupantesDe(*presente, raices.proc);
    if (!puedeUsarse(dispositivo)) {
        ficha.estado = EstadoPuerto::sinPermiso;
        ficha.grupo = grupoConPermiso(dispositivo);
    } else {
        ficha.estado = ficha.ocupantes.empty() ? EstadoPuerto::libre : EstadoPuerto::ocupado;
    }
    return ficha;
}

std::string grupoConPermiso(const fs::path& archivo) {
    struct stat datos {};
    constexpr mode_t kLeerEscribir = S_IRGRP | S_IWGRP;
    if (::stat(archivo.c_str(), &datos) != 0 || (datos.st_mode & kLeerEscribir) != kLeerEscribir) return "";
    const group* grupo = ::getgrgid(datos.st_gid);
    return grupo ? grupo->gr_name : std::to_string(datos.st_gid);
}

}  // namespace telvane
