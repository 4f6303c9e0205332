// What home automation wants to be told once of each sensor before its readings come: MQTT discovery, to be
// kept ("retained") by the broker under homeassistant/sensor/UNIQUE_ID/config.
#pragma once

#include <chrono>
#include <string>

#include "loggerconfig/datos_config.h"

namespace telvane {

// One object a line, unique_id first. Texts of the logger without control characters; ids and topics of the
// serial number alone, letters for its digits above 9. Readings are expected under telvane/SERIE/lecturas, as
// marcoJson writes them, one every so many seconds.
std::string descubrimientoJson(const DatosConfig& datos, std::chrono::seconds cada);

}  // namespace telvane
