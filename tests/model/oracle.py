"""What must be there after a job: told by docs/FORMAT.md and the promises of the README alone."""

import collections
import dataclasses
import hashlib
import os
import re

import carriers
import world
from world import File

LIST_LIMIT, LINE_LIMIT, MOST_PIECES, PAGE = 2**25, 2048, 32767, 4096
PUBLIC = b"slyver"  # The password that opens a list which needs none.
AGE = b"age-encryption.org/v1\n"
UNFIT = ("txt", "ini", "inf", "doc", "log", "html", "htm", "php", "rtf", "dot")
DONE = rb"^File (Successfully Sly|Joined|Hidden|Recovered)\.$"
VALUED = {"--size", "--count", "--output", "--file", "--password-file", "--passphrase-file"}


@dataclasses.dataclass
class Expected:
    why: str  # The rule, in a few words.
    status: int | None = 1  # None: 0 or 1, and after 1 nothing has changed.
    changes: dict = dataclasses.field(default_factory=dict)
    # Each path's new bytes, None if it is deleted, or a function that tells whether bytes are right.
    loose: set = dataclasses.field(default_factory=set)  # May be deleted.
    sources: list = dataclasses.field(default_factory=list)  # Who may not read these reads no result.
    out: bytes | None = None  # None: anything.
    private: set = dataclasses.field(default_factory=set)  # Their owner's alone.
    kept: set = dataclasses.field(default_factory=set)  # What a killed job has left, and no one has put back.
    instead: dict | None = None  # Another state that the job may have started from.


class Refused(Exception):
    """Ends the thoughts about a job that must fail and change nothing."""


def refuse_if(condition, why, status=1):
    if condition:
        raise Refused(why, status)


class Job:
    def __init__(self, arguments, state, place):
        """`state` is what world.look found before, `place` the World."""
        self.verb, *rest = arguments
        self.options, self.names, self.state, self.place = {}, [], state, place
        while rest:
            word = rest.pop(0)
            if word == "--":
                self.names += rest
                break
            if word.startswith("--"):
                self.options[word] = rest.pop(0) if word in VALUED else True
            else:
                self.names.append(word)
        self.force = "--force" in self.options
        self.yes = self.force or "--yes" in self.options

    def expected(self):
        try:
            found = getattr(self, self.verb)()
        except Refused as refusal:
            found = Expected(*refusal.args)
        if self.verb == "split" and self.aside():
            found.instead = {path: entry for path, entry in self.state.items()
                             if path not in self.place.leftovers and path not in self.set()}
            found.instead |= self.aside()
        found.kept = {path for path in self.place.leftovers if "/earlier/" in path
                      and not (self.verb == "split" and found.status != 1)
                      and any(first not in self.state for first in self.place.put_aside)}
        return found

    # What is there.

    def file(self, path):
        """The file that a path leads to, or None."""
        found = self.state.get(path)
        if isinstance(found, str) and found.startswith("link to "):
            target = os.path.join(os.path.dirname(path), found.removeprefix("link to "))
            return self.file(os.path.normpath(target))
        return found if isinstance(found, File) else None

    def is_folder(self, path):
        return path == "" or self.state.get(path) == "folder"

    def output(self, folder):
        named = self.options.get("--output")
        return folder if named is None else os.path.normpath(named).removeprefix(".")

    def made(self, folder):
        """The same; but one that is not there and may not be made is refused."""
        above = folder = self.output(folder)
        while above and not self.is_folder(above):
            refuse_if(above in self.state, "the folder's name is something else's")
            above = os.path.dirname(above)
        refuse_if(above != folder and not self.yes, "the folder is to be made")
        return folder

    def printed(self, *paths):
        return b"".join(os.fsencode(self.place.at(path)) + b"\n" for path in paths)

    def pieces(self, folder, name, state=None):
        """The pieces of `name` in a folder: for each number the paths."""
        found = collections.defaultdict(list)
        for path, entry in (state or self.state).items():
            match = re.fullmatch(r"\.([1-9][0-9]{0,4})\.[sS][lL][yY]", path.removeprefix(
                os.path.join(folder, name)))
            if match and isinstance(entry, File) and path.startswith(os.path.join(folder, name)):
                found[int(match[1])].append(path)
        return dict(found)

    def listed(self, folder, name):
        """The checksum file beside the pieces: None if there is none, {} if it is not understood,
        else digests by number, that of the whole file by 0."""
        path = os.path.join(folder, name + ".sha256")
        if path not in self.state:
            return None
        entry = self.state[path]
        return read_list(entry.data, os.fsencode(name)) if isinstance(entry, File) else {}

    # Split.

    def split_to(self):
        folder, name = os.path.split(os.path.normpath(self.names[0]))
        return self.output(folder), name

    def set(self):
        """The paths of the set that a split would replace."""
        folder, name = self.split_to()
        known = self.listed(folder, name)
        return {each for paths in self.pieces(folder, name).values() for each in paths} | (
            {os.path.join(folder, name + ".sha256")} if known and 0 not in known else set())

    def aside(self):
        """The set that a killed split has put aside: it comes back unless piece 1 is there."""
        path = os.path.join(*self.split_to()) + ".1.sly"
        return {} if path in self.state else self.place.put_aside.get(path, {})

    def split(self):
        refuse_if("--size" in self.options and "--count" in self.options, "size and count", 2)
        path = os.path.normpath(self.names[0])
        folder, name = os.path.split(path)
        source = self.file(path)
        refuse_if(source is None, "no such file")
        refuse_if(path + ".1.sly" in self.state, "piece 1 is beside the file")
        length = len(source.data)
        size = int(self.options.get("--size", 1450000))
        if "--count" in self.options:
            count = int(self.options["--count"])
            refuse_if(count < 2 or count >= length, "a count that cannot be")
            size = -(-length // count)
        refuse_if(length <= size, "not longer than a piece")
        count = -(-length // size)
        refuse_if(count > MOST_PIECES, "too many pieces")
        refuse_if(len(os.fsencode(f"{name}.{count}.sly")) > 255, "too long a name")
        folder = self.made(folder)
        new = {os.path.join(folder, f"{name}.{i + 1}.sly"):
               source.data[i * size : (i + 1) * size] for i in range(count)}
        refuse_if(any(self.state.get(each) == "folder" for each in new), "a folder has a piece's name")
        lines = [(os.path.basename(each), data) for each, data in new.items()]
        list_path = os.path.join(folder, name + ".sha256")
        old = self.set()
        if "--checksum" in self.options:
            refuse_if(list_path in self.state and list_path not in old, "another's list")
            new[list_path] = world.list_text("plain", lines)
        refuse_if((old or self.aside()) and not self.yes, "pieces of an earlier split")
        self.refuse_without_room(new, old, os.path.join(folder, name + ".1.sly"))
        out = self.printed(*new) if "--verbose" in self.options else b""
        gone = dict.fromkeys(old | self.aside().keys())
        over = "over an earlier set" if gone else "a new set"
        return Expected(f"split, {over}", self.full, gone | new, sources=[source], out=out)

    def refuse_without_room(self, new, old, first):
        """Full is a disk that lacks a page for each file; between there and none it may be."""
        pages = lambda lengths: sum(-(-length // PAGE) for length in lengths) * PAGE
        need, room = pages(map(len, new.values())), self.place.room()
        leftovers = first not in self.state and not any(each.endswith(".sha256") for each in old)
        if leftovers:  # They may go first.
            room += pages(len(self.state[each].data) for each in old)
        self.full = 0
        if self.place.disk:
            refuse_if(need > room, "no room")
            self.full = None if need + 16 * PAGE > room else 0

    # Join and verify.

    def gather(self):
        """Finds the pieces as join and verify do, and what cannot be proven about them."""
        path = os.path.normpath(self.names[0])
        self.folder, chosen = os.path.split(path)
        match = re.fullmatch(r"(.+)\.([^.]{1,6})\.[sS][lL][yY]", chosen, re.DOTALL)
        refuse_if(self.file(path) is None or not match, "no such piece")
        self.name, number = match.groups()
        self.list = self.listed(self.folder, self.name)
        here = self.pieces(self.folder, self.name)
        below = collections.defaultdict(list)
        start = os.path.join(self.folder, "")
        for each, entry in self.state.items():
            inner = each.removeprefix(start)
            if entry == "folder" and each.startswith(start) and not re.search(r"(^|/)\.slyver-", inner):
                theirs = self.pieces(each, self.name)
                if 1 not in theirs and not theirs.keys() & here.keys():
                    for i, paths in theirs.items():
                        below[i] += paths
        found = here | below
        refuse_if(not found, "no pieces")
        refuse_if(any(len(paths) > 1 for paths in found.values()), "a number is there twice")
        taken = len(number) == 6 and number.isdigit() and number[0] != "0"
        refuse_if(not taken and path not in [each for paths in here.values() for each in paths],
                  "the chosen piece is none")
        self.unproven = []
        doubt = lambda condition, why: condition and self.unproven.append(why)
        digests = self.list or {}
        doubt(self.list == {}, "list not understood")
        doubt(any(0 not in digests and i not in digests for i in below), "pieces from a subfolder")
        if digests and 0 not in digests:
            doubt(found.keys() - digests.keys(), "a piece is not in the list")
        listed = digests.keys() - {0}
        self.all = set(range(1, max(0 if listed else 2, *found, *listed) + 1))
        self.found = {i: found[i][0] for i in sorted(found)}
        self.below = below
        lengths = [len(self.file(each).data) for each in self.found.values()]
        if not digests:
            doubt(len(set(lengths[:-1])) > 1 or lengths[-1] > lengths[0], "odd sizes")

    def damaged(self):
        """The numbers of damaged pieces; 0 is the whole file."""
        data = {i: self.file(path).data for i, path in self.found.items()}
        data[0] = b"".join(data.values())
        return [i for i, digest in (self.list or {}).items()
                if i in data and hashlib.sha256(data[i]).hexdigest().encode() != digest]

    def join(self):
        self.gather()
        refuse_if(self.all != self.found.keys() or len(self.found) < 2, "a piece is missing")
        folder = self.made(self.folder)
        target = os.path.join(folder, self.name)
        refuse_if(self.state.get(target) == "folder", "a folder has the joined name")
        delete = "--delete" in self.options
        damaged = self.damaged()
        unproven = self.unproven + ["damaged"] * bool(damaged)
        unproven += ["deleted unchecked"] * (delete and not self.list)
        refuse_if(unproven and not self.force, ", ".join(unproven))
        refuse_if(target in self.state and not self.yes, "the joined file exists")
        sources = [self.file(path) for path in self.found.values()]
        changes = {target: b"".join(source.data for source in sources)}
        done = Expected("join", int(bool(damaged)), changes, sources=sources, out=self.printed(target))
        if unproven:
            done.why += ", forced: " + ", ".join(unproven)
        if delete and not damaged:
            gone = set(self.found.values())
            if self.list and 0 not in self.list:
                gone.add(os.path.join(self.folder, self.name + ".sha256"))
            if set(unproven) <= {"deleted unchecked"}:
                changes.update(dict.fromkeys(gone))
            else:  # What was not proven may be kept.
                done.loose = gone | {os.path.join(self.folder, self.name + ".sha256")}
            done.why += ", deleting"
        return done

    def verify(self):
        self.gather()
        damaged, whole = self.damaged(), 0 in (self.list or {})
        missing = self.all - self.found.keys()
        judge = lambda i: ("MISSING" if i in missing else "NOT CHECKED" if whole else
                           "DAMAGED" if i in damaged else "OK")
        lines = [(f"{self.name}.{i}.sly", judge(i)) for i in sorted(self.all)]
        if whole:
            lines.append((self.name, "NOT CHECKED" if missing else "DAMAGED" if 0 in damaged else "OK"))
        fine = not self.unproven and not missing and not damaged and len(self.found) > 1
        out = b"".join(escaped(name) + b"\t" + word.encode() + b"\n" for name, word in lines)
        why = "verify by a list of " + ("the file" if whole else "pieces" if self.list else "nothing")
        if self.all == {1}:
            return Expected("verify a set of one piece", None)
        # Words for what is odd are not settled.
        return Expected(why, int(not fine), out=out if not self.unproven else None)

    # Hidden files.

    def secret(self, option):
        """The first line of a file, or None where the option is not given."""
        if option not in self.options:
            return None
        file = self.file(os.path.normpath(self.options[option]))
        refuse_if(file is None, "no such password file")
        line = file.data.split(b"\n")[0].removesuffix(b"\r")
        refuse_if(not line or b"\0" in file.data or file.data[:2] in (b"\xff\xfe", b"\xfe\xff"),
                  "no text in the password file")
        try:
            return line.decode()
        except UnicodeDecodeError:
            raise Refused("no text in the password file", 1) from None

    def password(self):
        text = self.secret("--password-file")
        if text is None:
            return None
        try:
            password = text.encode("cp1252")
        except UnicodeEncodeError:
            raise Refused("not in the code page", 1) from None
        refuse_if(len(password) > 24 or password == PUBLIC, "no password")
        return password

    def carrier(self):
        """Reads a carrier as list and recover do."""
        path = os.path.normpath(self.names[0])
        self.folder, self.name = os.path.split(path)
        file = self.file(path)
        refuse_if(file is None, "no such carrier")
        password = self.password()
        opens = carriers.read(file.data, PUBLIC)
        reading = opens if password is None else carriers.read(file.data, password)
        refuse_if(reading.main_length is None, "the wrong password, or nothing hidden")
        return file, reading

    def free(self, folder, name, made=()):
        """The first that nothing has of the names "Original NAME", "Original [1] NAME", ..."""
        tries = [f"Original {name}"] + [f"Original [{i}] {name}" for i in range(1, 99)]
        paths = [os.path.join(folder, each) for each in tries]
        return next(path for path in paths if path not in self.state and path not in made)

    def list(self):
        file, reading = self.carrier()
        refuse_if(reading.files is None, "an unsound carrier")
        lines = (f"{i}\t{length}\t{name}\n" for i, (name, _, length) in enumerate(reading.files))
        return Expected("list", 0, out="".join(lines).encode())

    def recover(self):
        file, reading = self.carrier()
        folder = self.made(self.folder)
        passphrase = self.secret("--passphrase-file")
        if "--main" in self.options:
            made = {self.free(folder, self.name): file.data[: reading.main_length]}
            refuse_if(passphrase is not None, "a passphrase for nothing")
            return Expected("recover the main file", 0, made, sources=[file], out=self.printed(*made))
        refuse_if(reading.files is None, "an unsound carrier")
        numbers = range(len(reading.files))
        if "--all" not in self.options:
            refuse_if("--file" not in self.options and len(numbers) > 1, "which of them?")
            numbers = [int(self.options.get("--file", 0))]
            refuse_if(numbers[0] >= len(reading.files), "no such number")
        made, private, opened = {}, set(), 0
        for name, at, length in (reading.files[i] for i in numbers):
            data, plain = file.data[at : at + length], None
            if name.endswith(".age") and data.startswith(AGE) and "--raw" not in self.options:
                plain, key = self.place.plain.get(data, (None, None))
                refuse_if(passphrase is not None and key != passphrase, "a wrong passphrase")
                plain = plain if passphrase is not None else None
            if plain is not None:
                name, data, opened = name.removesuffix(".age"), plain, opened + 1
            path = self.free(folder, name, made)
            made[path] = data
            private |= {path} if plain is not None else set()
        refuse_if(passphrase is not None and not opened, "a passphrase for nothing")
        return Expected("recover", 0, made, sources=[file], out=self.printed(*made), private=private)

    def hide(self):
        main_path, added_path = map(os.path.normpath, self.names)
        main, added = self.file(main_path), self.file(added_path)
        refuse_if(main is None or added is None, "no such files")
        folder, name = os.path.split(main_path)
        refuse_if(name.endswith(UNFIT), "a format that takes nothing")
        refuse_if(not main.data or not added.data, "an empty file")
        folder = self.made(folder)
        password, encrypts = self.password(), "--encrypt" in self.options
        passphrase = self.secret("--passphrase-file")
        records = carriers.read(main.data, PUBLIC).records
        refuse_if(records >= 6, "six files are hidden already")
        refuse_if(records and not self.yes, "files are hidden already")
        refuse_if(encrypts and (passphrase is None or passphrase.encode() in (PUBLIC, password)),
                  "no passphrase of its own")
        refuse_if(password and encrypts and not records, "a password that opens nothing")
        if password is None and (encrypts or carriers.read(main.data, PUBLIC).main_length):
            password = PUBLIC
        refuse_if(password is None, "no password")
        old = carriers.read(main.data, password)
        refuse_if(records and not (old.whole and old.main_named), "the wrong password")
        shown = os.path.basename(added_path) + ".age" * encrypts
        stored = carriers.to_text(stored_name(shown))
        contents = lambda reading, data: [
            (each, data[at : at + length]) for each, at, length in reading.files or []]

        def right(data):
            new = carriers.read(data, password)
            *before, last = contents(new, data) or [None]
            if last and encrypts and last[1].startswith(AGE):
                self.place.plain[last[1]] = added.data, passphrase
                last = last[0], added.data
            start = old.main_length if records else len(main.data)
            return (new.whole and before == contents(old, main.data) and last == (stored, added.data)
                    and data[:start] == main.data[:start])

        tries = [f"Hidden File {name}"] + [f"[{i}] Hidden File {name}" for i in range(1, 99)]
        path = next(each for each in (os.path.join(folder, each) for each in tries)
                    if each not in self.state)
        return Expected("hide", 0, {path: right}, sources=[main, added], out=self.printed(path))


def stored_name(name):
    """The name as a directory has it."""
    raw = name.encode("cp1252")
    ending = raw[raw.rfind(b".") :] if b"." in raw else b""
    return raw if len(raw) <= 24 else raw[: max(0, 24 - len(ending))] + ending[:24]


def escaped(name):
    raw = os.fsencode(name)
    text = raw.replace(b"\\", b"\\\\").replace(b"\n", b"\\n")
    return text if text == raw else b"\\" + text


def read_list(text, name):
    """What a checksum file says of `name`: digests by number, 0 for the whole; {} if nothing."""
    found, whole = {}, {}
    text = text.removeprefix(b"\xef\xbb\xbf")
    for line in text.split(b"\n"):
        if len(line) > LINE_LIMIT:
            return {}
        line = line.removesuffix(b"\r")
        if not line or line.startswith(b"#"):
            continue
        digits, of = rb"([0-9a-fA-F]{64})", rb"(.+)"
        match = re.fullmatch(rb"(\\?)" + digits + rb" [ *]" + of, line, re.DOTALL)
        if tag := re.fullmatch(rb"(\\?)SHA256 \(" + of + rb"\) = " + digits, line, re.DOTALL):
            escape, told, digest = tag.groups()
        elif match:
            escape, digest, told = match.groups()
        else:
            return {}
        if escape:
            told = re.sub(rb"\\([\\nr])", lambda m: {b"n": b"\n", b"r": b"\r"}.get(m[1], m[1]), told)
        told = told.removeprefix(b"./")
        number = re.fullmatch(
            re.escape(name) + rb"\.([1-9][0-9]{0,4})\.[sS][lL][yY]", told, re.DOTALL)
        key, into = (int(number[1]), found) if number else (0, whole)
        if not number and told != name or into.setdefault(key, digest.lower()) != digest.lower():
            return {}
    if sorted(found) != list(range(1, len(found) + 1)) or len(text) > LIST_LIMIT:
        return {}
    return found or whole


def remember_kill(arguments, before, after, place):
    """Takes note of what a killed job has left, and of the set that it was to replace."""
    place.leftovers |= {path for path in after.keys() - before.keys() if ".slyver-" in path}
    if arguments[0] == "split":
        job = Job(arguments, before, place)
        path = os.path.join(*job.split_to()) + ".1.sly"
        place.put_aside[path] = {path: before[path] for path in job.set()} or job.aside()


def wrong_words(status, err, quiet):
    """What is wrong with the messages of a job."""
    if re.search(rb"::|__|\bstd\b", err):
        return "the text of an exception"
    if status and not err.strip():
        return "failed without a message"
    if re.search(DONE, err, re.MULTILINE) and (status or quiet):
        return "a message of success"
    return ""


def failures(arguments, expected, before, after, outcome, place):
    """What is wrong after a job: pairs of a kind and a text. Of one job the first counts."""
    status, out, err = outcome
    if status not in (0, 1, 2):
        return [("ending", f"ended with {status}: {err[-300:]!r}")]
    if expected.status is None:
        expected = expected if status == 0 else Expected(expected.why)
    elif status != expected.status:
        return [("status", f"status {status} instead of {expected.status}: {err[-300:]!r}")]
    words = wrong_words(status, err, "--quiet" in arguments)
    if words:
        return [("words", f"{words}: {err!r}")]
    starts = [before] + [expected.instead] * (expected.instead is not None)
    wrong = min((differing(expected, start, after, place) for start in starts), key=len)
    if wrong:
        return [("files", text) for text in wrong]
    out = out.replace(b"/./", b"/")
    if expected.out is not None and out != expected.out and status != 2:
        return [("output", f"prints {out!r} instead of {expected.out!r}")]
    made = [path for path, data in expected.changes.items() if data is not None]
    plain = [(each, before.get(each), after[each]) for each in made]
    texts = [rights(expected, old, new, path in expected.private, place) for path, old, new in plain]
    return [("rights", f"{text}: {path!r}") for path, text in zip(made, texts) if text]


def differing(expected, start, after, place):
    """The paths that are not as they must be."""
    changes, wrong = expected.changes, []
    parents = set()
    for path in [each for each, data in changes.items() if data is not None]:
        while path := os.path.dirname(path):
            parents.add(path)
    for path in sorted(start.keys() | after.keys() | changes.keys()):
        new, old = after.get(path), start.get(path)
        if path in changes:
            must = changes[path]
            data = new.data if isinstance(new, File) else new
            right = must(data) if callable(must) and data is not None else data == must
            text = "wrong bytes" if new and must is not None else "still there" if new else "missing"
        else:
            right = (new == old or path in expected.loose and new is None
                     or new == "folder" and path in parents
                     # What a killed job has left may go.
                     or path in place.leftovers - expected.kept and new is None)
            text = "changed" if new and old else "not to be there" if new else "gone"
        if not right:
            wrong.append(f"{text}: {path!r}")
    return wrong


def rights(expected, old, new, private, place):
    """What is wrong with the rights of a new file that may have replaced an old one."""
    if private:
        return "" if new.mode & 0o777 == 0o600 and not new.access else "decrypted, and open to others"
    who = [user for user in (world.GUEST, world.GUEST + 1) if user != new.user]
    common = 0o444 & ~place.umask
    for source in expected.sources:
        common &= source.mode
        for user in who:
            if new.open_to(user) and not source.open_to(user):
                return f"user {user} may read it, but not its source"
        members = source.open_to_group() and source.group == new.group
        if new.open_to_group() and not members and not source.open_to(world.GUEST + 1):
            return "its group may read it, but not its source's"
    if isinstance(old, File) and old.user != new.user and os.geteuid() == 0:
        return f"its owner was {old.user} and is {new.user}"
    alike = all((source.user, source.group) == (new.user, new.group) and not source.access
                for source in expected.sources)
    if not alike or place.disk:  # On a full disk what was to be replaced may have gone first.
        return ""
    if not isinstance(old, File):
        return "" if new.mode & 0o444 == common else f"its mode is {new.mode:o}, not {common:o}"
    wider = any(old.mode & 0o666 & ~source.mode for source in expected.sources)
    if not wider and (old.mode, old.access) != (new.mode, new.access):
        return f"replaced a file of mode {old.mode:o}, access list {old.access.hex()}"
    return ""
