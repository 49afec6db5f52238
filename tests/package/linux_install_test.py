#!/usr/bin/env python3
"""Installs the build below another prefix and looks at what lies there.

Usage: linux_install_test.py SOURCE-FOLDER BUILD-FOLDER WORK-FOLDER VENDOR-ID
"""
import gzip
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import unittest

source, build, work = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
vendor_id = sys.argv[4]
here = source / "tests/package"
APP = "com.halvorin.VEXACharger"
SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)


def run(*words, **options):
    done = subprocess.run([str(word) for word in words], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, **options)
    if done.returncode != 0:
        raise AssertionError(f"{words} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


class LinuxInstallTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(work, ignore_errors=True)
        run("cmake", "--install", build, "--prefix", "/opt/vexa",
            env={**os.environ, "DESTDIR": str(work)})
        cls.prefix = work / "opt/vexa"
        cls.share = cls.prefix / "share"
        cls.program = cls.prefix / "lib/vexacharger"
        text = (source / "CMakeLists.txt").read_text()
        cls.version = re.search(r"VERSION ([0-9.]+) LANGUAGES", text).group(1)
        cls.languages = sorted(path.stem.split("_", 1)[1]
                               for path in source.glob("resources/lang/vexaload_*.ts"))

    def test_nothing_is_missing_and_nothing_else_is_there(self):
        files = {str(path.relative_to(self.prefix)) for path in self.prefix.rglob("*")
                 if not path.is_dir()}
        resources = {name for name in files
                     if name.startswith(("lib/vexacharger/icons/", "lib/vexacharger/lang/"))}
        self.assertEqual(
            files - resources - {f"share/icons/hicolor/scalable/apps/{APP}.svg"},
            {f"share/icons/hicolor/{size}x{size}/apps/{APP}.png" for size in SIZES} |
            {"bin/VEXACharger", "lib/vexacharger/VEXACharger",
             "lib/udev/rules.d/70-vexacharger.rules", f"share/applications/{APP}.desktop",
             f"share/metainfo/{APP}.metainfo.xml", "share/man/man1/VEXACharger.1.gz",
             "share/bash-completion/completions/VEXACharger",
             "share/zsh/site-functions/_VEXACharger", "share/doc/vexacharger/README.md",
             "share/doc/vexacharger/changelog.gz", "share/doc/vexacharger/copyright"} |
            {f"share/doc/vexacharger/{path.relative_to(source)}"
             for path in source.glob("docs/**/*") if path.is_file()})

    def test_pictures_and_translations_lie_beside_the_program(self):
        for suffix in ("icns", "png"):
            self.assertEqual(sorted(p.name for p in self.program.glob(f"icons/*.{suffix}")),
                             sorted(p.name for p in source.glob(f"resources/icons/*.{suffix}")))
        self.assertEqual(sorted(p.name for p in self.program.glob("lang/*")),
                         [f"vexaload_{language}.qm" for language in self.languages])

    def test_the_path_holds_a_link_that_stays_right_when_all_is_moved(self):
        self.assertEqual(os.readlink(self.prefix / "bin/VEXACharger"),
                         "../lib/vexacharger/VEXACharger")
        self.assertTrue(os.access(self.prefix / "bin/VEXACharger", os.X_OK))

    def test_the_icons_have_the_sizes_of_their_folders(self):
        for size in SIZES:
            icon = self.share / f"icons/hicolor/{size}x{size}/apps/{APP}.png"
            self.assertEqual(struct.unpack(">II", icon.read_bytes()[16:24]), (size, size))

    def test_the_desktop_entry_is_valid_and_speaks_all_languages(self):
        entry = self.share / f"applications/{APP}.desktop"
        self.assertEqual(run("desktop-file-validate", entry), "")
        for key in ("GenericName", "Comment", "Keywords"):
            spoken = re.findall(rf"^{key}\[(\w+)\]=", entry.read_text(), re.M)
            self.assertLessEqual(set(self.languages), set(spoken), key)

    def test_the_metainfo_is_valid_and_names_the_version(self):
        metainfo = self.share / f"metainfo/{APP}.metainfo.xml"
        run("appstreamcli", "validate", "--no-net", metainfo)
        self.assertRegex(metainfo.read_text(), rf'<release version="{self.version}" date="20[0-9-]+"')

    def test_the_man_page_is_rendered_without_complaints(self):
        page = self.share / "man/man1/VEXACharger.1.gz"
        text = run("man", "--warnings", "--local-file", page,
                   env={**os.environ, "MANWIDTH": "80", "LC_ALL": "C.UTF-8"})
        self.assertNotIn("warning", text)
        self.assertIn(f"VEXACharger {self.version}", text)
        codes = re.search("EXIT STATUS(.*)FILES", text, re.S).group(1)
        self.assertEqual(re.findall(r"^       (\d+)  ", codes, re.M),
                         "0 1 2 3 4 5 6 7 11 12 13 14 69".split())

    def test_the_compressed_pages_carry_no_time(self):
        for name in ("man/man1/VEXACharger.1.gz", "doc/vexacharger/changelog.gz"):
            self.assertEqual((self.share / name).read_bytes()[4:8], b"\0\0\0\0", name)

    def test_the_rules_are_for_the_vendor_id_of_the_build(self):
        rules = (self.prefix / "lib/udev/rules.d/70-vexacharger.rules").read_text()
        self.assertEqual(set(re.findall(r'\{idVendor\}=="(\w+)"', rules)), {vendor_id})
        self.assertNotIn("@", rules)

    def test_the_change_log_begins_with_the_version(self):
        log = gzip.decompress((self.share / "doc/vexacharger/changelog.gz").read_bytes()).decode()
        self.assertTrue(log.startswith(f"vexacharger ({self.version}) stable; urgency=medium\n"))
        self.assertLess(max(len(line) for line in log.splitlines() if line.startswith("  ")), 80)


class CompletionTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = work.parent / "completion"
        shutil.rmtree(cls.folder, ignore_errors=True)
        (cls.folder / "files/folder").mkdir(parents=True)
        for name in ("a.db", "two words.db", "notes.txt"):
            (cls.folder / "files" / name).touch()
        shutil.copy(source / "packaging/completion/zsh", cls.folder / "_VEXACharger")

    def bash(self, line, index):
        return run("bash", here / "complete.bash", line, index, cwd=self.folder / "files",
                   env={**os.environ, "VEXA_COMPLETION": source / "packaging/completion/bash"})

    def zsh(self, line, text):
        run("timeout", "60", "zsh", "-f", here / "complete.zsh", line, text, self.folder,
            cwd=self.folder / "files")

    def test_bash_knows_databases_and_folders(self):
        self.assertEqual(sorted(self.bash("VEXACharger ", 1).splitlines()),
                         ["a.db", "folder", "two words.db"])

    def test_bash_knows_the_help(self):
        self.assertEqual(self.bash("VEXACharger -", 1), "-?\n")

    def test_bash_knows_the_ports_that_are_there(self):
        ports = [str(port) for pattern in ("ttyACM*", "ttyUSB*")
                 for port in pathlib.Path("/dev").glob(pattern)]
        found = self.bash("VEXACharger a.db ", 2).split()
        self.assertEqual(sorted(set(found) - {"PCSC"}), sorted(ports))
        self.assertEqual("PCSC" in found, pathlib.Path("/run/pcscd/pcscd.comm").is_socket())

    def test_bash_knows_the_pads(self):
        self.assertEqual(self.bash("VEXACharger a.db PCSC ", 3).split(),
                         [str(number) for number in range(1, 15)])
        self.assertEqual(self.bash("VEXACharger a.db PCSC 1", 3).split(), "1 10 11 12 13 14".split())

    def test_bash_knows_no_further_argument(self):
        self.assertEqual(self.bash("VEXACharger a.db PCSC 1 ", 4), "\n")

    def test_zsh_knows_databases_help_and_pads(self):
        self.zsh("VEXACharger ", "a.db           folder/        two")
        self.zsh("VEXACharger -", "show the help")
        self.zsh("VEXACharger a.db PCSC 1", "1   10  11  12  13  14")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
