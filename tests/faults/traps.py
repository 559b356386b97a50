"""Traps: things of every kind under the names that a job uses and in place of its sources, private
folders that are not the user's own, and few files that may be open. A job ends right or says why
not; what is no business of the job stays as it was.

As root may do all, the jobs are run as another user where the tests are root's."""

import dataclasses
import os
import pathlib
import resource
import shutil
import stat

import jobs
from jobs import ABSENT, Case

NOBODY = 65534
IS_ROOT = os.geteuid() == 0


def put_folder(path, outside, mode=0o755):
    (path / "sub").mkdir(parents=True)
    (path / "sub" / "file").write_bytes(b"in the way")
    (path / "link").symlink_to(outside / "folder")
    (path / "sub").chmod(mode)
    path.chmod(mode)


def put_empty_folder(path, outside, mode=0o755):
    path.mkdir()
    path.chmod(mode)


def put_leftover(path, outside):
    path.mkdir()
    (path / "slyver.lock").touch()
    (path / ".slyver-1.tmp").write_bytes(b"half")


def put_link(path, to):
    path.symlink_to(os.path.relpath(to, path.parent))


KINDS = {
    "a file": lambda path, outside: path.write_bytes(b"in the way"),
    "a folder": put_folder,
    "a read-only folder": lambda path, outside: put_folder(path, outside, 0o500),
    "a link to a folder": lambda path, outside: put_link(path, outside / "folder"),
    "a link to a file": lambda path, outside: put_link(path, outside / "file"),
    "another name of a file": lambda path, outside: os.link(outside / "file", path),
    "a link to nothing": lambda path, outside: put_link(path, outside / "nothing"),
    "a link to itself": lambda path, outside: path.symlink_to(path),
    "a pipe": lambda path, outside: os.mkfifo(path),
    "a socket": lambda path, outside: os.mknod(path, stat.S_IFSOCK | 0o600),
    "a device": lambda path, outside: os.mknod(path, stat.S_IFCHR | 0o666, os.makedev(1, 3)),
}
FOR_WORK_FOLDERS = {
    "an empty folder": put_empty_folder,
    "what a killed job left": put_leftover,
}
FOR_PRIVATE_FOLDERS = {
    "a folder open to all": lambda path, outside: put_empty_folder(path, outside, 0o777),
    "a closed folder": lambda path, outside: put_empty_folder(path, outside, 0),
    "a folder of another user": put_empty_folder,
    "nothing, where nothing may be made": lambda path, outside: path.parent.chmod(0o500),
}
OF_ROOT = {"a device", "a folder of another user"}  # Only root can make these.
FOLDERS = {"a folder", "a read-only folder"}


@dataclasses.dataclass(frozen=True)
class Place:
    path: str
    passable: set = None  # The kinds in spite of which the job must be done; None: as the model says.
    either: set = frozenset()  # Those in spite of which it may be done.
    own: set = frozenset()  # Those that are the program's and may go, even in a failure.
    kinds: dict = dataclasses.field(default_factory=lambda: KINDS)


def places(job):
    """The names that a job uses."""
    verb, ours = job.arguments[0], {*FOR_WORK_FOLDERS}
    for path in job.sources:
        if not path.endswith("/password"):  # A pipe there is a way to hand a password over.
            yield Place(path)
    if verb in ("join", "recover"):
        name = "temprrr" if verb == "join" else "TempRRR"
        yield Place(f"files/{name}", ours, own=ours, kinds=KINDS | FOR_WORK_FOLDERS)
    if "over pieces" in job.name:
        staging = temporary_path("files/old/whole.bin.1.sly").replace(".tmp", ".set")
        yield Place(staging, {"an empty folder"}, own=ours, kinds=KINDS | FOR_WORK_FOLDERS)
    if verb == "hide":
        passed_over = {*KINDS, "a folder open to all", "a folder of another user"} - FOLDERS
        yield Place(jobs.PRIVATE, passed_over, {"a closed folder", *FOLDERS},
                    kinds=KINDS | FOR_PRIVATE_FOLDERS)
    for path in job.results:
        # A recovered file is moved there when it is complete, and so is a set that replaces another.
        staged = path.startswith("files/old/") and not path.endswith((".1.sly", ".sha256"))
        if verb != "recover" and not staged:
            files = KINDS.keys() - FOLDERS
            # Pieces but the first need no such name where files can be without.
            first = not path.endswith(".sly") or path.endswith(".1.sly")
            yield Place(temporary_path(path), {*KINDS} if verb == "hide" else files,
                        set() if first else FOLDERS, own=files)
        if path not in job.replaced:
            yield Place(path)


def temporary_path(path):
    """The path under which a file is written until it is complete."""
    path = pathlib.PurePath(path)
    value = 14695981039346656037
    for byte in path.name.encode():
        value = (value ^ byte) * 1099511628211 % 2**64
    return str(path.with_name(f".slyver-{value:016x}.tmp"))


def run(setting):
    home = setting.folder / "home"
    # The other user must be able to come here, and to find the program.
    for folder in (setting.folder.parent, setting.folder):
        folder.chmod(0o711)
    sly = shutil.copy(setting.sly, setting.folder)
    if not IS_ROOT:
        print("Not root: no devices and nothing that belongs to another user is tried.")
    case = Case("things in the way")
    for job in [job for job in jobs.make_jobs() if not job.disk]:
        for place in places(job):
            for kind, put in place.kinds.items():
                if IS_ROOT or kind not in OF_ROOT:
                    case.tried += 1
                    prepare(home, job, place, kind, put)
                    case.losses += [f"{job.name}, {kind} as {place.path}: {text}"
                                    for text in losses(sly, home, job, place, kind)]
    return [case, few_open_files(setting, home)]


def few_open_files(setting, home):
    case = Case("few open files")
    for job in jobs.make_jobs():
        for most in range(4, 13):
            case.tried += 1
            jobs.prepare(home, job.start)
            limit = lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))
            outcome = jobs.run(setting.sly, job.arguments, home, preexec_fn=limit)
            case.losses += [f"{job.name}, {most} files: {text}"
                            for text in jobs.losses(job, home, outcome)]
    return case


def prepare(home, job, place, kind, put):
    """The job's home with the trap, owned by the user who runs the job, and with things beside it
    that are no business of the job's."""
    for folder, folders, _ in os.walk(home):
        for name in folders:
            if not os.path.islink(os.path.join(folder, name)):
                os.chmod(os.path.join(folder, name), 0o700)
    outside = {"outside/file": b"precious", "outside/folder/file": b"precious"}
    jobs.prepare(home, job.start | outside)
    path = home / place.path
    path.parent.mkdir(parents=True, exist_ok=True, mode=0o700)
    path.unlink(missing_ok=True)
    put(path, home / "outside")
    if IS_ROOT:
        for each in [home, *home.rglob("*")]:
            os.chown(each, NOBODY, NOBODY, follow_symlinks=False)
    if kind == "a device":
        path.chmod(0o666)
    if kind == "a folder of another user":
        os.chown(path, 0, 0)


def losses(sly, home, job, place, kind):
    before = jobs.look(home)
    # Where no temporary file can be, a hide takes the next name, as if this one were not free.
    taken = {path: "" for path in job.results
             if job.arguments[0] == "hide" and kind in FOLDERS and place.path == temporary_path(path)}
    trapped = dataclasses.replace(job, start=before | taken)
    user = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if IS_ROOT else {}
    outcome = jobs.run(sly, job.arguments, home, **user)
    yield from jobs.wrong_ending(outcome)
    done = outcome.status == 0
    passable = trapped.expected.status == 0 if place.passable is None else kind in place.passable
    if kind not in place.either and done != passable:
        yield f"ended with {outcome.status}: {outcome.err}"
    at = lambda path: path == place.path or path.startswith(place.path + "/")
    way = jobs.only(dict.fromkeys(job.results)) | {
        path: (value, ABSENT) if kind in place.own and at(path) else (value,)
        for path, value in before.items()}
    if jobs.SETTINGS in before:
        way[jobs.SETTINGS] = before[jobs.SETTINGS], jobs.KEPT
    ways = [way]
    if done:
        gone = job.sources if job.deletes else ()
        ways = [way | jobs.only(dict.fromkeys((*job.replaced, *gone)) | trapped.results)]
    else:
        part = {path: (before.get(path, ABSENT), data) for path, data in job.results.items()}
        ways += [way | part]
    yield from (f"wrong: {path}" for path in jobs.differing(jobs.look(home), ways))
    private = max(home.glob(jobs.PRIVATE + "*"), default=home)
    if done and "hide" in job.name and private.lstat().st_mode & 0o077:
        yield "worked in a folder that is open to others"
