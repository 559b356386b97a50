"""Runs the suites and prints a table of what was tried, how often, and what was lost."""

import argparse
import collections
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
    parser.add_argument("--short", action="store_true", help="the part that takes a few minutes")
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(10**6))
    parser.add_argument("--sly", type=os.path.abspath, required=True, help="of the faults build")
    # Without a suite the list is empty, which must be a choice too.
    parser.add_argument("suites", nargs="*", metavar="SUITE", choices=[*SUITES, []])
    arguments = parser.parse_args()

    suites = {name: importlib.import_module(name) for name in arguments.suites or SUITES}
    print(f"Seed {arguments.seed}", flush=True)
    scratch = pathlib.Path(tempfile.mkdtemp(prefix="slyver-reliability-"))
    os.umask(0o022)
    # A shell's background job ignores Ctrl-C, and so would all that it starts.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    setting = lambda name: Setting(arguments.sly, scratch / name, arguments.short, arguments.seed)
    try:
        found = {name: run_suite(name, suite, setting(name)) for name, suite in suites.items()}
    finally:
        shutil.rmtree(scratch, ignore_errors=True)

    rows = collections.defaultdict(collections.Counter)
    for name, cases in found.items():
        for case in cases:
            counts = {"cases": 1, "tried": case.tried, "losses": len(case.losses), "failed": bool(case.losses)}
            rows[name, case.group or case.name].update(counts)
    rows["all", ""] = total = sum(rows.values(), collections.Counter())
    print("\n| suite | what | cases | tried | losses |\n|---|---|---|---|---|")
    for names, row in rows.items():
        print("|", " | ".join([*names, *[str(row[each]) for each in ("cases", "tried", "losses")]]), "|")
    failed, passed = total["failed"], total["cases"] - total["failed"]
    print(f"\n{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
