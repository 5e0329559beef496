# SPDX-License-Identifier: Apache-2.0
"""The messages that other readers are compared with, and what mdm-msg says about them."""
import json
import os
import re
import struct
import subprocess
import sys
import tempfile

SMALLEST_MESSAGE = 40
UNCOUNTED = 8  # the bytes that the length field does not count


def skip(reason):
    print(f'{os.path.basename(sys.argv[0])}: Skipped\n{reason}')
    sys.exit(77)


def kept_messages(directories):
    """The bytes of each file, and at least one file."""
    paths = [os.path.join(directory, name)
             for directory in directories for name in sorted(os.listdir(directory))]
    messages = []
    for path in paths:
        with open(path, 'rb') as file:
            messages.append(file.read())
    assert messages
    return messages


def seeds(program):
    """A whole message of every form, several of most."""
    with tempfile.TemporaryDirectory() as directory:
        subprocess.run([program, directory], check=True)
        return kept_messages([directory])


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


def is_whole(printed):
    return 'fault' not in printed


def json_of(mdm_msg, messages):
    """What `mdm-msg json` prints for each message."""
    with tempfile.TemporaryDirectory() as directory:
        names = [f'{directory}/{i}' for i in range(len(messages))]
        for name, message in zip(names, messages):
            with open(name, 'wb') as file:
                file.write(message)
        run = subprocess.run([mdm_msg, 'json', '--lines', '--raw', *names], check=False,
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    assert run.returncode in (0, 1)
    printed = [json.loads(line) for line in run.stdout.splitlines()]
    assert len(printed) == len(messages)
    return printed


def fault(path, offset, needed, left):
    return {'path': path, 'offset': offset, 'needed': min(needed, 0xFFFFFFFF), 'left': left}


def with_true_length(message):
    return struct.pack('<I', len(message) - UNCOUNTED) + message[4:]


def message_with_text(text):
    """A message of the type log_manager."""
    head = bytes(4) + b'\x33' + bytes(35)
    return with_true_length(head + struct.pack('<II', 638, len(text)) + text)


def cuts(message):
    """Each beginning of a message, but for the empty one, with its fault. The length field is wrong
    or not there, or it is true and the message is too small."""
    for size in range(1, len(message)):
        announced = struct.unpack('<I', message[:4])[0] + UNCOUNTED if size >= 4 else 4
        if announced != size:
            yield message[:size], fault('header.length', 0, announced, size)
    for size in range(UNCOUNTED, SMALLEST_MESSAGE):
        yield (with_true_length(message[:size].ljust(size, b'x')),
               fault('header.length', 0, SMALLEST_MESSAGE, size))


def corrected_cuts(message):
    """Each beginning of a message that has a header, with a true length field."""
    return [with_true_length(message[:size]) for size in range(SMALLEST_MESSAGE, len(message))]


def changed(message):
    """The message with another word at each offset: a count, a length, a size or a selector may
    be there."""
    for offset in range(UNCOUNTED, len(message) - 3):
        for word in (0xFFFFFFFF, 0x80000000, 2):
            yield message[:offset] + struct.pack('<I', word) + message[offset + 4:]


def changes(messages):
    """The changes of messages that differ not only in the bytes that no reader looks at."""
    different = {message[:6] + message[8:]: message for message in messages}.values()
    return [one for message in different for one in changed(message)]


def discriminators_of(category):
    """Each discriminator that a form lists, and its neighbours."""
    listed = {number for form in category['forms'] for number in form.get('discriminators', ())}
    return sorted({number + distance for number in listed for distance in (-1, 0, 1)
                   if number + distance >= 0} | {0, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF})


# What follows the discriminator: a parameter and a `data_size`, or a `data_size` and a parameter.
# In the last one, a text without bytes stands between them.
HEADS = ([0xFFFFFFFF, 1], [0x80000000, 0xFFFFFFFF], [1, 0x80000000], [0, 0], [0xFFFFFFFE, 0, 1])


def messages_of_all_types(mdm_msg):
    """A message of each type and each discriminator, for some values of `data_size`. Words of the
    header look negative."""
    categories = json.loads(output_of(mdm_msg, 'forms', '--json'))['categories']
    bodies = {number: [struct.pack(f'<{len(head) + 1}I', discriminator, *head) + bytes(104)
                       for discriminator in discriminators_of(category) for head in HEADS]
              for category in categories for number in category['types']}
    for number in range(256):
        head = bytes([0, 0, 0, 0, number, 255, 1, 2]) + 8 * b'\xff\xff\xff\x8f'
        head = head[:16] + bytes(4) + head[20:]
        for body in bodies.get(number, [b'abc']):
            yield with_true_length(head + body)


def faults_of(mdm_msg, messages):
    """The fault of each message, whose length field is true; None if it is whole."""
    run = subprocess.run([mdm_msg, 'check', '--json', '--raw', '--stream', '-'], check=False,
                         input=b''.join(messages), stdout=subprocess.PIPE,
                         stderr=subprocess.DEVNULL)
    assert run.returncode in (0, 1)
    printed = [json.loads(line) for line in run.stdout.splitlines()]
    assert [one['length'] for one in printed] == [len(message) for message in messages]
    return [one.get('fault') for one in printed]


def cut_and_changed(mdm_msg, whole, kept):
    """The cuts of the kept messages and the changes of whole ones. Each has its fault, or None."""
    others = changes(whole) + [one for message in kept for one in corrected_cuts(message)]
    return [one for message in kept for one in cuts(message)] + \
        list(zip(others, faults_of(mdm_msg, others)))


def forms(mdm_msg):
    """The names of all forms."""
    return {form['name']
            for category in json.loads(output_of(mdm_msg, 'forms', '--json'))['categories']
            for form in category['forms']} | {'none'}


def without_member(name):
    """The name of a value without the member of the C union, if a record has it in two kinds."""
    return re.sub('^(value|w[0-9])[._](byte|number|text)$', r'\1', name)


def compared_messages(mdm_msg, message_seeds, corpus):
    """Whole messages of every form, and all messages whose values are compared."""
    whole = seeds(message_seeds)
    return whole, whole + kept_messages(corpus) + list(messages_of_all_types(mdm_msg)) + \
        changes(whole)[::20]


def text_or_hex(value):
    """As mdm-msg prints a text or raw bytes."""
    try:
        text = value.decode('utf-8')
    except UnicodeDecodeError:
        return as_hex(value)
    return as_hex(value) if '\0' in text else text


def as_hex(value):
    return {'hex': value.hex()}


def count_values(printed):
    """How many numbers, texts and bytes a message has, without what the program adds to them."""
    if isinstance(printed, dict):
        if set(printed) == {'hex'}:
            return 1
        return sum(count_values(value) for name, value in printed.items()
                   if name not in ('category', 'form', 'fault'))
    if isinstance(printed, list):
        return sum(count_values(value) for value in printed)
    return 1
