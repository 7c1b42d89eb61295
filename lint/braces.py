#!/usr/bin/env python3
"""Finds braces around a statement that would fit on the line of its if, for or while. Prints each place, and ends with
1 if there is one."""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LONGEST_LINE = 120
# Declarations need the scope of the braces, and statements that contain others are easier to read in braces.
KEPT = re.compile(r'(//|const |auto |static |constexpr |using |if\b|for\b|while\b|case\b)')


def is_superfluous(begin, body, end):
    head = re.match(r'(\s*)(?:if|for|while) \(.*\) \{$', begin)
    if not head or end != head[1] + '}' or begin.count('(') != begin.count(')'):
        return False
    statement = body.strip()
    if not statement.endswith(';') or '//' in statement or KEPT.match(statement):
        return False
    return len(begin) - 2 + 1 + len(statement) <= LONGEST_LINE


def main():
    names = subprocess.run(['git', 'ls-files', '-co', '--exclude-standard', '--', '*.h', '*.cpp', '*.mm'], cwd=ROOT,
                           check=True, capture_output=True, text=True).stdout.split()
    found = False
    for name in names:
        if not (ROOT / name).exists():
            continue
        lines = (ROOT / name).read_text().splitlines()
        for number, three in enumerate(zip(lines, lines[1:], lines[2:]), 1):
            if is_superfluous(*three):
                print(f'{name}:{number}: This needs no braces: {three[0].strip()[:-2]} {three[1].strip()}', file=sys.stderr)
                found = True
    return 1 if found else 0


if __name__ == '__main__':
    sys.exit(main())
