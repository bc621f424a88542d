"""The program as it is installed for a desktop's launcher: its entry, its bus service, its icon."""

import os
import shlex
import shutil

from .desktop import DASHBOARD

APPLICATION = "com.halvex.VeskWorkerControl"
ENTRY = APPLICATION + ".desktop"

_PACKAGING = os.path.join(os.path.dirname(__file__), "../../../packaging/freedesktop")


class Installation:
    """In the home folder of the desktop; `path` leads to the program. What is started through it uses
    the service and the home of `serve`."""

    def __init__(self, desktop):
        self._folder = desktop.folder
        self._binaries = os.path.join(desktop.folder, "bin")
        self._share = desktop.environment["XDG_DATA_HOME"]
        self._write_program()
        self._write_service()
        applications = os.path.join(self._share, "applications")
        os.makedirs(applications, exist_ok=True)
        shutil.copy(os.path.join(_PACKAGING, ENTRY), applications)
        icons = os.path.join(os.environ["VESK_BUILD_DIR"], "packaging/icons/hicolor")
        if os.path.isdir(icons):
            shutil.copytree(icons, os.path.join(self._share, "icons/hicolor"))

    @property
    def path(self):
        return self._binaries + ":/usr/bin:/bin"

    def _write_program(self):
        os.makedirs(self._binaries)
        program = os.path.join(self._binaries, "VeskWorkerControl")
        settings = os.path.join(self._folder, "launched")
        with open(program, "w", encoding="utf-8") as script:
            script.write(
                "#!/bin/sh\n"
                f". {shlex.quote(settings)}\n"
                f'exec {shlex.quote(DASHBOARD)} $port "$@" 2>>{shlex.quote(settings + ".err")}\n'
            )
        os.chmod(program, 0o755)

    def _write_service(self):
        services = os.path.join(self._share, "dbus-1/services")
        os.makedirs(services)
        with open(os.path.join(services, APPLICATION + ".service"), "w", encoding="utf-8") as file:
            file.write(
                f"[D-BUS Service]\nName={APPLICATION}\n"
                f"Exec={os.path.join(self._binaries, 'VeskWorkerControl')}\n"
            )

    def serve(self, port, home):
        """What is launched from now on uses that service and the home of that environment."""
        with open(os.path.join(self._folder, "launched"), "w", encoding="utf-8") as file:
            file.write(f"port={port}\n")
            for name, value in home.items():
                file.write(f"export {name}={shlex.quote(value)}\n")
