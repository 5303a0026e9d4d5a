// Plug-in bundles and applications in the tree: what says who they are, and whether there is code in them.
#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "lib/base/PathText.h"
#include "lib/base/Text.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/MachOBytes.h"
#include "tools/wickfield-bundle/check/NameFolding.h"
#include "tools/wickfield-bundle/check/RegularFile.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

using platform::FileType;
using platform::PropertyDictionary;
using platform::PropertyValue;

constexpr std::size_t mostInformation = std::size_t{1} << 20U;  // bytes; real ones have a few thousand

// Bundles of code. Other packages, such as documents that are folders, hold what they like.
struct CodeKind {
    std::string_view extension;
    std::string_view type;    // of CFBundlePackageType; "" where there are several
    std::string_view folder;  // that hosts look in, in small letters; "" where there is none, or no single one
};
constexpr std::array<CodeKind, 18> codeKinds{{{"aaxplugin", "", "plug-ins"},
                                              {"app", "APPL", ""},
                                              {"appex", "XPC!", ""},
                                              {"bundle", "BNDL", ""},
                                              {"clap", "BNDL", "clap"},
                                              {"component", "BNDL", "components"},
                                              {"dpm", "", "plug-ins"},
                                              {"driver", "BNDL", ""},
                                              {"kext", "KEXT", ""},
                                              {"mdimporter", "", ""},
                                              {"plugin", "BNDL", ""},
                                              {"prefpane", "BNDL", ""},
                                              {"qlgenerator", "BNDL", ""},
                                              {"saver", "BNDL", ""},
                                              {"systemextension", "SYSX", ""},
                                              {"vst", "BNDL", "vst"},
                                              {"vst3", "BNDL", "vst3"},
                                              {"xpc", "XPC!", ""}}};

// Asked of every item, most of which are none.
const CodeKind* kindOf(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return nullptr;
    }
    const auto found = std::ranges::find_if(codeKinds, [extension = name.substr(dot + 1)](const CodeKind& kind) {
        return std::ranges::equal(extension, kind.extension, {}, lowered);
    });
    return found == codeKinds.end() ? nullptr : &*found;
}

// What lies in a folder, at any depth.
std::span<const InventoryEntry> within(const Inventory& inventory, const std::string& folder) {
    const auto& entries = inventory.entries;
    const auto first = std::ranges::upper_bound(entries, folder, comesBefore, &InventoryEntry::path);
    const auto last =
        std::find_if_not(first, entries.end(), [&](const auto& entry) { return liesWithin(entry.path, folder); });
    return {first, last};
}

bool liesDirectlyIn(const InventoryEntry& entry, const std::string& folder) {
    return liesWithin(entry.path, folder) && entry.path.find('/', folder.size() + 1) == std::string::npos;
}

bool isForMacOS(std::string_view head) {
    return head.starts_with("\xCA\xFE\xBA\xBE") || head.starts_with("\xCA\xFE\xBA\xBF") || head.starts_with("#!") ||
           machOMagic(head).has_value();
}

bool isAnything(std::string_view /*head*/) { return true; }

class PackageCheck {
public:
    PackageCheck(const CheckedBundle& bundle, const std::string& place, const CodeKind& kind, Findings& findings)
        : m_bundle(bundle), m_place(place), m_kind(kind), m_findings(findings) {}

    // Gives the package's identifier, if it has one.
    std::optional<std::string> run() {
        m_hasMacFolder = has("Contents/MacOS");
        const std::vector<std::string> linuxFolders = foldersForLinux();
        for (const std::string& folder : linuxFolders) {
            checkLinuxCode(folder);
        }
        const bool isForLinuxAlone = !m_hasMacFolder && !linuxFolders.empty();
        if (isForLinuxAlone && !has("Contents/Info.plist")) {
            noteMissingHost(false, true);
            return std::nullopt;
        }
        readInformation();
        if (!m_information) {
            return std::nullopt;
        }
        checkTexts();
        if (!isForLinuxAlone) {
            checkExecutable();
        }
        noteMissingHost(m_hasMacFolder, !linuxFolders.empty());
        return text("CFBundleIdentifier");
    }

private:
    void report(RuleName rule, const std::string& part, std::string reason, std::string remedy = {}) {
        add(m_findings, rule, part.empty() ? m_place : m_place + "/" + part, std::move(reason), std::move(remedy));
    }

    bool has(const std::string& part) const { return m_bundle.contents.find(m_place + "/" + part) != nullptr; }

    // Or a link to one.
    bool hasFile(const std::string& part) const {
        const InventoryEntry* entry = m_bundle.contents.find(m_place + "/" + part);
        return entry != nullptr && (entry->type == FileType::regular ||
                                    (entry->type == FileType::symbolicLink &&
                                     platform::host().files->fileExists(m_bundle.fullPath(entry->path))));
    }

    std::string nameWithoutExtension() const { return kz::deletingPathExtension(kz::lastPathComponent(m_place)); }

    std::vector<std::string> foldersForLinux() const {
        std::vector<std::string> folders;
        const std::string contents = m_place + "/Contents";
        for (const InventoryEntry& entry : within(m_bundle.contents, contents)) {
            if (entry.type == FileType::folder && liesDirectlyIn(entry, contents) && entry.name().ends_with("-linux")) {
                folders.push_back("Contents/" + std::string(entry.name()));
            }
        }
        return folders;
    }

    void checkLinuxCode(const std::string& folder) {
        const std::string code = folder + "/" + nameWithoutExtension() + ".so";
        if (!hasFile(code)) {
            report("package-executable", code, "Hosts on Linux look for this file, and it is not there.");
        } else {
            checkBeginning(code, isAnything);
        }
    }

    void readInformation() {
        const std::string part = "Contents/Info.plist";
        if (!has(part)) {
            report("package-info-missing", part, "There is nothing of this name.");
            return;
        }
        std::string whyNot;
        const auto information = RegularFile::open(m_bundle.fullPath(m_place + "/" + part), whyNot);
        if (!information) {
            report("package-info-unreadable", part, "It cannot be opened: " + whyNot + ".");
            return;
        }
        if (information->size() > mostInformation) {
            report("package-info-unreadable", part, "It has more than 1 MiB, and was not looked at.");
            return;
        }
        const auto parsed = platform::host().propertyLists->parse(information->head(mostInformation));
        const auto* root = std::get_if<PropertyValue>(&parsed);
        const auto* values = root == nullptr ? nullptr : root->as<PropertyDictionary>();
        if (values == nullptr) {
            report("package-info-unreadable", part,
                   root == nullptr ? "It cannot be read: " + std::get<platform::Error>(parsed).description + "."
                                   : "It is no dictionary.");
            return;
        }
        m_information = *values;
    }

    // None for an empty one, too.
    std::optional<std::string> text(const std::string& key) const {
        const auto found = m_information->find(key);
        const auto* value = found == m_information->end() ? nullptr : found->second.as<std::string>();
        return value == nullptr || value->empty() ? std::nullopt : std::optional(*value);
    }

    void checkTexts() {
        const std::string part = "Contents/Info.plist";
        if (!text("CFBundleIdentifier")) {
            report("package-identifier", part, "It has no CFBundleIdentifier that is a text.");
        }
        if (!text("CFBundleVersion")) {
            report("package-version", part, "It has no CFBundleVersion that is a text.");
        }
        const auto type = text("CFBundlePackageType");
        if (!type || (!m_kind.type.empty() && *type != m_kind.type)) {
            const std::string expected = m_kind.type.empty() ? "" : "; it is to be " + std::string(m_kind.type);
            report("package-kind", part,
                   (type ? "Its CFBundlePackageType is \"" + *type + "\"" : "It has no CFBundlePackageType") +
                       expected + ".");
        }
    }

    void checkExecutable() {
        const auto named = text("CFBundleExecutable");
        if (!named && m_kind.extension == "bundle" && !m_hasMacFolder) {
            return;  // resources need no code
        }
        if (named && named->find('/') != std::string::npos) {
            report("package-executable", "Contents/Info.plist",
                   "Its CFBundleExecutable is \"" + *named + "\", which is no name of a file.");
            return;
        }
        const std::string part = "Contents/MacOS/" + named.value_or(nameWithoutExtension());
        if (!hasFile(part)) {
            report("package-executable", part,
                   named ? "Info.plist names it as the executable, and it is not there."
                         : "Info.plist names no executable, and this file, which would be taken for it, is not there.");
            return;
        }
        checkBeginning(part, isForMacOS);
    }

    // A file of that name is not always the code: what a build or a checkout left undone looks like it from outside.
    void checkBeginning(const std::string& code, bool (*isCode)(std::string_view)) {
        std::string whyNot;
        const auto file = RegularFile::open(m_bundle.fullPath(m_place + "/" + code), whyNot);
        if (!file) {
            return;  // of the right to read it other rules tell
        }
        constexpr std::string_view pointer = "version https://git-lfs";
        const std::string head = file->head(pointer.size());
        if (head.empty()) {
            report("package-executable", code, "It is empty.");
        } else if (head == pointer) {
            report("package-executable", code, "It is what Git LFS keeps in place of the file.",
                   "Fetch the file (git lfs pull), and make the bundle again.");
        } else if (!isCode(head)) {
            report("package-executable", code, "It is neither code for macOS nor a script.");
        }
    }

    // Where the installer itself runs but the plug-in does not.
    void noteMissingHost(bool isForMacOS, bool isForLinux) {
        const auto installerHas = [&](const char* folder) {
            return std::ranges::any_of(within(m_bundle.contents, folder),
                                       [](const auto& entry) { return entry.type != FileType::folder; });
        };
        if (isForMacOS && !isForLinux && installerHas("Contents/Linux")) {
            report("package-one-host", "", "It has code for macOS alone.");
        } else if (isForLinux && !isForMacOS && installerHas("Contents/MacOS")) {
            report("package-one-host", "", "It has code for Linux alone.");
        }
    }

    const CheckedBundle& m_bundle;
    const std::string& m_place;
    const CodeKind& m_kind;
    Findings& m_findings;
    bool m_hasMacFolder = false;
    std::optional<PropertyDictionary> m_information;
};

// A folder of one's own within the usual one is fine, and so is the form that Linux has in a home, as ".vst3".
void checkPlace(const CheckedItem& item, const CodeKind& kind, Findings& findings) {
    if (kind.folder.empty()) {
        return;
    }
    auto components = kz::pathComponents(item.path);
    components.pop_back();
    const bool isThere = std::ranges::any_of(components, [&](const std::string& component) {
        const std::string lower = kz::lowercased(component);
        return lower == kind.folder || lower == "." + std::string(kind.folder);
    });
    if (!isThere) {
        add(findings, "package-place", item.place,
            "No folder on the way to " + item.path + " is called as hosts expect for ." + std::string(kind.extension) +
                ".");
    }
}

// The folder that an item shows to have been a bundle: what lies in its Contents is what only bundles of code have, but
// its name has no extension. Empty when there is none.
std::string_view folderWithABundlesContents(std::string_view place, std::size_t treePrefix) {
    static constexpr std::string_view contents = "/Contents/";
    const auto found = place.find(contents, treePrefix - 1);
    if (found == std::string_view::npos) {
        return {};
    }
    const std::string_view folder = place.substr(0, found);
    const std::string_view within = place.substr(found + contents.size());
    const bool isCode = within == "Info.plist" || within.starts_with("MacOS/") ||
                        within.substr(0, within.find('/')).ends_with("-linux");
    return isCode && kz::pathExtension(folder).empty() ? folder : std::string_view{};
}

bool isCalled(std::string_view name, std::string_view inSmallLetters) {
    return std::ranges::equal(name, inSmallLetters, {}, lowered);
}

// Whether the item is to be called like the folder that hosts look for plug-ins in. Asked of every item.
bool isInPlaceOfAPlugInFolder(const CheckedItem& item) {
    constexpr std::string_view plugIns = "plug-ins";
    const std::string_view path = item.path;
    const std::size_t slash = path.rfind('/');
    const std::string_view name = path.substr(slash + 1);
    if (isCalled(name, plugIns)) {
        return true;
    }
    const std::string_view above = path.substr(0, slash == std::string_view::npos ? 0 : slash);
    return isCalled(above.substr(above.rfind('/') + 1), plugIns) &&
           std::ranges::any_of(codeKinds, [&](const CodeKind& kind) { return isCalled(name, kind.folder); });
}

void checkItemsOfBundles(const CheckedBundle& bundle, Findings& findings) {
    std::string_view latest;
    for (const CheckedItem& item : bundle.items) {
        const std::string_view folder = folderWithABundlesContents(item.place, bundle.treePrefix.size());
        if (!folder.empty() && folder != latest) {
            latest = folder;
            add(findings, "package-apart", std::string(folder),
                "It has the contents of a plug-in's bundle, and is called \"" + kz::lastPathComponent(folder) + "\".");
        }
        if (isInPlaceOfAPlugInFolder(item)) {
            add(findings, "package-folder", item.place,
                "It is put at \"" + item.destination + "\", which is a folder of plug-ins.");
        }
    }
}

}  // namespace

void checkPackages(const CheckedBundle& bundle, Findings& findings) {
    // The forms of one plug-in have one identifier more often than not, and nobody confuses those.
    std::map<std::pair<std::string_view, std::string>, std::string> identifiers;  // of a kind; and where it was first
    checkItemsOfBundles(bundle, findings);
    for (const CheckedItem& item : bundle.items) {
        const CodeKind* const kind = kindOf(item.path);
        if (kind == nullptr) {
            continue;
        }
        checkPlace(item, *kind, findings);
        const InventoryEntry* const entry = bundle.contents.find(item.place);
        if (entry == nullptr || entry->type != FileType::folder) {
            continue;  // a single file is all that a plug-in is on some hosts
        }
        if (const auto identifier = PackageCheck(bundle, item.place, *kind, findings).run()) {
            const auto [first, isNew] = identifiers.try_emplace({kind->extension, *identifier}, item.place);
            if (!isNew) {
                add(findings, "package-identifier-twice", item.place,
                    "It is called \"" + *identifier + "\" as is " + first->second + ".");
            }
        }
    }
}

}  // namespace wickfield_bundle
