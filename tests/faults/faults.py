"""Runs a job with one of its calls failing, by the preload library."""

import concurrent.futures
import dataclasses
import errno
import itertools
import pathlib

import jobs

LIBRARY = "libslyver_faults.so"
REMOVALS = {"unlink", "unlinkat", "rmdir", "remove"}


@dataclasses.dataclass(frozen=True)
class Effect:
    name: str  # As the table has it.
    what: str  # As the library has it.
    stays: str = ""  # Which later calls fail too: "all", or the "writes" of all kinds.


def failing_with(code):
    return Effect(errno.errorcode[code], str(code))


NONE = Effect("none", "")
INTERRUPT = Effect("SIGINT", "interrupt")
KILL = Effect("SIGKILL", "kill")
SHORT = Effect("half the bytes", "short")
NOTHING = Effect("no bytes", "nothing")
SLOW = Effect("slow", "slow")
FULL_DISK = Effect("ENOSPC from then on", str(errno.ENOSPC), "writes")
DEAD_DISK = Effect("EIO from then on", str(errno.EIO), "all")


def environment(setting, home, effect, at=0):
    """The variables for the preload library."""
    return {
        "LD_PRELOAD": str(setting.built / LIBRARY),
        "SLYVER_FAULT_ROOT": str(home),
        "SLYVER_FAULT_AT": str(at),
        "SLYVER_FAULT": effect.what,
        "SLYVER_FAULT_STAYS": effect.stays,
    }


def run(job, setting, home, at, effect, report=None):
    """Runs the job with call number `at` (from 1) failing. Returns its outcome, and the name and
    the path of the call that failed; None when the job makes fewer calls. `report` is the file that
    the library tells of the call."""
    report = report or home.with_suffix(".report")
    report.unlink(missing_ok=True)
    variables = environment(setting, home, effect, at) | {"SLYVER_FAULT_REPORT": str(report)}
    outcome = jobs.run(job, setting.sly, home, variables)
    if at == 0 or not report.exists():
        return outcome, None
    _, call, path = report.read_text().rstrip("\n").split(" ", 2)
    return outcome, (call, path)


def spared(struck, home):
    """What may be left when its removal was what failed: it, and the folders it lies in."""
    call, path = struck
    if call not in REMOVALS:
        return set()
    relative = pathlib.PurePath(path).relative_to(home)
    return {str(relative), *map(str, relative.parents)}


def for_every_call(job, setting, effect, check):
    """Runs the job with its call number 1, 2, 3 ... failing until it runs clean; in the short run
    with some of them. `check` is given the home, the outcome and the call, and returns the losses.
    Returns the number of runs in which a call failed, and all losses."""
    home = setting.folder / f"{job.name}-{effect.name}".replace(" ", "-")
    found = []
    numbers = _some_numbers(job, setting, home) if setting.short else itertools.count(1)
    for tried, at in enumerate(numbers):
        jobs.prepare(job, home)
        outcome, struck = run(job, setting, home, at, effect)
        if struck is None:
            lost = jobs.losses(job, home, outcome)
            if outcome.status != 0:
                lost.append(f"fails undisturbed: {outcome.err}")
        else:
            lost = check(home, outcome, struck)
        label = f"call {at}, {struck[0]} {struck[1]}" if struck else "undisturbed"
        found += [f"{loss} ({label})" for loss in lost]
        if struck is None:
            return tried, found
    raise AssertionError("the job makes calls without end")


def calls_of(job, setting, home):
    """The calls that the job makes undisturbed, in their order: pairs of name and path."""
    jobs.prepare(job, home)
    report = home.with_suffix(".calls")
    run(job, setting, home, 0, NONE, report)
    return [line.split(" ", 2)[1:] for line in report.read_text().splitlines()]


def _some_numbers(job, setting, home):
    """Every fourth call, and the last one of each name, so that none is left out because it is
    rare; then one that no job comes to."""
    names = [name for name, _ in calls_of(job, setting, home)]
    last = {name: number for number, name in enumerate(names, 1)}
    every_fourth = range(1 + setting.seed % 4, len(names) + 1, 4)
    return sorted({*every_fourth, *last.values()}) + [10**6]


def both_cores(tasks):
    """Runs the functions, two at a time; their results in order."""
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        return [future.result() for future in [pool.submit(task) for task in tasks]]
