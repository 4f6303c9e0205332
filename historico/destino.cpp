#include "historico/destino.h"

#include <filesystem>
#include <utility>

#include "historico/almacen_postgres.h"
#include "historico/almacen_sqlite.h"
#include "platform/archivo.h"

namespace telvane {

namespace {

AlmacenSqlite::Opciones opcionesSqlite(std::chrono::milliseconds paciencia, std::function<void()> atender) {
    return {.paciencia = paciencia, .atender = std::move(atender)};
}

// What was meant as an address is no file's name, and is not repeated: it may hold a password.
void exigirNombre(const std::string& destino) {
    if (destino == "-")
        throw ErrorAlmacen("la entrada o la salida no sirven de archivo histórico: dé un nombre");
    if (AlmacenPostgres::esDireccion(destino)) return;
    const bool direccion = destino.find("://") != std::string::npos || destino.starts_with("postgres:/") ||
                           destino.starts_with("postgresql:/") ||
                           destino.find("password=") != std::string::npos;
    if (direccion)
        throw ErrorAlmacen(
            "no se entiende la dirección de la base de datos: se escribe postgresql://USUARIO@SERVIDOR/BASE");
}

}  // namespace

std::unique_ptr<Almacen> abrirAlmacen(const std::string& destino, Uso uso,
                                      std::chrono::milliseconds paciencia, std::function<void()> atender) {
    exigirNombre(destino);
    if (AlmacenPostgres::esDireccion(destino)) {
        return std::make_unique<AlmacenPostgres>(destino, uso == Uso::incorporar, paciencia,
                                                 std::move(atender));
    }
    auto opciones = opcionesSqlite(paciencia, std::move(atender));
    if (uso == Uso::leer) return AlmacenSqlite::abrirParaLeer(destino, std::move(opciones));
    return AlmacenSqlite::abrirParaEscribir(destino, uso == Uso::incorporar, std::move(opciones));
}

std::string destinoPorDefecto() {
    const auto carpeta = carpetaDeDatos();
    if (carpeta.empty())
        throw ErrorAlmacen("no se sabe dónde guardar el archivo histórico: indíquelo con --en");
    return (carpeta / "historico.sqlite").string();
}

}  // namespace telvane
