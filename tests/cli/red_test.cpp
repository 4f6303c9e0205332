// The console tool at a server of the tests whose connections are reset, in the middle of each command.
#include <algorithm>

#include <fmt/format.h>

#include "link/protocolo.h"
#include "tests/apoyo/puerto_en_red.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

// Whether the server goes with the connection, or is there for the next one.
using Trato = PuertoEnRed::Trato;

class Corte : public CliPrueba {
   protected:
    // Once, before this byte of the exchange leaves and after so many that the logger sent before.
    void cortarEn(Intercambio intercambio, std::size_t indice, std::size_t antes = 0) {
        puertos.manipular(kPuerto, [=, this](const ByteSaliente& saliente) {
            auto efecto = Efecto::pasar(saliente.byte);
            const bool aqui = !cortada && saliente.intercambio == intercambio && saliente.indice == indice &&
                              saliente.numero >= antes;
            cortada = cortada || aqui;
            efecto.colgar = aqui && trato == Trato::parte;
            efecto.errorLectura = aqui && trato == Trato::junta;
            return efecto;
        });
    }
    Resultado enRed(Trato como, std::vector<std::string> orden) {
        cortada = false;
        trato = como;
        PuertoEnRed red(bucle, puertos, kPuerto, como);
        losPuertos = &red;
        orden.insert(orden.begin(), {"--com", "3=tcp://127.0.0.1:4001"});
        auto r = correr(orden);
        losPuertos = &puertos;
        EXPECT_TRUE(cortada);
        EXPECT_LT(r.duracion, 60s);
        puertos.manipular(kPuerto, {});
        puertos.reponer(kPuerto);
        bucle.avanzar(5s);
        return r;
    }
    // The server went as well: nothing is left but to say so.
    void exigirCorte(const Resultado& r) {
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_THAT(r.errores, HasSubstr(kSeCorto));
        EXPECT_THAT(r.errores, HasSubstr(": revise la red y el servidor de puertos"));
    }
    std::vector<std::uint8_t> imagen() { return puertos.maquina(kPuerto).imagen(); }
    std::string base() { return carpeta / "a.rgt"; }

    static constexpr auto kSeCorto = "se cortó la conexión con 127.";
    Trato trato = Trato::parte;
    bool cortada = false;
};

TEST_F(Corte, AReadingIsToldOrTakenAgain) {
    const std::vector<std::vector<std::string>> ordenes = {{"configuracion"},
                                                           {"descargar", "--base", base()}};
    for (const auto& orden : ordenes) {
        cortarEn(Intercambio::lectura, 50);
        const auto r = enRed(Trato::parte, orden);
        exigirCorte(r);
        EXPECT_THAT(r.salida, IsEmpty());
        EXPECT_THAT(nombresEn(carpeta.ruta()), IsEmpty());
        cortarEn(Intercambio::lectura, 50);
        const auto otra = enRed(Trato::junta, orden);
        EXPECT_EQ(otra.codigo, CodigoSalida::hecho) << otra.errores;
        EXPECT_THAT(otra.errores, HasSubstr(kSeCorto));
    }
    EXPECT_TRUE(leerTodo(base()) == comoTexto(imagen()));
}

TEST_F(Corte, ASearchFindsNobodyAndPointsToTheNetwork) {
    for (const auto como : {Trato::parte, Trato::junta}) {
        cortarEn(Intercambio::reposo, 10);
        const auto r = enRed(como, {"buscar"});
        EXPECT_EQ(r.codigo, CodigoSalida::sinRegistrador);
        EXPECT_THAT(r.errores, HasSubstr("revise la red, el servidor de puertos y su dirección"));
    }
}

TEST_F(Corte, WhatALiveReadingSaidBeforeStands) {
    for (const auto como : {Trato::parte, Trato::junta}) {
        cortarEn(Intercambio::reposo, 10, 3 * kBytesMarco);
        const auto r = enRed(como, {"en-linea", "--json", "--cuenta", "5"});
        exigirCorte(r);
        EXPECT_EQ(std::ranges::count(r.salida, '\n'), 2) << r.salida;
    }
}

// The blocks that came are on the disk, and the next download goes on from nothing less.
TEST_F(Corte, ADownloadKeepsEveryBlockThatCame) {
    constexpr std::size_t kBloques = 100;
    for (const auto como : {Trato::parte, Trato::junta}) {
        cortarEn(Intercambio::descarga, 2 + kBloques * kBytesBloque);
        const auto r = enRed(como, {"descargar", "--base", base(), "--reintentos", "0"});
        exigirCorte(r);
        EXPECT_THAT(r.errores, HasSubstr(fmt::format("quedan {} de {} bloques", kBloques, kBloquesMemoria)));
        EXPECT_TRUE(leerTodo(base() + ".parcial") == comoTexto(imagen()).substr(0, kBloques * kBytesBloque));
    }
    const auto r = correr({"descargar", "--base", base()});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_TRUE(leerTodo(base()) == comoTexto(imagen()));
    EXPECT_THAT(nombresEn(carpeta.ruta()), testing::ElementsAre("a.rgt"));
}

TEST_F(Corte, AnotherAttemptTakesTheWholeMemory) {
    cortarEn(Intercambio::descarga, 2 + 100 * kBytesBloque);
    const auto r = enRed(Trato::junta, {"descargar", "--base", base()});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, AllOf(HasSubstr(kSeCorto), HasSubstr("Se vuelve a empezar")));
    EXPECT_TRUE(leerTodo(base()) == comoTexto(imagen()));
}

// The logger takes nothing before the last byte.
TEST_F(Corte, AWriteThatBreaksChangesNothing) {
    for (const auto como : {Trato::parte, Trato::junta}) {
        const auto antes = imagen();
        cortarEn(Intercambio::escritura, 40);
        const auto r = enRed(como, {"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"});
        exigirCorte(r);
        EXPECT_THAT(r.errores, HasSubstr("el registrador no cambia nada hasta el último"));
        EXPECT_TRUE(imagen() == antes);
    }
}

TEST_F(Corte, ABackupThatWasMadeBeforeIsWholeAndNamed) {
    const std::string respaldo = carpeta / "respaldo.rgt";
    cortarEn(Intercambio::escritura, 40);
    const auto r =
        enRed(Trato::junta, {"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", respaldo});
    exigirCorte(r);
    EXPECT_THAT(r.errores, HasSubstr("El respaldo de la memoria está en " + respaldo));
    EXPECT_TRUE(leerTodo(respaldo) == comoTexto(imagen()));
}

TEST_F(Corte, ANumberThatIsNotSentWholeIsTheOldOne) {
    for (const auto como : {Trato::parte, Trato::junta}) {
        const auto antes = imagen();
        cortarEn(Intercambio::serie, 3);
        const auto r = enRed(como, {"serie", "02080051"});
        exigirCorte(r);
        EXPECT_THAT(r.errores, HasSubstr("el registrador no cambia nada hasta el último"));
        EXPECT_TRUE(imagen() == antes);
    }
}

}  // namespace
}  // namespace telvane
