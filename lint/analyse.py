#!/usr/bin/env python3
"""Compiles all that we wrote twice with clang, without making anything: lint/analyse.py BUILD

Once with all warnings that the build directory is configured for, and once with clang's static analyser. Prints what
they find, and ends with 1 if that is anything."""
import concurrent.futures
import json
import os
import pathlib
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
WARNINGS = ['-fsyntax-only', '-Werror', '-ferror-limit=0']
ANALYSER = ['--analyze', '-Xclang', '-analyzer-output=text', '-Xclang', '-analyzer-werror', '-o', os.devnull]


def jobs(build):
    ours = subprocess.run([ROOT / 'lint/units.py', build], check=True, capture_output=True, text=True).stdout.split()
    for entry in json.loads((build / 'compile_commands.json').read_text()):
        if entry['file'] not in ours:
            continue
        words = shlex.split(entry['command'])
        at = words.index('-o')
        for flags in (WARNINGS, ANALYSER):
            yield entry['file'], entry['directory'], [*words[:at], *words[at + 2:], *flags], flags is ANALYSER


def run(job):
    file, directory, command, is_analyser = job
    done = subprocess.run(command, cwd=directory, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    places = [line.split(':')[0] for line in done.stdout.splitlines() if ' error: ' in line or ' warning: ' in line]
    # What the analyser finds in a library's header is about the library: Qt's hand objects on to code that the analyser
    # does not see.
    is_ours = any(pathlib.Path(directory, place).is_relative_to(ROOT) for place in places)
    is_bad = done.returncode != 0 and (not is_analyser or is_ours or not places)
    return file, is_bad, done.stdout


if len(sys.argv) != 2:
    sys.exit('lint/analyse.py: name the build directory')
todo = list(jobs(pathlib.Path(sys.argv[1])))
if not todo:
    sys.exit('lint/analyse.py: nothing in this build directory is ours.')
failed = 0
with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
    for file, is_bad, output in pool.map(run, todo):
        if is_bad:
            failed += 1
            print(f'{file}:\n{output}', flush=True)
print(f'analyse: clang has looked at {len(todo) // 2} units, each with all warnings and with its analyser.')
sys.exit(1 if failed else 0)
