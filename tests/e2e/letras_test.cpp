// The typefaces of the design, where the system has them: the controls' and that of the columns.
#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/apoyo/leer_todo.h"
#include "tests/e2e/ventana_e2e.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;

// Some scalable face of this system whose letters are all of one width, or of their own; empty: none.
fs::path unaLetra(bool deAnchoFijo) {
    std::vector<fs::path> todas;
    std::error_code error;
    for (fs::recursive_directory_iterator i("/usr/share/fonts", error), fin; !error && i != fin;
         i.increment(error)) {
        const auto nombre = i->path().filename().string();
        const auto lleva = [&](const char* que) { return nombre.find(que) != std::string::npos; };
        if (i->path().extension() != ".ttf" || lleva("Bold") || lleva("Oblique") || lleva("Italic")) continue;
        if (lleva("Mono") == deAnchoFijo && lleva("Sans")) todas.push_back(i->path());
    }
    return todas.empty() ? fs::path() : *std::ranges::min_element(todas);
}

class LetrasE2e : public VentanaE2e {
   protected:
    void SetUp() override {
        const auto llana = unaLetra(false);
        const auto ancha = unaLetra(true);
        if (llana.empty() || ancha.empty()) GTEST_SKIP() << "no such faces in /usr/share/fonts";
        fs::create_directory(carpeta_ / "letras");
        fs::copy_file(llana, carpeta_ / "letras" / kArchivos[0]);
        fs::copy_file(ancha, carpeta_ / "letras" / kArchivos[1]);
        fs::copy_file(llana, carpeta_ / "letras" / kArchivos[2]);
    }
    // A system that has these three faces and no others, two of them under these names; the third one stands
    // for every name that is not there.
    void abrir(const std::string& deControles, const std::string& deColumnas) {
        const auto llamada = [](const char* archivo, const std::string& familia) {
            return fmt::format(
                "<match target='scan'><test name='file' compare='contains'><string>{}</string></test>"
                "<edit name='family' mode='assign'><string>{}</string></edit>"
                "<edit name='fullname' mode='assign'><string>{}</string></edit></match>",
                archivo, familia, familia);
        };
        const auto ajustes = carpeta_ / (deControles + ".conf");
        std::ofstream(ajustes) << fmt::format(
            "<?xml version='1.0'?><!DOCTYPE fontconfig SYSTEM 'fonts.dtd'><fontconfig><dir>{}</dir>"
            "<cachedir>{}</cachedir>{}{}{}"
            "<match><edit name='family' mode='append_last' "
            "binding='strong'><string>Llana</string></edit></match>"
            "</fontconfig>",
            (carpeta_ / "letras").string(), (carpeta_ / ("cache de " + deControles)).string(),
            llamada(kArchivos[0], "Llana"), llamada(kArchivos[1], deControles),
            llamada(kArchivos[2], deColumnas));
        programa_.reset();
        arrancar({"/usr/bin/env", "FONTCONFIG_FILE=" + ajustes.string()});
        if (!fs::exists(escritorio_.carpeta("config") / "telvane")) {
            ASSERT_TRUE(responder("Su Configuracion Regional no es la apropiada", "Aceptar"));
        }
        ASSERT_TRUE(responder("Quiere conectarse con Registrador Veltra", "Cancelar"));
        ASSERT_TRUE(esperarA([&] { return anchoDeBoton() > 0; }));
    }
    // As wide as what it says.
    int anchoDeBoton() const {
        const auto boton = raiz().buscar(kBoton, " Conectar con Registrador ? ");
        return boton ? boton->lugar().ancho : 0;
    }
    // The program has read this face's shapes.
    bool usa(const char* archivo) const {
        return leerTodo(fmt::format("/proc/{}/maps", programa_->pid())).find(archivo) != std::string::npos;
    }

    static constexpr std::array<const char*, 3> kArchivos = {"llana.ttf", "controles.ttf", "columnas.ttf"};
    CarpetaTemporal carpeta_;
};

TEST_F(LetrasE2e, AreTheDesignsWhereTheyAreInstalledAndTheSystemsElsewhere) {
    abrir("Otra", "Distinta");
    EXPECT_TRUE(usa("llana.ttf"));
    EXPECT_FALSE(usa("controles.ttf"));
    EXPECT_FALSE(usa("columnas.ttf"));
    const auto antes = anchoDeBoton();
    abrir("MS Sans Serif", "Courier New");
    EXPECT_TRUE(usa("controles.ttf"));
    EXPECT_GT(anchoDeBoton(), antes) << "of letters that are all as wide as the widest";
    EXPECT_TRUE(esperarA([&] { return usa("columnas.ttf"); })) << "the live readings";
}

}  // namespace
}  // namespace telvane
