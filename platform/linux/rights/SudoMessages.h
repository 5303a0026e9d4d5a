// What sudo and su say when they are not asking: what it means, and what of it a user should read.
//
// The texts are theirs in the locale "C".
#pragma once

#include <string>
#include <vector>

namespace platform::rights {

enum class Ending {
    wrongPassword,     // of su, which asks once
    notAdministrator,  // the password was right, or not even asked for
    lockedOut,         // sudo takes no further attempt
    timedOut,          // nobody answered in the time that sudo gives
    other,
};

// Why the program ended, from the last lines that it wrote.
Ending endingIn(const std::vector<std::string>& lines);

enum class After { nothing, wrongPassword };

// What is left for a user to read, one line below the other: without the names of the programs, without what a prompt
// says by itself, and without sudo's lecture. The line with which sudo rejects a password, be it an insult, is left
// out after a wrong password. Not longer than a small part of a screen.
std::string detailsIn(std::vector<std::string> lines, After after);

}  // namespace platform::rights
