#!/usr/bin/env python3
"""Pictures of bell and menu in GNOME Shell: shells_pictures.py BUILD DIRECTORY

With Tollvane's own extension, and with the one for indicators; or the light menu, from GNOME Shell 47 on.
Needs what shell_session.py needs.
"""

import pathlib
import sys

if len(sys.argv) != 3:
    sys.exit('shells_pictures.py: name the build and the directory for the pictures.')
OUT = pathlib.Path(sys.argv.pop())

import shell_session
from client import PrivateSession
from waiting import wait_until

SHELL = ('org.gnome.Shell', '/org/gnome/Shell', 'org.gnome.Shell')
PICTURES = [('tollvane', 'tabs', 'dark'), ('tollvane', 'fifty', 'dark'), ('indicators', 'tabs', 'dark')]
if shell_session.shell_version() >= 47:
    PICTURES = [('tollvane', 'tabs', 'light')]


def evaluate(session, script):
    return session.bus.call(*SHELL, 'Eval', 's', script)[1]


def take(extension, scenario, find, tone):
    with PrivateSession('--wayland', 'gnome', '--screen', '1024x700', '--extension', extension) as session:
        evaluate(session, "new imports.gi.Gio.Settings({schema_id: 'org.gnome.desktop.interface'})"
                          f".set_string('color-scheme', 'prefer-{tone}'); 1")
        bell = shell_session.Probe(session, 'menu_probe', str(shell_session.BUILD / 'Tollvane/icons'), scenario)
        bell.ask('image bell.fill')
        if '/' in extension:
            bell.ask('claim')
        item = f'Main.panel.statusArea[Object.keys(Main.panel.statusArea).find(key => key.startsWith("{find}"))]'
        wait_until(lambda: evaluate(session, f'({item}?._rows ?? {item}?.menu)?.numMenuItems > 3') == 'true' or
                   evaluate(session, f'{item}?.menu.open(); 1') != '1', 'the menu')
        # The shell tells of things that this session does not have.
        evaluate(session, 'Main.messageTray.hide(); Main.messageTray.bannerBlocked = true; 1')
        evaluate(session, f'{item}.menu.open(); 1')
        wait_until(lambda: evaluate(session, f'{item}.menu.actor.get_stage() && !global.stage.is_grabbed?.call') and
                   evaluate(session, f'{item}.menu.isOpen') == 'true', 'the open menu')
        evaluate(session, 'Main.messageTray._hideNotification?.(false); 1')
        picture = session.root / 'tmp/picture.png'
        for _ in range(2):  # the first one shows the menu while it fades in
            session.bus.call('org.gnome.Shell', '/org/gnome/Shell/Screenshot', 'org.gnome.Shell.Screenshot',
                             'Screenshot', 'bbs', 'false', 'false', str(picture))
        return picture.read_bytes()


OUT.mkdir(parents=True, exist_ok=True)
for name, scenario, tone in PICTURES:
    extension, find = (str(shell_session.EXTENSION), 'tollvane') if name == 'tollvane' else \
        (shell_session.INDICATORS, 'appindicator')
    file = f'gnome-{name}-{scenario}{"-light" if tone == "light" else ""}.png'
    (OUT / file).write_bytes(take(extension, scenario, find, tone))
