"""A fresh image into an archive's table the way a data scientist writes it: numpy takes the memory apart, pandas writes the table.

    incorporar_pandas.py BASE.sqlite IMAGE.rgt
"""
import sqlite3
import sys

import numpy as np
import pandas as pd

BYTES_REGISTRO = 32
CABECERA = 12


def tabla(memoria):
    r = np.frombuffer(memoria, dtype=np.uint8)
    r = r[: len(r) // BYTES_REGISTRO * BYTES_REGISTRO].reshape(-1, BYTES_REGISTRO)[CABECERA:]
    alto, bajo = r[:, :6] >> 4, r[:, :6] & 15
    partes = (alto * 10 + bajo).astype(int)
    buenos = ((alto < 10) & (bajo < 10)).all(axis=1)
    fechas = pd.to_datetime(
        {
            "year": 2000 + partes[:, 5],
            "month": partes[:, 4],
            "day": partes[:, 3],
            "hour": partes[:, 0],
            "minute": partes[:, 1],
            "second": partes[:, 2],
        },
        errors="coerce",
    )
    datos = pd.DataFrame({"estacion": 1, "hora": fechas.astype("int64") // 10**9})
    for nombre, desde, bytes_ in (
        ("auxiliar1", 6, 2), ("humedad", 8, 2), ("temperatura", 10, 2), ("viento", 12, 1), ("velocidad", 13, 2),
        ("radiacion", 15, 2), ("presion", 17, 2), ("lluvia", 19, 1), ("libre", 20, 1), ("auxiliar2", 21, 2),
        ("evaporacion", 23, 2),
    ):
        valor = r[:, desde].astype(int)
        datos[nombre] = valor * 256 + r[:, desde + 1] if bytes_ == 2 else valor
    datos["resto"] = [bytes(x).rstrip(b"\0") for x in r[:, 25:]]
    datos["cuenta"] = 1
    return datos[buenos & fechas.notna().to_numpy()].drop_duplicates().sort_values(["estacion", "hora"])


def main(ruta, imagen):
    with open(imagen, "rb") as archivo:
        datos = tabla(archivo.read())
    base = sqlite3.connect(ruta)
    base.execute("PRAGMA journal_mode=WAL")
    base.execute("PRAGMA synchronous=FULL")
    datos.to_sql("muestras", base, if_exists="append", index=False)
    print(len(datos), "nuevas")
    base.close()


main(*sys.argv[1:])
