"""The window on screens and in colours other than the usual."""
from case import WindowCase


def brightness(pixels, area):
    """The mean brightness, 0 to 255, of an area of the screen."""
    _, _, rows = pixels
    left, top, width, height = area
    picked = [rows[y][x * 3 + channel] for y in range(top, top + height, 4) for x in range(left, left + width, 4)
              for channel in range(3)]
    return sum(picked) / len(picked)


class SmallScreen(WindowCase):
    screen = (480, 320)

    def test_install_can_be_reached_and_the_outcome_dismissed(self):
        bundle = self.small()
        bundle.add("Users/user/Music/tone.txt")
        installer = self.install(bundle)
        installer.press("Return")
        installer.session.display.wait_until_still()
        self.assertFalse(installer.reads("Installation complete"))
        self.assertTrue((self.home.path / "Music/tone.txt").exists())

    def test_the_agreement_s_buttons_can_be_reached(self):
        installer = self.launch(self.sample())
        installer.wait_for_window("Larkspur Reverb Installer")
        installer.press_button("Agree")
        installer.session.display.wait_until_still()
        self.assertIsNone(installer.button("Agree"))


class Dark(WindowCase):
    def shown_brightness(self, name, appearance):
        bundle = self.built.copy(self.folder / f"{name} Installer.app", with_tree=False)
        bundle.change_settings(KZPluginName=name, KZEULAPath=None, KZBgImagePath=None)
        installer = self.launch(bundle, WICKFIELD_APPEARANCE=appearance)
        window = installer.wait_for_window(f"{name} Installer")
        self.session.display.wait_until_still()
        value = brightness(self.session.display.pixels(), self.session.display.geometry(window))
        self.quit(installer)
        return value

    def test_dark_is_dark_and_light_is_light(self):
        self.assertGreater(self.shown_brightness("Light", "light"), 140)
        self.assertLess(self.shown_brightness("Dark", "dark"), 90)
