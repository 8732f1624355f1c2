#!/usr/bin/env bash
# Two hosts visit relays into one event root on a share (NFS 4, NFS 3, SMB), in an emulated machine that serves it. Takes half an
# hour and 4 GB below build/machine. The last line is the count.
#   tests/machine/shares.sh [ROUNDS [SEED]]      default: 12 rounds a share, seed 1
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh machine
scripts/build.sh release ruvo ruvoctl p32ls oncrpc
mkdir -p build/machine
cd build/machine
packages=linux-image-amd64,systemd-sysv,udev,dbus,procps,iproute2,kmod,nfs-kernel-server,nfs-common,samba,cifs-utils,python3,libsqlite3-0
[ -f shares.tar ] || {
    # The main archive alone, as the host has it.
    mirror=$(sed -n 's/^URIs: *\(.*debian\)\/*$/\1/p' /etc/apt/sources.list.d/*.sources | head -1)
    mmdebstrap --quiet --format=tar --variant=minbase --include=$packages bookworm shares.new "deb $mirror bookworm main"
    mv shares.new shares.tar
}
rm -rf shares-root
mkdir shares-root
tar -xf shares.tar -C shares-root
mkdir shares-root/opt/ruvo
for program in ruvo ruvoctl p32ls.so oncrpc.so; do cp ../release/bin/$program shares-root/opt/ruvo; done
cp ../../tests/machine/shares_test.py ../../tests/support/checks.py shares-root/opt/ruvo
cat >shares-root/etc/systemd/system/shares.service <<END
[Unit]
After=multi-user.target
[Service]
Type=oneshot
ExecStart=/bin/sh -c 'python3 /opt/ruvo/shares_test.py /opt/ruvo ${1:-12} ${2:-1} >/opt/ruvo/result 2>&1'
ExecStopPost=/bin/systemctl poweroff --force --force
[Install]
WantedBy=graphical.target
END
ln -s ../shares.service shares-root/etc/systemd/system/multi-user.target.wants/shares.service
ln -sf /dev/null shares-root/etc/systemd/system/serial-getty@ttyS0.service
rm -f shares.img
truncate -s 3G shares.img
mke2fs -q -t ext4 -d shares-root shares.img
qemu-system-x86_64 -accel tcg,thread=multi -cpu max,-smap,-smep,-pku -m 2048 -smp 2 -nographic -no-reboot \
    -kernel shares-root/boot/vmlinuz-* -initrd shares-root/boot/initrd.img-* -append "root=/dev/vda rw console=ttyS0 quiet" \
    -drive file=shares.img,if=virtio,format=raw,cache=unsafe >shares.console 2>&1 </dev/null
debugfs -R "cat /opt/ruvo/result" shares.img 2>/dev/null
