#!/usr/bin/env python3
"""The installed Debian package with several users, unusual homes and a system that nobody can write: users_test.py [--package FILE]

With the file of the package, also an upgrade while a browser is linked. Only for a computer or tree that is thrown away, because it makes users and installs packages: to be run as root, after
the package and what packaging/debian/session.txt, browsers.txt and users.txt list. Ends with 77 if that is missing.
"""

import json
import os
import pathlib
import pwd
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parent.parent
BUNDLE = pathlib.Path('/usr/lib/tollvane')
USERS = {'tollvane-anna': 'chromium', 'tollvane-bert': 'firefox-esr'}
PATH = '/usr/local/bin:/usr/bin:/bin'
package = None  # the file
readable = None  # a copy of the tests' programs that all users can read


class User:
    """A user at a session of their own; `ask` is a command of one_user.py. `around`: a shell command before it."""

    def __init__(self, name, browser, around=''):
        # Mounts of a user are seen by that user's session only.
        command = (f'{around} exec runuser -u {name} -- env -i PATH={PATH} HOME=/tmp '
                   f'/usr/bin/python3 -B {readable}/packaging/one_user.py {browser}')
        self._process = subprocess.Popen(['unshare', '--mount', '--propagation', 'private', 'sh', '-ec', command],
                                         stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, cwd='/')
        self._answer('the start of the session')

    def ask(self, command):
        self._process.stdin.write(command + '\n')
        self._process.stdin.flush()
        return self._answer(command)

    def close(self):
        self._process.stdin.close()
        self._process.wait()
        self._process.stdout.close()

    def _answer(self, command):
        line = self._process.stdout.readline()
        answer = json.loads(line) if line else {'failure': 'the program of the user has ended'}
        if 'failure' in answer:
            raise AssertionError(f'{command}: {answer["failure"]}')
        return answer['answer']


class UsersTest(unittest.TestCase):
    def user(self, name, browser=None, around=''):
        user = User(name, browser or USERS[name], around)
        self.addCleanup(user.close)
        return user

    def start(self, user):
        user.ask('start tollvane')
        user.ask('start browser')
        user.ask('link')

    def about_browsers(self, user):
        return ' '.join(each['sentence'] for each in user.ask('doctor')['findings']
                        if each['subject'].startswith('browser'))

    def test_two_users_at_once_hear_only_their_own_tabs(self):
        anna, bert = (self.user(name) for name in USERS)
        for user in (anna, bert):
            self.start(user)
        seen = {'Annas-page': anna.ask('hear Annas-page'), 'Berts-page': bert.ask('hear Berts-page')}
        facts = {'Annas-page': anna.ask('facts'), 'Berts-page': bert.ask('facts')}
        for own, other in (('Annas-page', 'Berts-page'), ('Berts-page', 'Annas-page')):
            self.assertNotIn(other, ' '.join(seen[own]))
            self.assertNotIn(other, ' '.join(facts[own]['history']))
            self.assertEqual(len(facts[own]['sockets']), 2, 'in the home and for this computer')
            self.assertEqual([len(pids) for pids in facts[own]['bridges'].values()], [0, 1], facts[own])
        for user in (anna, bert):
            said = self.about_browsers(user)
            self.assertEqual(said.count('It does not run now.'), 1, f"the other user's browser is none of theirs: {said}")
        self.assertFalse(set(facts['Annas-page']['sockets']) & set(facts['Berts-page']['sockets']))

    def test_nothing_needs_to_be_written_into_usr(self):
        anna = self.user('tollvane-anna', around='mount --bind /usr /usr; mount -o remount,bind,ro /usr;'
                                                 '! touch /usr/lib/tollvane/x 2>/dev/null;')
        self.start(anna)
        anna.ask('hear Wanted')

    def test_a_home_on_a_file_server_is_enough_with_each_browser(self):
        for browser in USERS.values():
            with self.subTest(browser):
                anna = User('tollvane-anna', browser)
                try:
                    anna.ask('home network')
                    self.start(anna)
                    anna.ask('hear Wanted')
                    facts = anna.ask('facts')
                    self.assertEqual([pathlib.Path(path).parts[-3] for path in facts['sockets']], ['run'])
                    self.assertTrue(facts['bridges'][str(BUNDLE / 'TollvaneBridge')],
                                    'the home holds no programs, so the bridge is that of the package')
                    self.assertTrue(facts['history'])
                finally:
                    anna.close()

    def test_a_user_whose_home_does_not_exist_hears_tabs(self):
        anna = self.user('tollvane-anna')
        anna.ask('home none')
        self.start(anna)
        anna.ask('hear Wanted')
        said = {each['subject']: each['sentence'] for each in anna.ask('doctor')['findings']}
        self.assertIn('cannot write to', said['history'])

    def test_a_user_of_whom_the_computer_knows_no_home_is_told_so(self):
        stranger = next(number for number in range(40000, 50000) if not is_user(number))
        ran = subprocess.run(['setpriv', f'--reuid={stranger}', f'--regid={stranger}', '--clear-groups', 'env', '-i',
                              f'PATH={PATH}', 'QT_QPA_PLATFORM=offscreen', 'Tollvane'], cwd='/', text=True,
                             capture_output=True, timeout=60, check=False)
        self.assertNotEqual(ran.returncode, 0)
        self.assertIn('home', ran.stderr)

    def test_a_manifest_that_an_older_bundle_left_behind_is_mended_while_the_browser_runs(self):
        for browser in USERS.values():
            with self.subTest(browser):
                anna = User('tollvane-anna', browser)
                try:
                    anna.ask('manifest /opt/removed/Tollvane/TollvaneBridge')
                    anna.ask('start browser')
                    self.assertIn('the bridge that it is to start is not there', self.about_browsers(anna))
                    anna.ask('start tollvane')
                    anna.ask('link')
                    anna.ask('hear Wanted')
                finally:
                    anna.close()

    def test_a_browser_that_is_installed_after_tollvane_was_started_is_linked(self):
        packages('remove', 'chromium')
        self.addCleanup(packages, 'install', 'chromium')
        self.assertIsNone(shutil.which('chromium'))
        bert = self.user('tollvane-bert', 'chromium')
        bert.ask('start tollvane')
        self.assertNotIn('Chromium', self.about_browsers(bert))
        packages('install', 'chromium')
        bert.ask('start browser')
        bert.ask('link')
        bert.ask('hear Wanted')
        self.assertTrue(bert.ask('facts')['bridges'][str(BUNDLE / 'TollvaneBridge')], 'the manifest for all users')


    def test_an_upgrade_disturbs_neither_tollvane_nor_a_linked_browser_and_counts_from_the_next_start(self):
        if not package:
            self.skipTest('for this, name the file of the package')
        anna = self.user('tollvane-anna')
        self.start(anna)
        anna.ask('hear Before')
        bridges = anna.ask('facts')['bridges']
        self.addCleanup(packages, '--allow-downgrades', 'install', str(package))
        packages('install', newer(package))
        self.assertEqual(anna.ask('facts')['bridges'], bridges)
        anna.ask('hear Meanwhile')
        self.assertIn('its program has been replaced', self.all_findings(anna))
        anna.ask('stop tollvane')
        anna.ask('start tollvane')
        anna.ask('link')
        anna.ask('hear Afterwards')
        self.assertIn('Tollvane 9.0.0 runs.', self.all_findings(anna))
        anna.ask('stop browser')
        anna.ask('start browser')
        anna.ask('link')
        anna.ask('hear Again')
        self.assertIn('the extension 9.0.0', self.all_findings(anna))
        self.assertEqual([each for each in anna.ask('facts')['history'] if each],
                         [f'{each}  (localhost)' for each in ('Before', 'Meanwhile', 'Afterwards', 'Again')])

    def all_findings(self, user):
        return ' '.join(each['sentence'] for each in user.ask('doctor')['findings'])


def newer(file):
    """The same package as version 9.0.0, with an extension of that version."""
    root = readable / 'newer'
    subprocess.run(['dpkg-deb', '-R', file, root], check=True)
    for path, old, new in (('DEBIAN/control', r'^Version: .*', 'Version: 9.0.0'),
                           ('usr/lib/tollvane/Info.json', r'("CFBundleShortVersionString": )"[^"]*"', r'\1"9.0.0"'),
                           ('usr/lib/tollvane/Extensions/chromium/manifest.json', r'("version": )"[^"]*"',
                            r'\1"9.0.0"')):
        text, count = re.subn(old, new, (root / path).read_text(), flags=re.MULTILINE)
        assert count == 1, path
        (root / path).write_text(text)
    subprocess.run(['dpkg-deb', '--root-owner-group', '-Znone', '-b', root, readable / 'newer.deb'], check=True,
                   stdout=subprocess.DEVNULL)
    return str(readable / 'newer.deb')


def setUpModule():
    global readable
    readable = pathlib.Path(unittest.enterModuleContext(tempfile.TemporaryDirectory()))
    readable.chmod(0o755)
    for folder in ('packaging', 'tests/session', 'tests/browsers'):
        shutil.copytree(PROJECT / folder, readable / folder)


def is_user(number):
    try:
        return bool(pwd.getpwuid(number))
    except KeyError:
        return False


def packages(*words):
    subprocess.run(['apt-get', '-qq', '-y', '--no-install-recommends', *words], check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, 'DEBIAN_FRONTEND': 'noninteractive'})


if __name__ == '__main__':
    if os.geteuid() != 0 or not BUNDLE.exists() or not all(map(shutil.which, USERS.values())):
        print('This needs root, the installed package and the browsers.')
        sys.exit(77)
    if '--package' in sys.argv:
        at = sys.argv.index('--package')
        package = pathlib.Path(sys.argv[at + 1]).resolve()
        del sys.argv[at:at + 2]
    for each in USERS:
        if subprocess.run(['id', '-u', each], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode != 0:
            subprocess.run(['useradd', '--no-create-home', '--home-dir', '/nonexistent', each], check=True)
    unittest.main(verbosity=2)
