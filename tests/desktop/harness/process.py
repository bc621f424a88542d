"""A child process that is ended by its own id."""

import os
import resource
import signal
import subprocess
import unittest

# In front of a command, gives it mounts of its own. Not allowed in a chroot.
OWN_MOUNTS = ("unshare", "--map-current-user", "--keep-caps", "--mount")


def needs_own_mounts(test):
    """Skips the test function where a program cannot have mounts of its own."""
    allowed = subprocess.run([*OWN_MOUNTS, "true"], capture_output=True, check=False)
    return unittest.skipUnless(allowed.returncode == 0, "no mounts of its own: "
                               + allowed.stderr.decode().strip())(test)


class Process:
    """Its output goes to files, so that a full pipe never holds it up."""

    @staticmethod
    def without_core_files():
        """To be called in the child before its program starts."""
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    def __init__(self, arguments, environment, folder, name, **options):
        self._out_path = os.path.join(folder, name + ".out")
        self._err_path = os.path.join(folder, name + ".err")
        with open(self._out_path, "wb") as out, open(self._err_path, "wb") as err:
            self._child = subprocess.Popen(
                arguments,
                env=environment,
                stdin=subprocess.DEVNULL,
                stdout=out,
                stderr=err,
                preexec_fn=self.without_core_files,
                **options,
            )

    @property
    def pid(self):
        return self._child.pid

    @property
    def out(self):
        return self._read(self._out_path)

    @property
    def err(self):
        return self._read(self._err_path)

    @staticmethod
    def _read(path):
        with open(path, "rb") as file:
            return file.read().decode()

    @property
    def cpu_seconds(self):
        """What its threads have used of the processors so far."""
        with open(f"/proc/{self.pid}/stat", encoding="ascii") as file:
            user, system = file.read().rsplit(")", 1)[1].split()[11:13]
        return (int(user) + int(system)) / os.sysconf("SC_CLK_TCK")

    def is_running(self):
        return self._child.poll() is None

    def wait(self, seconds=15.0):
        """The exit status; negative when a signal ended it."""
        return self._child.wait(seconds)

    def send(self, number):
        self._child.send_signal(number)

    def stop(self):
        if self.is_running():
            self._child.terminate()
            try:
                self._child.wait(10)
            except subprocess.TimeoutExpired:
                self._child.send_signal(signal.SIGKILL)
                self._child.wait(10)
