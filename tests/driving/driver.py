# SPDX-License-Identifier: GPL-3.0-or-later
"""Drives the real program as a person does: mouse and keyboard through the X server, eyes through accessibility.

Needs a display with a window manager and a D-Bus session. Every wait looks for a state and gives up after a time;
nothing sleeps and hopes.
"""

import itertools
import os
import re
import subprocess
import time

import pyatspi
from gi.repository import GLib

PATIENCE = 40.0
SCALE = float(os.environ.get("QT_SCALE_FACTOR", "1"))  # accessibility counts in unscaled pixels, the X server does not
DOUBLE_CLICK = 0.6  # seconds
LISTED_CHILDREN = 80  # a table of many rows must not be walked cell by cell


def wait_for(what, condition, patience=PATIENCE):
    """The first true value of condition(); fails naming what was waited for."""
    end = time.monotonic() + patience
    while True:
        value = fault = None
        try:
            value = condition()
        except (GLib.Error, LookupError) as error:  # objects vanish while they are looked at: look again
            fault = error
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError("waited in vain for " + what) from fault
        time.sleep(0.05)


def xdotool(*arguments):
    done = subprocess.run(["xdotool", *map(str, arguments)], capture_output=True, text=True)
    return done.stdout.strip()


last_click = 0.0


def wait_out_double_click():
    """Two clicks in quick succession would be taken for a double click."""
    global last_click
    time.sleep(max(0.0, last_click + DOUBLE_CLICK - time.monotonic()))
    last_click = time.monotonic()


def move_and_click(x, y, button=1, repeat=1):
    wait_out_double_click()
    xdotool("mousemove", x, y)
    xdotool("click", "--repeat", repeat, "--delay", 80, button)


def press(*keys):
    for key in keys:
        xdotool("key", key)


def type_text(text):
    xdotool("type", "--delay", 15, text)


def drag(source, target, is_accepted, keys=()):
    """Drags from the middle of one widget to the middle of another and lets go once the drag is seen to be accepted.
    On a busy machine a window may not be where it was said to be: then once more."""
    for _ in range(5):
        if drag_once(source, target, is_accepted, keys):
            return
    raise AssertionError("the drag is not accepted")


def drag_once(source, target, is_accepted, keys):
    x, y = source.centre()
    wait_out_double_click()
    xdotool("mousemove", x, y)
    for key in keys:
        xdotool("keydown", key)
    xdotool("mousedown", 1)
    try:
        # The first movements start the drag, the later ones show it to the target.
        for step in range(1, 8):
            xdotool("mousemove", x + 4 * step, y + 2 * step)
        x, y = target.centre()
        moves = itertools.cycle((-4, -2, 0, 2, 4))

        def move_and_look():
            step = next(moves)
            xdotool("mousemove", x + 2 * step, y + step)
            return is_accepted()

        wait_for("the drag to be accepted", move_and_look, patience=8)
        return True
    except AssertionError:
        press("Escape")
        return False
    finally:
        xdotool("mouseup", 1)
        for key in keys:
            xdotool("keyup", key)


def picture(path):
    """A picture of the whole screen."""
    subprocess.run(["import", "-window", "root", path], check=True)


class Widget:
    """One accessible object of the running program."""

    def __init__(self, accessible):
        self.accessible = accessible

    @property
    def name(self):
        return self.accessible.name

    def has(self, state):
        return self.accessible.getState().contains(state)

    def is_enabled(self):
        return self.has(pyatspi.STATE_ENABLED) and self.has(pyatspi.STATE_SENSITIVE)

    def is_checked(self):
        return self.has(pyatspi.STATE_CHECKED)

    def text(self):
        content = self.accessible.queryText()
        return content.getText(0, content.characterCount)

    def extents(self):
        e = self.accessible.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        return e.x, e.y, e.width, e.height

    def centre(self):
        """In pixels of the X server."""
        x, y, width, height = self.extents()
        return int((x + width / 2) * SCALE), int((y + height / 2) * SCALE)

    def click(self, button=1, repeat=1):
        move_and_click(*self.centre(), button, repeat)


class Program:
    """The program under a driver: started, looked at, operated and ended."""

    def __init__(self, executable, *arguments):
        self.command = [executable, *arguments]
        self.process = None

    def start(self):
        environment = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        pyatspi.Registry.getDesktop(0)  # wakes the accessibility bus before the program looks for it
        self.process = subprocess.Popen(self.command, env=environment, stderr=subprocess.PIPE, text=True)
        return self

    def wait_for_window(self, title):
        """The X window of this exact title, active."""
        pattern = "^" + re.escape(title) + "$"
        window = wait_for("a window titled " + title,
                          lambda: xdotool("search", "--onlyvisible", "--name", pattern).split("\n")[0])
        xdotool("windowactivate", "--sync", window)
        return window

    def has_window(self, title):
        return bool(xdotool("search", "--onlyvisible", "--name", "^" + re.escape(title) + "$"))

    def wait_without_window(self, title):
        wait_for("the window titled " + title + " to go", lambda: not self.has_window(title))

    def objects(self):
        """Every visible accessible object of the program, outermost first."""
        desktop = pyatspi.Registry.getDesktop(0)
        for number in range(desktop.childCount):
            application = desktop.getChildAtIndex(number)
            if application is not None and application.get_process_id() == self.process.pid:
                yield from self._below(application)

    def _below(self, accessible, depth=0):
        yield accessible
        if depth > 14:
            return
        for number in range(min(accessible.childCount, LISTED_CHILDREN)):
            child = accessible.getChildAtIndex(number)
            if child is not None:
                yield from self._below(child, depth + 1)

    def look_for(self, role, name):
        """A visible object whose role and name match these patterns, or None."""
        for accessible in self.objects():
            if (re.fullmatch(role, accessible.getRoleName()) and re.fullmatch(name, accessible.name or "")
                    and accessible.getState().contains(pyatspi.STATE_SHOWING)):
                return Widget(accessible)
        return None

    def find(self, role, name, patience=PATIENCE):
        return wait_for("%s named %s" % (role, name), lambda: self.look_for(role, name), patience)

    def wait_for_label(self, pattern, patience=PATIENCE):
        return self.find("label", pattern, patience).name

    def cell_texts(self, header):
        """The texts that the visible rows of the table show in the column of this title (as shown, without its
        sort mark), top to bottom."""
        table = wait_for("the table", lambda: self._table())
        grid = table.queryTable()
        titles = [re.sub(" [↑↓]$", "", grid.getColumnDescription(c) or "") for c in range(grid.nColumns)]
        column = titles.index(header)
        rows = min(grid.nRows, 12)
        return [grid.getAccessibleAt(row, column).name for row in range(rows)]

    def _table(self):
        for accessible in self.objects():
            if accessible.getRoleName() == "table" and accessible.getState().contains(pyatspi.STATE_SHOWING):
                return accessible
        return None

    def enter_text(self, field, text):
        """Replaces the text of a line edit. On a busy machine keys may come before the focus has: then once more."""
        for _ in range(5):
            field.click()
            press("ctrl+a")
            type_text(text)
            try:
                wait_for("the text in the line edit", lambda: field.text() == text, patience=5)
                return
            except AssertionError:
                continue
        raise AssertionError("%r cannot be typed; the line edit holds %r" % (text, field.text()))

    def wait_for_end(self):
        """The exit code, once the program has ended by itself."""
        self.errors = self.process.communicate(timeout=PATIENCE)[1]
        return self.process.returncode

    def kill(self):
        if self.process is not None and self.process.poll() is None:
            self.process.kill()
            self.process.communicate()
