#include "historico/apertura_postgres.h"

#include <span>

#include <fmt/format.h>

#include "historico/apertura.h"
#include "historico/esquema_postgres.h"

namespace telvane {

namespace {

bool esVieja(std::int64_t version) {
    return version >= 0 && version < esquema_postgres::kVersion;
}

}  // namespace

void AperturaPostgres::abrir(Para para) {
    auto hay = versionQueHay();
    const bool reponer = para == Para::reponer;
    if (esVieja(hay) && (para == Para::crear || (reponer && hay != kSinTablas))) hay = ponerAlDia(reponer);
    if (reponer && hay == kCallada) return;
    exigirVersion(hay);
}

std::int64_t AperturaPostgres::version() {
    // A schema without anything in it is what whoever administers the server makes for somebody.
    const auto hay = base_.consultar(
        "SELECT EXISTS(SELECT 1 FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n ON "
        "n.oid=c.relnamespace WHERE n.nspname='telvane'),EXISTS(SELECT 1 FROM pg_catalog.pg_attribute a "
        "WHERE "
        "a.attrelid=to_regclass('telvane.esquema') AND a.attname='version' AND "
        "a.atttypid='integer'::regtype)");
    if (!hay.logico(0, 0)) return kSinTablas;
    if (hay.logico(0, 1)) {
        const auto r = base_.consultar("SELECT version::bigint FROM telvane.esquema");
        if (r.filas() == 1 && r.entero(0, 0) > 0) return r.entero(0, 0);
    } else if (!tablas_.hayAlgunaNuestra()) {
        return kAjeno;
    }
    return tablas_.estanLasDeSiempre() ? kCallada : kNoLoDice;
}

std::int64_t AperturaPostgres::versionQueHay() {
    const Transaccion transaccion(almacen_, Almacen::Modo::lectura);
    return version();
}

void AperturaPostgres::migrar(std::int64_t desde, bool reponer) {
    if (desde == kSinTablas) {
        tablas_.crear();
        desde = 1;
    } else {
        exigirSinEstorbo(almacen_.nombre(), tablas_, tablas_.deVersion(desde), reponer);
        if (reponer) tablas_.deVersion(desde).reponer();
    }
    for (const auto paso :
         std::span(esquema_postgres::kMigraciones).subspan(static_cast<std::size_t>(desde) - 1))
        base_.ejecutar(std::string(paso));
    base_.ejecutar(fmt::format("UPDATE telvane.esquema SET version={}", esquema_postgres::kVersion));
}

std::int64_t AperturaPostgres::ponerAlDia(bool reponer) {
    {
        Transaccion transaccion(almacen_, Almacen::Modo::arreglo);
        // Two may begin at once: the second finds it done.
        base_.ejecutar("SELECT pg_advisory_xact_lock(hashtext('telvane'))");
        if (const auto desde = version(); esVieja(desde)) migrar(desde, reponer);
        transaccion.confirmar();
    }
    return versionQueHay();
}

void AperturaPostgres::exigirVersion(std::int64_t cual) {
    constexpr auto kAhora = esquema_postgres::kVersion;
    if (cual == kAhora) return;
    if (cual == kSinTablas) throw noHayArchivo(almacen_.nombre());
    if (cual == kAjeno) {
        throw ErrorAlmacen(fmt::format(
            "{}: lo que hay en su esquema telvane no es de este programa: nombre otra base de datos",
            almacen_.nombre()));
    }
    if (cual == kNoLoDice || cual == kCallada) {
        throw ErrorAlmacen(fmt::format("{}: no dice de qué versión es, en su tabla telvane.esquema: {}",
                                       almacen_.nombre(), cual == kCallada ? kReponer : kRecuperar));
    }
    if (cual > kAhora) throw esDeVersionMasNueva(almacen_.nombre(), cual, kAhora);
    const Transaccion transaccion(almacen_, Almacen::Modo::lectura);
    exigirSinEstorbo(almacen_.nombre(), tablas_, tablas_.deVersion(cual), false);
    throw esDeVersionAnterior(almacen_.nombre(), cual);
}

void AperturaPostgres::reponerVersion() {
    if (version() > 0) return;
    base_.ejecutar(fmt::format("DELETE FROM telvane.esquema; INSERT INTO telvane.esquema VALUES({})",
                               esquema_postgres::kVersion));
}

}  // namespace telvane
