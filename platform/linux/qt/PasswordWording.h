// The texts of the question for a password. All of them are plain; nothing that the machine or an account's owner puts
// into them changes their lines, their direction or what is around them.
#pragma once

#include <QString>
#include <string>

#include "platform/linux/rights/PasswordPrompt.h"

namespace platform::qt {

// "Larkspur Reverb Installer wants to make changes."
QString headline(const QString& asker);

// "Real Name (user)", or "user" where there is no other name.
QString shownName(const rights::Administrator& administrator);

// The account that is meant by what was typed, or chosen, among these names: the account's own name, or as it is shown.
std::string namedUser(const QString& typed, const std::vector<rights::Administrator>& administrators);

// What stands before the field: what the machine asks for, "Password:" without that. A mark of a shortcut is an
// ampersand, one of the machine's own is doubled.
QString questionLabel(const std::string& question);

// Empty: there is none.
QString problemText(rights::PasswordRequest::Problem problem);

// What the machine says, on one line of a sane length that can be broken anywhere between words, and in long ones.
QString detailsText(const std::string& details);

}  // namespace platform::qt
