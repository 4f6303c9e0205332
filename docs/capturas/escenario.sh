# shellcheck shell=bash
# A display, a session bus and a home of their own for the window and its pictures. Sourced by tomar.sh and mirar.sh
# from the project's root; what it starts ends with the script.

# Programs of the release build unless told otherwise: sets bin.
elegir_programas() {
    local programa
    bin=$(readlink -f "$1")
    for programa in telvane telvane-sim; do
        [ -x "$bin/$programa" ] || { echo "Falta $bin/$programa." >&2; exit 1; }
    done
}

procesos=()
terminar() {
    [ ${#procesos[@]} -eq 0 ] || kill "${procesos[@]}" 2>/dev/null || true
    rm -rf "$privada"
}
trap terminar EXIT
trap 'exit 130' INT TERM

# montar_escritorio SIZE: a display of that size (1280x1024) with a window manager, and a user's folders; sets privada.
montar_escritorio() {
    privada=/tmp/telvane
    mkdir -m 700 "$privada" 2>/dev/null || privada=$(mktemp -d)
    # The server chooses a free display and says which.
    coproc servidor { exec Xvfb -displayfd 1 -nolisten tcp -screen 0 "$1x24" 2>/dev/null; }
    procesos+=("$servidor_PID")
    local numero
    read -r -t 30 numero <&"${servidor[0]}"
    # Its name is seen in the pictures.
    casa=$privada/ana
    mkdir -m 700 "$privada/ejecucion"
    mkdir -p "$casa/Documentos" "$casa/.config"
    # shellcheck disable=SC2016
    echo 'XDG_DOCUMENTS_DIR="$HOME/Documentos"' >"$casa/.config/user-dirs.dirs"
    export DISPLAY=:$numero HOME=$casa XDG_RUNTIME_DIR=$privada/ejecucion XDG_CONFIG_HOME=$casa/.config
    export XDG_DATA_HOME=$casa/.local/share XDG_CURRENT_DESKTOP='' LC_ALL=C.UTF-8
    export QT_QPA_PLATFORM=xcb QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
    openbox 2>/dev/null &
    procesos+=("$!")
}
