// The tables, indexes and the view of an archive in PostgreSQL: which there are, which there must be, and
// what puts them right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "historico/esquema.h"
#include "historico/postgres.h"

namespace telvane {

// Every routine throws ErrorAlmacen. Each belongs in a transaction, also those that only look: what holds in
// it is set there, and to compare the view faltan makes another one for a moment.
class TablasPostgres {
   public:
    static constexpr std::string_view kPrefijo = "telvane.";

    // migraciones: what makes of the first version's tables those of now. Both outlive this.
    TablasPostgres(BasePostgres& base, std::span<const std::string_view> migraciones)
        : base_(base), migraciones_(migraciones) {}

    // Those of an older version.
    TablasPostgres deVersion(std::int64_t cual) const {
        return {base_, migraciones_.first(static_cast<std::size_t>(cual) - 1)};
    }

    // Those of the first version, where there are none.
    void crear();
    // What keeps what antiguas says from being brought up to these, a line each with what to do.
    std::vector<std::string> estorbos(const TablasPostgres& antiguas);
    // What is missing of the tables or not as it must be, a line each with what to do.
    std::vector<std::string> faltanTablas();
    // Whether there are tables of those names, but for the one that says which version it is.
    bool estanLasDeSiempre();
    // Whether there is any table with all the columns of one of them, whatever it is called.
    bool hayAlgunaNuestra();

    // What is missing or not as it must be, a line each with what to do.
    std::vector<std::string> faltan();
    // What hangs on them and is not ours, a line each.
    std::vector<std::string> sobras();
    // Values that this program writes nowhere, a line each with what to do.
    std::vector<std::string> imposibles();
    // Throws where something else bears the name of one of ours.
    void exigirSinIntrusos();
    // Makes what is missing of what holds nothing that cannot be derived, and of each value one of its
    // column's kind.
    void reponer();

    // An expression: the column's value made as long as a fingerprint.
    static std::string comoHuella(std::string_view columna);

   private:
    std::vector<Parte> partes() const;
    // Views and indexes.
    std::vector<Parte> partesPorReponer();
    std::vector<std::string> intrusos();
    std::vector<std::string> usurpadas();
    Tablas debidas() const;
    Tablas hay();
    void leerClaves(Tablas& tablas);
    bool vistaEsLaNuestra();
    void reponerTablas();
    void reponerForma(const Falta& falta);
    void cambiarTipo(const Falta& falta);
    void reponerClave(const Falta& falta);
    void reponerValores();

    BasePostgres& base_;
    std::span<const std::string_view> migraciones_;
};

}  // namespace telvane
