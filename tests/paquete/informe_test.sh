#!/usr/bin/env bash
# The menu entry of the report, as the desktop runs it: with a base file, with what the window has downloaded, with nothing.
#   informe_test.sh SOURCE_DIR HISTORICO SIM CLI
set -euo pipefail
export LC_ALL=C.UTF-8
raiz=$1
desktop-file-validate "$raiz/packaging/escritorio/telvane-informe.desktop"
grep -qx 'Exec=telvane-informe %f' "$raiz/packaging/escritorio/telvane-informe.desktop"
grep -qx 'MimeType=application/x-telvane-rgt;' "$raiz/packaging/escritorio/telvane-informe.desktop"

carpeta=$(mktemp -d)
trap 'rm -rf "$carpeta"' EXIT
mkdir -p "$carpeta/bin" "$carpeta/datos/telvane"
ln -s "$2" "$carpeta/bin/telvane-historico"
# Keeps what it was to open, and tells that it did.
mkfifo "$carpeta/abierto"
# Held open, because an opener that is slow to close would be the next reader's end of file.
exec 7<>"$carpeta/abierto"
cat >"$carpeta/bin/xdg-open" <<ABRIDOR
#!/bin/sh
echo "\$1" >"$carpeta/abierto"
ABRIDOR
chmod +x "$carpeta/bin/xdg-open"
export PATH=$carpeta/bin:$PATH HOME=$carpeta XDG_DATA_HOME=$carpeta/datos XDG_CACHE_HOME=$carpeta/cache
fallar() {
    echo "FALLO: $*" >&2
    exit 1
}
# abre FILE ARGUMENT...: runs the menu entry and expects it to open that file.
abre() {
    local esperado=$carpeta/cache/telvane/$1 abierto
    shift
    sh "$raiz/packaging/escritorio/telvane-informe" "$@" &
    read -r -t 60 -u 7 abierto || fallar "nada se abrió"
    [ "$abierto" = "$esperado" ] || fallar "se abrió $abierto, no $esperado"
    wait $! && estado=0 || estado=$?
}
# The same of the report and of a text that says what is not in it, whichever comes first.
abreLosDos() {
    local uno otro
    rm "$carpeta/cache/telvane/informe.html"
    sh "$raiz/packaging/escritorio/telvane-informe" &
    read -r -t 60 -u 7 uno && read -r -t 60 -u 7 otro || fallar "no se abrieron los dos"
    [ "$(printf '%s\n' "$uno" "$otro" | sort | xargs)" = \
        "$carpeta/cache/telvane/informe.html $carpeta/cache/telvane/informe.txt" ] || fallar "se abrieron $uno y $otro"
    wait $! || fallar "con un archivo que no entra: $?"
    grep -q '02080077' "$carpeta/cache/telvane/informe.html"
}

abre informe.txt
[ $estado -eq 1 ] || fallar "sin descargas: $estado"
grep -q 'no hay descargas' "$carpeta/cache/telvane/informe.txt"

coproc simulador { exec "$3" --enlace "$carpeta/COM1" --baudios 0 --serie 02080077; }
read -r -t 30 _ <&"${simulador[0]}"
"$4" --com "1=$carpeta/COM1" descargar --base "$carpeta/una.rgt" 2>/dev/null
kill "$simulador_PID"

abre informe.html "$carpeta/una.rgt"
[ $estado -eq 0 ] || fallar "con un archivo: $estado"
grep -q '02080077' "$carpeta/cache/telvane/informe.html"
[ ! -e "$carpeta/datos/telvane/historico.sqlite" ] || fallar "un archivo suelto no es del archivo histórico"

cp "$carpeta/una.rgt" "$carpeta/datos/telvane/02080077_20191120_170409.rgt"
echo basura >"$carpeta/datos/telvane/rota.rgt"
touch -d '2001-01-01' "$carpeta/datos/telvane/rota.rgt"
rm "$carpeta/cache/telvane/informe.html"
abre informe.html
[ $estado -eq 0 ] || fallar "desde el menú: $estado"
grep -q '02080077' "$carpeta/cache/telvane/informe.html"
[ -e "$carpeta/datos/telvane/historico.sqlite" ] || fallar "lo descargado no se incorporó"

# The file that the window left last shows nothing: what is there is shown, and that it is not of that file.
touch "$carpeta/datos/telvane/rota.rgt"
touch -d '2019-11-20' "$carpeta/datos/telvane/02080077_20191120_170409.rgt"
abreLosDos
grep -q 'El archivo más nuevo, rota.rgt, no .*: el informe es de la estación 02080077' "$carpeta/cache/telvane/informe.txt"
# The same of one that cannot even go in.
: >"$carpeta/datos/telvane/rota.rgt"
abreLosDos
grep -q 'rota.rgt: el archivo base está vacío' "$carpeta/cache/telvane/informe.txt"
grep -q 'El archivo más nuevo, rota.rgt, no .*: el informe es de la estación 02080077' "$carpeta/cache/telvane/informe.txt"

# None of them can: the archive has what went in before.
rm "$carpeta/datos/telvane/02080077_20191120_170409.rgt"
abreLosDos

# No files, but an archive.
rm "$carpeta/datos/telvane/rota.rgt" "$carpeta/cache/telvane/informe.html"
abre informe.html
[ $estado -eq 0 ] || fallar "sin archivos: $estado"
grep -q '02080077' "$carpeta/cache/telvane/informe.html"

# Whatever a file is called.
(
    cd "$carpeta"
    cp una.rgt ./--x.rgt
    rm "$carpeta/cache/telvane/informe.html"
    abre informe.html --x.rgt
    [ $estado -eq 0 ] || fallar "con un nombre de guiones: $estado"
)
grep -q '02080077' "$carpeta/cache/telvane/informe.html"

echo basura >"$carpeta/rota.rgt"
abre informe.txt "$carpeta/rota.rgt"
[ $estado -eq 1 ] || fallar "con un archivo roto: $estado"
grep -q 'no es la memoria de un registrador, sino un texto' "$carpeta/cache/telvane/informe.txt"
