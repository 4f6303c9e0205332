#include "cli/registrador_cli.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/error_intercambio.h"
#include "cli/reloj_registrador.h"
#include "consola/codigos_salida.h"
#include "data/memoria.h"
#include "data/pasos_descarga.h"
#include "link/siguiendo.h"
#include "loggerconfig/pasos_escritura.h"
#include "loggerconfig/pasos_lectura.h"
#include "platform/contados.h"

namespace telvane {

namespace {

// The first one may have been asked for while an earlier answer was on its way.
constexpr int kIntentosMarco = 1 + CanalesPropios::kVeces;

// A line that does not fall quiet is asked all the same.
constexpr auto kEsperaCallada = 3 * kMarcoTardio;

// What is waited for a byte too many behind a record, at the least.
constexpr std::chrono::milliseconds kSobraTardia{20};

constexpr std::string_view kCableMudo = "el cable y la alimentación";
constexpr std::string_view kRedMuda =
    "la red, el servidor de puertos y su dirección, y el cable y la alimentación del registrador";

// Names of the ports that could not be tried, by why.
using Rehusados = std::map<MotivoPuerto, std::vector<std::string>>;

// Names of the ports that are no serial ports, not there, or not to be opened: each was told on its own line.
std::vector<std::string> inservibles(const Rehusados& rehusados) {
    std::vector<std::string> todos;
    for (const auto motivo : {MotivoPuerto::noExiste, MotivoPuerto::noEsTerminal, MotivoPuerto::noSeAbre,
                              MotivoPuerto::lineaInvalida}) {
        const auto suyos = rehusados.find(motivo);
        if (suyos != rehusados.end()) todos.insert(todos.end(), suyos->second.begin(), suyos->second.end());
    }
    return todos;
}

// Where a port was heard in vain, or failed while it was heard.
struct Callados {
    bool porCable = false;
    bool enRed = false;
};

std::string queRevisar(const Callados& callados) {
    if (!callados.enRed) return std::string(kCableMudo);
    if (!callados.porCable) return std::string(kRedMuda);
    return fmt::format("{}; del que llega por la red, {}", kCableMudo, kRedMuda);
}

// The cable is to blame only where a port was heard.
std::string porQueNoHay(bool hayPuertos, const Callados& callados, const Rehusados& rehusados) {
    if (!hayPuertos)
        return "no hay ningún puerto serie que probar: conecte el adaptador o indíquelo con --com "
               "1=DISPOSITIVO";
    const auto ocupados = rehusados.find(MotivoPuerto::ocupado);
    const auto vedados = rehusados.find(MotivoPuerto::sinPermiso);
    std::string texto = "no hay conexión con el registrador";
    if (ocupados != rehusados.end()) {
        texto += fmt::format("; en uso por otro programa: {}. Ciérrelo (\"telvane-cli puertos\" dice cuál)",
                             fmt::join(ocupados->second, ", "));
    }
    if (vedados != rehusados.end())
        texto += fmt::format("; sin permiso: {}. \"telvane-cli puertos\" dice el remedio",
                             fmt::join(vedados->second, ", "));
    const auto otros = inservibles(rehusados);
    if (!otros.empty()) {
        texto +=
            fmt::format("; no se pudo usar: {}. Corrija lo que su línea dice, o dé otro puerto con --com",
                        fmt::join(otros, ", "));
    }
    if (callados.porCable || callados.enRed)
        texto += fmt::format(": revise {}, y los puertos con \"telvane-cli puertos\"", queRevisar(callados));
    return texto;
}

}  // namespace

std::string RegistradorCli::queRevisarSiCalla() const {
    return queRevisar({.porCable = !enRed_(numero_), .enRed = enRed_(numero_)});
}

std::string RegistradorCli::queRevisarSiHayRuido() const {
    return enRed_(numero_) ? "el servidor de puertos y el cable que va de él al registrador"
                           : "el cable y el adaptador";
}

std::string RegistradorCli::noResponde() const {
    return fmt::format("el registrador no responde: revise {}", queRevisarSiCalla());
}

void RegistradorCli::fueraDePaso(std::string_view que) const {
    throw ErrorIntercambio(
        CodigoSalida::fallo,
        fmt::format("error en la comunicación: {}. Revise {}, y repita", que, queRevisarSiHayRuido()));
}

int RegistradorCli::buscar() {
    Rehusados rehusados;
    bool hayPuertos = false;
    Callados callados;
    const auto calla = [&] { (enRed_(numero_) ? callados.enRed : callados.porCable) = true; };
    for (numero_ = 1; numero_ <= kUltimoPuerto; ++numero_) {
        atenderSenal(entorno_);
        if (!puertos_.existe(numero_)) continue;
        hayPuertos = true;
        consola_.progreso(fmt::format("Buscando el registrador en COM{}...", numero_));
        try {
            if (sondear(numero_)) return numero_;
            calla();
        } catch (const ErrorPuerto& error) {
            if (error.motivo() == MotivoPuerto::desaparecido || error.motivo() == MotivoPuerto::otro) calla();
            rehusados[error.motivo()].push_back(fmt::format("COM{}", numero_));
            consola_.aviso(fmt::format("COM{}: {}", numero_, error.what()));
        }
    }
    throw ErrorCli(CodigoSalida::sinRegistrador, porQueNoHay(hayPuertos, callados, rehusados));
}

// Any answer of enough bytes is the logger's. One that is still in an exchange that somebody broke off takes
// the first probe for a part of it; by the second it has given that up.
bool RegistradorCli::sondear(int numero) {
    LineaRegistrador linea(entorno_, puertos_, numero);
    linea.enviar(kSonda);
    bool responde = linea.esperarBytes(kUmbralSonda, kEsperaSonda);
    const bool aLaPrimera = responde;
    if (!responde) {
        while (linea.esperan() > 0) linea.tomar();
        linea.enviar(kSonda);
        responde = linea.esperarBytes(kUmbralSonda, kEsperaSegundaSonda);
    }
    // What is still on its way must not reach the next opening of the port.
    if (responde) linea.esperarBytes(kBytesMarco, kRestoMarco);
    sondaEntera_ = aLaPrimera && linea.esperan() == kBytesMarco;
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
        if (linea.esperarBytes(cuantos, kEsperaRespuesta)) {
            return linea.tomar();
        }
        throw ErrorIntercambio(CodigoSalida::sinRegistrador, noResponde());
    }
    if (linea.esperarBytes(cuantos, espera_)) return linea.tomar();
    throw ErrorIntercambio(
        CodigoSalida::fallo,
        fmt::format("el registrador dejó de responder a mitad de la comunicación: revise {}, y repita",
                    queRevisarSiCalla()));
}

DatosConfig RegistradorCli::leerConfiguracion() {
    try {
        auto datos = Reintentos(entorno_, consola_, reintentos_).correr([&] { return leerUnaVez(); });
        conocido_ = true;
        return datos;
    } catch (const ErrorIntercambio& error) {
        if (conocido_) throw;
        throw ErrorIntercambio(error.codigo(), error.what() + otroAparato());
    }
}

// The search stops at whatever answers with enough bytes.
std::string RegistradorCli::otroAparato() const {
    return fmt::format(
        ". Si lo que hay en COM{0} es otro aparato, dé el puerto del registrador con --com {0}=DISPOSITIVO "
        "(\"telvane-cli puertos\" los muestra)",
        numero_);
}

DatosConfig RegistradorCli::leerUnaVez() {
    despertar();
    LineaRegistrador linea(entorno_, puertos_, numero_);
    const auto antes = entorno_.reloj.ahora();
    const auto inicio = entorno_.reloj.monotono();
    linea.enviar(kApertura);
    DatosConfig datos;
    Bucle::Duracion masLenta = kSobraTardia;
    for (std::int32_t contador = 1; contador <= kContadorFinLectura; ++contador) {
        const auto pedido = entorno_.reloj.monotono();
        const auto byte = recibir(linea, contador);
        masLenta = std::max(masLenta, entorno_.reloj.monotono() - pedido);
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
        if (const auto aviso = avisoDe(paso.hito); !aviso.empty()) consola_.aviso(aviso);
    }
    momentoDeLectura_ = masTarde(antes, (entorno_.reloj.monotono() - inicio) / 2);
    // One that came by itself, after its forerunner had been answered, leaves the logger an answer to give.
    if (linea.esperarBytes(1, masLenta)) fueraDePaso("el registrador envió bytes de más");
    return datos;
}

void RegistradorCli::descargar(const AlBloque& alBloque) {
    despertar();
    LineaRegistrador linea(entorno_, puertos_, numero_);
    try {
        recibirMemoria(linea, alBloque);
    } catch (...) {
        erroresDeLinea_ += linea.erroresDeLinea();
        throw;
    }
}

void RegistradorCli::recibirMemoria(LineaRegistrador& linea, const AlBloque& alBloque) {
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
    const auto paso = finDeBloque(linea.esperan());
    if (!paso.respuesta) fueraDePaso("sobran bytes después de un bloque");
    const auto acusar = [&] { linea.enviar(*paso.respuesta); };
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
    erroresDeLinea_ += linea.erroresDeLinea();
    alBloque(numero, bloque);
}

void RegistradorCli::escribirConfiguracion(const std::function<std::string()>& mensaje,
                                           std::size_t& enviados) {
    despertar();
    const auto texto = mensaje();
    enviarPorPasos([&](std::int32_t contador) { return pasoEscritura(contador, texto); }, enviados);
}

void RegistradorCli::escribirSerie(const SerieEmpacada& serie, std::size_t& enviados) {
    despertar();
    enviarPorPasos([&](std::int32_t contador) { return pasoSerie(contador, serie); }, enviados);
}

void RegistradorCli::enviarPorPasos(const std::function<Paso<HitoEnvio>(std::int32_t)>& pasoDe,
                                    std::size_t& enviados) {
    LineaRegistrador linea(entorno_, puertos_, numero_);
    linea.enviar(kApertura);
    Paso<HitoEnvio> paso;
    for (std::int32_t contador = 1; paso.hito != HitoEnvio::fin; ++contador) {
        recibir(linea, contador);
        paso = pasoDe(contador);
        if (contador > 1) ++enviados;
        linea.enviar(paso.respuesta.value());
    }
}

RegistradorCli::EnLinea::EnLinea(RegistradorCli& registrador)
    : registrador_(registrador),
      linea_(registrador.entorno_, registrador.puertos_, registrador.numero_),
      consola_(registrador.consola_),
      otroAparato_(registrador.otroAparato()),
      enPaso_(registrador.sondaEntera_) {}

RegistradorCli::Marco RegistradorCli::EnLinea::pedir() {
    std::size_t recibidos = 0;
    for (int intento = 0; intento < kIntentosMarco; ++intento) {
        const bool callada = !enPaso_ && linea_.descartarHastaCallar(kMarcoTardio, kEsperaCallada);
        const auto llegada = intentar();
        const auto que = defecto(llegada, callada);
        enPaso_ = que.empty();
        if (enPaso_) return llegada.marco;
        recibidos += llegada.bytes;
        consola_.aviso(fmt::format("lectura repetida ({} desde el comienzo): {}", ++repetidas_, que));
    }
    if (recibidos == 0)
        throw ErrorIntercambio(CodigoSalida::sinRegistrador, registrador_.noResponde() + otroAparato_);
    throw ErrorIntercambio(CodigoSalida::fallo,
                           fmt::format("ninguna lectura llega entera: revise {}, y repita{}",
                                       registrador_.queRevisarSiHayRuido(), otroAparato_));
}

// What came unasked since the last frame is no part of this one. The line falls silent behind a frame: what
// comes then shows that a byte too many stands before it or within it.
RegistradorCli::EnLinea::Llegada RegistradorCli::EnLinea::intentar() {
    linea_.descartar();
    linea_.enviar(kSonda);
    linea_.esperarBytes(kBytesMarco, kEsperaMarco);
    Llegada llegada{.bytes = linea_.esperan()};
    if (llegada.bytes == kBytesMarco && linea_.esperarBytes(kBytesMarco + 1, kRestoMarco))
        llegada.bytes = linea_.esperan();
    for (std::size_t i = 0; i < std::min(llegada.bytes, kBytesMarco); ++i) llegada.marco[i] = linea_.tomar();
    return llegada;
}

// Empty: none that can be seen, or one that is the logger's own. callada: it was asked for on a quiet line.
std::string RegistradorCli::EnLinea::defecto(const Llegada& llegada, bool callada) {
    if (llegada.bytes != kBytesMarco) {
        propios_.interrumpir();
        return llegada.bytes == 0
                   ? "el registrador no respondió"
                   : fmt::format("{} {} de {}", llegada.bytes == 1 ? "llegó" : "llegaron",
                                 contados(static_cast<std::int64_t>(llegada.bytes), "byte", "bytes"),
                                 kBytesMarco);
    }
    switch (propios_.juzgar(llegada.marco, callada)) {
        case CanalesPropios::Juicio::dudoso:
            return "trae un valor que ningún sensor da";
        case CanalesPropios::Juicio::insiste:
            consola_.aviso("el registrador insiste en ese valor: se muestra como llega");
            return {};
        case CanalesPropios::Juicio::bueno:
            otroAparato_.clear();
            return {};
    }
    return {};
}

}  // namespace telvane
