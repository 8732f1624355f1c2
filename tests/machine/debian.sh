# A small Debian 12 as a tar file, made once. To be sourced.
# shellcheck shell=bash
make_debian() { # the tar file, below build/machine; then further options of debootstrap
    local file=$1 tree=${1%.tar}.new
    shift
    [ ! -f "$file" ] || return 0
    mkdir -p "$(dirname "$file")"
    rm -rf --one-file-system "$tree"
    debootstrap --variant=minbase "$@" bookworm "$tree" >"${file%.tar}.log" 2>&1 || { tail -5 "${file%.tar}.log"; return 1; }
    rm -f "$tree"/var/cache/apt/archives/*.deb
    tar -C "$tree" -cf "$file.new" .
    rm -rf --one-file-system "$tree"
    mv "$file.new" "$file"
}
