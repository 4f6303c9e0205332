// Message boxes, file dialogs and "open this file", handed in from outside.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/tarea.h"

namespace telvane {

// The buttons' codes are those the answers are kept with.
enum class Boton { aceptar = 1, cancelar = 2, si = 6, no = 7 };
enum class Botones { aceptar, aceptarCancelar, siNo };
enum class Icono { ninguno, exclamacion, critico };

// UTF-8; plain text, CR LF or CR for a line break. Titled with the program's name.
struct Mensaje {
    // A constructor, because this compiler destroys an aggregate temporary of a co_await expression twice.
    explicit Mensaje(std::string_view queDice, Botones cuales = Botones::aceptar, Icono cual = Icono::ninguno)
        : texto(queDice), botones(cuales), icono(cual) {}
    // Enter gives this answer, not the first button's.
    Mensaje&& conPorDefecto(Boton cual) && {
        porDefecto = cual;
        return std::move(*this);
    }

    std::string texto;
    Botones botones;
    Icono icono;
    std::optional<Boton> porDefecto;  // none: the first button
};

// filtro as "description|pattern"; carpeta is the folder text the user is promised, nombre has no path parts.
struct PeticionArchivo {
    bool guardar = false;
    std::string filtro;
    std::string carpeta;
    std::string nombre;
};

class Dialogos {
   public:
    virtual ~Dialogos() = default;
    // Closing the box counts as its negative button (aceptar where it is the only one).
    virtual void mensaje(const Mensaje& mensaje, std::function<void(Boton)> listo) = 0;
    // nullopt: the user cancelled.
    virtual void archivo(const PeticionArchivo& peticion,
                         std::function<void(std::optional<std::filesystem::path>)> listo) = 0;
    // Opens a saved file with the program that the desktop associates with it. alFallar: the desktop has
    // none, or it could not; told now or later.
    virtual void abrirDocumento(const std::filesystem::path& ruta, std::function<void()> alFallar) = 0;
};

inline Tarea<Boton> preguntar(Dialogos& dialogos, Mensaje mensaje) {
    co_return co_await Aviso<Boton>([&](auto listo) { dialogos.mensaje(mensaje, std::move(listo)); });
}

inline Tarea<std::optional<std::filesystem::path>> elegirArchivo(Dialogos& dialogos,
                                                                 PeticionArchivo peticion) {
    using Ruta = std::optional<std::filesystem::path>;
    co_return co_await Aviso<Ruta>([&](auto listo) { dialogos.archivo(peticion, std::move(listo)); });
}

}  // namespace telvane
