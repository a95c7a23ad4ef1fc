# SPDX-License-Identifier: GPL-3.0-or-later
"""A person's first run, in the real window: accept the disclaimer, scan a folder, read the counter, look up, sort,
end, start again; each step is compared with the SQLite file beside it.

Usage: first_run.py EXECUTABLE MAKE-CORPUS-SCRIPT
"""

import os
import sqlite3
import subprocess
import sys

from driver import Program, press, type_text, wait_for

FILES = 120
DATA = os.path.join(os.environ["XDG_DATA_HOME"], "Vellumcast")


def check(what, found, expected):
    if found != expected:
        raise AssertionError("%s: found %r, expected %r" % (what, found, expected))


def rows(statement, *values):
    """What the catalogue file holds, read beside the running program."""
    with sqlite3.connect("file:%s?mode=ro" % os.path.join(DATA, "VellumcastDB.dat"), uri=True) as connection:
        return connection.execute(statement, values).fetchall()


def make_corpus(script):
    folder = os.path.join(os.environ["TMPDIR"], "Sounds")
    subprocess.run([sys.executable, script, "--files", str(FILES), "--corrupt", "0.05", "--seed", "11", "--out", folder],
                   check=True, stdout=subprocess.DEVNULL)
    return folder


def accept_disclaimer(program):
    program.wait_for_window("Warranty Disclaimer")
    program.find("push button", "Accept").click()
    program.wait_without_window("Warranty Disclaimer")
    program.wait_for_window("Vellumcast - Table1")
    check("counter of a new catalogue", program.wait_for_label("Found Records: .*"), "Found Records: 0")


def scan(program, folder):
    program.find("push button", "Scan Files…").click()
    program.wait_for_window("Scan Media Files")
    press("ctrl+a")
    type_text(folder)
    press("Return")
    program.wait_for_window("Scanning Media Files")
    program.find("push button", "Finish")
    status = program.wait_for_label("Files scanned: .*")
    program.find("push button", "Finish").click()
    program.wait_without_window("Scanning Media Files")
    return status


def check_scanned(program, status):
    count = rows("SELECT COUNT(*) FROM MetaData1")[0][0]
    if not FILES * 0.8 < count <= FILES * 1.5:
        raise AssertionError("%d rows after a scan of about %d files" % (count, FILES))
    if "(warnings: " not in status:
        raise AssertionError("no warnings in the status of a scan with damaged files: " + status)
    program.wait_for_label("Found Records: %d" % count)
    check("one time stamp", rows("SELECT COUNT(DISTINCT scanTimestamp) FROM MetaData1"), [(1,)])
    check("\"Last Scanned\" chosen by the scan", program.find("radio button", "Last Scanned").is_checked(), True)
    return count


def check_order(program, column, field, direction):
    expected = [str(row[0]) for row in rows("SELECT %s FROM MetaData1 ORDER BY %s %s, id %s LIMIT 5"
                                             % (field, field, direction, direction))]
    try:
        wait_for("%s %s" % (field, direction), lambda: program.cell_texts(column)[:5] == expected)
    except AssertionError:
        check("order by %s %s" % (field, direction), program.cell_texts(column)[:5], expected)


def check_sorting(program):
    for direction in ("ASC", "DESC"):
        # Looked for each time: new rows give the table new accessible objects.
        program.find("table column header", "File Name.*").click()
        check_order(program, "File Name", "fileName", direction)


def look_up(program, text, condition, instantly):
    program.enter_text(program.find("text", "Search Keywords|"), text)
    if instantly:
        press("Return")
    count = rows("SELECT COUNT(*) FROM MetaData1 WHERE " + condition)[0][0]
    program.wait_for_label("Found Records: %d" % count)
    return count


def check_lookups(program, total):
    word = rows("SELECT description FROM MetaData1 WHERE description GLOB '[A-Za-z]*' ORDER BY id LIMIT 1")[0][0].split()[0]
    word = "".join(c for c in word if c.isalpha())
    found = look_up(program, word, "library || ' ' || description LIKE '%" + word + "%'", instantly=False)
    if not 0 < found <= total:
        raise AssertionError("%r is found %d times" % (word, found))
    look_up(program, "!" + word, "library NOT LIKE '%" + word + "%' AND description NOT LIKE '%" + word + "%'", True)
    press("ctrl+a", "Delete", "Return")
    program.wait_for_label("Found Records: %d" % total)


# The toolkit's own words about windows and cells that went away while the driver looked at them.
DRIVEN_NOISE = ("qt.qpa.xcb: QXcbConnection: XCB error", "QAccessibleTable::child: Invalid index")

# On a machine without a sound device, where these tests run too.
WITHOUT_SOUND = ("PulseAudioService: pa_context_connect() failed",
                 "Raw audio format not supported by backend, cannot play audio")


def end(program):
    press("ctrl+q")
    check("exit code", program.wait_for_end(), 0)
    said = [line for line in program.errors.splitlines() if line and not line.startswith(DRIVEN_NOISE + WITHOUT_SOUND)]
    check("what the program said", said, [])


def check_second_start(executable):
    second = subprocess.run([executable], capture_output=True, text=True, timeout=30)
    check("exit code of a second start", second.returncode, 1)
    check("message of a second start", second.stderr.strip(), "Application is already started")


def first_session(executable, folder):
    program = Program(executable).start()
    try:
        accept_disclaimer(program)
        total = check_scanned(program, scan(program, folder))
        check_sorting(program)
        check_lookups(program, total)
        check_second_start(executable)
        end(program)
    finally:
        program.kill()
    return total


def second_session(executable, total):
    program = Program(executable).start()
    try:
        program.wait_for_window("Vellumcast - Table1")
        program.wait_for_label("Found Records: %d" % total)
        check("disclaimer on the second start", program.has_window("Warranty Disclaimer"), False)
        end(program)
    finally:
        program.kill()


def main():
    executable, script = sys.argv[1:]
    folder = make_corpus(script)
    total = first_session(executable, folder)
    check("settings file", os.path.isfile(os.path.join(DATA, "Settings.ini")), True)
    second_session(executable, total)
    check("rows after the restart", rows("SELECT COUNT(*) FROM MetaData1"), [(total,)])
    print("%d records scanned, sorted, looked up and found again" % total)


if __name__ == "__main__":
    main()
