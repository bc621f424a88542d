"""A program with a maximised window, for desktops on which only a program of its own can
have one. It runs until it is ended."""

import sys

import gi

gi.require_version("Gtk", "4.0")
from gi.repository import GLib, Gtk  # noqa: E402


def main():
    Gtk.init()
    window = Gtk.Window(title=sys.argv[1])
    window.maximize()
    window.present()
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
