#!/usr/bin/env python3
"""Makes the picture of nuvctl at work, from a real run in the lab of simulated printers.
Usage: lab.sh picture.py SVG"""

import fcntl
import html
import os
import pty
import re
import struct
import subprocess
import sys
import tempfile
import termios

COLUMNS = 96


def screen(text):
    """The lines that a terminal shows of what was written to it."""
    lines, row, column = [""], 0, 0
    for piece in re.findall(r"\x1b\[\d*[A-Z]|.|\n", text):
        order = re.match(r"\x1b\[(\d*)([A-Z])", piece)
        if piece == "\n":
            row, column = row + 1, 0
            lines += [""] * (row + 1 - len(lines))
        elif piece == "\r":
            column = 0
        elif order and order.group(2) == "A":
            row -= int(order.group(1) or 1)
        elif order:
            lines[row] = lines[row][:column]
            if order.group(2) == "J":
                del lines[row + 1:]
        else:
            lines[row] = lines[row][:column].ljust(column) + piece + lines[row][column + 1:]
            column += 1
    return [line.rstrip() for line in lines]


def run(words, until=None):
    """What the command shows, at the end or when that is seen first."""
    child, terminal = pty.fork()
    if child == 0:
        os.execvp(words[0], words)
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 40, COLUMNS, 0, 0))
    told, seen = "", None
    while True:
        try:
            piece = os.read(terminal, 65536).decode()
        except OSError:
            break
        told += piece
        if until and not seen and re.search(until, told):
            seen = screen(told)
    os.waitpid(child, 0)
    lines = seen or screen(told)
    while lines and not lines[-1]:
        del lines[-1]
    return ["$ " + " ".join(words), *lines, ""]


def svg(lines):
    shown = ""
    for i, line in enumerate(lines):
        typed = " class='typed'" if line.startswith("$") else ""
        shown += f"<tspan x='14' y='{30 + 18 * i}'{typed}>{html.escape(line)}</tspan>\n"
    width, height = 28 + 8 * COLUMNS, 26 + 18 * len(lines)
    return (f"<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {width} {height}' width='{width}'>\n"
            "<style>text {font: 13px monospace; fill: #d6dde4; white-space: pre} .typed {fill: #8fd18f}</style>\n"
            f"<rect width='{width}' height='{height}' rx='8' fill='#1d232a'/>\n"
            f"<text xml:space='preserve'>\n{shown}</text>\n</svg>\n")


def main():
    picture = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.environ.update(XDG_CONFIG_HOME=folder, XDG_CACHE_HOME=folder)
        lines = "".join(f"G1 X{i} Y{i % 7}\n" for i in range(60))
        subprocess.run(["nuvfile", "create", "--machine-id", "3DPSNKG53WTW00001", "--argument", "layers=24", "-",
                        "crown.nuv"], input=lines, text=True, check=True)
        shown = run(["nuvctl", "list"])
        shown += run(["nuvctl", "send", "crown.nuv", "--serial", "LAB0001"], " 7[0-9] ?%")
        shown += run(["nuvctl", "status", "--all"])[:-1]
    with open(picture, "w", encoding="utf-8") as made:
        made.write(svg(shown))


main()
