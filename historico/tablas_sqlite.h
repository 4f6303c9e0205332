// The tables, indexes and views of an archive in SQLite: which there are, which there must be, and what puts
// them right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "historico/esquema.h"
#include "historico/sqlite.h"

namespace telvane {

// Every routine throws ErrorAlmacen.
class TablasSqlite {
   public:
    static constexpr std::string_view kPrefijo{};

    // migraciones: what makes of the first version's tables those of now. Both outlive this.
    TablasSqlite(BaseSqlite& base, std::span<const std::string_view> migraciones)
        : base_(base), migraciones_(migraciones) {}

    // Those of an older version.
    TablasSqlite deVersion(std::int64_t cual) const {
        return {base_, migraciones_.first(static_cast<std::size_t>(cual) - 1)};
    }

    // All of them, in a file without any.
    void crear();
    // Whether nothing is missing of what every version had.
    bool estanLasDeSiempre() const;
    // What keeps what antiguas says from being brought up to these, a line each with what to do.
    std::vector<std::string> estorbos(const TablasSqlite& antiguas) const;
    // What is missing of the tables or not as it must be, a line each with what to do.
    std::vector<std::string> faltanTablas() const;

    // What is missing or not as it must be, a line each with what to do.
    std::vector<std::string> faltan() const;
    // What hangs on them and is not ours, a line each.
    std::vector<std::string> sobras() const;
    // Values that this program writes nowhere, a line each with what to do.
    std::vector<std::string> imposibles() const;
    // Makes what is missing of what holds nothing that cannot be derived, and of each value one of its
    // column's kind. In a transaction.
    void reponer();

   private:
    std::vector<Parte> partes() const;
    std::vector<Parte> recienHechas() const;
    // Views and indexes.
    std::vector<Parte> partesPorReponer() const;
    // What holds a key: the table itself, or an index that somebody made for it as well.
    enum class Claves { declaradas, todas };
    Tablas hay(Claves cuales = Claves::todas) const;
    Tablas debidas() const;
    std::vector<std::string> intrusos() const;
    std::vector<std::string> usurpadas() const;
    std::vector<std::string> disparadoresAjenos(const Tablas& deben) const;
    std::vector<std::string> indicesAjenos(const Tablas& deben) const;
    void reponerTablas();
    void hacerDeNuevo(const Tabla& tabla, const std::string& sql);
    void reponerValores();

    BaseSqlite& base_;
    std::span<const std::string_view> migraciones_;
};

}  // namespace telvane
