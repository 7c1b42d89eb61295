#!/usr/bin/env python3
"""What the installed Debian package brings, without anything that a user does: installed_test.py chromium|firefox-esr.

The browser starts with a fresh profile, without developer mode and without an extension of its own. It has the
extension from the package and starts the package's bridge. Ends with 77 if the browser or the package is not installed.
"""

import json
import pathlib
import shutil
import sys
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / 'session'))

from browser_of_this_run import browser_of_this_run
from chromium import Chromium
from client import PrivateSession
from pages import Pages
from tollvane import Tollvane
from waiting import wait_until

CHROME = pathlib.Path('/usr/share/google-chrome/extensions')  # what Chrome is told
BUNDLE = pathlib.Path('/usr/lib/tollvane')
SESSION = ('--sound', 'pipewire', '--screen', '1280x900', '--window-manager', 'openbox', '--panel', 'xfce4')
MANIFEST = 'com.quarnel.tollvane.json'
KIND = None  # Chromium or Firefox


class InstalledTest(unittest.TestCase):
    def setUp(self):
        self.pages = Pages()
        self.addCleanup(self.pages.close)
        self.session = self.enterContext(PrivateSession(*SESSION))
        self.tollvane = Tollvane(self.session, BUNDLE, in_place=True)
        self.browser = KIND(self.session, None)

    def hear_a_tab(self):
        """Lets a tab in the background play, and goes there by a click on its entry."""
        wait_until(self.tollvane.is_linked, 'the link of the browser')
        wanted = self.browser.open_tab(self.pages.address('Wanted', 'localhost'))
        other = self.browser.open_tab(self.pages.address('Elsewhere', 'localhost'))
        self.browser.show_tab(other)
        self.browser.run(wanted, 'playSound()')
        self.tollvane.choose(self.tollvane.await_entry('Tab: Wanted '))
        wait_until(lambda: self.browser.is_in_front(wanted), 'the coming forward of the tab')

    def test_a_tab_is_named_and_comes_forward_in_a_fresh_profile(self):
        self.tollvane.start()
        self.browser.start()
        self.hear_a_tab()
        self.assertTrue(self.tollvane.bridges(), "the user's own manifest counts first, so the bridge is the copy")
        said = self.session.output('sh', '-c', 'Tollvane --doctor --json; true')
        linked = [each['sentence'] for each in json.loads(said)['findings'] if 'is linked.' in each['sentence']]
        self.assertEqual(len(linked), 1, said)
        self.assertIn('(last report on ', linked[0])
        for private in ('Wanted', 'Elsewhere', 'localhost', str(self.session.home)):
            self.assertNotIn(private, said)

    def test_the_settings_say_that_the_extension_is_there(self):
        self.tollvane.start()
        said = 'Connected' if KIND is Chromium else 'Added'
        self.assertNotIn(said, self.tollvane.open_settings().texts())
        self.browser.start()
        wait_until(lambda: said in self.tollvane.open_settings().texts(), f'"{said}"', pause=0.2)
        self.assertEqual(self.tollvane.open_settings().texts().count('Not found on this computer'),
                         2 if shutil.which('firefox-esr') else 3, 'Chrome, Edge, and perhaps Firefox')

    def test_a_chrome_that_is_told_of_the_signed_extension_takes_it_and_asks_nothing(self):
        """Chromium stands in for Chrome. It reads the folder beside its program, as Chrome reads one in /usr/share."""
        if KIND is not Chromium or not CHROME.exists():
            self.skipTest('for Chromium, and for a package with a signed extension')
        chrome = self.browser.unpacked()
        folder = pathlib.Path(chrome.command[0]).parent / 'extensions'
        if folder.is_symlink():
            folder.unlink()
        shutil.copytree(CHROME, folder)
        chrome.profile.mkdir(parents=True)  # so Tollvane knows that there is such a browser
        self.browser = chrome
        self.tollvane.start()
        self.browser.start()
        self.hear_a_tab()
        self.assertIn('Added', self.tollvane.open_settings().texts())
        (signed,) = CHROME.glob('*.json')
        self.assertIn(f'chrome-extension://{signed.stem}/',
                      (chrome.profile / 'NativeMessagingHosts' / MANIFEST).read_text())

    def test_the_manifest_for_all_users_is_enough(self):
        self.tollvane.start()
        own = self.session.home / self.browser.host_directory / MANIFEST
        own.unlink()
        self.browser.start()
        self.hear_a_tab()
        self.assertTrue(self.session.processes(BUNDLE / 'TollvaneBridge'), 'the bridge of the package')

    def test_a_browser_that_runs_before_tollvane_finds_it(self):
        self.browser.start()
        wait_until(lambda: self.session.processes(BUNDLE / 'TollvaneBridge'), 'the bridge of the package')
        self.tollvane.start()
        self.hear_a_tab()


if __name__ == '__main__':
    KIND = browser_of_this_run()
    if not (BUNDLE / 'Tollvane').exists():
        print('the package is not installed')
        sys.exit(77)
    unittest.main(verbosity=2)
