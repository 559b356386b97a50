"""What must be there after a job: from docs/FORMAT.md and the promises of the documents alone."""

import collections
import dataclasses
import hashlib
import itertools
import os
import re
import signal
import traceback

import carriers
import world
from world import File, list_text

LIST_LIMIT, LINE_LIMIT, MOST_PIECES, PAGE = 2**25, 2048, 32767, 4096
PUBLIC = b"slyver"  # The password that opens a list which needs none.
UNFIT = ("txt", "ini", "inf", "doc", "log", "html", "htm", "php", "rtf", "dot")
DONE = rb"^File (Successfully Sly|Joined|Hidden|Recovered)\.$"
NUMBER = r"\.([1-9][0-9]{0,4})\.[sS][lL][yY]"
VALUED = {"--size", "--count", "--output", "--file", "--password-file", "--passphrase-file"}


@dataclasses.dataclass
class Expected:
    why: str  # The rule, in a few words.
    status: int | None = 1  # None: 0, or 1 and then nothing has changed.
    # Each path's new bytes, None if it is deleted, a function that is true of the right bytes, or a
    # tuple of what it may be.
    changes: dict = dataclasses.field(default_factory=dict)
    loose: set = dataclasses.field(default_factory=set)  # May be deleted too.
    sources: list = dataclasses.field(default_factory=list)  # Who may read these may read the results.
    private: set = dataclasses.field(default_factory=set)  # Results for their owner alone.
    out: bytes | None = None  # None: anything.
    partial: dict = dataclasses.field(default_factory=dict)  # The changes of a job that fails halfway.
    instead: dict | None = None  # Another state that the job may have started from.


class Refused(Exception):
    """The job must fail and change nothing."""


def refuse_if(condition, why, status=1):
    if condition:
        raise Refused(why, status)


class Job:
    """A job, before it runs. `state` is what world.look has found, `place` the World."""

    def __init__(self, arguments, state, place):
        self.verb, *rest = arguments
        self.options, self.state, self.place = {}, state, place
        while (word := rest.pop(0)) != "--":
            self.options[word] = rest.pop(0) if word in VALUED else True
        self.names = [os.path.normpath(name) for name in rest]
        self.folder, self.name = os.path.split(self.names[0])
        self.force = "--force" in self.options
        self.yes = self.force or "--yes" in self.options

    def expected(self):
        try:
            found = getattr(self, self.verb)()
        except Refused as refusal:
            found = Expected(*refusal.args)
        if self.verb == "split":
            found.loose |= self.place.leftovers
            if aside := self.aside():
                held = {path for path in self.place.leftovers if "/earlier/" in path}
                found.instead = {path: each for path, each in self.state.items()
                                 if path not in held | self.set()} | aside
                if found.status == 1:  # What was put aside must not be lost.
                    found.loose -= held
        return found

    def file(self, path):
        """The file that a path leads to, or None."""
        found = self.state.get(path)
        if isinstance(found, str) and found.startswith("link to "):
            target = os.path.join(os.path.dirname(path), found.removeprefix("link to "))
            return self.file(os.path.normpath(target))
        return found if isinstance(found, File) else None

    def blocks(self, path):
        """True if there is something that a file never replaces."""
        entry = self.state.get(path, "link to")
        return isinstance(entry, str) and not entry.startswith("link to")

    def output(self):
        named = self.options.get("--output")
        return self.folder if named is None else os.path.normpath(named).removeprefix(".")

    def made_output(self):
        """The same; a folder that does not exist is made by those who agree."""
        above = folder = self.output()
        while above and self.state.get(above) != "folder":
            refuse_if(above in self.state, "the folder's name is something else's")
            above = os.path.dirname(above)
        refuse_if(above != folder and not self.yes, "the folder is to be made")
        return folder

    def free(self, names, taken=()):
        """The first path in the output folder that is free."""
        paths = (os.path.join(self.made_output(), name) for name in names)
        return next(path for path in paths if path not in self.state and path not in taken)

    def printed(self, *paths):
        return b"".join(os.fsencode(self.place.at(path)) + b"\n" for path in paths)

    def pieces(self):
        """The pieces by folder and number; each number has paths."""
        found = collections.defaultdict(lambda: collections.defaultdict(list))
        for path in self.state:
            folder, name = os.path.split(path)
            match = name.startswith(self.name) and re.fullmatch(NUMBER, name.removeprefix(self.name))
            if match and self.file(path):
                found[folder][int(match[1])].append(path)
        return found

    def listed(self, folder):
        """The checksum file in a folder: None if there is none, {} if it is not understood, else
        digests by number, that of the whole file by 0."""
        path = os.path.join(folder, self.name + ".sha256")
        file = self.state.get(path)
        read = isinstance(file, File) and read_list(file.data, os.fsencode(self.name))
        return None if path not in self.state else read or {}

    # Split.

    def set(self):
        """The set that a split would replace."""
        folder = self.output()
        found = {path for paths in self.pieces()[folder].values() for path in paths}
        known = self.listed(folder)
        return found | ({os.path.join(folder, self.name + ".sha256")} if known and 0 not in known else set())

    def first(self):
        return os.path.join(self.output(), self.name + ".1.sly")

    def aside(self):
        """The set of which a killed split has put something aside: it comes back."""
        held = any("/earlier/" in path for path in self.place.leftovers & self.state.keys())
        return self.place.put_aside.get(self.first(), {}) if held else {}

    def split(self):
        refuse_if("--size" in self.options and "--count" in self.options, "size and count", 2)
        source = self.file(self.names[0])
        refuse_if(source is None, "no such file")
        refuse_if(self.names[0] + ".1.sly" in self.state, "piece 1 is beside the file")
        length, size = len(source.data), int(self.options.get("--size", 1450000))
        if "--count" in self.options:
            count = int(self.options["--count"])
            refuse_if(count < 2 or count >= length, "a count that cannot be")
            size = -(-length // count)
        refuse_if(length <= size, "not longer than a piece")
        count = -(-length // size)
        refuse_if(count > MOST_PIECES, "too many pieces")
        last = ".sha256" if "--checksum" in self.options and count < 100 else f".{count}.sly"
        refuse_if(len(os.fsencode(self.name + last)) > 255, "too long a name")
        start = os.path.join(self.made_output(), self.name)
        new = {f"{start}.{i + 1}.sly": source.data[i * size : (i + 1) * size] for i in range(count)}
        refuse_if(any(map(self.blocks, new)), "a folder has a piece's name")
        taken = self.state.keys() & new
        old, aside = self.set(), self.aside()
        if "--checksum" in self.options:
            path = start + ".sha256"
            refuse_if(path in self.state and path not in old, "another's list")
            new[path] = list_text(
                "plain", [(os.path.basename(each), data) for each, data in new.items()])
        refuse_if((old or aside or taken) and not self.yes, "pieces of an earlier split")
        over = old | aside.keys()
        partial = {}
        if not aside and self.first() not in old:  # Leftovers may have gone first.
            partial = {path: (None, new.get(path)) for path in new.keys() | old
                       if path != self.first() and path.endswith(".sly")}
            for path in old:
                partial[path] = *partial.get(path, (None,)), self.file(path).data
        return Expected("split over an earlier set" if over else "split",
                        self.status_by_room(new, old, partial), dict.fromkeys(over) | new,
                        sources=[source], partial=partial,
                        out=self.printed(*new) if "--verbose" in self.options else b"")

    def status_by_room(self, new, old, partial):
        """Between what must fit and what cannot are the pages that the work itself needs."""
        if not self.place.disk:
            return 0
        pages = lambda files: sum(-(-len(data) // PAGE) for data in files) * PAGE
        room = self.place.room()
        if self.first() not in old:  # Leftovers go first where there is no room.
            room += pages(self.file(path).data for path in old)
        if pages(new.values()) > room:
            raise Refused("no room", 1, partial)
        return 0 if pages(new.values()) + 16 * PAGE <= room else None

    # Join and verify.

    def gather(self):
        """Finds the pieces, and what is odd about them."""
        piece = self.names[0]
        match = re.fullmatch(r"(.+)\.([^.]{1,6})\.[sS][lL][yY]", self.name, re.DOTALL)
        refuse_if(not match, "no name of a piece")
        self.name, number = match.groups()
        refuse_if(not re.fullmatch("[1-9][0-9]{0,5}", number), "no name of a piece")
        pieces, below = self.pieces(), collections.defaultdict(list)
        here, start = pieces.pop(self.folder, {}), os.path.join(self.folder, "")
        for folder, theirs in pieces.items():
            inner = folder.removeprefix(start)
            if folder.startswith(start) and not re.search(r"(^|/)\.slyver-", inner):
                if 1 not in theirs and not theirs.keys() & here.keys():
                    for i, paths in theirs.items():
                        below[i] += paths
        self.found = {i: paths[0] for i, paths in sorted((here | below).items())}
        refuse_if(not self.found or any(len(each) > 1 for each in (here | below).values()),
                  "no pieces, or a number twice")
        self.chosen = int(number) if self.file(piece) is None else 0
        refuse_if(self.chosen and self.verb == "join", "no such piece")
        self.list = self.listed(self.folder)
        self.digests = self.list or {}
        self.whole, listed = 0 in self.digests, self.digests.keys() - {0}
        most = max(*listed, *self.found, 0 if listed else max(2, self.chosen), 0)
        self.missing = set(range(1, most + 1))
        self.missing -= self.found.keys()
        data = [self.file(path).data for path in self.found.values()]
        damaged = lambda i, data: self.digests.get(i) not in (None, hashlib.sha256(data).hexdigest())
        self.damaged = [i for i, each in zip(self.found, data) if damaged(i, each)]
        self.damaged += [0] * damaged(0, b"".join(data))
        lengths = [len(each) for each in data]
        odd = len(set(lengths[:-1])) > 1 or lengths[-1] > lengths[0]
        self.unproven = [why for why, true in {
            "list not understood": self.list == {},
            "pieces from a subfolder": any(not self.whole and i not in self.digests for i in below),
            "pieces not in the list": listed and (self.found.keys() | {self.chosen}) - listed - {0},
            "odd sizes": odd and not self.digests,
        }.items() if true]

    def join(self):
        self.gather()
        refuse_if(self.missing or len(self.found) < 2, "a piece is missing")
        next_one = os.path.join(self.folder, f"{self.name}.{len(self.found) + 1}.sly")
        refuse_if(next_one in self.state, "a piece that is no file")
        target = os.path.join(self.made_output(), self.name)
        refuse_if(self.blocks(target), "a folder has the joined name")
        delete, doubts = "--delete" in self.options, self.unproven + ["damaged"] * bool(self.damaged)
        doubts += ["deleted unchecked"] * (delete and not self.digests)
        refuse_if(doubts and not self.force, ", ".join(doubts))
        refuse_if(target in self.state and not self.yes, "the joined file exists")
        sources = [self.file(path) for path in self.found.values()]
        changes = {target: b"".join(source.data for source in sources)}
        done = Expected(", ".join(["join", *doubts]), int(bool(self.damaged)), changes,
                        sources=sources, out=self.printed(target))
        if delete and not self.damaged:
            gone = set(self.found.values())
            if not self.whole and self.list is not None:
                gone.add(os.path.join(self.folder, self.name + ".sha256"))
            if self.unproven:  # What is not proven may be kept.
                done.loose = gone
            else:
                changes.update(dict.fromkeys(gone))
        return done

    def verify(self):
        self.gather()
        judge = lambda i: ("MISSING" if i in self.missing else "NOT CHECKED" if self.whole else
                           "DAMAGED" if i in self.damaged else "OK")
        lines = [(f"{self.name}.{i}.sly", judge(i)) for i in sorted(self.missing | self.found.keys())]
        if self.whole:
            lines.append((self.name, "NOT CHECKED" if self.missing else
                          "DAMAGED" if self.damaged else "OK"))
        out = b"".join(escaped(name) + b"\t" + word.encode() + b"\n" for name, word in lines)
        why = "verify by a list of " + ("the file" if self.whole else "pieces" if self.list else "nothing")
        if len(lines) == 1:
            return Expected("verify a set of one piece", None)
        # No text settles the words for what is odd, nor how sizes are judged where some are missing.
        unsettled = self.unproven or (self.missing and not self.list)
        return Expected(why, int(bool(self.unproven or self.missing or self.damaged)),
                        out=None if unsettled else out)

    # Hidden files.

    def secret(self, option):
        """The first line of the file that an option names, or None without the option."""
        if option not in self.options:
            return None
        data = self.state[self.options[option]].data
        line = data.split(b"\n")[0].removesuffix(b"\r")
        refuse_if(not line or b"\0" in data or data[:2] in (b"\xff\xfe", b"\xfe\xff"), "no password text")
        try:
            return line.decode()
        except UnicodeDecodeError:
            raise Refused("no password text", 1) from None

    def password(self):
        """The list's password; the public one where none is given."""
        text = self.secret("--password-file")
        if text is None:
            return PUBLIC
        password = carriers.to_text8(text)
        refuse_if(password is None, "not in the code page")
        refuse_if(len(password) > 24 or password == PUBLIC, "no password")
        return password

    def carrier(self):
        file = self.file(self.names[0])
        refuse_if(file is None, "no such carrier")
        reading = carriers.read(file.data, self.password())
        needed = reading.main_length if "--main" in self.options else reading.files
        refuse_if(needed is None, "the wrong password, or nothing hidden")
        return file, reading

    def list(self):
        _, reading = self.carrier()
        lines = (f"{i}\t{length}\t{name}\n" for i, (name, _, length) in enumerate(reading.files))
        return Expected("list", 0, out="".join(lines).encode())

    def recover(self):
        file, reading = self.carrier()
        passphrase, made, private = self.secret("--passphrase-file"), {}, set()
        numbers = range(len(reading.files or ()))
        if "--all" not in self.options and "--main" not in self.options:
            refuse_if("--file" not in self.options and len(numbers) > 1, "which of them?")
            refuse_if(int(self.options.get("--file", 0)) not in numbers, "no such number")
            numbers = [int(self.options.get("--file", 0))]
        parts = [reading.files[i] for i in numbers]
        if "--main" in self.options:
            parts = [(self.name, 0, reading.main_length)]
        for name, at, length in parts:
            data = file.data[at : at + length]
            plain, key = self.place.plain.get(data, (None, None))
            opens = plain is not None and passphrase is not None and name.endswith(".age")
            refuse_if(opens and key != passphrase, "a wrong passphrase")
            if opens:
                name, data = name.removesuffix(".age"), plain
            path = self.free([f"Original {name}", *(f"Original [{i}] {name}" for i in range(1, 9))], made)
            made[path] = data
            private |= {path} if opens else set()
        refuse_if(passphrase is not None and not private, "a passphrase for nothing")
        return Expected("recover", 0, made, sources=[file], out=self.printed(*made), private=private)

    def hide(self):
        main, added = map(self.file, self.names)
        refuse_if(main is None or added is None, "no such files")
        refuse_if(self.name.endswith(UNFIT), "a format that takes nothing")
        refuse_if(not main.data or not added.data, "an empty file")
        password, encrypts = self.password(), "--encrypt" in self.options
        passphrase = self.secret("--passphrase-file")
        old = carriers.read(main.data, password)
        refuse_if(old.records >= 6, "six files are hidden already")
        refuse_if(old.records and not self.yes, "files are hidden already")
        refuse_if(old.records and not (old.whole and old.main_name), "the wrong password")
        is_open = old.opens and password == PUBLIC
        refuse_if(not old.records and (password == PUBLIC) != encrypts and not is_open,
                  "no use of the password")
        refuse_if(encrypts and (passphrase or "").encode() in (b"", PUBLIC, password), "no passphrase")
        contents = lambda reading, data: [
            (carriers.to_text8(each), data[at : at + length]) for each, at, length in reading.files or []]
        name = stored(os.path.basename(self.names[1]) + ".age" * encrypts)
        before = contents(old, main.data)
        start, main_name = len(main.data), stored(os.path.basename(self.names[0]))
        if old.records:
            start, main_name = old.main_length, old.main_name
        made = lambda *hidden: carriers.carrier_of(main_name, main.data[:start], hidden, password)

        def right(data):
            new = carriers.read(data, password)
            *others, last = contents(new, data) or [None]
            if last and encrypts and last[1].startswith(b"age-encryption.org/v1\n"):
                self.place.plain[last[1]] = added.data, passphrase
                last = last[0], added.data
            return (new.whole and others == before and last == (name, added.data)
                    and data[:start] == main.data[:start])

        path = self.free([f"Hidden File {self.name}",
                          *(f"[{i}] Hidden File {self.name}" for i in range(1, 9))])
        if not encrypts and (not old.records or main.data == made(*before)):
            right = made(*before, (name, added.data))
        return Expected("hide", 0, {path: right}, sources=[main, added], out=self.printed(path))


def stored(name):
    """A hidden file's name as a directory has it."""
    raw = carriers.to_text8(name)
    ending = raw[raw.rfind(b".") :] if b"." in raw else b""
    return raw if len(raw) <= 24 else raw[: max(0, 24 - len(ending))] + ending[:24]


def escaped(name):
    raw = os.fsencode(name)
    text = raw.replace(b"\\", b"\\\\").replace(b"\n", b"\\n")
    return text if text == raw else b"\\" + text


def read_list(text, name):
    """What a checksum file says of `name`: digests by number, 0 for the whole; {} if nothing."""
    found, whole = {}, {}
    for line in text.removeprefix(b"\xef\xbb\xbf").split(b"\n"):
        long, line = len(line) > LINE_LIMIT, line.removesuffix(b"\r")
        if not line or line.startswith(b"#"):
            continue
        match = re.fullmatch(rb"(?P<escape>\\?)((?P<digest>[0-9a-fA-F]{64}) [ *](?P<name>.+)"
                             rb"|SHA256 \((?P<name2>.+)\) = (?P<digest2>[0-9a-fA-F]{64}))", line)
        if long or not match:
            return {}
        told, digest = match["name"] or match["name2"], (match["digest"] or match["digest2"]).lower()
        if match["escape"]:
            told = re.sub(rb"\\([\\nr])", lambda m: {b"n": b"\n", b"r": b"\r"}.get(m[1], m[1]), told)
        told = told.removeprefix(b"./")
        number = re.fullmatch(NUMBER.encode(), told.removeprefix(name))
        if not told.startswith(name) or not number and told != name:
            return {}
        into, key = (found, int(number[1])) if number else (whole, 0)
        if into.setdefault(key, digest.decode()) != digest.decode():
            return {}
    sound = sorted(found) == list(range(1, len(found) + 1)) and len(text) <= LIST_LIMIT
    return (found or whole) if sound else {}


def remember_kill(arguments, before, after, place):
    """Takes note of what a killed job has left, and of the set that it was to replace."""
    place.leftovers |= {path for path in after.keys() - before.keys() if ".slyver-" in path}
    job = Job(arguments, before, place)
    complete = after.get(job.first()) not in (None, before.get(job.first()))
    earlier = job.aside() or {path: before[path] for path in job.set()}
    place.put_aside[job.first()] = {} if complete else earlier


def failure_of_two(jobs, before, place, after, outcomes):
    """The kind and the text of what is wrong after two jobs at once, or None. Those that have ended
    well must have worked one after the other, the others not at all."""
    for status, _, err in outcomes:
        if status not in (0, 1, -signal.SIGINT) or status == 1 and not err.strip():
            return "ending", f"ended with {status}: {err[-300:]!r}"
    done = [arguments for arguments, outcome in zip(jobs, outcomes) if outcome.status == 0]
    alone = [Job(arguments, before, place).expected().status for arguments in jobs]
    if not done and 0 in alone and -signal.SIGINT not in [outcome.status for outcome in outcomes]:
        return "status", f"neither has ended well: {outcomes}"
    wrong = []
    for order in itertools.permutations(done):
        state, changes = before, {}
        for arguments in order:
            expected = Job(arguments, state, place).expected()
            if expected.status:
                break
            changes |= expected.changes
            state = {path: data if path not in changes else File(changes[path], 0o644, 0, 0, b"")
                     for path, data in (state | changes).items() if changes.get(path, data) is not None}
        else:
            wrong.append(differing(Expected("", changes=changes), before, after))
    best = min(wrong, key=len, default=["both have ended well"])
    return ("files", f"{'; '.join(best[:4])}, after {outcomes}") if best else None


def play(sly, folder, steps):
    """Does the steps up to the first failure. Returns the number of jobs, and None or the failure's
    kind, its text and the steps so far."""
    count = 0
    with world.World(sly, folder) as place:
        for i, step in enumerate(steps):
            if step[0] not in ("sly", "kill", "both"):
                try:
                    place.do(step)
                except OSError:
                    pass  # Names may be in each other's way.
                continue
            before = world.look(place.files)
            if step[0] == "kill":
                place.do(step)
                remember_kill(step[2:], before, world.look(place.files), place)
                continue
            count += 1
            why = "the model itself"
            try:
                if step[0] == "both":
                    why, outcomes = f"at once with {step[4][0]}", place.do(step)
                    wrong = failure_of_two(
                        step[3:], before, place, world.look(place.files), outcomes)
                else:
                    job = Job(step[1:], before, place)
                    expected = job.expected()
                    why = expected.why
                    outcome = place.do(step)
                    wrong = failure(job, expected, world.look(place.files), outcome)
            except Exception:
                wrong = "error", traceback.format_exc()
            if wrong:
                return count, ((str(step[1]), why, wrong[0]), wrong[1], steps[: i + 1])
    return count, None


def failure(job, expected, after, outcome):
    """The kind and the text of what is wrong after a job, or None."""
    status, out, err = outcome
    if status not in (0, 1, 2):
        return "ending", f"ended with {status}: {err[-300:]!r}"
    if expected.status is None:
        expected = expected if status == 0 else Expected(
            expected.why, changes=expected.partial, loose=expected.loose)
    elif status != expected.status:
        return "status", f"status {status} instead of {expected.status}: {err[-300:]!r}"
    # The home's own name is random, and may look like a part of an exception's text.
    said = err.replace(os.fsencode(job.place.home), b"")
    if words := wrong_words(status, said, expected, "--quiet" in job.options):
        return "words", f"{words}: {err!r}"
    starts = [job.state] + [expected.instead] * (expected.instead is not None)
    if expected.why == "pieces of an earlier split":  # What was put aside is back before the question.
        starts = starts[-1:]
    if wrong := min((differing(expected, start, after) for start in starts), key=len):
        return "files", "; ".join(wrong[:4])
    if status != 2 and expected.out not in (None, out.replace(b"/./", b"/")):
        return "output", f"prints {out!r} instead of {expected.out!r}"
    for path in [path for path, data in expected.changes.items() if data is not None and path in after]:
        if text := wrong_rights(expected, path, job.state.get(path), after[path], job.place):
            return "rights", f"{text}: {path!r}"
    return None


def wrong_words(status, err, expected, quiet):
    """What is wrong with the messages of a job."""
    if re.search(rb"::|__|\bstd\b", err):
        return "the text of an exception"
    if status and not err.strip():
        return "failed without a message"
    silent = quiet and not status or not expected.changes
    return "a message of success" if silent and re.search(DONE, err, re.MULTILINE) else ""


def differing(expected, start, after):
    """What is not as it must be."""
    changes, parents, wrong = expected.changes, set(), []
    for path in [path for path, data in changes.items() if data is not None]:
        while path := os.path.dirname(path):
            parents.add(path)
    for path in sorted(start.keys() | after.keys() | changes.keys()):
        new, old = after.get(path), start.get(path)
        if path in changes:
            must, data = changes[path], new.data if isinstance(new, File) else new
            right = (data in must if isinstance(must, tuple) else data == must if not callable(must)
                     else data is not None and must(data))
            text = "wrong bytes" if new and must is not None else "still there" if new else "missing"
        else:
            right = new == old or new is None and path in expected.loose or (
                new == "folder" and path in parents)
            text = "changed" if new and old else "not to be there" if new else "gone"
        wrong += [] if right else [f"{text}: {path!r}"]
    return wrong


def wrong_rights(expected, path, old, new, place):
    """What is wrong with the rights of a new file that may have replaced an old one."""
    if path in expected.private:
        return "" if new.mode & 0o777 == 0o600 and not new.access else "decrypted, and open to others"
    for source in expected.sources:
        if not source.mode & 0o004 and (more := new.readers() - source.readers()):
            return f"{more} may read it, but not its source"
    if place.disk:  # What was to be replaced may have gone first.
        return ""
    if isinstance(old, File) and old.user != new.user and os.geteuid() == 0:
        return f"its owner was {old.user} and is {new.user}"
    common = 0o444 & ~place.umask
    for source in expected.sources:
        if (source.user, source.group) != (new.user, new.group) or source.access:
            return ""
        common &= source.mode
    if not isinstance(old, File):
        return "" if new.mode & 0o444 == common else f"its mode is {new.mode:o}, not {common:o}"
    wider = any(old.mode & 0o666 & ~source.mode or not source.mode & 0o004
                and old.readers() - source.readers() for source in expected.sources)
    if not wider and (old.mode, old.access) != (new.mode, new.access):
        return f"replaced a file of mode {old.mode:o}, access list {old.access.hex()}"
    return ""
