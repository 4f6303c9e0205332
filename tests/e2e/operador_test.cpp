// An operator at the built window with a real mouse and keyboard: he clicks, types, unplugs the logger and
// kills the program at random, on a line that fails at random. TELVANE_OPERADOR_SEGUNDOS says for how long
// (10 minutes), TELVANE_OPERADOR_SEMILLA from which number on (any, and printed).
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "loggerconfig/pasos_serie.h"
#include "tests/apoyo/azar.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/apoyo/leyes_de_reposo.h"
#include "tests/apoyo/proceso.h"
#include "tests/e2e/accesible.h"
#include "tests/e2e/escritorio.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kCabecera = 448;
constexpr int kPasosPorJornada = 60;
constexpr int kPasosHastaElFin = 3;
constexpr const char* kSalir = "Salir";

// One thing on the screen, as it was when it was looked at.
struct Cosa {
    std::string papel;
    std::string nombre;
    bool habilitada;
    bool soloLectura;
    Lugar lugar;

    bool es(const std::string& cual, const std::string& comienzo) const {
        return papel == cual && nombre.starts_with(comienzo);
    }
};

void juntar(const Accesible& desde, std::vector<Cosa>& todas) {
    for (const auto& hijo : desde.hijos()) {
        if (hijo.visible()) {
            const auto papel = hijo.papel();
            todas.push_back({papel, hijo.nombre(), hijo.habilitado(), papel == "text" && hijo.soloLectura(),
                             hijo.lugar()});
        }
        juntar(hijo, todas);
    }
}

const Cosa* buscar(const std::vector<Cosa>& cosas, const std::string& papel, const std::string& comienzo) {
    const auto lugar = std::ranges::find_if(cosas, [&](const Cosa& c) { return c.es(papel, comienzo); });
    return lugar == cosas.end() ? nullptr : &*lugar;
}

constexpr auto kCamposEdicion =
    std::to_array<const char*>({"Usuario", "Ubicacion", "Latitud", "Longitud", "Altitud", "Hora", "Fecha"});
// Of every box and file dialog; the form, the progress dialog and the coefficients have none of them.
constexpr auto kBotonesDeCaja =
    std::to_array<const char*>({"Aceptar", "Cancelar", "Sí", "No", "Guardar", "Abrir"});

// The main form among them; nullopt: it is not there.
std::optional<Vista> vistaDe(const std::vector<Cosa>& cosas) {
    const auto exacta = [&](const char* papel, const std::string& nombre) {
        const auto lugar = std::ranges::find_if(
            cosas, [&](const Cosa& c) { return c.papel == papel && c.nombre == nombre; });
        return lugar == cosas.end() ? nullptr : &*lugar;
    };
    const auto boton = [&](const std::string& nombre) {
        const auto* cual = exacta("push button", nombre);
        return cual && cual->habilitada;
    };
    const auto* empieza = exacta("push button", "DATOS EN LINEA");
    const auto* para = exacta("push button", "PARAR");
    if (!empieza && !para) return std::nullopt;
    Vista v;
    v.delante = std::ranges::any_of(kBotonesDeCaja, [&](const auto* n) { return exacta("push button", n); });
    v.progreso = exacta("push button", "Cancel") != nullptr;
    v.procesado = exacta("label", "El archivo se proceso con exito") != nullptr;
    for (const auto* comienzo : {"Reconectar con", " Conectar con", " Conexion en"}) {
        const auto* conectar = buscar(cosas, "push button", comienzo);
        if (!conectar) continue;
        v.conectar = conectar->habilitada;
        v.rotuloConectar = conectar->nombre;
    }
    v.leer = boton("Importar Configuracion");
    v.cambiar = boton("Cambiar configuracion");
    v.enviar = boton("Enviar configuracion");
    v.enLinea = empieza ? empieza->habilitada : para->habilitada;
    v.descargar = boton("Importar datos desde equipo y exportar a excell (csv)");
    v.exportar = boton("Exportar Eventos (.txt) y Base de Datos (.xls)");
    v.abrir = boton("Abrir Archivo Base (.rgt)");
    v.salir = boton(kSalir);
    const auto* serie = exacta("text", "Nro de Serie");
    v.serie = serie && serie->habilitada;
    v.parar = para != nullptr;
    v.lecturas = exacta("text", "Medicion de Datos en linea") != nullptr;
    v.ajustar = exacta("check box", "Ajustar a fecha y hora de PC") != nullptr;
    v.quienAjusta = exacta("label", "Ajustar a fecha y hora de PC") != nullptr;
    for (const auto* nombre : kCamposEdicion) {
        const auto* campo = exacta("text", nombre);
        v.editables += campo && !campo->soloLectura ? 1 : 0;
    }
    v.opciones = static_cast<int>(
        std::ranges::count_if(cosas, [](const Cosa& c) { return c.papel == "radio button"; }));
    for (const auto* comienzo : {"comienzo transmision", "Nº Enviado  ", "Nro de Serie"}) {
        if (const auto* rotulo = buscar(cosas, "label", comienzo); rotulo && v.rotuloSerie.empty())
            v.rotuloSerie = rotulo->nombre;
    }
    return v;
}

// Processor time that a process has had.
std::chrono::milliseconds procesador(pid_t pid) {
    auto texto = leerTodo(fmt::format("/proc/{}/stat", pid));
    texto.erase(0, std::min(texto.size(), texto.rfind(')') + 1));
    long usuario = 0;
    long sistema = 0;
    if (std::sscanf(texto.c_str(), " %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %ld %ld", &usuario,
                    &sistema) != 2)
        return 0ms;
    return std::chrono::milliseconds((usuario + sistema) * 1000 / ::sysconf(_SC_CLK_TCK));
}

// One logger, one program after the other, and the laws.
class Jornada {
   public:
    explicit Jornada(unsigned semilla) : azar_(semilla) {
        constexpr auto kFallos = std::to_array<const char*>(
            {"sonda:vez=2:silencio", "sonda:byte=9:perder", "en-linea:cuadro=9:byte=20:perder",
             "en-linea:cuadro=20:insertar=3", "lectura:byte=60:silencio", "lectura:byte=3:colgar",
             "lectura:byte=30:demora=1500", "escritura:byte=50:silencio", "escritura:byte=20:demora=3000",
             "serie:byte=3:silencio", "serie:byte=2:demora=1500", "descarga:bloque=3:silencio",
             "descarga:byte=1:cambiar=00", "descarga:bloque=40:byte=7:colgar"});
        // The simulator takes none twice.
        for (int i = tirar(azar_, 4); i > 0; --i) {
            const std::string fallo = uno(azar_, kFallos);
            if (std::ranges::find(fallos_, fallo) == fallos_.end())
                fallos_.insert(fallos_.end(), {"--fallo", fallo});
        }
        enchufar(fallos_);
        antes_ = memoria();
        empezar();
    }

    // Gives what was found, and what was done before it.
    std::string correr() {
        for (int i = 0; i < kPasosPorJornada && hallazgo_.empty(); ++i) {
            actuar();
            mirar();
        }
        if (hallazgo_.empty()) terminar();
        if (hallazgo_.empty()) return "";
        std::string texto =
            fmt::format("{} ({})\n{}\n", hallazgo_, fmt::join(fallos_, " "), programa_->errores());
        const auto desde = hecho_.size() > 12 ? hecho_.size() - 12 : 0;
        for (auto i = desde; i < hecho_.size(); ++i) texto += "  " + hecho_[i] + "\n";
        return texto + accesibilidad_->raiz().arbol();
    }

   private:
    std::string memoria() const { return leerTodo(carpeta_ / "memoria.rgt"); }
    void enchufar(const std::vector<std::string>& fallos) {
        std::vector<std::string> orden = {TELVANE_SIM, "--enlace", (carpeta_ / "COM1").string(), "--memoria",
                                          (carpeta_ / "memoria.rgt").string()};
        orden.insert(orden.end(), fallos.begin(), fallos.end());
        simulador_ = std::make_unique<Proceso>(orden);
        if (!simulador_->linea()) hallazgo_ = "telvane-sim: " + simulador_->errores();
    }
    void empezar() {
        accesibilidad_ = std::make_unique<Accesibilidad>(escritorio_.bus());
        programa_ = std::make_unique<Proceso>(
            std::vector<std::string>{TELVANE, "--com", "1=" + (carpeta_ / "COM1").string()},
            escritorio_.entorno());
        // Refusing the regional settings is an end of its own; here they are set, with one press: another one
        // would begin it anew.
        bool puestos = false;
        const bool visto = esperarA([&] {
            ver();
            const bool caja = buscar(cosas_, "label", "Su Configuracion Regional") != nullptr;
            const auto boton =
                caja && !puestos ? accesibilidad_->raiz().buscar("push button", "Aceptar") : std::nullopt;
            if (boton) puestos = boton->pulsar();
            return buscar(cosas_, "push button", "Importar Configuracion") != nullptr;
        });
        if (!visto) hallazgo_ = "no window";
    }
    const std::vector<Cosa>& ver() {
        cosas_.clear();
        juntar(accesibilidad_->raiz(), cosas_);
        return cosas_;
    }
    void xdotool(std::vector<std::string> orden) {
        hecho_.push_back(fmt::format("{}", fmt::join(orden, " ")));
        orden.insert(orden.begin(), PROGRAMA_XDOTOOL);
        Proceso(orden, escritorio_.entorno()).terminar();
    }
    void clic(int x, int y) {
        const bool enSalir = std::ranges::any_of(cosas_, [&](const Cosa& c) {
            return c.nombre == kSalir && x >= c.lugar.x && x < c.lugar.x + c.lugar.ancho && y >= c.lugar.y &&
                   y < c.lugar.y + c.lugar.alto;
        });
        if (enSalir) pideSalir();
        xdotool({"mousemove", std::to_string(x), std::to_string(y), "click", "1"});
    }
    void pideSalir() { puedeAcabar_ = kPasosHastaElFin; }

    void actuar() {
        switch (tirar(azar_, 12)) {
            case 0:
                clic(tirar(azar_, 1280), tirar(azar_, 1024));
                break;
            case 1:
            case 2:
            case 3:
                teclear();
                break;
            case 4:
                if (tirar(azar_, 3) == 0) desenchufar();
                break;
            case 5:
                if (tirar(azar_, 5) == 0) matar();
                break;
            default:
                pulsarAlgo();
        }
    }
    // Something that can be pressed; the end of the program by its button now and then.
    void pulsarAlgo() {
        std::vector<Cosa> posibles;
        for (const auto& cosa : cosas_) {
            const bool seDeja = cosa.papel == "push button" || cosa.papel == "radio button" ||
                                cosa.papel == "check box" || cosa.papel == "text";
            if (seDeja && cosa.habilitada && cosa.lugar.ancho > 0) posibles.push_back(cosa);
        }
        if (posibles.empty()) return;
        const auto& cosa = uno(azar_, posibles);
        if (cosa.nombre == kSalir && tirar(azar_, 10) > 0) return;
        hecho_.push_back(cosa.papel + " " + cosa.nombre);
        clic(cosa.lugar.x + cosa.lugar.ancho / 2, cosa.lugar.y + cosa.lugar.alto / 2);
    }
    void teclear() {
        constexpr auto kTeclas = std::to_array<const char*>(
            {"Return", "Return", "space", "Escape", "Tab", "Tab", "shift+Tab", "BackSpace", "Down", "7"});
        if (tirar(azar_, 4) == 0) {
            xdotool({"type", "--delay", "5", std::to_string(10000000 + tirar(azar_, 80000000))});
        } else {
            const std::string tecla = uno(azar_, kTeclas);
            const bool pulsa = tecla == "Return" || tecla == "space";
            const auto salir = pulsa ? accesibilidad_->raiz().buscar("push button", kSalir) : std::nullopt;
            if (salir && salir->enfocado()) pideSalir();
            xdotool({"key", tecla});
        }
    }
    // The wire is pulled, or another one is plugged in.
    void desenchufar() {
        hecho_.emplace_back("unplugged");
        mirarNumero();
        simulador_.reset();
        sabido_ = enviado();
        enchufar(tirar(azar_, 2) == 0 ? fallos_ : std::vector<std::string>{});
    }
    void matar() {
        constexpr std::array<int, 4> kSenales = {SIGTERM, SIGINT, SIGHUP, SIGKILL};
        const int senal = uno(azar_, kSenales);
        hecho_.push_back(fmt::format("signal {}", senal));
        programa_->senal(senal);
        acabado(senal == SIGKILL ? 128 + SIGKILL : 0);
    }
    // It ends with this status, and another one is started.
    void acabado(int estado) {
        const auto suyo = programa_->terminar();
        if (suyo != estado) {
            hallazgo_ = fmt::format("ends with {}, and not with {}", suyo.value_or(-1), estado);
            return;
        }
        puedeAcabar_ = 0;
        sabido_.clear();
        leyes_ = {};
        empezar();
    }
    void terminar() {
        hecho_.emplace_back("SIGTERM");
        programa_->senal(SIGTERM);
        if (const auto suyo = programa_->terminar(); suyo != 0)
            hallazgo_ = fmt::format("at the end: {}", suyo.value_or(-1));
    }

    void mirar() {
        if (const auto estado = programa_->terminar(Proceso::Plazo(0))) {
            if (puedeAcabar_ == 0 || *estado != 0) hallazgo_ = fmt::format("ends by itself with {}", *estado);
            if (hallazgo_.empty()) acabado(0);
            return;
        }
        if (puedeAcabar_ > 0) --puedeAcabar_;
        ver();
        mirarPregunta();
        if (buscar(cosas_, "label", "Error en tiempo de ejec") != nullptr)
            hallazgo_ = "a failure at run time";
        mirarMemoria();
        mirarNumero();
        mirarLeyes();
        if (tirar(azar_, 20) == 0) descansa();
    }
    // One question is one permission, for as long as its exchange may last.
    void mirarPregunta() {
        constexpr auto kLoQueDuraElIntercambio = 15s;
        const auto ahora = std::chrono::steady_clock::now();
        const bool abierta = buscar(cosas_, "label", "SE BORRARAN TODOS LOS DATOS") != nullptr;
        if (abierta) permitidoHasta_ = ahora + kLoQueDuraElIntercambio;
        if (!abierta && ahora > permitidoHasta_) permitidoHasta_ = {};
    }
    // Nothing leaves to be erased without its question. A memory that was erased is filled again: of another
    // erasure nothing would be seen.
    void mirarMemoria() {
        const auto ahora = memoria();
        if (ahora.empty() || antes_.empty() || ahora.substr(kCabecera) == antes_.substr(kCabecera)) {
            antes_ = ahora;
            return;
        }
        if (permitidoHasta_ == std::chrono::steady_clock::time_point{})
            hallazgo_ = "the memory was erased, and nobody asked";
        permitidoHasta_ = {};
        hecho_.emplace_back("erased, and filled again");
        mirarNumero();
        simulador_.reset();
        std::filesystem::remove(carpeta_ / "memoria.rgt");
        sabido_ = enviado();
        enchufar(fallos_);
        antes_ = memoria();
    }
    // What Label1 tells as sent.
    std::string enviado() const {
        const auto* rotulo = buscar(cosas_, "label", "Nº Enviado  ");
        return rotulo ? rotulo->nombre.substr(std::string("Nº Enviado  ").size()) : "";
    }
    void mirarNumero() {
        const auto numero = enviado();
        if (numero.empty() || numero == sabido_) return;
        const auto empacado = empacarSerie(numero);
        const bool llego = esperarA([&] {
            return std::ranges::equal(empacado, memoria().substr(0, empacado.size()), {}, {},
                                      [](char c) { return static_cast<std::uint8_t>(c); });
        });
        if (!llego) hallazgo_ = "shown as sent, and the logger has another number: " + numero;
        sabido_ = numero;
    }
    // Looked at again until they hold: what is on the screen may change while it is looked at, and what runs
    // comes to its end.
    void mirarLeyes() {
        std::string rota;
        const bool bien = esperarA([&] {
            if (programa_->terminar(Proceso::Plazo(0))) return true;
            const auto antes = vistaDe(cosas_);
            const auto v = vistaDe(ver());
            if (!v || v != antes) return !v && !antes;
            leyes_.mirar(*v);
            rota = leyes_.rota(*v);
            if (rota.empty() && !v->delante) rota = leyes_.rotaEnReposo(*v);
            return rota.empty();
        });
        if (!bien) hallazgo_ = rota.empty() ? "what is on the screen changes without end" : rota;
    }
    // Left alone it waits, and does not turn: a second of the wall clock costs a part of the processor's.
    void descansa() {
        const auto antes = procesador(programa_->pid());
        std::this_thread::sleep_for(1s);
        const auto gastado = procesador(programa_->pid()) - antes;
        if (gastado > 600ms) hallazgo_ = fmt::format("{} ms of processor time in a second", gastado.count());
    }

    Azar azar_;
    CarpetaTemporal carpeta_;
    Escritorio escritorio_;
    std::vector<std::string> fallos_;
    std::unique_ptr<Proceso> simulador_;
    std::unique_ptr<Proceso> programa_;
    std::unique_ptr<Accesibilidad> accesibilidad_;
    std::vector<Cosa> cosas_;
    std::vector<std::string> hecho_;
    std::string hallazgo_;
    std::string antes_;
    std::string sabido_;  // a number that was looked at, or whose logger has gone since
    LeyesDeReposo leyes_;
    // A question that was on the screen lets one erasure happen until then; none: nobody asked.
    std::chrono::steady_clock::time_point permitidoHasta_{};
    // Looks at the screen within which the end that he asked for may come.
    int puedeAcabar_ = 0;
};

TEST(OperadorE2e, TheLawsHoldWhateverHeDoes) {
    const auto hasta = std::chrono::steady_clock::now() +
                       std::chrono::seconds(delEntorno("TELVANE_OPERADOR_SEGUNDOS").value_or(600));
    auto semilla = delEntorno("TELVANE_OPERADOR_SEMILLA").value_or(std::random_device()());
    int jornadas = 0;
    do {
        fmt::print("TELVANE_OPERADOR_SEMILLA={}\n", semilla);
        ASSERT_EQ(Jornada(semilla).correr(), "");
        ++semilla;
        ++jornadas;
    } while (std::chrono::steady_clock::now() < hasta);
    fmt::print("{} jornadas\n", jornadas);
}

}  // namespace
}  // namespace telvane
