#!/usr/bin/env python3
"""Finds what tests/macos/declarations declares and no code for macOS uses: selectors, properties, functions and
constants. Prints each, and ends with 1 if there is one.

A selector counts as used if its parts stand in a message or a method in their order, or in @selector(); a property if
it is read or set. What the language itself calls (literals, subscripts, loops) counts as used if the code has such a
literal, subscript or loop."""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
DECLARATIONS = ROOT / 'tests/macos/declarations'
SOURCES = ['src/main/*.mm', 'src/platform/macos', 'bridge', 'extension/safari', 'tests/contract/*.mm']

# What stands in the code where the language calls the selector.
SYNTAX = {
    'arrayWithObjects:count:': r'@\[',
    'dictionaryWithObjects:forKeys:count:': r'@\{',
    'objectForKeyedSubscript:': r'\w\[[^\]]+\]',
    'numberWithBool:': r'@(YES|NO)\b',
    'setObject:forKeyedSubscript:': r'\w\[[^\]]+\] = ',
    'countByEnumeratingWithState:objects:count:': r'for \([^;)]+ in ',
}


def without_comments(text):
    return re.sub(r'//[^\n]*', '', text)


def declarations(path):
    """A header without comments and availability, and with properties that are blocks written like others."""
    text = re.sub(r'\s+TV_\w+\([^)]*\)', '', without_comments(path.read_text()))
    return re.sub(r'void \(\^(\w+)\)\([^)]*\);', r'void* \1;', text)


def code():
    names = subprocess.run(['git', 'ls-files', '-co', '--exclude-standard', '--', *SOURCES], cwd=ROOT, check=True,
                           capture_output=True, text=True).stdout.split()
    wanted = [name for name in sorted(set(names)) if name.endswith(('.mm', '.h', '.cpp')) and (ROOT / name).exists()]
    return without_comments('\n'.join((ROOT / name).read_text() for name in wanted))


def selectors(text):
    """The selectors of all methods: 'setValue:forHTTPHeaderField:', 'resume'."""
    for method in re.findall(r'^[-+] \(([^;]*);', text, flags=re.M):
        depth, signature = 1, ''
        for letter in method:  # without the types, which may contain parentheses
            depth += letter == '('
            if depth == 0:
                signature += letter
            depth -= letter == ')'
        parts = re.findall(r'(\w+):', signature)
        yield ''.join(part + ':' for part in parts) if parts else signature.split()[0]


def is_used(selector, text):
    if selector in SYNTAX:
        return re.search(SYNTAX[selector], text) is not None
    parts = selector.split(':')[:-1]
    if not parts:
        return re.search(rf'[ \w\])] ?\b{selector}\]|\.{selector}\b|\) ?{selector} \{{|@selector\({selector}\)', text)
    named = rf'@selector\({re.escape(selector)}\)'
    if len(parts) == 1 and parts[0].startswith('set'):
        name = parts[0][3].lower() + parts[0][4:]
        named += rf'|\.{name} = '
    called = r'\b' + r':[^;{}]*?(?:\{[^{}]*(?:\{[^{}]*\}[^{}]*)*\}[^;{}]*?)?\b'.join(parts) + ':'
    return re.search(f'{named}|{called}', text)


def property_is_used(name, getter, text):
    setter = 'set' + name[0].upper() + name[1:] + ':'
    return re.search(rf'\.{name}\b|\b{getter}\b(?=[\]) ]|$)|\b{setter}|\b{name}\]', text)


def main():
    text = code()
    unused = []
    for path in sorted(DECLARATIONS.rglob('*.h')):
        place = path.relative_to(ROOT)
        declared = declarations(path)
        for selector in selectors(declared):
            if not is_used(selector, text):
                unused.append(f'{place}: {selector}')
        for attributes, name in re.findall(r'^@property(\([^)]*\))?[^;]*?(\w+);', declared, flags=re.M):
            getter = re.search(r'getter=(\w+)', attributes or '')
            if not property_is_used(name, getter[1] if getter else name, text):
                unused.append(f'{place}: {name}')
        names = re.findall(r'^(?:extern|static) const [\w ]+?\*?(\w+)(?: =[^;]*)?;', declared, flags=re.M)
        names += re.findall(r'^#define ((?!TV_|YES|NO|nil|TARGET_)[A-Z_0-9a-z]+) ', declared, flags=re.M)
        names += re.findall(r'^(?:extern "C" )?[\w ]+[ *](\w+)\([^;{]*\);', declared, flags=re.M)
        for name in names:
            if not re.search(rf'\b{name}\b', text):
                unused.append(f'{place}: {name}')
    for each in unused:
        print(f'{each} is declared, but not used.', file=sys.stderr)
    return 1 if unused else 0


if __name__ == '__main__':
    sys.exit(main())
