"""Runs the suites and prints a table of what was tried, how often, and what was lost."""

import argparse
import importlib
import os
import pathlib
import random
import shutil
import signal
import sys
import tempfile
import time
import traceback

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "model"))

from jobs import Case, Setting

# Each module has run(setting), which returns its cases.
SUITES = ["calls", "crashes", "traps", "load"]


def run_suite(name, suite, setting):
    """The cases of a suite, whose losses are printed."""
    begun = time.monotonic()
    setting.folder.mkdir()
    try:
        cases = suite.run(setting)
    except Exception:  # What a suite did not foresee is a loss too, not the end of the run.
        cases = [Case("the whole suite", losses=[traceback.format_exc()])]
    shutil.rmtree(setting.folder, ignore_errors=True)
    for case in cases:
        for loss in case.losses[:5]:
            print(f"LOST in {name}, {case.name}: {loss}", flush=True)
    print(f"{name}: {time.monotonic() - begun:.0f} s", flush=True)
    return cases


def main():
    parser = argparse.ArgumentParser()
    folder_of = lambda text: pathlib.Path(text).resolve()
    parser.add_argument("--short", action="store_true", help="the part that takes a few minutes")
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(10**6))
    parser.add_argument("--built", type=folder_of, required=True, help="the release build")
    # Without a suite the list is empty, which must be a choice too.
    parser.add_argument("suites", nargs="*", metavar="SUITE", choices=[*SUITES, []])
    arguments = parser.parse_args()

    suites = {name: importlib.import_module(name) for name in arguments.suites or SUITES}
    print(f"Seed {arguments.seed}", flush=True)
    scratch = pathlib.Path(tempfile.mkdtemp(prefix="slyver-reliability-"))
    os.umask(0o022)
    # A shell's background job ignores Ctrl-C, and so would all that it starts.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    setting = lambda name: Setting(arguments.built, scratch / name, arguments.short, arguments.seed)
    try:
        found = {name: run_suite(name, suite, setting(name)) for name, suite in suites.items()}
    finally:
        shutil.rmtree(scratch, ignore_errors=True)

    rows = {}  # (suite, group): cases, tried, losses
    for name in suites:
        for case in found[name]:
            row = rows.setdefault((name, case.group or case.name), [0, 0, 0])
            row[:] = row[0] + 1, row[1] + case.tried, row[2] + len(case.losses)
    failed = sum(bool(case.losses) for cases in found.values() for case in cases)
    passed = sum(map(len, found.values())) - failed
    print("\n| suite | what | cases | tried | losses |\n|---|---|---|---|---|")
    for (name, what), row in rows.items():
        print(f"| {name} | {what} |", " | ".join(map(str, row)), "|")
    totals = [sum(column) for column in zip(*rows.values())]
    print("| all | |", " | ".join(map(str, totals)), "|")
    print(f"\n{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
