# The reference of informe_bench: the page of a month's samples with the tools of whoever analyses data. The same charts
# (six lines, directions as points, rain as bars with its running total, the wind rose) in one SVG, the same tables
# (extremes with their moments, months, days, the climate month).
#   informe_mes.py TABLE.csv PAGE.html
import io
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt
import numpy as np
import pandas as pd

datos = pd.read_csv(sys.argv[1], encoding="cp1252", names=["fecha", "hora", "humedad", "temperatura", "grados", "rumbo",
                    "viento", "radiacion", "presion", "lluvia", "evaporacion"], comment="#", on_bad_lines="skip")
datos.index = pd.to_datetime(datos["fecha"] + " " + datos["hora"], format="%d/%m/%Y %H:%M:%S", errors="coerce")
datos = datos[datos.index.notna()]
datos = datos.drop(columns=["fecha", "hora", "rumbo"]).apply(pd.to_numeric, errors="coerce")
lineas = ["temperatura", "humedad", "presion", "viento", "radiacion"]

figura, ejes = plt.subplots(len(lineas) + 2, 1, figsize=(10, 15), sharex=True)
for eje, columna in zip(ejes, lineas):
    eje.plot(datos.index, datos[columna], linewidth=0.8)
    eje.set_ylabel(columna)
ejes[-2].plot(datos.index, 360 - datos["grados"], ",")
ejes[-2].set_ylabel("dirección")
dias = datos["lluvia"].resample("D").sum()
ejes[-1].bar(dias.index, dias, width=0.8)
ejes[-1].twinx().plot(dias.index, dias.cumsum(), color="black")
ejes[-1].set_ylabel("lluvia")
dibujo = io.StringIO()
figura.savefig(dibujo, format="svg")

sopla = datos["viento"] >= 1.8
sector = ((360 - datos["grados"][sopla]) / 22.5).round().astype(int) % 16
veces = pd.crosstab(sector, pd.cut(datos["viento"][sopla], [1.8, 10, 20, 40, np.inf], right=False))
rosa, eje = plt.subplots(subplot_kw={"projection": "polar"})
eje.set_theta_zero_location("N")
eje.set_theta_direction(-1)
base = np.zeros(len(veces))
for clase in veces:
    eje.bar(np.radians(veces.index * 22.5), veces[clase], bottom=base, width=0.35)
    base += veces[clase].to_numpy()
rosa.savefig(dibujo, format="svg")

extremos = datos.agg(["min", "idxmin", "max", "idxmax", "mean", "sum"])
tablas = [extremos, veces]
for cada in ["M", "D"]:
    grupos = datos.groupby(pd.Grouper(freq=cada))
    cuando = pd.concat([grupos[lineas].idxmin(), grupos[lineas].idxmax()], axis=1)
    tablas.append(pd.concat([grupos.agg(["min", "mean", "max", "sum", "count"]), cuando], axis=1))
clima = datos["temperatura"].resample("D").agg(["mean", "max", "min"])
clima["calefaccion"] = (18.3 - clima["mean"]).clip(lower=0)
clima["refrigeracion"] = (clima["mean"] - 18.3).clip(lower=0)
tablas.append(clima)
with open(sys.argv[2], "w", encoding="utf-8") as pagina:
    pagina.write("<!DOCTYPE html><html lang=es><body>" + dibujo.getvalue())
    pagina.write("".join(tabla.to_html() for tabla in tablas) + "</body></html>")
