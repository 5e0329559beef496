# SPDX-License-Identifier: Apache-2.0
import sys

from mdm import Mdm

for file in sys.argv[1:]:
    with Mdm.from_file(file) as message:
        print(file, message.body.form.name)
        for ssid in getattr(message.body, 'ssids', []):
            print(' ', ssid.text)
