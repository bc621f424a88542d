"""Which module includes and links which, as docs/architecture.md draws it. The linker alone accepts an
include of a header, and whatever a program links by way of another module."""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

SCREEN = {"ui/kit", "ui/texts"}
USES = {
    "model": set(),
    "service": {"model"},
    "agent": {"model"},
    "agent/systemd": {"agent"},
    "ui/texts": {"model"},
    "ui/kit": {"ui/texts"},
    "ui/dashboard": SCREEN,
    "ui/tray": SCREEN,
    "ui/card": SCREEN | {"model"},
    "ui/settings": SCREEN | {"model"},
    "ui/setup": SCREEN | {"model"},
    "tools/worker-sim": set(),
}
PRODUCT = set(USES) - {"tools/worker-sim"} | {"app"}
USES["app"] = PRODUCT

WITHOUT_SCREEN = {"model", "service", "agent", "agent/systemd", "ui/texts"}
INWARD = {module for module in PRODUCT if module == "model" or module.startswith("ui/")}
# Modules, what their files must not contain, and the reason.
FORBIDDEN = (
    (WITHOUT_SCREEN, r"<Qt(?:Gui|Widgets|Svg)\b|\bQt6?::(?:Gui|Widgets|Svg)", "has no screen"),
    (PRODUCT - {"service"}, r"<(?:QtCore/)?QJson|<boost/json", "reads no JSON"),
    (
        INWARD,
        r"<boost/|<(?:QtCore/)?QProcess>|<QtNetwork\b|\bQt6?::Network",
        "reaches neither network nor processes",
    ),
)
INCLUDE = re.compile(r'^ *# *include +"([^"]+)"', re.MULTILINE)
LINK = re.compile(r"\bvesk_(\w+)")


def module_of(path):
    """The innermost module of a path, else its first folder."""
    folders = (str(folder) for folder in Path(path).parents)
    return next((folder for folder in folders if folder in USES), Path(path).parts[0])


def violations(path, text):
    """What is wrong with a source file or a CMakeLists.txt; `path` is relative to the tree."""
    module = module_of(path)
    if path.endswith("CMakeLists.txt"):
        modules = {name.replace("/", "_"): name for name in USES}
        used = [modules[name] for name in LINK.findall(text) if name in modules]
    else:
        used = [module_of(include) for include in INCLUDE.findall(text) if "/" in include]
    for other in used:
        if other != module and other not in USES[module]:
            yield f"{path}: {module} must not use {other}"
    for modules, pattern, reason in FORBIDDEN:
        if module in modules and re.search(pattern, text):
            yield f"{path}: {module} {reason}"


class LayersTest(unittest.TestCase):
    def test_sources_keep_to_the_drawing(self):
        found = []
        for folder in ("model", "service", "agent", "ui", "app", "tools/worker-sim"):
            files = [
                str(file.relative_to(ROOT))
                for file in (ROOT / folder).rglob("*.*")
                if re.search(r"\.(h|cpp|mm|txt)$", file.name)
            ]
            self.assertTrue(files, folder)
            for path in files:
                if module_of(path) in USES:
                    found += violations(path, (ROOT / path).read_text(encoding="utf-8"))
        self.assertEqual(found, [])

    def test_violations_are_found(self):
        for path, text in (
            ("model/A.h", '#include "service/B.h"'),
            ("ui/tray/A.cpp", '#include "ui/card/B.h"'),
            ("ui/tray/A.cpp", '#include "tests/B.h"'),
            ("agent/A.cpp", '#include "agent/systemd/B.h"'),
            ("tools/worker-sim/A.cpp", '#include "model/B.h"'),
            ("ui/kit/CMakeLists.txt", "LINK vesk_service"),
            ("agent/CMakeLists.txt", "LINK Qt6::Gui"),
            ("app/A.cpp", "#include <QJsonObject>"),
            ("ui/setup/A.cpp", "#include <boost/asio.hpp>"),
        ):
            with self.subTest(path=path, text=text):
                self.assertEqual(len(list(violations(path, text))), 1)
