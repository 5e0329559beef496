/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Names for the numbers that select something: message types, categories, forms, discriminators.
 *
 * The message type of a message selects its category. The discriminator of the body, its `type`,
 * selects the form of the payload: raw bytes, a string, a record or a list. Server and clients
 * agree on the policies that the numbers stand for. A name only says what the format says:
 *
 * | name                     | number                                                           |
 * |--------------------------|------------------------------------------------------------------|
 * | `MDM_TYPE_WIFI`          | a message type of wifi; `MDM_TYPE_WIFI_2` is the other           |
 * | `MDM_CATEGORY_WIFI`      | the category wifi                                                |
 * | `MDM_FORM_WIFI_NETWORK`  | the form "network" of wifi                                       |
 * | `MDM_WIFI_NETWORK`       | the discriminator of this form                                   |
 * | `MDM_WIFI_PAIR_305`      | a discriminator of the form "pair", which several numbers select |
 *
 * Do not mix them up: a switch over mdm_form_of() has cases like `MDM_FORM_WIFI_NETWORK`. Compilers
 * warn about a case like `MDM_WIFI_NETWORK`, which is a discriminator.
 *
 * A form that has no discriminator here is selected by every number that is not listed. The
 * functions `mdm_wifi_form()` and so on say which form a discriminator selects; mdm_form_of() of
 * mdm/message.h says which form a message has.
 *
 * The categories are in the order of their message types.
 *
 * Thread safety: the functions keep no state.
 *
 * @code{.c}
 * #include <mdm/types.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     const mdm_category_t category = mdm_category_of(MDM_TYPE_WIFI);
 *     const mdm_form_t form = mdm_wifi_form(MDM_WIFI_PAIR_305);
 *     printf("%s, %s\n", mdm_category_name(category), mdm_form_name(form));
 *     return 0;
 * }
 * // prints: wifi, wifi.pair
 * @endcode
 */
#ifndef MDM_TYPES_H
#define MDM_TYPES_H

#include <stdint.h>

#include "mdm/api.h"

/** The message types that have a category. The codec treats both types of a category alike. */
enum {
    /** @{ A message type of the category in its name. */
    MDM_TYPE_ADMIN = 1,
    MDM_TYPE_ADMIN_2 = 2,
    MDM_TYPE_PWD = 3,
    MDM_TYPE_PWD_2 = 4,
    MDM_TYPE_SECURITY = 5,
    MDM_TYPE_SECURITY_2 = 6,
    MDM_TYPE_WIFI = 7,
    MDM_TYPE_WIFI_2 = 8,
    MDM_TYPE_BLUETOOTH = 9,
    MDM_TYPE_BLUETOOTH_2 = 10,
    MDM_TYPE_EAS = 11,
    MDM_TYPE_EAS_2 = 12,
    MDM_TYPE_APP = 13,
    MDM_TYPE_APP_RES = 14,
    MDM_TYPE_ROAMING = 15,
    MDM_TYPE_ROAMING_RES = 16,
    MDM_TYPE_MISC = 17,
    MDM_TYPE_MISC_2 = 18,
    MDM_TYPE_APN = 21,
    MDM_TYPE_APN_2 = 22,
    MDM_TYPE_BROWSER = 23,
    MDM_TYPE_BROWSER_2 = 24,
    MDM_TYPE_DATE_TIME = 25,
    MDM_TYPE_DATE_TIME_2 = 26,
    MDM_TYPE_REMOTE = 27,
    MDM_TYPE_REMOTE_2 = 28,
    MDM_TYPE_VPN = 29,
    MDM_TYPE_VPN_2 = 30,
    MDM_TYPE_FIREWALL = 31,
    MDM_TYPE_FIREWALL_2 = 32,
    MDM_TYPE_RES = 33,
    MDM_TYPE_RES_2 = 34,
    MDM_TYPE_PHONE_RES = 35,
    MDM_TYPE_PHONE_RES_2 = 36,
    MDM_TYPE_ENTERPRISE = 37,
    MDM_TYPE_ENTERPRISE_2 = 38,
    MDM_TYPE_EMAIL = 39,
    MDM_TYPE_EMAIL_2 = 40,
    MDM_TYPE_KIOSK = 45,
    MDM_TYPE_KIOSK_2 = 46,
    MDM_TYPE_CONTAINER = 47,
    MDM_TYPE_CONTAINER_2 = 48,
    MDM_TYPE_LOCATION = 49,
    MDM_TYPE_LOCATION_2 = 50,
    MDM_TYPE_LOG_MANAGER = 51,
    MDM_TYPE_LOG_MANAGER_2 = 52,
    MDM_TYPE_PLATFORM = 53,
    MDM_TYPE_PLATFORM_2 = 54,
    MDM_TYPE_APP_CB = 61,
    MDM_TYPE_MISC_CB = 63,
    /** @} */
};

/** The categories, in the order of their message types. */
typedef enum mdm_category {
    MDM_CATEGORY_NONE = 0, /**< Of every message type that has no category. */
    /** @{ The category in its name. */
    MDM_CATEGORY_ADMIN,
    MDM_CATEGORY_PWD,
    MDM_CATEGORY_SECURITY,
    MDM_CATEGORY_WIFI,
    MDM_CATEGORY_BLUETOOTH,
    MDM_CATEGORY_EAS,
    MDM_CATEGORY_APP,
    MDM_CATEGORY_APP_RES,
    MDM_CATEGORY_ROAMING,
    MDM_CATEGORY_ROAMING_RES,
    MDM_CATEGORY_MISC,
    MDM_CATEGORY_APN,
    MDM_CATEGORY_BROWSER,
    MDM_CATEGORY_DATE_TIME,
    MDM_CATEGORY_REMOTE,
    MDM_CATEGORY_VPN,
    MDM_CATEGORY_FIREWALL,
    MDM_CATEGORY_RES,
    MDM_CATEGORY_PHONE_RES,
    MDM_CATEGORY_ENTERPRISE,
    MDM_CATEGORY_EMAIL,
    MDM_CATEGORY_KIOSK,
    MDM_CATEGORY_CONTAINER,
    MDM_CATEGORY_LOCATION,
    MDM_CATEGORY_LOG_MANAGER,
    MDM_CATEGORY_PLATFORM,
    MDM_CATEGORY_APP_CB,
    MDM_CATEGORY_MISC_CB,
    /** @} */
} mdm_category_t;

/** @cond The number of a category's first form. */
#define MDM_FIRST_FORM(category) (MDM_CATEGORY_##category * 8)
/** @endcond */

/**
 * The forms of all categories. The number of a form is 8 times its category, and its place among
 * the forms of the category.
 */
typedef enum mdm_form {
    MDM_FORM_NONE = 0, /**< Of every message whose type has no category. */

    /** The query whether a client is registered. */
    MDM_FORM_ADMIN_QUERY = MDM_FIRST_FORM(ADMIN),
    /** A number and two strings. */
    MDM_FORM_ADMIN_GENERAL,
    /** A record: ::mdm_pwd_policy_t. */
    MDM_FORM_PWD_POLICY = MDM_FIRST_FORM(PWD),
    /** Raw bytes. */
    MDM_FORM_PWD_DATA,
    /** A record: ::mdm_security_item_t. */
    MDM_FORM_SECURITY_ITEM = MDM_FIRST_FORM(SECURITY),
    /** A list of strings. */
    MDM_FORM_SECURITY_STRINGS,
    /** A list of ::mdm_security_account_t. */
    MDM_FORM_SECURITY_ACCOUNTS,
    /** Raw bytes. */
    MDM_FORM_SECURITY_DATA,
    /** A record: ::mdm_wifi_pair_t. */
    MDM_FORM_WIFI_PAIR = MDM_FIRST_FORM(WIFI),
    /** A list of strings, the names of networks. */
    MDM_FORM_WIFI_SSIDS,
    /** A record: ::mdm_wifi_dhcp_t. */
    MDM_FORM_WIFI_DHCP,
    /** A record: ::mdm_wifi_triple_t. */
    MDM_FORM_WIFI_TRIPLE,
    /** A record: ::mdm_wifi_network_t. */
    MDM_FORM_WIFI_NETWORK,
    /** Raw bytes. */
    MDM_FORM_WIFI_DATA,
    /** A list of strings, the names of devices. */
    MDM_FORM_BLUETOOTH_NAMES = MDM_FIRST_FORM(BLUETOOTH),
    /** Raw bytes. */
    MDM_FORM_BLUETOOTH_DATA,
    /** A record: ::mdm_eas_account_t. */
    MDM_FORM_EAS_ACCOUNT = MDM_FIRST_FORM(EAS),
    /** Three strings of an ::mdm_eas_account_t. */
    MDM_FORM_EAS_SETTINGS,
    /** A list of ::mdm_eas_account_t. */
    MDM_FORM_EAS_ACCOUNTS,
    /** A record: ::mdm_eas_value_t. */
    MDM_FORM_EAS_VALUE,
    /** A list of strings, package names. */
    MDM_FORM_APP_PACKAGES = MDM_FIRST_FORM(APP),
    /** A record: ::mdm_app_num_pair_t. */
    MDM_FORM_APP_NUM_PAIR,
    /** A record: ::mdm_app_pair_t. */
    MDM_FORM_APP_PAIR,
    /** Raw bytes. */
    MDM_FORM_APP_DATA,
    /** A list of strings, package names. */
    MDM_FORM_APP_RES_PACKAGES = MDM_FIRST_FORM(APP_RES),
    /** A list of ::mdm_app_res_item_t. */
    MDM_FORM_APP_RES_ITEMS,
    /** A list of ::mdm_app_control_info_t. */
    MDM_FORM_APP_RES_CONTROLS,
    /** Raw bytes. */
    MDM_FORM_APP_RES_DATA,
    /** A record: ::mdm_roaming_data_t. */
    MDM_FORM_ROAMING_RECORD = MDM_FIRST_FORM(ROAMING),
    /** The head alone. */
    MDM_FORM_ROAMING_RES_HEAD = MDM_FIRST_FORM(ROAMING_RES),
    /** An array of strings. */
    MDM_FORM_MISC_ARRAY = MDM_FIRST_FORM(MISC),
    /** The head alone. */
    MDM_FORM_MISC_HEAD,
    /** A record: ::mdm_misc_str_t. */
    MDM_FORM_MISC_TEXT,
    /** A list of strings, in the place of `param`. */
    MDM_FORM_MISC_STRINGS,
    /** A record: ::mdm_book_info_t. */
    MDM_FORM_MISC_BOOK,
    /** A record: ::mdm_misc_str_pair_t. */
    MDM_FORM_MISC_PAIR,
    /** Raw bytes. */
    MDM_FORM_MISC_DATA,
    /** A record: ::mdm_apn_account_t. */
    MDM_FORM_APN_PROFILE = MDM_FIRST_FORM(APN),
    /** A list of ::mdm_apn_account_t. */
    MDM_FORM_APN_PROFILES,
    /** Raw bytes. */
    MDM_FORM_APN_DATA,
    /** Raw bytes, which no receiver reads. */
    MDM_FORM_BROWSER_DATA = MDM_FIRST_FORM(BROWSER),
    /** Raw bytes. */
    MDM_FORM_DATE_TIME_DATA = MDM_FIRST_FORM(DATE_TIME),
    /** Raw bytes. */
    MDM_FORM_REMOTE_DATA = MDM_FIRST_FORM(REMOTE),
    /** Raw bytes. */
    MDM_FORM_VPN_DATA = MDM_FIRST_FORM(VPN),
    /** Raw bytes. */
    MDM_FORM_FIREWALL_DATA = MDM_FIRST_FORM(FIREWALL),
    /** Raw bytes. */
    MDM_FORM_RES_DATA = MDM_FIRST_FORM(RES),
    /** A record: ::mdm_phone_res_item_t. */
    MDM_FORM_PHONE_RES_ITEM = MDM_FIRST_FORM(PHONE_RES),
    /** A record: ::mdm_phone_res_ext_t. */
    MDM_FORM_PHONE_RES_EXT,
    /** Raw bytes, sized and released as an ::mdm_phone_res_item_t. */
    MDM_FORM_PHONE_RES_RAW_ITEM,
    /** Raw bytes. */
    MDM_FORM_PHONE_RES_DATA,
    /** Raw bytes, which no receiver reads. */
    MDM_FORM_ENTERPRISE_DATA = MDM_FIRST_FORM(ENTERPRISE),
    /** A record: ::mdm_email_account_t. */
    MDM_FORM_EMAIL_ACCOUNT = MDM_FIRST_FORM(EMAIL),
    /** Three strings of an ::mdm_email_account_t. */
    MDM_FORM_EMAIL_SETTINGS,
    /** A list of ::mdm_email_account_t. */
    MDM_FORM_EMAIL_ACCOUNTS,
    /** A record: ::mdm_email_value_t. */
    MDM_FORM_EMAIL_VALUE,
    /** A string. */
    MDM_FORM_KIOSK_TEXT = MDM_FIRST_FORM(KIOSK),
    /** A list of `uint32_t`, hardware keys. */
    MDM_FORM_KIOSK_KEYS,
    /** A list of ::mdm_kiosk_key_pair_t. */
    MDM_FORM_KIOSK_KEY_PAIRS,
    /** Raw bytes. */
    MDM_FORM_KIOSK_DATA,
    /** A record: ::mdm_container_item_t. */
    MDM_FORM_CONTAINER_ITEM = MDM_FIRST_FORM(CONTAINER),
    /** A record: ::mdm_container_short_item_t. */
    MDM_FORM_CONTAINER_SHORT_ITEM,
    /** Raw bytes. */
    MDM_FORM_CONTAINER_DATA,
    /** The head alone. */
    MDM_FORM_CONTAINER_HEAD,
    /** The head alone. */
    MDM_FORM_LOCATION_HEAD = MDM_FIRST_FORM(LOCATION),
    /** A string. */
    MDM_FORM_LOG_MANAGER_TEXT = MDM_FIRST_FORM(LOG_MANAGER),
    /** A byte. */
    MDM_FORM_LOG_MANAGER_BYTE,
    /** A text, a number and a flag. */
    MDM_FORM_PLATFORM_FLAG = MDM_FIRST_FORM(PLATFORM),
    /** A text and a number. */
    MDM_FORM_PLATFORM_NUMBER,
    /** A text. */
    MDM_FORM_PLATFORM_TEXT,
    /** A number and two strings. */
    MDM_FORM_APP_CB_DETAIL = MDM_FIRST_FORM(APP_CB),
    /** The head alone. */
    MDM_FORM_APP_CB_HEAD,
    /** A byte, a number and a string. */
    MDM_FORM_MISC_CB_DETAIL = MDM_FIRST_FORM(MISC_CB),
    /** The head alone. */
    MDM_FORM_MISC_CB_HEAD,
} mdm_form_t;

/** The discriminators of admin that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_ADMIN_QUERY = 0,
    /** @} */
    IS_CLIENT_REGISTERED = MDM_ADMIN_QUERY, /**< The query whether a client is registered. */
};

/** @param type  the discriminator of a body of admin. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_admin_form(uint32_t type)
{
    switch (type) {
    case MDM_ADMIN_QUERY:
        return MDM_FORM_ADMIN_QUERY;
    default:
        return MDM_FORM_ADMIN_GENERAL;
    }
}

/** The discriminators of pwd that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_PWD_POLICY = 40,
    /** @} */
};

/** @param type  the discriminator of a body of pwd. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_pwd_form(uint32_t type)
{
    switch (type) {
    case MDM_PWD_POLICY:
        return MDM_FORM_PWD_POLICY;
    default:
        return MDM_FORM_PWD_DATA;
    }
}

/** The discriminators of security that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_SECURITY_ITEM_56 = 56,
    MDM_SECURITY_ITEM_76 = 76,
    MDM_SECURITY_STRINGS_68 = 68,
    MDM_SECURITY_STRINGS_69 = 69,
    MDM_SECURITY_ACCOUNTS_70 = 70,
    MDM_SECURITY_ACCOUNTS_71 = 71,
    /** @} */
};

/** @param type  the discriminator of a body of security. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_security_form(uint32_t type)
{
    switch (type) {
    case MDM_SECURITY_ITEM_56:
    case MDM_SECURITY_ITEM_76:
        return MDM_FORM_SECURITY_ITEM;
    case MDM_SECURITY_STRINGS_68:
    case MDM_SECURITY_STRINGS_69:
        return MDM_FORM_SECURITY_STRINGS;
    case MDM_SECURITY_ACCOUNTS_70:
    case MDM_SECURITY_ACCOUNTS_71:
        return MDM_FORM_SECURITY_ACCOUNTS;
    default:
        return MDM_FORM_SECURITY_DATA;
    }
}

/** The discriminators of wifi that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_WIFI_PAIR_305 = 305,
    MDM_WIFI_PAIR_307 = 307,
    MDM_WIFI_PAIR_309 = 309,
    MDM_WIFI_PAIR_311 = 311,
    MDM_WIFI_PAIR_313 = 313,
    MDM_WIFI_PAIR_315 = 315,
    MDM_WIFI_PAIR_317 = 317,
    MDM_WIFI_PAIR_324 = 324,
    MDM_WIFI_PAIR_326 = 326,
    MDM_WIFI_PAIR_328 = 328,
    MDM_WIFI_PAIR_330 = 330,
    MDM_WIFI_PAIR_332 = 332,
    MDM_WIFI_PAIR_339 = 339,
    MDM_WIFI_SSIDS_290 = 290,
    MDM_WIFI_SSIDS_344 = 344,
    MDM_WIFI_SSIDS_346 = 346,
    MDM_WIFI_SSIDS_348 = 348,
    MDM_WIFI_SSIDS_349 = 349,
    MDM_WIFI_SSIDS_350 = 350,
    MDM_WIFI_SSIDS_352 = 352,
    MDM_WIFI_DHCP = 88,
    MDM_WIFI_TRIPLE = 319,
    MDM_WIFI_NETWORK = 345,
    /** @} */
};

/** @param type  the discriminator of a body of wifi. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_wifi_form(uint32_t type)
{
    switch (type) {
    case MDM_WIFI_PAIR_305:
    case MDM_WIFI_PAIR_307:
    case MDM_WIFI_PAIR_309:
    case MDM_WIFI_PAIR_311:
    case MDM_WIFI_PAIR_313:
    case MDM_WIFI_PAIR_315:
    case MDM_WIFI_PAIR_317:
    case MDM_WIFI_PAIR_324:
    case MDM_WIFI_PAIR_326:
    case MDM_WIFI_PAIR_328:
    case MDM_WIFI_PAIR_330:
    case MDM_WIFI_PAIR_332:
    case MDM_WIFI_PAIR_339:
        return MDM_FORM_WIFI_PAIR;
    case MDM_WIFI_SSIDS_290:
    case MDM_WIFI_SSIDS_344:
    case MDM_WIFI_SSIDS_346:
    case MDM_WIFI_SSIDS_348:
    case MDM_WIFI_SSIDS_349:
    case MDM_WIFI_SSIDS_350:
    case MDM_WIFI_SSIDS_352:
        return MDM_FORM_WIFI_SSIDS;
    case MDM_WIFI_DHCP:
        return MDM_FORM_WIFI_DHCP;
    case MDM_WIFI_TRIPLE:
        return MDM_FORM_WIFI_TRIPLE;
    case MDM_WIFI_NETWORK:
        return MDM_FORM_WIFI_NETWORK;
    default:
        return MDM_FORM_WIFI_DATA;
    }
}

/** The discriminators of bluetooth that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_BLUETOOTH_NAMES_91 = 91,
    MDM_BLUETOOTH_NAMES_220 = 220,
    MDM_BLUETOOTH_NAMES_221 = 221,
    MDM_BLUETOOTH_NAMES_222 = 222,
    MDM_BLUETOOTH_NAMES_223 = 223,
    MDM_BLUETOOTH_NAMES_224 = 224,
    MDM_BLUETOOTH_NAMES_225 = 225,
    MDM_BLUETOOTH_NAMES_227 = 227,
    MDM_BLUETOOTH_NAMES_230 = 230,
    MDM_BLUETOOTH_NAMES_231 = 231,
    MDM_BLUETOOTH_NAMES_233 = 233,
    MDM_BLUETOOTH_NAMES_234 = 234,
    MDM_BLUETOOTH_NAMES_235 = 235,
    MDM_BLUETOOTH_NAMES_237 = 237,
    /** @} */
};

/** @param type  the discriminator of a body of bluetooth. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_bluetooth_form(uint32_t type)
{
    switch (type) {
    case MDM_BLUETOOTH_NAMES_91:
    case MDM_BLUETOOTH_NAMES_220:
    case MDM_BLUETOOTH_NAMES_221:
    case MDM_BLUETOOTH_NAMES_222:
    case MDM_BLUETOOTH_NAMES_223:
    case MDM_BLUETOOTH_NAMES_224:
    case MDM_BLUETOOTH_NAMES_225:
    case MDM_BLUETOOTH_NAMES_227:
    case MDM_BLUETOOTH_NAMES_230:
    case MDM_BLUETOOTH_NAMES_231:
    case MDM_BLUETOOTH_NAMES_233:
    case MDM_BLUETOOTH_NAMES_234:
    case MDM_BLUETOOTH_NAMES_235:
    case MDM_BLUETOOTH_NAMES_237:
        return MDM_FORM_BLUETOOTH_NAMES;
    default:
        return MDM_FORM_BLUETOOTH_DATA;
    }
}

/** The discriminators of eas that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_EAS_ACCOUNT = 98,
    MDM_EAS_SETTINGS = 104,
    MDM_EAS_ACCOUNTS = 106,
    /** @} */
};

/** @param type  the discriminator of a body of eas. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_eas_form(uint32_t type)
{
    switch (type) {
    case MDM_EAS_ACCOUNT:
        return MDM_FORM_EAS_ACCOUNT;
    case MDM_EAS_SETTINGS:
        return MDM_FORM_EAS_SETTINGS;
    case MDM_EAS_ACCOUNTS:
        return MDM_FORM_EAS_ACCOUNTS;
    default:
        return MDM_FORM_EAS_VALUE;
    }
}

/** The discriminators of app that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_APP_PACKAGES_4 = 4,
    MDM_APP_PACKAGES_15 = 15,
    MDM_APP_NUM_PAIR_140 = 140,
    MDM_APP_NUM_PAIR_141 = 141,
    MDM_APP_PAIR_184 = 184,
    MDM_APP_PAIR_185 = 185,
    /** @} */
};

/** @param type  the discriminator of a body of app. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_app_form(int32_t type)
{
    switch (type) {
    case MDM_APP_PACKAGES_4:
    case MDM_APP_PACKAGES_15:
        return MDM_FORM_APP_PACKAGES;
    case MDM_APP_NUM_PAIR_140:
    case MDM_APP_NUM_PAIR_141:
        return MDM_FORM_APP_NUM_PAIR;
    case MDM_APP_PAIR_184:
    case MDM_APP_PAIR_185:
        return MDM_FORM_APP_PAIR;
    default:
        return MDM_FORM_APP_DATA;
    }
}

/** The discriminators of app_res that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_APP_RES_PACKAGES_3 = 3,
    MDM_APP_RES_PACKAGES_155 = 155,
    MDM_APP_RES_PACKAGES_159 = 159,
    MDM_APP_RES_PACKAGES_162 = 162,
    MDM_APP_RES_PACKAGES_168 = 168,
    MDM_APP_RES_PACKAGES_169 = 169,
    MDM_APP_RES_PACKAGES_170 = 170,
    MDM_APP_RES_PACKAGES_171 = 171,
    MDM_APP_RES_PACKAGES_176 = 176,
    MDM_APP_RES_PACKAGES_177 = 177,
    MDM_APP_RES_ITEMS_140 = 140,
    MDM_APP_RES_ITEMS_141 = 141,
    MDM_APP_RES_ITEMS_142 = 142,
    MDM_APP_RES_CONTROLS_172 = 172,
    MDM_APP_RES_CONTROLS_173 = 173,
    MDM_APP_RES_CONTROLS_174 = 174,
    MDM_APP_RES_CONTROLS_175 = 175,
    /** @} */
};

/** @param type  the discriminator of a body of app_res. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_app_res_form(int32_t type)
{
    switch (type) {
    case MDM_APP_RES_PACKAGES_3:
    case MDM_APP_RES_PACKAGES_155:
    case MDM_APP_RES_PACKAGES_159:
    case MDM_APP_RES_PACKAGES_162:
    case MDM_APP_RES_PACKAGES_168:
    case MDM_APP_RES_PACKAGES_169:
    case MDM_APP_RES_PACKAGES_170:
    case MDM_APP_RES_PACKAGES_171:
    case MDM_APP_RES_PACKAGES_176:
    case MDM_APP_RES_PACKAGES_177:
        return MDM_FORM_APP_RES_PACKAGES;
    case MDM_APP_RES_ITEMS_140:
    case MDM_APP_RES_ITEMS_141:
    case MDM_APP_RES_ITEMS_142:
        return MDM_FORM_APP_RES_ITEMS;
    case MDM_APP_RES_CONTROLS_172:
    case MDM_APP_RES_CONTROLS_173:
    case MDM_APP_RES_CONTROLS_174:
    case MDM_APP_RES_CONTROLS_175:
        return MDM_FORM_APP_RES_CONTROLS;
    default:
        return MDM_FORM_APP_RES_DATA;
    }
}

/** The discriminators of misc that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_MISC_ARRAY = 122,
    MDM_MISC_HEAD = 123,
    MDM_MISC_TEXT_124 = 124,
    MDM_MISC_TEXT_125 = 125,
    MDM_MISC_TEXT_126 = 126,
    MDM_MISC_STRINGS_127 = 127,
    MDM_MISC_STRINGS_128 = 128,
    MDM_MISC_BOOK_281 = 281,
    MDM_MISC_BOOK_283 = 283,
    MDM_MISC_PAIR_288 = 288,
    MDM_MISC_PAIR_289 = 289,
    /** @} */
};

/** @param type  the discriminator of a body of misc. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_misc_form(int32_t type)
{
    switch (type) {
    case MDM_MISC_ARRAY:
        return MDM_FORM_MISC_ARRAY;
    case MDM_MISC_HEAD:
        return MDM_FORM_MISC_HEAD;
    case MDM_MISC_TEXT_124:
    case MDM_MISC_TEXT_125:
    case MDM_MISC_TEXT_126:
        return MDM_FORM_MISC_TEXT;
    case MDM_MISC_STRINGS_127:
    case MDM_MISC_STRINGS_128:
        return MDM_FORM_MISC_STRINGS;
    case MDM_MISC_BOOK_281:
    case MDM_MISC_BOOK_283:
        return MDM_FORM_MISC_BOOK;
    case MDM_MISC_PAIR_288:
    case MDM_MISC_PAIR_289:
        return MDM_FORM_MISC_PAIR;
    default:
        return MDM_FORM_MISC_DATA;
    }
}

/** The discriminators of apn that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_APN_PROFILE_387 = 387,
    MDM_APN_PROFILE_393 = 393,
    MDM_APN_PROFILES_389 = 389,
    MDM_APN_PROFILES_390 = 390,
    MDM_APN_PROFILES_391 = 391,
    /** @} */
};

/** @param type  the discriminator of a body of apn. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_apn_form(uint32_t type)
{
    switch (type) {
    case MDM_APN_PROFILE_387:
    case MDM_APN_PROFILE_393:
        return MDM_FORM_APN_PROFILE;
    case MDM_APN_PROFILES_389:
    case MDM_APN_PROFILES_390:
    case MDM_APN_PROFILES_391:
        return MDM_FORM_APN_PROFILES;
    default:
        return MDM_FORM_APN_DATA;
    }
}

/** The discriminators of phone_res that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_PHONE_RES_ITEM_394 = 394,
    MDM_PHONE_RES_ITEM_395 = 395,
    MDM_PHONE_RES_ITEM_396 = 396,
    MDM_PHONE_RES_ITEM_397 = 397,
    MDM_PHONE_RES_ITEM_398 = 398,
    MDM_PHONE_RES_ITEM_399 = 399,
    MDM_PHONE_RES_ITEM_400 = 400,
    MDM_PHONE_RES_ITEM_401 = 401,
    MDM_PHONE_RES_ITEM_402 = 402,
    MDM_PHONE_RES_ITEM_403 = 403,
    MDM_PHONE_RES_ITEM_404 = 404,
    MDM_PHONE_RES_ITEM_405 = 405,
    MDM_PHONE_RES_ITEM_406 = 406,
    MDM_PHONE_RES_ITEM_407 = 407,
    MDM_PHONE_RES_ITEM_408 = 408,
    MDM_PHONE_RES_ITEM_409 = 409,
    MDM_PHONE_RES_ITEM_410 = 410,
    MDM_PHONE_RES_ITEM_411 = 411,
    MDM_PHONE_RES_ITEM_412 = 412,
    MDM_PHONE_RES_ITEM_413 = 413,
    MDM_PHONE_RES_ITEM_414 = 414,
    MDM_PHONE_RES_ITEM_415 = 415,
    MDM_PHONE_RES_ITEM_416 = 416,
    MDM_PHONE_RES_ITEM_417 = 417,
    MDM_PHONE_RES_ITEM_418 = 418,
    MDM_PHONE_RES_ITEM_419 = 419,
    MDM_PHONE_RES_ITEM_420 = 420,
    MDM_PHONE_RES_ITEM_421 = 421,
    MDM_PHONE_RES_ITEM_423 = 423,
    MDM_PHONE_RES_ITEM_424 = 424,
    MDM_PHONE_RES_ITEM_425 = 425,
    MDM_PHONE_RES_ITEM_426 = 426,
    MDM_PHONE_RES_ITEM_427 = 427,
    MDM_PHONE_RES_ITEM_428 = 428,
    MDM_PHONE_RES_ITEM_429 = 429,
    MDM_PHONE_RES_ITEM_430 = 430,
    MDM_PHONE_RES_ITEM_431 = 431,
    MDM_PHONE_RES_ITEM_432 = 432,
    MDM_PHONE_RES_ITEM_433 = 433,
    MDM_PHONE_RES_ITEM_434 = 434,
    MDM_PHONE_RES_ITEM_435 = 435,
    MDM_PHONE_RES_ITEM_436 = 436,
    MDM_PHONE_RES_ITEM_437 = 437,
    MDM_PHONE_RES_ITEM_438 = 438,
    MDM_PHONE_RES_ITEM_441 = 441,
    MDM_PHONE_RES_ITEM_442 = 442,
    MDM_PHONE_RES_ITEM_443 = 443,
    MDM_PHONE_RES_ITEM_444 = 444,
    MDM_PHONE_RES_ITEM_445 = 445,
    MDM_PHONE_RES_ITEM_446 = 446,
    MDM_PHONE_RES_ITEM_447 = 447,
    MDM_PHONE_RES_ITEM_448 = 448,
    MDM_PHONE_RES_ITEM_449 = 449,
    MDM_PHONE_RES_ITEM_452 = 452,
    MDM_PHONE_RES_ITEM_453 = 453,
    MDM_PHONE_RES_ITEM_454 = 454,
    MDM_PHONE_RES_ITEM_455 = 455,
    MDM_PHONE_RES_EXT = 422,
    MDM_PHONE_RES_RAW_ITEM_439 = 439,
    MDM_PHONE_RES_RAW_ITEM_440 = 440,
    /** @} */
};

/** @param type  the discriminator of a body of phone_res. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_phone_res_form(int32_t type)
{
    if (type == MDM_PHONE_RES_EXT) {
        return MDM_FORM_PHONE_RES_EXT;
    }
    if (type == MDM_PHONE_RES_RAW_ITEM_439 || type == MDM_PHONE_RES_RAW_ITEM_440) {
        return MDM_FORM_PHONE_RES_RAW_ITEM;
    }
    if ((type >= MDM_PHONE_RES_ITEM_394 && type <= MDM_PHONE_RES_ITEM_449) ||
        (type >= MDM_PHONE_RES_ITEM_452 && type <= MDM_PHONE_RES_ITEM_455)) {
        return MDM_FORM_PHONE_RES_ITEM;
    }
    return MDM_FORM_PHONE_RES_DATA;
}

/** The discriminators of email that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_EMAIL_ACCOUNT = 359,
    MDM_EMAIL_SETTINGS = 362,
    MDM_EMAIL_ACCOUNTS = 363,
    /** @} */
};

/** @param type  the discriminator of a body of email. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_email_form(uint32_t type)
{
    switch (type) {
    case MDM_EMAIL_ACCOUNT:
        return MDM_FORM_EMAIL_ACCOUNT;
    case MDM_EMAIL_SETTINGS:
        return MDM_FORM_EMAIL_SETTINGS;
    case MDM_EMAIL_ACCOUNTS:
        return MDM_FORM_EMAIL_ACCOUNTS;
    default:
        return MDM_FORM_EMAIL_VALUE;
    }
}

/** The discriminators of kiosk that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_KIOSK_TEXT_612 = 612,
    MDM_KIOSK_TEXT_614 = 614,
    MDM_KIOSK_KEYS_618 = 618,
    MDM_KIOSK_KEYS_621 = 621,
    MDM_KIOSK_KEY_PAIRS = 619,
    /** @} */
};

/** @param type  the discriminator of a body of kiosk. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_kiosk_form(uint32_t type)
{
    switch (type) {
    case MDM_KIOSK_TEXT_612:
    case MDM_KIOSK_TEXT_614:
        return MDM_FORM_KIOSK_TEXT;
    case MDM_KIOSK_KEYS_618:
    case MDM_KIOSK_KEYS_621:
        return MDM_FORM_KIOSK_KEYS;
    case MDM_KIOSK_KEY_PAIRS:
        return MDM_FORM_KIOSK_KEY_PAIRS;
    default:
        return MDM_FORM_KIOSK_DATA;
    }
}

/** The discriminators of container that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_CONTAINER_ITEM = 628,
    MDM_CONTAINER_SHORT_ITEM = 629,
    MDM_CONTAINER_DATA_630 = 630,
    MDM_CONTAINER_DATA_631 = 631,
    MDM_CONTAINER_DATA_632 = 632,
    /** @} */
};

/** @param type  the discriminator of a body of container. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_container_form(uint32_t type)
{
    switch (type) {
    case MDM_CONTAINER_ITEM:
        return MDM_FORM_CONTAINER_ITEM;
    case MDM_CONTAINER_SHORT_ITEM:
        return MDM_FORM_CONTAINER_SHORT_ITEM;
    case MDM_CONTAINER_DATA_630:
    case MDM_CONTAINER_DATA_631:
    case MDM_CONTAINER_DATA_632:
        return MDM_FORM_CONTAINER_DATA;
    default:
        return MDM_FORM_CONTAINER_HEAD;
    }
}

/** The discriminators of log_manager that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_LOG_MANAGER_TEXT = 638,
    /** @} */
};

/** @param type  the discriminator of a body of log_manager. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_log_manager_form(uint32_t type)
{
    switch (type) {
    case MDM_LOG_MANAGER_TEXT:
        return MDM_FORM_LOG_MANAGER_TEXT;
    default:
        return MDM_FORM_LOG_MANAGER_BYTE;
    }
}

/** The discriminators of platform that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_PLATFORM_FLAG = 439,
    MDM_PLATFORM_NUMBER = 440,
    /** @} */
};

/** @param type  the discriminator of a body of platform. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_platform_form(uint32_t type)
{
    switch (type) {
    case MDM_PLATFORM_FLAG:
        return MDM_FORM_PLATFORM_FLAG;
    case MDM_PLATFORM_NUMBER:
        return MDM_FORM_PLATFORM_NUMBER;
    default:
        return MDM_FORM_PLATFORM_TEXT;
    }
}

/** The discriminators of app_cb that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_APP_CB_DETAIL_0 = 0,
    MDM_APP_CB_DETAIL_1 = 1,
    /** @} */
};

/** @param type  the discriminator of a body of app_cb. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_app_cb_form(uint32_t type)
{
    switch (type) {
    case MDM_APP_CB_DETAIL_0:
    case MDM_APP_CB_DETAIL_1:
        return MDM_FORM_APP_CB_DETAIL;
    default:
        return MDM_FORM_APP_CB_HEAD;
    }
}

/** The discriminators of misc_cb that select a form of their own. */
enum {
    /** @{ Selects the form in its name. */
    MDM_MISC_CB_DETAIL_0 = 0,
    MDM_MISC_CB_DETAIL_1 = 1,
    /** @} */
};

/** @param type  the discriminator of a body of misc_cb. @return The form that it selects. */
MDM_INLINE mdm_form_t mdm_misc_cb_form(uint32_t type)
{
    switch (type) {
    case MDM_MISC_CB_DETAIL_0:
    case MDM_MISC_CB_DETAIL_1:
        return MDM_FORM_MISC_CB_DETAIL;
    default:
        return MDM_FORM_MISC_CB_HEAD;
    }
}

/** @param type  a message type. @return Its category, or #MDM_CATEGORY_NONE. */
MDM_INLINE mdm_category_t mdm_category_of(uint8_t type)
{
    switch (type) {
    case MDM_TYPE_ADMIN:
    case MDM_TYPE_ADMIN_2:
        return MDM_CATEGORY_ADMIN;
    case MDM_TYPE_PWD:
    case MDM_TYPE_PWD_2:
        return MDM_CATEGORY_PWD;
    case MDM_TYPE_SECURITY:
    case MDM_TYPE_SECURITY_2:
        return MDM_CATEGORY_SECURITY;
    case MDM_TYPE_WIFI:
    case MDM_TYPE_WIFI_2:
        return MDM_CATEGORY_WIFI;
    case MDM_TYPE_BLUETOOTH:
    case MDM_TYPE_BLUETOOTH_2:
        return MDM_CATEGORY_BLUETOOTH;
    case MDM_TYPE_EAS:
    case MDM_TYPE_EAS_2:
        return MDM_CATEGORY_EAS;
    case MDM_TYPE_APP:
        return MDM_CATEGORY_APP;
    case MDM_TYPE_APP_RES:
        return MDM_CATEGORY_APP_RES;
    case MDM_TYPE_ROAMING:
        return MDM_CATEGORY_ROAMING;
    case MDM_TYPE_ROAMING_RES:
        return MDM_CATEGORY_ROAMING_RES;
    case MDM_TYPE_MISC:
    case MDM_TYPE_MISC_2:
        return MDM_CATEGORY_MISC;
    case MDM_TYPE_APN:
    case MDM_TYPE_APN_2:
        return MDM_CATEGORY_APN;
    case MDM_TYPE_BROWSER:
    case MDM_TYPE_BROWSER_2:
        return MDM_CATEGORY_BROWSER;
    case MDM_TYPE_DATE_TIME:
    case MDM_TYPE_DATE_TIME_2:
        return MDM_CATEGORY_DATE_TIME;
    case MDM_TYPE_REMOTE:
    case MDM_TYPE_REMOTE_2:
        return MDM_CATEGORY_REMOTE;
    case MDM_TYPE_VPN:
    case MDM_TYPE_VPN_2:
        return MDM_CATEGORY_VPN;
    case MDM_TYPE_FIREWALL:
    case MDM_TYPE_FIREWALL_2:
        return MDM_CATEGORY_FIREWALL;
    case MDM_TYPE_RES:
    case MDM_TYPE_RES_2:
        return MDM_CATEGORY_RES;
    case MDM_TYPE_PHONE_RES:
    case MDM_TYPE_PHONE_RES_2:
        return MDM_CATEGORY_PHONE_RES;
    case MDM_TYPE_ENTERPRISE:
    case MDM_TYPE_ENTERPRISE_2:
        return MDM_CATEGORY_ENTERPRISE;
    case MDM_TYPE_EMAIL:
    case MDM_TYPE_EMAIL_2:
        return MDM_CATEGORY_EMAIL;
    case MDM_TYPE_KIOSK:
    case MDM_TYPE_KIOSK_2:
        return MDM_CATEGORY_KIOSK;
    case MDM_TYPE_CONTAINER:
    case MDM_TYPE_CONTAINER_2:
        return MDM_CATEGORY_CONTAINER;
    case MDM_TYPE_LOCATION:
    case MDM_TYPE_LOCATION_2:
        return MDM_CATEGORY_LOCATION;
    case MDM_TYPE_LOG_MANAGER:
    case MDM_TYPE_LOG_MANAGER_2:
        return MDM_CATEGORY_LOG_MANAGER;
    case MDM_TYPE_PLATFORM:
    case MDM_TYPE_PLATFORM_2:
        return MDM_CATEGORY_PLATFORM;
    case MDM_TYPE_APP_CB:
        return MDM_CATEGORY_APP_CB;
    case MDM_TYPE_MISC_CB:
        return MDM_CATEGORY_MISC_CB;
    default:
        return MDM_CATEGORY_NONE;
    }
}

/**
 * @param category  a category.
 * @return Its name, for example "wifi"; "none" for every other number. A static string.
 */
MDM_INLINE const char *mdm_category_name(mdm_category_t category)
{
    switch (category) {
    case MDM_CATEGORY_ADMIN:
        return "admin";
    case MDM_CATEGORY_PWD:
        return "pwd";
    case MDM_CATEGORY_SECURITY:
        return "security";
    case MDM_CATEGORY_WIFI:
        return "wifi";
    case MDM_CATEGORY_BLUETOOTH:
        return "bluetooth";
    case MDM_CATEGORY_EAS:
        return "eas";
    case MDM_CATEGORY_APP:
        return "app";
    case MDM_CATEGORY_APP_RES:
        return "app_res";
    case MDM_CATEGORY_ROAMING:
        return "roaming";
    case MDM_CATEGORY_ROAMING_RES:
        return "roaming_res";
    case MDM_CATEGORY_MISC:
        return "misc";
    case MDM_CATEGORY_APN:
        return "apn";
    case MDM_CATEGORY_BROWSER:
        return "browser";
    case MDM_CATEGORY_DATE_TIME:
        return "date_time";
    case MDM_CATEGORY_REMOTE:
        return "remote";
    case MDM_CATEGORY_VPN:
        return "vpn";
    case MDM_CATEGORY_FIREWALL:
        return "firewall";
    case MDM_CATEGORY_RES:
        return "res";
    case MDM_CATEGORY_PHONE_RES:
        return "phone_res";
    case MDM_CATEGORY_ENTERPRISE:
        return "enterprise";
    case MDM_CATEGORY_EMAIL:
        return "email";
    case MDM_CATEGORY_KIOSK:
        return "kiosk";
    case MDM_CATEGORY_CONTAINER:
        return "container";
    case MDM_CATEGORY_LOCATION:
        return "location";
    case MDM_CATEGORY_LOG_MANAGER:
        return "log_manager";
    case MDM_CATEGORY_PLATFORM:
        return "platform";
    case MDM_CATEGORY_APP_CB:
        return "app_cb";
    case MDM_CATEGORY_MISC_CB:
        return "misc_cb";
    case MDM_CATEGORY_NONE:
        break;
    }
    return "none";
}

/**
 * @param form  a form.
 * @return Its name, for example "wifi.network"; "none" for every other number. A static string.
 */
MDM_INLINE const char *mdm_form_name(mdm_form_t form)
{
    switch (form) {
    case MDM_FORM_ADMIN_QUERY:
        return "admin.query";
    case MDM_FORM_ADMIN_GENERAL:
        return "admin.general";
    case MDM_FORM_PWD_POLICY:
        return "pwd.policy";
    case MDM_FORM_PWD_DATA:
        return "pwd.data";
    case MDM_FORM_SECURITY_ITEM:
        return "security.item";
    case MDM_FORM_SECURITY_STRINGS:
        return "security.strings";
    case MDM_FORM_SECURITY_ACCOUNTS:
        return "security.accounts";
    case MDM_FORM_SECURITY_DATA:
        return "security.data";
    case MDM_FORM_WIFI_PAIR:
        return "wifi.pair";
    case MDM_FORM_WIFI_SSIDS:
        return "wifi.ssids";
    case MDM_FORM_WIFI_DHCP:
        return "wifi.dhcp";
    case MDM_FORM_WIFI_TRIPLE:
        return "wifi.triple";
    case MDM_FORM_WIFI_NETWORK:
        return "wifi.network";
    case MDM_FORM_WIFI_DATA:
        return "wifi.data";
    case MDM_FORM_BLUETOOTH_NAMES:
        return "bluetooth.names";
    case MDM_FORM_BLUETOOTH_DATA:
        return "bluetooth.data";
    case MDM_FORM_EAS_ACCOUNT:
        return "eas.account";
    case MDM_FORM_EAS_SETTINGS:
        return "eas.settings";
    case MDM_FORM_EAS_ACCOUNTS:
        return "eas.accounts";
    case MDM_FORM_EAS_VALUE:
        return "eas.value";
    case MDM_FORM_APP_PACKAGES:
        return "app.packages";
    case MDM_FORM_APP_NUM_PAIR:
        return "app.num_pair";
    case MDM_FORM_APP_PAIR:
        return "app.pair";
    case MDM_FORM_APP_DATA:
        return "app.data";
    case MDM_FORM_APP_RES_PACKAGES:
        return "app_res.packages";
    case MDM_FORM_APP_RES_ITEMS:
        return "app_res.items";
    case MDM_FORM_APP_RES_CONTROLS:
        return "app_res.controls";
    case MDM_FORM_APP_RES_DATA:
        return "app_res.data";
    case MDM_FORM_ROAMING_RECORD:
        return "roaming.record";
    case MDM_FORM_ROAMING_RES_HEAD:
        return "roaming_res.head";
    case MDM_FORM_MISC_ARRAY:
        return "misc.array";
    case MDM_FORM_MISC_HEAD:
        return "misc.head";
    case MDM_FORM_MISC_TEXT:
        return "misc.text";
    case MDM_FORM_MISC_STRINGS:
        return "misc.strings";
    case MDM_FORM_MISC_BOOK:
        return "misc.book";
    case MDM_FORM_MISC_PAIR:
        return "misc.pair";
    case MDM_FORM_MISC_DATA:
        return "misc.data";
    case MDM_FORM_APN_PROFILE:
        return "apn.profile";
    case MDM_FORM_APN_PROFILES:
        return "apn.profiles";
    case MDM_FORM_APN_DATA:
        return "apn.data";
    case MDM_FORM_BROWSER_DATA:
        return "browser.data";
    case MDM_FORM_DATE_TIME_DATA:
        return "date_time.data";
    case MDM_FORM_REMOTE_DATA:
        return "remote.data";
    case MDM_FORM_VPN_DATA:
        return "vpn.data";
    case MDM_FORM_FIREWALL_DATA:
        return "firewall.data";
    case MDM_FORM_RES_DATA:
        return "res.data";
    case MDM_FORM_PHONE_RES_ITEM:
        return "phone_res.item";
    case MDM_FORM_PHONE_RES_EXT:
        return "phone_res.ext";
    case MDM_FORM_PHONE_RES_RAW_ITEM:
        return "phone_res.raw_item";
    case MDM_FORM_PHONE_RES_DATA:
        return "phone_res.data";
    case MDM_FORM_ENTERPRISE_DATA:
        return "enterprise.data";
    case MDM_FORM_EMAIL_ACCOUNT:
        return "email.account";
    case MDM_FORM_EMAIL_SETTINGS:
        return "email.settings";
    case MDM_FORM_EMAIL_ACCOUNTS:
        return "email.accounts";
    case MDM_FORM_EMAIL_VALUE:
        return "email.value";
    case MDM_FORM_KIOSK_TEXT:
        return "kiosk.text";
    case MDM_FORM_KIOSK_KEYS:
        return "kiosk.keys";
    case MDM_FORM_KIOSK_KEY_PAIRS:
        return "kiosk.key_pairs";
    case MDM_FORM_KIOSK_DATA:
        return "kiosk.data";
    case MDM_FORM_CONTAINER_ITEM:
        return "container.item";
    case MDM_FORM_CONTAINER_SHORT_ITEM:
        return "container.short_item";
    case MDM_FORM_CONTAINER_DATA:
        return "container.data";
    case MDM_FORM_CONTAINER_HEAD:
        return "container.head";
    case MDM_FORM_LOCATION_HEAD:
        return "location.head";
    case MDM_FORM_LOG_MANAGER_TEXT:
        return "log_manager.text";
    case MDM_FORM_LOG_MANAGER_BYTE:
        return "log_manager.byte";
    case MDM_FORM_PLATFORM_FLAG:
        return "platform.flag";
    case MDM_FORM_PLATFORM_NUMBER:
        return "platform.number";
    case MDM_FORM_PLATFORM_TEXT:
        return "platform.text";
    case MDM_FORM_APP_CB_DETAIL:
        return "app_cb.detail";
    case MDM_FORM_APP_CB_HEAD:
        return "app_cb.head";
    case MDM_FORM_MISC_CB_DETAIL:
        return "misc_cb.detail";
    case MDM_FORM_MISC_CB_HEAD:
        return "misc_cb.head";
    case MDM_FORM_NONE:
        break;
    }
    return "none";
}

#endif
