#!/usr/bin/env bash
# Every command and option that a program's help shows stands in both of its man pages and, for the console tool, in
# the completion; the pages have no mistakes that the formatters know.
#   manuales_test.sh SOURCE_DIR CLI SIM HISTORICO [WINDOW]
set -euo pipefail
export LC_ALL=C.UTF-8
raiz=$1 cli=$2 sim=$3 historico=$4 ventana=${5-}
fallos=0
fallar() {
    echo "FALLO: $*" >&2
    fallos=$((fallos + 1))
}

# Long options of a help text, one a line.
opciones() { sed -n 's/^  \(-h,\)\{0,1\}\(--[a-z-]*\).*/\2/p'; }
# A page as plain text, its escaped hyphens undone.
pagina() { sed 's/\\-/-/g' "$raiz/packaging/man/$1/$2.1"; }

# presentes PROGRAM WORD...: each in the pages of both languages, as a word of its own.
presentes() {
    local programa=$1 lengua palabra texto
    shift
    for lengua in es en; do
        texto=$(pagina "$lengua" "$programa")
        for palabra; do
            grep -qE -e "(^|[^a-z-])$palabra([^a-z-]|\$)" <<<"$texto" ||
                fallar "$programa.1 ($lengua): falta $palabra"
        done
    done
}

# completa WORD COMMAND...: the completion offers WORD after these words.
# shellcheck source=packaging/completado/telvane-cli
. "$raiz/packaging/completado/telvane-cli"
completa() {
    local palabra=$1
    shift
    COMP_WORDS=(telvane-cli "$@" "$palabra")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _telvane_cli || true
    [[ " ${COMPREPLY[*]} " == *" $palabra "* ]] || fallar "completado: falta $palabra tras \"$*\""
}

mapfile -t ordenes < <("$cli" --help | sed -n '/^Órdenes:/,/^$/s/^  \([a-z-]*\) .*/\1/p')
[ ${#ordenes[@]} -ge 8 ] || fallar "la ayuda muestra ${#ordenes[@]} órdenes"
presentes telvane-cli "${ordenes[@]}"
vistas=0
for orden in '' "${ordenes[@]}"; do
    mapfile -t lista < <("$cli" ${orden:+"$orden"} --help | opciones)
    vistas=$((vistas + ${#lista[@]}))
    presentes telvane-cli "${lista[@]}"
    for opcion in "${lista[@]}"; do completa "$opcion" ${orden:+"$orden"}; done
    [ -z "$orden" ] || completa "$orden"
done
[ $vistas -ge 30 ] || fallar "la ayuda muestra $vistas opciones"

# The archive's program, which has a completion of its own.
# shellcheck source=packaging/completado/telvane-historico
. "$raiz/packaging/completado/telvane-historico"
completa_historico() {
    local palabra=$1
    shift
    COMP_WORDS=(telvane-historico "$@" "$palabra")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _telvane_historico || true
    [[ " ${COMPREPLY[*]} " == *" $palabra "* ]] || fallar "completado: falta $palabra tras telvane-historico \"$*\""
}
mapfile -t ordenes < <("$historico" --help | sed -n '/^Órdenes:/,/^$/s/^  \([a-z-]*\) .*/\1/p')
[ ${#ordenes[@]} -ge 8 ] || fallar "la ayuda de telvane-historico muestra ${#ordenes[@]} órdenes"
presentes telvane-historico "${ordenes[@]}"
for orden in '' "${ordenes[@]}"; do
    mapfile -t lista < <("$historico" ${orden:+"$orden"} --help | opciones)
    presentes telvane-historico "${lista[@]}"
    for opcion in "${lista[@]}"; do completa_historico "$opcion" ${orden:+"$orden"}; done
done

mapfile -t lista < <("$sim" --help | opciones)
[ ${#lista[@]} -ge 8 ] || fallar "telvane-sim muestra ${#lista[@]} opciones"
presentes telvane-sim "${lista[@]}"
if [ -n "$ventana" ]; then
    mapfile -t lista < <("$ventana" --help | opciones)
    [ ${#lista[@]} -ge 4 ] || fallar "telvane muestra ${#lista[@]} opciones"
    presentes telvane "${lista[@]}"
fi

# Every setting of the nightly download, as its reader knows them.
mapfile -t ajustes < <(grep -oE '\{"[A-Z]+", &Lector' "$raiz/cli/ajustes_descarga.cpp" | grep -oE '[A-Z]{2,}' && echo NOMBRE)
[ ${#ajustes[@]} -ge 9 ] || fallar "la descarga nocturna lee ${#ajustes[@]} ajustes"
for lengua in es en; do
    for ajuste in "${ajustes[@]}"; do
        grep -q "^\.BI\? $ajuste=" "$raiz/packaging/man/$lengua/telvane-descarga.5" ||
            fallar "telvane-descarga.5 ($lengua): falta $ajuste"
    done
done

for pagina in "$raiz"/packaging/man/*/*.[15]; do
    mandoc -T lint -W warning "$pagina" || fallar "$pagina"
done
exit $((fallos > 0))
