// A memory image handed to the main form byte by byte, and places that no image has.
#include <gmock/gmock.h>

#include "loggerconfig/datos_config.h"
#include "simulator/memoria_simulada.h"
#include "tests/app/banco.h"

namespace telvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Imagen : public Banco {
   protected:
    void configEntera() {
        for (std::int32_t k = 0; k < static_cast<std::int32_t>(registro_config::kCabecera); ++k) {
            inicio.imagen().config(k, imagen[static_cast<std::size_t>(k)]);
        }
    }
    void procesoBloque(std::size_t bloque) {
        for (int i = 0; i < static_cast<int>(kBytesBloque); ++i) {
            inicio.imagen().proceso(i, imagen[bloque * kBytesBloque + static_cast<std::size_t>(i)]);
        }
    }

    // The header ends within the one before.
    static constexpr std::size_t kBloque = 7;
    std::vector<std::uint8_t> imagen = memoriaSimulada(Clima());
};

TEST_F(Imagen, APlaceOutsideItsBlockIsPrintedAndNothingIsDecoded) {
    procesoBloque(0);
    inicio.imagen().tomarLineas();
    procesoBloque(kBloque);
    const auto lineasBuenas = inicio.imagen().tomarLineas();
    ASSERT_FALSE(lineasBuenas.empty());
    EXPECT_TRUE(inicio.imagen().tomarLineas().empty()) << "taken once";

    for (int i = 0; i < 32; ++i) {
        inicio.imagen().proceso(i, imagen[kBloque * kBytesBloque + static_cast<std::size_t>(i)]);
        if (i == 7) {
            for (const int fuera : {-1, 64, 69, 1 << 20}) inicio.imagen().proceso(fuera, 0xFF);
        }
    }
    EXPECT_THAT(lineas(),
                ElementsAre("error en matriz", "error en matriz", "error en matriz", "error en matriz"));
    EXPECT_TRUE(lineasBuenas.starts_with(inicio.imagen().tomarLineas()));
    inicio.imagen().proceso(0, 0);
    inicio.imagen().proceso(63, 0);
    EXPECT_EQ(lineas().size(), 4u) << "the first and the last place are a block's own";
}

TEST_F(Imagen, AByteBeyondTheHeaderIsPrintedAndAddsNothing) {
    configEntera();
    EXPECT_THAT(lineas(), IsEmpty()) << "432 bytes are a header";
    for (const std::int32_t fuera : {432, 433, -1}) inicio.imagen().config(fuera, 0x41);
    EXPECT_THAT(lineas(), ElementsAre("error en contador", "error en contador", "error en contador"));
}

// The logger was read before: 60 minutes, number 02080050, one with the extra channels.
TEST_F(Imagen, AByteLeavesWhatItDoesNotTellAsTheReadingLeftIt) {
    auto maquina = MaquinaRegistrador(memoriaSimulada(Clima()));
    maquina.ponerSerie("02080050");
    conectar(1, std::move(maquina));
    const auto exportar = [&] {
        dialogos.responderArchivo(carpeta.ruta() / "datos.xls");
        forma.Command33.enabled = true;
        pulsar(forma.Command33);
        return forma.RichTextBox2.text();
    };
    ASSERT_THAT(exportar(), HasSubstr("Muestras cada 60 Minutos\r\n"));

    constexpr std::int32_t kIntervalo = registro_config::kIntervalo;
    inicio.imagen().config(kIntervalo, 0x20);
    auto texto = exportar();
    EXPECT_THAT(texto, HasSubstr("Nro  : 02080050"));
    EXPECT_THAT(texto, Not(HasSubstr("Muestras cada  Minutos")));
    const auto segunda = texto.rfind("Muestras cada 60 Minutos\r\n");
    EXPECT_NE(segunda, texto.find("Muestras cada 60 Minutos\r\n")) << "appended, as it was";
    procesoBloque(0);
    inicio.imagen().tomarLineas();
    procesoBloque(kBloque);
    const auto muestras = inicio.imagen().tomarLineas();
    EXPECT_EQ(std::count(muestras.begin(), muestras.end(), ','), 2 * 10) << "still that logger's";

    inicio.imagen().config(kIntervalo, 0x15);
    inicio.imagen().config(kIntervalo, 0x99);
    texto = exportar();
    const auto de15 = texto.find("Muestras cada 15 Minutos\r\n");
    ASSERT_NE(de15, std::string::npos);
    EXPECT_NE(texto.rfind("Muestras cada 15 Minutos\r\n"), de15) << "the last one that it told";
    inicio.imagen().config(3, 0x12);
    EXPECT_THAT(exportar(), HasSubstr("Numero de serie : 02080012\r\n"));
}

TEST_F(Imagen, AHeaderThatBrokeOffIsNoPartOfTheNext) {
    for (std::int32_t k = 0; k < 50; ++k) inicio.imagen().config(k, 0x41);
    configEntera();
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    dialogos.responderArchivo(carpeta.ruta() / "datos.xls");
    pulsar(forma.Command33);
    EXPECT_THAT(forma.RichTextBox2.text(), HasSubstr(leerCabecera(imagen).texto));
}

TEST_F(Imagen, TheHeadersTextIsWhatAnExportWrites) {
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    configEntera();
    inicio.imagen().config(432, 0x41);
    const auto ruta = carpeta.ruta() / "datos.xls";
    dialogos.responderArchivo(ruta);
    forma.Command33.enabled = true;
    pulsar(forma.Command33);
    EXPECT_THAT(forma.RichTextBox2.text(), HasSubstr(leerCabecera(imagen).texto));
    procesoBloque(0);
    inicio.imagen().tomarLineas();
    procesoBloque(kBloque);
    const auto muestras = inicio.imagen().tomarLineas();
    EXPECT_EQ(std::count(muestras.begin(), muestras.end(), ','), 2 * 10)
        << "two samples of a logger with the extra channels";
}

}  // namespace
}  // namespace telvane
