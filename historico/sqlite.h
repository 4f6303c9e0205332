// SQLite's C interface with owners and errors, and nothing else.
#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace telvane {

// Every routine throws ErrorAlmacen, or std::bad_alloc where SQLite found no memory.
class BaseSqlite {
   public:
    enum class Acceso { lectura, escritura };

    // Of what a writer that was killed has left, to who may not write.
    static constexpr std::string_view kAMedias =
        "un corte lo dejó a medias y aquí falta permiso para reponerlo: lo repone el próximo incorporar";

    // ruta: empty for a temporary one that nobody else sees. paciencia: how long to wait for whoever holds a
    // lock. atender is called meanwhile; what it throws ends the wait, and comes out of the routine that
    // waited.
    BaseSqlite(const std::filesystem::path& ruta, Acceso acceso, std::chrono::milliseconds paciencia,
               std::function<void()> atender = {});
    BaseSqlite(const BaseSqlite&) = delete;
    BaseSqlite& operator=(const BaseSqlite&) = delete;
    ~BaseSqlite();

    const std::filesystem::path& ruta() const { return ruta_; }
    sqlite3* conexion() const { return base_; }

    // Statements without results.
    void ejecutar(const std::string& sql);
    // What it answers first; 0 where it answers nothing.
    std::int64_t numero(const std::string& sql);
    // As Spanish tells it, with what to do; codigo: SQLite's extended result.
    [[noreturn]] void fallar(int codigo) const;
    // Does a step again while another connection keeps it from being done, as long as is waited for a lock:
    // of some, as those of a change of mode and of a journal that a killed program left, SQLite tells at
    // once.
    void insistir(const std::function<void()>& paso);
    void exigir(int codigo) const;

   private:
    bool seguirEsperando(int vez);
    std::string motivo(int codigo) const;
    bool quedaDiario() const;
    std::string porQueNoSeAbre(int sistema) const;

    std::filesystem::path ruta_;
    Acceso acceso_;
    std::chrono::milliseconds paciencia_;
    std::function<void()> atender_;
    std::chrono::steady_clock::time_point hastaCuando_;
    // On its way through SQLite, which knows no exceptions.
    mutable std::exception_ptr interrupcion_;
    sqlite3* base_ = nullptr;
};

// A prepared statement; every routine that runs or changes it throws ErrorAlmacen. Parameters are numbered
// from 1, columns from 0.
class Sentencia {
   public:
    Sentencia(const BaseSqlite& base, std::string_view sql);
    Sentencia(const Sentencia&) = delete;
    Sentencia& operator=(const Sentencia&) = delete;
    ~Sentencia();

    Sentencia& poner(int cual, std::int64_t valor);
    Sentencia& poner(int cual, std::string_view texto);
    // As long as the bytes live.
    Sentencia& poner(int cual, std::span<const std::uint8_t> bytes);
    Sentencia& ponerNulo(int cual);

    // Whether there is a (further) row.
    bool paso();
    // All rows; ready for the next run afterwards.
    void correr(const std::function<void()>& alFila = {});
    void volver();

    bool esNulo(int columna) const;
    std::int64_t entero(int columna) const;
    // Up to a NUL.
    std::string texto(int columna) const;
    // Valid until the next row, or until it runs anew.
    std::span<const std::uint8_t> bytes(int columna) const;

   private:
    const BaseSqlite& base_;
    sqlite3_stmt* sentencia_ = nullptr;
};

}  // namespace telvane
