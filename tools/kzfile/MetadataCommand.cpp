#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

#include "lib/KZFileManager.h"
#include "tools/commandline/Streams.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Dates.h"
#include "tools/kzfile/Labels.h"
#include "tools/kzfile/Paths.h"
#include "tools/kzfile/ReportingHost.h"

namespace kzfile {

namespace {

// Where file managers of this desktop keep the comment that they show.
constexpr const char* commentKey = "xdg.comment";
constexpr std::size_t longestValue = 255;  // bytes that the library reads of an attribute

constexpr std::array<Option, 9> options{{
    {'l', "label", "LABEL", "none, gray, green, purple, blue, yellow, red or orange, or 0 to 7"},
    {'c', "comment", "TEXT", "set the comment; \"\" empties it"},
    {'m', "modified", "DATE", "set the modification date: now, 2026-11-21, \"2026-11-21 18:30:00\", ..."},
    {'t', "touch", nullptr, "set the modification and the creation date to now"},
    {'p', "progress", "FRACTION", "show a progress bar on the file, 0 to 1; \"none\" takes it away"},
    {'g', "get", "KEY", "print the extended attribute of that name, and nothing else"},
    {'s', "set", "KEY=TEXT", "set an extended attribute"},
    {0, "lock", nullptr, "lock the item, so that it cannot be changed"},
    {0, "unlock", nullptr, "unlock it"},
}};

using Change = std::function<bool(const std::string& path)>;  // false: it could not be made

struct NamedChange {
    const char* what;
    Change make;
};

std::string checkedValue(const std::string& value) {
    if (value.size() > longestValue) {
        throw UsageError("a text of more than 255 bytes would not be read again");
    }
    return value;
}

NamedChange labelChange(const std::string& text) {
    const auto label = labelNamed(text);
    if (!label) {
        throw UsageError("there is no label " + text);
    }
    return {"the label", [label = *label](const std::string& path) {
                KZFileManager::setFinderColorIndex(label, path);
                return KZFileManager::finderColorIndexForPath(path) == label;
            }};
}

NamedChange dateChange(const std::string& text) {
    const auto date = dateFromText(text);
    if (!date) {
        throw UsageError("this is no date: " + text);
    }
    return {"the modification date",
            [date = *date](const std::string& path) { return KZFileManager::setModificationDate(date, path); }};
}

NamedChange progressChange(const std::string& text) {
    char* end = nullptr;
    const float fraction = text == "none" ? -1.0F : std::strtof(text.c_str(), &end);
    if (text != "none" && (text.empty() || *end != '\0' || !(fraction >= 0 && fraction <= 1))) {
        throw UsageError("the progress is no fraction from 0 to 1: " + text);
    }
    return {"the progress", [fraction](const std::string& path) {
                KZFileManager::setFinderProgress(fraction, path);
                const auto tool = reports().tool();
                return tool && (tool->terminationStatus() == 0 || fraction < 0);
            }};
}

NamedChange attributeChange(const std::string& text) {
    const auto equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw UsageError("this is not KEY=TEXT: " + text);
    }
    return {"the attribute",
            [key = text.substr(0, equals), value = checkedValue(text.substr(equals + 1))](const std::string& path) {
                return KZFileManager::setMetadataValue(value, key, path);
            }};
}

NamedChange lockChange(bool lock) {
    return {"the lock", [lock](const std::string& path) {
                lock ? KZFileManager::lockFile(path) : KZFileManager::unlockFile(path);
                return KZFileManager::isFileLocked(path) == lock;
            }};
}

std::vector<NamedChange> changesFrom(const Arguments& arguments) {
    std::vector<NamedChange> changes;
    const auto add = [&](const char* word, const auto& make) {
        if (const auto value = arguments.value(word)) {
            changes.push_back(make(*value));
        }
    };
    add("unlock", [](const std::string&) { return lockChange(false); });
    add("label", labelChange);
    add("set", attributeChange);
    add("comment", [](const std::string& text) {
        return NamedChange{"the comment", [value = checkedValue(text)](const std::string& path) {
                               return KZFileManager::setMetadataValue(value, commentKey, path);
                           }};
    });
    add("progress", progressChange);
    add("touch", [](const std::string&) {
        return NamedChange{
            "the dates", [](const std::string& path) { return KZFileManager::touchFile(path, SetCreationDate::yes); }};
    });
    add("modified", dateChange);
    add("lock", [](const std::string&) { return lockChange(true); });
    return changes;
}

std::string kindText(const std::string& path) {
    if (KZFileManager::isSymbolicLinkAtPath(path)) {
        return KZFileManager::fileExistsAtPath(path) ? "link" : "link that leads nowhere";
    }
    if (KZFileManager::isPackageAtPath(path)) {
        return "package";
    }
    return KZFileManager::isDirectoryAtPath(path) ? "folder" : "file";
}

void show(const std::string& path) {
    const auto line = [](const char* key, const std::string& value) {
        commandline::print(commandline::boldForOutput(key) + value + '\n');
    };
    const auto date = [](const std::optional<platform::Date>& value) { return value ? dateText(*value) : "unknown"; };
    const std::uint64_t size = KZFileManager::fileSize(path);
    line("kind:      ", kindText(path));
    line("size:      ",
         std::to_string(size) + " bytes (" + KZFileManager::formatFileSize(static_cast<double>(size)) + ")");
    line("modified:  ", date(KZFileManager::modificationDateForFile(path)));
    line("created:   ", date(KZFileManager::creationDateForFile(path)));
    line("locked:    ", KZFileManager::isFileLocked(path) ? "yes" : "no");
    line("label:     ", labelText(KZFileManager::finderColorIndexForPath(path)));
    if (const auto comment = KZFileManager::metadataValueForKey(commentKey, path)) {
        line("comment:   ", commandline::nameForOutput(*comment));
    }
}

// Whether the item has that attribute, which is printed.
bool showAttribute(const std::string& name, const std::string& path, const std::string& key) {
    const auto value = KZFileManager::metadataValueForKey(key, path);
    if (!value) {
        commandline::printError(name + ": has no text of up to 255 bytes under " + key);
        return false;
    }
    commandline::print(commandline::nameForOutput(*value) + '\n');
    return true;
}

int run(const Arguments& arguments) {
    const auto changes = changesFrom(arguments);
    const auto key = arguments.value("get");
    if (key && !changes.empty()) {
        throw UsageError("--get goes with no other option");
    }
    bool all = true;
    bool isFirst = true;
    for (const std::string& name : arguments.operands()) {
        const std::string path = absolutePath(name);
        if (kindOf(path) == ItemKind::missing) {
            commandline::printError(missingText(name));
            all = false;
            continue;
        }
        for (const auto& [what, make] : changes) {
            reports().clear();
            if (!make(path)) {
                commandline::printError(name + ": " + what + " could not be set");
                all = false;
            }
        }
        if (key) {
            all = showAttribute(name, path, *key) && all;
        } else if (changes.empty()) {
            const bool several = arguments.operands().size() > 1;
            commandline::print(several ? (isFirst ? "" : "\n") + commandline::nameForOutput(name) + '\n' : "");
            show(path);
        }
        isFirst = false;
    }
    return all ? done : failed;
}

}  // namespace

const Command metadataCommand{
    .name = "metadata",
    .summary = "show or set labels, comments, dates and the lock",
    .arguments = "NAME...",
    .help =
        "Without an option that sets something, shows what is known about each item. The colour\n"
        "label and the other attributes are extended attributes, which not every file system\n"
        "can hold; locking takes the superuser's rights on most.\n",
    .options = options,
    .fewest = 1,
    .most = Command::anyNumber,
    .run = run,
};

}  // namespace kzfile
