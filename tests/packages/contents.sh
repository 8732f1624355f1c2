# What is in the package, before it is installed. Sourced by run.sh.
# shellcheck shell=bash
echo "Looking into the package"
check "lintian has nothing to say but what is overridden" lintian --allow-root -I --fail-on error,warning,info "$deb"
check "the changelog's version" equal "$(sed -n '1s/.*(\(.*\)).*/\1/p' packaging/debian/changelog)" "$(dpkg-deb -f "$deb" Version)"
mkdir "$work/files"
dpkg-deb -x "$deb" "$work/files"
private=$work/files/usr/lib/ruvo

libraries() { ldd "$1" | sed -E 's/^\s*([^ ]*\/)?([^ ]+\.so[^ ]*).*/\2/' | grep -v '^ld-linux\|linux-vdso' | LC_ALL=C sort | tr '\n' ' '; }
check "the extractor wants the C++ runtime and the C library only" \
    equal "$(libraries "$private/ruvo")" "libc.so.6 libgcc_s.so.1 libm.so.6 libstdc++.so.6 "
check "so does the library for other programs" \
    equal "$(libraries "$private/libruvo.so")" "libc.so.6 libgcc_s.so.1 libm.so.6 libstdc++.so.6 "
check "no server stands where one is found unasked" test ! -e "$private/p32ls.so"
hardened() { readelf -W -d -l "$1" >"$work/elf" && grep -q GNU_RELRO "$work/elf" && grep -q 'NOW\|BIND_NOW' "$work/elf"; }
for file in ruvo ruvoctl libruvo.so simulator/p32ls.so; do
    check "$file is linked for protection" hardened "$private/$file"
done
# Of each compiler's option something that it alone leads to.
guards() { LC_ALL=C readelf -W --dyn-syms "$1" | grep -o 'UND [^@ ]*' | grep -c "UND \($2\)\$"; }
for symbol in __stack_chk_fail '__[a-z]*_chk' '.*glibcxx_assert_fail.*'; do
    check "ruvo is compiled for protection: $symbol" guards "$private/ruvo" "$symbol"
done
marked() { [ "$(uname -m)" != x86_64 ] || [ "$(objdump -d "$1" | grep -c endbr64)" -gt 1000 ]; }
check "ruvo is compiled for protection: jumps" marked "$private/ruvo"

# What the package was made from, beside it.
parts() { node -p "JSON.parse(fs.readFileSync('${deb%.deb}.spdx.json')).packages.map(part => part.name + ' ' + part.versionInfo).sort().join('\n')"; }
installed() { dpkg-query -W -f '${Package} ${Version}\n' "$@"; }
check "parts: this package alone, its headers' packages, tools and libraries" equal "$(parts)" "$( (
    echo "ruvo $(dpkg-deb -f "$deb" Version)"
    installed libc6-dev libcli11-dev libgcc-12-dev libsqlite3-dev libssl-dev libstdc++-12-dev libtomlplusplus-dev linux-libc-dev
    installed binutils-x86-64-linux-gnu cmake g++-12 ninja-build libc6 libgcc-s1 libsqlite3-0 libssl3 libstdc++6 systemd) | LC_ALL=C sort)"
check "parts: this very file" grep -q "$(sha256sum "$deb" | cut -d ' ' -f 1)" "${deb%.deb}.spdx.json"

# The same bytes at another time.
epoch=$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)
packed_again() { cmake -E chdir build/release env SOURCE_DATE_EPOCH="$epoch" cpack -G DEB -B "$work/again" && cmp "$work/again/$(basename "$deb")" "$deb"; }
check "packed again, the same bytes" packed_again
# And from another folder: two modules, whole, and the two lowest rooms. (All the rest would cost minutes.)
built=(oncrpc HalvexCryptoKit ruvo_paths)
built_in() ( # a folder
    mkdir -p "$1"
    cp -r CMakeLists.txt CMakePresets.json cmake docs examples include packaging sim src tools "$1"
    cd "$1"
    cmake --preset release -D RUVO_TESTS=OFF -D RUVO_BENCH=OFF -D CMAKE_CXX_COMPILER_LAUNCHER= &&
        cmake --build build/release --target "${built[@]}"
)
check "built in a folder" built_in "$work/one"
check "built in another folder" built_in "$work/another/below"
for file in bin/oncrpc.so bin/HalvexCryptoKit.so src/platform/libruvo_platform.a src/paths/libruvo_paths.a; do
    check "from two folders the same bytes: $file" cmp "$work/one/build/release/$file" "$work/another/below/build/release/$file"
done

shown_well() { LC_ALL=C.UTF-8 MANROFFSEQ= MANWIDTH=$1 man --warnings -l "$2" 2>&1 >/dev/null; } # warnings, if any
for page in "$work"/files/usr/share/man/man*/*.gz; do
    name=$(basename "$page" .gz)
    zcat "$page" >"$work/$name"
    check "$name: mandoc" silent mandoc -T lint -W warning "$work/$name"
    for width in 80 100; do
        check "$name: man, $width columns" silent shown_well "$width" "$work/$name"
    done
done
check "five manual pages" equal "$(find "$work/files/usr/share/man" -name '*.gz' | wc -l)" 5
