// What is stored as images' bytes, and which images it is. Somebody may have changed the tables by hand; what
// an image holds proves by its SHA-256 which one it is, whatever stands beside it.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "historico/almacen.h"
#include "historico/compresion.h"
#include "historico/imagenes.h"

namespace telvane {

struct Contenido {
    Almacen::Eslabon guardado;  // as it is kept
    // Which image it is; nullopt: it cannot be read.
    std::optional<Huella> es = {};
    std::optional<Huella> sobre = {};  // the image upon which it is packed
    std::string motivo = {};           // why it cannot be read
    // Of the image's header.
    std::optional<std::string> serie = {};
    // Read as it is kept.
    bool sano = false;
};

class Contenidos {
   public:
    // Reads all of them. esperadas: images that something names; what is found under a wrong name is believed
    // where it is one of these. alAvanzar: before each.
    Contenidos(Almacen& almacen, std::set<Huella> esperadas, const std::function<void()>& alAvanzar);

    // Each after the one that it is packed upon; last those that cannot be read.
    const std::vector<Contenido>& todos() const { return todos_; }
    bool seLee(const Huella& huella) const { return donde_.contains(huella); }
    // Of an image that can be read. The bytes are valid until the next call.
    const Contenido& de(const Huella& huella) const { return todos_[donde_.at(huella)]; }
    const std::vector<std::uint8_t>& bytes(const Huella& huella);

   private:
    using Bytes = std::vector<std::uint8_t>;
    // Upon which images one is tried.
    enum class Contra { laDicha, lasDeOtros, lasHalladas, todas };
    using Bases = std::vector<std::optional<Huella>>;
    Bases laDicha(const Contenido& uno) const;
    Bases lasHalladas() const;
    Bases basesPara(Contra contra, const Contenido& uno, const std::vector<Contenido>& pendientes) const;
    Bases lasDichas(const std::vector<Contenido>& pendientes) const;
    std::vector<Contenido> leerSanos(const std::function<void()>& alAvanzar);
    bool identificarAlguno(std::vector<Contenido>& pendientes, Contra contra,
                           const std::function<void()>& alAvanzar);
    bool probar(Contenido& contenido, const Bytes& datos, const std::optional<Huella>& base);
    void apuntar(Contenido contenido);
    Imagenes& imagenesDe(IdEstacion estacion);

    Almacen& almacen_;
    std::set<Huella> esperadas_;
    std::vector<Contenido> todos_;
    std::map<Huella, std::size_t> donde_;
    std::unique_ptr<Imagenes> imagenes_;
    IdEstacion deQuien_ = 0;
    // Of those that are not read as they are kept, the last ones.
    std::list<std::pair<Huella, Bytes>> abiertos_;
    Bytes probada_;
    Descompresor descompresor_;
};

}  // namespace telvane
