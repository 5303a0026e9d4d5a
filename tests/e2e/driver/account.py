"""An account for one test, which the superuser makes and becomes."""
import os
import pwd
import secrets
import shutil
import subprocess


class Account:
    """Has a password; an administrator is in the group sudo."""

    def __init__(self, password, administrator):
        self.name = "wfxd" + secrets.token_hex(4)
        subprocess.run(["useradd", "--create-home", "--comment", "Wanda Fox", self.name], check=True, capture_output=True)
        subprocess.run(["chpasswd"], input=f"{self.name}:{password}\n", text=True, check=True)
        if administrator:
            subprocess.run(["usermod", "--append", "--groups", "sudo", self.name], check=True, capture_output=True)
        self._entry = pwd.getpwnam(self.name)

    def become(self):
        """From here on this process is the account's."""
        os.initgroups(self.name, self._entry.pw_gid)
        os.setgid(self._entry.pw_gid)
        os.setuid(self._entry.pw_uid)

    def remove(self):
        subprocess.run(["userdel", "--force", "--remove", self.name], check=False, capture_output=True)
        for place in ("/run/sudo/ts", "/var/lib/sudo/lectured"):
            for left in (self.name, str(self._entry.pw_uid)):
                path = os.path.join(place, left)
                if os.path.isdir(path):
                    shutil.rmtree(path)
                elif os.path.exists(path):
                    os.unlink(path)


class CleanUp:
    """A process of the superuser's that stays behind when this one becomes somebody else, to clean up after it."""

    def __init__(self, work):
        reading, self._writing = os.pipe()
        self._process = os.fork()
        if self._process == 0:
            os.close(self._writing)
            os.read(reading, 1)  # until the other end is closed, by run() or by the end of the one who left it
            try:
                work()
            finally:
                os._exit(0)
        os.close(reading)

    def run(self):
        os.close(self._writing)
        os.waitpid(self._process, 0)
