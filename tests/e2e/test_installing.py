"""The sample, installed from its window as a user does it."""
import ctypes
import os
import stat
import unicodedata

from case import WindowCase

SUPPORT = "Library/Application Support/Orrin Audio/Larkspur Reverb"
VST3 = "Library/Audio/Plug-Ins/VST3/Larkspur Reverb.vst3"


def files_below(folder):
    """Every path below a folder that is no folder, relative to it, with its content or where its link leads."""
    found = {}
    for path in folder.rglob("*"):
        if path.is_symlink():
            found[str(path.relative_to(folder))] = "-> " + os.readlink(path)
        elif path.is_file():
            found[str(path.relative_to(folder))] = path.read_bytes()
    return found


def skipped_by_rule(path):
    return os.path.basename(path) == ".DS_Store"


class Installing(WindowCase):
    def test_every_file_of_the_tree_is_in_place_with_its_content(self):
        bundle = self.sample()
        wanted = {path: content for path, content in files_below(bundle.tree / "Users/user").items()
                  if not skipped_by_rule(path)}
        self.install_sample(bundle)
        installed = files_below(self.home.path)
        self.assertGreater(len(wanted), 200)
        self.assertEqual({path: installed.get(path) for path in wanted}, wanted)

    def test_clutter_of_file_browsers_is_not_installed(self):
        self.install_sample(self.sample())
        self.assertEqual([path for path in files_below(self.home.path) if skipped_by_rule(path)], [])

    def test_a_file_in_a_folder_with_a_hidden_name_is_installed(self):
        self.install_sample(self.sample())
        self.assertTrue((self.home.path / ".larkspur/scan-cache.txt").is_file())

    def test_names_arrive_byte_for_byte(self):
        self.install_sample(self.sample())
        names = os.listdir(os.fsencode(self.home.path / SUPPORT / "Presets" / "Halls"))
        decomposed = unicodedata.normalize("NFD", "Café decomposed.larkspur").encode()
        self.assertIn(decomposed, names)
        self.assertIn("Café Ænigma.larkspur".encode(), names)
        self.assertEqual(max(len(name) for name in names), 255)

    def test_links_in_a_package_stay_links(self):
        self.install_sample(self.sample())
        self.assertEqual(os.readlink(self.home.path / VST3 / "Contents/Resources/About.txt"), "Versions/Current/About.txt")
        self.assertEqual(os.readlink(self.home.path / VST3 / "Contents/Resources/Versions/Current"), "2.4.1")

    def test_an_executable_script_stays_executable(self):
        self.install_sample(self.sample())
        mode = (self.home.path / SUPPORT / "larkspur-presets").stat().st_mode
        self.assertEqual(stat.S_IMODE(mode), 0o755)

    def test_the_installed_library_loads_and_makes_an_echo_that_dies_away(self):
        self.install_sample(self.sample())
        library = next((self.home.path / VST3 / "Contents").glob("*-linux/*.so"))
        plugin = ctypes.CDLL(str(library))
        plugin.larkspur_reverb_create.restype = ctypes.c_void_p
        plugin.larkspur_reverb_create.argtypes = [ctypes.c_double]
        plugin.larkspur_reverb_process.argtypes = [ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_size_t]
        plugin.larkspur_reverb_destroy.argtypes = [ctypes.c_void_p]
        frames = 96000
        left, right = (ctypes.c_float * frames)(), (ctypes.c_float * frames)()
        left[0] = right[0] = 1.0
        reverb = plugin.larkspur_reverb_create(48000.0)
        plugin.larkspur_reverb_process(reverb, left, right, frames)
        plugin.larkspur_reverb_destroy(reverb)
        early = max(abs(x) for x in left[1000:20000])
        late = max(abs(x) for x in left[76000:95000])
        self.assertGreater(early, 0.001)
        self.assertLess(late, early / 2)

    def test_the_script_after_the_files_has_left_its_receipt(self):
        self.install_sample(self.sample())
        receipt = (self.home.path / "Library/Receipts/com.orrinaudio.larkspur-reverb.txt").read_text()
        self.assertIn(VST3, receipt)

    def test_the_install_button_stays_disabled_after_the_sheet_is_dismissed(self):
        installer = self.install_sample(self.sample())
        installer.session.display.wait_until_still()
        self.assertFalse(installer.reads("Installation complete"))
        self.assertFalse(installer.button("Install").enabled)

    def test_nothing_is_put_in_the_trash_on_a_fresh_home(self):
        self.install_sample(self.sample())
        self.assertEqual(self.home.trashed(), [])


class Reinstalling(WindowCase):
    def setUp(self):
        super().setUp()
        bundle = self.sample()
        self.quit(self.install_sample(bundle))
        preset = self.home.path / SUPPORT / "Presets/Halls/Amber.larkspur"
        preset.write_text("changed by its owner\n")
        self.own = self.home.path / SUPPORT / "Presets/Halls/My own.larkspur"
        self.own.write_text("mine\n")
        self.before = files_below(self.home.path)
        self.install_sample(bundle)

    def test_what_was_replaced_lies_in_the_trash(self):
        trash = self.home.path / ".local/share/Trash/files"
        self.assertEqual((trash / "Larkspur Reverb.vst3/Contents/Resources/About.txt").read_text(),
                         "Larkspur Reverb 2.4.1, Orrin Audio\n")
        kept = [path.read_text() for path in trash.glob("Amber*") if path.is_file()]
        self.assertIn("changed by its owner\n", kept)

    def test_the_installer_s_copy_takes_the_place_of_a_changed_file(self):
        preset = self.home.path / SUPPORT / "Presets/Halls/Amber.larkspur"
        self.assertTrue(preset.read_text().startswith("name = Amber\n"))

    def test_files_that_are_not_in_the_tree_are_left_alone(self):
        self.assertEqual(self.own.read_text(), "mine\n")

    def test_two_hundred_presets_of_which_many_share_a_name_are_all_in_the_trash(self):
        self.assertEqual(len([name for name in self.home.trashed() if ".larkspur" in name or "ö" in name or "long" in name]),
                         201)


class MovedBundle(WindowCase):
    def test_the_bundle_refers_to_no_other_place(self):
        program = self.built.executable.read_bytes()
        self.assertNotIn(str(self.built.path.parent).encode() + b":", program)
        self.assertEqual([path for path in self.built.path.rglob("*")
                          if path.is_symlink() and os.readlink(path).startswith("/")], [])

    def test_it_runs_from_a_folder_with_blanks_quotes_and_other_scripts(self):
        odd = self.folder / "Neuer Ordner \"zwei\" 静か $HOME"
        odd.mkdir()
        bundle = self.small()
        bundle.add("Users/user/Library/Preferences/x.plist")
        moved = bundle.copy(odd / "Mein Installer.app")
        self.install(moved)
        self.assertTrue((self.home.path / "Library/Preferences/x.plist").is_file())
