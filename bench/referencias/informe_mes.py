# The reference of informe_bench: a month's page with the tools of whoever analyses data, charts as one SVG.
#   informe_mes.py TABLE.csv PAGE.html
import io
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt
import pandas as pd

datos = pd.read_csv(sys.argv[1], encoding="cp1252", names=["fecha", "hora", "humedad", "temperatura", "grados", "rumbo",
                    "viento", "radiacion", "presion", "lluvia", "evaporacion"], comment="#", on_bad_lines="skip")
datos.index = pd.to_datetime(datos["fecha"] + " " + datos["hora"], format="%d/%m/%Y %H:%M:%S", errors="coerce")
datos = datos[datos.index.notna()]
columnas = ["temperatura", "humedad", "presion", "viento", "radiacion", "lluvia"]
datos = datos[columnas].apply(pd.to_numeric, errors="coerce")
figura, ejes = plt.subplots(len(columnas), 1, figsize=(10, 14), sharex=True)
for eje, columna in zip(ejes, columnas):
    eje.plot(datos.index, datos[columna], linewidth=0.8)
    eje.set_ylabel(columna)
dibujo = io.StringIO()
figura.savefig(dibujo, format="svg")
dias = datos.resample("D").agg(["min", "mean", "max", "sum"])
with open(sys.argv[2], "w", encoding="utf-8") as pagina:
    pagina.write("<!DOCTYPE html><html lang=es><body>" + dibujo.getvalue() + dias.to_html() + "</body></html>")
