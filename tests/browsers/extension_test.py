#!/usr/bin/env python3
"""The extension in real browsers: extension_test.py chromium|firefox-esr [unittest's arguments].

The extension is taken from the application's directory, TOLLVANE_BUNDLE. TOLLVANE_BRIDGE is the bridge that the browser
starts; if it is not set, fake_host.py stands in. Ends with 77 if the browser is not installed.
"""

import json
import os
import pathlib
import signal
import sys
import time
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / 'session'))

from browser import OPTIONS
from browser_of_this_run import browser_of_this_run
from chromium import Chromium
from fake_application import FakeApplication
from firefox import Firefox
from pages import Pages
from client import PrivateSession
from waiting import wait_until

HERE = pathlib.Path(__file__).resolve().parent
EXTENSION = pathlib.Path(os.environ.get('TOLLVANE_BUNDLE', HERE)) / 'Extensions'
BRIDGE = os.environ.get('TOLLVANE_BRIDGE', HERE / 'fake_host.py')
SESSION = ('--sound', 'pipewire', '--screen', '1280x900', '--window-manager', 'openbox')
BUNDLES = {Chromium: 'org.chromium.Chromium', Firefox: 'org.mozilla.firefox'}
KIND = None  # Chromium or Firefox


def setUpModule():
    test = ExtensionTest
    test.pages = Pages()
    unittest.addModuleCleanup(test.pages.close)
    test.session = unittest.enterModuleContext(PrivateSession(*SESSION))
    test.application = FakeApplication(test.session)
    unittest.addModuleCleanup(test.application.stop)
    test.browser = KIND(test.session, EXTENSION)
    test.browser.install_host(BRIDGE)
    test.browser.start()
    test.application.wait_for('hello')


class ExtensionTest(unittest.TestCase):
    """All tests share one browser. Each test closes its tabs."""

    def setUp(self):
        self.application.listen(0)
        self.start = len(self.application.messages)

    def open(self, title, host='localhost'):
        tab = self.browser.open_tab(self.pages.address(title, host))
        self.addCleanup(self.close, tab)
        return tab

    def close(self, tab):
        tabs = self.browser.tabs()
        if tab in tabs and len(tabs) > 1:  # the browser ends with its last tab
            self.browser.close_tab(tab)

    def play(self, tab):
        """Lets the page play, and returns the extension's report."""
        title = self.browser.title(tab).removeprefix('♪ ')
        self.application.listen(0)
        start = len(self.application.messages)
        self.browser.run(tab, 'playSound()')
        return self.application.wait_for('audible', start=start, title=title)

    def number(self, report):
        """The tab's number in the browser's API."""
        return report['tabId'] % 2**31

    def focus(self, tab_id, req):
        answer = self.application.ask('focusResult', type='focus', req=req, tabId=tab_id)
        self.assertEqual(answer['req'], req)
        return answer['ok']

    def await_title(self, tab, title):
        try:
            wait_until(lambda: self.browser.title(tab) == title, f'the title {title}')
        except TimeoutError as late:
            late.add_note('What the extension knows: ' + self.in_extension(
                '''Promise.all([api.storage.session.get(null), api.permissions.getAll(), api.tabs.query({})])
                   .then(all => JSON.stringify(all))'''))
            raise

    def await_front(self, tab):
        wait_until(lambda: self.browser.is_in_front(tab), 'the coming forward of the tab')

    def await_background(self, tab):
        wait_until(lambda: not self.browser.is_in_front(tab), 'the going to the back of the tab')

    def options(self):
        """The tab with the options page. The page opens if marks are turned on without access to pages."""
        tab = self.browser.find_tab(OPTIONS)
        if not tab:
            for on in (False, True):
                self.application.send(type='settings', markTabs=on)
            tab = wait_until(lambda: self.browser.find_tab(OPTIONS), 'the options page')
        wait_until(lambda: self.browser.run(tab, "document.getElementById('version')?.textContent"), 'the page')
        return tab

    def bridges(self):
        return self.session.processes(BRIDGE)

    def in_extension(self, expression):
        """The value of an expression in a page of the extension, where `api` is the browser's API."""
        return self.browser.run(self.options(), f'(api => {expression})(globalThis.browser ?? chrome)')


class Reports(ExtensionTest):
    def test_hello_carries_the_version(self):
        version = json.loads((EXTENSION / 'chromium/manifest.json').read_text())['version']
        self.assertEqual(self.application.messages[:2], [
            {'type': 'bridge', 'bundleID': BUNDLES[KIND]}, {'type': 'hello', 'version': version}])

    def test_background_tab_that_sounds_is_reported_with_title_and_host(self):
        report = self.play(self.open('Evening%20news'))
        self.assertEqual({**report, 'tabId': 0},
                         {'type': 'audible', 'tabId': 0, 'title': 'Evening news', 'host': 'localhost'})
        self.assertIsInstance(report['tabId'], int)

    def test_untitled_page_is_reported_without_its_address(self):
        address = self.pages.address('', 'localhost')
        for more in ('&token=secret', '&token=p%C3%A4ss%20secret%2Fword#secret', '&' + 'secret' * 500):
            tab = self.browser.open_tab(address + more)
            self.addCleanup(self.close, tab)
            start = len(self.application.messages)
            self.browser.run(tab, 'playSound()')
            report = self.application.wait_for('audible', start=start)
            self.assertEqual((report['title'], report['host']), ('', 'localhost'))
            self.assertNotIn('secret', json.dumps(report))

    def test_title_is_reported_on_one_line_and_in_one_direction(self):
        tab = self.open('Name')
        self.browser.run(tab, r"document.title = 'a\u2028b\u202ec\u0085d'")
        start = len(self.application.messages)
        self.browser.run(tab, 'playSound()')
        self.assertEqual(self.application.wait_for('audible', start=start)['title'], 'a bc d')

    def test_each_of_two_tabs_is_reported_under_its_own_id(self):
        first, second = self.play(self.open('One')), self.play(self.open('Two', '127.0.0.1'))
        self.assertNotEqual(first['tabId'], second['tabId'])
        self.assertEqual(second['host'], '127.0.0.1')

    def test_question_which_tab_sounds_is_answered_with_the_only_one(self):
        report = self.play(self.open('Asked'))
        self.assertEqual(self.application.ask('audible', type='whichAudible'), {**report, 'asked': True})

    def test_question_which_tab_sounds_is_answered_with_the_number_of_several(self):
        self.play(self.open('First'))
        self.play(self.open('Second'))
        self.assertEqual(self.application.ask('audibleCount', type='whichAudible')['count'], 2)

    def test_muted_tab_sounds_when_it_is_unmuted(self):
        tab = self.open('Muted')
        report = self.play(tab)
        self.in_extension(f'api.tabs.update({self.number(report)}, {{muted: true}}).then(() => true)')
        time.sleep(2)  # or it would go on with its sound
        self.application.listen(0)
        start = len(self.application.messages)
        self.in_extension(f'api.tabs.update({self.number(report)}, {{muted: false}}).then(() => true)')
        self.assertEqual(self.application.wait_for('audible', start=start), report)

    def test_tab_that_is_muted_and_unmuted_quickly_is_reported_once(self):
        report = self.play(self.open('Toggled'))
        for _ in range(5):
            for muted in ('true', 'false'):
                self.in_extension(f'api.tabs.update({self.number(report)}, {{muted: {muted}}}).then(() => true)')
        self.play(self.open('Next'))
        self.assertEqual([message['title'] for message in self.application.messages[self.start:]], ['Toggled', 'Next'])

    def test_tab_that_was_moved_to_another_window_right_after_its_sound_is_reported_again(self):
        self.open('Left%20behind')
        tab = self.open('Moved')
        report = self.play(tab)
        number = self.number(report)
        self.browser.run(tab, 'stopSound()')
        # The browser still calls it audible.
        self.in_extension(f'api.windows.create({{tabId: {number}}}).then(() => true)')
        wait_until(lambda: not self.in_extension(f'api.tabs.get({number}).then(tab => tab.audible)'), 'silence')
        time.sleep(2)  # or it would go on with its sound
        self.assertEqual(self.play(tab), report)

    def test_tab_muted_from_the_start_is_not_reported(self):
        quiet, loud = self.open('Quiet'), self.open('Loud')
        tab_id = self.in_extension("api.tabs.query({}).then(tabs => tabs.find(tab => tab.title === 'Quiet').id)")
        self.in_extension(f'api.tabs.update({tab_id}, {{muted: true}}).then(() => true)')
        self.browser.run(quiet, 'playSound()')
        self.play(loud)
        titles = [message['title'] for message in self.application.messages[self.start:]]
        self.assertEqual(titles, ['Loud'])

    def test_private_window_is_not_reported(self):
        public = self.open('Public')
        private = self.browser.open_private_window(self.pages.address('Private'))
        self.addCleanup(self.browser.close_tab, private)
        self.browser.run(private, 'playSound()')
        self.play(public)
        self.application.send(type='whichAudible')
        self.application.wait_for('audible', start=len(self.application.messages))
        titles = {message['title'] for message in self.application.messages[self.start:]}
        self.assertEqual(titles, {'Public'})


class Focus(ExtensionTest):
    def test_background_tab_comes_forward(self):
        tab = self.open('Wanted')
        report = self.play(tab)
        self.await_background(tab)
        self.assertTrue(self.focus(report['tabId'], 11))
        self.await_front(tab)

    def test_window_of_the_tab_comes_forward(self):
        tab = self.open('Behind')
        report = self.play(tab)
        window = self.browser.open_window(self.pages.address('Before'))
        self.addCleanup(self.browser.close_tab, window)
        wait_until(lambda: self.browser.front_window_title().startswith('Before'), 'the second window')
        self.assertTrue(self.focus(report['tabId'], 12))
        self.await_front(tab)
        wait_until(lambda: self.browser.front_window_title().startswith('Behind'), 'the first window')

    def test_minimised_window_comes_forward(self):
        tab = self.open('Minimised')
        report = self.play(tab)
        self.session.succeeds('xdotool', 'getactivewindow', 'windowminimize')
        wait_until(lambda: not self.browser.front_window_title(), 'the minimised state')
        self.assertTrue(self.focus(report['tabId'], 13))
        self.await_front(tab)

    def test_closed_tab_is_answered_with_false(self):
        tab = self.open('Closed')
        report = self.play(tab)
        self.browser.close_tab(tab)
        self.assertFalse(self.focus(report['tabId'], 14))

    def test_tab_that_was_never_reported_is_answered_with_false(self):
        options = self.options()
        self.browser.show_tab(options)
        tab = self.open('Silent')
        self.await_background(tab)
        silent = self.in_extension("api.tabs.query({}).then(tabs => tabs.find(tab => tab.title === 'Silent').id)")
        self.assertFalse(self.focus(silent, 15))
        self.assertFalse(self.browser.is_in_front(tab))
        self.assertTrue(self.browser.is_in_front(options))

    def test_number_that_the_browser_gives_a_tab_leads_nowhere(self):
        self.assertFalse(self.focus(self.number(self.play(self.open('Numbered'))), 17))

    def test_discarded_tab_is_still_found(self):
        report = self.play(self.open('Discarded'))
        self.in_extension(f'api.tabs.discard({self.number(report)}).then(() => true)')
        self.assertTrue(self.focus(report['tabId'], 16))
        wait_until(lambda: 'Discarded' in self.in_extension(
            'api.tabs.query({active: true}).then(tabs => tabs.map(tab => tab.title))'), 'the discarded tab')


class Marks(ExtensionTest):
    def test_marks_come_and_go(self):
        tab = self.open('Radio')
        self.play(tab)
        options = self.options()
        self.application.send(type='settings', markTabs=True)
        self.assertEqual(self.browser.title(tab), 'Radio')

        self.browser.allow_marks(options)
        self.await_title(tab, '♪ Radio')

        self.browser.run(tab, "document.title = 'Next song'")
        self.await_title(tab, '♪ Next song')
        self.assertEqual(self.application.ask('audible', type='whichAudible')['title'], 'Next song')

        self.application.send(type='settings', markTabs=False)
        self.await_title(tab, 'Next song')
        self.application.send(type='settings', markTabs=True)
        self.await_title(tab, '♪ Next song')

        self.browser.show_tab(tab)
        self.await_title(tab, 'Next song')

        another = self.open('News')
        self.play(another)
        self.await_title(another, '♪ News')
        self.browser.run(another, 'location.reload()')
        wait_until(lambda: self.browser.run(another, "typeof context === 'undefined'"), 'the new page')
        self.await_title(another, '♪ News')

        # Browsers slow down the clocks of background pages that do not sound.
        busy = self.open('Busy')
        self.play(busy)
        self.await_title(busy, '♪ Busy')
        self.beat(busy, 'Beat', 100)
        for _ in range(30):
            self.assertRegex(self.browser.title(busy), '^♪ Beat')
            time.sleep(0.05)
        self.beat(busy, 'Rush', 2)
        wait_until(lambda: self.browser.title(busy).startswith('Rush'), 'the way of the page')
        self.browser.run(busy, "clearInterval(document.body.dataset.beat), document.title = 'Rest'")
        self.assertEqual(self.browser.title(busy), 'Rest')

        self.browser.show_tab(options)
        self.browser.click(options, '#marks')
        self.await_title(another, 'News')


    def beat(self, tab, title, pause):
        """Lets the page write a new title after each pause of so many milliseconds."""
        self.browser.run(tab, 'clearInterval(document.body.dataset.beat), document.body.dataset.beat = '
                              f'setInterval(() => (document.title = `{title} ${{Date.now()}}`), {pause})')
        wait_until(lambda: title in self.browser.title(tab), 'the first of those titles')


class Life(ExtensionTest):
    def test_options_page_says_that_it_is_linked_only_while_the_application_is_there(self):
        options = self.options()

        def await_state(state):
            shown = "document.getElementById('link').dataset.state"
            wait_until(lambda: self.browser.run(options, shown) == state, state)

        await_state('linked')
        self.application.stop()
        self.addCleanup(self.application.wait_for, 'hello', start=len(self.application.messages))
        self.addCleanup(self.application.start)
        await_state('waiting')
        self.doCleanups()
        await_state('linked')

    def test_dead_bridge_is_started_again(self):
        os.kill(self.application.bridge_pid(), signal.SIGKILL)
        self.application.wait_for('hello', start=self.start)
        self.play(self.open('After%20the%20bridge'))

    def test_stopped_background_comes_back_with_the_next_sound_and_remembers(self):
        before = self.play(self.open('Before'))
        self.options()
        tab = self.open('After')
        start = len(self.application.messages)
        self.browser.stop_background()
        self.browser.run(tab, 'playSound()')
        self.application.wait_for('hello', start=start)
        self.application.wait_for('audible', start=start, title='After')
        self.assertTrue(self.focus(before['tabId'], 21))

    def test_reloaded_extension_comes_back_and_remembers(self):
        tab = self.open('Not%20of%20the%20extension')  # otherwise the window closes with its last tab
        report = self.play(tab)
        self.options()
        start = len(self.application.messages)
        self.in_extension('void setTimeout(() => api.runtime.reload())')
        self.application.wait_for('hello', start=start)
        self.assertTrue(self.focus(report['tabId'], 24))
        self.await_front(tab)

    def test_restarted_browser_is_linked_again_and_follows_no_old_id(self):
        report = self.play(self.open('Yesterday'))
        self.browser.stop()
        wait_until(lambda: not self.bridges(), 'the end of the bridge')
        self.application.listen(0)
        start = len(self.application.messages)
        self.browser.start()
        self.application.wait_for('hello', start=start)
        self.assertFalse(self.focus(report['tabId'], 22))
        today = self.play(self.open('Today'))
        self.assertTrue(self.focus(today['tabId'], 23))


class Death(ExtensionTest):
    def test_killed_browser_leaves_no_bridge(self):
        self.assertTrue(self.bridges())
        self.browser.kill()
        wait_until(lambda: not self.bridges(), 'the end of the bridge')
        self.application.listen(0)
        start = len(self.application.messages)
        self.browser.start()
        self.application.wait_for('hello', start=start)


if __name__ == '__main__':
    KIND = browser_of_this_run()
    unittest.main(verbosity=2)
