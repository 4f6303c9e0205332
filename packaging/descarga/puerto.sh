# shellcheck shell=sh
# A port belongs to one program at a time, by whatever name it is called. Read by descarga-estacion, descarga-nocturna
# and publicar-en-linea.

# cerrojo_de_puerto FOLDER DEVICE: the file that is locked for it.
cerrojo_de_puerto() {
    case $2 in
        [Tt][Cc][Pp]://*) puerto=$(printf '%s' "$2" | tr '[:upper:]' '[:lower:]') ;;
        *) puerto=$(readlink -f -- "$2" 2>/dev/null) || puerto=$2 ;;
    esac
    printf '%s/.puertos/%s' "$1" "$(printf '%s' "$puerto" | tr -c '[:alnum:].:-' _)"
}
