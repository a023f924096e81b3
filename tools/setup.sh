#!/bin/sh
# Installs the Debian packages that the named purposes need and this machine lacks (packages.txt); behind "--wanted" are
# purposes that something else does without. Whoever is not root and has no sudo is told what an administrator should
# install. Without apt-get the packages are yours to provide.
set -eu
list="$(dirname "$0")/../packages.txt"
missing="" lacking="" wanted=no
for purpose in "$@"; do
    if [ "$purpose" = --wanted ]; then
        wanted=yes
        continue
    fi
    for package in $(sed -n "s/^$purpose: //p" "$list"); do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' && continue
        missing="$missing $package"
        [ $wanted = yes ] || lacking="$lacking $package"
    done
done
[ -n "$missing" ] || exit 0
command -v apt-get >/dev/null || { echo "Please provide what Debian has in these packages:$missing" >&2; exit 0; }
sudo=""
if [ "$(id -u)" != 0 ]; then
    sudo="sudo"
    if ! command -v sudo >/dev/null || { ! sudo -n true 2>/dev/null && [ ! -t 0 ]; }; then
        [ -n "$lacking" ] || exit 0
        echo "You are not root here. Please ask an administrator to run this, or provide the same in another way:" >&2
        echo "    apt-get install --no-install-recommends$missing" >&2
        # What is provided in another way is found or missed by the build itself, if there is anything to build with.
        for program in cmake ninja c++; do
            command -v $program >/dev/null || { echo "There is no $program." >&2; exit 1; }
        done
        exit 0
    fi
fi
echo "Installing:$missing"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
# shellcheck disable=SC2086
$sudo apt-get install -y -qq --no-install-recommends $missing >/dev/null
