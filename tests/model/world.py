"""A folder made by steps, in which sly runs; and what is in it, byte for byte.

A step is a tuple of plain values, printed and read back as it is:
    ("file", PATH, DATA, MODE)         DATA: bytes, (letter, begin, end, flipped bytes ...) or "age"
    ("folder", PATH) ("link", PATH, TARGET) ("owner", PATH, USER) ("disk", KIB)
    ("set", NAME, VALUE)               the umask or the locale
    ("list", PATH, FORM, ((NAME, DATA), ...))         a checksum file; FORMS has the forms
    ("carrier", PATH, DATA, ((NAME, DATA), ...), PASSWORD)   NAME: bytes
    ("directory", PATH, TEXT)          a carrier's directory written otherwise
    ("lengthen", PATH, COUNT)          fewer than 0: cut off
    ("opens", PATH, KIND)              user 4321 may read: the file, or what a folder will hold
    ("network",)                       a network file system
    ("kill", NUMBER, ARGUMENT ...)     sly is killed before it renames for so many times
    ("sly", ARGUMENT ...)              a job, to be judged
    ("both", SIGNALS, DELAYS, ARGUMENTS, ARGUMENTS)
                                       two at once, to be judged; behind the start of each a delay in
                                       seconds and a signal to the first"""

import collections
import contextlib
import dataclasses
import functools
import hashlib
import os
import random
import shutil
import signal
import stat
import struct
import subprocess
import time

import carriers

GUEST = 4321
PATIENCE = 60  # Seconds after which a job hangs.

# An age file that was published with the format: the passphrase is "password", the plain bytes "age".
AGE_FILE = b"""age-encryption.org/v1
-> scrypt rF0/NwblUHHTpgQgRpe5CQ 10
gUjEymFKMVXQEKdMMHL24oYexjE3TIC0O0zGSqJ2aUY
--- IOXiQYStkoT1mvZW2tFOqZdhRVvj58egABx/sWfZQbc
""" + bytes.fromhex("1b35c6e687dd00da3ac379ac9f742c21fd185a1b9e3ded739d14ac6a9a50124db866d8")

_ACCESS = "system.posix_acl_access"
_USER_OBJ, _USER, _GROUP_OBJ, _GROUP, _MASK, _OTHER = 1, 2, 4, 8, 16, 32

FORMS = {  # The lines of a checksum file.
    "plain": b"%(digest)s  %(name)s\n",
    "mark": b"%(digest)s  %(name)s\n",  # Behind a byte-order mark.
    "cut": b"%(digest)s  %(name)s\n",  # The last line is not whole.
    "notes": b"%(digest)s  %(name)s\n",  # Another text comes behind.
    "binary": b"%(DIGEST)s *%(name)s\r\n",
    "here": b"%(digest)s  ./%(name)s\n",
    "tag": b"SHA256 (%(name)s) = %(digest)s\n",
    "twice": b"%(digest)s  %(name)s\n" b"%(digest)s  %(name)s\n",
    "differing": b"%(digest)s  %(name)s\n" + b"0" * 64 + b"  %(name)s\n",
    "elsewhere": b"%(digest)s  /mnt/%(name)s\n",
}


@dataclasses.dataclass(frozen=True)
class File:
    data: bytes
    mode: int
    user: int
    group: int
    access: bytes  # The access list as the system stores it; empty if there is none.

    def readers(self):
        """Who may read the file, but for its owner."""
        entries = list(struct.iter_unpack("<HHI", self.access[4:])) or [
            (_GROUP_OBJ, self.mode >> 3, 0), (_OTHER, self.mode, 0)]
        mask = next((bits for tag, bits, _ in entries if tag == _MASK), 7)
        names = {_USER: "user %d", _GROUP: "group %d", _GROUP_OBJ: f"group {self.group}", _OTHER: "others"}
        return {names[tag] % who if "%" in names[tag] else names[tag] for tag, bits, who in entries
                if tag in names and bits & 4 & (mask if tag != _OTHER else 7)}


@functools.cache
def _version(letter):
    return random.Random(letter).randbytes(1 << 21)


def content(data):
    if data == "age":
        return AGE_FILE
    if isinstance(data, bytes):
        return data
    letter, begin, end, *flipped = data
    found = bytearray(_version(letter)[begin:end])
    for at in flipped:
        found[at % len(found)] ^= 1
    return bytes(found)


def list_text(form, lines):
    """A checksum file; `lines` are pairs of name and data."""
    text = b"\xef\xbb\xbf" if form == "mark" else b""
    for name, data in lines:
        raw = os.fsencode(name)
        escaped = raw.replace(b"\\", b"\\\\").replace(b"\n", b"\\n").replace(b"\r", b"\\r")
        digest = hashlib.sha256(content(data)).hexdigest().encode()
        line = FORMS[form] % {b"digest": digest, b"DIGEST": digest.upper(), b"name": escaped}
        text += line if escaped == raw else b"\\" + line
    return text[:-40] if form == "cut" else text + b"see the mail\n" * (form == "notes")


def access_list(owner, group, other):
    entry = lambda tag, bits, who=0xFFFFFFFF: struct.pack("<HHI", tag, bits, who)
    return struct.pack("<I", 2) + entry(_USER_OBJ, owner) + entry(_USER, 4, GUEST) + entry(
        _GROUP_OBJ, group) + entry(_MASK, group | 4) + entry(_OTHER, other)


Outcome = collections.namedtuple("Outcome", ("status", "out", "err"))  # Status None: it hung.


def environment(home):
    options = dict.fromkeys(("ASAN_OPTIONS", "UBSAN_OPTIONS"), "abort_on_error=1")
    return os.environ | options | {
        "LC_ALL": "C", "HOME": home, "XDG_RUNTIME_DIR": os.path.join(home, "run"),
        "XDG_CONFIG_HOME": os.path.join(home, "config")}


def start(sly, arguments, home, variables, **options):
    """Starts sly in the files of a home; `options` are those of subprocess.Popen."""
    return subprocess.Popen(
        [sly, *arguments], cwd=os.path.join(home, "files"), env=environment(home) | variables,
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)


def preload_of(sly):
    return os.path.join(os.path.dirname(sly), "libslyver_faults.so")


def faults(sly, home, **settings):
    """The variables for the library that has something happen to sly's calls (tests/faults)."""
    variables = {"SLYVER_FAULT_" + name.upper(): str(value) for name, value in settings.items()}
    return {"LD_PRELOAD": preload_of(sly), "SLYVER_FAULT_ROOT": str(home)} | variables


def finish(process):
    """Waits for the end of what was started."""
    try:
        out, err = process.communicate(timeout=PATIENCE)
        return Outcome(process.returncode, out, err)
    except subprocess.TimeoutExpired:
        process.kill()
        return Outcome(None, *process.communicate())


def look(top):
    """What is in a folder: for each path a File, "folder" or what else it is."""
    found = {}
    for folder, folders, files in os.walk(top):
        for name in folders + files:
            path = os.path.join(folder, name)
            status = os.lstat(path)
            if stat.S_ISREG(status.st_mode):
                with open(path, "rb") as file:
                    data = file.read()
                access = b""
                with contextlib.suppress(OSError):
                    access = os.getxattr(path, _ACCESS)
                value = File(data, stat.S_IMODE(status.st_mode), status.st_uid, status.st_gid, access)
            elif stat.S_ISLNK(status.st_mode):
                value = "link to " + os.readlink(path)
            else:
                value = "folder" if stat.S_ISDIR(status.st_mode) else stat.filemode(status.st_mode)
            found[os.path.relpath(path, top)] = value
    return found


class World:
    """Holds a home in `folder`, in which files/ is what jobs work in. A context manager."""

    def __init__(self, sly, folder):
        self.sly, self.home, self.files = sly, folder, os.path.join(folder, "files")
        self.umask, self.disk, self.locale, self.variables = 0o022, False, "C.UTF-8", {}
        self.plain = {AGE_FILE: (b"age", "password")}  # What is in age files, and the passphrase.
        self.put_aside = {}  # Of killed splits, by the path of piece 1: the set before.
        self.leftovers = set()  # What killed jobs have left.

    def __enter__(self):
        shutil.rmtree(self.home, ignore_errors=True)
        os.makedirs(self.files)
        os.mkdir(os.path.join(self.home, "run"), 0o700)
        return self

    def __exit__(self, *_):
        if self.disk:
            subprocess.run(["umount", self.files], check=True)
        shutil.rmtree(self.home, ignore_errors=True)

    def do(self, step):
        """Does a step. Returns a job's status, output and messages."""
        what, *rest = step
        return getattr(self, "_" + what)(*rest)

    def at(self, path):
        return os.path.join(self.files, path)

    def room(self):
        """The disk's free bytes; 0 and False where it does not matter."""
        status = os.statvfs(self.files)
        return self.disk and status.f_bavail * status.f_bsize

    def _file(self, path, data, mode):
        os.makedirs(os.path.dirname(self.at(path)), exist_ok=True)
        with open(self.at(path), "wb") as file:
            file.write(content(data))
        os.chmod(self.at(path), mode)

    def _folder(self, path):
        os.makedirs(self.at(path), exist_ok=True)

    def _link(self, path, target):
        if not os.path.lexists(self.at(path)):
            os.makedirs(os.path.dirname(self.at(path)), exist_ok=True)
            os.symlink(target, self.at(path))

    def _owner(self, path, user):
        with contextlib.suppress(FileNotFoundError):
            os.chown(self.at(path), user, user)

    def _set(self, name, value):
        setattr(self, name, value)

    def _disk(self, kib):
        subprocess.run(
            ["mount", "-t", "tmpfs", "-o", f"size={kib}k", "none", self.files], check=True)
        self.disk = True

    def _list(self, path, form, lines):
        self._file(path, list_text(form, lines), 0o644)

    def _carrier(self, path, main, hidden, password):
        hidden = [(name, content(data)) for name, data in hidden]
        name = carriers.to_text8(os.path.basename(path))
        self._file(path, carriers.carrier_of(name, content(main), hidden, password), 0o644)

    def _directory(self, path, text):
        with open(self.at(path), "r+b") as file:
            file.seek(-carriers.DIRECTORY, os.SEEK_END)
            file.write(carriers.padded(text))

    def _lengthen(self, path, count):
        os.truncate(self.at(path), max(0, os.path.getsize(self.at(path)) + count))

    def _opens(self, path, kind):
        with contextlib.suppress(OSError):  # Nothing has that name any more, or no access lists.
            mode = os.stat(self.at(path)).st_mode
            access = access_list(mode >> 6 & 7, mode >> 3 & 7, mode & 7)
            os.setxattr(self.at(path), "system.posix_acl_" + kind, access)

    def _network(self):
        self.variables = faults(self.sly, self.home, disk="network")

    def _start(self, arguments):
        variables = {"LC_ALL": self.locale} | self.variables
        return start(self.sly, arguments, self.home, variables, umask=self.umask)

    def _sly(self, *arguments):
        return finish(self._start(arguments))

    def _kill(self, number, *arguments):
        self.variables = faults(
            self.sly, self.home, at=number, effect=f"signal {signal.SIGKILL}", stays="names")
        self._sly(*arguments)
        self.variables = {}

    def _both(self, signals, delays, *jobs):
        processes = []
        for arguments, each, delay in zip(jobs, signals, delays):
            processes.append(self._start(arguments))
            time.sleep(delay)
            processes[0].send_signal(each)
        return list(map(finish, processes))
