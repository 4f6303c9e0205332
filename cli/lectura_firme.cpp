#include "cli/lectura_firme.h"

#include <fmt/format.h>

#include "cli/reloj_registrador.h"
#include "cli/textos_cli.h"
#include "consola/codigos_salida.h"

namespace telvane {

namespace {

// Readings until two in a row agree.
constexpr int kLecturas = 4;

bool relojesDeAcuerdo(const LecturaFirme& antes, const LecturaFirme& ahora) {
    const auto uno = relojDe(antes.datos);
    const auto otro = relojDe(ahora.datos);
    if (!uno || !otro) return !uno && !otro;
    return distancia(*otro, masTarde(*uno, ahora.momento - antes.momento)) <= kToleranciaReloj;
}

bool deAcuerdo(const LecturaFirme& antes, const LecturaFirme& ahora, bool conReloj) {
    return antes.datos.Nserie == ahora.datos.Nserie && mismosAjustes(antes.datos, ahora.datos) &&
           (!conReloj || relojesDeAcuerdo(antes, ahora));
}

}  // namespace

bool mismosAjustes(const DatosConfig& unos, const DatosConfig& otros) {
    return unos.textos == otros.textos && unos.intervaloCodigo == otros.intervaloCodigo;
}

LecturaFirme leerFirme(RegistradorCli& registrador, Consola& consola, const Reloj& reloj, bool conReloj) {
    const auto leer = [&] {
        auto datos = registrador.leerConfiguracion();
        return LecturaFirme{std::move(datos), reloj.monotono()};
    };
    auto anterior = leer();
    for (int i = 1; i < kLecturas; ++i) {
        auto otra = leer();
        if (deAcuerdo(anterior, otra, conReloj)) return otra;
        consola.aviso("Dos lecturas de la configuración no coinciden: se lee otra vez.");
        anterior = std::move(otra);
    }
    throw ErrorCli(
        CodigoSalida::fallo,
        fmt::format(
            "las lecturas de la configuración no coinciden, y no se escribe nada: revise {}, y repita",
            registrador.queRevisarSiHayRuido()));
}

}  // namespace telvane
