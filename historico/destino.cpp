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

}  // namespace

std::unique_ptr<Almacen> abrirAlmacen(const std::string& destino, Uso uso,
                                      std::chrono::milliseconds paciencia, std::function<void()> atender) {
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
