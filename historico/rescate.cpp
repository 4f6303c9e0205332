#include "historico/rescate.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include <fmt/format.h>

#include "historico/esquema.h"
#include "historico/imagen.h"
#include "historico/nombre_estacion.h"
#include "loggerconfig/datos_config.h"
#include "platform/contados.h"

namespace telvane {

namespace {

// Of images that do not say it, and of which nobody else does.
constexpr std::string_view kSerieDesconocida = "00000000";

// Given for want of a better one.
bool esInventado(const std::string& nombre) {
    return nombre.starts_with(kSerieDesconocida) || esNombreRecuperado(nombreJuntoALaSerie(nombre));
}

// Whether a station is still called what it was, but for the number of its logger.
bool seConserva(const std::string& nombre, const std::string& nuevo) {
    const auto serie = nombre.substr(0, kSerieDesconocida.size());
    return nombre == nuevo || (esSerie(serie) && esNombreDe(nombre, serie) && !esInventado(nombre) &&
                               nombreJuntoALaSerie(nombre) == nombreJuntoALaSerie(nuevo));
}

}  // namespace

Rescate::Rescate(Almacen& almacen, const std::function<void()>& alAvanzar)
    : almacen_(almacen),
      alAvanzar_(alAvanzar),
      filas_(almacen.estaciones()),
      fichas_(almacen.fichasGuardadas()),
      deOtros_(deOtros()),
      contenidos_(almacen, nombradas(), alAvanzar),
      piezas_(piezasDe(contenidos_, fichas_, deOtros_)) {
    situar();
    agrupar();
    fundirHuerfanas();
    devolverAjenas();
    apartarRepetidas();
    nombrar();
    describir();
}

// Images of which something else tells than what stands for them themselves.
std::set<Huella> Rescate::deOtros() const {
    std::set<Huella> huellas;
    for (const auto& eslabon : almacen_.eslabones()) {
        if (eslabon.base) huellas.insert(*eslabon.base);
    }
    for (const auto& fila : filas_) {
        if (fila.resumen.masNueva) huellas.insert(*fila.resumen.masNueva);
        for (const auto& [imagen, descarga] : almacen_.descargas(fila.id)) huellas.insert(imagen);
        for (const auto& testigo : almacen_.testigos(fila.id, kPrimerMomento, kUltimoMomento))
            huellas.insert(testigo.imagen);
    }
    return huellas;
}

// Images that something else than their contents speaks of.
std::set<Huella> Rescate::nombradas() const {
    auto huellas = deOtros_;
    for (const auto& una : fichas_) huellas.insert(una.ficha.huella);
    return huellas;
}

// What is kept of one image in two stations belongs to the one that has its samples.
void Rescate::situar() {
    for (auto& pieza : piezas_) {
        const auto* guardado = guardadoDe(pieza);
        const auto* ficha = fichaDe(pieza);
        if (guardado == nullptr || ficha == nullptr || guardado->estacion == ficha->estacion) continue;
        std::vector<IdEstacion> lasDos = {guardado->estacion, ficha->estacion};
        if (esSuMasNueva(ficha->estacion, pieza.huella)) std::ranges::reverse(lasDos);
        pieza.estacion = pieza.seLee ? laDeSusMuestras(lasDos, pieza.huella) : ficha->estacion;
    }
    devolverMudadas();
    reunirCopias();
}

// How many images more than it knows of stand in each station.
std::map<IdEstacion, std::int64_t> Rescate::imagenesDeMas() const {
    std::map<IdEstacion, std::int64_t> deMas;
    for (const auto& fila : filas_) deMas[fila.id] -= fila.resumen.imagenes;
    for (const auto& pieza : piezas_) ++deMas[pieza.estacion];
    return deMas;
}

// Of one that says its number.
bool Rescate::estaEnLaDeSuSerie(const Pieza& pieza) const {
    return std::ranges::any_of(filas_, [&](const EstacionGuardada& fila) {
        return fila.id == pieza.estacion && esNombreDe(fila.nombre, *pieza.serie);
    });
}

// A station that has fewer images than it knows of gets those back that bear its number, or none, from where
// there are more than are known, as far as its samples do not speak against it. Surest first: one that it
// calls its newest or that is another logger's where it stands, one of which its samples alone tell, and one
// of which both stations' do.
void Rescate::devolverMudadas() {
    enum class Prueba { sabida, susMuestras, ambas };
    auto deMas = imagenesDeMas();
    const auto esSuya = [&](const EstacionGuardada& fila, const Pieza& pieza, Prueba prueba) {
        const bool sabida =
            fila.resumen.masNueva == pieza.huella || (pieza.serie && !estaEnLaDeSuSerie(pieza));
        if (prueba == Prueba::sabida && !sabida) return false;
        alAvanzar_();
        // Of two that have as many the first is meant.
        std::vector<IdEstacion> lasDos = {fila.id, pieza.estacion};
        if (prueba == Prueba::susMuestras) std::ranges::reverse(lasDos);
        return laDeSusMuestras(lasDos, pieza.huella) == fila.id;
    };
    for (const auto prueba : {Prueba::sabida, Prueba::susMuestras, Prueba::ambas}) {
        for (const auto& fila : filas_) {
            for (auto& pieza : piezas_) {
                if (deMas.at(fila.id) >= 0) break;
                const bool puede = pieza.estacion != fila.id && pieza.seLee && deMas.at(pieza.estacion) > 0 &&
                                   (!pieza.serie || esNombreDe(fila.nombre, *pieza.serie));
                if (!puede || !esSuya(fila, pieza, prueba)) continue;
                --deMas.at(pieza.estacion);
                pieza.estacion = fila.id;
                ++deMas.at(fila.id);
            }
        }
    }
}

// An image that stands in a station of its logger and in another logger's as well belongs to the first, and
// must not speak for whose the other one is.
void Rescate::reunirCopias() {
    std::map<Huella, IdEstacion> suyas;
    for (const auto& pieza : piezas_) {
        if (pieza.serie && estaEnLaDeSuSerie(pieza)) suyas.emplace(pieza.huella, pieza.estacion);
    }
    for (auto& pieza : piezas_) {
        const auto suya = suyas.find(pieza.huella);
        if (suya != suyas.end() && !estaEnLaDeSuSerie(pieza)) pieza.estacion = suya->second;
    }
}

// The first of those that have as many.
IdEstacion Rescate::laDeSusMuestras(const std::vector<IdEstacion>& cuales, const Huella& huella) {
    constexpr std::size_t kBastan = 20;
    const auto filas = filasQueNoEstanEn(contenidos_.bytes(huella), {});
    const auto paso = std::max<std::size_t>(filas.size() / kBastan, 1);
    auto mejor = cuales.front();
    int masDe = -1;
    for (const auto id : cuales) {
        int tiene = 0;
        for (std::size_t i = 0; i < filas.size(); i += paso) {
            almacen_.filas(id, filas[i].instante, filas[i].instante,
                           [&](const Fila& fila) { tiene += fila.esLaMisma(filas[i]) ? 1 : 0; });
        }
        if (tiene > masDe) mejor = id;
        masDe = std::max(masDe, tiene);
    }
    return mejor;
}

void Rescate::agrupar() {
    grupos_.clear();
    for (std::size_t i = 0; i < piezas_.size(); ++i) grupos_[piezas_[i].estacion].piezas.push_back(i);
    // Those that stand at their images first.
    for (const bool suSitio : {true, false}) {
        for (const auto& fila : filas_) {
            const auto id = dondeEsta(fila);
            if ((id == fila.id) != suSitio) continue;
            auto& grupo = grupos_[id];
            if (!grupo.fila) grupo.fila = fila;
        }
    }
    for (auto& [id, grupo] : grupos_) grupo.serie = serieDe(grupo);
}

// Whose images a station's row speaks of: the newest one must be among them, and so its header where the
// row's own number leads to other ones.
IdEstacion Rescate::dondeEsta(const EstacionGuardada& fila) {
    const auto& nueva = fila.resumen.masNueva;
    if (!nueva || !contenidos_.seLee(*nueva)) return fila.id;
    std::set<IdEstacion> quienes;
    const auto esElla = [&](std::size_t cual) { return piezas_[cual].huella == *nueva; };
    for (const auto& [id, grupo] : grupos_) {
        if (std::ranges::any_of(grupo.piezas, esElla)) quienes.insert(id);
    }
    if (quienes.contains(fila.id) || quienes.size() != 1) return fila.id;
    const auto& bytes = contenidos_.bytes(*nueva);
    const auto& cabecera = fila.resumen.cabecera;
    const auto suGrupo = grupos_.find(fila.id);
    const bool sinOtras = suGrupo == grupos_.end() || suGrupo->second.piezas.empty();
    const bool laSuya = sinOtras || (cabecera.size() == std::min(bytes.size(), registro_config::kCabecera) &&
                                     std::equal(cabecera.begin(), cabecera.end(), bytes.begin()));
    return laSuya ? *quienes.begin() : fila.id;
}

// The one that most of its images say; without any, the one that the station bears.
std::string Rescate::serieDe(const Grupo& grupo) const {
    std::map<std::string, int> votos;
    for (const auto cual : grupo.piezas) {
        if (piezas_[cual].serie) ++votos[*piezas_[cual].serie];
    }
    const auto nombre = grupo.fila ? grupo.fila->nombre : std::string();
    const auto valeMas = [&](const auto& una, const auto& otra) {
        return std::pair(una.second, esNombreDe(nombre, una.first)) <
               std::pair(otra.second, esNombreDe(nombre, otra.first));
    };
    if (!votos.empty()) return std::ranges::max_element(votos, valeMas)->first;
    auto principio = nombre.substr(0, kSerieDesconocida.size());
    if (esSerie(principio) && esNombreDe(nombre, principio)) return principio;
    return grupo.fila && esSerie(grupo.fila->serie) ? grupo.fila->serie : std::string(kSerieDesconocida);
}

// When the first and the last of those came of which it is known.
std::pair<Incorporada, Incorporada> Rescate::cuandoLlegaron(const Grupo& grupo) const {
    std::pair lapso{Incorporada::max(), Incorporada::min()};
    for (const auto cual : grupo.piezas) {
        const auto* ficha = fichaDe(piezas_[cual]);
        if (ficha == nullptr) continue;
        lapso.first = std::min(lapso.first, ficha->ficha.incorporada);
        lapso.second = std::max(lapso.second, ficha->ficha.incorporada);
    }
    return lapso;
}

// Whether a station is one that the next download made when a row was lost: it goes by its number alone, and
// none of the other images came since. What stood beside them is another one, whatever it resembles.
bool Rescate::esLaSiguiente(const Grupo& huerfana, const Grupo& suya) const {
    return suya.fila->nombre == suya.serie && cuandoLlegaron(suya).first >= cuandoLlegaron(huerfana).second;
}

// A station that was made anew while its old images were without one, or under a name that was made up for
// them. What samples of a lost image there are stays with them.
void Rescate::fundirHuerfanas() {
    const auto esHuerfana = [&](const Grupo& grupo) {
        return (!grupo.fila || esInventado(grupo.fila->nombre)) && !grupo.piezas.empty() &&
               std::ranges::all_of(grupo.piezas, [&](std::size_t cual) { return piezas_[cual].seLee; });
    };
    for (const auto& grupo : grupos_) {
        const auto& huerfana = grupo.second;
        if (!esHuerfana(huerfana)) continue;
        const auto suya = std::ranges::find_if(grupos_, [&](const auto& otra) {
            return otra.first > grupo.first && otra.second.fila && !esInventado(otra.second.fila->nombre) &&
                   otra.second.serie == huerfana.serie && esLaSiguiente(huerfana, otra.second) &&
                   concuerdan(huerfana, otra.second);
        });
        if (suya == grupos_.end()) continue;
        for (const auto cual : huerfana.piezas) piezas_[cual].estacion = suya->first;
        fundidas_.emplace(
            grupo.first,
            fmt::format("estación {}: recibe de otra, que perdió su nombre, {} de la misma "
                        "memoria",
                        suya->second.fila->nombre,
                        contados(static_cast<std::int64_t>(huerfana.piezas.size()), "imagen", "imágenes")));
    }
    if (!fundidas_.empty()) agrupar();
}

// Whether some image of the one shows that it comes from the same memory as one of the other.
bool Rescate::concuerdan(const Grupo& uno, const Grupo& otro) {
    // Of a station that is kept apart as it is this is asked again and again.
    const auto suyas =
        uno.fila && uno.piezas.size() > 2 ? std::vector{uno.piezas.front(), uno.piezas.back()} : uno.piezas;
    for (const auto cual : suyas) {
        if (!piezas_[cual].seLee) continue;
        const auto bytes = contenidos_.bytes(piezas_[cual].huella);
        for (const auto cualOtra : otro.piezas) {
            alAvanzar_();
            const auto& otra = piezas_[cualOtra];
            if (!otra.seLee) continue;
            if (otra.huella == piezas_[cual].huella) return true;
            if (comparar(bytes, contenidos_.bytes(otra.huella)) == Trato::concuerdan) return true;
        }
    }
    return false;
}

// Images whose header names another logger than that of the station where they stand.
void Rescate::devolverAjenas() {
    for (auto& pieza : piezas_) {
        if (!pieza.serie || *pieza.serie == grupos_.at(pieza.estacion).serie) continue;
        pieza.estacion = estacionDe(*pieza.serie, pieza.huella);
        grupos_[pieza.estacion].serie = *pieza.serie;
    }
}

IdEstacion Rescate::estacionDe(const std::string& serie, const Huella& huella) {
    std::vector<IdEstacion> suyas;
    std::set<IdEstacion> todas;
    for (const auto& [id, grupo] : grupos_) {
        todas.insert(id);
        if (grupo.serie != serie) continue;
        const bool sinMas = grupo.fila && grupo.fila->nombre == serie;
        suyas.insert(sinMas ? suyas.begin() : suyas.end(), id);
    }
    if (suyas.empty()) return almacen_.idLibre(todas);
    return suyas.size() == 1 ? suyas.front() : laDeSusMuestras(suyas, huella);
}

// A note under a false name whose image was brought anew: nothing else tells of an image of that name.
bool Rescate::repiteLoDeOtra(const Pieza& pieza) const {
    const auto* ficha = fichaDe(pieza);
    if (ficha == nullptr || pieza.contenido || pieza.seLee || deOtros_.contains(pieza.huella)) return false;
    return std::ranges::any_of(piezas_, [&](const Pieza& otra) {
        const auto* suya = fichaDe(otra);
        return otra.seLee && suya != nullptr && valoresDistintos(*ficha, *suya) == 0;
    });
}

// Whether a station's own row speaks of it.
bool Rescate::esSuMasNueva(IdEstacion estacion, const Huella& huella) const {
    return std::ranges::any_of(filas_, [&](const EstacionGuardada& fila) {
        return fila.id == estacion && fila.resumen.masNueva == huella;
    });
}

// A content or a note of an image that stands whole in another station, beside samples that are not its own:
// a row that somebody copied there; both of them, where there are more images than the station knows of.
bool Rescate::esCopia(const Pieza& pieza, const std::map<IdEstacion, std::int64_t>& deMas) {
    const auto entera = [this](const Pieza& una) { return esSuContenido(una) && una.ficha.has_value(); };
    const bool sobran = deMas.at(pieza.estacion) > 0;
    if (!pieza.seLee || (entera(pieza) && !sobran) || esSuMasNueva(pieza.estacion, pieza.huella))
        return false;
    const auto otra = std::ranges::find_if(piezas_, [&](const Pieza& una) {
        return una.huella == pieza.huella && una.estacion != pieza.estacion && entera(una);
    });
    return otra != piezas_.end() &&
           laDeSusMuestras({pieza.estacion, otra->estacion}, pieza.huella) != pieza.estacion;
}

void Rescate::apartarRepetidas() {
    std::map<std::pair<IdEstacion, Huella>, std::size_t> vistas;
    std::vector<Pieza> unicas;
    std::vector<bool> sobran;
    const auto deMas = imagenesDeMas();
    for (const auto& pieza : piezas_) sobran.push_back(repiteLoDeOtra(pieza) || esCopia(pieza, deMas));
    for (std::size_t i = 0; i < piezas_.size(); ++i) {
        auto& pieza = piezas_[i];
        if (sobran[i]) {
            repetidas_.push_back(std::move(pieza));
            continue;
        }
        const auto [lugar, nueva] = vistas.emplace(std::pair(pieza.estacion, pieza.huella), unicas.size());
        if (nueva) {
            unicas.push_back(std::move(pieza));
            continue;
        }
        // What the first lacks it gets of the second.
        auto& primera = unicas[lugar->second];
        if (!esSuContenido(primera) && esSuContenido(pieza)) std::swap(primera.contenido, pieza.contenido);
        if (!primera.ficha) std::swap(primera.ficha, pieza.ficha);
        repetidas_.push_back(std::move(pieza));
    }
    piezas_ = std::move(unicas);
    agrupar();
}

void Rescate::nombrar() {
    std::set<std::string> usados;
    std::set<std::string> sueltos;
    for (const auto& fila : filas_) sueltos.insert(fila.nombre);
    for (auto& [id, grupo] : grupos_) {
        if (!grupo.fila) continue;
        const auto& nombre = grupo.fila->nombre;
        grupo.soloMuestras = grupo.piezas.empty() && !fundidas_.contains(id) &&
                             almacen_.contarFilas(id, kPrimerMomento, kUltimoMomento) > 0;
        if (!grupo.soloMuestras && (grupo.piezas.empty() || !esNombreDe(nombre, grupo.serie))) continue;
        grupo.nombre = nombre;
        usados.insert(nombre);
        sueltos.erase(nombre);
    }
    // Of several whose names are lost nobody knows which went by its number alone, and the next download
    // would go to that one.
    std::map<std::string, int> sinNombre;
    for (const auto& [id, grupo] : grupos_) {
        if (!grupo.piezas.empty() && !grupo.fila) ++sinNombre[grupo.serie];
    }
    for (const auto& [serie, cuantas] : sinNombre) {
        if (cuantas > 1) usados.insert(serie);
    }
    for (auto& [id, grupo] : grupos_) {
        if (grupo.piezas.empty() || !grupo.nombre.empty()) continue;
        grupo.nombre = nombreNuevo(grupo, sueltos, usados);
        usados.insert(grupo.nombre);
    }
}

// One that a station bore which has none of its images, as a rule because it is this one's.
std::string Rescate::nombreNuevo(const Grupo& grupo, std::set<std::string>& sueltos,
                                 const std::set<std::string>& usados) {
    const auto suyo = std::ranges::find_if(
        sueltos, [&](const std::string& nombre) { return esNombreDe(nombre, grupo.serie); });
    if (suyo != sueltos.end()) return std::move(sueltos.extract(suyo).value());
    const auto conNombre = [&](const auto& junto) { return fmt::format("{}/{}", grupo.serie, junto); };
    const bool suNombre = grupo.fila && !esInventado(grupo.fila->nombre);
    const auto junto = suNombre ? nombreJuntoALaSerie(grupo.fila->nombre) : std::string();
    if (!junto.empty() && !usados.contains(conNombre(junto))) return conNombre(junto);
    auto nombre = grupo.serie;
    for (int vez = 1; usados.contains(nombre); ++vez) nombre = conNombre(nombreRecuperado(vez));
    return nombre;
}

std::vector<Rescate::Sitio> Rescate::sitios() const {
    std::vector<Sitio> sitios;
    std::map<std::pair<IdEstacion, Huella>, std::int64_t> profundidades;
    for (const auto& pieza : piezas_) {
        auto& sitio = sitios.emplace_back();
        if (!pieza.seLee) {
            sitio.profundidad = Almacen::kPerdida;
            continue;
        }
        if (esSuContenido(pieza)) {
            const auto& sobre = contenidos_.todos()[*pieza.contenido].sobre;
            const auto abajo = sobre ? profundidades.find({pieza.estacion, *sobre}) : profundidades.end();
            if (abajo != profundidades.end()) {
                sitio.base = sobre;
                sitio.profundidad = abajo->second + 1;
            }
            sitio.sirve = sitio.base == sobre;
        }
        profundidades[{pieza.estacion, pieza.huella}] = sitio.profundidad;
    }
    return sitios;
}

void Rescate::describir() {
    const auto decir = [&](IdEstacion id, const std::string& que) {
        if (que.empty()) return;
        porReponer_[nombreDe(id)].push_back(que);
        afectadas_.insert(id);
    };
    const auto todos = sitios();
    std::map<IdEstacion, std::int64_t> sinFicha;
    for (std::size_t i = 0; i < piezas_.size(); ++i) {
        const auto& pieza = piezas_[i];
        const auto* guardado = guardadoDe(pieza);
        const auto* ficha = fichaDe(pieza);
        if (!pieza.seLee) afectadas_.insert(pieza.estacion);
        if (pieza.seLee && ficha == nullptr) ++sinFicha[pieza.estacion];
        if (guardado != nullptr && guardado->estacion != pieza.estacion)
            afectadas_.insert(guardado->estacion);
        if (ficha != nullptr && ficha->estacion != pieza.estacion) afectadas_.insert(ficha->estacion);
        hayQueReponer_ =
            hayQueReponer_ || (guardado != nullptr && guardado->profundidad != todos[i].profundidad);
        decir(pieza.estacion, queTiene(pieza, todos[i]));
    }
    for (const auto& [id, cuantas] : sinFicha) {
        decir(id, fmt::format("de {} de sus imágenes queda el contenido y nada más: repóngalas con rehacer",
                              cuantas));
    }
    for (const auto& pieza : repetidas_) {
        decir(pieza.estacion,
              fmt::format("la imagen {} está dos veces: rehacer quita una", textoDe(pieza.huella)));
    }
    for (const auto& fila : filas_) {
        const auto grupo = grupos_.find(fila.id);
        const bool esSuya = grupo != grupos_.end() && grupo->second.fila && grupo->second.fila->id == fila.id;
        if (!esSuya || grupo->second.piezas.empty()) afectadas_.insert(fila.id);
        hayQueReponer_ = hayQueReponer_ || !esSuya;
    }
    for (const auto& [id, grupo] : grupos_) {
        hayQueReponer_ = hayQueReponer_ || !grupo.fila;
        decir(id, queTiene(id, grupo));
    }
    hayQueReponer_ = hayQueReponer_ || !porReponer_.empty();
}

std::string Rescate::queTiene(const Pieza& pieza, const Sitio& sitio) const {
    if (!pieza.seLee) return {};
    const auto imagen = textoDe(pieza.huella);
    const auto* guardado = guardadoDe(pieza);
    const auto* ficha = fichaDe(pieza);
    for (const auto esta :
         {guardado ? guardado->estacion : pieza.estacion, ficha ? ficha->estacion : pieza.estacion}) {
        if (esta == pieza.estacion) continue;
        const auto grupo = grupos_.find(esta);
        const auto serie = grupo == grupos_.end() ? std::string() : grupo->second.serie;
        return pieza.serie && *pieza.serie != serie && !serie.empty()
                   ? fmt::format("la imagen {} es del registrador {}, no del {}: repóngala con rehacer",
                                 imagen, *pieza.serie, serie)
                   : fmt::format("la imagen {} está en otra estación que la suya: repóngala con rehacer",
                                 imagen);
    }
    if (ficha != nullptr && ficha->ficha.huella != pieza.huella)
        return fmt::format("lo anotado de la imagen {} lleva otra huella: {}", imagen, kReponer);
    if (guardado != nullptr && guardado->huella != pieza.huella)
        return fmt::format("el contenido de la imagen {} lleva otra huella: {}", imagen, kReponer);
    if (guardado == nullptr || !sitio.sirve || guardado->base != sitio.base)
        return fmt::format("el contenido de la imagen {} no está guardado como debe: {}", imagen, kReponer);
    if (guardado->profundidad != sitio.profundidad)
        return fmt::format("la profundidad anotada de la imagen {} no es la de su cadena: {}", imagen,
                           kReponer);
    return {};
}

std::string Rescate::queTiene(IdEstacion id, const Grupo& grupo) const {
    // The store tells of what belongs to no station.
    if (!grupo.fila || grupo.soloMuestras) return {};
    if (grupo.piezas.empty()) return "no tiene ninguna imagen: rehacer la quita";
    if (grupo.fila->id != id) return fmt::format("su fila lleva otro número: {}", kReponer);
    if (grupo.fila->nombre != grupo.nombre)
        return fmt::format("su nombre no es el de su número de serie: {}", kReponer);
    if (grupo.fila->serie != grupo.serie)
        return fmt::format("su número de serie no es el de sus imágenes: {}", kReponer);
    if (grupo.fila->evaporacion != esDeVariante(grupo.serie))
        return fmt::format("la variante no es la de su número: {}", kReponer);
    return {};
}

std::string Rescate::nombreDe(IdEstacion id) const {
    const auto& grupo = grupos_.at(id);
    return grupo.fila ? grupo.fila->nombre : grupo.nombre;
}

Rescate::Lineas Rescate::perdidas(std::string_view remedio) const {
    Lineas lineas;
    for (const auto& pieza : piezas_) {
        if (pieza.seLee) continue;
        const auto& motivo = pieza.contenido ? contenidos_.todos()[*pieza.contenido].motivo
                                             : std::string(ImagenDanada::kSinContenido);
        lineas.push_back(fmt::format("estación {}: la imagen {} está dañada en el archivo: {}; {}",
                                     nombreDe(pieza.estacion), textoDe(pieza.huella), motivo, remedio));
    }
    for (const auto& [id, grupo] : grupos_) {
        if (!grupo.soloMuestras) continue;
        lineas.push_back(
            fmt::format("estación {}: no tiene ninguna imagen, y sí muestras: vuelva a incorporar "
                        "sus .rgt; si no los tiene, guárdelas con exportar y siga con un archivo nuevo, "
                        "que copiar --a hace con las imágenes de las demás",
                        grupo.nombre));
    }
    return lineas;
}

bool Rescate::pierde(IdEstacion estacion) const {
    const auto grupo = grupos_.find(estacion);
    if (grupo == grupos_.end()) return false;
    return grupo->second.soloMuestras ||
           std::ranges::any_of(grupo->second.piezas, [&](std::size_t cual) { return !piezas_[cual].seLee; });
}

Rescate::Lineas Rescate::reponer() {
    // These ask for bytes where they stand until the contents are moved.
    guardarFichas();
    guardarContenidos();
    return guardarEstaciones();
}

void Rescate::guardarContenidos() {
    struct Nuevo {
        IdEstacion estacion;
        Huella huella;
        ImagenGuardada imagen;
    };
    std::vector<Nuevo> nuevos;
    std::vector<const Almacen::Eslabon*> viejos;
    const auto todos = sitios();
    for (std::size_t i = 0; i < piezas_.size(); ++i) {
        const auto& pieza = piezas_[i];
        const auto& sitio = todos[i];
        const auto* guardado = guardadoDe(pieza);
        if (guardado == nullptr && !pieza.seLee) continue;
        const bool igual =
            !pieza.seLee || (guardado != nullptr && sitio.sirve && guardado->estacion == pieza.estacion &&
                             guardado->huella == pieza.huella && guardado->base == sitio.base);
        if (igual) {
            if (guardado->profundidad != sitio.profundidad)
                almacen_.corregirProfundidad(guardado->estacion, guardado->huella, sitio.profundidad);
            continue;
        }
        if (guardado != nullptr) viejos.push_back(guardado);
        nuevos.push_back({pieza.estacion,
                          pieza.huella,
                          {.base = sitio.base,
                           .profundidad = static_cast<int>(sitio.profundidad),
                           .datos = sitio.sirve ? almacen_.datosDe(*guardado)
                                                : comprimir(contenidos_.bytes(pieza.huella))}});
    }
    for (const auto& pieza : repetidas_) {
        if (const auto* guardado = guardadoDe(pieza)) viejos.push_back(guardado);
    }
    for (const auto* viejo : viejos) almacen_.quitarContenido(viejo->estacion, viejo->huella);
    for (const auto& nuevo : nuevos) almacen_.guardarContenido(nuevo.estacion, nuevo.huella, nuevo.imagen);
}

void Rescate::guardarFichas() {
    std::vector<Almacen::FichaGuardada> nuevas;
    std::vector<const Almacen::FichaGuardada*> viejas;
    for (const auto& pieza : piezas_) {
        const auto* ficha = fichaDe(pieza);
        if (!pieza.seLee) continue;
        if (ficha != nullptr && ficha->estacion == pieza.estacion && ficha->ficha.huella == pieza.huella)
            continue;
        auto& nueva = nuevas.emplace_back(Almacen::FichaGuardada{
            .estacion = pieza.estacion, .ficha = ficha != nullptr ? ficha->ficha : FichaImagen{}});
        // What else it says of itself is noted with its samples.
        nueva.ficha.huella = pieza.huella;
        if (ficha == nullptr) nueva.ficha.bytes = contenidos_.bytes(pieza.huella).size();
        if (ficha != nullptr) viejas.push_back(ficha);
    }
    for (const auto& pieza : repetidas_) {
        if (const auto* ficha = fichaDe(pieza)) viejas.push_back(ficha);
    }
    for (const auto* vieja : viejas) almacen_.quitarFicha(vieja->estacion, vieja->ficha.huella);
    for (const auto& nueva : nuevas) almacen_.agregarFicha(nueva.estacion, nueva.ficha);
}

// No two of them may bear one name or one number, not even for a moment.
Rescate::Lineas Rescate::guardarEstaciones() {
    std::set<IdEstacion> enSuSitio;
    for (const auto& [id, grupo] : grupos_) {
        if (!grupo.nombre.empty() && grupo.fila && grupo.fila->id == id) enSuSitio.insert(id);
    }
    for (const auto& fila : filas_) {
        if (!enSuSitio.contains(fila.id)) almacen_.quitarEstacion(fila.id);
    }
    for (const auto id : enSuSitio) {
        auto provisional = *grupos_.at(id).fila;
        if (provisional.nombre == grupos_.at(id).nombre) continue;
        provisional.nombre = fmt::format("?{}", id);
        almacen_.corregirEstacion(provisional);
    }
    Lineas avisos;
    for (const auto& [id, aviso] : fundidas_) avisos.push_back(aviso);
    for (auto& [id, grupo] : grupos_) {
        if (grupo.nombre.empty()) continue;
        const EstacionGuardada estacion{.id = id,
                                        .nombre = grupo.nombre,
                                        .serie = grupo.serie,
                                        .evaporacion = esDeVariante(grupo.serie),
                                        .resumen = grupo.fila ? grupo.fila->resumen : ResumenEstacion{}};
        if (enSuSitio.contains(id)) {
            almacen_.corregirEstacion(estacion);
        } else {
            almacen_.agregarEstacion(estacion);
            almacen_.guardarResumen(id, estacion.resumen);
        }
        if (!grupo.fila || !seConserva(grupo.fila->nombre, grupo.nombre))
            avisos.push_back(avisoDeNombre(grupo));
        grupo.fila = estacion;
    }
    return avisos;
}

// Also where it is likely: of two stations of one number it may be the other's.
std::string Rescate::avisoDeNombre(const Grupo& grupo) const {
    const auto otro = grupo.serie == kSerieDesconocida ? std::string("SERIE") : grupo.serie + "/NOMBRE";
    return fmt::format(
        "estación {0}: su nombre se había perdido, y este es nuevo; si era otro, póngaselo con UPDATE "
        "{1}estaciones SET nombre='{2}' WHERE nombre='{0}', y haga rehacer",
        grupo.nombre, almacen_.prefijo(), otro);
}

bool Rescate::esSuContenido(const Pieza& pieza) const {
    return pieza.contenido && contenidos_.todos()[*pieza.contenido].es == pieza.huella;
}
const Almacen::Eslabon* Rescate::guardadoDe(const Pieza& pieza) const {
    return pieza.contenido ? &contenidos_.todos()[*pieza.contenido].guardado : nullptr;
}
const Almacen::FichaGuardada* Rescate::fichaDe(const Pieza& pieza) const {
    return pieza.ficha ? &fichas_[*pieza.ficha] : nullptr;
}

}  // namespace telvane
