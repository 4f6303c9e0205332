// Every fault at every byte of the first two blocks of a download, one of its middle and its last.
#include <algorithm>
#include <optional>

#include "app/temporizador.h"
#include "data/descarga.h"
#include "link/busqueda_puerto.h"
#include "platform/vigilia.h"
#include "simulator/fallo.h"
#include "simulator/puertos_simulados.h"
#include "tests/apoyo/bucle_prueba.h"
#include "tests/apoyo/dialogos_prueba.h"
#include "tests/app/rejilla_fallos.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view kExito = "La descarga de datos se realizó con exito";
constexpr std::string_view kSobran = "Error en comunicacion AQQUI";
constexpr std::size_t kUltimoBloqueDeMemoria = kBloquesMemoria - 1;

// What the operator finds after a fault in a block.
enum class FinDeBloque { sigue, sigueHastaElFinal, detenido, sinAcuse, sobrado };

struct Regla {
    bool elUltimo;  // rule of the last block only
    unsigned clases;
    FinDeBloque fin;
};

// First match decides; a block is the same at each of its bytes.
constexpr Regla kReglas[] = {
    // The last acknowledge is missed by nobody.
    {true, kNoEscribe | kTarda | kTardaDeMas | kCambia | kAvisa, FinDeBloque::sigueHastaElFinal},
    {false, kMudo | kPierde, FinDeBloque::detenido},
    {false, kNoEscribe, FinDeBloque::sinAcuse},
    {false, kSobra, FinDeBloque::sobrado},
    {false, kCualquiera, FinDeBloque::sigue},
};

FinDeBloque finDe(std::size_t bloque, ClaseDeDano clase) {
    const bool ultimo = bloque == kUltimoBloqueDeMemoria;
    return std::find_if(std::begin(kReglas), std::end(kReglas),
                        [&](const Regla& r) { return (ultimo || !r.elUltimo) && (r.clases & clase) != 0; })
        ->fin;
}

// The download with everything around it but the other operations, so that it can begin in the middle.
class RejillaBloques : public ::testing::Test {
   protected:
    RejillaBloques() {
        bucle.alTerminarSuceso([this] { esperas.revisar(); });
        puertos.conectar(1, MaquinaRegistrador(memoriaSimulada(Clima())));
        for (auto* canal : {&canales.MSComm1, &canales.MSComm4}) prepararCanal(*canal, 1);
        canales.MSComm4.alComunicar = [this] { descarga.alComunicar(); };
        forma.Timer4.enabled = false;
        datos.ultimoBloque = kUltimoBloque;
        estado.numPuerto = 1;
        dialogos.responderSiempre(Boton::aceptar);
        observacion =
            forma.observar({.alCambiar = {}, .alCambiarForma = {}, .alImprimir = [this](const auto& l) {
                                impresas.push_back(l);
                            }});
    }
    ~RejillaBloques() override { bucle.alTerminarSuceso({}); }

    std::span<const std::uint8_t> enElRegistrador(std::size_t bloque) {
        return std::span(puertos.maquina(1).imagen()).subspan(bloque * kBytesBloque, kBytesBloque);
    }
    // Through the handshake, then at once to this block, on both sides.
    void empezarEn(std::size_t bloque) {
        puertos.maquina(1).empezarDescargasEn(bloque);
        dialogos.olvidar();
        impresas.clear();
        guardadas = 0;
        exportadas = 0;
        progress.ProgressBar1.value = kBarraAntes;
        tareas.lanzar(descarga.alPulsar());
        ASSERT_TRUE(bucle.correrHasta([&] { return estado.contador == 2; }, 1min));
        estado.contador += static_cast<std::int32_t>(bloque);
        datos.bloqueActual = static_cast<std::int32_t>(bloque);
        auto destino = datos.memoria.bloque(bloque);
        std::fill(destino.begin(), destino.end(), std::uint8_t{0x5A});
    }
    // Far enough for every delay, and for what follows the block.
    void seguir(std::size_t bloque) {
        const auto hasta = static_cast<std::int32_t>(std::min(bloque + 3, kBloquesMemoria));
        static_cast<void>(bucle.correrHasta([&] { return datos.bloqueActual >= hasta; }, 10s));
    }
    void cancelar() {
        descarga.alCancelar();
        EXPECT_FALSE(progress.mostrado());
        EXPECT_FALSE(abierto());
        EXPECT_FALSE(forma.Timer4.enabled());
        EXPECT_TRUE(forma.Command13.enabled());
        EXPECT_FALSE(forma.Command33.enabled());
        // A logger that was left in the middle has given up.
        bucle.avanzar(5s);
    }
    void esperarFin(std::size_t bloque, std::size_t lugar, const FalloDeRejilla& fallo, FinDeBloque fin);
    void esperarBloque(std::size_t bloque, std::size_t lugar, const FalloDeRejilla& fallo);
    void limpia();

    bool abierto() const { return red ? red->abierto() : puertos.abierto(1); }

    static constexpr int kBarraAntes = 1234;

    BuclePrueba bucle;
    DialogosPrueba dialogos;
    PuertosSimulados puertos{bucle, bucle.reloj()};
    std::unique_ptr<PuertoEnRed> red = redDeRejilla(bucle, puertos, 1);
    FormaInicio forma;
    FormaProgress progress;
    Canales canales{red ? static_cast<Puertos&>(*red) : puertos};
    EstadoEnlace estado;
    EstadoDatos datos{Perfil::estricto};
    std::vector<std::string> inesperados;
    Tareas tareas{[this](const std::exception_ptr&) { inesperados.emplace_back("inesperado"); }};
    Esperas esperas{bucle, bucle.reloj(), tareas};
    Turno turno{bucle, bucle.reloj()};
    Enlace enlace{forma, canales, estado, bucle.reloj(), esperas, dialogos, turno};
    int guardadas = 0;
    int exportadas = 0;
    Vigilia vigilia{bucle, nullptr, ""};
    Descarga descarga{enlace,
                      datos,
                      progress,
                      vigilia,
                      {.lanzar = [this](Tarea<> tarea) { tareas.lanzar(std::move(tarea)); },
                       .guardarBase = [this] { ++guardadas; },
                       .generargt = [this]() -> Tarea<> {
                           ++exportadas;
                           progress.descargar();
                           co_return;
                       }}};
    std::vector<std::string> impresas;
    Formulario::Observacion observacion;
    CuentaDeCorridas corridas;
};

void RejillaBloques::esperarFin(std::size_t bloque, std::size_t lugar, const FalloDeRejilla& fallo,
                                FinDeBloque fin) {
    const auto numero = static_cast<std::int32_t>(bloque);
    const bool entero = fin == FinDeBloque::sigueHastaElFinal;
    std::vector<std::string> mensajes;
    if (entero) mensajes.emplace_back(kExito);
    if (fin == FinDeBloque::sobrado) mensajes.emplace_back(kSobran);
    EXPECT_EQ(dialogos.textos(), mensajes);
    EXPECT_TRUE(
        cuentaSobrantes(impresas, fin == FinDeBloque::sobrado ? fallo.sobran : 0, red && red->enPedazos()))
        << testing::PrintToString(impresas);
    EXPECT_TRUE(inesperados.empty());
    EXPECT_EQ(guardadas, entero ? 1 : 0);
    EXPECT_EQ(exportadas, entero ? 1 : 0);
    EXPECT_EQ(progress.mostrado(), !entero);
    const bool termino = entero || fin == FinDeBloque::sobrado;
    EXPECT_EQ(abierto(), !termino);
    EXPECT_EQ(forma.Timer4.enabled(), !termino);
    // Blocks that came, and blocks that were acknowledged or were meant to be.
    if (fin == FinDeBloque::sigue) {
        EXPECT_GE(datos.bloqueActual, numero + 3);
    } else {
        EXPECT_EQ(datos.bloqueActual, fin == FinDeBloque::detenido ? numero : numero + 1);
    }
    if (fin == FinDeBloque::sinAcuse) {
        EXPECT_EQ(progress.ProgressBar1.value(), numero + 1);
    }
    if (fin == FinDeBloque::detenido || fin == FinDeBloque::sobrado) {
        EXPECT_EQ(progress.ProgressBar1.value(), kBarraAntes) << "the bar counts acknowledged blocks";
    }
    if (fin != FinDeBloque::detenido) esperarBloque(bloque, lugar, fallo);
}

// The block holds what came, in its order, cut at its end.
void RejillaBloques::esperarBloque(std::size_t bloque, std::size_t lugar, const FalloDeRejilla& fallo) {
    const auto dicho = enElRegistrador(bloque);
    std::vector<std::uint8_t> bytes(dicho.begin(), dicho.end());
    const auto aqui = bytes.begin() + static_cast<std::ptrdiff_t>(lugar);
    if (fallo.clase == kCambia) *aqui = static_cast<std::uint8_t>(~*aqui);
    if (fallo.clase == kSobra) {
        bytes.insert(aqui + 1, fallo.sobran, fallo.texto == "doblar" ? *aqui : std::uint8_t{0});
        bytes.resize(kBytesBloque);
    }
    const auto guardado = datos.memoria.bloque(bloque);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), guardado.begin()));
}

// A download of the last two blocks, to its success.
void RejillaBloques::limpia() {
    puertos.manipular(1, {});
    puertos.reponer(1);
    const auto desde = kUltimoBloqueDeMemoria - 1;
    empezarEn(desde);
    seguir(desde);
    EXPECT_EQ(dialogos.textos(), std::vector<std::string>{std::string(kExito)});
    EXPECT_EQ(guardadas, 1);
    EXPECT_EQ(exportadas, 1);
    EXPECT_FALSE(abierto());
    for (const auto bloque : {desde, desde + 1}) {
        const auto dicho = enElRegistrador(bloque);
        EXPECT_TRUE(std::equal(dicho.begin(), dicho.end(), datos.memoria.bloque(bloque).begin()));
    }
    bucle.avanzar(5s);
}

class CadaBloque : public RejillaBloques, public ::testing::WithParamInterface<std::size_t> {};

TEST_P(CadaBloque, EveryFaultInEveryByte) {
    const auto bloque = GetParam();
    for (std::size_t lugar = 0; lugar < kBytesBloque; lugar += pasoDeRejilla(3)) {
        for (const auto& fallo : fallosDeRejilla(red != nullptr)) {
            SCOPED_TRACE(fmt::format("descarga:bloque={}:byte={}:{}", bloque, lugar, fallo.texto));
            corridas.otra();
            // Both sides begin at that block: to the line it is the first one.
            puertos.manipular(
                1,
                PlanDeFallos({Fallo::leer(fmt::format("descarga:bloque=0:byte={}:{}", lugar, fallo.texto))}));
            empezarEn(bloque);
            seguir(bloque);
            esperarFin(bloque, lugar, fallo, finDe(bloque, fallo.clase));
            cancelar();
            limpia();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rejilla, CadaBloque, ::testing::Values(0u, 1u, 2047u, kUltimoBloqueDeMemoria),
                         [](const auto& caso) { return std::to_string(caso.param); });

}  // namespace
}  // namespace telvane
