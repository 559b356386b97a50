"""Power failures, by simulation. The preload library records what every job asks of the disk; here
it is replayed up to every moment, with some or all of what was not flushed by then missing: names
and bytes, in any order, and writes that have arrived in half. After each the names must hold what
they may hold where something is replaced; after the end, the new."""

import collections
import dataclasses
import itertools
import os
import random

import faults
import jobs
from jobs import ABSENT, Case

REMOVALS = ("unlink", "unlinkat", "remove", "rmdir")
WRITES = ("pwrite", "ioctl", "copy_file_range")


@dataclasses.dataclass(eq=False)
class Change:
    """A step that the disk takes as a whole or not at all; of a write, perhaps half."""

    names: tuple = ()  # Triples of a path, the file that bore it and the file that bears it now.
    file: object = None  # The file whose bytes change;
    offset: int = 0  # from here on,
    data: bytes = b""  # to these.
    flushed: float = float("inf")  # The number of changes that were asked for when it was flushed.


def changes_of(record, home, contents, flushes=True):
    """What the recorded calls do to a disk with these contents. A file is known by a number, or by
    the path that it has at first."""
    numbers = itertools.count()
    names = {path: path for path, data in contents.items() if data is not ABSENT}
    nameless = {}
    changes = []

    def rename(*names_now):
        now = [(path, names.get(path), file) for path, file in names_now]
        changes.append(Change(names=tuple(now)))
        for path, _, file in now:
            names[path] = file

    for call, path, *asked in record:
        path = os.path.relpath(path, home)
        file = names.get(path)
        if faults.is_nameless(path):
            file = nameless.setdefault(path, str(next(numbers)))
        if (call in ("open", "openat") and asked[0] or call == "mkdir") and file is None:
            rename((path, ("folder " if call == "mkdir" else "") + str(next(numbers))))
        elif call.startswith("rename"):
            to = os.path.relpath(asked[0], home)
            if file is not None and (call == "rename" or names.get(to) is None):
                rename((path, None), (to, file))
        elif call == "linkat" and names.get(os.path.relpath(asked[0], home)) != file:
            rename((os.path.relpath(asked[0], home), file))
        elif call in REMOVALS and file is not None:
            rename((path, None))
        elif call in WRITES and file is not None and asked[0]:
            changes.append(Change((), file, int(asked[0]), bytes.fromhex(asked[1])))
        elif call == "fsync" and flushes:
            changes.append(Change(flushed=0))  # A moment of its own: until then nothing is flushed.
            for change in changes:
                in_folder = any(os.path.dirname(each) == path for each, *_ in change.names)
                if in_folder or (file is not None and change.file == file):
                    change.flushed = min(change.flushed, len(changes))
    return changes


def disk_after(contents, chosen):
    """What lies there when these changes, and parts of changes, have arrived."""
    names = {path: path for path, data in contents.items() if data is not ABSENT}
    files = collections.defaultdict(bytes, {path: contents[path] for path in names})
    for change, share in chosen:
        for path, before, now in change.names:
            # A name that bears another file by now is not taken from it.
            if now is not None or names.get(path) == before:
                names[path] = now
        if change.file is not None:
            data = change.data[: len(change.data) // share]
            old = files[change.file].ljust(change.offset, b"\0")
            files[change.file] = old[: change.offset] + data + old[change.offset + len(data) :]
    return {path: files[file] for path, file in names.items()
            if file is not None and not file.startswith("folder")}


def choices(loose, rng, most):
    """Which of the changes that are not flushed have arrived: none, all, each alone, all but each,
    and up to `most` more, where there are no more all of them. A share of 2 is half a write."""
    yield from ([], [(change, 1) for change in loose])
    if 2 ** len(loose) <= most:
        for kept in itertools.product((0, 1, 2), repeat=len(loose)):
            yield [(change, share) for change, share in zip(loose, kept) if share]
        return
    for one in loose:
        yield from ([(one, 1)], [(one, 2)], [(each, 1) for each in loose if each is not one])
    for _ in range(most):
        yield [(each, rng.choice((1, 1, 2))) for each in loose if rng.random() < rng.random()]


def crash(job, changes, rng, most):
    """Yields for every state after a power failure what is wrong with it, mostly nothing."""
    watched = job.start.keys() | (
        job.results.keys() if job.replaced or job.deletes else set())
    for moment in range(len(changes) + 1):
        asked = changes[:moment]
        loose = [change for change in asked if change.flushed > moment]
        ways = job.ways(0 if moment == len(changes) and job.replaced else None)
        for chosen in choices(loose, rng, most):
            share = {id(change): share for change, share in chosen}
            arrived = [(change, share.get(id(change), 1)) for change in asked
                       if change.flushed <= moment or id(change) in share]
            found = disk_after(job.start, arrived)
            yield jobs.differing(found, ways, found.keys() - watched), moment


def run(setting):
    return faults.both_cores(_case, [(setting, job) for job in jobs.make_jobs()])


def _case(setting, job):
    case = Case(job.name, group="power failures")
    home = setting.folder / job.name.replace(" ", "-")
    rng = random.Random(f"{setting.seed} {job.name}")
    most = 30 if setting.short else 300
    record = faults.calls_of(job, setting, home)
    for lost, moment in crash(job, changes_of(record, home, job.start), rng, most):
        case.tried += 1
        case.losses += [f"wrong: {path}, after change {moment}" for path in lost]
    # A simulation that misses nothing when nothing is flushed would prove nothing.
    blind = changes_of(record, home, job.start, flushes=False)
    if (job.replaced or job.deletes) and not any(lost for lost, _ in crash(job, blind, rng, most)):
        case.losses.append("nothing is lost without any flushing")
    return case
