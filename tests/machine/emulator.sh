# A whole machine in an emulator, on a Debian 12 that is made once. To be sourced.
# shellcheck shell=bash

make_machine() { # the system's tar file, packages with commas between; then further options of mmdebstrap
    local file=$1 packages=$2 mirror
    shift 2
    [ ! -f "$file" ] || return 0
    # The main archive alone: with others beside it the versions of two architectures may differ.
    mirror=$(scripts/upkeep/main_archive.sh)
    mkdir -p "$(dirname "$file")"
    mmdebstrap --quiet --variant=minbase --format=tar "$@" --include="linux-image-amd64,systemd-sysv,udev,dbus,procps,$packages" \
        bookworm "$file.new" "deb $mirror bookworm main"
    mv "$file.new" "$file"
}

unpack_machine() { # the tar file, a folder that is made anew
    rm -rf --one-file-system "$2"
    mkdir "$2"
    tar -xf "$1" -C "$2"
}

# Boots the folder's system with a disk of that size, lets it run the command, and prints what that printed. Fails unless the last
# line counts checks, none of them failed.
run_machine() { # folder, size, the command, seconds after which the machine is ended
    local root=$1 size=$2 command=$3 seconds=$4 disk=$1.img
    cat >"$root/etc/systemd/system/test.service" <<END
[Unit]
After=multi-user.target
[Service]
Type=oneshot
ExecStart=/bin/sh -c '$command >/root/result 2>&1'
ExecStopPost=/bin/systemctl poweroff --force --force
[Install]
WantedBy=multi-user.target
END
    ln -sf ../test.service "$root/etc/systemd/system/multi-user.target.wants/test.service"
    ln -sf /dev/null "$root/etc/systemd/system/serial-getty@ttyS0.service"
    rm -f "$disk"
    truncate -s "$size" "$disk"
    mke2fs -q -t ext4 -d "$root" "$disk"
    # (Without those three the emulator ends 32-bit programs in the kernel.)
    timeout "$seconds" qemu-system-x86_64 -accel tcg,thread=multi -cpu max,-smap,-smep,-pku -m 2048 -smp 2 -nographic -no-reboot \
        -kernel "$root"/boot/vmlinuz-* -initrd "$root"/boot/initrd.img-* -append "root=/dev/vda rw console=ttyS0 quiet no_timer_check panic=1" \
        -drive "file=$disk,if=virtio,format=raw,cache=unsafe" >"$root.console" 2>&1 </dev/null || tail -5 "$root.console"
    debugfs -R "cat /root/result" "$disk" 2>/dev/null | tee "$root.result"
    tail -1 "$root.result" | grep -q '^[1-9][0-9]* passed, 0 failed$'
}
