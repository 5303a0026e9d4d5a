"""Stands in for the commands of a script that would take long or change the machine: stand_ins.py BUILD COMMAND WORD...

apt-get: asks whether there are such packages. cmake: a preset, its options and targets are looked up instead of built; an
installation is a real one, of the build folder that the tests are of.
"""
import json
import pathlib
import re
import subprocess
import sys

COMMANDS = ("apt-get", "cmake")
WITH_VALUE = ("--preset", "--target", "--component", "--prefix")


def make(folder, build, commands=COMMANDS):
    """Puts them into a folder for the beginning of a PATH."""
    folder.mkdir()
    for command in commands:
        script = folder / command
        script.write_text(f'#!/bin/sh\nexec /usr/bin/python3 -B "{pathlib.Path(__file__).resolve()}" "{build}" '
                          f'{command} "$@"\n')
        script.chmod(0o755)


def fail(reason):
    sys.exit(f"stand-in: {reason}")


def is_package(name):
    """One that is installed, or that could be."""
    for question in (["dpkg-query", "-W", name], ["apt-cache", "show", name]):
        answer = subprocess.run(question, check=False, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        if answer.returncode == 0 and answer.stdout.strip():
            return True
    return False


def apt_get(words):
    names = [word for word in words if not word.startswith("-")]
    options = set(words) - set(names)
    if options - {"--yes", "--no-install-recommends"} or names[:1] not in (["update"], ["install"]):
        fail(f"apt-get {words}")
    for name in names[1:]:
        if not is_package(name):
            fail(f"there is no package {name}")


def values(words):
    """The options that have values, each with the words up to the next option; and what is left."""
    found, rest, current = {}, [], None
    for word in words:
        if word in WITH_VALUE:
            current = found.setdefault(word, [])
        elif word.startswith("-") or current is None:
            rest.append(word)
            current = None if word.startswith("-") else current
        else:
            current.append(word)
    return found, rest


def preset(kind, name):
    for each in json.loads(pathlib.Path("CMakePresets.json").read_text())[kind]:
        if each["name"] == name:
            return
    fail(f"no {kind}: {name}")


def cmake(build, words):
    options, rest = values(words)
    if rest[:1] == ["--install"]:
        if rest[1:] == ["build/release", "--strip"] and options.keys() == {"--component", "--prefix"}:
            return install(build, options)
        fail(f"cmake {words}")
    if rest[:1] == ["--build"]:
        preset("buildPresets", *options["--preset"])
        targets = (build / "build.ninja").read_text()
        for target in options["--target"]:
            if not re.search(rf"^build {re.escape(target)}: ", targets, re.MULTILINE):
                fail(f"no target {target}")
        return None
    preset("configurePresets", *options["--preset"])
    known = pathlib.Path("CMakeLists.txt").read_text()
    for word in rest:
        name = re.fullmatch(r"-D([A-Z_]+)=(ON|OFF)", word)
        if name is None or f"option({name[1]} " not in known:
            fail(f"no option {word}")
    return None


def install(build, options):
    """What the script in the build folder does, but for its note there of what it has installed."""
    (prefix,), (component,) = options["--prefix"], options["--component"]
    text = (build / "cmake_install.cmake").read_text()
    script = pathlib.Path(prefix) / "install.cmake"
    script.parent.mkdir(parents=True, exist_ok=True)
    script.write_text(text.replace(f'file(WRITE "{build}/', f'file(WRITE "{prefix}/'))
    subprocess.run(["/usr/bin/cmake", f"-DCMAKE_INSTALL_PREFIX={prefix}", f"-DCMAKE_INSTALL_COMPONENT={component}", "-P",
                    script], check=True, stdout=subprocess.DEVNULL)
    for left in (script, *pathlib.Path(prefix).glob("install_manifest*.txt")):
        left.unlink()


if __name__ == "__main__":
    if sys.argv[2] == "apt-get":
        apt_get(sys.argv[3:])
    else:
        cmake(pathlib.Path(sys.argv[1]), sys.argv[3:])
