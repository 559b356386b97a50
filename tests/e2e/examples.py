#!/usr/bin/env python3
"""Runs the examples of the README and the manual page, its lines with "$", in order, each document's in
an empty folder with the files that they need, and a person at the terminal who agrees. Fails if one
fails, or if what it prints is not what the README shows.

usage: examples.py SLY"""
import os
import pathlib
import pty
import re
import shutil
import subprocess
import sys
import tempfile

TOP = pathlib.Path(__file__).resolve().parents[2]
ANSWERS = [(rb"\[y/n\] $", b"y\n"), (rb"[Pp]assphrase[^\n]*: ?$", b"correct horse battery\n"),
           (rb"[Pp]assword[^\n]*: ?$", b"secret\n")]


def example(command, folder, env):
    """Runs a command in a terminal. Returns its status and the lines of its output."""
    pid, terminal = pty.fork()
    if pid == 0:
        os.chdir(folder)
        os.execvpe("bash", ["bash", "-c", command], env)
    shown, answered = b"", 0
    while True:
        try:
            shown += os.read(terminal, 65536)
        except OSError:  # The terminal's other end is closed.
            break
        if fits := [answer for prompt, answer in ANSWERS if re.search(prompt, shown[answered:])]:
            os.write(terminal, fits[0])
            answered = len(shown)
    status = os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])
    os.close(terminal)
    text = shown.decode().replace("\r\n", "\n")
    text = re.sub(r"[^\n]*(\r|\x1b\[K)", "", text)  # The progress line is cleared.
    return status, text.splitlines()


def play(name, text, prepare, sly, exact):
    """Runs the examples of a text. Returns the number of failures."""
    wrong = 0
    with tempfile.TemporaryDirectory(prefix="slyver-examples-") as home:
        folder = pathlib.Path(home, "ann")
        (folder / "bin").mkdir(parents=True)
        (folder / "bin" / "sly").symlink_to(sly)
        env = os.environ | {"PATH": f"{folder}/bin:{os.environ['PATH']}", "LC_ALL": "C.UTF-8",
                            "COLUMNS": "120", "HOME": str(folder)}
        prepare(folder, env)
        commands = re.split(r"^\$ ", text, flags=re.MULTILINE)[1:]
        assert commands, f"{name} has no examples"
        for command, *expected in (part.splitlines() for part in commands):
            program = command.split()[0]
            if not shutil.which(program, path=env["PATH"]) and "=" not in program:
                print(f"{name}: not run, {program} is not installed: {command}")
                continue
            print(f"{name}: $ {command}", flush=True)
            status, shown = example(command, folder, env)
            shown = [line.replace(str(folder), "/home/ann") for line in shown]
            if status or (exact and shown != expected):
                wrong += 1
                print(f"status {status}, prints:", *shown, sep="\n  ", flush=True)
    return wrong


def readme_files(folder, _):
    (folder / "holiday.iso").touch()
    os.truncate(folder / "holiday.iso", 4_500_000_000)  # A hole takes no room.


def manual_files(folder, env):
    for name, size in {"holiday.mp4": 26_000_000, "beach.jpg": 300_000, "boat.jpg": 3000,
                       "letter.txt": 2000, "carrier": 5000}.items():
        (folder / name).write_bytes(os.urandom(size))
    (folder / "key").write_text("secret\n")
    # A carrier of three files.
    for i in range(3):
        subprocess.run(["sly", "hide", "--yes", "--quiet", "--password-file", "key", "carrier", "letter.txt"],
                       cwd=folder, env=env, check=True, stdout=subprocess.DEVNULL)
        (folder / "Hidden File carrier").rename(folder / "carrier")
    (folder / "carrier").rename(folder / "carrier.jpg")


def main():
    sly = pathlib.Path(sys.argv[1]).resolve()
    readme = re.search(r"```\n(\$.*?)```", (TOP / "README.md").read_text(), re.DOTALL)[1]
    manual = (TOP / "docs/man/sly.1.scd.in").read_text()
    manual = manual[manual.index("# EXAMPLES"):manual.index("# NOTES")]
    manual = re.sub(r"\+\+$|^\t", "", manual, flags=re.MULTILINE).replace("\\*", "*")
    wrong = play("README.md", readme, readme_files, sly, exact=True)
    wrong += play("the manual page", manual, manual_files, sly, exact=False)
    print("The examples work." if wrong == 0 else f"{wrong} examples fail.")
    return int(wrong != 0)


sys.exit(main())
