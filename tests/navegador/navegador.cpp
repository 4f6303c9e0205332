#include "tests/navegador/navegador.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>

#include "tests/apoyo/tubo.h"

namespace telvane {

namespace {

using Json = Navegador::Json;

std::string deBase64(const std::string& texto) {
    constexpr std::string_view kLetras = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0;
    int cuantos = 0;
    for (const char c : texto) {
        const auto letra = kLetras.find(c);
        if (letra == std::string_view::npos) continue;
        bits = (bits << 6 | static_cast<unsigned>(letra)) & 0xFFFFFFU;
        cuantos += 6;
        if (cuantos < 8) continue;
        cuantos -= 8;
        bytes += static_cast<char>(bits >> cuantos & 0xFFU);
    }
    return bytes;
}

}  // namespace

Navegador::Navegador(const std::string& programa, const Pantalla& pantalla) {
    auto ida = abrirTubo();
    auto vuelta = abrirTubo();
    // Above what the child's own two will be, so that neither is closed by putting the other in its place.
    const int entrada = ::fcntl(ida[0], F_DUPFD_CLOEXEC, 10);
    const int salida = ::fcntl(vuelta[1], F_DUPFD_CLOEXEC, 10);
    std::vector<std::string> argumentos{programa,
                                        "--headless",
                                        "--no-sandbox",
                                        "--disable-gpu",
                                        "--disable-quic",
                                        "--no-first-run",
                                        "--disable-background-networking",
                                        "--disable-component-update",
                                        "--disable-sync",
                                        "--disable-dev-shm-usage",
                                        "--hide-scrollbars",
                                        "--remote-debugging-pipe",
                                        "--user-data-dir=" + (carpeta_.ruta() / "perfil").string(),
                                        "about:blank"};
    std::vector<char*> punteros;
    for (auto& a : argumentos) punteros.push_back(a.data());
    punteros.push_back(nullptr);
    posix_spawn_file_actions_t acciones;
    ::posix_spawn_file_actions_init(&acciones);
    ::posix_spawn_file_actions_addopen(&acciones, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addopen(&acciones, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_adddup2(&acciones, entrada, 3);
    ::posix_spawn_file_actions_adddup2(&acciones, salida, 4);
    const int error =
        ::posix_spawn(&proceso_, programa.c_str(), &acciones, nullptr, punteros.data(), ::environ);
    ::posix_spawn_file_actions_destroy(&acciones);
    for (const int descriptor : {ida[0], vuelta[1], entrada, salida}) ::close(descriptor);
    hacia_ = ida[1];
    desde_ = vuelta[0];
    if (error != 0) throw std::system_error(error, std::generic_category(), programa);

    const auto destino = orden("Target.createTarget", {{"url", "about:blank"}})["targetId"];
    sesion_ = orden("Target.attachToTarget", {{"targetId", destino}, {"flatten", true}})["sessionId"];
    for (const auto* dominio : {"Page", "Network", "Runtime", "Log"}) orden(std::string(dominio) + ".enable");
    this->pantalla(pantalla);
}

void Navegador::pantalla(const Pantalla& pantalla) {
    orden(
        "Emulation.setDeviceMetricsOverride",
        {{"width", pantalla.ancho}, {"height", pantalla.alto}, {"deviceScaleFactor", 1}, {"mobile", false}});
    orden(
        "Emulation.setEmulatedMedia",
        {{"features", {{{"name", "prefers-color-scheme"}, {"value", pantalla.oscura ? "dark" : "light"}}}}});
}

Navegador::~Navegador() {
    ::close(hacia_);
    ::close(desde_);
    if (proceso_ <= 0) return;
    // Its folder goes with us: it must not write any more.
    ::kill(proceso_, SIGKILL);
    ::waitpid(proceso_, nullptr, 0);
}

Json Navegador::recibir() {
    for (;;) {
        const auto fin = leido_.find('\0');
        if (fin != std::string::npos) {
            auto mensaje = Json::parse(leido_.substr(0, fin));
            leido_.erase(0, fin + 1);
            return mensaje;
        }
        pollfd vigilado{.fd = desde_, .events = POLLIN, .revents = 0};
        const auto plazo = std::chrono::milliseconds(kPlazo).count();
        if (::poll(&vigilado, 1, static_cast<int>(plazo)) <= 0)
            throw std::runtime_error("el navegador calla");
        std::array<char, 65536> trozo;
        const auto leidos = ::read(desde_, trozo.data(), trozo.size());
        if (leidos <= 0) throw std::runtime_error("el navegador se fue");
        leido_.append(trozo.data(), static_cast<std::size_t>(leidos));
    }
}

void Navegador::anotar(const Json& suceso) {
    const std::string metodo = suceso.value("method", "");
    sucesos_.push_back(metodo);
    const auto parametros = suceso.value("params", Json::object());
    if (metodo == "Network.requestWillBeSent") {
        const std::string url = parametros["request"]["url"];
        if (url != pagina_) pedidos_.push_back(url);
    } else if (metodo == "Log.entryAdded") {
        quejas_.push_back(parametros["entry"]["text"]);
    } else if (metodo == "Runtime.exceptionThrown") {
        quejas_.push_back(parametros["exceptionDetails"].dump());
    } else if (metodo == "Runtime.consoleAPICalled") {
        quejas_.push_back(parametros["args"].dump());
    }
}

Json Navegador::orden(const std::string& metodo, const Json& parametros) {
    Json mensaje{{"id", ++numero_}, {"method", metodo}, {"params", parametros}};
    if (!sesion_.empty()) mensaje["sessionId"] = sesion_;
    auto texto = mensaje.dump();
    texto += '\0';
    for (std::size_t escrito = 0; escrito < texto.size();) {
        const auto n = ::write(hacia_, texto.data() + escrito, texto.size() - escrito);
        if (n <= 0) throw std::system_error(errno, std::generic_category(), "navegador");
        escrito += static_cast<std::size_t>(n);
    }
    for (;;) {
        const auto recibido = recibir();
        if (!recibido.contains("id")) {
            anotar(recibido);
        } else if (recibido["id"] == numero_) {
            if (recibido.contains("error"))
                throw std::runtime_error(metodo + ": " + recibido["error"].dump());
            return recibido["result"];
        }
    }
}

void Navegador::esperarSuceso(const std::string& metodo) {
    while (std::ranges::find(sucesos_, metodo) == sucesos_.end()) anotar(recibir());
}

void Navegador::abrir(const std::filesystem::path& pagina) {
    pagina_ = "file://" + pagina.string();
    sucesos_.clear();
    orden("Page.navigate", {{"url", pagina_}});
    esperarSuceso("Page.loadEventFired");
}

Json Navegador::valor(const std::string& expresion) {
    const auto r = orden("Runtime.evaluate",
                         {{"expression", expresion}, {"returnByValue", true}, {"awaitPromise", true}});
    if (r.contains("exceptionDetails")) throw std::runtime_error(r["exceptionDetails"].dump());
    return r["result"].value("value", Json());
}

void Navegador::tecla(const std::string& nombre, int codigo) {
    for (const auto* tipo : {"keyDown", "keyUp"}) {
        Json parametros{{"type", tipo}, {"key", nombre}, {"code", nombre}, {"windowsVirtualKeyCode", codigo}};
        if (nombre == "Enter") parametros["text"] = "\r";
        orden("Input.dispatchKeyEvent", parametros);
    }
}

std::string Navegador::imprimir() {
    return deBase64(
        orden("Page.printToPDF", {{"preferCSSPageSize", true}, {"printBackground", true}})["data"]);
}

std::string Navegador::foto() {
    return deBase64(orden("Page.captureScreenshot")["data"]);
}

}  // namespace telvane
