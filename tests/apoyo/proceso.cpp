#include "tests/apoyo/proceso.h"

#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

#include "tests/apoyo/tubo.h"

namespace telvane {

namespace {

using Cronometro = std::chrono::steady_clock;

int milisegundosHasta(Cronometro::time_point fin) {
    const auto falta = std::chrono::ceil<std::chrono::milliseconds>(fin - Cronometro::now()).count();
    return static_cast<int>(std::max<std::int64_t>(falta, 0));
}

void cerrar(int& descriptor) {
    if (descriptor >= 0) ::close(std::exchange(descriptor, -1));
}

// Ours, with those of the test on top.
std::vector<std::string> entornoCon(const std::vector<std::string>& otros) {
    std::vector<std::string> todo;
    for (char** e = environ; *e != nullptr; ++e) {
        const std::string una = *e;
        const auto nombre = una.substr(0, una.find('=') + 1);
        const bool cambiada = std::any_of(otros.begin(), otros.end(), [&](const auto& otra) {
            return otra.compare(0, nombre.size(), nombre) == 0;
        });
        if (!cambiada) todo.push_back(una);
    }
    todo.insert(todo.end(), otros.begin(), otros.end());
    return todo;
}

std::vector<char*> punteros(std::vector<std::string>& textos) {
    std::vector<char*> lista;
    for (auto& texto : textos) lista.push_back(texto.data());
    lista.push_back(nullptr);
    return lista;
}

}  // namespace

Proceso::Proceso(const std::vector<std::string>& orden, const std::vector<std::string>& entorno) {
    auto salida = abrirTubo();
    auto errores = abrirTubo();
    salida_.descriptor = salida[0];
    errores_.descriptor = errores[0];

    posix_spawn_file_actions_t acciones;
    ::posix_spawn_file_actions_init(&acciones);
    ::posix_spawn_file_actions_addopen(&acciones, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&acciones, salida[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&acciones, errores[1], STDERR_FILENO);
    auto argumentos = orden;
    auto variables = entornoCon(entorno);
    // A suite that was started by nohup or in the background ignores some, and its children would with it.
    sigset_t senales;
    ::sigemptyset(&senales);
    for (const int senal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) ::sigaddset(&senales, senal);
    posix_spawnattr_t rasgos;
    ::posix_spawnattr_init(&rasgos);
    ::posix_spawnattr_setsigdefault(&rasgos, &senales);
    ::posix_spawnattr_setflags(&rasgos, POSIX_SPAWN_SETSIGDEF);
    const int error = ::posix_spawn(&pid_, orden.front().c_str(), &acciones, &rasgos,
                                    punteros(argumentos).data(), punteros(variables).data());
    ::posix_spawnattr_destroy(&rasgos);
    ::posix_spawn_file_actions_destroy(&acciones);
    cerrar(salida[1]);
    cerrar(errores[1]);
    // Not through the library's own function: its header is not meant for C++ here.
    if (error == 0) pidfd_ = static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0));
    if (error == 0 && pidfd_ >= 0) return;
    const int motivo = error != 0 ? error : errno;
    cerrar(salida_.descriptor);
    cerrar(errores_.descriptor);
    throw std::system_error(motivo, std::generic_category(), orden.front());
}

Proceso::~Proceso() {
    if (!estado_) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    cerrar(pidfd_);
    cerrar(salida_.descriptor);
    cerrar(errores_.descriptor);
}

void Proceso::leer(Tubo& tubo) {
    std::array<char, 65536> trozo;
    const auto leidos = ::read(tubo.descriptor, trozo.data(), trozo.size());
    if (leidos > 0) {
        tubo.texto.append(trozo.data(), static_cast<std::size_t>(leidos));
    } else if (leidos == 0) {
        cerrar(tubo.descriptor);
    }
}

bool Proceso::lineaEntera() const {
    return salida_.texto.find('\n') != std::string::npos;
}

// Reads what comes until a whole line is there or, if asked, the program and both its outputs have ended.
bool Proceso::atender(Cronometro::time_point fin, bool hastaElFinal) {
    for (;;) {
        if (!hastaElFinal && lineaEntera()) return true;
        const bool callado = salida_.descriptor < 0 && (!hastaElFinal || errores_.descriptor < 0);
        if (callado && (!hastaElFinal || estado_)) return hastaElFinal;
        std::array<pollfd, 3> vigilados = {{{salida_.descriptor, POLLIN, 0},
                                            {errores_.descriptor, POLLIN, 0},
                                            {estado_ ? -1 : pidfd_, POLLIN, 0}}};
        const int listos = ::poll(vigilados.data(), vigilados.size(), milisegundosHasta(fin));
        if (listos == 0) return false;
        if (listos < 0) continue;
        if (vigilados[0].revents != 0) leer(salida_);
        if (vigilados[1].revents != 0) leer(errores_);
        if (vigilados[2].revents != 0) {
            int estado = 0;
            ::waitpid(pid_, &estado, 0);
            estado_ = WIFEXITED(estado) ? WEXITSTATUS(estado) : 128 + WTERMSIG(estado);
        }
    }
}

std::optional<std::string> Proceso::linea(Plazo plazo) {
    if (!atender(Cronometro::now() + plazo, false)) return std::nullopt;
    const auto final = salida_.texto.find('\n');
    auto linea = salida_.texto.substr(0, final);
    salida_.texto.erase(0, final + 1);
    return linea;
}

void Proceso::senal(int numero) {
    if (!estado_) ::kill(pid_, numero);
}

std::optional<int> Proceso::terminar(Plazo plazo) {
    if (!atender(Cronometro::now() + plazo, true)) return std::nullopt;
    return estado_;
}

bool esperarA(const std::function<bool()>& condicion, std::chrono::milliseconds plazo) {
    constexpr Cronometro::duration kPausa = std::chrono::milliseconds(5);
    const auto fin = Cronometro::now() + plazo;
    while (true) {
        const auto antes = Cronometro::now();
        if (condicion()) return true;
        const auto ahora = Cronometro::now();
        if (ahora > fin) return false;
        // Looking may be work for both sides: at most half of the time goes into it.
        std::this_thread::sleep_for(std::max(kPausa, ahora - antes));
    }
}

}  // namespace telvane
