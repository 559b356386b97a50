"""Every call that touches a file fails once, with each error that matters, in every job."""

import dataclasses
import errno

import faults
import jobs
from suite import Case

FULL_DISK = faults.failing_with(errno.ENOSPC, stays=True)
FAILURE = faults.failing_with(errno.EIO)
EFFECTS = [
    FAILURE,
    *map(faults.failing_with, (errno.ENOSPC, errno.EACCES, errno.EINTR, errno.EINVAL)),
    faults.SHORT,
    faults.NOTHING,
    FULL_DISK,
]
WITH_TWO_THREADS = [FAILURE, faults.SHORT, FULL_DISK]
UNIT_FOR_TWO_THREADS = 320_000  # From 1 MiB in all two threads copy.
SHORT_STEP = 4  # The short run takes every fourth call.


def run(setting):
    made = setting.folder / "made"
    tasks = [(job, effect) for job in jobs.make_jobs(setting.sly, made) for effect in EFFECTS]
    if not setting.short:
        big = jobs.make_jobs(setting.sly, made, UNIT_FOR_TWO_THREADS)
        tasks += [
            (dataclasses.replace(job, name=f"big {job.name}"), effect)
            for job in big
            for effect in WITH_TWO_THREADS
        ]
    return faults.both_cores(
        lambda job=job, effect=effect: _case(setting, job, effect) for job, effect in tasks
    )


def _case(setting, job, effect):
    def check(home, outcome, struck):
        lost = jobs.losses(job, home, outcome, faults.spared(struck, home))
        if effect is faults.SHORT and outcome.status != 0:
            lost.append(f"fails for a short count: {outcome.err}")
        return lost

    step = SHORT_STEP if setting.short else 1
    return Case(
        f"{job.name}: {effect.name}",
        *faults.for_every_call(job, setting, effect, check, step, 1 + setting.seed % step),
    )
