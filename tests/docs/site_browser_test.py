# SPDX-License-Identifier: Apache-2.0
"""Opens pages of the site in a browser, as files and from a local server.

Usage: site_browser_test.py SITE PICTURES

SITE is what scripts/make_site.sh has made. Pictures of some pages go to PICTURES.
"""
import functools
import http.server
import json
import os
import pathlib
import shutil
import sys
import threading
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

PHONE, DESK = (390, 844), (1440, 900)

# The front page, guides with wide tables and code, and pages that are made of sources.
PAGES = {
    'front': 'index.html',
    'quirks': 'docs/quirks.html',
    'wire-format': 'docs/wire-format.html',
    'architecture': 'docs/architecture.html',
    'categories': 'docs/categories.html',
    'reference': 'docs/reference.html',
    'wifi': 'include/mdm/body/wifi.h.html',
    'guarded-hpp': 'include/mdm/guarded.hpp.html',
    'value-classes': 'include/mdm/device_policy_manager.hpp.html',
    'server': 'examples/server/server.c.html',
    'index': 'genindex.html',
}

PICTURES = ['front', 'wire-format', 'categories', 'wifi']


class QuietHandler(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


class SiteTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
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
        handler = functools.partial(QuietHandler, directory=cls.site)
        cls.server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), handler)
        threading.Thread(target=cls.server.serve_forever, daemon=True).start()
        cls.places = (f'file://{cls.site}/', f'http://127.0.0.1:{cls.server.server_port}/')

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.server.shutdown()

    def open(self, page, size=DESK, scheme='light', place=None):
        self.browser.execute_cdp_cmd('Emulation.setEmulatedMedia', {
            'features': [{'name': 'prefers-color-scheme', 'value': scheme}]})
        self.browser.execute_cdp_cmd('Emulation.setDeviceMetricsOverride', {
            'width': size[0], 'height': size[1], 'deviceScaleFactor': 1, 'mobile': False})
        self.browser.get((place or self.places[0]) + page)

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def script(self, source, *arguments):
        return self.browser.execute_script(source, *arguments)

    # Scrolling that takes its time would move the element away from the click.
    def click(self, element):
        self.script("arguments[0].scrollIntoView({behavior: 'instant', block: 'center'})", element)
        element.click()

    def wait(self, condition):
        return WebDriverWait(self.browser, 20).until(lambda _: condition())

    # The paths of the pages that a search finds, best first.
    def search(self, words, place):
        self.open('index.html', place=place)
        box = self.find('.sidebar-search')
        box.send_keys(words)
        box.submit()
        self.wait(lambda: 'found' in self.find('#search-results').text)
        links = self.browser.find_elements(By.CSS_SELECTOR, '#search-results li > a')
        return [link.get_attribute('href').removeprefix(place) for link in links]

    def background(self):
        return self.script('return getComputedStyle(document.body).backgroundColor')

    def expect_silence_and_nothing_fetched(self, place):
        self.assertEqual(self.browser.get_log('browser'), [])
        events = [json.loads(entry['message'])['message']
                  for entry in self.browser.get_log('performance')]
        urls = [event['params']['request']['url'] for event in events
                if event['method'] == 'Network.requestWillBeSent']
        self.assertTrue(urls)
        self.assertEqual([url for url in urls if not url.startswith((place, 'data:'))], [])

    def test_search_finds_a_function(self):
        for place in self.places:
            found = self.search('mdm_wifi_set_network', place)
            self.assertTrue(found[0].startswith(
                'include/mdm/body/wifi.h.html#c.mdm_wifi_set_network'), found[0])

    def test_search_finds_a_phrase_of_a_guide(self):
        for place in self.places:
            found = self.search('privileged daemon receives messages from processes', place)
            self.assertIn('docs/security.html', [page.partition('?')[0] for page in found])

    def test_search_shows_lines_of_the_pages_from_a_server(self):
        self.search('little-endian two complement', self.places[1])
        self.wait(lambda: 'little-endian' in self.find('#search-results .context').text)

    def test_search_is_silent_and_fetches_nothing(self):
        for place in self.places:
            self.browser.get_log('browser')
            self.browser.get_log('performance')
            self.search('ipc_open', place)
            self.expect_silence_and_nothing_fetched(place)

    def test_pages_are_silent_and_fetch_nothing(self):
        for place in self.places:
            for page in PAGES.values():
                with self.subTest(page=page, place=place):
                    self.browser.get_log('browser')
                    self.browser.get_log('performance')
                    self.open(page, place=place)
                    self.expect_silence_and_nothing_fetched(place)

    def test_the_tree_opens(self):
        self.open('index.html')
        link = self.find('.sidebar-tree a[href$="include/mdm/body/wifi.h.html"]')
        self.assertFalse(link.is_displayed())
        for branch in ('docs/reference.html', 'include/mdm/body/index.html'):
            self.click(self.find(f'.sidebar-tree a[href="{branch}"] ~ label'))
        self.assertTrue(link.is_displayed())
        self.click(link)
        self.assertEqual(self.find('h1').text.rstrip('#'), 'mdm/body/wifi.h')

    def test_the_tree_opens_on_a_phone(self):
        self.open('index.html', PHONE)
        drawer = "document.querySelector('.sidebar-drawer').getBoundingClientRect().left"
        self.assertLess(self.script(f'return {drawer}'), 0)
        self.find('.nav-overlay-icon').click()
        self.wait(lambda: self.script(f'return {drawer} === 0'))

    def test_light_and_dark(self):
        for size, button in ((DESK, '.content-icon-container .theme-toggle'),
                             (PHONE, '.mobile-header .theme-toggle')):
            self.open('index.html', size)
            self.script('localStorage.clear()')
            self.browser.refresh()
            light = self.background()
            self.find(button).click()
            dark = self.background()
            self.assertNotEqual(light, dark)
            self.open('docs/quirks.html', size)
            self.assertEqual(self.background(), dark)
            self.script('localStorage.clear()')
            self.open('docs/quirks.html', size, 'dark')
            self.assertEqual(self.background(), dark)

    def test_no_page_scrolls_sideways(self):
        for size, pages in ((PHONE, self.written_pages()), (DESK, PAGES.values())):
            for page in pages:
                with self.subTest(page=page, width=size[0]):
                    self.open(page, size)
                    width = self.script('return document.documentElement.scrollWidth')
                    self.assertLessEqual(width, size[0])

    # Every page but those that show a source alone, which are alike.
    def written_pages(self):
        for path in pathlib.Path(self.site).rglob('*.html'):
            page = str(path.relative_to(self.site))
            if not page.startswith('examples/'):
                yield page

    def test_pictures(self):
        for name in PICTURES:
            for width, size in (('desk', DESK), ('phone', PHONE)):
                for scheme in ('light', 'dark'):
                    self.open(PAGES[name], size, scheme)
                    self.browser.save_screenshot(
                        os.path.join(self.pictures, f'{name}-{width}-{scheme}.png'))


def main():
    SiteTest.site, SiteTest.pictures = map(os.path.abspath, sys.argv[1:3])
    os.makedirs(SiteTest.pictures, exist_ok=True)
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])


if __name__ == '__main__':
    main()
