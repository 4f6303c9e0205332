#include "historico/votacion.h"

#include <map>
#include <numeric>
#include <set>

namespace telvane {

namespace {

// The groups that shared slots make, each named by one of its members.
class Grupos {
   public:
    explicit Grupos(std::size_t cuantos) : padre_(cuantos) { std::iota(padre_.begin(), padre_.end(), 0U); }
    std::size_t de(std::size_t i) const {
        while (padre_[i] != i) i = padre_[i];
        return i;
    }
    void unir(std::size_t a, std::size_t b) { padre_[de(a)] = de(b); }

   private:
    std::vector<std::size_t> padre_;
};

}  // namespace

std::vector<Veredicto> votar(const std::vector<Testigo>& testigos) {
    // In the order of the bytes: the smaller one comes first and wins among equals.
    std::map<BytesMuestra, std::set<Huella>> votos;
    std::map<std::size_t, std::set<BytesMuestra>> porRanura;
    for (const auto& t : testigos) {
        auto& suyos = votos[t.registro];
        if (t.vota) suyos.insert(t.imagen);
        porRanura[t.ranura].insert(t.registro);
    }
    std::map<BytesMuestra, std::size_t> numero;
    for (const auto& [registro, quienes] : votos) numero.emplace(registro, numero.size());

    Grupos grupos(numero.size());
    for (const auto& [ranura, registros] : porRanura) {
        for (const auto& registro : registros) {
            grupos.unir(numero.at(registro), numero.at(*registros.begin()));
        }
    }
    std::map<std::size_t, const BytesMuestra*> elegido;
    for (const auto& [registro, quienes] : votos) {
        const auto [lugar, nuevo] = elegido.try_emplace(grupos.de(numero.at(registro)), &registro);
        if (!nuevo && quienes.size() > votos.at(*lugar->second).size()) lugar->second = &registro;
    }
    std::vector<Veredicto> veredictos;
    veredictos.reserve(votos.size());
    for (const auto& [registro, quienes] : votos) {
        veredictos.push_back({registro, elegido.at(grupos.de(numero.at(registro))) == &registro});
    }
    return veredictos;
}

}  // namespace telvane
