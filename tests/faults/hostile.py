"""Hostile input: damaged carriers, and passwords and hidden names of every byte. Whatever comes, sly
does what a reader written from docs/FORMAT.md says, or refuses; it never crashes, hangs, or touches
another file. This is the build with sanitizers."""

import dataclasses
import random

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
        if carrier is jobs.ABSENT:
            return False
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
    """Every character that a password can have, and every byte that a password file can hold but a
    zero, which stands for UTF-16."""
    hidden = [(b"x.dat", b"hidden")]
    for code in range(1, 256):
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
