SUMMARY = "Configuration and device control of a Wi-Fi camera"
SECTION = "libs"
# There is no licence yet.
LICENSE = "CLOSED"

# The source is the tree that contains this layer; its header has the version.
inherit cmake externalsrc
EXTERNALSRC = "${@os.path.realpath('${THISDIR}/../../../..')}"
PV = "${@cfg_set_version(d)}"

def cfg_set_version(d):
    with open(d.getVar('EXTERNALSRC') + '/cfg_set.h') as header:
        lines = [line.split() for line in header if line.startswith('#define CFG_SET_VERSION_')]
    return '.'.join(words[2] for words in lines if words[2].isdigit())

EXTRA_OECMAKE = "-DBUILD_TESTING=OFF -DBUILD_SHARED_LIBS=ON -DCFG_SET_PC_PREFIX=${prefix}"

# With the path of the firmware's platform library, builds the package cfgctl.
CFG_SET_PLATFORM ?= ""
DEPENDS += "${@'nlohmann-json' if d.getVar('CFG_SET_PLATFORM') else ''}"
EXTRA_OECMAKE += "-DCFG_SET_PLATFORM=${CFG_SET_PLATFORM}"

PACKAGES =+ "cfgctl"
FILES:cfgctl = "${bindir}/cfgctl ${datadir}/bash-completion"
