// libpq with owners and errors, and nothing else. Results come in the server's binary format.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct pg_conn;
struct pg_result;

namespace telvane {

class DireccionPostgres;
struct Despedida;

// Rows and columns from 0. What stands there must be of the kind that is asked for.
class ResultadoPostgres {
   public:
    explicit ResultadoPostgres(pg_result* resultado);
    ResultadoPostgres(ResultadoPostgres&&) noexcept = default;
    ResultadoPostgres& operator=(ResultadoPostgres&&) noexcept = default;

    int filas() const;
    // Rows that a statement made, changed or took away; those that a COPY brought.
    std::int64_t tocadas() const;
    bool esNulo(int fila, int columna) const;
    bool logico(int fila, int columna) const { return bytes(fila, columna)[0] != 0; }
    // Of a bigint.
    std::int64_t entero(int fila, int columna) const;
    std::span<const std::uint8_t> bytes(int fila, int columna) const;
    std::string texto(int fila, int columna) const;
    const pg_result* suyo() const { return resultado_.get(); }

   private:
    struct Soltar {
        void operator()(pg_result* resultado) const;
    };
    std::unique_ptr<pg_result, Soltar> resultado_;
};

// Values for $1, $2, ...
class Parametros {
   public:
    Parametros& entero(std::int64_t valor);
    // The server takes no other text than a valid one.
    Parametros& texto(std::string_view valor);
    Parametros& bytes(std::span<const std::uint8_t> valor);
    Parametros& nulo();

   private:
    friend class BasePostgres;
    struct Valor {
        std::optional<std::string> bytes;
        int formato;
    };
    std::vector<Valor> valores_;
};

// Every routine that asks the server throws ErrorAlmacen.
class BasePostgres {
   public:
    // How a wait for the server ends without its answer: breve, after some seconds and then for good; toda,
    // by what atender throws.
    enum class Atencion { breve, toda };

    // What to tell of an address that is none.
    static constexpr std::string_view kComoSeEscribe =
        "no se entiende la dirección de la base de datos: se escribe postgresql://USUARIO@SERVIDOR/BASE";
    // Throws ErrorAlmacen where libpq is missing.
    static bool seEntiende(const std::string& url);

    // url: postgresql://...; its password is told to the server alone. atender: called while the server is
    // looked for and while it works; what it throws ends that, and comes out of the routine that waited.
    explicit BasePostgres(const std::string& url, std::function<void()> atender = {});
    BasePostgres(const BasePostgres&) = delete;
    BasePostgres& operator=(const BasePostgres&) = delete;
    ~BasePostgres();

    // Without the password.
    const std::string& nombre() const { return nombre_; }
    bool viva() const;
    bool enTransaccion() const;
    // A connection anew after the server has gone.
    void reconectar();

    // Several statements without results, as one message.
    void ejecutar(const std::string& sql, Atencion atencion = Atencion::toda);
    // Prepared at its second use.
    ResultadoPostgres consultar(const std::string& sql, const Parametros& parametros = {});
    // The same of one that makes or changes one row. Throws as exigirTocadas does.
    void cambiarUna(const std::string& sql, const Parametros& parametros) {
        exigirTocadas(consultar(sql, parametros), 1);
    }
    // COPY ... FROM STDIN (FORMAT binary): all of its bytes, which are so many rows. Throws as exigirTocadas
    // does.
    void copiar(const std::string& sql, std::string_view bytes, std::size_t filas);
    // Throws ErrorAlmacen where it touched others than so many rows: somebody's trigger or rule takes them
    // away.
    void exigirTocadas(const ResultadoPostgres& resultado, std::size_t cuantas) const;

   private:
    struct Cerrar {
        void operator()(pg_conn* conexion) const;
    };
    using Conexion = std::unique_ptr<pg_conn, Cerrar>;
    struct Intento;
    void conectar();
    std::shared_ptr<Intento> conectarAparte();
    // The answer to what was sent: the last of its parts, or where data are expected.
    ResultadoPostgres recoger(bool enviado, Atencion atencion = Atencion::toda);
    void esperar(Atencion atencion);
    void cancelar();
    void exigir(const pg_result* resultado) const;
    [[noreturn]] void fallar(const pg_result* resultado) const;

    // Shared with whoever is still connecting when nobody waits for it any more.
    std::shared_ptr<const DireccionPostgres> direccion_;
    std::string nombre_;
    std::function<void()> atender_;
    std::unique_ptr<Despedida> despedida_;
    Conexion conexion_;
    // Each text that was asked, and its name there once it is prepared.
    std::map<std::string, std::string> preparadas_;
    std::size_t cuantasPreparadas_ = 0;
};

// Whole numbers as the server has them, highest byte first.
template <typename Entero>
void agregarEntero(std::string& bytes, Entero valor) {
    for (int bit = static_cast<int>(sizeof(Entero)) * 8 - 8; bit >= 0; bit -= 8) {
        bytes += static_cast<char>(static_cast<std::make_unsigned_t<Entero>>(valor) >> bit & 0xFF);
    }
}
inline std::int64_t enteroDe(std::span<const std::uint8_t> bytes) {
    std::uint64_t valor = 0;
    for (const auto byte : bytes) valor = valor << 8 | byte;
    return static_cast<std::int64_t>(valor);
}

}  // namespace telvane
