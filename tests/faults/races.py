"""Two at once: two jobs on the same files and in the same folder, the second at a random moment of
the first. Each ends right or says why not, and no file is a mixture."""

import dataclasses
import random
import signal
import time

import faults
import jobs
from carriers import carrier_of
from jobs import PASSWORD, WITH_PASSWORD, Case, cut

MIB = 1 << 20


@dataclasses.dataclass(frozen=True)
class Race:
    name: str
    contents: dict  # What lies in files/ at the start.
    commands: tuple  # The two commands.
    # ways(first done, second done): all that may lie there at the end. A way maps names to bytes;
    # what it does not name is absent.
    ways: callable
    stop: bool = False  # Whether one of the two is stopped by Ctrl-C.
    effect: faults.Effect | None = None


def run(setting):
    rng = random.Random(setting.seed)
    return [attempt(race, setting, setting.folder / "home", rng) for race in make_races(rng)]


def attempt(race, setting, home, rng):
    case = Case(race.name)
    budget = time.monotonic() + (1.5 if setting.short else 12)
    duration = 0.05
    while time.monotonic() < budget:
        case.tried += 1
        jobs.prepare(home, in_files(race.contents))
        delay = rng.choice((0, rng.uniform(0, duration)))
        stopped, stop_delay = rng.randrange(2), rng.uniform(0, duration)
        variables = race.effect and faults.environment(setting.built, home, race.effect) or {}
        begun = time.monotonic()
        processes = [jobs.start(setting.sly, race.commands[0], home, variables)]
        time.sleep(delay)
        processes.append(jobs.start(setting.sly, race.commands[1], home, variables))
        if race.stop:
            time.sleep(stop_delay)
            processes[stopped].send_signal(signal.SIGINT)
        outcomes = [jobs.finish(process) for process in processes]
        duration = 0.9 * duration + 0.1 * (time.monotonic() - begun)
        case.losses += losses(race, outcomes, home)
    return case


def losses(race, outcomes, home):
    lost = []
    for outcome in outcomes:
        lost += jobs.wrong_ending(outcome, (0, 1, jobs.STOPPED) if race.stop else (0, 1))
    done = [outcome.status == 0 for outcome in outcomes]
    if not race.stop and not any(done):
        lost.append("neither has ended well")
    ways = [jobs.only(in_files(way)) for way in race.ways(*done)]
    # A folder may stay that was made for what is not there.
    found = jobs.differing(jobs.look(home), ways or [{}], {"files/out"})
    lost += [f"wrong: {path}" for path in found]
    said = [(outcome.status, outcome.err[-200:]) for outcome in outcomes]
    return [f"{loss}; ended with {said}" for loss in lost]


def in_files(contents):
    return {f"files/{name}": data for name, data in contents.items()}


def make_races(rng):
    """The races. Where more than one way is given, each is a right ending."""
    old, new = rng.randbytes(6 * MIB), rng.randbytes(6 * MIB)
    longer = new + rng.randbytes(2 * MIB)
    size = 150_000
    split = lambda name, *options, size=size: ("split", name, "--size", size, "--yes", *options)
    join = lambda piece, *options: ("join", piece, *options)

    source = {"w": old}
    made = cut(old, size, "w"), cut(old, 400_000, "w")
    two_sizes = {
        "contents": source,
        "commands": (split("w"), split("w", size=400_000)),
        # Where both end well, the later one has replaced the other's set as a whole.
        "ways": lambda *done: [source | each for each, is_done in zip(made, done) if is_done]
                or [source],
    }
    yield Race("two splits into pieces of two sizes", **two_sizes)
    yield Race("two splits, one of them stopped", **two_sizes, stop=True)
    yield Race("two splits on a network file system", **two_sizes, effect=faults.NFS)

    pieces = made[0]
    yield Race("the same join twice over a file", pieces | {"w": new},
               (join("w.1.sly", "--yes"), join("w.2.sly", "--yes")),
               lambda *done: [pieces | {"w": old if any(done) else new}])
    renewed = {"new/w": new} | pieces
    yield Race("a split that replaces pieces, and their join", renewed,
               (split("new/w", "--output", "."), join("w.1.sly")),
               lambda is_split, is_joined: [
                   renewed | (cut(new, size, "w") if is_split else {})
                   | ({"w": data} if is_joined else {}) for data in (old, new)])
    in_pieces = cut(longer, size, "in/w")
    yield Race("a split of a file that a join replaces", in_pieces | {"in/w": old},
               (split("in/w", "--output", "out"), join("in/w.1.sly", "--yes")),
               lambda is_split, is_joined: [
                   in_pieces | {"in/w": longer if is_joined else old}
                   | (cut(data, size, "out/w") if is_split else {}) for data in (old, longer)])

    main, hidden, other = (rng.randbytes(n * MIB) for n in (2, 3, 3))
    base = {"password": PASSWORD + b"\n", "m.png": main, "h.zip": hidden, "o.zip": other,
            "n.png": hidden}
    carrier = lambda name, *files: carrier_of(name.encode(), base[name], files, PASSWORD)
    h, o, m = (b"h.zip", hidden), (b"o.zip", other), (b"m.png", main)
    hide = lambda name, what: ("hide", name, what, *WITH_PASSWORD, "--yes")

    def hide_ways(*done):
        marked = ["Hidden File m.png", "[1] Hidden File m.png"]
        made = [carrier("m.png", each) for each, is_done in zip((h, o), done) if is_done]
        return [base | dict(zip(marked, order)) for order in (made, made[::-1])]

    hides = (hide("m.png", "h.zip"), hide("m.png", "o.zip"))
    yield Race("two hides in the same file", base, hides, hide_ways)
    yield Race("two hides in two files", base, (hides[0], hide("n.png", "o.zip")),
               lambda first, second: [
                   base | ({"Hidden File m.png": carrier("m.png", h)} if first else {})
                   | ({"Hidden File n.png": carrier("n.png", o)} if second else {})])

    full = {"password": PASSWORD + b"\n", "c.png": carrier("m.png", h, o), "m.png": main}
    recover = lambda *which: ("recover", "c.png", *which, *WITH_PASSWORD)
    yield Race("the same file recovered twice", full, (recover("--file", "0"),) * 2,
               lambda *done: [full | dict(zip(("Original h.zip", "Original [1] h.zip"),
                                              [hidden] * sum(done)))])
    yield Race("the main file recovered, and a file added", full,
               (recover("--main"), hide("c.png", "m.png")),
               lambda first, second: [
                   full | ({"Original c.png": main} if first else {})
                   | ({"Hidden File c.png": carrier("m.png", h, o, m)} if second else {})])
    # The carrier is replaced by another, of the same length and with the same names, that has its
    # files in another order of lengths.
    short, long = new[: 2 * MIB], new[: 4 * MIB]
    odd = carrier("m.png", (b"h.zip", short), (b"o.zip", long))
    assert len(odd) == len(full["c.png"])
    joining = full | cut(odd, MIB, "c.png")
    yield Race("recovered from a file that a join replaces", joining,
               (recover("--file", "1"), join("c.png.1.sly", "--yes")),
               lambda first, second: [
                   joining | ({"c.png": odd} if second else {})
                   | ({"Original o.zip": data} if first else {}) for data in (other, long)])
