# shellcheck shell=bash
# Sourced by desk/camera, tests/in-root and scripts/arm-machine.

# A camera's folders: what the firmware only reads, where it writes in RAM, and
# what else it finds.
# shellcheck disable=SC2034
camera_read_only=(/audio /etc_ro /localization)
camera_written=(/etc /proc /tmp /var)
camera_found=(/flash /mnt/sdcard /var/run /var/log)

# camera_root BUILT [DIGITS]: sets `rooted` to the command line of a camera root
# that holds the tools in BUILT/bin and BUILT/sbin and otherwise empty folders;
# --remount-ro / as its last option leaves only camera_written to write. Of the
# caller's descriptors it has 0 to 2 and DIGITS. Processes, IPC objects, network
# and files in it are its own; /proc is a plain folder, so that the drivers' files
# can be real files there. Its root is whoever starts it, in a user namespace of
# its own: it reads and writes its files whatever their mode, and may do nothing
# else to the machine.
camera_root() {
    rooted=("$1/sbin/leash" -k "${2:-}" bwrap --unshare-user --uid 0 --gid 0)
    # Older ones have not.
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
    # The firmware carries the zone files of the world.
    [ ! -d /usr/share/zoneinfo ] ||
        rooted+=(--ro-bind /usr/share/zoneinfo /usr/share/zoneinfo)
}
