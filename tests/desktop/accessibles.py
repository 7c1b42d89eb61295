#!/usr/bin/env python3
"""What the programs of a session show, as a screen reader finds it.

Obeys lines on its standard input: "tree PROGRAM" is answered with a line of JSON, the elements that are visible:
[{role, name, about, enabled, showing, place, below}, ...]. Menus of Qt are found only if one of their rows has had the
keyboard, because they are in no tree of their program.
"""

import json
import sys

import gi
gi.require_version('Atspi', '2.0')
from gi.repository import Atspi, GLib

DEEPEST = 24
MOST_CHILDREN = 200
POPUP_ROLES = ('popup menu', 'menu')

menus = []  # of rows that had the keyboard


def has(element, state):
    return element.get_state_set().contains(state)


def elements(element, depth=0):
    found = []
    for index in range(min(element.get_child_count(), MOST_CHILDREN)) if depth < DEEPEST else ():
        try:
            child = element.get_child_at_index(index)
            if child is not None:
                found += described(child, depth)
        except GLib.Error:
            pass  # it has gone in the meantime
    return found


def described(element, depth):
    element.clear_cache()
    if not has(element, Atspi.StateType.SHOWING) and not has(element, Atspi.StateType.VISIBLE):
        return []
    try:
        area = element.get_extents(Atspi.CoordType.SCREEN)
        place = [area.x, area.y, area.width, area.height]
    except (GLib.Error, AttributeError):
        place = None
    return [{
        'role': element.get_role_name(),
        'name': element.get_name() or '',
        'about': element.get_description() or '',
        'enabled': has(element, Atspi.StateType.ENABLED) and has(element, Atspi.StateType.SENSITIVE),
        'showing': has(element, Atspi.StateType.SHOWING),
        'place': place,
        'below': elements(element, depth + 1),
    }]


def programs(name):
    desktop = Atspi.get_desktop(0)
    desktop.clear_cache()
    for index in range(desktop.get_child_count()):
        try:
            program = desktop.get_child_at_index(index)
            if program is not None:
                program.clear_cache()
                if program.get_name() == name:
                    yield program
        except GLib.Error:
            pass  # it has ended in the meantime


def tree(name):
    found = [each for program in programs(name) for each in elements(program)]
    for menu in list(menus):
        try:
            menu.clear_cache()
            if menu.get_application().get_name() == name:
                found += described(menu, 0)
        except (GLib.Error, AttributeError):
            menus.remove(menu)
    return found


def remember(event, *_):
    try:
        parent = event.source.get_parent()
        if event.detail1 and parent and parent.get_role_name() in POPUP_ROLES and parent not in menus:
            menus.append(parent)
    except GLib.Error:
        pass  # it has gone in the meantime


def obey(source, _):
    line = sys.stdin.readline()
    if not line:
        loop.quit()
        return False
    verb, _, name = line.rstrip('\n').partition(' ')
    print(json.dumps(tree(name) if verb == 'tree' else []), flush=True)
    return True


Atspi.init()
Atspi.set_timeout(2000, 5000)
listener = Atspi.EventListener.new(remember)
listener.register('object:state-changed:focused')
loop = GLib.MainLoop()
GLib.io_add_watch(sys.stdin, GLib.PRIORITY_DEFAULT, GLib.IOCondition.IN | GLib.IOCondition.HUP, obey)
loop.run()
