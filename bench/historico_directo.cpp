// The tightest way we know to take the samples of an image into an archive's table: scan the range, merge,
// add what is new. It keeps no image and no summary: the yardstick of telvane-historico incorporar.
//   historico_directo BASE.sqlite IMAGE.rgt
#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include "data/registros.h"
#include "historico/canales.h"

namespace telvane::bench {

namespace {

struct Registro {
    std::int64_t hora = 0;
    BytesMuestra bytes{};
    bool operator<(const Registro& otro) const {
        return hora != otro.hora ? hora < otro.hora : bytes < otro.bytes;
    }
};

void exigir(sqlite3* base, bool bien) {
    if (bien) return;
    std::fprintf(stderr, "%s\n", sqlite3_errmsg(base));
    std::exit(1);
}
void sql(sqlite3* base, const char* texto) {
    exigir(base, sqlite3_exec(base, texto, nullptr, nullptr, nullptr) == SQLITE_OK);
}

std::vector<Registro> leerImagen(const char* ruta) {
    std::ifstream entrada(ruta, std::ios::binary);
    const std::vector<char> texto{std::istreambuf_iterator<char>(entrada), {}};
    std::vector<Registro> lista;
    recorrerRegistros({reinterpret_cast<const std::uint8_t*>(texto.data()), texto.size()},
                      [&](std::size_t, BytesMuestraConst r) {
                          auto& nuevo = lista.emplace_back();
                          nuevo.hora = instanteDe(r).time_since_epoch().count();
                          std::copy(r.begin(), r.end(), nuevo.bytes.begin());
                      });
    std::sort(lista.begin(), lista.end());
    return lista;
}

// The first station's.
std::vector<Registro> leerTramo(sqlite3* base, std::int64_t desde, std::int64_t hasta) {
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(base,
                       "SELECT hora,auxiliar1,humedad,temperatura,viento,velocidad,radiacion,presion,lluvia,"
                       "libre,auxiliar2,evaporacion,resto FROM muestras WHERE estacion=1 AND hora BETWEEN ?1 "
                       "AND ?2 ORDER BY hora",
                       -1, &s, nullptr);
    sqlite3_bind_int64(s, 1, desde);
    sqlite3_bind_int64(s, 2, hasta);
    std::vector<Registro> lista;
    while (sqlite3_step(s) == SQLITE_ROW) {
        CanalesCrudos canales;
        for (int i = 0; i < static_cast<int>(CanalesCrudos::kCuantos); ++i) {
            canales.crudos[static_cast<std::size_t>(i)] =
                static_cast<std::uint16_t>(sqlite3_column_int(s, 1 + i));
        }
        const auto* resto = static_cast<const std::uint8_t*>(sqlite3_column_blob(s, 12));
        canales.largoResto = static_cast<std::size_t>(sqlite3_column_bytes(s, 12));
        std::copy_n(resto, canales.largoResto, canales.resto.begin());
        const auto hora = sqlite3_column_int64(s, 0);
        lista.push_back({hora, registroDe(Instante(std::chrono::seconds(hora)), canales)});
    }
    exigir(base, sqlite3_finalize(s) == SQLITE_OK);
    return lista;
}

void agregar(sqlite3* base, const std::vector<Registro>& nuevos) {
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(base, "INSERT INTO muestras VALUES(1,?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,?12,?13,1)",
                       -1, &s, nullptr);
    for (const auto& r : nuevos) {
        const auto canales = canalesDe(r.bytes);
        sqlite3_bind_int64(s, 1, r.hora);
        for (int i = 0; i < static_cast<int>(CanalesCrudos::kCuantos); ++i) {
            sqlite3_bind_int(s, 2 + i, canales.crudos[static_cast<std::size_t>(i)]);
        }
        sqlite3_bind_blob(s, 13, canales.resto.data(), static_cast<int>(canales.largoResto), SQLITE_STATIC);
        exigir(base, sqlite3_step(s) == SQLITE_DONE);
        sqlite3_reset(s);
    }
    sqlite3_finalize(s);
}

int incorporar(const char* ruta, const char* imagen) {
    const auto suyos = leerImagen(imagen);
    sqlite3* base = nullptr;
    exigir(base, sqlite3_open(ruta, &base) == SQLITE_OK);
    int quedan = 1;
    sqlite3_file_control(base, "main", SQLITE_FCNTL_PERSIST_WAL, &quedan);
    sql(base,
        "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA journal_size_limit=1048576;"
        "CREATE TABLE IF NOT EXISTS muestras(estacion INTEGER NOT NULL,hora INTEGER NOT NULL,"
        "auxiliar1 INTEGER NOT NULL,humedad INTEGER NOT NULL,temperatura INTEGER NOT NULL,"
        "viento INTEGER NOT NULL,velocidad INTEGER NOT NULL,radiacion INTEGER NOT NULL,"
        "presion INTEGER NOT NULL,lluvia INTEGER NOT NULL,libre INTEGER NOT NULL,"
        "auxiliar2 INTEGER NOT NULL,evaporacion INTEGER NOT NULL,resto BLOB NOT NULL,"
        "cuenta INTEGER NOT NULL,PRIMARY KEY(estacion,hora,auxiliar1,humedad,temperatura,viento,velocidad,"
        "radiacion,presion,lluvia,libre,auxiliar2,evaporacion,resto)) WITHOUT ROWID; BEGIN IMMEDIATE");
    const auto presentes = leerTramo(base, suyos.front().hora, suyos.back().hora);
    std::vector<Registro> nuevos;
    std::set_difference(suyos.begin(), suyos.end(), presentes.begin(), presentes.end(),
                        std::back_inserter(nuevos));
    agregar(base, nuevos);
    sql(base, "COMMIT");
    sqlite3_close(base);
    std::printf("%zu nuevas\n", nuevos.size());
    return 0;
}

}  // namespace

}  // namespace telvane::bench

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    return telvane::bench::incorporar(argv[1], argv[2]);
}
