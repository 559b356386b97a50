"""Two at once: two jobs on the same files and in the same folder, the second at a random moment of
the first. Each ends right or says why not, and no file is a mixture."""

import dataclasses
import os
import random
import shutil
import signal
import time

import carriers
import jobs
from suite import Case

PASSWORD = b"geheim"
MIB = 1 << 20
WITH_PASSWORD = ("--password-file", "password")


@dataclasses.dataclass(frozen=True)
class Race:
    name: str
    contents: dict  # Files at the start, below files/.
    commands: tuple  # The two commands.
    # ways(first done, second done) gives all that may lie there at the end: each way maps names to
    # bytes, and what it does not name is absent.
    ways: callable
    stop: bool = False  # Whether one of the two is stopped by Ctrl-C.
    own_private: bool = False  # Whether each has a private folder of its own.


def run(setting):
    rng = random.Random(setting.seed)
    folder = setting.folder / "home"
    return [try_race(race, setting, folder, rng) for race in make_races(rng)]


def try_race(race, setting, home, rng):
    case = Case(race.name)
    files = home / "files"
    budget = time.monotonic() + (2 if setting.short else 12)
    duration = 0.05
    while time.monotonic() < budget:
        case.tried += 1
        if home.exists():
            shutil.rmtree(home)
        for private in ("run", "run2"):
            (home / private).mkdir(parents=True, mode=0o700)
        for name, data in race.contents.items():
            (files / name).parent.mkdir(parents=True, exist_ok=True)
            (files / name).write_bytes(data)
        delay = rng.choice((0, rng.uniform(0, duration)))
        stop = (rng.randrange(2), rng.uniform(0, duration)) if race.stop else None
        begun = time.monotonic()
        processes = [start(setting.sly, home, race, 0)]
        time.sleep(delay)
        processes.append(start(setting.sly, home, race, 1))
        if stop:
            time.sleep(stop[1])
            processes[stop[0]].send_signal(signal.SIGINT)
        outcomes = [jobs.finish(process) for process in processes]
        duration = 0.9 * duration + 0.1 * (time.monotonic() - begun)
        case.losses += [
            f"try {case.tried}: {text}" for text in losses(race, outcomes, files, home)
        ]
    return case


def start(sly, home, race, index):
    own = {"XDG_RUNTIME_DIR": str(home / "run2")} if race.own_private and index else {}
    return jobs.start(jobs.Job(race.name, race.commands[index], race.contents), sly, home, own)


def losses(race, outcomes, files, home):
    # -2: the signal came before the job began, or after it had ended.
    allowed = (0, 1, 130, -2) if race.stop else (0, 1)
    for outcome in outcomes:
        if outcome.status not in allowed:
            yield f"ended with {outcome.status}: {outcome.err[:500]}"
        if outcome.status == 1 and not outcome.err.strip():
            yield "status 1 without a message"
    if not race.stop and all(outcome.status != 0 for outcome in outcomes):
        yield f"neither has ended well: {[outcome.err[-200:] for outcome in outcomes]}"
    found = {
        os.path.relpath(os.path.join(folder, name), files): None
        for folder, folders, names in os.walk(files)
        for name in [*names, *(name for name in folders if name.lower() == "temprrr")]
    }
    for name in found:
        if os.path.isfile(files / name):
            found[name] = (files / name).read_bytes()
    ways = race.ways(*(outcome.status == 0 for outcome in outcomes))
    if not any(found == way for way in ways):
        nearest = min(ways, key=lambda way: len(differing(found, way)), default={})
        yield (f"statuses {[outcome.status for outcome in outcomes]}, said "
               f"{[outcome.err[-200:] for outcome in outcomes]}; wrong: {differing(found, nearest)}")
    for private in ("run", "run2"):
        left = [path.name for path in home.joinpath(private).rglob("*") if path.name != "slyver"]
        if left:
            yield f"left in the private folder: {left}"


def differing(found, way):
    return sorted(name for name in found.keys() | way.keys() if found.get(name) != way.get(name))


def make_races(rng):
    """The races. Where more than one way is given, each is a right ending."""
    old, new = rng.randbytes(6 * MIB), rng.randbytes(6 * MIB)
    longer = new + rng.randbytes(2 * MIB)

    def cut(data, size, folder=""):
        return {
            f"{folder}w.{i + 1}.sly": data[i * size : (i + 1) * size]
            for i in range((len(data) + size - 1) // size)
        }

    fine, coarse = 150_000, 400_000
    source = {"w": old}
    pieces = cut(old, fine)

    def split_ways(first, second):
        def ways(first_done, second_done):
            if first_done and second_done:
                return []
            return [source | (first if first_done else second if second_done else {})]

        return ways

    yield Race("the same split twice", source,
               (("split", "w", "--size", f"{fine}"),) * 2, split_ways(pieces, pieces))
    yield Race("two splits into pieces of two sizes", source,
               (("split", "w", "--size", f"{fine}"), ("split", "w", "--size", f"{coarse}")),
               split_ways(pieces, cut(old, coarse)))
    yield Race("two splits, one of them stopped", source,
               (("split", "w", "--size", f"{fine}"), ("split", "w", "--size", f"{coarse}")),
               split_ways(pieces, cut(old, coarse)), stop=True)

    two = {"a/w": old, "b/w": new}
    in_out = [cut(data, fine, "out/") for data in (old, new)]

    def one_of_two(first_done, second_done):
        return [two | made for made, done in zip(in_out, (first_done, second_done)) if done] or [two]

    yield Race("two files of one name split into one folder", two,
               tuple(("split", f"{name}/w", "--size", f"{fine}", "--output", "out", "--yes")
                     for name in "ab"), one_of_two)

    yield Race("the same join twice", pieces, (("join", "w.1.sly"), ("join", "w.2.sly")),
               lambda *done: [pieces | ({"w": old} if any(done) else {})])
    over = pieces | {"w": new}
    yield Race("the same join twice over a file", over, (("join", "w.1.sly", "--yes"),) * 2,
               lambda *done: [pieces | {"w": old if any(done) else new}])

    renewed = {"new/w": new} | pieces
    from_new = {"new/w": new} | cut(new, fine)
    yield Race("a split that replaces pieces, and their join", renewed,
               (("split", "new/w", "--size", f"{fine}", "--output", "."), ("join", "w.1.sly")),
               lambda split, join: [
                   (from_new if split else renewed) | ({"w": made} if join else {})
                   for made in (old, new)])
    yield Race("a split of a file that a join replaces", cut(longer, fine, "in/") | {"in/w": old},
               (("split", "in/w", "--size", f"{fine}", "--output", "out", "--yes"),
                ("join", "in/w.1.sly", "--yes")),
               lambda split, join: [
                   cut(longer, fine, "in/") | {"in/w": longer if join else old} | out
                   for out in ([cut(old, fine, "out/"), cut(longer, fine, "out/")] if split
                               else [{}])])

    main, hidden, other = rng.randbytes(2 * MIB), rng.randbytes(3 * MIB), rng.randbytes(3 * MIB)
    password = {"password": PASSWORD + b"\n"}
    base = password | {"m.png": main, "h.zip": hidden, "o.zip": other, "n.png": hidden}
    carrier = lambda name, *files: carriers.carrier_of(
        name, main if name == b"m.png" else hidden, files, PASSWORD)
    hide = lambda name, what: ("hide", name, what, *WITH_PASSWORD, "--yes")
    both = (carrier(b"m.png", (b"h.zip", hidden)), carrier(b"m.png", (b"o.zip", other)))

    def hide_ways(first_done, second_done):
        marked = ["Hidden File m.png", "[1] Hidden File m.png"]
        made = [data for data, done in zip(both, (first_done, second_done)) if done]
        return [base | dict(zip(marked, order)) for order in (made, made[::-1])]

    hides = (hide("m.png", "h.zip"), hide("m.png", "o.zip"))
    yield Race("two hides in the same file", base, hides, hide_ways)
    yield Race("two hides in the same file by two users", base, hides, hide_ways,
               own_private=True)
    yield Race("two hides in two files", base, (hides[0], hide("n.png", "o.zip")),
               lambda first, second: [
                   base | ({"Hidden File m.png": both[0]} if first else {})
                   | ({"Hidden File n.png": carrier(b"n.png", (b"o.zip", other))} if second
                      else {})])

    two_files = carrier(b"m.png", (b"h.zip", hidden), (b"o.zip", other))
    added = carrier(b"m.png", (b"h.zip", hidden), (b"o.zip", other), (b"m.png", main))
    full = password | {"c.png": two_files, "m.png": main}
    recover = lambda *which: ("recover", "c.png", *which, *WITH_PASSWORD)

    yield Race("the same file recovered twice", full, (recover("--file", "0"),) * 2,
               lambda *done: [full | dict(zip(("Original h.zip", "Original [1] h.zip"),
                                              [hidden] * sum(done)))])
    yield Race("a hidden file and the main file recovered", full,
               (recover("--file", "1"), recover("--main")),
               lambda first, second: [full | ({"Original o.zip": other} if first else {})
                                      | ({"Original c.png": main} if second else {})])
    yield Race("recovered and added to", full, (recover("--file", "0"), hide("c.png", "m.png")),
               lambda first, second: [full | ({"Original h.zip": hidden} if first else {})
                                      | ({"Hidden File c.png": added} if second else {})])

    # The carrier is replaced by another, of the same length and with the same names, that has its
    # files in another order of lengths.
    lengths = len(hidden) - MIB
    odd = carriers.carrier_of(b"m.png", main, [(b"h.zip", new[:lengths]),
                                               (b"o.zip", new[: 2 * len(hidden) - lengths])],
                              PASSWORD)
    assert len(odd) == len(two_files)
    parts = {f"c.png.{i + 1}.sly": odd[i * MIB : (i + 1) * MIB] for i in range(len(odd) // MIB + 1)}
    joining = full | parts
    yield Race("recovered from a file that a join replaces", joining,
               (recover("--file", "1"), ("join", "c.png.1.sly", "--yes")),
               lambda recovered, join: [
                   joining | {"c.png": odd if join else two_files}
                   | ({"Original o.zip": data} if recovered else {})
                   for data in (other, new[: 2 * len(hidden) - lengths])])
    yield Race("added to a file that a join replaces", joining,
               (hide("c.png", "m.png"), ("join", "c.png.1.sly", "--yes")),
               lambda hid, join: [
                   joining | {"c.png": odd if join else two_files}
                   | ({"Hidden File c.png": data} if hid else {})
                   for data in (added, carriers.carrier_of(
                       b"m.png", main, [(b"h.zip", new[:lengths]),
                                        (b"o.zip", new[: 2 * len(hidden) - lengths]),
                                        (b"m.png", main)], PASSWORD))])
