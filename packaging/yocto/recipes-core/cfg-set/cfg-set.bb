SUMMARY = "Configuration and device control of a Wi-Fi camera"
SECTION = "libs"
# No licence has been chosen yet.
LICENSE = "CLOSED"

# The source is the tree that this layer lies in; its header has the version.
inherit cmake externalsrc
EXTERNALSRC = "${@os.path.realpath('${THISDIR}/../../../..')}"
PV = "${@'.'.join(l.split()[2] for l in open(d.getVar('EXTERNALSRC') + '/cfg_set.h') if l.startswith('#define CFG_SET_VERSION_') and l.split()[2].isdigit())}"

EXTRA_OECMAKE = "-DBUILD_TESTING=OFF -DBUILD_SHARED_LIBS=ON"

# A path to the firmware's platform library builds the package cfgctl.
CFG_SET_PLATFORM ?= ""
DEPENDS += "${@'nlohmann-json' if d.getVar('CFG_SET_PLATFORM') else ''}"
EXTRA_OECMAKE += "-DCFG_SET_PLATFORM=${CFG_SET_PLATFORM}"

PACKAGES =+ "cfgctl"
FILES:cfgctl = "${bindir}/cfgctl ${datadir}/bash-completion"
