#!/usr/bin/env python3
"""Pictures of the bell with its two menus in the panels of panels_test.py: panels_pictures.py BUILD DIRECTORY

Each picture shows the menu that Tollvane draws (the left button) beside the one that the panel draws (the right
button).
"""

import pathlib
import sys

if len(sys.argv) != 3:
    sys.exit('panels_pictures.py: name the build and the directory for the pictures.')
OUT = pathlib.Path(sys.argv.pop()).resolve()

import panels_test
from PIL import Image, ImageChops
from client import Lines
from panel_session import BUILD
from waiting import wait_until

PROBE = BUILD / 'tests/probes/menu_probe'
BORDER = 12


class Look:
    """What makes a desktop light or dark."""

    @classmethod
    def variables(cls):
        theme = {'GTK_THEME': 'Adwaita:dark' if cls.tone == 'dark' else 'Adwaita'}
        return {**super().variables(), **theme}

    @classmethod
    def start_panel(cls):
        dark = cls.tone == 'dark'
        cls.session.write('.config/lxqt/lxqt.conf', f'[General]\ntheme={cls.tone}\n')
        cls.session.write('.config/plasmarc', f'[Theme]\nname=breeze-{cls.tone}\n')
        if dark:
            scheme = pathlib.Path('/usr/share/color-schemes/BreezeDark.colors')
            cls.session.write('.config/kdeglobals', scheme.read_text() if scheme.exists() else '')
        super().start_panel()


def picture_of(panel, tone):
    """Returns the picture of one panel."""
    kind = type(panel.__name__, (Look, panel), {'tone': tone})
    kind.setUpClass()
    try:
        return taken(kind())
    finally:
        kind.doClassCleanups()


def taken(test):
    test.empty = test.picture_at_rest()
    bell = Lines(test.session, 'bell', [str(PROBE), str(test.bundle / 'icons'), 'tabs'])
    bell.process.stdin.write(f'scheme {test.tone}\nimage bell.fill\n')
    bell.process.stdin.flush()
    spot, place = test.place_of_bell()
    test.screen.point(*test.screen.nowhere)
    without = test.picture_at_rest()
    shots = []
    for button in (test.button_of_own_menu, test.button_of_panel_menu):
        test.screen.click(*spot, button)
        test.screen.point(*test.screen.nowhere)
        shots.append(wait_until(lambda: changed_since(without, test.picture_at_rest()), 'a menu'))
        test.screen.key('Escape')
        wait_until(lambda: not changed_since(without, test.picture_at_rest()), 'the end of the menu')
    # Both are cut to the same height, with the bell in them.
    boxes = [(min(box[0], place.box[0]), min(box[1], place.box[1]), max(box[2], place.box[2]),
              max(box[3], place.box[3])) for _, box in shots]
    top, bottom = min(box[1] for box in boxes), max(box[3] for box in boxes)
    cut = [shot.crop((max(0, box[0] - BORDER), max(0, top - BORDER), min(shot.width, box[2] + BORDER),
                      min(shot.height, bottom + BORDER))) for (shot, _), box in zip(shots, boxes)]
    whole = Image.new('RGB', (sum(part.width for part in cut) + BORDER, cut[0].height), 'white')
    whole.paste(cut[0], (0, 0))
    whole.paste(cut[1], (cut[0].width + BORDER, 0))
    return whole


def changed_since(before, now):
    """The new picture and where it differs, or nothing if it does not differ by as much as a menu."""
    box = ImageChops.difference(before, now).getbbox()
    return (now, box) if box and box[3] - box[1] > 100 else None


OUT.mkdir(parents=True, exist_ok=True)
for panel in (panels_test.LXQtTest, panels_test.MateTest, panels_test.CinnamonTest, panels_test.PlasmaTest):
    for tone in ('light', 'dark'):
        picture_of(panel, tone).save(OUT / f'{panel.__name__.removesuffix("Test").lower()}-{tone}.png', optimize=True)
