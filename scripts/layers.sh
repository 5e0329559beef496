# SPDX-License-Identifier: Apache-2.0
# The layers of src/. ./dev sources this file.
# shellcheck shell=bash

# What each folder of src/ may include besides itself and the public headers.
layers() {
    cat <<'END'
log:
wire:       log
ipc/body:   wire log
ipc:        ipc/body wire log
crypto:     log
util:       log
status:     log
values:
END
}

check_layers() {
    local sources
    mapfile -t sources < <(git ls-files 'src/*.cpp' 'src/*.hpp' 'src/*.h')
    awk '
        function refuse(place, reason) { print place ": " reason; refused = 1 }
        FNR == NR {
            sub(/:$/, "", $1)
            known[$1]
            for (i = 1; i <= NF; ++i)
                may_include[$1, $i]
            next
        }
        FNR == 1 {
            folder = FILENAME
            gsub(/^src\/|\/[^\/]*$/, "", folder)
            if (!(folder in known))
                refuse(FILENAME, "the folder " folder " is in no layer")
        }
        /^[ \t]*#[ \t]*include[ \t]*["<]/ {
            of_system = /</
            sub(/^[^"<]*["<]/, "")
            sub(/[">].*/, "")
            other = $0
            if (!sub(/\/[^\/]*$/, "", other))
                other = folder
            if (other ~ /^mdm(\/|$)/ || of_system && !(other in known))
                next
            if (!((folder, other) in may_include))
                refuse(FILENAME ":" FNR, folder " may not include " $0)
        }
        END { exit refused }' <(layers) "${sources[@]}"
}
