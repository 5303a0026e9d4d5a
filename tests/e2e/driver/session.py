"""A display, a bus and a reader, with the environment that a program on them is given."""
import os
import shutil
from pathlib import Path

from .accessibility import Reader
from .display import Display, SessionBus


class Session:
    def __init__(self, folder, size=(1024, 768)):
        self.folder = Path(folder)
        self._runtime = self.folder / "runtime"
        self._runtime.mkdir(mode=0o700, parents=True, exist_ok=True)
        self._own_home = self.folder / "driver-home"
        self._own_home.mkdir(exist_ok=True)
        self.display = Display(self.folder, size)
        self.bus = None
        try:
            self.bus = SessionBus(self._base_environment(self._own_home))
            os.environ["XDG_RUNTIME_DIR"] = str(self._runtime)
            os.environ["DISPLAY"] = self.display.name
            os.environ["HOME"] = str(self._own_home)
            self.reader = Reader(self.bus.address)
        except BaseException:
            self.close()
            raise

    def close(self):
        if self.bus is not None:
            self.bus.close()
        self.display.close()
        shutil.rmtree(self._runtime, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def _base_environment(self, home):
        return {"HOME": str(home), "PATH": "/usr/local/bin:/usr/bin:/bin", "LANG": "C.UTF-8", "DISPLAY": self.display.name,
                "XDG_RUNTIME_DIR": str(self._runtime), "NO_AT_BRIDGE": "0"}

    def environment(self, home):
        """The whole environment of a program that runs for the owner of `home`."""
        return {**self._base_environment(home.path), "DBUS_SESSION_BUS_ADDRESS": self.bus.address,
                "QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_ACCESSIBILITY": "1"}
