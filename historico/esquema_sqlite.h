// The tables of an archive in SQLite, as the first version had them and what came later, for this program and
// for whoever queries it.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace telvane::esquema {

// "TVNH": by this a file says whose it is.
inline constexpr std::int64_t kDeTelvane = 0x54564E48;

// Moments of the logger are seconds since 1970 of its own local time; moments of ours (incorporada) the same
// in UTC, as is descargada. A sample's columns from auxiliar1 on are raw counts, in the order of the record's
// bytes, so that the table sorts as the records do.
inline constexpr std::string_view kTablas = R"(
CREATE TABLE estaciones(
  id INTEGER PRIMARY KEY,
  nombre TEXT NOT NULL UNIQUE,
  serie TEXT NOT NULL,
  evaporacion INTEGER NOT NULL,
  mas_nueva BLOB,
  cabecera BLOB,
  imagenes INTEGER NOT NULL DEFAULT 0,
  muestras INTEGER NOT NULL DEFAULT 0,
  huecos INTEGER NOT NULL DEFAULT 0,
  conflictos INTEGER NOT NULL DEFAULT 0,
  desde INTEGER,
  hasta INTEGER,
  incorporada INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE imagenes(
  estacion INTEGER NOT NULL REFERENCES estaciones(id),
  huella BLOB NOT NULL,
  bytes INTEGER NOT NULL,
  reloj INTEGER,
  desde INTEGER,
  hasta INTEGER,
  incorporada INTEGER NOT NULL,
  origen TEXT NOT NULL,
  muestras INTEGER NOT NULL,
  retrocesos INTEGER NOT NULL,
  contenida INTEGER NOT NULL DEFAULT 0,
  PRIMARY KEY(estacion, huella)
) WITHOUT ROWID;
CREATE INDEX imagenes_parciales ON imagenes(estacion) WHERE bytes < 262144 AND contenida = 0;
CREATE TABLE contenidos(
  estacion INTEGER NOT NULL,
  huella BLOB NOT NULL,
  base BLOB,
  profundidad INTEGER NOT NULL,
  datos BLOB NOT NULL,
  PRIMARY KEY(estacion, huella)
);
CREATE TABLE muestras(
  estacion INTEGER NOT NULL,
  hora INTEGER NOT NULL,
  auxiliar1 INTEGER NOT NULL,
  humedad INTEGER NOT NULL,
  temperatura INTEGER NOT NULL,
  viento INTEGER NOT NULL,
  velocidad INTEGER NOT NULL,
  radiacion INTEGER NOT NULL,
  presion INTEGER NOT NULL,
  lluvia INTEGER NOT NULL,
  libre INTEGER NOT NULL,
  auxiliar2 INTEGER NOT NULL,
  evaporacion INTEGER NOT NULL,
  resto BLOB NOT NULL,
  cuenta INTEGER NOT NULL,
  PRIMARY KEY(estacion, hora, auxiliar1, humedad, temperatura, viento, velocidad, radiacion, presion, lluvia,
    libre, auxiliar2, evaporacion, resto)
) WITHOUT ROWID;
CREATE TABLE testigos(
  estacion INTEGER NOT NULL,
  hora INTEGER NOT NULL,
  registro BLOB NOT NULL,
  ranura INTEGER NOT NULL,
  imagen BLOB NOT NULL,
  PRIMARY KEY(estacion, hora, registro, ranura, imagen)
) WITHOUT ROWID;
)";

// Whole numbers first, as the exports round them; the division comes last.
inline constexpr std::string_view kVista = R"(
CREATE VIEW lecturas(estacion, hora, humedad_pct, temperatura_c, viento_grados, viento_rumbo,
    viento_desde_grados, viento_kmh, radiacion_kw_m2, presion_kpa, lluvia_mm, evaporacion_mm, conflicto) AS
SELECT e.nombre,
  strftime('%Y-%m-%dT%H:%M:%S', m.hora, 'unixepoch'),
  (m.humedad * 129 - 26445 + CASE WHEN m.humedad * 129 < 26445 THEN -500 ELSE 500 END) / 1000,
  (m.temperatura - 375) / 10.0,
  (m.viento * 225 + 5) / 10 / 10.0,
  CASE m.viento WHEN 10 THEN 'NNO' WHEN 20 THEN 'NO' WHEN 30 THEN 'ONO' WHEN 40 THEN 'O' WHEN 50 THEN 'OSO'
    WHEN 60 THEN 'SO' WHEN 70 THEN 'SSO' WHEN 80 THEN 'S' WHEN 90 THEN 'SSE' WHEN 100 THEN 'SE'
    WHEN 110 THEN 'ESE' WHEN 120 THEN 'E' WHEN 130 THEN 'ENE' WHEN 140 THEN 'NE' WHEN 150 THEN 'NNE'
    WHEN 160 THEN 'N' END,
  (7200 - (m.viento * 225 + 5) / 10) % 3600 / 10.0,
  (m.velocidad * 2 - 250) / 10.0,
  (m.radiacion * 266 + 500) / 1000 / 100.0,
  ((m.presion + 98) * 899 + 50) / 100 / 10.0,
  m.lluvia * 2 / 10.0,
  CASE WHEN e.evaporacion THEN m.evaporacion / 100.0 END,
  EXISTS(SELECT 1 FROM testigos t WHERE t.estacion = m.estacion AND t.hora = m.hora)
FROM muestras m JOIN estaciones e ON e.id = m.estacion
WHERE m.cuenta;
)";

// What makes of an older archive the next version, in order: the first of version 1, and so on. What is there
// already stays: somebody may have set the number back.
inline constexpr std::array<std::string_view, 2> kMigraciones = {R"(
CREATE TABLE IF NOT EXISTS descargas(
  estacion INTEGER NOT NULL,
  imagen BLOB NOT NULL,
  descargada INTEGER NOT NULL,
  puerto INTEGER NOT NULL,
  dispositivo TEXT NOT NULL,
  desfase_s INTEGER,
  verificada INTEGER NOT NULL,
  reintentos INTEGER NOT NULL,
  errores_de_linea INTEGER NOT NULL,
  PRIMARY KEY(estacion, imagen)
) WITHOUT ROWID;
)",
                                                                 // What came last, without what came before.
                                                                 R"(
CREATE INDEX IF NOT EXISTS imagenes_por_reloj ON imagenes(estacion, reloj);
CREATE INDEX IF NOT EXISTS descargas_por_momento ON descargas(estacion, descargada);
)"};

}  // namespace telvane::esquema
