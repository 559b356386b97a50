"""Makes the steps of a failure as few and as small as they can be."""

from oracle import VALUED


def smallest(steps, fails):
    """The steps with as much left out as possible; `fails` runs steps and returns true if they show
    the same failure."""
    length = len(steps)
    while length:  # Halves first, then quarters, ... single steps.
        length = length // 2 or 1
        at = 0
        while at < len(steps):
            fewer = steps[:at] + steps[at + length :]
            if fewer and fails(fewer):
                steps = fewer
            else:
                at += length
        if length == 1:
            break
    again = True
    while again:
        again = False
        for i, step in enumerate(steps):
            for simpler in simpler_ones(step):
                if fails([*steps[:i], simpler, *steps[i + 1 :]]):
                    steps, again = [*steps[:i], simpler, *steps[i + 1 :]], True
                    break
    return steps


def simpler_ones(step):
    what, *rest = step
    if what == "sly":
        end = rest.index("--")
        for i in range(1, end):
            if rest[i].startswith("--"):
                yield ("sly", *rest[:i], *rest[i + 1 + (rest[i] in VALUED) :])
    if what == "file" and step[3] != 0o644:
        yield (*step[:3], 0o644)
    if what == "list":
        if step[2] != "plain":
            yield (*step[:2], "plain", step[3])
        for i in range(len(step[3])):
            yield (*step[:3], step[3][:i] + step[3][i + 1 :])
