// The commands as a routine: what they print, how they end, and what stands in the way of an archive.
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>
#include <regex>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>

#include "platform/archivo.h"
#include "tests/apoyo/disco_chico.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/apoyo/usuario_corriente.h"
#include "tests/historico/banco_ordenes.h"

namespace telvane {
namespace {

using testing::HasSubstr;

TEST_F(Ordenes, IncorporarTellsEachFileAndGoesOnAfterOneThatFails) {
    const auto buena = imagen();
    const auto r = correr({"incorporar", carpeta / "no.rgt", buena});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_EQ(r.salida, buena + ": estación 02080050, 50 muestras, 50 nuevas, 0 en conflicto\n");
    EXPECT_THAT(r.errores,
                testing::EndsWith(
                    "no se pudo leer " + (carpeta / "no.rgt").string() +
                    ": no existe. Revise el nombre\ntelvane-historico: 1 de 2 archivos sin incorporar\n"));
}

TEST_F(Ordenes, ANewArchiveIsItsOwnersWhateverTheUmask) {
    const auto imagen = guardar("a.rgt", ImagenPrueba().serie(0, 0, 10).bytes());
    const UsuarioCorriente usuario(carpeta.ruta());
    ASSERT_TRUE(usuario.hecho());
    for (const mode_t mascara : {0477U, 0777U, 0277U, 0177U}) {
        const auto donde = carpeta / (std::to_string(mascara) + ".sqlite");
        const Mascara puesta(mascara);
        EXPECT_EQ(correr({"--en", donde, "incorporar", imagen}).codigo, 0) << mascara;
        EXPECT_EQ(correr({"--en", donde, "comprobar"}).salida, "El archivo está entero.\n") << mascara;
    }
}

TEST_F(Ordenes, AFolderStandsForTheBaseFilesInIt) {
    imagen();
    guardar("b.txt", {1, 2, 3});
    const auto r = correr({"incorporar", carpeta.ruta().string(), "--json"});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_THAT(
        r.salida,
        HasSubstr("\"muestras\":50,\"nuevas\":50,\"conflictos\":0,\"vacios\":8130,\"descartados\":0}"));
    EXPECT_EQ(std::count(r.salida.begin(), r.salida.end(), '\n'), 1);
}

TEST_F(Ordenes, AFileLongerThanAnImageIsRefused) {
    auto larga = ImagenPrueba().bytes();
    larga.push_back(0);
    EXPECT_EQ(correr({"incorporar", guardar("l.rgt", larga)}).codigo, 1);
}

// A night's folder holds tables and data sheets beside its images.
TEST_F(Ordenes, WhatIsNoMemoryBeyondDoubtMakesNoStation) {
    const auto base = imagen();
    const std::string texto = "[ESTACION]\nEquipo=02080050\n";
    const auto tabla = guardar("a.csv", {texto.begin(), texto.end()});
    const std::string queja =
        tabla +
        ": no es la memoria de un registrador, sino un texto: dé el archivo base (.rgt) de una descarga\n";
    for (const std::vector<std::string>& suyo : {std::vector<std::string>{}, {"--serie", "02080051"}}) {
        std::vector<std::string> orden = {"incorporar", base, tabla};
        orden.insert(orden.end(), suyo.begin(), suyo.end());
        const auto r = correr(orden);
        EXPECT_EQ(r.codigo, 1);
        EXPECT_THAT(r.errores, HasSubstr(queja));
    }
    EXPECT_THAT(correr({"estado"}).salida, Not(HasSubstr("Equi")));
    const auto pagina = (carpeta / "i.html").string();
    const auto r = correr({"informe", "--imagen", tabla, pagina});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.errores, HasSubstr(queja));
    EXPECT_FALSE(std::filesystem::exists(pagina));
}

TEST_F(Ordenes, ANumberWithNibblesAboveNineIsRepeatedAsItIsShown) {
    const auto base = guardar("n.rgt", ImagenPrueba("02080:5?").serie(0, 0, 50).bytes());
    for (const auto* cual : {"02080:5?", "02080A5F"}) {
        const bool mostrado = std::string_view(cual) == "02080:5?";
        EXPECT_EQ(correr({"incorporar", base, "--serie", cual}).codigo, mostrado ? 0 : 2) << cual;
    }
    EXPECT_THAT(correr({"incorporar", base, "--serie", "02080:50"}).errores,
                HasSubstr("la imagen es del registrador 02080:5?, no del 02080:50: quite --serie"));
    EXPECT_THAT(correr({"estado"}).salida, HasSubstr("Estación 02080:5?\n"));
    EXPECT_EQ(correr({"exportar", "-", "--estacion", "02080:5?"}).codigo, 0);
}

TEST_F(Ordenes, AnEmptyFileIsNoImageWhateverNumberItIsGiven) {
    const auto vacio = guardar("v.rgt", {});
    auto borrada = ImagenPrueba().serie(0, 0, 50).bytes();
    std::fill_n(borrada.begin(), 4, std::uint8_t{0xFF});
    const auto sinNumero = guardar("s.rgt", borrada);
    const auto r = correr({"incorporar", vacio, sinNumero, "--serie", "02080050"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.errores, HasSubstr("v.rgt: el archivo base está vacío: descárguelo de nuevo, o dé otro\n"));
    EXPECT_THAT(r.errores, HasSubstr("1 de 2 archivos sin incorporar"));
    EXPECT_EQ(r.salida, sinNumero + ": estación 02080050, 50 muestras, 50 nuevas, 0 en conflicto\n");
    EXPECT_THAT(correr({"informe", carpeta / "i.html", "--imagen", vacio}).errores,
                HasSubstr("el archivo base está vacío"));
}

TEST_F(Ordenes, SilenceEndsWithOneAndTellsTheStation) {
    correr({"incorporar", imagen()});
    ahora += std::chrono::hours(10);
    EXPECT_EQ(correr({"estado", "--silencio", "10"}).codigo, 0);
    const auto r = correr({"estado", "--silencio", "9", "--json"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.errores, HasSubstr("estación 02080050: sin imágenes desde hace 10 horas"));
    EXPECT_THAT(r.salida, HasSubstr("\"intervalo\": 10"));
}

TEST_F(Ordenes, AShortSilenceIsToldInSmallerUnits) {
    correr({"incorporar", imagen()});
    const auto dicho = [&](std::chrono::seconds despues) {
        ahora += despues;
        return correr({"estado", "--silencio", "0"}).errores;
    };
    EXPECT_THAT(dicho(std::chrono::seconds(1)), HasSubstr("desde hace 1 segundo, la última"));
    EXPECT_THAT(dicho(std::chrono::minutes(30)), HasSubstr("desde hace 30 minutos, la última"));
    EXPECT_THAT(dicho(std::chrono::minutes(60)), HasSubstr("desde hace 1 hora, la última"));
}

// Of a partial image, whose station has fallen silent since.
TEST_F(Ordenes, WarningsAreToldToPeopleAndProgramsAndEndWithOneWhereAskedFor) {
    const auto parcial = ImagenPrueba().texto(34, "A\"\\B").serie(0, 0, 50).bytes(10'000);
    ASSERT_EQ(correr({"incorporar", guardar("a.rgt", parcial)}).codigo, 0);
    auto r = correr({"estado", "--avisos"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.errores,
                HasSubstr("estación 02080050: su última imagen es parcial, 10000 bytes de 262144"));
    EXPECT_THAT(r.errores, HasSubstr("avisos: 1"));
    EXPECT_THAT(r.salida, HasSubstr("  Aviso:       su última imagen es parcial"));
    EXPECT_THAT(r.salida, HasSubstr("(parcial)"));

    ahora += std::chrono::hours(40);
    r = correr({"estado", "--avisos", "--json"});
    EXPECT_EQ(r.codigo, 1);
    const auto avisos = nlohmann::json::parse(r.salida)["estaciones"][0]["avisos"];
    ASSERT_EQ(avisos.size(), 2U);
    EXPECT_EQ(avisos[0]["codigo"], "silencio");
    EXPECT_THAT(avisos[0]["texto"].get<std::string>(), HasSubstr("desde hace 40 horas"));
    EXPECT_EQ(avisos[1]["codigo"], "parcial");
    EXPECT_EQ(correr({"estado", "--json"}).codigo, 0) << "nobody asked for a status";
    // Who asks for silence alone is told of nothing else.
    r = correr({"estado", "--silencio", "39"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_EQ(r.errores.find("parcial"), std::string::npos);
    EXPECT_EQ(correr({"estado", "--silencio", "41"}).codigo, 0);

    r = correr({"estado", "--prometheus", "-"});
    EXPECT_EQ(r.codigo, 0);
    const std::string etiquetas = R"({serie="02080050",ubicacion="A\"\\B",codigo=)";
    EXPECT_THAT(r.salida, HasSubstr("# TYPE telvane_historico_aviso gauge\n"));
    EXPECT_THAT(r.salida, HasSubstr("telvane_historico_aviso" + etiquetas + "\"parcial\"} 1\n"));
    EXPECT_THAT(r.salida, HasSubstr("telvane_historico_aviso" + etiquetas + "\"memoria\"} 0\n"));
    // A sample a line, its labels quoted; each name is explained once, before its samples.
    static const std::regex kLinea(
        R"re((# (HELP|TYPE) telvane_historico_[a-z_]+ .+)|(telvane_historico_[a-z_]+\{([a-z]+="([^"\\]|\\["\\n])*",?)+\} -?[0-9]+))re");
    std::istringstream lineas(r.salida);
    for (std::string linea; std::getline(lineas, linea);)
        EXPECT_TRUE(std::regex_match(linea, kLinea)) << linea;
}

TEST_F(Ordenes, WhatANodeExporterIsToldIsExplainedInSpanish) {
    correr({"incorporar", imagen()});
    std::istringstream lineas(correr({"estado", "--prometheus", "-"}).salida);
    const std::regex ingles("\\b(the|of|that|when|how|which|images|samples|last|first|station)\\b",
                            std::regex::icase);
    std::size_t explicadas = 0;
    for (std::string linea; std::getline(lineas, linea);) {
        if (!linea.starts_with("# HELP ")) continue;
        EXPECT_FALSE(std::regex_search(linea, ingles)) << linea;
        ++explicadas;
    }
    EXPECT_EQ(explicadas, 13U);
}

TEST_F(Ordenes, AStationThatIsWellEndsWithZero) {
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    const auto r = correr({"estado", "--avisos", "--json"});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_EQ(r.errores, "");
    EXPECT_TRUE(nlohmann::json::parse(r.salida)["estaciones"][0]["avisos"].empty());
}

TEST_F(Ordenes, WhatWasNotCopiedIsTold) {
    const std::string copia = carpeta / "copia.sqlite";
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    ASSERT_EQ(correr({"copiar", "--a", copia}).codigo, 0);
    EXPECT_EQ(correr({"estado", "--copia", copia, "--avisos"}).codigo, 0);
    ASSERT_EQ(correr({"incorporar", guardar("b.rgt", ImagenPrueba().serie(0, 0, 60).bytes())}).codigo, 0);
    auto r = correr({"estado", "--copia", copia, "--avisos"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.errores, HasSubstr("1 imagen no está en " + copia + ": copie con copiar --a"));
    EXPECT_THAT(correr({"estado", "--copia", copia, "--prometheus", "-"}).salida,
                HasSubstr("telvane_historico_sin_copiar_imagenes{serie=\"02080050\",ubicacion=\"\"} 1\n"));
    // One that cannot be asked does not hide the rest.
    r = correr({"estado", "--copia", carpeta / "no.sqlite"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.salida, HasSubstr("Estación 02080050"));
    EXPECT_THAT(r.errores, HasSubstr("no hay archivo histórico todavía"));
}

TEST_F(Ordenes, NoControlCharacterOfAHeaderIsShown) {
    const auto r = correr(
        {"incorporar", guardar("c.rgt", ImagenPrueba().texto(4, "A\x1b[2J\x9bZ").serie(0, 0, 3).bytes())});
    EXPECT_EQ(r.codigo, 0);
    for (const auto& como :
         {std::vector<std::string>{"estado"}, {"estado", "--json"}, {"estado", "--prometheus", "-"}}) {
        const auto texto = correr(como).salida;
        EXPECT_EQ(texto.find('\x1b'), std::string::npos);
        EXPECT_EQ(texto.find("\u009b"), std::string::npos);
    }
}

TEST_F(Ordenes, APeriodThatEndsBeforeItBeginsIsWrongUsage) {
    correr({"incorporar", imagen()});
    EXPECT_EQ(
        correr({"exportar", "-", "--estacion", "02080050", "--desde", "2025-03-02", "--hasta", "2025-03-01"})
            .codigo,
        2);
    EXPECT_EQ(correr({"exportar", "-", "--estacion", "02080050", "--desde", "2025-02-30"}).codigo, 2);
    EXPECT_EQ(correr({"exportar", carpeta / "x.xls", "--estacion", "02080050", "--calidad"}).codigo, 2);
}

TEST_F(Ordenes, ThePeriodTakesItsBeginningAndLeavesItsEnd) {
    correr({"incorporar", imagen()});
    const auto r = correr({"exportar", "-", "--estacion", "02080050", "--formato", "jsonl", "--desde",
                           "2025-03-01T01:00", "--hasta", "2025-03-01T01:20"});
    EXPECT_EQ(std::count(r.salida.begin(), r.salida.end(), '\n'), 2);
    EXPECT_THAT(r.salida, HasSubstr("{\"hora\":\"2025-03-01T01:00:00\""));
}

std::vector<std::string> campos(const std::string& linea) {
    std::vector<std::string> lista;
    std::istringstream resto(linea.substr(0, linea.find('\r')));
    for (std::string uno; std::getline(resto, uno, ',');) lista.push_back(uno);
    return lista;
}
// The line that begins so.
std::string lineaCon(const std::string& texto, const std::string& comienzo) {
    std::istringstream lineas(texto);
    for (std::string una; std::getline(lineas, una);) {
        if (una.starts_with(comienzo)) return una;
    }
    return "";
}

TEST_F(Ordenes, TheMarksAreTheLastColumnAndTheLimitsAreThoseThatAreNamed) {
    correr({"incorporar", imagen()});
    const auto marcas = [&](std::vector<std::string> mas) {
        mas.insert(mas.begin(), {"exportar", "-", "--estacion", "02080050"});
        const auto tabla = correr(mas).salida;
        const auto nombres = campos(lineaCon(tabla, "Fecha"));
        const auto primera = campos(lineaCon(tabla, "01/03/2025"));
        EXPECT_EQ(nombres.size(), primera.size()) << tabla.substr(0, 2000);
        return std::pair(nombres.empty() ? "" : nombres.back(), primera.empty() ? "" : primera.back());
    };
    EXPECT_NE(marcas({}).first, "Calidad");
    // Its raw counts are all but none, and so stand outside or at a rail.
    const auto usuales = marcas({"--calidad"});
    EXPECT_EQ(usuales.first, "Calidad");
    EXPECT_THAT(usuales.second, testing::StartsWith("humedad:rango temperatura:rango vel_viento:rango"));
    std::ofstream(carpeta / "l.ini") << "[02080050]\nvel_viento.rango = -100 100\n";
    EXPECT_THAT(marcas({"--calidad", "--limites", carpeta / "l.ini"}).second,
                testing::StartsWith("humedad:rango temperatura:rango presion:rango"));
    std::ofstream(carpeta / "l.ini") << "[02080051]\nvel_viento.rango = -100 100\n";
    EXPECT_EQ(marcas({"--calidad", "--limites", carpeta / "l.ini"}), usuales);
}

TEST_F(Ordenes, WhatANodeExporterIsToldIsWhatTheStateSays) {
    correr({"incorporar", imagen(),
            guardar("b.rgt", ImagenPrueba("02080051")
                                 .serie(0, 0, 30)
                                 .serie(30, 600, 30)
                                 .poner(70, registroDeMinuto(10, 9))
                                 .bytes())});
    const auto estaciones = nlohmann::json::parse(correr({"estado", "--json"}).salida)["estaciones"];
    const auto texto = correr({"estado", "--prometheus", "-"}).salida;
    const auto medida = [&](const std::string& nombre, const std::string& serie, const std::string& mas) {
        const auto linea =
            lineaCon(texto, "telvane_historico_" + nombre + "{serie=\"" + serie + "\",ubicacion=\"\"" + mas);
        return linea.empty() ? std::string("none") : linea.substr(linea.rfind(' ') + 1);
    };
    const auto segundos = [](const nlohmann::json& momento) {
        std::tm partes{};
        ::strptime(momento.get<std::string>().c_str(), "%Y-%m-%dT%H:%M:%S", &partes);
        return std::to_string(::timegm(&partes));
    };
    ASSERT_EQ(estaciones.size(), 2U);
    for (const auto& estacion : estaciones) {
        const auto serie = estacion["serie"].get<std::string>();
        for (const auto* nombre : {"muestras", "imagenes", "huecos", "conflictos"})
            EXPECT_EQ(medida(nombre, serie, "}"), estacion[nombre].dump()) << nombre;
        EXPECT_EQ(medida("intervalo_minutos", serie, "}"),
                  estacion["intervalo"].is_null() ? "none" : estacion["intervalo"].dump());
        for (const auto* nombre : {"desde", "hasta", "incorporada"})
            EXPECT_EQ(medida(std::string(nombre) + "_segundos", serie, "}"), segundos(estacion[nombre]));
        std::size_t avisos = 0;
        for (const auto& aviso : estacion["avisos"]) {
            EXPECT_EQ(medida("aviso", serie, ",codigo=" + aviso["codigo"].dump() + "}"), "1");
            ++avisos;
        }
        std::istringstream lineas(texto);
        for (std::string linea; std::getline(lineas, linea);) {
            if (linea.starts_with("telvane_historico_aviso{serie=\"" + serie) && linea.ends_with(" 1"))
                --avisos;
        }
        EXPECT_EQ(avisos, 0U);
    }
    EXPECT_NE(estaciones[1]["conflictos"], 0);
    EXPECT_NE(estaciones[1]["huecos"], 0);
}

// It is told once, where the image first came from.
TEST_F(Ordenes, TheFileThatAnImageCameFromIsTheFirstOne) {
    const auto base = imagen();
    const auto origen = [&] {
        return nlohmann::json::parse(correr({"imagenes", "--json"}).salida)["origen"].get<std::string>();
    };
    ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
    const std::string otra = carpeta / "otra.rgt";
    std::filesystem::rename(base, otra);
    EXPECT_EQ(origen(), base);
    EXPECT_EQ(correr({"incorporar", otra}).codigo, 0);
    EXPECT_EQ(origen(), base);
    ASSERT_EQ(correr({"rehacer"}).codigo, 0);
    EXPECT_EQ(origen(), base);
    ASSERT_EQ(correr({"copiar", "--a", carpeta / "copia.sqlite"}).codigo, 0);
    EXPECT_THAT(correr({"--en", carpeta / "copia.sqlite", "imagenes", "--json"}).salida,
                HasSubstr("\"origen\":\"" + base + "\""));
}

TEST_F(Ordenes, LimitsAreAFileAndAnEmptyOneSetsNone) {
    correr({"incorporar", imagen()});
    const std::vector<std::string> orden = {"exportar", "-", "--estacion", "02080050", "--calidad"};
    const auto con = [&](const std::string& limites) {
        auto toda = orden;
        toda.insert(toda.end(), {"--limites", limites});
        return correr(toda);
    };
    const auto usual = correr(orden).salida;
    EXPECT_EQ(con(guardar("vacio.ini", {})).salida, usual);
    const auto r = con("/dev/null");
    EXPECT_EQ(r.codigo, 1);
    EXPECT_EQ(r.errores,
              "telvane-historico: no se pudo leer /dev/null: no es un archivo. Dé el nombre de uno\n");
}

TEST_F(Ordenes, LimitsThatALinkToNowhereStandsForAreToldAsThat) {
    correr({"incorporar", imagen()});
    const std::vector<std::string> orden = {"exportar", "-", "--estacion", "02080050", "--calidad"};
    std::filesystem::create_symlink("no-hay", carpeta / "calidad.ini");
    const auto dicho = [&](const std::string& archivo) {
        return "telvane-historico: no se pudo leer " + archivo +
               ": es un enlace a algo que no existe. Revise a qué lleva\n";
    };
    auto r = correr(orden);
    EXPECT_EQ(r.codigo, 1);
    EXPECT_EQ(r.errores, dicho(carpeta / "calidad.ini"));
    auto pedidos = orden;
    pedidos.insert(pedidos.end(), {"--limites", carpeta / "calidad.ini"});
    EXPECT_EQ(correr(pedidos).errores, dicho(carpeta / "calidad.ini"));
}

// What is lost is called alike by whoever meets it.
TEST_F(Ordenes, AnImageWithoutItsContentIsToldAlikeByEveryCommand) {
    const auto base = imagen();
    correr({"incorporar", base});
    const auto huella =
        nlohmann::json::parse(correr({"imagenes", "--json"}).salida)["imagen"].get<std::string>();
    sql("DELETE FROM contenidos");
    const auto dicho = "la imagen " + huella + " está dañada en el archivo: falta su contenido; ";
    EXPECT_THAT(correr({"comprobar"}).salida, HasSubstr(dicho));
    EXPECT_THAT(correr({"copiar", "--a", carpeta / "otro.sqlite"}).errores, HasSubstr(dicho));
    EXPECT_THAT(correr({"imagen", huella, "-"}).errores, HasSubstr(dicho));
    EXPECT_THAT(correr({"rehacer"}).errores, HasSubstr(dicho));
}

// Of limits that somebody wrote none counts for nothing without a word.
TEST_F(Ordenes, LimitsThatCannotBeReadWholeAreNotLeftOut) {
    correr({"incorporar", imagen()});
    const std::vector<std::string> orden = {"exportar", "-", "--estacion", "02080050", "--calidad"};
    const auto alLado = carpeta / "calidad.ini";
    constexpr std::size_t kMaximo = 1U << 20;
    const std::string limite = "[02080050]\n";
    const auto conResto = [&](std::size_t cuanto) {
        std::ofstream(alLado) << limite << std::string(cuanto - limite.size() - 1, ';') << '\n';
        return correr(orden);
    };
    EXPECT_EQ(conResto(kMaximo).codigo, 0);
    const auto r = conResto(kMaximo + 1);
    EXPECT_EQ(r.codigo, 1);
    EXPECT_EQ(r.salida, "");
    EXPECT_THAT(r.errores,
                HasSubstr("calidad.ini: los límites tienen más de 1048576 bytes, quite lo que sobra"));
    std::filesystem::remove(alLado);
    std::filesystem::create_symlink("nada", alLado);
    EXPECT_EQ(correr(orden).codigo, 1);
    EXPECT_THAT(correr(orden).errores, HasSubstr("calidad.ini"));
    std::filesystem::remove(alLado);
    EXPECT_EQ(correr(orden).codigo, 0);
}

// What other programs read: the members, in their order, and what stands where nothing is known.
TEST_F(Ordenes, TheMembersOfEveryObjectAreTheOnesThatOthersRead) {
    const auto miembros = [](const std::string& linea) {
        std::vector<std::string> nombres;
        const auto objeto = nlohmann::ordered_json::parse(linea);
        for (const auto& uno : objeto.items()) nombres.push_back(uno.key());
        return nombres;
    };
    const auto base = guardar("a.rgt", ImagenPrueba().serie(0, 0, 50).bytes());
    const auto hecha = correr({"incorporar", base, "--json"}).salida;
    EXPECT_THAT(miembros(hecha),
                testing::ElementsAre("archivo", "estacion", "imagen", "repetida", "parcial", "muestras",
                                     "nuevas", "conflictos", "vacios", "descartados"));
    EXPECT_THAT(hecha, HasSubstr(R"(","repetida":false,"parcial":false,"muestras":50,)"));
    EXPECT_THAT(correr({"incorporar", base, "--json"}).salida,
                HasSubstr(R"("repetida":true,"parcial":false)"));

    const auto lista = correr({"imagenes", "--json"}).salida;
    EXPECT_THAT(miembros(lista), testing::ElementsAre("imagen", "estacion", "bytes", "reloj", "incorporada",
                                                      "origen", "muestras", "retrocesos"));
    EXPECT_THAT(lista, HasSubstr(R"("estacion":"02080050","bytes":262144,"reloj":"2025-03-01T00:00:00",)"));
    EXPECT_THAT(lista, HasSubstr(R"("origen":")" + base + R"(","muestras":50,"retrocesos":0})"));

    const auto estacion = [&](std::size_t cual) {
        const auto estado = nlohmann::ordered_json::parse(correr({"estado", "--json"}).salida);
        return estado.at("estaciones").at(cual).dump();
    };
    const auto suya = estacion(0);
    EXPECT_THAT(miembros(suya),
                testing::ElementsAre("serie", "ubicacion", "usuario", "intervalo", "muestras", "desde",
                                     "hasta", "imagenes", "huecos", "conflictos", "incorporada", "avisos"));
    EXPECT_THAT(suya, HasSubstr(R"("intervalo":10,"muestras":50,"desde":"2025-03-01T00:00:00",)"
                                R"("hasta":"2025-03-01T08:10:00","imagenes":1,"huecos":0,"conflictos":0,)"));

    // Nothing but a header, of a clock and an interval that are none.
    const auto vacia = guardar(
        "v.rgt", ImagenPrueba("02080051").texto(registro_config::kIntervalo, std::string(7, '\xFF')).bytes());
    ASSERT_EQ(correr({"incorporar", vacia}).codigo, 0);
    EXPECT_THAT(correr({"imagenes", "--estacion", "02080051", "--json"}).salida,
                HasSubstr(R"("reloj":null)"));
    EXPECT_THAT(estacion(1),
                HasSubstr(R"("intervalo":null,"muestras":0,"desde":null,"hasta":null,"imagenes":1)"));
}

TEST_F(Ordenes, TwoResultsDoNotGoToOneOutput) {
    correr({"incorporar", imagen()});
    const auto r = correr({"estado", "--json", "--prometheus", "-"});
    EXPECT_EQ(r.codigo, 2);
    EXPECT_EQ(r.salida, "");
    EXPECT_THAT(r.errores, HasSubstr("solo uno de --json y --prometheus puede ir a la salida"));
    EXPECT_EQ(correr({"estado", "--json", "--prometheus", carpeta / "m.prom"}).codigo, 0);
}

TEST_F(Ordenes, AFingerprintMayBeWrittenInCapitals) {
    const auto bytes = ImagenPrueba().serie(0, 0, 50).bytes();
    ASSERT_EQ(correr({"incorporar", guardar("a.rgt", bytes)}).codigo, 0);
    auto huella = textoDe(huellaDe(bytes));
    std::ranges::transform(huella, huella.begin(), [](char c) {
        return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    const auto r = correr({"imagen", huella, "-"});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_EQ(r.salida.size(), bytes.size());
}

// A period's end is a moment, and a stamp has seconds.
TEST_F(Ordenes, ASampleOfTheLastSecondBeforeTheEndIsWithin) {
    BytesMuestra ultima{};
    escribirSello(ultima, momento(2025, 3, 1, 9, 59, 59));
    correr({"incorporar",
            guardar("a.rgt", ImagenPrueba().poner(0, registroDeMinuto(0)).poner(1, ultima).bytes())});
    const auto tabla =
        correr({"exportar", "-", "--estacion", "02080050", "--hasta", "2025-03-01T10:00"}).salida;
    EXPECT_THAT(tabla, HasSubstr("09:59:59"));
    EXPECT_THAT(correr({"exportar", "-", "--estacion", "02080050", "--desde", "2025-03-01T10:00"}).salida,
                testing::Not(HasSubstr("09:59:59")));
}

TEST_F(Ordenes, EveryDistinctRecordIsWrittenWhereItIsAskedFor) {
    const auto serie = ImagenPrueba().serie(0, 0, 5);
    correr({"incorporar", guardar("a.rgt", serie.bytes()),
            guardar("b.rgt", ImagenPrueba(serie).poner(2, registroDeMinuto(20, 9)).bytes()),
            guardar("c.rgt", ImagenPrueba(serie).texto(34, "otra").bytes())});
    const auto lineas = [&](std::vector<std::string> mas) {
        mas.insert(mas.begin(), {"exportar", "-", "--estacion", "02080050", "--formato", "jsonl"});
        const auto tabla = correr(mas).salida;
        return std::pair(std::count(tabla.begin(), tabla.end(), '\n'), tabla);
    };
    const auto cuentan = lineas({});
    const auto todas = lineas({"--todo"});
    EXPECT_EQ(cuentan.first, 5);
    EXPECT_EQ(todas.first, 6);
    EXPECT_EQ(lineas({"--todo", "--calidad"}).first, 6);
    std::istringstream resto(cuentan.second);
    for (std::string una; std::getline(resto, una);) EXPECT_THAT(todas.second, HasSubstr(una + "\n"));
}

// Who may only read needs the files that SQLite keeps beside the archive.
TEST_F(Ordenes, TheFilesBesideTheArchiveStayAndStaySmall) {
    correr({"incorporar", guardar("a.rgt", ImagenPrueba().serie(0, 0, 8000).bytes())});
    for (const auto* sufijo : {"-wal", "-shm"})
        EXPECT_TRUE(std::filesystem::exists(archivo() + sufijo)) << sufijo;
    EXPECT_LE(std::filesystem::file_size(archivo() + "-wal"), 1U << 20);
    correr({"estado"});
    EXPECT_TRUE(std::filesystem::exists(archivo() + "-wal"));
}

TEST_F(Ordenes, AStationsNameIsOfLettersDigitsAndDashes) {
    const auto una = imagen();
    for (const std::string& como : {std::string("a/b"), std::string("ñ"), std::string("a b"),
                                    std::string("a.b"), std::string(65, 'x')}) {
        const auto r = correr({"incorporar", una, "--como", como});
        EXPECT_EQ(r.codigo, 2) << como;
        EXPECT_THAT(r.errores, HasSubstr("debe ser de letras sin tilde, cifras, - y _")) << como;
    }
    EXPECT_EQ(correr({"incorporar", una, "--como", ""}).codigo, 2);
    EXPECT_FALSE(std::filesystem::exists(archivo()));
    EXPECT_THAT(correr({"incorporar", una, "--como", "Norte-2_b"}).salida, HasSubstr("02080050/Norte-2_b,"));
}

// Two images whose SHA-256 begin with the same eight digits.
TEST_F(Ordenes, AnImageIsNotGivenByABeginningThatTwoHave) {
    const auto una = guardar("a.rgt", {0x02, 0x08, 0x00, 0x50, 0x00, 0x00, 0x42, 0x09});
    const auto otra = guardar("b.rgt", {0x02, 0x08, 0x00, 0x50, 0x00, 0x00, 0xA3, 0x99});
    ASSERT_EQ(correr({"incorporar", una, otra}).codigo, 0);
    const auto varias = correr({"imagen", "e8b69837", carpeta / "c.rgt"});
    EXPECT_EQ(varias.codigo, 1);
    EXPECT_THAT(varias.errores, HasSubstr("varias imágenes empiezan por e8b69837: escriba más cifras"));
    EXPECT_FALSE(std::filesystem::exists(carpeta / "c.rgt"));
    EXPECT_EQ(correr({"imagen", "e8b698374", carpeta / "c.rgt"}).codigo, 0);
    EXPECT_EQ(leerArchivo(carpeta / "c.rgt", 100), leerArchivo(una, 100));
}

TEST_F(Ordenes, WhatIsNoArchiveIsToldAndLeftAlone) {
    EXPECT_THAT(correr({"estado"}).errores, HasSubstr("no hay archivo histórico todavía"));
    guardar("h.sqlite", {'h', 'o', 'l', 'a', ' ', 'a', ' ', 't', 'o', 'd', 'o', 's', '\n'});
    EXPECT_THAT(correr({"incorporar", imagen()}).errores, HasSubstr("no es un archivo histórico de Telvane"));
    std::filesystem::remove(archivo());
    sql("CREATE TABLE ajena(a); PRAGMA application_id=7");
    EXPECT_THAT(correr({"incorporar", imagen()}).errores, HasSubstr("no es un archivo histórico de Telvane"));
    std::filesystem::remove(archivo());
    ASSERT_EQ(::mkfifo(archivo().c_str(), 0600), 0);
    EXPECT_THAT(correr({"incorporar", imagen()}).errores, HasSubstr("no es un archivo"));
    std::filesystem::remove(archivo());
    std::filesystem::create_directory(archivo());
    EXPECT_THAT(correr({"incorporar", imagen()}).errores, HasSubstr("es una carpeta"));
}

TEST_F(Ordenes, AnEmptyFileBecomesAnArchive) {
    guardar("h.sqlite", {});
    EXPECT_EQ(correr({"estado"}).codigo, 1);
    EXPECT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    EXPECT_EQ(correr({"comprobar"}).codigo, 0);
}

TEST_F(Ordenes, ANewerVersionIsRefused) {
    correr({"incorporar", imagen()});
    sql("PRAGMA user_version=99");
    EXPECT_THAT(correr({"estado"}).errores, HasSubstr("es de una versión más nueva (99)"));
    EXPECT_EQ(correr({"incorporar", imagen()}).codigo, 1);
}

// This program's steps and one more.
AlmacenSqlite::Opciones conOtroPaso(std::string_view paso) {
    AlmacenSqlite::Opciones opciones{.paciencia = std::chrono::seconds(1)};
    opciones.migraciones.push_back(paso);
    return opciones;
}

TEST_F(Ordenes, AnOlderVersionIsMigratedAfterACopy) {
    correr({"incorporar", imagen()});
    const auto version = static_cast<std::int64_t>(esquema::kMigraciones.size()) + 1;
    {
        const auto nuevo = AlmacenSqlite::abrirParaEscribir(
            archivo(), false, conOtroPaso("ALTER TABLE imagenes ADD COLUMN ficha TEXT"));
        EXPECT_EQ(nuevo->estaciones().size(), 1u);
    }
    BaseSqlite base(archivo(), BaseSqlite::Acceso::lectura, std::chrono::seconds(1));
    EXPECT_EQ(base.numero("PRAGMA user_version"), version + 1);
    EXPECT_EQ(base.numero("SELECT count(*) FROM pragma_table_info('imagenes') WHERE name='ficha'"), 1);
    BaseSqlite copia(archivo() + ".version" + std::to_string(version), BaseSqlite::Acceso::lectura,
                     std::chrono::seconds(1));
    EXPECT_EQ(copia.numero("PRAGMA user_version"), version);
}

TEST_F(Ordenes, TheCopyBeforeAMigrationReplacesNothing) {
    correr({"incorporar", imagen()});
    const auto copia = archivo() + ".version" + std::to_string(std::ssize(esquema::kMigraciones) + 1);
    std::ofstream(copia) << "otra cosa";
    AlmacenSqlite::abrirParaEscribir(archivo(), false,
                                     conOtroPaso("ALTER TABLE imagenes ADD COLUMN ficha TEXT"));
    EXPECT_EQ(leerTodo(copia), "otra cosa");
    // It stands beside it, whole, and nothing else does.
    const auto otra =
        std::filesystem::path(archivo()).concat("_2" + std::filesystem::path(copia).extension().string());
    EXPECT_EQ(BaseSqlite(otra, BaseSqlite::Acceso::lectura, std::chrono::seconds(1))
                  .numero("SELECT count(*) FROM estaciones"),
              1);
    for (const auto& archivo : std::filesystem::directory_iterator(otra.parent_path()))
        EXPECT_NE(archivo.path().extension(), ".parcial");
}

// What a writer that was killed left of its copy is nobody's; of a whole one no second is kept.
TEST_F(Ordenes, AMigrationThatWasKilledLeavesNothingBehind) {
    correr({"incorporar", imagen()});
    const auto copia = archivo() + ".version" + std::to_string(std::ssize(esquema::kMigraciones) + 1);
    BaseSqlite(archivo(), BaseSqlite::Acceso::lectura, std::chrono::seconds(1))
        .ejecutar("VACUUM INTO '" + copia + "'");
    const auto muerto = ::fork();
    if (muerto == 0) ::_exit(0);
    ::waitpid(muerto, nullptr, 0);
    const auto deMuerto = copia + "." + std::to_string(muerto) + ".parcial";
    const std::vector<std::string> ajenos = {copia + "." + std::to_string(::getppid()) + ".parcial",
                                             copia + ".x.parcial", deMuerto + ".otro", archivo() + ".parcial",
                                             carpeta / ("otro" + std::to_string(muerto))};
    for (const auto& resto : {deMuerto, deMuerto + "-journal"}) std::ofstream(resto) << "resto";
    for (const auto& ajeno : ajenos) std::ofstream(ajeno) << "ajeno";
    AlmacenSqlite::abrirParaEscribir(archivo(), false,
                                     conOtroPaso("ALTER TABLE imagenes ADD COLUMN ficha TEXT"));
    std::set<std::string> quedan = {archivo(), archivo() + "-wal", archivo() + "-shm", copia,
                                    carpeta / "a.rgt"};
    quedan.insert(ajenos.begin(), ajenos.end());
    for (const auto& lugar : std::filesystem::directory_iterator(carpeta.ruta()))
        EXPECT_EQ(quedan.erase(lugar.path()), 1u) << lugar.path();
    EXPECT_THAT(quedan, testing::IsSubsetOf({archivo() + "-wal", archivo() + "-shm"}));
}

TEST_F(Ordenes, AMigrationThatFailsChangesNothing) {
    correr({"incorporar", imagen()});
    EXPECT_THROW(AlmacenSqlite::abrirParaEscribir(
                     archivo(), false, conOtroPaso("ALTER TABLE imagenes ADD COLUMN f TEXT; sin sentido")),
                 ErrorAlmacen);
    EXPECT_EQ(correr({"comprobar"}).codigo, 0);
}

// A download's record beside the image, as the console tool writes it.
std::string fichaCon(const std::string& desfase) {
    return R"({"descargada":"2026-11-20T02:17:03Z","puerto":1,"dispositivo":"/dev/ttyUSB0","desfase_s":)" +
           desfase + R"(,"verificada":false,"reintentos":0,"errores_de_linea":0})";
}

TEST_F(Ordenes, HowAnImageCameIsTakenUpAndShown) {
    const auto base = imagen();
    EXPECT_EQ(correr({"incorporar", base}).codigo, 0);
    EXPECT_THAT(correr({"imagenes", "--json"}).salida, testing::Not(HasSubstr("descarga")));
    std::ofstream(carpeta / "a.json") << fichaCon("-75");
    const auto r = correr({"incorporar", base});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_EQ(r.errores, "");
    EXPECT_THAT(correr({"imagenes", "--json"}).salida,
                HasSubstr(R"("retrocesos":0,"descarga":{"descargada":"2026-11-20T02:17:03Z","puerto":1,)"
                          R"("dispositivo":"/dev/ttyUSB0","desfase_s":-75,"verificada":false,)"
                          R"("reintentos":0,"errores_de_linea":0}})"));
    EXPECT_THAT(correr({"imagenes"}).salida,
                HasSubstr("descargada 2026-11-20T02:17:03Z de COM1 (/dev/ttyUSB0), desfase -75 s\n"));
    EXPECT_EQ(correr({"comprobar"}).codigo, 0);
}

TEST_F(Ordenes, ABrokenRecordOfADownloadIsToldAndTheImageGoesIn) {
    std::ofstream(carpeta / "a.rgt.json") << "{\"descargada\":";
    const auto r = correr({"incorporar", imagen()});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_THAT(r.salida, HasSubstr("50 nuevas"));
    EXPECT_THAT(r.errores,
                HasSubstr("a.rgt.json: no es una ficha de descarga; la imagen se incorpora sin ella"));
    std::ofstream(carpeta / "a.json") << fichaCon("-75");
    EXPECT_THAT(
        correr({"incorporar", imagen()}).errores,
        HasSubstr("a.rgt.json: no es una ficha de descarga; la imagen se incorpora con la otra ficha"));
    EXPECT_THAT(correr({"imagenes"}).salida, HasSubstr("desfase -75 s\n"));
}

// What is looked for beside it would have a longer one.
TEST_F(Ordenes, ABaseFileMayHaveTheLongestNameThatThereIs) {
    const auto larga = guardar(std::string(251, 'm') + ".rgt", ImagenPrueba().serie(0, 0, 50).bytes());
    const auto r = correr({"incorporar", larga});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_EQ(r.errores, "");
}

TEST_F(Ordenes, WhoHoldsTheArchiveIsWaitedForAndTold) {
    correr({"incorporar", imagen()});
    BaseSqlite otro(archivo(), BaseSqlite::Acceso::escritura, std::chrono::seconds(1));
    otro.ejecutar("BEGIN IMMEDIATE");
    const auto otra = guardar("b.rgt", ImagenPrueba().serie(0, 0, 60).bytes());
    const auto r = correr({"incorporar", otra});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.errores, HasSubstr("otro programa escribe en él: repita cuando termine"));
    EXPECT_EQ(correr({"estado"}).codigo, 0);
    otro.ejecutar("ROLLBACK");
    EXPECT_EQ(correr({"incorporar", otra}).codigo, 0);
}

TEST_F(Ordenes, ADamagedImageIsNamedAndTheRestGoesOn) {
    correr({"incorporar", imagen()});
    sql("UPDATE contenidos SET datos=zeroblob(100)");
    const auto r = correr({"comprobar"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.salida, HasSubstr(textoDe(huellaDe(ImagenPrueba().serie(0, 0, 50).bytes()))));
    EXPECT_EQ(correr({"incorporar", guardar("b.rgt", ImagenPrueba().serie(0, 0, 60).bytes())}).codigo, 0);
    EXPECT_EQ(correr({"rehacer"}).codigo, 1);
    EXPECT_THAT(correr({"estado", "--json"}).salida, HasSubstr("\"muestras\": 60"));
}

TEST_F(Ordenes, AReportOfAStationWithADamagedImageTellsTheSamplesAndOfTheDamage) {
    correr({"incorporar", imagen()});
    sql("UPDATE contenidos SET datos=zeroblob(100)");
    const auto r = correr({"informe", "-", "--estacion", "02080050"});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_THAT(r.errores, HasSubstr("está dañada en el archivo"));
    EXPECT_THAT(r.salida, HasSubstr("50 de 50 esperadas"));
    EXPECT_THAT(r.salida, HasSubstr("<dt>Registros vacíos de la última imagen</dt><dd><bdi>–</bdi></dd>"));
}

TEST_F(Ordenes, ASampleThatIsNotTheImagesIsFoundAndMadeGood) {
    correr({"incorporar", imagen()});
    sql("UPDATE muestras SET presion=1 WHERE hora=(SELECT max(hora) FROM muestras)");
    const auto r = correr({"comprobar"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.salida, HasSubstr("falta la muestra de 2025-03-01T08:10:00"));
    EXPECT_EQ(correr({"rehacer"}).codigo, 0);
    EXPECT_EQ(correr({"comprobar"}).codigo, 0);
}

TEST_F(Ordenes, ComprobarCountsTheDefectsThatItDoesNotList) {
    correr({"incorporar", imagen()});
    sql("DELETE FROM muestras WHERE hora IN (SELECT hora FROM muestras ORDER BY hora LIMIT 14)");
    const auto r = correr({"comprobar"});
    EXPECT_THAT(r.salida, testing::HasSubstr("falta la muestra de"));
    EXPECT_THAT(r.salida, testing::HasSubstr("y 4 defectos más"));
    EXPECT_EQ(std::ranges::count(r.salida, '\n'), 11);
    EXPECT_THAT(r.errores, testing::HasSubstr("defectos: 14"));
}

TEST_F(Ordenes, ImagenGivesBackEveryByte) {
    const auto ruta = imagen();
    correr({"incorporar", ruta});
    const auto bytes = ImagenPrueba().serie(0, 0, 50).bytes();
    const auto r = correr({"imagen", textoDe(huellaDe(bytes)).substr(0, 8), "-"});
    EXPECT_EQ(r.salida, std::string(bytes.begin(), bytes.end()));
    // It is a base file again: a new one.
    const auto base = (carpeta / "vuelta.rgt").string();
    const auto aArchivo = [&] {
        return correr({"imagen", textoDe(huellaDe(bytes)).substr(0, 8), base}).codigo;
    };
    EXPECT_EQ(aArchivo(), 0);
    EXPECT_EQ(aArchivo(), 1) << "an image that is there is not replaced";
    EXPECT_EQ(correr({"imagen", "00000000", "-"}).codigo, 1);
    for (const auto& mala : {std::string("1234567"), std::string(65, '0'), std::string("1234567g")}) {
        const auto uso = correr({"imagen", mala, "-"});
        EXPECT_EQ(uso.codigo, 2) << mala;
        EXPECT_THAT(uso.errores, testing::HasSubstr("de 8 a 64 cifras")) << mala;
    }
}

TEST_F(Ordenes, NothingIsWrittenOverWhatItIsReadFrom) {
    const auto base = imagen();
    ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
    const auto huella = textoDe(huellaDe(ImagenPrueba().serie(0, 0, 50).bytes()));
    std::filesystem::create_symlink("h.sqlite", carpeta / "enlace.csv");
    std::filesystem::create_hard_link(archivo(), carpeta / "duro.csv");
    guardar("calidad.ini", {});
    std::vector<std::string> salidas = {carpeta / "enlace.csv", carpeta / "duro.csv", carpeta / "calidad.ini",
                                        carpeta / "." / "h.sqlite"};
    for (const auto* sufijo : {"", "-wal", "-shm", "-journal"}) salidas.push_back(archivo() + sufijo);
    for (const auto& salida : salidas) {
        EXPECT_EQ(correr({"exportar", salida, "--estacion", "02080050"}).codigo, 2) << salida;
        EXPECT_EQ(correr({"estado", "--prometheus", salida}).codigo, 2) << salida;
        EXPECT_EQ(correr({"informe", salida, "--estacion", "02080050"}).codigo, 2) << salida;
        EXPECT_EQ(correr({"imagen", huella, salida}).codigo, 2) << salida;
    }
    EXPECT_EQ(correr({"comprobar"}).codigo, 0);
    EXPECT_FALSE(std::filesystem::exists(archivo() + "-journal"));
}

// As it is over a base file: the name is wrong, not the work.
TEST_F(Ordenes, AnotherArchiveOrWhatBelongsToItIsNoOutput) {
    const auto base = imagen();
    ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
    const std::string otro = carpeta / "otro.sqlite";
    ASSERT_EQ(correr({"--en", otro, "incorporar", base}).codigo, 0);
    const auto huella = textoDe(huellaDe(ImagenPrueba().serie(0, 0, 50).bytes()));
    std::filesystem::create_symlink("otro.sqlite", carpeta / "enlace.csv");
    const std::string enlace = carpeta / "enlace.csv";
    for (const auto& salida : {otro, enlace, otro + "-wal", otro + "-journal"}) {
        SCOPED_TRACE(salida);
        for (const auto& orden :
             std::vector<std::vector<std::string>>{{"exportar", salida, "--estacion", "02080050"},
                                                   {"estado", "--prometheus", salida},
                                                   {"informe", salida, "--estacion", "02080050"},
                                                   {"informe", salida, "--imagen", base},
                                                   {"imagen", huella, salida}}) {
            const auto r = correr(orden);
            EXPECT_EQ(r.codigo, 2) << orden.front();
            EXPECT_THAT(r.errores, HasSubstr("ahí está un archivo histórico u otra base de datos"));
        }
    }
    EXPECT_EQ(correr({"--en", otro, "comprobar"}).codigo, 0);
    const auto r = correr({"copiar", "--a", base});
    EXPECT_EQ(r.codigo, 2);
    EXPECT_THAT(r.errores, HasSubstr("no es un archivo histórico de Telvane: nombre otro"));
    EXPECT_EQ(std::filesystem::file_size(base), kBytesMemoria);
}

TEST_F(Ordenes, OneOfAThingIsToldAsOne) {
    auto una = ImagenPrueba().serie(0, 0, 1);
    const auto entera = guardar("una.rgt", una.bytes());
    EXPECT_THAT(correr({"incorporar", entera}).salida, HasSubstr(", 1 muestras, 1 nuevas, 0 en conflicto"))
        << "other programs read this one";
    EXPECT_THAT(correr({"imagenes"}).salida,
                HasSubstr("262144 bytes  reloj 2025-03-01T00:00:00  1 muestra  0 retrocesos"));
    const auto byte = guardar("byte.rgt", {0x02});
    EXPECT_THAT(correr({"incorporar", byte, "--serie", "02080050"}).errores, HasSubstr("parcial, 1 byte de"));
    EXPECT_THAT(correr({"imagenes"}).salida, HasSubstr("1 byte  reloj incorrecto  0 muestras"));
    EXPECT_THAT(correr({"incorporar", carpeta / "no.rgt"}).errores,
                HasSubstr("1 de 1 archivo sin incorporar"));
    EXPECT_THAT(correr({"resumen", "--estacion", "02080050", "--mes", "2025-03"}).salida,
                HasSubstr("Calma (menos de 1.8 km/h): 1 muestra;"));
}

TEST_F(Ordenes, NoTableTakesABaseFilesName) {
    const auto base = imagen();
    ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
    std::filesystem::create_symlink("a.rgt", carpeta / "enlace.csv");
    for (const auto& salida : {base, (carpeta / "nuevo.RGT").string(), (carpeta / "enlace.csv").string()}) {
        EXPECT_EQ(correr({"exportar", salida, "--estacion", "02080050"}).codigo, 2) << salida;
        EXPECT_EQ(correr({"estado", "--prometheus", salida}).codigo, 2) << salida;
        EXPECT_EQ(correr({"informe", salida, "--estacion", "02080050"}).codigo, 2) << salida;
    }
    const auto sinNombre = guardar("c", ImagenPrueba().serie(0, 0, 50).bytes());
    EXPECT_EQ(correr({"informe", sinNombre, "--imagen", sinNombre}).codigo, 2);
    EXPECT_EQ(std::filesystem::file_size(base), kBytesMemoria);
    EXPECT_EQ(std::filesystem::file_size(sinNombre), kBytesMemoria);
}

TEST_F(Ordenes, ATableGoesToADeviceOrAPipeAsItStands) {
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    EXPECT_EQ(correr({"exportar", "/dev/null", "--estacion", "02080050"}).codigo, 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    const auto r = correr({"exportar", "/dev/stdout", "--estacion", "02080050", "--formato", "jsonl"});
    EXPECT_EQ(std::count(r.salida.begin(), r.salida.end(), '\n'), 50);
    ASSERT_EQ(::mkfifo((carpeta / "p").c_str(), 0600), 0);
    const int lector = ::open((carpeta / "p").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(correr({"exportar", carpeta / "p", "--estacion", "02080050", "--formato", "jsonl"}).codigo, 0);
    std::string leido(r.salida.size() + 1, '\0');
    EXPECT_EQ(::read(lector, leido.data(), leido.size()), static_cast<ssize_t>(r.salida.size()));
    leido.resize(r.salida.size());
    EXPECT_EQ(leido, r.salida);
    ::close(lector);
}

TEST_F(Ordenes, TheFormatIsInTheNameInWhateverCase) {
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    ASSERT_EQ(correr({"exportar", carpeta / "t.JSONL", "--estacion", "02080050"}).codigo, 0);
    std::ifstream tabla(carpeta / "t.JSONL");
    EXPECT_EQ(tabla.get(), '{');
}

// As who copies the tables into a new file with another program leaves it.
TEST_F(Ordenes, AnArchiveThatDoesNotSayThatItIsOneIsPutRight) {
    const auto base = imagen();
    ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
    const auto antes = correr({"estado", "--json"}).salida;
    for (const auto* cambio : {"PRAGMA application_id=0; PRAGMA user_version=0", "PRAGMA application_id=0",
                               "PRAGMA user_version=0", "PRAGMA user_version=-1"}) {
        sql(cambio);
        for (const auto& orden : {std::vector<std::string>{"incorporar", base}, {"estado"}, {"comprobar"}}) {
            const auto r = correr(orden);
            EXPECT_EQ(r.codigo, 1) << cambio;
            EXPECT_THAT(r.errores, HasSubstr("h.sqlite: no dice que es un archivo histórico de Telvane, ni "
                                             "de qué versión: repóngalo con rehacer"))
                << cambio;
        }
        EXPECT_EQ(correr({"rehacer"}).errores, "") << cambio;
        EXPECT_EQ(correr({"comprobar"}).codigo, 0) << cambio;
        EXPECT_EQ(correr({"estado", "--json"}).salida, antes) << cambio;
    }
}

TEST_F(Ordenes, WhatHasNotAllTablesOfAnArchiveIsNoneThatDoesNotSayIt) {
    const auto base = imagen();
    for (const std::string numeros : {"PRAGMA application_id=0", "PRAGMA user_version=0",
                                      "PRAGMA user_version=-1", "PRAGMA application_id=7"}) {
        ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
        sql("DROP TABLE testigos;" + numeros);
        for (const auto& orden :
             {std::vector<std::string>{"incorporar", base}, {"rehacer"}, {"estado"}, {"comprobar"}}) {
            const auto r = correr(orden);
            EXPECT_EQ(r.codigo, 1);
            EXPECT_THAT(r.errores, HasSubstr(numeros.find("user") == std::string::npos
                                                 ? "no es un archivo histórico de Telvane: nombre otro"
                                                 : "dice ser de una versión que nunca hubo"));
        }
        std::filesystem::remove(archivo());
    }
}

TEST_F(Ordenes, AnArchivesNameIsAFilesWhateverItLooksLike) {
    const auto base = imagen();
    const auto antes = std::filesystem::current_path();
    std::filesystem::current_path(carpeta.ruta());
    for (const std::string nombre : {":memory:", "file:z.sqlite?mode=memory"}) {
        EXPECT_EQ(correr({"--en", nombre, "incorporar", base}).codigo, 0) << nombre;
        EXPECT_TRUE(std::filesystem::exists(nombre)) << nombre;
        EXPECT_THAT(correr({"--en", nombre, "estado"}).salida, HasSubstr("02080050")) << nombre;
    }
    std::filesystem::current_path(antes);
}

TEST_F(Ordenes, WhateverFollowsFromTheImagesIsLookedAtAndMadeGood) {
    const auto sana = ImagenPrueba().serie(0, 0, 50);
    auto danada = sana;
    danada.reloj(kInicio + std::chrono::hours(1)).poner(5, registroDeMinuto(50, 1));
    const auto a = guardar("a.rgt", sana.bytes());
    const auto b = guardar("b.rgt", danada.bytes());
    ASSERT_EQ(correr({"incorporar", a, b}).codigo, 0);
    ASSERT_EQ(correr({"comprobar"}).codigo, 0);
    for (const std::string cambio :
         {"UPDATE testigos SET ranura=ranura+1",
          "DELETE FROM testigos",
          "DROP TABLE testigos",
          "DROP TABLE muestras",
          "DROP VIEW lecturas",
          "DROP INDEX imagenes_parciales",
          "DROP VIEW lecturas; CREATE VIEW lecturas AS SELECT 1 AS hora",
          "UPDATE estaciones SET evaporacion=1-evaporacion",
          "UPDATE estaciones SET serie='12345678'",
          "UPDATE imagenes SET retrocesos=7",
          "UPDATE imagenes SET muestras=7",
          "UPDATE imagenes SET reloj=7",
          "UPDATE imagenes SET contenida=1",
          "UPDATE estaciones SET huecos=7",
          "UPDATE estaciones SET incorporada=7",
          "UPDATE estaciones SET incorporada='basura'",
          "UPDATE imagenes SET incorporada=7",
          "UPDATE imagenes SET incorporada='basura'",
          "UPDATE imagenes SET incorporada=-1; UPDATE estaciones SET incorporada=-1",
          "UPDATE imagenes SET incorporada=1e18; UPDATE estaciones SET incorporada=1e18",
          "INSERT INTO muestras SELECT "
          "9,hora,auxiliar1,humedad,temperatura,viento,velocidad,radiacion,presion,"
          "lluvia,libre,auxiliar2,evaporacion,resto,cuenta FROM muestras"}) {
        sql(cambio);
        const auto r = correr({"comprobar"});
        EXPECT_EQ(r.codigo, 1) << cambio;
        EXPECT_NE(r.salida, "") << cambio;
        EXPECT_EQ(correr({"rehacer"}).codigo, 0) << cambio;
        EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n") << cambio;
    }
    sql("DELETE FROM estaciones");
    EXPECT_THAT(correr({"comprobar"}).salida,
                HasSubstr("imágenes de una estación que no está: 2: repóngalo con rehacer"));
    EXPECT_THAT(correr({"rehacer"}).errores, HasSubstr("estación 02080050: su nombre se había perdido"));
    EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
}

// A remedy that is told has to work.
TEST_F(Ordenes, AColumnThatIsLostIsNamedWithItsTableAndPutBackWhereTheImagesTellIt) {
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    const auto antes = correr({"exportar", "-", "--estacion", "02080050"}).salida;
    const auto estado = correr({"estado", "--json"}).salida;
    struct Caso {
        std::string cambio;
        std::string falta;
    };
    for (
        const auto& [cambio, falta] : std::vector<Caso>{
            {"ALTER TABLE estaciones DROP COLUMN huecos", "a la tabla estaciones le falta la columna huecos"},
            {"ALTER TABLE estaciones DROP COLUMN cabecera",
             "la tabla estaciones le falta la columna cabecera"},
            {"DROP VIEW lecturas; ALTER TABLE estaciones DROP COLUMN evaporacion",
             "a la tabla estaciones le falta la columna evaporacion"},
            {"ALTER TABLE imagenes DROP COLUMN retrocesos",
             "la tabla imagenes le falta la columna retrocesos"},
            {"DROP INDEX imagenes_por_reloj; ALTER TABLE imagenes DROP COLUMN reloj",
             "a la tabla imagenes le falta la columna reloj"},
            {"ALTER TABLE contenidos DROP COLUMN profundidad",
             "a la tabla contenidos le falta la columna profundidad"},
            {"DROP VIEW lecturas; ALTER TABLE muestras DROP COLUMN cuenta",
             "a la tabla muestras le falta la columna cuenta"},
            {"DROP VIEW lecturas; DROP TABLE muestras; CREATE TABLE muestras(estacion INTEGER, hora INTEGER)",
             "a la tabla muestras le falta la columna humedad"},
            {"DROP TABLE testigos; CREATE TABLE testigos(estacion INTEGER NOT NULL, hora INTEGER NOT NULL, "
             "registro BLOB NOT NULL, ranura INTEGER NOT NULL, imagen BLOB NOT NULL)",
             "a la tabla testigos le falta su clave (estacion,hora,registro,ranura,imagen)"}}) {
        sql(cambio);
        const auto r = correr({"comprobar"});
        EXPECT_EQ(r.codigo, 1) << cambio;
        EXPECT_THAT(r.salida, HasSubstr(falta)) << cambio;
        EXPECT_THAT(r.salida, HasSubstr(": repóngalo con rehacer\n")) << cambio;
        EXPECT_EQ(correr({"rehacer"}).codigo, 0) << cambio;
        EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n") << cambio;
        EXPECT_EQ(correr({"exportar", "-", "--estacion", "02080050"}).salida, antes) << cambio;
        EXPECT_EQ(correr({"estado", "--json"}).salida, estado) << cambio;
    }
}

TEST_F(Ordenes, WhatNothingTellsAgainIsNamedWithWhatToDoAndThatHelps) {
    const auto base = imagen();
    std::ofstream(carpeta / "a.json") << fichaCon("-75");
    struct Caso {
        std::string cambio;
        std::string dicho;
    };
    const std::string deDescargas =
        ": rehacer quita esas fichas de descarga; incorpore después sus .rgt con su .json otra vez";
    const std::string deContenidos =
        ": recupere su copia; si no la tiene, haga rehacer e incorpore otra vez los .rgt guardados";
    for (const auto& [cambio, dicho] : std::vector<Caso>{
             {"ALTER TABLE descargas DROP COLUMN puerto",
              "a la tabla descargas le falta la columna puerto" + deDescargas},
             {"ALTER TABLE descargas RENAME COLUMN puerto TO p",
              "a la tabla descargas le falta la columna puerto: repóngalo con rehacer"},
             {"DROP TABLE descargas", "falta la tabla descargas" + deDescargas},
             {"ALTER TABLE imagenes DROP COLUMN origen",
              "a la tabla imagenes le falta la columna origen: repóngalo con rehacer"},
             {"ALTER TABLE imagenes RENAME TO fotos",
              "la tabla imagenes lleva el nombre fotos: repóngalo con rehacer"},
             {"DROP TABLE imagenes", "falta la tabla imagenes: repóngalo con rehacer"},
             {"DROP VIEW lecturas; ALTER TABLE estaciones DROP COLUMN serie",
              "a la tabla estaciones le falta la columna serie: repóngalo con rehacer"},
             {"ALTER TABLE contenidos DROP COLUMN base",
              "a la tabla contenidos le falta la columna base: repóngalo con rehacer"},
             {"CREATE TABLE otra AS SELECT * FROM contenidos; DROP TABLE contenidos; ALTER TABLE otra RENAME "
              "TO contenidos",
              "a la tabla contenidos le falta su clave (estacion,huella): repóngalo con rehacer"},
             {"ALTER TABLE contenidos DROP COLUMN datos",
              "a la tabla contenidos le falta la columna datos" + deContenidos},
             {"DROP TABLE contenidos", "falta la tabla contenidos" + deContenidos}}) {
        ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
        const auto antes = correr({"imagenes", "--json"}).salida;
        sql(cambio);
        EXPECT_THAT(correr({"comprobar"}).salida, HasSubstr(dicho)) << cambio;
        const bool perdida = dicho.ends_with(deContenidos);
        EXPECT_EQ(correr({"rehacer"}).codigo, perdida ? 1 : 0) << cambio;
        EXPECT_THAT(correr({"estado"}).salida, HasSubstr("Muestras:    50")) << cambio;
        EXPECT_EQ(correr({"incorporar", base}).codigo, 0) << cambio;
        EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n") << cambio;
        if (cambio != "DROP TABLE imagenes" && cambio != "ALTER TABLE imagenes DROP COLUMN origen") {
            EXPECT_EQ(correr({"imagenes", "--json"}).salida, antes) << cambio;
        }
        std::filesystem::remove(archivo());
    }
}

// No statement takes it away: the table is made anew without it.
TEST_F(Ordenes, AKeyThatIsNotOursGoesWithRehacer) {
    const auto base = imagen();
    ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
    const auto antes = correr({"imagenes", "--json"}).salida;
    sql("CREATE TABLE otra(estacion INTEGER NOT NULL REFERENCES estaciones(id),huella BLOB NOT NULL,"
        "bytes INTEGER NOT NULL UNIQUE,reloj INTEGER,desde INTEGER,hasta INTEGER,incorporada INTEGER NOT "
        "NULL,origen TEXT NOT NULL,muestras INTEGER NOT NULL,retrocesos INTEGER NOT NULL,contenida INTEGER "
        "NOT NULL DEFAULT 0,PRIMARY KEY(estacion,huella)) WITHOUT ROWID;"
        "INSERT INTO otra SELECT * FROM imagenes; DROP VIEW lecturas; DROP TABLE imagenes;"
        "ALTER TABLE otra RENAME TO imagenes");
    EXPECT_EQ(correr({"rehacer"}).errores, "");
    EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
    EXPECT_EQ(correr({"imagenes", "--json"}).salida, antes);
    sql("CREATE TABLE otra(estacion INTEGER NOT NULL,huella BLOB NOT NULL,base BLOB UNIQUE,profundidad "
        "INTEGER NOT NULL,datos BLOB NOT NULL,PRIMARY KEY(estacion,huella));"
        "INSERT INTO otra SELECT * FROM contenidos; DROP TABLE contenidos;"
        "ALTER TABLE otra RENAME TO contenidos");
    EXPECT_THAT(correr({"comprobar"}).salida,
                HasSubstr("la tabla contenidos tiene una clave que no es de este programa, (base): repóngalo "
                          "con rehacer\n"));
    EXPECT_EQ(correr({"rehacer"}).errores, "");
    EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
    EXPECT_EQ(correr({"incorporar", base}).codigo, 0);
}

// Two rows that say different things of one image: nobody knows which is right.
TEST_F(Ordenes, ATableWhoseRowsContradictEachOtherIsLeftAsItIs) {
    const auto base = imagen();
    ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
    sql("CREATE TABLE otra AS SELECT * FROM imagenes; INSERT INTO otra SELECT "
        "estacion,huella,bytes,reloj,desde,hasta,incorporada,'otro',muestras,retrocesos,contenida FROM "
        "imagenes; "
        "DROP TABLE imagenes; ALTER TABLE otra RENAME TO imagenes");
    EXPECT_THAT(
        correr({"rehacer"}).errores,
        HasSubstr("la tabla imagenes no es como este programa la hace, y tiene filas que se contradicen: "
                  "quítela con DROP TABLE imagenes, y haga rehacer"));
    sql("DELETE FROM imagenes WHERE origen='otro'; ALTER TABLE imagenes ADD COLUMN nota TEXT");
    EXPECT_THAT(correr({"rehacer"}).errores,
                HasSubstr("la tabla imagenes tiene una columna que no es de este programa, nota: quítela"));
    sql("ALTER TABLE imagenes DROP COLUMN nota");
    EXPECT_EQ(correr({"rehacer"}).errores, "");
    EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
}

TEST_F(Ordenes, WhatHangsOnTheTablesAndIsNotOursIsNamed) {
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    // Of others' tables and views, and of what only makes a query quicker, nothing is said.
    sql("CREATE TABLE mias(a PRIMARY KEY); CREATE VIEW vistas AS SELECT * FROM lecturas; CREATE INDEX rapido "
        "ON "
        "muestras(hora); CREATE TRIGGER suyo AFTER INSERT ON mias BEGIN SELECT 1; END");
    EXPECT_EQ(correr({"comprobar"}).codigo, 0);
    struct Caso {
        std::string cambio;
        std::string dicho;
        std::string remedio;
    };
    for (const auto& [cambio, dicho, remedio] : std::vector<Caso>{
             {"CREATE TRIGGER borrar AFTER INSERT ON muestras BEGIN DELETE FROM muestras; END",
              "muestras tiene un disparador que no es de este programa, borrar: quítelo con DROP TRIGGER "
              "borrar",
              "DROP TRIGGER borrar"},
             // Whatever it does, it does not do it here.
             {"CREATE TRIGGER borrar AFTER INSERT ON muestras BEGIN DELETE FROM contenidos; END",
              "muestras tiene un disparador que no es de este programa, borrar: quítelo con DROP TRIGGER "
              "borrar",
              "DROP TRIGGER borrar"},
             {"CREATE UNIQUE INDEX solo ON testigos(hora) WHERE ranura=1",
              "testigos tiene un índice que no es de este programa, solo: quítelo con DROP INDEX solo",
              "DROP INDEX solo"},
             {"CREATE UNIQUE INDEX solo ON imagenes(origen,bytes)",
              "imagenes tiene un índice que no es de este programa, solo: quítelo con DROP INDEX solo",
              "DROP INDEX solo"},
             {"CREATE UNIQUE INDEX un ON descargas(estacion)",
              "descargas tiene un índice que no es de este programa, un: quítelo con DROP INDEX un",
              "DROP INDEX un"},
             {"CREATE UNIQUE INDEX un ON descargas(estacion+1)",
              "descargas tiene un índice que no es de este programa, un: quítelo con DROP INDEX un",
              "DROP INDEX un"},
             // What is told can be pasted, whatever the name.
             {"CREATE TRIGGER \"mi aviso\" AFTER INSERT ON muestras BEGIN SELECT 1; END",
              "disparador que no es de este programa, mi aviso: quítelo con DROP TRIGGER \"mi aviso\"",
              "DROP TRIGGER \"mi aviso\""},
             {"CREATE TRIGGER \"order\" AFTER INSERT ON muestras BEGIN SELECT 1; END",
              "disparador que no es de este programa, order: quítelo con DROP TRIGGER \"order\"",
              "DROP TRIGGER \"order\""},
             {"CREATE UNIQUE INDEX \"el \"\"uno\"\"\" ON imagenes(origen)",
              "índice que no es de este programa, el \"uno\": quítelo con DROP INDEX \"el \"\"uno\"\"\"",
              "DROP INDEX \"el \"\"uno\"\"\""},
             {"CREATE UNIQUE INDEX \"1\" ON imagenes(origen)",
              "índice que no es de este programa, 1: quítelo con DROP INDEX \"1\"", "DROP INDEX \"1\""},
             {"ALTER TABLE imagenes ADD COLUMN nota TEXT",
              "la tabla imagenes tiene una columna que no es de este programa, nota: quítela",
              "ALTER TABLE imagenes DROP COLUMN nota"}}) {
        sql(cambio);
        EXPECT_THAT(correr({"comprobar"}).salida, HasSubstr(dicho)) << cambio;
        const auto r = correr({"rehacer"});
        EXPECT_EQ(r.codigo, 1) << cambio;
        EXPECT_THAT(r.errores, HasSubstr(dicho)) << cambio;
        sql(remedio);
        EXPECT_EQ(correr({"rehacer"}).codigo, 0) << cambio;
        EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n") << cambio;
    }
}

// SQLite keeps whatever it is given in a column of numbers.
TEST_F(Ordenes, AValueThatIsNoneOfOursIsSeenAndGoesWithRehacer) {
    auto otra = ImagenPrueba().serie(0, 0, 50);
    const auto a = guardar("a.rgt", otra.bytes());
    const auto b = guardar(
        "b.rgt", otra.reloj(kInicio + std::chrono::hours(1)).poner(5, registroDeMinuto(50, 1)).bytes());
    ASSERT_EQ(correr({"incorporar", a, b}).codigo, 0);
    ASSERT_EQ(correr({"comprobar"}).codigo, 0);
    const auto exportado = correr({"exportar", "-", "--estacion", "02080050", "--todo"}).salida;
    const auto imagenes = correr({"imagenes", "--json"}).salida;
    for (const std::string cambio : {"muestras SET humedad=humedad+0.9",
                                     "muestras SET hora=hora+0.5",
                                     "muestras SET humedad=humedad+65536",
                                     "muestras SET lluvia=lluvia+256",
                                     "muestras SET cuenta=-1",
                                     "muestras SET resto='x'",
                                     "muestras SET resto=x'00'",
                                     "muestras SET resto=zeroblob(8)",
                                     "testigos SET ranura=ranura+0.5",
                                     "testigos SET registro=CAST(registro||'x' AS BLOB)",
                                     "testigos SET imagen=CAST(imagen AS TEXT)",
                                     "estaciones SET nombre=CAST(nombre AS BLOB)",
                                     "estaciones SET desde=desde+0.5",
                                     "estaciones SET evaporacion=2",
                                     "estaciones SET evaporacion='x'",
                                     "estaciones SET serie=x'3032303830303530'",
                                     "estaciones SET cabecera=CAST(cabecera AS TEXT)",
                                     "imagenes SET muestras=muestras+0.4",
                                     "imagenes SET reloj=reloj+0.5",
                                     "imagenes SET retrocesos='x'",
                                     "imagenes SET contenida='x'",
                                     "imagenes SET contenida=2",
                                     "imagenes SET origen=CAST(origen AS BLOB)",
                                     "imagenes SET bytes=bytes+0.5",
                                     "imagenes SET huella=CAST(huella AS TEXT)",
                                     "contenidos SET profundidad=0.5",
                                     "contenidos SET datos=CAST(datos AS TEXT)"}) {
        sql("UPDATE " + cambio);
        const auto r = correr({"comprobar"});
        EXPECT_EQ(r.codigo, 1) << cambio;
        EXPECT_THAT(r.salida, HasSubstr("valores que este programa no escribe")) << cambio;
        EXPECT_EQ(correr({"rehacer"}).errores, "") << cambio;
        EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n") << cambio;
        EXPECT_EQ(correr({"exportar", "-", "--estacion", "02080050", "--todo"}).salida, exportado) << cambio;
        EXPECT_EQ(correr({"imagenes", "--json"}).salida, imagenes) << cambio;
    }
}

// What an image is packed upon says how deep it lies.
TEST_F(Ordenes, ADepthThatIsNotThatOfItsChainHidesNoImage) {
    std::vector<std::string> orden{"incorporar"};
    for (int noche = 0; noche < 5; ++noche) {
        const auto bytes =
            ImagenPrueba().reloj(kInicio + std::chrono::hours(noche)).serie(0, 0, 50 + noche).bytes();
        orden.push_back(guardar("n" + std::to_string(noche) + ".rgt", bytes));
    }
    ASSERT_EQ(correr(orden).codigo, 0);
    std::vector<std::string> huellas;
    std::istringstream lineas(correr({"imagenes", "--json"}).salida);
    for (std::string linea; std::getline(lineas, linea);)
        huellas.push_back(nlohmann::json::parse(linea)["imagen"].get<std::string>());
    ASSERT_EQ(huellas.size(), 5U);
    for (const std::string cambio :
         {"profundidad=0 WHERE profundidad=4", "profundidad=99 WHERE profundidad=4", "profundidad=-1",
          "profundidad=7", "profundidad=5 WHERE base IS NULL", "profundidad=2 WHERE profundidad=3"}) {
        sql("UPDATE contenidos SET " + cambio);
        for (const auto& huella : huellas) EXPECT_EQ(correr({"imagen", huella, "-"}).codigo, 0) << cambio;
        const auto r = correr({"comprobar"});
        EXPECT_EQ(r.codigo, 1) << cambio;
        EXPECT_THAT(r.salida, HasSubstr("la profundidad anotada de la imagen ")) << cambio;
        EXPECT_EQ(correr({"rehacer"}).codigo, 0) << cambio;
        EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n") << cambio;
    }
    // What it is packed upon is found by trying.
    sql("UPDATE contenidos SET base=(SELECT huella FROM contenidos WHERE profundidad=4) WHERE profundidad=0");
    EXPECT_THAT(correr({"comprobar"}).salida,
                HasSubstr(" no está guardado como debe: repóngalo con rehacer"));
    EXPECT_EQ(correr({"rehacer"}).codigo, 0);
    EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
    // Without the first one none of them can be read; with it all of them can.
    sql("UPDATE contenidos SET datos=zeroblob(99) WHERE profundidad=0");
    const auto r = correr({"comprobar"});
    for (const auto& huella : huellas)
        EXPECT_THAT(r.salida, HasSubstr("la imagen " + huella + " está dañada en el archivo: "));
    EXPECT_EQ(correr({"rehacer"}).codigo, 1);
    EXPECT_THAT(correr({"incorporar", carpeta / "n0.rgt"}).errores,
                HasSubstr("esa imagen se había perdido en el archivo, y vuelve a estar"));
    EXPECT_EQ(correr({"rehacer"}).codigo, 0);
    EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
}

TEST_F(Ordenes, ADownloadsRecordThatCannotBeIsSeenAndComesAgainWithItsImage) {
    const auto base = imagen();
    std::ofstream(carpeta / "a.json") << fichaCon("-75");
    ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
    const auto imagenes = correr({"imagenes"}).salida;
    ASSERT_EQ(correr({"comprobar"}).codigo, 0);
    for (const std::string cambio :
         {"UPDATE descargas SET puerto=99", "UPDATE descargas SET verificada=7",
          "UPDATE descargas SET reintentos=-5", "UPDATE descargas SET descargada=-999999999999",
          "UPDATE descargas SET descargada='x'", "UPDATE descargas SET desfase_s=1e30",
          "INSERT INTO descargas SELECT estacion,zeroblob(32),descargada,puerto,dispositivo,NULL,0,0,0 FROM "
          "descargas"}) {
        sql(cambio);
        const auto r = correr({"comprobar"});
        EXPECT_EQ(r.codigo, 1) << cambio;
        EXPECT_THAT(r.salida, HasSubstr("rehacer ")) << cambio;
        const auto aun = correr({"imagenes"}).salida + correr({"estado"}).salida;
        EXPECT_THAT(aun, testing::Not(HasSubstr("descargada -"))) << cambio;
        EXPECT_EQ(correr({"rehacer"}).codigo, 0) << cambio;
        EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n") << cambio;
        EXPECT_EQ(correr({"incorporar", base}).codigo, 0) << cambio;
        EXPECT_EQ(correr({"imagenes"}).salida, imagenes) << cambio;
    }
}

TEST_F(Ordenes, AJournalBesideAnArchiveIsToldAsWhatItIs) {
    const auto base = imagen();
    const auto leen = [&](const std::string& cual) {
        for (const auto& orden :
             {std::vector<std::string>{"estado"}, {"comprobar"}, {"copiar", "--a", carpeta / "c"}}) {
            const auto r = correr(orden);
            EXPECT_EQ(r.codigo, 1) << cual << orden[0];
            EXPECT_THAT(r.errores, HasSubstr("hay a su lado un -journal")) << cual << orden[0];
        }
        EXPECT_EQ(correr({"incorporar", base}).codigo, 0) << cual;
        EXPECT_EQ(correr({"comprobar"}).codigo, 0) << cual;
    };
    ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
    guardar("h.sqlite-journal", {'h', 'o', 'l', 'a'});
    leen("another file");
    // As a machine leaves it that loses its power while the first table is made.
    std::filesystem::remove(archivo());
    std::filesystem::remove(archivo() + "-wal");
    std::filesystem::remove(archivo() + "-shm");
    sql("PRAGMA user_version=0; VACUUM");
    guardar("h.sqlite-journal", {'h', 'o', 'l', 'a'});
    leen("half made");
}

TEST_F(Ordenes, NoOutputTakesTheNameOfAFileThatTheArchiveMakesBesideItself) {
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    const auto huella =
        nlohmann::json::parse(correr({"imagenes", "--json"}).salida)["imagen"].get<std::string>();
    for (const std::string sufijo : {"-journal", "-wal", "-shm"}) {
        const auto salida = archivo() + sufijo;
        std::filesystem::remove(salida);
        for (const auto& orden : {std::vector<std::string>{"imagen", huella, salida},
                                  {"exportar", salida, "--estacion", "02080050"},
                                  {"informe", salida, "--estacion", "02080050"},
                                  {"informe", salida, "--imagen", carpeta / "a.rgt"},
                                  {"estado", "--prometheus", salida}}) {
            EXPECT_NE(correr(orden).codigo, 0) << orden[0] << sufijo;
            if (sufijo == "-journal") {
                EXPECT_FALSE(std::filesystem::exists(salida)) << orden[0];
            }
        }
    }
    EXPECT_EQ(correr({"comprobar"}).codigo, 0);
}

TEST_F(Ordenes, AVersionThatWasSetBackIsPutRightByTheNextImage) {
    const auto base = imagen();
    for (const auto* version : {"1", "2"}) {
        ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
        sql(std::string("PRAGMA user_version=") + version);
        EXPECT_THAT(correr({"comprobar"}).errores, HasSubstr("la pone al día el próximo incorporar"));
        EXPECT_EQ(correr({"incorporar", base}).errores, "");
        EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
    }
    sql("PRAGMA user_version=1; DROP TABLE contenidos");
    EXPECT_THAT(correr({"incorporar", base}).errores,
                HasSubstr("falta la tabla contenidos: recupere su copia; si no la tiene, haga rehacer e "
                          "incorpore otra vez"));
}

TEST_F(Ordenes, ACopyThatBringsTwoLoggersOfOneNumberTogetherSaysSo) {
    auto ajena = ImagenPrueba();
    for (std::size_t i = 0; i < 50; ++i) ajena.poner(i, registroDeMinuto(static_cast<int>(i) * 10, 7));
    const std::string otro = carpeta / "otro.sqlite";
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    ASSERT_EQ(correr({"--en", otro, "incorporar", guardar("o.rgt", ajena.bytes())}).codigo, 0);
    auto r = correr({"copiar", "--a", otro});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_THAT(r.errores,
                HasSubstr("estación 02080050: las imágenes copiadas contradicen a otras suyas: parecen de "
                          "dos registradores con el mismo número de serie"));
    EXPECT_THAT(r.errores, HasSubstr("--como NOMBRE, y cópielos a un archivo nuevo; si alguien atrasó el "
                                     "reloj, está bien"));
    // Of what agrees nothing is said.
    ASSERT_EQ(correr({"incorporar", guardar("b.rgt", ImagenPrueba().serie(0, 0, 60).bytes())}).codigo, 0);
    r = correr({"copiar", "--a", carpeta / "tercero.sqlite"});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_EQ(r.errores, "");
}

// They began on different days, so nothing of them stands in the same slots.
TEST_F(Ordenes, AnImageThatContradictsMostOfWhatIsThereIsToldOfOnce) {
    constexpr int kEntera = 300;
    const auto ajena = [&](int cuantas) {
        auto imagen = ImagenPrueba().reloj(kInicio + std::chrono::hours(100));
        for (int i = 0; i < cuantas; ++i)
            imagen.poner(static_cast<std::size_t>(i), registroDeMinuto(1000 + i * 10, 7));
        return guardar("ajena" + std::to_string(cuantas) + ".rgt", imagen.bytes());
    };
    const auto suya = guardar("suya.rgt", ImagenPrueba().serie(0, 0, kEntera).bytes());
    ASSERT_EQ(correr({"incorporar", suya}).errores, "");
    const auto r = correr({"incorporar", ajena(kEntera)});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_THAT(r.errores, HasSubstr("más de la mitad de sus horas ya tenían otros datos en la estación "
                                     "02080050: si es de otro registrador con el mismo número de serie"));
    EXPECT_THAT(r.errores, HasSubstr("--como NOMBRE"));
    // The same again, and its next night, bring hardly anything new.
    EXPECT_EQ(correr({"incorporar", ajena(kEntera), ajena(kEntera + 10)}).errores, "");
    EXPECT_THAT(correr({"copiar", "--a", carpeta / "copia.sqlite"}).errores,
                HasSubstr("contradicen a otras"));
}

// Half of them and one more; of few nothing can be told.
TEST_F(Ordenes, AClockThatIsSetBackIsNoOtherLogger) {
    const auto conAtraso = [&](const std::string& serie, int cuantas, int repetidas) {
        const auto base = ImagenPrueba(serie).serie(0, 0, cuantas).bytes();
        auto otra = ImagenPrueba(serie);
        for (int i = 0; i < cuantas; ++i) {
            const int minuto = (i < repetidas ? i : cuantas + i) * 10;
            otra.poner(static_cast<std::size_t>(i) + 1000, registroDeMinuto(minuto, 7));
        }
        correr({"incorporar", guardar(serie + ".rgt", base)});
        return correr({"incorporar", guardar(serie + "b.rgt", otra.bytes())}).errores;
    };
    EXPECT_EQ(conAtraso("02080050", 100, 50), "");
    EXPECT_THAT(conAtraso("02080051", 100, 51), HasSubstr("más de la mitad"));
    EXPECT_EQ(conAtraso("02080052", 2, 2), "");
    EXPECT_THAT(conAtraso("02080053", 3, 3), HasSubstr("más de la mitad"));
}

// A copy that lacks them is none, and nobody would know.
TEST_F(Ordenes, WhatACopyCannotFindAnyMoreIsTold) {
    const auto base = imagen();
    const auto otra = guardar("b.rgt", ImagenPrueba("02080051").serie(0, 0, 60).bytes());
    int vez = 0;
    const auto copiada = [&](const std::string& dano, const std::vector<std::string>& estacion = {}) {
        const std::string suyo = carpeta / (std::to_string(++vez) + ".sqlite");
        correr({"--en", suyo, "incorporar", base, otra});
        BaseSqlite(suyo, BaseSqlite::Acceso::escritura, std::chrono::seconds(1)).ejecutar(dano);
        std::vector<std::string> orden = {"--en", suyo, "copiar", "--a", suyo + ".copia"};
        orden.insert(orden.end(), estacion.begin(), estacion.end());
        const auto r = correr(orden);
        return std::to_string(r.codigo) + " " + r.salida + r.errores;
    };
    const std::string kSuya = "(SELECT id FROM estaciones WHERE nombre='02080050')";
    EXPECT_EQ(copiada("SELECT 1"), "0 Imágenes copiadas: 2\n");
    const auto una = testing::StartsWith("1 Imágenes copiadas: 1\n");
    EXPECT_THAT(copiada("DELETE FROM estaciones WHERE nombre='02080050'"),
                testing::AllOf(una, HasSubstr("imágenes de una estación que no está: 1: repóngalo"),
                               HasSubstr("contenidos de una estación que no está: 1")));
    EXPECT_THAT(copiada("UPDATE imagenes SET estacion=77 WHERE estacion=" + kSuya),
                testing::AllOf(una, HasSubstr("imágenes de una estación que no está: 1")));
    EXPECT_THAT(copiada("DELETE FROM imagenes WHERE estacion=" + kSuya),
                testing::AllOf(una, HasSubstr("estación 02080050: contenidos de una imagen que no está: 1")));
    EXPECT_THAT(
        copiada("DELETE FROM imagenes WHERE estacion=" + kSuya +
                "; DELETE FROM contenidos WHERE estacion=" + kSuya),
        testing::AllOf(una, HasSubstr("estación 02080050: tenía 1 imagen y quedan 0: vea comprobar")));
    EXPECT_THAT(copiada("DELETE FROM imagenes", {"--estacion", "02080050"}),
                testing::AllOf(HasSubstr("estación 02080050"), testing::Not(HasSubstr("02080051")),
                               testing::StartsWith("1 Imágenes copiadas: 0\n")));
    EXPECT_THAT(copiada("DELETE FROM estaciones"),
                testing::AllOf(HasSubstr("imágenes de una estación que no está: 2"),
                               testing::StartsWith("1 Imágenes copiadas: 0\n")));
}

// What the samples came from may be lost; they themselves are not thrown after it.
TEST_F(Ordenes, ImagesOfWhichOnlyTheContentsAreLeftAreToldAndComeBack) {
    const auto base = imagen();
    const auto corta = guardar("b.rgt", ImagenPrueba().serie(0, 0, 60).bytes(10'000));
    ASSERT_EQ(correr({"incorporar", base, corta}).codigo, 0);
    const auto antes = correr({"exportar", "-", "--estacion", "02080050"}).salida;
    sql("DELETE FROM imagenes");
    const auto r = correr({"comprobar"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.salida, HasSubstr("de 2 de sus imágenes queda el contenido y nada más"));
    EXPECT_EQ(correr({"rehacer"}).codigo, 0);
    EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
    EXPECT_EQ(correr({"exportar", "-", "--estacion", "02080050"}).salida, antes);
    // When it came is known to nobody any more.
    EXPECT_THAT(correr({"imagenes"}).salida, HasSubstr("incorporada 1970-01-01T00:00:00Z"));
    EXPECT_THAT(correr({"incorporar", base}).salida, HasSubstr("50 muestras, 0 nuevas"));

    // What is lost for good takes no sample along.
    sql("DELETE FROM imagenes; UPDATE contenidos SET datos=zeroblob(100) WHERE base IS NULL");
    EXPECT_THAT(correr({"rehacer"}).errores,
                HasSubstr("está dañada en el archivo: no se puede descomprimir"));
    EXPECT_THAT(correr({"estado"}).salida, HasSubstr("Muestras:    60"));
}

TEST_F(Ordenes, ATableThatLacksAColumnSendsToTheCheckWhichKnowsWhatToDo) {
    const auto base = imagen();
    ASSERT_EQ(correr({"incorporar", base}).codigo, 0);
    sql("ALTER TABLE imagenes DROP COLUMN retrocesos");
    EXPECT_THAT(correr({"incorporar", base}).errores,
                HasSubstr("le falta una parte: vea telvane-historico comprobar"));
    EXPECT_THAT(correr({"comprobar"}).salida,
                HasSubstr("le falta la columna retrocesos: repóngalo con rehacer"));
    EXPECT_EQ(correr({"rehacer"}).codigo, 0);
    EXPECT_EQ(correr({"incorporar", base}).codigo, 0);
}

TEST_F(Ordenes, VotesOfAnImageThatIsNotThereAreTold) {
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    sql("INSERT INTO testigos SELECT estacion,hora,x'00',1,x'00' FROM muestras LIMIT 3");
    EXPECT_THAT(correr({"comprobar"}).salida, HasSubstr("testigos de una imagen que no está: 3"));
    EXPECT_EQ(correr({"rehacer"}).codigo, 0);
    EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
}

TEST_F(Ordenes, AFileOfOneByteIsNoArchive) {
    const auto suyo = guardar("uno", {0x78});
    EXPECT_THAT(correr({"--en", suyo, "incorporar", imagen()}).errores,
                HasSubstr("no es un archivo histórico de Telvane"));
    EXPECT_EQ(std::filesystem::file_size(suyo), 1u);
}

TEST_F(Ordenes, AStationBearsTheNumberOfItsImages) {
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    sql("UPDATE estaciones SET nombre='12345678/norte', serie='12345678'");
    EXPECT_THAT(
        correr({"comprobar"}).salida,
        HasSubstr(
            "estación 12345678/norte: su nombre no es el de su número de serie: repóngalo con rehacer"));
    EXPECT_EQ(correr({"rehacer"}).errores, "");
    EXPECT_THAT(correr({"estado"}).salida, HasSubstr("Estación 02080050/norte\n"));
    EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
}

// The work is what was asked for; that nobody hears of it is told once it is done.
TEST_F(Ordenes, WhoCannotTellItsWorkDoesItAllTheSame) {
    const auto a = imagen();
    const auto b = guardar("b.rgt", ImagenPrueba().serie(0, 0, 60).bytes());
    const auto c = guardar("c.rgt", ImagenPrueba().serie(0, 0, 70).bytes());
    const int llena = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    constexpr int kCerrada = -1;
    for (const int salida : {llena, kCerrada}) {
        auto [codigo, errores] = correrEn(salida, {"incorporar", a, carpeta / "no.rgt", b, c});
        EXPECT_EQ(codigo, 1);
        EXPECT_THAT(errores, HasSubstr("1 de 4 archivos sin incorporar; no se pudo escribir en la salida: "));
        EXPECT_THAT(errores,
                    HasSubstr("; lo incorporado está dentro: véalo con telvane-historico imagenes\n"));
        EXPECT_THAT(correr({"estado"}).salida, HasSubstr("Muestras:    70"));

        const auto otro = (carpeta / ("otro" + std::to_string(salida))).string();
        std::tie(codigo, errores) = correrEn(salida, {"copiar", "--a", otro});
        EXPECT_EQ(codigo, 1);
        EXPECT_THAT(errores, HasSubstr("; imágenes copiadas: 3, ya están en el otro archivo"));
        EXPECT_THAT(correr({"--en", otro, "estado"}).salida, HasSubstr("Imágenes:    3"));

        std::tie(codigo, errores) = correrEn(salida, {"comprobar"});
        EXPECT_EQ(codigo, 1);
        EXPECT_THAT(errores, HasSubstr(salida == llena ? "Haga sitio y repita\n"
                                                       : "Ábrala, por ejemplo con >archivo, y repita\n"));
        EXPECT_EQ(correrEn(salida, {"rehacer"}).first, 0) << "it has nothing to tell";
        std::filesystem::remove(archivo());
    }
    ::close(llena);
}

TEST_F(Ordenes, ATruncatedArchiveIsToldAndLeftAsItIs) {
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    const auto entero = std::filesystem::file_size(archivo());
    for (const auto bytes : {std::uintmax_t{50}, std::uintmax_t{100}, std::uintmax_t{4096}, entero / 2,
                             entero - 4096, entero - 100}) {
        const std::string corto = carpeta / ("corto" + std::to_string(bytes));
        std::filesystem::copy_file(archivo(), corto);
        std::filesystem::resize_file(corto, bytes);
        const auto antes = leerArchivo(corto, entero);
        for (const auto& orden : {std::vector<std::string>{"comprobar"}, {"incorporar", imagen()}}) {
            auto toda = orden;
            toda.insert(toda.begin(), {"--en", corto});
            const auto r = correr(toda);
            EXPECT_EQ(r.codigo, 1) << bytes << orden[0];
            EXPECT_THAT(r.errores,
                        testing::AnyOf(HasSubstr("está dañado, o el disco falla al leerlo: repita"),
                                       HasSubstr("no es un archivo histórico de Telvane")))
                << bytes << orden[0];
        }
        EXPECT_EQ(leerArchivo(corto, entero), antes) << bytes;
    }
}

TEST_F(Ordenes, ASignalEndsTheWaitForALock) {
    correr({"incorporar", imagen()});
    BaseSqlite otro(archivo(), BaseSqlite::Acceso::escritura, std::chrono::seconds(1));
    otro.ejecutar("BEGIN IMMEDIATE");
    paciencia = std::chrono::hours(1);
    // It comes once the wait has begun.
    senalEnEspera = [miradas = 0]() mutable { return ++miradas > 2; };
    const auto r = correr({"incorporar", guardar("b.rgt", ImagenPrueba().serie(0, 0, 60).bytes())});
    EXPECT_EQ(r.codigo, 130);
    EXPECT_THAT(r.errores, HasSubstr("interrumpido"));
}

TEST_F(Ordenes, NothingCopiedMakesNoArchive) {
    correr({"incorporar", imagen()});
    EXPECT_EQ(correr({"copiar", "--a", carpeta / "n.sqlite", "--estacion", "99999999"}).codigo, 1);
    EXPECT_FALSE(std::filesystem::exists(carpeta / "n.sqlite"));
    EXPECT_THAT(correr({"copiar", "--a", carpeta / "no" / "n.sqlite"}).errores,
                HasSubstr("no existe la carpeta"));
}

// A name that begins with a dot is one as well. What is not finished, ours or another program's, ends
// otherwise, and some systems put a file of their own beside each.
TEST_F(Ordenes, AFolderStandsForEachBaseFileInIt) {
    imagen();
    guardar(".b.rgt", ImagenPrueba().serie(0, 0, 60).bytes());
    for (const auto* otro :
         {"._a.rgt", "d.rgt.parcial", ".a.rgt.0123abcd", "d.rgt.parcial.anterior", ".rgt.json"})
        guardar(otro, {1, 2, 3});
    std::filesystem::create_directory(carpeta / "c.rgt");
    const auto r = correr({"incorporar", carpeta.ruta().string()});
    EXPECT_EQ(r.codigo, 0) << r.errores;
    EXPECT_THAT(r.salida, testing::MatchesRegex(".*/\\.b\\.rgt: estación .*\n.*/a\\.rgt: estación .*\n"));
}

TEST_F(Ordenes, ANameWithALineEndIsNotAnotherFiles) {
    const auto rara = guardar("a\nb.rgt", ImagenPrueba().serie(0, 0, 50).bytes());
    const auto vista = (carpeta / "a\uFFFDb.rgt").string();
    EXPECT_THAT(correr({"incorporar", rara}).salida, testing::StartsWith(vista + ": estación "));
    EXPECT_THAT(correr({"imagenes"}).salida, HasSubstr(vista));
    EXPECT_THAT(correr({"--en", carpeta / "no\nhay.sqlite", "estado"}).errores,
                HasSubstr("no\uFFFDhay.sqlite: "));
}

// Nor is an empty file left behind that nobody asked for.
TEST_F(Ordenes, AnArchiveThatSqliteCannotWriteBesideIsNotBegun) {
    const auto ruta = imagen();
    // As long as a name may be, and too long for what stands beside it.
    const auto largo = (carpeta / std::string(250, '0')).string();
    EXPECT_THAT(correr({"--en", largo, "incorporar", ruta}).errores,
                HasSubstr("el nombre es demasiado largo"));
    EXPECT_FALSE(std::filesystem::exists(largo));
    const auto tapado = (carpeta / "t.sqlite").string();
    std::filesystem::create_directory(tapado + "-wal");
    EXPECT_THAT(correr({"--en", tapado, "incorporar", ruta}).errores,
                HasSubstr("t.sqlite-wal: es una carpeta"));
    EXPECT_FALSE(std::filesystem::exists(tapado));
}

// Any name is somebody's own.
TEST_F(Ordenes, AStationMayBeCalledAsOneWhoseNameIsLost) {
    ASSERT_EQ(correr({"incorporar", imagen()}).codigo, 0);
    int muestras = 60;
    for (const std::string nombre : {"recuperada", "recuperada-2", "recuperada_1"}) {
        const auto suya = guardar("r.rgt", ImagenPrueba().serie(0, 0, ++muestras).bytes());
        ASSERT_EQ(correr({"incorporar", suya, "--como", nombre}).codigo, 0) << nombre;
        EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n") << nombre;
        EXPECT_EQ(correr({"rehacer"}).errores, "") << nombre;
        EXPECT_EQ(correr({"exportar", "-", "--estacion", "02080050/" + nombre}).codigo, 0);
    }
    EXPECT_EQ(correr({"incorporar", imagen(), "--como", "recuperada.1"}).codigo, 2);
}

// SQLite says of it that files which it wants beside the archive are not there.
TEST_F(Ordenes, AReadOnlyDiskIsToldAsThat) {
    const DiscoChico disco(carpeta / "disco", "4m");
    if (!disco.montado()) GTEST_SKIP() << "aquí no se puede montar";
    const auto ruta = imagen();
    const auto fijo = (carpeta / "disco" / "h.sqlite").string();
    ASSERT_EQ(correr({"--en", fijo, "incorporar", ruta}).codigo, 0);
    for (const auto* suyo : {"-wal", "-shm"}) std::filesystem::remove(fijo + suyo);
    ASSERT_TRUE(disco.soloLectura());
    correr({"incorporar", ruta});
    for (const auto& orden : std::vector<std::vector<std::string>>{
             {"--en", fijo, "incorporar", ruta}, {"--en", fijo, "rehacer"}, {"copiar", "--a", fijo}}) {
        const auto r = correr(orden);
        EXPECT_EQ(r.codigo, 1) << orden.back();
        EXPECT_THAT(r.errores, HasSubstr(fijo + ": no se puede escribir en él: el disco es de solo lectura; "
                                                "monte ese disco para escribir"))
            << orden.back();
    }
}

TEST_F(Ordenes, LimitsMayBeginAsSomeEditorsBeginAFile) {
    correr({"incorporar", imagen()});
    std::ofstream(carpeta / "calidad.ini") << "\xEF\xBB\xBF[02080050]\ntemperatura.salto = 8\n";
    EXPECT_EQ(correr({"exportar", "-", "--estacion", "02080050", "--calidad"}).codigo, 0);
}

TEST_F(Ordenes, APasswordIsInNoMessage) {
    const auto r = correr({"copiar", "--a", "postgresql://yo:secreta@/x?host=/no/hay"});
    EXPECT_EQ(r.codigo, 1);
    correr({"incorporar", imagen()});
    const auto s = correr({"copiar", "--a", "postgresql://yo:secreta@/x?host=/no/hay"});
    EXPECT_EQ(s.codigo, 1);
    EXPECT_THAT(s.errores, HasSubstr("no se puede conectar"));
    EXPECT_EQ((r.errores + s.errores).find("secreta"), std::string::npos);
    for (const auto* mal : {"POSTGRESQL://yo:secreta@h/x", "postgresql:/yo:secreta@h/x",
                            "host=h password=secreta", "postgresql://yo:a@secreta@h/x",
                            "postgresql://yo:secreta@h:puerto/x", "postgresql://yo:a@secreta/1@h/x",
                            "postgresql://yo:secreta@h:99999/x", "postgresql://h/x?no_hay=secreta",
                            "postgresql://h/password=secreta", "postgresql://yo:secreta@h/%"}) {
        for (const auto& orden : {std::vector<std::string>{"copiar", "--a", mal},
                                  {"estado", "--copia", mal},
                                  {"--en", mal, "estado"}}) {
            const auto t = correr(orden);
            EXPECT_EQ(t.codigo, 2);
            EXPECT_THAT(t.errores, testing::ContainsRegex("--(en|a|copia): no se entiende la dirección"))
                << mal;
            EXPECT_EQ(t.errores.find("secreta"), std::string::npos) << t.errores;
        }
    }
}

TEST_F(Ordenes, WhoIsNotReachedIsToldInSpanishWithWhatToDo) {
    for (const std::string direccion : {"postgresql://yo@[::1]:1/x", "postgresql://yo@127.0.0.1:1,[::1]:2/x",
                                        "postgresql://127.0.0.1,127.0.0.1:1/x"})
        EXPECT_THAT(correr({"--en", direccion, "estado"}).errores, HasSubstr(direccion + ": no se puede"));
    EXPECT_THAT(correr({"--en", "postgresql://127.0.0.1:1/x%ff", "estado"}).errores,
                HasSubstr("/x\uFFFD: no"));
    const auto r = correr({"--en", "postgresql://yo@/x?host=/no/hay", "estado"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_EQ(
        r.errores,
        "telvane-historico: postgresql://yo@/no/hay/x: no se puede conectar: nadie atiende ahí: revise la "
        "dirección y el puerto, y que el servidor esté en marcha\n");
}

TEST_F(Ordenes, AMessageIsOneLineWhateverItNames) {
    correr({"incorporar", imagen()});
    const std::string limites = carpeta / "a\nb.ini";
    std::ofstream(limites) << "x";
    const auto larga = guardar("c\nd.rgt", std::vector<std::uint8_t>(kBytesMemoria + 1));
    for (const auto& orden : std::vector<std::vector<std::string>>{
             {"exportar", "-", "--estacion", "a\nb"},
             {"--en", carpeta / "a\nb", "estado"},
             {"--en", carpeta.ruta().string() + "\n", "estado"},
             {"--en", "postgresql:///a%0Ab?host=/no/hay", "estado"},
             {"copiar", "--a", carpeta / "no\nhay" / "h.sqlite"},
             {"exportar", "-", "--estacion", "02080050", "--calidad", "--limites", limites},
             {"informe", "-", "--imagen", larga},
             {"incorporar", carpeta / "e\nf.rgt"}}) {
        const auto r = correr(orden);
        EXPECT_EQ(r.codigo, 1) << r.errores;
        // Of several files the last line is the sum.
        EXPECT_EQ(std::count(r.errores.begin(), r.errores.end(), '\n'), orden.front() == "incorporar" ? 2 : 1)
            << r.errores;
    }
}

TEST_F(Ordenes, ATableMayBeEmptyAndAReportMayNot) {
    correr({"incorporar", imagen()});
    const std::vector<std::string> periodo = {"--estacion", "02080050", "--desde", "2090-01-01"};
    const auto con = [&](std::vector<std::string> orden) {
        orden.insert(orden.end(), periodo.begin(), periodo.end());
        return correr(orden);
    };
    auto r = con({"exportar", carpeta / "t.csv"});
    EXPECT_EQ(r.codigo, 0);
    EXPECT_THAT(r.errores, HasSubstr("no hay muestras en el período pedido"));
    EXPECT_TRUE(std::filesystem::exists(carpeta / "t.csv"));
    r = con({"informe", carpeta / "t.html"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_FALSE(std::filesystem::exists(carpeta / "t.html"));
    EXPECT_EQ(correr({"resumen", "--estacion", "02080050", "--mes", "2090-01"}).codigo, 1);
}

TEST_F(Ordenes, WhatIsAskedForAndMakesNoDifferenceIsTold) {
    correr({"incorporar", imagen()});
    const std::vector<std::string> exportar = {"exportar", "-", "--estacion", "02080050"};
    auto conLimites = exportar;
    conLimites.insert(conLimites.end(), {"--limites", carpeta / "calidad.ini"});
    const auto r = correr(conLimites);
    EXPECT_EQ(r.codigo, 2);
    EXPECT_THAT(r.errores, HasSubstr("añada --calidad"));
    EXPECT_EQ(correr({"incorporar", imagen(), "--como", std::string(65, 'a')}).codigo, 2);
    auto otroNombre = exportar;
    otroNombre[1] = carpeta / "q.pdf";
    EXPECT_THAT(correr(otroNombre).errores, HasSubstr("q.pdf: se escribe como csv"));
    otroNombre.insert(otroNombre.end(), {"--formato", "csv"});
    EXPECT_EQ(correr(otroNombre).errores, "");
}

TEST_F(Ordenes, AnArchiveThatWasOnlyBegunIsNoneYet) {
    sql("PRAGMA journal_mode=WAL; CREATE TABLE a(b); DROP TABLE a");
    const auto r = correr({"estado"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_THAT(r.errores, HasSubstr("no hay archivo histórico todavía"));
    EXPECT_EQ(correr({"incorporar", imagen()}).codigo, 0);
}

TEST_F(Ordenes, NoOutputTakesTheArchivesPlace) {
    const auto base = imagen();
    correr({"incorporar", base});
    const std::string otro = carpeta / "otro.sqlite";
    ASSERT_EQ(correr({"copiar", "--a", otro}).codigo, 0);
    const std::vector<std::vector<std::string>> ordenes = {{"estado", "--copia", otro, "--prometheus", otro},
                                                           {"estado", "--prometheus", otro},
                                                           {"exportar", otro, "--estacion", "02080050"},
                                                           {"informe", otro, "--imagen", base},
                                                           {"informe", archivo(), "--imagen", base}};
    for (const auto& orden : ordenes) {
        const auto r = correr(orden);
        EXPECT_NE(r.codigo, 0) << orden.front();
        EXPECT_NE(r.errores, "") << orden.front();
    }
    EXPECT_EQ(correr({"comprobar"}).codigo, 0);
    EXPECT_EQ(correr({"--en", otro, "comprobar"}).codigo, 0);
}

}  // namespace
}  // namespace telvane
