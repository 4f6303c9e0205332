#include "historico/contenidos.h"

#include <algorithm>

namespace telvane {

namespace {

using Eslabones = std::vector<Almacen::Eslabon>;

// So each is unpacked once, upon the one that was unpacked just before. What leads to no end stands last.
Eslabones enOrdenDeCadena(Eslabones todos) {
    std::multimap<std::pair<IdEstacion, Huella>, std::size_t> encima;
    std::vector<std::size_t> siguientes;
    for (std::size_t i = todos.size(); i-- > 0;) {
        if (todos[i].base) {
            encima.emplace(std::pair(todos[i].estacion, *todos[i].base), i);
        } else {
            siguientes.push_back(i);
        }
    }
    Eslabones ordenados;
    std::vector<bool> puestos(todos.size());
    const auto poner = [&](std::size_t cual) {
        puestos[cual] = true;
        ordenados.push_back(todos[cual]);
    };
    while (!siguientes.empty()) {
        const auto cual = siguientes.back();
        siguientes.pop_back();
        if (puestos[cual]) continue;
        poner(cual);
        const auto [desde, hasta] = encima.equal_range({todos[cual].estacion, todos[cual].huella});
        for (auto otro = desde; otro != hasta; ++otro) siguientes.push_back(otro->second);
    }
    for (std::size_t i = 0; i < todos.size(); ++i) {
        if (!puestos[i]) poner(i);
    }
    return ordenados;
}

// Whether it may be its own fault that it cannot be read: whoever is packed upon another one of those waits
// for that one, unless that leads to no end.
bool noEspera(const std::vector<Contenido>& pendientes, const Contenido& uno) {
    const auto base = [&](const Almacen::Eslabon& de) -> const Almacen::Eslabon* {
        if (!de.base) return nullptr;
        const auto suya = std::ranges::find_if(pendientes, [&](const Contenido& otro) {
            return otro.guardado.estacion == de.estacion && otro.guardado.huella == *de.base;
        });
        return suya == pendientes.end() ? nullptr : &suya->guardado;
    };
    const auto* abajo = base(uno.guardado);
    if (abajo == nullptr) return true;
    for (std::size_t pasos = 0; abajo != nullptr && pasos < pendientes.size(); ++pasos) abajo = base(*abajo);
    return abajo != nullptr;
}

}  // namespace

Contenidos::Contenidos(Almacen& almacen, std::set<Huella> esperadas, const std::function<void()>& alAvanzar)
    : almacen_(almacen), esperadas_(std::move(esperadas)) {
    auto pendientes = leerSanos(alAvanzar);
    while (identificarAlguno(pendientes, Contra::laDicha, alAvanzar) ||
           identificarAlguno(pendientes, Contra::lasDeOtros, alAvanzar) ||
           identificarAlguno(pendientes, Contra::lasHalladas, alAvanzar) ||
           identificarAlguno(pendientes, Contra::todas, alAvanzar)) {
    }
    for (auto& contenido : pendientes) todos_.push_back(std::move(contenido));
}

std::vector<Contenido> Contenidos::leerSanos(const std::function<void()>& alAvanzar) {
    auto eslabones = almacen_.eslabones();
    for (const auto& eslabon : eslabones) {
        if (eslabon.base) esperadas_.insert(*eslabon.base);
        esperadas_.insert(eslabon.huella);
    }
    std::vector<Contenido> pendientes;
    for (const auto& eslabon : enOrdenDeCadena(std::move(eslabones))) {
        alAvanzar();
        Contenido contenido{.guardado = eslabon};
        try {
            const auto& guardado = contenido.guardado;
            contenido.serie = serieDe(imagenesDe(guardado.estacion).bytes(guardado.huella));
            contenido.es = guardado.huella;
            contenido.sobre = guardado.base;
            contenido.sano = true;
            apuntar(std::move(contenido));
        } catch (const ImagenDanada& error) {
            contenido.motivo = error.motivo();
            pendientes.push_back(std::move(contenido));
        }
    }
    return pendientes;
}

bool Contenidos::identificarAlguno(std::vector<Contenido>& pendientes, Contra contra,
                                   const std::function<void()>& alAvanzar) {
    std::vector<bool> resueltos(pendientes.size());
    for (std::size_t i = 0; i < pendientes.size(); ++i) {
        auto& uno = pendientes[i];
        if (contra == Contra::todas && !noEspera(pendientes, uno)) continue;
        alAvanzar();
        const auto bases = basesPara(contra, uno, pendientes);
        const auto datos = almacen_.datosDe(uno.guardado);
        resueltos[i] = std::ranges::any_of(bases, [&](const std::optional<Huella>& base) {
            alAvanzar();
            return probar(uno, datos, base);
        });
        if (resueltos[i]) apuntar(uno);
    }
    std::size_t i = 0;
    return std::erase_if(pendientes, [&](const Contenido&) { return resueltos[i++]; }) > 0;
}

// Alone, or upon what is said.
Contenidos::Bases Contenidos::laDicha(const Contenido& uno) const {
    Bases bases = {std::nullopt};
    if (uno.guardado.base && seLee(*uno.guardado.base)) bases.push_back(uno.guardado.base);
    return bases;
}

// What one says may be another's: those of which they say that they are packed upon them.
Contenidos::Bases Contenidos::lasDichas(const std::vector<Contenido>& pendientes) const {
    Bases bases;
    for (const auto& otro : pendientes) {
        if (otro.guardado.base && seLee(*otro.guardado.base)) bases.push_back(otro.guardado.base);
    }
    std::ranges::sort(bases);
    bases.erase(std::unique(bases.begin(), bases.end()), bases.end());
    return bases;
}

// Under a wrong name.
Contenidos::Bases Contenidos::lasHalladas() const {
    Bases bases;
    for (const auto& otro : todos_) {
        if (!otro.sano) bases.push_back(otro.es);
    }
    return bases;
}

// Of a base by a wrong name nothing tells but trying all that may be meant: those of others with which it was
// mixed up, those that were found under a wrong name themselves, and those of its station.
Contenidos::Bases Contenidos::basesPara(Contra contra, const Contenido& uno,
                                        const std::vector<Contenido>& pendientes) const {
    if (contra == Contra::laDicha) return laDicha(uno);
    if (contra == Contra::lasHalladas) return lasHalladas();
    auto bases = lasDichas(pendientes);
    if (contra == Contra::lasDeOtros) return bases;
    for (const auto& otro : todos_) {
        if (otro.guardado.estacion == uno.guardado.estacion) bases.push_back(otro.es);
    }
    return bases;
}

bool Contenidos::probar(Contenido& contenido, const Bytes& datos, const std::optional<Huella>& base) {
    try {
        descompresor_.abrir(datos, base ? BytesImagen(bytes(*base)) : BytesImagen(), probada_);
        const auto huella = huellaDe(probada_);
        if (!esperadas_.contains(huella)) return false;
        contenido.es = huella;
        contenido.sobre = base;
        contenido.serie = serieDe(probada_);
        return true;
    } catch (const ErrorCompresion&) {
        return false;
    }
}

// Of two that hold the same the first is read.
void Contenidos::apuntar(Contenido contenido) {
    donde_.emplace(*contenido.es, todos_.size());
    todos_.push_back(std::move(contenido));
}

const Contenidos::Bytes& Contenidos::bytes(const Huella& huella) {
    const auto& contenido = todos_[donde_.at(huella)];
    if (contenido.sano) return imagenesDe(contenido.guardado.estacion).bytes(huella);
    const auto abierto = std::ranges::find(abiertos_, huella, &std::pair<Huella, Bytes>::first);
    if (abierto != abiertos_.end()) return abierto->second;
    const auto base = contenido.sobre ? bytes(*contenido.sobre) : Bytes();
    constexpr std::size_t kAbiertos = 4;
    abiertos_.emplace_front(huella, Bytes());
    descompresor_.abrir(almacen_.datosDe(contenido.guardado), base, abiertos_.front().second);
    if (abiertos_.size() > kAbiertos) abiertos_.pop_back();
    return abiertos_.front().second;
}

Imagenes& Contenidos::imagenesDe(IdEstacion estacion) {
    if (!imagenes_ || deQuien_ != estacion) imagenes_ = std::make_unique<Imagenes>(almacen_, estacion);
    deQuien_ = estacion;
    return *imagenes_;
}

}  // namespace telvane
