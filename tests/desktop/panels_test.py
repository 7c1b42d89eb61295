#!/usr/bin/env python3
"""Tollvane in the panels of desktops on X11, for real: panels_test.py BUILD [TEST...]"""

import json
import re
import unittest

from panel_session import PanelTest
from bus import BusError
from client import LIBRARIES, program
from waiting import wait_until


class LXQtTest(PanelTest):
    desktop, panel = 'LXQt', 'lxqt-panel'

    @classmethod
    def start_panel(cls):
        cls.session.write('.config/lxqt/panel.conf', '[General]\npanels=panel1\n\n[panel1]\nplugins=statusnotifier\n'
                          'position=Top\npanelSize=32\niconSize=22\nwidth=100\nwidth-percent=true\nalignment=-1\n\n'
                          '[statusnotifier]\ntype=statusnotifier\n')
        cls.start('panel', 'lxqt-panel')


class MateTest(PanelTest):
    desktop, panel = 'MATE', 'notification-area-applet'

    @classmethod
    def start_panel(cls):
        cls.session.write('.config/glib-2.0/settings/keyfile', """[org/mate/panel/general]
toplevel-id-list=['top']
object-id-list=['tray']

[org/mate/panel/toplevels/top]
orientation='top'
size=28
screen=0
expand=true

[org/mate/panel/objects/tray]
object-type='applet'
applet-iid='NotificationAreaAppletFactory::NotificationArea'
toplevel-id='top'
position=10
""")
        cls.allow_services('org.mate.panel.applet.*')
        cls.start('panel', 'mate-panel')


class CinnamonTest(PanelTest):
    """A helper of Cinnamon hears the protocol and draws the menus. The panel draws the icons that it hands on."""
    options = ('--screen', '1024x768')
    desktop, panel = 'X-Cinnamon', 'xapp-sn-watcher'
    tells_what_is_open = tells_new_texts = False

    @classmethod
    def variables(cls):
        return {'XDG_SESSION_TYPE': 'x11'}

    def tooltip(self):
        icons = "imports.ui.appletManager.getRunningInstancesForUuid('xapp-status@cinnamon.org')[0].statusIcons"
        done, text = self.session.bus.call(
            'org.Cinnamon', '/org/Cinnamon', 'org.Cinnamon', 'Eval', 's',
            f'const tip = Object.values({icons})[0]._tooltip; tip.visible ? tip._tooltip.text : ""')
        return json.loads(text) if done else None

    @classmethod
    def start_panel(cls):
        cls.session.write('.config/glib-2.0/settings/keyfile', """[org/cinnamon]
enabled-applets=['panel1:right:0:systray@cinnamon.org:0', 'panel1:right:1:xapp-status@cinnamon.org:1']
panels-enabled=['1:0:bottom']
panels-height=['1:40']
""")
        cls.start('panel', 'cinnamon')
        cls.start('sn-watcher', program('/usr/libexec/xapps/sn-watcher/xapp-sn-watcher',
                                      f'{LIBRARIES}/xapps/xapp-sn-watcher'))


class PlasmaTest(PanelTest):
    desktop, panel = 'KDE', 'plasmashell'
    template = 'org.kde.plasma.desktop.defaultPanel'  # what a user gets at the first start; here the tray only
    layout = ('const bar = new Panel; bar.location = "bottom"; bar.height = 44; '
              'bar.addWidget("org.kde.plasma.systemtray");')
    background = 'desktops().forEach(desktop => desktop.wallpaperPlugin = "org.kde.color"); print(panels().length);'

    def tooltip(self):
        return next((each['name'] for each in self.shown(self.panel) if each['role'] in ('label', 'heading') and
                     each['showing'] and re.match('Tollvane|Last sound', each['name'])), None)

    def bell_in(self, changed):
        """The bell has moved other icons, and others may have come with it."""
        left, width = next((each['place'][0], each['place'][2]) for each in self.shown(self.panel)
                           if each['name'] == 'Tollvane' and 'button' in each['role'] and each['showing'])
        return left, changed[1], left + width, changed[3]

    @classmethod
    def variables(cls):
        return {'KDE_FULL_SESSION': 'true', 'KDE_SESSION_VERSION': '6' if program('kded6').startswith('/') else '5'}

    @classmethod
    def start_panel(cls):
        folder = f'.local/share/plasma/layout-templates/{cls.template}'
        about = {'KPackageStructure': 'Plasma/LayoutTemplate', 'X-Plasma-Shell': 'plasmashell',
                 'X-Plasma-ContainmentCategories': ['panel'],
                 'KPlugin': {'Id': cls.template, 'Name': 'Tray', 'ServiceTypes': ['Plasma/LayoutTemplate']}}
        cls.session.write(f'{folder}/metadata.json', json.dumps(about))
        cls.session.write(f'{folder}/contents/layout.js', cls.layout)
        cls.session.own_home()
        cls.allow_services('org.kde.*')
        cls.start('kded', program('kded6', 'kded5'))
        cls.start('panel', 'plasmashell')

        def is_laid_out():
            try:
                return cls.session.bus.call('org.kde.plasmashell', '/PlasmaShell', 'org.kde.PlasmaShell',
                                            'evaluateScript', 's', cls.background)[0].strip() == '1'
            except BusError:
                return False
        wait_until(is_laid_out, 'a panel with the system tray', pause=1)


class BudgieTest(PanelTest):
    """Budgie's own tray is of the old kind. Its applet for indicators shows status items: without tooltips, and every
    click opens the menu that the panel draws."""
    desktop, panel = 'Budgie:GNOME', 'budgie-panel'
    button_of_own_menu, button_of_panel_menu = None, 1
    tells_what_is_open = tells_new_texts = shows_tooltips = False

    def rows(self, program):
        return [row for row in super().rows(program) if row[0] != 'Tollvane']  # that is the bell

    @classmethod
    def start_panel(cls):
        cls.session.write('.config/glib-2.0/settings/keyfile', """[com/solus-project/budgie-panel]
panels=['top']
migration-level=2

[com/solus-project/budgie-panel/panels/{top}]
applets=['indicators']
location='top'
size=30

[com/solus-project/budgie-panel/applets/{indicators}]
name='AppIndicator Applet'
alignment='start'
position=0
""")
        cls.start('indicators',
                  '/usr/libexec/ayatana-indicator-application/ayatana-indicator-application-service')
        cls.start('panel', 'budgie-panel')


if __name__ == '__main__':
    unittest.main(verbosity=2)
