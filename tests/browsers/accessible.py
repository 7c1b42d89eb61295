"""The windows of a program as a screen reader sees them (AT-SPI).

    Accessibility(session)                  # before the program is started, with ACCESSIBLE in its environment
    dialog = accessibility.window('Tollvane', 'Settings')
    dialog.texts()
    dialog.find('Open at login').act()
"""

from bus import Bus, BusError

ACCESSIBLE = {'QT_LINUX_ACCESSIBILITY_ALWAYS_ON': '1'}

ROOT = '/org/a11y/atspi/accessible/root'
NOTHING = '/org/a11y/atspi/null'


class Accessibility:
    def __init__(self, session):
        session.tell('service org.a11y.Bus')
        self._bus = Bus(session.bus.call('org.a11y.Bus', '/org/a11y/bus', 'org.a11y.Bus', 'GetAddress')[0])

    def window(self, program, title):
        """The window with this title if it is shown, else None."""
        try:
            desktop = Accessible(self._bus, 'org.a11y.atspi.Registry', ROOT)
            return next((window for application in desktop.children() if application.name() == program
                         for window in application.children() if window.name() == title and window.is_shown()), None)
        except BusError:
            return None  # a window closed while it was examined


class Accessible:
    SHOWING = 1 << 25

    def __init__(self, bus, service, path):
        self._bus, self._service, self._path = bus, service, path

    def name(self):
        return self._bus.get(self._service, self._path, 'org.a11y.atspi.Accessible', 'Name')

    def role(self):
        return self._bus.call(self._service, self._path, 'org.a11y.atspi.Accessible', 'GetRoleName')[0]

    def children(self):
        found = self._bus.call(self._service, self._path, 'org.a11y.atspi.Accessible', 'GetChildren')[0]
        return [Accessible(self._bus, service, path) for service, path in found if path != NOTHING]

    def is_shown(self):
        states = self._bus.call(self._service, self._path, 'org.a11y.atspi.Accessible', 'GetState')[0]
        return bool(states[0] & self.SHOWING)

    def all(self):
        yield self
        for child in self.children():
            yield from child.all()

    def texts(self):
        return [name for each in self.all() if (name := each.name())]

    def find(self, name):
        """The first element called `name`, this one or one below it, or None."""
        return next((each for each in self.all() if each.name() == name), None)

    def act(self, number=0):
        """Does what a click or a key press does."""
        self._bus.call(self._service, self._path, 'org.a11y.atspi.Action', 'DoAction', 'i', number)
