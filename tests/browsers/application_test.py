#!/usr/bin/env python3
"""From a sound in a tab to the menu, and back to the tab: application_test.py chromium|firefox-esr.

Everything is real: the panel, the sound server, the browser, and the application and the extension from the
application's directory, TOLLVANE_BUNDLE. The application registers itself with the browser. Ends with 77 if the browser
is not installed.
"""

import os
import pathlib
import sys
import time
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / 'session'))

from browser import OPTIONS
from browser_of_this_run import browser_of_this_run
from chromium import Chromium
from firefox import Firefox
from pages import Pages
from tollvane import Tollvane
from client import PrivateSession
from waiting import wait_until

BUNDLE = os.environ.get('TOLLVANE_BUNDLE')
NAMES = {Chromium: 'Chromium', Firefox: 'Firefox'}  # the browsers' names in alerts
STATES = {Chromium: 'Connected', Firefox: 'Added'}  # the browsers' states in the settings
SESSION = ('--sound', 'pipewire', '--screen', '1280x900', '--window-manager', 'openbox', '--panel', 'xfce4')
REPEATS = 1.5  # seconds in which repeated sounds of one application count as one
SOUND = 'started playing audio'
IS_SHOWN = "document.visibilityState === 'visible'"
KIND = None  # Chromium or Firefox


def setUpModule():
    test = ApplicationTest
    test.pages = Pages()
    unittest.addModuleCleanup(test.pages.close)
    test.session = unittest.enterModuleContext(PrivateSession(*SESSION))
    test.tollvane = Tollvane(test.session, BUNDLE)
    test.tollvane.start()
    test.browser = KIND(test.session, test.tollvane.bundle / 'Extensions')
    test.browser.start()


class ApplicationTest(unittest.TestCase):
    """All tests share one application and one browser. Each test begins with an empty list, and closes its tabs."""

    def setUp(self):
        self.await_link()
        self.tollvane.choose('Clear list')
        self.past = len(self.tollvane.history())

    def await_link(self):
        wait_until(self.tollvane.is_linked, 'the link of the browser')

    def open(self, title, host='localhost'):
        tab = self.browser.open_tab(self.pages.address(title.replace(' ', '%20'), host))
        self.addCleanup(self.close, tab)
        return tab

    def close(self, tab):
        if tab in self.browser.tabs():
            self.browser.close_tab(tab)

    def play(self, tab):
        """Lets the page play, and returns the menu's entry for it."""
        title = self.browser.title(tab)
        self.browser.run(tab, 'playSound()')
        return self.tollvane.await_entry(f'Tab: {title} ')

    def history(self):
        """Application, kind and tab of each sound since this test began, in their order."""
        return [line[1:] for line in self.tollvane.history()[self.past:]]

    def await_title(self, tab, title):
        wait_until(lambda: self.browser.title(tab) == title, f'the title {title}')

    def assert_alert(self, title, explanation):
        alert = self.tollvane.await_alert()
        self.assertIn(title, alert)
        self.assertIn(explanation, alert)
        self.tollvane.dismiss_alert()


class Entry(ApplicationTest):
    def test_sound_is_one_entry_with_title_and_host_of_its_background_tab(self):
        tab = self.open('Evening news')
        entry = self.play(tab)
        self.close(tab)  # the only tab that is heard is taken for the one that made a sound
        self.assertRegex(entry, rf'{NAMES[KIND]}.* · {SOUND} — Tab: Evening news +\(localhost\)$')

        # A private window is not reported, so its sound is written down without a tab after a while. If the first
        # sound had been written down twice, the second line would be there by then.
        private = self.browser.open_private_window(self.pages.address('Private'))
        self.addCleanup(self.browser.close_tab, private)
        time.sleep(REPEATS)
        self.browser.run(private, 'playSound()')
        wait_until(lambda: '' in [tab for _, _, tab in self.history()], 'the history of the private window')
        lines = [(kind, tab) for _, kind, tab in self.history()]  # lines of an earlier test may come late
        self.assertEqual(lines.count((SOUND, 'Evening news  (localhost)')), 1, lines)
        self.assertEqual(lines.count((SOUND, '')), 1, lines)
        self.assertEqual(len(self.tollvane.entries(SOUND)), 2, self.tollvane.menu())
        self.assertEqual(len(self.tollvane.entries('Tab: ')), 1, self.tollvane.menu())

    def test_page_that_plays_at_once_after_a_navigation_from_a_sounding_one_is_named(self):
        tab = self.open('Before')
        self.play(tab)
        time.sleep(REPEATS + 0.3)
        after = self.pages.address('After&play', 'localhost')
        self.browser.run(tab, f'void (location.href = "{after}")')
        self.tollvane.await_entry('Tab: After ')
        self.assertEqual(len(self.tollvane.entries(SOUND)), 2, self.tollvane.menu())

    def test_two_tabs_are_two_entries(self):
        first, second = self.play(self.open('One')), self.play(self.open('Two', '127.0.0.1'))
        self.assertIn('(localhost)', first)
        self.assertIn('(127.0.0.1)', second)
        self.assertEqual(self.tollvane.entries('Tab: '), [second, first])

    def test_title_is_plain_text(self):
        entry = self.play(self.open('A_b <i>c</i> %26amp; d'))
        self.assertIn('Tab: A_b <i>c</i> &amp; d', entry)

    def test_settings_say_that_the_browser_is_connected(self):
        texts = self.tollvane.open_settings().texts()
        self.assertEqual(texts[texts.index(NAMES[KIND]) + 1], STATES[KIND], texts)


class Click(ApplicationTest):
    def test_on_an_entry_brings_that_tab_forward(self):
        wanted, other = self.open('Wanted'), self.open('Other')
        entry = self.play(wanted)
        self.play(other)
        self.browser.show_tab(other)
        wait_until(lambda: self.browser.is_in_front(other), 'the other tab')
        self.tollvane.choose(entry)
        wait_until(lambda: self.browser.is_in_front(wanted), 'the coming forward of the tab')
        wait_until(lambda: self.browser.front_window_title().startswith('Wanted'), 'its window')

    def test_on_an_entry_brings_its_window_forward(self):
        tab = self.open('Behind')
        entry = self.play(tab)
        window = self.browser.open_window(self.pages.address('Before'))
        self.addCleanup(self.browser.close_tab, window)
        wait_until(lambda: self.browser.front_window_title().startswith('Before'), 'the second window')
        self.tollvane.choose(entry)
        wait_until(lambda: self.browser.is_in_front(tab), 'the coming forward of the tab')
        wait_until(lambda: self.browser.front_window_title().startswith('Behind'), 'the first window')

    def test_on_the_entry_of_a_closed_tab_says_so(self):
        tab = self.open('Gone')
        entry = self.play(tab)
        self.browser.close_tab(tab)
        self.tollvane.choose(entry)
        self.assert_alert('That tab is closed', f'The {NAMES[KIND]} tab that made this sound (Gone  (localhost)) has '
                                                'been closed, so there is nothing to go back to.')

    def test_on_the_entry_of_a_browser_that_was_quit_says_so_and_of_its_last_run_shows_no_tab(self):
        name = NAMES[KIND]
        entry = self.play(self.open('Yesterday'))
        self.browser.stop()
        wait_until(lambda: not self.tollvane.bridges(), 'the end of the bridge')
        self.tollvane.choose(entry)
        self.assert_alert(f'{name} is closed', 'The tab that made this sound (Yesterday  (localhost)) is gone because '
                                               f'{name} has been quit since.')
        self.browser.start()
        self.await_link()
        tab = self.open('Today')
        self.tollvane.choose(entry)
        self.assert_alert('That tab is closed', f'The {name} tab that made this sound (Yesterday  (localhost)) has '
                                                'been closed, so there is nothing to go back to.')
        self.assertFalse(self.browser.is_in_front(tab))

    def test_on_an_entry_of_another_profile_shows_its_tab_and_of_a_closed_one_no_other(self):
        another = self.browser.another_profile()
        another.start()
        self.addCleanup(another.kill)
        wait_until(lambda: len(self.tollvane.bridges()) == 2, 'the second bridge')
        # The browsers number their tabs alike: what has one number here has it there.
        mine = [self.open(f'Mine {number}') for number in range(3)]
        theirs = another.open_tab(self.pages.address('Theirs', 'localhost'))
        another.open_tab(self.pages.address('Last', 'localhost'))
        another.run(theirs, 'playSound()')
        entry = self.tollvane.await_entry('Tab: Theirs ')
        window = self.browser.open_window(self.pages.address('Before'))
        self.addCleanup(self.close, window)
        wait_until(lambda: self.browser.front_window_title().startswith('Before'), "this profile's window")
        self.tollvane.choose(entry)
        wait_until(lambda: another.run(theirs, IS_SHOWN), "the other profile's tab")
        wait_until(lambda: another.front_window_title().startswith('Theirs'), "the other profile's window")
        self.assertFalse(any(self.browser.run(tab, IS_SHOWN) for tab in mine))
        another.close_tab(theirs)
        self.tollvane.choose(entry)
        self.assert_alert('That tab is closed', f'The {NAMES[KIND]} tab that made this sound (Theirs  (localhost)) has '
                                                'been closed, so there is nothing to go back to.')
        self.assertFalse(any(self.browser.run(tab, IS_SHOWN) for tab in mine))


class Edition(ApplicationTest):
    UNPACKED = {Chromium: 'Google Chrome', Firefox: 'Firefox'}  # the name of what unpacked() gives

    def test_that_no_package_installed_is_heard_under_its_name_and_its_tab_comes_forward(self):
        browser, name = self.browser, self.UNPACKED[KIND]
        browser.stop()
        self.addCleanup(self.await_link)
        self.addCleanup(browser.start)
        unpacked = browser.unpacked()
        unpacked.start()
        self.addCleanup(unpacked.kill)
        self.tollvane.stop()
        self.tollvane.start()  # and lets the browser that runs find the bridge
        self.await_link()
        tab = unpacked.open_tab(self.pages.address('Wanted', 'localhost'))
        unpacked.run(tab, 'playSound()')
        entry = self.tollvane.await_entry('Tab: Wanted ')
        self.assertIn(f'{name} · {SOUND}', entry)
        self.tollvane.choose(entry)
        wait_until(lambda: unpacked.is_in_front(tab), 'the coming forward of the tab')
        self.assertEqual(len(self.tollvane.entries(SOUND)), 1, self.tollvane.menu())


class Restored(ApplicationTest):
    def test_tab_that_plays_when_the_browser_opens_it_again_is_named(self):
        tab = self.open('Radio&play')
        self.tollvane.await_entry('Tab: Radio ')
        self.browser.show_tab(tab)  # the tab in front is the one that is loaded again
        self.browser.stop()
        self.browser.start(restore=True)
        self.addCleanup(self.restart)
        wait_until(lambda: len(self.tollvane.entries('Tab: Radio ')) == 2, 'the second entry')
        time.sleep(4)  # whatever belongs to no sound has become one by then
        self.assertEqual(len(self.tollvane.entries(SOUND)), 2, self.tollvane.menu())

    def restart(self):
        self.browser.stop()
        self.browser.start()


class Marks(ApplicationTest):
    SWITCH = 'Mark browser tabs that made a sound'

    def test_come_and_go_with_the_switch_in_the_settings(self):
        tab = self.open('Radio')
        self.play(tab)
        self.assertEqual(self.browser.title(tab), 'Radio')
        self.tollvane.turn_switch(self.SWITCH)
        options = wait_until(lambda: self.browser.find_tab(OPTIONS), 'the options page, which asks for access')
        self.browser.allow_marks(options)
        self.await_title(tab, '♪ Radio')
        self.tollvane.turn_switch(self.SWITCH)
        self.await_title(tab, 'Radio')


class Life(ApplicationTest):
    def test_browser_that_was_started_in_another_environment_finds_the_application(self):
        self.browser.stop()
        self.browser.variables = {'XDG_DATA_HOME': str(self.session.home / 'elsewhere')}
        self.addCleanup(self.browser.start)
        self.addCleanup(self.browser.variables.clear)
        self.addCleanup(self.browser.stop)
        self.browser.start()
        self.await_link()
        self.play(self.open('From elsewhere'))

    def test_killed_application_has_the_extension_back_when_it_is_started_again(self):
        bridges = self.tollvane.bridges()
        self.tollvane.kill()
        self.tollvane.start()
        self.await_link()
        tab = self.open('After the restart')
        entry = self.play(tab)
        self.tollvane.choose(entry)
        wait_until(lambda: self.browser.is_in_front(tab), 'the coming forward of the tab')
        self.assertEqual(self.tollvane.bridges(), bridges)

    def test_quit_application_has_the_extension_back_when_it_is_started_again(self):
        self.tollvane.stop()
        self.tollvane.start()
        self.await_link()
        self.play(self.open('After the pause'))

    def test_killed_browser_leaves_no_bridge(self):
        self.assertTrue(self.tollvane.bridges())
        self.browser.kill()
        wait_until(lambda: not self.tollvane.bridges(), 'the end of the bridge')
        wait_until(lambda: not self.tollvane.is_linked(), 'the end of the link')
        self.browser.start()
        self.await_link()
        self.play(self.open('Alive again'))


if __name__ == '__main__':
    KIND = browser_of_this_run()
    unittest.main(verbosity=2)
