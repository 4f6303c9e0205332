#include "cli/registrador_cli.h"

#include <vector>

#include <fmt/format.h>

#include "cli/codigos_salida.h"
#include "data/memoria.h"
#include "data/pasos_descarga.h"
#include "link/siguiendo.h"
#include "loggerconfig/pasos_escritura.h"
#include "loggerconfig/pasos_lectura.h"

namespace telvane {

namespace {

using namespace std::chrono_literals;

constexpr int kUltimoPuerto = 12;
// For an answer to the probe, and for one to a second probe after it.
constexpr auto kEsperaSonda = 2s;
constexpr auto kEsperaSegundaSonda = 1s;
constexpr auto kEsperaMarco = 2s;
constexpr auto kPrimeraRespuesta = std::chrono::duration<double>(kEsperaRespuesta);
// The rest of an answer that was recognised before its end.
constexpr auto kResto = 100ms;

constexpr std::string_view kNoResponde = "el registrador no responde: revise el cable y la alimentación";

[[noreturn]] void fueraDePaso(const char* que) {
    throw ErrorIntercambio(CodigoSalida::fallo, fmt::format("error en la comunicación: {}", que));
}

}  // namespace

int RegistradorCli::buscar() {
    bool hayPuertos = false;
    for (numero_ = 1; numero_ <= kUltimoPuerto; ++numero_) {
        atenderSenal(entorno_);
        if (!puertos_.existe(numero_)) continue;
        hayPuertos = true;
        consola_.progreso(fmt::format("Buscando el registrador en COM{}...", numero_));
        try {
            if (sondear(numero_)) return numero_;
        } catch (const ErrorPuerto& error) {
            consola_.aviso(fmt::format("COM{}: {}", numero_, error.what()));
        }
    }
    throw ErrorCli(
        CodigoSalida::sinRegistrador,
        hayPuertos ? "no hay conexión con el registrador: revise el cable y la alimentación, y los puertos "
                     "con \"telvane-cli puertos\""
                   : "no hay ningún puerto serie que probar: conecte el adaptador o indíquelo con --com "
                     "1=DISPOSITIVO");
}

// Any answer of enough bytes is the logger's. One that is still in an exchange that somebody broke off takes
// the first probe for a part of it; by the second it has given that up.
bool RegistradorCli::sondear(int numero) {
    LineaRegistrador linea(entorno_, puertos_, numero);
    linea.enviar(kSonda);
    bool responde = linea.esperarBytes(kUmbralSonda, kEsperaSonda);
    if (!responde) {
        while (linea.esperan() > 0) linea.tomar();
        linea.enviar(kSonda);
        responde = linea.esperarBytes(kUmbralSonda, kEsperaSegundaSonda);
    }
    // What is still on its way must not reach the next opening of the port.
    if (responde) linea.esperarBytes(kBytesMarco, kResto);
    return responde;
}

void RegistradorCli::despertar() {
    LineaRegistrador linea(entorno_, puertos_, numero_);
    linea.enviar(kSonda);
    linea.pausar(kDespertar);
}

// Waits for this many bytes and takes the first. contador: 1 for the first answer of an exchange.
std::uint8_t RegistradorCli::recibir(LineaRegistrador& linea, std::int32_t contador, std::size_t cuantos) {
    if (contador == 1) {
        if (linea.esperarBytes(cuantos, std::chrono::duration_cast<Bucle::Duracion>(kPrimeraRespuesta))) {
            return linea.tomar();
        }
        throw ErrorIntercambio(CodigoSalida::sinRegistrador, std::string(kNoResponde));
    }
    if (linea.esperarBytes(cuantos, espera_)) return linea.tomar();
    throw ErrorIntercambio(CodigoSalida::fallo,
                           "el registrador dejó de responder a mitad de la comunicación");
}

DatosConfig RegistradorCli::leerConfiguracion() {
    despertar();
    LineaRegistrador linea(entorno_, puertos_, numero_);
    linea.enviar(kApertura);
    DatosConfig datos;
    for (std::int32_t contador = 1; contador <= kContadorFinLectura; ++contador) {
        const auto byte = recibir(linea, contador);
        // A byte too many would shift every field behind it.
        if (linea.esperan() > 0) fueraDePaso("el registrador envió bytes de más");
        const auto paso = pasoLectura(contador, byte, datos);
        // The record is whole with its last byte, whether or not its echo still leaves.
        const auto responder = [&] { linea.enviar(paso.respuesta.value()); };
        if (contador < kContadorFinLectura) {
            responder();
        } else {
            siguiendo(responder);
        }
        if (paso.hito == HitoLectura::horaMala) consola_.aviso("hora mal");
        if (paso.hito == HitoLectura::fechaMala || paso.hito == HitoLectura::finFechaMala)
            consola_.aviso("fecha mal");
    }
    return datos;
}

void RegistradorCli::descargar(const AlBloque& alBloque) {
    despertar();
    LineaRegistrador linea(entorno_, puertos_, numero_);
    linea.enviar(kApertura);
    bool bloques = false;
    std::size_t numero = 0;
    for (std::int32_t contador = 1; contador <= kUltimoBloque; ++contador) {
        const auto primero = recibir(linea, contador, bloques ? kBytesBloque : 1);
        const auto paso = pasoDescarga(contador, kUltimoBloque, primero);
        switch (paso.hito) {
            case HitoDescarga::saludo:
                break;
            case HitoDescarga::comienzo:
                bloques = true;
                break;
            case HitoDescarga::bloque:
                recibirBloque(linea, primero, numero++, alBloque);
                break;
            case HitoDescarga::error:
                fueraDePaso("respuesta inesperada del registrador");
        }
        if (paso.respuesta) linea.enviar(*paso.respuesta);
    }
}

void RegistradorCli::recibirBloque(LineaRegistrador& linea, std::uint8_t primero, std::size_t numero,
                                   const AlBloque& alBloque) {
    std::array<std::uint8_t, kBytesBloque> bloque{primero};
    for (std::size_t i = 1; i < bloque.size(); ++i) bloque[i] = linea.tomar();
    // The line carries no checksum: a byte left over is the only sign that something went wrong.
    if (linea.esperan() > 0) fueraDePaso("sobran bytes después de un bloque");
    const auto acusar = [&] { linea.enviar(kApertura); };
    if (numero + 1 == kBloquesMemoria) {
        // The image is whole, whether or not its last acknowledge still leaves.
        siguiendo(acusar);
    } else {
        try {
            acusar();
        } catch (const ErrorPuerto&) {
            alBloque(numero, bloque);
            throw;
        }
    }
    // The next block travels while this one goes to the disk.
    alBloque(numero, bloque);
}

void RegistradorCli::escribirConfiguracion(std::string_view mensaje) {
    despertar();
    LineaRegistrador linea(entorno_, puertos_, numero_);
    linea.enviar(kApertura);
    PasoEscritura paso;
    for (std::int32_t contador = 1; !paso.fin; ++contador) {
        recibir(linea, contador);
        paso = pasoEscritura(contador, mensaje);
        linea.enviar(paso.respuesta.value());
    }
}

void RegistradorCli::escribirSerie(const SerieEmpacada& serie) {
    despertar();
    LineaRegistrador linea(entorno_, puertos_, numero_);
    linea.enviar(kApertura);
    PasoSerie paso;
    for (std::int32_t contador = 0; !paso.fin; ++contador) {
        recibir(linea, contador + 1);
        paso = pasoSerie(contador, serie);
        linea.enviar(paso.respuesta.value());
    }
}

RegistradorCli::EnLinea::EnLinea(RegistradorCli& registrador)
    : linea_(registrador.entorno_, registrador.puertos_, registrador.numero_) {}

RegistradorCli::Marco RegistradorCli::EnLinea::pedir() {
    linea_.enviar(kSonda);
    if (!linea_.esperarBytes(kBytesMarco, kEsperaMarco)) {
        throw ErrorIntercambio(CodigoSalida::sinRegistrador, std::string(kNoResponde));
    }
    Marco marco;
    for (auto& byte : marco) byte = linea_.tomar();
    // A frame has neither a checksum nor an end mark: bytes left over would shift the next one.
    while (linea_.esperan() > 0) linea_.tomar();
    return marco;
}

}  // namespace telvane
