"""A folder made by steps, in which sly runs; and what is in it, byte for byte.

A step is a tuple of plain values, printed and read back as it is:
    ("file", PATH, DATA, MODE)         DATA: bytes, (letter, begin, end, flipped bytes ...) or "age"
    ("folder", PATH) ("link", PATH, TARGET) ("owner", PATH, USER) ("umask", BITS)
    ("disk", KIB) ("locale", NAME)
    ("list", PATH, FORM, ((NAME, DATA), ...))         a checksum file; FORMS has the forms
    ("carrier", PATH, DATA, ((NAME, DATA), ...), PASSWORD)
    ("opens", PATH, KIND)              user 4321 may read: the file, or what a folder will hold
    ("kill", CHANGES, ARGUMENT ...)    sly is killed when so many changes of names were seen
    ("sly", ARGUMENT ...)              a job, to be judged"""

import contextlib
import dataclasses
import functools
import hashlib
import os
import random
import shutil
import stat
import struct
import subprocess
import time

import carriers
import jobs

GUEST = 4321
PATIENCE = 60  # Seconds after which a job hangs.
_ACCESS = "system.posix_acl_access"
_USER_OBJ, _USER, _GROUP_OBJ, _GROUP, _MASK, _OTHER = 1, 2, 4, 8, 16, 32

FORMS = {  # What becomes of a line of a checksum file: of its digest, its name and whether it is the last.
    "plain": lambda digest, name, last: digest + b"  " + name + b"\n",
    "binary": lambda digest, name, last: digest.upper() + b" *" + name + b"\r\n",
    "mark": lambda digest, name, last: digest + b"  " + name + b"\n",
    "here": lambda digest, name, last: digest + b"  ./" + name + b"\n",
    "tag": lambda digest, name, last: b"SHA256 (" + name + b") = " + digest + b"\n",
    "twice": lambda digest, name, last: (digest + b"  " + name + b"\n") * 2,
    "differing": lambda digest, name, last: b"".join(
        each + b"  " + name + b"\n" for each in (digest, b"0" * 64)),
    "cut": lambda digest, name, last: (digest + b"  " + name + b"\n")[: 30 if last else None],
    "notes": lambda digest, name, last: digest + b"  " + name + b"\n" + last * b"see the mail\n",
    "elsewhere": lambda digest, name, last: digest + b"  /mnt/" + name + b"\n",
}


@dataclasses.dataclass(frozen=True)
class File:
    data: bytes
    mode: int
    user: int
    group: int
    access: bytes  # The access list as the system stores it; empty if there is none.

    def open_to(self, user):
        """True if this user, who is in no group, may read the file."""
        entries = list(struct.iter_unpack("<HHI", self.access[4:]))
        mask = next((bits for tag, bits, _ in entries if tag == _MASK), 7)
        if user == self.user:
            return bool(self.mode & 0o400)
        for tag, bits, who in entries:
            if tag == _USER and who == user:
                return bool(bits & mask & 4)
        return bool(self.mode & 0o004)

    def open_to_group(self):
        """True if a member of the file's group, or of any group that the list names, may read it."""
        entries = list(struct.iter_unpack("<HHI", self.access[4:]))
        mask = next((bits for tag, bits, _ in entries if tag == _MASK), 7)
        bits = [bits for tag, bits, _ in entries if tag in (_GROUP_OBJ, _GROUP)]
        return any(each & mask & 4 for each in bits or [self.mode >> 3])


@functools.cache
def _version(letter):
    return random.Random(letter).randbytes(1 << 18)


def content(data):
    if data == "age":
        return jobs.AGE_FILE
    if isinstance(data, bytes):
        return data
    letter, begin, end, *flipped = data
    found = bytearray(_version(letter)[begin:end])
    for at in flipped:
        found[at % len(found)] ^= 1
    return bytes(found)


def list_text(form, lines):
    text = b"\xef\xbb\xbf" if form == "mark" else b""
    for i, (name, data) in enumerate(lines):
        raw = os.fsencode(name)
        escaped = raw.replace(b"\\", b"\\\\").replace(b"\n", b"\\n").replace(b"\r", b"\\r")
        digest = hashlib.sha256(content(data)).hexdigest().encode()
        line = FORMS[form](digest, escaped, i == len(lines) - 1)
        text += line if escaped == raw else b"\\" + line
    return text


def access_list(owner, group, other):
    entry = lambda tag, bits, who=0xFFFFFFFF: struct.pack("<HHI", tag, bits, who)
    return struct.pack("<I", 2) + entry(_USER_OBJ, owner) + entry(_USER, 4, GUEST) + entry(
        _GROUP_OBJ, group) + entry(_MASK, group | 4) + entry(_OTHER, other)


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
            elif stat.S_ISDIR(status.st_mode):
                value = "folder"
            else:
                value = "link to " + os.readlink(path)
            found[os.path.relpath(path, top)] = value
    return found


class World:
    """Holds a home in `folder`, in which files/ is what jobs work in. A context manager."""

    def __init__(self, sly, folder):
        self.sly, self.home, self.files = sly, folder, os.path.join(folder, "files")
        self.umask, self.disk, self.locale = 0o022, False, "C.UTF-8"
        self.plain = {jobs.AGE_FILE: (b"age", "password")}  # What is in age files, and the passphrase.
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

    def _umask(self, bits):
        self.umask = bits

    def _locale(self, name):
        self.locale = name

    def _disk(self, kib):
        subprocess.run(
            ["mount", "-t", "tmpfs", "-o", f"size={kib}k", "none", self.files], check=True)
        self.disk = True

    def _list(self, path, form, lines):
        self._file(path, list_text(form, lines), 0o644)

    def _carrier(self, path, main, hidden, password):
        hidden = [(name.encode("cp1252"), content(data)) for name, data in hidden]
        name = os.path.basename(path).encode("cp1252")
        self._file(path, carriers.carrier_of(name, content(main), hidden, password), 0o644)

    def _opens(self, path, kind):
        with contextlib.suppress(OSError):  # Nothing has that name any more, or no access lists.
            mode = os.stat(self.at(path)).st_mode
            access = access_list(mode >> 6 & 7, mode >> 3 & 7, mode & 7)
            os.setxattr(self.at(path), "system.posix_acl_" + kind, access)

    def _start(self, arguments):
        home = {"LC_ALL": self.locale, "HOME": self.home, "XDG_CONFIG_HOME": self.at("../config"),
                "XDG_RUNTIME_DIR": self.at("../run")}
        return subprocess.Popen(
            [self.sly, *arguments], cwd=self.files, umask=self.umask, env=os.environ | home,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            start_new_session=True)

    def _sly(self, *arguments):
        process = self._start(arguments)
        try:
            out, err = process.communicate(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            process.kill()
            return None, *process.communicate()
        return process.returncode, out, err

    def _kill(self, changes, *arguments):
        process, seen, before = self._start(arguments), 0, None
        while process.poll() is None and seen <= changes:
            now = []
            for folder, _, names in os.walk(self.files):
                now.append((folder, names))
            seen, before = seen + (now != before), now
        process.kill()
        process.communicate()
