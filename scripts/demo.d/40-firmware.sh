# shellcheck shell=bash disable=SC2154
# Sourced by scripts/demo: the camera checks a firmware image that mkimage made,
# first whole, then with one damaged bit.

upgrade=$CAMERA_STATE/sdcard/upgrade

# build_image BOARD VERSION: builds an image on the camera's card.
build_image() {
    local words=(-A arm -O linux -T firmware -C none -a 0 -e 0 -n "$1" -d "$scratch/payload")
    head -c 20000 /dev/urandom >"$scratch/payload"
    mkimage "${words[@]}" "$upgrade/upgrade.bin" >/dev/null
    echo "$2" >"$upgrade/upgrade.dat"
}

# The checksum that gzip computes of the bytes after the header.
checksum_of_payload() {
    tail -c +65 "$upgrade/upgrade.bin" | gzip -c | tail -c 8 | od -An -N4 -tx4 --endian=little |
        tr -d ' '
}

printf '\nThe camera downloads a firmware image for this board and another (mkimage -n xq7h0c).\n'
build_image xq7h0c v5.1.0

step "Is it newer than the running firmware?" cfgctl firmware downloaded
so "its version v5.1.0 is newer" "printed   v5.1.0"
step "Is it undamaged, and for this board?" cfgctl firmware check /mnt/sdcard/upgrade/upgrade.bin
so "the board id in its header matches this board" "printed   board   ok"
so "the checksum of its header is right" "printed   header  ok"
so "the checksum of the rest is right" "printed   image   ok"
stated_checksum=$(checksum_of_payload)
step "What is the checksum of the rest?" \
    cfgctl crc /mnt/sdcard/upgrade/upgrade.bin --skip 64
so "gzip computes the same checksum" "printed   $stated_checksum"

printf '\nOne bit of the image changes on the card.\n'
byte=$(od -An -tu1 -j12345 -N1 "$upgrade/upgrade.bin")
# shellcheck disable=SC2059
printf "\\$(printf %o $((byte ^ 1)))" |
    dd of="$upgrade/upgrade.bin" bs=1 seek=12345 conv=notrunc status=none
step "Is it still undamaged?" cfgctl firmware check /mnt/sdcard/upgrade/upgrade.bin
so "the header is, since the damage is after it" "printed   header  ok"
so "the rest is not; gzip computes the same wrong checksum" "printed   image   failed  its checksum is \
$(checksum_of_payload), the header says $stated_checksum"

build_image xq7h03 v5.0.9
step "cfgctl rejects an image for other boards before it checks anything else." \
    cfgctl firmware check /mnt/sdcard/upgrade/upgrade.bin
so "it names the image's board and this one" \
    'printed   board  failed  it is for "xq7h03", this board is "xq7h0c"'
step "The image is also older than the running firmware." cfgctl firmware downloaded
so "the library does not accept the download and deletes it" \
    "reported  cfgctl: no newer firmware was downloaded; any other download is deleted"
step "What is left on the card?" sh -c 'ls /mnt/sdcard/upgrade | wc -l'
so "nothing is left of the rejected download" "printed   0"
