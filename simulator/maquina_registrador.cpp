#include "simulator/maquina_registrador.h"

#include <algorithm>

#include "platform/cp1252.h"

namespace telvane {

namespace {

using std::chrono::nanoseconds;

FechaHora relojPorDefecto() {
    return {2019, 10, 26, std::chrono::hours(17)};
}

}  // namespace

MaquinaRegistrador::MaquinaRegistrador() : MaquinaRegistrador(memoriaVacia({}, relojPorDefecto())) {}

MaquinaRegistrador::MaquinaRegistrador(std::vector<std::uint8_t> imagen, Clima clima)
    : imagen_(std::move(imagen)), clima_(clima) {
    imagen_.resize(kBytesMemoria, 0xFF);
    if (!tieneSerie(imagen_)) {
        ponerConfiguracion(imagen_, {});
        telvane::ponerReloj(imagen_, relojPorDefecto());
    }
}

std::vector<std::uint8_t> MaquinaRegistrador::recibir(std::uint8_t byte, nanoseconds ahora) {
    if (!relojEnMarcha_) ponerReloj(reloj(ahora), ahora);
    if (ahora - ultimaActividad_ > kSilencioMaximo) intercambio_ = Intercambio::reposo;
    ultimaActividad_ = ahora;
    switch (intercambio_) {
        case Intercambio::eleccion:
            return elegir(byte);
        case Intercambio::descarga:
            return descargar(byte);
        case Intercambio::lectura:
            return leerConfig(byte, ahora);
        case Intercambio::escritura:
            return escribirConfig(byte, ahora);
        case Intercambio::serie:
            return escribirSerie(byte);
        case Intercambio::reposo:
            break;
    }
    return enReposo(byte, ahora);
}

void MaquinaRegistrador::terminoDeEnviar(nanoseconds ahora) {
    ultimaActividad_ = std::max(ultimaActividad_, ahora);
}

MaquinaRegistrador::Bytes MaquinaRegistrador::enReposo(std::uint8_t byte, nanoseconds ahora) {
    if (byte == kSonda) {
        const auto civil = std::chrono::floor<std::chrono::seconds>(relojBase_ + (ahora - relojDesde_));
        const auto marco = marcoEnLinea(clima_.en(civil));
        return {marco.begin(), marco.end()};
    }
    if (byte == kApertura) return seguir(Intercambio::eleccion, kApertura);
    return {};
}

MaquinaRegistrador::Bytes MaquinaRegistrador::elegir(std::uint8_t byte) {
    contador_ = 0;
    recibido_.clear();
    switch (byte) {
        case kSaludo:
            contador_ = primerBloque_;
            return seguir(Intercambio::descarga, kSaludo);
        case kLeerConfig:
            return seguir(Intercambio::lectura, kApertura);
        case kEscribirConfig:
            return seguir(Intercambio::escritura, kApertura);
        case kEscribirSerie:
            return seguir(Intercambio::serie, kApertura);
        default:
            return terminar();
    }
}

// The byte after the selection starts the first block; each further one acknowledges a block.
MaquinaRegistrador::Bytes MaquinaRegistrador::descargar(std::uint8_t byte) {
    if (byte != kApertura || contador_ == kBloquesMemoria) return terminar();
    const auto bloque = imagen_.begin() + static_cast<std::ptrdiff_t>(contador_++ * kBytesBloque);
    return {bloque, bloque + static_cast<std::ptrdiff_t>(kBytesBloque)};
}

// The byte after the selection starts the record; each further one, the echo of the byte sent last, asks for
// the next. The echo is not compared.
MaquinaRegistrador::Bytes MaquinaRegistrador::leerConfig(std::uint8_t byte, nanoseconds ahora) {
    if (contador_ == 0) enviado_ = registro(ahora);
    if ((contador_ == 0 && byte != kApertura) || contador_ == kBytesConfig) return terminar();
    return seguir(Intercambio::lectura, enviado_[contador_++]);
}

// Each byte of the message but the last is answered with one byte, which asks for the next.
MaquinaRegistrador::Bytes MaquinaRegistrador::escribirConfig(std::uint8_t byte, nanoseconds ahora) {
    recibido_.push_back(byte);
    ++contador_;
    if (contador_ < kBytesMensajeConfig) return seguir(Intercambio::escritura, kApertura);
    guardarConfig(ahora);
    return terminar();
}

// The fourth byte comes twice; the repetition confirms the number.
MaquinaRegistrador::Bytes MaquinaRegistrador::escribirSerie(std::uint8_t byte) {
    ++contador_;
    if (contador_ <= kBytesSerie) {
        recibido_.push_back(byte);
        return seguir(Intercambio::serie, kApertura);
    }
    if (byte == recibido_.back()) {
        std::copy(recibido_.begin(), recibido_.end(), imagen_.begin() + registro_config::kSerie);
        ++cambios_;
    }
    return terminar();
}

MaquinaRegistrador::Bytes MaquinaRegistrador::seguir(Intercambio intercambio, std::uint8_t respuesta) {
    intercambio_ = intercambio;
    return {respuesta};
}

MaquinaRegistrador::Bytes MaquinaRegistrador::terminar() {
    intercambio_ = Intercambio::reposo;
    return {};
}

// The message is the record without its serial number; taking it erases what was measured.
void MaquinaRegistrador::guardarConfig(nanoseconds ahora) {
    borrarMuestras(imagen_);
    std::copy(recibido_.begin(), recibido_.end(), imagen_.begin() + registro_config::kUsuario);
    ponerReloj(fechaHoraBcd(std::span<const std::uint8_t, 6>(imagen_.data() + registro_config::kReloj, 6)),
               ahora);
    ++cambios_;
}

std::array<std::uint8_t, kBytesConfig> MaquinaRegistrador::registro(nanoseconds ahora) const {
    std::array<std::uint8_t, kBytesConfig> registro{};
    std::copy_n(imagen_.begin(), registro_config::kReloj, registro.begin());
    const auto hora = relojBcd(reloj(ahora));
    std::copy(hora.begin(), hora.end(), registro.begin() + registro_config::kReloj);
    return registro;
}

std::string MaquinaRegistrador::serie() const {
    std::string digitos;
    for (std::size_t i = 0; i < kBytesSerie; ++i) {
        const auto dos = digitosBcd(imagen_[registro_config::kSerie + i]);
        digitos.append(dos.begin(), dos.end());
    }
    return digitos;
}

std::string MaquinaRegistrador::texto(CampoTexto campo) const {
    constexpr std::array<std::size_t, kAnchos.size()> kLugares = {
        registro_config::kUsuario, registro_config::kUbicacion, registro_config::kLatitud,
        registro_config::kLongitud, registro_config::kAltitud};
    const auto cual = static_cast<std::size_t>(campo);
    return utf8DeCp1252(std::span(imagen_).subspan(kLugares[cual], static_cast<std::size_t>(kAnchos[cual])));
}

void MaquinaRegistrador::ponerReloj(const FechaHora& hora, nanoseconds ahora) {
    relojBase_ = segundosCiviles(hora);
    relojDesde_ = ahora;
    relojEnMarcha_ = true;
}

FechaHora MaquinaRegistrador::reloj(nanoseconds ahora) const {
    if (relojEnMarcha_) return fechaHoraDe(relojBase_ + (ahora - relojDesde_));
    return fechaHoraBcd(std::span<const std::uint8_t, 6>(imagen_.data() + registro_config::kReloj, 6));
}

void MaquinaRegistrador::ponerSerie(std::string_view digitos) {
    telvane::ponerSerie(imagen_, digitos);
    ++cambios_;
}

}  // namespace telvane
