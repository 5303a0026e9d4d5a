// Answers questions about the windows from outside, while the installer runs.
#pragma once

#include "platform/ports/ApplicationMain.h"

namespace probe {

// Starts a thread that reads commands, one a line, from standard input and answers each with one line of JSON:
//   state          what is on the screen, and what the alerts that were shown so far have answered
//   press TITLE    clicks the button of that title, unless a sheet keeps it from being clicked
//   toggle         clicks the suppression box of the alert that is up
//   worker KIND    shows an alert from a thread of its own: timed, question, suppressed, oddly-suppressed,
//                  two (one upon the other), timed-above (a timed one upon another), alone-timed or alone-question
//                  (without a window)
//   main KIND      the same from the main thread, which goes on serving its events
//   panel          shows an alert panel, which runs a loop of its own
//   menu           opens a menu, which tracks the mouse until it is dismissed
//   quit           chooses Quit in the application's menu
//   throw WAY      lets an exception loose, as ProbeThrows.h says
//   batch          hands over three pieces of work at once, the first of which shows an alert panel
//   leak           loses an object
//   slices         how long the slices of the event loop take in milliseconds, and in which order work is done in them
// They are served by the main thread through the service that the installer's own threads use.
void start(const platform::Outlets& outlets);

}  // namespace probe
