################################################################################
#
# cfg_set
#
################################################################################

CFG_SET_SITE = $(BR2_EXTERNAL_CFG_SET_PATH)/../..
CFG_SET_SITE_METHOD = local
CFG_SET_INSTALL_STAGING = YES
CFG_SET_CONF_OPTS = -DBUILD_TESTING=OFF

ifeq ($(BR2_PACKAGE_CFG_SET_CFGCTL),y)
CFG_SET_DEPENDENCIES += json-for-modern-cpp
CFG_SET_CONF_OPTS += -DCFG_SET_PLATFORM=$(call qstrip,$(BR2_PACKAGE_CFG_SET_PLATFORM))
endif

$(eval $(cmake-package))
