"""The flags against exploitation, read from the programs as they are built for a release."""

import json
import os
import platform
import re
import subprocess
import unittest

BUILD = os.environ["VESK_BUILD_DIR"]
PROGRAMS = ("VeskWorkerControl", "vesk-launchctl", "vesk-agent-generator", "vesk-worker-sim")

# What readelf prints with an option, for each program.
EXPECTED = {
    "loaded at any address": ("--dynamic", r"\(FLAGS_1\).*\bPIE\b"),
    "stack without code": ("--program-headers", r"^\s*GNU_STACK\s.*\sRW\s"),
    "relocations read-only": ("--program-headers", r"^\s*GNU_RELRO\s"),
    "functions bound at start": ("--dynamic", r"\(FLAGS\).*\bBIND_NOW\b"),
    "stack overflows detected": ("--dyn-syms", r"\b__stack_chk_fail\b"),
}
FLAGS = {"-D_FORTIFY_SOURCE=3", "-fstack-protector-strong", "-fstack-clash-protection"}


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def readelf(option, program):
    return output("readelf", "--wide", option, os.path.join(BUILD, program))


class HardeningTest(unittest.TestCase):
    def test_programs(self):
        for program in PROGRAMS:
            for name, (option, pattern) in EXPECTED.items():
                with self.subTest(program=program, promise=name):
                    self.assertRegex(readelf(option, program), re.compile(pattern, re.MULTILINE))
            with self.subTest(program=program, promise="no memory for both data and code"):
                self.assertNotRegex(
                    readelf("--program-headers", program),
                    re.compile(r"^\s*\w+\s+0x.*\sR?WE\s+0x", re.MULTILINE),
                )

    def test_dashboard_calls_checked_functions(self):
        # The other programs call no function that has a checked variant with every compiler.
        self.assertRegex(readelf("--dyn-syms", "VeskWorkerControl"), r"\bUND __\w+_chk@")

    @unittest.skipUnless(platform.machine() == "x86_64", "no control-flow protection here")
    def test_functions_begin_with_landing_pads(self):
        # The note for a whole program is missing where the C library's start files have none.
        for program in PROGRAMS:
            with self.subTest(program=program):
                code = output(
                    "objdump", "--disassemble=main", "--no-show-raw-insn", "--no-addresses",
                    os.path.join(BUILD, program),
                )
                self.assertRegex(code, r"<main>:\n\s*endbr")

    def test_flags_of_every_source(self):
        with open(os.path.join(BUILD, "compile_commands.json"), encoding="utf-8") as file:
            commands = json.load(file)
        self.assertTrue(commands)
        for command in commands:
            with self.subTest(file=command["file"]):
                self.assertLessEqual(FLAGS, set(command["command"].split()))
