#!/usr/bin/env bash
# Installs what building and testing need on Debian 12, and nothing that is there already.
#   scripts/setup.sh            what scripts/demo.sh and scripts/test.sh need
#   scripts/setup.sh checks     the linters, sanitizer runtimes and valgrind as well (scripts/check.sh)
#   scripts/setup.sh windows    the cross-compilers and the runner of scripts/windows.sh as well
#   scripts/setup.sh fuzz       the fuzzer's compiler (scripts/fuzz.sh)
#   scripts/setup.sh coverage   what counts covered lines (scripts/coverage.sh)
#   scripts/setup.sh packages   what builds and examines the Debian package (scripts/package.sh)
#   scripts/setup.sh browser    the browser that looks at the report
#   scripts/setup.sh database   the database server that the archive's rows are loaded into
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config
    libtomlplusplus-dev # substation files
    libsqlite3-dev      # the archive of ruvoctl
    libssl-dev          # digests of the crypto provider's stand-in
    libcli11-dev        # command line of ruvoctl
    libgtest-dev        # tests
    nlohmann-json3-dev  # checks the JSON of ruvoctl, in the tests
    libbenchmark-dev)   # benchmarks

for extra in "$@"; do
    case "$extra" in
    checks) packages+=(clang clang-format clang-tidy cppcheck libclang-rt-14-dev valgrind) ;;
    windows) packages+=(g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix mingw-w64-tools wine64 libwine
        libwine-dev) ;;
    fuzz) packages+=(clang libclang-rt-14-dev) ;;
    coverage) packages+=(gcovr) ;;
    packages)
        packages+=(dpkg-dev file fakeroot lintian lowdown mandoc man-db systemd bash-completion binutils time debootstrap)
        # (Where they come from elsewhere, Debian's would be in their way.)
        command -v npm >/dev/null || packages+=(nodejs npm) # the schema that the fleet's manifests are held against
        ;;
    browser) packages+=(chromium chromium-driver python3-selenium) ;;
    database) packages+=(postgresql sqlite3) ;;
    *)
        echo "setup.sh: unknown set '$extra' (known: checks windows fuzz coverage packages browser database)" >&2
        exit 2
        ;;
    esac
done

missing=()
for package in "${packages[@]}"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "setup.sh: must install ${missing[*]}: run it as root" >&2; exit 1; }
    root=(sudo)
fi
echo "Installing: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
if ! { "${root[@]}" apt-get update && "${root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"; } \
    >"$log" 2>&1; then
    cat "$log" >&2
    echo "setup.sh: installing failed" >&2
    exit 1
fi
