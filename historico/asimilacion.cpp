#include "historico/asimilacion.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "data/registros.h"
#include "historico/huecos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

using Sellos = std::vector<Instante>;

Sellos ordenados(Sellos sellos) {
    std::sort(sellos.begin(), sellos.end());
    sellos.erase(std::unique(sellos.begin(), sellos.end()), sellos.end());
    return sellos;
}

bool esta(const Sellos& sellos, Instante cual) {
    return std::binary_search(sellos.begin(), sellos.end(), cual);
}

std::vector<Testigo> testigosDe(BytesImagen bytes, const Huella& huella, const Sellos& sellos) {
    std::vector<Testigo> lista;
    recorrerRegistros(bytes, [&](std::size_t ranura, BytesMuestraConst registro) {
        const auto sello = instanteDe(registro);
        if (esta(sellos, sello)) lista.push_back({sello, copiaDe(registro), ranura, huella});
    });
    return lista;
}

// Whether the image can hold one of the stamps.
bool alcanza(const FichaImagen& ficha, const Sellos& sellos) {
    if (!ficha.desde) return false;
    const auto primero = std::lower_bound(sellos.begin(), sellos.end(), *ficha.desde);
    return primero != sellos.end() && *primero <= *ficha.hasta;
}

}  // namespace

ImagenNueva::ImagenNueva(BytesImagen contenido, const Huella& huella, Incorporada cuando,
                         std::string_view origen)
    : bytes(contenido), ranuras(ranurasEnOrden(contenido, kPrimerMomento, kUltimoMomento)) {
    ficha.huella = huella;
    ficha.bytes = bytes.size();
    ficha.reloj = relojDe(bytes);
    if (!ranuras.empty()) {
        ficha.desde = instante(ranuras.front());
        ficha.hasta = instante(ranuras.back());
    }
    ficha.incorporada = cuando;
    ficha.origen = utf8Valido(origen);
    ficha.muestras = static_cast<std::int64_t>(ranuras.size());
    ficha.retrocesos = retrocesosDe(bytes);
}

Asimilada Asimilacion::asimilar(const ImagenNueva& imagen) {
    if (imagen.ranuras.empty()) return {};
    // What stands in the same place of the newest image is in the set.
    const auto* reciente = resumen_.masNueva ? imagenes_.siSeLee(*resumen_.masNueva) : nullptr;
    const auto candidatas =
        filasQueNoEstanEn(imagen.bytes, reciente ? BytesImagen(*reciente) : BytesImagen());
    const auto antes = sellosConTestigos(imagen);
    auto hallazgo = buscarNuevas(candidatas);
    resumen_.huecos += contarHuecosDeMas(hallazgo.sellosNuevos);
    almacen_.agregarFilas(estacion_, hallazgo.nuevas);
    resumen_.muestras += static_cast<std::int64_t>(hallazgo.nuevas.size());
    resumen_.desde = std::min(resumen_.desde.value_or(*imagen.ficha.desde), *imagen.ficha.desde);
    resumen_.hasta = std::max(resumen_.hasta.value_or(*imagen.ficha.hasta), *imagen.ficha.hasta);

    Sellos recientes;
    std::set_difference(hallazgo.enConflicto.begin(), hallazgo.enConflicto.end(), antes.begin(), antes.end(),
                        std::back_inserter(recientes));
    resumen_.conflictos += static_cast<std::int64_t>(recientes.size());
    atestiguarAnteriores(recientes);
    Sellos suyos;
    std::set_union(antes.begin(), antes.end(), recientes.begin(), recientes.end(), std::back_inserter(suyos));
    atestiguar(imagen, suyos);

    auto tocados = revisarParciales(imagen);
    tocados.insert(tocados.end(), suyos.begin(), suyos.end());
    contar(ordenados(std::move(tocados)));
    return {static_cast<std::int64_t>(hallazgo.nuevas.size()), static_cast<std::int64_t>(suyos.size())};
}

Asimilacion::Hallazgo Asimilacion::buscarNuevas(const std::vector<Fila>& candidatas) {
    // Spoilt and late samples stand alone: what lies between them and the rest is not read.
    constexpr std::chrono::hours kTramo{12};
    Hallazgo hallazgo;
    const std::span<const Fila> todas(candidatas);
    for (std::size_t desde = 0; desde < todas.size();) {
        std::size_t hasta = desde + 1;
        while (hasta < todas.size() && todas[hasta].instante - todas[hasta - 1].instante <= kTramo) ++hasta;
        buscarEnTramo(todas.subspan(desde, hasta - desde), hallazgo);
        desde = hasta;
    }
    return hallazgo;
}

void Asimilacion::buscarEnTramo(std::span<const Fila> candidatas, Hallazgo& hallazgo) {
    std::vector<Fila> presentes;
    almacen_.filas(estacion_, candidatas.front().instante, candidatas.back().instante,
                   [&](const Fila& fila) { presentes.push_back(fila); });
    auto presente = presentes.begin();
    for (std::size_t i = 0; i < candidatas.size();) {
        const auto sello = candidatas[i].instante;
        while (presente != presentes.end() && presente->instante < sello) ++presente;
        const auto primera = presente;
        while (presente != presentes.end() && presente->instante == sello) ++presente;
        auto registros = std::distance(primera, presente);
        const bool selloNuevo = registros == 0;
        for (; i < candidatas.size() && candidatas[i].instante == sello; ++i) {
            const bool esta = std::any_of(primera, presente,
                                          [&](const Fila& fila) { return fila.esLaMisma(candidatas[i]); });
            if (esta) continue;
            hallazgo.nuevas.push_back(candidatas[i]);
            ++registros;
        }
        if (selloNuevo) hallazgo.sellosNuevos.push_back(sello);
        if (registros > 1) hallazgo.enConflicto.push_back(sello);
    }
}

std::int64_t Asimilacion::contarHuecosDeMas(const Sellos& sellosNuevos) {
    if (sellosNuevos.empty()) return 0;
    const auto primero = sellosNuevos.front();
    const auto ultimo = sellosNuevos.back();
    SellosAlrededor entorno;
    entorno.antes = almacen_.sellosAntes(estacion_, primero, kSellosAlrededor);
    entorno.despues = almacen_.sellosDespues(estacion_, ultimo, kSellosAlrededor);
    almacen_.filas(estacion_, primero, ultimo, [&](const Fila& fila) {
        if (entorno.medio.empty() || entorno.medio.back() != fila.instante) {
            entorno.medio.push_back(fila.instante);
        }
    });
    return huecosDeMas(entorno, sellosNuevos);
}

// Stamps of these samples that are in conflict already.
Sellos Asimilacion::sellosConTestigos(const ImagenNueva& imagen) {
    Sellos enConflicto;
    for (const auto& t : almacen_.testigos(estacion_, *imagen.ficha.desde, *imagen.ficha.hasta)) {
        if (enConflicto.empty() || enConflicto.back() != t.instante) enConflicto.push_back(t.instante);
    }
    const auto instante = [&](std::uint16_t ranura) { return imagen.instante(ranura); };
    std::erase_if(enConflicto, [&](Instante sello) {
        return !std::ranges::binary_search(imagen.ranuras, sello, {}, instante);
    });
    return enConflicto;
}

void Asimilacion::atestiguar(const ImagenNueva& imagen, const Sellos& sellos) {
    if (sellos.empty()) return;
    almacen_.agregarTestigos(estacion_, testigosDe(imagen.bytes, imagen.ficha.huella, sellos));
}

void Asimilacion::atestiguarAnteriores(const Sellos& sellos) {
    if (sellos.empty()) return;
    for (const auto& ficha : anteriores_()) {
        if (!alcanza(ficha, sellos)) continue;
        const auto* bytes = imagenes_.siSeLee(ficha.huella);
        if (bytes) almacen_.agregarTestigos(estacion_, testigosDe(*bytes, ficha.huella, sellos));
    }
}

// Marks the partial images that this one makes superfluous, or itself; gives the stamps whose votes change.
Sellos Asimilacion::revisarParciales(const ImagenNueva& imagen) {
    if (!imagen.ficha.parcial()) {
        Sellos tocados;
        for (const auto& ficha : almacen_.parcialesSueltas(estacion_)) {
            // One without samples has no vote to lose, whichever of the two came first.
            const bool puede =
                ficha.desde && *ficha.desde >= *imagen.ficha.desde && *ficha.hasta <= *imagen.ficha.hasta;
            const auto* bytes = puede ? imagenes_.siSeLee(ficha.huella) : nullptr;
            if (!bytes || !contiene(imagen.bytes, *bytes)) continue;
            almacen_.marcarContenida(estacion_, ficha.huella, true);
            const auto sellos = almacen_.sellosDe(estacion_, ficha.huella);
            tocados.insert(tocados.end(), sellos.begin(), sellos.end());
        }
        return tocados;
    }
    for (const auto& ficha : anteriores_()) {
        const bool puede = !ficha.parcial() && ficha.desde && *ficha.desde <= *imagen.ficha.desde &&
                           *ficha.hasta >= *imagen.ficha.hasta;
        const auto* bytes = puede ? imagenes_.siSeLee(ficha.huella) : nullptr;
        if (!bytes || !contiene(*bytes, imagen.bytes)) continue;
        almacen_.marcarContenida(estacion_, imagen.ficha.huella, true);
        break;
    }
    return {};
}

void Asimilacion::contar(const Sellos& sellos) {
    if (sellos.empty()) return;
    std::map<Instante, std::vector<Testigo>> porSello;
    for (auto& t : almacen_.testigos(estacion_, sellos.front(), sellos.back())) {
        if (esta(sellos, t.instante)) porSello[t.instante].push_back(t);
    }
    for (const auto& [sello, testigos] : porSello) {
        std::map<BytesMuestra, bool> cuentan;
        almacen_.filas(estacion_, sello, sello, [&](const Fila& f) { cuentan[f.registro] = f.cuenta; });
        for (const auto& v : votar(testigos)) {
            // One that is not there any more is for a check to tell.
            const auto hay = cuentan.find(v.registro);
            if (hay == cuentan.end() || hay->second == v.cuenta) continue;
            almacen_.cambiarCuenta(estacion_, {sello, v.registro, v.cuenta});
            resumen_.muestras += v.cuenta ? 1 : -1;
        }
    }
}

}  // namespace telvane
