// Puts images back where they belong, after somebody has changed the tables by hand: what an image holds
// proves which one it is and of which logger it came, and what the tables say beside it is believed where
// nothing speaks against it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "historico/almacen.h"
#include "historico/contenidos.h"
#include "historico/piezas.h"

namespace telvane {

class Rescate {
   public:
    using Lineas = std::vector<std::string>;
    using PorEstacion = std::map<std::string, Lineas>;

    // Looks at all that is there and changes nothing. alAvanzar: before each image.
    Rescate(Almacen& almacen, const std::function<void()>& alAvanzar);

    // What stands wrong and reponer puts right, a line each, by the station's name.
    const PorEstacion& porReponer() const { return porReponer_; }
    bool hayQueReponer() const { return hayQueReponer_; }
    // What only a base file brings back, a line each. remedio: what to do about a lost image.
    Lineas perdidas(std::string_view remedio) const;
    // Whether what follows from the station's images cannot be told, as they are.
    bool afecta(IdEstacion estacion) const { return afectadas_.contains(estacion); }
    // Whether it will not be told either once reponer has done what it can.
    bool pierde(IdEstacion estacion) const;

    // In a transaction that writes. Tells of the stations that have got another name because theirs is lost,
    // and of those that got the images of one that is.
    Lineas reponer();

   private:
    struct Grupo {
        // As it is kept, maybe under the number of another one.
        std::optional<EstacionGuardada> fila = {};
        std::vector<std::size_t> piezas = {};
        std::string serie = {};
        // The name that it is to have; empty: it is to go.
        std::string nombre = {};
        bool soloMuestras = false;
    };
    // How an image's content is to be kept.
    struct Sitio {
        std::optional<Huella> base = {};
        std::int64_t profundidad = 0;
        bool sirve = false;  // as it is packed
    };

    std::set<Huella> deOtros() const;
    std::set<Huella> nombradas() const;
    void situar();
    std::map<IdEstacion, std::int64_t> imagenesDeMas() const;
    bool estaEnLaDeSuSerie(const Pieza& pieza) const;
    void devolverMudadas();
    void reunirCopias();
    IdEstacion laDeSusMuestras(const std::vector<IdEstacion>& cuales, const Huella& huella);
    void agrupar();
    IdEstacion dondeEsta(const EstacionGuardada& fila);
    std::string serieDe(const Grupo& grupo) const;
    std::pair<Incorporada, Incorporada> cuandoLlegaron(const Grupo& grupo) const;
    bool esLaSiguiente(const Grupo& huerfana, const Grupo& suya) const;
    void fundirHuerfanas();
    bool concuerdan(const Grupo& uno, const Grupo& otro);
    void devolverAjenas();
    IdEstacion estacionDe(const std::string& serie, const Huella& huella);
    bool esSuMasNueva(IdEstacion estacion, const Huella& huella) const;
    bool repiteLoDeOtra(const Pieza& pieza) const;
    bool esCopia(const Pieza& pieza, const std::map<IdEstacion, std::int64_t>& deMas);
    void apartarRepetidas();
    void nombrar();
    static std::string nombreNuevo(const Grupo& grupo, std::set<std::string>& sueltos,
                                   const std::set<std::string>& usados);
    std::vector<Sitio> sitios() const;

    void describir();
    std::string queTiene(const Pieza& pieza, const Sitio& sitio) const;
    std::string queTiene(IdEstacion id, const Grupo& grupo) const;
    std::string nombreDe(IdEstacion id) const;

    void guardarContenidos();
    void guardarFichas();
    Lineas guardarEstaciones();
    std::string avisoDeNombre(const Grupo& grupo) const;

    bool esSuContenido(const Pieza& pieza) const;
    const Almacen::Eslabon* guardadoDe(const Pieza& pieza) const;
    const Almacen::FichaGuardada* fichaDe(const Pieza& pieza) const;

    Almacen& almacen_;
    std::function<void()> alAvanzar_;
    std::vector<EstacionGuardada> filas_;
    std::vector<Almacen::FichaGuardada> fichas_;
    std::set<Huella> deOtros_;
    Contenidos contenidos_;
    std::vector<Pieza> piezas_;
    std::vector<Pieza> repetidas_;
    std::map<IdEstacion, Grupo> grupos_;
    // Whose images are all with another one's.
    std::map<IdEstacion, std::string> fundidas_;  // what is told of it
    PorEstacion porReponer_;
    std::set<IdEstacion> afectadas_;
    bool hayQueReponer_ = false;
};

}  // namespace telvane
