"""The jobs that the suites run through the real sly, and the one verdict on what is there
afterwards, however a job has ended. What a job must make is known by the model's oracle.

A job works in a home of its own: files/ is its working folder, run/ holds the private folder,
config/ the settings. Paths are relative to that home. What is in it is a dictionary: for every
path the bytes of a file, or else what it is. A `way` gives every path the values that it may have;
ABSENT may be one of them, and is the only one of other paths."""

import dataclasses
import functools
import hashlib
import os
import pathlib
import random
import shutil
import signal

import oracle
import world
from carriers import carrier_of

PASSWORD = b"geheim"
SETTINGS = "config/slyver/registry.ini"
KEPT = b'[HKEY_LOCAL_MACHINE\\Software\\Orm Valis\\Slyver]\r\nRAM="off"\r\n' \
    b'[HKEY_LOCAL_MACHINE\\Software\\Orm Valis\\FC]\r\n'
PRIVATE = "run/slyver"  # The private folder; made when needed, and it may stay, empty.
STOPPED = -signal.SIGINT  # The status of a job that Ctrl-C has stopped.
ABSENT = None


@dataclasses.dataclass(frozen=True)
class Setting:
    """What a suite is given."""

    sly: str  # As released, with the preload library beside it.
    folder: pathlib.Path  # Empty, for the suite's files; removed after it.
    short: bool  # Only the part that fits into the short run.
    seed: int  # All random choices come from it.


@dataclasses.dataclass
class Case:
    """What a suite returns."""

    name: str
    tried: int = 0
    losses: list = dataclasses.field(default_factory=list)  # A text for each.
    group: str = ""  # Cases of one group share a line of the table; without one they have their own.


@dataclasses.dataclass(frozen=True)
class Job:
    name: str
    arguments: tuple  # What is behind "sly".
    start: dict  # What is there at first.
    disk: str = ""  # What the file system does by itself, as the preload library has it.

    @functools.cached_property
    def model(self):
        """The job as the model has it."""
        state = {}
        for path, data in self.start.items():
            if isinstance(data, bytes):
                data = world.File(data, mode(path), os.geteuid(), os.getegid(), b"")
            path = pathlib.PurePath(os.path.relpath(path, "files"))
            state |= {str(folder): "folder" for folder in path.parents[:-1]} | {str(path): data}
        return oracle.Job(self.arguments, state, world.World("", "{home}"))

    @functools.cached_property
    def expected(self):
        return self.model.expected()

    @functools.cached_property
    def results(self):
        changes = self.expected.changes.items()
        return {"files/" + path: data for path, data in changes if data is not None}

    @functools.cached_property
    def replaced(self):
        """What the results replace."""
        changes = {} if self.deletes else self.expected.changes
        return {path: data for path, data in self.start.items()
                if path.removeprefix("files/") in changes}

    @functools.cached_property
    def sources(self):
        """They must never change."""
        return {path: data for path, data in self.start.items()
                if path.startswith("files/") and path not in self.replaced}

    @property
    def deletes(self):
        """The sources are deleted when the results are there."""
        return "--delete" in self.arguments

    def ways(self, status):
        """What may be there after this exit status; a negative one is a signal's."""
        results, settings = self.results, {}
        if SETTINGS in self.start:
            settings = {SETTINGS: (self.start[SETTINGS], KEPT)}
        start = only(dict.fromkeys(results) | self.sources | self.replaced) | settings
        final = only(self.sources | dict.fromkeys(self.replaced) | results) | settings
        loose = {path: (data, ABSENT) for path, data in self.sources.items() if self.deletes}
        if status == 0:
            return [final | dict.fromkeys(loose, (ABSENT,))]
        # A set of pieces that was to be replaced is kept whole.
        replaces_set = any(path.endswith(".sly") for path in self.replaced)
        if status == STOPPED or (status == 1 and replaces_set):
            return [start]
        # A part of the results may stay; but where piece 1 is, all are.
        part = {}
        for path in results | self.replaced:
            part[path] = self.replaced.get(path), results.get(path)
            if path.endswith(".sly"):
                part[path] = (ABSENT,) if path.endswith(".1.sly") else (ABSENT, *part[path])
        # A list of the pieces goes before them and comes after them; piece 1 goes before the others.
        gone = lambda paths, *endings: {path: (ABSENT,) for path in paths if path.endswith(endings)}
        no_list = gone(part, ".sha256")
        ways = [start, start | part | no_list, final, final | loose | gone(loose, ".sha256", ".1.sly")]
        ways += [way | no_list for way in (start, final) if no_list]
        return ways + [final | gone(loose, ".sha256")]


def only(contents):
    return {path: (value,) for path, value in contents.items()}


def cut(data, size, name):
    """The pieces of a file."""
    parts = range(0, len(data), size)
    return {f"{name}.{i + 1}.sly": data[at : at + size] for i, at in enumerate(parts)}


def listed(pieces):
    """The pieces, and their checksum file."""
    lines = [(os.path.basename(path), data) for path, data in pieces.items()]
    path = next(iter(pieces)).removesuffix(".1.sly") + ".sha256"
    return pieces | {path: world.list_text("plain", lines)}


def make_jobs(unit=1000, size=None, seed=1):
    """The jobs, with sources of some 2 to 7 units (bytes) and pieces of `size` bytes (a unit)."""
    rng = random.Random(seed)
    size = size or unit
    data, main, first, second, earlier = (
        rng.randbytes(int(n * unit)) for n in (3.5, 7, 3, 2, 4))
    # One piece is in a subfolder, where a join looks too; without a list it takes --force.
    pieces = {path.replace("whole.bin.2", "more/whole.bin.2"): piece
              for path, piece in cut(data, size, "whole.bin").items()}
    whole, old = {"whole.bin": data}, cut(earlier, size * 4 // 5, "old/whole.bin")
    carrier = lambda *hidden: {
        "carrier.jpg": carrier_of(b"main.jpg", main, hidden, PASSWORD), "password": PASSWORD + b"\n"}
    one, two = (b"first.zip", first), (b"second.zip", second)
    encrypted = {"password": b"password\n",
                 "carrier.jpg": carrier_of(b"main.jpg", main, [(b"a.age", world.AGE_FILE)], b"slyver")}
    split, over = f"split --size {size}", "--output old --yes"
    password = "--password-file password"
    table = {
        "split": (f"{split} -- whole.bin", whole),
        "split into a new folder": (f"{split} --output new/pieces --yes -- whole.bin", whole),
        "split over pieces": (f"{split} {over} -- whole.bin", whole | old),
        "split with a list": (f"{split} --checksum -- whole.bin", whole),
        "split with a list over another": (
            f"{split} --checksum {over} -- whole.bin", whole | listed(old)),
        "join and delete": ("join --delete -- whole.bin.1.sly", listed(pieces)),
        "join": ("join --force -- whole.bin.1.sly", pieces),
        "join over a file": (
            "join --force -- whole.bin.1.sly", pieces | {"whole.bin": earlier[:unit]}),
        "hide": (f"hide {password} -- main.jpg first.zip",
                 {"main.jpg": main, "first.zip": first, "password": PASSWORD + b"\n"}),
        "hide another": (f"hide {password} --yes -- carrier.jpg second.zip",
                         carrier(one) | {"second.zip": second}),
        "recover a hidden file": (f"recover --file 1 {password} -- carrier.jpg", carrier(one, two)),
        "recover the main file": (f"recover --main {password} -- carrier.jpg", carrier(one, two)),
        "recover an encrypted file": (
            "recover --passphrase-file password -- carrier.jpg", encrypted),
        "list": (f"list {password} -- carrier.jpg", carrier(one, two)),
    }
    on = {"split": "network", "split over pieces": "shares", "join over a file": "shares",
          "hide": "network"}
    found = []
    for name, (arguments, contents) in table.items():
        start = {"files/" + path: data for path, data in contents.items()}
        if arguments.startswith(("split", "join")):
            start[SETTINGS] = KEPT + b'filepath="x"\r\n'
        found.append(Job(name, tuple(arguments.split()), start))
    return found + [dataclasses.replace(job, name=f"{job.name}, {on[job.name]}", disk=on[job.name])
                    for job in found if job.name in on]


def make_big_jobs():
    """The same with sources so big that two threads copy: from 1 MiB in all."""
    # Of a split into small pieces one thread copies and the other gives names.
    small = next(job for job in make_jobs(320_000, 20_000) if job.name == "split")
    big = [job for job in make_jobs(320_000) if "encrypted" not in job.name]
    return [dataclasses.replace(job, name=job.name + ", two threads") for job in big] + [
        dataclasses.replace(small, name="split into small pieces, two threads")]


def mode(path):
    """The rights that a file has at first."""
    private = "first.zip", "/old/", ".3.sly"
    return 0o600 if any(part in f"/{path}" for part in private) else 0o640


def prepare(home, contents):
    """Makes this all that is in the home."""
    shutil.rmtree(home, ignore_errors=True)
    (home / "files").mkdir(parents=True, exist_ok=True)
    (home / "run").mkdir(mode=0o700, exist_ok=True)
    for path, data in contents.items():
        (home / path).parent.mkdir(parents=True, exist_ok=True)
        (home / path).write_bytes(data)
        (home / path).chmod(mode(path))


def run(sly, arguments, home, variables={}, **options):
    return world.finish(world.start(sly, arguments, str(home), variables, **options))


def look(home):
    """What is in the home."""
    return {path: entry.data if isinstance(entry, world.File) else entry
            for path, entry in world.look(home).items()}


def differing(found, ways, spared=()):
    """The paths at which `found` differs from the nearest way. The folders of a way's paths may be
    there, and so may be what is `spared`."""

    def wrong(way):
        folders = {str(folder) for path in (*way, "files/x", PRIVATE + "/x", PRIVATE + ".1/x", SETTINGS)
                   for folder in pathlib.PurePath(path).parents}
        return sorted(
            path for path in found.keys() | way.keys()
            if found.get(path, ABSENT) not in way.get(path, (ABSENT,)) and path not in spared
            and not (path in folders and found.get(path) == "folder"))

    return min(map(wrong, ways), key=len)


def wrong_ending(outcome, expected=(0, 1)):
    """What is wrong with how a program has ended: anything but success and a reason is a crash or a
    hang."""
    if outcome.status not in expected:
        return [f"ended with {outcome.status}: {outcome.err.strip()[-500:]}"]
    return ["status 1 without a message"] if outcome.status == 1 and not outcome.err.strip() else []


def losses(job, home, outcome, spared=(), expected=(0, 1), ways=None):
    """All that must not be after a job; empty when all is well. `spared` is what may be left."""
    lost = wrong_ending(outcome, expected)
    ways = ways or job.ways(outcome.status)
    lost += [f"wrong: {path}" for path in differing(look(home), ways, spared)]
    if outcome.status == 0:
        if outcome.out != job.expected.out.replace(b"{home}", os.fsencode(home)):
            lost.append(f"wrong output: {outcome.out!r}")
        for path, new in world.look(home / "files").items():
            if isinstance(new, world.File) and "files/" + path in job.results:
                wrong = oracle.wrong_rights(
                    job.expected, path, job.model.state.get(path), new, job.model.place)
                lost += [f"wrong rights: {path}: {wrong}"] if wrong else []
    return lost
