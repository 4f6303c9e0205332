# Walks the window through its work and takes the manual's picture at each station. Started by tomar.sh.
#   tomar.py BIN_DIR WORK_DIR PICTURE_DIR
from guia import capturar, paseo

CON_LA_VENTANA = ("ventana-conectada", "ventana", "ventana-datos", "editar")
FUERA_DEL_MANUAL = ("textos",)

for estacion in paseo():
    if estacion not in FUERA_DEL_MANUAL:
        capturar(estacion, solo_arriba=estacion not in CON_LA_VENTANA)
