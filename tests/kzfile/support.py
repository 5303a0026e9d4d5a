"""kzfile in a folder of its own."""
import os
import pathlib
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent))
from command_case import LONGEST, CommandCase, is_root, without_colour  # noqa: E402,F401

KZFILE = os.environ["KZFILE"]


class KzfileCase(CommandCase):
    program = KZFILE

    def names_in(self, folder):
        return sorted(path.name for path in pathlib.Path(folder).iterdir())


def make_large_file(path, megabytes):
    """Of different blocks, so that nothing can be left out as a hole."""
    block = os.urandom(1 << 20)
    with open(path, "wb") as file:
        for number in range(megabytes):
            file.write(number.to_bytes(8, "little") + block[8:])
    return path
