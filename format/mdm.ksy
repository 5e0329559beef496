# SPDX-License-Identifier: Apache-2.0
#
# `mdm-msg forms --kaitai` prints this file, and makes it of what the library answers.
meta:
  id: mdm
  title: Message of the device-management service
  license: Apache-2.0
  ks-version: '0.10'
  endian: le
doc: |
  One message. The stream has nothing else.

  A message that receivers refuse raises an error. Each length and each count is compared with the
  bytes that are left, before any byte is read that it counts.

  Some senders count more bytes than they write, and some receivers read fewer bytes than were sent.
  These bytes are the `padding` at the end of the body.

  A count below 0 announces no elements. A `data_size` below 0 that counts elements is refused.
seq:
  - id: header
    type: header
  - id: body
    size-eos: true
    type:
      switch-on: header.type
      cases:
        1: admin
        2: admin
        3: pwd
        4: pwd
        5: security
        6: security
        7: wifi
        8: wifi
        9: bluetooth
        10: bluetooth
        11: eas
        12: eas
        13: app
        14: app_res
        15: roaming
        16: roaming_res
        17: misc
        18: misc
        21: apn
        22: apn
        23: browser
        24: browser
        25: date_time
        26: date_time
        27: remote
        28: remote
        29: vpn
        30: vpn
        31: firewall
        32: firewall
        33: res
        34: res
        35: phone_res
        36: phone_res
        37: enterprise
        38: enterprise
        39: email
        40: email
        45: kiosk
        46: kiosk
        47: container
        48: container
        49: location
        50: location
        51: log_manager
        52: log_manager
        53: platform
        54: platform
        61: app_cb
        63: misc_cb
        _: no_category
types:
  counted_text:
    seq:
      - id: length
        type: u4
        valid:
          expr: _ <= _io.size - _io.pos
      - id: bytes
        size: length
    instances:
      text:
        doc: Receivers see the bytes up to the first zero byte. They need not be UTF-8.
        value: bytes.to_s("UTF-8")
  no_category:
    doc: The body of a message type without a category. Receivers do not read it.
    seq:
      - id: padding
        size-eos: true
    instances:
      form:
        value: form::none
  header:
    seq:
      - id: length
        type: u4
        doc: The size of the message without 8 bytes.
        valid:
          expr: _ >= 32 and _ == _io.size - 8
      - id: type
        type: u1
        valid:
          expr: _ >= 1 and _ <= 80
      - id: hdr_byte
        type: u1
      - id: reserved
        size: 2
      - id: hdr_word1
        type: u4
      - id: hdr_word2
        type: u4
      - id: hdr_text
        type: counted_text
      - id: hdr_word3
        type: u4
      - id: hdr_word6
        type: u4
      - id: hdr_word7
        type: u4
      - id: hdr_word4
        type: u4
      - id: hdr_word5
        type: u4
  admin:
    doc: Message types 1, 2.
    seq:
      - id: type
        type: u4
      - id: value
        type: u4
        if: form == form::admin_general
      - id: pkg
        type: counted_text
      - id: status
        type: s4
        if: form == form::admin_query
      - id: text
        type: counted_text
        if: form == form::admin_general
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 0 ? form::admin_query :
          form::admin_general
  pwd:
    doc: Message types 3, 4.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: form != form::pwd_data or _ < 0 or _ <= _io.size - _io.pos
      - id: policy
        type: pwd_policy
        if: form == form::pwd_policy and data_size > 0
      - id: data
        size: data_size
        if: form == form::pwd_data and data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 40 ? form::pwd_policy :
          form::pwd_data
  pwd_policy:
    seq:
      - id: num0
        type: u4
      - id: num1
        type: u4
      - id: num2
        type: u4
      - id: num3
        type: u4
      - id: num4
        type: u4
      - id: num5
        type: u4
      - id: num6
        type: u4
      - id: num7
        type: u4
      - id: num8
        type: u4
      - id: str9
        type: counted_text
      - id: str10
        type: counted_text
  security:
    doc: Message types 5, 6.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: form != form::security_data or _ < 0 or _ <= _io.size - _io.pos
      - id: item
        type: security_item
        if: form == form::security_item and data_size > 0
      - id: num_strings
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 4
        if: form == form::security_strings and data_size > 0
      - id: strings
        type: counted_text
        repeat: expr
        repeat-expr: 'num_strings < 0 ? 0 : num_strings'
        if: form == form::security_strings and data_size > 0
      - id: num_accounts
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 104
        if: form == form::security_accounts and data_size > 0
      - id: accounts
        type: security_account
        repeat: expr
        repeat-expr: 'num_accounts < 0 ? 0 : num_accounts'
        if: form == form::security_accounts and data_size > 0
      - id: data
        size: data_size
        if: form == form::security_data and data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 56 or type == 76 ? form::security_item :
          type == 68 or type == 69 ? form::security_strings :
          type == 70 or type == 71 ? form::security_accounts :
          form::security_data
  security_item:
    seq:
      - id: num0
        type: u4
      - id: str1
        type: counted_text
      - id: str4
        type: counted_text
      - id: str3
        type: counted_text
  security_account:
    seq:
      - id: num0
        type: u4
      - id: num1
        type: u4
      - id: num2
        type: u4
      - id: num3
        type: u4
      - id: str4
        type: counted_text
      - id: str5
        type: counted_text
      - id: str6
        type: counted_text
      - id: str7
        type: counted_text
      - id: str8
        type: counted_text
      - id: str9
        type: counted_text
      - id: str10
        type: counted_text
      - id: str11
        type: counted_text
      - id: str12
        type: counted_text
      - id: str13
        type: counted_text
      - id: str14
        type: counted_text
      - id: str15
        type: counted_text
      - id: str16
        type: counted_text
      - id: str17
        type: counted_text
      - id: str18
        type: counted_text
      - id: str19
        type: counted_text
      - id: str20
        type: counted_text
      - id: str21
        type: counted_text
      - id: str22
        type: counted_text
      - id: str23
        type: counted_text
      - id: str24
        type: counted_text
      - id: str25
        type: counted_text
  wifi:
    doc: Message types 7, 8.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: form != form::wifi_data or _ < 0 or _ <= _io.size - _io.pos
      - id: dhcp
        type: wifi_dhcp
        if: form == form::wifi_dhcp and data_size > 0
      - id: num_ssids
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 4
        if: form == form::wifi_ssids and data_size > 0
      - id: ssids
        type: counted_text
        repeat: expr
        repeat-expr: 'num_ssids < 0 ? 0 : num_ssids'
        if: form == form::wifi_ssids and data_size > 0
      - id: pair
        type: wifi_pair
        if: form == form::wifi_pair and data_size > 0
      - id: triple
        type: wifi_triple
        if: form == form::wifi_triple and data_size > 0
      - id: network
        type: wifi_network
        if: form == form::wifi_network and data_size > 0
      - id: data
        size: data_size
        if: form == form::wifi_data and data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 88 ? form::wifi_dhcp :
          type == 290 or type == 344 or type == 346 or (type >= 348 and type <= 350) or type == 352
          ? form::wifi_ssids :
          type == 305 or type == 307 or type == 309 or type == 311 or type == 313 or type == 315
          or type == 317 or type == 324 or type == 326 or type == 328 or type == 330 or type == 332
          or type == 339 ? form::wifi_pair :
          type == 319 ? form::wifi_triple :
          type == 345 ? form::wifi_network :
          form::wifi_data
  wifi_dhcp:
    seq:
      - id: str0
        type: counted_text
      - id: str1
        type: counted_text
      - id: str2
        type: counted_text
      - id: str3
        type: counted_text
      - id: str4
        type: counted_text
  wifi_pair:
    seq:
      - id: ssid
        type: counted_text
      - id: value
        type: counted_text
  wifi_triple:
    seq:
      - id: str0
        type: counted_text
      - id: str1
        type: counted_text
      - id: str2
        type: counted_text
  wifi_network:
    seq:
      - id: ssid
        type: counted_text
      - id: detail_kind
        type: s4
      - id: detail
        type: wifi_network_detail
        if: (detail_kind >= 1 and detail_kind <= 9)
  wifi_network_detail:
    seq:
      - id: w0_number
        type: u4
        if: _parent.detail_kind == 1 or _parent.detail_kind == 8 or _parent.detail_kind == 9
      - id: w0_text
        type: counted_text
        if: (_parent.detail_kind >= 2 and _parent.detail_kind <= 7)
      - id: w1
        type: counted_text
        if: (_parent.detail_kind >= 5 and _parent.detail_kind <= 7)
      - id: w2
        type: counted_text
        if: (_parent.detail_kind >= 5 and _parent.detail_kind <= 7)
      - id: w3_number
        type: u4
        if: _parent.detail_kind == 5 or _parent.detail_kind == 7
      - id: w3_text
        type: counted_text
        if: _parent.detail_kind == 6
      - id: w4
        type: counted_text
        if: (_parent.detail_kind >= 5 and _parent.detail_kind <= 7)
      - id: w5
        type: counted_text
        if: (_parent.detail_kind >= 5 and _parent.detail_kind <= 7)
      - id: w6
        type: counted_text
        if: _parent.detail_kind == 6
  bluetooth:
    doc: Message types 9, 10.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: form != form::bluetooth_data or _ < 0 or _ <= _io.size - _io.pos
      - id: num_names
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 4
        if: form == form::bluetooth_names and data_size > 0
      - id: names
        type: counted_text
        repeat: expr
        repeat-expr: 'num_names < 0 ? 0 : num_names'
        if: form == form::bluetooth_names and data_size > 0
      - id: data
        size: data_size
        if: form == form::bluetooth_data and data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 91 or (type >= 220 and type <= 225) or type == 227 or type == 230 or type == 231
          or (type >= 233 and type <= 235) or type == 237 ? form::bluetooth_names :
          form::bluetooth_data
  eas:
    doc: Message types 11, 12.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
      - id: account
        type: eas_account
        if: form == form::eas_account and data_size != 0
      - id: settings
        type: eas_settings
        if: form == form::eas_settings and data_size != 0
      - id: num_accounts
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 60
        if: form == form::eas_accounts and data_size != 0
      - id: accounts
        type: eas_account
        repeat: expr
        repeat-expr: 'num_accounts < 0 ? 0 : num_accounts'
        if: form == form::eas_accounts and data_size != 0
      - id: value
        type: eas_value
        if: form == form::eas_value and data_size != 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 98 ? form::eas_account :
          type == 104 ? form::eas_settings :
          type == 106 ? form::eas_accounts :
          form::eas_value
  eas_account:
    seq:
      - id: num0
        type: u4
      - id: num1
        type: u4
      - id: num2
        type: u4
      - id: num3
        type: u4
      - id: num4
        type: u4
      - id: num5
        type: u4
      - id: str6
        type: counted_text
      - id: str7
        type: counted_text
      - id: str8
        type: counted_text
      - id: str9
        type: counted_text
      - id: str10
        type: counted_text
      - id: str11
        type: counted_text
      - id: str12
        type: counted_text
      - id: str13
        type: counted_text
      - id: str14
        type: counted_text
  eas_settings:
    seq:
      - id: str8
        type: counted_text
      - id: str10
        type: counted_text
      - id: str13
        type: counted_text
  eas_value:
    seq:
      - id: num0
        type: u4
      - id: str1
        type: counted_text
  app:
    doc: Message type 13.
    seq:
      - id: type
        type: s4
      - id: param
        type: u4
      - id: pkg
        type: counted_text
      - id: data_size
        type: s4
        valid:
          expr: form != form::app_data or _ < 0 or _ <= _io.size - _io.pos
      - id: num_packages
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 4
        if: form == form::app_packages and data_size > 0
      - id: packages
        type: counted_text
        repeat: expr
        repeat-expr: 'num_packages < 0 ? 0 : num_packages'
        if: form == form::app_packages and data_size > 0
      - id: num_pair
        type: app_num_pair
        if: form == form::app_num_pair and data_size > 0
      - id: pair
        type: app_pair
        if: form == form::app_pair and data_size > 0
      - id: data
        size: data_size
        if: form == form::app_data and data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 4 or type == 15 ? form::app_packages :
          type == 140 or type == 141 ? form::app_num_pair :
          type == 184 or type == 185 ? form::app_pair :
          form::app_data
  app_num_pair:
    seq:
      - id: num1
        type: u4
      - id: num2
        type: u4
  app_pair:
    seq:
      - id: first
        type: counted_text
      - id: second
        type: counted_text
  app_res:
    doc: Message type 14.
    seq:
      - id: type
        type: s4
      - id: param
        type: u4
      - id: pkg
        type: counted_text
      - id: data_size
        type: s4
        valid:
          expr: form != form::app_res_data or _ < 0 or _ <= _io.size - _io.pos
      - id: num_packages
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 4
        if: form == form::app_res_packages and data_size > 0
      - id: packages
        type: counted_text
        repeat: expr
        repeat-expr: 'num_packages < 0 ? 0 : num_packages'
        if: form == form::app_res_packages and data_size > 0
      - id: num_items
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 8
        if: form == form::app_res_items and data_size > 0
      - id: items
        type: app_res_item
        repeat: expr
        repeat-expr: 'num_items < 0 ? 0 : num_items'
        if: form == form::app_res_items and data_size > 0
      - id: num_controls
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 8
        if: form == form::app_res_controls and data_size > 0
      - id: controls
        type: app_res_control
        repeat: expr
        repeat-expr: 'num_controls < 0 ? 0 : num_controls'
        if: form == form::app_res_controls and data_size > 0
      - id: data
        size: data_size
        if: form == form::app_res_data and data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 3 or type == 155 or type == 159 or type == 162 or (type >= 168 and type <= 171)
          or type == 176 or type == 177 ? form::app_res_packages :
          (type >= 140 and type <= 142) ? form::app_res_items :
          (type >= 172 and type <= 175) ? form::app_res_controls :
          form::app_res_data
  app_res_item:
    seq:
      - id: name
        type: counted_text
      - id: value
        type: u4
  app_res_control:
    seq:
      - id: client_id
        type: s4
      - id: num_pkg_list
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 4
      - id: pkg_list
        type: counted_text
        repeat: expr
        repeat-expr: 'num_pkg_list < 0 ? 0 : num_pkg_list'
  roaming:
    doc: Message type 15.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
      - id: data
        type: roaming_data
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: form::roaming_record
  roaming_data:
    seq:
      - id: name
        type: counted_text
  roaming_res:
    doc: Message type 16.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: form::roaming_res_head
  misc:
    doc: Message types 17, 18.
    seq:
      - id: type
        type: s4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: >-
            (form != form::misc_array or (_ >= 0 and _ <= (_io.size - _io.pos) / 4))
            and (form != form::misc_data or (_ >= 0 and _ <= _io.size - _io.pos))
      - id: array
        type: counted_text
        repeat: expr
        repeat-expr: data_size
        if: form == form::misc_array and data_size != 0
      - id: text
        type: misc_text
        if: form == form::misc_text and data_size != 0
      - id: num_param_list
        type: u4
        valid:
          expr: _ <= (_io.size - _io.pos) / 4
        if: form == form::misc_strings
      - id: param_list
        type: counted_text
        repeat: expr
        repeat-expr: num_param_list
        if: form == form::misc_strings
      - id: book
        type: misc_book
        if: form == form::misc_book and data_size != 0
      - id: pair
        type: misc_pair
        if: form == form::misc_pair and data_size != 0
      - id: data
        size: data_size
        if: form == form::misc_data and data_size != 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 122 ? form::misc_array :
          type == 123 ? form::misc_head :
          (type >= 124 and type <= 126) ? form::misc_text :
          type == 127 or type == 128 ? form::misc_strings :
          type == 281 or type == 283 ? form::misc_book :
          type == 288 or type == 289 ? form::misc_pair :
          form::misc_data
  misc_text:
    seq:
      - id: value
        type: counted_text
  misc_book:
    seq:
      - id: url
        type: counted_text
      - id: title
        type: counted_text
  misc_pair:
    seq:
      - id: first
        type: counted_text
      - id: second
        type: counted_text
  apn:
    doc: Message types 21, 22.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: form != form::apn_data or (_ >= 0 and _ <= _io.size - _io.pos)
      - id: profile
        type: apn_profile
        if: form == form::apn_profile and data_size != 0
      - id: num_profiles
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 60
        if: form == form::apn_profiles and data_size != 0
      - id: profiles
        type: apn_profile
        repeat: expr
        repeat-expr: 'num_profiles < 0 ? 0 : num_profiles'
        if: form == form::apn_profiles and data_size != 0
      - id: data
        size: data_size
        if: form == form::apn_data and data_size != 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 387 or type == 393 ? form::apn_profile :
          (type >= 389 and type <= 391) ? form::apn_profiles :
          form::apn_data
  apn_profile:
    seq:
      - id: num0
        type: u4
      - id: num1
        type: u4
      - id: profile_name
        type: counted_text
      - id: str3
        type: counted_text
      - id: str4
        type: counted_text
      - id: str5
        type: counted_text
      - id: str6
        type: counted_text
      - id: str7
        type: counted_text
      - id: str8
        type: counted_text
      - id: str9
        type: counted_text
      - id: str10
        type: counted_text
      - id: str11
        type: counted_text
      - id: str12
        type: counted_text
      - id: str13
        type: counted_text
      - id: str14
        type: counted_text
  browser:
    doc: Message types 23, 24.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: form::browser_data
  date_time:
    doc: Message types 25, 26.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: _ < 0 or _ <= _io.size - _io.pos
      - id: data
        size: data_size
        if: data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: form::date_time_data
  remote:
    doc: Message types 27, 28.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: _ < 0 or _ <= _io.size - _io.pos
      - id: data
        size: data_size
        if: data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: form::remote_data
  vpn:
    doc: Message types 29, 30.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: _ < 0 or _ <= _io.size - _io.pos
      - id: data
        size: data_size
        if: data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: form::vpn_data
  firewall:
    doc: Message types 31, 32.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: _ < 0 or _ <= _io.size - _io.pos
      - id: data
        size: data_size
        if: data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: form::firewall_data
  res:
    doc: Message types 33, 34.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: _ < 0 or _ <= _io.size - _io.pos
      - id: data
        size: data_size
        if: data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: form::res_data
  phone_res:
    doc: Message types 35, 36.
    seq:
      - id: type
        type: s4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: >-
            form != form::phone_res_raw_item and form != form::phone_res_data or _ < 0 or _ <= _io.size - _io.pos
      - id: item
        type: phone_res_item
        if: form == form::phone_res_item and data_size > 0
      - id: ext
        type: phone_res_ext
        if: form == form::phone_res_ext and data_size > 0
      - id: data
        size: data_size
        if: (form == form::phone_res_raw_item or form == form::phone_res_data) and data_size > 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          (type >= 394 and type <= 421) or (type >= 423 and type <= 438)
          or (type >= 441 and type <= 449) or (type >= 452 and type <= 455) ? form::phone_res_item :
          type == 422 ? form::phone_res_ext :
          type == 439 or type == 440 ? form::phone_res_raw_item :
          form::phone_res_data
  phone_res_item:
    seq:
      - id: str0
        type: counted_text
      - id: str2
        type: counted_text
  phone_res_ext:
    seq:
      - id: str0
        type: counted_text
      - id: detail
        type: phone_res_ext_detail
  phone_res_ext_detail:
    seq:
      - id: num0
        type: u4
      - id: num1
        type: u4
      - id: str2
        type: counted_text
  enterprise:
    doc: Message types 37, 38.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: form::enterprise_data
  email:
    doc: Message types 39, 40.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
      - id: account
        type: email_account
        if: form == form::email_account and data_size != 0
      - id: settings
        type: email_settings
        if: form == form::email_settings and data_size != 0
      - id: num_accounts
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 88
        if: form == form::email_accounts and data_size != 0
      - id: accounts
        type: email_account_of_accounts
        repeat: expr
        repeat-expr: 'num_accounts < 0 ? 0 : num_accounts'
        if: form == form::email_accounts and data_size != 0
      - id: value
        type: email_value
        if: form == form::email_value and data_size != 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 359 ? form::email_account :
          type == 362 ? form::email_settings :
          type == 363 ? form::email_accounts :
          form::email_value
  email_account:
    seq:
      - id: num0
        type: u4
      - id: num1
        type: u4
      - id: num2
        type: u4
      - id: num4
        type: u4
      - id: num6
        type: u4
      - id: num3
        type: u4
      - id: num5
        type: u4
      - id: str13
        type: counted_text
      - id: str14
        type: counted_text
      - id: str15
        type: counted_text
      - id: str16
        type: counted_text
      - id: str17
        type: counted_text
      - id: str18
        type: counted_text
      - id: str19
        type: counted_text
      - id: str20
        type: counted_text
      - id: str21
        type: counted_text
  email_settings:
    seq:
      - id: str16
        type: counted_text
      - id: str15
        type: counted_text
      - id: str14
        type: counted_text
  email_account_of_accounts:
    seq:
      - id: num0
        type: u4
      - id: num1
        type: u4
      - id: num2
        type: u4
      - id: num3
        type: u4
      - id: num4
        type: u4
      - id: num5
        type: u4
      - id: num6
        type: u4
      - id: num7
        type: u4
      - id: num8
        type: u4
      - id: str9
        type: counted_text
      - id: str10
        type: counted_text
      - id: str11
        type: counted_text
      - id: str12
        type: counted_text
      - id: str13
        type: counted_text
      - id: str14
        type: counted_text
      - id: str15
        type: counted_text
      - id: str16
        type: counted_text
      - id: str17
        type: counted_text
      - id: str18
        type: counted_text
      - id: str19
        type: counted_text
      - id: str20
        type: counted_text
      - id: str21
        type: counted_text
  email_value:
    seq:
      - id: num0
        type: u4
      - id: str1
        type: counted_text
  kiosk:
    doc: Message types 45, 46.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: form != form::kiosk_data or (_ >= 0 and _ <= _io.size - _io.pos)
      - id: text
        type: counted_text
        if: form == form::kiosk_text and data_size != 0
      - id: num_keys
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 4
        if: form == form::kiosk_keys and data_size != 0
      - id: keys
        type: kiosk_key
        repeat: expr
        repeat-expr: 'num_keys < 0 ? 0 : num_keys'
        if: form == form::kiosk_keys and data_size != 0
      - id: num_key_pairs
        type: s4
        valid:
          expr: _ < 0 or _ <= (_io.size - _io.pos) / 8
        if: form == form::kiosk_key_pairs and data_size != 0
      - id: key_pairs
        type: kiosk_key_pair
        repeat: expr
        repeat-expr: 'num_key_pairs < 0 ? 0 : num_key_pairs'
        if: form == form::kiosk_key_pairs and data_size != 0
      - id: data
        size: data_size
        if: form == form::kiosk_data and data_size != 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 612 or type == 614 ? form::kiosk_text :
          type == 618 or type == 621 ? form::kiosk_keys :
          type == 619 ? form::kiosk_key_pairs :
          form::kiosk_data
  kiosk_key:
    seq:
      - id: number
        type: u4
  kiosk_key_pair:
    seq:
      - id: key
        type: u4
      - id: value
        type: u4
  container:
    doc: Message types 47, 48.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
        valid:
          expr: form != form::container_data or (_ >= 0 and _ <= _io.size - _io.pos)
      - id: item
        type: container_item
        if: form == form::container_item and data_size != 0
      - id: short_item
        type: container_short_item
        if: form == form::container_short_item and data_size != 0
      - id: data
        size: data_size
        if: form == form::container_data and data_size != 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 628 ? form::container_item :
          type == 629 ? form::container_short_item :
          (type >= 630 and type <= 632) ? form::container_data :
          form::container_head
  container_item:
    seq:
      - id: num0
        type: u4
      - id: str1
        type: counted_text
      - id: str2
        type: counted_text
  container_short_item:
    seq:
      - id: num0
        type: u4
      - id: str1
        type: counted_text
  location:
    doc: Message types 49, 50.
    seq:
      - id: type
        type: u4
      - id: param
        type: u4
      - id: data_size
        type: s4
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: form::location_head
  log_manager:
    doc: Message types 51, 52.
    seq:
      - id: type
        type: u4
      - id: value_text
        type: counted_text
        if: form == form::log_manager_text
      - id: value_byte
        type: u1
        if: form == form::log_manager_byte
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 638 ? form::log_manager_text :
          form::log_manager_byte
  platform:
    doc: Message types 53, 54.
    seq:
      - id: type
        type: u4
      - id: text
        type: counted_text
      - id: number
        type: u4
        if: form == form::platform_flag or form == form::platform_number
      - id: flag
        type: u1
        if: form == form::platform_flag
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 439 ? form::platform_flag :
          type == 440 ? form::platform_number :
          form::platform_text
  app_cb:
    doc: Message type 61.
    seq:
      - id: type
        type: u4
      - id: data_size
        type: u4
      - id: param
        type: u4
      - id: param2
        type: u4
      - id: num6
        type: u4
        if: form == form::app_cb_detail and data_size != 0
      - id: str8
        type: counted_text
        if: form == form::app_cb_detail and data_size != 0
      - id: str7
        type: counted_text
        if: form == form::app_cb_detail and data_size != 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 0 or type == 1 ? form::app_cb_detail :
          form::app_cb_head
  misc_cb:
    doc: Message type 63.
    seq:
      - id: type
        type: u4
      - id: data_size
        type: u4
      - id: param
        type: u4
      - id: param2
        type: u4
      - id: flag6
        type: u1
        if: form == form::misc_cb_detail and data_size != 0
      - id: num7
        type: u4
        if: form == form::misc_cb_detail and data_size != 0
      - id: str8
        type: counted_text
        if: form == form::misc_cb_detail and data_size != 0
      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
    instances:
      form:
        value: >-
          type == 0 or type == 1 ? form::misc_cb_detail :
          form::misc_cb_head
enums:
  form:
    0: none
    8: admin_query
    9: admin_general
    16: pwd_policy
    17: pwd_data
    24: security_item
    25: security_strings
    26: security_accounts
    27: security_data
    34: wifi_dhcp
    33: wifi_ssids
    32: wifi_pair
    35: wifi_triple
    36: wifi_network
    37: wifi_data
    40: bluetooth_names
    41: bluetooth_data
    48: eas_account
    49: eas_settings
    50: eas_accounts
    51: eas_value
    56: app_packages
    57: app_num_pair
    58: app_pair
    59: app_data
    64: app_res_packages
    65: app_res_items
    66: app_res_controls
    67: app_res_data
    72: roaming_record
    80: roaming_res_head
    88: misc_array
    89: misc_head
    90: misc_text
    91: misc_strings
    92: misc_book
    93: misc_pair
    94: misc_data
    96: apn_profile
    97: apn_profiles
    98: apn_data
    104: browser_data
    112: date_time_data
    120: remote_data
    128: vpn_data
    136: firewall_data
    144: res_data
    152: phone_res_item
    153: phone_res_ext
    154: phone_res_raw_item
    155: phone_res_data
    160: enterprise_data
    168: email_account
    169: email_settings
    170: email_accounts
    171: email_value
    176: kiosk_text
    177: kiosk_keys
    178: kiosk_key_pairs
    179: kiosk_data
    184: container_item
    185: container_short_item
    186: container_data
    187: container_head
    192: location_head
    200: log_manager_text
    201: log_manager_byte
    208: platform_flag
    209: platform_number
    210: platform_text
    216: app_cb_detail
    217: app_cb_head
    224: misc_cb_detail
    225: misc_cb_head
