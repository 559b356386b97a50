"""Load: as many pieces as there can be, a join beside many folders, a passphrase, and a file of
64 GiB; all in little memory."""

import os
import random
import subprocess

import jobs
import world
from jobs import Case

PIECES = 32767
MEMORY = 16 << 10  # KiB
PASSPHRASE_MEMORY = 280 << 10
GIB = 1 << 30


def run(setting):
    rng = random.Random(setting.seed)
    folders = 5_000 if setting.short else 65_000
    return [
        attempt(setting, f"{PIECES} pieces", most_pieces, rng),
        attempt(setting, f"a join beside {folders} folders", many_folders, rng, folders),
        attempt(setting, "a passphrase", encrypted_file, memory=PASSPHRASE_MEMORY),
        attempt(setting, "a file of 64 GiB", sparse_file),
    ]


def attempt(setting, name, suite, *arguments, memory=MEMORY):
    case = Case(name, 1)
    home = setting.folder / "home"
    jobs.prepare(home, {})

    def sly(*arguments):
        """Runs sly, which must end well and take little memory; measured from outside, since a
        child of this program begins with the memory of this program."""
        command = ["/usr/bin/time", "-q", "-f", "%M", "-o", home / "peak", setting.sly]
        ended = subprocess.run([*command, *map(str, arguments)], cwd=home / "files",
                               env=world.environment(str(home)), stdin=subprocess.DEVNULL,
                               capture_output=True)
        peak = int((home / "peak").read_text().split()[-1])
        (home / "peak").unlink()
        if ended.returncode != 0 or peak > memory:
            case.losses.append(f"{arguments} ended with {ended.returncode} and took {peak} KiB of"
                               f" memory: {ended.stderr[-500:]}")

    case.losses += suite(home, sly, *arguments)
    return case


def most_pieces(home, sly, rng):
    whole = {"files/w": rng.randbytes(3 * PIECES - 1)}
    pieces = jobs.cut(whole["files/w"], 3, "files/w")
    jobs.prepare(home, whole)
    sly("split", "w", "--size", 3)
    yield from jobs.differing(jobs.look(home), [jobs.only(whole | pieces)])
    (home / "files/w").unlink()
    sly("join", "w.777.sly")
    yield from jobs.differing(jobs.look(home), [jobs.only(whole | pieces)])


def many_folders(home, sly, rng, count):
    """A join looks for its pieces in all folders below."""
    pieces = jobs.cut(rng.randbytes(100_000), 10_000, "files/w")
    jobs.prepare(home, pieces)
    for number in range(count):
        os.makedirs(home / "files" / f"{number % 100}/{number}")
    sly("join", "w.3.sly")
    if (home / "files/w").read_bytes() != b"".join(pieces.values()):
        yield "wrong: w"


def encrypted_file(home, sly):
    start = {"files/m": b"main", "files/h": b"hidden", "files/password": b"phrase\n"}
    jobs.prepare(home, start)
    passphrase = ("--passphrase-file", "password")
    sly("hide", "m", "h", "--encrypt", *passphrase)
    sly("recover", "Hidden File m", *passphrase)
    found = jobs.look(home)
    made = {"files/Original h": b"hidden", "files/Hidden File m": found.get("files/Hidden File m")}
    yield from jobs.differing(found, [jobs.only(start | made)])


def sparse_file(home, sly):
    """64 GiB that hold a few bytes here and there, and holes that stay holes."""
    files, size = home / "files", 64 * GIB
    parts = {0: b"begin", 5 * GIB - 3: b"across", 31 * GIB + 12345: b"middle", size - 3: b"end"}
    with (files / "w").open("wb") as file:
        for at, data in parts.items():
            os.pwrite(file.fileno(), data, at)
    if (files / "w").stat().st_blocks * 512 > GIB:
        print("The file system has no holes: no file of 64 GiB is tried.")
        return
    sly("split", "w", "--size", "4GiB")
    (files / "w").unlink()
    sly("join", "w.16.sly")
    (files / "password").write_text("geheim\n")
    (files / "small").write_text("hidden")
    password = ("--password-file", "password")
    sly("hide", "w", "small", *password)
    sly("recover", "Hidden File w", *password)
    sly("recover", "Hidden File w", "--main", *password)
    for name in ("w", "Original Hidden File w"):
        found = (files / name).stat()
        with (files / name).open("rb") as file:
            right = all(os.pread(file.fileno(), len(data), at) == data for at, data in parts.items())
        if not right or found.st_size != size or found.st_blocks * 512 > GIB:
            yield f"wrong: {name}"
    if (files / "Original small").read_text() != "hidden":
        yield "wrong: Original small"
