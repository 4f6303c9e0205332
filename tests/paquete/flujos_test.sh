#!/usr/bin/env bash
# Standard streams that are full, closed or broken: every command of the built programs ends, by itself, with the status that it
# has otherwise, or with 1 where its results are what was lost.
#   flujos_test.sh CLI SIM HISTORICO [WINDOW]
set -u
cli=$1 sim=$2 historico=$3
fallos=0
fallar() {
    echo "FALLO: $*"
    fallos=$((fallos + 1))
}
aqui=$(mktemp -d)
cd "$aqui" || exit 1
trap 'kill $simulador 2>/dev/null; rm -rf "$aqui"' EXIT

# A pipe that nobody reads any more stays open as 6.
mkfifo tubo
exec 5<>tubo 6>tubo 5<&-

"$sim" --enlace COM1 --baudios 0 --memoria in.rgt >listo &
simulador=$!
timeout 60 sh -c 'until [ -s listo ]; do sleep 0.1; done' || fallar "telvane-sim no arranca"
mkdir estaciones
echo 'COM=1=/dev/ttyUSB0' >estaciones/norte.conf

# The rest: a command. Each run finds what the first one found, so that it would end as that did.
probar() {
    local sano esperado flujos estado
    rm -f out.*
    timeout 60 "$@" >salida.txt 2>errores.txt
    sano=$?
    [ $sano -lt 124 ] || fallar "$*: código $sano"
    esperado=$sano
    [ $sano -ne 0 ] || [ ! -s salida.txt ] || esperado=1
    for flujos in '>/dev/full' '>&6' '>&-' '>/dev/full 2>/dev/full' '>&6 2>&6' '>&- 2>&-' '<&- >&- 2>&-' \
        '2>/dev/full' '2>&6' '2>&-'; do
        rm -f out.*
        eval "timeout 60 \"\$@\" $flujos" >salida.txt 2>errores.txt
        estado=$?
        # What is closed may be told before anything else is.
        case $flujos in
            2*) [ $estado -eq $sano ] ;;
            *'>&- '* | *'>&-') [ $estado -eq $esperado ] || [ $estado -eq 1 ] ;;
            *) [ $estado -eq $esperado ] ;;
        esac ||
            fallar "${*//"$aqui"/} $flujos: código $estado: $(cat errores.txt)"
    done
}

for programa; do
    probar "$programa" --help
    probar "$programa" --nada
done
[ $# -lt 4 ] || probar env -u DISPLAY -u WAYLAND_DISPLAY -u WAYLAND_SOCKET -u QT_QPA_PLATFORM "$4"
probar "$sim" --enlace no/hay
probar "$cli" puertos
probar "$cli" --com 1=COM1 buscar
probar "$cli" --com 1=COM1 en-linea --cuenta 1
probar "$cli" --com 1=nada buscar
probar "$cli" convertir in.rgt out.csv
probar "$cli" convertir in.rgt -
probar "$cli" convertir --en . in.rgt no.rgt
probar "$cli" estaciones --en estaciones
probar "$cli" estaciones --valores estaciones/norte.conf

archivo() { probar "$historico" --en h.sqlite "$@"; }
archivo estado
archivo incorporar in.rgt
archivo incorporar no.rgt
archivo estado
archivo estado --json
archivo imagenes
archivo exportar - --estacion 02080050
archivo exportar out.csv --estacion 02080050
archivo imagen "$(sha256sum in.rgt | cut -c1-8)" -
archivo informe out.html --estacion 02080050
archivo informe - --imagen in.rgt
archivo resumen --estacion 02080050
archivo comprobar
archivo rehacer
archivo copiar --a copia.sqlite
exit $((fallos > 0))
