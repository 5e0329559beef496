-- SPDX-License-Identifier: Apache-2.0
--
-- Wireshark shows messages of the device-management service with this file:
--
--     wireshark -X lua_script:mdm.lua capture.pcap
--
-- Each packet of the capture is one message. Its link type is 147 (USER 0).
--
-- `mdm-msg forms --wireshark` prints this file, and makes the tables of what the library answers.

local first_type, last_type = 1, 80
local smallest_message = 40
local uncounted = 8  -- bytes of a message that its length field does not count

-- A field has a path and a kind. A list has the fields of an element, and the bytes that an element
-- takes at least. Variants are what follows by the number of another field, the selector. Two
-- numbers in braces stand for all from the first to the last. The last form of a category takes all
-- discriminators that no other form lists. `payload` says which `data_size` announces the fields of
-- a form; without it they are always there. `counted_by` names the field that counts bytes or
-- elements.

local header = {
    {path = "header.length", kind = "u32"},
    {path = "header.type", kind = "u8"},
    {path = "header.hdr_byte", kind = "u8"},
    {path = "header.reserved", kind = "reserved"},
    {path = "header.hdr_word1", kind = "u32"},
    {path = "header.hdr_word2", kind = "u32"},
    {path = "header.hdr_text", kind = "str"},
    {path = "header.hdr_word3", kind = "u32"},
    {path = "header.hdr_word6", kind = "u32"},
    {path = "header.hdr_word7", kind = "u32"},
    {path = "header.hdr_word4", kind = "u32"},
    {path = "header.hdr_word5", kind = "u32"},
}

local categories = {
    {name = "admin", types = {1, 2}, head = {
        {path = "admin.type", kind = "u32"},
    }, forms = {
        {name = "admin.query",
         discriminators = {0},
         fields = {
            {path = "admin.pkg", kind = "str"},
            {path = "admin.status", kind = "i32"},
        }},
        {name = "admin.general",
         fields = {
            {path = "admin.value", kind = "u32"},
            {path = "admin.pkg", kind = "str"},
            {path = "admin.text", kind = "str"},
        }},
    }},
    {name = "pwd", types = {3, 4}, head = {
        {path = "pwd.type", kind = "u32"},
        {path = "pwd.param", kind = "u32"},
        {path = "pwd.data_size", kind = "i32"},
    }, forms = {
        {name = "pwd.policy", payload = "if_positive",
         discriminators = {40},
         fields = {
            {path = "pwd.policy.num0", kind = "u32"},
            {path = "pwd.policy.num1", kind = "u32"},
            {path = "pwd.policy.num2", kind = "u32"},
            {path = "pwd.policy.num3", kind = "u32"},
            {path = "pwd.policy.num4", kind = "u32"},
            {path = "pwd.policy.num5", kind = "u32"},
            {path = "pwd.policy.num6", kind = "u32"},
            {path = "pwd.policy.num7", kind = "u32"},
            {path = "pwd.policy.num8", kind = "u32"},
            {path = "pwd.policy.str9", kind = "str"},
            {path = "pwd.policy.str10", kind = "str"},
        }},
        {name = "pwd.data", payload = "if_positive",
         fields = {
            {path = "pwd.data", kind = "bytes", counted_by = "pwd.data_size"},
        }},
    }},
    {name = "security", types = {5, 6}, head = {
        {path = "security.type", kind = "u32"},
        {path = "security.param", kind = "u32"},
        {path = "security.data_size", kind = "i32"},
    }, forms = {
        {name = "security.item", payload = "if_positive",
         discriminators = {56, 76},
         fields = {
            {path = "security.item.num0", kind = "u32"},
            {path = "security.item.str1", kind = "str"},
            {path = "security.item.str4", kind = "str"},
            {path = "security.item.str3", kind = "str"},
        }},
        {name = "security.strings", payload = "if_positive",
         discriminators = {{68, 69}},
         fields = {
            {path = "security.strings", kind = "count",
             element_size = 4, elements = {
                {path = "security.strings", kind = "str"},
            }},
        }},
        {name = "security.accounts", payload = "if_positive",
         discriminators = {{70, 71}},
         fields = {
            {path = "security.accounts", kind = "count",
             record = "security.account", element_size = 104, elements = {
                {path = "security.account.num0", kind = "u32"},
                {path = "security.account.num1", kind = "u32"},
                {path = "security.account.num2", kind = "u32"},
                {path = "security.account.num3", kind = "u32"},
                {path = "security.account.str4", kind = "str"},
                {path = "security.account.str5", kind = "str"},
                {path = "security.account.str6", kind = "str"},
                {path = "security.account.str7", kind = "str"},
                {path = "security.account.str8", kind = "str"},
                {path = "security.account.str9", kind = "str"},
                {path = "security.account.str10", kind = "str"},
                {path = "security.account.str11", kind = "str"},
                {path = "security.account.str12", kind = "str"},
                {path = "security.account.str13", kind = "str"},
                {path = "security.account.str14", kind = "str"},
                {path = "security.account.str15", kind = "str"},
                {path = "security.account.str16", kind = "str"},
                {path = "security.account.str17", kind = "str"},
                {path = "security.account.str18", kind = "str"},
                {path = "security.account.str19", kind = "str"},
                {path = "security.account.str20", kind = "str"},
                {path = "security.account.str21", kind = "str"},
                {path = "security.account.str22", kind = "str"},
                {path = "security.account.str23", kind = "str"},
                {path = "security.account.str24", kind = "str"},
                {path = "security.account.str25", kind = "str"},
            }},
        }},
        {name = "security.data", payload = "if_positive",
         fields = {
            {path = "security.data", kind = "bytes", counted_by = "security.data_size"},
        }},
    }},
    {name = "wifi", types = {7, 8}, head = {
        {path = "wifi.type", kind = "u32"},
        {path = "wifi.param", kind = "u32"},
        {path = "wifi.data_size", kind = "i32"},
    }, forms = {
        {name = "wifi.dhcp", payload = "if_positive",
         discriminators = {88},
         fields = {
            {path = "wifi.dhcp.str0", kind = "str"},
            {path = "wifi.dhcp.str1", kind = "str"},
            {path = "wifi.dhcp.str2", kind = "str"},
            {path = "wifi.dhcp.str3", kind = "str"},
            {path = "wifi.dhcp.str4", kind = "str"},
        }},
        {name = "wifi.ssids", payload = "if_positive",
         discriminators = {290, 344, 346, {348, 350}, 352},
         fields = {
            {path = "wifi.ssids", kind = "count",
             element_size = 4, elements = {
                {path = "wifi.ssids", kind = "str"},
            }},
        }},
        {name = "wifi.pair", payload = "if_positive",
         discriminators = {305, 307, 309, 311, 313, 315, 317, 324, 326, 328, 330, 332, 339},
         fields = {
            {path = "wifi.pair.ssid", kind = "str"},
            {path = "wifi.pair.value", kind = "str"},
        }},
        {name = "wifi.triple", payload = "if_positive",
         discriminators = {319},
         fields = {
            {path = "wifi.triple.str0", kind = "str"},
            {path = "wifi.triple.str1", kind = "str"},
            {path = "wifi.triple.str2", kind = "str"},
        }},
        {name = "wifi.network", payload = "if_positive",
         discriminators = {345},
         fields = {
            {path = "wifi.network.ssid", kind = "str"},
            {path = "wifi.network.detail_kind", kind = "i32"},
            {selector = "wifi.network.detail_kind",
                {values = {1, {8, 9}}, fields = {
                    {path = "wifi.network.detail.w0", kind = "u32"},
                }},
                {values = {{2, 4}}, fields = {
                    {path = "wifi.network.detail.w0", kind = "str"},
                }},
                {values = {5, 7}, fields = {
                    {path = "wifi.network.detail.w0", kind = "str"},
                    {path = "wifi.network.detail.w1", kind = "str"},
                    {path = "wifi.network.detail.w2", kind = "str"},
                    {path = "wifi.network.detail.w3", kind = "u32"},
                    {path = "wifi.network.detail.w4", kind = "str"},
                    {path = "wifi.network.detail.w5", kind = "str"},
                }},
                {values = {6}, fields = {
                    {path = "wifi.network.detail.w0", kind = "str"},
                    {path = "wifi.network.detail.w1", kind = "str"},
                    {path = "wifi.network.detail.w2", kind = "str"},
                    {path = "wifi.network.detail.w3", kind = "str"},
                    {path = "wifi.network.detail.w4", kind = "str"},
                    {path = "wifi.network.detail.w5", kind = "str"},
                    {path = "wifi.network.detail.w6", kind = "str"},
                }},
            },
        }},
        {name = "wifi.data", payload = "if_positive",
         fields = {
            {path = "wifi.data", kind = "bytes", counted_by = "wifi.data_size"},
        }},
    }},
    {name = "bluetooth", types = {9, 10}, head = {
        {path = "bluetooth.type", kind = "u32"},
        {path = "bluetooth.param", kind = "u32"},
        {path = "bluetooth.data_size", kind = "i32"},
    }, forms = {
        {name = "bluetooth.names", payload = "if_positive",
         discriminators = {91, {220, 225}, 227, {230, 231}, {233, 235}, 237},
         fields = {
            {path = "bluetooth.names", kind = "count",
             element_size = 4, elements = {
                {path = "bluetooth.names", kind = "str"},
            }},
        }},
        {name = "bluetooth.data", payload = "if_positive",
         fields = {
            {path = "bluetooth.data", kind = "bytes", counted_by = "bluetooth.data_size"},
        }},
    }},
    {name = "eas", types = {11, 12}, head = {
        {path = "eas.type", kind = "u32"},
        {path = "eas.param", kind = "u32"},
        {path = "eas.data_size", kind = "i32"},
    }, forms = {
        {name = "eas.account", payload = "if_not_zero",
         discriminators = {98},
         fields = {
            {path = "eas.account.num0", kind = "u32"},
            {path = "eas.account.num1", kind = "u32"},
            {path = "eas.account.num2", kind = "u32"},
            {path = "eas.account.num3", kind = "u32"},
            {path = "eas.account.num4", kind = "u32"},
            {path = "eas.account.num5", kind = "u32"},
            {path = "eas.account.str6", kind = "str"},
            {path = "eas.account.str7", kind = "str"},
            {path = "eas.account.str8", kind = "str"},
            {path = "eas.account.str9", kind = "str"},
            {path = "eas.account.str10", kind = "str"},
            {path = "eas.account.str11", kind = "str"},
            {path = "eas.account.str12", kind = "str"},
            {path = "eas.account.str13", kind = "str"},
            {path = "eas.account.str14", kind = "str"},
        }},
        {name = "eas.settings", payload = "if_not_zero",
         discriminators = {104},
         fields = {
            {path = "eas.settings.str8", kind = "str"},
            {path = "eas.settings.str10", kind = "str"},
            {path = "eas.settings.str13", kind = "str"},
        }},
        {name = "eas.accounts", payload = "if_not_zero",
         discriminators = {106},
         fields = {
            {path = "eas.accounts", kind = "count",
             record = "eas.account", element_size = 60, elements = {
                {path = "eas.account.num0", kind = "u32"},
                {path = "eas.account.num1", kind = "u32"},
                {path = "eas.account.num2", kind = "u32"},
                {path = "eas.account.num3", kind = "u32"},
                {path = "eas.account.num4", kind = "u32"},
                {path = "eas.account.num5", kind = "u32"},
                {path = "eas.account.str6", kind = "str"},
                {path = "eas.account.str7", kind = "str"},
                {path = "eas.account.str8", kind = "str"},
                {path = "eas.account.str9", kind = "str"},
                {path = "eas.account.str10", kind = "str"},
                {path = "eas.account.str11", kind = "str"},
                {path = "eas.account.str12", kind = "str"},
                {path = "eas.account.str13", kind = "str"},
                {path = "eas.account.str14", kind = "str"},
            }},
        }},
        {name = "eas.value", payload = "if_not_zero",
         fields = {
            {path = "eas.value.num0", kind = "u32"},
            {path = "eas.value.str1", kind = "str"},
        }},
    }},
    {name = "app", types = {13}, head = {
        {path = "app.type", kind = "i32"},
        {path = "app.param", kind = "u32"},
        {path = "app.pkg", kind = "str"},
        {path = "app.data_size", kind = "i32"},
    }, forms = {
        {name = "app.packages", payload = "if_positive",
         discriminators = {4, 15},
         fields = {
            {path = "app.packages", kind = "count",
             element_size = 4, elements = {
                {path = "app.packages", kind = "str"},
            }},
        }},
        {name = "app.num_pair", payload = "if_positive",
         discriminators = {{140, 141}},
         fields = {
            {path = "app.num_pair.num1", kind = "u32"},
            {path = "app.num_pair.num2", kind = "u32"},
        }},
        {name = "app.pair", payload = "if_positive",
         discriminators = {{184, 185}},
         fields = {
            {path = "app.pair.first", kind = "str"},
            {path = "app.pair.second", kind = "str"},
        }},
        {name = "app.data", payload = "if_positive",
         fields = {
            {path = "app.data", kind = "bytes", counted_by = "app.data_size"},
        }},
    }},
    {name = "app_res", types = {14}, head = {
        {path = "app_res.type", kind = "i32"},
        {path = "app_res.param", kind = "u32"},
        {path = "app_res.pkg", kind = "str"},
        {path = "app_res.data_size", kind = "i32"},
    }, forms = {
        {name = "app_res.packages", payload = "if_positive",
         discriminators = {3, 155, 159, 162, {168, 171}, {176, 177}},
         fields = {
            {path = "app_res.packages", kind = "count",
             element_size = 4, elements = {
                {path = "app_res.packages", kind = "str"},
            }},
        }},
        {name = "app_res.items", payload = "if_positive",
         discriminators = {{140, 142}},
         fields = {
            {path = "app_res.items", kind = "count",
             record = "app_res.item", element_size = 8, elements = {
                {path = "app_res.item.name", kind = "str"},
                {path = "app_res.item.value", kind = "u32"},
            }},
        }},
        {name = "app_res.controls", payload = "if_positive",
         discriminators = {{172, 175}},
         fields = {
            {path = "app_res.controls", kind = "count",
             record = "app_res.control", element_size = 8, elements = {
                {path = "app_res.control.client_id", kind = "i32"},
                {path = "app_res.control.pkg_list", kind = "count",
                 element_size = 4, elements = {
                    {path = "app_res.control.pkg_list", kind = "str"},
                }},
            }},
        }},
        {name = "app_res.data", payload = "if_positive",
         fields = {
            {path = "app_res.data", kind = "bytes", counted_by = "app_res.data_size"},
        }},
    }},
    {name = "roaming", types = {15}, head = {
        {path = "roaming.type", kind = "u32"},
        {path = "roaming.param", kind = "u32"},
        {path = "roaming.data_size", kind = "i32"},
        {path = "roaming.data.name", kind = "str"},
    }, forms = {
        {name = "roaming.record",
         fields = {
        }},
    }},
    {name = "roaming_res", types = {16}, head = {
        {path = "roaming_res.type", kind = "u32"},
        {path = "roaming_res.param", kind = "u32"},
        {path = "roaming_res.data_size", kind = "i32"},
    }, forms = {
        {name = "roaming_res.head",
         fields = {
        }},
    }},
    {name = "misc", types = {17, 18}, head = {
        {path = "misc.type", kind = "i32"},
        {path = "misc.param", kind = "u32"},
        {path = "misc.data_size", kind = "i32"},
    }, forms = {
        {name = "misc.array", payload = "if_not_zero",
         discriminators = {122},
         fields = {
            {path = "misc.array", kind = "array", counted_by = "misc.data_size",
             element_size = 4, elements = {
                {path = "misc.array", kind = "str"},
            }},
        }},
        {name = "misc.head",
         discriminators = {123},
         fields = {
        }},
        {name = "misc.text", payload = "if_not_zero",
         discriminators = {{124, 126}},
         fields = {
            {path = "misc.text.value", kind = "str"},
        }},
        {name = "misc.strings",
         discriminators = {{127, 128}},
         fields = {
            {path = "misc.param_list", kind = "unsigned_count",
             element_size = 4, elements = {
                {path = "misc.param_list", kind = "str"},
            }},
        }},
        {name = "misc.book", payload = "if_not_zero",
         discriminators = {281, 283},
         fields = {
            {path = "misc.book.url", kind = "str"},
            {path = "misc.book.title", kind = "str"},
        }},
        {name = "misc.pair", payload = "if_not_zero",
         discriminators = {{288, 289}},
         fields = {
            {path = "misc.pair.first", kind = "str"},
            {path = "misc.pair.second", kind = "str"},
        }},
        {name = "misc.data", payload = "if_not_zero",
         fields = {
            {path = "misc.data", kind = "bytes", counted_by = "misc.data_size"},
        }},
    }},
    {name = "apn", types = {21, 22}, head = {
        {path = "apn.type", kind = "u32"},
        {path = "apn.param", kind = "u32"},
        {path = "apn.data_size", kind = "i32"},
    }, forms = {
        {name = "apn.profile", payload = "if_not_zero",
         discriminators = {387, 393},
         fields = {
            {path = "apn.profile.num0", kind = "u32"},
            {path = "apn.profile.num1", kind = "u32"},
            {path = "apn.profile.profile_name", kind = "str"},
            {path = "apn.profile.str3", kind = "str"},
            {path = "apn.profile.str4", kind = "str"},
            {path = "apn.profile.str5", kind = "str"},
            {path = "apn.profile.str6", kind = "str"},
            {path = "apn.profile.str7", kind = "str"},
            {path = "apn.profile.str8", kind = "str"},
            {path = "apn.profile.str9", kind = "str"},
            {path = "apn.profile.str10", kind = "str"},
            {path = "apn.profile.str11", kind = "str"},
            {path = "apn.profile.str12", kind = "str"},
            {path = "apn.profile.str13", kind = "str"},
            {path = "apn.profile.str14", kind = "str"},
        }},
        {name = "apn.profiles", payload = "if_not_zero",
         discriminators = {{389, 391}},
         fields = {
            {path = "apn.profiles", kind = "count",
             record = "apn.profile", element_size = 60, elements = {
                {path = "apn.profile.num0", kind = "u32"},
                {path = "apn.profile.num1", kind = "u32"},
                {path = "apn.profile.profile_name", kind = "str"},
                {path = "apn.profile.str3", kind = "str"},
                {path = "apn.profile.str4", kind = "str"},
                {path = "apn.profile.str5", kind = "str"},
                {path = "apn.profile.str6", kind = "str"},
                {path = "apn.profile.str7", kind = "str"},
                {path = "apn.profile.str8", kind = "str"},
                {path = "apn.profile.str9", kind = "str"},
                {path = "apn.profile.str10", kind = "str"},
                {path = "apn.profile.str11", kind = "str"},
                {path = "apn.profile.str12", kind = "str"},
                {path = "apn.profile.str13", kind = "str"},
                {path = "apn.profile.str14", kind = "str"},
            }},
        }},
        {name = "apn.data", payload = "if_not_zero",
         fields = {
            {path = "apn.data", kind = "bytes", counted_by = "apn.data_size"},
        }},
    }},
    {name = "browser", types = {23, 24}, head = {
        {path = "browser.type", kind = "u32"},
        {path = "browser.param", kind = "u32"},
        {path = "browser.data_size", kind = "i32"},
    }, forms = {
        {name = "browser.data",
         fields = {
        }},
    }},
    {name = "date_time", types = {25, 26}, head = {
        {path = "date_time.type", kind = "u32"},
        {path = "date_time.param", kind = "u32"},
        {path = "date_time.data_size", kind = "i32"},
    }, forms = {
        {name = "date_time.data", payload = "if_positive",
         fields = {
            {path = "date_time.data", kind = "bytes", counted_by = "date_time.data_size"},
        }},
    }},
    {name = "remote", types = {27, 28}, head = {
        {path = "remote.type", kind = "u32"},
        {path = "remote.param", kind = "u32"},
        {path = "remote.data_size", kind = "i32"},
    }, forms = {
        {name = "remote.data", payload = "if_positive",
         fields = {
            {path = "remote.data", kind = "bytes", counted_by = "remote.data_size"},
        }},
    }},
    {name = "vpn", types = {29, 30}, head = {
        {path = "vpn.type", kind = "u32"},
        {path = "vpn.param", kind = "u32"},
        {path = "vpn.data_size", kind = "i32"},
    }, forms = {
        {name = "vpn.data", payload = "if_positive",
         fields = {
            {path = "vpn.data", kind = "bytes", counted_by = "vpn.data_size"},
        }},
    }},
    {name = "firewall", types = {31, 32}, head = {
        {path = "firewall.type", kind = "u32"},
        {path = "firewall.param", kind = "u32"},
        {path = "firewall.data_size", kind = "i32"},
    }, forms = {
        {name = "firewall.data", payload = "if_positive",
         fields = {
            {path = "firewall.data", kind = "bytes", counted_by = "firewall.data_size"},
        }},
    }},
    {name = "res", types = {33, 34}, head = {
        {path = "res.type", kind = "u32"},
        {path = "res.param", kind = "u32"},
        {path = "res.data_size", kind = "i32"},
    }, forms = {
        {name = "res.data", payload = "if_positive",
         fields = {
            {path = "res.data", kind = "bytes", counted_by = "res.data_size"},
        }},
    }},
    {name = "phone_res", types = {35, 36}, head = {
        {path = "phone_res.type", kind = "i32"},
        {path = "phone_res.param", kind = "u32"},
        {path = "phone_res.data_size", kind = "i32"},
    }, forms = {
        {name = "phone_res.item", payload = "if_positive",
         discriminators = {{394, 421}, {423, 438}, {441, 449}, {452, 455}},
         fields = {
            {path = "phone_res.item.str0", kind = "str"},
            {path = "phone_res.item.str2", kind = "str"},
        }},
        {name = "phone_res.ext", payload = "if_positive",
         discriminators = {422},
         fields = {
            {path = "phone_res.ext.str0", kind = "str"},
            {path = "phone_res.ext.detail.num0", kind = "u32"},
            {path = "phone_res.ext.detail.num1", kind = "u32"},
            {path = "phone_res.ext.detail.str2", kind = "str"},
        }},
        {name = "phone_res.raw_item", payload = "if_positive",
         discriminators = {{439, 440}},
         fields = {
            {path = "phone_res.data", kind = "bytes", counted_by = "phone_res.data_size"},
        }},
        {name = "phone_res.data", payload = "if_positive",
         fields = {
            {path = "phone_res.data", kind = "bytes", counted_by = "phone_res.data_size"},
        }},
    }},
    {name = "enterprise", types = {37, 38}, head = {
        {path = "enterprise.type", kind = "u32"},
        {path = "enterprise.param", kind = "u32"},
        {path = "enterprise.data_size", kind = "i32"},
    }, forms = {
        {name = "enterprise.data",
         fields = {
        }},
    }},
    {name = "email", types = {39, 40}, head = {
        {path = "email.type", kind = "u32"},
        {path = "email.param", kind = "u32"},
        {path = "email.data_size", kind = "i32"},
    }, forms = {
        {name = "email.account", payload = "if_not_zero",
         discriminators = {359},
         fields = {
            {path = "email.account.num0", kind = "u32"},
            {path = "email.account.num1", kind = "u32"},
            {path = "email.account.num2", kind = "u32"},
            {path = "email.account.num4", kind = "u32"},
            {path = "email.account.num6", kind = "u32"},
            {path = "email.account.num3", kind = "u32"},
            {path = "email.account.num5", kind = "u32"},
            {path = "email.account.str13", kind = "str"},
            {path = "email.account.str14", kind = "str"},
            {path = "email.account.str15", kind = "str"},
            {path = "email.account.str16", kind = "str"},
            {path = "email.account.str17", kind = "str"},
            {path = "email.account.str18", kind = "str"},
            {path = "email.account.str19", kind = "str"},
            {path = "email.account.str20", kind = "str"},
            {path = "email.account.str21", kind = "str"},
        }},
        {name = "email.settings", payload = "if_not_zero",
         discriminators = {362},
         fields = {
            {path = "email.settings.str16", kind = "str"},
            {path = "email.settings.str15", kind = "str"},
            {path = "email.settings.str14", kind = "str"},
        }},
        {name = "email.accounts", payload = "if_not_zero",
         discriminators = {363},
         fields = {
            {path = "email.accounts", kind = "count",
             record = "email.account", element_size = 88, elements = {
                {path = "email.account.num0", kind = "u32"},
                {path = "email.account.num1", kind = "u32"},
                {path = "email.account.num2", kind = "u32"},
                {path = "email.account.num3", kind = "u32"},
                {path = "email.account.num4", kind = "u32"},
                {path = "email.account.num5", kind = "u32"},
                {path = "email.account.num6", kind = "u32"},
                {path = "email.account.num7", kind = "u32"},
                {path = "email.account.num8", kind = "u32"},
                {path = "email.account.str9", kind = "str"},
                {path = "email.account.str10", kind = "str"},
                {path = "email.account.str11", kind = "str"},
                {path = "email.account.str12", kind = "str"},
                {path = "email.account.str13", kind = "str"},
                {path = "email.account.str14", kind = "str"},
                {path = "email.account.str15", kind = "str"},
                {path = "email.account.str16", kind = "str"},
                {path = "email.account.str17", kind = "str"},
                {path = "email.account.str18", kind = "str"},
                {path = "email.account.str19", kind = "str"},
                {path = "email.account.str20", kind = "str"},
                {path = "email.account.str21", kind = "str"},
            }},
        }},
        {name = "email.value", payload = "if_not_zero",
         fields = {
            {path = "email.value.num0", kind = "u32"},
            {path = "email.value.str1", kind = "str"},
        }},
    }},
    {name = "kiosk", types = {45, 46}, head = {
        {path = "kiosk.type", kind = "u32"},
        {path = "kiosk.param", kind = "u32"},
        {path = "kiosk.data_size", kind = "i32"},
    }, forms = {
        {name = "kiosk.text", payload = "if_not_zero",
         discriminators = {612, 614},
         fields = {
            {path = "kiosk.text", kind = "str"},
        }},
        {name = "kiosk.keys", payload = "if_not_zero",
         discriminators = {618, 621},
         fields = {
            {path = "kiosk.keys", kind = "count",
             record = "kiosk.key", element_size = 4, elements = {
                {path = "kiosk.key.number", kind = "u32"},
            }},
        }},
        {name = "kiosk.key_pairs", payload = "if_not_zero",
         discriminators = {619},
         fields = {
            {path = "kiosk.key_pairs", kind = "count",
             record = "kiosk.key_pair", element_size = 8, elements = {
                {path = "kiosk.key_pair.key", kind = "u32"},
                {path = "kiosk.key_pair.value", kind = "u32"},
            }},
        }},
        {name = "kiosk.data", payload = "if_not_zero",
         fields = {
            {path = "kiosk.data", kind = "bytes", counted_by = "kiosk.data_size"},
        }},
    }},
    {name = "container", types = {47, 48}, head = {
        {path = "container.type", kind = "u32"},
        {path = "container.param", kind = "u32"},
        {path = "container.data_size", kind = "i32"},
    }, forms = {
        {name = "container.item", payload = "if_not_zero",
         discriminators = {628},
         fields = {
            {path = "container.item.num0", kind = "u32"},
            {path = "container.item.str1", kind = "str"},
            {path = "container.item.str2", kind = "str"},
        }},
        {name = "container.short_item", payload = "if_not_zero",
         discriminators = {629},
         fields = {
            {path = "container.short_item.num0", kind = "u32"},
            {path = "container.short_item.str1", kind = "str"},
        }},
        {name = "container.data", payload = "if_not_zero",
         discriminators = {{630, 632}},
         fields = {
            {path = "container.data", kind = "bytes", counted_by = "container.data_size"},
        }},
        {name = "container.head",
         fields = {
        }},
    }},
    {name = "location", types = {49, 50}, head = {
        {path = "location.type", kind = "u32"},
        {path = "location.param", kind = "u32"},
        {path = "location.data_size", kind = "i32"},
    }, forms = {
        {name = "location.head",
         fields = {
        }},
    }},
    {name = "log_manager", types = {51, 52}, head = {
        {path = "log_manager.type", kind = "u32"},
    }, forms = {
        {name = "log_manager.text",
         discriminators = {638},
         fields = {
            {path = "log_manager.value", kind = "str"},
        }},
        {name = "log_manager.byte",
         fields = {
            {path = "log_manager.value", kind = "u8"},
        }},
    }},
    {name = "platform", types = {53, 54}, head = {
        {path = "platform.type", kind = "u32"},
        {path = "platform.text", kind = "str"},
    }, forms = {
        {name = "platform.flag",
         discriminators = {439},
         fields = {
            {path = "platform.number", kind = "u32"},
            {path = "platform.flag", kind = "u8"},
        }},
        {name = "platform.number",
         discriminators = {440},
         fields = {
            {path = "platform.number", kind = "u32"},
        }},
        {name = "platform.text",
         fields = {
        }},
    }},
    {name = "app_cb", types = {61}, head = {
        {path = "app_cb.type", kind = "u32"},
        {path = "app_cb.data_size", kind = "u32"},
        {path = "app_cb.param", kind = "u32"},
        {path = "app_cb.param2", kind = "u32"},
    }, forms = {
        {name = "app_cb.detail", payload = "if_not_zero",
         discriminators = {{0, 1}},
         fields = {
            {path = "app_cb.num6", kind = "u32"},
            {path = "app_cb.str8", kind = "str"},
            {path = "app_cb.str7", kind = "str"},
        }},
        {name = "app_cb.head",
         fields = {
        }},
    }},
    {name = "misc_cb", types = {63}, head = {
        {path = "misc_cb.type", kind = "u32"},
        {path = "misc_cb.data_size", kind = "u32"},
        {path = "misc_cb.param", kind = "u32"},
        {path = "misc_cb.param2", kind = "u32"},
    }, forms = {
        {name = "misc_cb.detail", payload = "if_not_zero",
         discriminators = {{0, 1}},
         fields = {
            {path = "misc_cb.flag6", kind = "u8"},
            {path = "misc_cb.num7", kind = "u32"},
            {path = "misc_cb.str8", kind = "str"},
        }},
        {name = "misc_cb.head",
         fields = {
        }},
    }},
}

-- The fields that Wireshark knows. A field of the message has the name of its path. The count of a
-- list ends in ".count", the length of a text whose bytes are not all there in ".length". A path
-- with two kinds ends in the member of the C union. A filter has "mdm." in front of the name.

local protocol = Proto("mdm", "Device management message")

local types = {
    u8 = ftypes.UINT8, u32 = ftypes.UINT32, i32 = ftypes.INT32, count = ftypes.INT32,
    unsigned_count = ftypes.UINT32, str = ftypes.STRING, bytes = ftypes.BYTES,
    reserved = ftypes.BYTES,
}
local members = {u8 = ".byte", u32 = ".number", i32 = ".number", str = ".text"}

local category_names = {}  -- by message type
local category_of = {}
for number = first_type, last_type do
    category_names[number] = "none"
end
for _, category in ipairs(categories) do
    for _, number in ipairs(category.types) do
        category_names[number] = category.name
        category_of[number] = category
    end
end

-- Calls visit(field) for each of the fields, and for those of lists and variants among them.
local function for_each_field(list, visit)
    for _, field in ipairs(list) do
        if field.path then
            visit(field)
        end
        for_each_field(field.elements or {}, visit)
        for _, variant in ipairs(field) do
            for_each_field(variant.fields, visit)
        end
    end
end

local function for_each_field_of_all(visit)
    for_each_field(header, visit)
    for _, category in ipairs(categories) do
        for_each_field(category.head, visit)
        for _, form in ipairs(category.forms) do
            for_each_field(form.fields, visit)
        end
    end
end

local kinds_of = {}  -- by path: the kinds that are no counts
for_each_field_of_all(function(field)
    if members[field.kind] then
        local kinds = kinds_of[field.path] or {}
        kinds[members[field.kind]] = true
        kinds_of[field.path] = kinds
    end
end)

local function has_two_kinds(path)
    local kinds = kinds_of[path]
    return kinds and next(kinds, next(kinds)) ~= nil
end

local fields = {}  -- by name
local function declare(name, kind, names)
    if not fields[name] then
        local is_number = types[kind] ~= ftypes.BYTES and types[kind] ~= ftypes.STRING
        fields[name] = ProtoField.new(name, "mdm." .. name, types[kind], names,
                                      is_number and base.DEC or base.NONE)
    end
    return fields[name]
end

for_each_field_of_all(function(field)
    local path, kind = field.path, field.kind
    if kind == "count" or kind == "unsigned_count" then
        field.count = declare(path .. ".count", kind)
    elseif kind ~= "array" then
        local member = has_two_kinds(path) and members[kind] or ""
        field.value = declare(path .. member, kind,
                              path == "header.type" and category_names or nil)
        if kind == "str" then
            field.length = declare(path .. ".length", "u32")
        end
    end
end)

local form_field = declare("form", "str")
local padding_field = declare("padding", "bytes")
local rest_field = declare("rest", "bytes")
local fault_field = declare("fault", "str")
local fault_fields = {
    path = declare("fault.path", "str"),
    offset = declare("fault.offset", "u32"),
    needed = declare("fault.needed", "u32"),
    left = declare("fault.left", "u32"),
}
protocol.fields = fields

-- Notes in Wireshark's list of expert information.
local malformed = ProtoExpert.new("mdm.malformed", "The message is malformed",
                                  expert.group.MALFORMED, expert.severity.ERROR)
local cut = ProtoExpert.new("mdm.cut", "The capture does not have the whole message",
                            expert.group.UNDECODED, expert.severity.WARN)
local padded = ProtoExpert.new("mdm.padded", "No receiver reads these bytes",
                               expert.group.UNDECODED, expert.severity.CHAT)
local negative_count = ProtoExpert.new("mdm.negative_count", "A negative count announces nothing",
                                       expert.group.PROTOCOL, expert.severity.NOTE)
local zero_in_text = ProtoExpert.new("mdm.zero_in_text",
                                     "A receiver sees no byte of the text behind the zero byte",
                                     expert.group.PROTOCOL, expert.severity.NOTE)
protocol.experts = {malformed, cut, padded, negative_count, zero_in_text}

-- Reading. A reader has the packet's bytes, the size of the message, how many bytes of it were
-- captured, the offset of the next byte, and the numbers that it has read, by path. A step that
-- cannot go on raises a table: the fault, or `is_cut` if the capture ends there.

local largest_number = 0xFFFFFFFF

local function fault(reader, path, needed)
    error({path = path, offset = reader.at, needed = math.min(needed, largest_number),
           left = reader.size - reader.at})
end

-- Whether so many bytes follow is compared before any of them is taken.
local function require_bytes(reader, path, count)
    if count > reader.size - reader.at then
        fault(reader, path, count)
    end
end

-- The range of the next bytes: at least one.
local function take(reader, path, count)
    require_bytes(reader, path, count)
    if count > reader.captured - reader.at then
        error({is_cut = true})
    end
    local range = reader.buffer(reader.at, count)
    reader.at = reader.at + count
    return range
end

-- A tree item for what the reader reads next. It reaches to the end of the message until
-- close_item() is called, so a fault within it stands in it.
local function open_item(reader, tree, label)
    if reader.at < reader.captured then
        return tree:add(reader.buffer(reader.at, reader.captured - reader.at), label)
    end
    return tree:add(label)
end

local function close_item(reader, item, begin)
    if reader.at > begin then
        item:set_len(reader.at - begin)
    end
end

local read = {}  -- the functions that read a field, by its kind
local read_fields

-- Reads so many elements, if there are bytes for them: records or texts.
local function read_elements(reader, tree, field, count)
    local elements = field.elements
    require_bytes(reader, field.path, count < 0 and largest_number or count * field.element_size)
    if not field.record then
        for i = 0, count - 1 do
            read.str(reader, tree, elements[1], "[" .. i .. "] ")
        end
        return
    end
    for i = 0, count - 1 do
        local begin = reader.at
        local item = open_item(reader, tree, field.record .. "[" .. i .. "]")
        read_fields(reader, item, elements)
        close_item(reader, item, begin)
    end
end

for kind, number_of in pairs({u8 = "le_uint", u32 = "le_uint", i32 = "le_int"}) do
    local size = kind == "u8" and 1 or 4
    read[kind] = function(reader, tree, field)
        local range = take(reader, field.path, size)
        reader.numbers[field.path] = range[number_of](range)
        tree:add_le(field.value, range)
    end
end

-- What one or more bytes of UTF-8 look like, apart from the zero byte.
local characters = {
    "^[\1-\127]+", "^[\194-\223][\128-\191]", "^\224[\160-\191][\128-\191]",
    "^[\225-\236\238\239][\128-\191][\128-\191]", "^\237[\128-\159][\128-\191]",
    "^\240[\144-\191][\128-\191][\128-\191]", "^[\241-\243][\128-\191][\128-\191][\128-\191]",
    "^\244[\128-\143][\128-\191][\128-\191]",
}

-- The text with an escape in place of each zero byte and each byte that is no UTF-8. Wireshark
-- would lose them, and bytes behind them.
local function shown(text)
    local parts = {}
    local at = 1
    while at <= #text do
        local part
        for _, character in ipairs(characters) do
            part = part or text:match(character, at)
        end
        parts[#parts + 1] = part or string.format("\\x%02x", text:byte(at))
        at = at + #(part or " ")
    end
    return table.concat(parts)
end

-- The position in a list stands in front of the item's label.
function read.str(reader, tree, field, position)
    local begin = reader.at
    local count = take(reader, field.path, 4)
    local length = count:le_uint()
    if length > reader.size - reader.at then
        tree:add_le(field.length, count):prepend_text(position or "")
        fault(reader, field.path, length)
    end
    if length == 0 then
        tree:add(field.value, count, ""):prepend_text(position or "")
        return
    end
    local text = take(reader, field.path, length):raw()
    local item = tree:add(field.value, reader.buffer(begin, 4 + length), shown(text))
    item:prepend_text(position or "")
    if text:find("\0", 1, true) then
        item:add_proto_expert_info(zero_in_text)
    end
end

-- The payload `data_size` counts bytes. A negative number of bytes is more than there can be.
function read.bytes(reader, tree, field)
    local size = reader.numbers[field.counted_by]
    tree:add(field.value, take(reader, field.path, size < 0 and largest_number or size))
end

function read.reserved(reader, tree, field)
    tree:add(field.value, take(reader, field.path, 2))
end

function read.count(reader, tree, field)
    local range = take(reader, field.path, 4)
    local item = tree:add_le(field.count, range)
    local count = range:le_int()
    if count < 0 then
        item:add_proto_expert_info(negative_count)
        return
    end
    read_elements(reader, item, field, count)
end

function read.unsigned_count(reader, tree, field)
    local range = take(reader, field.path, 4)
    local item = tree:add_le(field.count, range)
    read_elements(reader, item, field, range:le_uint())
end

-- A list without a count of its own.
function read.array(reader, tree, field)
    read_elements(reader, tree, field, reader.numbers[field.counted_by])
end

local function is_in(number, numbers)
    for _, one in ipairs(numbers) do
        if number == one or type(one) == "table" and number >= one[1] and number <= one[2] then
            return true
        end
    end
    return false
end

-- What follows depends on the number of another field.
local function read_variants(reader, tree, variants)
    for _, variant in ipairs(variants) do
        if is_in(reader.numbers[variants.selector], variant.values) then
            read_fields(reader, tree, variant.fields)
        end
    end
end

local function read_field(reader, tree, field)
    read[field.kind](reader, tree, field)
end

function read_fields(reader, tree, list, first)
    for i = first or 1, #list do
        if list[i].selector then
            read_variants(reader, tree, list[i])
        else
            read_field(reader, tree, list[i])
        end
    end
end

-- The form that the discriminator selects; the last form takes all numbers that are not listed.
local function form_of(category, discriminator)
    for _, form in ipairs(category.forms) do
        if not form.discriminators or is_in(discriminator, form.discriminators) then
            return form
        end
    end
end

local function is_announced(form, data_size)
    return not form.payload or form.payload == "if_positive" and data_size > 0
           or form.payload == "if_not_zero" and data_size ~= 0
end

local function read_body(reader, tree, category)
    read_field(reader, tree, category.head[1])
    local form = form_of(category, reader.numbers[category.name .. ".type"])
    reader.form = form.name
    read_fields(reader, tree, category.head, 2)
    if is_announced(form, reader.numbers[category.name .. ".data_size"]) then
        read_fields(reader, tree, form.fields)
    end
end

local function read_header(reader, tree)
    require_bytes(reader, "header.length", 4)
    if reader.captured < 4 then
        error({is_cut = true})
    end
    local announced = reader.buffer(0, 4):le_uint() + uncounted
    if announced ~= reader.size then
        fault(reader, "header.length", announced)
    end
    require_bytes(reader, "header.length", smallest_message)
    local item = open_item(reader, tree, "Header")
    read_field(reader, item, header[1])
    if reader.captured > reader.at then
        local number = reader.buffer(reader.at, 1):uint()
        if number < first_type or number > last_type then
            fault(reader, "header.type", 1)
        end
    end
    read_field(reader, item, header[2])
    local category = category_of[reader.numbers["header.type"]]
    reader.form = not category and "none" or nil
    read_fields(reader, item, header, 3)
    close_item(reader, item, 0)
    return category
end

local function read_message(reader, tree)
    local category = read_header(reader, tree)
    if category then
        local begin = reader.at
        local item = open_item(reader, tree, "Body")
        read_body(reader, item, category)
        close_item(reader, item, begin)
    end
    if reader.at < reader.size then
        tree:add(padding_field, take(reader, "padding", reader.size - reader.at))
            :add_proto_expert_info(padded)
    end
end

-- The sentence of the library's own log. %.0f prints numbers that are too large for %d where it has
-- 32 bits.
local function sentence(found)
    local is = found.left == 1 and "is" or "are"
    local plural = found.needed == 1 and "" or "s"
    local or_more = found.needed == largest_number and " or more" or ""
    if found.path == "header.type" then
        return "header.type at offset 4 is no message type"
    end
    if found.path == "header.length" and found.needed ~= 4 then
        if found.needed == smallest_message and found.left < smallest_message then
            return string.format("header.length: a message has %d bytes or more, %d %s there",
                                 smallest_message, found.left, is)
        end
        return string.format("header.length announces a message of %.0f byte%s%s, %d %s there",
                             found.needed, plural, or_more, found.left, is)
    end
    if found.needed == largest_number and found.path:match("%.data$") then
        return string.format("%s at offset %d has a negative size", found.path, found.offset)
    end
    return string.format("%s at offset %d needs %.0f byte%s%s, %d %s left", found.path,
                         found.offset, found.needed, plural, or_more, found.left, is)
end

-- Marks the bytes from the fault on.
local function show_fault(reader, tree, found)
    local reason = sentence(found)
    local item
    if found.offset < reader.captured then
        local range = reader.buffer(found.offset, reader.captured - found.offset)
        tree:add(rest_field, range)
        item = tree:add(fault_field, range, reason)
    else
        item = tree:add(fault_field, reason)
    end
    item:set_generated()
    item:add_proto_expert_info(malformed, reason)
    for _, name in ipairs({"path", "offset", "needed", "left"}) do
        item:add(fault_fields[name], found[name]):set_generated()
    end
end

function protocol.dissector(buffer, pinfo, root)
    local reader = {buffer = buffer, size = buffer:reported_len(),
                    captured = buffer:captured_len(), at = 0, numbers = {}}
    local tree = root:add(protocol, buffer())
    local ok, stop = pcall(read_message, reader, tree)
    local info = reader.form or category_names[reader.numbers["header.type"]] or "no message"
    if reader.form then
        tree:append_text(": " .. reader.form)
        tree:add(form_field, reader.form):set_generated()
    end
    if not ok and type(stop) ~= "table" then
        error(stop, 0)  -- a mistake in this file
    elseif not ok and stop.is_cut then
        tree:add_proto_expert_info(cut)
        info = info .. " [cut by the capture]"
    elseif not ok then
        show_fault(reader, tree, stop)
        info = info .. " [malformed]"
    end
    pinfo.cols.protocol = "MDM"
    pinfo.cols.info = info
    return reader.captured
end

DissectorTable.get("wtap_encap"):add(wtap.USER0, protocol)
