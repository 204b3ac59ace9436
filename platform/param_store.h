/*
 * The parameter store: the firmware's persistent key/value store of text
 * values. The firmware supplies these four functions; cfg_set only calls them.
 *
 * All return 0 for success and non-zero for failure. They are called from
 * several processes at once: the store keeps its own reads and writes
 * consistent.
 *
 * A value has at most 511 characters (an alarm clock's; all others at most 255),
 * a key at most 25, both any bytes but 0. The store keeps them as they are.
 */
#ifndef CFG_SET_PLATFORM_PARAM_STORE_H
#define CFG_SET_PLATFORM_PARAM_STORE_H

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Puts the value of `key` into `buffer`, always terminated within its `size`
 * bytes. Non-zero when the value cannot be read, an absent key included: the
 * buffer is then left as it was. The store may cut a value that does not fit, or
 * fail: the buffers of cfg_set hold what a setting may be and take a longer value for
 * cut or absent, and cfgctl asks again with a larger one.
 */
int param_get(const char *key, char *buffer, unsigned int size);

/*
 * Puts `text` under `key` in the working copy. It does not survive a restart
 * before param_save. `text` is NULL when a sound's setter or nimbus_set_config
 * is given NULL: cfg_set hands it on and reports a refusal.
 */
int param_set(const char *key, const char *text);

/* Makes the working copy the one that a restart brings back. */
int param_save(void);

/* Removes `key` from the working copy. */
int param_unset(const char *key);

#ifdef __cplusplus
}
#endif

#endif
