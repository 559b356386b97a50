"""The jobs that the suites run through the real sly, and what must be true after each of them,
however it ended.

A job works in a home of its own: files/ holds its files and is its working folder, run/ the private
work folder, config/ the settings. All paths here are relative to that home.
"""

import dataclasses
import os
import pathlib
import random
import shutil
import subprocess

PASSWORD = "geheim"
SETTINGS = "config/slyver/registry.ini"
PRIVATE_FOLDER = "run/slyver"  # Made when needed; it may stay, empty.
PATIENCE = 60  # Seconds after which a job hangs.


@dataclasses.dataclass(frozen=True)
class Job:
    name: str
    arguments: tuple  # What stands behind "sly".
    sources: dict  # path: bytes; they must never change.
    results: dict = dataclasses.field(default_factory=dict)  # path: its bytes when complete
    replaced: dict = dataclasses.field(default_factory=dict)  # path: what a result replaces
    settings: tuple = ()  # What the settings file may hold: at first, and at the end.
    out: str = ""  # What standard output must be when all went well; {files} is the folder.


@dataclasses.dataclass(frozen=True)
class Outcome:
    status: int  # As subprocess tells it: -9 for SIGKILL. None when the job hung.
    out: str
    err: str


def make_jobs(sly, folder, unit=1000, piece=None, seed=1):
    """The jobs, with sources of some 2 to 7 units (bytes) and pieces of `piece` bytes (a unit).
    `folder` is for the preparation; it is removed."""
    rng = random.Random(seed)
    piece = piece or unit
    password = {"files/password": PASSWORD.encode() + b"\n"}
    with_password = ("--password-file", "password")

    whole = rng.randbytes(3 * unit + unit // 2)
    pieces = {
        f"whole.bin.{i + 1}.sly": whole[i * piece : (i + 1) * piece]
        for i in range((len(whole) + piece - 1) // piece)
    }
    kept = b'[HKEY_LOCAL_MACHINE\\Software\\Orm Valis\\Slyver]\r\nRAM="off"\r\n'
    filepath = b'[HKEY_LOCAL_MACHINE\\Software\\Orm Valis\\FC]\r\n'
    settings = (kept + filepath + b'filepath="x"\r\n', kept + filepath)
    split = {"sources": {"files/whole.bin": whole}, "settings": settings}
    # One piece lies in a subfolder, where a join looks too.
    joined = {
        "sources": {
            ("files/more/" if name.endswith(".2.sly") else "files/") + name: data
            for name, data in pieces.items()
        },
        "results": {"files/whole.bin": whole},
        "settings": settings,
        "out": "{files}/whole.bin\n",
    }

    main, first, second = (rng.randbytes(n * unit) for n in (7, 3, 2))
    in_files = lambda contents: {f"files/{name}": data for name, data in contents.items()}
    hide_sources = in_files({"main.jpg": main, "first.zip": first}) | password
    hide_arguments = ("hide", "main.jpg", "first.zip", *with_password)
    add_arguments = ("hide", "carrier.jpg", "second.zip", *with_password, "--yes")

    def made(arguments, sources, expected_start, name):
        """The bytes of the carrier that sly makes; all but the directory is known beforehand."""
        _write_all(folder, sources)
        outcome = run(Job("preparation", arguments, sources), sly, folder)
        carrier = (folder / "files" / name).read_bytes()
        shutil.rmtree(folder)
        assert outcome.status == 0, outcome
        assert carrier[:-2500] == expected_start
        return carrier

    carrier = made(hide_arguments, hide_sources, main + first, "Hidden File main.jpg")
    add_sources = in_files({"carrier.jpg": carrier, "second.zip": second}) | password
    carrier2 = made(
        add_arguments, add_sources, main + first + second, "Hidden File carrier.jpg"
    )
    from_carrier = {"sources": in_files({"carrier.jpg": carrier2}) | password}

    return [
        Job("split", ("split", "whole.bin", "--size", str(piece)), **split, results=in_files(pieces)),
        Job(
            "split into a new folder",
            ("split", "whole.bin", "--size", str(piece), "--output", "new/pieces", "--yes"),
            **split,
            results={f"files/new/pieces/{name}": data for name, data in pieces.items()},
        ),
        Job("join", ("join", "whole.bin.1.sly"), **joined),
        Job(
            "join over a file",
            ("join", "whole.bin.1.sly", "--yes"),
            **joined,
            replaced={"files/whole.bin": rng.randbytes(unit)},
        ),
        Job(
            "hide",
            hide_arguments,
            hide_sources,
            results={"files/Hidden File main.jpg": carrier},
            out="{files}/Hidden File main.jpg\n",
        ),
        Job(
            "hide another",
            add_arguments,
            add_sources,
            results={"files/Hidden File carrier.jpg": carrier2},
            out="{files}/Hidden File carrier.jpg\n",
        ),
        Job(
            "recover a hidden file",
            ("recover", "carrier.jpg", "--file", "1", *with_password),
            **from_carrier,
            results={"files/Original second.zip": second},
            out="{files}/Original second.zip\n",
        ),
        Job(
            "recover the main file",
            ("recover", "carrier.jpg", "--main", *with_password),
            **from_carrier,
            results={"files/Original carrier.jpg": main},
            out="{files}/Original carrier.jpg\n",
        ),
        Job(
            "list",
            ("list", "carrier.jpg", *with_password),
            **from_carrier,
            out=f"0\t{len(first)}\tfirst.zip\n1\t{len(second)}\tsecond.zip\n",
        ),
    ]


def make_jobs_for_two_threads(sly, folder):
    """The same with sources so big that two threads copy: from 1 MiB in all."""
    return [
        dataclasses.replace(job, name=f"{job.name}, two threads")
        for job in make_jobs(sly, folder, 320_000)
    ]


def prepare(job, home):
    """Puts the home into the state that the job begins with."""
    if home.exists():
        shutil.rmtree(home)
    _write_all(home, job.sources | job.replaced)
    if job.settings:
        _write_all(home, {SETTINGS: job.settings[0]})


def restore(job, home):
    """As prepare(), after a run whose sources have been found unchanged: they stay, which saves
    time where they are big."""
    for path in sorted(home.rglob("*"), reverse=True):
        name = str(path.relative_to(home))
        if path.is_dir() and not path.is_symlink():
            if name not in folders(job):
                path.rmdir()
        elif name not in job.sources:
            path.unlink()
    _write_all(home, job.replaced)
    if job.settings:
        _write_all(home, {SETTINGS: job.settings[0]})


def temporary_path(path):
    """The path under which a file is written until it is complete."""
    path = pathlib.PurePath(path)
    value = 14695981039346656037
    for byte in path.name.encode():
        value = (value ^ byte) * 1099511628211 % 2**64
    return str(path.with_name(f".slyver-{value:016x}.tmp"))


def environment(home):
    return os.environ | {
        "HOME": str(home),
        "XDG_RUNTIME_DIR": str(home / "run"),
        "XDG_CONFIG_HOME": str(home / "config"),
        "LC_ALL": "C",
    }


def start(job, sly, home, extra_environment=None, **options):
    """Starts the job; `options` are those of subprocess.Popen."""
    return subprocess.Popen(
        [str(sly), *job.arguments],
        cwd=home / "files",
        env=environment(home) | (extra_environment or {}),
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
        errors="replace",
        **options,
    )


def finish(process):
    """Waits for the end of a job that was started."""
    try:
        out, err = process.communicate(timeout=PATIENCE)
        return Outcome(process.returncode, out, err)
    except subprocess.TimeoutExpired:
        process.kill()
        return Outcome(None, *process.communicate())


def run(job, sly, home, extra_environment=None, **options):
    return finish(start(job, sly, home, extra_environment, **options))


def same(path, expected):
    """Whether the file holds these bytes; compared in parts, since it may be big."""
    size = 1 << 20
    if path.is_symlink() or not path.is_file() or path.stat().st_size != len(expected):
        return False
    view = memoryview(expected)
    buffer = bytearray(size)
    with path.open("rb", buffering=0) as file:
        for offset in range(0, len(expected), size):
            count = file.readinto(buffer)
            if memoryview(buffer)[:count] != view[offset : offset + count]:
                return False
    return True


def complete(job, home):
    """Whether every result is there, whole."""
    return all(same(home / name, data) for name, data in job.results.items())


def damage(job, home):
    """What was lost: sources that have changed, and final names under which something else lies
    than the whole result or what it was to replace. True of every ending whatever."""
    found = [f"changed: {name}" for name, data in job.sources.items() if not same(home / name, data)]
    for name, data in job.results.items():
        path = home / name
        old = job.replaced.get(name)
        if os.path.lexists(path):
            if not same(path, data) and not (old is not None and same(path, old)):
                found.append(f"neither whole nor old: {name}")
        elif old is not None:
            found.append(f"gone: {name}")
    if job.settings and not any(same(home / SETTINGS, data) for data in job.settings):
        found.append(f"neither whole nor old: {SETTINGS}")
    # The first piece is written last: where it stands, all stand.
    pieces = [name for name in job.results if name.endswith(".sly")]
    if pieces and (home / pieces[0]).exists() and not complete(job, home):
        found.append("the first piece stands without all the others")
    return found


def leftovers(job, home, spared=()):
    """The names of what lies there besides sources, results and settings. `spared` are paths whose
    removal was made to fail."""
    expected = {*job.sources, *job.results, *job.replaced, *spared} | folders(job)
    expected |= {SETTINGS} if job.settings else set()
    return [
        f"left: {name}"
        for name in sorted(str(path.relative_to(home)) for path in home.rglob("*"))
        if name not in expected
    ]


def wrong_ending(job, home, outcome):
    """What is wrong with the exit status of a job that was not killed: 0 needs whole results and
    the right output, 1 a message; anything else is a crash or a hang."""
    if outcome.status == 0:
        if not complete(job, home):
            return ["status 0 without a whole result"]
        expected = job.out.replace("{files}", str(home / "files"))
        return [] if outcome.out == expected else [f"wrong output: {outcome.out!r}"]
    if outcome.status == 1:
        return [] if outcome.err.strip() else ["status 1 without a message"]
    return [f"ended with {outcome.status}: {outcome.err.strip()}"]


def losses(job, home, outcome, spared=()):
    """All that must not be after a job that could end by itself; empty when all is well."""
    return damage(job, home) + wrong_ending(job, home, outcome) + leftovers(job, home, spared)


def folders(job):
    """The folders that may stay: those of the job's files, and the private one."""
    files = [*job.sources, *job.results, "run/x", PRIVATE_FOLDER + "/x", SETTINGS]
    return {str(parent) for name in files for parent in pathlib.PurePath(name).parents}


def _write_all(home, contents):
    (home / "run").mkdir(parents=True, exist_ok=True, mode=0o700)
    for name, data in contents.items():
        path = home / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)
