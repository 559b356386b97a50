"""Jobs are asked to stop, as Ctrl-C does: small ones at every call that touches a file, big ones at
random moments."""

import random
import signal
import time

import faults
import jobs
from suite import Case

UNIT = 8 << 20  # Bytes: a job takes some hundredths of a second.
PIECE = 1_450_000
SIGNALS = (signal.SIGINT, signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


def run(setting):
    folder = setting.folder / "made"
    small = jobs.make_jobs(setting.sly, folder)
    big = jobs.make_jobs(setting.sly, folder, UNIT, PIECE, setting.seed)
    rounds = 12 if setting.short else 80
    # The big ones one after the other: what is chosen is a moment in time.
    return faults.both_cores(
        lambda job=job: _at_every_call(setting, job) for job in small
    ) + [_at_random_moments(setting, job, rounds) for job in big]


def _at_every_call(setting, job):
    def check(home, outcome, _struck):
        return _losses(job, home, outcome, signal.SIGINT)

    tried, losses = faults.for_every_call(job, setting, faults.INTERRUPT, check)
    return Case(f"{job.name}: at every call", tried, losses, "stopped at every call")


def _at_random_moments(setting, job, rounds):
    rng = random.Random(f"{setting.seed} {job.name}")
    home = setting.folder / "home"
    case = Case(f"{job.name}: at random moments", group="stopped at random moments")
    jobs.prepare(job, home)
    duration = 0.5  # In seconds; the shortest time after which the job was found done.
    for _ in range(rounds):
        jobs.restore(job, home)
        wanted = rng.choice(SIGNALS)
        begun = time.monotonic()
        process = jobs.start(job, setting.sly, home)
        time.sleep(rng.uniform(0, duration))
        process.send_signal(wanted)
        outcome = jobs.finish(process)
        if outcome.status == -wanted:  # Otherwise it was done before.
            case.tried += 1
        else:
            duration = min(duration, time.monotonic() - begun)
        case.losses += _losses(job, home, outcome, wanted)
    return case


def _losses(job, home, outcome, wanted):
    """A job that stops ends by the signal, so that shells see why, and has made nothing."""
    if outcome.status != -wanted:
        return jobs.losses(job, home, outcome)
    made = [name for name, data in job.results.items() if jobs.same(home / name, data)]
    lost = jobs.damage(job, home) + jobs.leftovers(job, home)
    return lost + [f"made in spite of the stop: {name}" for name in made]
