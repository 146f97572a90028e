/* SPDX-License-Identifier: Apache-2.0 */

/*
 * The UEI library's C interface.
 *
 * Every function returns 0 or a reason code. All of them are called on one thread, in this order:
 * stop, the setters, start, the callbacks, then sessions. A call before QSP_start, on a null or
 * released session, or with a null place for a result is refused with a code.
 *
 * Text handed out belongs to the session and stays valid until the next call on it. Indices count
 * from 0 in the list retrieved last; one outside of it is refused. Look-ups go out as requests
 * through the post function; one that fails ends the look-up with the code that the post returned.
 */
#ifndef QSP_QSP_H
#define QSP_QSP_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct QSP_session_s* QSP_SESSION;

/* --- Start and stop --- */

int QSP_stop(void);
/* configFile: path of the library's own configuration, without ORLU_ROOT. */
int QSP_start(const char* configFile);
int QSP_set_host_log_function(int (*log)(const char* text));
int QSP_set_log_level(uint32_t level);
int QSP_set_online_vector(const char* vector);
int QSP_set_online_unique_id(const char* identity);
int QSP_set_host_callback_function(int (*callback)(uint32_t event, void* data));
/* The post function fills response with memory from malloc, which the library frees. */
int uei_set_callback_httppost(int (*post)(const char* body, uint32_t bodyLength, char** response,
                                          uint32_t* responseLength, const char* url));

/* --- Sessions; kind 2 is the online one --- */

int QSP_get_lookup_session(const char* configFile, uint32_t kind, QSP_SESSION* session);
int QSP_release_lookup_session(QSP_SESSION session);
int QSP_get_version_string(QSP_SESSION session, const char** text);

/* --- Catalogue; 44 means that nothing was found --- */

int QSP_retrieve_device_types_total(QSP_SESSION session, uint32_t* total);
int QSP_get_device_type_name(QSP_SESSION session, uint32_t index, const char** name);
int QSP_retrieve_brands_total(QSP_SESSION session, const char* type, const char* prefix,
                              uint32_t one, uint32_t* total);
int QSP_get_brand_name(QSP_SESSION session, uint32_t index, const char** name);
int QSP_option_set_minimum_fuzzy_threshold(QSP_SESSION session, int32_t threshold);
int QSP_retrieve_models_total(QSP_SESSION session, uint32_t brand, const char* hint, uint32_t one,
                              uint32_t* total);
int QSP_get_model_name(QSP_SESSION session, uint32_t index, const char** name);
int QSP_get_model_fuzzy_value(QSP_SESSION session, uint32_t index, uint32_t* value);
int QSP_retrieve_codesets_by_model_total(QSP_SESSION session, uint32_t model, uint32_t* total);
int QSP_retrieve_codesets_by_brand_total(QSP_SESSION session, uint32_t brand, uint32_t* total);
int QSP_get_codeset_name(QSP_SESSION session, uint32_t index, const char** name);

/* --- Guided test --- */

/* Non-zero: there is no test for the brand. */
int QSP_osm_retrieve_test_keys_total(QSP_SESSION session, const char* type, const char* brand,
                                     uint32_t* total);
/* Key -1: there is none. */
int QSP_osm_get_first_test_key(QSP_SESSION session, int32_t* key);
int QSP_osm_get_next_test_key(QSP_SESSION session, int32_t* key);
int QSP_osm_get_current_codeset_name(QSP_SESSION session, const char** name);
/* failed: 0 if the key worked, else 1. status: -1 error, 0 or 1 go on, 2 code set found, 3 none
   left; 4 with status 3 is a success. */
int QSP_osm_report_test_result(QSP_SESSION session, int32_t failed, int32_t* status);
int QSP_osm_retrieve_codesets_total(QSP_SESSION session, uint32_t* total);
int QSP_osm_get_codesets_tested(QSP_SESSION session, uint32_t* tested);

/* --- Code set binaries; 227: the download quota is used up, 15: the request was not sent --- */

/* table[5] is the code set callback, int (*)(const char *name, const uint8_t *data, uint32_t size),
   which returns 0 or 4; the other places are null. */
int UEI_register_ir_callbacks(void* const table[14]);
/* Runs the code set callback before it returns. */
int QSP_send_codeset_by_name(QSP_SESSION session, const char* name, uint32_t two);

/* --- Discovery: retrieve, then get --- */

int QSP_discover_retrieve_info_cec(QSP_SESSION session, uint32_t vendorId, uint16_t logicalAddr,
                                   const char* osd);
int QSP_discover_retrieve_info_edid(QSP_SESSION session, const uint8_t* edid, uint32_t length);
int QSP_discover_device_info_get(QSP_SESSION session, const char** type, const char** brand,
                                 const char** codeset, uint8_t* flag);

#ifdef __cplusplus
}
#endif

#endif
