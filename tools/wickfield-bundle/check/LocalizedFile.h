// A file among the resources that a setting names, which may be there once for all or once for each language.
#pragma once

#include <string>
#include <vector>

#include "tools/wickfield-bundle/check/Check.h"

namespace wickfield_bundle {

// Where each customer's installer finds it, whatever the language of whoever checks: in the resources themselves, else
// in the *.lproj folder of the customer's language, else in that of English or in "Base".
struct LocalizedFile {
    std::vector<std::string> paths;   // of all that some customer gets, by their names
    std::vector<std::string> hidden;  // of those that nobody gets, since one lies in the resources themselves
    bool isForEverybody = true;       // false where only customers of certain languages get one
};

// `name` is the setting's value. Of the bundle that stands in for the program's own.
LocalizedFile findInEveryLanguage(const std::string& name);

void checkLanguages(const CheckedBundle& bundle, const std::string& key, const LocalizedFile& file, Findings& findings);

}  // namespace wickfield_bundle
