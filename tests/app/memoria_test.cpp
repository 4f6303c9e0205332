// What a process holds after a day's work is what it held in the morning.
#include <malloc.h>

#include "tests/apoyo/saneado.h"
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class MemoriaDelProceso : public Banco {
   protected:
    explicit MemoriaDelProceso(int baudios = kBaudios) : Banco(baudios) {}

    void SetUp() override {
        if (saneado()) GTEST_SKIP() << "the sanitizer's heap is not counted; it finds leaks itself";
        conectar();
        dialogos.responderSiempre(Boton::aceptar);
        dialogos.responderArchivoSiempre(std::nullopt);
    }
    // Bytes in use, what the test itself keeps forgotten.
    std::size_t enUso() {
        dialogos.olvidar();
        puertos.olvidarTrafico(1);
        return ::mallinfo2().uordblks + ::mallinfo2().hblkhd;
    }
    void descargar() {
        pulsar(forma.Command13);
        ASSERT_TRUE(bucle.correrHasta([&] { return dialogos.archivos().size() == 1; }, 10min));
        ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }, 1min));
        std::filesystem::remove_all(carpeta.ruta() / "base");
    }
};

// Printed lines are kept up to a number, which is reached before it is measured.
TEST_F(MemoriaDelProceso, AHundredDownloadsHoldNoMoreThanTheFirstFew) {
    for (int i = 0; i < 1000; ++i) forma.imprimir(std::string(200, '.'));
    for (int i = 0; i < 20; ++i) {
        descargar();
        static_cast<void>(enUso());
    }
    const auto antes = enUso();
    for (int i = 0; i < 100; ++i) {
        descargar();
        static_cast<void>(enUso());
    }
    const auto despues = enUso();
    std::printf("100 descargas: %zu bytes antes, %zu despues\n", antes, despues);
    EXPECT_LE(despues, antes + 4096);
}

TEST_F(MemoriaDelProceso, AnHourOfLiveDataHoldsNoMoreThanItsFirstMinute) {
    pulsar(forma.Command4);
    pasar(1min);
    const auto antes = enUso();
    for (int minuto = 0; minuto < 60; ++minuto) {
        pasar(1min);
        static_cast<void>(enUso());
    }
    const auto despues = enUso();
    std::printf("una hora en linea: %zu bytes antes, %zu despues\n", antes, despues);
    EXPECT_LE(despues, antes + 4096);
    EXPECT_EQ(forma.Command4.caption(), "PARAR");
}

// What waits is all that is held, also where something always waits.
class MemoriaSinRitmo : public MemoriaDelProceso {
   protected:
    MemoriaSinRitmo() : MemoriaDelProceso(0) {}
};

TEST_F(MemoriaSinRitmo, AnHourOfLiveDataWithAByteTooManyHoldsNoMoreThanItsFirstMinute) {
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.numero == 0) efecto.bytes.push_back(0);
        if (saliente.indice == 0) efecto.demora = 20ms;
        return efecto;
    });
    pulsar(forma.Command4);
    pasar(1min);
    ASSERT_EQ(lineas().back(), "falta");
    const auto antes = enUso();
    for (int minuto = 0; minuto < 60; ++minuto) {
        pasar(1min);
        static_cast<void>(enUso());
    }
    const auto despues = enUso();
    std::printf("una hora en linea con bytes de mas: %zu bytes antes, %zu despues\n", antes, despues);
    EXPECT_LE(despues, antes + 4096);
    EXPECT_EQ(lineas().back(), "falta");
}

}  // namespace
}  // namespace telvane
