"""What a suite is given, and what it returns."""

import dataclasses
import pathlib


@dataclasses.dataclass(frozen=True)
class Setting:
    built: pathlib.Path  # The folder of the release build: sly and the preload library.
    checked: pathlib.Path  # The folder of the build with sanitizers: sly and slyver.
    folder: pathlib.Path  # Empty, for the suite's files; removed after it.
    short: bool  # Only the part that fits into the short run.
    seed: int  # All random choices come from it.

    @property
    def sly(self):
        return self.built / "sly"


@dataclasses.dataclass
class Case:
    name: str
    tried: int = 0
    losses: list = dataclasses.field(default_factory=list)  # A text for each.
    group: str = ""  # Cases of one group share a line of the table; without one they have their own.
