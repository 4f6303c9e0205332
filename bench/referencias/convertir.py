#!/usr/bin/env python3
"""Memory images to CSV sample lines, the way a script does it: the yardstick of the console tool's conversion.

convertir.py IN.rgt OUT.csv [IN OUT]...
"""
import struct
import sys

RUMBOS = "NNO NO ONO O OSO SO SSO S SSE SE ESE E ENE NE NNE N".split()
PRIMER_BYTE, REGISTRO = 6 * 64, 32
LUGAR_HORA, LUGAR_HUMEDAD, LUGAR_DIRECCION, LUGAR_VELOCIDAD, LUGAR_LLUVIA = 0, 8, 12, 13, 19


def entero(dividendo, divisor):
    mitad = divisor // 2
    if dividendo < 0:
        return -((-dividendo + mitad) // divisor)
    return (dividendo + mitad) // divisor


def decimal(valor, decimales):
    signo = "-" if valor < 0 else ""
    valor = abs(valor)
    parte, resto = divmod(valor, 10 ** decimales)
    if not resto:
        return f"{signo}{parte}"
    return f"{signo}{parte}.{resto:0{decimales}d}".rstrip("0")


def linea(registro):
    hora, minuto, segundo, dia, mes, anio = struct.unpack_from("6B", registro, LUGAR_HORA)
    humedad, temperatura = struct.unpack_from(">2H", registro, LUGAR_HUMEDAD)
    velocidad, radiacion, presion = struct.unpack_from(">3H", registro, LUGAR_VELOCIDAD)
    direccion, lluvia = registro[LUGAR_DIRECCION], registro[LUGAR_LLUVIA]
    rumbo = RUMBOS[direccion // 10 - 1] if direccion and direccion % 10 == 0 and direccion <= 160 else "---"
    return (
        f"{dia:02x}/{mes:02x}/20{anio:02x},{hora:02x}:{minuto:02x}:{segundo:02x},"
        f"{entero(humedad * 129 - 26445, 1000)},{decimal(temperatura - 375, 1)},"
        f"{decimal(entero(direccion * 225, 10), 1)},{rumbo},{decimal(velocidad * 2 - 250, 1)},"
        f"{decimal(entero(radiacion * 266, 1000), 2)},{decimal(entero((presion + 98) * 899, 100), 1)},"
        f"{decimal(lluvia * 2, 1)}\r\n"
    )


def bueno(registro):
    horas, limites = registro[:6], (0x30, 0x60, 0x60, 0x40, 0x20, 0x20)
    en_cifras = all(byte & 0x0F < 10 and byte < limite for byte, limite in zip(horas, limites))
    return en_cifras and all(horas[3:])


def convertir(entrada, salida):
    with open(entrada, "rb") as archivo:
        imagen = archivo.read()
    registros = (imagen[i : i + REGISTRO] for i in range(PRIMER_BYTE, len(imagen), REGISTRO))
    with open(salida, "w", encoding="cp1252", newline="") as archivo:
        archivo.write("".join(linea(registro) for registro in registros if bueno(registro)))


if __name__ == "__main__":
    argumentos = sys.argv[1:]
    for entrada, salida in zip(argumentos[::2], argumentos[1::2]):
        convertir(entrada, salida)
