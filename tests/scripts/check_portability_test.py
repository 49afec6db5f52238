#!/usr/bin/env python3
"""scripts/check-portability finds what one system only has, and nothing else.

Usage: check_portability_test.py SOURCE-FOLDER
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

source = pathlib.Path(sys.argv[1]).resolve()

FORBIDDEN = """
#ifdef __linux__
#if defined(__APPLE__) && 1
  #  elif Q_OS_MACOS
readlink("/proc/self/exe", buffer, size);
std::ifstream("/sys/class/tty");
const char* node = "/dev/ttyACM0";
#include <linux/serial.h>
#include <sys/epoll.h>
#include <libudev.h>
#include <malloc.h>
#include <mach-o/dyld.h>
#include <IOKit/IOKitLib.h>
#include <winscard.h>
#include <PCSC/reader.h>
open(path, O_RDONLY | O_PATH);
send(fd, data, size, MSG_NOSIGNAL);
cfsetospeed(&t, B1000000);
t.c_iflag &= ~IUCLC;
const int made = pipe2(ends, 0);
char* end = strchrnul(text, '=');
std::filesystem::path path;
std::to_chars(first, last, value);
(void)cfsetospeed(&t, 9600);
(void)cfsetispeed(&t, 0x0D);
ioctl(handle, 0x5415, &status);
handle = open(path, 0x20002);
""".strip().splitlines()

ALLOWED = """
#if 0
#include <PCSC/winscard.h>
#include <sys/ioctl.h>
(void)cfsetospeed(&t, B9600);
(void)ioctl(handle, TIOCMGET, &status);
handle = open(path.c_str(), O_RDWR | O_NOCTTY);
const int file = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
dialog.open(QIODevice::ReadOnly);
// the process, its system and the splice of two lists
constexpr int kDirections = 2;
""".strip().splitlines()


class CheckPortabilityTest(unittest.TestCase):
    def check(self, name, text):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder, name)
            file.parent.mkdir(parents=True)
            file.write_text(text + "\n")
            done = subprocess.run([source / "scripts/check-portability", folder],
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            return done.returncode, done.stdout

    def test_the_products_sources_are_portable(self):
        done = subprocess.run([source / "scripts/check-portability"], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True)
        self.assertEqual((done.returncode, done.stdout), (0, ""))

    def test_what_one_system_only_has_is_found(self):
        for line in FORBIDDEN:
            with self.subTest(line=line):
                self.assertEqual(self.check("devices/port.cpp", "int a;\n" + line),
                                 (1, f"devices/port.cpp:2:{line}\n"))

    def test_what_all_systems_have_is_let_through(self):
        for line in ALLOWED:
            with self.subTest(line=line):
                self.assertEqual(self.check("devices/port.h", line), (0, ""))

    def test_the_files_of_one_system_may_use_what_it_has(self):
        for name in ("app/display_linux.cpp", "app/display_macos.cpp",
                     "devices/serial_discovery_udev.cpp", "devices/serial_discovery_iokit.cpp"):
            with self.subTest(name=name):
                status, output = self.check(name, FORBIDDEN[0])
                self.assertEqual((status, output), (66, ""))

    def test_a_folder_without_sources_is_an_error(self):
        self.assertEqual(self.check("docs/page.cpp", FORBIDDEN[0]), (66, ""))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
