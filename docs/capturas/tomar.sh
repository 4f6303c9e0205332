#!/usr/bin/env bash
# Takes the pictures of the manual anew: docs/capturas/tomar.sh [BIN_DIR]
# A display, a session bus and a home of its own; simulated loggers; the window driven by accessible names (tomar.py).
set -euo pipefail
raiz=$(cd "$(dirname "$(readlink -f "$0")")/../.." && pwd)
cd "$raiz"
# shellcheck source=cmake/dependencias.sh
. cmake/dependencias.sh
bin=$(readlink -f "${1-build/release/bin}")
instalar capturas
for programa in telvane telvane-sim; do
    [ -x "$bin/$programa" ] || { echo "Falta $bin/$programa." >&2; exit 1; }
done

privada=/tmp/telvane
mkdir -m 700 "$privada" 2>/dev/null || privada=$(mktemp -d)
procesos=()
terminar() {
    [ ${#procesos[@]} -eq 0 ] || kill "${procesos[@]}" 2>/dev/null || true
    rm -rf "$privada"
}
trap terminar EXIT
trap 'exit 130' INT TERM

# The server chooses a free display and says which.
coproc servidor { exec Xvfb -displayfd 1 -nolisten tcp -screen 0 1280x1024x24 2>/dev/null; }
procesos+=("$servidor_PID")
read -r -t 30 numero <&"${servidor[0]}"
# Its name is seen in the pictures.
casa=$privada/ana
mkdir -m 700 "$privada/ejecucion"
mkdir -p "$casa/Documentos" "$casa/.config"
# shellcheck disable=SC2016
echo 'XDG_DOCUMENTS_DIR="$HOME/Documentos"' >"$casa/.config/user-dirs.dirs"
export DISPLAY=:$numero HOME=$casa XDG_RUNTIME_DIR=$privada/ejecucion XDG_CONFIG_HOME=$casa/.config
export XDG_DATA_HOME=$casa/.local/share XDG_CURRENT_DESKTOP='' LC_ALL=C.UTF-8
export QT_QPA_PLATFORM=xcb QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 QT_SCALE_FACTOR=1
openbox 2>/dev/null &
procesos+=("$!")
dbus-run-session -- /usr/bin/python3 docs/capturas/tomar.py "$bin" "$privada" docs/capturas
optipng -quiet -o3 docs/capturas/*.png
ls -l docs/capturas/*.png
