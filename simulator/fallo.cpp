#include "simulator/fallo.h"

#include <algorithm>
#include <array>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "link/protocolo.h"
#include "platform/argumentos.h"
#include "platform/numero.h"

namespace telvane {

namespace {

using Operacion = Fallo::Operacion;
using Clase = Fallo::Clase;

// What the logger sends in each exchange, its answer to the opening byte included.
struct FilaOperacion {
    std::string_view nombre;
    Operacion operacion;
    Intercambio intercambio;
    std::size_t bytes;
};
constexpr std::array<FilaOperacion, 6> kOperaciones = {{
    {"sonda", Operacion::sonda, Intercambio::reposo, kBytesMarco},
    {"en-linea", Operacion::enLinea, Intercambio::reposo, kBytesMarco},
    {"lectura", Operacion::lectura, Intercambio::lectura, kRespuestasLectura},
    {"escritura", Operacion::escritura, Intercambio::escritura, kRespuestasEscritura},
    {"serie", Operacion::serie, Intercambio::serie, kRespuestasSerie},
    {"descarga", Operacion::descarga, Intercambio::descarga, kRespuestasDescarga},
}};

struct FilaClase {
    std::string_view nombre;
    Clase clase;
    int base;            // of its value's digits; 0: takes none
    std::size_t minimo;  // of its value: less would be no fault
    std::size_t maximo;
};
constexpr std::array<FilaClase, 13> kClases = {{
    {"silencio", Clase::silencio, 0, 0, 0},
    {"demora", Clase::demora, 10, 1, 3'600'000},
    {"cambiar", Clase::cambiar, 16, 0, 0xFF},
    {"invertir", Clase::invertir, 0, 0, 0},
    {"insertar", Clase::insertar, 10, 1, 65536},
    {"perder", Clase::perder, 0, 0, 0},
    {"doblar", Clase::doblar, 0, 0, 0},
    {"cortar", Clase::cortar, 0, 0, 0},
    {"colgar", Clase::colgar, 0, 0, 0},
    {"suceso", Clase::suceso, 10, 0, 1011},
    {"error-lectura", Clase::errorLectura, 0, 0, 0},
    {"error-escritura", Clase::errorEscritura, 0, 0, 0},
    {"escritura-corta", Clase::escrituraCorta, 0, 0, 0},
}};

constexpr std::uint8_t kByteInsertado = 0x00;

template <class Tabla>
auto buscar(const Tabla& tabla, std::string_view nombre) -> const typename Tabla::value_type* {
    for (const auto& fila : tabla) {
        if (fila.nombre == nombre) return &fila;
    }
    return nullptr;
}

const FilaOperacion& filaDe(Operacion operacion) {
    return kOperaciones[static_cast<std::size_t>(operacion)];
}

[[noreturn]] void rechazar(std::string_view texto, const std::string& motivo) {
    throw std::invalid_argument(fmt::format("fallo \"{}\": {}", texto, motivo));
}

// One piece between colons, "name" or "name=value".
struct Pieza {
    std::string_view nombre;
    std::optional<std::string_view> valor;
};

std::vector<Pieza> partir(std::string_view texto) {
    std::vector<Pieza> piezas;
    for (std::size_t desde = 0; desde <= texto.size();) {
        const auto hasta = std::min(texto.find(':', desde), texto.size());
        const auto pieza = texto.substr(desde, hasta - desde);
        const auto igual = pieza.find('=');
        if (igual == std::string_view::npos) {
            piezas.push_back({pieza, std::nullopt});
        } else {
            piezas.push_back({pieza.substr(0, igual), pieza.substr(igual + 1)});
        }
        desde = hasta + 1;
    }
    return piezas;
}

// Reads one fault text; the pieces may come in any order behind the operation.
class LectorDeFallo {
   public:
    explicit LectorDeFallo(std::string_view texto) : texto_(texto) {}

    Fallo leer() {
        const auto piezas = partir(texto_);
        const auto* fila = buscar(kOperaciones, piezas.front().nombre);
        if (!fila || piezas.front().valor) rechazar(texto_, "operación desconocida");
        fallo_.operacion = fila->operacion;
        for (std::size_t i = 1; i < piezas.size(); ++i) tomar(piezas[i]);
        if (!hayClase_) rechazar(texto_, "no dice qué falla");
        colocar(*fila);
        return fallo_;
    }

   private:
    void tomar(const Pieza& pieza) {
        if (!vistas_.insert(pieza.nombre == "siempre" ? "vez" : pieza.nombre).second)
            rechazar(texto_, fmt::format("\"{}\" no va con lo anterior: deje uno de los dos", pieza.nombre));
        if (pieza.nombre == "byte") {
            byte_ = numero(pieza, 10, 0, kRespuestasDescarga - 1);
        } else if (pieza.nombre == "bloque") {
            exigir(Operacion::descarga, "bloque= es solo de descarga");
            bloque_ = numero(pieza, 10, 0, kBloquesMemoria - 1);
        } else if (pieza.nombre == "cuadro") {
            exigir(Operacion::enLinea, "cuadro= es solo de en-linea");
            fallo_.cuadro = numero(pieza, 10, 0, 1'000'000);
        } else if (pieza.nombre == "vez") {
            fallo_.vez = numero(pieza, 10, 1, 1'000'000);
        } else if (pieza.nombre == "siempre" && !pieza.valor) {
            fallo_.vez = 0;
        } else {
            tomarClase(pieza);
        }
    }

    void tomarClase(const Pieza& pieza) {
        const auto* fila = buscar(kClases, pieza.nombre);
        if (!fila || hayClase_) rechazar(texto_, fmt::format("sobra o no se entiende \"{}\"", pieza.nombre));
        if (fila->base == 0 && pieza.valor) rechazar(texto_, noLlevaValor(pieza.nombre));
        if (fila->base != 0) fallo_.valor = numero(pieza, fila->base, fila->minimo, fila->maximo);
        fallo_.clase = fila->clase;
        hayClase_ = true;
    }

    void exigir(Operacion operacion, const std::string& motivo) const {
        if (fallo_.operacion != operacion) rechazar(texto_, motivo);
    }

    std::size_t numero(const Pieza& pieza, int base, std::size_t minimo, std::size_t maximo) const {
        const auto valor = numeroDe<std::size_t>(pieza.valor.value_or(""), base);
        if (!valor || *valor < minimo || *valor > maximo) {
            const auto rango = base == 16 ? fmt::format("{:02X} a {:02X}", minimo, maximo)
                                          : fmt::format("{} a {}", minimo, maximo);
            rechazar(texto_, fmt::format("el valor de {} va de {}", pieza.nombre, rango));
        }
        return *valor;
    }

    void colocar(const FilaOperacion& fila) {
        fallo_.indice = byte_;
        if (bloque_) {
            if (byte_ >= kBytesBloque)
                rechazar(texto_, fmt::format("un bloque tiene los bytes 0 a {}", kBytesBloque - 1));
            fallo_.indice = kAcuses + *bloque_ * kBytesBloque + byte_;
        }
        if (fallo_.indice >= fila.bytes) {
            rechazar(texto_, fmt::format("{} tiene los bytes 0 a {}", fila.nombre, fila.bytes - 1));
        }
    }

    std::string_view texto_;
    Fallo fallo_;
    std::size_t byte_ = 0;
    std::optional<std::size_t> bloque_;
    std::set<std::string_view> vistas_;
    bool hayClase_ = false;
};

bool alcanza(const Fallo& fallo, const ByteSaliente& saliente) {
    if (saliente.indice != fallo.indice) return false;
    switch (fallo.operacion) {
        case Operacion::sonda:
            return saliente.intercambio == Intercambio::reposo && saliente.cuadro == 0;
        case Operacion::enLinea:
            return saliente.intercambio == Intercambio::reposo &&
                   saliente.cuadro == fallo.cuadro.value_or(saliente.cuadro);
        default:
            break;
    }
    // The answer to the opening byte comes before anybody knows which exchange it opens.
    return saliente.intercambio == filaDe(fallo.operacion).intercambio ||
           saliente.intercambio == Intercambio::eleccion;
}

void aplicar(const Fallo& fallo, Efecto& efecto) {
    switch (fallo.clase) {
        case Clase::silencio:
            efecto.callar = true;
            break;
        case Clase::demora:
            efecto.demora += std::chrono::milliseconds(fallo.valor);
            break;
        case Clase::cambiar:
            efecto.bytes = {static_cast<std::uint8_t>(fallo.valor)};
            break;
        case Clase::invertir:
            for (auto& byte : efecto.bytes) byte = static_cast<std::uint8_t>(~byte);
            break;
        case Clase::insertar:
            efecto.bytes.insert(efecto.bytes.end(), fallo.valor, kByteInsertado);
            break;
        case Clase::perder:
            efecto.bytes.clear();
            break;
        case Clase::doblar:
            efecto.bytes.insert(efecto.bytes.end(), efecto.bytes.begin(), efecto.bytes.end());
            break;
        case Clase::cortar:
            efecto.cortar = true;
            break;
        case Clase::colgar:
            efecto.colgar = true;
            break;
        case Clase::suceso:
            efecto.suceso = static_cast<int>(fallo.valor);
            break;
        case Clase::errorLectura:
            efecto.errorLectura = true;
            break;
        case Clase::errorEscritura:
            efecto.errorEscritura = true;
            break;
        case Clase::escrituraCorta:
            efecto.escrituraCorta = true;
            break;
    }
}

// A probe is answered by the first frame of a row.
bool deCuadro(const Fallo& fallo) {
    return fallo.operacion == Operacion::sonda || fallo.operacion == Operacion::enLinea;
}

std::optional<std::size_t> cuadroDe(const Fallo& fallo) {
    return fallo.operacion == Operacion::sonda ? 0 : fallo.cuadro;
}

// Whether each exchange in which the first one's byte is reached has the other one's as well.
bool suIntercambio(const Fallo& fallo, const Fallo& otro) {
    if (deCuadro(fallo) != deCuadro(otro)) return false;
    if (deCuadro(fallo)) return !cuadroDe(otro) || cuadroDe(otro) == cuadroDe(fallo);
    return fallo.operacion == otro.operacion || otro.indice == 0;
}

bool mismoByte(const Fallo& fallo, const Fallo& otro) {
    return fallo.indice == otro.indice && suIntercambio(fallo, otro);
}

// Whether the other one is at work whenever the first one is, at one byte.
bool cadaVezLosDos(const Fallo& fallo, const Fallo& otro) {
    return mismoByte(fallo, otro) && (otro.vez == 0 || (otro.vez == fallo.vez && mismoByte(otro, fallo)));
}

// What can be seen of it: where nothing arrives nobody knows what would have.
Efecto visible(Efecto efecto) {
    if (efecto.colgar) efecto.cortar = false;
    if (efecto.colgar || efecto.cortar) efecto.callar = false;
    if (efecto.colgar || efecto.cortar || efecto.callar) efecto.bytes.clear();
    if (efecto.cortar || efecto.callar) efecto.demora = {};
    return efecto;
}

// Whether the other one, at the same byte, leaves nothing of the first to be seen, whatever the byte.
bool loTapa(const Fallo& fallo, const Fallo& otro, bool otroDespues) {
    return std::ranges::all_of(std::to_array<std::uint8_t>({0x5A, 0xA5}), [&](std::uint8_t byte) {
        auto solo = Efecto::pasar(byte);
        aplicar(otro, solo);
        auto juntos = Efecto::pasar(byte);
        aplicar(otroDespues ? fallo : otro, juntos);
        aplicar(otroDespues ? otro : fallo, juntos);
        return visible(solo) == visible(juntos);
    });
}

// Whether the other one stands before the first in its exchange and lets nothing more arrive by then.
bool loCorta(const Fallo& fallo, const Fallo& otro) {
    if (otro.indice >= fallo.indice || !suIntercambio(fallo, otro)) return false;
    const bool calla = otro.clase == Clase::silencio || otro.clase == Clase::colgar;
    if (otro.vez == 0) return calla || otro.clase == Clase::cortar;
    // Its byte comes by at least as often.
    return otro.clase == Clase::cortar && (fallo.vez == 0 ? otro.vez == 1 : otro.vez <= fallo.vez);
}

}  // namespace

std::optional<FallosQueChocan> fallosQueChocan(const std::vector<Fallo>& fallos) {
    for (std::size_t i = 0; i < fallos.size(); ++i) {
        for (std::size_t j = 0; j < fallos.size(); ++j) {
            if (i == j) continue;
            if (fallos[i] == fallos[j]) return FallosQueChocan{j, i};
            const bool tapado = cadaVezLosDos(fallos[i], fallos[j]) && loTapa(fallos[i], fallos[j], i < j);
            if (tapado || loCorta(fallos[i], fallos[j])) return FallosQueChocan{i, j};
        }
    }
    return std::nullopt;
}

std::string ayudaFallo() {
    const auto ultimo = [](Operacion operacion) { return filaDe(operacion).bytes - 1; };
    return fmt::format(
        R"(Un fallo se escribe OPERACION[:bloque=K|:cuadro=K][:byte=B][:vez=N|:siempre]:FALLO
  OPERACION  sonda      primera respuesta a 0xBE (búsqueda, despertar)
             en-linea   toda respuesta a 0xBE; cuadro=K: solo la K-ésima seguida, desde 0
             lectura    de la configuración (bytes 0 a {}: dos avisos y el registro)
             escritura  de la configuración (bytes 0 a {})
             serie      escritura del número de serie (bytes 0 a {})
             descarga   de la memoria (bytes 0 y 1: saludo); bloque=K: el byte B es de ese bloque
  byte=B     byte, desde 0, de lo que el registrador envía en el intercambio (0 si falta); el byte 0 de lectura,
             escritura, serie y descarga responde a la apertura, común a las cuatro
  vez=N      la N-ésima vez que se llega a ese byte (1 si falta); siempre: todas
  FALLO      silencio     ni ese byte ni los demás del intercambio
             demora=MS    ese byte sale MS milisegundos más tarde
             cambiar=HH   otro valor, en hexadecimal
             invertir     otro valor: todos sus bits cambiados
             insertar=N   N bytes de más tras él
             perder       el byte no llega
             doblar       llega dos veces
             cortar       desde ahí nada más pasa en ningún sentido
             colgar       el puerto desaparece; vuelve a los 2 segundos
  En el propio puerto del PC, que un pseudoterminal no puede mostrar (solo en las pruebas del programa):
             suceso=N, error-lectura, error-escritura, escritura-corta
Ejemplo: --fallo descarga:bloque=2047:byte=12:cortar)",
        ultimo(Operacion::lectura), ultimo(Operacion::escritura), ultimo(Operacion::serie));
}

Fallo Fallo::leer(std::string_view texto) {
    return LectorDeFallo(texto).leer();
}

Efecto efectoDe(const Fallo& fallo, std::uint8_t byte) {
    auto efecto = Efecto::pasar(byte);
    aplicar(fallo, efecto);
    return efecto;
}

Efecto PlanDeFallos::operator()(const ByteSaliente& saliente) {
    auto efecto = Efecto::pasar(saliente.byte);
    for (std::size_t i = 0; i < fallos_.size(); ++i) {
        if (!alcanza(fallos_[i], saliente)) continue;
        ++veces_[i];
        if (fallos_[i].vez == 0 || fallos_[i].vez == veces_[i]) aplicar(fallos_[i], efecto);
    }
    return efecto;
}

}  // namespace telvane
