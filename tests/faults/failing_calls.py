"""Every call that touches a file fails once, with each error that matters, in every job."""

import errno

import faults
import jobs
from suite import Case

ONCE = [
    *map(faults.failing_with, (errno.EIO, errno.ENOSPC, errno.EACCES, errno.EINTR, errno.EINVAL)),
    faults.SHORT,
    faults.NOTHING,
    faults.failing_with(errno.ENOSPC, stays=True),
]
SHORT_STEP = 4  # The short run takes every fourth call.
TWO_THREADS = 600_000  # A unit from which two threads copy.


def run(setting):
    sizes = [1000] if setting.short else [1000, TWO_THREADS]
    all_jobs = [
        job for unit in sizes for job in jobs.make_jobs(setting.sly, setting.folder / "made", unit)
    ]
    return faults.both_cores(
        lambda effect=effect, name=name: _case(setting, effect, name, all_jobs)
        for name in dict.fromkeys(job.name for job in all_jobs)
        for effect in ONCE
    )


def _case(setting, effect, name, all_jobs):
    def check(home, outcome, struck):
        lost = jobs.losses(job, home, outcome, faults.spared(struck, home))
        if effect is faults.SHORT and outcome.status != 0:
            lost.append(f"fails for a short count: {outcome.err}")
        return lost

    case = Case(f"{name}: {effect.name}")
    step = SHORT_STEP if setting.short else 1
    for job in all_jobs:
        if job.name == name:
            first = 1 + setting.seed % step
            tried, losses = faults.for_every_call(job, setting, effect, check, step, first)
            case.tried += tried
            case.losses += losses
    return case
