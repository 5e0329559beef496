-- SPDX-License-Identifier: Apache-2.0
std = 'lua52'
max_line_length = 100
-- What Wireshark has.
read_globals = {
    'DissectorTable', 'Proto', 'ProtoExpert', 'ProtoField', 'base', 'expert', 'ftypes', 'wtap',
}
