#include "historico/archivo.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <span>
#include <utility>

#include <fmt/format.h>

#include "data/archivo_base.h"
#include "data/clase_de_archivo.h"
#include "historico/asimilacion.h"
#include "historico/compresion.h"
#include "historico/esquema.h"
#include "historico/lectura.h"
#include "historico/nombre_estacion.h"
#include "historico/rescate.h"
#include "loggerconfig/datos_config.h"
#include "platform/contados.h"

namespace telvane {

namespace {

// An image further from one that stands alone is kept alone itself.
constexpr int kMasProfunda = 32;

std::string serieQueVale(BytesImagen bytes, const std::optional<std::string>& dicha) {
    const auto propia = serieDe(bytes);
    if (!propia && !dicha) {
        throw ErrorImagen("la imagen no lleva número de serie: indíquelo con --serie CIFRAS");
    }
    if (propia && dicha && *dicha != *propia) {
        throw ErrorImagen(
            fmt::format("la imagen es del registrador {}, no del {}: quite --serie", *propia, *dicha));
    }
    return propia ? *propia : *dicha;
}

EstacionGuardada buscarOCrear(Almacen& almacen, const std::string& nombre, const std::string& serie) {
    auto estacion = almacen.estacion(nombre);
    return estacion ? *estacion : almacen.crearEstacion(nombre, serie, esDeVariante(serie));
}

ImagenGuardada sola(BytesImagen bytes) {
    return {.base = {}, .profundidad = 0, .datos = comprimir(bytes)};
}

ImagenGuardada empaquetar(const EstacionGuardada& estacion, BytesImagen bytes, Imagenes& imagenes) {
    ImagenGuardada guardada;
    if (estacion.resumen.masNueva) {
        const auto* abierta = imagenes.siSeLee(*estacion.resumen.masNueva);
        const int profundidad = abierta ? imagenes.profundidad() : kMasProfunda;
        if (profundidad < kMasProfunda && seParecen(bytes, *abierta)) {
            guardada.base = estacion.resumen.masNueva;
            guardada.profundidad = profundidad + 1;
            guardada.datos = comprimir(bytes, *abierta);
            return guardada;
        }
    }
    return sola(bytes);
}

// What is there already, because only its note was lost, stays as it is: others may be packed upon it, and so
// may the one that it would be packed upon.
void guardar(Almacen& almacen, const EstacionGuardada& estacion, const ImagenNueva& imagen,
             Imagenes& imagenes) {
    const auto& huella = imagen.ficha.huella;
    const bool estaba = !almacen.cadena(estacion.id, huella, 1).empty();
    if (estaba && almacen.conserva(estacion.id, huella) && imagenes.siSeLee(huella)) return;
    almacen.guardarContenido(estacion.id, huella,
                             estaba ? sola(imagen.bytes) : empaquetar(estacion, imagen.bytes, imagenes));
}

void tomarNota(ResumenEstacion& resumen, const ImagenNueva& imagen,
               const std::optional<FichaImagen>& masNueva) {
    const auto& ficha = imagen.ficha;
    if (!masNueva || ficha.esMasNuevaQue(*masNueva)) {
        const auto cabecera = imagen.bytes.first(std::min(imagen.bytes.size(), registro_config::kCabecera));
        resumen.masNueva = ficha.huella;
        resumen.cabecera.assign(cabecera.begin(), cabecera.end());
    }
    ++resumen.imagenes;
    resumen.incorporada = std::max(resumen.incorporada, ficha.incorporada);
}

// As the images tell, whatever was kept beside them, and in the order of their clocks. All of them before the
// first is taken in: whether one is partial matters to the others.
std::vector<FichaImagen> fichasDeNuevo(Almacen& almacen, IdEstacion estacion, Imagenes& imagenes) {
    auto fichas = almacen.fichas(estacion);
    for (auto& ficha : fichas) {
        ficha =
            ImagenNueva(imagenes.bytes(ficha.huella), ficha.huella, ficha.incorporada, ficha.origen).ficha;
        almacen.corregirFicha(estacion, ficha);
    }
    std::ranges::sort(fichas, [](const auto& a, const auto& b) { return b.esMasNuevaQue(a); });
    return fichas;
}

// Whether it looks like the image of another logger that carries the same serial number.
bool contradice(Almacen& almacen, const EstacionGuardada& estacion, const ImagenNueva& imagen,
                Imagenes& imagenes) {
    if (!estacion.resumen.masNueva || imagen.ranuras.empty()) return false;
    const auto tratoCon = [&](const Huella& huella) {
        const auto* bytes = imagenes.siSeLee(huella);
        return bytes ? comparar(imagen.bytes, *bytes) : Trato::ajenas;
    };
    // Every night but the strangest ends here.
    if (tratoCon(*estacion.resumen.masNueva) == Trato::concuerdan) return false;
    bool discrepa = false;
    auto fichas = almacen.fichas(estacion.id);
    std::ranges::reverse(fichas);
    for (const auto& ficha : fichas) {
        // Stamps that cannot be equal tell nothing.
        const bool seCruzan =
            ficha.desde && *ficha.desde <= *imagen.ficha.hasta && *ficha.hasta >= *imagen.ficha.desde;
        if (!seCruzan) continue;
        const auto trato = tratoCon(ficha.huella);
        if (trato == Trato::concuerdan) return false;
        discrepa = discrepa || trato == Trato::discrepan;
    }
    return discrepa;
}

void exigirQueConcuerde(Almacen& almacen, const EstacionGuardada& estacion, const ImagenNueva& imagen,
                        Imagenes& imagenes) {
    if (!contradice(almacen, estacion, imagen, imagenes)) return;
    throw ErrorImagen(
        fmt::format("contradice lo que hay de la estación {}: parece de otro registrador con el mismo número "
                    "de serie; si lo "
                    "es, incorpórela con --como NOMBRE",
                    estacion.nombre));
}

// Keeps the image and what follows from it.
Incorporacion tomar(Almacen& almacen, EstacionGuardada& estacion, ImagenNueva& imagen, Imagenes& imagenes) {
    std::optional<FichaImagen> masNueva;
    if (estacion.resumen.masNueva) masNueva = almacen.ficha(estacion.id, *estacion.resumen.masNueva);
    almacen.agregarFicha(estacion.id, imagen.ficha);
    guardar(almacen, estacion, imagen, imagenes);
    const auto anteriores = [&] {
        auto fichas = almacen.fichas(estacion.id);
        std::erase_if(fichas, [&](const auto& f) { return f.huella == imagen.ficha.huella; });
        return fichas;
    };
    const auto asimilada =
        Asimilacion(almacen, estacion.id, estacion.resumen, imagenes, anteriores).asimilar(imagen);
    tomarNota(estacion.resumen, imagen, masNueva);
    almacen.guardarResumen(estacion.id, estacion.resumen);
    // A clock that is set back by hours, or a line that spoils a record, makes few.
    constexpr std::int64_t kPocas = 3;
    const auto laMitad = std::max(kPocas, imagen.ficha.muestras / 2 + 1);
    return {.estacion = {},
            .pareceAjena = asimilada.nuevas >= laMitad && asimilada.conflictos >= laMitad,
            .nuevas = asimilada.nuevas,
            .conflictos = asimilada.conflictos};
}

// Whether it was new.
bool anotar(Almacen& almacen, IdEstacion estacion, const Huella& imagen,
            const std::optional<FichaDescarga>& descarga) {
    if (!descarga) return false;
    const auto hay = almacen.descarga(estacion, imagen);
    if (hay && !descarga->ocupaElLugarDe(*hay)) return false;
    almacen.guardarDescarga(estacion, imagen, *descarga);
    return true;
}

// An image that is noted and whose bytes are lost; false: they are not.
bool reponerSiSePerdio(Almacen& almacen, IdEstacion estacion, const Huella& huella, BytesImagen bytes) {
    if (almacen.conserva(estacion, huella)) return false;
    almacen.guardarContenido(estacion, huella, sola(bytes));
    return true;
}

// The stations that have the image already, by name: a copy of two archives may have brought it into two. The
// serial number in its header is that of its station; only where it has none can it be anybody's, and where
// its bytes are lost: who lacks them may have got that number by hand, or when nothing told his own any more.
std::vector<EstacionGuardada> quienesLaTienen(Almacen& almacen, BytesImagen bytes, const Huella& huella) {
    const auto serie = serieDe(bytes);
    auto estaciones = almacen.estaciones();
    const auto tienen = almacen.estacionesCon(huella);
    std::erase_if(estaciones, [&](const EstacionGuardada& e) {
        const bool ajena = serie && *serie != e.serie && !e.nombre.starts_with(*serie);
        return !tienen.contains(e.id) || (ajena && almacen.conserva(e.id, huella));
    });
    return estaciones;
}

// Of them the one that is meant: without a name beside the number any station of that number will do, and
// where its bytes are lost whichever lacks them.
const EstacionGuardada& laDicha(Almacen& almacen, const std::vector<EstacionGuardada>& duenos,
                                const std::string& nombre, const std::string& serie, bool conNombre,
                                const Huella& huella) {
    auto dueno = std::ranges::find(duenos, nombre, &EstacionGuardada::nombre);
    if (dueno == duenos.end() && !conNombre)
        dueno = std::ranges::find(duenos, serie, &EstacionGuardada::serie);
    if (dueno == duenos.end())
        dueno = std::ranges::find_if(
            duenos, [&](const EstacionGuardada& e) { return !almacen.conserva(e.id, huella); });
    if (dueno == duenos.end())
        throw ErrorImagen(fmt::format("ya está en el archivo, en la estación {}", duenos.front().nombre));
    return *dueno;
}

std::vector<EstacionGuardada> estacionesDe(Lectura& lectura, const std::optional<std::string>& cual) {
    return cual ? std::vector{lectura.estacion(*cual)} : lectura.estaciones();
}

// What is told of an image that another archive does not take.
std::string noEntra(const ErrorAlmacen& error, const EstacionGuardada& origen, const Huella& imagen) {
    return fmt::format("estación {}: imagen {}: {}", origen.nombre, textoDe(imagen), error.what());
}

void completar(Incorporacion& resultado, const EstacionGuardada& estacion, BytesImagen bytes,
               const Huella& huella) {
    resultado.estacion = estacion.nombre;
    resultado.imagen = huella;
    resultado.parcial = esParcial(bytes);
    const auto cuenta = contarRanuras(bytes);
    resultado.vacios = cuenta.vacias;
    resultado.descartados = cuenta.descartadas;
}

}  // namespace

Incorporacion Archivo::incorporar(BytesImagen bytes, const Destino& destino, const Procedencia& procedencia) {
    if (bytes.size() > kBytesMemoria) {
        throw ErrorImagen(fmt::format(
            "mide más que una imagen de la memoria, {} bytes: no es un archivo base", kBytesMemoria));
    }
    if (bytes.empty()) throw ErrorImagen(std::string(kBaseVacia));
    if (const auto queja = quejaDeOtraClase(bytes); !queja.empty()) throw ErrorImagen(queja);
    const auto serie = serieQueVale(bytes, destino.serie);
    const auto nombre = destino.como ? fmt::format("{}/{}", serie, *destino.como) : serie;
    const auto huella = huellaDe(bytes);
    Transaccion transaccion(almacen_, Almacen::Modo::escritura);
    Incorporacion resultado;
    if (const auto duenos = quienesLaTienen(almacen_, bytes, huella); !duenos.empty()) {
        const auto& dueno = laDicha(almacen_, duenos, nombre, serie, destino.como.has_value(), huella);
        resultado.repetida = true;
        resultado.muestras = almacen_.ficha(dueno.id, huella)->muestras;
        resultado.conflictos = static_cast<std::int64_t>(almacen_.sellosDe(dueno.id, huella).size());
        completar(resultado, dueno, bytes, huella);
        const bool anotada = anotar(almacen_, dueno.id, huella, procedencia.descarga);
        for (const auto& una : duenos)
            resultado.repuesta |= reponerSiSePerdio(almacen_, una.id, huella, bytes);
        if (anotada || resultado.repuesta) transaccion.confirmar();
        return resultado;
    }
    auto estacion = buscarOCrear(almacen_, nombre, serie);
    ImagenNueva imagen(bytes, huella, procedencia.incorporada, procedencia.origen);
    Imagenes imagenes(almacen_, estacion.id);
    exigirQueConcuerde(almacen_, estacion, imagen, imagenes);
    resultado = tomar(almacen_, estacion, imagen, imagenes);
    resultado.muestras = imagen.ficha.muestras;
    completar(resultado, estacion, bytes, huella);
    anotar(almacen_, estacion.id, huella, procedencia.descarga);
    transaccion.confirmar();
    return resultado;
}

Archivo::Rehecho Archivo::rehacer(const std::function<void()>& alAvanzar) {
    almacen_.reponer();
    Rehecho hecho;
    std::optional<Rescate> rescate;
    std::vector<std::string> sobras;
    {
        // Nobody waits while all of it is looked at.
        const Transaccion lectura(almacen_, Almacen::Modo::lectura);
        rescate.emplace(almacen_, alAvanzar);
        sobras = almacen_.sobras();
    }
    {
        Transaccion escritura(almacen_, Almacen::Modo::escritura);
        if (rescate->hayQueReponer()) {
            rescate.emplace(almacen_, alAvanzar);
            hecho.avisos = rescate->reponer();
        }
        almacen_.limpiar();
        escritura.confirmar();
    }
    hecho.fallos = rescate->perdidas(kVuelvaAIncorporarla);
    std::ranges::move(sobras, std::back_inserter(hecho.fallos));
    for (const auto& estacion : Lectura(almacen_).estaciones()) {
        // What its samples came from may be lost; they themselves are not thrown after it.
        if (rescate->pierde(estacion.id)) continue;
        try {
            if (auto aviso = rehacerUna(estacion.nombre, alAvanzar); !aviso.empty())
                hecho.avisos.push_back(std::move(aviso));
        } catch (const ErrorImagen& error) {
            hecho.fallos.push_back(fmt::format("estación {}: {}", estacion.nombre, error.what()));
        }
    }
    return hecho;
}

std::string Archivo::rehacerUna(const std::string& nombre, const std::function<void()>& alAvanzar) {
    Transaccion transaccion(almacen_, Almacen::Modo::escritura);
    auto estacion = almacen_.estacion(nombre);
    if (!estacion) return {};
    const auto filas = [&] { return almacen_.contarFilas(estacion->id, kPrimerMomento, kUltimoMomento); };
    const auto tenia = estacion->resumen.imagenes;
    const auto antes = filas();
    almacen_.vaciarDerivado(estacion->id);
    estacion->resumen = {};
    Imagenes imagenes(almacen_, estacion->id);
    std::vector<FichaImagen> anteriores;
    for (const auto& ficha : fichasDeNuevo(almacen_, estacion->id, imagenes)) {
        alAvanzar();
        const auto bytes = imagenes.bytes(ficha.huella);
        const ImagenNueva imagen(bytes, ficha.huella, ficha.incorporada, ficha.origen);
        Asimilacion(almacen_, estacion->id, estacion->resumen, imagenes, [&] {
            return anteriores;
        }).asimilar(imagen);
        // They come in order: the one before is the newest so far.
        const auto masNueva = anteriores.empty() ? std::nullopt : std::optional(anteriores.back());
        tomarNota(estacion->resumen, imagen, masNueva);
        anteriores.push_back(imagen.ficha);
    }
    // Also where what stands there reads the same.
    almacen_.corregirEstacion(*estacion);
    almacen_.guardarResumen(estacion->id, estacion->resumen);
    // An image may have come again while it was still counted.
    const bool faltan = estacion->resumen.imagenes < tenia && filas() < antes;
    transaccion.confirmar();
    if (!faltan) return {};
    return fmt::format(
        "estación {}: decía tener {} y quedan {}: si falta alguna, incorpore su .rgt, que trae de "
        "vuelta sus muestras",
        nombre, contados(tenia, "imagen", "imágenes"), estacion->resumen.imagenes);
}

std::vector<std::string> Archivo::loQueSePerdio(const std::optional<std::string>& cual) {
    Lectura lectura(almacen_);
    std::vector<std::string> lineas;
    if (!cual) lineas = almacen_.sinEstacion(kTablasDeImagenes);
    for (const auto& estacion : estacionesDe(lectura, cual)) {
        if (const auto sueltos = almacen_.contenidosPerdidos(estacion.id); sueltos > 0) {
            lineas.push_back(fmt::format("estación {}: contenidos de una imagen que no está: {}: {}",
                                         estacion.nombre, sueltos, kReponer));
        }
        const auto hay = std::ssize(lectura.imagenes(estacion));
        if (hay < estacion.resumen.imagenes) {
            lineas.push_back(fmt::format("estación {}: tenía {} y quedan {}: vea comprobar", estacion.nombre,
                                         contados(estacion.resumen.imagenes, "imagen", "imágenes"), hay));
        }
    }
    return lineas;
}

Archivo::Copia Archivo::copiarDe(Archivo& otro, const std::optional<std::string>& cual,
                                 const std::function<void()>& alAvanzar) {
    Lectura lectura(otro.almacen_);
    Copia copia;
    for (const auto& origen : estacionesDe(lectura, cual)) {
        Imagenes suyas(otro.almacen_, origen.id);
        for (const auto& ficha : lectura.imagenes(origen)) {
            alAvanzar();
            if (tiene(origen.nombre, ficha.huella)) continue;
            try {
                if (copiarUna(origen, ficha, suyas.bytes(ficha.huella)))
                    copia.contradichas.insert(origen.nombre);
                ++copia.copiadas;
            } catch (const ErrorImagen& error) {
                copia.fallos.push_back(fmt::format("estación {}: {}", origen.nombre, error.what()));
            } catch (const ErrorAlmacen& error) {
                if (!error.esDelDato()) throw;
                copia.fallos.push_back(noEntra(error, origen, ficha.huella));
            }
        }
        copiarDescargas(otro, origen, copia);
    }
    return copia;
}

// Also of images that were there before.
void Archivo::copiarDescargas(Archivo& otro, const EstacionGuardada& origen, Copia& copia) {
    auto faltan = otro.almacen_.descargas(origen.id);
    if (faltan.empty()) return;
    std::optional<EstacionGuardada> estacion;
    {
        const Transaccion transaccion(almacen_, Almacen::Modo::lectura);
        estacion = almacen_.estacion(origen.nombre);
        if (!estacion) return;
        const auto lista = almacen_.descargas(estacion->id);
        const std::map<Huella, FichaDescarga> hay(lista.begin(), lista.end());
        std::erase_if(faltan, [&](const auto& una) {
            const auto suya = hay.find(una.first);
            return suya != hay.end() ? !una.second.ocupaElLugarDe(suya->second)
                                     : !almacen_.ficha(estacion->id, una.first);
        });
    }
    const auto anotarlas = [&](std::span<const std::pair<Huella, FichaDescarga>> cuales) {
        Transaccion transaccion(almacen_, Almacen::Modo::escritura);
        for (const auto& [imagen, descarga] : cuales) anotar(almacen_, estacion->id, imagen, descarga);
        transaccion.confirmar();
    };
    if (faltan.empty()) return;
    try {
        anotarlas(faltan);
        return;
    } catch (const ErrorAlmacen& error) {
        if (!error.esDelDato()) throw;
    }
    // One of them does not go in.
    for (const auto& una : faltan) {
        try {
            anotarlas({&una, 1});
        } catch (const ErrorAlmacen& error) {
            if (!error.esDelDato()) throw;
            copia.fallos.push_back(noEntra(error, origen, una.first));
        }
    }
}

bool Archivo::tiene(const std::string& nombre, const Huella& huella) {
    const Transaccion transaccion(almacen_, Almacen::Modo::lectura);
    const auto estacion = almacen_.estacion(nombre);
    return estacion && almacen_.ficha(estacion->id, huella) && almacen_.conserva(estacion->id, huella);
}

// An archive's word is taken for whose image it is.
bool Archivo::copiarUna(const EstacionGuardada& origen, const FichaImagen& ficha, BytesImagen bytes) {
    Transaccion transaccion(almacen_, Almacen::Modo::escritura);
    auto estacion = buscarOCrear(almacen_, origen.nombre, origen.serie);
    if (almacen_.ficha(estacion.id, ficha.huella)) {
        if (reponerSiSePerdio(almacen_, estacion.id, ficha.huella, bytes)) transaccion.confirmar();
        return false;
    }
    ImagenNueva imagen(bytes, ficha.huella, ficha.incorporada, ficha.origen);
    Imagenes imagenes(almacen_, estacion.id);
    const bool contradicha = contradice(almacen_, estacion, imagen, imagenes);
    const bool ajena = tomar(almacen_, estacion, imagen, imagenes).pareceAjena;
    transaccion.confirmar();
    return contradicha || ajena;
}

ErrorImagen sinEstacion(const std::string& nombre) {
    return ErrorImagen(fmt::format("no hay ninguna estación {} en el archivo: vea estado", nombre));
}

}  // namespace telvane
