# SPDX-License-Identifier: GPL-3.0-or-later
"""Rules of the source that no compiler checks: include arrows between the folders, sizes of files, no bare sleeps.

Usage: source_rules.py PROJECT-FOLDER
"""

import os
import re
import sys

# What each folder may include besides itself. The arrows run one way.
ARROWS = {
    "store": set(),
    "audio": set(),
    "scan": {"store", "audio"},
    "browse": {"store"},
    "ui": {"store"},
    "resources": set(),
    "app": {"store", "scan", "browse", "audio", "ui", "resources"},
}
WIDGETLESS = ("store", "scan", "audio")
WIDGET_HEADER = re.compile(r"#include <(QWidget|QApplication|QDialog|QMainWindow|QtWidgets|QAbstractItemView|QLabel)")
LONGEST_FILE = 600
# A test waits for a state; these only let time pass.
BARE_SLEEP = re.compile(r"\b(QTest::qWait|QTest::qSleep|QThread::m?sleep|QThread::usleep|std::this_thread::sleep_\w+)\s*\(")


def source_files(folder):
    for parent, folders, names in os.walk(folder):
        folders[:] = [f for f in folders if not f.startswith((".", "build"))]
        for name in sorted(names):
            if name.endswith((".h", ".cpp")):
                yield os.path.join(parent, name)


def broken_arrows(project):
    for folder, allowed in ARROWS.items():
        for path in source_files(os.path.join(project, folder)):
            with open(path, encoding="utf-8") as source:
                for number, line in enumerate(source, 1):
                    match = re.match(r'#include "([a-z]+)/', line)
                    if match and match.group(1) != folder and match.group(1) not in allowed:
                        yield "%s:%d: %s must not include %s" % (path, number, folder, match.group(1))
                    if folder in WIDGETLESS and WIDGET_HEADER.match(line):
                        yield "%s:%d: %s must not use widgets" % (path, number, folder)


def long_files(project):
    for path in source_files(project):
        with open(path, encoding="utf-8") as source:
            lines = sum(1 for _ in source)
        if lines > LONGEST_FILE:
            yield "%s: %d lines, more than %d" % (path, lines, LONGEST_FILE)


def bare_sleeps(project):
    for path in source_files(os.path.join(project, "tests")):
        with open(path, encoding="utf-8") as source:
            for number, line in enumerate(source, 1):
                if BARE_SLEEP.search(line):
                    yield "%s:%d: a test waits for a state, not for time" % (path, number)


def main():
    project = sys.argv[1]
    files = sum(1 for folder in ARROWS for _ in source_files(os.path.join(project, folder)))
    if files == 0:
        print("no source found below", project)
        return 1
    faults = [*broken_arrows(project), *long_files(project), *bare_sleeps(project)]
    print("\n".join(faults) or "%d files follow the rules" % files)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
