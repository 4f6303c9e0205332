# Drives the window by its accessible names and takes pictures of it. Imported by tomar.py and mirar.py, whose arguments are
#   BIN_DIR WORK_DIR PICTURE_DIR
import os
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import GLib

import pyatspi

BIN, TRABAJO, CAPTURAS = sys.argv[1:4]
PLAZO = 60
BOTON, ROTULO, CAMPO = "push button", "label", "text"
DESCARGAR = "Importar datos desde equipo y exportar a excell (csv)"


def hasta(prueba, que):
    """What the test gives, as soon as that is something."""
    fin = time.monotonic() + PLAZO
    while time.monotonic() < fin:
        try:
            hallado = prueba()
        except (GLib.Error, LookupError, NotImplementedError):
            hallado = None  # it went away while it was being asked
        if hallado:
            return hallado
        time.sleep(0.05)
    sys.exit(f"no llegó: {que}")


def telvane():
    escritorio = pyatspi.Registry.getDesktop(0)
    for i in range(escritorio.childCount):
        uno = escritorio.getChildAtIndex(i)
        if uno is not None and uno.name == "telvane":
            return uno
    return None


def buscar(papel, comienzo, de=None):
    """The first on the screen with this role and this beginning of its name."""

    def mirar(nodo):
        estados = nodo.getState()
        if nodo.getRoleName() == papel and nodo.name.startswith(comienzo):
            if estados.contains(pyatspi.STATE_SHOWING):
                return nodo
        for i in range(nodo.childCount):
            hijo = nodo.getChildAtIndex(i)
            hallado = mirar(hijo) if hijo is not None else None
            if hallado is not None:
                return hallado
        return None

    raiz = de or telvane()
    return mirar(raiz) if raiz is not None else None


def pulsar(nombre, papel=BOTON):
    def intentar():
        boton = buscar(papel, nombre)
        if boton is None or not boton.getState().contains(pyatspi.STATE_SENSITIVE):
            return False
        acciones = boton.queryAction()
        for i in range(acciones.nActions):
            if acciones.getName(i).lower() in ("press", "toggle", "setfocus") and acciones.getName(i) != "SetFocus":
                return acciones.doAction(i)
        return acciones.doAction(0)

    hasta(intentar, f"botón {nombre}")


def caja(texto):
    hasta(lambda: buscar(ROTULO, texto), f"mensaje {texto}")


def responder(texto, boton="Aceptar"):
    caja(texto)
    pulsar(boton)
    hasta(lambda: buscar(ROTULO, texto) is None, f"fin del mensaje {texto}")


def habilitado(nombre):
    def mirar():
        boton = buscar(BOTON, nombre)
        return boton is not None and boton.getState().contains(pyatspi.STATE_SENSITIVE)

    hasta(mirar, f"{nombre} habilitado")


def pixeles(ventana):
    return subprocess.run(["import", "-silent", "-window", ventana, "rgb:-"], check=True, capture_output=True).stdout


def ventanas():
    """Frames of the program's windows on the screen, from the bottom up."""
    orden = subprocess.run(["xprop", "-root", "_NET_CLIENT_LIST_STACKING"], capture_output=True, text=True).stdout
    return [x.strip() for x in orden.partition("#")[2].split(",") if x.strip()]


def esperar_quietud():
    """Until two looks at the screen are the same; a clock or the live readings never stand still."""

    def quieta():
        una = pixeles("root")
        time.sleep(0.4)
        return una == pixeles("root")

    fin = time.monotonic() + 5
    while time.monotonic() < fin and not quieta():
        pass


def capturar_pantalla(nombre):
    esperar_quietud()
    subprocess.run(["import", "-silent", "-window", "root", os.path.join(CAPTURAS, nombre + ".png")], check=True)
    print(nombre)


def capturar(nombre, solo_arriba=False):
    """The topmost window, or everything from the main window up."""
    esperar_quietud()
    cual = ventanas()[-1 if solo_arriba else 0]
    marco = geometria(cual)
    ruta = os.path.join(CAPTURAS, nombre + ".png")
    subprocess.run(
        ["import", "-silent", "-window", "root", "-crop", marco, "+repage", "-colors", "128", "-strip", "PNG8:" + ruta],
        check=True,
    )
    print(nombre, marco)


def geometria(ventana):
    """The window with the frame that the desktop draws around it."""
    datos = subprocess.run(["xwininfo", "-id", ventana, "-stats"], capture_output=True, text=True).stdout
    valor = lambda clave: int(next(x for x in datos.splitlines() if clave in x).split(":")[1])
    x, y = valor("Absolute upper-left X"), valor("Absolute upper-left Y")
    ancho, alto = valor("Width"), valor("Height")
    marco = subprocess.run(["xprop", "-id", ventana, "_NET_FRAME_EXTENTS"], capture_output=True, text=True).stdout
    izq, der, arriba, abajo = (int(n) for n in marco.partition("=")[2].split(","))
    return f"{ancho + izq + der}x{alto + arriba + abajo}+{x - izq}+{y - arriba}"


class Registrador:
    """A simulated logger; with none of these, nobody answers on the link."""

    def __init__(self, nombre, *opciones):
        self.enlace = os.path.join(TRABAJO, nombre)
        orden = [os.path.join(BIN, "telvane-sim"), "--enlace", self.enlace, "--baudios", "0", *opciones]
        self.proceso = subprocess.Popen(orden, stdout=subprocess.PIPE, text=True)
        self.proceso.stdout.readline()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.proceso.terminate()
        self.proceso.wait()


class Ventana:
    def __init__(self, *opciones):
        hasta(lambda: telvane() is None, "fin de la ventana anterior")
        self.proceso = subprocess.Popen([os.path.join(BIN, "telvane"), *opciones])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.proceso.terminate()
        self.proceso.wait()


def escribir(campo, texto):
    hallado = hasta(lambda: buscar(CAMPO, campo), f"campo {campo}")
    hallado.queryEditableText().setTextContents(texto)


def paseo(*fallos):
    """The window's work from its first question to its last, by the name of each station; whoever walks takes its picture.
    fallos: what the simulated logger does wrong besides."""
    # The logger pauses in mid-transfer, so that the progress stands still for its picture.
    with Registrador("COM1", "--fallo", "descarga:bloque=2458:demora=6000", *fallos) as registrador:
        with Ventana("--com", "1=" + registrador.enlace):
            yield from _conexion()
            yield from _datos()
            yield from _configuracion()
    with Ventana("--com", "1=" + os.path.join(TRABAJO, "nadie")):
        responder("Quiere conectarse")
        hasta(lambda: buscar(ROTULO, "   No Hay Conexion"), "sin conexión")
        yield "sin-conexion"


def _conexion():
    caja("Su Configuracion Regional")
    yield "regional"
    responder("Su Configuracion Regional")
    caja("Quiere conectarse")
    yield "pregunta"
    responder("Quiere conectarse")
    caja(" Conexion en COM 1")
    yield "conexion"
    responder(" Conexion en COM 1")
    habilitado("Cambiar configuracion")
    yield "ventana-conectada"


def _datos():
    pulsar("DATOS EN LINEA")
    campo = lambda: buscar(CAMPO, "Medicion de Datos en linea")
    hasta(lambda: campo() and campo().queryText().getText(0, -1).startswith("[RH%]"), "datos en línea")
    yield "ventana"
    pulsar("PARAR")
    pulsar(DESCARGAR)
    barra = lambda: buscar("progress bar", "")
    hasta(lambda: barra() and barra().queryValue().currentValue >= 2400, "mitad de la descarga")
    yield "descarga"
    caja("La descarga de datos se realizó con exito")
    yield "exito"
    responder("La descarga de datos se realizó con exito")
    hasta(lambda: buscar("dialog", "Guardar archivo") or buscar("file chooser", "Guardar archivo"), "diálogo de guardar")
    yield "guardar"
    pulsar("Guardar")
    caja("Desea Abrir Archivo")
    yield "abrir"
    responder("Desea Abrir Archivo", "No")
    habilitado(DESCARGAR)
    yield "ventana-datos"


def _configuracion():
    pulsar("Cambiar configuracion")
    habilitado("Enviar configuracion")
    yield "editar"
    # As wide as letters come, in as many as each field takes.
    for nombre, letras in (("Usuario", 30), ("Ubicacion", 35), ("Latitud", 15), ("Longitud", 15), ("Altitud", 5)):
        escribir(nombre, "M" * letras)
    yield "textos"
    pulsar("Enviar configuracion")
    caja("SE BORRARAN")
    yield "borrar"
    responder("SE BORRARAN", "Cancelar")
    pulsar("Coeficientes")
    hasta(lambda: len(ventanas()) == 2, "coeficientes")
    yield "coeficientes"
