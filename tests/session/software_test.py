#!/usr/bin/env -S python3 -B
"""Tests of tests/session/software: only the command sees what is laid over the system."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
PROBE = pathlib.Path('/usr/share/tollvane-probe')
USER = 65534


class SoftwareTest(unittest.TestCase):
    def setUp(self):
        """Makes a project with two layers of one file each."""
        self.project = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.project.chmod(0o755)
        self.program = self.project / 'tests/session/software'
        self.program.parent.mkdir(parents=True)
        shutil.copy(HERE / 'software', self.program)
        for layer in ('session', 'browsers'):
            directory = self.project / 'build/software' / layer
            for place in ('usr/share', 'etc'):
                (directory / place).mkdir(parents=True)
            (directory / 'usr/share' / PROBE.name).write_text(layer)
            (directory / f'etc/tollvane-{layer}').write_text(layer)

    def run_program(self, *arguments, **options):
        return subprocess.run([self.program, *arguments], capture_output=True, text=True, stdin=subprocess.DEVNULL,
                              **options)

    def run_inside(self, *command, layers=('session',), **options):
        # DISPLAY looks like a desktop, so that nothing is ever installed.
        done = self.run_program('run', *layers, '--', *command, env={**os.environ, 'DISPLAY': ':77'}, **options)
        if 'cannot be laid over each other' in done.stderr:
            self.skipTest(done.stderr.strip())
        return done

    def test_layer_is_seen_inside_and_not_outside(self):
        done = self.run_inside('cat', PROBE, '/etc/tollvane-session', '/etc/passwd')
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(done.stdout.startswith('sessionsession' + pathlib.Path('/etc/passwd').read_text()))
        self.assertFalse(PROBE.exists())

    def test_later_layer_lies_on_top(self):
        done = self.run_inside('cat', PROBE, '/etc/tollvane-session', layers=('session', 'browsers'))
        self.assertEqual((done.returncode, done.stdout), (0, 'browserssession'), done.stderr)

    def test_system_cannot_be_changed_from_inside(self):
        self.assertNotEqual(self.run_inside('touch', '/usr/share/tollvane-trace').returncode, 0)
        self.assertFalse(pathlib.Path('/usr/share/tollvane-trace').exists())

    def test_command_keeps_directory_arguments_and_exit_code(self):
        done = self.run_inside('sh', '-c', 'pwd; echo "$1"; exit 7', '-', "two 'words'", cwd='/')
        self.assertEqual((done.returncode, done.stdout), (7, "/\ntwo 'words'\n"), done.stderr)

    def test_ordinary_user_can_do_it_and_stays_ordinary(self):
        if os.geteuid() != 0:
            self.skipTest('All tests are run by an ordinary user here.')
        subprocess.run(['chown', '-R', str(USER), self.project], check=True)
        done = self.run_inside('sh', '-c', f'cat {PROBE}; id -u; grep CapEff /proc/self/status', user=USER, group=USER,
                               extra_groups=[])
        self.assertEqual(done.stdout.split(), [f'session{USER}', 'CapEff:', '0000000000000000'], done.stderr)

    def test_mistake_is_one_sentence_and_exit_code_64(self):
        for arguments in ([], ['run'], ['run', 'session'], ['run', 'session', '--'], ['run', 'kitchen', '--', 'true'],
                          ['fetch'], ['fetch', 'session', '--', 'true'], ['cook', 'session']):
            done = self.run_program(*arguments)
            self.assertEqual((done.returncode, done.stdout), (64, ''), arguments)
            self.assertRegex(done.stderr, r'\Asoftware: [^\n]+\n\Z', arguments)

    def test_layer_that_was_not_fetched_is_named(self):
        shutil.rmtree(self.project / 'build/software/browsers')
        done = self.run_program('run', 'session', 'browsers', '--', 'true')
        self.assertEqual((done.returncode, done.stderr), (1, "software: 'software fetch browsers' has not run yet.\n"))


if __name__ == '__main__':
    unittest.main(verbosity=2)
