"""Rights through sudo and su, as they are on this machine."""
import glob
import os
import pathlib
import secrets
import signal
import subprocess

from support import RightsCase, exists, helpers, processes, wait_until

SUDO = "sudo=/usr/bin/sudo"
NO_SUDO = "sudo=/nowhere/sudo"
NO_SU = "su=/nowhere/su"
WRONG = "not the password"
PROBLEM, ADMINISTRATORS, USER, OTHERS, QUESTION, DETAILS = range(6)


class SudoCase(RightsCase):
    def setUp(self):
        super().setUp()
        if not os.path.exists("/usr/bin/sudo"):
            self.skipTest("sudo is not installed")

    def administrator(self, **options):
        return self.account(administrator=True, **options)

    def asked(self, account, *answers, way=(SUDO,)):
        """A driver with its answers ready: a password, or (user, password), or None to cancel."""
        driver = self.driver(account, *way)
        for answer in answers:
            if answer is None:
                driver.ask("cancel")
            else:
                user, password = answer if isinstance(answer, tuple) else ("", answer)
                driver.ask("answer", user, password)
        return driver

    def problems(self, driver):
        return [question[PROBLEM] for question in driver.questions()]

    def sudo_rules(self, *lines):
        """Rules that hold until the end of the test, put into place only when sudo can read them."""
        path = pathlib.Path("/etc/sudoers.d") / f"wickfield-{secrets.token_hex(4)}"
        draft = path.with_suffix(".draft")  # sudo reads no file with a point in its name
        draft.write_text("\n".join(lines) + "\n")
        draft.chmod(0o440)
        self.addCleanup(path.unlink, missing_ok=True)
        self.addCleanup(draft.unlink, missing_ok=True)
        subprocess.run(["visudo", "-cqf", draft], check=True)
        draft.rename(path)

    def pam_service(self, *lines):
        path = pathlib.Path("/etc/pam.d") / f"wickfield-{secrets.token_hex(4)}"
        self.addCleanup(path.unlink, missing_ok=True)
        path.write_text("\n".join(lines) + "\n")
        return path.name


class OneAdministrator(SudoCase):
    def test_a_right_password_opens_the_session(self):
        driver = self.asked(self.administrator(), self.password)
        self.assertEqual(driver.start(), "yes", driver.questions())
        self.assertEqual(self.problems(driver), ["none"])
        self.assertEqual(driver.ask("open"), "no")
        self.assertEqual(driver.ask("wait", "/bin/true"), "0")

    def test_the_tools_run_as_root(self):
        folder = self.private_folder()
        driver = self.asked(self.administrator(), self.password)
        driver.ask("wait", "/bin/bash", "-c", f"id -u > {folder}/who")
        self.assertEqual((folder / "who").read_text(), "0\n")

    def test_a_wrong_password_is_asked_for_again(self):
        account = self.administrator()
        driver = self.asked(account, WRONG, self.password)
        self.assertEqual(driver.start(), "yes", driver.questions())
        self.assertEqual(self.problems(driver), ["none", "wrongPassword"])
        self.assertEqual(driver.questions()[1][USER], account.name)
        self.assertEqual(driver.questions()[1][DETAILS], "")

    def test_the_third_wrong_password_is_the_last(self):
        driver = self.asked(self.administrator(), WRONG, WRONG, WRONG, None)
        self.assertEqual(driver.start(), "no")
        self.assertEqual(self.problems(driver), ["none", "wrongPassword", "wrongPassword", "lockedOut"])
        self.assertEqual(driver.questions()[3][DETAILS], "3 incorrect password attempts")
        self.assertEqual(driver.ask("open"), "no")

    def test_a_cancel_refuses_and_the_next_command_asks_again(self):
        driver = self.asked(self.administrator(), None, self.password)
        self.assertEqual(driver.ask("run", "/bin/true"), "-1")
        self.assertEqual(driver.ask("run", "/bin/true"), "0")
        self.assertEqual(self.problems(driver), ["none", "none"])

    def test_a_cancel_while_the_password_is_checked_leaves_nothing_running(self):
        account = self.administrator()
        driver = self.driver(account, SUDO)
        driver.ask("answer", account.name, WRONG, "200")
        started, taken = driver.ask("start").split("\t")
        self.assertEqual(started, "no")
        self.assertLess(int(taken), 1000)
        pid = driver.pid
        self.assertTrue(wait_until(lambda: not [p for p in processes() if p.parent == pid]))

    def test_the_question_is_up_at_once(self):
        driver = self.asked(self.administrator(), None)
        self.assertLess(int(driver.ask("start").split("\t")[1]), 1000)

    def test_a_shell_that_lets_nobody_in_does_not_matter(self):
        driver = self.asked(self.administrator(shell="/bin/false"), self.password)
        self.assertEqual(driver.start(), "yes", driver.questions())

    def test_any_password_is_handed_over_as_it_is(self):
        for password in (" two  blanks ", "'\"$(id)`\\%s", "grüße 密码", "x" * 200):
            driver = self.asked(self.administrator(password=password), password)
            self.assertEqual(driver.start(), "yes", password)

    def test_a_session_that_was_ended_is_asked_for_anew(self):
        driver = self.asked(self.administrator(), self.password, self.password)
        self.assertEqual(driver.start(), "yes", driver.questions())
        driver.ask("end")
        self.assertEqual(driver.start(), "yes")
        self.assertEqual(self.problems(driver), ["none", "none"])

    def test_the_expired_password_is_changed_on_the_way(self):
        account = self.administrator()
        subprocess.run(["chage", "-d", "0", account.name], check=True)
        fresh = "battery staple 7"
        driver = self.asked(account, self.password, self.password, fresh, fresh)
        self.assertEqual(driver.start(), "yes", driver.questions())
        self.assertEqual([question[QUESTION] for question in driver.questions()],
                         ["", "Current password:", "New password:", "Retype new password:"])


class AnotherAdministrator(SudoCase):
    def test_may_be_named_at_once(self):
        other = self.administrator(password="theirs")
        driver = self.asked(self.account(), (other.name, "theirs"))
        self.assertEqual(driver.start(), "yes", driver.questions())
        self.assertEqual(len(driver.questions()), 1)
        self.assertEqual(driver.ask("wait", "/bin/true"), "0")

    def test_is_offered_to_who_is_none(self):
        other = self.administrator()
        user = self.account()
        driver = self.asked(user, None)
        driver.start()
        offered = driver.questions()[0][ADMINISTRATORS].split(",")
        self.assertIn(other.name, offered)
        self.assertEqual(offered[-1], user.name)
        self.assertEqual(driver.questions()[0][OTHERS], "any")

    def test_may_be_named_by_who_turns_out_to_be_none(self):
        user = self.account(password="mine")
        other = self.administrator(password="theirs")
        driver = self.asked(user, (user.name, "mine"), (other.name, "theirs"))
        self.assertEqual(driver.start(), "yes", driver.questions())
        self.assertEqual(self.problems(driver), ["none", "notAdministrator"])
        self.assertIn(other.name, driver.questions()[1][ADMINISTRATORS])
        self.assertNotIn(user.name, driver.questions()[1][ADMINISTRATORS])

    def test_has_to_give_the_right_password(self):
        other = self.administrator(password="theirs")
        driver = self.asked(self.account(), (other.name, WRONG), (other.name, "theirs"))
        self.assertEqual(driver.start(), "yes", driver.questions())
        self.assertEqual(self.problems(driver), ["none", "wrongPassword"])

    def test_may_turn_out_to_be_none_either(self):
        other = self.account(password="theirs")
        driver = self.asked(self.account(), (other.name, "theirs"), None)
        self.assertEqual(driver.start(), "no")
        self.assertEqual(self.problems(driver), ["none", "notAdministrator"])

    def test_who_does_not_exist_is_refused(self):
        driver = self.asked(self.account(), ("no-such-account", "x"), ("-s", "x"), None)
        self.assertEqual(driver.start(), "no")
        self.assertEqual(self.problems(driver), ["none", "wrongPassword", "wrongPassword"])

    def test_root_without_a_password_is_refused(self):
        shadow = pathlib.Path("/etc/shadow").read_text()
        if not shadow.startswith(("root:*:", "root:!")):
            self.skipTest("root has a password on this machine")
        driver = self.asked(self.account(), ("root", "x"), None)
        self.assertEqual(driver.start(), "no")
        self.assertEqual(self.problems(driver), ["none", "wrongPassword"])


class KnownCredentials(SudoCase):
    def start_with(self, account, user, password):
        driver = self.driver(account, SUDO)
        started = driver.ask("startwith", user, password)
        self.assertEqual(driver.questions(), [])
        return started

    def test_of_the_user_are_enough(self):
        account = self.administrator()
        self.assertEqual(self.start_with(account, account.name, self.password), "yes")

    def test_that_are_wrong_are_refused(self):
        account = self.administrator()
        self.assertEqual(self.start_with(account, account.name, WRONG), "no")

    def test_of_another_administrator_are_enough(self):
        other = self.administrator(password="theirs")
        self.assertEqual(self.start_with(self.account(), other.name, "theirs"), "yes")

    def test_of_another_administrator_that_are_wrong_are_refused(self):
        other = self.administrator()
        self.assertEqual(self.start_with(self.account(), other.name, WRONG), "no")

    def test_of_somebody_without_rights_are_refused(self):
        account = self.account()
        self.assertEqual(self.start_with(account, account.name, self.password), "no")

    def test_are_checked_although_rights_were_granted_a_moment_ago(self):
        account = self.administrator()
        self.sudo_rules(f"Defaults:{account.name} timestamp_type=global")
        driver = self.asked(account, self.password)
        self.assertEqual(driver.start(), "yes")
        driver.ask("end")
        self.assertEqual(driver.ask("startwith", account.name, WRONG), "no")


class MachinesOfOtherKinds(SudoCase):
    def test_without_sudo_and_su_nothing_is_asked(self):
        driver = self.driver(self.administrator(), NO_SUDO, NO_SU)
        self.assertEqual(driver.ask("run", "/bin/true"), "-1")
        self.assertEqual(driver.questions(), [])

    def test_without_sudo_root_is_asked_for(self):
        driver = self.asked(self.administrator(), None, way=(NO_SUDO,))
        self.assertEqual(driver.start(), "no")
        self.assertEqual(driver.questions()[0][ADMINISTRATORS], "root")

    def test_without_new_privileges_nothing_is_asked(self):
        driver = self.driver(self.administrator(), SUDO, wrapper=("setpriv", "--no-new-privs"))
        self.assertEqual(driver.start(), "no")
        self.assertEqual(driver.questions(), [])

    def test_a_user_who_needs_no_password_is_not_asked(self):
        account = self.account()
        self.sudo_rules(f"{account.name} ALL=(ALL) NOPASSWD: ALL")
        driver = self.driver(account, SUDO, "noprompt")
        self.assertEqual(driver.start(), "yes")

    def test_without_a_prompt_what_needs_a_password_is_refused(self):
        driver = self.driver(self.administrator(), SUDO, "noprompt")
        self.assertEqual(driver.start(), "no")

    def test_a_lecture_is_no_detail_of_the_question(self):
        account = self.administrator()
        self.sudo_rules(f"Defaults:{account.name} lecture=always")
        driver = self.asked(account, self.password)
        self.assertEqual(driver.start(), "yes")
        self.assertEqual(driver.questions()[0][DETAILS], "")

    def test_insults_are_not_passed_on(self):
        account = self.administrator()
        self.sudo_rules(f"Defaults:{account.name} insults, passwd_tries=2")
        driver = self.asked(account, WRONG, WRONG, None)
        self.assertEqual(driver.start(), "no")
        self.assertEqual([question[DETAILS] for question in driver.questions()],
                         ["", "", "2 incorrect password attempts"])

    def test_what_sudo_remembers_is_not_asked_for_again(self):
        account = self.administrator()
        self.sudo_rules(f"Defaults:{account.name} timestamp_type=global")
        driver = self.asked(account, self.password)
        self.assertEqual(driver.start(), "yes", driver.questions())
        driver.ask("end")
        self.assertEqual(driver.start(), "yes")
        self.assertEqual(len(driver.questions()), 1)

    def test_sudo_that_wants_a_terminal_is_no_way(self):
        account = self.administrator()
        self.sudo_rules(f"Defaults:{account.name} requiretty")
        driver = self.driver(account, SUDO, NO_SU)
        self.assertEqual(driver.start(), "no")
        self.assertEqual(driver.questions(), [])

    def test_sudo_that_records_what_is_typed_is_no_way(self):
        account = self.administrator()
        folder = self.private_folder()
        self.sudo_rules(f"Defaults:{account.name} log_input, iolog_dir={folder}")
        driver = self.asked(account, self.password)
        self.assertEqual(driver.start(), "no")
        self.assertEqual(self.problems(driver), ["none"])

    def test_sudo_may_want_the_password_of_root(self):
        account = self.administrator()
        self.sudo_rules(f"Defaults:{account.name} rootpw")
        driver = self.asked(account, None)
        self.assertEqual(driver.start(), "no")
        self.assertEqual(driver.questions()[0][ADMINISTRATORS], "root")

    def test_what_the_machine_says_about_a_password_is_passed_on(self):
        account = self.administrator()
        service = self.pam_service("auth required pam_unix.so",
                                   "auth [default=ignore] pam_exec.so stdout /bin/echo Few attempts are left.",
                                   "account required pam_permit.so")
        self.sudo_rules(f"Defaults:{account.name} pam_service={service}")
        driver = self.asked(account, WRONG, None)
        self.assertEqual(driver.start(), "no")
        self.assertEqual(self.problems(driver), ["none", "wrongPassword"])
        self.assertEqual(driver.questions()[1][DETAILS], "Few attempts are left.")


class WhatRunsAndEnds(SudoCase):
    def open_session(self, account, *answers):
        driver = self.asked(account, *answers)
        self.assertEqual(driver.start(), "yes", driver.questions())
        pids = helpers(driver.pid)
        self.assertEqual(len(pids), 1)
        return driver, pids[0]

    def test_a_helper_that_is_killed_takes_its_session_with_it(self):
        account = self.administrator()
        driver, helper = self.open_session(account, self.password)
        driver.ask("answer", "", self.password)
        driver.tell("wait", "/bin/sleep", "1")
        wait_until(lambda: [p for p in processes() if p.parent == helper])
        os.kill(helper, signal.SIGKILL)
        driver.answer()
        self.assertEqual(driver.ask("run", "/bin/true"), "32")
        self.assertEqual(driver.ask("run", "/bin/true"), "32")
        driver.ask("end")
        self.assertEqual(driver.ask("run", "/bin/true"), "0")

    def test_nothing_outlives_an_installer_that_is_killed(self):
        driver, helper = self.open_session(self.administrator(), self.password)
        os.kill(driver.pid, signal.SIGKILL)
        self.assertTrue(wait_until(lambda: not exists(helper), seconds=1))

    def test_nothing_outlives_an_installer_that_is_killed_while_it_asks(self):
        driver = self.driver(self.administrator(), SUDO)
        driver.ask("authorized")
        pid = driver.pid
        driver.tell("start")
        children = lambda: [p.pid for p in processes() if p.parent == pid]
        self.assertTrue(wait_until(children))
        asking = children()
        os.kill(pid, signal.SIGKILL)
        self.assertTrue(wait_until(lambda: not any(exists(child) for child in asking), seconds=1))

    def assert_held_by_keeper(self, driver):
        """The path in sudo's arguments is the keeper's, whose number stays taken while sudo is in its session."""
        everything = {process.pid: process for process in processes()}
        sudos = [p for p in everything.values() if p.executable == "/usr/bin/sudo" and "/proc/" in p.arguments()[-1]]
        keepers = {p.pid for p in everything.values() if p.parent == driver.pid}
        mine = [p for p in sudos if int(p.arguments()[-1].split("/")[2]) in keepers]
        first = [p for p in mine if everything[p.parent].executable != "/usr/bin/sudo"]
        self.assertEqual(len(first), 1)
        self.assertEqual(f"/proc/{os.getsid(first[0].pid)}/exe", first[0].arguments()[-1])

    def test_the_helper_s_path_is_nobody_else_s_while_sudo_runs(self):
        driver, _ = self.open_session(self.administrator(), self.password)
        self.assert_held_by_keeper(driver)

    def test_the_helper_s_path_is_nobody_else_s_while_su_runs_sudo(self):
        other = self.administrator(password="theirs")
        driver, _ = self.open_session(self.account(), (other.name, "theirs"))
        self.assert_held_by_keeper(driver)

    def test_a_killed_installer_leaves_nothing_for_sudo_to_start(self):
        account = self.administrator()
        service = self.pam_service("auth required pam_unix.so", "auth optional pam_exec.so /bin/sleep 1.5",
                                   "account required pam_permit.so")
        self.sudo_rules(f"Defaults:{account.name} pam_service={service}")
        driver = self.asked(account, self.password)
        driver.tell("start")
        checking = lambda: [p for p in processes() if p.executable.endswith("/sleep") and p.arguments()[-1] == "1.5"]
        self.assertTrue(wait_until(checking))
        parent = driver.pid
        keeper, = [p.pid for p in processes() if p.parent == parent]
        sudo, = [p.pid for p in processes() if p.parent == keeper]
        os.kill(parent, signal.SIGKILL)
        os.kill(keeper, signal.SIGKILL)
        self.assertTrue(wait_until(lambda: not os.path.exists(f"/proc/{keeper}")))
        taken = set()
        while exists(sudo) and keeper not in taken:
            pathlib.Path("/proc/sys/kernel/ns_last_pid").write_text(str(keeper - 1))
            taken.add(subprocess.Popen(["/bin/true"]).pid)
        self.assertNotIn(keeper, taken)

    def test_the_password_is_nowhere_to_be_seen(self):
        password = "seen-" + secrets.token_hex(8)
        driver, _ = self.open_session(self.administrator(password=password), password)
        places = [path for kind in ("cmdline", "environ") for path in glob.glob(f"/proc/[0-9]*/{kind}")]
        places += [path for path in glob.glob("/var/log/**", recursive=True) if os.path.isfile(path)]
        for path in places:
            try:
                content = pathlib.Path(path).read_bytes()
            except OSError:
                continue  # a process that is gone
            self.assertNotIn(password.encode(), content, path)
        self.assertNotIn(password, driver.standard_error())

    def test_another_administrator_s_session_ends_as_well(self):
        other = self.administrator(password="theirs")
        driver, helper = self.open_session(self.account(), (other.name, "theirs"))
        driver.ask("end")
        self.assertTrue(wait_until(lambda: not exists(helper)))
