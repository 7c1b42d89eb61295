"""What the tests of panels see and do on a screen."""

import io
import re
import subprocess
import typing

from PIL import Image

STEPS = 8  # of the pointer to its goal


class Spot(typing.NamedTuple):
    """A part of the screen, and what it showed."""
    box: tuple
    picture: Image.Image

    @staticmethod
    def of(screen, box):
        return Spot(box, screen.crop(box))


class XScreen:
    """Pointer, keyboard, windows and pictures on X11."""
    nowhere = (900, 700)

    def __init__(self, session):
        self.session = session
        self.environment = dict(session.environment)

    def output(self, *command):
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True, timeout=30).stdout.strip()

    def picture(self):
        done = subprocess.run(['import', '-window', 'root', 'ppm:-'], env=self.environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True)
        return Image.open(io.BytesIO(done.stdout)).convert('RGB')

    def point(self, x, y):
        # In steps as by a hand: some panels wait for a movement inside the icon, and Qt's menus count movements.
        self.output('xdotool', 'mousemove', str(x - STEPS), str(y),
                            *STEPS * ['sleep', '0.01', 'mousemove_relative', '1', '0'])

    def click(self, x, y, button=1):
        self.point(x, y)
        self.output('xdotool', 'click', str(button))

    def key(self, name):
        self.output('xdotool', 'key', name)

    def in_front(self):
        return self.output('xdotool', 'getactivewindow', 'getwindowname')

    def property_in_front(self, name):
        """A property of the window in front, as xprop writes it."""
        return self.output('xprop', '-id', self.output('xdotool', 'getactivewindow'), name).partition(' = ')[2]

    def bring_forward(self, title):
        self.output('xdotool', 'search', '--onlyvisible', '--name', f'^{title}$', 'windowactivate')

    def width_of_tooltip(self):
        for line in self.output('xwininfo', '-root', '-tree').splitlines():
            found = re.match(r'\s+(0x[0-9a-f]+) .* (\d+)x\d+\+', line)
            if found and 'TYPE_TOOLTIP' in self.output('xprop', '-id', found[1], '_NET_WM_WINDOW_TYPE') and \
                    'IsViewable' in self.output('xwininfo', '-id', found[1]):
                return int(found[2])
        return None
