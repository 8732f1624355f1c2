#!/usr/bin/env bash
# The 32-bit Windows programs and their tests under 32-bit Wine, in an emulated machine. Takes twenty minutes on a quiet machine and
# up to two hours beside other work, and 8 GB below build/machine. The last line is the count.
#   tests/machine/windows32.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh windows machine
scripts/build.sh windows-x86-tests
scripts/build.sh windows-x86
setup=$(packaging/windows/make_packages.sh windows-x86 | grep 'setup\.exe$')
source tests/machine/emulator.sh
system=build/machine/windows32.tar root=build/machine/windows32
make_machine $system wine,wine32:i386,xvfb,xauth,python3 --architectures=amd64,i386
unpack_machine $system $root
place=$root/opt/ruvo
mkdir -p $place/bin $place/tests $place/docs
cp build/windows-x86-tests/bin/*.{exe,dll} $place/bin
cp CMakeLists.txt "$setup" $place
cp docs/*.md $place/docs
cp tests/windows/*.py tests/support/checks.py tests/machine/windows32_test.py $place
for room in tests/*/; do # their tables
    [ -z "$(ls "$room"*.txt 2>/dev/null)" ] || { mkdir "$place/$room"; cp "$room"*.txt "$place/$room"; }
done
run_machine $root 6G "cd /opt/ruvo && python3 windows32_test.py" 4h
