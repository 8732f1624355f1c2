#!/usr/bin/env bash
# Takes the steps of the container's recipe in a Debian 12 that has nothing but its base, and visits a site there as the
# container would. Needs root and Debian's archive, and takes a minute or two; scripts/test.sh leaves it out.
#   tests/packages/bare.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
recipe=packaging/container/Containerfile
scripts/setup.sh package-test >&2
deb=$(scripts/package.sh)
source tests/support/counting.sh
root=$work/root
clean_up() {
    umount "$root/proc" 2>/dev/null || true
    rm -rf --one-file-system "$work"
}
trap clean_up EXIT
trap 'exit 1' INT TERM
debootstrap --variant=minbase bookworm "$root" >"$work/debootstrap.log" 2>&1 || { tail -5 "$work/debootstrap.log"; exit 1; }
mount -t proc proc "$root/proc"

# As the images of that name have it.
printf 'path-exclude /usr/share/%s/*\n' doc man >"$root/etc/dpkg/dpkg.cfg.d/slim"
cp "$deb" "$root/tmp"
sed -n '/^RUN/,/[^\\]$/p' "$recipe" | sed 's/^RUN //' >"$root/tmp/steps"
check "the recipe's steps" chroot "$root" sh -eu /tmp/steps
id=$(sed -n 's/^USER \([0-9]*\):.*/\1/p' "$recipe")
entry=$(sed -n 's/^ENTRYPOINT \["\(.*\)"\]/\1/p' "$recipe")
sed 's/SITE/yard/; s/^RV001=.*/RV001=10.20.0.6,2/' packaging/linux/site.ini >"$root/etc/ruvo/yard.ini"
cp packaging/linux/simulator.ini "$root/etc/ruvo/registry.ini"
cp examples/substation/substation.toml "$root/tmp"
echo "P32LS_SUBSTATION=/tmp/substation.toml" >"$root/etc/ruvo/yard.env"
inside() { chroot --userspec="$id:$id" "$root" "$@"; }
check "a visit" silent inside "$entry" yard
check "its event" equal "$(inside ruvoctl events --format json /var/lib/ruvo | wc -l)" 1

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
