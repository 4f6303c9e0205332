#!/usr/bin/env bash
# One station, one file: the units as they are installed, and what they run, against simulated loggers.
#   estaciones_test.sh BUILD_DIR CMAKE
# shellcheck source=tests/paquete/instalado.sh
. "$(dirname "$0")/instalado.sh"
guion=$(uno descarga-estacion)

# The units: what they start is there, and they may do little else.
for unidad in telvane-descarga telvane-descarga-red; do
    aqui <"$(uno "$unidad@.service")" >"$raiz/$unidad@.service"
    cp "$(uno "$unidad@.timer")" "$raiz/"
    entera "$raiz/$unidad@norte".{service,timer}
    a_su_hora "$raiz/$unidad@.timer"
done
for servicio in telvane-descarga.service telvane-descarga@.service telvane-descarga-red@.service; do
    encerrado "$(uno "$servicio" | grep /systemd/)"
done
for servicio in telvane-descarga.service telvane-descarga@.service; do
    grep -qx PrivateNetwork=yes "$(uno "$servicio" | grep /systemd/)" || fallar "$servicio ve la red"
done

estaciones=$raiz/estaciones datos=$raiz/datos
mkdir "$estaciones" "$datos" "$raiz/general"
# Further away than a night: one attempt.
de_dia=$(date -d '+13 hours' +%H:%M)
de_noche=$(date -d '+3 hours' +%H:%M)
# ajustar NAME LINE...
ajustar() {
    local nombre=$1
    shift
    printf '%s\n' "$@" >"$estaciones/$nombre.conf"
}
# descargar NAME [VARIABLE=VALUE...]: exit status in $estado, standard error in $raiz/errores.
descargar() {
    local nombre=$1
    shift
    estado=0
    env -i PATH="$PATH" TZ=UTC TELVANE_ESTACIONES="$estaciones" TELVANE_ESTADO="$raiz/general" TELVANE_PAUSA=1 "$@" \
        sh "$guion" "$nombre" </dev/null >"$raiz/salida" 2>"$raiz/errores" || estado=$?
}
# espera STATUS WHAT [TEXT]: the last run ended so, and said so.
espera() {
    [ $estado -eq "$1" ] || fallar "$2: $estado, $(cat "$raiz/errores")"
    [ $# -lt 3 ] || grep -qF -e "$3" "$raiz/errores" || fallar "$2: $(cat "$raiz/errores")"
}
# cuantas ARCHIVE: images in it.
cuantas() { telvane-historico --en "$1" imagenes --json | wc -l; }

simular COM1
comunes=("COM=1=$raiz/COM1" "HASTA=$de_dia")
ajustar norte "${comunes[@]}" SERIE=02080050 "CARPETA=$datos/norte" "ARCHIVO=$datos/h.sqlite" "CENTRAL=$datos/central.sqlite"
descargar norte
espera 0 norte
base=$(find "$datos/norte" -name "norte_$(date +%Y)-*.rgt")
[ "$(stat -c %s "$base")" = 262144 ] || fallar "norte: base \"$base\""
[ "$(grep -c '^[0-9][0-9]/' "${base%.rgt}.csv")" -gt 1000 ] || fallar "norte: tabla"
grep -q "\"imagen\": \"$(sha256sum "$base" | cut -d' ' -f1)\"" "$base.json" || fallar "norte: ficha"
telvane-historico --en "$datos/central.sqlite" imagenes --json | grep -q '"descarga":{"descargada":"20' ||
    fallar "la ficha no llegó al archivo central"

# Another logger than the named one.
ajustar otro "${comunes[@]}" SERIE=02080051 "CARPETA=$datos/otro" "ARCHIVO=$datos/h.sqlite" "CENTRAL=$datos/central.sqlite"
descargar otro
espera 1 "otro registrador" 'en COM1 responde el registrador 02080050, no el 02080051'
! grep -q -e 'archivo central' -e 'ninguna estación' "$raiz/errores" ||
    fallar "de quien nunca dio una imagen se habla de copiarla: $(cat "$raiz/errores")"
[ -z "$(find "$datos/otro" -name '*.rgt*')" ] || fallar "de otro registrador quedan archivos"
[ "$(cuantas "$datos/h.sqlite")" = 1 ] || fallar "otro registrador entró en el archivo"

# What is wrong in a file is told with its line, and nothing is tried again.
ajustar mala "${comunes[@]}" SERIE=1 "HASTA=$de_noche"
descargar mala
espera 2 "ajuste malo" 'mala.conf, línea 3: SERIE: "1" no vale'
descargar nadie
espera 2 "estación sin archivo" 'no se pueden leer los ajustes'
ajustar mala "${comunes[@]}" "CARPETA=$datos/mala" OPCIONES=--no-hay-tal
descargar mala
espera 2 "opción mala" '--no-hay-tal'

# The unit without a network does not try what needs one.
ajustar lejos COM=1=tcp://servidor.invalid:4001
descargar lejos TELVANE_RED=no
espera 2 "sin red" 'enable --now telvane-descarga-red@lejos.timer'

# Never two at one port, nor two of one station.
exec 8>"$raiz/general/.puertos/$(readlink -f "$raiz/COM1" | tr -c '[:alnum:].:\n-' _)"
flock 8
descargar norte TELVANE_PLAZO=0
espera 75 "puerto de otra" "el puerto $raiz/COM1 es de otra descarga"
# By day as well the others wait for it.
descargar norte 8>&- &
segunda=$!
# shellcheck disable=SC2317
en_cola() { ! kill -0 "$segunda" 2>/dev/null || grep -qsaF "$raiz/general/.puertos/" /proc/[0-9]*/cmdline; }
hasta 60 en_cola || fallar "la segunda no espera al puerto"
exec 8>&-
wait "$segunda" || true
! grep -q 'es de otra descarga' "$raiz/errores" || fallar "de día no se espera al puerto: $(cat "$raiz/errores")"
[ "$(find "$datos/norte" -name '*.rgt' | wc -l)" = 2 ] || fallar "la segunda no descargó: $(cat "$raiz/errores")"
exec 8>"$datos/norte/.norte.cerrojo"
flock 8
descargar norte
espera 75 "estación en marcha" 'la descarga anterior de norte no ha terminado'
# Two stations may share a folder, and neither takes the other's for its own.
ajustar vecina "${comunes[@]}" "CARPETA=$datos/norte" "ARCHIVO=$datos/h.sqlite"
descargar vecina 8>&-
exec 8>&-
espera 0 "dos estaciones en una carpeta"
# A list that cannot be written is told of before a memory is read for nothing.
ln -sf /dev/full "$datos/norte/.vecina.por_incorporar"
descargar vecina
espera 1 "disco lleno" "no se pudo escribir en $datos/norte: libere espacio"

# What an archive did not take it gets the next time, and no failure of one costs the base file.
ajustar sur "${comunes[@]}" "CARPETA=$datos/sur" "ARCHIVO=$datos/no/h.sqlite" "CENTRAL=$datos/no/central.sqlite"
for _ in 1 2; do
    descargar sur
    espera 1 "archivo que falta" 'se repite la próxima vez'
done
[ "$(find "$datos/sur" -name '*.rgt' | wc -l)" = 2 ] || fallar "un archivo que falta costó una imagen"
pendientes=$datos/sur/.sur.por_incorporar
sort -c "$pendientes" || fallar "las pendientes no están en orden"
[ "$(wc -l <"$pendientes")" = 2 ] || fallar "pendientes: $(cat "$pendientes")"
# As the list was called before.
mv "$pendientes" "$datos/sur/.por_incorporar"
mkdir "$datos/no"
ajustar sur "${comunes[@]}" "CARPETA=$datos/sur" "ARCHIVO=$datos/no/h.sqlite" "CENTRAL=$datos/tampoco/central.sqlite"
descargar sur
espera 1 "central que falta" 'lo que falta en el archivo central se copia la próxima vez'
[ "$(grep -c 'estación 02080050' "$raiz/salida")" = 3 ] || fallar "pendientes sin incorporar: $(cat "$raiz/salida")"
! [ -s "$pendientes" ] || fallar "quedan pendientes"
mkdir "$datos/tampoco"
descargar sur
espera 0 "central que vuelve"
[ "$(cuantas "$datos/tampoco/central.sqlite")" = "$(cuantas "$datos/no/h.sqlite")" ] || fallar "el central no se puso al día"

# Two loggers of one number, each under its name.
ajustar mellizo "${comunes[@]}" SERIE=02080050 COMO=-mellizo "CARPETA=$datos/mellizo" "ARCHIVO=$datos/m.sqlite" "CENTRAL=$datos/mc.sqlite"
descargar mellizo
espera 0 mellizo
telvane-historico --en "$datos/mc.sqlite" estado --json | grep -q '"serie": "02080050/-mellizo"' || fallar "COMO no llegó al archivo central"

# Without the archive's program the images wait; whoever asked for one hears of it.
mkdir "$raiz/solo"
ln -s "$programas/telvane-cli" "$raiz/solo/"
ajustar solo "${comunes[@]}" "CARPETA=$datos/solo"
descargar solo PATH="$raiz/solo:/usr/bin:/bin"
espera 0 "sin telvane-historico"
ajustar solo "${comunes[@]}" "CARPETA=$datos/solo" "ARCHIVO=$datos/h.sqlite"
descargar solo PATH="$raiz/solo:/usr/bin:/bin"
espera 1 "sin telvane-historico" 'hace falta el paquete telvane-historico'

# A logger that is away is tried again after growing pauses until it answers.
ajustar tarde "COM=1=$raiz/COM2" "HASTA=$de_noche" "CARPETA=$datos/tarde" ARCHIVO=
descargar tarde &
tarde=$!
timeout 60 sh -c "until grep -q 'dentro de 2 s' '$raiz/errores'; do sleep 0.1; done" || fallar "no se intenta otra vez"
simular COM2
wait $tarde || true
[ "$(find "$datos/tarde" -name 'tarde_*.rgt' | wc -l)" = 1 ] || fallar "tarde: $(cat "$raiz/errores")"
grep -q 'dentro de 1 s' "$raiz/errores" || fallar "las pausas no crecen: $(cat "$raiz/errores")"

# A clock that was set back comes by the same second again: what is there stays, and a name is found.
mkdir "$raiz/reloj" "$datos/atras"
cat >"$raiz/reloj/date" <<'FIN'
#!/bin/sh
case $1 in
    +%Y*)
        [ -e "$0.visto" ] || {
            : >"$0.visto"
            echo 2026-01-02_030405
            exit
        } ;;
esac
exec /bin/date "$@"
FIN
chmod +x "$raiz/reloj/date"
: >"$datos/atras/atras_2026-01-02_030405.rgt"
ajustar atras "${comunes[@]}" "CARPETA=$datos/atras" ARCHIVO=
descargar atras PATH="$raiz/reloj:$PATH"
espera 0 "reloj atrasado"
! [ -s "$datos/atras/atras_2026-01-02_030405.rgt" ] || fallar "se escribió sobre una descarga"
[ "$(find "$datos/atras" -name '*.rgt' -size +0 | wc -l)" = 1 ] || fallar "reloj atrasado: nada descargado"

# Settings that are kept from all include the download, which is not root.
chmod 0600 "$estaciones/atras.conf"
if [ "$(id -u)" -eq 0 ]; then
    chmod 0755 "$raiz"
    estado=0
    setpriv --reuid nobody --regid nogroup --clear-groups "$programas/telvane-cli" estaciones --valores "$estaciones/atras.conf" 2>"$raiz/errores" >/dev/null || estado=$?
    espera 2 "ajustes de nadie" "no hay permiso: repita con sudo; para que la descarga los lea, sudo chown root:telvane $estaciones/atras.conf"
fi
chmod 0644 "$estaciones/atras.conf"

# Whoever begins one by hand hears at once how it went, by night as well.
ajustar tarde "COM=1=$raiz/COM3" "HASTA=$de_noche" "CARPETA=$datos/tarde" ARCHIVO=
estado=0
# shellcheck disable=SC2016
env -i PATH="$PATH" TZ=UTC TELVANE_ESTACIONES="$estaciones" TELVANE_ESTADO="$raiz/general" \
    timeout 60 sh -c 'SYSTEMD_EXEC_PID=$$ exec sh "$0" tarde' "$guion" </dev/null >"$raiz/salida" 2>"$raiz/errores" || estado=$?
espera 3 "a mano, de noche"

# All of them at a glance, the broken one with its line.
ajustar mala "COM=$raiz/COM1"
estado=0
telvane-cli estaciones --en "$estaciones" >"$raiz/salida" 2>"$raiz/errores" || estado=$?
espera 1 "estaciones" 'mala.conf, línea 1: COM: '
[ "$(wc -l <"$raiz/salida")" = $(($(find "$estaciones" -name '*.conf' | wc -l) - 1)) ] || fallar "estaciones: $(cat "$raiz/salida")"
exit $((fallos > 0))
