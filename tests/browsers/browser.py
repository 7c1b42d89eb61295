"""What the tests do with a browser, whichever it is.

    browser = Chromium(session, extension)
    browser.install_host(program)       # or let the application do it
    browser.start()
    tab = browser.open_tab(address)     # in the background
    browser.run(tab, 'playSound()')
    browser.stop()                      # start() again is a restart, with the same profile

`extension` is the directory that extension/package.sh filled. Tabs are named by what the browser's remote control
calls them. One at a time: two cores do not carry two.
"""

import json
import pathlib
import shutil

from waiting import wait_until

HOST_NAME = 'com.quarnel.tollvane'
OPTIONS = "location.pathname === '/src/options.html'"  # true in the extension's options page


class Browser:
    name = ''  # of the command
    program = ''  # what the command starts
    unpacked_program = ''  # below the home directory, as the next
    unpacked_profile_directory = ''
    profile_directory = ''  # below the home directory, as the next
    host_directory = ''  # for native messaging manifests
    host_permission = {}  # the member of the manifest that lets our extension in

    def __init__(self, session, extension, profile_directory=None):
        self.session = session
        self.extension = pathlib.Path(extension)
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
        """Returns when the browser takes commands and its first window is there. `restore`: with the tabs it had."""
        raise NotImplementedError

    def stop(self):
        """Quits as a person would."""
        raise NotImplementedError

    def kill(self):
        self.process.kill()
        self.process.wait()

    def open_tab(self, address):
        raise NotImplementedError

    def open_window(self, address):
        """In a window of its own, which comes to the front."""
        raise NotImplementedError

    def close_tab(self, tab):
        """Returns when it is gone: until then it may bring another one to the front."""
        raise NotImplementedError

    def show_tab(self, tab):
        raise NotImplementedError

    def tabs(self):
        raise NotImplementedError

    def run(self, tab, expression):
        """The value of a JavaScript expression in the tab's page, without the tab's coming forward."""
        raise NotImplementedError

    def click(self, tab, selector):
        """As with the mouse: the page may do what only a person's click lets it do. The tab must be in front."""
        raise NotImplementedError

    def agree(self):
        """Says yes to the browser's question that is on the screen."""
        raise NotImplementedError

    def stop_background(self):
        """Stops the extension's background, as the browser does with one that is idle."""
        raise NotImplementedError

    def open_private_window(self, address):
        raise NotImplementedError

    def title(self, tab):
        return self.run(tab, 'document.title')

    def is_in_front(self, tab):
        """By the browser's own account: the tab is shown, and its window has the keyboard."""
        return self.run(tab, "document.visibilityState === 'visible' && document.hasFocus()")

    def front_window_title(self):
        """By the window manager's account."""
        return self.session.output('xdotool', 'getactivewindow', 'getwindowname')

    def find_tab(self, condition):
        """The first tab in whose page this expression is true, or None."""
        return next((tab for tab in self.tabs() if self.run(tab, condition)), None)

    def allow_marks(self, options):
        """Gives the extension access to the pages, on its options page in this tab."""
        self.show_tab(options)

        def allowed():
            if self.has_access(options):
                return True
            if self.run(options, 'document.hasFocus()'):
                self.click(options, '#marks')
            else:
                self.agree()
            return False

        # Slowly: browsers take no answer to a question that has only just appeared.
        wait_until(allowed, 'access to the pages', pause=1)

    def has_access(self, tab):
        return self.run(tab, "(globalThis.browser ?? chrome).permissions.contains({origins: ['<all_urls>']})")

    def install_host(self, program):
        directory = self.session.home / self.host_directory
        directory.mkdir(parents=True, exist_ok=True)
        manifest = {'name': HOST_NAME, 'description': 'Tollvane browser bridge', 'path': str(program), 'type': 'stdio',
                    **self.host_permission}
        (directory / f'{HOST_NAME}.json').write_text(json.dumps(manifest))
