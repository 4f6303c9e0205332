# Walks the window through its work and takes the whole screen at each station. Started by mirar.sh, once for each look.
#   mirar.py BIN_DIR WORK_DIR PICTURE_DIR [oscuro]
import os
import subprocess
import sys

from guia import capturar_pantalla, paseo

# The widest readings that a frame can carry.
ANCHOS = [palabra for k in range(31) for palabra in ("--fallo", f"en-linea:byte={k}:siempre:cambiar=80")]

portal = None
if "oscuro" in sys.argv[4:]:
    portal = subprocess.Popen(
        [sys.executable, os.path.join(os.path.dirname(__file__), "portal.py")], stdout=subprocess.PIPE, text=True
    )
    portal.stdout.readline()
for paso, estacion in enumerate(paseo(*ANCHOS)):
    capturar_pantalla(f"{paso:02}-{estacion}")
if portal is not None:
    portal.terminate()
