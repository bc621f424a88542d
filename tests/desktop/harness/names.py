"""Texts of the program by which the desktop tests find its windows, controls and menu entries."""

PROGRAM = "Corvala for Mac"
MAIN = "Corvala for Mac · Halvex"
SETTINGS = "Corvala processing settings"
SETUP = "Corvala for Mac Setup · Halvex"
# An alert's name, and the title of its window.
ALERT = "Corvala for Mac needs attention"
ALERT_WINDOW = PROGRAM

OPEN = "Open Corvala for Mac"
PAUSE = "Pause deep jobs"
RESUME = "Resume deep jobs"
START = "Start processing"
OPEN_SETUP = "Setup…"
QUIT = "Quit dashboard (worker keeps running)"
