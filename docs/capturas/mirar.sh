#!/usr/bin/env bash
# Pictures of every state of the window in every look, to be looked at, into build/capturas/LOOK:
#   docs/capturas/mirar.sh [BIN_DIR [LOOK]...]
set -euo pipefail
raiz=$(cd "$(dirname "$(readlink -f "$0")")/../.." && pwd)
cd "$raiz"
# shellcheck source=cmake/dependencias.sh
. cmake/dependencias.sh

aspectos=(normal oscuro justa justa-oscuro pequena pequena-oscuro uno-y-medio doble doble-justa letra-grande letra-enorme
    enorme-pequena-oscuro doble-justa-oscuro doble-justa-enorme maximizada)

# maximizar CLASS: the window manager gives the program's main window the whole screen.
maximizar() {
    mkdir -p "$casa/.config/openbox"
    cat >"$casa/.config/openbox/rc.xml" <<FIN
<openbox_config xmlns="http://openbox.org/3.4/rc"><applications>
<application class="$1" title="Telvane de*" type="normal"><maximized>yes</maximized></application>
</applications></openbox_config>
FIN
    openbox --reconfigure
}

# mirar LOOK: one walk through the window, on a display of its own.
mirar() {
    # shellcheck source=docs/capturas/escenario.sh
    . docs/capturas/escenario.sh
    elegir_programas "$bin"
    local tamano=1280x1024 colores=()
    export QT_SCALE_FACTOR=1
    case $1 in
    uno-y-medio) tamano=1920x1536 QT_SCALE_FACTOR=1.5 ;;
    doble) tamano=2560x2048 QT_SCALE_FACTOR=2 ;;
    *doble-justa*) QT_SCALE_FACTOR=2 ;;
    letra-grande) export QT_FONT_DPI=144 ;;
    maximizada) tamano=1920x1080 ;;
    esac
    case $1 in *oscuro) colores=(oscuro) ;; esac
    case $1 in *enorme*) export QT_FONT_DPI=213 ;; esac # 20 points instead of 9
    case $1 in justa*) tamano=1024x700 ;; *pequena*) tamano=800x600 ;; esac
    montar_escritorio "$tamano"
    if [ "$1" = maximizada ]; then maximizar telvane; fi
    local carpeta=build/capturas/$1
    rm -rf "$carpeta"
    mkdir -p "$carpeta"
    dbus-run-session -- /usr/bin/python3 -B docs/capturas/mirar.py "$bin" "$privada" "$carpeta" "${colores[@]}"
}

instalar capturas
bin=${1-build/release/bin}
[ $# -le 1 ] || aspectos=("${@:2}")
for aspecto in "${aspectos[@]}"; do
    echo "== $aspecto"
    (mirar "$aspecto")
done
