#!/usr/bin/env bash
# Takes the pictures of the manual anew: docs/capturas/tomar.sh [BIN_DIR]
# A display, a session bus and a home of its own; simulated loggers; the window driven by accessible names (tomar.py).
set -euo pipefail
raiz=$(cd "$(dirname "$(readlink -f "$0")")/../.." && pwd)
cd "$raiz"
# shellcheck source=cmake/dependencias.sh
. cmake/dependencias.sh
# shellcheck source=docs/capturas/escenario.sh
. docs/capturas/escenario.sh
elegir_programas "${1-build/release/bin}"
instalar capturas
montar_escritorio 1280x1024
export QT_SCALE_FACTOR=1
dbus-run-session -- /usr/bin/python3 -B docs/capturas/tomar.py "$bin" "$privada" docs/capturas
optipng -quiet -o3 docs/capturas/*.png
ls -l docs/capturas/*.png
