#include "cli/ficha_cli.h"

#include <fmt/format.h>

#include "cli/reloj_registrador.h"
#include "cli/textos_cli.h"
#include "consola/json.h"
#include "data/huella.h"
#include "data/miembros_ficha.h"
#include "loggerconfig/datos_config.h"

namespace telvane {

std::string fichaJson(const DatosDeDescarga& datos, std::span<const std::uint8_t> imagen) {
    using namespace std::chrono;
    // The logger tells whole seconds, those that are over.
    const auto desfase = [&] { return ceil<seconds>(adelanto(*datos.reloj, datos.relojPc)).count(); };
    Json json;
    json.poner(miembros_ficha::kDescargada, utcIso(datos.descargada));
    json.poner(miembros_ficha::kPuerto, datos.puerto);
    json.poner(miembros_ficha::kDispositivo, datos.dispositivo.string());
    json.poner(miembros_ficha::kSerie, leerCabecera(imagen).digitosSerie);
    json.poner(miembros_ficha::kReloj, datos.reloj ? Json(fechaIso(*datos.reloj)) : Json());
    json.poner(miembros_ficha::kDesfase, datos.reloj ? Json(desfase()) : Json());
    json.poner(miembros_ficha::kVerificada, datos.verificada);
    json.poner(miembros_ficha::kReintentos, datos.reintentos);
    json.poner(miembros_ficha::kErroresDeLinea, datos.erroresDeLinea);
    json.poner(miembros_ficha::kBase, datos.base.empty() ? Json() : Json(datos.base.filename().string()));
    json.poner(miembros_ficha::kImagen, textoDe(huellaDe(imagen)));
    return json.conSangria();
}

}  // namespace telvane
