"""A night's image into an archive's table, as one writes it down: every record is offered, the data base leaves out what it has.

    incorporar.py BASE.sqlite IMAGE.rgt
"""
import calendar
import sqlite3
import sys

BYTES_REGISTRO = 32
CABECERA = 12


def bcd(byte):
    alto, bajo = byte >> 4, byte & 15
    return alto * 10 + bajo if alto < 10 and bajo < 10 else None


def fila(r):
    partes = [bcd(b) for b in r[:6]]
    if None in partes:
        return None
    segundos, minutos, horas, dia, mes, anio = partes[2], partes[1], partes[0], partes[3], partes[4], 2000 + partes[5]
    if not (1 <= mes <= 12 and horas < 24 and minutos < 60 and segundos < 60):
        return None
    if not 1 <= dia <= calendar.monthrange(anio, mes)[1]:
        return None
    hora = calendar.timegm((anio, mes, dia, horas, minutos, segundos))
    dos = [r[i] << 8 | r[i + 1] for i in (6, 8, 10)] + [r[12]]
    dos += [r[i] << 8 | r[i + 1] for i in (13, 15, 17)] + [r[19], r[20]]
    dos += [r[i] << 8 | r[i + 1] for i in (21, 23)]
    return (1, hora, *dos, bytes(r[25:]).rstrip(b"\0"), 1)


def main(ruta, imagen):
    with open(imagen, "rb") as archivo:
        memoria = archivo.read()
    base = sqlite3.connect(ruta)
    base.execute("PRAGMA journal_mode=WAL")
    base.execute("PRAGMA synchronous=FULL")
    antes = base.total_changes
    registros = (memoria[i : i + BYTES_REGISTRO] for i in range(CABECERA * BYTES_REGISTRO, len(memoria), BYTES_REGISTRO))
    with base:
        base.executemany(
            "INSERT OR IGNORE INTO muestras VALUES(" + ",".join("?" * 15) + ")",
            filter(None, map(fila, registros)),
        )
    print(base.total_changes - antes, "nuevas")
    base.close()


main(*sys.argv[1:])
