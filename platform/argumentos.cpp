#include "platform/argumentos.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "platform/contrasena.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

constexpr const char* kOpciones = "Opciones";
constexpr const char* kOrdenes = "Órdenes";
constexpr const char* kAyuda = "--help";
constexpr const char* kVersion = "--version";
constexpr std::size_t kAnchoDeNombres = 28;

// The library takes a word in brackets for a list of words, "++" for the end of a command, and a second "--"
// for another mark. They are names and values like others: with this in front, which is taken away again, it
// sees nothing in them.
constexpr char kMarca = '\x1f';

std::string conMarca(const std::string& palabra) {
    const bool especial =
        palabra == "++" || palabra == "--" || palabra.starts_with('[') || palabra.starts_with(kMarca);
    return especial ? kMarca + palabra : palabra;
}

std::string sinMarca(const std::string& palabra) {
    return palabra.starts_with(kMarca) ? palabra.substr(1) : palabra;
}

void completar(CLI::Option& nueva, const OpcionDeLinea& opcion) {
    nueva.required(opcion.obligatoria);
    if (!opcion.valor.empty()) nueva.type_name(opcion.valor);
    const auto revisar = [comprobar = opcion.comprobar, otra = opcion.enLugarDeVacia](std::string& texto) {
        if (texto.empty()) return fmt::format("no puede estar vacío{}{}", otra.empty() ? "" : "; ", otra);
        return comprobar ? comprobar(texto) : std::string();
    };
    const auto tomar = [revisar](std::string& texto) {
        texto = sinMarca(texto);
        return revisar(texto);
    };
    nueva.transform(CLI::Validator(tomar, ""));
}

// "-a.rgt"
bool pareceArchivo(const std::string& palabra) {
    return palabra.starts_with('-') && !palabra.starts_with("--") && palabra.find('.') != std::string::npos;
}

// Told by their place on the line, as files are.
bool tomaNombres(const CLI::App* app) {
    const auto opciones = app ? app->get_options() : std::vector<const CLI::Option*>();
    return std::ranges::any_of(opciones, [](const auto* una) { return una->get_positional(); });
}

// app: whose words they are; null: nobody's.
std::string noSeEntiende(const std::vector<std::string>& palabras, const CLI::App* app) {
    const auto archivo = tomaNombres(app) ? std::ranges::find_if(palabras, pareceArchivo) : palabras.end();
    return fmt::format(
        "no se entiende \"{}\"{}", fmt::join(palabras, "\", \""),
        archivo == palabras.end() ? "" : fmt::format("; si es un archivo, escríbalo ./{}", *archivo));
}

bool pideAyuda(const std::string& palabra) {
    return palabra == "-h" || palabra == kAyuda || palabra == kVersion;
}

std::shared_ptr<CLI::Formatter> formatoEspanol() {
    auto formato = std::make_shared<CLI::Formatter>();
    formato->label("Usage", "Uso");
    formato->label("OPTIONS", "OPCIONES");
    formato->label("SUBCOMMAND", "ORDEN");
    formato->label("Positionals", "Argumentos");
    formato->label("REQUIRED", "(obligatorio)");
    formato->label("TEXT", "");
    formato->column_width(kAnchoDeNombres);
    return formato;
}

}  // namespace

void OrdenDeLinea::opcion(std::string& destino, const OpcionDeLinea& opcion) {
    completar(*app_.add_option(opcion.nombre, destino, opcion.ayuda), opcion);
}

void OrdenDeLinea::opcion(std::optional<std::string>& destino, const OpcionDeLinea& opcion) {
    completar(*app_.add_option(opcion.nombre, destino, opcion.ayuda), opcion);
}

void OrdenDeLinea::opcion(std::vector<std::string>& destino, const OpcionDeLinea& opcion) {
    auto* nueva = app_.add_option(opcion.nombre, destino, opcion.ayuda);
    completar(*nueva, opcion);
    // One value each time: what follows it on the line is not its own.
    if (opcion.nombre.starts_with('-')) nueva->expected(1)->allow_extra_args(false)->take_all();
}

void OrdenDeLinea::bandera(bool& destino, const std::string& nombre, const std::string& ayuda) {
    app_.add_flag(nombre, destino, ayuda);
}

void OrdenDeLinea::pie(const std::string& texto) {
    app_.footer(texto);
}

void OrdenDeLinea::alElegir(std::function<void()> accion) {
    app_.callback(std::move(accion));
}

std::string noLlevaValor(std::string_view nombre) {
    return fmt::format("{} no lleva valor", nombre);
}

Argumentos::Argumentos(std::string programa, const std::string& version, const std::string& descripcion)
    : nombre_(std::move(programa)), app_(std::make_unique<CLI::App>(descripcion, nombre_)) {
    app_->option_defaults()->group(kOpciones);
    app_->set_help_flag("-h,--help", "Muestra esta ayuda")->group(kOpciones);
    app_->set_version_flag(kVersion, nombre_ + " " + version, "Muestra la versión")->group(kOpciones);
    app_->formatter(formatoEspanol());
}

Argumentos::~Argumentos() = default;

OrdenDeLinea Argumentos::programa() {
    return OrdenDeLinea(*app_);
}

OrdenDeLinea Argumentos::orden(const std::string& nombre, const std::string& ayuda) {
    app_->require_subcommand(1);
    app_->fallthrough();
    auto* nueva = app_->add_subcommand(nombre, ayuda);
    nueva->group(kOrdenes);
    return OrdenDeLinea(*nueva);
}

const CLI::Option* Argumentos::declarada(const std::string& nombre) const {
    if (const auto* opcion = app_->get_option_no_throw(nombre)) return opcion;
    for (const auto* orden : app_->get_subcommands([](const CLI::App*) { return true; })) {
        if (const auto* opcion = orden->get_option_no_throw(nombre)) return opcion;
    }
    return nullptr;
}

// Whoever asks for the help or the version gets it, whatever follows: of that only the order counts, where
// none stood before. What stands before is read as ever, as other tools do.
std::vector<std::string> Argumentos::hastaLaAyuda(const std::vector<std::string>& argumentos) const {
    std::vector<std::string> leidas;
    bool conOrden = app_->get_subcommands({}).empty();
    bool ayuda = false;
    for (auto una = argumentos.begin(); una != argumentos.end(); ++una) {
        if (*una == "--") {
            if (!ayuda) leidas.insert(leidas.end(), una, argumentos.end());
            break;
        }
        const bool nombre = !una->starts_with('-');
        if (!ayuda || (nombre && !conOrden)) leidas.push_back(*una);
        const auto* opcion = declarada(*una);
        if (opcion && opcion->get_items_expected_max() > 0 && una + 1 != argumentos.end()) {
            ++una;
            if (!ayuda) leidas.push_back(*una);
            continue;
        }
        ayuda = ayuda || pideAyuda(*una);
        conOrden = conOrden || nombre;
    }
    return leidas;
}

// Behind "--" every word is a name. The library forgets that when it stands behind a command's first name, so
// the names before it go behind it as well.
std::vector<std::string> Argumentos::conNombresDetras(const std::vector<std::string>& argumentos) const {
    const auto marca = std::ranges::find(argumentos, "--");
    bool conOrden = app_->get_subcommands({}).empty();
    if (marca == argumentos.end() || conOrden) return argumentos;
    std::vector<std::string> delante;
    std::vector<std::string> nombres;
    for (auto una = argumentos.begin(); una != marca; ++una) {
        const bool nombre = *una == "-" || !una->starts_with('-');
        (nombre && conOrden ? nombres : delante).push_back(*una);
        conOrden = conOrden || nombre;
        const auto* opcion = nombre ? nullptr : declarada(*una);
        if (opcion && opcion->get_items_expected_max() > 0 && una + 1 != marca) delante.push_back(*++una);
    }
    delante.emplace_back("--");
    delante.insert(delante.end(), nombres.begin(), nombres.end());
    delante.insert(delante.end(), marca + 1, argumentos.end());
    return delante;
}

// The library would take "-hx" for "-h" and "-x"; one letter is all that an option of ours has.
bool Argumentos::esMontonDeLetras(const std::string& palabra) const {
    return palabra.size() > 2 && palabra.starts_with('-') && !palabra.starts_with("--") &&
           declarada(palabra.substr(0, 2)) != nullptr;
}

// The library takes the word behind an option for its value, whatever it reads; here one that begins like an
// option is one, and the value before it is missing. Each option stands once, unless it keeps every value.
std::string Argumentos::malPuestas(const std::vector<std::string>& argumentos) const {
    std::set<std::string> vistas;
    for (std::size_t i = 0; i < argumentos.size() && argumentos[i] != "--"; ++i) {
        const auto igual = argumentos[i].find('=');
        const auto nombre = argumentos[i].substr(0, igual);
        const auto* opcion = nombre.starts_with('-') ? declarada(nombre) : nullptr;
        if (!opcion && esMontonDeLetras(argumentos[i]))
            return noSeEntiende({argumentos[i]}, ordenDe(argumentos));
        if (!opcion) continue;
        const bool lleva = opcion->get_items_expected_max() > 0;
        if (!lleva && igual != std::string::npos) return noLlevaValor(nombre);
        const bool repetible = opcion->get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
        if (!vistas.insert(opcion->get_name()).second && !repetible)
            return fmt::format("{} se dio dos veces", nombre);
        if (!lleva || igual != std::string::npos || ++i == argumentos.size()) continue;
        if (argumentos[i].starts_with("--") || declarada(argumentos[i])) {
            return fmt::format("{}: falta su valor; uno que empieza por guion se escribe {}={}", nombre,
                               nombre, argumentos[i]);
        }
    }
    return {};
}

// "--base=x" becomes two words: of "--base=" the library would take the next one for the value.
std::vector<std::string> Argumentos::conMarcas(const std::vector<std::string>& argumentos) const {
    std::vector<std::string> todos;
    const auto marca = std::ranges::find(argumentos, "--");
    for (auto una = argumentos.begin(); una != marca; ++una) {
        const auto igual = una->find('=');
        const auto nombre = una->substr(0, igual);
        const auto* opcion = nombre.starts_with('-') ? declarada(nombre) : nullptr;
        const bool lleva = opcion && opcion->get_items_expected_max() > 0;
        todos.push_back(lleva ? nombre : conMarca(*una));
        if (lleva && igual != std::string::npos) {
            todos.push_back(kMarca + una->substr(igual + 1));
        } else if (lleva && una + 1 != marca) {
            todos.push_back(kMarca + *++una);
        }
    }
    if (marca == argumentos.end()) return todos;
    todos.emplace_back("--");
    std::transform(marca + 1, argumentos.end(), std::back_inserter(todos), conMarca);
    return todos;
}

// What somebody typed may stand in it: it stays one line, which marks what cannot be shown, and an address
// shows no secret.
LineaLeida Argumentos::malUso(const std::vector<std::string>& argumentos, const std::string& motivo) const {
    return {LineaLeida::Que::malUso, sinContrasenas(nombreVisible(motivo)) + dondeMirar(argumentos)};
}

std::string Argumentos::dondeMirar(const std::vector<std::string>& argumentos) const {
    const auto* orden = ordenDe(argumentos);
    return fmt::format("\n({}{}{} --help)", nombre_, orden ? " " : "", orden ? orden->get_name() : "");
}

// The one that a line names, also one that cannot be understood.
const CLI::App* Argumentos::ordenDe(const std::vector<std::string>& argumentos) const {
    for (std::size_t i = 0; i < argumentos.size(); ++i) {
        const auto* opcion = declarada(argumentos[i]);
        if (opcion != nullptr && opcion->get_items_expected_max() > 0) {
            ++i;
        } else if (!argumentos[i].starts_with('-')) {
            const auto ordenes =
                app_->get_subcommands([&](const CLI::App* una) { return una->get_name() == argumentos[i]; });
            return ordenes.empty() ? nullptr : ordenes.front();
        }
    }
    return nullptr;
}

LineaLeida Argumentos::leer(std::vector<std::string> argumentos) {
    using Que = LineaLeida::Que;
    argumentos = hastaLaAyuda(argumentos);
    if (const auto motivo = malPuestas(argumentos); !motivo.empty()) return malUso(argumentos, motivo);
    // Asked for the version the library would not look at the values that stand before it.
    const auto pedida = std::find(argumentos.begin(), std::ranges::find(argumentos, "--"), kVersion);
    const bool version = pedida != argumentos.end() && *pedida == kVersion;
    if (version) *pedida = kAyuda;
    for (auto* orden : app_->get_subcommands({})) {
        for (auto* opcion : orden->get_options()) opcion->group(kOpciones);
    }
    try {
        auto alReves = conNombresDetras(conMarcas(argumentos));
        // The library takes them from the end.
        std::reverse(alReves.begin(), alReves.end());
        app_->parse(std::move(alReves));
    } catch (const CLI::CallForHelp&) {
        if (const auto motivo = motivoDeSobra(); !motivo.empty()) return malUso(argumentos, motivo);
        alLeer_();
        return {Que::terminar, version ? app_->version() + "\n" : app_->help() + opcionesDeTodas()};
    } catch (const CLI::ParseError& error) {
        return malUso(argumentos, motivoDeUso(error.get_exit_code(), error.what(), argumentos));
    }
    alLeer_();
    return {};
}

// The help of one order does not tell the program's own options, which it takes as well.
std::string Argumentos::opcionesDeTodas() const {
    if (app_->get_subcommands().empty()) return {};
    std::string lineas;
    for (const auto* opcion :
         app_->get_options([](const CLI::Option* una) { return una->get_items_expected_max() > 0; })) {
        lineas += fmt::format("También: {} {}  {}\n", opcion->get_name(), opcion->get_type_name(),
                              opcion->get_description());
    }
    return lineas;
}

bool Argumentos::faltaOrden() const {
    return !app_->get_subcommands({}).empty() && app_->get_subcommands().empty();
}

// What the line leaves over, "--" not counted.
std::vector<std::string> Argumentos::sobran() const {
    auto palabras = app_->remaining(true);
    std::erase(palabras, "--");
    std::ranges::transform(palabras, palabras.begin(), sinMarca);
    return palabras;
}

// Empty where nothing is left over.
std::string Argumentos::motivoDeSobra() const {
    const auto palabras = sobran();
    if (palabras.empty()) return {};
    if (faltaOrden() && !palabras.front().starts_with('-'))
        return fmt::format("no hay una orden \"{}\"", palabras.front());
    const auto elegidas = app_->get_subcommands();
    return noSeEntiende(palabras, elegidas.empty() ? app_.get() : elegidas.back());
}

// The library's own texts are in English; those of our checks stand behind the option's name.
std::string Argumentos::motivoDeUso(int codigo, const std::string& texto,
                                    const std::vector<std::string>& argumentos) const {
    const auto antesDe = [&](std::string_view marca) { return texto.substr(0, texto.find(marca)); };
    switch (static_cast<CLI::ExitCodes>(codigo)) {
        case CLI::ExitCodes::RequiredError:
            // What is missing may be what was misspelt.
            if (const auto motivo = motivoDeSobra(); !motivo.empty()) return motivo;
            if (!faltaOrden()) return fmt::format("falta {}", antesDe(" "));
            // Behind it every word is a name.
            return std::ranges::find(argumentos, "--") == argumentos.end()
                       ? "falta la orden"
                       : "falta la orden: se escribe delante de --";
        case CLI::ExitCodes::ExtrasError:
            return motivoDeSobra();
        case CLI::ExitCodes::ArgumentMismatch:
            return fmt::format("{}: falta su valor o sobra alguno", antesDe(":"));
        default:
            return texto;
    }
}

}  // namespace telvane
