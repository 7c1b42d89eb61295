#!/usr/bin/env python3
"""Whether the programs that people run were built with protection against overwritten memory: hardened_test.py PROGRAM...

Reads the programs with readelf. Ends with 77 if the build has sanitizers, which have protection of their own.
"""

import re
import subprocess
import sys
import unittest

PROGRAMS = sys.argv[1:]


def read(*arguments):
    return subprocess.run(['readelf', '--wide', *arguments], check=True, capture_output=True, text=True).stdout


class HardenedTest(unittest.TestCase):
    def test_each_program(self):
        for program in PROGRAMS:
            with self.subTest(program=program):
                header, segments, dynamic = read('-h', program), read('-l', program), read('-d', program)
                symbols = read('--dyn-syms', program)
                self.assertRegex(header, r'Type:\s+DYN', 'it can be loaded at any address')
                self.assertIn('GNU_RELRO', segments)
                self.assertRegex(dynamic, r'FLAGS_1.*\bNOW\b', 'its table of functions is read-only')
                stack = re.search(r'GNU_STACK\s+(\S+\s+){5}(\w+)', segments)
                self.assertNotIn('E', stack[2], 'its stack is not executable')
                self.assertIn('__stack_chk_fail', symbols)
                self.assertRegex(symbols, r'__\w+_chk\b', 'functions of the C library check their buffers')


if __name__ == '__main__':
    if any('__asan_init' in read('--dyn-syms', each) for each in PROGRAMS):
        sys.exit(77)
    unittest.main(argv=sys.argv[:1], verbosity=2)
