# shellcheck shell=bash
# What the tests of the installed units begin with, sourced by each of them with its own arguments, BUILD_DIR CMAKE:
# the two console programs' packages in a folder of their own, first in PATH, which goes when the test ends.
set -euo pipefail
export LC_ALL=C.UTF-8 TZ=UTC
raiz=$(mktemp -d)
procesos=()
# shellcheck disable=SC2317
terminar() {
    [ ${#procesos[@]} -eq 0 ] || kill "${procesos[@]}" 2>/dev/null || true
    rm -rf "$raiz"
}
trap terminar EXIT
fallos=0
fallar() {
    echo "FALLO: $*" >&2
    fallos=$((fallos + 1))
}

for componente in telvane-cli telvane-historico; do
    DESTDIR=$raiz "$2" --install "$1" --component $componente >>"$raiz/instalado.txt"
done
# uno NAME: the installed file of that name.
uno() { find "$raiz" -name "$1" -not -path "$raiz/datos/*"; }
programas=$(dirname "$(uno telvane-cli | grep '/bin/')")
export PATH=$programas:$PATH

# aqui: paths of an installed file, below the folder it was installed in.
aqui() { sed -E "s#(^|[ =])/#\1$raiz/#g"; }
# entera UNIT...: units, by their paths, whose programs are there and whose settings systemd understands.
entera() {
    systemd-analyze verify --man=no "$@" >"$raiz/analisis.txt" 2>&1 || true
    ! grep telvane "$raiz/analisis.txt" || fallar "systemd-analyze: $*"
}
# a_su_hora TIMER
a_su_hora() { systemd-analyze calendar "$(sed -n 's/^OnCalendar=//p' "$1")" >/dev/null || fallar "OnCalendar: $1"; }
# encerrado SERVICE...: each may do little besides its work.
encerrado() {
    local servicio
    for servicio in "$@"; do
        systemd-analyze security --offline=true --threshold=20 "$servicio" >"$raiz/analisis.txt" 2>&1 ||
            fallar "$servicio: $(tail -n 1 "$raiz/analisis.txt")"
    done
}

# hasta SECONDS COMMAND...: until it succeeds.
hasta() {
    local quedan=$(($1 * 10))
    shift
    until "$@"; do
        quedan=$((quedan - 1))
        [ $quedan -gt 0 ] || return 1
        sleep 0.1
    done
}
# simular NAME: a logger at $raiz/NAME that answers by now.
simular() {
    telvane-sim --enlace "$raiz/$1" --baudios 0 >"$raiz/$1.txt" &
    procesos+=($!)
    hasta 60 test -s "$raiz/$1.txt" || fallar "telvane-sim no arranca"
}
