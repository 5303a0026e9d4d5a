"""Rights through polkit, with the installer as the agent that asks: a bus and a polkit of each test's own."""
import os
import pathlib
import re
import shutil
import signal
import time

import bus
from support import RightsCase, exists, helpers, processes, wait_until

PKEXEC = "/usr/bin/pkexec"
PAM = "/usr/lib/pam.d/polkit-1"
NOBODY_ASKED = []
SAYS_YES = "polkit.addRule(function(action, subject) { return polkit.Result.YES; });"
SAYS_NO = "polkit.addRule(function(action, subject) { return polkit.Result.NO; });"


def children(parent, name):
    """The numbers of the child processes that run the program of that name."""
    return [process.pid for process in processes()
            if process.parent == parent and os.path.basename(process.executable) == name]


def beside(pid, name):
    """The numbers of the processes of that name that see the same processes as this one."""
    def world(number):
        return os.readlink(f"/proc/{number}/ns/pid")
    return [process.pid for process in processes()
            if os.path.basename(process.executable) == name and world(process.pid) == world(pid)]


def occurrences(pid, wanted):
    """How often the bytes stand in the memory that the process can write to."""
    found = 0
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps, open(f"/proc/{pid}/mem", "rb", buffering=0) as memory:
        for line in maps:
            begin, end = (int(number, 16) for number in line.split()[0].split("-"))
            if not line.split()[1].startswith("rw"):
                continue
            content = b""
            while begin + len(content) < end:
                try:
                    content += os.pread(memory.fileno(), end - begin - len(content), begin + len(content))
                except OSError:
                    break  # the kernel's own pages
            found += content.count(wanted)
    return found


class PolkitCase(RightsCase):
    def setUp(self):
        super().setUp()
        reason = bus.missing()
        if reason:
            self.skipTest(reason)

    def polkit(self, account, *options, arguments=(f"polkit={PKEXEC}",)):
        return self.driver(account, *arguments, wrapper=bus.wrapper(*options))

    def problems(self, driver):
        return [question[0] for question in driver.questions()]

    def assert_root(self, driver):
        """What runs with the rights that the driver has is root's."""
        made = self.private_folder() / "made"
        self.assertEqual(driver.ask("wait", "/bin/bash", "-c", f"id -ru > {made}; id -u >> {made}"), "0")
        self.assertEqual(made.read_text(), "0\n0\n")


class Polkit(PolkitCase):
    def test_grants_rights_for_the_password_of_an_administrator(self):
        me = self.account(administrator=True)
        driver = self.polkit(me)
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.start(), "yes")
        self.assertEqual(len(driver.questions()), 1)
        self.assertEqual(driver.ask("open"), "no")
        self.assert_root(driver)

    def test_loads_its_library_only_when_asked(self):
        driver = self.polkit(self.account(administrator=True))
        loaded = lambda: "libpolkit" in pathlib.Path(f"/proc/{driver.pid}/maps").read_text()
        self.assertEqual(driver.ask("authorized"), "no")
        self.assertFalse(loaded())
        driver.ask("cancel")
        driver.start()
        self.assertTrue(loaded())

    def test_offers_the_present_user_first(self):
        self.account(administrator=True)
        me = self.account(administrator=True)
        driver = self.polkit(me)
        driver.ask("cancel")
        driver.start()
        (problem, administrators, user, others, question, details), = driver.questions()
        self.assertEqual(administrators.split(",")[0], me.name)
        self.assertEqual((problem, user, others, question, details), ("none", me.name, "these", "", ""))

    def test_grants_rights_after_a_wrong_password(self):
        driver = self.polkit(self.account(administrator=True))
        driver.ask("answer", "", "wrong")
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.start(), "yes")
        self.assertEqual(self.problems(driver), ["none", "wrongPassword"])
        self.assert_root(driver)

    def test_refuses_after_three_wrong_passwords_and_then_only_says_so(self):
        driver = self.polkit(self.account(administrator=True))
        for password in ("one", "", "three"):
            driver.ask("answer", "", password, "60000")
        driver.ask("cancel")
        self.assertEqual(driver.start(), "no")
        self.assertEqual(self.problems(driver), ["none", "wrongPassword", "wrongPassword", "lockedOut"])
        self.assertEqual(driver.ask("open"), "no")

    def test_grants_nothing_when_cancelled_and_asks_again_the_next_time(self):
        driver = self.polkit(self.account(administrator=True))
        driver.ask("cancel")
        self.assertEqual(driver.ask("wait", "/usr/bin/true"), "-1")
        self.assertEqual(driver.ask("open"), "no")
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.ask("wait", "/usr/bin/true"), "0")
        self.assertEqual(self.problems(driver), ["none", "none"])

    def test_cancels_at_once_while_the_password_is_being_checked(self):
        driver = self.polkit(self.account(administrator=True))
        # A wrong one, as the machine takes two seconds over it.
        driver.ask("answer", "", "wrong", "200")
        began = time.monotonic()
        self.assertEqual(driver.start(), "no")
        self.assertLess(time.monotonic() - began, 1.5)
        self.assertEqual(self.problems(driver), ["none"])

    def test_grants_rights_to_a_user_for_whom_an_administrator_answers(self):
        administrator = self.account("another password", administrator=True)
        me = self.account()
        driver = self.polkit(me)
        driver.ask("answer", administrator.name, "another password")
        self.assertEqual(driver.start(), "yes")
        offered = driver.questions()[0][1].split(",")
        self.assertIn(administrator.name, offered)
        self.assertNotIn(me.name, offered)
        self.assertNotIn("root", offered)
        self.assert_root(driver)

    def test_does_not_take_the_password_of_a_user_who_is_no_administrator(self):
        self.account("another password", administrator=True)
        me = self.account()
        driver = self.polkit(me)
        driver.ask("answer", me.name, self.password)
        driver.ask("cancel")
        self.assertEqual(driver.start(), "no")
        self.assertEqual(self.problems(driver), ["none", "notAdministrator"])

    def test_asks_for_root_when_nobody_is_an_administrator(self):
        groups = "".join(line.rpartition(":")[0] + ":\n" if line.startswith("sudo:") else line
                         for line in pathlib.Path("/etc/group").open())
        driver = self.polkit(self.account(), "--replace", "/etc/group", groups)
        driver.ask("cancel")
        self.assertEqual(driver.start(), "no")
        self.assertEqual(driver.questions()[0][1], "root")

    def test_takes_long_and_unusual_passwords(self):
        for password in ("ä €\t§ \\ \"'`$(id)", "x" * 500):
            with self.subTest(length=len(password)):
                driver = self.polkit(self.account(password.replace("\t", " "), administrator=True))
                driver.ask("answer", "", password.replace("\t", " "))
                self.assertEqual(driver.start(), "yes")

    def test_gives_the_name_and_password_that_are_known_without_asking(self):
        me = self.account(administrator=True)
        driver = self.polkit(me, arguments=(f"polkit={PKEXEC}", "noprompt"))
        self.assertEqual(driver.ask("startwith", me.name, "wrong"), "no")
        self.assertEqual(driver.ask("startwith", "root", "whatever"), "no")
        self.assertEqual(driver.ask("startwith", me.name, self.password), "yes")
        self.assert_root(driver)

    def test_serves_one_session_after_another_without_keeping_anything(self):
        driver = self.polkit(self.account(administrator=True))
        counts = []
        for _ in range(20):
            driver.ask("answer", "", self.password)
            self.assertEqual(driver.start(), "yes")
            driver.ask("end")
            wait_until(lambda: not helpers(driver.pid))
            counts.append((int(driver.ask("descriptors")), int(driver.ask("threads"))))
        # The first one starts what stays: GLib's own threads and the descriptors with which they are woken.
        self.assertLessEqual(counts[-1], counts[1])

    def test_ends_the_helper_with_the_installer(self):
        driver = self.polkit(self.account(administrator=True), "--linger", "3")
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.start(), "yes")
        serving = helpers(driver.pid)
        self.assertTrue(serving)
        os.kill(driver.pid, signal.SIGKILL)
        self.assertTrue(wait_until(lambda: not any(map(exists, serving)), 1))

    def test_leaves_no_pkexec_behind_an_installer_that_ends_while_it_asks(self):
        driver = self.polkit(self.account(administrator=True), "--linger", "3")
        driver.tell("start")
        self.assertTrue(wait_until(lambda: driver.pid and children(driver.pid, "pkexec"), 10))
        pkexec = children(driver.pid, "pkexec")
        time.sleep(0.3)
        os.kill(driver.pid, signal.SIGKILL)
        self.assertTrue(wait_until(lambda: not any(map(exists, pkexec)), 2))

    def test_asks_within_150_milliseconds(self):
        driver = self.polkit(self.account(administrator=True))
        taken = []
        for _ in range(5):
            driver.ask("cancel")
            taken.append(int(driver.ask("start").split("\t")[1]))
        self.assertEqual(self.problems(driver), ["none"] * 5)
        # Polkit's daemon was started for the first of them; the best of the others, for the sake of busy machines.
        self.assertLess(min(taken[1:]), 150, taken)
        self.assertLess(taken[0], 1500, taken)

    def survives_the_end_of(self, service):
        """The driver, whose service was killed while it asked."""
        driver = self.polkit(self.account(administrator=True))
        driver.tell("start")
        self.assertTrue(wait_until(lambda: driver.pid and children(driver.pid, "pkexec"), 10))
        time.sleep(0.3)
        found = beside(driver.pid, service)
        self.assertTrue(found)
        for pid in found:
            os.kill(pid, signal.SIGKILL)
        self.assertEqual(driver.answer().split("\t")[0], "no")
        self.assertEqual(self.problems(driver), ["none"])
        self.assertEqual(driver.ask("open"), "no")
        return driver

    def test_gives_up_when_polkit_ends_and_asks_again_the_next_time(self):
        driver = self.survives_the_end_of("polkitd")
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.start(), "yes")

    def test_outlives_the_end_of_the_bus(self):
        driver = self.survives_the_end_of("dbus-daemon")
        self.assertEqual(driver.start(), "no")
        self.assertEqual(self.problems(driver), ["none"])

    def test_keeps_no_copy_of_the_password_in_memory(self):
        password = "tell-tale battery staple"
        driver = self.polkit(self.account(password, administrator=True))
        # The driver has its script in memory; the field after the password tells that from the line that was sent.
        driver.ask("answer", "", "tell-tale wrong one", "60000")
        driver.ask("answer", "", password, "60000")
        self.assertEqual(driver.start(), "yes")
        if re.search("lib[at]san", pathlib.Path(f"/proc/{driver.pid}/maps").read_text()):
            self.skipTest("sanitizers keep memory that was given back, and terabytes of their own")
        self.assertGreater(occurrences(driver.pid, password.encode()), 0)
        self.assertEqual(occurrences(driver.pid, password.encode() + b"\n"), 0)
        self.assertEqual(occurrences(driver.pid, b"tell-tale wrong one\n"), 0)


class PolkitOfAnotherKind(PolkitCase):
    """Machines that polkit works differently on, or not at all."""

    def start_without_question(self, *options, arguments=(f"polkit={PKEXEC}",)):
        driver = self.polkit(self.account(administrator=True), *options, arguments=arguments)
        began = time.monotonic()
        result = driver.start()
        self.assertLess(time.monotonic() - began, 15)
        self.assertEqual(driver.questions(), NOBODY_ASKED)
        return driver, result

    def test_grants_rights_without_a_question_where_a_rule_says_yes(self):
        driver, result = self.start_without_question("--rule", SAYS_YES)
        self.assertEqual(result, "yes")
        self.assert_root(driver)

    def test_grants_rights_without_a_prompt_where_a_rule_says_yes(self):
        driver, result = self.start_without_question("--rule", SAYS_YES, arguments=(f"polkit={PKEXEC}", "noprompt"))
        self.assertEqual(result, "yes")
        self.assert_root(driver)

    def test_checks_a_known_password_elsewhere_where_a_rule_says_yes(self):
        me = self.account(administrator=True)
        driver = self.polkit(me, "--rule", SAYS_YES)
        self.assertEqual(driver.ask("startwith", me.name, "wrong"), "no")

    def test_is_unavailable_without_a_prompt(self):
        _, result = self.start_without_question(arguments=(f"polkit={PKEXEC}", "noprompt"))
        self.assertEqual(result, "no")

    def test_is_unavailable_where_a_rule_says_no(self):
        _, result = self.start_without_question("--rule", SAYS_NO)
        self.assertEqual(result, "no")

    def test_is_unavailable_without_a_bus(self):
        self.assertEqual(self.start_without_question("--no-bus")[1], "no")

    def test_leaves_the_question_to_sudo_without_a_bus(self):
        driver = self.polkit(self.account(administrator=True), "--no-bus",
                             arguments=(f"polkit={PKEXEC}", "sudo=/usr/bin/sudo"))
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.start(), "yes")
        self.assertEqual(self.problems(driver), ["none"])
        self.assert_root(driver)

    def test_without_polkit_sudo_and_su_everything_but_rights_works(self):
        me = self.account(administrator=True)
        hidden = [argument for path in (PKEXEC, "/usr/bin/sudo", "/usr/bin/su") for argument in ("--hide", path)]
        driver = self.polkit(me, "--no-bus", *hidden, arguments=())
        self.assertEqual(driver.ask("run", "/bin/true"), "-1")
        self.assertEqual(driver.ask("file-copy", "/etc/hostname", f"{self.private_folder()}/copied"), "no")
        self.assertEqual(driver.ask("startwith", me.name, self.password), "no")
        self.assertEqual(driver.questions(), NOBODY_ASKED)
        self.assertEqual(driver.ask("file-copy", "/etc/hostname", f"{me.home}/copied"), "yes")

    def test_is_unavailable_without_polkits_daemon(self):
        self.assertEqual(self.start_without_question("--hide", str(bus.DAEMON))[1], "no")

    def test_is_unavailable_without_pkexec(self):
        self.assertEqual(self.start_without_question("--hide", PKEXEC)[1], "no")

    def test_is_unavailable_where_pkexec_is_not_roots(self):
        folder = self.private_folder()
        copy = shutil.copy(PKEXEC, folder)
        os.chmod(copy, 0o755)
        self.assertEqual(self.start_without_question(arguments=(f"polkit={copy}",))[1], "no")

    def test_is_unavailable_without_the_agent_library(self):
        library = "/usr/lib/x86_64-linux-gnu/libpolkit-agent-1.so.0"
        if not os.path.exists(library):
            self.skipTest(f"{library} is not where it is looked for")
        self.assertEqual(self.start_without_question("--hide", library)[1], "no")

    def test_does_not_ask_in_vain_where_passwords_cannot_be_checked(self):
        driver = self.polkit(self.account(administrator=True), "--hide", str(bus.CHECKER))
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.start(), "no")
        self.assertEqual(self.problems(driver), ["none"])
        self.assertEqual(driver.ask("open"), "no")

    def test_is_not_disturbed_by_an_odd_environment(self):
        me = self.account(administrator=True)
        driver = self.driver(me, f"polkit={PKEXEC}", environment=("SHELL=/no/shell", "LC_ALL=../%s", "TERM=a/b"),
                             wrapper=bus.wrapper())
        driver.ask("answer", "", self.password)
        self.assertEqual(driver.start(), "yes")

    def test_asks_what_else_the_machine_wants_to_know(self):
        more = "auth required pam_unix.so\nauth optional pam_ftp.so\naccount required pam_permit.so\n"
        me = self.account(administrator=True)
        driver = self.polkit(me, "--replace", PAM, more)
        driver.ask("answer", "", self.password)
        driver.ask("answer", "", "anything")
        self.assertEqual(driver.start(), "yes")
        self.assertEqual([question[4] for question in driver.questions()], ["", f"Password required for {me.name}."])

    def test_passes_on_what_the_machine_says(self):
        speaking = "auth required pam_exec.so stdout /bin/echo Closed for the night\nauth required pam_unix.so\n" \
                   "account required pam_permit.so\n"
        driver = self.polkit(self.account(administrator=True), "--replace", PAM, speaking)
        driver.ask("answer", "", "wrong")
        driver.ask("cancel")
        self.assertEqual(driver.start(), "no")
        self.assertEqual([question[5] for question in driver.questions()], ["", "Closed for the night"])

    def test_says_why_the_machine_does_not_want_the_password(self):
        speaking = "auth optional pam_exec.so stdout /bin/echo Locked for an hour\nauth requisite pam_deny.so\n"
        driver = self.polkit(self.account(administrator=True), "--replace", PAM, speaking)
        driver.ask("answer", "", self.password)
        driver.ask("cancel")
        self.assertEqual(driver.start(), "no")
        self.assertEqual([(question[0], question[5]) for question in driver.questions()],
                         [("none", ""), ("lockedOut", "Locked for an hour")])
