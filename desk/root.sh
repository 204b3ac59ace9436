# shellcheck shell=bash
# Sourced by desk/camera, tests/in-root and scripts/arm-machine.

# A camera's folders: those the firmware only reads, those in RAM, and the others.
# shellcheck disable=SC2034
camera_read_only=(/audio /etc_ro /localization)
camera_written=(/etc /proc /tmp /var)
camera_found=(/flash /mnt/sdcard /var/run /var/log)

# camera_root BUILT [DIGITS]: sets `rooted` to the command line of a camera root
# that has the tools in BUILT/bin and BUILT/sbin; its other folders are empty. With
# --remount-ro / as the last option, only camera_written is writable. It inherits
# the descriptors 0 to 2 and DIGITS. It has its own processes, IPC objects, network
# and files; /proc is a plain folder, so the drivers' files can be real files there.
# Its root is the starting user in a new user namespace: it can read and write its
# files whatever their mode, and has no other rights on the machine.
camera_root() {
    rooted=("$1/sbin/leash" -k "${2:-}" bwrap --unshare-user --uid 0 --gid 0)
    # Older versions lack the option.
    [[ $(bwrap --help 2>&1) != *--disable-userns* ]] || rooted+=(--disable-userns)
    rooted+=(--cap-drop ALL --cap-add CAP_DAC_OVERRIDE
        --unshare-ipc --unshare-pid --unshare-net --unshare-uts --unshare-cgroup-try
        --hostname camera --clearenv --setenv PATH /sbin:/bin --setenv HOME / --chdir /
        --dev /dev --ro-bind "$1/bin" /bin --ro-bind "$1/sbin" /sbin
        --ro-bind /usr/lib /usr/lib --symlink usr/lib /lib --symlink desk /.camera-root)
    local folder
    for folder in "${camera_written[@]}"; do
        rooted+=(--tmpfs "$folder")
    done
    for folder in "${camera_found[@]}"; do
        rooted+=(--dir "$folder")
    done
    [ ! -d /usr/lib64 ] || rooted+=(--ro-bind /usr/lib64 /usr/lib64 --symlink usr/lib64 /lib64)
    # The firmware has the zone files of the world.
    [ ! -d /usr/share/zoneinfo ] ||
        rooted+=(--ro-bind /usr/share/zoneinfo /usr/share/zoneinfo)
}
