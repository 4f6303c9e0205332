#include "tests/apoyo/bucle_prueba.h"

#include <unistd.h>

#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "gtest/gtest-spi.h"
#include "platform/descriptor.h"
#include "platform/esperas.h"
#include "platform/tarea.h"
#include "tests/apoyo/dialogos_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

TEST(RelojPrueba, CrossesMidnightAndTheYear) {
    RelojPrueba reloj;
    reloj.ponerHora({2026, 12, 31, 24h - 1s});
    reloj.dejarPasar(3s);
    const auto ahora = reloj.ahora();
    EXPECT_EQ(ahora.anio, 2027);
    EXPECT_EQ(ahora.mes, 1);
    EXPECT_EQ(ahora.dia, 1);
    EXPECT_EQ(ahora.deDia, 2s);
}

TEST(RelojPrueba, AJumpLeavesTheMonotonicClock) {
    RelojPrueba reloj;
    const auto antes = reloj.monotono();
    reloj.saltar(-2h);
    EXPECT_EQ(reloj.ahora().deDia, 8h);
    EXPECT_EQ(reloj.monotono(), antes);
}

TEST(BuclePrueba, DeliversByDueTimeAndTheSameInstantInTheOrderOfArming) {
    BuclePrueba bucle;
    std::string orden;
    const auto c = bucle.alarma(2s, [&] { orden += 'c'; });
    const auto a = bucle.alarma(1s, [&] { orden += 'a'; });
    const auto b = bucle.alarma(1s, [&] { orden += 'b'; });
    EXPECT_TRUE(bucle.correr());
    EXPECT_EQ(orden, "abc");
}

TEST(BuclePrueba, AdvancingStopsAtItsEndAlthoughNothingFallsDue) {
    BuclePrueba bucle;
    const auto antes = bucle.reloj().monotono();
    bool llamada = false;
    const auto asa = bucle.alarma(5s, [&] { llamada = true; });
    bucle.avanzar(5s - 1ns);
    EXPECT_FALSE(llamada);
    EXPECT_EQ(bucle.reloj().monotono() - antes, 5s - 1ns);
    bucle.avanzar(1ns);
    EXPECT_TRUE(llamada);
}

TEST(BuclePrueba, AnAlarmMayDestroyItsOwnHandle) {
    BuclePrueba bucle;
    Bucle::Asidero asa;
    const std::string larga(64, 'x');
    std::string vista;
    asa = bucle.alarma(1s, [&asa, &vista, larga] {
        asa.reset();
        vista = larga;
    });
    EXPECT_TRUE(bucle.correr());
    EXPECT_EQ(vista, larga);
}

TEST(BuclePrueba, ADestroyedHandleCallsNobody) {
    BuclePrueba bucle;
    bool llamada = false;
    auto asa = bucle.alarma(1s, [&] { llamada = true; });
    asa.reset();
    bucle.avanzar(2s);
    EXPECT_FALSE(llamada);
    EXPECT_EQ(bucle.alarmasArmadas(), 0u);
}

TEST(BuclePrueba, AHandleMayOutliveTheLoop) {
    Bucle::Asidero asa;
    {
        BuclePrueba bucle;
        asa = bucle.alarma(1s, [] {});
    }
    asa.reset();
    EXPECT_EQ(asa, nullptr);
}

TEST(BuclePrueba, TurningWithoutTimePassingIsAFailure) {
    BuclePrueba bucle;
    Bucle::Asidero asa;
    std::function<void()> otra = [&] { asa = bucle.alarma(0s, [&] { otra(); }); };
    otra();
    EXPECT_THROW(bucle.correr(), std::logic_error);
}

TEST(BuclePrueba, APauseHoldsBackWhatIsScheduled) {
    BuclePrueba bucle;
    std::string orden;
    bucle.programar(1s, [&] { orden += "clic "; });
    bucle.pausar(2s, [&] { orden += "luego "; });
    bucle.avanzar(3s);
    EXPECT_EQ(orden, "luego clic ");
}

Tarea<> esperarUnRato(Esperas& esperas, const Reloj& reloj, bool& fin) {
    co_await esperas.hasta(segundosComoTexto(reloj.segundosDelDia()), std::chrono::seconds(5),
                           [] { return false; });
    fin = true;
}

TEST(BuclePrueba, AYieldingWaitEndsOnceItsLimitHasPassed) {
    BuclePrueba bucle;
    Tareas tareas([](std::exception_ptr) { FAIL(); });
    Esperas esperas(bucle, bucle.reloj(), tareas);
    bucle.alTerminarSuceso([&] { esperas.revisar(); });
    bool fin = false;
    const auto antes = bucle.reloj().monotono();
    tareas.lanzar(esperarUnRato(esperas, bucle.reloj(), fin));
    EXPECT_TRUE(bucle.correrHasta([&] { return fin; }));
    const auto tardo = bucle.reloj().monotono() - antes;
    EXPECT_GE(tardo, 5s);
    EXPECT_LT(tardo, 5100ms);
}

TEST(DialogosPrueba, AnswersInOrderAndNotesWhatWasShown) {
    DialogosPrueba dialogos;
    dialogos.responder(Boton::cancelar, "uno");
    dialogos.responder(Boton::si);
    std::vector<Boton> dados;
    dialogos.mensaje(Mensaje("uno", Botones::aceptarCancelar), [&](Boton b) { dados.push_back(b); });
    dialogos.mensaje(Mensaje("dos", Botones::siNo), [&](Boton b) { dados.push_back(b); });
    EXPECT_EQ(dados, (std::vector{Boton::cancelar, Boton::si}));
    EXPECT_EQ(dialogos.textos(), (std::vector<std::string>{"uno", "dos"}));
}

TEST(DialogosPrueba, AMessageThatNobodyExpectsFails) {
    EXPECT_NONFATAL_FAILURE(
        {
            DialogosPrueba dialogos;
            dialogos.mensaje(Mensaje("sorpresa"), [](Boton) {});
        },
        "sorpresa");
}

TEST(DialogosPrueba, AnAnswerThatNobodyAskedForFails) {
    EXPECT_NONFATAL_FAILURE(
        {
            DialogosPrueba dialogos;
            dialogos.responder(Boton::aceptar);
        },
        "never shown");
}

// Says when it was asked, and twice that there is more.
class DeLejos final : public Alrededores {
   public:
    explicit DeLejos(int escribe) : escribe_(escribe) {}
    bool alDia() override {
        if (trozos_ == 0) return false;
        EXPECT_EQ(::write(escribe_, "x", 1), 1);
        return --trozos_ > 0;
    }

   private:
    int escribe_;
    int trozos_ = 2;
};

TEST(BuclePrueba, WatchesDescriptorsOnlyWithSomethingAround) {
    BuclePrueba bucle;
    EXPECT_THROW(static_cast<void>(bucle.vigilarLectura(0, [] {})), std::logic_error);
}

TEST(BuclePrueba, WhatComesFromAroundIsDeliveredBeforeTimePassesAndAPauseHoldsItBack) {
    std::array<int, 2> tubo{};
    ASSERT_EQ(::pipe(tubo.data()), 0);
    const Descriptor lee(tubo[0]);
    const Descriptor escribe(tubo[1]);
    BuclePrueba bucle;
    DeLejos lejos(escribe());
    bucle.rodear(&lejos);
    std::string orden;
    const auto lectura = bucle.vigilarLectura(lee(), [&] {
        char byte = 0;
        EXPECT_EQ(::read(lee(), &byte, 1), 1);
        orden += byte;
    });
    const auto alarma = bucle.alarma(0s, [&] { orden += 'a'; });
    bucle.pausar(2s, [&] { orden += 'p'; });
    bucle.avanzar(1s);
    EXPECT_EQ(orden, "");
    bucle.avanzar(2s);
    EXPECT_EQ(orden, "paxx");
    bucle.rodear(nullptr);
}

TEST(DialogosPrueba, AnOpenMessageWaitsForItsAnswer) {
    DialogosPrueba dialogos;
    dialogos.dejarAbierto();
    std::optional<Boton> dado;
    dialogos.mensaje(Mensaje("pregunta", Botones::siNo), [&](Boton b) { dado = b; });
    EXPECT_FALSE(dado);
    EXPECT_EQ(dialogos.abiertos(), 1u);
    dialogos.contestar(Boton::no);
    EXPECT_EQ(dado, Boton::no);
}

TEST(DialogosPrueba, TheFileDialogGivesThePathOrCancels) {
    DialogosPrueba dialogos;
    dialogos.responderArchivo("datos.csv");
    dialogos.responderArchivo(std::nullopt);
    std::vector<DialogosPrueba::Ruta> dadas;
    dialogos.archivo({true, "f|*.csv", "", "propuesto"}, [&](auto r) { dadas.push_back(r); });
    dialogos.archivo({}, [&](auto r) { dadas.push_back(r); });
    EXPECT_EQ(dadas, (std::vector<DialogosPrueba::Ruta>{"datos.csv", std::nullopt}));
    EXPECT_EQ(dialogos.archivos().front().nombre, "propuesto");
}

}  // namespace
}  // namespace telvane
