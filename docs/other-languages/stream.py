# SPDX-License-Identifier: Apache-2.0
import sys

from mdm import Mdm

with open(sys.argv[1], 'rb') as stream:
    while word := stream.read(4):
        rest = stream.read(int.from_bytes(word, 'little') + 4)
        message = Mdm.from_bytes(word + rest)
        print(message.header.hdr_text.text, message.body.form.name)
