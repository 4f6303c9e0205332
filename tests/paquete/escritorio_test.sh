#!/usr/bin/env bash
# What the desktop is told about the window, judged by the desktop's own tools.
#   escritorio_test.sh SOURCE_DIR
set -euo pipefail
cd "$1/packaging"
desktop-file-validate escritorio/telvane.desktop
appstreamcli validate --no-net --no-color escritorio/example.veltra.telvane.metainfo.xml

carpeta=$(mktemp -d)
trap 'rm -rf "$carpeta"' EXIT
mkdir -p "$carpeta/packages"
cp escritorio/telvane.xml "$carpeta/packages/"
update-mime-database "$carpeta"
grep -q '^50:application/x-telvane-rgt:\*\.rgt$' "$carpeta/globs2"

# A station of today is one choice in the menu away.
grep -A9 -x '\[Desktop Action desde2020\]' escritorio/telvane.desktop | grep -qx 'Exec=telvane --perfil ampliado'
grep -qx 'Name\[es\]=Estaciones que registran desde 2020' escritorio/telvane.desktop

# The names by which the pieces find each other.
grep -qx 'Icon=telvane' escritorio/telvane.desktop
grep -q '<launchable type="desktop-id">telvane.desktop<' escritorio/example.veltra.telvane.metainfo.xml
version=$(sed -n 's/^project(telvane VERSION \([0-9.]*\).*/\1/p' ../CMakeLists.txt)
grep -q "<release version=\"$version\"" escritorio/example.veltra.telvane.metainfo.xml
head -n 1 debian/changelog | grep -qF "telvane ($version) "
# A PNG tells its width and height in bytes 16 to 23.
for icono in iconos/telvane-*.png telvane-64.png; do
    lado=${icono##*-}
    lado=$(printf '%08x' "${lado%.png}")
    [ "$(od -An -tx1 -j16 -N8 "$icono" | tr -d ' \n')" = "$lado$lado" ] || { echo "FALLO: $icono" >&2; exit 1; }
done
