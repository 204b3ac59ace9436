# shellcheck shell=bash
# Sourced by the scripts that install what they need.

# packages NAME:WHY...: installs the Debian packages that are missing.
packages() {
    local entry missing=()
    for entry; do
        if ! dpkg-query -W -f '${Status}\n' "${entry%%:*}" 2>/dev/null | grep -q ' installed$'; then
            echo "installing ${entry%%:*}: ${entry#*:}"
            missing+=("${entry%%:*}")
        fi
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    "${as_root[@]}" apt-get -qq update
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null
}

# The Debian archive that apt has here.
mirror() {
    # shellcheck disable=SC2016 # apt fills it in
    apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | awk '!/security/ && !found++'
}

# What building the desk camera takes.
# shellcheck disable=SC2034
build_packages=(
    "g++:compiles the library and the desk camera"
    "cmake:builds"
    "ninja-build:builds"
    "nlohmann-json3-dev:JSON output of cfgctl"
    "bubblewrap:makes the camera root, the only place where anything runs"
    "busybox-static:the camera's userland"
    "dash:the camera's shell"
    "util-linux:joins a running camera"
    "tzdata:the camera's zone files"
)

# What the benchmarks compare with; building them takes all of it.
# shellcheck disable=SC2034
bench_packages=(
    "zlib1g-dev:hashes too"
    "libdeflate-dev:hashes too"
    "libsqlite3-dev:keeps events too"
    "liblmdb-dev:keeps events too"
)

# What the tests of this machine take, sanitized ones and lint among them.
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
    "pkg-config:tests the installed library from outside"
    "abigail-tools:compares the binary interface with the one promised"
)

# What the tests on emulated 32-bit ARM take.
# shellcheck disable=SC2034
arm_packages=(
    "g++-arm-linux-gnueabihf:compiles for the camera"
    "g++-11-arm-linux-gnueabihf:the oldest compiler that the library is tried with"
    "g++-arm-linux-gnueabi:compiles for cameras without a floating-point unit"
    "qemu-user-static:runs the camera's programs"
)
