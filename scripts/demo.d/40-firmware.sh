# shellcheck shell=bash disable=SC2154
# Sourced by scripts/demo: a firmware image from the tool that makes real ones,
# checked by the camera, then with one bit of it damaged.

upgrade=$CAMERA_STATE/sdcard/upgrade

# build_image BOARD VERSION: on this machine, onto the camera's card.
build_image() {
    local words=(-A arm -O linux -T firmware -C none -a 0 -e 0 -n "$1" -d "$scratch/payload")
    head -c 20000 /dev/urandom >"$scratch/payload"
    mkimage "${words[@]}" "$upgrade/upgrade.bin" >/dev/null
    echo "$2" >"$upgrade/upgrade.dat"
}

# What gzip, which knows nothing of images, computes of the bytes after the header.
checksum_of_payload() {
    tail -c +65 "$upgrade/upgrade.bin" | gzip -c | tail -c 8 | od -An -N4 -tx4 --endian=little |
        tr -d ' '
}

printf '\nA firmware image for this board and another is built (mkimage -n xq7h0c) and downloaded.\n'
build_image xq7h0c v5.1.0

step "Is it newer than what runs?" cfgctl firmware downloaded
so "its version v5.1.0 is newer than what runs" "printed   v5.1.0"
step "Is it whole, and for this board?" cfgctl firmware check /mnt/sdcard/upgrade/upgrade.bin
so "the board in its header is this board" "printed   board   ok"
so "the checksum of its header is right" "printed   header  ok"
so "and so is the one of everything behind it" "printed   image   ok"
stated_checksum=$(checksum_of_payload)
step "The checksum of what follows the header:" \
    cfgctl crc /mnt/sdcard/upgrade/upgrade.bin --skip 64
so "gzip, which knows nothing of images, computes the same" "printed   $stated_checksum"

printf '\nOne bit of it is damaged on the card.\n'
byte=$(od -An -tu1 -j12345 -N1 "$upgrade/upgrade.bin")
# shellcheck disable=SC2059
printf "\\$(printf %o $((byte ^ 1)))" |
    dd of="$upgrade/upgrade.bin" bs=1 seek=12345 conv=notrunc status=none
step "Is it still whole?" cfgctl firmware check /mnt/sdcard/upgrade/upgrade.bin
so "the header still is whole, since the damage is behind it" "printed   header  ok"
so "the rest is not, and gzip computes the same wrong checksum" "printed   image   failed  its checksum is \
$(checksum_of_payload), the header states $stated_checksum"

build_image xq7h03 v5.0.9
step "An image for other boards is refused before anything else of it is looked at." \
    cfgctl firmware check /mnt/sdcard/upgrade/upgrade.bin
so "cfgctl names the board it is for and this one" \
    'printed   board  failed  it is for "xq7h03", this board is "xq7h0c"'
step "It is older than what runs, too." cfgctl firmware downloaded
so "it counts as no download, and was deleted" \
    "reported  cfgctl: no newer firmware is downloaded; what there was of one is deleted"
step "What is left of it on the card?" sh -c 'ls /mnt/sdcard/upgrade | wc -l'
so "nothing is left of the refused download" "printed   0"
