// The way that most programs take an image into a PostgreSQL table: all of its samples by COPY into a
// temporary table, and from there what is new by ON CONFLICT. The yardstick of telvane-historico incorporar.
//   historico_copia URL IMAGE.rgt...
#include <libpq-fe.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "data/registros.h"
#include "historico/postgres.h"
#include "serie_temporal/instante.h"

namespace telvane::bench {

namespace {

using Conexion = std::unique_ptr<PGconn, decltype(&PQfinish)>;

void exigir(const Conexion& base, bool bien) {
    if (bien) return;
    std::fprintf(stderr, "%s\n", PQerrorMessage(base.get()));
    std::exit(1);
}
void ejecutar(const Conexion& base, const char* sql, ExecStatusType esperado) {
    const std::unique_ptr<PGresult, decltype(&PQclear)> r(PQexec(base.get(), sql), PQclear);
    exigir(base, PQresultStatus(r.get()) == esperado);
}

template <typename Entero>
void campo(std::string& copia, Entero valor) {
    agregarEntero(copia, static_cast<std::int32_t>(sizeof valor));
    agregarEntero(copia, valor);
}

// The first station's, as a binary COPY.
std::string leerImagen(const char* ruta) {
    std::ifstream entrada(ruta, std::ios::binary);
    const std::vector<char> texto{std::istreambuf_iterator<char>(entrada), {}};
    std::string copia("PGCOPY\n\377\r\n\0\0\0\0\0\0\0\0\0", 19);
    const Instante origen = std::chrono::local_days{std::chrono::year{2000} / 1 / 1};
    recorrerRegistros({reinterpret_cast<const std::uint8_t*>(texto.data()), texto.size()},
                      [&](std::size_t, BytesMuestraConst r) {
                          agregarEntero(copia, std::int16_t{4});
                          campo(copia, std::int32_t{1});
                          campo(copia, std::int64_t{(instanteDe(r) - origen).count() * 1'000'000});
                          agregarEntero(copia, static_cast<std::int32_t>(r.size()));
                          copia.append(r.begin(), r.end());
                          campo(copia, std::int8_t{1});
                      });
    agregarEntero(copia, std::int16_t{-1});
    return copia;
}

void incorporar(const Conexion& base, const char* imagen) {
    const auto copia = leerImagen(imagen);
    ejecutar(base, "BEGIN; CREATE TEMP TABLE nuevas(LIKE telvane.muestras) ON COMMIT DROP", PGRES_COMMAND_OK);
    ejecutar(base, "COPY nuevas FROM STDIN (FORMAT binary)", PGRES_COPY_IN);
    exigir(base, PQputCopyData(base.get(), copia.data(), static_cast<int>(copia.size())) == 1 &&
                     PQputCopyEnd(base.get(), nullptr) == 1);
    while (auto* r = PQgetResult(base.get())) {
        exigir(base, PQresultStatus(r) == PGRES_COMMAND_OK);
        PQclear(r);
    }
    ejecutar(base, "INSERT INTO telvane.muestras SELECT * FROM nuevas ON CONFLICT DO NOTHING; COMMIT",
             PGRES_COMMAND_OK);
}

}  // namespace

}  // namespace telvane::bench

int main(int argc, char** argv) {
    using namespace telvane::bench;
    if (argc < 3) return 2;
    const Conexion base(PQconnectdb(argv[1]), PQfinish);
    exigir(base, PQstatus(base.get()) == CONNECTION_OK);
    for (int i = 2; i < argc; ++i) incorporar(base, argv[i]);
    return 0;
}
