// Where an archive is kept. One archive is one store; what the sets mean stands above it
// (historico/archivo.h).
//
// Every routine throws ErrorAlmacen. Between empezar and confirmar a store shows one state, whoever writes
// meanwhile, and with Modo::escritura nobody else does; what was not confirmed has never been.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "historico/ficha_descarga.h"
#include "historico/huella.h"
#include "historico/imagen.h"
#include "historico/votacion.h"
#include "platform/texto_visible.h"
#include "serie_temporal/instante.h"

namespace telvane {

// In Spanish, with what to do, on one line whatever it names. Never holds a password.
class ErrorAlmacen : public std::runtime_error {
   public:
    // pasajera: the same may succeed at once on a new connection. agotada: somebody else holds the store, and
    // waiting for him has taken all the time there is. delDato: what was to be kept is not taken there;
    // something else may be. ajeno: what stands there is no archive.
    enum class Clase { otra, pasajera, agotada, delDato, ajeno };
    explicit ErrorAlmacen(const std::string& que, Clase clase = Clase::otra)
        : std::runtime_error(sinControles(que)), clase_(clase) {}
    Clase clase() const { return clase_; }
    bool esDelDato() const { return clase_ == Clase::delDato; }

   private:
    Clase clase_;
};

// All that a good stamp can say lies between them.
inline constexpr Instante kPrimerMomento = std::chrono::local_days{std::chrono::year{2000} / 1 / 1};
inline constexpr Instante kUltimoMomento = std::chrono::local_days{std::chrono::year{2100} / 1 / 1};

// Whatever SQLite keeps as one; those that are given out fit in PostgreSQL's as well.
using IdEstacion = std::int64_t;
inline constexpr IdEstacion kMayorId = std::numeric_limits<std::int32_t>::max();
using Incorporada = std::chrono::sys_seconds;  // UTC

// When an image came follows from nothing else. What somebody wrote in its place and is no moment of an
// archive counts as the first of them, the one of nobody.
inline constexpr Incorporada kPrimeraIncorporada{};
inline constexpr Incorporada kUltimaIncorporada = std::chrono::sys_days{std::chrono::year{2100} / 1 / 1};
constexpr Incorporada incorporadaDe(Incorporada dicha) {
    return dicha >= kPrimeraIncorporada && dicha <= kUltimaIncorporada ? dicha : kPrimeraIncorporada;
}

// What is known of a station without looking at its samples.
struct ResumenEstacion {
    std::optional<Huella> masNueva;  // its newest image
    std::int64_t imagenes = 0;
    std::int64_t muestras = 0;  // that count
    std::int64_t huecos = 0;
    std::int64_t conflictos = 0;  // stamps
    std::optional<Instante> desde;
    std::optional<Instante> hasta;
    Incorporada incorporada{};  // the last image
    // The first bytes of the newest image, 432 at most.
    std::vector<std::uint8_t> cabecera;
};

struct EstacionGuardada {
    IdEstacion id = 0;
    std::string nombre;  // SERIE or SERIE/NOMBRE
    std::string serie;   // 8 digits
    bool evaporacion = false;
    ResumenEstacion resumen;
};

struct FichaImagen {
    Huella huella{};
    std::size_t bytes = 0;
    std::optional<Instante> reloj;
    std::optional<Instante> desde;  // first and last stamp of its samples
    std::optional<Instante> hasta;
    Incorporada incorporada{};
    std::string origen;
    std::int64_t muestras = 0;
    std::int64_t retrocesos = 0;
    // Of a partial image: a whole one contains it.
    bool contenida = false;

    bool parcial() const { return bytes < kBytesMemoria; }
    // A station's newest image is the greatest.
    bool esMasNuevaQue(const FichaImagen& otra) const {
        return std::pair(reloj, huella) > std::pair(otra.reloj, otra.huella);
    }
};

// An image, and how it came from its logger where that is known.
struct Llegada {
    FichaImagen imagen;
    std::optional<FichaDescarga> descarga;

    // When it left its logger. Without a word of that, what its own clock said.
    std::chrono::sys_seconds momento() const {
        return descarga ? descarga->descargada
                        : std::chrono::sys_seconds(imagen.reloj.value_or(Instante{}).time_since_epoch());
    }
};

// An image as it is kept.
struct ImagenGuardada {
    std::optional<Huella> base;  // of the same station
    int profundidad = 0;         // images below it
    std::vector<std::uint8_t> datos;
};

// Of what hangs on a station, and how messages name it.
struct TablaConEstacion {
    std::string_view tabla;
    std::string_view que;
};
inline constexpr std::array<TablaConEstacion, 5> kTablasConEstacion = {{{"imagenes", "imágenes"},
                                                                        {"contenidos", "contenidos"},
                                                                        {"muestras", "muestras"},
                                                                        {"testigos", "testigos"},
                                                                        {"descargas", "descargas"}}};
// Of them those without which an image is lost.
inline constexpr auto kTablasDeImagenes = std::span(kTablasConEstacion).first<2>();

// By these and the station an image's rows are known.
struct ColumnaDeTabla {
    std::string_view tabla;
    std::string_view columna;
};
inline constexpr std::array<ColumnaDeTabla, 3> kHuellasDeClave = {
    {{"imagenes", "huella"}, {"contenidos", "huella"}, {"descargas", "imagen"}}};

class Almacen {
   public:
    // arreglo: writes, whatever tables are missing.
    enum class Modo { lectura, escritura, arreglo };

    virtual ~Almacen() = default;

    // How messages name it.
    virtual std::string nombre() const = 0;
    // What stands before a table's name.
    virtual std::string_view prefijo() const = 0;
    // The file of limits that belongs to it; empty where it stands in no folder.
    virtual std::filesystem::path limitesAlLado() const { return {}; }
    // The files that it consists of, or may at any moment.
    virtual std::vector<std::filesystem::path> archivos() const { return {}; }

    virtual void empezar(Modo modo) = 0;
    virtual void confirmar() = 0;
    virtual void abandonar() noexcept = 0;

    // By name.
    virtual std::vector<EstacionGuardada> estaciones() = 0;
    virtual std::optional<EstacionGuardada> estacion(const std::string& nombre) = 0;
    // With a number that nothing else has: not even what is left of a station that is gone.
    EstacionGuardada crearEstacion(const std::string& nombre, const std::string& serie, bool evaporacion);
    IdEstacion idLibre(const std::set<IdEstacion>& tomados = {});
    // With the number that it bears.
    virtual void agregarEstacion(const EstacionGuardada& estacion) = 0;
    virtual void quitarEstacion(IdEstacion estacion) = 0;
    virtual void guardarResumen(IdEstacion estacion, const ResumenEstacion& resumen) = 0;

    // By clock and fingerprint, the newest last.
    virtual std::vector<FichaImagen> fichas(IdEstacion estacion) = 0;
    virtual std::optional<FichaImagen> ficha(IdEstacion estacion, const Huella& huella) = 0;
    // The stations that have it.
    virtual std::set<IdEstacion> estacionesCon(const Huella& huella) = 0;
    // Of every station the images that left their loggers last, cuantas at least where there are as many, in
    // no order and some of them twice. Without a word of its download an image counts by its own clock, and
    // not at all where that is no time at which it can have been downloaded.
    virtual std::map<IdEstacion, std::vector<Llegada>> ultimas(std::size_t cuantas) = 0;
    // Partial images that no whole one contains.
    virtual std::vector<FichaImagen> parcialesSueltas(IdEstacion estacion) = 0;
    // Those that are packed against no other one.
    virtual std::vector<Huella> imagenesSolas(IdEstacion estacion) = 0;
    // The image and those that it is packed upon, each followed by its base: cuantas at most, and none where
    // the image is not there.
    using Cadena = std::vector<std::pair<Huella, ImagenGuardada>>;
    virtual Cadena cadena(IdEstacion estacion, const Huella& huella, std::size_t cuantas) = 0;
    virtual void agregarFicha(IdEstacion estacion, const FichaImagen& ficha) = 0;
    virtual void quitarFicha(IdEstacion estacion, const Huella& huella) = 0;
    // In place of what is kept of it.
    virtual void guardarContenido(IdEstacion estacion, const Huella& huella,
                                  const ImagenGuardada& imagen) = 0;
    virtual void quitarContenido(IdEstacion estacion, const Huella& huella) = 0;
    // Whether its bytes are kept, as far as is known.
    virtual bool conserva(IdEstacion estacion, const Huella& huella) = 0;
    // How images came from their logger, of those of which that is known; in no order.
    using Descargas = std::vector<std::pair<Huella, FichaDescarga>>;
    virtual Descargas descargas(IdEstacion estacion) = 0;
    virtual std::optional<FichaDescarga> descarga(IdEstacion estacion, const Huella& imagen) = 0;
    // In place of what is kept of this image.
    virtual void guardarDescarga(IdEstacion estacion, const Huella& imagen, const FichaDescarga& ficha) = 0;
    virtual void marcarContenida(IdEstacion estacion, const Huella& huella, bool contenida) = 0;

    // In their order, desde and hasta included.
    using AlLeerFila = std::function<void(const Fila&)>;
    virtual void filas(IdEstacion estacion, Instante desde, Instante hasta, const AlLeerFila& alLeer) = 0;
    // How many there are.
    virtual std::int64_t contarFilas(IdEstacion estacion, Instante desde, Instante hasta) = 0;
    // Distinct stamps next to one, in order.
    virtual std::vector<Instante> sellosAntes(IdEstacion estacion, Instante de, std::size_t cuantos) = 0;
    virtual std::vector<Instante> sellosDespues(IdEstacion estacion, Instante de, std::size_t cuantos) = 0;
    // In their order; none of them is there.
    virtual void agregarFilas(IdEstacion estacion, std::span<const Fila> filas) = 0;
    virtual void cambiarCuenta(IdEstacion estacion, const Fila& fila) = 0;

    // Of stamps in conflict, and only of these; by stamp. desde and hasta included.
    virtual std::vector<Testigo> testigos(IdEstacion estacion, Instante desde, Instante hasta) = 0;
    virtual std::vector<Instante> sellosDe(IdEstacion estacion, const Huella& imagen) = 0;
    // At how many of them the image holds a record that the other one does not hold.
    virtual std::int64_t conflictosDeMas(IdEstacion estacion, const FichaImagen& imagen,
                                         const Huella& otra) = 0;
    virtual void agregarTestigos(IdEstacion estacion, std::span<const Testigo> testigos) = 0;

    // Takes away what follows from the images.
    virtual void vaciarDerivado(IdEstacion estacion) = 0;

    // What it is called, and what follows from its number.
    virtual void corregirEstacion(const EstacionGuardada& estacion) = 0;
    // What the image says of itself, in place of what is kept of it.
    virtual void corregirFicha(IdEstacion estacion, const FichaImagen& ficha) = 0;

    // What is noted of all images, and upon what each is packed: of any station, also of one that is not
    // there.
    struct FichaGuardada {
        IdEstacion estacion = 0;
        FichaImagen ficha = {};
    };
    virtual std::vector<FichaGuardada> fichasGuardadas() = 0;
    struct Eslabon {
        IdEstacion estacion = 0;
        Huella huella{};
        std::optional<Huella> base = {};
        std::int64_t profundidad = 0;
    };
    // The depth of a content that nobody can read: the next incorporation of its image takes its place.
    static constexpr std::int64_t kPerdida = -1;
    virtual std::vector<Eslabon> eslabones() = 0;
    virtual std::vector<std::uint8_t> datosDe(const Eslabon& eslabon) = 0;
    virtual void corregirProfundidad(IdEstacion estacion, const Huella& huella, std::int64_t profundidad) = 0;

    // The parts of the store that are missing or not what they must be, a line each. Outside a transaction.
    virtual std::vector<std::string> partesQueFaltan() { return {}; }
    // Makes those of them anew that hold nothing that cannot be derived, and of each value one of its
    // column's kind. Throws ErrorAlmacen where another one is missing.
    virtual void reponer() {}
    // Takes away what belongs to no station or to no image.
    virtual void limpiar() = 0;
    // What is no part of the store and stands in its tables all the same, a line each: nobody knows what it
    // does to them.
    virtual std::vector<std::string> sobras() { return {}; }
    // Values that this program writes nowhere, a line each with what to do.
    virtual std::vector<std::string> valoresImposibles() = 0;
    // What belongs to no station, a line each.
    std::vector<std::string> sinEstacion(std::span<const TablaConEstacion> tablas = kTablasConEstacion);
    // What is wrong with the store itself, a line each.
    virtual std::vector<std::string> defectos() = 0;
    // Records of downloads, votes and contents of images that are not there.
    std::int64_t descargasPerdidas(IdEstacion estacion) {
        return contarSinImagen("descargas", "imagen", estacion);
    }
    std::int64_t testigosPerdidos(IdEstacion estacion) {
        return contarSinImagen("testigos", "imagen", estacion);
    }
    std::int64_t contenidosPerdidos(IdEstacion estacion) {
        return contarSinImagen("contenidos", "huella", estacion);
    }

   private:
    // 0 where there is none.
    IdEstacion mayorId();
    // Whether any table does.
    bool seNombra(IdEstacion estacion);
    // Rows of the station whose image is not there.
    std::int64_t contarSinImagen(std::string_view tabla, std::string_view columna, IdEstacion estacion);

    // The bigint that a statement answers.
    virtual std::int64_t numero(const std::string& sql) = 0;
};

// Whatever ends it but confirmar leaves the store as it was.
class Transaccion {
   public:
    Transaccion(Almacen& almacen, Almacen::Modo modo) : almacen_(almacen) { almacen_.empezar(modo); }
    Transaccion(const Transaccion&) = delete;
    Transaccion& operator=(const Transaccion&) = delete;
    ~Transaccion() {
        if (!confirmada_) almacen_.abandonar();
    }
    void confirmar() {
        almacen_.confirmar();
        confirmada_ = true;
    }

   private:
    Almacen& almacen_;
    bool confirmada_ = false;
};

}  // namespace telvane
