"""Load: as many pieces as there can be, a join beside many folders, a passphrase, and a file of
64 GiB; all in little memory."""

import os

import oracle
import world
from jobs import Case

MEMORY = 16 << 10  # KiB
GIB = 1 << 30


def run(setting):
    folders = 5_000 if setting.short else 65_000
    whole = lambda length: ("file", "w", ("A", 0, length), 0o644)
    split = lambda size: ("sly", "split", "--size", str(size), "--", "w")
    join = ("sly", "join", "--yes", "--", "w.3.sly")
    passphrase = "--passphrase-file", "password", "--"
    # What is done before the last job is judged too.
    cases = [
        attempt(setting, "32767 pieces", [whole(3 * 32767 - 1), split(3), join]),
        attempt(setting, f"a join beside {folders} folders", [
            *[("folder", f"{i % 100}/{i}") for i in range(folders)], whole(100_000), split(10_000), join]),
        attempt(setting, "a passphrase", [
            ("file", "m", b"main", 0o644), ("file", "h", b"hidden", 0o644),
            ("file", "password", b"phrase\n", 0o600), ("sly", "hide", "--encrypt", *passphrase, "m", "h"),
            ("sly", "recover", *passphrase, "Hidden File m")], 280 << 10)]
    return [*cases, attempt(setting, "a file of 64 GiB", sparse_file)]


def attempt(setting, name, steps, memory=MEMORY):
    """Does the steps, or calls a function, with a program that also writes down its memory; measured
    from outside, since a child of this program begins with the memory of this program."""
    home, sly, peaks = (setting.folder / each for each in ("home", "sly", "peaks"))
    peaks.write_text("")
    sly.write_text(f'#!/bin/sh\nexec /usr/bin/time -q -a -f %M -o "{peaks}" "{setting.sly}" "$@"\n')
    sly.chmod(0o755)
    case = Case(name, 1)
    if callable(steps):
        case.losses += steps(str(sly), str(home))
    else:
        _, failure = oracle.play(str(sly), str(home), steps)
        case.losses += [f"{failure[0]}: {failure[1][:500]}"] if failure else []
    case.losses += [f"took {peak} KiB of memory" for peak in peaks.read_text().split()
                    if int(peak) > memory]
    return case


def sparse_file(sly, home):
    """64 GiB that hold a few bytes here and there, and holes that stay holes."""
    size = 64 * GIB
    parts = {0: b"begin", 5 * GIB - 3: b"across", 31 * GIB + 12345: b"middle", size - 3: b"end"}
    password = "--password-file", "password", "--"
    with world.World(sly, home) as place:
        place.do(("file", "password", b"geheim\n", 0o600))
        place.do(("file", "small", b"hidden", 0o644))
        with open(place.at("w"), "wb") as file:
            for at, data in parts.items():
                os.pwrite(file.fileno(), data, at)
        if os.stat(place.at("w")).st_blocks * 512 > GIB:
            print("The file system has no holes: no file of 64 GiB is tried.")
            return
        marked = "Hidden File w"
        for arguments in (("split", "--size", "4GiB", "--", "w"), ("join", "--yes", "--", "w.16.sly"),
                          ("hide", *password, "w", "small"), ("recover", *password, marked),
                          ("recover", "--main", *password, marked)):
            outcome = place.do(("sly", *arguments))
            if outcome.status != 0:
                yield f"{arguments} ended with {outcome}"
        for name in ("w", "Original " + marked):
            found = os.stat(place.at(name))
            with open(place.at(name), "rb") as file:
                right = all(os.pread(file.fileno(), len(data), at) == data for at, data in parts.items())
            if not right or found.st_size != size or found.st_blocks * 512 > GIB:
                yield f"wrong: {name}"
        with open(place.at("Original small"), "rb") as file:
            if file.read() != b"hidden":
                yield "wrong: Original small"
