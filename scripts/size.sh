# SPDX-License-Identifier: Apache-2.0
# How large the library is. ./dev sources this file.
# shellcheck shell=bash

# The code and the constant data that the linker has kept: a folder of src/ and bytes a line. A map
# begins with the sections that were dropped, before any output section. A text that also stands
# elsewhere is listed with its size, but at the address of the next text: only the last one at an
# address is there.
kept_text() {
    awk '/^\./ { section = $1 }
        section !~ /^\.(text|rodata|eh_frame|gcc_except_table|ARM\.extab|ARM\.exidx)$/ { next }
        $1 == "*fill*" { delete kept[$2] }
        sub(/\/[^\/]*\.cpp\.o$/, "", $NF) {
            sub(/.*\/src\//, "", $NF)
            kept[$(NF - 2)] = $NF " " $(NF - 1)
        }
        END { for (address in kept) print kept[address] }' "$1"
}

count_relocations() {
    LC_ALL=C readelf --relocs --wide "$1" |
        awk '/^Relocation section/ { count += $(NF - 1) } END { print count + 0 }'
}

count_start_up_functions() {
    local all each
    read -r all each < <(LC_ALL=C readelf --section-headers --wide "$1" |
        awk 'sub(/.* INIT_ARRAY /, "") { print "0x" $3, "0x" $4 }')
    echo $((all / each))
}

# The sizes of a preset's library: a name and a number a line, with a tab between them.
measure_size() {
    local library=build/$1/libmdm-common.so folder bytes text data bss
    local -A text_of=()
    while read -r folder bytes; do
        text_of[$folder]=$((${text_of[$folder]-0} + bytes))
    done < <(kept_text "$library.map")
    read -r text data bss _ < <(size "$library" | tail -n 1)
    local rows=(text "$text") linking=$text
    while read -r folder; do
        rows+=("  $folder" "${text_of[$folder]-0}")
        linking=$((linking - ${text_of[$folder]-0}))
    done < <(find src -name '*.cpp' | sed 's,^src/,,; s,/[^/]*$,,' | LC_ALL=C sort -u)
    rows+=('  linking' "$linking" data "$data" bss "$bss"
        relocations "$(count_relocations "$library")"
        'start-up functions' "$(count_start_up_functions "$library")")
    printf '%s\t%d\n' "${rows[@]}"
}

check_size() {
    local preset=$1 name=$2 limit=$3 number
    number=$(awk -F'\t' -v name="$name" '$1 == name { print $2 }' "build/$preset/size")
    [ "$number" -le "$limit" ] ||
        die "the library is too large: $name of the preset $preset is $number, the limit is $limit"
}

do_size() {
    # On armhf 65,281 bytes of text and 348 relocations, and 3 KiB and four for the parts.
    local armhf_text_limit=68353 x86_64_text_limit=106496 armhf_relocations_limit=352
    [ "$(uname -m)" = x86_64 ] || die "only an x86-64 machine builds both libraries"
    need_cross armhf
    local preset
    for preset in armhf release; do
        build_preset "$preset" --target mdm-common
        measure_size "$preset" >"build/$preset/size"
    done
    say "Size"
    paste build/armhf/size build/release/size | awk -F'\t' '
        BEGIN { printf "%-18s %8s %8s\n", "", "armhf", "x86-64" }
        { printf "%-18s %8d %8d\n", $1, $2, $4 }'
    check_size armhf text "$armhf_text_limit"
    check_size release text "$x86_64_text_limit"
    check_size armhf relocations "$armhf_relocations_limit"
}
