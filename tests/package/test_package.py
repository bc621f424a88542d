"""The packages: what they hold, what Debian's and the desktop's own checks say of them."""

import gzip
import hashlib
import os
import plistlib
import re
import shlex
import shutil
import struct
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

BUILD = os.environ["VESK_BUILD_DIR"]
VERSION = os.environ["VESK_VERSION"]

CONTROL, SIMULATOR = "vesk-worker-control", "vesk-worker-sim"
APPLICATION = "com.halvex.VeskWorkerControl"

PNG_SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
ICONS = "usr/share/icons/hicolor/"

# Of each package every file, with its mode.
CONTENTS = {
    CONTROL: {
        "usr/bin/VeskWorkerControl": "-rwxr-xr-x",
        "usr/lib/systemd/user-generators/vesk-agent-generator": "-rwxr-xr-x",
        "usr/libexec/veskworker/vesk-launchctl": "-rwxr-xr-x",
        f"usr/share/applications/{APPLICATION}.desktop": "-rw-r--r--",
        "usr/share/bash-completion/completions/VeskWorkerControl": "-rw-r--r--",
        f"usr/share/dbus-1/services/{APPLICATION}.service": "-rw-r--r--",
        f"usr/share/doc/{CONTROL}/changelog.gz": "-rw-r--r--",
        f"usr/share/doc/{CONTROL}/copyright": "-rw-r--r--",
        **{
            f"{ICONS}{size}x{size}/apps/{APPLICATION}.png": "-rw-r--r--" for size in PNG_SIZES
        },
        f"{ICONS}scalable/apps/{APPLICATION}.svg": "-rw-r--r--",
        f"{ICONS}symbolic/apps/{APPLICATION}-symbolic.svg": "-rw-r--r--",
        "usr/share/man/man1/VeskWorkerControl.1.gz": "-rw-r--r--",
        "usr/share/man/man1/vesk-launchctl.1.gz": "-rw-r--r--",
        "usr/share/man/man8/vesk-agent-generator.8.gz": "-rw-r--r--",
        f"usr/share/metainfo/{APPLICATION}.metainfo.xml": "-rw-r--r--",
    },
    SIMULATOR: {
        "usr/bin/vesk-worker-sim": "-rwxr-xr-x",
        "usr/share/bash-completion/completions/vesk-worker-sim": "-rw-r--r--",
        f"usr/share/doc/{SIMULATOR}/changelog.gz": "-rw-r--r--",
        f"usr/share/doc/{SIMULATOR}/copyright": "-rw-r--r--",
        f"usr/share/doc/{SIMULATOR}/scenarios/busy-day.json": "-rw-r--r--",
        f"usr/share/doc/{SIMULATOR}/scenarios/late-then-garbage.json": "-rw-r--r--",
        f"usr/share/doc/{SIMULATOR}/scenarios/listener-dies.json": "-rw-r--r--",
        "usr/share/man/man1/vesk-worker-sim.1.gz": "-rw-r--r--",
    },
}


def run(*command, **options):
    """What the command says, on both outputs; fails with it."""
    ended = subprocess.run(
        command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options
    )
    if ended.returncode != 0:
        raise AssertionError(f"{command} ended with {ended.returncode}:\n{ended.stdout}")
    return ended.stdout


def pack(folder, **options):
    """Packs what was built; gives the path of each package."""
    options = {"umask": 0o022, **options}
    run("cpack", "--config", os.path.join(BUILD, "CPackConfig.cmake"), "-B", folder, **options)
    architecture = run("dpkg", "--print-architecture").strip()
    return {
        name: os.path.join(folder, f"{name}_{VERSION}_{architecture}.deb") for name in CONTENTS
    }


def contents(path):
    with open(path, "rb") as file:
        return file.read()


def options_in(text):
    """The long options that begin a line, after a short one or not."""
    return sorted(re.findall(r"^ *(?:-\w, )?(--[a-z-]+)", text, re.MULTILINE))


class PackageTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="vesk-package-")
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.packages = pack(os.path.join(cls.folder, "first"))
        cls.roots = {}
        for name, path in cls.packages.items():
            cls.roots[name] = os.path.join(cls.folder, name)
            run("dpkg-deb", "--extract", path, cls.roots[name])

    def path(self, package, name):
        return os.path.join(self.roots[package], name)

    def field(self, package, name):
        return run("dpkg-deb", "--field", self.packages[package], name).strip()

    def manual(self, package, name):
        """As it is shown on a terminal, without bold and underlined letters."""
        path = self.path(package, f"usr/share/man/man{name[-1]}/{name}.gz")
        # Words are not to be broken: wide enough for every line.
        environment = {**os.environ, "MANWIDTH": "200", "MAN_KEEP_FORMATTING": ""}
        environment["LC_ALL"] = "C.UTF-8"
        return run("man", "--local-file", "--nj", "--nh", path, env=environment)

    def test_lintian_has_nothing_to_say(self):
        self.assertEqual(
            run("lintian", "--allow-root", "--fail-on", "error,warning,override",
                *self.packages.values()),
            "",
        )

    def test_contents(self):
        for package, expected in CONTENTS.items():
            with self.subTest(package):
                files, folders = {}, set()
                for line in run("dpkg-deb", "--contents", self.packages[package]).splitlines():
                    mode, owner, _size, _day, _time, path = line.split(None, 5)
                    self.assertEqual(owner, "root/root", line)
                    if mode.startswith("d"):
                        folders.add(mode)
                    else:
                        files[path.removeprefix("./")] = mode
                self.assertEqual(files, expected)
                self.assertEqual(folders, {"drwxr-xr-x"})

    def test_programs_are_stripped(self):
        for package, files in CONTENTS.items():
            for name in files:
                if files[name] == "-rwxr-xr-x":
                    with self.subTest(name):
                        sections = run("readelf", "--wide", "-S", self.path(package, name))
                        self.assertIn(" .text ", sections)
                        self.assertNotIn(" .symtab ", sections)

    def test_nothing_tells_where_it_was_built(self):
        source = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
        for package, files in CONTENTS.items():
            for name in files:
                with self.subTest(name):
                    found = contents(self.path(package, name))
                    if name.endswith(".gz"):
                        found = gzip.decompress(found)
                    self.assertNotIn(os.fsencode(source), found)
                    self.assertNotIn(os.fsencode(BUILD), found)

    def test_one_version(self):
        for package in CONTENTS:
            with self.subTest(package):
                self.assertEqual(self.field(package, "Version"), VERSION)
                changelog = self.path(package, f"usr/share/doc/{package}/changelog.gz")
                with gzip.open(changelog, "rt", encoding="utf-8") as file:
                    self.assertEqual(
                        file.readline(), f"{package} ({VERSION}) unstable; urgency=medium\n"
                    )
                for name in CONTENTS[package]:
                    if name.startswith("usr/share/man/"):
                        with gzip.open(self.path(package, name), "rt", encoding="utf-8") as file:
                            self.assertIn(f'"VeskWorkerControl {VERSION}"', file.readline())

    def test_dependencies_are_computed(self):
        depends = self.field(CONTROL, "Depends")
        # Debian 13 appended "t64" to names of libraries whose time_t grew on other processors.
        for library in ("libc6", "libqt6core6(t64)?", "libqt6dbus6", "libqt6gui6", "libqt6svg6",
                        "libqt6widgets6", "libxcb1"):
            self.assertRegex(depends, rf"\b{library}\b")
        self.assertIn("systemd", self.field(CONTROL, "Recommends"))
        self.assertIn("qt6-wayland", self.field(CONTROL, "Recommends"))
        self.assertIn("libc6 (", self.field(SIMULATOR, "Depends"))
        self.assertNotIn("qt6", self.field(SIMULATOR, "Depends"))

    def test_packed_again_it_is_the_same(self):
        again = pack(os.path.join(self.folder, "again"))
        for name, path in self.packages.items():
            with self.subTest(name):
                digests = {hashlib.sha256(contents(found)).digest() for found in (path, again[name])}
                self.assertEqual(len(digests), 1)

    def test_wrong_umask_is_refused(self):
        with self.assertRaisesRegex(AssertionError, "must be 022"):
            pack(os.path.join(self.folder, "refused"), umask=0o077)

    def test_desktop_entry(self):
        entry = self.path(CONTROL, f"usr/share/applications/{APPLICATION}.desktop")
        self.assertEqual(run("desktop-file-validate", entry), "")
        with open(entry, encoding="utf-8") as file:
            text = file.read()
        self.assertIn(f"\nIcon={APPLICATION}\n", text)
        self.assertIn("\nStartupWMClass=VeskWorkerControl\n", text)
        # SingleMainWindow, which replaces it, is refused by the validator of Debian 12.
        self.assertIn("\nX-GNOME-SingleWindow=true\n", text)
        # KDE finds the action of the entry that was chosen by its command.
        commands = re.findall(r"^Exec=(.*)", text, re.MULTILINE)
        actions = re.search(r"^Actions=(.*);$", text, re.MULTILINE)[1].split(";")
        self.assertEqual(
            commands, ["VeskWorkerControl", *("VeskWorkerControl --" + each for each in actions)]
        )
        self.assertIn("usr/bin/VeskWorkerControl", CONTENTS[CONTROL])
        options = options_in(run(self.path(CONTROL, "usr/bin/VeskWorkerControl"), "--help"))
        self.assertEqual([each for each in actions if "--" + each not in options], [])

    def test_bus_starts_the_installed_program(self):
        with open(
            self.path(CONTROL, f"usr/share/dbus-1/services/{APPLICATION}.service"), encoding="utf-8"
        ) as file:
            self.assertEqual(
                file.read(),
                f"[D-BUS Service]\nName={APPLICATION}\nExec=/usr/bin/VeskWorkerControl\n",
            )

    def test_installed_elsewhere_the_bus_follows(self):
        prefix = os.path.join(self.folder, "elsewhere")
        run("cmake", "--install", BUILD, "--prefix", prefix)
        with open(
            os.path.join(prefix, f"share/dbus-1/services/{APPLICATION}.service"), encoding="utf-8"
        ) as file:
            self.assertIn(f"\nExec={prefix}/bin/VeskWorkerControl\n", file.read())
        self.assertTrue(os.access(os.path.join(prefix, "bin/VeskWorkerControl"), os.X_OK))

    def test_description_for_software_centres(self):
        path = self.path(CONTROL, f"usr/share/metainfo/{APPLICATION}.metainfo.xml")
        said = run("appstreamcli", "validate", "--no-net", path)
        self.assertRegex(said, r"Validation was successful")
        # The name of the developer is there in the form of 1.0 and in that of versions before.
        self.assertNotRegex(said, r"(?m)^[EWI]:(?!.* (unknown-tag developer|developer-name-tag-deprecated)$)")
        component = ElementTree.parse(path).getroot()
        releases = [release.get("version") for release in component.iter("release")]
        self.assertEqual(releases[0], VERSION)
        self.assertEqual(releases[-1], "1.0.0")
        self.assertEqual(component.findtext("id"), APPLICATION)
        self.assertEqual(component.findtext("launchable"), APPLICATION + ".desktop")
        docs = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "docs")
        for image in component.iter("image"):
            with self.subTest(image.text):
                picture = contents(os.path.join(docs, os.path.basename(image.text)))
                self.assertEqual(
                    png_size(picture), (int(image.get("width")), int(image.get("height")))
                )

    def test_icons(self):
        for size in PNG_SIZES:
            with self.subTest(size):
                path = f"{ICONS}{size}x{size}/apps/{APPLICATION}.png"
                self.assertEqual(png_size(contents(self.path(CONTROL, path))), (size, size))
        scalable = self.path(CONTROL, f"{ICONS}scalable/apps/{APPLICATION}.svg")
        self.assertEqual(ElementTree.parse(scalable).getroot().get("viewBox"), "0 0 256 256")
        symbolic = ElementTree.parse(
            self.path(CONTROL, f"{ICONS}symbolic/apps/{APPLICATION}-symbolic.svg")
        ).getroot()
        self.assertEqual(symbolic.get("viewBox"), "0 0 16 16")
        # Desktops colour areas, not lines.
        for element in symbolic.iter():
            self.assertIsNone(element.get("stroke"))

    def test_manuals_are_well_formed(self):
        for package, files in CONTENTS.items():
            for name in files:
                if name.startswith("usr/share/man/"):
                    with self.subTest(name):
                        environment = {**os.environ, "MANROFFSEQ": "", "MANWIDTH": "80"}
                        environment["LC_ALL"] = "C.UTF-8"
                        ended = subprocess.run(
                            ["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z",
                             self.path(package, name)],
                            env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                            text=True, check=True,
                        )
                        self.assertEqual(ended.stderr, "")
                        self.assertIn("VeskWorkerControl", ended.stdout)

    def test_every_program_has_its_manual(self):
        for package, root in self.roots.items():
            files = [
                os.path.join(folder, name) for folder, _, names in os.walk(root) for name in names
            ]
            manuals = {
                os.path.basename(path).rsplit(".", 2)[0] for path in files if "/man/" in path
            }
            programs = {os.path.basename(path) for path in files if os.access(path, os.X_OK)}
            with self.subTest(package):
                self.assertNotEqual(programs, set())
                self.assertEqual(manuals, programs)

    def test_manual_and_help_name_the_same_options(self):
        told = options_in(run(self.path(SIMULATOR, "usr/bin/vesk-worker-sim"), "--help"))
        self.assertIn("--port", told)
        self.assertEqual(options_in(self.manual(SIMULATOR, "vesk-worker-sim.1")), told)
        self.assertEqual(self.completions(SIMULATOR, "vesk-worker-sim"), told)

    def test_manual_and_readme_name_the_same_arguments(self):
        readme = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "README.md")
        with open(readme, encoding="utf-8") as file:
            told = sorted(re.findall(r"^\| `(--[a-z-]+)`", file.read(), re.MULTILINE))
        self.assertIn("--setup", told)
        help_text = run(self.path(CONTROL, "usr/bin/VeskWorkerControl"), "--help")
        self.assertEqual(options_in(help_text), told)
        self.assertEqual(options_in(self.manual(CONTROL, "VeskWorkerControl.1")), told)
        self.assertEqual(self.completions(CONTROL, "VeskWorkerControl"), told)

    def test_manual_and_companion_name_the_same_commands(self):
        companion = self.path(CONTROL, "usr/libexec/veskworker/vesk-launchctl")
        ended = subprocess.run([companion], capture_output=True, text=True, check=False)
        told = [line.split("vesk-launchctl ")[1] for line in ended.stderr.splitlines()]
        self.assertEqual(len(told), 3)
        synopsis = self.manual(CONTROL, "vesk-launchctl.1").split("SYNOPSIS")[1]
        synopsis = synopsis.split("DESCRIPTION")[0]
        self.assertEqual(
            [line.split("vesk-launchctl ")[1].rstrip() for line in synopsis.splitlines()
             if "vesk-launchctl" in line],
            told,
        )

    def completions(self, package, program):
        """The words that bash offers after the program's name."""
        file = self.path(package, "usr/share/bash-completion/completions/" + program)
        words = shlex.split(run("bash", "-c", f". '{file}'; complete -p {program}"))
        return words[words.index("-W") + 1].split()


class AppleBundleTest(unittest.TestCase):
    """What the bundle for macOS is made of, as far as it can be looked at elsewhere."""

    def test_property_list(self):
        with open(os.path.join(BUILD, "packaging", "Info.plist"), "rb") as file:
            told = plistlib.load(file)
        self.assertEqual(told["CFBundleIdentifier"], APPLICATION)
        self.assertEqual(told["CFBundleExecutable"], "VeskWorkerControl")
        self.assertEqual(told["CFBundleIconFile"], "VeskWorkerControl.icns")
        self.assertEqual(told["CFBundlePackageType"], "APPL")
        self.assertEqual(told["CFBundleShortVersionString"], VERSION)
        self.assertEqual(told["CFBundleVersion"], VERSION)
        self.assertEqual(told["LSApplicationCategoryType"], "public.app-category.utilities")
        self.assertRegex(told["LSMinimumSystemVersion"], r"^\d+\.\d+$")
        self.assertIs(told["NSHighResolutionCapable"], True)

    def test_icon_file(self):
        file = contents(os.path.join(BUILD, "packaging", "icons", "VeskWorkerControl.icns"))
        self.assertEqual(struct.unpack(">4sI", file[:8]), (b"icns", len(file)))
        sizes, rest = {}, file[8:]
        while rest:
            kind, length = struct.unpack(">4sI", rest[:8])
            sizes[kind.decode()] = png_size(rest[8:length])
            rest = rest[length:]
        edges = {
            "icp4": 16, "ic11": 32, "icp5": 32, "ic12": 64, "ic07": 128, "ic13": 256, "ic08": 256,
            "ic14": 512, "ic09": 512, "ic10": 1024,
        }
        self.assertEqual(sizes, {kind: (edge, edge) for kind, edge in edges.items()})


def png_size(file):
    """Width and height in pixels."""
    head, kind, width, height = struct.unpack(">12s4sII", file[:24])
    if head[:8] != b"\x89PNG\r\n\x1a\n" or kind != b"IHDR":
        raise AssertionError("no PNG file")
    return width, height


if __name__ == "__main__":
    unittest.main()
