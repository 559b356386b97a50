"""The jobs that the suites run through the real sly, and the one verdict on what lies there
afterwards, however a job has ended.

A job works in a home of its own: files/ is its working folder, run/ holds the private folder,
config/ the settings. Paths are relative to that home. What lies there is a dictionary: for every
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
import stat
import subprocess

from carriers import carrier_of, read

PASSWORD = b"geheim"
WITH_PASSWORD = ("--password-file", "password")
SETTINGS = "config/slyver/registry.ini"
PRIVATE = "run/slyver"  # The private folder; made when needed, and it may stay, empty.
STOPPED = -signal.SIGINT  # The status of a job that Ctrl-C has stopped.
PATIENCE = 60  # Seconds after which a job hangs.
ABSENT = None

# An age file that was published with the format: the passphrase is "password", the plain bytes "age".
AGE_FILE = b"""age-encryption.org/v1
-> scrypt rF0/NwblUHHTpgQgRpe5CQ 10
gUjEymFKMVXQEKdMMHL24oYexjE3TIC0O0zGSqJ2aUY
--- IOXiQYStkoT1mvZW2tFOqZdhRVvj58egABx/sWfZQbc
""" + bytes.fromhex("1b35c6e687dd00da3ac379ac9f742c21fd185a1b9e3ded739d14ac6a9a50124db866d8")


@dataclasses.dataclass(frozen=True)
class Setting:
    """What a suite is given."""

    built: pathlib.Path  # The folder of the release build: sly and the preload library.
    folder: pathlib.Path  # Empty, for the suite's files; removed after it.
    short: bool  # Only the part that fits into the short run.
    seed: int  # All random choices come from it.

    @property
    def sly(self):
        return self.built / "sly"


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
    arguments: tuple  # What stands behind "sly".
    sources: dict  # They must never change.
    make: callable = lambda sources: {}  # The results that these sources must lead to.
    replaced: dict = dataclasses.field(default_factory=dict)  # What the results replace.
    settings: tuple = (ABSENT,)  # What the settings may be: at first, and at the end.
    deletes: bool = False  # The sources go when the results are there.
    out: str = ""  # What standard output must be when all went well; {files} is the folder.
    disk: str = ""  # What the file system does by itself, as the preload library has it.

    @property
    def results(self):
        return self.make(self.sources)

    @property
    def start(self):
        return self.sources | self.replaced | {SETTINGS: self.settings[0]}

    def mode(self, path):
        """Who may read and write a file: a result those who may all its sources, or what it
        replaces."""
        if path in self.replaced:
            return 0o600
        if path in self.results:
            common = functools.reduce(int.__and__, map(self.mode, self.sources))
            return common & 0o600 if "encrypted" in self.name else common  # The owner's alone.
        return 0o600 if path.endswith(("first.zip", ".3.sly")) else 0o640

    def ways(self, status):
        """What may lie there after this exit status; a negative one is a signal's."""
        results, settings = self.results, {SETTINGS: self.settings}
        start = only(dict.fromkeys(results) | self.sources | self.replaced) | settings
        final = only(self.sources | dict.fromkeys(self.replaced) | results) | settings
        loose = {path: (data, ABSENT) for path, data in self.sources.items() if self.deletes}
        if status == 0:
            return [final | dict.fromkeys(loose, (ABSENT,))]
        # A set of pieces that was to be replaced is kept whole.
        replaces_set = any(path.endswith(".sly") for path in self.replaced)
        if status == STOPPED or (status == 1 and replaces_set):
            return [start]
        # A part of the results may stay; but where piece 1 stands, all stand.
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
    paths = [pathlib.PurePath(path) for path in pieces]
    lines = [f"{hashlib.sha256(data).hexdigest()}  {path.name}\n"
             for path, data in zip(paths, pieces.values())]
    name = paths[0].name.removesuffix(".1.sly") + ".sha256"
    return pieces | {str(paths[0].with_name(name)): "".join(lines).encode()}


def make_jobs(unit=1000, piece=None, seed=1):
    """The jobs, with sources of some 2 to 7 units (bytes) and pieces of `piece` bytes (a unit)."""
    rng = random.Random(seed)
    piece = piece or unit
    whole, main, first, second, old = (rng.randbytes(int(n * unit)) for n in (3.5, 7, 3, 2, 1))
    in_files = lambda **contents: {
        "files/" + name.replace("_", "."): data for name, data in contents.items()}
    with_password = {"files/password": PASSWORD + b"\n"}

    kept = b'[HKEY_LOCAL_MACHINE\\Software\\Orm Valis\\Slyver]\r\nRAM="off"\r\n'
    filepath = b'[HKEY_LOCAL_MACHINE\\Software\\Orm Valis\\FC]\r\n'
    settings = {"settings": (kept + filepath + b'filepath="x"\r\n', kept + filepath)}

    split = ("split", "whole.bin", "--size", str(piece))
    cut_into = lambda folder: lambda sources: cut(
        sources["files/whole.bin"], piece, f"files/{folder}whole.bin")
    # One piece is in a subfolder, where a join looks too; without a list it takes --force.
    parts = {path.replace("files/whole.bin.2", "files/more/whole.bin.2"): data
             for path, data in cut(whole, piece, "files/whole.bin").items()}
    join = {
        "sources": parts,
        "make": lambda sources: {"files/whole.bin": b"".join(sources[path] for path in parts)},
        "out": "{files}/whole.bin\n",
    }

    carrier = carrier_of(b"main.jpg", main, [(b"first.zip", first)], PASSWORD)
    second_begins = len(main) + len(first)

    def second_carrier(carrier, second):
        added = (b"second.zip", second)
        if not read(carrier, PASSWORD).records:
            return carrier_of(b"carrier.jpg", carrier, [added], PASSWORD)
        hidden = [(b"first.zip", carrier[len(main) : second_begins]), added]
        return carrier_of(b"main.jpg", carrier[: len(main)], hidden, PASSWORD)

    carrier2 = second_carrier(carrier, second)
    hide = lambda sources: {"files/Hidden File main.jpg": carrier_of(
        b"main.jpg", sources["files/main.jpg"], [(b"first.zip", sources["files/first.zip"])],
        PASSWORD)}
    add = lambda sources: {"files/Hidden File carrier.jpg": second_carrier(
        sources["files/carrier.jpg"], sources["files/second.zip"])}
    from_carrier = in_files(carrier_jpg=carrier2) | with_password
    part_of = lambda name, begin, end: {
        "make": lambda sources: {f"files/Original {name}": sources["files/carrier.jpg"][begin:end]},
        "out": "{files}/Original " + name + "\n"}

    found = [
        Job("split", split, in_files(whole_bin=whole), cut_into(""), **settings),
        Job("split into a new folder", (*split, "--output", "new/pieces", "--yes"),
            in_files(whole_bin=whole), cut_into("new/pieces/"), **settings),
        Job("split over pieces", (*split, "--output", "old", "--yes"), in_files(whole_bin=whole),
            cut_into("old/"), cut(rng.randbytes(4 * unit), piece * 4 // 5, "files/old/whole.bin"),
            **settings),
        Job("split with a list", (*split, "--checksum"), in_files(whole_bin=whole),
            lambda sources: listed(cut_into("")(sources)), **settings),
        Job("split with a list over another", (*split, "--checksum", "--output", "old", "--yes"),
            in_files(whole_bin=whole), lambda sources: listed(cut_into("old/")(sources)),
            listed(cut(rng.randbytes(4 * unit), piece * 4 // 5, "files/old/whole.bin")), **settings),
        Job("join and delete", ("join", "whole.bin.1.sly", "--delete"),
            **join | {"sources": listed(parts)}, **settings, deletes=True),
        Job("join", ("join", "whole.bin.1.sly", "--force"), **join, **settings),
        Job("join over a file", ("join", "whole.bin.1.sly", "--force"), **join, **settings,
            replaced=in_files(whole_bin=old)),
        Job("hide", ("hide", "main.jpg", "first.zip", *WITH_PASSWORD),
            in_files(main_jpg=main, first_zip=first) | with_password, hide,
            out="{files}/Hidden File main.jpg\n"),
        Job("hide another", ("hide", "carrier.jpg", "second.zip", *WITH_PASSWORD, "--yes"),
            in_files(carrier_jpg=carrier, second_zip=second) | with_password, add,
            out="{files}/Hidden File carrier.jpg\n"),
        Job("recover a hidden file", ("recover", "carrier.jpg", "--file", "1", *WITH_PASSWORD),
            from_carrier, **part_of("second.zip", second_begins, second_begins + len(second))),
        Job("recover the main file", ("recover", "carrier.jpg", "--main", *WITH_PASSWORD),
            from_carrier, **part_of("carrier.jpg", 0, len(main))),
        Job("recover an encrypted file",
            ("recover", "carrier.jpg", "--passphrase-file", "password"),
            in_files(carrier_jpg=carrier_of(b"main.jpg", main, [(b"a.age", AGE_FILE)], b"slyver"),
                     password=b"password\n"),
            lambda sources: {"files/Original a": b"age"}, out="{files}/Original a\n"),
        Job("list", ("list", "carrier.jpg", *WITH_PASSWORD), from_carrier,
            out=f"0\t{len(first)}\tfirst.zip\n1\t{len(second)}\tsecond.zip\n"),
    ]
    on = {"split": "network", "split over pieces": "shares", "join over a file": "shares",
          "hide": "network"}
    return found + [dataclasses.replace(job, name=f"{job.name}, {on[job.name]}", disk=on[job.name])
                    for job in found if job.name in on]


def make_big_jobs():
    """The same with sources so big that two threads copy: from 1 MiB in all."""
    # Of a split into small pieces one thread copies and the other gives names.
    small = next(job for job in make_jobs(320_000, 20_000) if job.name == "split")
    big = [job for job in make_jobs(320_000) if "encrypted" not in job.name]
    return [dataclasses.replace(job, name=job.name + ", two threads") for job in big] + [
        dataclasses.replace(small, name="split into small pieces, two threads")]


def prepare(home, contents, mode=lambda path: 0o644):
    """Makes this all that lies in the home."""
    shutil.rmtree(home, ignore_errors=True)
    (home / "files").mkdir(parents=True, exist_ok=True)
    (home / "run").mkdir(mode=0o700, exist_ok=True)
    for path, data in contents.items():
        if data is not ABSENT:
            (home / path).parent.mkdir(parents=True, exist_ok=True)
            (home / path).write_bytes(data)
            (home / path).chmod(mode(path))


def environment(home):
    return os.environ | {"LC_ALL": "C", "HOME": str(home), "XDG_RUNTIME_DIR": str(home / "run"),
                         "XDG_CONFIG_HOME": str(home / "config")}


@dataclasses.dataclass(frozen=True)
class Outcome:
    status: int  # As subprocess tells it: -9 for SIGKILL. None when the job hung.
    out: str
    err: str


def start(sly, arguments, home, extra_environment=None, **options):
    """Starts sly; `options` are those of subprocess.Popen."""
    return subprocess.Popen(
        [sly, *map(str, arguments)], cwd=home / "files", text=True, errors="surrogateescape",
        env=environment(home) | (extra_environment or {}), stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)


def finish(process):
    """Waits for the end of what was started."""
    try:
        out, err = process.communicate(timeout=PATIENCE)
        return Outcome(process.returncode, out, err)
    except subprocess.TimeoutExpired:
        process.kill()
        return Outcome(None, *process.communicate())


def run(sly, arguments, home, *extra_environment, **options):
    return finish(start(sly, arguments, home, *extra_environment, **options))


def look(home):
    """What lies in the home."""
    found = {}
    for folder, folders, files in os.walk(home):
        for name in folders + files:
            path = os.path.join(folder, name)
            mode = os.lstat(path).st_mode
            if stat.S_ISREG(mode):
                value = pathlib.Path(path).read_bytes()
            else:
                value = "link to " + os.readlink(path) if stat.S_ISLNK(mode) else stat.filemode(mode)[0]
            found[os.path.relpath(path, home)] = value
    return found


def differing(found, ways, spared=()):
    """The paths at which `found` differs from the nearest way. The folders of a way's paths may be
    there, and so may be what is `spared`."""

    def wrong(way):
        folders = {str(folder) for path in (*way, "files/x", PRIVATE + "/x", PRIVATE + ".1/x", SETTINGS)
                   for folder in pathlib.PurePath(path).parents}
        return sorted(
            path for path in found.keys() | way.keys()
            if found.get(path, ABSENT) not in way.get(path, (ABSENT,)) and path not in spared
            and not (path in folders and found.get(path) == "d"))

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
        if outcome.out != job.out.replace("{files}", str(home / "files")):
            lost.append(f"wrong output: {outcome.out!r}")
        lost += [f"wrong mode: {path}" for path in job.results if (home / path).exists()
                 and (home / path).stat().st_mode & 0o666 != job.mode(path)]
    return lost
