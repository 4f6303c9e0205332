#!/usr/bin/env bash
# The nightly download as it is installed: the very command lines of the unit and of the cron line, run against a
# simulated logger.
#   nocturna_test.sh BUILD_DIR CMAKE
# shellcheck source=tests/paquete/instalado.sh
. "$(dirname "$0")/instalado.sh"
unidad=$(uno telvane-descarga.service)
temporizador=$(uno telvane-descarga.timer)
cron=$(uno telvane-descarga.cron)
ajustes=$(find "$raiz" -path '*/default/telvane-descarga')
orden_unidad=$(sed -n 's/^ExecStart=//p' "$unidad" | aqui)
linea_cron=$(grep -E '^[0-9*]' "$cron")
read -r _ _ _ _ _ usuario orden_cron <<<"$linea_cron"
orden_cron=$(aqui <<<"$orden_cron")
[ "$usuario" = telvane ] || fallar "la línea de cron corre como $usuario"
[ "$orden_cron" = "$orden_unidad" ] || fallar "la unidad y cron corren órdenes distintas"

aqui <"$unidad" >"$raiz/telvane-descarga.service"
cp "$temporizador" "$raiz/"
entera "$raiz"/telvane-descarga.{service,timer}
a_su_hora "$temporizador"

# Every setting is commented out: the installed file changes nothing.
! grep -vE '^(#|$)' "$ajustes" || fallar "los ajustes instalados no son solo comentarios"

datos=$raiz/datos
mkdir "$datos"
ajustar() { printf '%s\n' "$@" >"$ajustes"; }
simular COM1

# correr FILE COMMAND...: exit status in $estado, standard error in FILE.
correr() {
    local errores=$1
    shift
    estado=0
    env -i PATH="$PATH" TZ=UTC "$@" </dev/null >"$raiz/salida.txt" 2>"$errores" || estado=$?
}
# falla STATUS TEXT WHAT: the last run ended so, and said so.
falla() {
    [ $estado -eq "$1" ] || fallar "$3: $estado"
    grep -qF -e "$2" "$raiz/errores" || fallar "$3: $(cat "$raiz/errores")"
}
# bajados NAME: one whole base file and its table, named with the date, and nothing unfinished.
bajados() {
    local base
    base=$(find "$datos" -name "$1_$(date +%Y)-[0-9][0-9]-[0-9][0-9]_[0-9][0-9][0-9][0-9][0-9][0-9].rgt")
    [ "$(stat -c %s "$base")" = 262144 ] || fallar "$1: base \"$base\""
    [ "$(grep -c '^[0-9][0-9]/' "${base%.rgt}.csv")" -gt 1000 ] || fallar "$1: tabla"
    grep -q "\"imagen\": \"$(sha256sum "$base" | cut -d' ' -f1)\"" "$base.json" || fallar "$1: ficha"
    [ -z "$(find "$datos" -name '*.parcial')" ] || fallar "$1: quedó una descarga sin completar"
}

ajustar "COM=1=$raiz/COM1" "CARPETA=$datos" NOMBRE=norte
# shellcheck disable=SC2086
correr "$raiz/errores" $orden_unidad
[ $estado -eq 0 ] || fallar "unidad: $estado $(cat "$raiz/errores")"
bajados norte

ajustar "COM=1=$raiz/COM1" "CARPETA=$datos" NOMBRE=sur
correr "$raiz/errores" sh -c "$orden_cron"
[ $estado -eq 0 ] || fallar "cron: $estado $(cat "$raiz/errores")"
bajados sur

ajustar "CARPETA=$datos" 'OPCIONES="--reintentos muchos"'
correr "$raiz/errores" sh -c "$orden_cron"
falla 2 'reintentos' "OPCIONES no llegan"

# Settings are read and not run; what cannot be is told with its line.
rehusa() {
    correr "$raiz/errores" sh -c "$orden_cron"
    falla 2 "telvane-descarga, línea $1: $2" "ajuste $2"
}
ajustar '# una nota' NOMBRE=norte 'NOMBRE=finca norte'
rehusa 3 'hay un blanco sin comillas: escriba NOMBRE="..."'
ajustar "COM=1=$raiz/COM1"$'\r' "CARPETA=$datos"$'\r'
rehusa 1 'termina en CR LF'
ajustar '' "CARPETA=${datos#/}"
rehusa 2 "CARPETA: \"${datos#/}\" no empieza por /"
ajustar COM=1=dev/ttyUSB0
rehusa 1 'COM: "1=dev/ttyUSB0" no es NÚMERO=/DISPOSITIVO'
ajustar "COM=$raiz/COM1"
rehusa 1 'COM: '
ajustar "CARPTEA=$datos"
rehusa 1 'no hay un ajuste "CARPTEA"'
ajustar 'NOMBRE="norte'
rehusa 1 'falta la comilla que cierra'
ajustar norte
rehusa 1 'se espera NOMBRE=valor'
for nombre in '' ../norte norte/; do
    ajustar "NOMBRE=$nombre"
    rehusa 1 "NOMBRE: \"$nombre\" no vale"
done
ajustar PERFIL=
rehusa 1 'PERFIL: "" no vale: debe ser estricto o ampliado'
ajustar NOMBRE=norte 'OPCIONES="--verificar --csv -"'
rehusa 2 'OPCIONES: --csv no vale aquí'
ajustar 'OPCIONES=--com=1=/dev/null'
rehusa 1 'OPCIONES: --com=1=/dev/null no vale aquí: escriba COM='
ajustar $'\xEF\xBB\xBFNOMBRE=norte'
rehusa 1 'empieza con una marca invisible (BOM)'
# A second port that is mistyped is no part of the first one's path.
for segundo in ' 2/dev/ttyS0' ' 2 =/dev/ttyS0' ' COM2=/dev/ttyS0' ' /dev/ttyS0' ' dos=tcp://h:1' ' 2:/dev/ttyS0' ',2=/dev/ttyS0'; do
    ajustar '' "COM=\"1=/dev/ttyUSB97$segundo\""
    rehusa 2 "COM: en \"1=/dev/ttyUSB97$segundo\" parece haber dos puertos"
done
# A byte that a shell would pass over without a word.
printf '# nota\nNOMBRE=nor\0te\nCARPETA=%s\n' "$datos" >"$ajustes"
rehusa 2 'tiene un byte nulo: guarde el archivo como UTF-8'
# A pipe is no settings file, and is not waited for.
rm "$ajustes"
mkfifo "$ajustes"
correr "$raiz/errores" timeout 20 sh -c "$orden_cron"
falla 2 'no se pueden leer los ajustes' tubería
rm "$ajustes"
# A profile among the options counts instead of PERFIL: the simulated years are good in both.
ajustar "COM=1=$raiz/COM1" "CARPETA=$datos" NOMBRE=perfil 'OPCIONES="--perfil estricto"'
correr "$raiz/errores" sh -c "$orden_cron"
[ $estado -eq 0 ] || fallar "perfil en las opciones: $estado $(cat "$raiz/errores")"
bajados perfil
# shellcheck disable=SC2016
for orden in 'NOMBRE=$(touch '"$raiz/corrida"')' 'NOMBRE="`touch '"$raiz/corrida"'`"' "NOMBRE=x; touch $raiz/corrida"; do
    ajustar "$orden"
    rehusa 1 ''
done
! [ -e "$raiz/corrida" ] || fallar "un ajuste se ejecutó"

# What a shell took until now still counts: quotes, a remark behind a value, "export", no line end at the end; and
# blanks in a device's path.
ln -s "$raiz/COM1" "$raiz/cable del norte"
printf '%s\n' "  export NOMBRE='oeste'   # la finca" 'PERFIL="ampliado"' "CARPETA=$raiz/con\\ blanco" \
    'OPCIONES="--reintentos 0  --espera=7"' >"$ajustes"
printf '%s' "COM=\"2=$raiz/no-hay 1=$raiz/cable del norte\"" >>"$ajustes"
datos_de_siempre=$datos datos="$raiz/con blanco"
mkdir "$datos"
correr "$raiz/errores" sh -c "$orden_cron"
[ $estado -eq 0 ] || fallar "comillas: $estado $(cat "$raiz/errores")"
grep -qF "COM2: $raiz/no-hay no existe" "$raiz/errores" || fallar "dos puertos: $(cat "$raiz/errores")"
bajados oeste
datos=$datos_de_siempre
ajustar "COM=1=$raiz/COM1" "CARPETA=$datos"

# Two at once: the second leaves, and says so.
exec 8>"$datos/.descarga.cerrojo"
flock 8
correr "$raiz/errores" sh -c "$orden_cron"
exec 8>&-
falla 75 'no ha terminado' solape

# A station's own download may have the port.
mkdir -p "$raiz/general/.puertos"
exec 8>"$raiz/general/.puertos/$(readlink -f "$raiz/COM1" | tr -c '[:alnum:].:\n-' _)"
flock 8
correr "$raiz/errores" TELVANE_ESTADO="$raiz/general" TELVANE_PLAZO=0 sh -c "$orden_cron"
falla 75 'el puerto es de otra descarga' "puerto de una estación"
exec 8>&-
ajustar "COM=1=$raiz/COM1" "CARPETA=$datos" NOMBRE=libre
correr "$raiz/errores" TELVANE_ESTADO="$raiz/general" TELVANE_PLAZO=0 sh -c "$orden_cron"
[ $estado -eq 0 ] || fallar "puerto libre: $estado $(cat "$raiz/errores")"
bajados libre

# A data sheet that the settings name is every night's.
for noche in una otra; do
    ajustar "COM=1=$raiz/COM1" "CARPETA=$datos" "NOMBRE=$noche" "OPCIONES=\"--ficha $raiz/ultima.json\""
    correr "$raiz/errores" sh -c "$orden_cron"
    [ $estado -eq 0 ] || fallar "la misma ficha, $noche: $estado $(cat "$raiz/errores")"
    grep -qF "\"base\": \"${noche}_" "$raiz/ultima.json" || fallar "la misma ficha, $noche: $(cat "$raiz/ultima.json")"
done
# The sheets of images that were moved away stay, although the clock came by their second again.
for segundo in 0 1 2; do
    echo suya >"$datos/quieta_$(TZ=UTC date -d "$segundo seconds" +%Y-%m-%d_%H%M%S).rgt.json"
done
ajustar "COM=1=$raiz/COM1" "CARPETA=$datos" NOMBRE=quieta
correr "$raiz/errores" sh -c "$orden_cron"
[ $estado -eq 0 ] || fallar "el mismo segundo: $estado $(cat "$raiz/errores")"
[ "$(cat "$datos"/quieta_*.json | grep -cx suya)" -eq 3 ] || fallar "el mismo segundo: se perdió una ficha"

# Its unit sees no network: whoever names a port there hears what to do.
ajustar COM=1=TCP://servidor.invalid:4001 "CARPETA=$datos"
correr "$raiz/errores" TELVANE_RED=no sh -c "$orden_cron"
falla 2 'haga de la estación un archivo de ' "tcp sin red"

ajustar "COM=1=$raiz/COM1" "CARPETA=$raiz/no/hay"
correr "$raiz/errores" sh -c "$orden_cron"
falla 1 "no se puede escribir en $raiz/no/hay" carpeta

# No logger: a failure that is seen, and no file.
ajustar "COM=1=$raiz/no-hay" "CARPETA=$datos" NOMBRE=nadie
correr "$raiz/errores" sh -c "$orden_cron"
falla 3 'telvane-cli: ' "sin registrador"
[ -z "$(find "$datos" -name 'nadie*')" ] || fallar "sin registrador quedan archivos"
exit $((fallos > 0))
