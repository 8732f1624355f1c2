#!/usr/bin/env bash
# Installs what building and testing need on Debian 12, and nothing that is there already.
#   scripts/setup.sh            what scripts/demo.sh and scripts/test.sh need
#   scripts/setup.sh checks     the linters, sanitizer runtimes and valgrind as well (scripts/check.sh)
#   scripts/setup.sh windows    the cross-compilers and the runner of scripts/windows.sh as well, and from npm the source
#                               of SQLite, into build/sqlite
#   scripts/setup.sh fuzz       the fuzzer's compiler (scripts/fuzz.sh)
#   scripts/setup.sh coverage   what counts covered lines (scripts/upkeep/coverage.sh)
#   scripts/setup.sh mutants    what changes the sources on purpose (scripts/mutants.sh)
#   scripts/setup.sh month      the clock of simulated nights (scripts/month.sh)
#   scripts/setup.sh packages   what builds the Debian package (scripts/package.sh)
#   scripts/setup.sh package-test   what examines it as well (tests/packages), some of it from npm, into build/npm
#   scripts/setup.sh browser    the browser that looks at the report
#   scripts/setup.sh alerts     what examines the metrics and their alert rules (tests/alerts)
#   scripts/setup.sh prometheus what watches simulated sites (tests/machine/prometheus.sh)
#   scripts/setup.sh database   the database server that the archive's rows are loaded into
#   scripts/setup.sh systemd    what boots a small system that a real systemd runs (tests/machine/systemd.sh)
#   scripts/setup.sh containers what builds an image and runs it (tests/machine/containers.sh)
#   scripts/setup.sh autopkgtest   what runs the package's own test (tests/machine/autopkgtest.sh)
#   scripts/setup.sh arm64      what cross-builds the Debian package for arm64 (scripts/package.sh arm64), looks into it and runs its
#                               programs (tests/machine/arm64.sh)
#   scripts/setup.sh s390x      what cross-builds the rooms for a machine of the other byte order, and runs their tests
#                               (tests/machine/s390x.sh)
#   scripts/setup.sh machine    the emulator and the maker of systems for tests on whole machines (tests/machine)
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(g++ cmake ninja-build pkg-config
    python3             # checks of the sources, and tests
    libtomlplusplus-dev # substation files
    libsqlite3-dev      # the archive of ruvoctl
    libssl-dev          # digests of the crypto provider's stand-in
    libcli11-dev        # command line of ruvoctl
    libgtest-dev        # tests
    nlohmann-json3-dev  # checks the JSON of ruvoctl, in the tests
    libbenchmark-dev)   # benchmarks

package_tools=(dpkg-dev file fakeroot lowdown)
modules= # of npm
sqlite=
for extra in "$@"; do
    case "$extra" in
    checks) packages+=(clang clang-format clang-tidy cppcheck libclang-rt-14-dev valgrind) ;;
    windows)
        packages+=(g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix mingw-w64-tools wine64 libwine libwine-dev
            nsis lowdown osslsigncode) # the set-up programs, their guide, and signatures
        command -v npm >/dev/null || packages+=(nodejs npm)
        sqlite=cmake/sqlite_windows.txt # what it is fetched for, and why
        ;;
    fuzz) packages+=(clang libclang-rt-14-dev) ;;
    coverage) packages+=(gcovr) ;;
    mutants) packages+=(python3 git lld) ;;
    month) packages+=(faketime) ;;
    packages) packages+=("${package_tools[@]}") ;;
    package-test)
        # (time is for scripts/upkeep/job_cost.sh.)
        packages+=("${package_tools[@]}" lintian mandoc man-db systemd bash-completion binutils tzdata time)
        # Where they come from elsewhere, Debian's would be in their way.
        command -v npm >/dev/null || packages+=(nodejs npm)
        modules=tests/packages/fleet # the schema that the fleet's manifests are held against
        ;;
    browser) packages+=(chromium chromium-driver python3-selenium) ;;
    alerts) packages+=(prometheus) ;;
    prometheus) packages+=(prometheus prometheus-node-exporter faketime) ;;
    database) packages+=(postgresql sqlite3) ;;
    systemd) packages+=("${package_tools[@]}" debootstrap systemd-container) ;;
    containers) packages+=("${package_tools[@]}" debootstrap podman buildah crun python3-yaml) ;;
    autopkgtest) packages+=("${package_tools[@]}" debootstrap autopkgtest) ;;
    arm64) packages+=("${package_tools[@]}" lintian mmdebstrap g++-aarch64-linux-gnu qemu-user-static) ;;
    s390x) packages+=(mmdebstrap g++-s390x-linux-gnu qemu-user-static) ;;
    machine) packages+=(mmdebstrap qemu-system-x86 e2fsprogs) ;;
    *)
        echo "setup.sh: unknown set '$extra' (known: checks windows fuzz coverage mutants month packages package-test browser alerts prometheus database systemd containers autopkgtest arm64 s390x machine)" >&2
        exit 2
        ;;
    esac
done

missing=()
for package in "${packages[@]}"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
done
log=$(mktemp)
trap 'rm -f "$log"' EXIT
install_packages() {
    local root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "setup.sh: must install ${missing[*]}: run it as root" >&2; exit 1; }
        root=(sudo)
    fi
    echo "Installing: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    # (What else installs at that moment, such as a machine's own upgrade, is waited for.)
    if ! { "${root[@]}" apt-get update &&
        "${root[@]}" apt-get -o DPkg::Lock::Timeout=600 install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
        cat "$log" >&2
        echo "setup.sh: installing failed" >&2
        exit 1
    fi
}
[ ${#missing[@]} -eq 0 ] || install_packages

install_modules() { # the very versions of the lock file, into build/npm
    echo "Installing from npm: what $modules/package.json names"
    mkdir -p build/npm
    rm -f build/npm/complete
    cp "$modules/package.json" "$modules/package-lock.json" build/npm
    if ! npm ci --prefix build/npm --ignore-scripts --no-audit --no-fund --prefer-offline >"$log" 2>&1; then
        cat "$log" >&2
        echo "setup.sh: installing from npm failed" >&2
        exit 1
    fi
    cp "$modules/package-lock.json" build/npm/complete
}
[ -z "$modules" ] || cmp -s "$modules/package-lock.json" build/npm/complete || install_modules

fetch_sqlite() { # the package alone, without what it needs in turn
    local package digest folder=build/sqlite
    package=$(sed -n 's/^package //p' "$sqlite")
    digest=$(sed -n 's/^sha512 //p' "$sqlite")
    echo "Fetching from npm: $package"
    rm -rf "$folder"
    mkdir -p "$folder"
    if ! {
        npm pack "$package" --pack-destination "$folder" --prefer-offline &&
            echo "$digest $(echo "$folder"/*.tgz)" | sha512sum -c - &&
            tar -xf "$folder"/*.tgz -C "$folder" --strip-components=3 package/deps/sqlite3
    } >"$log" 2>&1; then
        cat "$log" >&2
        echo "setup.sh: fetching $package failed" >&2
        exit 1
    fi
    rm "$folder"/*.tgz
    cp "$sqlite" "$folder/complete"
}
[ -z "$sqlite" ] || cmp -s "$sqlite" build/sqlite/complete || fetch_sqlite
