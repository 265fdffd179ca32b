# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# A fresh Debian in a temporary folder, whose name is in `root`. Sourced by scripts that install packages into it; they
# need root. Sets a trap that removes the folder.
# shellcheck source=scripts/private-apt.sh
source "${BASH_SOURCE[0]%/*}/private-apt.sh"
if ((EUID != 0)); then
    echo "root is needed to install packages in a fresh Debian"
    exit 3
fi
# A folder with enough room and where mounting is allowed.
work=$(mktemp -d /var/tmp/sarn-root-XXXXXX)
root=$work/root

remove_root() {
    umount -l "$root/proc" "$root/dev/pts" 2>/dev/null || true
    rm -rf --one-file-system "$work"
}
trap remove_root EXIT

# Runs a command in the root: inside COMMAND ARGUMENT...
inside() {
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
        chroot "$root" "$@"
}

# Runs a command and prints its time. If it fails, shows the end of its output without the lines about tests that passed:
# step TITLE COMMAND ARGUMENT...
step() {
    local what=$1 start=$SECONDS
    shift
    if ! "$@" >"$work/log" 2>&1; then
        sed '/ Passed /d; /^ *Start /d' "$work/log" | tail -n 100
        echo "failed: $what"
        exit 1
    fi
    printf '    %3d s  %s\n' $((SECONDS - start)) "$what"
}

# Sets up a release of Debian from the mirror that this machine uses: make_root RELEASE [PROCESSOR]
# Another processor than this machine's needs the packages in the section emulated-root of packages.txt.
make_root() {
    local mirror suite own processor=${2:-}
    own=$(dpkg --print-architecture)
    : "${processor:=$own}"
    if [[ $processor != "$own" ]]; then
        step "programs for $processor start under QEMU" \
            update-binfmts --enable "qemu-$(dpkg-architecture -A "$processor" -q DEB_TARGET_GNU_CPU)"
    fi
    read -r mirror suite < <(list_mirrors "$1")
    step "a fresh Debian $suite for $processor" \
        debootstrap --arch="$processor" --variant=minbase "$suite" "$root" "$mirror"
    mount -t proc proc "$root/proc"
    # Terminals, for the tests that type a password.
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$root/dev/pts"
    ln -sf pts/ptmx "$root/dev/ptmx"
    cp /etc/resolv.conf "$root/etc/" 2>/dev/null || true
}
