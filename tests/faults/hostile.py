"""Hostile input: damaged carriers, passwords and names of every byte, pieces that do not belong
together. Whatever comes, sly does what a reader written from docs/FORMAT.md says, or refuses; it
never crashes, hangs, or touches another file. This is the build with sanitizers."""

import dataclasses
import hashlib
import random
import re

import carriers
import faults
import jobs
from jobs import Case

PASSWORD = b"Ab"
FILES = "files/"
NAME = "c.bin"
CARRIER = FILES + NAME
ADDED = b"the file that is added"
SANITIZERS = dict.fromkeys(("ASAN_OPTIONS", "UBSAN_OPTIONS"), "abort_on_error=1")


def run(setting):
    rng = random.Random(setting.seed)
    groups = {
        "a byte of the directory changed": damaged_directories,
        "a carrier cut or lengthened": truncations,
        "a directory written otherwise": rewritten_directories,
        "passwords of every byte": passwords,
        "names of every byte": names,
        "pieces that do not belong together": pieces,
        "checksum files that do not fit": lists,
    }
    cases = []
    for name, attempts in groups.items():
        every = list(attempts(rng))
        chosen = rng.sample(every, 60) if setting.short else every
        cases += faults.both_cores(
            lambda half: attempt(setting, Case(name, group=name), chosen[half::2]), [(0,), (1,)])
    return cases


def attempt(setting, case, attempts):
    """Tries them all: what is tried, what lies in the home, and the commands, each with the files
    that it makes (None: it refuses) and what it prints (None: anything)."""
    home = setting.folder / f"home{id(case)}"
    for what, contents, commands in attempts:
        case.tried += 1
        for arguments, made, *out in commands:
            jobs.prepare(home, contents | {"outside": b"untouched"})
            outcome = jobs.run(setting.checked / "sly", arguments, home, SANITIZERS)
            lost = jobs.wrong_ending(outcome, (1,) if made is None else (0,))
            way = jobs.only(contents | {"outside": b"untouched"} | (made or {}))
            lost += [f"wrong: {path}" for path in jobs.differing(jobs.look(home), [way])]
            if made is not None and out and outcome.out != out[0]:
                lost.append(f"prints {outcome.out!r} instead of {out[0]!r}")
            case.losses += [f"{what}: {arguments}: {loss}" for loss in lost]
    return case


@dataclasses.dataclass
class Giving:
    """Equals every carrier that gives back these files."""

    files: list
    password: bytes

    def __eq__(self, carrier):
        reading = carriers.read(carrier, self.password)
        return reading.whole and self.files == contents_of(reading, carrier)


def contents_of(reading, carrier):
    return [(name, carrier[at : at + length]) for name, at, length in reading.files or []]


def trying(what, carrier, password=PASSWORD, numbers=(0,)):
    """Lists the carrier, recovers from it and adds to it; `numbers` are the hidden files to
    recover."""
    reading = carriers.read(carrier, password)
    files = reading.files
    options = ("--password-file", "password")
    listed = "".join(f"{i}\t{length}\t{name}\n" for i, (name, _, length) in enumerate(files or []))
    commands = [(("list", NAME, *options), None if files is None else {}, listed)]
    for number in numbers:
        made = None
        if files is not None and number < len(files):
            name, at, length = files[number]
            made = {f"{FILES}Original {name}": carrier[at : at + length]}
        commands.append((("recover", NAME, "--file", number, *options), made))
    main = reading.main_length
    made = None if main is None else {f"{FILES}Original {NAME}": carrier[:main]}
    commands.append((("recover", NAME, "--main", *options), made))
    made = None
    if reading.records == 0:
        made = carriers.carrier_of(NAME.encode(), carrier, [(b"add.me", ADDED)], password)
    elif reading.whole and reading.main_named and reading.records < 6:
        made = Giving([*contents_of(reading, carrier), ("add.me", ADDED)], password)
    commands.append((("hide", NAME, "add.me", "--yes", *options),
                     made and {f"{FILES}Hidden File {NAME}": made}))
    typed = carriers.to_text(password).encode()
    contents = {CARRIER: carrier, FILES + "password": typed + b"\n", FILES + "add.me": ADDED}
    return what, contents, commands


def sample(rng, count, main=3000):
    hidden = [(b"%d.dat" % i, rng.randbytes(size)) for i, size in enumerate((7, 900, 1)[:count])]
    return carriers.carrier_of(NAME.encode(), rng.randbytes(main), hidden, PASSWORD)


def damaged_directories(rng):
    """The bytes of the directory are changed, one at a time; of its padding, some."""
    for carrier in (sample(rng, 3), sample(rng, 1, main=40)):
        start = len(carrier) - carriers.DIRECTORY
        text_end = carrier.index(b"\0", start) + 2
        for at in [*range(start, text_end), *range(text_end, len(carrier), 50)]:
            for mask in (rng.choice((0x01, 0x20, 0xFF)), rng.randrange(1, 256)):
                damaged = bytearray(carrier)
                damaged[at] ^= mask
                yield trying(f"byte {at - start} of {len(carrier)} ^ {mask}", bytes(damaged))


def truncations(rng):
    """The carrier ends too early, or something comes behind it."""
    carrier = sample(rng, 2, main=1500)
    for count in [*range(1, 30), *range(30, 3000, 25), *range(2490, 2510)]:
        yield trying(f"{count} bytes less", carrier[:-count])
        yield trying(f"{count} bytes more", carrier + bytes(count))


def rewritten_directories(rng):
    """Directories in other order, case and spelling, with hostile names and lengths."""
    parts = [rng.randbytes(size) for size in (600, 7, 90, 5)]
    body = b"".join(parts)
    hidden = [(b"%d.dat" % i, len(data)) for i, data in enumerate(parts[1:])]
    write = lambda main_length=600, files=hidden, name=NAME.encode(): carriers.lines_of(
        name, main_length, files, PASSWORD)
    sound = write()

    def attempt(what, sections):
        text = sections if isinstance(sections, bytes) else carriers.text_of(sections)
        return trying(what, body + carriers.padded(text), numbers=(0, 2))

    for i, lines in enumerate(sound):
        others = sound[:i] + sound[i + 1 :]
        for order in (others, [lines, *sound], [lines, *others], [*others, lines], [*sound, lines]):
            yield attempt(f"section {i} elsewhere", order)
        for j, line in enumerate(lines):
            for spelling in (
                [], [line, line], [line.upper()], [line.lower()], [b" \t" + line + b" "],
                [b";" + line], [line.replace(b"=", b" = ")], [line.replace(b"=", b"='") + b"'"],
                [line.replace(b"=", b'="') + b'"'], [line + b"="], [line + b"0" * 100],
                [line[: len(line) // 2]], [line * 3],
            ):
                changed = lines[:j] + spelling + lines[j + 1 :]
                what = f"line {j} of {i} as {spelling}"
                yield attempt(what, sound[:i] + [changed] + sound[i + 1 :])
    text = carriers.text_of(sound)
    many = text + b"".join(b"[%ddfg%%]\n?Kj*^=0\n" % i for i in range(3, 120))
    for whole in (text.replace(b"\r", b""), text.replace(b"\n", b""), text + b"x" * 2500,
                  b"[" * 2500, b"\n" * 2500, text + b"\0" + text, many):
        yield attempt(f"text {whole[:20]}... of {len(whole)}", whole)
    for order in range(60):
        shuffled = [line for lines in sound for line in lines]
        rng.shuffle(shuffled)
        yield attempt(f"shuffled {order}", [shuffled])

    lengths = [b"0", b"-1", b"+5", b" 5", b"5 ", b"", b"0007", b"5.0", b"5e0", b"0x5", b"\xb2"]
    lengths += [b"%d" % number for base in (31, 32, 63, 64, 70) for number in
                (2**base - 1, 2**base, 2**64 - 2**base, 2**base - len(body))]
    for length in lengths:
        for i in range(3):
            odd = [(name, length if i == j else old) for j, (name, old) in enumerate(hidden)]
            yield attempt(f"length {i} {length}", write(files=odd))
        yield attempt(f"main length {length}", write(length))
    odd_names = [b"..", b".", b"/", b"../x", b"/tmp/x", b"a/b", b"a\\b", b"..\\x", b"C:", b"C:x", b"~"]
    odd_names += [b"CON", b"con.txt", b"Aux", b"COM1", b"lpt9.x.y", b"nul ", b"COM0", b"CONX", b" "]
    odd_names += [b"-", b"--help", b"*", b"$HOME", b"`id`", b"%s%n", b"n" * 24, b"n" * 25, b"n" * 60]
    for name in odd_names + [b"a%cz" % code for code in range(256)]:
        lines = write(files=[hidden[0], (name, hidden[1][1]), hidden[2]], name=name)
        yield trying(f"name {name}", body + carriers.padded(carriers.text_of(lines)), numbers=(1,))


def passwords(rng):
    """Every character that a password can have, and every byte that a password file can hold."""
    hidden = [(b"x.dat", b"hidden")]
    for code in range(256):
        byte = bytes([code])
        password = rng.choice((byte, b"a" + byte, byte * 24))
        carrier = carriers.carrier_of(NAME.encode(), b"M" * 2600, hidden, password)
        what, contents, commands = trying(f"password {password}", carrier, password)
        # The first line of the file counts, and a carriage return at its end does not.
        if byte not in b"\n\r":
            yield what, contents, commands
        if code >= 0x80:  # Not UTF-8, so not a password.
            raw = contents | {FILES + "password": password}
            yield "raw " + what, raw, [(arguments, None) for arguments, *_ in commands]


def names(rng):
    """Files named with every byte that the file system takes are split and joined."""
    every = [bytes([code]) for code in range(1, 256) if code not in b"/."]
    every += [b"a" + byte + b"z" for byte in every] + [b"n" * count for count in (243, 248, 255)]
    every += ["\u4f60\u597d.zip".encode(), "\U0001f600".encode(), b".1.sly", b"a.1.sly", b"-x"]
    for raw in every:
        name = raw.decode(errors="surrogateescape")
        path, data = f"{FILES}in/{name}", raw * 3 + b"12345"
        size = (len(data) + 1) // 2
        parts = jobs.cut(data, size, f"{FILES}out/{name}") if len(raw) + 6 <= 255 else None
        split = ("split", "--size", size, "--output", "out", "--yes", "--", f"in/{name}")
        # The folder is there: one that is made at the user's wish stays when the split is refused.
        yield f"{raw}", {path: data, f"{FILES}out/other": b"other"}, [(split, parts)]
        if parts:
            join = ("join", "--", f"out/{name}.2.sly")
            yield f"{raw}", parts, [(join, {f"{FILES}out/{name}": data})]


def pieces(rng):
    """Folders with pieces that are there twice, missing, of other sizes and with odd names."""
    for number in range(1500):
        contents = {}
        numbers = list(range(1, rng.randrange(2, 14)))
        odd = [0, len(numbers) + 2, 99999, 100000, 999999, 10**18]
        for _ in range(rng.choice((0, 0, 0, 1, 2))):
            numbers.append(rng.choice(numbers + odd))
        if rng.random() < 0.3:
            numbers.remove(rng.choice(numbers))
        for each in numbers:
            digits = rng.choice(["%d"] * 90 + ["0%d", "+%d", "%d ", " %d", "%dx", "-%d"]) % each
            ending = rng.choice([".sly"] * 60 + [".SLY", ".sLy", ".sly2", "sly"])
            folder = rng.choice([""] * 10 + ["sub/", "sub/deep/"])
            start = rng.choice(["f."] * 90 + ["F.", "f..", "ff.", "."])
            size = rng.choice((5, 5, 5, 5, 5, 5, 5, 5, 3, 0))
            contents[FILES + folder + start + digits + ending] = rng.randbytes(size)
        command = ("join", "f.1.sly", "--yes")
        yield f"pieces {number} {sorted(contents)}", contents, [(command, joined(contents))]


def joined(contents):
    """What joining makes of these files: the file f, or None."""
    found = {}
    for path, data in contents.items():
        folder, _, name = path.rpartition("/")
        match = re.fullmatch(r"f\.([1-9][0-9]{0,4})\.sly", name, re.IGNORECASE)
        if match and name.startswith("f"):
            here, below = found.setdefault(int(match[1]), ([], []))
            (below if folder + "/" != FILES else here).append(data)
    chosen = [here or below for _, (here, below) in sorted(found.items())]
    # The piece that was chosen is there, and so are all others; one piece alone is no set.
    whole = FILES + "f.1.sly" in contents and sorted(found) == list(range(1, len(found) + 1))
    if not whole or len(found) < 2 or any(len(candidates) != 1 for candidates in chosen):
        return None
    return {FILES + "f": b"".join(candidates[0] for candidates in chosen)}


def lists(rng):
    """Checksum files that are changed, that tell of other files, or of too many."""
    parts = jobs.cut(rng.randbytes(250), 100, FILES + "f")
    digest = lambda data: hashlib.sha256(data).hexdigest().encode()
    lines = [digest(data) + b"  " + path.removeprefix(FILES).encode() + b"\n"
             for path, data in parts.items()]
    sound = b"".join(lines)
    texts = [sound, sound.replace(b"\n", b"\r\n"), sound.upper(), b"", b"\0" * 500, sound * 2,
             sound + b"#" * 3000, b"\n" * 40_000_000, sound.replace(b"f.3", b"f.4")]
    outside = digest(b"untouched") + b"  "
    texts += [sound + outside + name + b"\n" for name in (
        b"../outside", b"/etc/passwd", b"./f.1.sly", b"f.0.sly", b"f.32768.sly", b"f.99999999999.sly",
        b"f.4.sly\0", b"\xff.1.sly", b"", b"f.04.sly", b"F.4.sly", b"more/f.4.sly")]
    for _ in range(200):
        text = bytearray(rng.choice((sound, b"".join(rng.sample(lines, rng.randrange(4))))))
        at, length = rng.randrange(len(text) + 1), rng.choice((0, 1, 1, 1, 64))
        text[at : at + length] = rng.choice((b"", b"\\", b"\n", b"*", b"a", rng.randbytes(1)))
        texts.append(bytes(text))
    for text in texts:
        contents = parts | {FILES + "f.sha256": text}
        fits = told(text) == {i + 1: digest(data) for i, data in enumerate(parts.values())}
        yield f"list {text[:300]}", contents, [
            (("verify", "f.1.sly"), {} if fits else None),
            (("join", "f.1.sly"), {FILES + "f": b"".join(parts.values())} if fits else None)]


def told(text):
    """The digests that a checksum file of the pieces of f tells; None where it is refused."""
    found = {}
    for line in text.split(b"\n"):
        line = line if len(line) <= 2048 else b"?"
        match = re.fullmatch(
            rb"\\?([0-9a-fA-F]{64}) [ *]f\.([1-9][0-9]{0,4})\.[sS][lL][yY]", line.removesuffix(b"\r"))
        if match and int(match[2]) not in found:
            found[int(match[2])] = match[1].lower()
        elif line.removesuffix(b"\r") and not line.startswith(b"#"):
            return None
    return found if len(text) <= 2**25 else None
