// The window as assistive technology sees it: a tree of named things that can be read, pressed and written
// into.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <QDBusConnection>
#include <QString>
#include <QVariant>

namespace telvane {

// On the screen, in pixels from its upper left corner.
struct Lugar {
    int x = 0;
    int y = 0;
    int ancho = 0;
    int alto = 0;
};

// What a progress bar tells.
struct ValorAccesible {
    double actual = 0;
    double minimo = 0;
    double maximo = 0;
};

class Accesible {
   public:
    Accesible(QDBusConnection bus, QString servicio, QString ruta)
        : bus_(std::move(bus)), servicio_(std::move(servicio)), ruta_(std::move(ruta)) {}

    // UTF-8. Each asks the program anew; what has gone meanwhile is empty, and false.
    std::string nombre() const;
    std::string papel() const;  // "push button", "text", ...
    std::string texto() const;
    Lugar lugar() const;
    // nullopt: it tells none.
    std::optional<ValorAccesible> valor() const;
    bool habilitado() const { return estado(kSensible); }
    bool visible() const { return estado(kALaVista); }
    std::vector<Accesible> hijos() const;
    bool pulsar() const;
    bool escribir(const std::string& texto) const;
    bool enfocar() const;
    bool enfocado() const { return estado(kEnfocado); }
    bool enfocable() const { return estado(kEnfocable); }
    bool soloLectura() const { return estado(kSoloLectura); }

    using Prueba = std::function<bool(const Accesible&)>;
    // The first below this one, in the order of the tree, that is on the screen and passes.
    std::optional<Accesible> buscar(const Prueba& prueba) const;
    std::optional<Accesible> buscar(const std::string& papel, const std::string& nombre) const;
    // One line for each thing below this one.
    std::string arbol(int sangria = 0) const;

   private:
    static constexpr unsigned kEnfocado = 12;
    static constexpr unsigned kEnfocable = 11;
    static constexpr unsigned kSensible = 24;
    static constexpr unsigned kALaVista = 25;
    static constexpr unsigned kSoloLectura = 43;

    bool estado(unsigned bit) const;
    QVariant propiedad(const QString& interfaz, const QString& cual) const;

    QDBusConnection bus_;
    QString servicio_;
    QString ruta_;
};

// A connection of its own to the bus at this address. Throws std::runtime_error.
QDBusConnection conectarAlBus(const QString& direccion);

// What the accessibility bus of a session knows: its programs.
class Accesibilidad {
   public:
    // sesion: address of the session's bus.
    explicit Accesibilidad(const std::string& sesion);
    Accesible raiz() const;
    const QDBusConnection& bus() const { return bus_; }

   private:
    QDBusConnection bus_;
};

}  // namespace telvane
