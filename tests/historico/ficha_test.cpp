// How an image came from its logger: taken up with the image, kept, copied, shown.
#include "historico/ficha.h"

#include <fstream>

#include "tests/historico/banco_historico.h"

namespace telvane {
namespace {

using testing::HasSubstr;

std::vector<std::uint8_t> imagenDe(int cuantas) {
    return ImagenPrueba().serie(0, 0, cuantas).bytes();
}

std::string ficha(const std::string& imagen = {}) {
    return R"({"descargada":"2026-11-20T02:17:03Z","puerto":3,"dispositivo":"/dev/ttyUSB0","desfase_s":-75,)"
           R"("verificada":true,"reintentos":1,"errores_de_linea":2,"serie":"02080050")" +
           (imagen.empty() ? "" : ",\"imagen\":\"" + imagen + "\"") + "}\n";
}

FichaDescarga leida(int segundos = 0) {
    auto f = leerFicha(ficha(), {});
    f.descargada += std::chrono::seconds(segundos);
    return f;
}

std::string motivoDe(const std::string& texto) {
    try {
        static_cast<void>(leerFicha(texto, {}));
    } catch (const ErrorFicha& error) {
        return error.what();
    }
    return "";
}

std::string con(std::string texto, const std::string& que, const std::string& por) {
    return texto.replace(texto.find(que), que.size(), por);
}

TEST(Ficha, SaysHowTheImageCame) {
    const auto f = leida();
    EXPECT_EQ(f.descargada.time_since_epoch().count(), 1795141023);
    EXPECT_EQ(f.puerto, 3);
    EXPECT_EQ(f.dispositivo, "/dev/ttyUSB0");
    EXPECT_EQ(f.desfase, -75);
    EXPECT_TRUE(f.verificada);
    EXPECT_EQ(f.reintentos, 1);
    EXPECT_EQ(f.erroresDeLinea, 2);
    EXPECT_EQ(leerFicha(con(ficha(), "-75", "null"), {}).desfase, std::nullopt);
    EXPECT_EQ(leerFicha(con(ficha(), "/dev/ttyUSB0", "/dev/\\u001b[2J"), {}).dispositivo, "/dev/[2J");
}

TEST(Ficha, OneThatIsNoneIsToldWithWhatIsWrong) {
    for (const auto* texto : {"", "{", "[]", "3", "null", "\xff"})
        EXPECT_EQ(motivoDe(texto), "no es una ficha de descarga") << texto;
    EXPECT_EQ(motivoDe(con(ficha(), "\"puerto\":3,", "")), "le falta \"puerto\"");
    for (const auto& [que, por] : std::vector<std::pair<std::string, std::string>>{
             {"-75", "1.5"}, {"-75", "\"-75\""}, {"-75", "18446744073709551615"}, {"-75", "-99999999999999"}})
        EXPECT_EQ(motivoDe(con(ficha(), que, por)), "su \"desfase_s\" no vale") << por;
    for (const auto* momento : {"2026-11-20T02:17:03", "2026-11-31T02:17:03Z", "2026-11-20T02:17:60Z",
                                "2026-11-20 02:17:03Z", "2026-11-20T02:17:-3Z", "2026-11-20T02:17: 3Z"})
        EXPECT_EQ(motivoDe(con(ficha(), "2026-11-20T02:17:03Z", momento)), "su \"descargada\" no vale")
            << momento;
    EXPECT_EQ(motivoDe(con(ficha(), "true", "1")), "su \"verificada\" no vale");
    EXPECT_EQ(motivoDe(con(ficha(), ":1,", ":-1,")), "su \"reintentos\" no vale");
    EXPECT_EQ(motivoDe(con(ficha(), "\"/dev/ttyUSB0\"", "7")), "su \"dispositivo\" no vale");
    EXPECT_EQ(motivoDe(ficha(std::string(64, 'a'))), "es de otra imagen");
    EXPECT_EQ(motivoDe(ficha(textoDe(Huella{}))), "");
}

TEST(Ficha, StandsBesideItsBaseFileUnderEitherName) {
    const CarpetaTemporal carpeta;
    const auto base = carpeta.ruta() / "a.rgt";
    EXPECT_EQ(fichaJuntoA(base, {}), std::nullopt);
    std::ofstream(carpeta / "a.json") << ficha();
    EXPECT_EQ(fichaJuntoA(base, {}), leida());
    std::ofstream(carpeta / "a.rgt.json") << con(ficha(), "-75", "8");
    EXPECT_EQ(fichaJuntoA(base, {})->desfase, 8);
    std::ofstream(carpeta / "a.rgt.json") << std::string(70000, ' ') << ficha();
    EXPECT_THROW(fichaJuntoA(base, {}), ErrorFicha);
    std::filesystem::remove(carpeta / "a.rgt.json");
    std::filesystem::create_directory(carpeta / "a.rgt.json");
    EXPECT_THROW(fichaJuntoA(base, {}), ErrorFicha);
}

class FichaGuardada : public testing::TestWithParam<Banco> {
   protected:
    Almacenes almacenes{GetParam()};

    static Incorporacion incorporar(Almacen& almacen, int cuantas, std::optional<FichaDescarga> descarga) {
        return Archivo(almacen).incorporar(
            imagenDe(cuantas), {},
            {.origen = "prueba", .incorporada = Incorporada(std::chrono::seconds(1)), .descarga = descarga});
    }
    static std::optional<FichaDescarga> deLa(Almacen& almacen, int cuantas) {
        const Transaccion transaccion(almacen, Almacen::Modo::lectura);
        return almacen.descarga(almacen.estacion("02080050").value().id, huellaDe(imagenDe(cuantas)));
    }
};
INSTANTIATE_TEST_SUITE_P(Bancos, FichaGuardada, testing::Values(Banco::sqlite, Banco::postgresql),
                         nombreDeBanco);

TEST_P(FichaGuardada, IsKeptAsItWas) {
    const auto almacen = almacenes.nuevo();
    auto sinReloj = leida();
    sinReloj.desfase.reset();
    sinReloj.verificada = false;
    incorporar(*almacen, 10, leida());
    incorporar(*almacen, 20, sinReloj);
    incorporar(*almacen, 30, std::nullopt);
    EXPECT_EQ(deLa(*almacen, 10), leida());
    EXPECT_EQ(deLa(*almacen, 20), sinReloj);
    EXPECT_EQ(deLa(*almacen, 30), std::nullopt);
    Lectura lectura(*almacen);
    EXPECT_THAT(lectura.descargas(lectura.estacion("02080050")),
                testing::UnorderedElementsAre(testing::Pair(huellaDe(imagenDe(10)), leida()),
                                              testing::Pair(huellaDe(imagenDe(20)), sinReloj)));
}

TEST_P(FichaGuardada, MayComeLaterAndInAnyOrderAndTheYoungestStays) {
    const auto una = almacenes.nuevo();
    const auto otra = almacenes.nuevo();
    incorporar(*una, 10, std::nullopt);
    EXPECT_TRUE(incorporar(*una, 10, leida(5)).repetida);
    EXPECT_TRUE(incorporar(*una, 10, leida()).repetida);
    incorporar(*otra, 10, leida());
    incorporar(*otra, 10, leida(5));
    EXPECT_EQ(deLa(*una, 10), leida(5));
    EXPECT_EQ(deLa(*otra, 10), leida(5));
}

TEST_P(FichaGuardada, IsCopiedAlsoForAnImageThatWasThere) {
    const auto origen = almacenes.nuevo();
    const auto central = almacenes.nuevo();
    incorporar(*origen, 10, leida());
    incorporar(*origen, 20, leida(5));
    incorporar(*origen, 30, std::nullopt);
    incorporar(*central, 20, std::nullopt);
    Archivo suyo(*origen);
    EXPECT_EQ(Archivo(*central).copiarDe(suyo, {}, [] {}).copiadas, 2U);
    for (const int cuantas : {10, 20, 30}) EXPECT_EQ(deLa(*central, cuantas), deLa(*origen, cuantas));
    EXPECT_EQ(Archivo(*central).copiarDe(suyo, {}, [] {}).copiadas, 0U);
    Archivo suyoDelCentral(*central);
    EXPECT_EQ(Archivo(*origen).copiarDe(suyoDelCentral, {}, [] {}).copiadas, 0U);
    EXPECT_EQ(deLa(*origen, 30), std::nullopt);
}

// An archive of the first version had no table for it.
TEST_P(FichaGuardada, AnArchiveOfTheFirstVersionIsBroughtUpToDate) {
    const CarpetaTemporal carpeta;
    const auto enSqlite = carpeta.ruta() / "h.sqlite";
    const auto abrir = [&](bool crear) -> std::unique_ptr<Almacen> {
        if (GetParam() == Banco::postgresql)
            return std::make_unique<AlmacenPostgres>(ServidorPostgres::unico().url("vieja"), crear,
                                                     std::chrono::seconds(10));
        if (crear) return AlmacenSqlite::abrirParaEscribir(enSqlite, true, {});
        return AlmacenSqlite::abrirParaLeer(enSqlite, {});
    };
    if (GetParam() == Banco::postgresql) ServidorPostgres::unico().baseVacia("vieja");
    incorporar(*abrir(true), 10, std::nullopt);
    if (GetParam() == Banco::postgresql) {
        ServidorPostgres::unico().ejecutar(
            "vieja", "DROP TABLE telvane.descargas; UPDATE telvane.esquema SET version=1");
    } else {
        BaseSqlite(enSqlite, BaseSqlite::Acceso::escritura, std::chrono::seconds(1))
            .ejecutar("DROP TABLE descargas; PRAGMA user_version=1");
    }
    try {
        abrir(false);
        ADD_FAILURE() << "an older version was read";
    } catch (const ErrorAlmacen& error) {
        EXPECT_THAT(error.what(), HasSubstr("versión anterior (1): la pone al día el próximo incorporar"));
    }
    const auto alDia = abrir(true);
    EXPECT_TRUE(incorporar(*alDia, 10, leida()).repetida);
    EXPECT_EQ(deLa(*alDia, 10), leida());
    EXPECT_EQ(deLa(*abrir(false), 10), leida());
}

}  // namespace
}  // namespace telvane
