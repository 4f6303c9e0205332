// A schema of a server as an archive: whether there is one, of which version it is, and what makes of it one
// that this program can write to.
#pragma once

#include <cstdint>
#include <string>

#include "historico/almacen.h"
#include "historico/postgres.h"
#include "historico/tablas_postgres.h"

namespace telvane {

// Every routine throws ErrorAlmacen.
class AperturaPostgres {
   public:
    // What it is opened for: to be put right also where it does not say of which version it is.
    enum class Para { leer, crear, reponer };

    // almacen: the store on this base. All of them outlive this.
    AperturaPostgres(Almacen& almacen, BasePostgres& base, TablasPostgres& tablas)
        : almacen_(almacen), base_(base), tablas_(tablas) {}

    // An archive of this version, or an error with what to do. Makes the tables where there are none yet and
    // they are to be made, and brings older ones up to date unless it is only read.
    void abrir(Para para);
    // All that this version has is there by now: it says so where it did not. In a transaction.
    void reponerVersion();

   private:
    static constexpr std::int64_t kSinTablas = 0;
    static constexpr std::int64_t kNoLoDice = -1;
    // Nor does this one, but it has the tables that every version had.
    static constexpr std::int64_t kCallada = -2;
    // What is there is nothing of ours.
    static constexpr std::int64_t kAjeno = -3;
    // Or one of these four.
    std::int64_t version();
    std::int64_t versionQueHay();
    void exigirVersion(std::int64_t cual);
    // reponer: what is missing of that version is made good first.
    std::int64_t ponerAlDia(bool reponer);
    void migrar(std::int64_t desde, bool reponer);

    Almacen& almacen_;
    BasePostgres& base_;
    TablasPostgres& tablas_;
};

}  // namespace telvane
