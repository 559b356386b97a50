"""The window is closed at random moments of a job that takes its time."""

import os
import pathlib
import random
import signal
import subprocess

import faults
import jobs
from jobs import Case

UNIT = 24 << 20  # Bytes
PIECE = 1_450_000
JOBS = {  # The longest time from the start of the job to the closing, in seconds.
    "split": 0.5,
    "join": 0.7,
    "hide": 4,  # Two timers of half a second and of two seconds run before the copying.
    "recover a hidden file": 0.3,
}
HERE = pathlib.Path(__file__).parent


def run(setting):
    home = setting.folder / "home"
    slow = faults.environment(setting.built, home, faults.SLOW)
    # The sanitizers want to be loaded first, but can do without.
    slow["ASAN_OPTIONS"] = "verify_asan_link_order=0:malloc_context_size=2"
    suppressions = f"suppressions={HERE.parent}/support/lsan.supp:print_suppressions=0"
    driver = subprocess.Popen(
        ["xvfb-run", "-a", "-s", "-screen 0 1280x1024x24 -noreset", HERE / "window.sh",
         setting.checked / "slyver", home, *(f"{name}={value}" for name, value in slow.items())],
        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
        env=os.environ | {"LSAN_OPTIONS": suppressions, "TMPDIR": str(setting.folder)})
    rng = random.Random(setting.seed)
    rounds = 3 if setting.short else 12
    try:
        return [_case(job, home, driver, rng, rounds)
                for job in jobs.make_jobs(UNIT, PIECE) if job.name in JOBS]
    finally:
        driver.stdin.close()
        driver.wait()


def _case(job, home, driver, rng, rounds):
    case = Case(job.name, group="closed in the middle")
    for _ in range(rounds):
        jobs.prepare(home, job.start)
        delay = rng.uniform(0, JOBS[job.name])
        driver.stdin.write(f"{job.name.split()[0]} {delay:.3f}\n")
        driver.stdin.flush()
        answer = driver.stdout.readline().strip()
        # What else lies in run/ and config/ the toolkit and the desktop's services have put there.
        found = {path: value for path, value in jobs.look(home).items()
                 if path.startswith(("files/", jobs.PRIVATE, jobs.SETTINGS))}
        found.pop(jobs.PRIVATE + "/instances", None)
        # Stopped: nothing is made. Or the job was done before.
        stopped, done = job.ways(jobs.STOPPED), job.ways(0)
        lost = [f"wrong: {path}" for path in jobs.differing(found, stopped + done)]
        lost += [] if answer == "ended 0" else [answer or "the driver gave up"]
        case.tried += not jobs.differing(found, stopped)
        case.losses += [f"{loss} (closed after {delay:.3f} s)" for loss in lost]
    return case
