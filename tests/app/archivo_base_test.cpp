// Base file import.
#include "data/archivo_base.h"

#include <sys/stat.h>

#include <fstream>

#include <fmt/format.h>

#include "tests/apoyo/leer_todo.h"
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class Importar : public Banco {
   protected:
    static constexpr const char* kExito = "El archivo se proceso con exito";

    void sinRegistrador() {
        dialogos.responder(Boton::cancelar, kPregunta);
        inicio.cargar();
    }
    std::filesystem::path archivo(const std::string& bytes) {
        const auto ruta = carpeta.ruta() / "base.rgt";
        std::ofstream(ruta, std::ios::binary) << bytes;
        return ruta;
    }
    void importar(const std::filesystem::path& ruta) {
        dialogos.responderArchivo(ruta);
        dialogos.responder(Boton::aceptar, kExito);
        pulsar(forma.Command43);
    }
    // What the user sees of every control, and can do with it.
    std::vector<std::string> estado() const {
        std::vector<std::string> lista;
        for (const auto* control : forma.controles()) {
            lista.push_back(fmt::format("{}: {}{}{}{} \"{}\" \"{}\"", control->nombre(), control->enabled(),
                                        control->visible(), control->locked(), control->value(),
                                        control->caption(), control->text()));
        }
        return lista;
    }
    // What the spreadsheet export makes of the image that is held.
    std::string exportado() {
        dialogos.responderArchivo(carpeta.ruta() / "datos.xls");
        forma.Command33.enabled = true;
        pulsar(forma.Command33);
        return leerTodo(carpeta.ruta() / "datos.xls");
    }
    // Outside the evaporation variant, before and after its first bytes change.
    static std::string simulada() {
        auto imagen = memoriaSimulada(Clima());
        ponerSerie(imagen, "99080050");
        return {imagen.begin(), imagen.end()};
    }
};

TEST_F(Importar, FillsTheMemoryAndEnablesTheExport) {
    sinRegistrador();
    forma.Command33.enabled = false;
    importar(archivo(simulada()));
    const auto& peticion = dialogos.archivos().back();
    EXPECT_FALSE(peticion.guardar);
    EXPECT_EQ(peticion.filtro, "datos base (*.rgt)|*.rgt");
    EXPECT_EQ(peticion.carpeta, "C:\\mis Documentos\\");
    for (auto* boton : {&forma.Command33, &forma.Command43, &forma.Command13, &forma.Command2,
                        &forma.configuracion, &forma.Command4, &forma.Command1}) {
        EXPECT_TRUE(boton->enabled()) << boton->nombre();
    }
    EXPECT_FALSE(forma.Command3.enabled());
    EXPECT_FALSE(inicio.progress.mostrado());
    EXPECT_EQ(inicio.progress.caption(), "Estado de Comunicacion");
    const auto texto = exportado();
    EXPECT_EQ(std::count(texto.begin(), texto.end(), '\n'), 1 + 8178 + 1);
    EXPECT_NE(forma.RichTextBox2.text().find("Numero de serie : 99080050"), std::string::npos)
        << "with no logger read, the image's own header gives the configuration";
}

TEST_F(Importar, GivesTheSampleLinesOfADownloadOfTheSameImage) {
    conectar();
    dialogos.responder(Boton::aceptar);
    dialogos.responderArchivo(carpeta.ruta() / "datos.CSV");
    dialogos.responder(Boton::no);
    pulsar(forma.Command13);
    ASSERT_TRUE(bucle.correrHasta([&] { return std::filesystem::exists(carpeta.ruta() / "datos.CSV"); }));
    bucle.avanzar(1s);
    const auto csv = leerTodo(carpeta.ruta() / "datos.CSV");
    importar(std::filesystem::directory_iterator(carpeta.ruta() / "base")->path());
    const auto xls = exportado();
    EXPECT_EQ(csv.substr(csv.find("20/11/2018")), xls.substr(xls.find("20/11/2018")));
}

TEST_F(Importar, AnEmptyFileLeavesTheMemoryButForItsFirstByte) {
    sinRegistrador();
    importar(archivo(simulada()));
    const auto antes = exportado();
    importar(archivo(""));
    EXPECT_EQ(exportado(), antes);
    EXPECT_NE(forma.RichTextBox2.text().find("Numero de serie : 00080050"), std::string::npos);
}

TEST_F(Importar, SixtyFourBytesFillTheFirstBlockOnly) {
    sinRegistrador();
    importar(archivo(simulada()));
    const auto antes = exportado();
    importar(archivo(std::string(64, '\x11')));
    EXPECT_EQ(exportado(), antes);
    EXPECT_NE(forma.RichTextBox2.text().find("Numero de serie : 11111111"), std::string::npos);
}

TEST_F(Importar, ALongerFileIsReadAsFarAsTheImageReaches) {
    sinRegistrador();
    importar(archivo(simulada()));
    const auto antes = exportado();
    importar(archivo(simulada() + std::string(100000, '\0')));
    EXPECT_EQ(exportado(), antes);
}

TEST_F(Importar, ACancelledDialogChangesNothing) {
    sinRegistrador();
    importar(archivo(simulada()));
    const auto salidaAntes = exportado();
    for (const bool exportaba : {true, false}) {
        forma.Command33.enabled = exportaba;
        const auto antes = estado();
        const auto impresas = lineas();
        const auto mensajes = dialogos.mensajes().size();
        dialogos.responderArchivo(std::nullopt);
        pulsar(forma.Command43);
        EXPECT_EQ(estado(), antes);
        EXPECT_EQ(lineas(), impresas);
        EXPECT_EQ(dialogos.mensajes().size(), mensajes);
        EXPECT_FALSE(inicio.progress.mostrado());
    }
    EXPECT_EQ(exportado(), salidaAntes);
}

// A write that stood still while the operator went on editing ends behind the file dialog.
TEST_F(Importar, ACancelledDialogGivesNothingBackThatAnExchangeTookMeanwhile) {
    conectar();
    puertos.manipular(1, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio == Intercambio::escritura && saliente.indice == 50) efecto.demora = 4s;
        return efecto;
    });
    pulsar(forma.Command2);
    dialogos.responder(Boton::aceptar);
    pulsar(forma.Command3);
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }));
    bucle.avanzar(2s);
    pulsar(forma.Command2);
    ASSERT_TRUE(forma.Command3.enabled()) << "editing again";
    dialogos.dejarAbiertoArchivo();
    pulsar(forma.Command43);
    ASSERT_TRUE(bucle.correrHasta([&] { return !puertos.abierto(1); }));
    dialogos.contestarArchivo(std::nullopt);
    bucle.avanzar(1s);
    EXPECT_FALSE(forma.Command3.enabled()) << "outside edit mode nothing can be sent";
    for (auto* boton :
         {&forma.Command43, &forma.Command13, &forma.Command2, &forma.configuracion, &forma.Command4}) {
        EXPECT_TRUE(boton->enabled()) << boton->nombre();
    }
    // While editing goes on, sending is given back.
    pulsar(forma.Command2);
    dialogos.responderArchivo(std::nullopt);
    pulsar(forma.Command43);
    EXPECT_TRUE(forma.Command3.enabled());
    EXPECT_FALSE(forma.configuracion.enabled());
}

TEST_F(Importar, AFileThatCannotBeReadLeavesTheExportAsItWas) {
    sinRegistrador();
    for (const bool exportaba : {true, false}) {
        forma.Command33.enabled = exportaba;
        const auto antes = estado();
        dialogos.responderArchivo(carpeta.ruta() / "no-existe.rgt");
        pulsar(forma.Command43);
        EXPECT_EQ(estado(), antes);
    }
}

TEST_F(Importar, AFolderAFifoAndAMissingFileAreToldAndLoseNothing) {
    sinRegistrador();
    importar(archivo(simulada()));
    const auto antes = exportado();
    const auto fifo = carpeta.ruta() / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const auto& ruta : {carpeta.ruta(), fifo, carpeta.ruta() / "no-existe.rgt"}) {
        dialogos.responderArchivo(ruta);
        pulsar(forma.Command43);
        EXPECT_TRUE(lineas().back().starts_with("no se pudo leer ")) << lineas().back();
        EXPECT_TRUE(forma.Command43.enabled());
    }
    EXPECT_EQ(exportado(), antes);
}

}  // namespace
}  // namespace telvane
