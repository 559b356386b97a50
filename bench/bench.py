#!/usr/bin/env python3
"""Times Slyver's jobs against the usual tools: bench.py SLY FOLDER [PART...]."""

import contextlib
import os
import resource
import shlex
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROUNDS = 5
SMALL_ROUNDS = 25  # What takes milliseconds is more easily disturbed.
KIB = 1024
MIB = 1024 * KIB
GIB = 1024 * MIB
SIZES = {"1 KiB": KIB, "100 KiB": 100 * KIB, "10 MiB": 10 * MIB, "1 GiB": GIB}
MOST_PIECES = 32767
CLONE = "cp --reflink"
# How each is made in a file of 16 GiB; a tmpfs needs none.
FILE_SYSTEMS = {"ext4": "mkfs.ext4 -q -F -m 0", "XFS": "mkfs.xfs -q", "Btrfs": "mkfs.btrfs -q",
                "tmpfs": None}

sly, folder = (Path(argument).resolve() for argument in sys.argv[1:3])


def make_file(path, size):
    """A file of random bytes, left in the page cache."""
    with open(path, "wb") as file:
        for start in range(0, size, 16 * MIB):
            file.write(os.urandom(min(16 * MIB, size - start)))


def sh(command):
    subprocess.run(["sh", "-c", command], check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)


def processor_time():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


@contextlib.contextmanager
def new_folder(out):
    out.mkdir()
    try:
        yield f"cd {shlex.quote(str(out))} && "
    finally:
        shutil.rmtree(out)


def times_of(command, out):
    """How long a command takes in a new folder, and the processors' time that it takes, in seconds,
    those of the shell included."""
    with new_folder(out) as there:
        begun, used = time.perf_counter(), processor_time()
        sh(there + command)
        return time.perf_counter() - begun, processor_time() - used


def peak_memory(command, out):
    """The peak resident memory of a command in KiB."""
    with new_folder(out) as there, tempfile.NamedTemporaryFile("r") as report:
        sh(f"{there} /usr/bin/time -f %M -o {report.name} sh -c {shlex.quote(command)}")
        return int(report.read().split()[-1])


def space_used(place):
    sh(f"sync -f {place}")
    found = os.statvfs(place)
    return (found.f_blocks - found.f_bfree) * found.f_frsize


def space_of(command, out):
    """The space in bytes that a command's output takes."""
    with new_folder(out) as there:
        before = space_used(out)
        sh(there + command)
        return max(0, space_used(out) - before)


class Work:
    """One job and the commands that do it, by their labels, "sly" first. Each is run in an empty
    folder of its own; `bar` is a label and the share of its time that sly may take."""

    def __init__(self, name, commands, bar=None):
        self.name, self.commands, self.bar = name, commands, bar


def measure(work, place, forget=None, rounds=ROUNDS):
    """Runs every command once a round, in turn, so that a noisy minute strikes all alike. Returns the
    median times and processor times, less the shell's, and the space taken.

    Just before each run `forget` is called; without it the command is run once unmeasured, so that
    it finds its files in the page cache and its memory at hand: the host of a virtual machine takes
    back what has lain free, and giving it again would be charged to whoever runs next."""
    scratch = place / "out"
    times = {label: [] for label in [*work.commands, "shell"]}
    space = {label: space_of(command, scratch) for label, command in work.commands.items()}
    for _ in range(rounds):
        for label, command in {**work.commands, "shell": "true"}.items():
            if forget:
                forget()
            else:
                times_of(command, scratch)
            times[label].append(times_of(command, scratch))
    medians, used = ({label: statistics.median(each[i] for each in values)
                      for label, values in times.items()} for i in (0, 1))
    for each in (medians, used):
        shell = each.pop("shell")
        each.update({label: max(0.0001, median - shell) for label, median in each.items()})
    return medians, used, space


def memory_of(work, place):
    return {label: peak_memory(command, place / "out") for label, command in work.commands.items()}


def milliseconds(seconds):
    return f"{seconds * 1000:.1f} ms" if seconds < 0.0995 else f"{seconds * 1000:.0f} ms"


def report(work, medians, memory):
    ours = medians["sly"]
    for label, median in medians.items():
        ratio = "" if label == "sly" else f"{ours / median:.2f}"
        bar = f"{work.bar[1]:.2f}" if work.bar and work.bar[0] == label else ""
        print(f"| {work.name} | `{label}` | {milliseconds(median)} | {ratio} | {bar} "
              f"| {memory[label] / KIB:.1f} MiB |", flush=True)


def big_works():
    """The jobs with big files on FOLDER's file system."""
    big, small = folder / "big.bin", folder / "small.bin"
    make_file(big, GIB)
    make_file(small, GIB // 4)
    pieces = folder / "pieces"
    shutil.rmtree(pieces, ignore_errors=True)
    pieces.mkdir()
    sh(f"{sly} split --quiet {big} --output {pieces}")
    half, directory, tiny = (folder / name for name in ("half.bin", "directory", "tiny.bin"))
    make_file(half, GIB // 2)
    make_file(directory, 2500)
    make_file(tiny, 1000)
    (folder / "password").write_text("secret\n")
    password = f"--quiet --password-file {folder}/password"
    sh(f"cd {folder} && rm -f Hidden* && {sly} hide {password} half.bin small.bin && "
       f"{sly} hide {password} tiny.bin small.bin")
    carrier, light = folder / "Hidden\\ File\\ half.bin", folder / "Hidden\\ File\\ tiny.bin"

    # The joined file goes beside the pieces, so every run joins from links in its own folder.
    links = f"ln -s {pieces}/*.sly ."
    return [
        Work("split 1 GiB into 1450000-byte pieces", {
            "sly": f"{sly} split --quiet {big} --output .",
            "split -b 1450000": f"split -b 1450000 -a 4 {big}",
        }, ("split -b 1450000", 0.35)),
        Work("join them", {
            "sly": f"{links} && {sly} join --quiet big.bin.1.sly",
            "cat": f"{links} && cat $(ls -v big.bin.*.sly) >big.bin",
            "cp (the whole file)": f"{links} && cp {big} big.bin",
        }, ("cat", 0.60)),
        Work("split 256 MiB", {"sly": f"{sly} split --quiet {small} --output ."}),
        Work("hide 256 MiB in 512 MiB", {
            "sly": f"ln -s {half} main.bin && {sly} hide {password} main.bin {small}",
            "cat": f"cat {half} {small} {directory} >carrier",
        }, ("cat", 0.50)),
        Work("hide another 256 MiB in that", {
            "sly": f"ln -s {carrier} main.bin && {sly} hide --yes {password} main.bin {small}",
            "cat": f"cat {carrier} {small} {directory} >carrier",
        }, ("cat", 0.50)),
        Work("recover 256 MiB from 768 MiB", {
            "sly": f"ln -s {carrier} carrier && {sly} recover {password} carrier",
            "tail, head": f"tail -c +{GIB // 2 + 1} {carrier} | head -c {GIB // 4} >recovered",
        }, ("tail, head", 0.20)),
        Work("recover 256 MiB from 256 MiB", {
            "sly": f"ln -s {light} carrier && {sly} recover {password} carrier",
        }),
        Work("list a carrier of 768 MiB", {"sly": f"{sly} list {password} {carrier}"}),
    ]


BIG_HEAD = "| work | command | time | ratio | bar | peak memory |\n|---|---|---|---|---|---|"


def forget_sources():
    """Takes the files that are read, and no others, out of the page cache."""
    for path in [*folder.glob("*"), *folder.glob("pieces/*")]:
        if path.is_file():
            with path.open("rb") as file:
                os.fsync(file.fileno())
                os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)


def on_the_disk():
    """The big jobs with files in the page cache."""
    print(f"Files in the page cache:\n\n{BIG_HEAD}", flush=True)
    results = {}
    works = big_works()
    for work in works:
        medians, *_ = measure(work, folder)
        results[work.name] = medians["sly"]
        report(work, medians, memory_of(work, folder))
    growth = results[works[0].name] / results["split 256 MiB"]
    print(f"\nGrowth of split: 4 times the bytes take {growth:.2f} times as long (bar: 4.40).")
    weight = results["recover 256 MiB from 768 MiB"] / results["recover 256 MiB from 256 MiB"]
    print(f"Recovering the same file from a carrier 3 times as big takes {weight:.2f} times as long.")


def from_the_disk():
    """Those big jobs that tools do too, with files that are not in the page cache."""
    print(f"\nFiles on the disk, not in the page cache:\n\n{BIG_HEAD}", flush=True)
    for work in [work for work in big_works() if len(work.commands) > 1]:
        work.bar = None
        medians, *_ = measure(work, folder, forget_sources)
        report(work, medians, memory_of(work, folder))


@contextlib.contextmanager
def mounted(name):
    """A folder with a new file system of this kind."""
    place, image = folder / name, folder / f"{name}.image"
    place.mkdir()
    if FILE_SYSTEMS[name] is None:
        sh(f"mount -t tmpfs -o size=90% tmpfs {place}")
    else:
        sh(f"truncate -s 16G {image} && {FILE_SYSTEMS[name]} {image} && mount -o loop {image} {place}")
    try:
        yield place
    finally:
        sh(f"umount {place}")
        image.unlink(missing_ok=True)


def works_with(place, size, piece):
    """The four jobs with a main file of this size, a piece size, and a hidden file of 1 MiB at
    most."""
    main, hidden, directory = (place / name for name in ("main", "hidden", "directory"))
    make_file(main, size)
    make_file(hidden, min(size, MIB))
    make_file(directory, 2500)
    pieces = place / "pieces"
    pieces.mkdir()
    (place / "password").write_text("secret\n")
    password = f"--quiet --password-file {place}/password"
    sh(f"{sly} split --quiet {main} --size {piece} --output {pieces}")
    sh(f"cd {place} && {sly} hide {password} main hidden")
    clone = f"cp --reflink=always {main} copy"
    carrier = place / "Hidden\\ File\\ main"
    names = "$(ls -v main.*.sly)"
    yield Work("split", {
        "sly": f"{sly} split --quiet {main} --size {piece} --output .",
        "split -b": f"split -b {piece} -a 4 {main}", CLONE: clone})
    yield Work("join", {
        "sly": f"{sly} join --quiet {pieces}/main.1.sly --output .",
        "cat": f"cd {pieces} && cat {names} >$OLDPWD/main", CLONE: clone})
    yield Work("hide", {
        "sly": f"{sly} hide {password} {main} {hidden} --output .",
        "cat": f"cat {main} {hidden} {directory} >carrier", CLONE: clone})
    yield Work("recover main", {
        "sly": f"{sly} recover {password} --main {carrier} --output .",
        "head": f"head -c {size} {carrier} >recovered", CLONE: clone})


def row(name, size, work, medians, used, space):
    """Prints how sly did beside the tool and beside a clone of the main file, and what is missed:
    sly may take a tenth or 3 ms longer than the tool, and 20 ms and 8 MiB more than the clone."""
    ours, label = medians["sly"], list(medians)[1]
    misses = ["time"] if ours > max(1.1 * medians[label], medians[label] + 0.003) else []
    clone = medians.get(CLONE)
    if clone is not None and size == "1 GiB":
        misses += ["clone"] if ours > clone + 0.02 else []
        misses += ["space"] if space["sly"] > 8 * MIB else []
    print(f"| {name} | {size} | {work.name} | {milliseconds(ours)} | `{label}`: "
          f"{milliseconds(medians[label])} | {ours / medians[label]:.2f} | "
          f"{milliseconds(used['sly'])} : {milliseconds(used[label])} | "
          f"{'' if clone is None else milliseconds(clone)} | {space['sly'] / MIB:.1f} MiB | "
          f"{space[label] / MIB:.1f} MiB | {', '.join(misses)} |", flush=True)


def on_file_system(name):
    """The jobs with files of all sizes, and with as many pieces as there may be, on a new file
    system."""
    if os.geteuid() != 0:
        print(f"\nNot root: nothing is measured on {name}.")
        return
    print("\n| file system | size | work | sly | tool | ratio | processors | cp --reflink "
          "| sly's space | tool's space | missed |\n|---|---|---|---|---|---|---|---|---|---|---|",
          flush=True)
    cases = {size: (length, -(-length // 16)) for size, length in SIZES.items()}
    cases[f"{MOST_PIECES} pieces"] = (MOST_PIECES * 4096, 4096)
    for size, (length, piece) in cases.items():
        with mounted(name) as place:
            for work in works_with(place, length, piece):
                if subprocess.run(["cp", "--reflink=always", place / "main", place / "copy"],
                                  stderr=subprocess.DEVNULL).returncode != 0:
                    del work.commands[CLONE]
                rounds = ROUNDS if length > 10 * MIB else SMALL_ROUNDS
                row(name, size, work, *measure(work, place, rounds=rounds))
        (folder / name).rmdir()


PARTS = {"disk": on_the_disk, "cold": from_the_disk}


def main():
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    print(f"{os.cpu_count()} cores, load {os.getloadavg()[0]:.1f}, medians of {ROUNDS} runs, "
          f"of {SMALL_ROUNDS} with files of up to 10 MiB; the ratio is sly's time to the tool's.\n")
    # Whoever logs in gets such a folder in memory; sly keeps its small work files there.
    with tempfile.TemporaryDirectory(dir="/dev/shm") as runtime:
        os.environ.setdefault("XDG_RUNTIME_DIR", runtime)
        for part in sys.argv[3:] or [*PARTS, *FILE_SYSTEMS]:
            if part in PARTS:
                PARTS[part]()
            else:
                on_file_system(part)
    shutil.rmtree(folder)


main()
