// The tables of an archive in PostgreSQL, as the first version had them and what came later: schema telvane.
// Every unique key starts with the station, so that the tables can be partitioned and spread over servers by
// it.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace telvane::esquema_postgres {

// In their schema, which may have been made for whoever may make none. Moments of the logger have no zone. A
// sample is kept as its bytes, which are also its order.
inline constexpr std::string_view kTablas = R"(
CREATE TABLE telvane.esquema(version integer NOT NULL);
CREATE TABLE telvane.estaciones(
  id integer PRIMARY KEY,
  nombre text COLLATE "C" NOT NULL UNIQUE,
  serie text NOT NULL,
  evaporacion boolean NOT NULL,
  mas_nueva bytea,
  cabecera bytea NOT NULL DEFAULT '',
  imagenes bigint NOT NULL DEFAULT 0,
  muestras bigint NOT NULL DEFAULT 0,
  huecos bigint NOT NULL DEFAULT 0,
  conflictos bigint NOT NULL DEFAULT 0,
  desde timestamp without time zone,
  hasta timestamp without time zone,
  incorporada timestamp with time zone NOT NULL DEFAULT 'epoch'
);
CREATE TABLE telvane.imagenes(
  estacion integer NOT NULL,
  huella bytea NOT NULL,
  bytes integer NOT NULL,
  reloj timestamp without time zone,
  desde timestamp without time zone,
  hasta timestamp without time zone,
  incorporada timestamp with time zone NOT NULL,
  origen text NOT NULL,
  muestras integer NOT NULL,
  retrocesos integer NOT NULL,
  contenida boolean NOT NULL DEFAULT false,
  PRIMARY KEY(estacion, huella)
);
CREATE INDEX imagenes_parciales ON telvane.imagenes(estacion) WHERE bytes < 262144 AND NOT contenida;
CREATE TABLE telvane.contenidos(
  estacion integer NOT NULL,
  huella bytea NOT NULL,
  base bytea,
  profundidad integer NOT NULL,
  datos bytea NOT NULL,
  PRIMARY KEY(estacion, huella)
);
ALTER TABLE telvane.contenidos ALTER datos SET STORAGE EXTERNAL;
CREATE TABLE telvane.muestras(
  estacion integer NOT NULL,
  hora timestamp without time zone NOT NULL,
  registro bytea NOT NULL,
  cuenta boolean NOT NULL,
  PRIMARY KEY(estacion, hora, registro)
);
CREATE TABLE telvane.testigos(
  estacion integer NOT NULL,
  hora timestamp without time zone NOT NULL,
  registro bytea NOT NULL,
  ranura integer NOT NULL,
  imagen bytea NOT NULL,
  PRIMARY KEY(estacion, hora, registro, ranura, imagen)
);
)";

// Whole numbers first, as the exports round them; the division comes last.
inline constexpr std::string_view kVista = R"(
CREATE VIEW telvane.lecturas AS
SELECT e.nombre AS estacion, m.hora AS hora,
  (c.humedad * 129 - 26445 + CASE WHEN c.humedad * 129 < 26445 THEN -500 ELSE 500 END) / 1000 AS humedad_pct,
  (c.temperatura - 375) / 10.0::double precision AS temperatura_c,
  ((c.viento * 225 + 5) / 10) / 10.0::double precision AS viento_grados,
  CASE c.viento WHEN 10 THEN 'NNO' WHEN 20 THEN 'NO' WHEN 30 THEN 'ONO' WHEN 40 THEN 'O' WHEN 50 THEN 'OSO'
    WHEN 60 THEN 'SO' WHEN 70 THEN 'SSO' WHEN 80 THEN 'S' WHEN 90 THEN 'SSE' WHEN 100 THEN 'SE'
    WHEN 110 THEN 'ESE' WHEN 120 THEN 'E' WHEN 130 THEN 'ENE' WHEN 140 THEN 'NE' WHEN 150 THEN 'NNE'
    WHEN 160 THEN 'N' END AS viento_rumbo,
  ((7200 - (c.viento * 225 + 5) / 10) % 3600) / 10.0::double precision AS viento_desde_grados,
  (c.velocidad * 2 - 250) / 10.0::double precision AS viento_kmh,
  ((c.radiacion * 266 + 500) / 1000) / 100.0::double precision AS radiacion_kw_m2,
  (((c.presion + 98) * 899 + 50) / 100) / 10.0::double precision AS presion_kpa,
  c.lluvia * 2 / 10.0::double precision AS lluvia_mm,
  CASE WHEN e.evaporacion THEN c.evaporacion / 100.0::double precision END AS evaporacion_mm,
  EXISTS(SELECT 1 FROM telvane.testigos t WHERE t.estacion = m.estacion AND t.hora = m.hora) AS conflicto
FROM telvane.muestras m
JOIN telvane.estaciones e ON e.id = m.estacion
CROSS JOIN LATERAL (SELECT
  get_byte(m.registro, 8) * 256 + get_byte(m.registro, 9) AS humedad,
  get_byte(m.registro, 10) * 256 + get_byte(m.registro, 11) AS temperatura,
  get_byte(m.registro, 12) AS viento,
  get_byte(m.registro, 13) * 256 + get_byte(m.registro, 14) AS velocidad,
  get_byte(m.registro, 15) * 256 + get_byte(m.registro, 16) AS radiacion,
  get_byte(m.registro, 17) * 256 + get_byte(m.registro, 18) AS presion,
  get_byte(m.registro, 19) AS lluvia,
  get_byte(m.registro, 23) * 256 + get_byte(m.registro, 24) AS evaporacion) c
WHERE m.cuenta;
)";

// What makes of an older archive the next version, in order: the first of version 1, and so on. What is there
// already stays: somebody may have set the number back.
inline constexpr std::array<std::string_view, 2> kMigraciones = {R"(
CREATE TABLE IF NOT EXISTS telvane.descargas(
  estacion integer NOT NULL,
  imagen bytea NOT NULL,
  descargada timestamp with time zone NOT NULL,
  puerto bigint NOT NULL,
  dispositivo text NOT NULL,
  desfase_s bigint,
  verificada boolean NOT NULL,
  reintentos bigint NOT NULL,
  errores_de_linea bigint NOT NULL,
  PRIMARY KEY(estacion, imagen)
);
)",
                                                                 // What came last, without what came before.
                                                                 R"(
CREATE INDEX IF NOT EXISTS imagenes_por_reloj ON telvane.imagenes(estacion, reloj);
CREATE INDEX IF NOT EXISTS descargas_por_momento ON telvane.descargas(estacion, descargada);
)"};
inline constexpr std::int64_t kVersion = kMigraciones.size() + 1;

}  // namespace telvane::esquema_postgres
