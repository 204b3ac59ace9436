include $(sort $(wildcard $(BR2_EXTERNAL_CFG_SET_PATH)/package/*/*.mk))
