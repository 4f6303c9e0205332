#include "historico/postgres.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>

#include <array>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>
#include <utility>

#include <fmt/format.h>

#include "historico/almacen.h"
#include "historico/biblioteca_postgres.h"
#include "historico/conexion_postgres.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

using Clase = ErrorAlmacen::Clase;

struct Motivo {
    std::string texto;
    Clase clase = Clase::otra;
};

// estado: SQLSTATE; its first two characters are its class.
Motivo motivoDe(const std::string& estado, const std::string& dicho, bool viva) {
    const auto clase = estado.substr(0, 2);
    // idle_session_timeout, idle_in_transaction_session_timeout, transaction_timeout, statement_timeout.
    if (estado == "57P05" || estado == "25P03" || estado == "25P04" || estado == "57014") {
        return {fmt::format("el servidor cortó lo que se hacía: repita y, si vuelve a pasar, pida a quien lo "
                            "administra que alargue el plazo de su usuario ({})",
                            dicho),
                viva ? Clase::otra : Clase::pasajera};
    }
    // A state of none comes from the connection, which may be told as open until it is used again.
    if (!viva || estado.empty() || clase == "08" || estado == "57P01" || estado == "57P02" ||
        estado == "57P03") {
        return {"se perdió la conexión con el servidor: repita cuando responda; lo ya incorporado sigue allí",
                Clase::pasajera};
    }
    if (estado == "55P03") return {"otro programa escribe en él: repita cuando termine", Clase::agotada};
    if (estado == "25006") {
        return {
            fmt::format("el servidor o su usuario solo dejan leer: nombre el servidor que acepta escrituras, "
                        "o pida a quien "
                        "lo administra que las permita ({})",
                        dicho)};
    }
    if (estado == "42501") {
        return {fmt::format(
            "el servidor no da permiso: pídalo para el esquema telvane a quien lo administra ({})", dicho)};
    }
    // Our own statements are right where all of it is there.
    if (estado == "42P01" || estado == "42703" || estado == "42809")
        return {fmt::format("le falta una parte: vea telvane-historico comprobar ({})", dicho)};
    if (estado == "23514") {
        return {fmt::format("a una tabla partida le falta la parte de esta estación: hágala y repita ({})",
                            dicho),
                Clase::delDato};
    }
    if (estado == "23505") {
        return {fmt::format("lo que hay en él se contradice: vea telvane-historico comprobar ({})", dicho),
                Clase::delDato};
    }
    if (estado == "22P05") {
        return {fmt::format("esa base de datos no guarda todas las letras: haga otra con createdb -E UTF8 -T "
                            "template0, y nómbrela ({})",
                            dicho),
                Clase::delDato};
    }
    // Of a table, and of a type.
    if (estado == "42P07" || estado == "42710") {
        return {
            fmt::format("algo que no es de este programa lleva ya ese nombre en el esquema telvane: que "
                        "quien lo administra lo quite, o nombre otra base de datos ({})",
                        dicho)};
    }
    if (clase == "53") {
        return {fmt::format(
            "al servidor le faltan recursos, quizá espacio en el disco: libérelos y repita ({})", dicho)};
    }
    // Data it does not take, or not so much of them.
    const bool delDato = clase == "22" || clase == "23" || clase == "54";
    return {fmt::format("el servidor dice: {}", dicho), delDato ? Clase::delDato : Clase::otra};
}

// All of them, for as long as it lives: threads that are begun meanwhile get none.
class SenalesCerradas {
   public:
    SenalesCerradas() {
        sigset_t todas;
        ::sigfillset(&todas);
        ::pthread_sigmask(SIG_SETMASK, &todas, &anteriores_);
    }
    SenalesCerradas(const SenalesCerradas&) = delete;
    SenalesCerradas& operator=(const SenalesCerradas&) = delete;
    ~SenalesCerradas() { ::pthread_sigmask(SIG_SETMASK, &anteriores_, nullptr); }

   private:
    sigset_t anteriores_{};
};

std::string primeraLinea(const std::string& texto) {
    return texto.substr(0, texto.find('\n'));
}

}  // namespace

ResultadoPostgres::ResultadoPostgres(pg_result* resultado) : resultado_(resultado) {}
void ResultadoPostgres::Soltar::operator()(pg_result* resultado) const {
    pq().clear(resultado);
}
int ResultadoPostgres::filas() const {
    return pq().ntuples(resultado_.get());
}
std::int64_t ResultadoPostgres::tocadas() const {
    const std::string_view texto(pq().cmdTuples(resultado_.get()));
    std::int64_t cuantas = 0;
    std::from_chars(texto.data(), texto.data() + texto.size(), cuantas);
    return cuantas;
}
bool ResultadoPostgres::esNulo(int fila, int columna) const {
    return pq().getisnull(resultado_.get(), fila, columna) != 0;
}
std::span<const std::uint8_t> ResultadoPostgres::bytes(int fila, int columna) const {
    return {reinterpret_cast<const std::uint8_t*>(pq().getvalue(resultado_.get(), fila, columna)),
            static_cast<std::size_t>(pq().getlength(resultado_.get(), fila, columna))};
}
std::int64_t ResultadoPostgres::entero(int fila, int columna) const {
    return enteroDe(bytes(fila, columna));
}
std::string ResultadoPostgres::texto(int fila, int columna) const {
    const auto b = bytes(fila, columna);
    return {b.begin(), b.end()};
}

Parametros& Parametros::entero(std::int64_t valor) {
    valores_.push_back({std::to_string(valor), 0});
    return *this;
}
Parametros& Parametros::texto(std::string_view valor) {
    valores_.push_back({utf8Valido(valor), 0});
    return *this;
}
Parametros& Parametros::bytes(std::span<const std::uint8_t> valor) {
    valores_.push_back({std::string(valor.begin(), valor.end()), 1});
    return *this;
}
Parametros& Parametros::nulo() {
    valores_.push_back({std::nullopt, 0});
    return *this;
}

void BasePostgres::Cerrar::operator()(pg_conn* conexion) const {
    pq().finish(conexion);
}

bool BasePostgres::seEntiende(const std::string& url) {
    return DireccionPostgres::leer(url).has_value();
}

BasePostgres::BasePostgres(const std::string& url, std::function<void()> atender)
    : atender_(std::move(atender)) {
    auto direccion = DireccionPostgres::leer(url);
    if (!direccion) throw ErrorAlmacen(std::string(kComoSeEscribe));
    nombre_ = direccion->nombre();
    direccion_ = std::make_shared<const DireccionPostgres>(*std::move(direccion));
    conectar();
}
BasePostgres::~BasePostgres() = default;

// A connection that is being made, shared by who waits for it and the thread that makes it.
struct BasePostgres::Intento {
    std::mutex cerrojo;  // for what follows
    std::condition_variable aviso;
    bool hecho = false;
    std::unique_ptr<Despedida> despedida = std::make_unique<Despedida>();
    Conexion conexion;
};

// Looking for a server's name and trying one after the other can be broken off by nothing: a thread does it,
// and who is interrupted leaves it behind.
std::shared_ptr<BasePostgres::Intento> BasePostgres::conectarAparte() {
    constexpr std::chrono::milliseconds kVistazo{20};
    auto intento = std::make_shared<Intento>();
    {
        // The program's signals are for the thread that waits.
        const SenalesCerradas cerradas;
        std::thread([intento, direccion = direccion_] {
            Conexion conexion(direccion->conectar(*intento->despedida));
            const std::lock_guard guardia(intento->cerrojo);
            intento->conexion = std::move(conexion);
            intento->hecho = true;
            intento->aviso.notify_all();
        }).detach();
    }
    std::unique_lock guardia(intento->cerrojo);
    while (!intento->aviso.wait_for(guardia, kVistazo, [&] { return intento->hecho; })) {
        guardia.unlock();
        if (atender_) atender_();
        guardia.lock();
    }
    return intento;
}

void BasePostgres::conectar() {
    const auto intento = conectarAparte();
    conexion_ = std::move(intento->conexion);
    despedida_ = std::move(intento->despedida);
    preparadas_.clear();
    // No routine waits for a server that has stopped but those that say so.
    pq().setnonblocking(conexion_.get(), 1);
    if (viva()) return;
    throw ErrorAlmacen(fmt::format("{}: no se puede conectar: {}", nombre_,
                                   direccion_->motivo(pq().errorMessage(conexion_.get()))));
}

bool BasePostgres::viva() const {
    return pq().status(conexion_.get()) == CONNECTION_OK;
}
bool BasePostgres::enTransaccion() const {
    return pq().transactionStatus(conexion_.get()) != PQTRANS_IDLE;
}
void BasePostgres::reconectar() {
    conectar();
}

void BasePostgres::fallar(const pg_result* resultado) const {
    auto estado = campoDe(resultado, PG_DIAG_SQLSTATE);
    auto dicho = campoDe(resultado, PG_DIAG_MESSAGE_PRIMARY);
    // It may have been said before anything was asked.
    if (estado.empty() && !despedida_->estado.empty()) {
        estado = despedida_->estado;
        dicho = despedida_->dicho;
    }
    if (dicho.empty()) dicho = primeraLinea(pq().errorMessage(conexion_.get()));
    const auto motivo = motivoDe(estado, dicho, viva());
    throw ErrorAlmacen(fmt::format("{}: {}", nombre_, motivo.texto), motivo.clase);
}

void BasePostgres::exigir(const pg_result* resultado) const {
    const auto estado = pq().resultStatus(resultado);
    if (estado != PGRES_COMMAND_OK && estado != PGRES_TUPLES_OK) fallar(resultado);
}

// Until it has all of the question and has answered.
void BasePostgres::esperar(Atencion atencion) {
    constexpr int kVistazoMs = 100;
    constexpr std::chrono::seconds kBreve{5};
    const auto hasta = std::chrono::steady_clock::now() + kBreve;
    while (true) {
        const int porMandar = pq().flush(conexion_.get());
        // What has gone wrong is in the result.
        if (porMandar < 0 || (porMandar == 0 && pq().isBusy(conexion_.get()) == 0)) return;
        const int sucesos = porMandar > 0 ? POLLIN | POLLOUT : POLLIN;
        pollfd servidor{pq().socket(conexion_.get()), static_cast<short>(sucesos), 0};
        if (::poll(&servidor, 1, kVistazoMs) > 0) {
            if ((servidor.revents & ~POLLOUT) != 0 && pq().consumeInput(conexion_.get()) == 0) return;
            continue;
        }
        if (atencion == Atencion::breve) {
            if (std::chrono::steady_clock::now() >= hasta) return conexion_.reset();
            continue;
        }
        try {
            if (atender_) atender_();
        } catch (...) {
            cancelar();
            throw;
        }
    }
}

// The server lets go of what it waits for, if it can still hear that, and of the connection. libpq asks for
// that in a connection of its own, which one that has stopped takes and never answers.
void BasePostgres::cancelar() {
    constexpr std::chrono::seconds kEspera{1};
    const std::shared_ptr<PGcancel> aviso(pq().getCancel(conexion_.get()), pq().freeCancel);
    const auto dicho = std::make_shared<std::promise<void>>();
    {
        const SenalesCerradas cerradas;
        std::thread([aviso, dicho] {
            std::array<char, 256> motivo{};
            pq().cancel(aviso.get(), motivo.data(), static_cast<int>(motivo.size()));
            dicho->set_value();
        }).detach();
    }
    dicho->get_future().wait_for(kEspera);
    conexion_.reset();
}

ResultadoPostgres BasePostgres::recoger(bool enviado, Atencion atencion) {
    pg_result* ultimo = nullptr;
    ResultadoPostgres dueno(ultimo);
    if (!enviado) return dueno;
    for (;;) {
        esperar(atencion);
        ultimo = pq().getResult(conexion_.get());
        if (ultimo == nullptr) return dueno;
        ResultadoPostgres parte(ultimo);
        // Why a server hangs up is told first, and then that it has.
        if (dueno.suyo() == nullptr || pq().resultStatus(dueno.suyo()) != PGRES_FATAL_ERROR)
            dueno = std::move(parte);
        // The rest comes after the data.
        if (pq().resultStatus(ultimo) == PGRES_COPY_IN) return dueno;
    }
}

void BasePostgres::ejecutar(const std::string& sql, Atencion atencion) {
    exigir(recoger(pq().sendQuery(conexion_.get(), sql.c_str()) == 1, atencion).suyo());
}

ResultadoPostgres BasePostgres::consultar(const std::string& sql, const Parametros& parametros) {
    // What is asked once takes one answer; what is asked again is prepared for the times that follow.
    const auto [lugar, nueva] = preparadas_.try_emplace(sql);
    if (!nueva && lugar->second.empty()) {
        const auto nombre = fmt::format("t{}", ++cuantasPreparadas_);
        const auto preparada =
            recoger(pq().sendPrepare(conexion_.get(), nombre.c_str(), sql.c_str(), 0, nullptr) == 1);
        if (pq().resultStatus(preparada.suyo()) != PGRES_COMMAND_OK) fallar(preparada.suyo());
        lugar->second = nombre;
    }
    std::vector<const char*> valores;
    std::vector<int> largos;
    std::vector<int> formatos;
    for (const auto& [bytes, formato] : parametros.valores_) {
        valores.push_back(bytes ? bytes->data() : nullptr);
        largos.push_back(bytes ? static_cast<int>(bytes->size()) : 0);
        formatos.push_back(formato);
    }
    constexpr int kBinario = 1;
    const auto cuantos = static_cast<int>(valores.size());
    const int enviado =
        nueva ? pq().sendQueryParams(conexion_.get(), sql.c_str(), cuantos, nullptr, valores.data(),
                                     largos.data(), formatos.data(), kBinario)
              : pq().sendQueryPrepared(conexion_.get(), lugar->second.c_str(), cuantos, valores.data(),
                                       largos.data(), formatos.data(), kBinario);
    auto resultado = recoger(enviado == 1);
    exigir(resultado.suyo());
    return resultado;
}

void BasePostgres::exigirTocadas(const ResultadoPostgres& resultado, std::size_t cuantas) const {
    if (resultado.tocadas() == static_cast<std::int64_t>(cuantas)) return;
    throw ErrorAlmacen(
        fmt::format("{}: el servidor no guardó lo que se le dio: vea telvane-historico comprobar", nombre()));
}

void BasePostgres::copiar(const std::string& sql, std::string_view bytes, std::size_t filas) {
    const auto comienzo = recoger(pq().sendQuery(conexion_.get(), sql.c_str()) == 1);
    if (pq().resultStatus(comienzo.suyo()) != PGRES_COPY_IN) fallar(comienzo.suyo());
    const bool enviado =
        pq().putCopyData(conexion_.get(), bytes.data(), static_cast<int>(bytes.size())) == 1 &&
        pq().putCopyEnd(conexion_.get(), nullptr) == 1;
    if (!enviado) fallar(nullptr);
    const auto fin = recoger(true);
    if (pq().resultStatus(fin.suyo()) != PGRES_COMMAND_OK) fallar(fin.suyo());
    exigirTocadas(fin, filas);
}

}  // namespace telvane
