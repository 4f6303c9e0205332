#include "cli/ficha_cli.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/reloj_registrador.h"
#include "cli/textos_cli.h"
#include "data/huella.h"
#include "loggerconfig/datos_config.h"
#include "platform/texto_visible.h"

namespace telvane {

std::string fichaJson(const DatosDeDescarga& datos, std::span<const std::uint8_t> imagen) {
    using nlohmann::ordered_json;
    using namespace std::chrono;
    // The logger tells whole seconds, those that are over.
    const auto desfase = [&] { return ceil<seconds>(adelanto(*datos.reloj, datos.relojPc)).count(); };
    ordered_json json;
    json["descargada"] = utcIso(datos.descargada);
    json["puerto"] = datos.puerto;
    json["dispositivo"] = datos.dispositivo.string();
    json["serie"] = leerCabecera(imagen).digitosSerie;
    json["reloj"] = datos.reloj ? ordered_json(fechaIso(*datos.reloj)) : ordered_json();
    json["desfase_s"] = datos.reloj ? ordered_json(desfase()) : ordered_json();
    json["verificada"] = datos.verificada;
    json["reintentos"] = datos.reintentos;
    json["errores_de_linea"] = datos.erroresDeLinea;
    json["base"] = datos.base.empty() ? ordered_json() : ordered_json(datos.base.filename().string());
    json["imagen"] = textoDe(huellaDe(imagen));
    return controlesEscapados(json.dump(2, ' ', false, ordered_json::error_handler_t::replace)) + "\n";
}

}  // namespace telvane
