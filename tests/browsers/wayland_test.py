#!/usr/bin/env python3
"""From a click on a sound to the tab that made it, in compositors of Wayland:
wayland_test.py BUILD chromium|firefox-esr [TEST...]

Everything is real: the compositor, the sound server, the browser, the extension and Tollvane. Ends with 77 if the
browser or all of the compositors are not installed. Firefox's remote control opens no tabs in sway and GNOME Shell without a screen, so Firefox
runs in KWin only.
"""

import json
import pathlib
import shutil
import sys
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / 'desktop'))

from gnome_session import ExtensionSession
from kwin_test import KWinSession
from shell_session import ShellTest
from browser_of_this_run import browser_of_this_run
from chromium import Chromium
from firefox import Firefox
from pages import Pages
from waiting import wait_until

ON_WAYLAND = {Chromium: (['--ozone-platform=wayland'], {}), Firefox: ([], {'MOZ_ENABLE_WAYLAND': '1'})}
MENU = ('/StatusNotifierItem/Menu', 'com.canonical.dbusmenu')
SOUND = ('--sound', 'pipewire')
KIND = None  # Chromium or Firefox


def needs(program):
    return unittest.skipUnless(shutil.which(program), f'{program} is not installed')


class TabTest(ShellTest):
    """The tab is behind another one, in a window that is behind another window."""

    def test_a_click_brings_the_tab_and_its_window_forward(self):
        self.tollvane = self.start_tollvane()
        browser = self.start_browser()
        pages = Pages()
        self.addCleanup(pages.close)
        wanted = browser.open_tab(pages.address('Wanted', 'localhost'))
        beside = browser.open_tab(pages.address('Beside', 'localhost'))
        browser.show_tab(beside)
        self.await_front('Beside')
        browser.open_window(pages.address('Before', 'localhost'))
        self.await_front('Before')

        def row_of_sound():
            """Plays again if nobody listened yet, or the extension was not linked."""
            browser.run(wanted, 'playSound()')
            try:
                return wait_until(self.row_of_tab, 'the sound of the tab', deadline=10)
            except TimeoutError:
                return None
        self.choose(wait_until(row_of_sound, 'the sound of the tab'))
        wait_until(lambda: browser.run(wanted, "document.visibilityState === 'visible'"), 'the tab')
        self.await_front('Wanted')

    def start_browser(self):
        browser = KIND(self.session, self.bundle / 'Extensions')
        arguments, variables = ON_WAYLAND[KIND]
        browser.command += arguments
        browser.variables.update(variables)
        browser.start()
        self.addCleanup(browser.kill)
        return browser

    def await_front(self, title):
        wait_until(lambda: self.title_in_front().startswith(title), f'the window {title} in front')


class MenuOnTheBus:
    """No panel is here that could show the menu, so it is read and chosen from over the bus, as panels do."""

    def row_of_tab(self):
        """The number of the row."""
        item = f'org.kde.StatusNotifierItem-{self.tollvane.pid}-1'
        if not self.session.bus.has(item):
            return None
        _, (_, _, rows) = self.session.bus.call(item, *MENU, 'GetLayout', 'iias', 0, 1, 0)
        return next((row['data'][0] for row in rows if 'Tab: Wanted' in str(row['data'][1].get('label'))), None)

    def choose(self, row):
        self.session.bus.call(f'org.kde.StatusNotifierItem-{self.tollvane.pid}-1', *MENU, 'Event', 'isvu', row,
                              'clicked', 's', '', 0)


@needs('gnome-shell')
class GnomeTest(ExtensionSession, TabTest):
    def row_of_tab(self):
        self.evaluate('Main.panel.statusArea.tollvane.menu.close(); 1')
        return next((row for row in self.menu() if 'Wanted' in row), None)

    def title_in_front(self):
        return self.evaluate("global.display.focus_window?.get_title() ?? ''")


@needs('kwin_wayland')
class KWinTest(MenuOnTheBus, KWinSession, TabTest):
    options = (*KWinSession.options, *SOUND)

    def title_in_front(self):
        return self.script('const a = workspace.activeWindow || workspace.activeClient; return a ? a.caption : "";')


@needs('sway')
class SwayTest(MenuOnTheBus, TabTest):
    options = ('--wayland', 'sway', *SOUND)

    def title_in_front(self):
        def focused(node):
            below = node.get('nodes', []) + node.get('floating_nodes', [])
            return node if node.get('focused') else next(filter(None, map(focused, below)), None)
        found = focused(json.loads(self.session.output('swaymsg', '-t', 'get_tree')))
        return found and found.get('name') or ''


@needs('labwc')
class LabwcTest(MenuOnTheBus, TabTest):
    options = ('--wayland', 'labwc', *SOUND)

    def title_in_front(self):
        """It is behind the application id."""
        return self.session.output('wlrctl', 'toplevel', 'list', 'state:activated').partition(': ')[2]


del ShellTest, ExtensionSession, KWinSession, TabTest  # they are no tests

if __name__ == '__main__':
    KIND = browser_of_this_run()
    result = unittest.main(verbosity=2, exit=False).result
    if result.wasSuccessful() and result.testsRun == len(result.skipped):
        sys.exit(77)
    sys.exit(not result.wasSuccessful())
