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

// What was meant as an address is no file's name, and is not repeated: it may hold a password.
std::string motivoDestino(const std::string& destino) {
    if (destino == "-") return "la entrada o la salida no sirven de archivo histórico: dé un nombre";
    const bool direccion = destino.find("://") != std::string::npos || destino.starts_with("postgres:/") ||
                           destino.starts_with("postgresql:/") ||
                           destino.find("password=") != std::string::npos;
    const bool bien = AlmacenPostgres::esDireccion(destino) ? BasePostgres::seEntiende(destino) : !direccion;
    return bien ? "" : std::string(BasePostgres::kComoSeEscribe);
}

std::unique_ptr<Almacen> abrirAlmacen(const std::string& destino, Uso uso,
                                      std::chrono::milliseconds paciencia, std::function<void()> atender) {
    if (const auto motivo = motivoDestino(destino); !motivo.empty()) throw ErrorAlmacen(motivo);
    if (AlmacenPostgres::esDireccion(destino)) {
        if (uso == Uso::reponer)
            return AlmacenPostgres::abrirParaReponer(destino, paciencia, std::move(atender));
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
