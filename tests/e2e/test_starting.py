"""What the installer is started with: displays, plug-ins and standard streams that are not there."""
import os
import subprocess

from case import WindowCase
from driver.waiting import wait_until


class Starting(WindowCase):
    def start(self, bundle, command=(), output=subprocess.DEVNULL, **environment):
        """Starts the program with an environment in which a variable may be None, which takes it away."""
        changed = {**self.session.environment(self.home), **environment}
        process = subprocess.Popen([*command, bundle.executable], cwd=self.folder, stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=subprocess.STDOUT, env={key: value for key, value in changed.items() if value is not None})
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def assert_says_that_there_is_no_window(self, **environment):
        process = self.start(self.small(), output=subprocess.PIPE, **environment)
        with process.stdout:
            said = process.stdout.read().decode()
        self.assertEqual(process.wait(), 1)
        self.assertIn("The installer cannot open its window.", said)

    def install_by_return(self, process):
        windows = wait_until("the window", lambda: [number for number, title in self.session.display.windows(process.pid).items()
                                                    if title == "Small Installer"], 20.0)
        self.session.display.focus(windows[0])
        self.session.display.wait_until_still()
        self.session.display.press("Return")

    def talkative(self):
        """Its script cannot be started here, which is also printed."""
        bundle = self.small()
        (bundle.resources / "preinstall.scpt").write_text("return")
        return bundle

    def test_no_display_is_said_and_no_crash(self):
        self.assert_says_that_there_is_no_window(DISPLAY=None, QT_QPA_PLATFORM=None)

    def test_a_display_that_does_not_answer_is_said_and_no_crash(self):
        self.assert_says_that_there_is_no_window(DISPLAY=":4711")

    def test_a_missing_platform_plug_in_is_said_and_no_crash(self):
        self.assert_says_that_there_is_no_window(QT_QPA_PLATFORM="none-of-this-name")

    def test_a_reader_of_its_output_that_is_gone_does_not_end_it(self):
        reading, writing = os.pipe()
        process = self.start(self.talkative(), output=writing)
        os.close(reading)
        os.close(writing)
        self.install_by_return(process)
        wait_until("the refusal", lambda: self.outcome_of(process), 60.0)
        self.assertIsNone(process.poll())

    def test_closed_standard_streams_are_not_taken_by_anything_else(self):
        process = self.start(self.talkative(), ["/bin/sh", "-c", 'exec "$0" <&- >&- 2>&-'])
        self.install_by_return(process)
        wait_until("the refusal", lambda: self.outcome_of(process), 60.0)
        self.assertEqual({os.readlink(f"/proc/{process.pid}/fd/{number}") for number in (0, 1, 2)}, {"/dev/null"})

    def outcome_of(self, process):
        return process.poll() is not None or any(node.name == "Installation failed"
                                                 for node in self.session.reader.nodes(process.pid))
