#include "cli/textos_cli.h"

#include <array>
#include <chrono>

#include <fmt/format.h>

#include "consola/json.h"
#include "loggerconfig/pasos_lectura.h"
#include "platform/recorte.h"
#include "platform/texto_visible.h"
#include "regional/formatos.h"

namespace telvane {

namespace {

std::string conLf(std::string texto) {
    std::erase(texto, '\r');
    return texto;
}

}  // namespace

std::optional<FechaHora> relojDe(const DatosConfig& datos) {
    if (!relojAceptado(datos.reloj)) return std::nullopt;
    const auto dia = diaDeReloj(datos.reloj);
    const auto civil = fechaConAcarreo(dia.anio, dia.mes, dia.dia);
    return FechaHora{civil.anio, civil.mes, civil.dia, std::chrono::seconds(segundosDeReloj(datos.reloj))};
}

std::string fechaIso(const FechaHora& momento) {
    return fmt::format("{:04}-{:02}-{:02}T{}", momento.anio, momento.mes, momento.dia, horaLarga(momento));
}

std::string utcIso(std::chrono::sys_seconds momento) {
    const auto dia = std::chrono::floor<std::chrono::days>(momento);
    const std::chrono::year_month_day fecha(dia);
    return fechaIso({int{fecha.year()}, static_cast<int>(unsigned{fecha.month()}),
                     static_cast<int>(unsigned{fecha.day()}), momento - dia}) +
           "Z";
}

std::string configuracionParaPersonas(const DatosConfig& datos) {
    auto limpios = datos;
    for (auto& campo : limpios.textos) campo = sinControles(campo);
    auto texto = conLf(textoConfig(limpios));
    while (texto.ends_with("\n\n")) texto.pop_back();
    const auto reloj = relojDe(datos);
    return texto +
           fmt::format("Reloj: {}\n", reloj ? fechaCorta(*reloj) + " " + horaLarga(*reloj) : "incorrecto");
}

std::string configuracionJson(const DatosConfig& datos, int puerto, const std::string& dispositivo) {
    const auto campo = [&](CampoTexto cual) { return std::string(recortado(datos[cual])); };
    const auto indice = indiceIntervalo(datos.intervaloCodigo);
    const auto reloj = relojDe(datos);
    Json json;
    json.poner("puerto", puerto);
    json.poner("dispositivo", dispositivo.empty() ? Json() : Json(dispositivo));
    json.poner("serie", datos.Nserie);
    json.poner("usuario", campo(CampoTexto::usuario));
    json.poner("ubicacion", campo(CampoTexto::ubicacion));
    json.poner("latitud", campo(CampoTexto::latitud));
    json.poner("longitud", campo(CampoTexto::longitud));
    json.poner("altitud", campo(CampoTexto::altitud));
    json.poner("intervalo_minutos", indice ? Json(kIntervalos[*indice].minutos) : Json());
    json.poner("reloj", reloj ? Json(fechaIso(*reloj)) : Json());
    json.poner("evaporacion", llevaEvaporacion(numeroDeSerie(datos.Nserie)));
    return json.conSangria();
}

std::string marcoParaPersonas(const MarcoEnLinea& marco) {
    return conLf(lineasMarco(textosMarco(marco))) + "\n";
}

std::string marcoJson(const MarcoEnLinea& marco, const FechaHora& momento) {
    const auto t = textosMarco(marco);
    return fmt::format(
        R"({{"hora":"{}","humedad":{},"temperatura":{},"dir_viento":{},"vel_viento":{},"rad_solar":{},)"
        R"("presion":{},"lluvia":{},"evaporacion":{}}})"
        "\n",
        fechaIso(momento), t.humedad, t.temperatura, t.dirViento, t.velViento, t.radSolar, t.presion,
        t.lluvia, t.evaporacion);
}

}  // namespace telvane
