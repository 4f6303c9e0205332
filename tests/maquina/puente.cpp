#include "tests/maquina/puente.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>

namespace telvane {

namespace {

int comprobado(int resultado, const char* que) {
    if (resultado < 0) throw std::system_error(errno, std::generic_category(), que);
    return resultado;
}

int abrirTerminal(const std::filesystem::path& ruta) {
    const int numero = comprobado(::open(ruta.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), "open");
    termios linea{};
    comprobado(::tcgetattr(numero, &linea), "tcgetattr");
    ::cfmakeraw(&linea);
    comprobado(::tcsetattr(numero, TCSANOW, &linea), "tcsetattr");
    return numero;
}

int escuchar(const std::filesystem::path& ruta) {
    const int numero = comprobado(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
    sockaddr_un direccion{};
    direccion.sun_family = AF_UNIX;
    ruta.string().copy(direccion.sun_path, sizeof direccion.sun_path - 1);
    comprobado(::bind(numero, reinterpret_cast<const sockaddr*>(&direccion), sizeof direccion), "bind");
    comprobado(::listen(numero, 1), "listen");
    return numero;
}

// False: that end is over.
bool pasar(int desde, int hacia) {
    std::array<char, 4096> trozo;
    const auto leidos = ::read(desde, trozo.data(), trozo.size());
    return leidos > 0 && ::write(hacia, trozo.data(), static_cast<std::size_t>(leidos)) == leidos;
}

}  // namespace

Puente::Puente(const std::filesystem::path& terminal, const std::filesystem::path& enchufe)
    : terminal_(abrirTerminal(terminal)),
      escucha_(escuchar(enchufe)),
      final_(comprobado(::eventfd(0, EFD_CLOEXEC), "eventfd")),
      hilo_([this] { llevar(); }) {}

Puente::~Puente() {
    ::eventfd_write(final_, 1);
    hilo_.join();
    for (const int numero : {terminal_, escucha_, final_}) ::close(numero);
}

void Puente::llevar() const {
    int cliente = -1;
    for (bool sigue = true; sigue;) {
        std::array<pollfd, 3> vigilados = {
            {{final_, POLLIN, 0}, {cliente < 0 ? escucha_ : cliente, POLLIN, 0}, {-1, POLLIN, 0}}};
        if (cliente >= 0) vigilados[2].fd = terminal_;
        if (::poll(vigilados.data(), vigilados.size(), -1) < 0) continue;
        if (vigilados[0].revents != 0) break;
        if (cliente < 0) {
            cliente = ::accept4(escucha_, nullptr, nullptr, SOCK_CLOEXEC);
            continue;
        }
        if (vigilados[1].revents != 0) sigue = pasar(cliente, terminal_);
        if (vigilados[2].revents != 0) sigue = pasar(terminal_, cliente) && sigue;
    }
    if (cliente >= 0) ::close(cliente);
}

}  // namespace telvane
