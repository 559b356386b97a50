"""Traps: things of every kind under the names that a job uses, sources that are no regular files or
change while they are read, private folders that are not the user's own. A job ends right or says
why not; what is no business of the job stays as it was.

As root may do all, the jobs are run as another user where the tests are root's."""

import dataclasses
import os
import pathlib
import random
import shutil
import stat
import threading
import time

import faults
import jobs
from suite import Case

NOBODY = 65534
MIB = 1 << 20


def run(setting):
    rng = random.Random(setting.seed)
    bench = Bench(setting)
    return [
        things_in_the_way(bench),
        private_folders(bench),
        odd_sources(bench),
        changing_sources(bench, rng, setting.short),
    ]


class Bench:
    def __init__(self, setting):
        self.home = setting.folder / "home"
        self.user = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if is_root() else {}
        # The other user must be able to come here, and to find the program.
        for folder in (setting.folder.parent, setting.folder):
            folder.chmod(0o711)
        self.sly = setting.folder / "sly"
        for program in (setting.sly, setting.built / faults.LIBRARY):
            shutil.copy(program, setting.folder)
        setting = dataclasses.replace(setting, built=setting.folder)
        self.slow = faults.environment(setting, self.home, faults.SLOW)
        self.jobs = {job.name: job for job in jobs.make_jobs(self.sly, setting.folder / "made")}

    def prepare(self, job):
        """The job's home, owned by the user who runs it, with things beside it that are no business
        of the job's."""
        remove(self.home)
        jobs.prepare(job, self.home)
        (self.home / "outside" / "folder").mkdir(parents=True)
        for name in ("file", "folder/file"):
            (self.home / "outside" / name).write_bytes(b"precious")
        self.give_away()

    def give_away(self):
        if self.user:
            for path in [self.home, *self.home.rglob("*")]:
                os.chown(path, NOBODY, NOBODY, follow_symlinks=False)

    def run(self, job, extra_environment=None):
        return jobs.run(job, self.sly, self.home, extra_environment, **self.user)


def is_root():
    return os.geteuid() == 0


def remove(path):
    for folder, _, _ in os.walk(path):
        os.chmod(folder, 0o700)
    shutil.rmtree(path, ignore_errors=True)


def snapshot(path):
    """All that can be seen of what lies under a path: kinds, rights, bytes, where links lead."""

    def look(path):
        found = path.lstat()
        what = None
        if stat.S_ISREG(found.st_mode):
            what = path.read_bytes()
        elif stat.S_ISLNK(found.st_mode):
            what = os.readlink(path)
        return found.st_mode, found.st_uid, what

    if not os.path.lexists(path):
        return {}
    below = path.rglob("*") if path.is_dir() and not path.is_symlink() else ()
    return {str(each): look(each) for each in (path, *below)}


def put_folder(path, outside):
    (path / "sub").mkdir(parents=True)
    (path / "sub" / "file").write_bytes(b"in the way")
    (path / "link").symlink_to(outside / "folder")


def put_read_only_folder(path, outside):
    put_folder(path, outside)
    (path / "sub").chmod(0o500)
    path.chmod(0o500)


KINDS = {
    "a file": lambda path, outside: path.write_bytes(b"in the way"),
    "a folder": put_folder,
    "a read-only folder": put_read_only_folder,
    "a link to a folder": lambda path, outside: path.symlink_to(outside / "folder"),
    "a link to a file": lambda path, outside: path.symlink_to(outside / "file"),
    "another name of a file": lambda path, outside: path.hardlink_to(outside / "file"),
    "a link to nothing": lambda path, outside: path.symlink_to(outside / "nothing"),
    "a link to itself": lambda path, outside: path.symlink_to(path),
    "a pipe": lambda path, outside: os.mkfifo(path),
    "a socket": lambda path, outside: os.mknod(path, stat.S_IFSOCK | 0o600),
    "a device": lambda path, outside: os.mknod(path, stat.S_IFCHR | 0o666, os.makedev(1, 3)),
}
FOLDERS = {"a folder", "a read-only folder"}
REPLACEABLE = {name for name in KINDS if name.endswith("a file") or name.startswith("a link")}


@dataclasses.dataclass(frozen=True)
class Place:
    path: str
    passable: set  # The kinds that must not keep the job from being done.
    goes: bool  # Whether what lies there is the program's own and may go, even in a failure.


def places(job):
    """The names that a job uses besides those of its sources."""
    everything = set(KINDS)
    scratch_folder = FOLDERS | {"a link to a folder"}
    marked = job.name.startswith(("hide", "recover"))
    if "join" in job.name:
        yield Place("files/temprrr", scratch_folder, True)
        yield Place(jobs.temporary_path("files/whole.bin.1.sly"), everything - FOLDERS, True)
    if job.name.startswith("recover"):
        yield Place("files/TempRRR", scratch_folder, True)
    if job.name.startswith("hide"):
        yield Place("run/slyver/tempHHH", scratch_folder, True)
        yield Place("run/slyver/3.ini", everything - FOLDERS, True)
    for name in job.results:
        if not job.name.startswith("recover"):  # That is moved there when it is complete.
            yield Place(jobs.temporary_path(name), everything - FOLDERS, True)
        if name in job.replaced:
            continue
        # A split of the same file is looked for in that file's own folder.
        replaced = "new" in job.name or (job.name == "split" and not name.endswith(".1.sly"))
        yield Place(name, everything if marked else REPLACEABLE if replaced else set(), False)
    if job.settings:
        yield Place(jobs.SETTINGS, everything, False)


def things_in_the_way(bench):
    case = Case("things in the way")
    for job in bench.jobs.values():
        for place in places(job):
            for kind, put in KINDS.items():
                if kind == "a device" and not is_root():
                    continue
                case.tried += 1
                bench.prepare(job)
                path = bench.home / place.path
                path.parent.mkdir(parents=True, exist_ok=True, mode=0o700)
                if os.path.lexists(path):
                    path.unlink()
                put(path, bench.home / "outside")
                bench.give_away()
                if kind == "a device":
                    path.chmod(0o666)
                what = f"{job.name}, {kind} as {place.path}"
                case.losses += [f"{what}: {text}" for text in lost(bench, job, place, kind, path)]
    return case


def lost(bench, job, place, kind, path):
    outside, before = snapshot(bench.home / "outside"), snapshot(path)
    outcome = bench.run(job)
    if snapshot(bench.home / "outside") != outside:
        yield "changed what lies outside"
    done = outcome.status == 0
    if outcome.status not in (0, 1) or (not done and not outcome.err.strip()):
        yield f"ended with {outcome.status}: {outcome.err}"
    if done != (kind in place.passable):
        yield f"ended with {outcome.status}: {outcome.err}"
    for name, data in job.sources.items():
        if not jobs.same(bench.home / name, data):
            yield f"changed: {name}"
    stays = snapshot(path) == before
    if not stays and not place.goes and not (done and kind in REPLACEABLE):
        yield "what was in the way is not as it was"
    results = dict(job.results)
    if place.path in results and done and stays:
        # The next name that is free is taken.
        name = pathlib.PurePath(place.path).name
        marked = f"[1] {name}" if job.name.startswith("hide") else name.replace(" ", " [1] ", 1)
        results[f"files/{marked}"] = results.pop(place.path)
    if done and not all(jobs.same(bench.home / name, data) for name, data in results.items()):
        yield "status 0 without whole results"
    if not done:
        for name, data in results.items():
            old = job.replaced.get(name)
            if name != place.path and os.path.lexists(bench.home / name):
                if not any(jobs.same(bench.home / name, d) for d in (data, old) if d is not None):
                    yield f"not whole: {name}"
    known = dataclasses.replace(job, results=results)
    spared = [str(pathlib.Path(name).relative_to(bench.home)) for name in snapshot(path)]
    if place.goes and done:
        spared = []
    beside = [str(found.relative_to(bench.home)) for found in (bench.home / "outside").rglob("*")]
    spared += ["outside", *beside, "config/slyver", "config"]
    yield from jobs.leftovers(known, bench.home, spared)


def private_folders(bench):
    """Private folders that belong to others, are open to others, or are none."""
    case = Case("private folders")
    run_folder = bench.home / "run"
    private = bench.home / jobs.PRIVATE_FOLDER

    def owned_by_another():
        private.mkdir(0o777)
        private.chmod(0o777)

    def open_to_all():
        private.mkdir(0o777)
        private.chmod(0o777)
        bench.give_away()

    def closed_to_its_owner():
        private.mkdir(0o000)
        private.chmod(0o000)
        bench.give_away()

    def not_allowed():
        run_folder.chmod(0o500)

    # Whether the job can be done: True, False, or None where either is right.
    traps = {
        "open to all": (open_to_all, True),
        "closed to its owner": (closed_to_its_owner, None),
        "not allowed": (not_allowed, False),
    }
    if is_root():
        traps["owned by another"] = (owned_by_another, False)
    else:
        print("Not root: no private folder that belongs to another user is tried.")
    for kind in ("a file", "a link to a folder", "a link to nothing", "a pipe"):
        traps[kind] = (lambda kind=kind: KINDS[kind](private, bench.home / "outside"), False)
    for name in ("hide", "hide another"):
        for kind, (put, passable) in traps.items():
            case.tried += 1
            job = bench.jobs[name]
            bench.prepare(job)
            put()
            outside, before = snapshot(bench.home / "outside"), snapshot(private)
            outcome = bench.run(job)
            what = f"{name}, {kind}"
            wrong = [] if snapshot(bench.home / "outside") == outside else ["changed what is outside"]
            if outcome.status not in (0, 1) or passable not in (None, outcome.status == 0):
                wrong.append(f"ended with {outcome.status}: {outcome.err}")
            if outcome.status == 0 and private.stat().st_mode & 0o077:
                wrong.append("worked in a folder that is open to others")
            if outcome.status != 0 and (not outcome.err.strip() or snapshot(private) != before):
                wrong.append("no message, or what was in the way is not as it was")
            if jobs.complete(job, bench.home) != (outcome.status == 0):
                wrong.append("the carrier and the status do not agree")
            wrong += jobs.damage(job, bench.home)
            case.losses += [f"{what}: {text}" for text in wrong]
    return case


def odd_sources(bench):
    """Sources that are folders, pipes, links and the like in place of files."""
    case = Case("sources that are no files")
    for job in bench.jobs.values():
        for name in job.sources:
            if name.endswith("/password"):
                continue  # A pipe there is a way to hand a password over.
            for kind, put in KINDS.items():
                if kind == "a device" and not is_root():
                    continue
                case.tried += 1
                bench.prepare(job)
                path = bench.home / name
                path.unlink()
                put(path, bench.home / "outside")
                bench.give_away()
                before = snapshot(bench.home)
                outcome = bench.run(job)
                # Links to files are as good as files; but these have other bytes.
                other = kind.endswith("a file")
                if outcome.status not in (0, 1) or (outcome.status == 0 and not other):
                    case.losses.append(
                        f"{job.name}, {kind} as {name}: ended with {outcome.status}: {outcome.err}"
                    )
                if outcome.status == 1 and not outcome.err.strip():
                    case.losses.append(f"{job.name}, {kind} as {name}: no message")
                after = snapshot(bench.home)
                for own in (*jobs.folders(job), jobs.SETTINGS):
                    for seen in (before, after):
                        seen.pop(str(bench.home / own), None)
                changed = [key for key in before if before[key] != after.get(key)]
                replaced = {str(bench.home / made) for made in job.replaced} if other else set()
                made = [] if outcome.status == 0 else sorted(after.keys() - before.keys())
                if set(changed) - replaced or made:
                    case.losses.append(f"{job.name}, {kind} as {name}: changed {changed}, made {made}")
    return case


def changing_sources(bench, rng, short):
    """Sources that grow, shrink and are written to while they are read."""
    case = Case("sources that change while they are read")
    big = {
        job.name: job
        for job in jobs.make_jobs(bench.sly, bench.home.parent / "made", unit=MIB)
        if job.results and job.name != "split into a new folder"
    }
    ends = time.monotonic() + (10 if short else 60)
    while time.monotonic() < ends:
        job = rng.choice(list(big.values()))
        names = [name for name in job.sources if not name.endswith("/password")]
        name = rng.choice(names)
        case.tried += 1
        case.losses += [
            f"{job.name}, {name}: {text}" for text in changed_source(bench, job, name, rng)
        ]
    return case


def changed_source(bench, job, name, rng):
    bench.prepare(job)
    path = bench.home / name
    old = job.sources[name]
    os.utime(path, (1e9, 1e9))
    changes = {
        "grows": old + b"more",
        "shrinks": old[: len(old) // 2],
        "is written to": b"\0" * 8 + old[8:-8] + b"\0" * 8,
    }
    # Only bytes that are written over can lead to a mixture.
    kind = rng.choice([*changes, "is written to"])
    new = changes[kind]
    delay = rng.uniform(0, 0.07)  # Seconds; about what the job takes when it is slow.

    def change():
        time.sleep(delay)
        with path.open("r+b") as file:
            if kind == "shrinks":
                file.truncate(len(new))
            elif kind == "grows":
                file.seek(0, os.SEEK_END)
                file.write(b"more")
            else:
                file.write(b"\0" * 8)
                file.seek(-8, os.SEEK_END)
                file.write(b"\0" * 8)

    writer = threading.Thread(target=change)
    writer.start()
    outcome = bench.run(job, bench.slow)
    writer.join()
    if outcome.status not in (0, 1):
        yield f"{kind}: ended with {outcome.status}: {outcome.err}"
    if outcome.status == 1 and not outcome.err.strip():
        yield f"{kind}: status 1 without a message"
    for other, data in job.sources.items():
        if other != name and not jobs.same(bench.home / other, data):
            yield f"{kind}: changed: {other}"
    if not jobs.same(path, new):
        yield f"{kind}: the source was touched"
    if outcome.status == 0:
        # The bytes may be of before or after, never of both.
        if not jobs.complete(job, bench.home) and not made_of(job, name, new, bench.home):
            yield f"{kind} after {delay:.4f} s: a mixture"
    yield from (f"{kind}: {text}" for text in jobs.leftovers(job, bench.home, extra(job, bench)))
    if outcome.status == 1 and jobs.complete(job, bench.home) and not job.replaced:
        yield f"{kind}: failed, but the result stands"


def extra(job, bench):
    """What a success with other sources may leave beside the results that are known: more pieces,
    and what lies outside."""
    return [
        str(path.relative_to(bench.home))
        for path in bench.home.rglob("*")
        if "outside" in path.parts or (job.name == "split" and path.name.endswith(".sly"))
    ]


def made_of(job, name, new, home):
    """Whether the results are those of a job that found the changed source from its beginning."""
    if job.name == "split":
        count = len(list((home / "files").glob("*.sly")))
        pieces = [home / f"files/whole.bin.{number + 1}.sly" for number in range(count)]
        whole = all(map(os.path.isfile, pieces))
        return whole and b"".join(map(pathlib.Path.read_bytes, pieces)) == new
    path, expected = next(iter(job.results.items()))
    if not (home / path).is_file():
        return False
    result = (home / path).read_bytes()
    if "join" in job.name:
        parts = dict(job.sources) | {name: new}
        number = lambda part: int(part.rsplit(".", 2)[1])
        return result == b"".join(parts[part] for part in sorted(parts, key=number))
    if job.name == "recover the main file":
        return result == new[: len(expected)]
    if job.name.startswith("hide"):
        # That the directory says so too is checked with hostile input.
        return (new[:-2500] if name.endswith("carrier.jpg") else new) in result
    return False
