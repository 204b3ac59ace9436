# shellcheck shell=bash
# Sourced by the scripts that install what they need.

# retried COMMAND...: tries up to three times, since a mirror may be mid-update.
retried() {
    "$@" || { sleep 5 && "$@"; } || { sleep 20 && "$@"; }
}

# packages NAME:WHY...: installs missing Debian packages. On failure, reports what
# to do.
packages() {
    local entry missing=() as_root=()
    for entry; do
        if ! dpkg-query -W -f '${Status}\n' "${entry%%:*}" 2>/dev/null | grep -q ' installed$'; then
            echo "installing ${entry%%:*}: ${entry#*:}"
            missing+=("${entry%%:*}")
        fi
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    if { [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null; } && retried install_packages; then
        return 0
    fi
    echo "packages are missing; as root: apt-get install --no-install-recommends ${missing[*]}" >&2
    return 1
}

# Part of packages(), whose variables it uses. An old index may be good enough.
install_packages() {
    "${as_root[@]}" apt-get -qq update || true
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null
}

# The Debian archive that apt uses here.
mirror() {
    # shellcheck disable=SC2016 # apt fills it in
    apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | awk '!/security/ && !found++'
}

# own_release: the name of the release that this machine runs.
own_release() {
    (. /etc/os-release && echo "$VERSION_CODENAME")
}

# index RELEASE FOLDER ARCHITECTURE...: fetches the release's index into a separate
# apt state: `apt-get -c FOLDER/conf` uses it. Fails when the index is incomplete;
# the last line of FOLDER/log is the reason. Cuts the last byte off the indexes of
# releases in CFG_SET_CUT_INDEX.
index() {
    local release=$1 folder=$2 trust=signed-by=/usr/share/keyrings/debian-archive-keyring.gpg archive
    shift 2
    rm -rf "$folder/state"
    mkdir -p "$folder"/{state/lists/partial,cache/archives/partial}
    touch "$folder/status"
    archive=$(mirror)
    if [[ " ${CFG_SET_CUT_INDEX:-} " = *" $release "* ]]; then
        archive=file:$folder/cut trust=trusted=yes
        local packages=main/binary-$1/Packages
        mkdir -p "$folder/cut/dists/$release/${packages%/*}"
        printf 'Package: cut\n' >"$folder/cut/dists/$release/$packages"
        printf 'Codename: %s\nSHA256:\n %064d 14 %s\n' "$release" 0 "$packages" \
            >"$folder/cut/dists/$release/Release"
    fi
    echo "deb [$trust] $archive $release main" >"$folder/sources.list"
    cat >"$folder/conf" <<END
#clear APT::Update::Post-Invoke;
#clear APT::Update::Post-Invoke-Success;
#clear DPkg::Post-Invoke;
APT::Architecture "$1";
APT::Architectures { $(printf '"%s"; ' "$@")};
APT::Sandbox::User "";
APT::Update::Error-Mode "any";
Dir::Etc::sourcelist "$folder/sources.list";
Dir::Etc::sourceparts "-";
Dir::State "$folder/state";
Dir::State::status "$folder/status";
Dir::Cache "$folder/cache";
END
    logged "$folder/log" apt-get -qq -c "$folder/conf" update
}

# logged LOG COMMAND...: retried, with all output in LOG. On failure, the first error
# becomes the last line of LOG.
logged() {
    retried "${@:2}" >"$1" 2>&1 || {
        { grep -m 1 '^E: ' "$1" || tail -n 1 "$1"; } | sed 's/^E: //; s/ \[IP: .*//' >"$1.last"
        cat "$1.last" >>"$1"
        return 1
    }
}

# For the desk camera.
# shellcheck disable=SC2034
build_packages=(
    "g++:compiles the library and the desk camera"
    "cmake:builds"
    "ninja-build:builds"
    "nlohmann-json3-dev:JSON output of cfgctl"
    "bubblewrap:makes the camera root, the only place where anything runs"
    "busybox-static:the camera's userland"
    "dash:the camera's shell"
    "util-linux:starts and locks a camera"
    "tzdata:the camera's zone files"
)

# References for the benchmarks; their build needs all of them.
# shellcheck disable=SC2034
bench_packages=(
    "zlib1g-dev:hashes too"
    "libdeflate-dev:hashes too"
    "libsqlite3-dev:keeps events too"
    "liblmdb-dev:keeps events too"
)

# For the tests on this machine, with sanitizers and lint.
# shellcheck disable=SC2034
test_packages=(
    "googletest:the tests"
    "libgmock-dev:the tests, compiled"
    "u-boot-tools:makes firmware images"
    "clang:second compiler, with the sanitizers"
    "libclang-rt-14-dev:the sanitizers"
    "clang-format:formatting"
    "clang-tidy:lint"
    "cppcheck:lint"
    "shellcheck:lint of the scripts"
    "doxygen:the reference, without warnings"
    "wpasupplicant:judges the supplicant file, without hardware or network"
    "locales:numbers with commas, for the plot"
    "pkg-config:tests the installed library from outside"
    "abigail-tools:compares the binary interface with the one promised"
)

# For the tests on emulated 32-bit ARM.
# shellcheck disable=SC2034
arm_packages=(
    "g++-arm-linux-gnueabihf:compiles for the camera"
    "g++-11-arm-linux-gnueabihf:the oldest compiler that the library is tried with"
    "g++-arm-linux-gnueabi:compiles for cameras without a floating-point unit"
    "qemu-user-static:runs the camera's programs"
)
