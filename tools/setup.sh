#!/bin/sh
# Installs the Debian packages that the named purposes need and this machine lacks (packages.txt).
# Without apt-get it does nothing: the packages are then yours to provide.
set -eu
list="$(dirname "$0")/../packages.txt"
missing=""
for purpose in "$@"; do
    for package in $(sed -n "s/^$purpose: //p" "$list"); do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing="$missing $package"
    done
done
[ -n "$missing" ] || exit 0
command -v apt-get >/dev/null || { echo "Please install:$missing" >&2; exit 0; }
echo "Installing:$missing"
export DEBIAN_FRONTEND=noninteractive
sudo=""
[ "$(id -u)" = 0 ] || sudo="sudo"
$sudo apt-get update -qq
# shellcheck disable=SC2086
$sudo apt-get install -y -qq --no-install-recommends $missing >/dev/null
