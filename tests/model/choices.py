"""Random steps: folders as people have them, and jobs in them."""

import dataclasses
import os
import signal

import carriers

from world import FORMS, content, list_text

STEMS = ["movie.s", "movie", "a.sly", "a.1.sly", "x", "x.sha256", "x.1", "Caf\u00e9 1.zip", "caf\udce9",
         "two\nlines", "back\\slash", " ", "-x", ".hidden", "n" * 240, "\u4f60\u597d", "sly", "$HOME", "x."]
BYTES = [code for code in range(1, 256) if code != ord("/")]
ODD_NUMBERS = [0, "01", "+1", "-1", " 1", "1 ", "1x", "x", "", 32768, 99999, 100000, 10**6, 10**18]
RELATED = ["ly", ".sly", ".1.sly", ".2.sly", ".sha256", ".1", ".S", "2", " "]
OURS = ".slyver-0123456789abcdef.set"  # As a killed split leaves it.
BELOW = ["old", "more", "more/deep", OURS, OURS + "/earlier", "b.1.sly", "more/" + OURS]
MODES = [0o644] * 4 + [0o600, 0o640, 0o444, 0o755, 0o666]
SECRETS = [b"Ab\n", b"Ab", b"Ab\r\nmore", b"wrong\n", b"slyver\n", b"x" * 24, b"x" * 25, b"\n", b"",
           "\u00e4\u20ac\n".encode(), "\u4f60\n".encode(), b"\xff\n", "Ab\n".encode("utf-16"), b"password\n"]

# What nobody's hide writes.
ODD_NAMES = [b"..", b".", b"../x", b"/tmp/x", b"a\\b", b"C:x", b"CON", b"--help", b"$HOME", b"n" * 24, b"n" * 60]
ODD_LENGTHS = [b"0", b"-1", b"+5", b" 5", b"5 ", b"", b"0007", b"5.0", b"5e0", b"0x5", b"\xb2", *[
    b"%d" % number for base in (31, 32, 63, 64, 70) for number in (2**base - 1, 2**base, 2**64 - 2**base)]]
SPELLINGS = [
    lambda line: b"", lambda line: line[: len(line) // 2], lambda line: line.upper(), lambda line: line.lower(),
    lambda line: b" \t" + line + b" ", lambda line: b";" + line, lambda line: line.replace(b"=", b" = "),
    lambda line: line.replace(b"=", b"='") + b"'", lambda line: line.replace(b"=", b'="') + b'"',
    lambda line: line + b"=", lambda line: line + b"0" * 100, lambda line: line * 3, lambda line: b"[" * 2500,
    lambda line: line + b"\0", lambda line: b"\n".join(b"[%ddfg%%]\n?Kj*^=0" % i for i in range(3, 120))]


@dataclasses.dataclass(frozen=True)
class Able:
    """What can be tried here."""

    root: bool  # Owners can be changed, and small disks mounted.
    preload: bool  # Calls can be made to fail, or to kill.


class Chooser:
    def __init__(self, rng, able):
        self.rng, self.able = rng, able
        self.steps, self.sources, self.pieces, self.folders = [], {}, [], []

    def maybe(self, share):
        return self.rng.random() < share

    def scenario(self):
        choose = self.rng.choices(
            [self.sets, self.at_once, self.killed, self.full_disk, self.hidden],
            [50, 7, 9 * self.able.preload, 4 * self.able.root, 30])[0]
        choose()
        return self.steps

    # Folders with sets of pieces, and what else people keep there.

    def sets(self):
        rng = self.rng
        if self.maybe(0.3):
            self.steps.append(("set", "locale", rng.choice(("C", "C.UTF-8", "de_DE.ISO-8859-1"))))
        if self.maybe(0.3):
            self.steps.append(("set", "umask", rng.choice((0, 0o027, 0o077))))
        top = rng.choice(("", "p"))
        self.folders = [top, top, "out"]
        stem = rng.choice(STEMS)
        if self.maybe(0.15):  # Behind a letter, as . and .. are no names.
            stem = "n" * rng.choice((1, 1, 240, 244, 252)) + os.fsdecode(bytes(rng.choices(BYTES, k=3)))
        names = [stem]
        for _ in range(rng.choice((0, 0, 1, 1, 2))):
            names.append(rng.choice((stem + rng.choice(RELATED), stem[:-1] or "y", stem.swapcase())))
        opened = ("opens", top or "out", "default")
        self.steps.append(("folder", opened[1]))
        if self.maybe(0.15):
            self.steps.append(opened)
        size = rng.choice((1, 7, 100, 1000, 4096, 10_000))
        for name in dict.fromkeys(names):
            length = rng.choice((size, size + 1, size * 2, size * 3, rng.randrange(1, size * 6)))
            if self.maybe(0.6):
                self.file(os.path.join(rng.choice((top, "src")), name), ("A", 0, length))
            self.set(top, name, "A", length, size)
            for _ in range(rng.choice((0, 0, 0, 1, 1, 2))):
                version, size2 = rng.choice("ABC"), rng.choice((size, size, size, max(1, size // 2)))
                folder = os.path.join(top, rng.choice(BELOW)) if self.maybe(0.8) else "out"
                self.set(folder, name, version, rng.randrange(1, size * 7), size2)
        if self.maybe(0.3):
            self.steps.append(opened)
        if self.maybe(0.1):
            self.folders.append(rng.choice(("dangling", *self.sources)))
            self.steps.append(("link", "dangling", "no"))
        if self.maybe(0.05):
            name = rng.choice(names) + rng.choice(("", ".2.sly", ".sha256"))
            self.steps.append(("folder", os.path.join(rng.choice(self.folders[:3]), name)))
        if self.sources and self.maybe(0.1):
            self.steps.append(("opens", rng.choice(list(self.sources)), "access"))
        if self.sources and self.able.root and self.maybe(0.05):
            self.steps.append(("owner", rng.choice(list(self.sources)), 4322))
        for _ in range(rng.randrange(1, 5)):
            self.job()

    def file(self, path, data, mode=None):
        self.sources[path] = data[2] - data[1] if isinstance(data, tuple) else 1
        self.steps.append(("file", path, data, mode or self.rng.choice(MODES)))

    def set(self, folder, name, version, length, size):
        """The pieces of a version, or some of them, and perhaps a list."""
        rng = self.rng
        data = {i + 1: (version, at, min(at + size, length))
                for i, at in enumerate(range(0, length, size))}
        names = {i: f"{name}.{i}.sly" for i in data}
        mode = rng.choice(MODES)
        kept = list(data)
        part = rng.choice(("all",) * 6 + ("rest", "some", "one less", "none"))
        if part == "rest":
            kept = kept[rng.randrange(len(kept)) :]
        elif part == "some":
            kept = [i for i in kept if self.maybe(0.5)]
        elif part == "one less":
            kept.remove(rng.choice(kept))
        elif part == "none":
            kept = []
        for i in kept:
            piece, odd = data[i], rng.random()
            if odd < 0.04:
                piece = (*piece, rng.randrange(size))
            elif odd < 0.06:
                piece = (version, piece[1], rng.randrange(piece[1], piece[2]) + 1)
            elif odd < 0.08:
                piece = data[rng.choice(list(data))]
            elif odd < 0.085:
                piece = (version, 0, 0)
            if self.maybe(0.02):
                names[i] = f"{name}.{i}.{rng.choice(('SLY', 'Sly'))}"
            path = os.path.join(folder, names[i])
            self.steps.append(("file", path, piece, mode))
            self.pieces.append(path)
        if self.maybe(0.02):
            start, odd = rng.choice((name, name + ".")), rng.choice([len(data) + 1, *ODD_NUMBERS])
            path = os.path.join(folder, f"{start}.{odd}.{rng.choice(('sly', 'sly', 'sly2', 'SLY'))}")
            self.steps.append(("file", path, ("D", 0, rng.choice((0, size))), mode))
            self.pieces.append(path)
        kind = rng.choice(("no",) * 5 + ("pieces",) * 4 + ("whole",) * 2 + ("both", "old", "other", "few"))
        whole = [(name, (version, 0, length))]
        lines = {"pieces": [(names[i], data[i]) for i in data], "whole": whole,
                 "old": [(names[i], ("Z", *data[i][1:])) for i in data],
                 "other": [("other.iso", b"?")], "few": [(names[1], data[1])], "no": []}
        lines = lines["pieces"] + whole if kind == "both" else lines[kind]
        if lines:
            if self.maybe(0.2):
                rng.shuffle(lines)
            form = rng.choice(list(FORMS)) if self.maybe(0.5) else "plain"
            path = os.path.join(folder, name + ".sha256")
            self.steps.append(("list", path, form, tuple(lines)))
            if self.maybe(0.1):
                text = bytearray(list_text(form, lines))
                at, length = rng.randrange(len(text) + 1), rng.choice((0, 1, 1, 64))
                text[at : at + length] = rng.choice((b"", b"\\", b"\n", b"*", b"a", b"\0", rng.randbytes(1)))
                self.steps[-1] = ("file", path, bytes(text), 0o644)

    # Jobs.

    def job(self):
        choices = [self.split] * (4 * bool(self.sources)) + [self.join, self.join, self.verify] * (
            2 * bool(self.pieces))
        if choices:
            self.rng.choice(choices)()

    def say(self, verb, options, *names):
        for word, share in (("--yes", 0.5), ("--quiet", 0.2), ("--verbose", 0.3)):
            options += [word] * self.maybe(share)
        if verb in ("split", "join"):
            options += ["--force"] * self.maybe(0.2)
        self.steps.append(("sly", verb, *options, "--", *names))

    def split(self):
        path = self.rng.choice(list(self.sources))
        self.say("split", *self.splitting(path, self.rng.choice(self.folders + ["new", "new/deep/"])))

    def splitting(self, path, folder):
        rng, length = self.rng, self.sources[path]
        count = rng.randrange(1, 9)
        options = rng.choice(([], *[["--size", str(max(1, length // count + rng.choice((0, 0, 1))))]] * 8,
                              *[["--count", str(count)]] * 3, ["--size", "5", "--count", "2"]))
        if self.maybe(0.5):
            options += ["--output", folder or "."]
        else:
            folder = os.path.dirname(path)
        self.pieces.append(os.path.join(folder, f"{os.path.basename(path)}.{rng.choice((1, 1, 2))}.sly"))
        return options + ["--checksum"] * self.maybe(0.4), path

    def join(self):
        options = ["--delete"] * self.maybe(0.3)
        if self.maybe(0.2):
            options += ["--output", self.rng.choice(self.folders) or "."]
        self.say("join", options, self.rng.choice(self.pieces))

    def verify(self):
        self.say("verify", [], self.rng.choice(self.pieces))

    # What a killed split leaves; and a disk that is nearly full.

    def killed(self):
        rng = self.rng
        self.folders, name, names = ["p"], rng.choice(STEMS[:4]), 3
        for version, mode in (("A", 0o644), ("B", 0o600)):
            length, size = rng.randrange(2000, 12_000), rng.choice((200, 1000, 3000))
            self.file("src/" + name, (version, 0, length), mode)
            names += 2 * (length // size)  # At most so often is something renamed.
            kill = ("kill", rng.randrange(1, names)) if version == "B" or self.maybe(0.2) else ("sly",)
            self.steps.append((*kill, "split", "--size", str(size), "--output", "p", "--yes",
                               *["--checksum"] * self.maybe(0.5), "--", "src/" + name))
        self.pieces = [f"p/{name}.{i}.sly" for i in (1, 1, 2, 5)]
        if self.maybe(0.7):
            self.say("split", ["--size", str(size), "--output", "p"], "src/" + name)
        for _ in range(rng.randrange(1, 4)):
            self.job()

    # Two jobs that have files in common.

    def at_once(self):
        rng, size, stop = self.rng, self.rng.choice((300, 7000)), signal.SIGINT
        length = rng.randrange(20 * size, 200 * size)
        split = lambda path, folder, size: (
            "split", "--size", str(size), "--output", folder, "--yes", "--", path)
        join = lambda path, folder: ("join", "--output", folder, "--yes", "--", path)
        hidden = lambda verb, *rest: (verb, "--password-file", "key", "--yes", *rest)
        if self.able.preload and self.maybe(0.4):
            self.steps.append(("network",))
        if self.maybe(0.5):
            self.file("w", ("A", 0, length), 0o644)
            self.file("in/w", ("B", 0, length + rng.choice((0, 1))), 0o644)
            self.steps += [("sly", *split("in/w", folder, size)) for folder in "pq"]
            jobs = [split("w", "p", size), split("w", "p", size // 2), split("in/w", "p", size * 2),
                    join("p/w.1.sly", "p"), join("p/w.2.sly", "p"), join("q/w.1.sly", ".")]
        else:
            stop = 0  # A stopped hide may have held the name that the other would have taken.
            for name in ("m.png", "h.zip", "o.zip"):
                self.file(name, (name, 0, length), 0o644)
            self.file("key", b"Ab\n", 0o644)
            for path, at in (("c.png", length // 2), ("in/c.png", length // 3)):
                parts = (b"h.zip", (path, 0, at)), (b"o.zip", (path, at, length))
                self.steps.append(("carrier", path, ("A", 0, length), parts, b"Ab"))
            self.steps.append(("sly", *split("in/c.png", "p", size)))
            jobs = [hidden("hide", "--", "m.png", "h.zip"), hidden("hide", "--", "m.png", "o.zip"),
                    hidden("hide", "--", "c.png", "m.png"), hidden("recover", "--main", "--", "c.png"),
                    *[hidden("recover", "--file", i, "--", "c.png") for i in "01"],
                    *[join("p/c.png.1.sly", ".")] * 2]
        signals = rng.choice(((0, 0), (0, stop), (signal.SIGSTOP, signal.SIGCONT)))
        delays = tuple(round(rng.uniform(0, rng.choice((0.005, 0.02))), 5) for _ in signals)
        self.steps.append(("both", tuple(map(int, signals)), delays, *rng.choices(jobs, k=2)))

    def full_disk(self):
        rng = self.rng
        self.steps.append(("disk", 256))
        self.folders, length = ["p"], rng.randrange(20_000, 120_000)
        self.file("x", ("A", 0, length))
        old, size = rng.randrange(10_000, 140_000), rng.choice((10_000, 20_000))
        for i in range(rng.choice((0, 1, 1)), old // size):
            self.steps.append(("file", f"p/x.{i + 1}.sly", ("B", i * size, (i + 1) * size), 0o644))
        for _ in range(rng.randrange(1, 3)):
            self.say("split", ["--size", str(size), "--output", "p"], "x")

    # Hidden files.

    def hidden(self):
        rng = self.rng
        mains = ["main.jpg", "c.bin", "\u00dcber.png", "notes.txt", "-m"]
        files = ["a.zip", "letter.odt", "long name of a file that is hidden.tar", "a.age", "b"]
        for name in rng.sample(mains, 2):
            self.file(name, ("A", 0, rng.choice((0, 1, 2000, 2500, 2501, 6000))))
        for name in rng.sample(files, 3):
            data = "age" if name == "a.age" else ("B", 0, rng.choice((0, 1, 500)))
            self.file(name, data)
        paths = list(self.sources)
        password = rng.choice((b"Ab", b"Ab", b"slyver", b"x" * 24, bytes(rng.choices(BYTES, k=rng.choice((1, 24))))))
        found = rng.sample(mains[:3] + ["old.gif"], rng.randrange(1, 5))
        for name in found:
            inside = tuple((each, "age" if each == b"a.age" else ("C", 0, rng.randrange(1, 900)))
                           for each in rng.choices([b"a.zip", b"a.age", b"b.txt", b"\xe9"],
                                                   k=rng.choice((1, 1, 2, 3, 5, 6))))
            main = rng.choice((1, 3000))
            self.steps.append(("carrier", name, ("A", 0, main), inside, password))
            paths += [name] * 4
            if self.maybe(0.7):
                self.damage(name, main, [(each, len(content(data))) for each, data in inside], password)
        common = {"key": carriers.to_text(password).encode() + b"\n", "pass": SECRETS[-1]}
        for name in ("key", "pass"):
            secret = rng.choice((*[common[name]] * 12, password, *rng.choices(SECRETS, k=2)))
            self.steps.append(("file", name, secret, 0o600))
        with_key = [] if password == b"slyver" else ["--password-file", "key"]
        for name in found:
            self.say("list", [*with_key], name)
        for _ in range(rng.randrange(1, 5)):
            options = [*with_key] if self.maybe(0.9) else ["--password-file", "key"]
            if self.maybe(0.5):
                if self.maybe(0.02):
                    options += ["--encrypt", "--passphrase-file", "pass"]
                self.say("hide", options, rng.choice(paths), rng.choice(paths))
            else:
                options += rng.choice(([], ["--main"], ["--all"], ["--file", str(rng.randrange(3))]))
                if "--main" not in options:
                    options += rng.choice(([], ["--passphrase-file", "pass"], ["--raw"]))
                self.say("recover", options, rng.choice(paths + ["Hidden File " + paths[0]]))

    def damage(self, path, main, records, password):
        """Spoils the last carrier: its directory, or its length."""
        rng = self.rng
        if self.maybe(0.2):
            count = rng.choice((rng.randrange(-30, 30), rng.randrange(-3500, 3000)))
            self.steps.append(("lengthen", path, count))
            return
        at, odd = rng.randrange(len(records)), rng.random()
        name, length = records[at]
        if odd < 0.15:
            main = rng.choice(ODD_LENGTHS)
        elif odd < 0.3:
            records[at] = name, rng.choice([*ODD_LENGTHS, b"%d" % (length + 1)])
        elif odd < 0.6:
            records[at] = rng.choice([*ODD_NAMES, *[b"a%cz" % rng.randrange(256)] * 11]), length
        sections = carriers.lines_of(carriers.to_text8(path), main, records, password)
        lines = [line for section in sections for line in section]
        ending = rng.choice((b"\r\n",) * 9 + (b"\n", b"\r"))
        if odd > 0.6:
            for _ in range(rng.choice((1, 1, 1, 4))):
                at, to = rng.randrange(len(lines)), rng.randrange(len(lines))
                line = lines[at]
                lines[at : at + rng.choice((0, 1))] = [rng.choice([*SPELLINGS, *[lambda line: line] * 5])(line)]
                if self.maybe(0.3):
                    lines.insert(to, lines.pop(at))
        if self.maybe(0.05):
            rng.shuffle(lines)
        text = bytearray(ending.join([*lines, b""]))
        if self.maybe(0.3):
            text += bytes(rng.choice((0, 5, 500)))
            text[rng.randrange(len(text))] ^= rng.choice((0x01, 0x20, 0xFF, rng.randrange(1, 256)))
        self.steps.append(("directory", path, bytes(text)))
