#include "historico/postgres.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>

#include <array>
#include <charconv>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include <fmt/format.h>

#include "historico/almacen.h"
#include "historico/biblioteca_postgres.h"
#include "platform/numero.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

using Clase = ErrorAlmacen::Clase;

struct Opciones {
    void operator()(PQconninfoOption* opciones) const { pq().conninfoFree(opciones); }
};
using OpcionesDeUrl = std::unique_ptr<PQconninfoOption, Opciones>;

std::string valorDe(const OpcionesDeUrl& opciones, std::string_view clave) {
    for (const auto* o = opciones.get(); o->keyword != nullptr; ++o) {
        if (o->keyword == clave && o->val != nullptr) return o->val;
    }
    return {};
}

// Ports of one or several servers; empty: the usual one.
bool sonPuertos(std::string_view texto) {
    while (!texto.empty()) {
        const auto uno = texto.substr(0, texto.find(','));
        if (!uno.empty() && numeroDe<std::uint16_t>(uno).value_or(0) == 0) return false;
        texto.remove_prefix(std::min(uno.size() + 1, texto.size()));
    }
    return true;
}

// Null: it cannot be understood. What libpq says of that quotes the address with all that is in it.
OpcionesDeUrl leerUrl(const std::string& url) {
    char* error = nullptr;
    OpcionesDeUrl opciones(pq().conninfoParse(url.c_str(), &error));
    pq().freemem(error);
    if (!opciones) return opciones;
    // A password with an "@" that is not written as %40 would be taken for a part of the server's name.
    const bool bien = valorDe(opciones, "host").find('@') == std::string::npos &&
                      valorDe(opciones, "dbname").find("password=") == std::string::npos &&
                      sonPuertos(valorDe(opciones, "port"));
    return bien ? std::move(opciones) : nullptr;
}

std::string sinContrasena(const OpcionesDeUrl& opciones) {
    if (!opciones) throw ErrorAlmacen(std::string(BasePostgres::kComoSeEscribe));
    const auto usuario = valorDe(opciones, "user");
    const auto puerto = valorDe(opciones, "port");
    return fmt::format("postgresql://{}{}{}/{}", usuario.empty() ? "" : usuario + "@",
                       valorDe(opciones, "host"), puerto.empty() ? "" : ":" + puerto,
                       valorDe(opciones, "dbname"));
}

std::string campoDe(const pg_result* resultado, int cual) {
    const char* campo = resultado != nullptr ? pq().resultErrorField(resultado, cual) : nullptr;
    return campo != nullptr ? campo : "";
}

struct Motivo {
    std::string texto;
    Clase clase = Clase::otra;
};

// estado: SQLSTATE; its first two characters are its class.
Motivo motivoDe(const std::string& estado, const std::string& dicho, bool viva) {
    const auto clase = estado.substr(0, 2);
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
        return {fmt::format("esa base de datos no guarda todas las letras: hágala con createdb -E UTF8 ({})",
                            dicho),
                Clase::delDato};
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

// What libpq says of a connection that failed is English, and of the server's own words in whatever language
// that speaks: without a state that would tell them apart.
struct DichoAlConectar {
    std::string_view dice;
    std::string_view quiereDecir;
};
constexpr std::string_view kSinAcceso =
    "el servidor no acepta ese usuario o su contraseña: corrija el usuario de la dirección, o la línea de "
    "~/.pgpass, que solo su dueño ha de poder leer (chmod 600)";
constexpr std::string_view kSinBase =
    "el servidor no tiene esa base de datos: corrija su nombre, o que quien lo administra la haga con "
    "createdb";
constexpr std::string_view kSinEntrada =
    "el servidor no deja entrar ahí con ese usuario desde este equipo: pídalo a quien lo administra "
    "(pg_hba.conf)";
constexpr std::string_view kNoContesta = "no contesta: revise la dirección, la red y el cortafuegos";
constexpr std::string_view kSinCamino =
    "no hay camino de red hasta el servidor: revise la conexión de este equipo";
constexpr std::string_view kSinServidor =
    "nadie atiende ahí: revise la dirección y el puerto, y que el servidor esté en marcha";
constexpr std::string_view kSinPlaza =
    "el servidor no admite más conexiones por ahora: repita dentro de un momento";
constexpr std::array<DichoAlConectar, 22> kDichosAlConectar = {
    {{"too many connections", kSinPlaza},
     {"too many clients", kSinPlaza},
     {"remaining connection slots", kSinPlaza},
     {"not currently accepting connections",
      "esa base de datos no admite conexiones: nombre otra, o pídalo a quien lo administra"},
     {"authentication failed", kSinAcceso},
     {"no password supplied", kSinAcceso},
     {"pg_hba.conf", kSinEntrada},
     {"permission denied for database", kSinEntrada},
     {"role \"", kSinAcceso},
     {"database \"", kSinBase},
     {"starting up", "el servidor está arrancando: repita dentro de un momento"},
     {"shutting down", "el servidor se está deteniendo: repita cuando esté otra vez en marcha"},
     {"recovery mode", "el servidor está arrancando: repita dentro de un momento"},
     {"not yet accepting", "el servidor está arrancando: repita dentro de un momento"},
     {"could not translate host name", "no se encuentra la máquina: revise su nombre y la red"},
     {"Connection refused", kSinServidor},
     {"No such file or directory", kSinServidor},
     {"timeout expired", kNoContesta},
     {"Connection timed out", kNoContesta},
     {"unreachable", kSinCamino},
     {"No route to host", kSinCamino},
     {"closed the connection", "cortó la conexión: revise que ahí atienda un servidor PostgreSQL"}}};

std::string motivoDeConexion(const std::string& dicho) {
    for (const auto& uno : kDichosAlConectar) {
        if (dicho.find(uno.dice) != std::string::npos) return std::string(uno.quiereDecir);
    }
    constexpr std::string_view kAntes = "failed: ";
    const auto linea = primeraLinea(dicho);
    const auto desde = linea.find(kAntes);
    return fmt::format("revise la dirección y el servidor, que dice: {}",
                       desde == std::string::npos ? linea : linea.substr(desde + kAntes.size()));
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
    // The library gives a text, and takes what it does not change as changeable.
    const std::string_view texto(pq().cmdTuples(const_cast<pg_result*>(resultado_.get())));
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
    return leerUrl(url) != nullptr;
}

BasePostgres::BasePostgres(const std::string& url, std::function<void()> atender)
    : url_(url), nombre_(sinControles(sinContrasena(leerUrl(url)))), atender_(std::move(atender)) {
    conectar();
}
BasePostgres::~BasePostgres() = default;

// A connection that is being made, shared by who waits for it and the thread that makes it.
struct BasePostgres::Intento {
    std::mutex cerrojo;  // for what follows
    std::condition_variable aviso;
    bool hecho = false;
    Conexion conexion;
};

// Looking for a server's name and trying one after the other can be broken off by nothing: a thread does it,
// and who is interrupted leaves it behind.
BasePostgres::Conexion BasePostgres::conectarAparte(std::function<pg_conn*()> conectarse) {
    constexpr std::chrono::milliseconds kVistazo{20};
    const auto intento = std::make_shared<Intento>();
    {
        // The program's signals are for the thread that waits.
        const SenalesCerradas cerradas;
        std::thread([intento, conectarse = std::move(conectarse)] {
            Conexion conexion(conectarse());
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
    return std::move(intento->conexion);
}

void BasePostgres::conectar() {
    const auto opciones = leerUrl(url_);
    const auto dicha = valorDe(opciones, "connect_timeout");
    // What the address says itself goes before the limits that it leaves open.
    conexion_ = conectarAparte([url = url_, espera = dicha.empty() ? std::string("10") : dicha] {
        const std::array<const char*, 6> claves = {
            "dbname",          "connect_timeout",           "tcp_user_timeout",
            "client_encoding", "fallback_application_name", nullptr};
        const std::array<const char*, 6> valores = {url.c_str(), espera.c_str(),      "30000",
                                                    "UTF8",      "telvane-historico", nullptr};
        return pq().connectdbParams(claves.data(), valores.data(), 1);
    });
    preparadas_.clear();
    if (viva()) {
        pq().setNoticeProcessor(
            conexion_.get(), [](void*, const char*) {}, nullptr);
        return;
    }
    throw ErrorAlmacen(fmt::format("{}: no se puede conectar: {}", nombre_,
                                   motivoDeConexion(pq().errorMessage(conexion_.get()))));
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
    auto dicho = campoDe(resultado, PG_DIAG_MESSAGE_PRIMARY);
    if (dicho.empty()) dicho = primeraLinea(pq().errorMessage(conexion_.get()));
    const auto motivo = motivoDe(campoDe(resultado, PG_DIAG_SQLSTATE), dicho, viva());
    throw ErrorAlmacen(fmt::format("{}: {}", nombre_, motivo.texto), motivo.clase);
}

void BasePostgres::exigir(const pg_result* resultado) const {
    const auto estado = pq().resultStatus(resultado);
    if (estado != PGRES_COMMAND_OK && estado != PGRES_TUPLES_OK) fallar(resultado);
}

// Until the server has answered.
void BasePostgres::esperar() {
    constexpr int kVistazoMs = 100;
    while (pq().isBusy(conexion_.get()) != 0) {
        pollfd respuesta{pq().socket(conexion_.get()), POLLIN, 0};
        if (::poll(&respuesta, 1, kVistazoMs) > 0) {
            // What has gone wrong is in the result.
            if (pq().consumeInput(conexion_.get()) == 0) return;
            continue;
        }
        try {
            atender_();
        } catch (...) {
            cancelar();
            throw;
        }
    }
}

// The server lets go of what it waits for; what it says of that is of no interest.
void BasePostgres::cancelar() {
    const std::unique_ptr<PGcancel, void (*)(PGcancel*)> aviso(pq().getCancel(conexion_.get()),
                                                               pq().freeCancel);
    std::array<char, 256> motivo{};
    if (!aviso || pq().cancel(aviso.get(), motivo.data(), static_cast<int>(motivo.size())) == 0) return;
    while (auto* otro = pq().getResult(conexion_.get())) pq().clear(otro);
}

ResultadoPostgres BasePostgres::recoger(bool enviado, Atencion atencion) {
    pg_result* ultimo = nullptr;
    ResultadoPostgres dueno(ultimo);
    if (!enviado) return dueno;
    for (;;) {
        if (atender_ && atencion == Atencion::toda) esperar();
        ultimo = pq().getResult(conexion_.get());
        if (ultimo == nullptr) return dueno;
        dueno = ResultadoPostgres(ultimo);
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
            recoger(pq().sendPrepare(conexion_.get(), nombre.c_str(), sql.c_str(), 0, nullptr) == 1,
                    Atencion::ninguna);
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
    const auto fin = recoger(true, Atencion::ninguna);
    if (pq().resultStatus(fin.suyo()) != PGRES_COMMAND_OK) fallar(fin.suyo());
    exigirTocadas(fin, filas);
}

}  // namespace telvane
