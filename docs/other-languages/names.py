# SPDX-License-Identifier: Apache-2.0
import sys

from mdm import Mdm

for file in sys.argv[1:]:
    body = Mdm.from_file(file).body
    print(file, body.form.name)
    for ssid in getattr(body, 'ssids', []):
        print(' ', ssid.text)
