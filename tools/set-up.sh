# SPDX-License-Identifier: MIT
#
# What the scripts at the top share: `source tools/set-up.sh`, then
#   install_packages LIST...   the Debian packages of tools/packages/LIST, as far as they are missing
#   as_root COMMAND...         the command with root's rights
# shellcheck shell=bash

packages_folder=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)/packages

as_root() {
    if [[ $(id -u) == 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo -- "$@"
    else
        echo "This needs root's rights, and there is no sudo: $*" >&2
        return 1
    fi
}

# The names in the given lists, comments and empty lines left out.
packages_in() {
    local list
    for list in "$@"; do
        sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$packages_folder/$list"
    done
}

is_installed() {
    [[ $(dpkg-query --show --showformat '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

install_packages() {
    local package missing=()
    for package in $(packages_in "$@"); do
        is_installed "$package" || missing+=("$package")
    done
    [[ ${#missing[@]} -gt 0 ]] || return 0
    echo "Installing: ${missing[*]}"
    as_root apt-get update --quiet=2
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install --yes --quiet=2 --no-install-recommends "${missing[@]}" >/dev/null
}
