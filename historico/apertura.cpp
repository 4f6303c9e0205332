#include "historico/apertura.h"

#include <fmt/format.h>

namespace telvane {

ErrorAlmacen noHayArchivo(const std::string& nombre) {
    ErrorAlmacen error(fmt::format(
        "{}: no hay archivo histórico todavía: lo hace el primer telvane-historico incorporar", nombre));
    return error;
}

ErrorAlmacen esDeVersionAnterior(const std::string& nombre, std::int64_t version) {
    ErrorAlmacen error(fmt::format(
        "{}: es de una versión anterior ({}): la pone al día el próximo incorporar", nombre, version));
    return error;
}

ErrorAlmacen esDeVersionMasNueva(const std::string& nombre, std::int64_t version, std::int64_t deAhora) {
    ErrorAlmacen error(
        fmt::format("{}: es de una versión más nueva ({}) que la de este programa ({}): actualice "
                    "telvane-historico",
                    nombre, version, deAhora));
    return error;
}

}  // namespace telvane
