################################################################################
#
# cfg_set
#
################################################################################

CFG_SET_SITE = $(BR2_EXTERNAL_CFG_SET_PATH)/../..
CFG_SET_SITE_METHOD = local
CFG_SET_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = --exclude /build
CFG_SET_INSTALL_STAGING = YES
CFG_SET_CONF_OPTS = -DBUILD_TESTING=OFF -DCFG_SET_PC_PREFIX=/usr

$(eval $(cmake-package))
