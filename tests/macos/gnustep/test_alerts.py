"""Alerts and the threads that wait for them, on GNUstep."""
import signal
import time

from window_case import AGREEMENT, SETTINGS, WindowCase

LEAKED = 23


class Alerts(WindowCase):
    def test_a_timed_alert_closes_itself(self):
        self.start()
        began = time.monotonic()
        self.installer.ask("worker timed")
        sheet = self.sheet("Timed")
        self.assertIn("It answers itself, 100%@ surely.", sheet["texts"])
        self.keep_picture()
        self.assertEqual(self.answers(1), [("timed", 1)])
        self.assertGreaterEqual(time.monotonic() - began, 1.9)
        self.no_sheet()
        self.installer.ask("worker question")  # the window takes another one
        self.sheet("Which way?")
        self.installer.press("Left")
        self.no_sheet()
        self.end()

    def test_each_button_has_its_answer(self):
        self.start()
        for number, (title, code) in enumerate([("Left", 1), ("Right", 0), ("Straight on", -1)], 1):
            self.installer.ask("worker question")
            self.sheet("Which way?")
            self.installer.press(title)
            self.assertEqual(self.answers(number)[-1], ("question", code))
        self.end()

    def test_return_and_escape_answer(self):
        self.start()
        for number, (key, code) in enumerate([("Return", 1), ("Escape", 0)], 1):
            self.installer.ask("main question")
            self.sheet("Which way?")
            self.key(key)
            self.assertEqual(self.answers(number)[-1], ("question", code))
            self.no_sheet()
        self.end()

    def test_the_suppression_box_is_bound_to_its_user_default(self):
        self.start()
        self.installer.ask("worker suppressed")
        self.assertEqual(self.sheet("Again?")["checked"], [])
        self.installer.ask("toggle")
        self.installer.press("OK")
        self.answers(1)
        self.no_sheet()
        self.installer.ask("main suppressed")
        self.assertEqual(self.sheet("Again?")["checked"], ["Do not show this message again"])
        self.installer.press("OK")
        self.answers(2)
        self.end()
        self.assertIn("hideAgain", self.installer.defaults())

    def test_a_default_that_nothing_can_be_bound_to_leaves_the_alert(self):
        # GNUstep loses the binding that it was about to make.
        self.start(environment={"ASAN_OPTIONS": "detect_leaks=0:exitcode=24"})
        self.installer.ask("worker oddly-suppressed")
        self.sheet("Again?")
        self.installer.press("OK")
        self.assertEqual(self.answers(1), [("oddly-suppressed", 1)])
        self.end()
        self.assertIn("Exception in binding an alert's suppression", self.installer.told())

    def test_a_second_alert_stands_free_of_the_sheet(self):
        self.start()
        self.installer.ask("main two")
        self.window("Above")
        self.keep_picture()
        self.sheet("Beneath")
        self.installer.press("Enough")
        self.assertEqual(self.answers(1), [("two", 1)])
        self.sheet("Beneath")
        self.installer.press("OK")
        self.no_sheet()
        self.end()

    def take_two(self):
        self.installer.ask("worker two")
        self.window("Above")
        self.key("Return")
        self.assertEqual(self.answers(1), [("two", 1)])
        self.installer.press("OK")
        self.no_sheet()
        self.installer.ask("worker timed-above")
        self.window("Timed")
        self.assertEqual(self.answers(2)[1], ("timed-above", 1))
        state = self.installer.wait("the end of the alert", lambda state: len(state["windows"]) == 2)
        self.assertFalse(state["modal"])
        self.installer.press("OK")
        self.assertTrue(self.no_sheet()["installer"]["installEnabled"])
        self.end()

    def test_a_free_standing_alert_is_answered_and_times_out(self):
        self.start()
        self.take_two()

    def test_so_it_does_where_it_runs_a_loop_of_its_own(self):
        self.start(arguments=["-FreeStandingAlertsRunALoop", "YES"])
        self.take_two()


    def test_one_that_is_taken_away_beneath_another_leaves_nothing_behind(self):
        self.start(arguments=["-FreeStandingAlertsRunALoop", "YES"])
        self.installer.ask("worker alone-timed")
        self.window("Timed")
        self.installer.ask("worker alone-question")
        self.window("Which way?")
        self.assertEqual(self.answers(1), [("alone-timed", 1)])
        self.window("Which way?")
        self.installer.press("Right")
        self.assertEqual(self.answers(2)[1], ("alone-question", 0))
        state = self.installer.wait("the end of the alerts", lambda state: len(state["windows"]) == 1)
        self.assertFalse(self.installer.wait("the end of the loops", lambda state: not state["modal"])["modal"])
        self.assertTrue(state["installer"]["installEnabled"])
        self.end()


class Serving(WindowCase):
    """The probe asks from a thread of its own and waits for the main thread, as the installation does."""

    def test_a_thread_is_served_while_an_alert_panel_is_up(self):
        self.start()
        self.installer.ask("panel")
        self.window("A loop of its own, 100%@.")
        self.assertTrue(self.installer.state()["modal"])
        self.key("Return")
        self.assertEqual(self.answers(1), [("panel", 0)])
        self.end()

    def test_a_thread_is_served_while_a_sheet_is_up(self):
        self.start({**SETTINGS, **AGREEMENT})
        self.sheet("Please read the licence agreement before you install.")
        began = time.monotonic()
        self.assertFalse(self.installer.state()["modal"])
        self.assertLess(time.monotonic() - began, 5)
        self.key("Return")
        self.no_sheet()
        self.end()

    def test_cocoa_knows_that_there_are_threads(self):
        self.start()
        self.assertTrue(self.installer.state()["multithreaded"])
        self.end()

    def test_a_thread_is_served_while_a_menu_is_open(self):
        self.start()
        self.installer.ask("menu")
        self.answers(1)
        time.sleep(0.5)
        self.assertEqual(self.installer.state()["answers"], [["menu opened", 0]])
        self.display.xdotool("mousemove", 500, 740, "click", 1)
        self.assertEqual(self.answers(2)[1], ("menu closed", 0))
        self.end()

    def test_work_behind_work_that_runs_a_loop_is_served(self):
        self.start()
        self.installer.ask("batch")
        self.window("A loop of its own, 100%@.")
        self.assertEqual(self.answers(2), [("second", 0), ("third", 0)])
        self.key("Return")
        self.assertEqual(self.answers(3)[-1], ("first", 0))
        self.end()

    def test_a_slice_of_the_event_loop_ends_by_time_or_by_work(self):
        self.start()
        self.display.wait_until_still()
        seen = self.installer.ask("slices", 40)
        self.assertGreaterEqual(seen["idle"], 190)
        self.assertLess(seen["looks"], 1000)
        self.assertLess(seen["woken"], 5000)
        self.assertEqual(seen["order"], "123")
        self.end()

    def test_a_leak_would_be_found(self):
        self.start()
        self.installer.ask("leak")
        self.assertEqual(self.installer.terminate(), LEAKED)


class Throwing(WindowCase):
    """No exception of C++'s gets into AppKit, which would go on half-way through its work, and none of Objective-C's
    into C++, which would not clean up: the one ends the installer with its reason logged, the other is reported
    and ends where it came from."""

    def ends(self, way):
        self.start(environment={"ASAN_OPTIONS": "detect_leaks=0"})
        self.installer.tell(f"throw {way}")
        self.assertEqual(self.installer.wait_for_end(), -signal.SIGABRT, self.installer.told())
        self.assertIn("on purpose", self.installer.printed())  # as the log prints it

    def test_work_for_the_main_thread(self):
        self.ends("work")

    def test_the_action_of_a_button(self):
        self.ends("action")

    def test_the_end_of_a_sheet(self):
        self.ends("end")

    def test_an_observer_of_the_end(self):
        self.ends("observer")

    def test_objective_c_within_the_action_of_a_button(self):
        self.ends("raise")

    def test_objective_c_on_a_thread_where_nobody_catches_it(self):
        self.start(environment={"ASAN_OPTIONS": "detect_leaks=0"})
        self.installer.tell("throw thread")
        self.assertEqual(self.installer.wait_for_end(), 1, self.installer.told())  # GNUstep's way to end for it
        self.assertIn("on purpose", self.installer.printed())

    def test_objective_c_within_the_loop_that_waits_for_an_answer(self):
        self.start(environment={"ASAN_OPTIONS": "detect_leaks=0"})
        self.installer.ask("throw event")
        self.assertEqual(self.answers(1), [("went on", 0)])
        self.assertIn("Exception in the event loop. NSInvalidArgumentException - on purpose.", self.installer.told())
