#!/usr/bin/env python3
"""Compares the includes of all files with the table of folders in HACKING.md.

    rooms.py          prints each difference and ends with 1; without a difference, prints nothing and ends with 0:
                      each file may include only what its folder's row allows, each row may allow only what is
                      included, and folders may not include each other in a circle
    rooms.py --show   prints what each folder includes

A file belongs to the row with the longest matching folder. Every file may include C++'s own headers. In the core,
which is every row without the library "system", preprocessor conditions are not allowed either.
"""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Patterns for the names of headers; the first one that matches counts.
LIBRARIES = [
    ('json', r'nlohmann/'),
    ('simdjson', r'simdjson\.h'),
    ('ICU', r'unicode/'),
    ('GLib', r'glib'),
    ('Wayland', r'(wayland-|.*-client-protocol\.h)'),
    ('xcb', r'xcb/'),
    ('PipeWire', r'(pipewire|spa)/'),
    ('PulseAudio', r'pulse/'),
    ('systemd', r'systemd/'),
    ('seccomp', r'seccomp\.h'),
    ('Apple', r'(AppKit|CoreFoundation|Foundation|SafariServices|ServiceManagement|dispatch)/'),
    ('Qt', r'(Q[A-Z]\w+|Qt\w*|qpa/.*)$'),
    ('system', r'.*\.h$'),
]


def library_of(header):
    if re.fullmatch(r'[a-z_]+', header) or re.fullmatch(r'c[a-z]+', header):
        return None  # a header of C++ itself
    for name, pattern in LIBRARIES:
        if re.match(pattern, header):
            return name
    return header


class Row:
    def __init__(self, folder, includes, libraries):
        self.folder = folder
        self.everything = includes == ['everything']
        self.includes = set(includes)
        self.libraries = set(libraries)
        self.used = {}  # what is really included -> a place that includes it

    @property
    def is_core(self):
        return not self.everything and 'system' not in self.libraries


def table():
    rows = []
    for line in (ROOT / 'HACKING.md').read_text().splitlines():
        cells = [cell.strip() for cell in line.strip('|').split('|')]
        if not line.startswith('| `') or len(cells) != 4:
            continue
        words = [[word.strip('` ') for word in cell.split(',') if word.strip('` -')] for cell in cells[2:]]
        rows += [Row(folder.strip('` '), *words) for folder in cells[0].split(',')]
    return rows


def sources():
    listed = subprocess.run(['git', 'ls-files', '-co', '--exclude-standard', '--', '*.h', '*.cpp', '*.mm'], cwd=ROOT,
                            check=True, capture_output=True, text=True).stdout.split()
    return [name for name in sorted(set(listed)) if (ROOT / name).exists()]


def path_of(include):
    for path in (f'src/{include}', include):
        if (ROOT / path).exists():
            return path
    return None


def look(rows):
    """The differences, each as a sentence."""
    wrong = []

    def row_of(path):
        fitting = [row for row in rows if path.startswith(row.folder + '/')]
        return max(fitting, key=lambda row: len(row.folder), default=None)

    for name in sources():
        row = row_of(name)
        if row is None:
            wrong.append(f'{name}: HACKING.md has no row for its folder.')
            continue
        for number, line in enumerate((ROOT / name).read_text().splitlines(), 1):
            place = f'{name}:{number}'
            if row.is_core and re.match(r'\s*#\s*(if|ifdef|ifndef|elif)\b', line):
                wrong.append(f'{place}: The core is the same on every system and has no conditions: {line.strip()}')
            found = re.match(r'\s*#\s*(?:include|import)\s*([<"])([^>"]+)[>"]', line)
            if not found or row.everything:
                continue
            header = found[2]
            path = path_of(header) if found[1] == '"' else None
            if path:
                other = row_of(path)
                if other is None or other is row:
                    continue
                row.used.setdefault(other.folder, place)
                if other.folder not in row.includes:
                    wrong.append(f'{place}: {row.folder} may not include {other.folder} (HACKING.md), '
                                 f'but includes "{header}".')
                continue
            library = library_of(header)
            if library is None or header.endswith('.moc'):
                continue
            row.used.setdefault(library, place)
            if library not in row.libraries:
                wrong.append(f'{place}: {row.folder} may not use {library} (HACKING.md), but includes {header}.')
    for row in rows:
        if row.everything:
            continue
        for allowed in sorted((row.includes | row.libraries) - set(row.used)):
            wrong.append(f'HACKING.md: {row.folder} may use {allowed}, but no file there does.')
    return wrong + circles(rows)


def circles(rows):
    wrong = []
    known = {row.folder: row for row in rows}

    def walk(folder, way):
        if folder in way:
            circle = way[way.index(folder):] + [folder]
            if circle[0] == min(circle):
                wrong.append('These folders include each other in a circle: ' + ' -> '.join(circle) + '.')
            return
        row = known.get(folder)
        for other in sorted(row.used if row and not row.everything else ()):
            if other in known:
                walk(other, way + [folder])

    for row in rows:
        walk(row.folder, [])
    return sorted(set(wrong))


def main(arguments):
    if arguments not in ([], ['--show']):
        print('rooms.py: the only argument is --show.', file=sys.stderr)
        return 64
    rows = table()
    if not rows:
        print('rooms.py: HACKING.md has no table of folders.', file=sys.stderr)
        return 1
    wrong = look(rows)
    if arguments:
        for row in rows:
            print(row.folder, '->', ', '.join(sorted(row.used)) or 'nothing')
        return 0
    for sentence in wrong:
        print(sentence, file=sys.stderr)
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main(sys.argv[1:]))
