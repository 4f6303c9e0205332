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

const std::vector<std::uint8_t>& suImagen() {
    static const auto bytes = imagenDe(3);
    return bytes;
}
std::string suHuella() {
    return textoDe(huellaDe(suImagen()));
}

// A day later, beside another file than its own.
ImagenConFicha imagenConFicha() {
    return {.archivo = "a.rgt",
            .bytes = suImagen(),
            .ahora = std::chrono::sys_seconds(std::chrono::seconds(1795141023 + 86400))};
}
FichaDescarga leerla(const std::string& texto) {
    return leerFicha(texto, imagenConFicha());
}

FichaDescarga leida(int segundos = 0) {
    auto f = leerla(ficha());
    f.descargada += std::chrono::seconds(segundos);
    return f;
}

std::string motivoDe(const std::string& texto) {
    try {
        static_cast<void>(leerla(texto));
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
    EXPECT_EQ(leerla(con(ficha(), "-75", "null")).desfase, std::nullopt);
    EXPECT_EQ(leerla(con(ficha(), "/dev/ttyUSB0", "/dev/\\u001b[2J")).dispositivo, "/dev/[2J");
}

TEST(Ficha, OneThatIsNoneIsToldWithWhatIsWrong) {
    for (const auto* texto : {"", "{", "[]", "3", "null", "\xff"})
        EXPECT_EQ(motivoDe(texto), "no es una ficha de descarga") << texto;
    EXPECT_EQ(motivoDe(con(ficha(), "\"puerto\":3,", "")), "le falta \"puerto\"");
    for (const auto& [que, por] :
         std::vector<std::pair<std::string, std::string>>{{"-75", "1.5"},
                                                          {"-75", "\"-75\""},
                                                          {"-75", "18446744073709551615"},
                                                          {"-75", "-99999999999999"},
                                                          {"-75", "4000000000"}})
        EXPECT_EQ(motivoDe(con(ficha(), que, por)), "su \"desfase_s\" no vale") << por;
    for (const auto* momento :
         {"2026-11-20T02:17:03", "2026-11-31T02:17:03Z", "2026-11-20T02:17:60Z", "2026-11-20 02:17:03Z",
          "2026-11-20T02:17:-3Z", "2026-11-20T02:17: 3Z", "1970-01-01T00:00:09Z"})
        EXPECT_EQ(motivoDe(con(ficha(), "2026-11-20T02:17:03Z", momento)), "su \"descargada\" no vale")
            << momento;
    EXPECT_EQ(motivoDe(con(ficha(), "true", "1")), "su \"verificada\" no vale");
    EXPECT_EQ(motivoDe(con(ficha(), ":1,", ":-1,")), "su \"reintentos\" no vale");
    EXPECT_EQ(motivoDe(con(ficha(), "\"/dev/ttyUSB0\"", "7")), "su \"dispositivo\" no vale");
    for (const auto* dispositivo : {"\"\"", "\"\\u0007\""})
        EXPECT_EQ(motivoDe(con(ficha(), "\"/dev/ttyUSB0\"", dispositivo)), "su \"dispositivo\" no vale");
    EXPECT_EQ(motivoDe(con(ficha(), "/dev/ttyUSB0", std::string(5000, 'x'))), "su \"dispositivo\" no vale");
    for (const auto* puerto : {"0", "13", "\"COM1\"", "1.5"})
        EXPECT_EQ(motivoDe(con(ficha(), ":3,", std::string(":") + puerto + ",")), "su \"puerto\" no vale");
    EXPECT_EQ(motivoDe(con(ficha(), "\"02080050\"", "2080050")), "su \"serie\" no vale");
}

TEST(Ficha, OfWhatStandsTwiceNothingIsTaken) {
    EXPECT_EQ(motivoDe(con(ficha(), "\"verificada\":true", "\"verificada\":true,\"verificada\":false")),
              "dice dos veces lo mismo");
    EXPECT_EQ(motivoDe(con(ficha(), "{", "{\"otro\":{\"puerto\":1},")), "") << "a name of something else";
}

TEST(Ficha, ItIsOfTheImageThatItNamesAndOfItsLogger) {
    const auto conNombre = [](const std::string& base, const std::string& imagen = {}) {
        return con(ficha(imagen), "{", "{\"base\":" + base + ",");
    };
    EXPECT_EQ(motivoDe(ficha(std::string(64, 'a'))), "es de otra imagen");
    EXPECT_EQ(motivoDe(ficha(suHuella())), "");
    EXPECT_EQ(motivoDe(con(ficha(suHuella()), "02080050", "02080051")), "es de otra imagen");
    EXPECT_EQ(motivoDe(con(ficha(), "02080050", "02080051")), "es de otra imagen");
    EXPECT_EQ(motivoDe(conNombre("\"b.rgt\"")), "es de otra imagen");
    EXPECT_EQ(motivoDe(conNombre("\"a.rgt\"")), "");
    EXPECT_EQ(motivoDe(conNombre("null")), "");
    EXPECT_EQ(motivoDe(conNombre("7")), "su \"base\" no vale");
    EXPECT_EQ(motivoDe(conNombre("\"b.rgt\"", suHuella())), "") << "files get other names";
    // A header without a number is of whom somebody says.
    const auto borrada = ImagenPrueba("").texto(0, std::string(4, '\xFF')).bytes();
    auto sinNumero = imagenConFicha();
    sinNumero.bytes = borrada;
    EXPECT_EQ(leerFicha(ficha(), sinNumero), leida());
}

TEST(Ficha, NoDownloadIsOfTomorrow) {
    EXPECT_EQ(motivoDe(con(ficha(), "2026-11-20T02:17:03Z", "2026-11-21T03:17:03Z")), "");
    EXPECT_EQ(motivoDe(con(ficha(), "2026-11-20T02:17:03Z", "2026-11-21T03:17:04Z")),
              "su \"descargada\" está en el futuro: mire el reloj del equipo que la descargó");
}

TEST(Ficha, TheClockThatWasSeenIsATimeOrNone) {
    const auto conReloj = [](const std::string& reloj) {
        return con(ficha(), "{", "{\"reloj\":" + reloj + ",");
    };
    EXPECT_EQ(motivoDe(conReloj("\"2026-11-20T02:15:48\"")), "");
    for (const auto* reloj : {"\"2026-11-31T02:15:48\"", "\"2026-11-20T02:15:48Z\"", "\"\"", "5"})
        EXPECT_EQ(motivoDe(conReloj(reloj)), "su \"reloj\" no vale") << reloj;
    EXPECT_EQ(motivoDe(con(conReloj("\"2026-11-20T02:15:48\""), "-75", "null")), "su \"desfase_s\" no vale");
    EXPECT_EQ(motivoDe(con(conReloj("null"), "-75", "null")), "");
}

TEST(Ficha, StandsBesideItsBaseFileUnderEitherName) {
    const CarpetaTemporal carpeta;
    auto imagen = imagenConFicha();
    imagen.archivo = carpeta.ruta() / "a.rgt";
    EXPECT_EQ(fichaJuntoA(imagen).ficha, std::nullopt);
    std::ofstream(carpeta / "a.json") << ficha();
    EXPECT_EQ(fichaJuntoA(imagen).ficha, leida());
    std::ofstream(carpeta / "a.rgt.json") << con(ficha(), "-75", "8");
    EXPECT_EQ(fichaJuntoA(imagen).ficha->desfase, 8);
    EXPECT_THAT(fichaJuntoA(imagen).defectos, testing::IsEmpty());
}

TEST(Ficha, OneThatIsBrokenDoesNotHideTheOther) {
    const CarpetaTemporal carpeta;
    auto imagen = imagenConFicha();
    imagen.archivo = carpeta.ruta() / "a.rgt";
    const auto motivo = testing::ElementsAre(HasSubstr("a.rgt.json"));
    std::ofstream(carpeta / "a.rgt.json") << std::string(70000, ' ') << ficha();
    EXPECT_EQ(fichaJuntoA(imagen).ficha, std::nullopt);
    EXPECT_THAT(fichaJuntoA(imagen).defectos, motivo);
    std::ofstream(carpeta / "a.json") << ficha();
    EXPECT_EQ(fichaJuntoA(imagen).ficha, leida());
    EXPECT_THAT(fichaJuntoA(imagen).defectos, motivo);
    std::filesystem::remove(carpeta / "a.rgt.json");
    std::filesystem::create_directory(carpeta / "a.rgt.json");
    EXPECT_EQ(fichaJuntoA(imagen).ficha, leida());
    EXPECT_THAT(fichaJuntoA(imagen).defectos, motivo);
    std::ofstream(carpeta / "a.json") << "{}";
    EXPECT_EQ(fichaJuntoA(imagen).ficha, std::nullopt);
    EXPECT_THAT(fichaJuntoA(imagen).defectos, testing::SizeIs(2));
}

class FichaGuardada : public testing::TestWithParam<TipoAlmacen> {
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
INSTANTIATE_TEST_SUITE_P(Bancos, FichaGuardada, testing::Values(TipoAlmacen::sqlite, TipoAlmacen::postgresql),
                         nombreDeTipoAlmacen);

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

TEST_P(FichaGuardada, OfTwoArchivesTheYoungestStaysInTheCopy) {
    const auto origen = almacenes.nuevo();
    const auto central = almacenes.nuevo();
    incorporar(*origen, 10, leida(5));
    incorporar(*origen, 20, leida());
    incorporar(*central, 10, leida());
    incorporar(*central, 20, leida(5));
    Archivo suyo(*origen);
    EXPECT_EQ(Archivo(*central).copiarDe(suyo, {}, [] {}).copiadas, 0U);
    EXPECT_EQ(deLa(*central, 10), leida(5)) << "the central one had an older record";
    EXPECT_EQ(deLa(*central, 20), leida(5)) << "the central one had a younger record";
}

// An archive of the first version had no table for it.
TEST_P(FichaGuardada, AnArchiveOfTheFirstVersionIsBroughtUpToDate) {
    const CarpetaTemporal carpeta;
    const auto enSqlite = carpeta.ruta() / "h.sqlite";
    const auto abrir = [&](bool crear) -> std::unique_ptr<Almacen> {
        if (GetParam() == TipoAlmacen::postgresql)
            return std::make_unique<AlmacenPostgres>(ServidorPostgres::unico().url("vieja"), crear,
                                                     std::chrono::seconds(10));
        if (crear) return AlmacenSqlite::abrirParaEscribir(enSqlite, true, {});
        return AlmacenSqlite::abrirParaLeer(enSqlite, {});
    };
    if (GetParam() == TipoAlmacen::postgresql) ServidorPostgres::unico().baseVacia("vieja");
    incorporar(*abrir(true), 10, std::nullopt);
    if (GetParam() == TipoAlmacen::postgresql) {
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
