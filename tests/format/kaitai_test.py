# SPDX-License-Identifier: Apache-2.0
"""Reads messages with the reader that is made of format/mdm.ksy, and compares it with mdm-msg.

Usage: kaitai_test.py MDM_MSG MESSAGE_SEEDS READERS CORPUS...

READERS is the directory of the generated mdm.py and Mdm.js, CORPUS a directory of messages.
"""
import json
import os
import struct
import subprocess
import sys
import unittest
from io import BytesIO

from messages import (as_hex, compared_messages, count_values, cut_and_changed, forms, is_whole,
                      json_of, kept_messages, message_with_text, skip, text_or_hex,
                      with_true_length, without_member)

try:
    import kaitaistruct
except ImportError:
    skip('python3-kaitaistruct is not installed')


class TracingStream(kaitaistruct.KaitaiStream):
    """Knows which bytes were asked for last."""

    last = None

    def read_bytes(self, n):
        TracingStream.last = (self, self.pos(), n)
        return super().read_bytes(n)


def json_value(value, name):
    if isinstance(value, list):
        return [json_value(element, name) for element in value]
    if isinstance(value, bytes):
        return as_hex(value) if name == 'reserved' else text_or_hex(value)
    if not isinstance(value, kaitaistruct.KaitaiStruct):
        return value
    if type(value).__name__ == 'CountedText':
        return text_or_hex(value.bytes)
    members = {}
    for member, inner in vars(value).items():
        if member.startswith('_') or member == 'padding':
            continue
        members[without_member(member)] = json_value(inner, member)
    for member in [member for member in members if member[:4] == 'num_' and member[4:] in members]:
        count = members.pop(member)
        if count < 0:
            assert members[member[4:]] == []
            members[member[4:]] = {'count': count}
    return members


def names_of(printed):
    """The category and the form, as the generated reader names them."""
    return [printed['category'].replace('_', ''), printed['form'].replace('.', '_')]


def names_of_read(message):
    category = type(message.body).__name__.lower()
    return ['none' if category == 'nocategory' else category, message.body.form.name]


def json_message(message):
    printed = {'header': json_value(message.header, 'header')}
    if names_of_read(message)[0] != 'none':
        printed['body'] = json_value(message.body, 'body')
    if message.body.padding:
        printed['padding'] = as_hex(message.body.padding)
    return printed


def fault_offset(error, message):
    """Where the reader has stopped, from the beginning of the message."""
    stream, begin, count = TracingStream.last
    before_body = 0 if stream.size() == len(message) else len(message) - stream.size()
    if isinstance(error, EOFError):
        # What a message counts is compared with what is left before it is read.
        assert count <= 4
        return before_body + begin
    if error.src_path.startswith('/types/header/'):
        return begin  # the length field or the type is wrong
    return before_body + error.io.pos()  # what has been counted is not there


class KaitaiTest(unittest.TestCase):
    def read(self, message):
        """The message and None, or None and the offset of its fault."""
        try:
            return reader.Mdm(TracingStream(BytesIO(message))), None
        except (EOFError, kaitaistruct.ValidationExprError) as error:
            return None, fault_offset(error, message)

    def compare(self, message, expected):
        read, offset = self.read(message)
        if not is_whole(expected):
            self.assertIsNone(read, message.hex())
            self.assertEqual(offset, expected['fault']['offset'], message.hex())
            return 0
        self.assertIsNone(offset, message.hex())
        self.assertEqual(names_of_read(read), names_of(expected))
        values = {name: expected[name] for name in ('header', 'body', 'padding')
                  if name in expected}
        # As texts, because the order counts, too.
        self.assertEqual(json.dumps(json_message(read)), json.dumps(values), message.hex())
        return count_values(values)

    def test_reads_what_the_library_reads(self):
        values = sum(map(self.compare, messages, expected))
        self.assertEqual({one['form'] for one in expected if is_whole(one)}, forms(mdm_msg))
        number = sum(map(is_whole, expected))
        print(f'{number} whole messages with {values} values, {len(messages) - number} malformed')
        self.assertGreater(len(messages), 8400)
        self.assertGreater(len(messages) - number, 2400)
        self.assertGreater(values, 110000)

    def test_stops_where_the_library_does(self):
        for message, fault in changed:
            read, offset = self.read(message)
            self.assertEqual(offset, fault and fault['offset'], message.hex())
            self.assertEqual(read is None, fault is not None, message.hex())
        print(f'{len(changed)} cut or changed messages')
        self.assertGreater(len(changed), 330000)

    def test_javascript_refuses_what_the_library_refuses(self):
        read = [(message, one.get('fault')) for message, one in zip(messages, expected)] + changed
        lines = ''.join(f'{message.hex()}\n' for message, _ in read)
        program = os.path.join(os.path.dirname(__file__), 'javascript_reader.cjs')
        run = subprocess.run(['node', program, reader_directory],
                             input=lines.encode(), stdout=subprocess.PIPE, check=True)
        offsets = json.loads(run.stdout)
        self.assertEqual(len(offsets), len(read))
        for (message, fault), offset in zip(read, offsets):
            self.assertEqual(offset, fault and fault['offset'], message.hex())
        print(f'{len(read)} messages with the reader in JavaScript')

    def test_a_value_that_is_not_there_is_no_attribute(self):
        for data_size in (0, 1):
            message = with_true_length(bytes.fromhex('00000000' '07000000' + 32 * '00') +
                                       struct.pack('<3I', 88, 0, data_size) + bytes(100))
            body = self.read(message)[0].body
            self.assertEqual(body.form, reader.Mdm.Form.wifi_dhcp)
            self.assertEqual(hasattr(body, 'dhcp'), data_size == 1)
            self.assertFalse(hasattr(body, 'ssids'))

    def test_reads_texts(self):
        text = self.read(message_with_text('ä'.encode()))[0].body.value_text
        self.assertEqual(text.text, 'ä')
        self.assertEqual(text.bytes, b'\xc3\xa4')
        text = self.read(message_with_text(b'a\xff'))[0].body.value_text
        self.assertEqual(text.bytes, b'a\xff')
        with self.assertRaises(UnicodeDecodeError):
            print(text.text)


if __name__ == '__main__':
    mdm_msg, message_seeds, reader_directory, *corpus = sys.argv[1:]
    sys.path.insert(0, reader_directory)
    try:
        import mdm as reader
    except ImportError:
        skip('there is no reader')

    reader.KaitaiStream = TracingStream  # of a body, too
    whole, messages = compared_messages(mdm_msg, message_seeds, corpus)
    expected = json_of(mdm_msg, messages)
    changed = cut_and_changed(mdm_msg, whole, whole + kept_messages(corpus))
    unittest.main(argv=sys.argv[:1])
