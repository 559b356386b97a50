"""Every call that touches a file fails once, with each error that matters, in every job."""

import errno
import pathlib

import faults
import jobs
from suite import Case

FAILURE = faults.failing_with(errno.EIO)
EFFECTS = [
    FAILURE,
    *map(faults.failing_with, (errno.ENOSPC, errno.EACCES, errno.EINTR, errno.EINVAL)),
    faults.SHORT,
    faults.NOTHING,
    faults.FULL_DISK,
    faults.DEAD_DISK,
]
WITH_TWO_THREADS = [FAILURE, faults.SHORT, faults.FULL_DISK]


def run(setting):
    made = setting.folder / "made"
    tasks = [(job, effect) for job in jobs.make_jobs(setting.sly, made) for effect in EFFECTS]
    if not setting.short:
        big = jobs.make_jobs_for_two_threads(setting.sly, made)
        tasks += [(job, effect) for job in big for effect in WITH_TWO_THREADS]
    return faults.both_cores(
        lambda job=job, effect=effect: _case(setting, job, effect) for job, effect in tasks
    ) + [_flushed(setting, job) for job, effect in tasks if effect is FAILURE and job.replaced]


def _flushed(setting, job):
    """The new bytes must be on the disk before the old ones go, which no failing call shows: the
    program must ask for it after the last write and before the renaming."""
    home = setting.folder / "flushed"
    made = faults.calls_of(job, setting, home)
    case = Case(f"{job.name}: flushed", len(job.replaced), group="flushed before an old file goes")
    for name in job.replaced:
        temporary = str(home / jobs.temporary_path(name))
        calls = [call for call, path in made if path == temporary]
        order = [call for call in calls if call in ("pwrite", "fsync", "rename")]
        if order[-3:] != ["pwrite", "fsync", "rename"]:
            case.losses.append(f"{name} is replaced by {order}")
    return case


def _reports_lost_data(struck, home):
    """Whether the call, by failing, says that bytes written before may not have arrived; here they
    have, so that only the status can show that somebody has listened."""
    call, path = struck
    name = pathlib.Path(path)
    return (
        call in ("fsync", "fdatasync", "close")
        and name.is_relative_to(home / "files")
        and name.name.startswith(".slyver-")
        and name.suffix == ".tmp"  # Of a file that is removed by then, nothing can get lost.
    )


def _case(setting, job, effect):
    def check(home, outcome, struck):
        if effect is faults.DEAD_DISK:  # Nothing can be removed any more.
            return jobs.damage(job, home) + jobs.wrong_ending(job, home, outcome)
        lost = jobs.losses(job, home, outcome, faults.spared(struck, home))
        if _reports_lost_data(struck, home) and outcome.status == 0:
            lost.append("not noticed")
        if effect is faults.SHORT and outcome.status != 0:
            lost.append(f"fails for a short count: {outcome.err}")
        return lost

    return Case(
        f"{job.name}: {effect.name}",
        *faults.for_every_call(job, setting, effect, check),
        effect.name,
    )
