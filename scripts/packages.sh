#!/usr/bin/env bash
# Installs what the project needs from the distribution's packages (Debian, Ubuntu); elsewhere says what is missing.
# usage: scripts/packages.sh build|ci
set -euo pipefail

build=(build-essential cmake ninja-build ccache git pkg-config libboost-dev libfmt-dev libspdlog-dev libcli11-dev
       nlohmann-json3-dev zlib1g-dev libsleef-dev libgeographiclib-dev libgtest-dev libgmock-dev)
ci=("${build[@]}" clang clang-format clang-tidy libclang-rt-14-dev libbenchmark-dev rtklib gpsd-clients locales)
case "${1:-build}" in
    build) wanted=("${build[@]}") ;;
    ci) wanted=("${ci[@]}") ;;
    *) echo "usage: $0 build|ci" >&2; exit 2 ;;
esac

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    missing=()
    for program in cmake ninja c++ pkg-config; do command -v "$program" >/dev/null || missing+=("$program"); done
    [ ${#missing[@]} -eq 0 ] || { echo "please install: ${missing[*]}" >&2; exit 1; }
    echo "no apt-get here: the libraries are taken as installed (${build[*]} by their Debian names)" >&2
    exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null && as_root=(sudo)
fi
as_root_or_say() {
    if [ "$(id -u)" -ne 0 ] && [ ${#as_root[@]} -eq 0 ]; then echo "please run as root: $*" >&2; exit 1; fi
    "${as_root[@]}" "$@"
}

missing=()
for package in "${wanted[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
if [ ${#missing[@]} -ne 0 ]; then
    echo "installing: ${missing[*]}"
    as_root_or_say apt-get update -qq
    as_root_or_say env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
# A locale that writes decimals with a comma, for the tests' second run.
if [ "${1:-build}" = ci ] && ! locale -a | grep -qiE '^de_DE\.utf-?8$'; then
    as_root_or_say localedef -i de_DE -f UTF-8 de_DE.UTF-8
fi
