#!/usr/bin/env bash
# An incorporation that is killed, or whose disk fails, at each of its system calls that matter: afterwards the image is
# in whole or not at all, the archive is sound, and the next incorporation succeeds.
#   muerte_test.sh HISTORICO FIRST.rgt SECOND.rgt
set -euo pipefail
programa=$1 primera=$2 segunda=$3
carpeta=$(mktemp -d)
trap 'rm -rf "$carpeta"' EXIT
archivo=$carpeta/h.sqlite
"$programa" --en "$archivo" incorporar "$primera" >/dev/null
cp "$archivo" "$carpeta/antes.sqlite"
antes=$("$programa" --en "$archivo" estado --json)
cp "$carpeta/antes.sqlite" "$archivo"
"$programa" --en "$archivo" incorporar "$segunda" >/dev/null
despues=$("$programa" --en "$archivo" estado --json | grep -v incorporada)
antes=$(grep -v incorporada <<<"$antes")
[ "$antes" != "$despues" ]

probados=0
# probar CALL INJECTION N: true while the program came to the Nth such call.
probar() {
    local llamada=$1 que=$2 cual=$3 registro=$carpeta/strace ahora
    rm -f "$archivo"*
    cp "$carpeta/antes.sqlite" "$archivo"
    strace -f -o "$registro" -e "trace=$llamada" -e "inject=$llamada:$que:when=$cual" \
        "$programa" --en "$archivo" incorporar "$segunda" >"$carpeta/dicho" 2>&1 || true
    [ "$(grep -c "$llamada(" "$registro")" -ge "$cual" ] || return 1
    ahora=$("$programa" --en "$archivo" estado --json | grep -v incorporada)
    [ "$ahora" = "$antes" ] || [ "$ahora" = "$despues" ] || { echo "$llamada $cual $que: a medias"; exit 1; }
    "$programa" --en "$archivo" comprobar >"$carpeta/comprobado" || { cat "$carpeta/comprobado"; exit 1; }
    "$programa" --en "$archivo" incorporar "$segunda" >/dev/null || { echo "$llamada $cual $que: no se repone"; exit 1; }
    [ "$("$programa" --en "$archivo" estado --json | grep -v incorporada)" = "$despues" ]
    probados=$((probados + 1))
}

for llamada in pwrite64 fdatasync fsync ftruncate unlink; do
    for que in signal=KILL error=ENOSPC error=EDQUOT error=EIO; do
        for ((n = 1; n <= ${4-6}; n++)); do probar $llamada $que $n || break; done
    done
done
echo "$probados casos"
[ $probados -ge 20 ]
