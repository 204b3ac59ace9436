# shellcheck shell=bash
# Sourced by desk/camera and tests/in-root.

# camera_root BUILT: sets `root` to the bubblewrap command line of a camera
# root that holds the tools in BUILT/bin and BUILT/sbin and otherwise empty
# folders in RAM. Processes, IPC objects, network and files in it are its own;
# /proc is a plain folder, so that the drivers' files can be real files there.
# Its root is whoever starts it, in a user namespace of its own: it reads and
# writes its files whatever their mode, and may do nothing else to the machine.
camera_root() {
    root=(bwrap --unshare-user --uid 0 --gid 0 --cap-drop ALL --cap-add CAP_DAC_OVERRIDE
        --unshare-ipc --unshare-pid --unshare-net --unshare-uts --unshare-cgroup-try
        --hostname camera --clearenv --setenv PATH /sbin:/bin --setenv HOME / --chdir /
        --dev /dev --ro-bind "$1/bin" /bin --ro-bind "$1/sbin" /sbin
        --dir /proc --dir /etc --dir /tmp --dir /var/run --dir /var/log --dir /mnt/sdcard
        --dir /flash --ro-bind /usr/lib /usr/lib --symlink usr/lib /lib --symlink desk /.camera-root)
    [ ! -d /usr/lib64 ] || root+=(--ro-bind /usr/lib64 /usr/lib64 --symlink usr/lib64 /lib64)
    # The firmware carries the zone files of the world.
    [ ! -d /usr/share/zoneinfo ] ||
        root+=(--ro-bind /usr/share/zoneinfo /usr/share/zoneinfo)
}
