"""Texts of the program by which the desktop tests find its windows, controls and menu entries.

What the program computes from the state of the service is read from the table of expected texts.
"""

import json
import os

_TABLE = os.path.join(os.path.dirname(__file__), "../../ui/texts/expected-texts.txt")


def _read_sections():
    """Of each section of the table the cases in order, each with its own texts."""
    sections = {}
    cases = {}
    with open(_TABLE, encoding="utf-8") as table:
        for line in table.read().split("\n"):
            if line.startswith("# "):
                cases = sections[line[2:]] = {}
            elif line.startswith("    "):
                name, _colon, text = line.strip().partition(":")
                cases[list(cases)[-1]][name] = text[1:].replace("\\n", "\n")
            elif line:
                cases[line] = {}
    return {heading: cases for heading, cases in sections.items() if cases}


_sections = _read_sections()


def _lines(section, case=None):
    """Every line of that case, by its name; without a case those of the section's first."""
    root = next(iter(_sections.values()))
    cases = _sections[section]
    first = next(iter(cases))
    return {**next(iter(root.values())), **cases[first], **cases[case or first]}


def shown(section, case=None):
    """Every text of that case, by its name, without the states of what shows it."""
    return {name: line.split(" ¦ ")[0] for name, line in _lines(section, case).items()}


PROGRAM = "Corvala for Mac"
MAIN = "Corvala for Mac · Halvex"
SETTINGS = "Corvala processing settings"
SETUP = "Corvala for Mac Setup · Halvex"
# An alert's name, and the title of its window.
ALERT = "Corvala for Mac needs attention"
ALERT_WINDOW = PROGRAM

OPEN = "Open Corvala for Mac"
OPEN_SETUP = "Setup…"
QUIT = "Quit dashboard (worker keeps running)"
LOGIN = "Start processing automatically when I log in"
START_CHECK = "Start processing & check"

_FIRST = "An answer without any detail"
_ready = shown(_FIRST)
_paused = shown("Paused")
_stopped = shown("Stopped")
_known = shown("The processing budget")
_LIVE = "Three bays at work, with all that stays as it was in the other states"

CONNECTED = _ready["connection"]
RECONNECTING = shown(_LIVE, "reconnecting")["connection"]
SERVICE_STOPPED = _stopped["connection"]

READY = _ready["status"]
PAUSED = _paused["status"]
STOPPED = _stopped["status"]

PAUSE = _ready["start button"]
RESUME = _paused["start button"]
START = _stopped["start button"]

APPLY = _lines(_FIRST)["setup 4 basic"].split(" ¦ ")[2]


def setup_step(number):
    """The line above the heading of that page of the setup sheet."""
    return _ready[f"setup {number} basic"]


def working(bays):
    """The headline while that many bays hold a job."""
    one, two = {"state": "busy"}, {"state": "waiting"}
    case = json.dumps({"slots": [one] if bays == 1 else [one, two]})
    return shown("How many bays hold a job", case)["status"]


def tool_tip(status):
    """Of the tray item under that headline."""
    return _ready["tray tool tip"].replace("<status>", status)


def summary(duty, lanes, reason):
    """The line of the window, with nothing returned or failed yet."""
    text = _known["summary"].replace("25%", f"{duty}%").replace("2/4", lanes)
    return text.replace("Mac in use", reason)


def rack(machine, system, port):
    """The line of a machine with three bays."""
    line = shown(_LIVE)["rack"].replace("rack-7", machine).replace("Mac mini", system)
    return line.replace("45835", str(port))
