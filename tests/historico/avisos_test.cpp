// What an operator is told of a fleet of simulated stations, on each of the stores.
#include "historico/avisos.h"

#include <map>

#include "historico/limites_aviso.h"
#include "historico/observacion.h"
#include "tests/historico/banco_historico.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

// The night of this number: its logger's clock, and the same in UTC.
constexpr int kMinutosDeNoche = 24 * 60;
Instante relojDeNoche(int noche) {
    return kInicio + std::chrono::minutes(noche * kMinutosDeNoche);
}
Incorporada utcDeNoche(int noche) {
    return Incorporada(relojDeNoche(noche).time_since_epoch());
}

// A station of the fleet that samples every ten minutes and is visited every night.
struct Visita {
    int noche = 0;
    std::string dispositivo = "/dev/serial/by-id/a";
    std::optional<std::int64_t> desfase = 0;
    bool verificada = false;
    bool conFicha = true;
    std::size_t bytes = kBytesMemoria;
};

class Avisos : public testing::TestWithParam<TipoAlmacen> {
   protected:
    // The memory at that night: all samples since its beginning.
    static ImagenPrueba memoria(const std::string& serie, int noche) {
        return ImagenPrueba(serie).reloj(relojDeNoche(noche)).serie(0, 0, noche * 144);
    }
    void tomar(const ImagenPrueba& imagen, const Visita& v) {
        Procedencia procedencia{"prueba", utcDeNoche(v.noche)};
        if (v.conFicha) {
            procedencia.descarga = FichaDescarga{.descargada = utcDeNoche(v.noche) - 60s,
                                                 .puerto = 1,
                                                 .dispositivo = v.dispositivo,
                                                 .desfase = v.desfase,
                                                 .verificada = v.verificada};
        }
        Archivo(*almacen).incorporar(imagen.bytes(v.bytes), {}, procedencia);
    }
    void visitar(const std::string& serie, const Visita& v) { tomar(memoria(serie, v.noche), v); }
    void noches(const std::string& serie, int desde, int hasta, Visita v = {}) {
        for (v.noche = desde; v.noche <= hasta; ++v.noche) visitar(serie, v);
    }
    // Code and text, by station. The morning after the night.
    using Dichos = std::map<std::string, std::map<std::string, std::string>>;
    Dichos dichos(int noche, std::optional<double> silencio = {}) {
        Lectura lectura(*almacen);
        const Mirada mirada{.ahora = utcDeNoche(noche) + 5h, .horasDeSilencio = silencio, .copia = {}};
        const auto flota = observar(lectura, mirada.ahora);
        const auto avisos = avisosDe(flota, mirada);
        Dichos dichos;
        for (std::size_t i = 0; i < flota.size(); ++i) {
            for (const auto& aviso : avisos[i]) {
                EXPECT_TRUE(
                    dichos[flota[i].estacion.nombre].emplace(codigoDe(aviso.clase), aviso.texto).second)
                    << "one of a kind";
            }
        }
        return dichos;
    }

    Almacenes almacenes{GetParam()};
    std::unique_ptr<Almacen> almacen = almacenes.nuevo();
    const std::string una = "02080050";
    const std::string otra = "02080051";
};

INSTANTIATE_TEST_SUITE_P(Bancos, Avisos, testing::Values(TipoAlmacen::sqlite, TipoAlmacen::postgresql),
                         nombreDeTipoAlmacen);

TEST_P(Avisos, AFleetThatIsWellIsNotSpokenOf) {
    noches(una, 1, 10);
    noches(otra, 1, 10, {.dispositivo = "/dev/serial/by-id/b", .desfase = -60});
    EXPECT_EQ(dichos(10), Dichos{});
}

TEST_P(Avisos, AStationIsSilentByItsOwnRhythmOrByTheHoursAskedFor) {
    noches(una, 1, 10);
    for (const int noche : {1, 8, 15}) visitar(otra, {.noche = noche, .dispositivo = "/dev/serial/by-id/b"});
    // One is late by a night, the other one comes every week.
    auto d = dichos(17);
    EXPECT_THAT(d[una]["silencio"],
                HasSubstr("sin imágenes desde hace 173 horas, la última es de 2025-03-11T00:00:00Z"));
    EXPECT_FALSE(d.contains(otra));
    EXPECT_FALSE(dichos(11).contains(una)) << "29 hours: the night download may still be trying";
    EXPECT_TRUE(dichos(12)[una].contains("silencio"));
    EXPECT_TRUE(dichos(17, 50)[otra].contains("silencio"));
    EXPECT_FALSE(dichos(17, 200).contains(una));
}

// A logger that measures nothing more may be reached every night: nobody hears of it but by this warning.
TEST_P(Avisos, AStationThatBringsTheSameMemoryAgainIsSilent) {
    noches(una, 1, 10);
    tomar(memoria(una, 10), {.noche = 12});
    const auto dicho = HasSubstr("sin imágenes desde hace 53 horas, la última es de 2025-03-11T00:00:00Z");
    EXPECT_THAT(dichos(12)[una]["silencio"], dicho);
    EXPECT_THAT(dichos(12, 52)[una]["silencio"], dicho);
    EXPECT_FALSE(dichos(12, 54)[una].contains("silencio"));
}

// A machine whose clock was wrong once hides nobody's silence until then.
TEST_P(Avisos, AnImageThatCameInTheFutureDoesNotCountForSilence) {
    const auto incorporar = [&](int noche, Incorporada cuando) {
        Archivo(*almacen).incorporar(memoria(una, noche).bytes(), {}, {"prueba", cuando});
    };
    incorporar(9, utcDeNoche(400));
    EXPECT_THAT(dichos(9)[una]["silencio"], HasSubstr("figuran incorporadas después de ahora"));
    EXPECT_THAT(dichos(9, 1000)[una]["silencio"], HasSubstr("hasta el 2026-04-05T00:00:00Z"));
    incorporar(10, utcDeNoche(10));
    EXPECT_FALSE(dichos(10).contains(una));
    EXPECT_THAT(dichos(12)[una]["silencio"],
                HasSubstr("sin imágenes desde hace 53 horas, la última es de 2025-03-11T00:00:00Z"));
    EXPECT_FALSE(dichos(12, 54)[una].contains("silencio"));
    // Another machine's may be ahead by a little.
    incorporar(13, utcDeNoche(12) + 5h + 1h);
    EXPECT_FALSE(dichos(12, 0).contains(una));
}

TEST_P(Avisos, AClockThatIsWrongByMoreThanAMinute) {
    noches(una, 1, 9);
    visitar(una, {.noche = 10, .desfase = 60});
    EXPECT_FALSE(dichos(10).contains(una));
    visitar(una, {.noche = 11, .desfase = 61});
    EXPECT_THAT(dichos(11)[una]["reloj_desviado"], HasSubstr("61 segundos adelantado"));
    EXPECT_EQ(dichos(11)[una].size(), 1U) << "a second in a night is no jump";
    visitar(una, {.noche = 12, .desfase = -3600});
    EXPECT_THAT(dichos(12)[una]["reloj_desviado"], HasSubstr("60 minutos atrasado"));
    EXPECT_THAT(dichos(12)[una]["reloj_desviado"], HasSubstr("horario de verano"));
}

TEST_P(Avisos, AClockThatJumpedBetweenTwoDownloads) {
    noches(una, 1, 9, {.desfase = 40});
    visitar(una, {.noche = 10, .desfase = -30});
    EXPECT_FALSE(dichos(10).contains(una)) << "70 s in a day: as bad as a clock may be";
    visitar(una, {.noche = 11, .desfase = 41});
    EXPECT_THAT(dichos(11)[una]["reloj_salto"], HasSubstr("saltó 71 segundos hacia delante"));
    visitar(una, {.noche = 12, .desfase = 40});
    EXPECT_FALSE(dichos(12).contains(una)) << "told once";
}

TEST_P(Avisos, AClockThatIsNoDateOrLiesInTheFuture) {
    noches(una, 1, 9);
    visitar(una, {.noche = 10, .desfase = std::nullopt});
    EXPECT_TRUE(dichos(10)[una].contains("reloj_incorrecto"));
    noches(otra, 1, 9);
    tomar(memoria(otra, 10).reloj(momento(2064, 1, 1)), {.noche = 10, .conFicha = false});
    EXPECT_THAT(dichos(10)[otra]["reloj_incorrecto"], HasSubstr("en el futuro (2064-01-01T00:00:00)"));
    visitar(otra, {.noche = 11});
    EXPECT_FALSE(dichos(11).contains(otra)) << "what came since has a time of its own";
}

TEST_P(Avisos, AClockIsNotInTheFutureOfATimeThatIsLost) {
    Archivo(*almacen).incorporar(memoria(una, 10).bytes(), {}, {"prueba", kPrimeraIncorporada});
    EXPECT_EQ(dichos(10)[una].size(), 1U);
    EXPECT_TRUE(dichos(10)[una].contains("silencio"));
}

// A clock that began anew makes every image older than those before it.
TEST_P(Avisos, AClockThatBeganAnewIsHeardOfAllTheSame) {
    noches(una, 1, 9);
    for (int noche = 10; noche < 25; ++noche) {
        tomar(ImagenPrueba(una)
                  .reloj(momento(2001, 1, 1) + std::chrono::days(noche))
                  .serie(0, -9'000'000, 50 + noche),
              {.noche = noche, .desfase = -763'000'000});
    }
    const auto d = dichos(24);
    ASSERT_TRUE(d.contains(una));
    EXPECT_TRUE(d.at(una).contains("reloj_desviado"));
    EXPECT_FALSE(d.at(una).contains("silencio"));
}

TEST_P(Avisos, AMemoryThatWillNotDoForTwoMoreDownloads) {
    // 8178 places: full after 56.8 days.
    noches(una, 46, 54);
    EXPECT_FALSE(dichos(54).contains(una));
    visitar(una, {.noche = 55});
    EXPECT_THAT(dichos(55)[una]["memoria"], HasSubstr("se llena hacia 2025-04-26T"));
    // Visited every week, it is told earlier.
    for (const int noche : {21, 28, 35, 42, 49}) visitar(otra, {.noche = noche, .dispositivo = "b"});
    EXPECT_TRUE(dichos(49)[otra].contains("memoria"));
}

TEST_P(Avisos, AMemoryThatIsFullAndOneThatWritesOverItself) {
    auto llena = [&](int noche) { return ImagenPrueba(una).reloj(relojDeNoche(noche)).serie(0, 0, 8178); };
    tomar(llena(60), {.noche = 60});
    tomar(llena(61), {.noche = 61});
    EXPECT_THAT(dichos(61)[una]["memoria"], HasSubstr("está llena desde 2025-04-26T"));
    // The other one goes round: as long as it is visited, nothing is lost.
    const auto vuelta = [&](int noche) {
        const int ultima = noche * 144;
        ImagenPrueba imagen(otra);
        imagen.reloj(relojDeNoche(noche));
        for (int i = ultima - 8178; i < ultima; ++i)
            imagen.poner(static_cast<std::size_t>(i % 8178), registroDeMinuto(i * 10));
        return imagen;
    };
    tomar(vuelta(60), {.noche = 60, .dispositivo = "b"});
    EXPECT_FALSE(dichos(60).contains(otra));
    tomar(vuelta(61), {.noche = 61, .dispositivo = "b"});
    EXPECT_FALSE(dichos(61).contains(otra));
    tomar(vuelta(100), {.noche = 100, .dispositivo = "b"});
    tomar(vuelta(139), {.noche = 139, .dispositivo = "b"});
    EXPECT_THAT(dichos(139)[otra]["memoria"], HasSubstr("se descarga cada 39 días"));
}

TEST_P(Avisos, AnotherLoggerAtItsPort) {
    noches(una, 1, 10, {.dispositivo = "tcp://servidor:4001"});
    noches(otra, 11, 13, {.dispositivo = "tcp://servidor:4001"});
    EXPECT_THAT(
        dichos(13)[una]["otro_registrador"],
        HasSubstr(
            "en su puerto (tcp://servidor:4001) responde desde 2025-03-11T23:59:00Z la estación 02080051"));
    EXPECT_FALSE(dichos(13).contains(otra));
}

TEST_P(Avisos, OneNameInTwoMachinesIsNoOtherLogger) {
    noches(una, 1, 10);
    noches(otra, 3, 30);
    // It fell silent; the other one had been there before, and long enough for nobody to see it come.
    EXPECT_FALSE(dichos(12)[una].contains("otro_registrador"));
    EXPECT_FALSE(dichos(30)[una].contains("otro_registrador"));
    // A new one does not take the place of one that is heard.
    noches(una, 11, 30);
    visitar("02080052", {.noche = 30});
    EXPECT_EQ(dichos(30), Dichos{});
}

TEST_P(Avisos, ADownloadThatWasNotVerifiedAsTheOthersWere) {
    noches(una, 1, 9, {.verificada = true});
    visitar(una, {.noche = 10});
    EXPECT_TRUE(dichos(10)[una].contains("sin_verificar"));
    noches(otra, 1, 10, {.dispositivo = "b"});
    EXPECT_FALSE(dichos(10).contains(otra)) << "nobody asks for it there";
}

TEST_P(Avisos, APartialImageAndTheWholeOneThatMakesItSuperfluous) {
    noches(una, 1, 9);
    visitar(una, {.noche = 10, .bytes = 20'000});
    EXPECT_THAT(dichos(10)[una]["parcial"], HasSubstr("20000 bytes de 262144"));
    visitar(una, {.noche = 11});
    EXPECT_FALSE(dichos(11).contains(una));
}

TEST_P(Avisos, ConflictsThatTheLastImageBrought) {
    noches(una, 1, 9);
    // Two records of before are spoilt on the line.
    const auto danada = memoria(una, 10).poner(5, registroDeMinuto(50, 1)).poner(7, registroDeMinuto(70, 1));
    tomar(danada, {.noche = 10});
    EXPECT_THAT(dichos(10)[una]["conflictos"], HasSubstr("2 horas en conflicto"));
    visitar(una, {.noche = 11});
    EXPECT_TRUE(dichos(11)[una].contains("conflictos")) << "the right ones came back";
    visitar(una, {.noche = 12});
    EXPECT_FALSE(dichos(12).contains(una));
}

TEST_P(Avisos, GapsThatTheLastImageBrought) {
    const auto conHueco = [&](int noche, int desde) {
        return ImagenPrueba(una)
            .reloj(relojDeNoche(noche))
            .serie(0, 0, desde)
            .serie(static_cast<std::size_t>(desde), (desde + 6) * 10, noche * 144 - desde - 6);
    };
    noches(una, 1, 3);
    tomar(conHueco(4, 3 * 144 + 20), {.noche = 4});
    EXPECT_THAT(dichos(4)[una]["huecos"], HasSubstr("trae 1 hueco:"));
    tomar(conHueco(5, 3 * 144 + 20), {.noche = 5});
    EXPECT_FALSE(dichos(5).contains(una)) << "the last image brought none";
}

TEST_P(Avisos, AGapAtTheEndOfThePreviousImageIsNew) {
    noches(una, 1, 3);
    auto imagen = memoria(una, 3);
    imagen.reloj(relojDeNoche(4)).serie(3 * 144, (3 * 144 + 30) * 10, 100);
    tomar(imagen, {.noche = 4});
    EXPECT_TRUE(dichos(4)[una].contains("huecos"));
}

TEST_P(Avisos, ImagesThatTheOtherArchiveLacks) {
    noches(una, 1, 3);
    noches(otra, 1, 2, {.dispositivo = "b"});
    const auto central = almacenes.nuevo();
    static_cast<void>(Archivo(*central).copiarDe(*std::make_unique<Archivo>(*almacen), una, [] {}));
    noches(una, 4, 5);
    Lectura lectura(*almacen);
    Lectura suya(*central);
    auto flota = observar(lectura, utcDeNoche(5));
    compararCon(flota, lectura, suya);
    EXPECT_EQ(flota[0].sinCopiar, 2);
    EXPECT_EQ(flota[1].sinCopiar, 2);
    const auto avisos = avisosDe(flota, {.ahora = utcDeNoche(5), .horasDeSilencio = {}, .copia = "central"});
    ASSERT_FALSE(avisos[0].empty());
    EXPECT_THAT(avisos[0].back().texto, HasSubstr("2 imágenes no están en central"));
}

// What is said follows from the images, not from the order in which they came.
TEST_P(Avisos, NothingHangsOnTheOrderOfIncorporation) {
    std::vector<Visita> visitas;
    for (int noche = 1; noche <= 12; ++noche)
        visitas.push_back(
            {.noche = noche, .desfase = noche * 20, .verificada = noche < 12, .conFicha = noche % 3 != 0});
    std::set<Dichos> vistos;
    for (int vez = 0; vez < 4; ++vez) {
        almacen = almacenes.nuevo();
        for (const auto& visita : visitas) visitar(una, visita);
        auto d = dichos(12);
        EXPECT_FALSE(d.empty());
        vistos.insert(d);
        std::rotate(visitas.begin(), visitas.begin() + 5, visitas.end());
        std::reverse(visitas.begin(), visitas.begin() + 6);
    }
    EXPECT_EQ(vistos.size(), 1U);
}

TEST(CodigosDeAviso, StandAtTheirOwnPlaces) {
    for (std::size_t i = 0; i < kCodigosAviso.size(); ++i)
        EXPECT_EQ(static_cast<std::size_t>(kCodigosAviso[i].clase), i);
}

}  // namespace
}  // namespace telvane
