// What the fault grids have in common: the faults, each as telvane-sim takes it, and how much of the grid a
// run tries.
#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/apoyo/puerto_en_red.h"
#include "tests/apoyo/saneado.h"

namespace telvane {

// What a fault does to the exchange: faults of one kind have one effect at one place.
enum ClaseDeDano : unsigned {
    kCalla = 1u << 0,        // nothing more comes
    kPierde = 1u << 1,       // one byte does not come, the rest does
    kTarda = 1u << 2,        // within every limit
    kTardaDeMas = 1u << 3,   // beyond every limit for a first answer
    kCambia = 1u << 4,       // another value
    kSobra = 1u << 5,        // bytes that do not belong there
    kAvisa = 1u << 6,        // the line tells of an error; the byte is right
    kNoEscribe = 1u << 7,    // what the program answers does not leave
    kDesaparece = 1u << 8,   // the device is gone
    kCortaLectura = 1u << 9  // reading fails: what follows is not for this opening
};
inline constexpr unsigned kCualquiera = ~0u;
inline constexpr unsigned kMudo = kCalla | kDesaparece | kCortaLectura;

struct FalloDeRejilla {
    std::string_view texto;  // behind "OPERATION:byte=N:"
    ClaseDeDano clase;
    std::size_t sobran;  // bytes too many
};

inline constexpr std::array<FalloDeRejilla, 13> kFallosDeRejilla = {{
    {"silencio", kCalla, 0},
    {"demora=600", kTarda, 0},
    {"demora=3500", kTardaDeMas, 0},
    {"invertir", kCambia, 0},
    {"insertar=1", kSobra, 1},
    {"insertar=40", kSobra, 40},
    {"perder", kPierde, 0},
    {"doblar", kSobra, 1},
    {"suceso=1004", kAvisa, 0},
    {"colgar", kDesaparece, 0},
    {"error-lectura", kCortaLectura, 0},
    {"error-escritura", kNoEscribe, 0},
    {"escritura-corta", kNoEscribe, 0},
}};

// Where the grid's port stands, from the environment: TELVANE_REJILLA_PUERTO=red or red-partida; nullptr: in
// the PC, which is where it stands otherwise.
inline std::unique_ptr<PuertoEnRed> redDeRejilla(BuclePrueba& bucle, PuertosSimulados& puertos, int numero) {
    const char* cual = std::getenv("TELVANE_REJILLA_PUERTO");
    if (cual == nullptr) return nullptr;
    const bool parte = std::string_view(cual) == "red-partida";
    return std::make_unique<PuertoEnRed>(bucle, puertos, numero,
                                         parte ? PuertoEnRed::Trato::parte : PuertoEnRed::Trato::junta);
}

// What happens in the PC's own driver happens at no server.
inline std::vector<FalloDeRejilla> fallosDeRejilla(bool enRed) {
    std::vector<FalloDeRejilla> fallos;
    for (const auto& fallo : kFallosDeRejilla) {
        if (!enRed || (fallo.clase & (kAvisa | kNoEscribe)) == 0) fallos.push_back(fallo);
    }
    return fallos;
}

// Whether nothing but the count of bytes left over was printed, or nothing where there are none. In pieces
// only those count that have come by then.
inline bool cuentaSobrantes(const std::vector<std::string>& impresas, std::size_t sobran, bool enPedazos) {
    if (sobran == 0) return impresas.empty();
    constexpr std::string_view kRotulo = "InBufferCount=";
    if (impresas.size() != 1 || !impresas.front().starts_with(kRotulo)) return false;
    const auto cuenta = std::stoul(impresas.front().substr(kRotulo.size()));
    return cuenta == sobran || (enPedazos && cuenta >= 1 && cuenta < sobran);
}

// Every so manieth place is tried: a sanitized program takes ten times as long. The environment may ask for
// all of them, for the part, or for every Nth (TELVANE_REJILLA=entera, muestra, N), from the first or another
// one on (TELVANE_REJILLA_DESDE): N programs that begin one place apart try all of them.
inline std::size_t pasoDeRejilla(std::size_t deMuestra, std::size_t deSiempre = 1) {
    const char* cuanto = std::getenv("TELVANE_REJILLA");
    const std::string pedido = cuanto != nullptr ? cuanto : "";
    if (pedido == "entera") return 1;
    if (!pedido.empty() && pedido != "muestra") return std::stoul(pedido);
    return pedido == "muestra" || saneado() ? deMuestra : deSiempre;
}
inline std::size_t comienzoDeRejilla() {
    const char* desde = std::getenv("TELVANE_REJILLA_DESDE");
    return desde != nullptr ? std::stoul(desde) : 0;
}

// Counts the runs of a test and tells how many they were.
class CuentaDeCorridas {
   public:
    CuentaDeCorridas() = default;
    CuentaDeCorridas(const CuentaDeCorridas&) = delete;
    CuentaDeCorridas& operator=(const CuentaDeCorridas&) = delete;
    ~CuentaDeCorridas() {
        const auto* prueba = ::testing::UnitTest::GetInstance()->current_test_info();
        std::fputs(fmt::format("rejilla {}: {} corridas\n", prueba->name(), cuantas_).c_str(), stdout);
        ::testing::Test::RecordProperty("corridas", std::to_string(cuantas_));
    }
    void otra() { ++cuantas_; }

   private:
    std::size_t cuantas_ = 0;
};

}  // namespace telvane
