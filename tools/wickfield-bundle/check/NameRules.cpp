#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lib/base/PathText.h"
#include "lib/base/Text.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/NameFolding.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

constexpr std::size_t longestName = 255;
constexpr std::size_t longestPath = 1023;                            // bytes
constexpr std::string_view usualPlace = "/Volumes/Installer Disk/";  // where a customer may have the bundle

bool hasControlCharacters(std::string_view name) {
    while (!name.empty()) {
        const kz::DecodedCharacter character = kz::decodeCharacter(name);
        const bool isControl =
            character.codePoint < 0x20 || (character.codePoint >= 0x7F && character.codePoint < 0xA0);
        if (character.valid && isControl) {
            return true;
        }
        name.remove_prefix(character.bytes);
    }
    return false;
}

void checkName(const InventoryEntry& entry, Findings& findings) {
    const std::string_view name = entry.name();
    if (!kz::isUTF8(name)) {
        add(findings, "name-not-utf8", entry.path, "Its name has bytes that are not UTF-8.");
    }
    const bool isIconOfAFolder = name == "Icon\r";  // as the Finder calls the file with a folder's own icon
    if (hasControlCharacters(name) && !isIconOfAFolder) {
        add(findings, "name-control", entry.path, "Its name has a character that nobody can see or type.");
    }
    if (name.find(':') != std::string_view::npos) {
        add(findings, "name-colon", entry.path, "Its name has a \":\".");
    }
    if (name.starts_with(' ') || name.ends_with(' ') || name.ends_with('.')) {
        add(findings, "name-blank-end", entry.path,
            name.ends_with('.') ? "Its name ends with a \".\"." : "Its name begins or ends with a blank.");
    }
    if (name.size() > longestName / 3 && kz::lengthInUTF16(decomposedName(name)) > longestName) {
        add(findings, "name-too-long", entry.path,
            "With its accents counted on their own its name has " +
                std::to_string(kz::lengthInUTF16(decomposedName(name))) + " characters.");
    }
}

// Looks at the names of each folder once all of them have come by.
class Siblings {
public:
    explicit Siblings(Findings& findings) : m_findings(findings) {}

    void add(const InventoryEntry& entry) {
        const std::size_t slash = entry.path.rfind('/');
        const std::size_t folderLength = slash == std::string::npos ? 0 : slash;
        while (!m_levels.empty() && m_levels.back().folderLength > folderLength) {
            leave();
        }
        if (m_levels.empty() || m_levels.back().folderLength < folderLength) {
            m_levels.push_back({folderLength, {}});
        }
        m_levels.back().names.emplace_back(foldedName(entry.name()), &entry);
    }

    void finish() {
        while (!m_levels.empty()) {
            leave();
        }
    }

private:
    using Names = std::vector<std::pair<std::string, const InventoryEntry*>>;  // folded, and whose they are
    struct Level {
        std::size_t folderLength;
        Names names;
    };

    void leave() {
        Names& names = m_levels.back().names;
        std::ranges::stable_sort(names, {}, &Names::value_type::first);
        for (std::size_t index = 1; index < names.size(); ++index) {
            if (names[index - 1].first == names[index].first) {
                say(*names[index - 1].second, *names[index].second);
            }
        }
        m_levels.pop_back();
    }

    void say(const InventoryEntry& first, const InventoryEntry& second) {
        const std::string reason = "In the same folder lies \"" + std::string(first.name()) + "\".";
        if (decomposedName(first.name()) == decomposedName(second.name())) {
            wickfield_bundle::add(m_findings, "name-collision-form", second.path, reason);
        } else {
            wickfield_bundle::add(m_findings, "name-collision-case", second.path, reason);
        }
    }

    Findings& m_findings;
    std::vector<Level> m_levels;
};

// Of paths within one another the outermost is named.
class Lengths {
public:
    Lengths(const CheckedBundle& bundle, Findings& findings)
        : m_bundle(bundle),
          m_findings(findings),
          m_around(usualPlace.size() + kz::lastPathComponent(bundle.path).size() + 1) {}

    void look(const InventoryEntry& entry) {
        if (entry.path.size() < longestPath / 4 || (m_latest && liesWithin(entry.path, m_latest->path))) {
            return;
        }
        const CheckedItem* const item = m_bundle.itemAt(entry.path);
        const std::size_t there =
            item == nullptr ? 0 : item->destination.size() + entry.path.size() - item->place.size();
        const std::size_t here = m_around + entry.path.size();
        if (there > longestPath) {
            say(entry, "Where it is put its path has " + std::to_string(there) + " bytes.");
        } else if (here > longestPath) {
            say(entry, "Within the bundle its path has " + std::to_string(entry.path.size()) + " bytes, and about " +
                           std::to_string(here) + " on a customer's disk.");
        }
    }

private:
    void say(const InventoryEntry& entry, const std::string& reason) {
        m_latest = &entry;
        add(m_findings, "path-too-long", entry.path, reason);
    }

    const CheckedBundle& m_bundle;
    Findings& m_findings;
    std::size_t m_around;
    const InventoryEntry* m_latest = nullptr;
};

}  // namespace

void checkNames(const CheckedBundle& bundle, Findings& findings) {
    Siblings siblings(findings);
    Lengths lengths(bundle, findings);
    for (const InventoryEntry& entry : bundle.contents.entries) {
        checkName(entry, findings);
        siblings.add(entry);
        lengths.look(entry);
    }
    siblings.finish();
}

}  // namespace wickfield_bundle
