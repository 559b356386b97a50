"""Runs sly with something happening at one of its calls, by the preload library."""

import concurrent.futures
import dataclasses
import errno
import os
import re
import signal

import jobs
import world


@dataclasses.dataclass(frozen=True)
class Effect:
    name: str  # As the table has it.
    what: str  # As the library has it.
    stays: str = ""  # Which later calls fail too: "all", "names", or the "writes" of all kinds.
    threads: bool = False  # Whether jobs that copy with two threads are tried too.


def failing_with(code, **options):
    return Effect(errno.errorcode[code], str(code), **options)


NONE = Effect("none", "")
SHORT = Effect("half the bytes", "short", threads=True)
FULL_DISK = Effect("ENOSPC from then on", str(errno.ENOSPC), "writes", threads=True)
NO_NAMES = Effect("no name from then on", str(errno.ENOSPC), "names")
DEAD_DISK = Effect("EIO from then on", str(errno.EIO), "all")
KILL = Effect("killed, and run again", f"signal {signal.SIGKILL}", threads=True)
STOP = Effect("stopped", f"signal {signal.SIGINT}", threads=True)
PAUSE = Effect("a source changes", f"signal {signal.SIGSTOP}", threads=True)


def run(job, setting, home, at, effect, meanwhile=lambda: None):
    """Runs the job with something happening to call number `at` (from 1); 0 for none. When it has
    been paused, `meanwhile` is called. Returns its outcome and what was reported of the calls: for
    each a name, a path and what was asked for."""
    report = home.with_suffix(".report")
    report.unlink(missing_ok=True)
    variables = world.faults(setting.sly, home, effect=effect.what, at=at, stays=effect.stays,
                             report=report, disk=job.disk)
    process = world.start(setting.sly, job.arguments, str(home), variables)
    if effect is PAUSE:
        while os.waitid(os.P_PID, process.pid, os.WEXITED | os.WSTOPPED | os.WNOWAIT).si_code \
                == os.CLD_STOPPED:
            os.waitid(os.P_PID, process.pid, os.WSTOPPED)
            meanwhile()
            process.send_signal(signal.SIGCONT)
    outcome = world.finish(process)
    lines = report.read_text().splitlines() if report.exists() else []
    return outcome, [line.split("\t")[1:] for line in lines]


def is_nameless(path):
    """Whether the library, where it reports this path, speaks of a file that has no name yet."""
    return re.search(r"#\d+ \(deleted\)$", path) is not None


def calls_of(job, setting, home):
    """The calls that the job makes undisturbed, in their order."""
    jobs.prepare(home, job.start)
    return run(job, setting, home, 0, NONE)[1]


def numbers(job, setting, home):
    """The numbers of the calls to strike, to the first that the job does not come to. In the short
    run every eighth, and the last one of each name, so that none is left out because it is rare."""
    if not setting.short:
        yield from range(1, 10**6)
    calls = calls_of(job, setting, home)
    last = {call[0]: number for number, call in enumerate(calls, 1)}
    every_eighth = range(1 + setting.seed % 8, len(calls) + 1, 8)
    yield from sorted({*every_eighth, *last.values()})
    yield 10**6


def both_cores(function, tasks):
    """Calls the function for all tasks, two at a time; the results in order."""
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        return list(pool.map(lambda task: function(*task), tasks))
