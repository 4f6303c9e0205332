#include "historico/conexion_postgres.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "historico/biblioteca_postgres.h"
#include "platform/numero.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

// "a,b": what is said of one or several servers.
std::vector<std::string_view> deCadaServidor(std::string_view texto) {
    std::vector<std::string_view> todos;
    for (auto coma = texto.find(','); coma != std::string_view::npos; coma = texto.find(',')) {
        todos.push_back(texto.substr(0, coma));
        texto.remove_prefix(coma + 1);
    }
    todos.push_back(texto);
    return todos;
}

// Ports; empty: the usual one.
bool sonPuertos(std::string_view texto) {
    return std::ranges::all_of(deCadaServidor(texto), [](std::string_view uno) {
        return uno.empty() || numeroDe<std::uint16_t>(uno).value_or(0) != 0;
    });
}

// As an address has them: "a:1,b:2", and a number of many parts in brackets. One port is for all of them.
std::string servidores(std::string_view maquinas, std::string_view puertos) {
    const auto suyos = deCadaServidor(puertos);
    std::string todos;
    std::size_t cual = 0;
    for (const auto maquina : deCadaServidor(maquinas)) {
        const auto puerto = suyos[std::min(cual, suyos.size() - 1)];
        const bool corchetes = maquina.find(':') != std::string_view::npos && !maquina.starts_with('/');
        todos += fmt::format("{}{}{}{}{}{}", cual++ > 0 ? "," : "", corchetes ? "[" : "", maquina,
                             corchetes ? "]" : "", puerto.empty() ? "" : ":", puerto);
    }
    return todos;
}

std::string delEntorno(const char* variable) {
    const char* valor = std::getenv(variable);
    return valor != nullptr ? valor : "";
}

// Where libpq looks for passwords, when the address names no place; empty: nowhere.
std::string clavesDeLaCasa() {
    if (auto suyas = delEntorno("PGPASSFILE"); !suyas.empty()) return suyas;
    auto casa = delEntorno("HOME");
    if (casa.empty()) {
        const auto* quien = ::getpwuid(::geteuid());
        if (quien == nullptr) return "";
        casa = quien->pw_dir;
    }
    return casa + "/.pgpass";
}

// As libpq judges it. One that is not there is not looked at any further.
bool sirveDeClaves(const std::string& archivo) {
    namespace fs = std::filesystem;
    std::error_code error;
    const auto estado = fs::status(archivo, error);
    if (error || !fs::exists(estado)) return true;
    const auto deOtros = estado.permissions() & (fs::perms::group_all | fs::perms::others_all);
    return fs::is_regular_file(estado) && deOtros == fs::perms::none;
}

constexpr std::string_view kSinAcceso =
    "el servidor no acepta ese usuario o su contraseña: corrija el usuario de la dirección, o la línea de "
    "~/.pgpass, que solo su dueño ha de poder leer (chmod 600)";
constexpr std::string_view kSinEntrada =
    "el servidor no deja entrar ahí con ese usuario desde este equipo: pídalo a quien lo administra "
    "(pg_hba.conf)";
constexpr std::string_view kCerrada =
    "esa base de datos no admite conexiones: nombre otra, o pídalo a quien lo administra";
constexpr std::string_view kArranca = "el servidor está arrancando: repita dentro de un momento";

// A server's own words are of whatever language it speaks: the state (SQLSTATE) decides, and the words only
// where there is more to tell.
struct Rechazo {
    std::string_view estado;
    std::string_view dice;
    std::string_view quiereDecir;
};
constexpr std::array<Rechazo, 13> kRechazos = {
    {{"53300", "", "el servidor no admite más conexiones por ahora: repita dentro de un momento"},
     {"55000", "", kCerrada},
     {"28P01", "", kSinAcceso},
     {"28000", "pg_hba.conf", kSinEntrada},
     {"28000", "", kSinAcceso},
     {"42501", "", kSinEntrada},
     {"3D000", "",
      "el servidor no tiene esa base de datos: corrija su nombre, o que quien lo administra la haga con "
      "createdb"},
     {"57P03", "shutting down", "el servidor se está deteniendo: repita cuando esté otra vez en marcha"},
     {"57P03", "starting up", kArranca},
     {"57P03", "recovery mode", kArranca},
     {"57P03", "not yet accepting", kArranca},
     {"57P03", "not accepting", kCerrada},
     {"57P03", "", "el servidor está arrancando o deteniéndose: repita dentro de un momento"}}};

// What libpq says itself is English.
struct DichoAlConectar {
    std::string_view dice;
    std::string_view quiereDecir;
};
constexpr std::array<std::string_view, 5> kDelCifrado = {"certificate", "private key", "SSL", "GSSAPI",
                                                         "channel binding"};
constexpr std::string_view kSinClave = "no password supplied";
constexpr std::string_view kNoContesta = "no contesta: revise la dirección, la red y el cortafuegos";
constexpr std::string_view kSinCamino =
    "no hay camino de red hasta el servidor: revise la conexión de este equipo";
constexpr std::string_view kSinServidor =
    "nadie atiende ahí: revise la dirección y el puerto, y que el servidor esté en marcha";
constexpr std::string_view kOtroServicio = "invalid response to SSL negotiation";
constexpr std::array<DichoAlConectar, 10> kDichosAlConectar = {
    {{kSinClave, kSinAcceso},
     {"could not translate host name", "no se encuentra la máquina: revise su nombre y la red"},
     {"Connection refused", kSinServidor},
     {"No such file or directory", kSinServidor},
     {"timeout expired", kNoContesta},
     {"Connection timed out", kNoContesta},
     {"unreachable", kSinCamino},
     {"No route to host", kSinCamino},
     {"closed the connection", "cortó la conexión: revise que ahí atienda un servidor PostgreSQL"},
     {kOtroServicio, "lo que atiende ahí no es un servidor PostgreSQL: revise la dirección y el puerto"}}};

// The rest of its line, from the state on: "28P01: ..." of "...failed: FATAL:  28P01: ...". Empty: no server
// said anything.
std::string_view loQueDiceElServidor(std::string_view dicho) {
    constexpr std::string_view kAntes = ":  ";
    constexpr std::size_t kEstado = 5;
    for (auto lugar = dicho.find(kAntes); lugar != std::string_view::npos;
         lugar = dicho.find(kAntes, lugar + 1)) {
        const auto resto = dicho.substr(lugar + kAntes.size());
        const bool esEstado = resto.substr(std::min(kEstado, resto.size())).starts_with(": ") &&
                              std::ranges::all_of(resto.substr(0, kEstado), [](char c) {
                                  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z');
                              });
        if (esEstado) return resto.substr(0, resto.find('\n'));
    }
    return {};
}

std::string motivoDelServidor(std::string_view dice) {
    for (const auto& uno : kRechazos) {
        if (dice.starts_with(uno.estado) && dice.find(uno.dice) != std::string_view::npos)
            return std::string(uno.quiereDecir);
    }
    return fmt::format("revise la dirección y el servidor, que dice: {}", dice.substr(dice.find(": ") + 2));
}

// Whatever else it says to nobody in particular is for whoever administers it.
void apuntarDespedida(void* despedida, const pg_result* aviso) {
    if (campoDe(aviso, PG_DIAG_SEVERITY_NONLOCALIZED) != "FATAL") return;
    *static_cast<Despedida*>(despedida) = {.estado = campoDe(aviso, PG_DIAG_SQLSTATE),
                                           .dicho = campoDe(aviso, PG_DIAG_MESSAGE_PRIMARY)};
}

}  // namespace

std::string campoDe(const pg_result* resultado, int cual) {
    const char* campo = resultado != nullptr ? pq().resultErrorField(resultado, cual) : nullptr;
    return campo != nullptr ? campo : "";
}

std::string motivoDeConexion(const std::string& dicho) {
    if (const auto dice = loQueDiceElServidor(dicho); !dice.empty()) return motivoDelServidor(dice);
    constexpr std::string_view kAntes = "failed: ";
    const auto linea = dicho.substr(0, dicho.find('\n'));
    const auto desde = linea.find(kAntes);
    const bool alcanzado = desde != std::string::npos;
    const auto suyo = alcanzado ? linea.substr(desde + kAntes.size()) : linea;
    // A file of those may be one that is not there.
    const auto loDice = [&](std::string_view que) { return suyo.find(que) != std::string::npos; };
    if (alcanzado && !loDice(kOtroServicio) && std::ranges::any_of(kDelCifrado, loDice)) {
        return fmt::format(
            "la conexión no se pudo cifrar: revise en la dirección sslmode y los certificados, con quien "
            "administra el servidor ({})",
            suyo);
    }
    for (const auto& uno : kDichosAlConectar) {
        if (dicho.find(uno.dice) != std::string::npos) return std::string(uno.quiereDecir);
    }
    return fmt::format("revise la dirección; la biblioteca libpq dice: {}", suyo);
}

void DireccionPostgres::Soltar::operator()(_PQconninfoOption* opciones) const {
    pq().conninfoFree(opciones);
}

DireccionPostgres::DireccionPostgres(std::string url, Opciones opciones)
    : url_(std::move(url)), opciones_(std::move(opciones)) {
    if (!valor("password").empty() || !delEntorno("PGPASSWORD").empty()) return;
    auto claves = valor("passfile");
    if (claves.empty()) claves = clavesDeLaCasa();
    if (!sirveDeClaves(claves)) clavesSinUso_ = std::move(claves);
}

// What libpq says of an address that it does not understand quotes all that is in it.
std::optional<DireccionPostgres> DireccionPostgres::leer(const std::string& url) {
    char* error = nullptr;
    Opciones opciones(pq().conninfoParse(url.c_str(), &error));
    pq().freemem(error);
    if (!opciones) return std::nullopt;
    DireccionPostgres direccion(url, std::move(opciones));
    // A password with an "@" that is not written as %40 would be taken for a part of what stands behind it.
    const auto hastaLaBase = std::string_view(direccion.url_).substr(0, direccion.url_.find('?'));
    const bool bien = std::ranges::count(hastaLaBase, '@') <= 1 &&
                      direccion.valor("host").find('@') == std::string::npos &&
                      direccion.valor("dbname").find("password=") == std::string::npos &&
                      sonPuertos(direccion.valor("port"));
    if (!bien) return std::nullopt;
    return direccion;
}

std::string DireccionPostgres::valor(std::string_view clave) const {
    for (const auto* o = opciones_.get(); o->keyword != nullptr; ++o) {
        if (o->keyword == clave && o->val != nullptr) return o->val;
    }
    return {};
}

std::string DireccionPostgres::nombre() const {
    const auto usuario = valor("user");
    const auto servicio = valor("service");
    return sinControles(fmt::format("postgresql://{}{}/{}{}", usuario.empty() ? "" : usuario + "@",
                                    servidores(valor("host"), valor("port")), valor("dbname"),
                                    servicio.empty() ? "" : "?service=" + servicio));
}

pg_conn* DireccionPostgres::conectar(Despedida& despedida) const {
    const auto dicha = valor("connect_timeout");
    // What the address says itself goes before the limits that it leaves open. A file of passwords that
    // others can read is none to libpq, which says so in English: it gets a name where no file can be.
    const auto espera = dicha.empty() ? std::string("10") : dicha;
    const std::array<const char*, 7> claves = {"dbname",
                                               "connect_timeout",
                                               "tcp_user_timeout",
                                               "client_encoding",
                                               "fallback_application_name",
                                               "passfile",
                                               nullptr};
    const std::array<const char*, 7> valores = {
        url_.c_str(), espera.c_str(),      "30000",
        "UTF8",       "telvane-historico", clavesSinUso_.empty() ? nullptr : "/dev/null/",
        nullptr};
    auto* conexion = pq().connectStartParams(claves.data(), valores.data(), 1);
    // What a server says while it lets in goes to standard error, unless there is a connection by then that
    // has been told otherwise: hence it is begun, told, and begun anew. To poll the first one here would be
    // to know as well when which of several servers has had its time.
    pq().setNoticeReceiver(conexion, apuntarDespedida, &despedida);
    pq().setErrorVerbosity(conexion, PQERRORS_VERBOSE);
    if (pq().status(conexion) != CONNECTION_BAD) pq().reset(conexion);
    return conexion;
}

std::string DireccionPostgres::motivo(const std::string& dicho) const {
    if (clavesSinUso_.empty() || dicho.find(kSinClave) == std::string::npos) return motivoDeConexion(dicho);
    return fmt::format(
        "el servidor pide una contraseña, y {} no se usa: ha de ser un archivo que solo su dueño pueda leer "
        "(chmod 600)",
        sinControles(clavesSinUso_));
}

}  // namespace telvane
