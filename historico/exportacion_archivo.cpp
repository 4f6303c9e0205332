#include "historico/exportacion_archivo.h"

#include <array>
#include <deque>
#include <utility>
#include <vector>

#include "calidad/marcador.h"
#include "data/informe.h"
#include "data/linea_muestra.h"
#include "historico/lectura_aparte.h"
#include "historico/relevo.h"
#include "loggerconfig/datos_config.h"
#include "platform/cp1252.h"
#include "ui/textos.h"

namespace telvane {

namespace {

// Pieces of this size cost nothing besides what is in them.
constexpr std::size_t kTrozo = 1U << 16;

class Tablero {
   public:
    using AlEscribir = std::function<void(std::string_view)>;
    Tablero(Redaccion redaccion, bool evaporacion, const AlEscribir& alEscribir)
        : redaccion_(redaccion), evaporacion_(evaporacion), alEscribir_(alEscribir), trozo_(kTrozo, '\0') {}

    void texto(std::string_view bytes) {
        soltar();
        alEscribir_(bytes);
    }
    void muestra(BytesMuestraConst registro) {
        ++muestras_;
        char* p = lugar(kObjetoMaximo);
        p = redaccion_ == Redaccion::objeto ? escribirObjeto(p, registro, evaporacion_)
                                            : escribirLinea(p, registro, evaporacion_);
        usado_ = static_cast<std::size_t>(p - trozo_.data());
    }
    void muestra(BytesMuestraConst registro, const Marcas& marcas) {
        ++muestras_;
        // Most have none.
        const auto columna = marcas.ninguna() ? std::string() : columnaDe(marcas);
        char* p = lugar(kObjetoMaximo + columna.size() + 2 * kColumnaDeMas);
        if (redaccion_ == Redaccion::objeto) {
            p = escribirMiembros(p, registro, evaporacion_);
            p = escribirTexto(escribirTexto(escribirTexto(p, R"("calidad":[)"), columna), "],");
            p = cerrarObjeto(p);
        } else {
            p = escribirColumnas(p, registro, evaporacion_);
            p = escribirTexto(escribirTexto(p, columna), ",");
            p = cerrarLinea(p);
        }
        usado_ = static_cast<std::size_t>(p - trozo_.data());
    }
    std::size_t muestras() const { return muestras_; }
    void soltar() {
        if (usado_ > 0) alEscribir_({trozo_.data(), usado_});
        usado_ = 0;
    }

   private:
    static constexpr std::size_t kColumnaDeMas = 16;

    std::string columnaDe(const Marcas& marcas) const {
        if (redaccion_ != Redaccion::objeto) return marcas.texto();
        std::string columna;
        for (const auto& marca : marcas.lista()) columna += (columna.empty() ? "\"" : ",\"") + marca + '"';
        return columna;
    }
    char* lugar(std::size_t cuanto) {
        if (usado_ + cuanto > trozo_.size()) soltar();
        return trozo_.data() + usado_;
    }

    Redaccion redaccion_;
    bool evaporacion_;
    const AlEscribir& alEscribir_;
    std::string trozo_;
    std::size_t usado_ = 0;
    std::size_t muestras_ = 0;
};

std::string cabezaDe(const EstacionGuardada& estacion, const PeticionTabla& peticion) {
    const auto cabecera = leerCabecera(Lectura::cabecera(estacion));
    auto cabeza = cabeceraDatos(peticion.formato, peticion.momento, cabecera.texto, estacion.evaporacion);
    // Its last line names the columns.
    if (peticion.calidad && peticion.formato == Formato::csv)
        cabeza.insert(cabeza.size() - textos::kFinLinea.size(), ",Calidad");
    return cp1252DeUtf8(cabeza);
}

bool esta(const Periodo& periodo, Instante instante) {
    return (!periodo.desde || instante >= *periodo.desde) && (!periodo.hasta || instante < *periodo.hasta);
}

// Samples with the marks of those of which they are known.
struct Calificado {
    Envio envio;
    std::size_t cuantas = 0;
    std::vector<Marcas> marcas;
    bool listo() const { return marcas.size() == cuantas; }
};

// The marks of a sample follow from what surrounds it, so that all of the station's are looked at. One thread
// reads, one judges, one writes.
void escribirConCalidad(Lectura& lectura, const EstacionGuardada& estacion, const PeticionTabla& peticion,
                        Tablero& tablero) {
    Relevo<Calificado, 1> escritor([&](const Calificado& calificado) {
        auto marcas = calificado.marcas.begin();
        calificado.envio.recorrer([&](const MuestraArchivada& m) {
            const auto suyas = *marcas++;
            if (esta(peticion.periodo, m.instante)) tablero.muestra(m.registro, suyas);
        });
    });
    std::deque<Calificado> enCola;
    std::size_t listos = 0;
    Marcador marcador(*peticion.calidad, [&](const Juzgada& juzgada) {
        enCola[listos].marcas.push_back(juzgada.marcas);
        if (enCola[listos].listo()) ++listos;
    });
    const auto entregar = [&] {
        for (; listos > 0; --listos, enCola.pop_front()) escritor.dar(std::move(enCola.front()));
    };
    recorrerAparte(lectura, estacion, {}, peticion.cuales, [&](Envio&& envio) {
        const auto cuantas = envio.cuantas();
        if (cuantas == 0) return;
        auto& suyo = enCola.emplace_back(Calificado{std::move(envio), cuantas, {}});
        suyo.marcas.reserve(cuantas);
        suyo.envio.recorrer([&](const MuestraArchivada& m) {
            marcador.agregar({m.instante, medidas(m.registro), m.conflicto});
        });
        entregar();
    });
    marcador.terminar();
    entregar();
    escritor.terminar();
}

}  // namespace

std::size_t escribirTabla(Lectura& lectura, const EstacionGuardada& estacion, const PeticionTabla& peticion,
                          const std::function<void(std::string_view)>& alEscribir) {
    Tablero tablero(fila(peticion.formato).redaccion, estacion.evaporacion, alEscribir);
    tablero.texto(cabezaDe(estacion, peticion));
    if (peticion.calidad) {
        escribirConCalidad(lectura, estacion, peticion, tablero);
    } else {
        recorrerAparte(lectura, estacion, peticion.periodo, peticion.cuales, [&](const Envio& envio) {
            envio.recorrer([&](const MuestraArchivada& m) { tablero.muestra(m.registro); });
        });
    }
    tablero.texto(fila(peticion.formato).pie);
    return tablero.muestras();
}

}  // namespace telvane
