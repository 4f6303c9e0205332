#include "cli/descubrimiento.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "consola/json.h"
#include "platform/recorte.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

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

Json aparato(const DatosConfig& datos, const std::string& id) {
    const auto ubicacion = std::string(recortado(sinControles(datos[CampoTexto::ubicacion])));
    Json json;
    json.poner("identifiers", Json::lista({"telvane_" + id}));
    json.poner("name", ubicacion.empty() ? "Estación " + id : ubicacion);
    json.poner("manufacturer", "Veltra");
    json.poner("model", "Equipo Registrador");
    json.poner("serial_number", id);
    return json;
}

Json objeto(const Sensor& sensor, const std::string& id, std::chrono::seconds cada) {
    Json json;
    json.poner("unique_id", fmt::format("telvane_{}_{}", id, sensor.miembro));
    json.poner("name", sensor.nombre);
    json.poner("state_topic", fmt::format("telvane/{}/lecturas", id));
    json.poner("value_template", fmt::format("{{{{ value_json.{} }}}}", sensor.valor));
    json.poner("unit_of_measurement", sensor.unidad);
    if (!sensor.clase.empty()) json.poner("device_class", sensor.clase);
    if (sensor.instantaneo) json.poner("state_class", "measurement");
    json.poner("expire_after", std::max(kCaducaTras, kLecturasQueCaducan * cada).count());
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
        json.poner("device", suAparato);
        lineas += json.enUnaLinea();
    }
    return lineas;
}

}  // namespace telvane
