// A file as an archive in SQLite: what stands there, whose it is and of which version, and what makes of it
// one that this program can write to.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string_view>

#include "historico/almacen.h"
#include "historico/sqlite.h"
#include "historico/tablas_sqlite.h"

namespace telvane {

// Every routine throws ErrorAlmacen.
class AperturaSqlite {
   public:
    // What is known before it is opened, which of some of it would hang, or tell less. atender: called while
    // whoever writes to it is waited for.
    static void exigirLegible(const std::filesystem::path& ruta, const std::function<void()>& atender);
    // crear: there may be none yet. Throws ErrorGuardado as well, where none can be made.
    static void exigirEscribible(const std::filesystem::path& ruta, bool crear);

    // almacen: the store on this base. migraciones: what makes of an older archive the next version; the
    // version of now is one more than there are. All of them outlive this.
    AperturaSqlite(Almacen& almacen, BaseSqlite& base, TablasSqlite& tablas,
                   std::span<const std::string_view> migraciones)
        : almacen_(almacen), base_(base), tablas_(tablas), migraciones_(migraciones) {}

    // An archive of this version, or an error with what to do.
    void paraLeer();
    // Makes the archive where there is none yet and crear says so, migrates an older one, after a copy, and
    // where it is not to be made puts one right that does not say that it is one. Throws ErrorGuardado as
    // well, where there is no place for the copy.
    void paraEscribir(bool crear);
    void crearTablas();

   private:
    bool deNadie();
    bool callaQueEsNuestro();
    // Whichever version it is.
    void exigirNuestro();
    // reponer: what is missing of that version is made good first.
    void migrar(std::int64_t desde, bool reponer);
    std::int64_t versionDeAhora() const { return std::ssize(migraciones_) + 1; }

    Almacen& almacen_;
    BaseSqlite& base_;
    TablasSqlite& tablas_;
    std::span<const std::string_view> migraciones_;
};

}  // namespace telvane
