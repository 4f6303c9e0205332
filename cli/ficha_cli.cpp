#include "cli/ficha_cli.h"

#include <fmt/format.h>

#include "cli/reloj_registrador.h"
#include "cli/textos_cli.h"
#include "consola/json.h"
#include "data/huella.h"
#include "loggerconfig/datos_config.h"

namespace telvane {

std::string fichaJson(const DatosDeDescarga& datos, std::span<const std::uint8_t> imagen) {
    using namespace std::chrono;
    // The logger tells whole seconds, those that are over.
    const auto desfase = [&] { return ceil<seconds>(adelanto(*datos.reloj, datos.relojPc)).count(); };
    Json json;
    json.poner("descargada", utcIso(datos.descargada));
    json.poner("puerto", datos.puerto);
    json.poner("dispositivo", datos.dispositivo.string());
    json.poner("serie", leerCabecera(imagen).digitosSerie);
    json.poner("reloj", datos.reloj ? Json(fechaIso(*datos.reloj)) : Json());
    json.poner("desfase_s", datos.reloj ? Json(desfase()) : Json());
    json.poner("verificada", datos.verificada);
    json.poner("reintentos", datos.reintentos);
    json.poner("errores_de_linea", datos.erroresDeLinea);
    json.poner("base", datos.base.empty() ? Json() : Json(datos.base.filename().string()));
    json.poner("imagen", textoDe(huellaDe(imagen)));
    return json.conSangria();
}

}  // namespace telvane
