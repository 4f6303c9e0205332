// telvane-historico informe and resumen as they are called.
#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/cp1252.h"
#include "simulator/memoria_simulada.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/apoyo/proceso.h"

namespace telvane {
namespace {

using testing::HasSubstr;
using testing::Not;

struct Corrida {
    int estado = -1;
    std::string salida;
    std::string errores;
};

class OrdenInforme : public testing::Test {
   protected:
    OrdenInforme() { guardar("una.rgt", memoriaSimulada(Clima(3))); }

    void guardar(const std::string& nombre, const std::vector<std::uint8_t>& bytes) {
        std::ofstream(carpeta_ / nombre, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    std::string ruta(const std::string& nombre) const { return (carpeta_ / nombre).string(); }
    std::string leer(const std::string& nombre) const { return leerTodo(carpeta_ / nombre); }
    bool hay(const std::string& nombre) const { return std::filesystem::exists(carpeta_ / nombre); }
    Corrida correr(std::vector<std::string> argumentos) const {
        argumentos.insert(argumentos.begin(), {TELVANE_HISTORICO, "--en", ruta("h.sqlite")});
        Proceso proceso(argumentos, {"TZ=UTC", "HOME=" + carpeta_.ruta().string()});
        const auto estado = proceso.terminar().value_or(-1);
        return {.estado = estado, .salida = proceso.salida(), .errores = proceso.errores()};
    }
    // Without the line that says when.
    static std::string sinCuando(const std::string& html) {
        const auto desde = html.find("\n<p>el ");
        return html.substr(0, desde) + html.substr(html.find('\n', desde + 1));
    }
    CarpetaTemporal carpeta_;
};

TEST_F(OrdenInforme, OfAnImageAndOfItsStationSaysTheSame) {
    ASSERT_EQ(correr({"incorporar", ruta("una.rgt")}).estado, 0);
    EXPECT_EQ(correr({"informe", ruta("i.html"), "--imagen", ruta("una.rgt")}).estado, 0);
    EXPECT_EQ(correr({"informe", ruta("e.html"), "--estacion", "02080050"}).estado, 0);
    EXPECT_THAT(leer("i.html"), HasSubstr("8178 de 8178 esperadas"));
    EXPECT_EQ(sinCuando(leer("i.html")), sinCuando(leer("e.html")));
}

TEST_F(OrdenInforme, TwoRunsGiveTheSameBytesButForOneLine) {
    EXPECT_EQ(correr({"informe", ruta("a.html"), "--imagen", ruta("una.rgt")}).estado, 0);
    const auto otra = correr({"informe", "-", "--imagen", ruta("una.rgt")});
    EXPECT_EQ(otra.estado, 0);
    EXPECT_EQ(sinCuando(leer("a.html")), sinCuando(otra.salida));
}

TEST_F(OrdenInforme, AYearOfHoursStaysBelow400KilobytesWithoutScripts) {
    EXPECT_EQ(correr({"informe", ruta("a.html"), "--imagen", ruta("una.rgt"), "--sin-guiones"}).estado, 0);
    EXPECT_LT(std::filesystem::file_size(ruta("a.html")), 400'000U);
    EXPECT_THAT(leer("a.html"), Not(HasSubstr("<script")));
}

TEST_F(OrdenInforme, APeriodWithoutSamplesWritesNothing) {
    for (const auto& periodo : std::vector<std::vector<std::string>>{
             {"--mes", "2017-01"}, {"--desde", "2030-01-01"}, {"--hasta", "2018-11-20"}}) {
        std::vector<std::string> linea{"informe", ruta("a.html"), "--imagen", ruta("una.rgt")};
        linea.insert(linea.end(), periodo.begin(), periodo.end());
        const auto corrida = correr(linea);
        EXPECT_EQ(corrida.estado, 1) << periodo[1];
        EXPECT_THAT(corrida.errores, HasSubstr("no hay muestras en el período pedido"));
        EXPECT_FALSE(hay("a.html"));
    }
    guardar("vacia.rgt", memoriaVacia({}, {}));
    EXPECT_EQ(correr({"informe", ruta("a.html"), "--imagen", ruta("vacia.rgt")}).estado, 1);
    EXPECT_FALSE(hay("a.html"));
}

TEST_F(OrdenInforme, APeriodOfTenThousandYearsIsTheLoggersCentury) {
    EXPECT_EQ(correr({"informe", ruta("a.html"), "--imagen", ruta("una.rgt"), "--desde", "0000-01-01",
                      "--hasta", "9999-12-31", "--sin-guiones"})
                  .estado,
              0);
    EXPECT_LT(std::filesystem::file_size(ruta("a.html")), 1'200'000U);
    EXPECT_THAT(leer("a.html"), HasSubstr("<tr><th scope=row>ene 2000"));
    EXPECT_THAT(leer("a.html"), HasSubstr("<tr><th scope=row>dic 2099"));
}

// A reader that comes and goes, an old page, a folder: what a save may find in its place.
TEST_F(OrdenInforme, AnOldPageStaysUntilTheNewOneIsWhole) {
    std::ofstream(carpeta_ / "vieja.html") << "vieja";
    std::filesystem::create_symlink("vieja.html", carpeta_ / "enlace.html");
    EXPECT_EQ(
        correr({"informe", ruta("enlace.html"), "--imagen", ruta("una.rgt"), "--mes", "2017-01"}).estado, 1);
    EXPECT_EQ(leer("vieja.html"), "vieja");
    EXPECT_EQ(correr({"informe", ruta("enlace.html"), "--imagen", ruta("una.rgt")}).estado, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(carpeta_ / "enlace.html"));
    EXPECT_THAT(leer("vieja.html"), testing::EndsWith("</html>\n"));
    std::filesystem::create_directory(carpeta_ / "carpeta");
    for (const auto& [salida, motivo] :
         {std::pair{ruta("carpeta"), "es una carpeta"}, {ruta("no/hay.html"), "no existe la carpeta"}}) {
        const auto corrida = correr({"informe", salida, "--imagen", ruta("una.rgt")});
        EXPECT_EQ(corrida.estado, 1);
        EXPECT_THAT(corrida.errores, HasSubstr(motivo));
    }
}

// What a header may hold, as it stands in an image: every byte there is, in pieces as long as the fields.
TEST_F(OrdenInforme, NoByteOfAHeaderActsOrMakesTheSummaryWider) {
    constexpr std::size_t kTextos = 4;
    constexpr std::size_t kAnchoTextos = 65;
    for (const std::string texto :
         {"<script>alert(1)</script>", "\"><img src=x onerror=alert(1)>", "' autofocus x='",
          "\x01\x1B[31m\x07\x85\x7F", "\xE2\x80\xAE\xED\xA0\x80", "%s{}{0}", "\x81\x8D\x8F\x90\x9D\xA0\xAD",
          "MMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMM"}) {
        auto bytes = memoriaSimulada(Clima(3));
        for (std::size_t i = 0; i < kAnchoTextos; ++i)
            bytes[kTextos + i] = static_cast<std::uint8_t>(texto[i % texto.size()]);
        guardar("hostil.rgt", bytes);
        std::filesystem::remove(carpeta_ / "h.sqlite");
        ASSERT_EQ(correr({"incorporar", ruta("hostil.rgt")}).estado, 0);
        EXPECT_EQ(correr({"informe", ruta("h.html"), "--estacion", "02080050", "--sin-guiones"}).estado, 0);
        const auto html = leer("h.html");
        EXPECT_THAT(html, Not(HasSubstr("<script")));
        EXPECT_THAT(html, Not(HasSubstr("<img")));
        EXPECT_THAT(html, Not(HasSubstr("autofocus x='")));
        const auto resumen = correr({"resumen", "--estacion", "02080050", "--mes", "2018-12"});
        EXPECT_EQ(resumen.estado, 0) << resumen.errores;
        std::istringstream lineas(resumen.salida);
        for (std::string linea; std::getline(lineas, linea);) EXPECT_LE(caracteres(linea), 80U) << linea;
        for (const auto& texto8 : {html, resumen.salida}) {
            for (const unsigned char c : texto8) ASSERT_TRUE((c >= 0x20 && c != 0x7F) || c == '\n');
        }
    }
}

TEST_F(OrdenInforme, WhatDoesNotGoTogetherIsWrongUsage) {
    const std::vector<std::vector<std::string>> malas{
        {},
        {"--imagen", ruta("una.rgt"), "--estacion", "02080050"},
        {"--imagen", ruta("una.rgt"), "--mes", "2018-12", "--desde", "2018-12-01"},
        {"--imagen", ruta("una.rgt"), "--mes", "2018-12", "--hasta", "2018-12-01"},
        {"--imagen", ruta("una.rgt"), "--mes", "2018-13"},
        {"--imagen", ruta("una.rgt"), "--desde", "2018-12-01", "--hasta", "2018-12-01"},
        {"--imagen", ruta("una.rgt"), "--desde", "2018-12-02", "--hasta", "2018-12-01"},
    };
    for (const auto& mala : malas) {
        std::vector<std::string> linea{"informe", ruta("a.html")};
        linea.insert(linea.end(), mala.begin(), mala.end());
        EXPECT_EQ(correr(linea).estado, 2) << (mala.empty() ? "" : mala.back());
        EXPECT_FALSE(hay("a.html"));
    }
    EXPECT_EQ(correr({"informe", ruta("una.rgt"), "--imagen", ruta("una.rgt")}).estado, 2)
        << "a page is no base file, and never written over what it is made of";
    EXPECT_EQ(std::filesystem::file_size(ruta("una.rgt")), kBytesMemoria);
}

TEST_F(OrdenInforme, PartialDamagedAndLongFiles) {
    auto bytes = memoriaSimulada(Clima(3));
    std::fill_n(bytes.begin(), 4, 0xFF);
    guardar("borrada.rgt", bytes);
    EXPECT_EQ(correr({"informe", ruta("a.html"), "--imagen", ruta("borrada.rgt")}).estado, 0);
    EXPECT_THAT(leer("a.html"), HasSubstr("sin número de serie"));
    auto parcial = memoriaSimulada(Clima(3));
    parcial.resize(100'001);
    guardar("parcial.rgt.parcial", parcial);
    EXPECT_EQ(correr({"informe", ruta("p.html"), "--imagen", ruta("parcial.rgt.parcial")}).estado, 0);
    EXPECT_THAT(leer("p.html"), HasSubstr("parcial"));
    bytes.push_back(0);
    guardar("larga.rgt", bytes);
    EXPECT_EQ(correr({"informe", ruta("l.html"), "--imagen", ruta("larga.rgt")}).estado, 1);
    EXPECT_EQ(correr({"informe", ruta("l.html"), "--imagen", ruta("no-esta.rgt")}).estado, 1);
    EXPECT_FALSE(hay("l.html"));
}

TEST_F(OrdenInforme, TheSummaryIsTheMonthsText) {
    ASSERT_EQ(correr({"incorporar", ruta("una.rgt")}).estado, 0);
    const auto corrida = correr({"resumen", "--estacion", "02080050", "--mes", "2018-12"});
    EXPECT_EQ(corrida.estado, 0) << corrida.errores;
    EXPECT_THAT(corrida.salida, HasSubstr("Resumen climático de diciembre de 2018"));
    EXPECT_THAT(corrida.salida, HasSubstr("Muestras: 744 de 744 esperadas"));
    EXPECT_EQ(correr({"resumen", "--estacion", "02080050", "--mes", "2017-12"}).estado, 1);
    EXPECT_EQ(correr({"resumen", "--estacion", "02080050"}).estado, 2);
    EXPECT_EQ(correr({"resumen", "--estacion", "99999999", "--mes", "2018-12"}).estado, 1);
}

TEST_F(OrdenInforme, ADashIsTheStandardInput) {
    std::ofstream(carpeta_ / "l.ini") << "[02080050]\ntemperatura.rango = -40 20\n";
    const auto con = [&](const std::string& archivo, std::vector<std::string> argumentos) {
        argumentos.insert(argumentos.begin(),
                          {"/bin/sh", "-c", "entrada=$1; shift; exec \"$@\" <\"$entrada\"", "sh",
                           ruta(archivo), TELVANE_HISTORICO, "--en", ruta("h.sqlite")});
        Proceso proceso(argumentos);
        const auto estado = proceso.terminar().value_or(-1);
        return Corrida{.estado = estado, .salida = proceso.salida(), .errores = proceso.errores()};
    };
    EXPECT_EQ(sinCuando(con("una.rgt", {"informe", "-", "--imagen", "-"}).salida),
              sinCuando(correr({"informe", "-", "--imagen", ruta("una.rgt")}).salida));
    EXPECT_THAT(con("una.rgt", {"informe", "-", "--imagen", "-", "--limites", ruta("l.ini")}).salida,
                HasSubstr(" fuera de rango."));
    EXPECT_THAT(con("l.ini", {"informe", "-", "--imagen", ruta("una.rgt"), "--limites", "-"}).salida,
                HasSubstr(" fuera de rango."));
    EXPECT_EQ(con("una.rgt", {"informe", "-", "--imagen", "-", "--limites", "-"}).estado, 2);
    EXPECT_EQ(con("una.rgt", {"informe", ruta("una.rgt"), "--imagen", "-"}).estado, 2);

    ASSERT_EQ(correr({"incorporar", ruta("una.rgt")}).estado, 0);
    const auto exportada =
        con("l.ini", {"exportar", "-", "--estacion", "02080050", "--calidad", "--limites", "-"});
    EXPECT_EQ(exportada.estado, 0) << exportada.errores;
    EXPECT_THAT(exportada.salida, HasSubstr("temperatura:rango"));
    EXPECT_THAT(correr({"exportar", "-", "--estacion", "02080050", "--calidad"}).salida,
                Not(HasSubstr("temperatura:rango")));
    const auto resumen =
        con("l.ini", {"resumen", "--estacion", "02080050", "--mes", "2018-12", "--limites", "-"});
    EXPECT_EQ(resumen.estado, 0) << resumen.errores;
    const auto mala =
        con("una.rgt", {"resumen", "--estacion", "02080050", "--mes", "2018-12", "--limites", "-"});
    EXPECT_EQ(mala.estado, 1);
    EXPECT_THAT(mala.errores, HasSubstr("la entrada: línea 1: "));
}

TEST_F(OrdenInforme, LimitsBesideTheArchiveChangeTheMarksOfTheirStation) {
    ASSERT_EQ(correr({"incorporar", ruta("una.rgt")}).estado, 0);
    EXPECT_EQ(correr({"informe", ruta("a.html"), "--estacion", "02080050"}).estado, 0);
    EXPECT_FALSE(leer("a.html").find(" fuera de rango.") != std::string::npos);
    std::ofstream(carpeta_ / "calidad.ini") << "[02080050]\ntemperatura.rango = -40 20\n";
    EXPECT_EQ(correr({"informe", ruta("a.html"), "--estacion", "02080050"}).estado, 0);
    EXPECT_TRUE(leer("a.html").find(" fuera de rango.") != std::string::npos);
    std::ofstream(carpeta_ / "calidad.ini") << "[02080050]\ntemperatura.rnago = -40 20\n";
    const auto mala = correr({"informe", ruta("b.html"), "--estacion", "02080050"});
    EXPECT_EQ(mala.estado, 1);
    EXPECT_THAT(mala.errores, HasSubstr("línea 2: nombre desconocido: temperatura.rnago"));
    EXPECT_FALSE(hay("b.html"));
}

}  // namespace
}  // namespace telvane
