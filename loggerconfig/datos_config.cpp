#include "loggerconfig/datos_config.h"

#include <algorithm>
#include <charconv>

#include <fmt/format.h>

#include "platform/cp1252.h"
#include "ui/textos.h"

namespace telvane {

namespace {

template <class... Partes>
std::string juntar(const Partes&... partes) {
    std::string texto;
    (texto.append(partes), ...);
    return texto;
}

std::string lineaIntervalo(std::string_view intervalo) {
    return juntar("Muestras cada ", intervalo, " Minutos", textos::kFinLinea);
}

// A text field of the image's header: its label, and the offset just past its last character.
struct CampoCabecera {
    std::string_view rotulo;
    std::size_t fin;
};

// These labels differ from the summary's, in blanks as well.
constexpr std::array<CampoCabecera, 5> kCamposCabecera = {{{"Usuario:  ", registro_config::kUbicacion},
                                                           {"Ubicacion :  ", registro_config::kLatitud},
                                                           {"Latitud  :  ", registro_config::kLongitud},
                                                           {"Longitud:  ", registro_config::kAltitud},
                                                           {"Altitud :  ", registro_config::kIntervalo}}};

}  // namespace

std::array<char, 2> digitosBcd(std::uint8_t byte) {
    return {static_cast<char>('0' + (byte >> 4)), static_cast<char>('0' + (byte & 0x0F))};
}

bool loTieneElRegistrador(std::string_view texto) {
    const auto bytes = cp1252DeUtf8(texto);
    return utf8DeCp1252({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}) == texto;
}

std::string anioQueNoCabe(int anio) {
    return fmt::format("el reloj del registrador no admite el año {}: ponga uno de {} a {}", anio,
                       kPrimerAnioReloj, kUltimoAnioReloj);
}

std::optional<std::size_t> indiceIntervalo(std::uint8_t codigo) {
    for (std::size_t i = 0; i < kIntervalos.size(); ++i) {
        if (kIntervalos[i].codigo == codigo) return i;
    }
    return std::nullopt;
}

float numeroDeSerie(std::string_view digitos) {
    const auto fin = std::find_if(digitos.begin(), digitos.end(), [](char c) { return c < '0' || c > '9'; });
    float numero = 0;
    std::from_chars(digitos.data(), digitos.data() + (fin - digitos.begin()), numero,
                    std::chars_format::fixed);
    return numero;
}

std::string lineaSerie(std::string_view digitos) {
    return juntar("Nro  : ", digitos);
}

std::string resumenTrasLectura(std::string_view intervalo, std::string_view lineaSerie,
                               const std::array<std::string_view, 5>& campos) {
    constexpr std::array<std::string_view, 5> kRotulos = {
        "Usuario: ", "Ubicacion: ", "Latitud: ", "Longitud: ", "Altitud: "};
    std::string texto = juntar(lineaIntervalo(intervalo), lineaSerie, textos::kFinLinea);
    for (std::size_t i = 0; i < campos.size(); ++i) {
        texto += juntar(kRotulos[i], campos[i], textos::kFinLinea);
    }
    return juntar(texto, textos::kFinLinea, textos::kFinLinea);
}

std::string textoConfig(const DatosConfig& datos) {
    const auto indice = indiceIntervalo(datos.intervaloCodigo);
    std::array<std::string_view, 5> campos;
    std::copy(datos.textos.begin(), datos.textos.end(), campos.begin());
    return resumenTrasLectura(indice ? kIntervalos[*indice].texto : "", lineaSerie(datos.Nserie), campos);
}

DatosConfig datosDeCabecera(std::span<const std::uint8_t> imagen) {
    DatosConfig datos;
    for (const auto byte : imagen.first(registro_config::kUsuario)) {
        const auto digitos = digitosBcd(byte);
        datos.Nserie.append(digitos.begin(), digitos.end());
    }
    std::size_t desde = registro_config::kUsuario;
    for (std::size_t campo = 0; campo < kAnchos.size(); ++campo) {
        const auto ancho = static_cast<std::size_t>(kAnchos[campo]);
        for (const auto byte : imagen.subspan(desde, ancho)) agregarUtf8(datos.textos[campo], byte);
        desde += ancho;
    }
    datos.intervaloCodigo = imagen[registro_config::kIntervalo];
    for (std::size_t parte = 0; parte < datos.reloj.size(); ++parte) {
        const auto digitos = digitosBcd(imagen[registro_config::kReloj + parte]);
        datos.reloj[parte].assign(digitos.begin(), digitos.end());
    }
    return datos;
}

TextoDeCabecera leerCabecera(std::span<const std::uint8_t> imagen) {
    TextoDeCabecera cabecera;
    for (std::int32_t k = 0; const auto byte : imagen.first(registro_config::kCabecera)) {
        cabecera.config(k++, byte);
    }
    return cabecera;
}

bool TextoDeCabecera::config(std::int32_t contador, std::uint8_t byte) {
    if (contador < 0 || contador >= static_cast<std::int32_t>(registro_config::kCabecera)) return false;
    const auto k = static_cast<std::size_t>(contador);
    if (k < registro_config::kUsuario) {
        const auto digitos = digitosBcd(byte);
        if (digitosSerie.size() < 2 * (k + 1)) digitosSerie.resize(2 * (k + 1), '0');
        std::copy(digitos.begin(), digitos.end(), digitosSerie.begin() + static_cast<std::ptrdiff_t>(2 * k));
        if (k + 1 == registro_config::kUsuario) {
            texto += juntar("Numero de serie : ", digitosSerie, textos::kFinLinea);
        }
    } else if (k < registro_config::kIntervalo) {
        agregarUtf8(recogido, byte);
        for (const auto& campo : kCamposCabecera) {
            if (k + 1 != campo.fin) continue;
            texto += juntar(campo.rotulo, recogido, textos::kFinLinea);
            recogido.clear();
        }
    } else if (k == registro_config::kIntervalo) {
        if (const auto indice = indiceIntervalo(byte)) intervalo = kIntervalos[*indice].texto;
        texto += lineaIntervalo(intervalo);
    }
    return true;
}

}  // namespace telvane
