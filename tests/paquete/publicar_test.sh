#!/usr/bin/env bash
# Readings over MQTT and letters about warnings: the units as they are installed, and what they run, against a simulated
# logger; the broker's program and the mail system's are scripts that write down what they are given.
#   publicar_test.sh BUILD_DIR CMAKE
# shellcheck source=tests/paquete/instalado.sh
. "$(dirname "$0")/instalado.sh"
tapados=$raiz/tapados
mkdir "$tapados"
PATH=$tapados:$PATH
publicar=$(uno publicar-en-linea)
correo=$(uno correo-de-fallo)

# The units: what they start is there, and they may do little else.
for unidad in telvane-avisos.service telvane-avisos.timer telvane-correo@.service telvane-en-linea@.service; do
    aqui <"$(uno "$unidad")" >"$raiz/$unidad"
done
entera "$raiz"/telvane-avisos.{service,timer} "$raiz"/telvane-{correo,en-linea}@norte.service
a_su_hora "$raiz/telvane-avisos.timer"
encerrado "$raiz"/telvane-{avisos,correo@,en-linea@}.service
grep -qx 'OnFailure=telvane-correo@%n.service' "$raiz/telvane-avisos.service" || fallar "nadie recibe los avisos"

# Topics and payloads as they come: "TOPIC PAYLOAD" a line. Retained ones are marked.
cat >"$tapados/mosquitto_pub" <<FIN
#!/bin/sh
tema='' texto='' lineas=no marca=''
while [ \$# -gt 0 ]; do
    case \$1 in
        -t) tema=\$2 && shift ;;
        -m) texto=\$2 && shift ;;
        -q | -i) shift ;;
        -r) marca=retenido: ;;
        -l) lineas=si ;;
    esac
    shift
done
[ \$lineas = si ] || { printf '%s%s %s\n' "\$marca" "\$tema" "\$texto" >>"$raiz/publicado"; exit 0; }
# It goes away when it is told to.
while IFS= read -r linea; do
    printf '%s%s %s\n' "\$marca" "\$tema" "\$linea" >>"$raiz/publicado"
    ! [ -e "$raiz/fin" ] || exit 1
done
FIN
chmod +x "$tapados/mosquitto_pub"
: >"$raiz/publicado"

export TELVANE_ESTACIONES=$raiz/estaciones TELVANE_ESTADO=$raiz/general XDG_CONFIG_HOME=$raiz/ajustes CADA=1
mkdir "$TELVANE_ESTACIONES" "$TELVANE_ESTADO" "$XDG_CONFIG_HOME" "$raiz/datos"
simular COM1
printf '%s\n' "COM=1=$raiz/COM1" SERIE=02080050 "CARPETA=$raiz/datos" >"$TELVANE_ESTACIONES/norte.conf"
printf '%s\n' "COM=1=$raiz/COM1" SERIE=02080051 "CARPETA=$raiz/datos" >"$TELVANE_ESTACIONES/sur.conf"

# A password that others can read, and another logger at the port.
echo '-P secreta' >"$XDG_CONFIG_HOME/mosquitto_pub"
chmod 0644 "$XDG_CONFIG_HOME/mosquitto_pub"
! "$publicar" norte 2>"$raiz/errores" || fallar "una contraseña que otros leen"
grep -q 'otros pueden leerlo' "$raiz/errores" || fallar "contraseña: $(cat "$raiz/errores")"
chmod 0640 "$XDG_CONFIG_HOME/mosquitto_pub"
! "$publicar" sur 2>"$raiz/errores" || fallar "otro registrador"
grep -q 'responde otro registrador' "$raiz/errores" || fallar "otro registrador: $(cat "$raiz/errores")"
[ -s "$raiz/publicado" ] && fallar "se publicó $(cat "$raiz/publicado")"

# While a download has the port, nobody else touches it; afterwards the sensors come, and readings after them.
lecturas() { [ "$(grep -c '^telvane/02080050/lecturas {"hora":' "$raiz/publicado")" -ge "$1" ]; }
cerrojo=$TELVANE_ESTADO/.puertos/$(printf '%s' "$(readlink -f "$raiz/COM1")" | tr -c '[:alnum:].:-' _)
exec 8>"$cerrojo"
flock 8
"$publicar" norte 2>"$raiz/errores" 8>&- &
publicador=$!
procesos+=("$publicador")
# It has looked at the lock, found it taken and gone to sleep.
# shellcheck disable=SC2317
duerme() {
    local proceso
    for proceso in /proc/[0-9]*; do
        grep -qsx $'PPid:\t'"$publicador" "$proceso/status" && grep -qsx sleep "$proceso/comm" && return 0
    done
    return 1
}
hasta 30 duerme || fallar "nadie espera al puerto"
[ -s "$raiz/publicado" ] && fallar "se publicó durante una descarga"
exec 8>&-
hasta 60 lecturas 2 || fallar "no llegan lecturas: $(cat "$raiz/errores" "$raiz/publicado")"
[ "$(grep -c '^retenido:homeassistant/sensor/telvane_02080050_[a-z_]*/config {"unique_id":"telvane_02080050_' "$raiz/publicado")" = 8 ] ||
    fallar "sensores: $(cat "$raiz/publicado")"
[ "$(head -n 8 "$raiz/publicado" | grep -c ^retenido:)" = 8 ] || fallar "las lecturas llegan antes que los sensores"
# Readings that nobody takes end it: systemd begins anew.
: >"$raiz/fin"
# shellcheck disable=SC2317
acabo() { ! kill -0 $publicador 2>/dev/null; }
if ! hasta 60 acabo; then
    fallar "publica para nadie"
    kill "$publicador"
elif wait "$publicador"; then
    fallar "acabó bien sin corredor"
fi

# The warnings: what the archive says, and no password that others can read.
avisos=$(uno avisos-de-estaciones)
# avisar MODE [VARIABLE=VALUE...]: exit status in $estado, standard error in $raiz/errores.
avisar() {
    : >"$raiz/telvane-avisos"
    chmod "$1" "$raiz/telvane-avisos"
    shift
    estado=0
    env PGCONNECT_TIMEOUT=2 "$@" "$avisos" "$raiz/telvane-avisos" >"$raiz/salida" 2>"$raiz/errores" || estado=$?
}
# aviso STATUS WHAT: the last run ended so, and with 2 because of the password.
aviso() {
    [ $estado -eq "$1" ] || fallar "$2: $estado, $(cat "$raiz/errores")"
    local dicho=0
    ! grep -qF 'lleva una contraseña y todos pueden leerlo: sudo chown root:telvane' "$raiz/errores" || dicho=2
    [ $dicho -eq $((estado & 2)) ] || fallar "$2: $(cat "$raiz/errores")"
    ! grep -q secreta "$raiz/errores" || fallar "$2: se dice la contraseña"
}
telvane-cli descargar --com "1=$raiz/COM1" --base "$raiz/a.rgt" --csv "$raiz/a.csv" 2>"$raiz/errores" || fallar "descarga: $(cat "$raiz/errores")"
telvane-historico --en "$raiz/h.sqlite" incorporar "$raiz/a.rgt" >"$raiz/salida"
avisar 0644 ARCHIVO="$raiz/h.sqlite" OPCIONES="--copia $raiz/no.sqlite"
aviso 1 "otro archivo que falta"
grep -q 'no.sqlite: no hay archivo histórico' "$raiz/errores" || fallar "otro archivo: $(cat "$raiz/errores")"
! [ -s "$raiz/salida" ] || fallar "el estado va al diario"
# Nobody answers at these addresses.
nadie=127.0.0.1:1/x
for con in "ARCHIVO=postgresql://yo:secreta@$nadie" "ARCHIVO=postgres://yo@$nadie?password=secreta" \
    "OPCIONES=--copia postgresql://yo:secreta@$nadie"; do
    avisar 0644 ARCHIVO="$raiz/h.sqlite" "$con"
    aviso 2 "$con, legible"
    avisar 0640 ARCHIVO="$raiz/h.sqlite" "$con"
    aviso 1 "$con"
done
avisar 0644 ARCHIVO="postgresql://yo@$nadie" OPCIONES="--copia postgresql://yo@$nadie"
aviso 1 "sin contraseña"

# The letter: to whom it goes, what it is about, and what the unit had said.
cat >"$tapados/sendmail" <<FIN
#!/bin/sh
cat >"$raiz/carta"
FIN
cat >"$tapados/systemctl" <<'FIN'
#!/bin/sh
case $* in *ExecMainStartTimestamp*) echo @1795375511 ;; *) echo Result=exit-code ;; esac
FIN
cat >"$tapados/journalctl" <<'FIN'
#!/bin/sh
case $* in *--since=@1795375511*_SYSTEMD_UNIT=telvane-avisos.service*) echo 'telvane-historico: estación 02080050: sin imágenes' ;; esac
FIN
chmod +x "$tapados"/{sendmail,systemctl,journalctl}
DESTINATARIO=operador@ejemplo.org "$correo" telvane-avisos.service
grep -qx 'To: operador@ejemplo.org' "$raiz/carta" || fallar "carta: $(cat "$raiz/carta")"
grep -q '^Subject: telvane-avisos.service en ' "$raiz/carta" || fallar "asunto"
grep -q 'sin imágenes' "$raiz/carta" || fallar "la carta no dice nada"
# systemd takes a service's name without its ending as well.
DESTINATARIO=operador@ejemplo.org "$correo" telvane-avisos
grep -q 'sin imágenes' "$raiz/carta" || fallar "la carta de prueba no dice nada"
rm "$raiz/carta"
! DESTINATARIO=$'a@b\nBcc: c@d' "$correo" telvane-avisos.service 2>/dev/null || fallar "una línea de más en la cabecera"
! "$correo" $'x\nBcc: c@d' 2>/dev/null || fallar "una línea de más en el asunto"
! [ -e "$raiz/carta" ] || fallar "se mandó una carta"

# Whoever removes a package leaves nothing of it running.
while IFS= read -r unidad; do
    nombre=${unidad##*/}
    cat "$(dirname "$0")"/../../packaging/debian/*/prerm | tr -s " '" '\n' | grep -qxF -e "${nombre/@./@*.}" || fallar "al quitar el paquete sigue $nombre"
done < <(find "$raiz" -path '*/systemd/system/telvane-*' -type f)

[ $fallos -eq 0 ]
