# What the scripts share. Sourced, never run.
# shellcheck shell=bash

say() { printf '%s\n' "$*" >&2; }
die() {
    say "$*"
    exit 1
}

# as_root COMMAND...: runs it as it is for root, through sudo for anyone else.
as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "This needs root: run it as root, or install sudo. It was: $*"
    fi
}

installed() {
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# need PACKAGE...: installs what of these Debian packages is missing, and asks nothing.
need() {
    if ! command -v apt-get >/dev/null; then
        say "No apt-get here: taking it that the equivalents of these are installed: $*"
        return
    fi
    local package missing=()
    for package in "$@"; do
        installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    say "Installing: ${missing[*]}"
    as_root apt-get update -qq </dev/null >&2
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -qq -y --no-install-recommends "${missing[@]}" </dev/null >&2
}
