#include "sistema/systemctl.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/descriptor.h"

namespace telvane {

namespace {

std::string leerTodo(int descriptor) {
    std::string todo;
    std::array<char, 4096> trozo{};
    while (true) {
        const auto n = ::read(descriptor, trozo.data(), trozo.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return todo;
        todo.append(trozo.data(), static_cast<std::size_t>(n));
    }
}

// Its standard output is the descriptor, its complaints are nobody's.
std::optional<pid_t> empezar(std::vector<std::string>& palabras, int salida) {
    std::vector<char*> argumentos;
    argumentos.reserve(palabras.size() + 1);
    for (auto& palabra : palabras) argumentos.push_back(palabra.data());
    argumentos.push_back(nullptr);
    posix_spawn_file_actions_t acciones;
    if (::posix_spawn_file_actions_init(&acciones) != 0) return std::nullopt;
    ::posix_spawn_file_actions_addopen(&acciones, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&acciones, salida, STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&acciones, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t proceso = 0;
    const int error =
        ::posix_spawnp(&proceso, argumentos.front(), &acciones, nullptr, argumentos.data(), ::environ);
    ::posix_spawn_file_actions_destroy(&acciones);
    return error == 0 ? std::optional(proceso) : std::nullopt;
}

}  // namespace

std::optional<std::string> preguntarASystemctl(const std::vector<std::string>& argumentos,
                                               const std::filesystem::path& enMarcha) {
    std::error_code sinMotivo;
    if (!std::filesystem::is_directory(enMarcha, sinMotivo)) return std::nullopt;
    std::array<int, 2> tubo{};
    if (::pipe2(tubo.data(), O_CLOEXEC) != 0) return std::nullopt;
    const Descriptor lectura(tubo[0]);
    // It writes some moments in the time of whoever asks.
    std::vector<std::string> palabras = {"env", "TZ=UTC", "LC_ALL=C", "systemctl"};
    palabras.insert(palabras.end(), argumentos.begin(), argumentos.end());
    std::optional<pid_t> proceso;
    {
        const Descriptor escritura(tubo[1]);
        proceso = empezar(palabras, escritura());
    }
    if (!proceso) return std::nullopt;
    auto texto = leerTodo(lectura());
    int estado = 0;
    while (::waitpid(*proceso, &estado, 0) < 0 && errno == EINTR) continue;
    return WIFEXITED(estado) && WEXITSTATUS(estado) == 0 ? std::optional(std::move(texto)) : std::nullopt;
}

}  // namespace telvane
