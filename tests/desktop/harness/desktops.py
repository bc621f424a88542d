"""The real desktops that the flows of test_desktops.py run on, each in a few lines: the window
manager, the panel with nothing but a tray, and where the tray item is."""

import os
import subprocess

from .accessible import Accessible, bus_address
from .desktop import X11Desktop
from .panel import Panel

XFCE_PANEL = """\
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=8;x=0;y=0"/>
      <property name="size" type="uint" value="30"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
"""

LXQT_PANEL = """\
[General]
panels=panel1

[panel1]
plugins=statusnotifier
position=Bottom
panelSize=32
desktop=0

[statusnotifier]
type=statusnotifier
alignment=Right
"""


class I3Desktop(X11Desktop):
    """Tiles its windows and minimises none."""

    # Without this first line i3 takes the file for one of version 3 and adds a bar with a tray.
    configuration = "# i3 config file (v4)\nfont pango:DejaVu Sans 8\n"

    def _manage_windows(self):
        path = os.path.join(self.folder, "i3.conf")
        with open(path, "w", encoding="utf-8") as file:
            file.write(self.configuration)
        self.window_manager = ("i3", "-c", path)
        super()._manage_windows()

    def go_to_workspace(self, number):
        # By its name, since there is none before someone goes there.
        subprocess.run(
            ["i3-msg", "-q", "workspace", str(number + 1)], env=self.environment, check=True
        )


class MarcoDesktop(X11Desktop):
    window_manager = ("marco", "--sm-disable", "--no-composite")


class PanelDesktop(X11Desktop):
    """A desktop whose panel is part of it."""

    panel_configuration = None

    def panel(self, person):
        path, text = self.panel_configuration
        path = os.path.join(self.environment["XDG_CONFIG_HOME"], path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        return Panel(self, person, self._start_panel, self._tray_process, self._item_place)

    def _start_panel(self):
        raise NotImplementedError

    @staticmethod
    def _tray_process(panel):
        return panel.pid

    @staticmethod
    def _item_place(panel):
        raise NotImplementedError


class XfceDesktop(PanelDesktop):
    panel_configuration = ("xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", XFCE_PANEL)
    window_manager = ("xfwm4", "--compositor=off")

    def _start_panel(self):
        return self._start(["xfce4-panel", "--disable-wm-check"], "panel")

    @staticmethod
    def _tray_process(panel):
        """Its plugins are processes of their own."""
        with open(f"/proc/{panel.pid}/task/{panel.pid}/children", encoding="ascii") as file:
            return next(map(int, file.read().split()), None)

    @staticmethod
    def _item_place(panel):
        """Of the plugin, which is as large as its items."""
        fillers = Accessible(panel.pid).showing("panel")
        return fillers[-1].place if len(fillers) > 1 and fillers[-1].place[2] > 1 else None


class LxqtDesktop(PanelDesktop):
    panel_configuration = ("lxqt/panel.conf", LXQT_PANEL)

    def _start_panel(self):
        # Without it Qt 5 asks for the address in the background and may register before it has it.
        self.windows.publish("AT_SPI_BUS", bus_address())
        return self._start(["lxqt-panel"], "panel")

    @staticmethod
    def _item_place(panel):
        buttons = Accessible(panel.pid).showing("push button")
        return buttons[0].place if buttons else None
