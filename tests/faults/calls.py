"""Something happens at every call that touches a file, in every job: it fails, moves too little,
the program is killed or stopped, or a source changes."""

import dataclasses
import errno
import os
import pathlib
import random
import signal

import faults
import jobs
from jobs import Case

REMOVALS = {"unlink", "unlinkat", "rmdir", "remove"}
LOOKS = {"open", "openat", "opendir", "readdir", "stat", "lstat", "fstat"}
WAITS = {"read", "pread", "pwrite", "copy_file_range", "ioctl", "flock"}  # A signal can end these.
EFFECTS = [
    faults.failing_with(errno.EIO, threads=True),
    *map(faults.failing_with, (errno.ENOSPC, errno.EACCES, errno.EINTR, errno.EINVAL)),
    faults.SHORT,
    faults.Effect("no bytes", "nothing"),
    faults.FULL_DISK,
    faults.NO_NAMES,
    faults.DEAD_DISK,
    faults.KILL,
    faults.STOP,
    faults.PAUSE,
]


def run(setting):
    small, big = jobs.make_jobs(), jobs.make_big_jobs()
    tasks = [(setting, job, effect) for effect in EFFECTS for job in small]
    tasks += [(setting, job, effect) for effect in EFFECTS for job in big
              if effect is faults.PAUSE or (effect.threads and not setting.short)]
    return faults.both_cores(_at_every_call, tasks)


def _at_every_call(setting, job, effect):
    case = Case(f"{job.name}, {effect.name}", group=effect.name)
    home = setting.folder / case.name.replace(" ", "-")
    rng = random.Random(f"{setting.seed} {case.name}")
    for at in faults.numbers(job, setting, home):
        jobs.prepare(home, job.start)
        then = Changed(job, home, rng) if effect is faults.PAUSE else None
        outcome, struck = faults.run(job, setting, home, at, effect, then and then.change)
        if struck:
            case.tried += 1
            lost = _losses(setting, job, home, outcome, effect, struck[0], then)
        else:
            lost = jobs.losses(job, home, outcome, expected=(0,))
        label = " ".join(struck[0]) if struck else "undisturbed"
        case.losses += [f"{loss} (call {at}, {label})" for loss in lost]
        if not struck:
            break
    return case


def _losses(setting, job, home, outcome, effect, struck, then):
    call, path, *asked = struck
    if effect.what == "nothing" and path.endswith("/password"):
        return []  # The file is as good as empty there.
    if effect is faults.KILL:
        return _losses_of_killed(setting, job, home, outcome)
    if effect is faults.STOP:
        return jobs.losses(job, home, outcome, expected=(0, jobs.STOPPED))
    if then:
        return jobs.losses(job, home, outcome, ways=then.ways(outcome.status, call))
    if effect in (faults.DEAD_DISK, faults.NO_NAMES):
        # Nothing can be removed any more, or be put back. But it is there.
        kept, found = job.ways(None) if outcome.status else None, jobs.look(home)
        gone = set(job.replaced.values()) - set(found.values())
        whole = all(found.get(path) == data for path, data in job.results.items())
        return jobs.losses(job, home, outcome, _of_others(job, home), ways=kept) + [
            "an earlier file is gone"] * (bool(gone) and not whole)
    place = pathlib.PurePath(path).relative_to(home)
    # What was not to be removed stays, and so do the folders it is in, and their lock.
    stays = place, *place.parents, place.parent / "slyver.lock"
    spared = set(map(str, stays)) if call in REMOVALS else ()
    # So does a work folder that could not be looked into; the next job removes it.
    work = [folder for folder in (place, *place.parents)
            if folder.name in ("temprrr", "TempRRR", "slyver-run") or folder.suffix == ".set"]
    if work and call in LOOKS:
        spared = {path for path in jobs.look(home) if path.startswith(str(work[-1]))}
    lost = jobs.losses(job, home, outcome, spared)
    # By failing, these say that bytes written before may be lost. Of what is removed none can be,
    # nor of what is empty.
    temporary = place.suffix == ".tmp" or faults.is_nameless(place.name)
    tells = call == "fsync" or (call == "close" and asked != ["0"])
    if outcome.status == 0 and temporary and place.parts[0] == "files" and tells:
        lost.append("not noticed")
    harmless = call == "pthread_create" or effect.name == "EINTR" and call in WAITS
    if outcome.status != 0 and (effect is faults.SHORT or harmless):
        lost.append(f"fails: {outcome.err}")
    return lost


def _of_others(job, home):
    """What lies there under names that the job promises nothing about."""
    return jobs.look(home).keys() - job.start.keys() - job.results.keys()


def _losses_of_killed(setting, job, home, outcome):
    lost = jobs.losses(job, home, outcome, _of_others(job, home), (-signal.SIGKILL,))
    found, others = jobs.look(home), _of_others(job, home)
    _, _, _, on_their_way_out, *without_list = job.ways(None)
    if job.deletes and not jobs.differing(found, [on_their_way_out], others):
        return lost
    # The same job must succeed and leave nothing behind of either run. Results that are complete
    # are taken away first: a job does not write over them.
    if not jobs.differing(found, job.ways(0) + without_list[1:], others):
        for path in job.results:
            (home / path).unlink(missing_ok=True)
    # Pieces of a killed split are those of an earlier one, about which the user is asked.
    # The list may be gone, which has proven a piece in a subfolder.
    verb, *arguments = job.arguments
    outcome = jobs.run(setting.sly, (verb, "--force", *arguments), home)
    again = jobs.losses(job, home, outcome, expected=(0,))
    # The modes are those of the first run's results, where there were any.
    return lost + [f"{loss}, after a second run" for loss in again if "wrong rights" not in loss]


class Changed:
    """A source that somebody writes to, cuts or lengthens while the job is at work."""

    def __init__(self, job, home, rng):
        path = rng.choice([path for path in job.sources if not path.endswith("/password")])
        old = job.sources[path]
        # Only bytes that are written over can lead to a mixture.
        self.new = rng.choice((old + b"more", old[: len(old) // 2], *2 * [
            bytes(8) + old[8:-8] + bytes(8)]))
        self.file = home / path
        os.utime(self.file, (1e9, 1e9))
        self.job, self.path = job, path
        self.deleted = False

    def change(self):
        self.deleted = not self.file.exists()
        if not self.deleted:
            self.file.open("r+b").write(self.new)
            os.truncate(self.file, len(self.new))

    def ways(self, status, call):
        """The result is made of the source as it was or as it is now, never of both. What has
        changed is not deleted, unless that was decided just now."""
        gone = self.deleted or call in ("close", "remove")
        now = self.new, *[jobs.ABSENT] * (self.job.deletes and gone)
        changed = dataclasses.replace(self.job, start=self.job.start | {self.path: self.new})
        return [way | {self.path: now} for each in (self.job, changed) for way in each.ways(status)]
