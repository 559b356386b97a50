"""Hostile input: damaged carriers, passwords and names of every byte, pieces that do not belong
together. Whatever comes, sly does what a reader written from docs/FORMAT.md says, or refuses; it
never crashes, hangs, or touches another file."""

import os
import random
import shutil

import carriers
from many import Many
from suite import Case

PASSWORD = b"Ab"
MAIN_NAME = b"c.bin"
ADDED = b"the file that is added"
CODE_PAGE = [carriers.to_text(bytes([code])) for code in range(256)]


def run(setting):
    rng = random.Random(setting.seed)
    bench = Bench(setting)
    cases = [
        damaged_directories(bench, rng, setting.short),
        truncations(bench, rng, setting.short),
        rewritten_directories(bench, rng, setting.short),
        passwords(bench, rng, setting.short),
        names(bench, rng, setting.short),
        pieces(bench, rng, setting.short),
    ]
    status, _, report = bench.many.close()
    leaks = Case("leaks of memory", bench.runs)
    if status != 0:
        leaks.losses.append(report.decode(errors="replace")[:2000])
    return [*cases, leaks]


class Bench:
    """A home with files that must not change, and the means to try one input after another."""

    def __init__(self, setting):
        self.home = os.fsencode(setting.folder / "home")
        self.files = os.path.join(self.home, b"files")
        self.many = Many(setting, setting.folder / "home")
        self.runs = 0
        self.kept = {}  # These must stay as they are;
        self.loose = set()  # these may go.

    def begin(self, contents, loose=()):
        """Puts these files, and nothing else, into the home: name, below files/, and bytes."""
        if os.path.exists(self.home):
            shutil.rmtree(self.home)
        os.makedirs(os.path.join(self.home, b"run"))
        os.makedirs(self.files)
        self.kept = {b"outside": b"untouched"} | {
            os.path.join(b"files", name): data for name, data in contents.items()
        }
        self.loose = {os.path.join(b"files", name) for name in loose}
        for name, data in self.kept.items():
            path = os.path.join(self.home, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "wb") as file:
                file.write(data)

    def replace(self, name, data):
        self.kept[os.path.join(b"files", name)] = data
        with open(os.path.join(self.files, name), "wb") as file:
            file.write(data)

    def run(self, *arguments):
        """Runs sly in the folder files/. Its outcome, the files that it made (and removes them),
        and what is wrong whatever the input was."""
        self.runs += 1
        outcome = self.many.run(self.files, *arguments)
        made, wrong = {}, []
        found = set()
        for folder, _, names in os.walk(self.home):
            for name in names:
                path = os.path.join(folder, name)
                short = os.path.relpath(path, self.home)
                found.add(short)
                with open(path, "rb") as file:
                    data = file.read()
                if short not in self.kept:
                    made[short] = data
                    os.remove(path)
                elif data != self.kept[short]:
                    wrong.append(f"changed: {short}")
        wrong += [f"gone: {name}" for name in self.kept.keys() - found - self.loose]
        if outcome.status not in (0, 1):
            wrong.append(f"ended with {outcome.status}: {outcome.err[:1500]}")
        if outcome.status == 1 and not outcome.err.strip():
            wrong.append("status 1 without a message")
        if outcome.status == 1 and made:
            wrong.append(f"failed, but made {sorted(made)}")
        return outcome, made, wrong

    def expect(self, case, what, expected, *arguments):
        """Runs sly, which must make exactly the `expected` files, below files/, or fail where they
        are None."""
        outcome, made, wrong = self.run(*arguments)
        if expected is None and outcome.status == 0:
            wrong.append(f"status 0, but it should refuse; made {sorted(made)}")
        if expected is not None:
            expected = {os.path.join(b"files", name): data for name, data in expected.items()}
            if outcome.status != 0 or made != expected:
                wrong.append(
                    f"status {outcome.status} ({outcome.err[:200]}), made {sorted(made)} instead of"
                    f" {sorted(expected)}, or with other bytes"
                )
        case.losses += [f"{what}: {arguments}: {text}" for text in wrong]


def try_carrier(bench, case, what, carrier, password=PASSWORD, numbers=(0,)):
    """Lists, recovers from and adds to a carrier; `numbers` are the hidden files to recover. The
    password lies in the file "password", in the code page that carriers use in `password`."""
    case.tried += 1
    bench.replace(MAIN_NAME, carrier)
    reading = carriers.read(carrier, password)
    files = reading.files
    options = ("--password-file", "password")

    outcome, made, wrong = bench.run("list", MAIN_NAME, *options)
    listed = [f"{i}\t{length}\t{name}\n" for i, (name, _, length) in enumerate(files or [])]
    if outcome.out != "".join(listed).encode() or (outcome.status == 0) != (files is not None):
        wrong.append(f"listed {outcome.status} {outcome.out} instead of {listed}")
    case.losses += [f"{what}: list: {text}" for text in wrong + sorted(made)]

    for number in numbers:
        expected = None
        if files is not None and number < len(files):
            name, offset, length = files[number]
            expected = {f"Original {name}".encode(): carrier[offset : offset + length]}
        bench.expect(case, what, expected, "recover", MAIN_NAME, "--file", number, *options)
    expected = None
    if reading.main_length is not None:
        expected = {b"Original " + MAIN_NAME: carrier[: reading.main_length]}
    bench.expect(case, what, expected, "recover", MAIN_NAME, "--main", *options)
    try_adding(bench, case, what, carrier, reading, password)


def try_adding(bench, case, what, carrier, reading, password):
    """Hides another file in the carrier. What comes out must give back what went in."""
    outcome, made, wrong = bench.run(
        "hide", MAIN_NAME, "add.me", "--yes", "--password-file", "password"
    )
    name = b"files/Hidden File " + MAIN_NAME
    first = reading.records == 0
    possible = first or (reading.whole and reading.main_named and reading.records < 6)
    if possible != (outcome.status == 0):
        wrong.append(f"ended with {outcome.status}: {outcome.err[:200]}")
    elif possible and list(made) != [name]:
        wrong.append(f"made {sorted(made)}")
    elif first:
        if made[name] != carriers.carrier_of(MAIN_NAME, carrier, [(b"add.me", ADDED)], password):
            wrong.append("made another carrier than described")
    elif possible:
        old = [(text, carrier[at : at + length]) for text, at, length in reading.files]
        new = carriers.read(made[name], password)
        now = [(text, made[name][at : at + length]) for text, at, length in new.files or []]
        if not new.whole or now != [*old, ("add.me", ADDED)]:
            wrong.append("made a carrier that does not give back what is hidden in it")
    case.losses += [f"{what}: hide: {text}" for text in wrong]


def begin_with_carriers(bench, password=PASSWORD):
    bench.begin({b"password": password + b"\n", b"add.me": ADDED})


def sample(rng, count, main=3000, sizes=(7, 900, 1, 25, 400, 6)):
    hidden = [(b"%d.dat" % i, rng.randbytes(size)) for i, size in enumerate(sizes[:count])]
    return carriers.carrier_of(MAIN_NAME, rng.randbytes(main), hidden, PASSWORD)


def damaged_directories(bench, rng, short):
    """Every byte of the directory is changed, one at a time."""
    case = Case("a byte of the directory changed")
    begin_with_carriers(bench)
    for carrier, masks in ((sample(rng, 3), (0x20, 0xFF)), (sample(rng, 1, main=40), (0x01,))):
        start = len(carrier) - carriers.DIRECTORY
        text_end = carrier.index(b"\0", start) + 2
        for position in range(start, len(carrier)):
            if short and (position > text_end or rng.random() < 0.7):
                continue
            for mask in (*masks, rng.randrange(1, 256)) if position < text_end else masks[:1]:
                damaged = bytearray(carrier)
                damaged[position] ^= mask
                what = f"byte {position - start} of {len(carrier)} ^ {mask}"
                try_carrier(bench, case, what, bytes(damaged))
    return case


def truncations(bench, rng, short):
    """The carrier ends 1, 2, ... 3000 bytes too early; or, which is the same to a reader, bytes are
    missing at its beginning or come behind it."""
    case = Case("a carrier cut or lengthened")
    begin_with_carriers(bench)
    carrier = sample(rng, 2, main=1500)
    for count in range(1, 3001):
        if not short or count % 20 == 0 or 2480 < count < 2520:
            try_carrier(bench, case, f"{count} bytes less", carrier[:-count])
    for count in [*range(1, 30), *range(30, len(carrier), 150 if short else 10)]:
        try_carrier(bench, case, f"{count} bytes less at the start", carrier[count:])
        try_carrier(bench, case, f"{count} bytes more", carrier + bytes(count))
    return case


def rewritten_directories(bench, rng, short):
    """Directories in other order, case and spelling, with hostile names and lengths."""
    case = Case("a directory written otherwise")
    begin_with_carriers(bench)
    parts = [rng.randbytes(size) for size in (600, 7, 90, 5)]
    body = b"".join(parts)
    hidden = [(b"%d.dat" % i, len(data)) for i, data in enumerate(parts[1:])]
    sound = carriers.lines_of(MAIN_NAME, len(parts[0]), hidden, PASSWORD)

    def attempt(what, sections):
        if short and rng.random() < 0.6:
            return
        text = sections if isinstance(sections, bytes) else carriers.text_of(sections)
        try_carrier(bench, case, what, body + carriers.padded(text), numbers=(0, 2))

    for i, lines in enumerate(sound):
        attempt(f"section {i} missing", sound[:i] + sound[i + 1 :])
        attempt(f"section {i} twice", sound[: i + 1] + sound[i:])
        attempt(f"section {i} first", [lines, *sound[:i], *sound[i + 1 :]])
        attempt(f"section {i} last", [*sound[:i], *sound[i + 1 :], lines])
        for j in range(len(lines)):
            with_lines = lambda changed: sound[:i] + [changed] + sound[i + 1 :]
            line = lines[j]
            attempt(f"line {j} of {i} missing", with_lines(lines[:j] + lines[j + 1 :]))
            attempt(f"line {j} of {i} twice", with_lines(lines[: j + 1] + lines[j:]))
            attempt(f"line {j} of {i} last", with_lines(lines[:j] + lines[j + 1 :] + [line]))
            for spelling in (
                line.upper(),
                line.lower(),
                b" \t" + line + b" ",
                b";" + line,
                line.replace(b"=", b" = "),
                line.replace(b"=", b"='") + b"'",
                line.replace(b"=", b'="') + b'"',
                line + b"=",
                line + b"0" * 100,
                line[: len(line) // 2],
                line * 3,
            ):
                changed = lines[:j] + [spelling] + lines[j + 1 :]
                attempt(f"line {j} of {i} as {spelling}", with_lines(changed))
    text = carriers.text_of(sound)
    attempt("line feeds alone", text.replace(b"\r\n", b"\n"))
    attempt("carriage returns alone", text.replace(b"\r\n", b"\r"))
    attempt("no padding", text + b"x" * carriers.DIRECTORY)
    attempt("nothing but brackets", b"[" * carriers.DIRECTORY)
    attempt("nothing but line feeds", b"\n" * carriers.DIRECTORY)
    attempt("text behind the padding", text + b"\0" + text)
    for order in range(5 if short else 100):
        shuffled = [line for lines in sound for line in lines]
        rng.shuffle(shuffled)
        attempt(f"shuffled {order}", [shuffled])

    attempt("200 records", b"[s@4)]\r\n" + text[8:] + b"".join(
        b"[%ddfg%%]\n?Kj*^=0\n" % i for i in range(3, 120)))
    lengths = [b"0", b"-1", b"+5", b" 5", b"5 ", b"", b"0007", b"5.0", b"5e0", b"0x5", b"\xb2"]
    lengths += [b"%d" % number for base in (31, 32, 63, 64, 70) for number in
                (2**base - 1, 2**base, 2**64 - 2**base, 2**base - len(body))]
    for length in lengths:
        for i in range(3):
            odd = [(name, length if i == j else old) for j, (name, old) in enumerate(hidden)]
            attempt(f"length {i} {length}", carriers.lines_of(MAIN_NAME, 600, odd, PASSWORD))
        attempt(f"main length {length}", carriers.lines_of(MAIN_NAME, length, hidden, PASSWORD))
    for name in hostile_names():
        if short and rng.random() < 0.7:
            continue
        odd = [hidden[0], (name, hidden[1][1]), hidden[2]]
        lines = carriers.lines_of(name, 600, odd, PASSWORD)
        try_carrier(bench, case, f"name {name}", body + carriers.padded(carriers.text_of(lines)),
                    numbers=(1,))
    return case


def hostile_names():
    yield from (b"..", b".", b"/", b"../x", b"/tmp/x", b"a/b", b"a\\b", b"..\\x", b"C:", b"C:x", b"~")
    yield from (b"CON", b"con.txt", b"Aux", b"COM1", b"lpt9.x.y", b"nul ", b"COM0", b"CONX", b" ")
    yield from (b"-", b"--help", b"*", b"$HOME", b"`id`", b"%s%n", b"n" * 24, b"n" * 25, b"n" * 60)
    for code in range(256):
        yield b"a" + bytes([code]) + b"z"
        yield bytes([code])


def passwords(bench, rng, short):
    """Every character that a password can have, and every byte that a password file can hold."""
    case = Case("passwords of every byte")
    main, hidden = b"M" * 2600, [(b"x.dat", b"hidden")]
    for code in range(256):
        every = [bytes([code]), b"a" + bytes([code, code]), bytes([code]) * 24]
        for password in [rng.choice(every)] if short else every:
            typed = carriers.to_text(password).encode()
            carrier = carriers.carrier_of(MAIN_NAME, main, hidden, password)
            # The first line of the file counts, and a carriage return at its end does not.
            usable = code not in b"\n\r"
            begin_with_carriers(bench, typed if usable else b"a")
            if usable:
                try_carrier(bench, case, f"password {password}", carrier, password)
            bench.replace(b"password", password)
            if code >= 0x80:  # Not UTF-8, so not a password.
                bench.replace(MAIN_NAME, carrier)
                arguments = (MAIN_NAME, "--password-file", "password")
                case.tried += 1
                bench.expect(case, f"raw {password}", None, "list", *arguments)
                bench.expect(case, f"raw {password}", None, "recover", *arguments)
                bench.expect(case, f"raw {password}", None, "hide", arguments[0], "add.me",
                             *arguments[1:])
    for length in (0, 24, 25, 49, 100, 10000):
        begin_with_carriers(bench, b"p" * length)
        case.tried += 1
        carrier = carriers.carrier_of(MAIN_NAME, main, hidden, b"p" * max(length, 1))
        bench.replace(MAIN_NAME, carrier)
        expected = {b"Original x.dat": b"hidden"} if length == 24 else None
        bench.expect(case, f"{length} characters", expected, "recover", MAIN_NAME,
                     "--password-file", "password")
    return case


def names(bench, rng, short):
    """Files named with every byte that the file system takes are split, joined, hidden in, hidden
    and recovered."""
    case = Case("names of every byte")
    every = [bytes([code]) for code in range(1, 256)]
    candidates = [*every, *(b"a" + byte + b"z" for byte in every)]
    candidates += [b"n" * length for length in (243, 244, 247, 248, 255)]
    candidates += ["\u4f60\u597d.zip".encode(), "\U0001f600".encode(), b".1.sly", b"a.1.sly", b"-x"]
    for name in candidates:
        if b"/" in name or name == b"." or (short and rng.random() < 0.6):
            continue
        case.tried += 1
        data = name * 3 + b"12345"
        bench.begin({b"in/" + name: data, b"m.png": b"main", b"password": PASSWORD})
        path = os.path.join(bench.files, b"in", name)
        size = (len(data) + 1) // 2
        expected = {
            b"out/" + name + b".%d.sly" % (i + 1): data[i * size : i * size + size] for i in (0, 1)
        }
        if len(name) + 6 > 255:
            expected = None
        what = f"name {name}"
        bench.expect(case, what, expected, "split", "--size", size, "--output",
                     os.path.join(bench.files, b"out"), "--yes", b"--", path)
        if expected is not None:
            bench.begin(expected)
            any_piece = os.path.join(bench.files, sorted(expected)[1])
            bench.expect(case, what, {b"out/" + name: data}, "join", b"--", any_piece)

        bench.begin({b"in/" + name: data, b"m.png": b"main", b"password": PASSWORD})
        stored = stored_name(name)
        bare = carriers.is_bare(stored)
        arguments = ("hide", "--password-file", "password")
        carrier = carriers.carrier_of(b"m.png", b"main", [(stored, data)], PASSWORD)
        bench.expect(case, what, {b"Hidden File m.png": carrier} if bare else None, *arguments,
                     b"--", b"m.png", path)
        carrier = carriers.carrier_of(stored, data, [(b"m.png", b"main")], PASSWORD)
        too_long = len(name) + len(b"Hidden File ") > 255
        bench.expect(case, what, None if too_long else {b"in/Hidden File " + name: carrier},
                     *arguments, b"--", path, b"m.png")
    return case


def stored_name(name):
    """The name as a carrier has it: "_" for what the code page lacks."""
    stored = b""
    while name:
        for size in (1, 2, 3, 4):
            try:
                character = name[:size].decode()
                stored += bytes([CODE_PAGE.index(character)]) if character in CODE_PAGE else b"_"
                break
            except UnicodeDecodeError:
                continue
        else:
            size, stored = 1, stored + b"_"
        name = name[size:]
    return stored


def pieces(bench, rng, short):
    """Folders with pieces that are there twice, missing, of other sizes and with odd names."""
    case = Case("pieces that do not belong together")
    for attempt in range(60 if short else 1500):
        contents = {}
        numbers = list(range(1, rng.randrange(2, 14)))
        odd = [0, len(numbers) + 2, 99999, 100000, 999999, 10**18]
        for _ in range(rng.choice((0, 0, 0, 1, 2))):
            numbers.append(rng.choice(numbers + odd))
        if rng.random() < 0.3:
            numbers.remove(rng.choice(numbers))
        for number in numbers:
            digits = rng.choice([b"%d"] * 90 + [b"0%d", b"+%d", b"%d ", b" %d", b"%dx", b"-%d"])
            ending = rng.choice([b".sly"] * 60 + [b".SLY", b".sLy", b".sly2", b"sly"])
            folder = rng.choice([b""] * 10 + [b"sub/", b"sub/deep/", b"temprrr/"])
            name = rng.choice([b"f."] * 90 + [b"F.", b"f..", b"ff.", b"."])
            contents[folder + name + digits % number + ending] = rng.randbytes(
                rng.choice((5, 5, 5, 5, 5, 5, 5, 5, 3, 0))
            )
        # What lies in the folder for scratch files is none of the user's and goes with it.
        bench.begin(contents, [name for name in contents if name.startswith(b"temprrr/")])
        case.tried += 1
        what = f"pieces {attempt} {sorted(contents)}"
        bench.expect(case, what, joined(contents), "join", "f.1.sly", "--yes")
    return case


def joined(contents):
    """What joining makes of these files: the file f, or None."""
    found = {}
    for path, data in contents.items():
        folder, _, name = path.rpartition(b"/")
        number = name[2:-4]
        if folder == b"temprrr" or not name.startswith(b"f.") or name[-4:].lower() != b".sly":
            continue
        if number.isdigit() and not number.startswith(b"0") and len(number) <= 5:
            here, below = found.setdefault(int(number), ([], []))
            (below if folder else here).append(data)
    chosen = [here or below for _, (here, below) in sorted(found.items())]
    whole = sorted(found) == list(range(1, len(found) + 1)) and found
    if not whole or any(len(candidates) != 1 for candidates in chosen):
        return None
    return {b"f": b"".join(candidates[0] for candidates in chosen)}
