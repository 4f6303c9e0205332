#!/usr/bin/env bash
# Takes the manual's pictures of the report anew: docs/capturas/informe.sh [BIN_DIR]
# A simulated logger's year, a month of it, in both colours.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
# shellcheck source=cmake/dependencias.sh
. cmake/dependencias.sh
bin=${1-build/release/bin}
instalar navegador
privada=$(mktemp -d)
trap 'rm -rf "$privada"' EXIT
coproc simulador { exec "$bin/telvane-sim" --enlace "$privada/COM1" --baudios 0; }
read -r -t 30 _ <&"${simulador[0]}"
"$bin/telvane-cli" --com "1=$privada/COM1" descargar --base "$privada/a.rgt"
kill "$simulador_PID"
"$bin/telvane-historico" informe "$privada/informe.html" --imagen "$privada/a.rgt" --mes 2019-03

# tomar NAME WIDTH HEIGHT FLAG...
tomar() {
    local nombre=$1 tamano=$2,$3
    shift 3
    chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
        --disable-component-update --disable-sync --hide-scrollbars --user-data-dir="$privada/perfil-$nombre" \
        --window-size="$tamano" "$@" --screenshot="$PWD/docs/capturas/$nombre.png" "file://$privada/informe.html" >/dev/null 2>&1
}
tomar informe 1000 1500
tomar informe-oscuro 1000 1500 --blink-settings=preferredColorScheme=0
if command -v optipng >/dev/null; then optipng -quiet -o3 docs/capturas/informe*.png; fi
