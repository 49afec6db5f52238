#!/usr/bin/env python3
"""Builds and installs as on macOS, with stand-ins for that system's tools, and looks at the result.

Usage: macos_bundle_test.py SOURCE-FOLDER WORK-FOLDER QT5-CMAKE-FOLDER
"""
import os
import pathlib
import plistlib
import re
import shutil
import subprocess
import sys
import unittest

source, work, qt5 = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
tools = source / "tests/package/darwin"
build = work / "build"


def run(*words, status=0, **options):
    done = subprocess.run([str(word) for word in words], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, **options)
    if (done.returncode == 0) != (status == 0):
        raise AssertionError(f"{words} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def configure(*settings):
    run("cmake", "-G", "Ninja", "-S", source, "-B", build,
        f"-DCMAKE_TOOLCHAIN_FILE={tools}/toolchain.cmake", f"-DQt5_DIR={qt5}",
        f"-DQt5LinguistTools_DIR={qt5.parent}/Qt5LinguistTools", "-DCMAKE_BUILD_TYPE=Debug",
        *settings)


def install(root, status=0):
    run("cmake", "--install", build, "--prefix", "/Applications", status=status,
        env={**os.environ, "DESTDIR": str(root)})
    return root / "Applications/VEXACharger.app/Contents"


def names(folder, pattern="*"):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob(pattern)
                  if not path.is_dir() or path.is_symlink())


class MacosBundleTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(work, ignore_errors=True)
        configure("-DVEXA_SIGNING_IDENTITY=")
        run("cmake", "--build", build)
        # What a run from the build folder leaves there is no part of the bundle.
        (build / "config").mkdir()
        (build / "config/VEXA_init.ini").write_text("&LogOption=1")
        cls.contents = install(work / "root")
        cls.plist = plistlib.loads((cls.contents / "Info.plist").read_bytes())
        cls.ninja = (build / "build.ninja").read_text()
        version = re.search(r"VERSION ([0-9.]+) LANGUAGES", (source / "CMakeLists.txt").read_text())
        cls.version = version.group(1)

    def test_the_files_for_macos_are_built_and_those_for_linux_are_not(self):
        for name in ("display_macos", "config_location_macos", "pcsc_platform_macos",
                     "serial_discovery_iokit"):
            self.assertIn(f"{name}.cpp", self.ninja)
        self.assertIsNone(re.search(r"_linux\.cpp|_udev\.cpp|umockdev", self.ninja))

    def test_the_frameworks_are_linked(self):
        frameworks = set(re.findall(r"-framework (\w+)", self.ninja))
        self.assertEqual(frameworks, {"CoreFoundation", "IOKit", "PCSC"})

    def test_processor_and_oldest_release_are_stated(self):
        cache = (build / "CMakeCache.txt").read_text()
        self.assertIn("CMAKE_OSX_DEPLOYMENT_TARGET:STRING=10.13\n", cache)
        self.assertIn("-arch x86_64", self.ninja)

    def test_simulator_and_tests_are_left_out(self):
        self.assertNotIn("vexa-terminal", self.ninja)

    def test_the_property_list_names_program_icon_and_version(self):
        self.assertEqual(self.plist["CFBundlePackageType"], "APPL")
        self.assertEqual(self.plist["CFBundleIdentifier"], "com.halvorin.VEXACharger")
        self.assertEqual(self.plist["CFBundleName"], "VEXACharger")
        self.assertEqual(self.plist["CFBundleExecutable"], "VEXACharger")
        self.assertEqual(self.plist["CFBundleIconFile"], "HalvorinApp.icns")
        self.assertEqual(self.plist["CFBundleShortVersionString"], self.version)
        self.assertEqual(self.plist["CFBundleVersion"], self.version)
        self.assertEqual(self.plist["LSMinimumSystemVersion"], "10.13")
        self.assertEqual(self.plist["NSPrincipalClass"], "NSApplication")
        self.assertIs(self.plist["NSHighResolutionCapable"], True)
        self.assertIs(self.plist["NSRequiresAquaSystemAppearance"], True)

    def test_the_property_list_names_the_languages(self):
        languages = {re.sub("^vexaload_", "", path.stem)
                     for path in source.glob("resources/lang/vexaload_*.ts")}
        self.assertEqual(sorted(self.plist["CFBundleLocalizations"]), sorted(languages | {"en"}))

    def test_the_executables_folder_holds_the_program_and_two_links(self):
        folder = self.contents / "MacOS"
        self.assertEqual(sorted(path.name for path in folder.iterdir()),
                         ["VEXACharger", "icons", "lang"])
        self.assertTrue(os.access(folder / "VEXACharger", os.X_OK))
        self.assertEqual(os.readlink(folder / "icons"), "../Resources/icons")
        self.assertEqual(os.readlink(folder / "lang"), "../Resources/lang")

    def test_all_pictures_and_translations_are_there(self):
        icons = names(source / "resources/icons", "*.icns") + names(source / "resources/icons",
                                                                    "*.png")
        lang = [path.stem + ".qm" for path in source.glob("resources/lang/*.ts")]
        self.assertEqual(names(self.contents / "Resources/icons"), sorted(icons))
        self.assertLessEqual(set(lang), set(names(self.contents / "Resources/lang")))
        self.assertEqual((self.contents / "Resources/HalvorinApp.icns").exists(),
                         "HalvorinApp.icns" in icons)

    def test_the_bundle_holds_nothing_else(self):
        rest = [name for name in names(self.contents)
                if not name.startswith(("MacOS/", "Resources/icons/", "Resources/lang/"))]
        self.assertEqual([name for name in rest if name != "Resources/HalvorinApp.icns"],
                         ["Info.plist", "PlugIns/platforms/libqminimal.so",
                          "macdeployqt.arguments"])

    def test_the_toolkit_is_copied_in_when_all_else_is_there(self):
        asked = (self.contents / "macdeployqt.arguments").read_text().splitlines()
        self.assertEqual(asked, [str(self.contents.parent), "-always-overwrite"])

    def test_a_second_install_replaces_the_first(self):
        before = names(self.contents)
        self.assertEqual(names(install(work / "root")), before)

    def test_a_signing_identity_reaches_the_tool_as_one_word(self):
        identity = "Developer ID Application: Some Body (ABCDE12345)"
        configure(f"-DVEXA_SIGNING_IDENTITY={identity}")
        asked = (install(work / "signed") / "macdeployqt.arguments").read_text().splitlines()
        configure("-DVEXA_SIGNING_IDENTITY=")
        self.assertEqual(asked[2:], [f"-sign-for-notarization={identity}"])

    def test_a_toolkit_that_cannot_be_copied_in_fails_the_install(self):
        # The stand-in writes into the bundle, which a folder in the way forbids.
        (work / "bad/Applications/VEXACharger.app/Contents/macdeployqt.arguments").mkdir(
            parents=True)
        install(work / "bad", status=1)

    def test_the_disk_image_is_named_after_version_and_processor(self):
        settings = (build / "CPackConfig.cmake").read_text()
        self.assertIn('set(CPACK_GENERATOR "DragNDrop")', settings)
        self.assertIn(f'set(CPACK_PACKAGE_FILE_NAME "VEXACharger-{self.version}-macos-x86_64")',
                      settings)
        self.assertIn(f'set(CPACK_DMG_VOLUME_NAME "VEXACharger {self.version}")', settings)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
