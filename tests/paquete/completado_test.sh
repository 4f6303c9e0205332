#!/usr/bin/env bash
# What the bash completion of telvane-cli offers.
#   completado_test.sh SOURCE_DIR
set -uo pipefail  # the completion runs as in an interactive shell
carpeta=$(mktemp -d)
trap 'rm -rf "$carpeta"' EXIT
# shellcheck source=packaging/completado/telvane-cli
. "$1/packaging/completado/telvane-cli"
cd "$carpeta" || exit
mkdir datos 'con blanco'
touch a.rgt b.csv otra.txt 'finca norte.rgt'
fallos=0

# ofrece "EXPECTED WORDS, SORTED" WORD...: the last word is the one being completed.
ofrece() {
    local esperado=$1
    shift
    COMP_WORDS=(telvane-cli "$@")
    COMP_CWORD=$#
    _telvane_cli
    local ofrecido
    ofrecido=$(printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | paste -sd, -)
    [ "$ofrecido" = "$esperado" ] && return
    echo "FALLO: \"$*\" ofrece $ofrecido en vez de $esperado" >&2
    fallos=$((fallos + 1))
}

ofrece 'buscar,configuracion,configurar,convertir,descargar,en-linea,estaciones,puertos,serie' ''
ofrece 'configuracion,configurar' confi
ofrece '--com,--help,--version' -
ofrece '--com,--help,--json' configuracion -
ofrece '--perfil' descargar --p
ofrece 'a.rgt,con blanco,datos,finca norte.rgt' descargar --base ''
ofrece 'ampliado,estricto' convertir --perfil ''
ofrece 'csv,jsonl,xls' convertir a.rgt --formato ''
ofrece 'ampliado' convertir --perfil = amp
ofrece 'con blanco,datos' convertir --en ''
ofrece 'b.csv' descargar --csv b
ofrece 'a.rgt' convertir a
ofrece '60' configurar --intervalo 6
ofrece '' serie ''
ofrece '' descargar otra
# The device of --com does not hide the command, nor does a value that reads like one.
ofrece '10=,11=,12=,1=' --com 1
ofrece '/dev/null' --com 1 = /dev/nul
ofrece '--base' --com 1 = /dev/null descargar --b
ofrece 'buscar,configuracion,configurar,convertir,descargar,en-linea,estaciones,puertos,serie' --com 1 = /dev/null ''
ofrece '--borrar-memoria' configurar --usuario serie --b

# What the programs take: endings in any case, what was left of a download, settings of whatever name.
mkdir otros
cd otros || exit
touch t.CSV x.RGT y.rgt.parcial y.rgt.parcial.anterior y.rgt.2.parcial f.JSON u.Xls v.jsonl telvane-descarga una.conf notas.txt
ofrece 't.CSV,u.Xls,v.jsonl,x.RGT,y.rgt.2.parcial,y.rgt.parcial,y.rgt.parcial.anterior' convertir ''
ofrece 'x.RGT' descargar --base ''
ofrece 'x.RGT' configurar --respaldo ''
ofrece 'f.JSON' descargar --ficha ''
ofrece 't.CSV' descargar --csv ''
ofrece 't.CSV,telvane-descarga' estaciones --nocturna --valores t
ofrece 'u.Xls,una.conf' estaciones --valores u
cd ..
# No setting of the shell's own changes by it.
shopt -q nocasematch && { echo 'FALLO: la sesión compara ya sin mirar mayúsculas' >&2; fallos=$((fallos + 1)); }
exit $((fallos > 0))
