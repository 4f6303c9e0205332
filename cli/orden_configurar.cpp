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

#include "cli/archivo_parcial.h"
#include "cli/copia_en_disco.h"
#include "cli/descarga_cli.h"
#include "cli/estado_envio.h"
#include "cli/lectura_firme.h"
#include "cli/ordenes.h"
#include "cli/reloj_registrador.h"
#include "cli/sesion_cli.h"
#include "cli/textos_cli.h"
#include "consola/codigos_salida.h"
#include "consola/salida_consola.h"
#include "data/archivo_base.h"
#include "link/protocolo.h"
#include "link/puerto_serie.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/edicion.h"
#include "loggerconfig/pasos_escritura.h"
#include "platform/archivo.h"
#include "platform/cp1252.h"
#include "platform/palabra_de_consola.h"
#include "platform/recorte.h"
#include "platform/texto_visible.h"
#include "regional/fecha_texto.h"

namespace telvane {

namespace {

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

constexpr const char* kReloj = "reloj";

constexpr std::chrono::minutes kTardaElRespaldo{15};
constexpr std::chrono::minutes kTardaElEnvio{1};

struct OpcionesConfigurar {
    std::array<std::optional<std::string>, 5> textos;
    std::string intervalo;
    std::string fecha;
    std::string hora;
    std::string respaldo;
    bool relojPc = false;
    bool borrarMemoria = false;
    bool sinRespaldo = false;
    bool sinVerificar = false;
};

// "1, 5, 10, 15, 30 o 60"
std::string losIntervalos() {
    std::string texto;
    for (const auto& intervalo : kIntervalos) {
        if (!texto.empty()) texto += &intervalo == &kIntervalos.back() ? " o " : ", ";
        texto += intervalo.texto;
    }
    return texto;
}

std::string motivoIntervalo(const std::string& texto) {
    for (const auto& intervalo : kIntervalos) {
        if (texto == intervalo.texto) return "";
    }
    return "debe ser " + losIntervalos();
}
std::string motivoFecha(const std::string& texto) {
    const auto fecha = leerFechaCorta(texto);
    if (fecha && cabeEnElReloj(fecha->anio)) return "";
    return fmt::format("debe ser una fecha que existe, dd/mm/aaaa, de {} a {}", kPrimerAnioReloj,
                       kUltimoAnioReloj);
}
std::string motivoHora(const std::string& texto) {
    return leerHora(texto) ? "" : "debe ser hh:mm:ss";
}

// A year that was not given on the line: of this machine's clock.
void exigirAnioDelPc(const FechaHora& momento) {
    if (cabeEnElReloj(momento.anio)) return;
    throw ErrorCli(CodigoSalida::fallo, anioQueNoCabe(momento.anio) + ", y no se escribe nada");
}

// The clock goes on while the memory is kept, the configuration sent and read back: it must not reach the end
// of the last year meanwhile.
void exigirQueNoSeAcabe(const FechaHora& momento, std::chrono::minutes falta, CodigoSalida codigo) {
    if (masTarde(momento, falta).anio <= kUltimoAnioReloj) return;
    throw ErrorCli(codigo,
                   fmt::format("el reloj del registrador no pasa del año {}, y llegaría a su final antes "
                               "de que esta orden termine: dé una fecha u hora anterior, o --reloj-pc, y "
                               "no se escribe nada",
                               kUltimoAnioReloj));
}

// The logger holds one byte a character: what it cannot hold is refused, and not changed or cut.
void revisarTextos(const OpcionesConfigurar& opciones) {
    for (std::size_t i = 0; i < kCampos.size(); ++i) {
        if (!opciones.textos[i]) continue;
        const auto& texto = *opciones.textos[i];
        exigirUso(static_cast<int>(caracteres(texto)) <= kAnchos[i],
                  fmt::format("{}: caben {} caracteres: acorte el texto", kCampos[i].opcion, kAnchos[i]));
        exigirUso(sinControles(texto) == texto,
                  fmt::format("{}: hay un carácter de control o mal escrito: quítelo", kCampos[i].opcion));
        exigirUso(loTieneElRegistrador(texto), fmt::format("{}: {}", kCampos[i].opcion, kCaracterAjeno));
    }
}

// At the most, unless the line has to be read again and again.
std::chrono::minutes tarda(const OpcionesConfigurar& opciones) {
    return kTardaElEnvio + (opciones.sinRespaldo ? std::chrono::minutes(0) : kTardaElRespaldo);
}

void revisar(const OpcionesConfigurar& opciones) {
    const bool conTextos = std::any_of(opciones.textos.begin(), opciones.textos.end(),
                                       [](const auto& t) { return t.has_value(); });
    const bool conReloj = !opciones.fecha.empty() || !opciones.hora.empty();
    exigirUso(conTextos || conReloj || opciones.relojPc || !opciones.intervalo.empty(),
              "no se pidió ningún cambio: indique al menos uno, por ejemplo --reloj-pc");
    exigirUso(!(conReloj && opciones.relojPc), "--reloj-pc no va con --fecha ni --hora");
    exigirUso(opciones.respaldo.empty() || !esSalidaEstandar(opciones.respaldo),
              "--respaldo necesita un archivo: la salida no guarda nada");
    exigirUso(opciones.respaldo.empty() || !opciones.sinRespaldo, "--respaldo no va con --sin-respaldo");
    exigirUso(!opciones.sinVerificar || !opciones.sinRespaldo,
              "--sin-verificar no va con --sin-respaldo: sin respaldo no hay qué verificar");
    revisarTextos(opciones);
    if (opciones.fecha.empty() || opciones.hora.empty()) return;
    const auto fecha = leerFechaCorta(opciones.fecha).value();
    exigirQueNoSeAcabe({fecha.anio, fecha.mes, fecha.dia, leerHora(opciones.hora).value()}, tarda(opciones),
                       CodigoSalida::malUso);
}

std::filesystem::path carpetaPropia() {
    auto carpeta = carpetaDeDatos();
    if (!carpeta.empty()) return carpeta;
    throw ErrorCli(CodigoSalida::fallo,
                   "no hay carpeta de datos para el respaldo: indique --respaldo ARCHIVO");
}

// como: makes it, or looks whether it can be made.
void prepararCarpetaPropia(void (*como)(const std::filesystem::path&)) {
    try {
        como(carpetaPropia());
    } catch (const ErrorGuardado& error) {
        throw ErrorCli(CodigoSalida::fallo, fmt::format("{}; indique --respaldo ARCHIVO", error.what()));
    }
}

class Configurador {
   public:
    Configurador(ContextoCli& contexto, const OpcionesConfigurar& opciones)
        : contexto_(contexto),
          opciones_(opciones),
          inicio_(contexto.entorno.reloj.monotono()),
          sesion_(contexto.entorno, contexto.consola, contexto.com) {}

    void correr();

   private:
    bool preparar();
    void leer();
    bool anunciarCambios();
    Destino destinoDeRespaldo() const;
    std::filesystem::path rutaDeRespaldo() const;
    void revisarRespaldo() const;
    void respaldar();
    void exigirSuMemoria();
    void exigirQueSigaAhi();
    void exigirSuRespaldo();
    // Runs the step; of a copy that is not what was written, the backup is where it was saved to, if
    // anywhere.
    template <class Paso>
    auto conservando(Paso paso) {
        try {
            return paso();
        } catch (const ErrorCopia& error) {
            respaldo_ = error.aSalvo().value_or("");
            throw;
        }
    }
    std::string comoRepetir() const;
    std::string mensaje();
    void escribir();
    template <class Paso>
    auto diciendo(const std::size_t& enviados, Paso paso) const {
        return diciendoElEstado(paso, [&](CodigoSalida codigo, const std::string& motivo) {
            return fallo(codigo, motivo, enviados);
        });
    }
    ErrorCli fallo(CodigoSalida codigo, const std::string& motivo, std::size_t enviados) const;
    std::string dondeEstaElRespaldo() const;
    void comprobarEscrito();
    std::vector<std::string> diferencias(const DatosConfig& leido) const;
    bool sigueComoAntes(const DatosConfig& leido, const std::vector<std::string>& distinto) const;
    FechaHora relojAEnviar() const;
    std::uint8_t codigoAEnviar() const;
    std::string textoAEnviar(std::size_t campo) const {
        return rellenado(opciones_.textos[campo] ? *opciones_.textos[campo] : actual_.textos[campo],
                         kAnchos[campo]);
    }

    ContextoCli& contexto_;
    const OpcionesConfigurar& opciones_;
    std::chrono::nanoseconds inicio_;  // monotonic, as the next two
    SesionCli sesion_;
    DatosConfig actual_;
    std::chrono::nanoseconds leidoEn_{0};
    std::filesystem::path respaldo_;    // once it is whole
    std::vector<std::uint8_t> imagen_;  // that it holds
    FechaHora enviado_;
    std::chrono::nanoseconds enviadoEn_{0};
};

void Configurador::correr() {
    contexto_.consola.exigirSalida();
    // Where the backup cannot go is told before the logger hears anything.
    if (!opciones_.sinRespaldo && opciones_.borrarMemoria) revisarRespaldo();
    if (!diciendo(0, [this] { return preparar(); })) {
        contexto_.consola.aviso("El registrador ya está así: no se escribe nada.");
        return;
    }
    escribir();
    comprobarEscrito();
    contexto_.consola.resultadoDe(
        "la configuración quedó escrita y comprobada: véala con \"telvane-cli configuracion\"",
        configuracionParaPersonas(actual_));
}

// All that comes before the first byte of the message. False: there is nothing to change.
bool Configurador::preparar() {
    sesion_.buscar();
    leer();
    if (!anunciarCambios()) return false;
    exigirUso(opciones_.borrarMemoria,
              "el registrador borra todos sus datos al recibir una configuración: confirme con "
              "--borrar-memoria");
    if (opciones_.sinRespaldo) return true;
    respaldar();
    exigirQueSigaAhi();
    return true;
}

// The message always carries a clock: what is not given of it goes back as it was read.
void Configurador::leer() {
    const bool conReloj = !opciones_.relojPc && (opciones_.fecha.empty() || opciones_.hora.empty());
    const auto firme = leerFirme(sesion_.registrador(), contexto_.consola, contexto_.entorno.reloj, conReloj);
    actual_ = firme.datos;
    leidoEn_ = firme.momento;
    if (!conReloj || relojDe(actual_)) return;
    throw ErrorCli(CodigoSalida::fallo,
                   "el reloj del registrador no vale: póngalo con --reloj-pc, o --fecha y --hora");
}

// Tells what will change; false: nothing.
bool Configurador::anunciarCambios() {
    bool hay = false;
    const auto anunciar = [&](std::string_view nombre, std::string_view antes, std::string_view ahora) {
        if (antes == ahora) return;
        contexto_.consola.aviso(
            fmt::format("{}: \"{}\" -> \"{}\"", nombre, sinControles(antes), sinControles(ahora)));
        hay = true;
    };
    for (std::size_t i = 0; i < kCampos.size(); ++i) {
        anunciar(kCampos[i].nombre, recortado(actual_.textos[i]), recortado(textoAEnviar(i)));
    }
    const auto antes = indiceIntervalo(actual_.intervaloCodigo);
    if (!opciones_.intervalo.empty()) {
        anunciar("Minutos entre muestras", antes ? kIntervalos[*antes].texto : "?", opciones_.intervalo);
    }
    const auto nuevo = relojAEnviar();
    exigirQueNoSeAcabe(nuevo, tarda(opciones_), CodigoSalida::fallo);
    if (opciones_.relojPc || !opciones_.fecha.empty() || !opciones_.hora.empty()) {
        const auto reloj = relojDe(actual_);
        anunciar("Reloj", reloj ? fechaIso(*reloj) : "?", fechaIso(nuevo));
    }
    return hay;
}

// A date and a time that were given are those of the command's start: what the search and the backup took
// goes on top, as it does for the logger's own.
FechaHora Configurador::relojAEnviar() const {
    const auto ahora = contexto_.entorno.reloj.monotono();
    if (opciones_.relojPc) return contexto_.entorno.reloj.ahora();
    constexpr FechaHora kPrimero{kPrimerAnioReloj, 1, 1, {}};
    auto momento = masTarde(relojDe(actual_).value_or(kPrimero), inicio_ - leidoEn_);
    // One that has only just begun to count was not there yet.
    if (momento.anio < kPrimerAnioReloj) momento = kPrimero;
    if (!opciones_.fecha.empty()) {
        const auto fecha = leerFechaCorta(opciones_.fecha).value();
        momento = {fecha.anio, fecha.mes, fecha.dia, momento.deDia};
    }
    if (!opciones_.hora.empty()) momento.deDia = leerHora(opciones_.hora).value();
    return masTarde(momento, ahora - inicio_);
}

std::uint8_t Configurador::codigoAEnviar() const {
    for (const auto& intervalo : kIntervalos) {
        if (opciones_.intervalo == intervalo.texto) return intervalo.codigo;
    }
    return actual_.intervaloCodigo;
}

std::filesystem::path Configurador::rutaDeRespaldo() const {
    if (!opciones_.respaldo.empty()) return opciones_.respaldo;
    return rutaBaseLibre(carpetaPropia(), actual_.Nserie, contexto_.entorno.reloj.ahora());
}

// Only a file keeps a copy that can be found again.
Destino Configurador::destinoDeRespaldo() const {
    auto destino = revisarDestino(rutaDeRespaldo(), reglaDeBase());
    ArchivoParcial::revisar(destino, contexto_.entorno);
    return destino;
}

// Makes nothing: the logger may have nothing to change.
void Configurador::revisarRespaldo() const {
    if (opciones_.respaldo.empty()) prepararCarpetaPropia(exigirQueSePuedaCrear);
    if (!opciones_.respaldo.empty() || std::filesystem::exists(carpetaPropia())) destinoDeRespaldo();
}

void Configurador::respaldar() {
    if (opciones_.respaldo.empty()) prepararCarpetaPropia(crearCarpeta);
    PeticionDescarga peticion;
    peticion.base = destinoDeRespaldo();
    // Once the logger has erased it this is the only copy, and the line carries no checksum.
    peticion.verificar = !opciones_.sinVerificar;
    contexto_.consola.aviso("Se descarga la memoria antes de borrarla.");
    imagen_ = conservando([&] {
        return descargarImagen(contexto_.entorno, contexto_.consola, sesion_.registrador(), peticion).bytes;
    });
    respaldo_ = peticion.base->pedido;
    contexto_.consola.aviso(fmt::format("Respaldo: {}", nombreVisible(respaldo_)));
    exigirSuMemoria();
}

// The configuration that is about to be written was read from whoever bears the one number; what would be
// erased bears the other.
void Configurador::exigirSuMemoria() {
    const auto propia = leerCabecera(imagen_).digitosSerie;
    if (propia == actual_.Nserie) return;
    throw ErrorCli(
        CodigoSalida::fallo,
        fmt::format("la configuración leída dice Nro {} y la memoria, Nro {}. Revise {}; si vuelven a no "
                    "coincidir, guarde el respaldo y use --sin-respaldo",
                    actual_.Nserie, propia, sesion_.registrador().queRevisarSiHayRuido()));
}

// While the memory was copied another logger may have been plugged in. One reading may be damaged.
void Configurador::exigirQueSigaAhi() {
    const auto esElMismo = [this](const DatosConfig& leida) {
        return leida.Nserie == actual_.Nserie && mismosAjustes(leida, actual_);
    };
    auto& registrador = sesion_.registrador();
    if (esElMismo(registrador.leerConfiguracion())) return;
    const auto firme = leerFirme(registrador, contexto_.consola, contexto_.entorno.reloj, false).datos;
    if (esElMismo(firme)) return;
    throw ErrorCli(CodigoSalida::fallo,
                   fmt::format("después del respaldo contesta otro registrador (Nro {}, y el respaldo es del "
                               "Nro {}), o el mismo con otra configuración. Revise qué equipo está conectado",
                               firme.Nserie, actual_.Nserie));
}

// Since it was written another program may have removed or changed it, and it is to be the only copy.
void Configurador::exigirSuRespaldo() {
    if (!respaldo_.empty()) conservando([this] { exigirEnDisco(respaldo_, imagen_); });
}

// A backup is never replaced: the same order needs another name for the next one.
std::string Configurador::comoRepetir() const {
    const auto libre = rutaLibre(opciones_.respaldo);
    if (libre == opciones_.respaldo) return "repita la orden";
    return fmt::format("repita la orden con --respaldo {} (un respaldo no se reemplaza)",
                       sinControles(palabraDeConsola(libre.string())));
}

std::string Configurador::mensaje() {
    enviado_ = relojAEnviar();
    exigirQueNoSeAcabe(enviado_, kTardaElEnvio, CodigoSalida::fallo);
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
    enviadoEn_ = contexto_.entorno.reloj.monotono();
    return mensajeConfig(config);
}

// The last byte may have left although the port refused it: then reading back tells.
void Configurador::escribir() {
    std::size_t enviados = 0;
    const auto alDespertar = [this] {
        exigirSuRespaldo();
        return mensaje();
    };
    diciendo(enviados, [&] {
        try {
            sesion_.registrador().escribirConfiguracion(alDespertar, enviados);
        } catch (const ErrorPuerto& error) {
            if (enviados < kBytesMensajeConfig) throw;
            contexto_.consola.aviso(error.what());
        }
    });
}

// Tells where the write stands, what became of the memory and what to do.
ErrorCli Configurador::fallo(CodigoSalida codigo, const std::string& motivo, std::size_t enviados) const {
    const auto estado = estadoDelEnvio(enviados, kBytesMensajeConfig, "la configuración y la memoria",
                                       "Dé la memoria por borrada; mire con \"telvane-cli configuracion\" si "
                                       "quedó como quería y, si no, vuelva "
                                       "a configurar con --sin-respaldo.",
                                       comoRepetir());
    const auto donde = dondeEstaElRespaldo();
    return {codigo, fmt::format("{}\n{}{}{}", motivo, estado, donde.empty() ? "" : "\n", donde)};
}

std::string Configurador::dondeEstaElRespaldo() const {
    if (opciones_.sinRespaldo) return "No hay respaldo de la memoria: se pidió --sin-respaldo.";
    if (respaldo_.empty()) return "";
    return fmt::format("El respaldo de la memoria está en {}.", nombreVisible(respaldo_));
}

// The logger confirms nothing. What reads back as it was sent was sent; anything else may be the line's
// fault, and is read again.
void Configurador::comprobarEscrito() {
    std::vector<std::string> distinto;
    DatosConfig leido;
    for (int i = 0; i < kLecturasDeVuelta; ++i) {
        leido = diciendo(kBytesMensajeConfig, [this] { return sesion_.registrador().leerConfiguracion(); });
        distinto = diferencias(leido);
        if (distinto.empty()) {
            actual_ = leido;
            return;
        }
    }
    throw ErrorCli(
        CodigoSalida::fallo,
        fmt::format(
            "lo leído después no es lo enviado ({}). {}\n{}", fmt::join(distinto, ", "),
            sigueComoAntes(leido, distinto)
                ? fmt::format("El registrador no la tomó, y su memoria debe seguir ahí: {}.", comoRepetir())
                : "Dé la memoria por borrada, y vuelva a configurar con --sin-respaldo.",
            dondeEstaElRespaldo()));
}

// Whether both the clock and a setting that was to change read as before. A clock alone tells nothing: the
// line may spoil the same byte of it in every reading, before the write as well.
bool Configurador::sigueComoAntes(const DatosConfig& leido, const std::vector<std::string>& distinto) const {
    return leido.Nserie == actual_.Nserie && mismosAjustes(leido, actual_) && distinto.size() > 1 &&
           distinto.back() == kReloj;
}

// What reads back otherwise than it was sent, the clock last.
std::vector<std::string> Configurador::diferencias(const DatosConfig& leido) const {
    std::vector<std::string> distinto;
    // Of another logger everything else says nothing.
    if (leido.Nserie != actual_.Nserie) distinto.emplace_back("Nro");
    for (std::size_t i = 0; i < kCampos.size(); ++i) {
        if (leido.textos[i] != textoAEnviar(i)) distinto.emplace_back(kCampos[i].nombre);
    }
    if (leido.intervaloCodigo != codigoAEnviar()) distinto.emplace_back("intervalo");
    // The logger's clock started somewhere between the making of the message and now.
    const auto reloj = relojDe(leido);
    const auto pasado = contexto_.entorno.reloj.monotono() - enviadoEn_;
    if (!reloj || distancia(*reloj, masTarde(enviado_, pasado / 2)) > pasado / 2 + kToleranciaReloj) {
        distinto.emplace_back(kReloj);
    }
    return distinto;
}

}  // namespace

void declararConfigurar(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden =
        argumentos.orden("configurar", "Cambia la configuración del registrador, que borra sus datos");
    const auto opciones = std::make_shared<OpcionesConfigurar>();
    for (std::size_t i = 0; i < kCampos.size(); ++i) {
        orden.opcion(
            opciones->textos[i],
            {.nombre = kCampos[i].opcion,
             .valor = "TEXTO",
             .ayuda = fmt::format("Hasta {} caracteres; \" \" lo borra", kAnchos[i]),
             .enLugarDeVacia = fmt::format("para borrarlo dé un blanco, {} \" \"", kCampos[i].opcion)});
    }
    orden.opcion(opciones->intervalo, {.nombre = "--intervalo",
                                       .valor = "MINUTOS",
                                       .ayuda = "Minutos entre muestras: " + losIntervalos(),
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
    orden.bandera(opciones->sinVerificar, "--sin-verificar",
                  "La descarga antes de borrarla una sola vez, sin comparar");
    orden.pie(
        "Sin --respaldo, la memoria se guarda en la carpeta de datos del usuario (~/.local/share/telvane).");
    orden.alElegir([&contexto, opciones] {
        revisar(*opciones);
        if (opciones->relojPc) exigirAnioDelPc(contexto.entorno.reloj.ahora());
        contexto.orden = [&contexto, opciones] { Configurador(contexto, *opciones).correr(); };
    });
}

}  // namespace telvane
