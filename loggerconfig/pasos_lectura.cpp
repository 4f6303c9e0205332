#include "loggerconfig/pasos_lectura.h"

#include <algorithm>
#include <charconv>

#include "platform/cp1252.h"

namespace telvane {

namespace {

constexpr std::int32_t kPrimerByte = kAcuses + 1;  // counter of the record's byte 0

// The raw byte is what is compared: day and month share the bound of minutes.
constexpr std::array<std::uint8_t, 6> kLimitesReloj = {
    0x23, 0x59, 0x59, 0x59, 0x59, empacarBcd(kUltimoAnioReloj - kPrimerAnioReloj)};
constexpr std::size_t kSegundo = 2;
constexpr std::size_t kAnio = 5;

void tomarSerie(std::size_t offset, std::uint8_t byte, DatosConfig& datos, PasoLectura& paso) {
    if (offset == registro_config::kSerie) datos.Nserie.clear();
    const auto digitos = digitosBcd(byte);
    datos.Nserie.append(digitos.begin(), digitos.end());
    if (offset + 1 == registro_config::kUsuario) paso.hito = HitoLectura::serie;
}

void tomarTexto(std::size_t offset, std::uint8_t byte, DatosConfig& datos, PasoLectura& paso) {
    std::size_t fin = registro_config::kUsuario;
    for (std::size_t campo = 0; campo < kAnchos.size(); ++campo) {
        fin += static_cast<std::size_t>(kAnchos[campo]);
        if (offset >= fin) continue;
        agregarUtf8(datos.textos[campo], byte);
        paso.hito = HitoLectura::texto;
        paso.campo = static_cast<CampoTexto>(campo);
        return;
    }
}

void tomarReloj(std::size_t parte, std::uint8_t byte, DatosConfig& datos, PasoLectura& paso) {
    const bool bueno = byte <= kLimitesReloj[parte];
    if (bueno) {
        const auto digitos = digitosBcd(byte);
        datos.reloj[parte].assign(digitos.begin(), digitos.end());
    } else {
        datos.reloj[parte] = std::to_string(byte);
    }
    if (parte == kAnio) {
        paso.hito = bueno ? HitoLectura::fin : HitoLectura::finFechaMala;
    } else if (!bueno) {
        paso.hito = parte <= kSegundo ? HitoLectura::horaMala : HitoLectura::fechaMala;
    } else if (parte == kSegundo) {
        paso.hito = HitoLectura::hora;
    }
}

// A slot as a number: its leading digits ("1?" is 1).
int numero(const std::string& ranura) {
    int valor = 0;
    std::from_chars(ranura.data(), ranura.data() + ranura.size(), valor);
    return valor;
}

}  // namespace

PasoLectura pasoLectura(std::int32_t contador, std::uint8_t byte, DatosConfig& datos) {
    PasoLectura paso;
    if (contador == kPrimeraRespuesta) {
        paso.respuesta = kLeerConfig;
        return paso;
    }
    if (contador == kSegundaRespuesta) {
        paso.respuesta = kApertura;
        return paso;
    }
    if (contador < kPrimerByte || contador > kContadorFinLectura) {
        paso.hito = HitoLectura::fueraDePaso;
        return paso;
    }
    paso.respuesta = byte;
    const auto offset = static_cast<std::size_t>(contador - kPrimerByte);
    if (offset < registro_config::kUsuario) {
        tomarSerie(offset, byte, datos, paso);
    } else if (offset < registro_config::kIntervalo) {
        tomarTexto(offset, byte, datos, paso);
    } else if (offset == registro_config::kIntervalo) {
        datos.intervaloCodigo = byte;
        paso.hito = HitoLectura::intervalo;
    } else {
        tomarReloj(offset - registro_config::kReloj, byte, datos, paso);
    }
    return paso;
}

bool relojAceptado(const std::array<std::string, 6>& reloj) {
    for (std::size_t parte = 0; parte < reloj.size(); ++parte) {
        const auto& ranura = reloj[parte];
        const bool cifras = ranura.size() == 2 && std::all_of(ranura.begin(), ranura.end(),
                                                              [](char c) { return c >= '0' && c <= '9'; });
        if (!cifras || empacarBcd(numero(ranura)) > kLimitesReloj[parte]) return false;
    }
    return true;
}

std::string_view avisoDe(HitoLectura hito) {
    if (hito == HitoLectura::horaMala) return "hora mal";
    return hito == HitoLectura::fechaMala || hito == HitoLectura::finFechaMala ? "fecha mal" : "";
}

std::int64_t segundosDeReloj(const std::array<std::string, 6>& reloj) {
    constexpr std::int64_t kDia = 86400;
    return (numero(reloj[0]) * 3600 + numero(reloj[1]) * 60 + numero(reloj[2])) % kDia;
}

Fecha diaDeReloj(const std::array<std::string, 6>& reloj) {
    return {kPrimerAnioReloj + numero(reloj[5]), numero(reloj[4]), numero(reloj[3])};
}

}  // namespace telvane
