"""What the tests can do with a browser, the same for every browser.

    browser = Chromium(session, extension)
    browser.install_host(program)       # not needed if the application does it
    browser.start()
    tab = browser.open_tab(address)     # in the background
    browser.run(tab, 'playSound()')
    browser.stop()                      # start() after this restarts it, with the same profile

`extension` is the directory that extension/package.sh filled; None: the browser finds the extension by itself, with the
settings of a fresh profile. Tabs are identified as in the browser's remote control.
Tests run one browser at a time, because two cores cannot run two.
"""

import json
import pathlib
import shutil

from waiting import wait_until

HOST_NAME = 'com.quarnel.tollvane'
OPTIONS = "location.pathname === '/src/options.html'"  # true in the extension's options page


class Browser:
    name = ''  # the command
    program = ''  # the program that the command starts
    unpacked_program = ''  # relative to the home directory, like the following
    unpacked_profile_directory = ''
    profile_directory = ''
    host_directory = ''  # for manifests of native messaging hosts
    host_permission = {}  # the member of the manifest that admits our extension

    def __init__(self, session, extension, profile_directory=None):
        self.session = session
        self.extension = extension and pathlib.Path(extension)
        self.profile = session.home / (profile_directory or self.profile_directory)
        self.command = [self.name]
        self.variables = {}  # of its environment, besides the session's
        self.process = None

    def unpacked(self):
        """The same browser, as one that no package installed: known by the place of its program alone."""
        browser = type(self)(self.session, self.extension, self.unpacked_profile_directory)
        program = self.session.home / self.unpacked_program
        program.parent.mkdir(parents=True)
        for file in pathlib.Path(self.program).parent.iterdir():
            (program.parent / file.name).symlink_to(file)
        program.unlink(missing_ok=True)
        shutil.copy(self.program, program)
        browser.command = [str(program)]
        return browser

    def another_profile(self):
        """A browser of the same kind, which runs beside this one; the hosts of this one are its own, too."""
        return type(self)(self.session, self.extension, self.profile_directory + '-another')

    @classmethod
    def is_installed(cls):
        return shutil.which(cls.name) is not None

    def environment(self):
        return {**self.session.environment, **self.variables}

    def start(self, restore=False):
        """Starts the browser. Returns when it accepts commands and its first window is open. `restore`: with the tabs
        of its last run."""
        raise NotImplementedError

    def stop(self):
        """Quits the browser in good order."""
        raise NotImplementedError

    def kill(self):
        self.process.kill()
        self.process.wait()

    def open_tab(self, address):
        raise NotImplementedError

    def open_window(self, address):
        """Opens the address in a new window, which comes to the front."""
        raise NotImplementedError

    def close_tab(self, tab):
        """Returns when the tab is gone, because closing a tab may bring another one to the front."""
        raise NotImplementedError

    def show_tab(self, tab):
        raise NotImplementedError

    def tabs(self):
        raise NotImplementedError

    def run(self, tab, expression):
        """The value of a JavaScript expression in the tab's page. Does not bring the tab forward."""
        raise NotImplementedError

    def click(self, tab, selector):
        """Clicks as a user does, so the page may do what it may only do after a click. The tab must be in front."""
        raise NotImplementedError

    def agree(self):
        """Answers the browser's question on the screen with yes."""
        raise NotImplementedError

    def stop_background(self):
        """Stops the extension's background page or worker, as the browser does when it is idle."""
        raise NotImplementedError

    def open_private_window(self, address):
        raise NotImplementedError

    def title(self, tab):
        return self.run(tab, 'document.title')

    def is_in_front(self, tab):
        """Whether the browser says that the tab is shown and its window has the keyboard."""
        return self.run(tab, "document.visibilityState === 'visible' && document.hasFocus()")

    def front_window_title(self):
        """The title of the window that is in front for the window manager."""
        return self.session.output('xdotool', 'getactivewindow', 'getwindowname')

    def find_tab(self, condition):
        """The first tab in whose page the expression `condition` is true, or None."""
        return next((tab for tab in self.tabs() if self.run(tab, condition)), None)

    def allow_marks(self, options):
        """Gives the extension access to all pages. `options`: a tab with its options page."""
        self.show_tab(options)

        def allowed():
            if self.has_access(options):
                return True
            if self.run(options, 'document.hasFocus()'):
                self.click(options, '#marks')
            else:
                self.agree()
            return False

        # With pauses, because browsers ignore an answer to a question that has only just appeared.
        wait_until(allowed, 'access to the pages', pause=1)

    def has_access(self, tab):
        return self.run(tab, "(globalThis.browser ?? chrome).permissions.contains({origins: ['<all_urls>']})")

    def install_host(self, program):
        directory = self.session.home / self.host_directory
        directory.mkdir(parents=True, exist_ok=True)
        manifest = {'name': HOST_NAME, 'description': 'Tollvane browser bridge', 'path': str(program), 'type': 'stdio',
                    **self.host_permission}
        (directory / f'{HOST_NAME}.json').write_text(json.dumps(manifest))
