// The archive: two sets that only grow. Images are known by their SHA-256, samples by station, stamp and
// bytes; whatever else it tells follows from the images.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "historico/almacen.h"
#include "historico/imagenes.h"

namespace telvane {

class Lectura;

struct Procedencia {
    std::string origen;
    Incorporada incorporada{};
    std::optional<FichaDescarga> descarga = {};
};

struct Incorporacion {
    std::string estacion;
    Huella imagen{};
    bool repetida = false;
    bool repuesta = false;  // it was there, and its bytes had been lost
    bool parcial = false;
    bool pareceAjena = false;   // new, and most of its stamps had other records, in other slots
    std::int64_t muestras = 0;  // distinct
    std::int64_t nuevas = 0;
    std::int64_t conflictos = 0;  // its stamps that are in conflict now
    std::int64_t vacios = 0;
    std::int64_t descartados = 0;
};

class Archivo {
   public:
    explicit Archivo(Almacen& almacen) : almacen_(almacen) {}

    // To which station an image goes. serie: what the user says it is. como: name beside the serial number.
    struct Destino {
        std::optional<std::string> serie;
        std::optional<std::string> como;
    };
    // One transaction. Throws ErrorImagen, ErrorAlmacen.
    Incorporacion incorporar(BytesImagen bytes, const Destino& destino, const Procedencia& procedencia);

    // Everything in its place, as the images tell, and what follows from them anew; one transaction a
    // station. alAvanzar: before each image.
    struct Rehecho {
        // What it could not make good, a line each: images that cannot be read, whose stations had to stay as
        // they were, and what is not of this program.
        std::vector<std::string> fallos;
        // What got another name.
        std::vector<std::string> avisos = {};
    };
    Rehecho rehacer(const std::function<void()>& alAvanzar);

    // Takes over from another archive what is missing here. One transaction an image. estacion: only this
    // one.
    struct Copia {
        std::size_t copiadas = 0;
        // Images that cannot be read there or are not taken here, a line each.
        std::vector<std::string> fallos;
        // Stations whose images contradict each other as those of two loggers do.
        std::set<std::string> contradichas = {};
    };
    // What nobody can copy of it any more, because what says whose it is has gone: a line each with what to
    // do. cual: of this station only. Throws ErrorImagen where it is not there.
    std::vector<std::string> loQueSePerdio(const std::optional<std::string>& cual);
    Copia copiarDe(Archivo& otro, const std::optional<std::string>& cual,
                   const std::function<void()>& alAvanzar);

    struct Comprobado {
        // What is not as it should be, a line each; of one station no more than say something.
        std::vector<std::string> lineas;
        std::size_t defectos = 0;  // those that have no line as well
    };
    // prueba: an empty store, for what the images decode to.
    Comprobado comprobar(Almacen& prueba, const std::function<void()>& alAvanzar);

    Almacen& almacen() { return almacen_; }

   private:
    std::vector<std::string> comprobarUna(Lectura& lectura, const EstacionGuardada& estacion, Almacen& prueba,
                                          const std::function<void()>& alAvanzar);
    // What is to be told of it; as a rule nothing.
    std::string rehacerUna(const std::string& nombre, const std::function<void()>& alAvanzar);
    bool tiene(const std::string& nombre, const Huella& huella);
    void copiarDescargas(Archivo& otro, const EstacionGuardada& origen, Copia& copia);
    // True: the image contradicts what was there of its station.
    bool copiarUna(const EstacionGuardada& origen, const FichaImagen& ficha, BytesImagen bytes);

    Almacen& almacen_;
};

// What to tell whoever names a station that the archive does not know.
ErrorImagen sinEstacion(const std::string& nombre);
// What brings back an image whose bytes are lost.
inline constexpr std::string_view kVuelvaAIncorporarla =
    "vuelva a incorporarla desde su .rgt, o cópiela de otro archivo; si nadie la tiene, guarde las muestras "
    "de "
    "su estación con exportar y siga con un archivo nuevo, que copiar --a hace con las demás imágenes";

}  // namespace telvane
