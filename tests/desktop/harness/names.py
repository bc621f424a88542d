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


def document(section):
    """The health document of the section's first case."""
    return json.loads(next(iter(_sections[section])))


_ALL_READY = (
    '{"video_backend": {"model_ready": true}, "audio_backend": {"model_ready": true}, '
    '"services": {"deep_scan": true, "video": true, "audio": true, "ocr": true}}'
)

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
WAITING = "Before the first answer"
LIVE = "Three bays at work, with all that stays as it was in the other states"
GONE = "Stopped"

CONNECTED = _ready["connection"]
RECONNECTING = shown(LIVE, "reconnecting")["connection"]
SERVICE_STOPPED = _stopped["connection"]

READY = _ready["status"]
PAUSED = _paused["status"]
STOPPED = _stopped["status"]

PAUSE = _ready["start button"]
RESUME = _paused["start button"]
START = _stopped["start button"]

APPLY = _lines(_FIRST)["setup 4 basic"].split(" ¦ ")[2]
APPLYING = _lines(_FIRST, "setup-applying")["setup 4 basic"].split(" ¦ ")[2]

# How the scan engines stand.
ENGINES_READY = shown("Engines", f"photo-ready {_ALL_READY}")["readiness"]
ENGINES_MISSING = shown(_FIRST, "photo-missing")["readiness"]
ENGINES_STOPPED = _stopped["readiness"]


def setup_step(number):
    """The line above the heading of that page of the setup sheet."""
    return _ready[f"setup {number} basic"]


def setup_pages(advanced, port):
    """Of each page the texts; the engines are ready and the service sends no limits."""
    lines = _lines(_FIRST)
    pages = []
    for number in range(1, 5):
        page = f"setup {number} {'advanced' if advanced else 'basic'}"
        texts = lines[page].split(" ¦ ")[:2]
        for name, text in lines.items():
            if name.startswith(page + " item "):
                if text == "as in basic":
                    text = lines[name.replace("advanced", "basic")]
                if text == "<readiness>":
                    text = ENGINES_READY
                if not text.startswith("<"):
                    texts.append(text.replace("45835", str(port)))
        pages.append(texts)
    return pages


def working(bays):
    """The headline while that many bays hold a job."""
    one, two = {"state": "busy"}, {"state": "waiting"}
    case = json.dumps({"slots": [one] if bays == 1 else [one, two]})
    return shown("How many bays hold a job", case)["status"]


def tool_tip(status):
    """Of the tray item under that headline."""
    return _ready["tray tool tip"].replace(READY, status)


def performance(duty, lanes, reason):
    """The line of the settings sheet; `lanes` as in "2/3"."""
    return _budget("settings performance", duty, lanes, reason)


def summary(duty, lanes, reason):
    """The line of the window, with nothing returned or failed yet."""
    return _budget("summary", duty, lanes, reason)


def _budget(name, duty, lanes, reason):
    text = _known[name].replace("25%", f"{duty}%").replace("2/4", lanes)
    return text.replace("Mac in use", reason)


def rack(machine, system, port):
    """The line of a machine with three bays."""
    line = shown(LIVE)["rack"].replace("rack-7", machine).replace("Mac mini", system)
    return line.replace("45835", str(port))


def thermal(state, online=True):
    """The line of the settings sheet."""
    return (_known if online else _stopped)["settings thermal"].replace(
        "Fair" if online else "Checking", state
    )
