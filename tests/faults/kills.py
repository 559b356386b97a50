"""Every job is killed at every call that touches a file, and then run again."""

import os

import faults
import jobs
from suite import Case


def run(setting):
    made = setting.folder / "made"
    all_jobs = jobs.make_jobs(setting.sly, made)
    if not setting.short:
        all_jobs += jobs.make_jobs_for_two_threads(setting.sly, made)
    return faults.both_cores(lambda job=job: _case(setting, job) for job in all_jobs)


def _case(setting, job):
    def check(home, outcome, _struck):
        lost = jobs.damage(job, home)
        if outcome.status != -9:
            lost.append(f"not killed, but ended with {outcome.status}")
        return lost + _again(job, setting, home)

    return Case(
        job.name,
        *faults.for_every_call(job, setting, faults.KILL, check),
        "killed, and run again",
    )


def _again(job, setting, home):
    """The same job must succeed and leave nothing behind of either run. Where the killed run had
    its results complete, they are taken away first: a job does not write over them."""
    if jobs.complete(job, home):
        for name in job.results:
            os.unlink(home / name)
    outcome = jobs.run(job, setting.sly, home)
    lost = jobs.losses(job, home, outcome)
    if outcome.status != 0:
        lost.append(f"fails when run again: {outcome.err}")
    return [f"{loss}, after a second run" for loss in lost]
