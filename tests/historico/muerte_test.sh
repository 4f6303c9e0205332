#!/usr/bin/env bash
# A command that is killed, or whose disk fails, at its system calls: afterwards an image is in whole or not at all, the
# archive is sound, whoever may only read it reads one of its states or is told what to do, what says that it has
# succeeded has, and the same command again succeeds.
#   muerte_test.sh HISTORICO ORDEN FIRST.rgt SECOND.rgt CUANTAS
# ORDEN: incorporar; migrar, the same on an archive of the first version; comprobar; rehacer, after somebody has changed
# the tables; copiar. CUANTAS: of each call that changes a disk the first ones, and some further on; todas: all there
# are, and a kill at all other calls too.
set -euo pipefail
programa=$1 orden=$2 primera=$3 segunda=$4 cuantas=$5
# Whoever is traced cannot be looked through for leaks.
export ASAN_OPTIONS=detect_leaks=0
# In memory where there is some: what a disk takes to settle is not what is tried.
carpeta=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
alcance=$(mktemp -d)
trap 'rm -rf "$carpeta" "$alcance"' EXIT
mkdir "$carpeta/antes"
chmod 755 "$carpeta" "$alcance"
# Another user may have no way to where it was built.
cp "$programa" "$alcance/"
legible=$alcance/${programa##*/}
archivo=$carpeta/ahora/h.sqlite copia=$carpeta/ahora/copia.sqlite

quejarse() {
    echo "$*"
    exit 1
}
estado() { "$programa" --en "$1" estado --json | grep -v incorporada; }
entero() { "$programa" --en "$1" comprobar >"$carpeta/comprobado" 2>&1 || quejarse "$2: $(cat "$carpeta/comprobado")"; }
poner() {
    rm -rf "$carpeta/ahora"
    cp -r "$carpeta/antes" "$carpeta/ahora"
}

# Who may not write: another user, or this one where the files allow nothing else.
lector() {
    if [ "$(id -u)" -eq 0 ]; then
        setpriv --reuid nobody --regid "$(id -g nobody)" --clear-groups "$@"
    else
        chmod a-w "$carpeta/ahora" "$carpeta/ahora"/*
        "$@" || { chmod u+w "$carpeta/ahora" "$carpeta/ahora"/*; return 1; }
        chmod u+w "$carpeta/ahora" "$carpeta/ahora"/*
    fi
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
    local cual codigo
    for cual in 1 2 3 4 5 6 7 8; do
        rm -rf "$carpeta/ahora"
        mkdir "$carpeta/ahora"
        strace -f -o "$carpeta/strace" -e trace=fdatasync -e "inject=fdatasync:signal=KILL:when=$cual" \
            "$programa" --en "$archivo" incorporar "$primera" >"$carpeta/dicho" 2>&1 || true
        [ "$(stat -c %s "$archivo-wal" 2>/dev/null)" != 32 ] || break
    done
    [ "$(stat -c %s "$archivo-wal")" = 32 ] || quejarse "ningún corte deja el registro recién empezado"
    codigo=0
    lector timeout 9 "$legible" --en "$archivo" estado >"$carpeta/leido" 2>"$carpeta/dicho" || codigo=$?
    [ $codigo -eq 1 ] || quejarse "primer corte: $codigo $(cat "$carpeta/dicho")"
    grep -q "el próximo incorporar" "$carpeta/dicho" || quejarse "primer corte: $(cat "$carpeta/dicho")"
    "$programa" --en "$archivo" incorporar "$primera" >/dev/null
}

# Of the two files beside it only one had been made.
soloUno() {
    local cual
    for cual in -wal -shm; do
        poner
        : >"$archivo$cual"
        leerSinPermiso "solo $cual"
    done
}

# What each command is tried on, how it is called, and what must hold after it was broken off.
preparar_incorporar() {
    "$programa" --en "$carpeta/antes/h.sqlite" incorporar "$primera" >/dev/null
    rm -f "$carpeta"/antes/*-wal "$carpeta"/antes/*-shm
    poner
    antes=$(estado "$archivo")
    orden_incorporar >/dev/null
    despues=$(estado "$archivo")
    [ "$antes" != "$despues" ]
}
orden_incorporar() { "$@" "$programa" --en "$archivo" incorporar "$segunda"; }
tras_incorporar() {
    local ahora
    leerSinPermiso "$1"
    ahora=$(estado "$archivo")
    [ "$ahora" = "$antes" ] || [ "$ahora" = "$despues" ] || quejarse "$1: a medias"
    entero "$archivo" "$1"
}
hecho_incorporar() { [ "$(estado "$archivo")" = "$despues" ]; }

preparar_migrar() {
    preparar_incorporar
    sqlite3 "$carpeta/antes/h.sqlite" \
        "DROP TABLE descargas; DROP INDEX IF EXISTS imagenes_por_reloj; PRAGMA user_version=1"
    rm -f "$carpeta"/antes/*-wal "$carpeta"/antes/*-shm
}
orden_migrar() { orden_incorporar "$@"; }
tras_migrar() { :; }
hecho_migrar() { hecho_incorporar; }

preparar_comprobar() {
    preparar_incorporar
    cp "$archivo" "$carpeta/antes/h.sqlite"
}
orden_comprobar() { "$@" "$programa" --en "$archivo" comprobar; }
tras_comprobar() {
    [ "$(estado "$archivo")" = "$despues" ] || quejarse "$1: cambió"
    ! grep -q '^estación' "$carpeta/dicho" || quejarse "$1: culpa al archivo: $(cat "$carpeta/dicho")"
}
hecho_comprobar() { [ "$(estado "$archivo")" = "$despues" ] && grep -q "El archivo está entero" "$carpeta/dicho"; }

preparar_rehacer() {
    preparar_comprobar
    sqlite3 "$carpeta/antes/h.sqlite" "ALTER TABLE testigos RENAME TO otra; DELETE FROM estaciones;
        DELETE FROM muestras WHERE humedad>210; UPDATE contenidos SET huella=zeroblob(32) WHERE base IS NOT NULL;
        UPDATE imagenes SET reloj='x'; DROP INDEX imagenes_por_reloj"
    rm -f "$carpeta"/antes/*-wal "$carpeta"/antes/*-shm
}
orden_rehacer() { "$@" "$programa" --en "$archivo" rehacer; }
tras_rehacer() { :; }
hecho_rehacer() { [ "$(estado "$archivo")" = "$despues" ]; }

preparar_copiar() { preparar_comprobar; }
orden_copiar() { "$@" "$programa" --en "$archivo" copiar --a "$copia"; }
tras_copiar() {
    [ "$(estado "$archivo")" = "$despues" ] || quejarse "$1: cambió lo que se copia"
    if "$programa" --en "$copia" estado --json >"$carpeta/leido" 2>"$carpeta/dicho"; then
        entero "$copia" "$1"
    else
        grep -q "incorporar" "$carpeta/dicho" || quejarse "$1: $(cat "$carpeta/dicho")"
    fi
}
hecho_copiar() { [ "$(estado "$copia")" = "$despues" ]; }

probados=0
# probar CALL INJECTION N: true while the program came to the Nth such call.
probar() {
    local llamada=$1 que=$2 cual=$3 registro=$carpeta/strace codigo=0 caso="$1 $3 $2"
    poner
    "orden_$orden" strace -f -o "$registro" -e "trace=$llamada" -e "inject=$llamada:$que:when=$cual" \
        >"$carpeta/dicho" 2>&1 || codigo=$?
    [ "$(grep -c "$llamada(" "$registro")" -ge "$cual" ] || return 1
    probados=$((probados + 1))
    # Without its libraries it does not start.
    if grep -q "error while loading" "$carpeta/dicho"; then return 0; fi
    case $que:$codigo in
        signal=KILL:137) ;;
        error=*:0) "hecho_$orden" || quejarse "$caso: dice que lo hizo: $(cat "$carpeta/dicho")" ;;
        error=*:1) grep -q ': ' "$carpeta/dicho" || quejarse "$caso: sin mensaje" ;;
        *) quejarse "$caso: acaba con $codigo: $(cat "$carpeta/dicho")" ;;
    esac
    "tras_$orden" "$caso"
    "orden_$orden" >"$carpeta/dicho" 2>&1 || quejarse "$caso: no se repone: $(cat "$carpeta/dicho")"
    "hecho_$orden" || quejarse "$caso: no acaba igual"
    entero "$archivo" "$caso"
}

# Those further on are each as far again as the one before the last.
probarLlamada() {
    local llamada=$1 que=$2 n=1 anterior=1 siguiente
    while probar "$llamada" "$que" "$n"; do
        if [ "$cuantas" = todas ] || [ "$n" -lt "$cuantas" ]; then
            n=$((n + 1))
        else
            siguiente=$((n + anterior + 1)) anterior=$n n=$siguiente
        fi
    done
}

[ "$orden" != incorporar ] || primerCorte
"preparar_$orden"
[ "$orden" != incorporar ] || soloUno
# They change what is on a disk.
cambian=(pwrite64 fdatasync fsync ftruncate fallocate unlink openat rename)
for llamada in "${cambian[@]}"; do
    for que in signal=KILL error=ENOSPC error=EDQUOT error=EIO; do probarLlamada "$llamada" "$que"; done
done
if [ "$cuantas" = todas ]; then
    poner
    "orden_$orden" strace -f -o "$carpeta/strace" >/dev/null 2>&1
    sed -nE 's/^[0-9]+ +([a-z0-9_]+)\(.*/\1/p' "$carpeta/strace" | sort -u | grep -vxE 'execve|exit_group' \
        >"$carpeta/todas"
    while read -r llamada; do
        [[ " ${cambian[*]} " == *" $llamada "* ]] || probarLlamada "$llamada" signal=KILL
    done <"$carpeta/todas"
    for que in ENOSPC EDQUOT EIO; do probarLlamada write "error=$que"; done
    probarLlamada pread64 error=EIO
fi
echo "$probados casos"
[ $probados -ge 20 ]
