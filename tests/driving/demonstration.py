# SPDX-License-Identifier: GPL-3.0-or-later
"""Plays the program's main job in its real window and leaves pictures of it.

Usage: demonstration.py EXECUTABLE PICTURES-FOLDER
The sounds are those of Debian's sound-icons package and a few mp3 and aiff files made by the ffmpeg program.
"""

import glob
import os
import shutil
import subprocess
import sys

from driver import SCALE, Program, picture, press, type_text, wait_for, xdotool

MADE_SOUNDS = [
    # File name, seconds, what ffmpeg generates, tags. The codes in the names are known to the default library rules.
    ("Harbour/Bell buoy far ZU01_014.mp3", 4.2, "sine=f=660:d=%s", {"comment": "Bell buoy in fog, far"}),
    ("Harbour/Trawler engine ZU02_003.mp3", 6.5, "anoisesrc=d=%s:c=brown:a=0.4",
     {"comment": "Trawler engine, idle, interior"}),
    ("Shore/ZR14-Waves on shingle.mp3", 21.3, "anoisesrc=d=%s:c=white:a=0.2", {"comment": "Waves on shingle, close"}),
    ("Weather/Rain on tin roof NR01_022.aiff", 8.1, "anoisesrc=d=%s:c=pink:a=0.3", {"title": "Rain on a tin roof"}),
    ("Weather/Wind in reeds NR02_007.aiff", 9.7, "anoisesrc=d=%s:c=violet:a=0.1", {"title": "Wind through reeds"}),
    ("Weather/Thunder NR03_001.mp3", 72.4, "anoisesrc=d=%s:c=brown:a=0.6", {"comment": "Distant thunder, long tail"}),
    ("Tones/Reference 1 kHz.aiff", 3.0, "sine=f=1000:d=%s", {"title": "Reference tone 1 kHz"}),
]


def make_sounds(folder):
    for name, seconds, source, tags in MADE_SOUNDS:
        path = os.path.join(folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        arguments = ["-f", "lavfi", "-i", source % seconds]
        for key, text in tags.items():
            arguments += ["-metadata", key + "=" + text]
        subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", *arguments, path], check=True)
    icons = os.path.join(folder, "Icons")
    os.makedirs(icons)
    for path in sorted(glob.glob("/usr/share/sounds/sound-icons/*.wav")):
        shutil.copyfile(path, os.path.join(icons, os.path.basename(path)))


def scan_folder(program, folder, pictures):
    program.find("push button", "Scan Files…").click()
    program.wait_for_window("Scan Media Files")
    press("ctrl+a")
    type_text(folder)
    press("Return")
    program.wait_for_window("Scanning Media Files")
    program.find("push button", "Finish")
    picture(os.path.join(pictures, "3-scan-finished.png"))
    program.find("push button", "Finish").click()
    program.wait_without_window("Scanning Media Files")


def play(program, sounds, pictures):
    program.wait_for_window("Warranty Disclaimer")
    picture(os.path.join(pictures, "1-disclaimer.png"))
    program.find("push button", "Accept").click()
    program.wait_for_window("Vellumcast - Table1")
    program.wait_for_label("Found Records: 0")
    picture(os.path.join(pictures, "2-empty-catalogue.png"))

    scan_folder(program, sounds, pictures)
    print(program.wait_for_label("Found Records: [1-9][0-9]*"))
    picture(os.path.join(pictures, "4-catalogue.png"))

    program.find("text", "Search Keywords|").click()
    type_text("bell")
    press("Return")
    print("Looked up \"bell\":", program.wait_for_label("Found Records: [1-9]"))
    picture(os.path.join(pictures, "5-lookup.png"))
    press("ctrl+a", "Delete", "Return")
    program.wait_for_label("Found Records: [1-9][0-9]+")

    # Looked for each time: new rows give the table new accessible objects.
    program.find("table column header", "Duration.*").click()
    wait_for("the shortest sound on top", lambda: program.cell_texts("Duration")[0] <= "00:01")
    program.find("table column header", "Duration.*").click()
    wait_for("the longest sound on top", lambda: program.cell_texts("Duration")[0] > "01:00")
    picture(os.path.join(pictures, "6-sorted-by-duration.png"))


# Entries that open a dialog: menu, entry, title of the window, picture.
DIALOGS = [
    ("Edit", "Search and Replace…", "Search and Replace", "9-search-and-replace.png"),
    ("Edit", "Set Table Names…", "Meta Data Table Names", "10-table-names.png"),
    ("Edit", "Set Library Evaluation Rules…", "Library Evaluation Rules", "11-library-rules.png"),
    ("File", "Export Records…", "Export Meta Data", "12-export.png"),
    ("File", "Print Report…", "Print Report", "13-print.png"),
    ("Help", "About Vellumcast", "About Vellumcast", "14-about.png"),
]


def work_with_a_record(program, pictures):
    program.find("table cell", "Bell buoy in fog, far").click()
    press("plus", "plus", "plus")
    wait_for("the rating of the record", lambda: "4.0" in program.cell_texts("Rating"))
    program.find("push button", "Add to Playlist").click()
    program.find("radio button|toggle button|check box|push button", "Playlist").click()
    program.wait_for_label("Found Records: 1")
    program.find("table cell", "Bell buoy in fog, far").click()
    program.find("push button", "Play").click()
    picture(os.path.join(pictures, "7-playlist.png"))
    program.find("push button", "Show Info…").click()
    program.wait_for_window("Media Meta Data")
    picture(os.path.join(pictures, "8-record.png"))
    press("Escape")
    program.wait_without_window("Media Meta Data")
    program.find("radio button|toggle button|check box|push button", "All").click()
    program.wait_for_label("Found Records: [1-9][0-9]+")


def open_the_dialogs(program, pictures):
    for menu, entry, title, name in DIALOGS:
        program.find("menu item", menu).click()
        program.find("menu item", entry).click()
        program.wait_for_window(title)
        picture(os.path.join(pictures, name))
        press("Escape")
        program.wait_without_window(title)


def make_the_window_small(program, pictures):
    def edge_of_the_last_button():
        left, _, width, _ = program.find("push button", "Remove from Playlist").extents()
        return left + width

    window, edge = program.wait_for_window("Vellumcast - Table1"), edge_of_the_last_button()
    xdotool("windowsize", "--sync", window, round(1000 * SCALE), round(400 * SCALE))
    wait_for("the panel of the smaller window", lambda: edge_of_the_last_button() < edge)
    picture(os.path.join(pictures, "15-small-window.png"))


def main():
    executable, pictures = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    sounds = os.path.join(os.environ["TMPDIR"], "Sounds")
    make_sounds(sounds)
    program = Program(executable).start()
    try:
        play(program, sounds, pictures)
        work_with_a_record(program, pictures)
        open_the_dialogs(program, pictures)
        make_the_window_small(program, pictures)
        press("ctrl+q")
        code = program.wait_for_end()
    finally:
        program.kill()
    print("The demonstration is done; its pictures are in", pictures)
    return code


if __name__ == "__main__":
    sys.exit(main())
