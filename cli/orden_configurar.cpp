// telvane-cli configurar
#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "cli/argumentos.h"
#include "cli/codigos_salida.h"
#include "cli/descarga_cli.h"
#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "cli/textos_cli.h"
#include "data/archivo_base.h"
#include "loggerconfig/edicion.h"
#include "loggerconfig/pasos_escritura.h"
#include "platform/archivo.h"
#include "platform/cp1252.h"
#include "regional/fecha_texto.h"
#include "regional/formatos.h"

namespace telvane {

namespace {

using namespace std::chrono_literals;

// Options and names of the five texts, in the order of the record.
struct NombreCampo {
    const char* opcion;
    const char* nombre;
};
constexpr std::array<NombreCampo, 5> kCampos = {{{"--usuario", "Usuario"},
                                                 {"--ubicacion", "Ubicacion"},
                                                 {"--latitud", "Latitud"},
                                                 {"--longitud", "Longitud"},
                                                 {"--altitud", "Altitud"}}};

// How far the clock that is read back may be from the one that was sent.
constexpr auto kToleranciaReloj = 5s;

struct Opciones {
    std::array<std::optional<std::string>, 5> textos;
    std::string intervalo;
    std::string fecha;
    std::string hora;
    std::string respaldo;
    bool relojPc = false;
    bool borrarMemoria = false;
    bool sinRespaldo = false;
};

std::string motivoIntervalo(const std::string& texto) {
    for (const auto& intervalo : kIntervalos) {
        if (texto == intervalo.texto) return "";
    }
    return "debe ser 1, 5, 10, 15, 30 o 60";
}
std::string motivoFecha(const std::string& texto) {
    const auto fecha = leerFechaCorta(texto);
    return fecha && fecha->anio >= 2000 && fecha->anio <= 2099 ? "" : "debe ser dd/mm/aaaa, de 2000 a 2099";
}
std::string motivoHora(const std::string& texto) {
    return leerHora(texto) ? "" : "debe ser hh:mm:ss";
}

void exigirUso(bool bien, const std::string& que) {
    if (!bien) throw ErrorCli(CodigoSalida::malUso, que);
}

// The logger holds one byte a character: what it cannot hold is refused, and not changed or cut.
void revisarTextos(const Opciones& opciones) {
    for (std::size_t i = 0; i < kCampos.size(); ++i) {
        if (!opciones.textos[i]) continue;
        const auto& texto = *opciones.textos[i];
        exigirUso(static_cast<int>(caracteres(texto)) <= kAnchos[i],
                  fmt::format("{}: caben {} caracteres", kCampos[i].opcion, kAnchos[i]));
        const auto bytes = cp1252DeUtf8(texto);
        exigirUso(utf8DeCp1252({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}) == texto,
                  fmt::format("{}: hay un carácter que el registrador no tiene", kCampos[i].opcion));
    }
}

void revisar(const Opciones& opciones) {
    const bool conTextos = std::any_of(opciones.textos.begin(), opciones.textos.end(),
                                       [](const auto& t) { return t.has_value(); });
    const bool conReloj = !opciones.fecha.empty() || !opciones.hora.empty();
    exigirUso(
        conTextos || conReloj || opciones.relojPc || !opciones.intervalo.empty(),
        "no se pidió ningún cambio: indique al menos uno, por ejemplo --reloj-pc\n(telvane-cli configurar "
        "--help)");
    exigirUso(!(conReloj && opciones.relojPc), "--reloj-pc no va con --fecha ni --hora");
    exigirUso(opciones.respaldo.empty() || !opciones.sinRespaldo, "--respaldo no va con --sin-respaldo");
    revisarTextos(opciones);
}

// The wall's time some duration later, across midnight and the end of the year.
FechaHora masTarde(const FechaHora& momento, std::chrono::nanoseconds cuanto) {
    const auto total = momento.deDia + cuanto;
    const auto dias = std::chrono::floor<std::chrono::days>(total);
    const auto civil =
        fechaConAcarreo(momento.anio, momento.mes, momento.dia + static_cast<int>(dias.count()));
    return {civil.anio, civil.mes, civil.dia, total - dias};
}

std::chrono::nanoseconds distancia(const FechaHora& a, const FechaHora& b) {
    using namespace std::chrono;
    const auto instante = [](const FechaHora& m) {
        const year_month_day fecha{year(m.anio), month(static_cast<unsigned>(m.mes)),
                                   day(static_cast<unsigned>(m.dia))};
        return local_days(fecha).time_since_epoch() + m.deDia;
    };
    const nanoseconds diferencia = instante(a) - instante(b);
    return diferencia < 0ns ? -diferencia : diferencia;
}

class Configurador {
   public:
    Configurador(ContextoCli& contexto, const Opciones& opciones)
        : contexto_(contexto),
          opciones_(opciones),
          sesion_(contexto.entorno, contexto.consola, contexto.com) {}

    void correr();

   private:
    void leer();
    void releer();
    bool anunciarCambios();
    void respaldar();
    void escribir();
    void comprobarEscrito();
    std::chrono::nanoseconds desdeLectura() const { return contexto_.entorno.reloj.monotono() - leidoEn_; }
    FechaHora relojAEnviar() const;
    std::uint8_t codigoAEnviar() const;
    std::string textoAEnviar(std::size_t campo) const {
        return rellenado(opciones_.textos[campo] ? *opciones_.textos[campo] : actual_.textos[campo],
                         kAnchos[campo]);
    }

    ContextoCli& contexto_;
    const Opciones& opciones_;
    SesionCli sesion_;
    DatosConfig actual_;
    std::chrono::nanoseconds leidoEn_{0};
    FechaHora enviado_;
};

void Configurador::correr() {
    sesion_.buscar();
    leer();
    if (!anunciarCambios()) {
        contexto_.consola.aviso("El registrador ya está así: no se escribe nada.");
        return;
    }
    exigirUso(
        opciones_.borrarMemoria,
        "el registrador borra todos sus datos al recibir una configuración: confirme con --borrar-memoria");
    if (!opciones_.sinRespaldo) respaldar();
    releer();
    escribir();
    comprobarEscrito();
    contexto_.consola.resultado(configuracionParaPersonas(actual_));
}

void Configurador::leer() {
    actual_ = sesion_.registrador().leerConfiguracion();
    leidoEn_ = contexto_.entorno.reloj.monotono();
    // The message always carries a clock: one that the logger does not know cannot be sent back.
    if (opciones_.relojPc || (!opciones_.fecha.empty() && !opciones_.hora.empty()) || relojDe(actual_))
        return;
    throw ErrorCli(CodigoSalida::fallo,
                   "el reloj del registrador no vale: póngalo con --reloj-pc, o --fecha y --hora");
}

// What is not changed goes back as it was read, and the line has no checksum: a byte damaged on its way here
// would become the logger's own.
void Configurador::releer() {
    const auto otra = sesion_.registrador().leerConfiguracion();
    if (otra.Nserie == actual_.Nserie && otra.textos == actual_.textos &&
        otra.intervaloCodigo == actual_.intervaloCodigo) {
        return;
    }
    throw ErrorCli(CodigoSalida::fallo,
                   "dos lecturas de la configuración no coinciden, y no se escribe nada: revise el cable");
}

// Tells what will change; false: nothing.
bool Configurador::anunciarCambios() {
    bool hay = false;
    const auto anunciar = [&](std::string_view nombre, std::string_view antes, std::string_view ahora) {
        if (antes == ahora) return;
        contexto_.consola.aviso(fmt::format("{}: \"{}\" -> \"{}\"", nombre, antes, ahora));
        hay = true;
    };
    for (std::size_t i = 0; i < kCampos.size(); ++i) {
        anunciar(kCampos[i].nombre, recortado(actual_.textos[i]), recortado(textoAEnviar(i)));
    }
    const auto antes = indiceIntervalo(actual_.intervaloCodigo);
    if (!opciones_.intervalo.empty()) {
        anunciar("Minutos entre muestras", antes ? kIntervalos[*antes].texto : "?", opciones_.intervalo);
    }
    if (opciones_.relojPc || !opciones_.fecha.empty() || !opciones_.hora.empty()) {
        const auto reloj = relojDe(actual_);
        anunciar("Reloj", reloj ? fechaIso(*reloj) : "?", fechaIso(relojAEnviar()));
    }
    return hay;
}

FechaHora Configurador::relojAEnviar() const {
    if (opciones_.relojPc) return contexto_.entorno.reloj.ahora();
    auto momento = masTarde(relojDe(actual_).value_or(FechaHora{2000, 1, 1, {}}), desdeLectura());
    if (!opciones_.fecha.empty()) {
        const auto fecha = leerFechaCorta(opciones_.fecha).value();
        momento = {fecha.anio, fecha.mes, fecha.dia, momento.deDia};
    }
    if (!opciones_.hora.empty()) momento.deDia = leerHora(opciones_.hora).value();
    return momento;
}

std::uint8_t Configurador::codigoAEnviar() const {
    for (const auto& intervalo : kIntervalos) {
        if (opciones_.intervalo == intervalo.texto) return intervalo.codigo;
    }
    return actual_.intervaloCodigo;
}

void Configurador::respaldar() {
    PeticionDescarga peticion;
    peticion.base = opciones_.respaldo;
    if (peticion.base.empty()) {
        const auto carpeta = carpetaDeDatos();
        if (carpeta.empty()) {
            throw ErrorCli(CodigoSalida::fallo,
                           "no hay carpeta de datos para el respaldo: indique --respaldo ARCHIVO");
        }
        std::filesystem::create_directories(carpeta);
        peticion.base = carpeta / nombreArchivoBase(actual_.Nserie, contexto_.entorno.reloj.ahora());
    }
    contexto_.consola.aviso("Se descarga la memoria antes de borrarla.");
    descargarImagen(contexto_.entorno, contexto_.consola, sesion_.registrador(), actual_.Nserie, peticion);
    contexto_.consola.aviso(fmt::format("Respaldo: {}", peticion.base.string()));
}

void Configurador::escribir() {
    enviado_ = relojAEnviar();
    const auto segundos = std::chrono::floor<std::chrono::seconds>(enviado_.deDia).count();
    std::array<std::string, 5> textos;
    ConfigAEnviar config;
    for (std::size_t i = 0; i < textos.size(); ++i) {
        textos[i] = textoAEnviar(i);
        config.textos[i] = textos[i];
    }
    config.intervaloCodigo = codigoAEnviar();
    config.hora = static_cast<int>(segundos / 3600);
    config.minuto = static_cast<int>(segundos / 60 % 60);
    config.segundo = static_cast<int>(segundos % 60);
    config.dia = enviado_.dia;
    config.mes = enviado_.mes;
    config.anio = enviado_.anio;
    leidoEn_ = contexto_.entorno.reloj.monotono();
    sesion_.registrador().escribirConfiguracion(mensajeConfig(config));
}

void Configurador::comprobarEscrito() {
    const auto leido = sesion_.registrador().leerConfiguracion();
    std::vector<std::string> malos;
    for (std::size_t i = 0; i < kCampos.size(); ++i) {
        if (leido.textos[i] != textoAEnviar(i)) malos.emplace_back(kCampos[i].nombre);
    }
    if (leido.intervaloCodigo != codigoAEnviar()) malos.emplace_back("intervalo");
    // The logger's clock started somewhere between the sending of the message and now.
    const auto reloj = relojDe(leido);
    const auto pasado = desdeLectura();
    if (!reloj || distancia(*reloj, masTarde(enviado_, pasado / 2)) > pasado / 2 + kToleranciaReloj) {
        malos.emplace_back("reloj");
    }
    if (!malos.empty()) {
        throw ErrorCli(CodigoSalida::fallo,
                       fmt::format("lo leído después no es lo enviado ({}): vuelva a configurar",
                                   fmt::join(malos, ", ")));
    }
    actual_ = leido;
}

}  // namespace

void declararConfigurar(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden =
        argumentos.orden("configurar", "Cambia la configuración del registrador, que borra sus datos");
    const auto opciones = std::make_shared<Opciones>();
    for (std::size_t i = 0; i < kCampos.size(); ++i) {
        orden.opcion(opciones->textos[i], {.nombre = kCampos[i].opcion,
                                           .valor = "TEXTO",
                                           .ayuda = fmt::format("Hasta {} caracteres", kAnchos[i])});
    }
    orden.opcion(opciones->intervalo, {.nombre = "--intervalo",
                                       .valor = "MINUTOS",
                                       .ayuda = "Minutos entre muestras: 1, 5, 10, 15, 30 o 60",
                                       .comprobar = motivoIntervalo});
    orden.opcion(
        opciones->fecha,
        {.nombre = "--fecha", .valor = "DD/MM/AAAA", .ayuda = "Fecha del reloj", .comprobar = motivoFecha});
    orden.opcion(
        opciones->hora,
        {.nombre = "--hora", .valor = "HH:MM:SS", .ayuda = "Hora del reloj", .comprobar = motivoHora});
    orden.bandera(opciones->relojPc, "--reloj-pc", "Fecha y hora de este equipo");
    orden.bandera(opciones->borrarMemoria, "--borrar-memoria",
                  "Confirma que se borren los datos del registrador");
    orden.opcion(
        opciones->respaldo,
        {.nombre = "--respaldo", .valor = "ARCHIVO", .ayuda = "Archivo base para la memoria que se borra"});
    orden.bandera(opciones->sinRespaldo, "--sin-respaldo", "No descarga la memoria antes de borrarla");
    orden.pie(
        "Sin --respaldo, la memoria se guarda en la carpeta de datos del usuario (~/.local/share/telvane).");
    orden.alElegir([&contexto, opciones] {
        revisar(*opciones);
        contexto.orden = [&contexto, opciones] { Configurador(contexto, *opciones).correr(); };
    });
}

}  // namespace telvane
