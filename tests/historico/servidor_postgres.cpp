#include "tests/historico/servidor_postgres.h"

#include <libpq-fe.h>
#include <pwd.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <vector>

namespace telvane {

namespace {

namespace fs = std::filesystem;

// Making a data base is half a second's work, on a machine that has nothing else to do.
constexpr std::chrono::minutes kPlazoDelServidor{2};

// The server refuses to run as root.
std::vector<std::string> comoCualquiera(const std::vector<std::string>& orden, bool hijo) {
    std::vector<std::string> toda = {"/usr/bin/setpriv"};
    if (hijo) toda.insert(toda.end(), {"--pdeathsig", "QUIT"});
    if (::geteuid() == 0) {
        const auto* nadie = ::getpwnam("nobody");
        if (nadie == nullptr) throw std::runtime_error("no user nobody");
        toda.insert(toda.end(),
                    {"--reuid", "nobody", "--regid", std::to_string(nadie->pw_gid), "--clear-groups"});
    }
    toda.insert(toda.end(), orden.begin(), orden.end());
    return toda;
}

fs::path carpetaDeProgramas() {
    fs::path ultima;
    for (const auto& version : fs::directory_iterator("/usr/lib/postgresql")) {
        if (fs::exists(version.path() / "bin" / "initdb")) ultima = std::max(ultima, version.path() / "bin");
    }
    if (ultima.empty()) throw std::runtime_error("no PostgreSQL server is installed");
    return ultima;
}

using Conexion = std::unique_ptr<PGconn, void (*)(PGconn*)>;
Conexion conectar(const std::string& url) {
    return {PQconnectdb(url.c_str()), PQfinish};
}

}  // namespace

ServidorPostgres& ServidorPostgres::unico() {
    static ServidorPostgres servidor;
    return servidor;
}

ServidorPostgres::ServidorPostgres() {
    if (::geteuid() == 0) {
        const auto* nadie = ::getpwnam("nobody");
        if (::chown(carpeta_.ruta().c_str(), nadie->pw_uid, nadie->pw_gid) != 0)
            throw std::runtime_error("chown");
    }
    Proceso hacer(comoCualquiera({carpetaDeProgramas() / "initdb", "-D", carpeta_ / "datos", "-A", "trust",
                                  "-U", "telvane", "--no-sync", "-E", "UTF8", "--locale=C"},
                                 false));
    if (hacer.terminar(kPlazoDelServidor) != 0) throw std::runtime_error("initdb: " + hacer.errores());
    arrancar();
}

ServidorPostgres::~ServidorPostgres() {
    derribar();
}

void ServidorPostgres::arrancar() {
    servidor_ = std::make_unique<Proceso>(
        comoCualquiera({carpetaDeProgramas() / "postgres", "-D", carpeta_ / "datos", "-c",
                        "listen_addresses=", "-c", "unix_socket_directories=" + carpeta_.ruta().string(),
                        "-c", "fsync=off", "-c", "max_connections=40"},
                       true));
    const bool listo = esperarA([&] { return PQstatus(conectar(url("postgres")).get()) == CONNECTION_OK; },
                                kPlazoDelServidor);
    if (!listo) throw std::runtime_error("postgres: " + servidor_->errores());
}

void ServidorPostgres::derribar() {
    if (!servidor_) return;
    servidor_->senal(SIGQUIT);
    servidor_->terminar();
    servidor_.reset();
}

std::string ServidorPostgres::url(const std::string& base, const std::string& usuario) const {
    return "postgresql://" + usuario + "@/" + base + "?host=" + carpeta_.ruta().string();
}

void ServidorPostgres::ejecutar(const std::string& base, const std::string& sql) {
    const auto conexion = conectar(url(base));
    const std::unique_ptr<PGresult, void (*)(PGresult*)> resultado(PQexec(conexion.get(), sql.c_str()),
                                                                   PQclear);
    const auto estado = PQresultStatus(resultado.get());
    if (estado != PGRES_COMMAND_OK && estado != PGRES_TUPLES_OK) {
        throw std::runtime_error(PQerrorMessage(conexion.get()));
    }
}

bool ServidorPostgres::alguienEspera(const std::string& base) {
    const auto conexion = conectar(url(base));
    const std::unique_ptr<PGresult, void (*)(PGresult*)> resultado(
        PQexec(conexion.get(),
               "SELECT 1 FROM pg_stat_activity WHERE datname=current_database() AND wait_event_type='Lock'"),
        PQclear);
    return PQntuples(resultado.get()) > 0;
}

std::string ServidorPostgres::baseVacia(const std::string& nombre) {
    if (PQstatus(conectar(url(nombre)).get()) != CONNECTION_OK) {
        ejecutar("postgres", "CREATE DATABASE " + nombre);
    }
    ejecutar(nombre, "SET client_min_messages=error; DROP SCHEMA IF EXISTS telvane CASCADE");
    return url(nombre);
}

}  // namespace telvane
