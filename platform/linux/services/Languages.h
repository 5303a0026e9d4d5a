// The languages that the user reads, by the locale variables of the environment.
#pragma once

#include <string>
#include <vector>

namespace platform::linux_host {

// Names of localisations in order of preference, each once: "de_DE.UTF-8" gives "de_DE", "de-DE" and "de".
// LANGUAGE (a list) counts before LC_ALL, LC_MESSAGES and LANG, of which the first that is set counts, and
// not at all where that one is the "C" locale. "en", "English" and "Base" always end the list.
std::vector<std::string> preferredLocalizations();

}  // namespace platform::linux_host
