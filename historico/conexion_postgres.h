// How a PostgreSQL server is reached: what its address says, and what to tell where it lets nobody in.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct pg_conn;
struct pg_result;
struct _PQconninfoOption;

namespace telvane {

// What a server says that hangs up on its own: its SQLSTATE, and the words. Empty: it said nothing.
struct Despedida {
    std::string estado;
    std::string dicho;
};

// A field of an answer, empty where there is none.
std::string campoDe(const pg_result* resultado, int cual);

// An address postgresql://..., as libpq understands it.
class DireccionPostgres {
   public:
    // nullopt: it cannot be understood. Throws ErrorAlmacen where libpq is missing.
    static std::optional<DireccionPostgres> leer(const std::string& url);

    // Without the password.
    std::string nombre() const;

    // Waits until the server has answered, or cannot: what is returned tells which, and is the caller's to
    // finish. It may be null where memory is missing. Nothing is said on standard error. despedida: filled as
    // long as the connection lives.
    pg_conn* conectar(Despedida& despedida) const;

    // Why that failed, with what to do. dicho: what libpq says of it.
    std::string motivo(const std::string& dicho) const;

   private:
    struct Soltar {
        void operator()(_PQconninfoOption* opciones) const;
    };
    using Opciones = std::unique_ptr<_PQconninfoOption, Soltar>;

    DireccionPostgres(std::string url, Opciones opciones);
    std::string valor(std::string_view clave) const;

    std::string url_;
    Opciones opciones_;
    // The file of passwords that libpq would not use; empty: it has none, or would.
    std::string clavesSinUso_;
};

// Of a connection that failed for what libpq says, with what to do.
std::string motivoDeConexion(const std::string& dicho);

}  // namespace telvane
