"""The program beside a service manager's tool that the test scripts."""

import os
import shutil
import tempfile

from .desktop import DASHBOARD


class Tool:
    """Logs its calls; `print` waits while held and knows no service, the rest succeeds."""

    def __init__(self, desktop):
        self._folder = tempfile.mkdtemp(dir=desktop.folder)
        self.dashboard = shutil.copy(DASHBOARD, self._folder)
        with open(self._path("vesk-launchctl"), "w", encoding="utf-8") as script:
            script.write(
                "#!/bin/sh\n"
                f"echo \"$*\" >>'{self._path('calls')}'\n"
                f"[ $1 != print ] || {{ while [ -e '{self._path('held')}' ]; do sleep 0.02; done; exit 113; }}\n"
            )
        os.chmod(self._path("vesk-launchctl"), 0o755)

    def _path(self, name):
        return os.path.join(self._folder, name)

    def hold(self):
        open(self._path("held"), "w", encoding="utf-8").close()

    def release(self):
        os.remove(self._path("held"))

    def calls(self):
        """The first word of each."""
        if not os.path.exists(self._path("calls")):
            return []
        with open(self._path("calls"), encoding="utf-8") as calls:
            return [line.split()[0] for line in calls]
