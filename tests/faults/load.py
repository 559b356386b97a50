"""Load: as many pieces as there can be, a folder full of other files, a file of 64 GiB, and a
thousand rounds of hiding and recovering."""

import errno
import os
import pathlib
import random
import shutil
import subprocess

from jobs import environment
from many import Many
from suite import Case

PIECES = 32767
MEMORY = 16 << 10  # KiB
GIB = 1 << 30


def run(setting):
    bench = Bench(setting)
    return [
        most_pieces(bench),
        full_folder(bench, 20_000 if setting.short else 100_000),
        sparse_file(bench),
        rounds(bench, setting, 150 if setting.short else 1000),
        rounds_in_one_process(bench, setting, 100 if setting.short else 1000),
    ]


class Bench:
    def __init__(self, setting):
        self.sly = setting.sly
        # Names are what counts here, and memory is faster at them than a disk.
        memory = pathlib.Path("/dev/shm")
        usable = os.access(memory, os.W_OK) and shutil.disk_usage(memory).free > GIB
        self.home = (memory if usable else setting.folder) / f"slyver-load-{os.getpid()}"
        self.files = self.home / "files"
        self.random = random.Random(setting.seed)

    def begin(self):
        self.end()
        (self.home / "run").mkdir(parents=True, mode=0o700)
        self.files.mkdir()

    def end(self):
        shutil.rmtree(self.home, ignore_errors=True)

    def run(self, case, *arguments):
        """Runs sly, which must end well and take little memory."""
        peak = self.home / "peak"
        command = [self.sly, *map(str, arguments)]
        # Measured from outside: a child of this program begins with the memory of this program.
        ended = subprocess.run(
            ["/usr/bin/time", "-q", "-f", "%M", "-o", peak, *command],
            cwd=self.files,
            env=environment(self.home),
            stdin=subprocess.DEVNULL,
            capture_output=True,
        )
        memory = int(peak.read_text().split()[-1])
        peak.unlink()
        if ended.returncode != 0:
            case.losses.append(f"{arguments} ended with {ended.returncode}: {ended.stderr[-500:]}")
        if memory > MEMORY:
            case.losses.append(f"{arguments} took {memory} KiB of memory")

    def left(self, *expected):
        """What lies in the home, names only, besides what is expected."""
        found = {
            os.path.relpath(os.path.join(folder, name), self.home)
            for folder, folders, names in os.walk(self.home)
            for name in (*folders, *names)
        }
        known = {"run", "run/slyver", "files", *(f"files/{name}" for name in expected)}
        return sorted(found - known)


def most_pieces(bench):
    case = Case(f"{PIECES} pieces", 1)
    bench.begin()
    data = bench.random.randbytes(3 * PIECES - 1)
    (bench.files / "w").write_bytes(data)
    bench.run(case, "split", "w", "--size", 3)
    pieces = [f"w.{i + 1}.sly" for i in range(PIECES)]
    wrong = [
        name for i, name in enumerate(pieces)
        if (bench.files / name).read_bytes() != data[3 * i : 3 * i + 3]
    ]
    case.losses += [f"wrong: {name}" for name in wrong] + bench.left("w", *pieces)
    (bench.files / "w").unlink()
    bench.run(case, "join", "w.777.sly")
    if (bench.files / "w").read_bytes() != data:
        case.losses.append("joined to other bytes")
    case.losses += bench.left("w", *pieces)
    bench.end()
    return case


def full_folder(bench, count):
    case = Case(f"a folder with {count} other files", 1)
    bench.begin()
    others = [f"other.{i}.sly" if i % 2 else f"o{i}" for i in range(count)]
    for name in others:
        os.close(os.open(bench.files / name, os.O_CREAT | os.O_WRONLY))
    data = bench.random.randbytes(100_000)
    (bench.files / "w").write_bytes(data)
    (bench.files / "password").write_text("geheim\n")
    password = ("--password-file", "password")
    pieces = [f"w.{i + 1}.sly" for i in range(10)]
    bench.run(case, "split", "w", "--size", 10_000)
    (bench.files / "w").rename(bench.files / "original")
    bench.run(case, "join", "w.3.sly")
    bench.run(case, "hide", "w", "original", *password)
    bench.run(case, "recover", "Hidden File w", *password)
    made = ("w", "original", "Original original")
    for name in made:
        if (bench.files / name).read_bytes() != data:
            case.losses.append(f"wrong: {name}")
    case.losses += bench.left(*others, *pieces, *made, "password", "Hidden File w")
    bench.end()
    return case


def sparse_file(bench):
    """64 GiB that hold a few bytes here and there; a copy of the rest would not fit in memory."""
    case = Case("a file of 64 GiB", 1)
    bench.begin()
    size = 64 * GIB
    parts = {0: b"begin", 5 * GIB - 3: b"across", 31 * GIB + 12345: b"middle", size - 3: b"end"}
    with (bench.files / "w").open("wb") as file:
        file.truncate(size)
        for offset, data in parts.items():
            file.seek(offset)
            file.write(data)
    if (bench.files / "w").stat().st_blocks * 512 > GIB:
        print("The file system has no holes: no file of 64 GiB is tried.")
        case.tried = 0
        bench.end()
        return case
    pieces = [f"w.{i + 1}.sly" for i in range(16)]
    bench.run(case, "split", "w", "--size", "4GiB")
    (bench.files / "w").rename(bench.files / "original")
    bench.run(case, "join", "w.16.sly")
    (bench.files / "password").write_text("geheim\n")
    (bench.files / "small").write_text("hidden")
    bench.run(case, "hide", "w", "small", "--password-file", "password")
    carrier = "Hidden File w"
    bench.run(case, "recover", carrier, "--password-file", "password")
    bench.run(case, "recover", carrier, "--main", "--password-file", "password")
    for name in ("original", "w", f"Original {carrier}"):
        found = data_in(bench.files / name)
        if (bench.files / name).stat().st_size != size or found != data_in(bench.files / "original"):
            case.losses.append(f"wrong: {name}")
    for offset, data in parts.items():
        with (bench.files / "w").open("rb") as file:
            file.seek(offset)
            if file.read(len(data)) != data:
                case.losses.append(f"wrong at {offset}")
    if (bench.files / "Original small").read_text() != "hidden":
        case.losses.append("wrong: Original small")
    case.losses += bench.left("original", "w", *pieces, "password", "small", carrier,
                              "Original small", f"Original {carrier}")
    bench.end()
    return case


def data_in(path):
    """The bytes of a file that are no zeros, with where they stand, in parts of 4 KiB."""
    found = {}
    with path.open("rb", buffering=0) as file:
        size = os.fstat(file.fileno()).st_size
        at = 0
        while True:
            try:
                at = os.lseek(file.fileno(), at, os.SEEK_DATA)
            except OSError as error:
                assert error.errno == errno.ENXIO
                return found
            at -= at % 4096
            end = os.lseek(file.fileno(), at, os.SEEK_HOLE)
            for offset in range(at, min(end, size), 4096):
                part = os.pread(file.fileno(), 4096, offset)
                if part.strip(b"\0"):
                    found[offset] = part
            at = end


def rounds(bench, setting, count):
    """One program after the other hides, recovers and is asked to list; nothing temporary is left."""
    case = Case("rounds of hiding and recovering")
    bench.begin()
    begin_rounds(bench)
    for i in range(count):
        case.tried += 1
        for arguments in round_arguments(i):
            bench.run(case, *arguments)
        end_round(bench, case, i)
        if case.losses:
            break
    bench.end()
    return case


def rounds_in_one_process(bench, setting, count):
    """The same in one process, in which nothing may pile up: neither descriptors nor memory."""
    case = Case("the same in one process")
    bench.begin()
    begin_rounds(bench)
    # What was freed is kept back for a while; little of it, or it would hide what piles up.
    many = Many(setting, bench.home, "quarantine_size_mb=1")
    used = []
    for i in range(count):
        case.tried += 1
        for arguments in round_arguments(i):
            outcome = many.run(bench.files, *arguments)
            if outcome.status != 0:
                case.losses.append(f"{arguments} ended with {outcome.status}: {outcome.err[:500]}")
        end_round(bench, case, i)
        if case.losses:
            break
        used.append(in_use(many.process.pid))
    status, _, report = many.close()
    if status != 0:
        case.losses.append(f"the process ended with {status}: {report[:1000]}")
    elif used:
        (descriptors, memory), (_, early) = used[-1], used[len(used) // 2]
        if descriptors != used[0][0]:
            case.losses.append(f"{used[0][0]} descriptors have become {descriptors}")
        if memory > 1.1 * early:
            case.losses.append(f"{early} KiB of memory have become {memory}")
    bench.end()
    return case


def in_use(pid):
    """The descriptors of a process and its memory in KiB."""
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    memory = next(line for line in status.splitlines() if line.startswith("VmRSS:"))
    return len(os.listdir(f"/proc/{pid}/fd")), int(memory.split()[1])


def begin_rounds(bench):
    (bench.files / "password").write_text("geheim\n")
    (bench.files / "m.png").write_bytes(bench.random.randbytes(20_000))
    (bench.files / "h.zip").write_bytes(bench.random.randbytes(9_000))


def round_arguments(i):
    password = ("--password-file", "password")
    return (
        ("hide", "m.png", "h.zip", *password),
        ("hide", "Hidden File m.png", "m.png", "--yes", *password),
        ("list", "Hidden File Hidden File m.png", *password),
        ("recover", "Hidden File Hidden File m.png", "--file", i % 2, *password),
        ("recover", "Hidden File Hidden File m.png", "--main", *password),
    )


def end_round(bench, case, i):
    """Checks what a round has made, and removes it."""
    carriers = ("Hidden File m.png", "Hidden File Hidden File m.png")
    results = {
        ("Original h.zip", "Original m.png")[i % 2]: ("h.zip", "m.png")[i % 2],
        f"Original {carriers[1]}": "m.png",
    }
    for name, source in results.items():
        path = bench.files / name
        if not path.exists() or path.read_bytes() != (bench.files / source).read_bytes():
            case.losses.append(f"round {i}: wrong: {name}")
    case.losses += bench.left("password", "m.png", "h.zip", *carriers, *results)
    for name in (*carriers, *results):
        (bench.files / name).unlink(missing_ok=True)
