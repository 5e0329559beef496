# SPDX-License-Identifier: Apache-2.0
"""Shows messages with format/mdm.lua in tshark, and compares what it prints with mdm-msg.

Usage: wireshark_test.py MDM_MSG MESSAGE_SEEDS DISSECTOR DIRECTORY CORPUS...

Captures go to DIRECTORY. CORPUS is a directory of messages.
"""
import os
import re
import shutil
import struct
import subprocess
import sys
import unittest
import xml.etree.ElementTree as xml

from messages import (as_hex, compared_messages, count_values, cut_and_changed, faults_of, forms,
                      is_whole, json_of, kept_messages, message_with_text, skip, text_or_hex,
                      without_member)

LINK_TYPE = '147'

# Expert entries, and the errors of a dissector in Lua.
EXPERTS = ('mdm.malformed', 'mdm.cut', '_ws.lua.error', 'mdm.padded', 'mdm.negative_count',
           'mdm.zero_in_text')


def tshark(*arguments):
    run = subprocess.run(['tshark', *arguments, '-X', f'lua_script:{dissector}'],
                         check=False, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    complaints = [line for line in run.stderr.decode().splitlines()
                  if not line.startswith('Running as user ')]
    assert run.returncode == 0 and not complaints, complaints
    return run.stdout


def capture_of_dump(name, messages):
    """A capture that text2pcap makes."""
    dump = ''.join(f'0 {message.hex(" ")}\n' for message in messages)
    path = os.path.join(directory, name)
    subprocess.run(['text2pcap', '-q', '-l', LINK_TYPE, '-', path], check=True,
                   input=dump.encode())
    return path


def capture(name, packets):
    """A capture of packets: the captured bytes of each, and its whole size."""
    path = os.path.join(directory, name)
    with open(path, 'wb') as file:
        file.write(struct.pack('<IHHiIII', 0xA1B2C3D4, 2, 4, 0, 0, 0x40000, int(LINK_TYPE)))
        for captured, size in packets:
            file.write(struct.pack('<IIII', 0, 0, len(captured), size) + captured)
    return path


def packets_in(path):
    """The items of each packet's message, as tshark prints them."""
    root = xml.fromstring(tshark('-r', path, '-T', 'pdml'))
    return [packet.findall("proto[@name='mdm']/field") for packet in root.iter('packet')]


def columns(path, *names):
    """The values of fields, a list for each packet."""
    words = [word for name in names for word in ('-e', name)]
    return [line.split('\t') for line in
            tshark('-r', path, '-T', 'fields', *words).decode().splitlines()]


# Each one's bytes or characters have to be shown in another way.
TEXTS = [
    'Büro 東京'.encode(), '\x7f\x80\u07ff\u0800\ud7ff\ue000\uffee\U00010000\U0010fffd'.encode(),
    b'C:\\x00', b'a\0b\0', b'\0', bytes(9), b'\x80', b'\xc0\x80', b'\xc1\xbf', b'\xc2',
    b'\xe0\x9f\xbf', b'\xe2\x82', b'\xed\xa0\x80', b'\xf0\x8f\xbf\xbf', b'\xf4\x90\x80\x80',
    b'\xf5\x80\x80\x80', b'\xf0\x9f\x98', b'a\xffb\xfe',
]


def text_of(value):
    """The bytes of a text, behind the four of their count."""
    assert struct.unpack('<I', value[:4])[0] == len(value) - 4
    return value[4:]


def has_note(item, name):
    return any(note.get('name') == name for inner in item if inner.get('name') == '_ws.expert'
               for note in inner)


def is_count(names):
    """Whether it is the count of a list, or the length of a text that is not all there."""
    return names[-1] in ('count', 'length') and len(names) > 2


def names_of_field(names):
    """The names in the path of the field that an item shows."""
    is_member = without_member('.'.join(names[-2:])) in names[:-1]
    return names[:-1] if is_count(names) or is_member else names


class Printed:
    """What tshark prints of a message, as the JSON that mdm-msg prints of it.

    Each item that stands for bytes has to begin where the one before it has ended.
    """

    def __init__(self, items):
        self.json = {}
        self.fault = None
        self.end = 0
        self.is_closed = True  # each item without a field ends where its last field does
        for item in items:
            label = item.get('showname')
            if item.get('name') != '_ws.lua.text':
                self.add(item, self.json, 0)
            elif label == 'Header':
                self.add_members(item, self.json.setdefault('header', {}), 1)
            else:
                body = {}
                self.add_members(item, body, 1)
                if body:
                    self.json['body'] = body

    def add_members(self, item, record, level):
        """The items of a record, whose names in a path begin at the level."""
        begin = self.end
        for inner in item:
            self.add(inner, record, level)
        self.is_closed = self.is_closed and int(item.get('size')) == self.end - begin
        return record

    def add(self, item, record, level):
        name = item.get('name')
        if name == 'mdm.fault':
            self.fault = item
        elif name == 'mdm.form':
            self.json['form'] = item.get('show')
        elif name not in EXPERTS and name.startswith('mdm.'):
            names = name.split('.')[1:]
            value = self.value_of(item, names)
            names = names_of_field(names)
            if names == ['header', 'type']:
                category = re.search(r': (\w+) \(', item.get('showname'))
                self.json['category'] = category[1] if category else 'none'
            for inner in names[level:-1]:
                record = record.setdefault(inner, {})
            if item.get('showname').startswith('['):  # an element of a list without a count
                record.setdefault(names[-1], []).append(value)
                assert item.get('showname').startswith(f'[{len(record[names[-1]]) - 1}] ')
            else:
                record[names[-1]] = value

    def take(self, item):
        """The bytes of an item."""
        value = bytes.fromhex(item.get('value'))
        assert int(item.get('pos')) == self.end and int(item.get('size')) == len(value) > 0
        self.end += len(value)
        return value

    def value_of(self, item, names):
        if is_count(names):
            return self.list_of(item)
        value = self.take(item)
        kind = kinds[item.get('name')]
        if kind == 'FT_STRING':
            text = text_of(value)
            assert has_note(item, 'mdm.zero_in_text') == (0 in text), item.attrib
            shown = text.decode('utf-8', 'backslashreplace').replace('\0', '\\x00')
            if shown.isprintable():  # tshark escapes the others
                assert item.get('show') == shown, item.attrib
            return text_or_hex(text)
        if kind == 'FT_BYTES':
            assert item.get('show').replace(':', '') == value.hex()
            return text_or_hex(value) if names[-1] == 'data' else as_hex(value)
        return int(item.get('show'))

    def list_of(self, item):
        self.take(item)
        elements = []
        for inner in item:
            label = inner.get('showname')
            if inner.get('name') == '_ws.lua.text':
                path = '.'.join(inner[0].get('name').split('.')[1:3]) if len(inner) else ''
                assert label.startswith(path) and label.endswith(f'[{len(elements)}]'), label
                elements.append(self.add_members(inner, {}, 2))
            elif inner.get('name') not in EXPERTS and inner.get('name').startswith('mdm.'):
                assert label.startswith(f'[{len(elements)}] '), label
                elements.append(self.value_of(inner, inner.get('name').split('.')[1:]))
        count = int(item.get('show'))
        assert has_note(item, 'mdm.negative_count') == (count < 0)
        if len(elements) == count:
            return elements
        return {'count': count, 'elements': elements} if elements else {'count': count}


def packet_line(printed):
    """How the list of packets shows a message."""
    name = printed.get('form') or printed.get('category', 'no message')
    return ['MDM', name if is_whole(printed) else f'{name} [malformed]']


def fault_of(item):
    """A fault as mdm-msg prints it."""
    fault = {inner.get('name').removeprefix('mdm.fault.'): inner.get('show') for inner in item}
    return {'path': fault['path'], 'offset': int(fault['offset']), 'needed': int(fault['needed']),
            'left': int(fault['left']), 'reason': item.get('show')}


class WiresharkTest(unittest.TestCase):
    def compare(self, message, items, expected):
        printed = Printed(items)
        self.assertEqual(printed.end, len(message))
        experts = {item.get('name') for top in items for item in top.iter()} & set(EXPERTS)
        self.notes |= experts
        self.assertEqual('mdm.padded' in experts, 'padding' in expected)
        self.assertEqual('mdm.malformed' in experts, not is_whole(expected))
        if is_whole(expected):
            self.assertIsNone(printed.fault)
            self.assertTrue(printed.is_closed)
        else:
            fault = expected['fault']
            self.assertEqual(fault_of(printed.fault), fault)
            if fault['offset'] < len(message):  # the mark begins at the fault
                self.assertEqual(int(printed.fault.get('pos')), fault['offset'])
        self.assertEqual(printed.json, {name: value for name, value in expected.items()
                                        if name != 'fault'})
        return count_values(expected)

    def test_shows_what_mdm_msg_shows(self):
        expected = json_of(mdm_msg, messages)
        path = capture_of_dump('messages.pcap', messages)
        packets = packets_in(path)
        self.assertEqual(len(packets), len(messages))
        lines = columns(path, '_ws.col.Protocol', '_ws.col.Info')
        self.assertEqual(len(lines), len(messages))
        for line, one in zip(lines, expected):
            self.assertEqual(line, packet_line(one))
        values = 0
        self.notes = set()
        for message, items, one in zip(messages, packets, expected):
            with self.subTest(message.hex()):
                values += self.compare(message, items, one)
        self.assertEqual({one['form'] for one in expected if is_whole(one)}, forms(mdm_msg))
        number = sum(map(is_whole, expected))
        print(f'{number} whole messages, {len(messages) - number} malformed, {values} values')
        self.assertEqual(self.notes,
                         {'mdm.malformed', 'mdm.padded', 'mdm.negative_count', 'mdm.zero_in_text'})
        self.assertGreater(len(messages), 8400)
        self.assertGreater(len(messages) - number, 2400)
        self.assertGreater(values, 110000)

    def test_shows_the_fault_of_every_cut_and_change(self):
        changed = cut_and_changed(mdm_msg, whole, kept)
        path = capture('changed.pcap', [(message, len(message)) for message, _ in changed])
        shown = columns(path, 'mdm.fault.path', 'mdm.fault.offset', 'mdm.fault.needed',
                        'mdm.fault.left', *EXPERTS[:3])
        self.assertEqual(len(shown), len(changed))
        for row, (_, fault) in zip(shown, changed):
            self.assertEqual(row[5:], ['', ''])
            self.assertEqual(row[4] != '', fault is not None)
            self.assertEqual(row[:4], [str(fault[name]) for name in
                                       ('path', 'offset', 'needed', 'left')] if fault else [''] * 4)
        print(f'{len(changed)} cut or changed messages')
        self.assertGreater(len(changed), 330000)

    def test_says_what_a_capture_has_cut(self):
        # The last packet is an empty one.
        packets = [(message[:size], message) for message in kept
                   for size in range(len(message))] + [(b'', b'')]
        faults = {message: one.get('fault') for message, one in
                  zip([*kept, b''], json_of(mdm_msg, [*kept, b'']))}
        path = capture('short.pcap', [(captured, len(message)) for captured, message in packets])
        shown = columns(path, 'mdm.fault.offset', *EXPERTS[:3])
        self.assertEqual(len(shown), len(packets))
        for row, (captured, message) in zip(shown, packets):
            fault = faults[message]
            is_found = row[0] != ''
            self.assertEqual(row[3], '')
            self.assertEqual([row[1] != '', row[2] != ''], [is_found, not is_found])
            if is_found:
                self.assertEqual(row[0], str(fault['offset']))
            elif fault is not None:
                # Behind the fault stands what has led to it.
                self.assertGreaterEqual(fault['offset'] + 4, len(captured))
        print(f'{len(packets)} messages of which a capture has the beginning')


if __name__ == '__main__':
    for program in ('tshark', 'text2pcap'):
        if shutil.which(program) is None:
            skip(f'{program} is not installed')
    mdm_msg, message_seeds, dissector, directory, *corpus = sys.argv[1:]
    os.makedirs(directory, exist_ok=True)
    whole, messages = compared_messages(mdm_msg, message_seeds, corpus)
    messages = [message for message in messages if message] + [*map(message_with_text, TEXTS)]
    kept = whole + kept_messages(corpus)
    rows = [line.split('\t') for line in tshark('-G', 'fields').decode().splitlines()]
    kinds = {row[2]: row[3] for row in rows if row[0] == 'F'}
    unittest.main(argv=sys.argv[:1])
