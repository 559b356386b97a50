"""Many runs of the terminal program in one process of the build with sanitizers."""

import subprocess

from jobs import Outcome, environment


class Many:
    """Runs command lines, one after the other. A process that has died is followed by another."""

    def __init__(self, setting, home, options=""):
        """`options` are for the sanitizers, in the form of ASAN_OPTIONS."""
        self._program = setting.checked / "sly_many"
        self._report = setting.folder / "sanitizer"
        options = f"abort_on_error=1:log_path={self._report}:{options}"
        sanitizers = {name: options for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS")}
        self._environment = environment(home) | sanitizers
        self.process = None

    def run(self, folder, *arguments):
        """Runs sly in `folder`. The outputs come as bytes. A status that is neither 0 nor 1 nor 2
        is a crash or, -14, a hang."""
        if self.process is None:
            self._start()
        job = b"".join(
            (word if isinstance(word, bytes) else str(word).encode()) + b"\0"
            for word in (folder, *arguments)
        )
        try:
            self.process.stdin.write(job + b"\0")
            self.process.stdin.flush()
        except BrokenPipeError:
            pass
        header = self.process.stdout.readline().split()
        if len(header) != 3:
            return Outcome(*self.close())
        status, out, err = map(int, header)
        return Outcome(status, self.process.stdout.read(out), self.process.stdout.read(err))

    def close(self):
        """Ends the process. Its status, 0 unless it has crashed or leaked memory, its last output
        and the sanitizers' report."""
        process, self.process = self.process, None
        out, _ = process.communicate()
        report = self._report.with_name(f"{self._report.name}.{process.pid}")
        return process.returncode, out, report.read_bytes() if report.exists() else b""

    def _start(self):
        self.process = subprocess.Popen(
            [self._program],
            env=self._environment,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
        )
