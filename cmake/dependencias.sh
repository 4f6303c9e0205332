# shellcheck shell=bash
# Installing what is missing, and only that. Sourced by run, test and .ci/run from the project's root.

# paquetes_de PURPOSE...: the packages that cmake/dependencias.txt lists for them.
paquetes_de() {
    local proposito
    for proposito in "$@"; do
        sed -n "s/^${proposito}[[:blank:]]\{1,\}//p" cmake/dependencias.txt
    done
}

esta_instalado() {
    [ "$(dpkg-query -W -f='${db:Status-Status}\n' "$1" 2>/dev/null | head -n 1)" = installed ]
}

# como_root COMMAND...: as it stands for root, through sudo for others. Never asks when there is nobody to answer.
como_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif [ -t 0 ]; then
        sudo "$@"
    else
        sudo -n "$@"
    fi
}

# instalar PURPOSE...: when every package is there nothing is asked of the network, so that a machine that is
# offline goes on working.
instalar() {
    if ! command -v dpkg-query >/dev/null; then
        echo "No es un sistema Debian: se supone instalado lo de cmake/dependencias.txt." \
            "(Not Debian: assuming that the packages of cmake/dependencias.txt are there.)" >&2
        return
    fi
    local paquete faltan=()
    for paquete in $(paquetes_de "$@"); do
        esta_instalado "$paquete" || faltan+=("$paquete")
    done
    [ ${#faltan[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ] && ! command -v sudo >/dev/null; then
        {
            echo "Faltan paquetes y no hay sudo; instálelos como root (packages are missing and there is no sudo; as root):"
            echo "  apt-get update && apt-get install --no-install-recommends ${faltan[*]}"
        } >&2
        return 1
    fi
    echo "Se instalan (installing): ${faltan[*]}" >&2
    como_root env DEBIAN_FRONTEND=noninteractive apt-get -o Acquire::Retries=3 -qq update </dev/null >&2
    como_root env DEBIAN_FRONTEND=noninteractive apt-get -o Acquire::Retries=3 -o Dpkg::Use-Pty=0 -qq -y \
        install --no-install-recommends "${faltan[@]}" </dev/null >&2
}
