#!/usr/bin/env bash
# Lets the kernel run arm64 executables through qemu-aarch64 (binfmt_misc), so that tests of the
# arm64 cross build can start further programs of that build. Mounts binfmt_misc when it is not
# mounted and registers Debian's qemu-user-binfmt entry when it is not registered. Runs as root.
set -euo pipefail

misc=/proc/sys/fs/binfmt_misc
entry=/usr/lib/binfmt.d/qemu-aarch64.conf

if [ ! -e "$misc/register" ]; then
    mount -t binfmt_misc binfmt_misc "$misc"
fi
if [ ! -e "$misc/qemu-aarch64" ]; then
    if [ ! -r "$entry" ]; then
        echo "enable-arm64-emulation: $entry is missing (install qemu-user-binfmt)" >&2
        exit 1
    fi
    grep -v '^#' "$entry" > "$misc/register"
fi
if [ "$(head -n 1 "$misc/qemu-aarch64")" != "enabled" ]; then
    echo 1 > "$misc/qemu-aarch64"
fi
