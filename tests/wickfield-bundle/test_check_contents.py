"""wickfield-bundle check of what files contain: settings, agreement, background, scripts, plug-ins, code."""
import json
import os
import pathlib
import plistlib
import struct
import subprocess
import zlib

import macho
import support

MEDIA = pathlib.Path(support.WICKFIELD_BUNDLE).parent / "../libexec/wickfield/wickfield-media"
USUAL = {"KZPluginName": "Small", "KZPluginVersion": "1.0", "KZPluginAuthor": "Nobody"}
VST3 = "Library/Audio/Plug-Ins/VST3/Echo.vst3/Contents"


def png(width, height):
    """In one colour."""
    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))
    rows = (b"\0" + bytes(width)) * height
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">2I5B", width, height, 8, 0, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


class ContentsCase(support.BundleCase):
    def setUp(self):
        super().setUp()
        self.installer = self.bundle()

    def resource(self, name, contents=b"contents\n", mode=None):
        return self.file(f"{self.installer.name}/{support.RESOURCES}/{name}", contents, mode)

    def tree(self, name, contents=b"contents\n", mode=None):
        return self.file(f"{self.installer.name}/{support.TREE}/{name}", contents, mode)

    def settings(self, **entries):
        self.resource("InstallerSettings.plist", plistlib.dumps({**USUAL, **entries}))

    def findings(self, *words):
        run = self.run_program("check", "--json", *words, self.installer.name)
        self.assertIn(run.returncode, (0, 1), run.stderr)
        return json.loads(run.stdout)["findings"]

    def about(self, *prefixes):
        """Rules and places of the findings whose rule begins so."""
        return [(finding["rule"], finding["place"]) for finding in self.findings()
                if finding["rule"].startswith(prefixes)]


class Agreements(ContentsCase):
    def agreement(self, name, contents):
        self.settings(KZEULAPath=name)
        self.resource(name, contents)
        return self.about("agreement", "resource", "not-checked")

    def test_texts_that_every_host_reads_are_fine(self):
        self.assertEqual(self.agreement("Licence.txt", b"Be good.\n"), [])
        self.assertEqual(self.agreement("Licence.rtf", b"{\\rtf1 Be good.}"), [])
        self.assertEqual(self.agreement("Licence.html", b"<p>Be good."), [])

    def test_a_page_without_any_visible_text_is_an_error(self):
        self.assertEqual(self.agreement("Licence.html", b"<script>be good</script><p style='display:none'>Be good."),
                         [("agreement-empty", "Contents/Resources/Licence.html")])

    def test_rich_text_without_any_text_is_an_error(self):
        self.assertEqual(self.agreement("Licence.rtf", b"{\\rtf1\\ansi {\\info be good}}"),
                         [("agreement-empty", "Contents/Resources/Licence.rtf")])

    def test_a_text_that_is_too_long_is_a_warning(self):
        self.assertEqual(self.agreement("Licence.txt", b"Be good.\n" * 100_000),
                         [("agreement-cut", "Contents/Resources/Licence.txt")])

    def test_a_folder_without_a_text_is_an_error(self):
        self.settings(KZEULAPath="Licence.rtfd")
        self.resource("Licence.rtfd/picture.png")
        self.assertEqual(self.about("agreement"), [("agreement-unreadable", "Contents/Resources/Licence.rtfd")])

    def test_a_pipe_is_not_waited_for(self):
        self.settings(KZEULAPath="Licence.txt")
        os.mkfifo(self.installer / support.RESOURCES / "Licence.txt")
        self.assertEqual(self.about("agreement"), [("agreement-unreadable", "Contents/Resources/Licence.txt")])


class Backgrounds(ContentsCase):
    def background(self, contents, name="Back.png"):
        self.settings(KZBgImagePath=name)
        self.resource(name, contents)
        return [rule for rule, _ in self.about("background", "resource", "not-checked")]

    def test_an_image_of_the_right_size_is_fine(self):
        self.assertEqual(self.background(png(960, 540)), [])

    def test_a_small_one_and_a_large_one_are_warnings(self):
        self.assertEqual(self.background(png(64, 64)), ["background-small"])
        self.assertEqual(self.background(png(5000, 20)), ["background-large"])

    def test_one_that_was_cut_off_is_an_error(self):
        self.assertEqual(self.background(png(960, 540)[:200]), ["background-unreadable"])

    def test_one_that_claims_to_be_enormous_ends_nothing(self):
        header = png(1, 1)
        huge = header[:16] + struct.pack(">2I", 60000, 60000) + header[24:]
        body = huge[12:29]
        huge = huge[:29] + struct.pack(">I", zlib.crc32(body)) + huge[33:]
        self.assertEqual(self.background(huge), ["background-unreadable"])


class Scripts(ContentsCase):
    def test_one_that_does_not_parse_fails_the_check(self):
        self.resource("preinstall.sh", b"#!/bin/bash\nif then\n")
        run = self.run_program("check", self.installer.name)
        self.assertEqual(run.returncode, 1)
        self.assertIn("script-syntax", run.stdout.decode())
        self.assertIn("line 2: syntax error", " ".join(run.stdout.decode().split()))

    def test_none_is_run(self):
        self.resource("preinstall.sh", f"#!/bin/bash\ntouch {self.folder}/ran\n$(touch {self.folder}/ran)\n".encode())
        self.environment["BASH_ENV"] = str(self.file("startup", f"touch {self.folder}/ran\n".encode()))
        self.assertEqual(self.about("script"), [])
        self.assertFalse((self.folder / "ran").exists())


class Code(ContentsCase):
    def plugin(self, code, mode=0o755):
        self.tree(f"{VST3}/Info.plist", plistlib.dumps(
            {"CFBundleIdentifier": "com.example.echo", "CFBundleVersion": "1", "CFBundlePackageType": "BNDL",
             "CFBundleExecutable": "Echo"}))
        self.tree(f"{VST3}/MacOS/Echo", code, mode)
        return [rule for rule, _ in self.about("code", "package")]

    def test_of_a_signed_plug_in_for_both_processors_is_fine(self):
        self.assertEqual(self.plugin(macho.both()), ["package-one-host"])

    def test_that_is_unsigned_is_an_error(self):
        self.assertEqual(self.plugin(macho.both(macho.NOBODY)), ["code-unsigned-arm64", "package-one-host"])

    def test_for_one_processor_signed_by_nobody_is_warned_of_twice(self):
        self.assertEqual(self.plugin(macho.slice_for(macho.ARM64, macho.AD_HOC)),
                         ["code-ad-hoc", "code-architecture", "package-one-host"])

    def test_that_was_cut_off_is_an_error(self):
        self.assertEqual(self.plugin(macho.both()[:5000]), ["code-damaged", "package-one-host"])

    def test_without_the_right_to_be_executed_is_warned_of(self):
        self.assertEqual(self.plugin(macho.both(), 0o644), ["code-mode", "package-one-host"])


class Settings(ContentsCase):
    def test_that_are_missing_are_an_error(self):
        (self.installer / support.RESOURCES / "InstallerSettings.plist").unlink()
        self.assertEqual(self.about("setting"), [("settings-missing", "Contents/Resources/InstallerSettings.plist")])

    def test_with_hostile_names_are_reported_without_acting_on_the_terminal(self):
        self.resource("InstallerSettings.plist",
                      b'<plist><dict><key>K&#x7F;Z</key><string>a</string></dict></plist>')
        run = self.run_program("check", self.installer.name)
        self.assertNotIn(b"\x7f", run.stdout)
        self.assertIn(b"setting-unknown", run.stdout)


class MediaHelper(support.BundleCase):
    """The program that wickfield-bundle starts, by itself."""

    def run_media(self, *words, **options):
        return subprocess.run([MEDIA, *words], cwd=self.work, env=self.environment, timeout=support.LONGEST,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False,
                              **options)

    def answer(self, *words):
        run = self.run_media(*words)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(run.stdout.count(b"\n"), 1)
        return json.loads(run.stdout)

    def test_it_says_what_an_agreement_has(self):
        self.file("a.html", b"<h1>Be good</h1><p>Always.")
        self.assertEqual(self.answer("agreement", "a.html"),
                         {"ok": True, "kind": "html", "characters": 13, "pictures": 0, "complete": True})

    def test_it_says_what_an_image_has(self):
        self.file("a.dat", png(3, 5))
        self.assertEqual(self.answer("image", "a.dat"), {"ok": True, "format": "png", "width": 3, "height": 5})

    def test_it_says_why_not(self):
        self.assertFalse(self.answer("agreement", "missing")["ok"])
        self.file("a.png", b"no image")
        found = self.answer("image", "a.png")
        self.assertFalse(found["ok"])
        self.assertTrue(found["reason"])

    def test_it_needs_no_display_and_no_home(self):
        self.environment.pop("HOME")
        self.environment["DISPLAY"] = ":99999"
        self.file("a.txt")
        self.assertTrue(self.answer("agreement", "a.txt")["ok"])

    def test_it_takes_no_options_of_qt_out_of_its_names(self):
        self.file("-platform")
        self.assertTrue(self.answer("agreement", "-platform")["ok"])

    def test_it_refuses_other_command_lines(self):
        for words in ((), ("agreement",), ("picture", "a"), ("image", "a", "b")):
            self.assertEqual(self.run_media(*words).returncode, 2)

    def test_hostile_texts_end_within_moments(self):
        self.file("deep.html", b"<table><tr><td>" * 100_000)
        self.file("deep.rtf", b"{\\rtf1" + b"{" * 1_000_000)
        self.file("noise.rtf", b"{\\rtf1 " + bytes(range(256)) * 1000)
        for name in ("deep.html", "deep.rtf", "noise.rtf"):
            self.assertEqual(self.run_media("agreement", name).returncode, 0)

