# SPDX-License-Identifier: GPL-3.0-or-later
"""Real drags between the program and another one, in both directions; what arrives is compared with the SQLite file.

Usage: drag_and_drop.py EXECUTABLE DRAG-PARTNER MAKE-CORPUS-SCRIPT
"""

import os
import sqlite3
import subprocess
import sys

from driver import Program, drag, press, wait_for

DATA = os.path.join(os.environ["XDG_DATA_HOME"], "Vellumcast")
COPY = 1


class Partner:
    """The other program, and what it has written to its log."""

    def __init__(self, executable, *paths):
        self.log = os.path.join(os.environ["TMPDIR"], "partner.log")
        self.program = Program(executable, self.log, *paths).start()
        self.program.wait_for_window("Drag Partner")

    def lines(self):
        if not os.path.exists(self.log):
            return []
        with open(self.log, encoding="utf-8") as log:
            return log.read().splitlines()

    def clear(self):
        open(self.log, "w", encoding="utf-8").close()

    def label(self, name):
        return self.program.find("label", name)


def check(what, found, expected):
    if found != expected:
        raise AssertionError("%s: found %r, expected %r" % (what, found, expected))


def rows(statement):
    with sqlite3.connect("file:%s?mode=ro" % os.path.join(DATA, "VellumcastDB.dat"), uri=True) as connection:
        return connection.execute(statement).fetchall()


def make_sounds(script, name, seed):
    folder = os.path.join(os.environ["TMPDIR"], name)
    subprocess.run([sys.executable, script, "--files", "12", "--corrupt", "0", "--seed", str(seed), "--out", folder],
                   check=True, stdout=subprocess.DEVNULL)
    return folder


def open_program(executable):
    program = Program(executable).start()
    program.wait_for_window("Warranty Disclaimer")
    program.find("push button", "Accept").click()
    program.wait_without_window("Warranty Disclaimer")
    program.wait_for_window("Vellumcast - Table1")
    program.wait_for_label("Found Records: 0")
    return program


def drag_in(program, partner, keys):
    """Drags the partner's files onto the table with these keys held, until the scan is done."""
    partner.clear()
    drag(partner.label("Source"), program.find("table", ".*"), lambda: "offered CopyAction" in partner.lines(), keys)
    wait_for("the end of the drag", lambda: [line for line in partner.lines() if line.startswith("given")])
    check("what the source is told", [line for line in partner.lines() if line.startswith("given")],
          ["given CopyAction"])
    program.wait_for_window("Scanning Media Files")
    program.find("push button", "Finish").click()
    program.wait_without_window("Scanning Media Files")


def drag_out(program, partner):
    """Drags all rows of the table to the partner."""
    partner.clear()
    program.find("table cell", ".*[.](wav|mp3|aiff?)").click()
    press("ctrl+a")
    drag(program.find("table cell", ".*[.](wav|mp3|aiff?)"), partner.label("Target"),
         lambda: "possible %d" % COPY in partner.lines())
    wait_for("the drop", lambda: "dropped CopyAction" in partner.lines())
    taken = [line[len("taken "):] for line in partner.lines() if line.startswith("taken ")]
    check("the files that were dragged out", taken,
          [row[0] for row in rows("SELECT filePath FROM MetaData1 ORDER BY filePath")])


def play(executable, partner_executable, script):
    first, second = make_sounds(script, "First Sounds #1", 1), make_sounds(script, "Second", 2)
    program = open_program(executable)
    partners = []
    try:
        partners.append(Partner(partner_executable, first))
        drag_in(program, partners[-1], keys=())
        found = rows("SELECT COUNT(*) FROM MetaData1")[0][0]
        check("files of the dropped folder are there", found > 0, True)
        drag_out(program, partners[-1])
        partners[-1].program.kill()

        partners.append(Partner(partner_executable, second))
        drag_in(program, partners[-1], keys=("shift",))
        check("files of the second folder are there", rows("SELECT COUNT(*) FROM MetaData1")[0][0] > found, True)
        check("the source's files are still there", os.listdir(second) != [], True)
        program.wait_for_window("Vellumcast - Table1")
        press("ctrl+q")
        check("exit code", program.wait_for_end(), 0)
    finally:
        program.kill()
        for partner in partners:
            partner.program.kill()


if __name__ == "__main__":
    play(*sys.argv[1:])
    print("Files were dragged in, out, and in with Shift held")
