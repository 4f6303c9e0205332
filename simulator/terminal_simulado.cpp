#include "simulator/terminal_simulado.h"

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "link/protocolo.h"
#include "link/velocidades.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"
#include "simulator/reserva.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fallar(const std::string& que) {
    throw std::runtime_error(fmt::format("{}: {}", que, motivoSistema(errno)));
}

// Of the link itself, wherever it leads.
Descriptor reservarNombre(const fs::path& enlace) {
    if (auto reserva = reservar("telvane-sim", lugarDeNombre(enlace))) return std::move(*reserva);
    throw std::runtime_error(
        fmt::format("otro telvane-sim atiende {}: termínelo o dé otro nombre", nombreVisible(enlace)));
}

// Neither echo nor line editing: bytes pass as they are.
void ponerEnCrudo(int descriptor) {
    termios ajustes{};
    if (::tcgetattr(descriptor, &ajustes) != 0) fallar("no se pudo leer el estado del terminal");
    ::cfmakeraw(&ajustes);
    ::cfsetspeed(&ajustes, codigoDeVelocidad(kBaudios).value());
    if (::tcsetattr(descriptor, TCSANOW, &ajustes) != 0) fallar("no se pudo preparar el terminal");
}

}  // namespace

TerminalSimulado::TerminalSimulado(fs::path enlace)
    : enlace_(std::move(enlace)), reserva_(reservarNombre(enlace_)) {
    reabrir();
}

TerminalSimulado::~TerminalSimulado() {
    colgar();
}

void TerminalSimulado::reabrir() {
    abrirPty();
    enlazar();
}

void TerminalSimulado::abrirPty() {
    maestro_ = Descriptor(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (maestro_() < 0) fallar("no se pudo abrir un pseudoterminal");
    if (::grantpt(maestro_()) != 0 || ::unlockpt(maestro_()) != 0)
        fallar("no se pudo habilitar el pseudoterminal");
    std::array<char, 64> nombre{};
    if (::ptsname_r(maestro_(), nombre.data(), nombre.size()) != 0)
        fallar("el pseudoterminal no tiene nombre");
    nombre_ = nombre.data();
    esclavo_ = Descriptor(::open(nombre_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (esclavo_() < 0) fallar(fmt::format("no se pudo abrir {}", nombre_));
    ponerEnCrudo(esclavo_());
    if (::fcntl(maestro_(), F_SETFL, O_NONBLOCK) != 0) fallar("no se pudo preparar el pseudoterminal");
}

void TerminalSimulado::enlazar() {
    std::error_code error;
    const auto que = fs::symlink_status(enlace_, error).type();
    // One that was killed leaves its link behind, and the system gives its terminal's number to the next who
    // asks, ourselves included. Nobody else serves this name (see reservarNombre).
    const bool deUnaPty = fs::read_symlink(enlace_, error).parent_path() == "/dev/pts";
    if (que == fs::file_type::symlink && (deUnaPty || !fs::exists(enlace_, error))) {
        fs::remove(enlace_, error);
    } else if (que == fs::file_type::symlink) {
        throw std::runtime_error(fmt::format(
            "{} ya lleva a otro dispositivo o archivo: bórrelo o dé otro nombre", nombreVisible(enlace_)));
    } else if (que != fs::file_type::not_found && que != fs::file_type::none) {
        throw std::runtime_error(
            fmt::format("{} ya existe y no es un enlace: dé otro nombre", nombreVisible(enlace_)));
    }
    // Why a name cannot be looked up is told here as well.
    if (::symlink(nombre_.c_str(), enlace_.c_str()) == 0) return;
    const auto carpeta = enlace_.parent_path();
    const auto motivo =
        errno == ENOENT && !carpeta.empty() ? motivoSinCarpeta(carpeta) : motivoSistema(errno);
    throw std::runtime_error(fmt::format("no se pudo crear {}: {}", nombreVisible(enlace_), motivo));
}

void TerminalSimulado::colgar() {
    std::error_code error;
    // Somebody else's link by now stays.
    if (maestro_() >= 0 && fs::read_symlink(enlace_, error) == nombre_) fs::remove(enlace_, error);
    esclavo_ = Descriptor();
    maestro_ = Descriptor();
}

std::vector<std::uint8_t> TerminalSimulado::leer() const {
    std::vector<std::uint8_t> bytes(4096);
    const auto leidos = ::read(maestro_(), bytes.data(), bytes.size());
    if (leidos < 0 && errno != EAGAIN && errno != EINTR) fallar("no se pudo leer del pseudoterminal");
    bytes.resize(leidos > 0 ? static_cast<std::size_t>(leidos) : 0);
    return bytes;
}

void TerminalSimulado::escribir(std::span<const std::uint8_t> bytes) const {
    while (!bytes.empty()) {
        const auto escritos = ::write(maestro_(), bytes.data(), bytes.size());
        if (escritos > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(escritos));
        } else if (errno == EAGAIN) {
            return;
        } else if (errno != EINTR) {
            fallar("no se pudo escribir en el pseudoterminal");
        }
    }
}

}  // namespace telvane
