#!/usr/bin/env bash
# Two hosts visit relays into one event root on a share (NFS 4, NFS 3, SMB), in an emulated machine that serves it. Takes half an
# hour and 4 GB below build/machine. The last line is the count.
#   tests/machine/shares.sh [ROUNDS [SEED]]      default: 12 rounds a share, seed 1
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh machine
scripts/build.sh release ruvo ruvoctl p32ls oncrpc
source tests/machine/emulator.sh
system=build/machine/shares.tar root=build/machine/shares
make_machine $system iproute2,kmod,nfs-kernel-server,nfs-common,samba,cifs-utils,python3,libsqlite3-0
unpack_machine $system $root
mkdir $root/opt/ruvo
for program in ruvo ruvoctl p32ls.so oncrpc.so; do cp build/release/bin/$program $root/opt/ruvo; done
cp tests/machine/shares_test.py tests/support/{checks,substation}.py $root/opt/ruvo
run_machine $root 3G "python3 /opt/ruvo/shares_test.py /opt/ruvo ${1:-12} ${2:-1}" 3h
