#!/usr/bin/env python3
"""Memory images to CSV sample lines, whole columns at a time: the way of a data analyst's script.

convertir_pandas.py IN.rgt OUT.csv [IN OUT]...
"""
import sys

import numpy as np
import pandas as pd

RUMBOS = np.array("--- NNO NO ONO O OSO SO SSO S SSE SE ESE E ENE NE NNE N".split())
PRIMER_BYTE, REGISTRO = 6 * 64, 32


def palabra(registros, lugar):
    return registros[:, lugar].astype(np.int64) * 256 + registros[:, lugar + 1]


def entero(dividendo, divisor):
    return np.sign(dividendo) * ((np.abs(dividendo) + divisor // 2) // divisor)


def buenos(registros):
    sello = registros[:, :6]
    en_cifras = (sello & 0x0F < 10) & (sello < np.array([0x30, 0x60, 0x60, 0x40, 0x20, 0x20]))
    return registros[en_cifras.all(axis=1) & sello[:, 3:].all(axis=1)]


def convertir(entrada, salida):
    imagen = np.fromfile(entrada, np.uint8)[PRIMER_BYTE:]
    registros = buenos(imagen[: len(imagen) // REGISTRO * REGISTRO].reshape(-1, REGISTRO))
    hora, minuto, segundo, dia, mes, anio = (registros[:, i] // 16 * 10 + registros[:, i] % 16 for i in range(6))
    momento = pd.to_datetime(
        {"year": 2000 + anio.astype(int), "month": mes, "day": dia, "hour": hora, "minute": minuto, "second": segundo}
    )
    direccion = registros[:, 12].astype(np.int64)
    rumbo = np.where((direccion % 10 == 0) & (direccion <= 160), direccion // 10, 0)
    tabla = pd.DataFrame(
        {
            "fecha": momento.dt.strftime("%d/%m/%Y"),
            "hora": momento.dt.strftime("%H:%M:%S"),
            "humedad": entero(palabra(registros, 8) * 129 - 26445, 1000),
            "temperatura": (palabra(registros, 10) - 375) / 10,
            "direccion": entero(direccion * 225, 10) / 10,
            "rumbo": RUMBOS[rumbo],
            "velocidad": (palabra(registros, 13) * 2 - 250) / 10,
            "radiacion": entero(palabra(registros, 15) * 266, 1000) / 100,
            "presion": entero((palabra(registros, 17) + 98) * 899, 100) / 10,
            "lluvia": registros[:, 19] * 2 / 10,
        }
    )
    tabla.to_csv(salida, header=False, index=False, float_format="%.6g", lineterminator="\r\n")


if __name__ == "__main__":
    argumentos = sys.argv[1:]
    for entrada, salida in zip(argumentos[::2], argumentos[1::2]):
        convertir(entrada, salida)
