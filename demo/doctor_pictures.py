#!/usr/bin/env python3
"""Pictures of what `Tollvane --doctor` says on a good and on a broken computer: doctor_pictures.py BUNDLE OUT

The good one has a panel, a sound server, a notification service, and Chromium with the extension, in which a tab has
just played. The broken one has no panel and no sound server; a file of Chromium's is damaged, and so are the settings.
Needs the programs of packaging/debian/session.txt and browsers.txt.
"""

import pathlib
import shutil
import subprocess
import sys

TESTS = pathlib.Path(__file__).resolve().parent.parent / 'tests'
sys.path += [str(TESTS / 'session'), str(TESTS / 'browsers')]

from chromium import Chromium
from client import PrivateSession
from pages import Pages
from tollvane import Tollvane
from waiting import wait_until

SCREEN = ('--screen', '1280x900', '--window-manager', 'openbox')
BACKGROUND, FOREGROUND = '#1d1f21', '#e0e0e0'
COLORS = {'ok': '#7fc97f', 'note': '#e6c15c', 'BAD': '#ff7b72'}
MARK_WIDTH = 8
COMMAND = '$ Tollvane --doctor'


def said_by_doctor(session):
    return session.output('sh', '-c', '"$HOME/Tollvane/Tollvane" --doctor; true')


def draw(text, file):
    """As a terminal shows it, with the marks in colours."""
    def label(words, color):
        # No blanks: a picture of nothing but blanks would be an error.
        drawn = (words or ' ').replace(' ', '\N{NO-BREAK SPACE}').replace('\\', '\\\\').replace('%', '%%')
        return ['-fill', color, f'label:{drawn}']

    lines = []
    for line in f'{COMMAND}\n{text}'.split('\n'):
        color = COLORS.get(line[:MARK_WIDTH].strip())
        words = label(line[:MARK_WIDTH], color) + label(line[MARK_WIDTH:], FOREGROUND) if color else label(line, FOREGROUND)
        lines += ['(', *words, '+append', ')']
    subprocess.run(['convert', '-background', BACKGROUND, '-font', 'DejaVu-Sans-Mono', '-pointsize', '14', *lines,
                    '-gravity', 'West', '-append', '-bordercolor', BACKGROUND, '-border', '14x12', '+dither', '-colors',
                    '32', f'PNG8:{file}'], check=True)


def good(bundle):
    pages = Pages()
    with PrivateSession(*SCREEN, '--panel', 'xfce4', '--sound', 'pipewire', '--notifications', 'dunst') as session:
        own = shutil.copytree(bundle, session.home / 'Tollvane')
        tollvane = Tollvane(session, own, in_place=True)
        (session.config / 'Tollvane/defaults.json').unlink()  # so this is the first start, which turns on the login
        tollvane.start()
        browser = Chromium(session, own / 'Extensions')
        browser.start()
        wait_until(tollvane.is_linked, 'the link of the browser')
        browser.run(browser.open_tab(pages.address('Evening news', 'localhost').replace(' ', '%20')), 'playSound()')
        tollvane.await_entry('Evening news')
        wait_until(tollvane.history, 'the line in the history')
        text = said_by_doctor(session)
    pages.close()
    return text


def broken(bundle):
    with PrivateSession(*SCREEN) as session:
        shutil.copytree(bundle, session.home / 'Tollvane')
        folder = session.home / Chromium.host_directory
        folder.mkdir(parents=True)
        (folder / 'com.quarnel.tollvane.json').write_text('{"name": "com.quarnel')
        settings = session.config / 'Tollvane/defaults.json'
        settings.parent.mkdir()
        settings.write_text('{')
        return said_by_doctor(session)


if __name__ == '__main__':
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    out = pathlib.Path(sys.argv[2])
    out.mkdir(parents=True, exist_ok=True)
    draw(good(sys.argv[1]), out / 'good.png')
    draw(broken(sys.argv[1]), out / 'broken.png')
