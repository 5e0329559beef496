# SPDX-License-Identifier: Apache-2.0
"""Opens pages of `mdm-msg html` in a browser.

Usage: html_browser_test.py MDM_MSG DIRECTORY

Pages and pictures go to DIRECTORY, or to MDM_SCREENSHOTS if that is set. Without one of the Debian
packages chromium, chromium-driver, python3-selenium and python3-html5lib the test is skipped.
"""
import json
import os
import shutil
import struct
import subprocess
import sys
import unittest

PACKAGES = {'chromium': 'chromium', 'chromedriver': 'chromium-driver'}



def skip(reason):
    print(f'{os.path.basename(__file__)}: Skipped\n{reason}')
    sys.exit(77)


try:
    import html5lib
    from selenium import webdriver
    from selenium.webdriver.chrome.options import Options
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError as missing:
    skip(f'python3-{missing.name} is not installed')


def word(number):
    return struct.pack('<I', number & 0xFFFFFFFF)


def text(letters):
    letters = letters.encode() if isinstance(letters, str) else letters
    return word(len(letters)) + letters


def message(message_type, *body):
    rest = bytes([message_type, 7, 0, 0]) + word(1) + word(2) + text('hello')
    rest += b''.join(word(number) for number in (3, 6, 7, 4, 5)) + b''.join(body)
    return word(len(rest) - 4) + rest


def strings(*texts):
    return message(7, word(344), word(0), word(1), word(len(texts)), *map(text, texts))


# What would run if it were taken for HTML, for an attribute or for a script.
HOSTILE = [
    '</script><script>window.hit=1</script>',
    '<img src=x onerror="window.hit=1">',
    '<img src="http://127.0.0.1:9/picture">',
    '" onmouseover="window.hit=1" autofocus onfocus="window.hit=1',
    "' onpointerover='window.hit=1",
    '</style><style>@import "http://127.0.0.1:9/style";</style>',
    '</pre></code></a><svg onload=window.hit=1>',
    '<!--<script>',
    ']]>&lt;&#60;',
    '${window.hit=1}',
    'javascript:window.hit=1',
    'left\u202eright\u2066\x1b[2J\x00\u2028\ufeff',
    b'\xff\xc3(\xed\xa0\x80',
    'Büro 東京 😀 אבג',
    '<b>' * 200,
]

MESSAGES = {
    'record': message(7, word(345), word(0), word(1), text('office'), word(6), text('peap'),
                      *map(text, ('mschapv2', 'staff', '', 'correct horse', 'ca.pem', '', 'x'))),
    'list': strings('office', '', 'guests', 'Büro'),
    'hostile': strings(*HOSTILE),
    'cut': strings('office', 'guests')[:-3],
    'cut-behind-a-field': strings('office', 'guests')[:-10],
    'raw': message(33, word(100), word(0), word(5000), bytes(range(250)) * 20),
    'long': message(33, word(100), word(0), word(65000), bytes(range(250)) * 260),
    'many': strings(*[''] * 16000),
    'nothing': b'',
}
for cut in ('cut', 'cut-behind-a-field'):  # their length fields become true
    MESSAGES[cut] = word(len(MESSAGES[cut]) - 8) + MESSAGES[cut][4:]

# The parts of which a test points at the field and at the bytes.
PARTS = {'list': range(20), 'hostile': (16, 19, 28), 'cut': (16, 17, 18), 'raw': (14, 15)}

# The pages of which each is short.
SHORT = [name for name in MESSAGES if name not in ('long', 'many')]

# The parts that are marked among the bytes.
MARKED = '''
    const marked = [...document.querySelectorAll('#bytes ' + arguments[0])];
    return [...new Set(marked.map((one) => Number(one.dataset.p)))];
'''

# Each text with the ratio of its contrast to what is behind it.
CONTRASTS = '''
    const channel = (value) => {
        value /= 255;
        return value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4;
    };
    const numbers = (colour) => colour.match(/[\\d.]+/g).map(Number);
    const luminance = ([red, green, blue]) =>
        0.2126 * channel(red) + 0.7152 * channel(green) + 0.0722 * channel(blue);
    const behind = (element) => {
        for (let node = element; node !== null; node = node.parentElement) {
            const colour = numbers(getComputedStyle(node).backgroundColor);
            if (colour.length === 3 || colour[3] === 1) {
                return colour;
            }
            if (colour[3] !== 0) {
                throw new Error('half-transparent');
            }
        }
        return [255, 255, 255];
    };
    const found = [];
    for (const element of document.body.querySelectorAll('*:not(script)')) {
        const own = [...element.childNodes].some((node) => node.nodeType === 3 && node.data.trim());
        if (!own || !element.checkVisibility()) {
            continue;
        }
        const both = [numbers(getComputedStyle(element).color), behind(element)].map(luminance);
        const ratio = (Math.max(...both) + 0.05) / (Math.min(...both) + 0.05);
        found.push([ratio, element.tagName, element.className, element.textContent.slice(0, 20)]);
    }
    return found;
'''


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        for name, content in MESSAGES.items():
            with open(cls.path(name, 'bin'), 'wb') as file:
                file.write(content)
            with open(cls.path(name, 'html'), 'wb') as file:
                subprocess.run([cls.program, 'html', cls.path(name, 'bin')], stdout=file,
                               stderr=subprocess.DEVNULL, check=False)
        options = Options()
        for argument in ('--headless=new', '--disable-gpu', '--disable-dev-shm-usage',
                         '--hide-scrollbars', '--force-device-scale-factor=1'):
            options.add_argument(argument)
        if os.geteuid() == 0:
            options.add_argument('--no-sandbox')
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL', 'performance': 'ALL'})
        cls.browser = webdriver.Chrome(service=Service(shutil.which('chromedriver')),
                                       options=options)
        cls.browser.set_page_load_timeout(30)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    @classmethod
    def path(cls, name, kind):
        return os.path.join(cls.directory, f'{name}.{kind}')

    def open(self, name, width=1400, height=900, scheme='light', media='screen'):
        self.browser.execute_cdp_cmd('Emulation.setEmulatedMedia', {
            'media': media, 'features': [{'name': 'prefers-color-scheme', 'value': scheme}]})
        self.browser.execute_cdp_cmd('Emulation.setDeviceMetricsOverride', {
            'width': width, 'height': height, 'deviceScaleFactor': 1, 'mobile': False})
        self.browser.get('about:blank')
        self.browser.get('file://' + self.path(name, 'html'))

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def find_all(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def is_visible(self, selector):
        return self.script('return arguments[0].checkVisibility()', self.find(selector))

    def script(self, source, *arguments):
        return self.browser.execute_script(source, *arguments)

    def point_at(self, element):
        self.script("arguments[0].scrollIntoView({block: 'center'})", element)
        ActionChains(self.browser, duration=0).move_to_element(element).perform()

    def press(self, *keys):
        ActionChains(self.browser, duration=0).send_keys(*keys).perform()

    def expect_marked(self, parts, mark='.on'):
        self.assertEqual(self.script(MARKED, mark), parts)

    def expect_field_marked(self, part, mark='on'):
        fields = self.find_all(f'#fields .{mark}')
        self.assertEqual([one.get_attribute('data-p') for one in fields], [str(part)])

    def bytes_marked(self):
        return self.script('''
            return [...document.querySelectorAll('#bytes pre > .on')]
                .map((one) => one.textContent).join(' ');
        ''')

    def test_pointing_at_a_field_marks_its_bytes(self):
        for name, parts in PARTS.items():
            self.open(name)
            for part in parts:
                with self.subTest(page=name, part=part):
                    field = self.find(f'#p{part}')
                    self.point_at(field)
                    self.expect_marked([part])
                    self.expect_field_marked(part)

    def test_marked_bytes_are_those_at_the_place_of_the_field(self):
        self.open('list')
        for part in PARTS['list']:
            field = self.find(f'#p{part}')
            place = field.find_element(By.TAG_NAME, 'small').text.split()
            offset, size = int(place[1].rstrip(',')), int(place[2])
            self.point_at(field)
            self.assertEqual(self.bytes_marked(),
                             MESSAGES['list'][offset:offset + size].hex(' '))

    def test_pointing_at_bytes_marks_their_field(self):
        for name, parts in PARTS.items():
            self.open(name)
            for part in parts:
                with self.subTest(page=name, part=part):
                    self.point_at(self.find(f'#b{part}'))
                    self.expect_field_marked(part)
                    self.expect_marked([part])
        self.point_at(self.find('#bytes i [data-p="7"]'))
        self.expect_field_marked(7)
        self.expect_marked([7])

    def test_a_mark_is_seen(self):
        self.open('list')
        run = self.find('#b14')
        before = run.value_of_css_property('background-color')
        self.point_at(self.find('#p14'))
        self.assertNotEqual(run.value_of_css_property('background-color'), before)

    def test_pointing_at_a_group_marks_the_bytes_of_all_its_fields(self):
        self.open('list')
        group = self.find('#fields .list')
        first, last = map(int, group.get_attribute('data-p').split('-'))
        self.assertEqual(last - first, 4)
        self.point_at(group)
        self.expect_marked(list(range(first, last + 1)))
        self.point_at(self.find('h1'))
        self.expect_marked([])

    def test_the_keyboard_marks_as_well(self):
        self.open('list')
        self.press(Keys.TAB)
        self.expect_field_marked(0)
        self.expect_marked([0])
        self.press(Keys.ARROW_RIGHT, Keys.ARROW_DOWN)
        self.expect_field_marked(2)
        self.expect_marked([2])
        self.press(Keys.TAB, Keys.TAB)
        self.expect_field_marked(0)
        self.press(Keys.ARROW_DOWN)
        self.expect_field_marked(1)
        self.press(Keys.ARROW_UP)
        self.press(Keys.ARROW_UP)
        self.press(Keys.ARROW_LEFT)
        self.assertFalse(self.is_visible('#p1'))
        self.press(Keys.ARROW_RIGHT)
        self.assertTrue(self.is_visible('#p1'))

    def test_focused_bytes_are_read_as_their_field(self):
        self.open('list')
        self.press(Keys.TAB)
        active = self.browser.switch_to.active_element
        self.assertEqual(active.get_attribute('id'), 'b0')
        self.assertIn('length', active.accessible_name)
        self.assertEqual(active.aria_role, 'button')

    def test_a_click_keeps_the_mark(self):
        self.open('list')
        self.find('#p14').click()
        self.point_at(self.find('#p0'))
        self.expect_marked([14], '.pin')
        self.expect_marked([0])
        self.assertEqual(self.find('#p14').get_attribute('aria-current'), 'true')
        self.press(Keys.ESCAPE)
        self.expect_marked([], '.pin')
        self.find('#b3').click()
        self.expect_field_marked(3, 'pin')
        self.find('#b3').click()
        self.expect_marked([], '.pin')

    def test_a_click_on_bytes_opens_the_list_of_their_field(self):
        self.open('many')
        self.assertFalse(self.is_visible('#p300'))
        self.point_at(self.find('#b300'))
        self.assertIn('within', self.find('#fields .list').get_attribute('class'))
        self.find('#b300').click()
        self.assertTrue(self.is_visible('#p300'))

    def test_the_ruler_stays_in_sight(self):
        self.open('long', height=300)
        self.script("document.getElementById('bytes').scrollTop = 200")
        self.assertTrue(self.script('''
            const ruler = document.querySelector('.ruler');
            const {left, bottom} = ruler.getBoundingClientRect();
            return document.elementFromPoint(left + 100, bottom - 5) === ruler;
        '''))

    def test_the_bar_names_the_field(self):
        self.open('list')
        names = []
        for part in (1, 14, 15, 16):
            self.point_at(self.find(f'#b{part}'))
            names.append(self.find('#bar b').text)
        self.assertEqual(names[0], 'header.type')
        self.assertEqual(names[1:], ['wifi.data_size', 'wifi.ssids', 'wifi.ssids[0]'])

    def test_a_fault_is_marked(self):
        for name in ('cut', 'cut-behind-a-field', 'nothing'):
            self.open(name)
            self.assertEqual(len(self.find_all('#fault')), 1)
            self.assertTrue(self.is_visible('#fault'))
            self.assertTrue(self.is_visible('#fields .fault'))
        self.open('cut')
        self.assertEqual(self.find('#fault').text, '67')  # the g of "guests"
        self.open('cut-behind-a-field')
        self.assertEqual(self.find('#fault').text, '??')

    def test_nothing_runs_and_nothing_is_fetched(self):
        for name in SHORT:
            with self.subTest(page=name):
                self.browser.get_log('browser')
                self.browser.get_log('performance')
                self.open(name)
                if name == 'hostile':
                    for element in self.find_all('#fields a'):
                        self.point_at(element)
                        element.click()
                self.assertIsNone(self.script('return window.hit ?? null'))
                self.assertEqual(self.find_all('img, svg, iframe, link, object, [onerror]'), [])
                self.assertEqual(len(self.find_all('script')), 1)
                self.assertEqual(len(self.find_all('style')), 1)
                self.assertEqual(self.browser.get_log('browser'), [])
                self.assertEqual(self.fetched(), [])

    # What the page has asked for, itself aside.
    def fetched(self):
        events = [json.loads(entry['message'])['message']
                  for entry in self.browser.get_log('performance')]
        urls = [event['params']['request']['url'] for event in events
                if event['method'] == 'Network.requestWillBeSent']
        pages = ('about:blank', f'file://{self.directory}/')
        return [url for url in urls if not url.startswith(pages)]

    def test_the_policy_is_in_force(self):
        self.open('list')
        self.script('''
            const script = document.createElement('script');
            script.textContent = 'window.hit = 1';
            document.body.append(script);
            document.body.setAttribute('style', 'color: red');
            new Image().src = 'http://127.0.0.1:9/';
        ''')
        self.assertIsNone(self.script('return window.hit ?? null'))
        violations = [entry for entry in self.browser.get_log('browser')
                      if 'Content Security Policy' in entry['message']]
        self.assertEqual(len(violations), 3)

    def test_texts_are_shown_as_they_are(self):
        self.open('hostile')
        shown = [one.text for one in self.find_all('#fields .s code')]
        for hostile in HOSTILE[:4]:
            escaped = hostile.replace('"', '\\"')
            self.assertIn(f'"{escaped}"', shown)
        self.assertIn('"left\\u{202e}right\\u{2066}\\x1b[2J\\x00', shown[12])

    def test_every_byte_is_shown_once(self):
        for name in MESSAGES:
            self.open(name)
            rows = self.script('''
                return [...document.querySelectorAll('#bytes pre:not(.ruler)')]
                    .map((one) => one.textContent).join('').split('\\n');
            ''')
            digits = 4 if len(MESSAGES[name]) <= 0x10000 else 8
            shown = b''
            for row in rows[:-1]:
                self.assertEqual(int(row[:digits], 16), len(shown))
                shown += bytes.fromhex(row[digits:digits + 49].replace('??', ''))
            self.assertEqual(shown, MESSAGES[name])

    def test_the_text_has_contrast(self):
        for scheme in ('light', 'dark'):
            for name in ('hostile', 'cut', 'raw'):
                self.open(name, scheme=scheme)
                self.find('#p3').click()
                self.point_at(self.find('#fields summary'))
                contrasts = self.script(CONTRASTS)
                self.assertGreater(len(contrasts), 50)
                weak = [one for one in contrasts if one[0] < 4.5]
                self.assertEqual(weak, [], f'{name}, {scheme}')

    def test_a_phone_shows_the_whole_width(self):
        for name in SHORT:
            self.open(name, width=360, height=740)
            widths = self.script('''
                return ['html', '#bytes', '#fields'].map((one) => document.querySelector(one))
                    .map((one) => one.scrollWidth - one.clientWidth);
            ''')
            self.assertEqual(widths, [0, 0, 0], name)

    def test_paper_shows_what_is_folded(self):
        self.open('raw', media='print')
        self.assertTrue(self.is_visible('#bytes details pre'))
        self.open('raw')
        self.assertFalse(self.is_visible('#bytes details pre'))

    def test_a_page_needs_no_script(self):
        self.browser.execute_cdp_cmd('Emulation.setScriptExecutionDisabled', {'value': True})
        try:
            self.open('list')
            self.assertTrue(self.find('#p16').is_displayed())
            self.assertTrue(self.find('#b16').is_displayed())
            self.assertFalse(self.find('#bar').is_displayed())
            self.find('#p16').click()
            self.assertTrue(self.browser.current_url.endswith('#b16'))
        finally:
            self.browser.execute_cdp_cmd('Emulation.setScriptExecutionDisabled', {'value': False})

    def test_the_page_is_valid(self):
        for name in SHORT:
            with open(self.path(name, 'html'), 'rb') as file:
                html5lib.HTMLParser(strict=True).parse(file, transport_encoding='utf-8')

    def test_pictures(self):
        for name, look in (('record', 'light'), ('record', 'dark'), ('record', 'phone'),
                           ('cut', 'light'), ('hostile', 'dark'), ('raw', 'phone')):
            width, height = (360, 740) if look == 'phone' else (1400, 900)
            self.open(name, width, height, 'dark' if look == 'dark' else 'light')
            self.point_at(self.find('#b14'))
            self.find('#b14').click()
            self.point_at(self.find('#b6'))
            self.browser.save_screenshot(self.path(f'{name}-{look}', 'png'))


def main():
    for program, package in PACKAGES.items():
        if shutil.which(program) is None:
            skip(f'{package} is not installed')
    PageTest.program = os.path.abspath(sys.argv[1])
    PageTest.directory = os.path.abspath(os.environ.get('MDM_SCREENSHOTS') or sys.argv[2])
    os.makedirs(PageTest.directory, exist_ok=True)
    outcome = unittest.main(argv=[sys.argv[0], *sys.argv[3:]], exit=False)
    return 0 if outcome.result.wasSuccessful() else 1


if __name__ == '__main__':
    sys.exit(main())
