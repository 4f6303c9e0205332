#include "historico/lectura.h"

#include <algorithm>

#include "historico/archivo.h"
#include "historico/huecos.h"
#include "historico/imagenes.h"
#include "historico/limites_aviso.h"
#include "historico/recorrido_filas.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"

namespace telvane {

EstacionGuardada Lectura::estacion(const std::string& nombre) {
    auto estacion = almacen_.estacion(nombre);
    if (!estacion) throw sinEstacion(nombre);
    return *estacion;
}

std::vector<std::uint8_t> Lectura::bytesDe(const Huella& huella) {
    const auto suyas = almacen_.estacionesCon(huella);
    std::vector<IdEstacion> todas(suyas.begin(), suyas.end());
    for (const auto& estacion : estaciones()) {
        if (!suyas.contains(estacion.id)) todas.push_back(estacion.id);
    }
    for (const auto id : todas) {
        Imagenes imagenes(almacen_, id);
        if (const auto* bytes = imagenes.siSeLee(huella)) return *bytes;
    }
    return Imagenes(almacen_, todas.front()).bytes(huella);
}

std::vector<std::uint8_t> Lectura::cabecera(const EstacionGuardada& estacion) {
    auto bytes = estacion.resumen.cabecera;
    const bool propia = serieDe(bytes).has_value();
    bytes.resize(registro_config::kCabecera);
    if (!propia) {
        const auto serie = empacarSerie(estacion.serie);
        std::copy(serie.begin(), serie.end(), bytes.begin());
    }
    return bytes;
}

std::map<IdEstacion, Llegadas> Lectura::ultimas() {
    auto todas = almacen_.ultimas(limites_aviso::kUltimas);
    for (auto& [estacion, suyas] : todas) ordenarLlegadas(suyas);
    return todas;
}

std::int64_t Lectura::huecosDesde(const EstacionGuardada& estacion, const std::optional<Instante>& desde,
                                  const FichaImagen& imagen, std::chrono::minutes intervalo) {
    const auto primero = desde ? *desde + std::chrono::seconds(1) : *imagen.desde;
    const auto fin = *imagen.hasta + std::chrono::seconds(1);
    if (primero >= fin) return 0;
    // As many as fit, and those before that tell their rhythm; where somebody has shortened it meanwhile, the
    // image's own number will do.
    const auto caben = static_cast<std::size_t>((fin - primero) / intervalo) + 1 + kSellosAlrededor;
    auto sellos = almacen_.sellosAntes(estacion.id, fin, caben);
    if (sellos.size() == caben && sellos.front() >= primero) {
        sellos = almacen_.sellosAntes(estacion.id, fin,
                                      static_cast<std::size_t>(imagen.muestras) + kSellosAlrededor);
    }
    const auto despues = almacen_.sellosDespues(estacion.id, *imagen.hasta, kSellosAlrededor);
    sellos.insert(sellos.end(), despues.begin(), despues.end());
    return contarHuecos(sellos, primero, *imagen.hasta);
}

std::int64_t Lectura::conflictosDeMas(const EstacionGuardada& estacion, const FichaImagen& imagen,
                                      const FichaImagen* otra) {
    return almacen_.conflictosDeMas(estacion.id, imagen, otra == nullptr ? Huella{} : otra->huella);
}

void Lectura::recorrer(const EstacionGuardada& estacion, const Periodo& periodo, Cuales cuales,
                       const AlLeerMuestra& alLeer) {
    recorrer(estacion, periodo, cuales, alLeer, [&](const TramoImagen& tramo) {
        tramo.recorrer([&](BytesMuestraConst registro) { alLeer(unica(registro)); });
    });
}

void Lectura::recorrer(const EstacionGuardada& estacion, const Periodo& periodo, Cuales cuales,
                       const AlLeerMuestra& alLeer, const AlLeerTramo& alLeerTramo) {
    // Whether a stamp is in conflict shows with its next record.
    std::vector<Fila> delSello;
    const auto soltar = [&] {
        const bool conflicto = delSello.size() > 1;
        for (const auto& fila : delSello) {
            if (fila.cuenta || cuales == Cuales::todas) alLeer({fila.instante, fila.registro, conflicto});
        }
        delSello.clear();
    };
    const auto desde = periodo.desde.value_or(kPrimerMomento);
    const auto hasta = periodo.hasta ? *periodo.hasta - std::chrono::seconds(1) : kUltimoMomento;
    const auto alLeerFila = [&](const Fila& fila) {
        if (!delSello.empty() && delSello.front().instante != fila.instante) soltar();
        delSello.push_back(fila);
    };
    if (convienenImagenes(estacion, desde, hasta)) {
        const auto alLeerImagen = [&](const TramoImagen& tramo) {
            soltar();
            alLeerTramo(tramo);
        };
        recorrerFilas(almacen_, estacion, desde, hasta, {.tramo = alLeerImagen, .fila = alLeerFila});
    } else {
        almacen_.filas(estacion.id, desde, hasta, alLeerFila);
    }
    soltar();
}

}  // namespace telvane
