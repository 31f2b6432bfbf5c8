#!/bin/sh
# Installs what the project needs on Debian 12 and is not there yet, with apt.
#
#   scripts/install-deps.sh [--run | --check | --coverage]
#
# --run       what building and running qzeval takes
# --check     that, and what tests, benchmarks, fuzzing and the format and tidy checks take (the default)
# --coverage  that, and the coverage report
#
# When all is there it does nothing, and needs neither network nor root.
set -eu

run='g++ make cmake ninja-build pkg-config libcli11-dev libfmt-dev libicu-dev libssl-dev'
# python3 and libcsv are oracles of the tests; libclang-rt-14-dev holds clang's sanitizers and libFuzzer; git lists the files to
# check.
check="$run binutils clang clang-format clang-tidy git libbenchmark-dev libclang-rt-14-dev libcsv-dev libgmock-dev libgtest-dev"
check="$check python3"
coverage="$check gcovr"

case "${1:---check}" in
    --run) wanted=$run ;;
    --check) wanted=$check ;;
    --coverage) wanted=$coverage ;;
    *)
        sed -n '2,/^set/s/^# \{0,1\}//p' "$0"
        exit 2
        ;;
esac

missing=''
if command -v dpkg-query >/dev/null; then
    for package in $wanted; do
        status=$(dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | head -n 1) || status=''
        [ "$status" = installed ] || missing="$missing $package"
    done
    [ -n "$missing" ] || exit 0
else
    echo "install-deps: this is no Debian system; install what these Debian packages hold, by its own means:" >&2
    echo "    $wanted" >&2
    exit 1
fi

if [ "$(id -u)" -eq 0 ]; then
    as_root='env'
elif command -v sudo >/dev/null; then
    as_root='sudo env'
else
    echo "install-deps: packages are missing, and installing them takes root (or sudo). As root:" >&2
    echo "    apt-get install$missing" >&2
    exit 1
fi

echo "install-deps: installing$missing"
$as_root apt-get update -q
# shellcheck disable=SC2086  # a list of names
if ! $as_root DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing; then
    echo "install-deps: apt could not install:$missing" >&2
    exit 1
fi
