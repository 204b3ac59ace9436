################################################################################
#
# cfgctl
#
################################################################################

CFGCTL_SITE = $(BR2_EXTERNAL_CFG_SET_PATH)/../..
CFGCTL_SITE_METHOD = local
CFGCTL_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = --exclude /build
CFGCTL_PLATFORM = $(call qstrip,$(BR2_PACKAGE_CFGCTL_PLATFORM))
CFGCTL_DEPENDENCIES = cfg_set json-for-modern-cpp \
	$(call qstrip,$(BR2_PACKAGE_CFGCTL_PLATFORM_PACKAGE))
CFGCTL_CONF_OPTS = -DBUILD_TESTING=OFF -DCFG_SET_PLATFORM=$(CFGCTL_PLATFORM)

ifeq ($(BR2_PACKAGE_CFGCTL)$(BR_BUILDING)$(CFGCTL_PLATFORM),yy)
$(error cfgctl: BR2_PACKAGE_CFGCTL_PLATFORM has to name the platform library)
endif

# The library itself is the package cfg_set.
define CFGCTL_INSTALL_TARGET_CMDS
	DESTDIR=$(TARGET_DIR) $(BR2_CMAKE) --install $(CFGCTL_BUILDDIR) --component cfgctl
endef

$(eval $(cmake-package))
