"""Random jobs against a model: makes folders as people have them, runs random jobs of sly in them,
and looks whether everything is as the documents promise. A failure is printed with the smallest
steps that show it.

    python3 -X utf8 -B tests/model/run.py --sly build/sly --minutes 1
    python3 -X utf8 -B tests/model/run.py --sly build/sly --steps FILE    # printed steps, again"""

import argparse
import ast
import concurrent.futures
import os
import pathlib
import random
import shlex
import shutil
import signal
import sys
import tempfile
import time

import choices
import oracle
import shrink
import world


def work(arguments, able, first):
    """Plays every second scenario. Returns the number of jobs, and of each kind of failure the first:
    its text, seed, smallest steps, and the number of jobs until then."""
    folder = tempfile.mkdtemp(prefix="slyver-model-", dir=arguments.folder)
    until = time.monotonic() + 60 * arguments.minutes
    seed, jobs, found = arguments.seed + first, 0, {}
    try:
        while jobs < arguments.jobs / 2 and time.monotonic() < until:
            steps = choices.Chooser(random.Random(seed), able).scenario()
            count, failure = oracle.play(arguments.sly, folder, steps)
            jobs += count
            if failure and failure[0] not in found:
                kind, text, steps = failure
                same = lambda fewer: (oracle.play(arguments.sly, folder, fewer)[1] or [None])[0] == kind
                steps = shrink.smallest(steps, same)
                again = oracle.play(arguments.sly, folder, steps)[1]  # A killed job does not end alike again.
                found[kind] = again[1] if again else text, seed, steps, jobs
                if not arguments.keep_going:
                    break
            seed += 2
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    return jobs, found


def show(kind, text, steps, where):
    print(f"LOST in {' | '.join(kind)}, {where}:\n  {text}")
    for step in steps:
        *rest, last = step
        mode = step[0] == "file" or step[:2] == ("set", "umask")
        print("    (" + ", ".join([*map(repr, rest), oct(last) if mode else repr(last)]) + ")")
    if steps[-1][0] == "sly":
        print("  $", shlex.join(steps[-1]), "\n", flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--sly", type=os.path.abspath, required=True)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(10**9))
    parser.add_argument("--jobs", type=int, default=10**9)
    parser.add_argument("--minutes", type=float, default=10**6)
    parser.add_argument("--keep-going", action="store_true", help="list every kind of failure")
    parser.add_argument("--steps", type=pathlib.Path, help="do these, as a failure has printed them")
    parser.add_argument("--folder", help="for the worlds; in memory is fastest",
                        default="/dev/shm" if os.access("/dev/shm", os.W_OK) else None)
    arguments = parser.parse_args()
    if arguments.steps:
        steps = [ast.literal_eval(line.strip())
                 for line in arguments.steps.read_text().splitlines() if line.strip().startswith("(")]
        with tempfile.TemporaryDirectory(dir=arguments.folder) as folder:
            _, failure = oracle.play(arguments.sly, folder + "/home", steps)
        if failure:
            show(*failure, arguments.steps)
        return int(bool(failure))

    # A shell's background job ignores Ctrl-C, and so would all that it starts.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    able = choices.Able(root=os.geteuid() == 0, preload=os.path.exists(world.preload_of(arguments.sly)))
    if not able.preload:
        print("No library beside sly: killed jobs and network file systems are not tried.")
    print(f"Seed {arguments.seed}", flush=True)
    begun = time.monotonic()
    with concurrent.futures.ProcessPoolExecutor(2) as pool:
        runs = list(pool.map(work, [arguments] * 2, [able] * 2, range(2)))
    jobs, found = 0, {}
    for count, failures in runs:
        jobs, found = jobs + count, failures | found
    for kind, (text, seed, steps, count) in found.items():
        show(kind, text, steps, f"seed {seed}, after {count} jobs")
    minutes = (time.monotonic() - begun) / 60
    print(f"{jobs} jobs in {minutes:.1f} minutes, {len(found)} kinds of failure")
    return int(bool(found))


if __name__ == "__main__":
    sys.exit(main())
