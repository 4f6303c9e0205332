// Command lines of our programs: options, commands, checks and help, everything in Spanish. The library that
// does the work is seen in one source file only.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace telvane {

struct OpcionDeLinea {
    std::string nombre;  // "--base"; without dashes it is told by its place on the line
    std::string valor;   // what stands for the value in the help, "ARCHIVO"
    std::string ayuda;
    // Empty when the value will do, otherwise why not.
    std::function<std::string(const std::string&)> comprobar = {};
    bool obligatoria = false;
    // An empty text is no value; told with it, where something else says what an empty one would.
    std::string enLugarDeVacia = {};
};

// A program or one of its commands, for as long as its Argumentos lives. What receives a value outlives the
// reading of the line.
class OrdenDeLinea {
   public:
    explicit OrdenDeLinea(CLI::App& app) : app_(app) {}

    void opcion(std::string& destino, const OpcionDeLinea& opcion);
    // Stays empty where the line does not give it.
    void opcion(std::optional<std::string>& destino, const OpcionDeLinea& opcion);
    // May stand several times, in the order of the line.
    void opcion(std::vector<std::string>& destino, const OpcionDeLinea& opcion);
    void bandera(bool& destino, const std::string& nombre, const std::string& ayuda);
    // Stands below the help.
    void pie(const std::string& texto);
    // Called when a line that was read without an error chooses this command; what it throws leaves leer().
    void alElegir(std::function<void()> accion);

   private:
    CLI::App& app_;
};

struct LineaLeida {
    enum class Que { correr, terminar, malUso };
    Que que = Que::correr;
    // terminar: the help or the version that was asked for. malUso: why the line cannot be understood, and
    // where to look.
    std::string texto = {};
};

// Of a name that takes none.
std::string noLlevaValor(std::string_view nombre);

class Argumentos {
   public:
    Argumentos(std::string programa, const std::string& version, const std::string& descripcion);
    Argumentos(const Argumentos&) = delete;
    Argumentos& operator=(const Argumentos&) = delete;
    ~Argumentos();

    OrdenDeLinea programa();
    // From the first one on, a line must name a command; the program's own options may stand behind it.
    OrdenDeLinea orden(const std::string& nombre, const std::string& ayuda);

    // Called once the program's own options are read, also where only the help or the version is asked for;
    // what it throws leaves leer().
    void alLeer(std::function<void()> accion) { alLeer_ = std::move(accion); }

    // argumentos: without the program's name. A value that begins with "--" is written "--option=--value"; an
    // option that stands twice is refused, unless it keeps every value. The help and the version are given
    // where what stands before them is understood, values included, whatever stands behind.
    LineaLeida leer(std::vector<std::string> argumentos);
    // A line of its own that says where to look, the command that the line names counted.
    std::string dondeMirar(const std::vector<std::string>& argumentos) const;

   private:
    // By the program or any of its commands.
    const CLI::Option* declarada(const std::string& nombre) const;
    std::vector<std::string> hastaLaAyuda(const std::vector<std::string>& argumentos) const;
    std::vector<std::string> conMarcas(const std::vector<std::string>& argumentos) const;
    std::vector<std::string> conNombresDetras(const std::vector<std::string>& argumentos) const;
    bool esMontonDeLetras(const std::string& palabra) const;
    std::string malPuestas(const std::vector<std::string>& argumentos) const;
    std::string opcionesDeTodas() const;
    const CLI::App* ordenDe(const std::vector<std::string>& argumentos) const;
    bool faltaOrden() const;
    std::vector<std::string> sobran() const;
    std::string motivoDeSobra() const;
    LineaLeida malUso(const std::vector<std::string>& argumentos, const std::string& motivo) const;
    std::string motivoDeUso(int codigo, const std::string& texto,
                            const std::vector<std::string>& argumentos) const;

    std::string nombre_;
    std::unique_ptr<CLI::App> app_;
    std::function<void()> alLeer_ = [] {};
};

}  // namespace telvane
