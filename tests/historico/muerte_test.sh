#!/usr/bin/env bash
# An incorporation that is killed, or whose disk fails, at each of its system calls that matter: afterwards the image is
# in whole or not at all, the archive is sound, whoever may only read it reads one of its states or is told what to do,
# and the next incorporation succeeds. With "migracion" the archive is of the first version, and is migrated on the way.
#   muerte_test.sh HISTORICO FIRST.rgt SECOND.rgt HOW_MANY_OF_EACH_CALL [migracion]
set -euo pipefail
programa=$1 primera=$2 segunda=$3 cuantas=$4 migracion=${5-}
# In memory where there is some: what a disk takes to settle is not what is tried.
carpeta=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
alcance=$(mktemp -d)
trap 'rm -rf "$carpeta" "$alcance"' EXIT
chmod 755 "$carpeta" "$alcance"
# Another user may have no way to where it was built.
cp "$programa" "$alcance/"
legible=$alcance/${programa##*/}
archivo=$carpeta/h.sqlite
estado() { "$programa" --en "$archivo" estado --json | grep -v incorporada; }
"$programa" --en "$archivo" incorporar "$primera" >/dev/null
antes=$(estado)
cp "$archivo" "$carpeta/antes.sqlite"
"$programa" --en "$archivo" incorporar "$segunda" >/dev/null
despues=$(estado)
[ "$antes" != "$despues" ]
if [ -n "$migracion" ]; then
    sqlite3 "$carpeta/antes.sqlite" "DROP TABLE descargas; DROP INDEX IF EXISTS imagenes_por_reloj; PRAGMA user_version=1"
fi

# Who may not write: another user, or this one where the files allow nothing else.
lector() {
    if [ "$(id -u)" -eq 0 ]; then
        setpriv --reuid nobody --regid "$(id -g nobody)" --clear-groups "$@"
    else
        chmod a-w "$carpeta" "$archivo"*
        "$@" || { chmod u+w "$carpeta" "$archivo"*; return 1; }
        chmod u+w "$carpeta" "$archivo"*
    fi
}
quejarse() {
    echo "$*"
    exit 1
}

leerSinPermiso() {
    local ahora
    if lector "$legible" --en "$archivo" estado --json >"$carpeta/leido" 2>"$carpeta/dicho"; then
        ahora=$(grep -v incorporada "$carpeta/leido")
        [ "$ahora" = "$antes" ] || [ "$ahora" = "$despues" ] || quejarse "$1: se lee a medias"
    else
        grep -q "el próximo incorporar" "$carpeta/dicho" || quejarse "$1: $(cat "$carpeta/dicho")"
    fi
}

# Killed in its very first commit: who may not write is told at once. (SQLite alone would try for ten seconds.)
primerCorte() {
    local cual nuevo=$carpeta/nuevo.sqlite codigo
    for cual in 1 2 3 4 5 6 7 8; do
        rm -f "$nuevo"*
        strace -f -o "$carpeta/strace" -e trace=fdatasync -e "inject=fdatasync:signal=KILL:when=$cual" \
            "$programa" --en "$nuevo" incorporar "$primera" >"$carpeta/dicho" 2>&1 || true
        [ "$(stat -c %s "$nuevo-wal" 2>/dev/null)" != 32 ] || break
    done
    [ "$(stat -c %s "$nuevo-wal")" = 32 ] || quejarse "ningún corte deja el registro recién empezado"
    codigo=0
    if [ "$(id -u)" -ne 0 ]; then chmod a-w "$carpeta" "$nuevo"*; fi
    lector timeout 9 "$legible" --en "$nuevo" estado >"$carpeta/leido" 2>"$carpeta/dicho" || codigo=$?
    if [ "$(id -u)" -ne 0 ]; then chmod u+w "$carpeta" "$nuevo"*; fi
    [ $codigo -eq 1 ] || quejarse "primer corte: $codigo $(cat "$carpeta/dicho")"
    grep -q "el próximo incorporar" "$carpeta/dicho" || quejarse "primer corte: $(cat "$carpeta/dicho")"
    "$programa" --en "$nuevo" incorporar "$primera" >/dev/null
    rm -f "$nuevo"*
}
[ -n "$migracion" ] || primerCorte

probados=0
# probar CALL INJECTION N: true while the program came to the Nth such call.
probar() {
    local llamada=$1 que=$2 cual=$3 registro=$carpeta/strace ahora
    rm -f "$archivo"*
    cp "$carpeta/antes.sqlite" "$archivo"
    strace -f -o "$registro" -e "trace=$llamada" -e "inject=$llamada:$que:when=$cual" \
        "$programa" --en "$archivo" incorporar "$segunda" >"$carpeta/dicho" 2>&1 || true
    [ "$(grep -c "$llamada(" "$registro")" -ge "$cual" ] || return 1
    if [ -z "$migracion" ]; then leerSinPermiso "$llamada $cual $que"; fi
    if [ -z "$migracion" ]; then
        ahora=$(estado)
        [ "$ahora" = "$antes" ] || [ "$ahora" = "$despues" ] || quejarse "$llamada $cual $que: a medias"
        "$programa" --en "$archivo" comprobar >"$carpeta/comprobado" || quejarse "$(cat "$carpeta/comprobado")"
    fi
    "$programa" --en "$archivo" incorporar "$segunda" >/dev/null || quejarse "$llamada $cual $que: no se repone"
    [ "$(estado)" = "$despues" ] || quejarse "$llamada $cual $que: no acaba igual"
    "$programa" --en "$archivo" comprobar >"$carpeta/comprobado" || quejarse "$(cat "$carpeta/comprobado")"
    probados=$((probados + 1))
}

# A migration writes a copy first: there are many of some calls, and each is twice as far as the one before the last.
for llamada in pwrite64 fdatasync fsync ftruncate unlink; do
    for que in signal=KILL error=ENOSPC error=EDQUOT error=EIO; do
        anterior=1
        for ((n = 1, i = 0; i < cuantas || ${#migracion} > 0; i++)); do
            probar $llamada $que $n || break
            if [ $i -lt "$cuantas" ]; then
                n=$((n + 1))
            elif [ $que = signal=KILL ]; then
                siguiente=$((n + anterior)) anterior=$n n=$siguiente
            else
                break
            fi
        done
    done
done
echo "$probados casos"
[ $probados -ge 20 ]
