"""One session: asked for once, used a thousand times, gone with its owner."""
import errno
import os
import signal
import time

from support import Process, RightsCase, exists, helpers, processes, wait_until

SUDO = "sudo=/usr/bin/sudo"


class Session(RightsCase):
    def open_session(self, **options):
        account = self.account(administrator=True)
        driver = self.driver(account, SUDO, **options)
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.start(), "yes", driver.questions())
        return driver

    def test_a_thousand_requests_need_one_answer(self):
        driver = self.open_session()
        self.assertEqual(driver.ask("many", "1000", "/bin/true", timeout=60), "1000")
        self.assertEqual(len(driver.questions()), 1)

    def test_a_hundred_requests_at_once_are_all_served(self):
        driver = self.open_session()
        self.assertEqual(driver.ask("parallel", "100", "/bin/true", timeout=60), "100")

    def test_requests_leave_no_descriptor_behind(self):
        driver = self.open_session()
        driver.ask("many", "10", "/bin/true")
        before = driver.ask("descriptors")
        driver.ask("many", "500", "/bin/echo", "text", timeout=60)
        self.assertEqual(driver.ask("descriptors"), before)

    def test_a_file_that_the_user_may_not_write_is_put_into_place(self):
        folder = self.private_folder()
        driver = self.open_session()
        self.assertEqual(driver.ask("file-copy", "/etc/hostname", f"{folder}/copied"), "yes")
        self.assertTrue((folder / "copied").exists())

    def test_a_cancel_refuses_every_command_and_each_asks_again(self):
        folder = self.private_folder()
        old = folder / "old"
        old.write_text("old\n")
        driver = self.driver(self.account(administrator=True), SUDO)
        refused = {("run", "/bin/true"): "-1", ("wait", "/bin/true"): "-1"}
        for command in (("remove", f"{old}"), ("trash", f"{old}"), ("move", f"{old}", f"{folder}/new"),
                        ("copy", f"{old}", f"{folder}/new"), ("mkdir", f"{folder}/new"), ("file-trash", f"{old}"),
                        ("file-copy", f"{old}", f"{folder}/new"), ("file-mkdir", f"{folder}/new"),
                        ("file-touch", f"{old}")):
            refused[command] = "no"
        for number, (command, answer) in enumerate(refused.items(), start=1):
            driver.ask("cancel")
            self.assertEqual(driver.ask(*command), answer, command)
            self.assertEqual(len(driver.questions()), number, command)
        self.assertEqual(os.listdir(folder), ["old"])
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.ask("run", "/bin/true"), "0")

    def test_folders_of_the_system_are_refused_before_anything_is_asked(self):
        driver = self.driver(self.account(administrator=True), SUDO)
        for folder in ("/usr", "/var", "/bin", "/sbin"):
            for command in (("remove", folder), ("trash", folder), ("move", folder, "/opt/moved")):
                self.assertEqual(driver.ask(*command), "no", command)
        self.assertEqual(driver.questions(), [])

    def test_nothing_is_asked_before_something_is_refused(self):
        account = self.account(administrator=True)
        driver = self.driver(account, SUDO)
        self.assertEqual(driver.ask("file-copy", "/etc/hostname", f"{account.home}/copied"), "yes")
        self.assertEqual(driver.questions(), [])

    def test_a_refusal_is_what_asks(self):
        folder = self.private_folder()
        account = self.account(administrator=True)
        driver = self.driver(account, SUDO)
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.ask("file-mkdir", f"{folder}/a/b"), "yes")
        self.assertEqual(len(driver.questions()), 1)
        self.assertTrue((folder / "a/b").is_dir())

    def test_touching_a_file_of_root_s_waits_for_the_touch(self):
        folder = self.private_folder()
        (folder / "file").touch()
        os.utime(folder / "file", (0, 0))
        driver = self.open_session()
        self.assertEqual(driver.ask("file-touch", f"{folder}/file"), "yes")
        self.assertGreater((folder / "file").stat().st_mtime, time.time() - 60)

    def test_trashing_an_item_of_root_s_moves_it_to_the_user_s_trash(self):
        folder = self.private_folder()
        (folder / "Old Plug-in.vst3").mkdir()
        account = self.account(administrator=True)
        driver = self.driver(account, SUDO)
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.ask("file-trash", f"{folder}/Old Plug-in.vst3"), "yes")
        self.assertFalse((folder / "Old Plug-in.vst3").exists())
        self.assertTrue((account.home / ".Trash/Old Plug-in.vst3").is_dir())

    def test_a_tool_that_prints_a_lot_is_not_held_up(self):
        folder = self.private_folder()
        driver = self.open_session()
        for way in ("wait", "run"):
            done = folder / way
            self.assertEqual(driver.ask(way, "/bin/bash", "-c", f"head -c 5000000 /dev/zero && touch {done}"), "0")
            self.assertTrue(done.exists() if way == "wait" else wait_until(done.exists))

    def test_ending_the_session_ends_the_helper(self):
        driver = self.open_session()
        helper, = helpers(driver.pid)
        driver.ask("end")
        self.assertTrue(wait_until(lambda: not exists(helper), 1))

    def test_a_killed_installer_takes_the_helper_with_it(self):
        driver = self.open_session()
        helper, = helpers(driver.pid)
        os.kill(driver.pid, signal.SIGKILL)
        self.assertTrue(wait_until(lambda: not exists(helper), 1))

    def test_a_helper_that_is_killed_before_it_answers_fails_this_request_and_the_later_ones(self):
        driver = self.open_session()
        helper, = helpers(driver.pid)
        sudo = Process(helper).parent
        os.kill(helper, signal.SIGSTOP)
        driver.tell("run", "/bin/true")
        time.sleep(0.3)
        os.kill(helper, signal.SIGKILL)
        os.kill(sudo, signal.SIGCONT)  # it stopped itself as well
        self.assertEqual(driver.answer(), str(errno.EPIPE))
        self.assertEqual(driver.ask("run", "/bin/true"), str(errno.EPIPE))
        self.assertEqual(len(driver.questions()), 1)

    def test_a_tool_that_is_waited_for_outlives_a_killed_helper(self):
        folder = self.private_folder()
        driver = self.open_session()
        helper, = helpers(driver.pid)
        driver.tell("wait", "/bin/bash", "-c", f"sleep 1; touch {folder}/done")
        self.assertTrue(wait_until(lambda: [process for process in processes() if process.parent == helper]))
        os.kill(helper, signal.SIGKILL)
        self.assertEqual(driver.answer(), "0")
        self.assertTrue((folder / "done").exists())

    def test_after_a_killed_helper_a_new_session_can_be_asked_for(self):
        driver = self.open_session()
        helper, = helpers(driver.pid)
        os.kill(helper, signal.SIGKILL)
        driver.ask("end")
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.start(), "yes")
        self.assertEqual(driver.ask("run", "/bin/true"), "0")

    def test_the_installer_cannot_be_looked_into_by_the_same_user(self):
        driver = self.open_session()
        self.assertEqual(os.stat(f"/proc/{driver.pid}/mem").st_uid, 0)

    def test_a_crash_in_a_session_leaves_no_core_file(self):
        folder = self.private_folder()
        folder.chmod(0o777)
        options = {"wrapper": ("env", "-C", str(folder)), "environment": ("prlimit", "--core=unlimited")}
        without_session = self.driver(self.account(), SUDO, **options)
        without_session.ask("authorized")
        if not self.dumps_core(without_session):
            self.skipTest("crashes leave no core files on this machine")
        self.assertFalse(self.dumps_core(self.open_session(**options)))

    def dumps_core(self, driver):
        os.kill(driver.pid, signal.SIGSEGV)
        driver.process.wait(30)
        self.assertIn("Segmentation fault", driver.standard_error())
        return "core dumped" in driver.standard_error()
