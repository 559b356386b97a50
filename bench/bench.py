#!/usr/bin/env python3
"""Times Slyver's jobs against the usual tools: bench.py SLY FOLDER."""

import json
import mmap
import os
import re
import shlex
import shutil
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

ROUNDS = 5
MIB = 1024 * 1024
GIB = 1024 * MIB

sly, folder = (Path(argument).resolve() for argument in sys.argv[1:3])


def make_file(path, size):
    """A file of random bytes, left in the page cache."""
    with open(path, "wb") as file:
        for start in range(0, size, 16 * MIB):
            file.write(os.urandom(min(16 * MIB, size - start)))


def sh(command):
    subprocess.run(["bash", "-c", command], check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)


def peak_memory(command, out):
    """The peak resident memory of a command in KiB."""
    out.mkdir()
    with tempfile.NamedTemporaryFile("r") as report:
        sh(f"cd {shlex.quote(str(out))} && /usr/bin/time -f %M -o {report.name} "
           f"bash -c {shlex.quote(command)}")
        return int(report.read().split()[-1])


def touch_free_memory():
    """Touches the memory that is free. The host of a virtual machine takes back what has lain free,
    and giving it again would be charged to whoever runs next."""
    available = int(re.search(r"MemAvailable:\s+(\d+)", Path("/proc/meminfo").read_text())[1]) * 1024
    step = 2 * MIB
    length = (available - 3 * GIB // 2) // step * step
    if length <= 0:
        return
    with mmap.mmap(-1, length, flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS) as memory:
        memory.madvise(mmap.MADV_HUGEPAGE)
        for start in range(0, length, step):
            memory[start] = 1


class Work:
    """One job and the commands that do it, each writing into a folder OUT of its own.

    Commands are shell text without pipes where possible; OUT is where they are run."""

    def __init__(self, name, commands, bar=None):
        self.name, self.commands, self.bar = name, commands, bar


def measure(work):
    """Runs every command once a round, in turn, so that a noisy minute strikes all alike.

    Every run writes into a new folder, and old outputs go only when the work is measured: a file
    system that avoids the numbers of files deleted lately would otherwise be measured instead."""
    scratch = folder / "out"
    scratch.mkdir()
    times = {label: [] for label in work.commands}
    number = 0
    for _ in range(ROUNDS):
        for label, command in work.commands.items():
            number += 1
            out = scratch / str(number)
            out.mkdir()
            os.sync()
            touch_free_memory()
            with tempfile.NamedTemporaryFile("r") as report:
                subprocess.run(
                    ["hyperfine", "--style", "none", "--runs", "1", "--export-json", report.name,
                     f"cd {shlex.quote(str(out))} && {command}"],
                    check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                times[label].append(json.load(report)["results"][0]["times"][0])
    medians = {label: statistics.median(values) for label, values in times.items()}
    memory = {label: peak_memory(command, scratch / f"memory{i}")
              for i, (label, command) in enumerate(work.commands.items())}
    shutil.rmtree(scratch)
    return medians, memory


def report(work, medians, memory):
    ours = medians["sly"]
    for label, median in medians.items():
        ratio = "" if label == "sly" else f"{ours / median:.2f}"
        bar = f"{work.bar[1]:.2f}" if work.bar and work.bar[0] == label else ""
        print(f"| {work.name} | `{label}` | {median * 1000:.0f} ms | {ratio} | {bar} "
              f"| {memory[label] / 1024:.1f} MiB |", flush=True)


def main():
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    big, small = folder / "big.bin", folder / "small.bin"
    make_file(big, GIB)
    make_file(small, GIB // 4)
    pieces = folder / "pieces"
    pieces.mkdir()
    sh(f"{sly} split --quiet {big} --output {pieces}")
    half, directory, tiny = (folder / name for name in ("half.bin", "directory", "tiny.bin"))
    make_file(half, GIB // 2)
    make_file(directory, 2500)
    make_file(tiny, 1000)
    (folder / "password").write_text("secret\n")
    password = f"--quiet --password-file {folder}/password"
    sh(f"cd {folder} && {sly} hide {password} half.bin small.bin && "
       f"{sly} hide {password} tiny.bin small.bin")
    carrier, light = folder / "Hidden\\ File\\ half.bin", folder / "Hidden\\ File\\ tiny.bin"

    # The joined file goes beside the pieces, so every run joins from links in its own folder.
    links = f"ln -s {pieces}/*.sly ."

    print(f"{os.cpu_count()} cores, files in the page cache, medians of {ROUNDS} runs; the ratio "
          "is sly's time to the tool's.\n")
    print("| work | command | time | ratio | bar | peak memory |")
    print("|---|---|---|---|---|---|", flush=True)
    works = [
        Work("split 1 GiB into 1450000-byte pieces", {
            "sly": f"{sly} split --quiet {big} --output .",
            "split -b 1450000": f"split -b 1450000 -a 4 {big}",
        }, ("split -b 1450000", 0.60)),
        Work("join them", {
            "sly": f"{links} && {sly} join --quiet big.bin.1.sly",
            "cat": f"{links} && cat $(ls -v big.bin.*.sly) >big.bin",
            "cp (the whole file)": f"{links} && cp {big} big.bin",
        }, ("cat", 0.85)),
        Work("split 256 MiB", {"sly": f"{sly} split --quiet {small} --output ."}),
        Work("hide 256 MiB in 512 MiB", {
            "sly": f"ln -s {half} main.bin && {sly} hide {password} main.bin {small}",
            "cat": f"cat {half} {small} {directory} >carrier",
        }, ("cat", 0.90)),
        Work("hide another 256 MiB in that", {
            "sly": f"ln -s {carrier} main.bin && {sly} hide --yes {password} main.bin {small}",
            "cat": f"cat {carrier} {small} {directory} >carrier",
        }, ("cat", 0.90)),
        Work("recover 256 MiB from 768 MiB", {
            "sly": f"ln -s {carrier} carrier && {sly} recover {password} carrier",
            "tail, head": f"tail -c +{GIB // 2 + 1} {carrier} | head -c {GIB // 4} >recovered",
        }, ("tail, head", 0.90)),
        Work("recover 256 MiB from 256 MiB", {
            "sly": f"ln -s {light} carrier && {sly} recover {password} carrier",
        }),
        Work("list a carrier of 768 MiB", {"sly": f"{sly} list {password} {carrier}"}),
    ]
    results = {}
    for work in works:
        medians, memory = measure(work)
        results[work.name] = medians["sly"]
        report(work, medians, memory)
    growth = results[works[0].name] / results["split 256 MiB"]
    print(f"\nGrowth of split: 4 times the bytes take {growth:.2f} times as long (bar: 4.40).")
    weight = results["recover 256 MiB from 768 MiB"] / results["recover 256 MiB from 256 MiB"]
    print(f"Recovering the same file from a carrier 3 times as big takes {weight:.2f} times as long.")
    shutil.rmtree(folder)


main()
