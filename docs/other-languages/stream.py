# SPDX-License-Identifier: Apache-2.0
import sys

from mdm import Mdm

LARGEST = 1_000_000  # bytes that this program reads at once

with open(sys.argv[1], 'rb') as stream:
    while word := stream.read(4):
        rest = stream.read(min(int.from_bytes(word, 'little') + 4, LARGEST))
        message = Mdm.from_bytes(word + rest)
        print(message.header.hdr_text.text, message.body.form.name)
