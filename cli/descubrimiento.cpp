#include "cli/descubrimiento.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "platform/recorte.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

using nlohmann::ordered_json;

// A sensor is unknown again after this: the night download, tried anew, keeps the line for itself that long.
constexpr std::chrono::seconds kCaducaTras{900};
// One reading may be lost and another one late.
constexpr int kLecturasQueCaducan = 3;

struct Sensor {
    std::string_view miembro;  // of marcoJson
    std::string_view nombre;
    std::string_view valor;  // of value_json, in the unit
    std::string_view unidad;
    std::string_view clase;   // empty: none is known everywhere
    bool instantaneo = true;  // and no amount that adds up
};
// The class of radiation knows no kilowatts.
constexpr std::array<Sensor, 8> kSensores = {{
    {"humedad", "Humedad", "humedad", "%", "humidity"},
    {"temperatura", "Temperatura", "temperatura", "°C", "temperature"},
    {"dir_viento", "Dirección del viento", "dir_viento", "°", ""},
    {"vel_viento", "Velocidad del viento", "vel_viento", "km/h", "wind_speed"},
    {"rad_solar", "Radiación solar", "rad_solar * 1000", "W/m²", "irradiance"},
    {"presion", "Presión", "presion", "kPa", "atmospheric_pressure"},
    {"lluvia", "Lluvia", "lluvia", "mm", "precipitation", false},
    {"evaporacion", "Evaporación", "evaporacion", "mm", "", false},
}};

// What a topic and an id can hold.
std::string identificador(const std::string& serie) {
    std::string id;
    for (const char c : serie) {
        const bool cifra = c >= '0' && c <= '9';
        id += cifra ? c : static_cast<char>('a' + (c - '9' - 1));
    }
    return id;
}

ordered_json aparato(const DatosConfig& datos, const std::string& id) {
    const auto ubicacion = std::string(recortado(sinControles(datos[CampoTexto::ubicacion])));
    ordered_json json;
    json["identifiers"] = {"telvane_" + id};
    json["name"] = ubicacion.empty() ? "Estación " + id : ubicacion;
    json["manufacturer"] = "Veltra";
    json["model"] = "Equipo Registrador";
    json["serial_number"] = id;
    return json;
}

ordered_json objeto(const Sensor& sensor, const std::string& id, std::chrono::seconds cada) {
    ordered_json json;
    json["unique_id"] = fmt::format("telvane_{}_{}", id, sensor.miembro);
    json["name"] = sensor.nombre;
    json["state_topic"] = fmt::format("telvane/{}/lecturas", id);
    json["value_template"] = fmt::format("{{{{ value_json.{} }}}}", sensor.valor);
    json["unit_of_measurement"] = sensor.unidad;
    if (!sensor.clase.empty()) json["device_class"] = sensor.clase;
    if (sensor.instantaneo) json["state_class"] = "measurement";
    json["expire_after"] = std::max(kCaducaTras, kLecturasQueCaducan * cada).count();
    return json;
}

}  // namespace

std::string descubrimientoJson(const DatosConfig& datos, std::chrono::seconds cada) {
    const auto id = identificador(datos.Nserie);
    const bool conEvaporacion = llevaEvaporacion(numeroDeSerie(datos.Nserie));
    const auto suAparato = aparato(datos, id);
    std::string lineas;
    for (const auto& sensor : kSensores) {
        if (sensor.miembro == "evaporacion" && !conEvaporacion) continue;
        auto json = objeto(sensor, id, cada);
        json["device"] = suAparato;
        lineas +=
            controlesEscapados(json.dump(-1, ' ', false, ordered_json::error_handler_t::replace)) + "\n";
    }
    return lineas;
}

}  // namespace telvane
