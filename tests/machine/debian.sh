# A small Debian 12 as a tar file, made once, and libraries of other machines. To be sourced.
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

unpack_libraries() { # an architecture and its packages, with commas between: into build/machine/ARCHITECTURE, with their headers apart
    local architecture=$1 packages=$2 file=build/machine/$1.tar root=build/machine/$1 mirror name
    if [ ! -f "$file" ]; then
        mirror=$(sed -n 's/^URIs: *\(.*debian\)\/*$/\1/p' /etc/apt/sources.list.d/*.sources | head -1)
        mkdir -p build/machine
        # Unpacked, never installed beside this machine's own: two architectures must not differ in their versions.
        mmdebstrap --quiet --variant=extract --format=tar "--architectures=$architecture" "--include=$packages" bookworm "$file.new" \
            "deb $mirror bookworm main"
        mv "$file.new" "$file"
    fi
    rm -rf "$root"
    mkdir "$root" "$root/headers"
    tar -xf "$file" -C "$root"
    for name in "$root"/usr/include/{sqlite3*.h,openssl,*-linux-gnu/openssl}; do
        [ ! -e "$name" ] || cp -r "$name" "$root/headers"
    done
}
