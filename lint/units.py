#!/usr/bin/env python3
"""Prints the compiled files of a build directory that we wrote, one a line: lint/units.py BUILD

Qt's generated code and the C code of protocols are left out."""
import json
import pathlib
import sys

if len(sys.argv) != 2:
    sys.exit("lint/units.py: name the build directory")
try:
    commands = json.loads(pathlib.Path(sys.argv[1], "compile_commands.json").read_text())
except OSError as error:
    sys.exit(f"lint/units.py: {error}")
files = {command["file"] for command in commands}
for file in sorted(files):
    path = pathlib.Path(file)
    if path.suffix in (".cpp", ".cxx") and "_autogen" not in file and not path.name.startswith("cmake_pch"):
        print(file)
