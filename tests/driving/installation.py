# SPDX-License-Identifier: GPL-3.0-or-later
"""Installs into a folder of its own, looks at what a desktop looks for, and starts the program from there.

Usage: installation.py CMAKE BUILD-FOLDER
"""

import os
import shutil
import struct
import subprocess
import sys

from driver import Program, press

ICON_SIZES = (16, 32, 48, 128, 256)


def check(what, found, expected):
    if found != expected:
        raise AssertionError("%s: found %r, expected %r" % (what, found, expected))


def size_of_picture(path):
    with open(path, "rb") as picture:
        return struct.unpack(">II", picture.read(24)[16:])


def check_menu_entry(share):
    path = os.path.join(share, "applications", "vellumcast.desktop")
    with open(path, encoding="utf-8") as entry:
        values = dict(line.strip().split("=", 1) for line in entry if "=" in line)
    check("command of the menu entry", values["Exec"], "Vellumcast")
    if shutil.which("desktop-file-validate"):
        said = subprocess.run(["desktop-file-validate", path], capture_output=True, text=True)
        check("faults of the menu entry", said.stdout + said.stderr, "")
    for size in ICON_SIZES:
        icon = os.path.join(share, "icons", "hicolor", "%dx%d" % (size, size), "apps", values["Icon"] + ".png")
        check("size of " + icon, size_of_picture(icon), (size, size))


def check_start(executable):
    program = Program(executable).start()
    try:
        program.wait_for_window("Warranty Disclaimer")
        program.find("push button", "Accept").click()
        program.wait_for_window("Vellumcast - Table1")
        program.wait_for_label("Found Records: 0")
        press("ctrl+q")
        check("exit code", program.wait_for_end(), 0)
    finally:
        program.kill()


def main():
    cmake, build = sys.argv[1:]
    prefix = os.path.join(os.environ["TMPDIR"], "installed")
    subprocess.run([cmake, "--install", build, "--prefix", prefix], check=True, stdout=subprocess.DEVNULL)
    check_menu_entry(os.path.join(prefix, "share"))
    check_start(os.path.join(prefix, "bin", "Vellumcast"))
    print("The installed program has its menu entry and icons, and starts")


if __name__ == "__main__":
    main()
