"""The library as it is installed, and the program that docs/library.md shows."""
import hashlib
import os
import pathlib
import re
import subprocess

import support

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["KZFILE_BUILD"])
DOCUMENT = ROOT / "docs" / "library.md"


class Installed(support.KzfileCase):
    """Installed into a folder that is moved afterwards, as whoever packs it would do."""

    def setUp(self):
        super().setUp()
        self.environment.update({name: os.environ[name] for name in ("CCACHE_DIR",) if name in os.environ})
        first = self.folder / "first prefix"
        if os.access(BUILD, os.W_OK):
            self.run_tool("cmake", "--install", BUILD, "--prefix", first)
        else:
            self.install_from_copied_script(first)
        self.prefix = self.folder / "moved"
        first.rename(self.prefix)

    def install_from_copied_script(self, prefix):
        """The script notes what it has installed in the build folder, where this user may not write."""
        script = self.folder / "cmake_install.cmake"
        text = (BUILD / "cmake_install.cmake").read_text()
        script.write_text(text.replace(f'file(WRITE "{BUILD}/', f'file(WRITE "{self.folder}/'))
        self.run_tool("cmake", f"-DCMAKE_INSTALL_PREFIX={prefix}", "-P", script)

    def run_tool(self, *words):
        run = subprocess.run(words, env=self.environment, cwd=self.work, check=False, timeout=100,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertEqual(run.returncode, 0, run.stdout.decode(errors="replace"))
        return run.stdout.decode()

    def configure_and_build(self, *options):
        self.run_tool("cmake", "-S", self.work, "-B", self.work / "build", "-G", "Ninja",
                      f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_CXX_COMPILER={os.environ['KZFILE_CXX']}",
                      f"-DCMAKE_CXX_FLAGS={os.environ['KZFILE_CXX_FLAGS']} -Wall -Wextra -Werror", *options)
        self.run_tool("cmake", "--build", self.work / "build")

    def extract_program(self):
        text = DOCUMENT.read_text()
        for language, name in (("cmake", "CMakeLists.txt"), ("cpp", "backup.cpp")):
            found = re.findall(rf"```{language}\n(.*?)```", text, re.DOTALL)
            self.assertEqual(len(found), 1)
            self.file(name, found[0].encode())

    def test_the_program_of_the_document_builds_and_runs(self):
        self.extract_program()
        self.assertLessEqual(len((self.work / "backup.cpp").read_text().splitlines()), 20)
        self.configure_and_build()
        source = self.file("a", os.urandom(200000))
        printed = self.run_tool(self.work / "build" / "backup", source, self.work / "b", self.work / "c")
        self.assertEqual(printed, hashlib.sha256(source.read_bytes()).hexdigest() + "\n")
        self.assertEqual((self.work / "b").read_bytes(), source.read_bytes())
        self.assertEqual((self.work / "c").read_bytes(), source.read_bytes())

    def test_the_headers_need_no_other_ones_in_whatever_order(self):
        headers = self.prefix / "include" / "wickfield"
        names = sorted(path.relative_to(headers).as_posix() for path in headers.rglob("*.h"))
        self.assertIn("lib/KZFileManager.h", names)
        for name in names:
            for included in re.findall(r'#include "([^"]+)"', (headers / name).read_text()):
                self.assertIn(included, names, name)
        for order, source in ((names, "forward.cpp"), (names[::-1], "backward.cpp")):
            self.file(source, "".join(f'#include "{name}"\n' for name in order).encode())
            self.run_tool(os.environ["KZFILE_CXX"], "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
                          f"-I{headers}", source)

    def test_a_program_elsewhere_finds_the_archiver_where_cmake_says(self):
        self.file("archive.cpp", b"""#include "lib/KZFileManager.h"
#include "platform/linux/services/LinuxHost.h"
int main(int, char** arguments) {
    platform::setHost(platform::linux_host::services(TOOLS));
    return KZFileManager::compressFile(arguments[1], arguments[2]) ? 0 : 1;
}
""")
        self.file("CMakeLists.txt", b"""cmake_minimum_required(VERSION 3.25)
project(Archive LANGUAGES CXX)
find_package(Wickfield 1.0 REQUIRED)
add_executable(archive archive.cpp)
target_compile_definitions(archive PRIVATE TOOLS="${Wickfield_TOOLS_FOLDER}")
target_link_libraries(archive PRIVATE Wickfield::wickfield)
""")
        self.configure_and_build()
        self.run_tool(self.work / "build" / "archive", self.file("a"), self.work / "a.zip")
        self.assertEqual((self.work / "a.zip").read_bytes()[:2], b"PK")

    def test_a_program_can_ask_for_rights_without_a_window(self):
        self.file("rights.cpp", b"""#include <cstdio>

#include "lib/KZAuthorization.h"
#include "platform/linux/rights/AuthorizationService.h"
#include "platform/linux/services/LinuxHost.h"

struct Prompt : platform::rights::PasswordPrompt {
    void ask(platform::rights::PasswordRequest, Answered answered) override {
        std::puts("asked");
        answered(std::nullopt);
    }
    void close() override {}
};

int main(int, char** arguments) {
    platform::Host host = platform::linux_host::services();
    Prompt prompt;
    const auto service = platform::rights::makeAuthorization(*host.mainThread, &prompt);
    host.authorization = service.get();
    platform::setHost(host);
    std::puts(KZAuthorization::sharedController()->authExecTask("/usr/bin/touch", {arguments[1]}, Async::no) == 0
                  ? "done" : "refused");
    return 0;
}
""")
        self.file("CMakeLists.txt", b"""cmake_minimum_required(VERSION 3.25)
project(Rights LANGUAGES CXX)
find_package(Wickfield 1.0 REQUIRED)
add_executable(rights rights.cpp)
target_link_libraries(rights PRIVATE Wickfield::wickfield)
""")
        self.configure_and_build()
        self.environment["ASAN_OPTIONS"] = "detect_leaks=0"  # which would have to trace a process that refuses to be
        said = self.run_tool(self.work / "build" / "rights", self.work / "touched")
        self.assertNotIn("libQt", self.run_tool("ldd", self.work / "build" / "rights"))
        self.assertEqual((self.work / "touched").exists(), said.endswith("done\n"))
        if support.is_root():
            self.assertEqual(said, "done\n")

    def test_a_version_that_is_not_this_one_is_not_found(self):
        self.file("CMakeLists.txt", b"""cmake_minimum_required(VERSION 3.25)
project(Other LANGUAGES NONE)
find_package(Wickfield 2.0 QUIET)
if(Wickfield_FOUND)
    message(FATAL_ERROR "found")
endif()
""")
        self.run_tool("cmake", "-S", self.work, "-B", self.work / "build", "-G", "Ninja",
                      f"-DCMAKE_PREFIX_PATH={self.prefix}")

    def test_kzfile_runs_from_where_it_was_moved_to(self):
        kzfile = self.prefix / "bin" / "kzfile"
        self.file("folder/a")
        self.run_tool(kzfile, "compress", "folder", "folder.zip")
        self.run_tool(kzfile, "decompress", "folder.zip", "again")
        self.assertEqual(self.names_in(self.work / "again" / "folder"), ["a"])

    def test_kzfile_is_found_through_a_link_with_its_tools(self):
        (self.work / "link").symlink_to(self.prefix / "bin" / "kzfile")
        self.file("a")
        self.run_tool(self.work / "link", "compress", "a", "a.zip")
        self.assertTrue((self.work / "a.zip").exists())

    def test_no_program_of_it_needs_a_window(self):
        helpers = {*(self.prefix / "libexec" / "wickfield").iterdir()}
        of_the_window = self.prefix / "libexec" / "wickfield" / "wickfield-media"  # serves wickfield-bundle
        for program in [self.prefix / "bin" / "kzfile", *(helpers - {of_the_window})]:
            self.assertNotIn("libQt", self.run_tool("ldd", program))

    def test_the_manual_is_where_man_looks(self):
        self.assertEqual((self.prefix / "share/man/man1/kzfile.1").read_bytes(),
                         (ROOT / "tools/kzfile/kzfile.1").read_bytes())
