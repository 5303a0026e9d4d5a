"""kzfile wait, with files that come and are let go of while it waits."""
import os
import shutil
import signal
import subprocess
import threading
import time

import support


class Wait(support.KzfileCase):
    def test_a_file_that_is_there_is_not_waited_for(self):
        self.file("a")
        began = time.monotonic()
        self.assertEqual(self.output("wait", "a"), "")
        self.assertLess(time.monotonic() - began, 5)

    def test_it_ends_when_the_last_of_the_files_has_come(self):
        self.file("a")
        timer = threading.Timer(0.5, self.file, ["b"])
        timer.start()
        self.addCleanup(timer.join)
        began = time.monotonic()
        self.output("wait", "--timeout", "30", "a", "b")
        self.assertGreaterEqual(time.monotonic() - began, 0.4)
        self.assertTrue((self.work / "b").exists())

    def test_it_gives_up_when_the_time_is_over(self):
        began = time.monotonic()
        self.assert_fails(self.run_program("wait", "-t", "0.5", "a"), 1, "a: is still not there")
        self.assertGreaterEqual(time.monotonic() - began, 0.5)

    def test_a_time_out_of_nought_is_one_look(self):
        self.file("a")
        self.output("wait", "-t", "0", "a")
        self.assert_fails(self.run_program("wait", "-t", "0", "b"), 1, "b")

    def test_a_time_out_that_is_none_is_a_usage_error(self):
        self.file("a")
        for text in ("", "soon", "-1", "1s", "inf", "nan"):
            self.assert_fails(self.run_program("wait", f"--timeout={text}", "a"), 2, "time-out")

    def test_a_file_that_is_being_written_to_is_not_free(self):
        with open(self.file("a"), "ab"):
            self.output("wait", "-t", "5", "a")
            self.assert_fails(self.run_program("wait", "--free", "-t", "0.2", "a"), 1, "a: is still being written to")
        self.output("wait", "--free", "-t", "5", "a")

    def test_a_file_that_is_only_read_is_free(self):
        with open(self.file("a"), "rb"):
            self.output("wait", "--free", "-t", "5", "a")

    def test_it_ends_when_the_file_is_let_go_of(self):
        file = open(self.file("a"), "ab")
        timer = threading.Timer(0.7, file.close)
        timer.start()
        self.addCleanup(timer.join)
        self.output("wait", "--free", "--timeout", "30", "a")
        self.assertTrue(file.closed)

    def test_an_installation_without_the_tool_that_looks_says_so(self):
        self.file("a")
        alone = shutil.copy(support.KZFILE, self.folder / "kzfile")
        run = subprocess.run([alone, "wait", "--free", "a"], cwd=self.work, env=self.environment, check=False,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if os.path.exists("/usr/sbin/lsof"):
            self.skipTest("this machine has an lsof where the library looks")
        self.assert_fails(run, 1, "lsof")

    def test_ctrl_c_ends_the_wait(self):
        process = subprocess.Popen([support.KZFILE, "wait", "a"], cwd=self.work, env=self.environment)
        time.sleep(0.3)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(10), 130)
