"""The window is closed at random moments of a job that takes its time."""

import os
import pathlib
import random
import subprocess

import faults
import jobs
from suite import Case

UNIT = 24 << 20  # Bytes
PIECE = 1_450_000
JOBS = {  # The longest time from the start of the job to the closing, in seconds.
    "split": 0.5,
    "join": 0.7,
    "hide": 4,  # Two timers of half a second and of two seconds run before the copying.
    "recover": 0.3,
}
# What the window and its toolkit keep in folders of the user's.
KEPT = {"run/slyver/instances", "config/gtk-3.0", "run/dconf", "run/dconf/user"}
HERE = pathlib.Path(__file__).parent


def run(setting):
    made = {
        job.name.split()[0]: job
        for job in reversed(jobs.make_jobs(setting.sly, setting.folder / "made", UNIT, PIECE))
        if job.name != "hide another"
    }
    home = setting.folder / "home"
    slow = faults.environment(setting, home, faults.SLOW)
    # The sanitizers want to be loaded first, but can do without.
    slow["ASAN_OPTIONS"] = "verify_asan_link_order=0"
    driver = subprocess.Popen(
        ["xvfb-run", "-a", "-s", "-screen 0 1280x1024x24 -noreset"]
        + [str(HERE / "window.sh"), str(setting.checked / "slyver"), str(home)]
        + [f"{name}={value}" for name, value in slow.items()],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        text=True,
        env=os.environ
        | {
            "LSAN_OPTIONS": f"suppressions={HERE.parent}/support/lsan.supp:print_suppressions=0",
            "TMPDIR": str(setting.folder),
        },
    )
    rng = random.Random(setting.seed)
    rounds = 3 if setting.short else 12
    try:
        return [_case(made[name], name, home, driver, rng, rounds) for name in JOBS]
    finally:
        driver.stdin.close()
        driver.wait()


def _case(job, name, home, driver, rng, rounds):
    case = Case(job.name, group="closed in the middle")
    jobs.prepare(job, home)
    for _ in range(rounds):
        jobs.restore(job, home)
        closing, delay = rng.choice(("click", "key")), rng.uniform(0, JOBS[name])
        driver.stdin.write(f"{name} {closing} {delay:.3f}\n")
        driver.stdin.flush()
        answer = driver.stdout.readline().strip()
        lost = jobs.damage(job, home) + jobs.leftovers(job, home, KEPT)
        made = [path for path, data in job.results.items() if jobs.same(home / path, data)]
        if made and not jobs.complete(job, home):
            lost.append("a part of the results stays")
        if answer != "ended 0":
            lost.append(answer or "the driver gave up")
        case.tried += not made
        case.losses += [f"{loss} (closed by {closing} after {delay:.3f} s)" for loss in lost]
    return case
