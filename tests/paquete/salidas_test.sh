#!/usr/bin/env bash
# What is asked for and cannot be written is a failure, told in Spanish, in every program.
#   salidas_test.sh CLI SIM HISTORICO [WINDOW]
set -u
fallos=0
fallar() {
    echo "FALLO: $*"
    fallos=$((fallos + 1))
}

# Of a run with this status: one line, which begins with the program's name.
dice() {
    local programa=$1 esperado=$2 estado=$3 texto=$4
    [ "$estado" -eq "$esperado" ] || fallar "$programa: código $estado, y no $esperado"
    [ "$(printf '%s\n' "$texto" | wc -l)" -eq 1 ] || fallar "$programa dice más de una línea: $texto"
    [[ $texto == "${programa##*/}: no se p"* ]] || fallar "$programa dice: $texto"
}

for programa; do
    for opcion in --help --version; do
        texto=$("$programa" $opcion 2>&1 >/dev/full)
        dice "$programa" 1 $? "$texto"
        texto=$( (exec "$programa" $opcion 3>&1 1>&- 2>&3 3>&-) )
        dice "$programa" 1 $? "$texto"
        "$programa" $opcion >/dev/null || fallar "$programa $opcion"
    done
done

# A window needs a screen; that there is none is said in one sentence, whatever the toolkit would say.
if [ $# -eq 4 ]; then
    texto=$(env -u DISPLAY -u WAYLAND_DISPLAY -u WAYLAND_SOCKET -u QT_QPA_PLATFORM "$4" 2>&1)
    dice "$4" 1 $? "$texto"
fi
exit $((fallos > 0))
