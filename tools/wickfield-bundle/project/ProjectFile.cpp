#include "tools/wickfield-bundle/project/ProjectFile.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/project/LocatedJson.h"
#include "tools/wickfield-bundle/project/NearestName.h"

namespace wickfield_bundle {

namespace {

constexpr std::uint64_t largestFile = std::uint64_t{1} << 20U;
constexpr std::size_t mostProblems = 50;

constexpr std::array<std::string_view, 11> keysOfProject{"name",        "version",    "author",   "identifier",
                                                         "agreement",   "background", "branding", "preinstall",
                                                         "postinstall", "tree",       "items"};
constexpr std::array<std::string_view, 2> keysOfItem{"source", "destination"};
constexpr std::string_view schemaKey = "$schema";

std::string quoted(const std::string& text) { return "“" + text + "”"; }

class Reader {
public:
    Reader(std::string_view contents, const std::string& path)
        : m_contents(contents), m_path(path), m_folder(kz::deletingLastPathComponent(path)) {}

    Project read() {
        LocatedValue root;
        try {
            root = parseLocatedJson(m_contents);
        } catch (const JsonProblem& problem) {
            throw ProjectProblems({placeOf(problem.offset()) + problem.what()});
        }
        if (root.kind != JsonKind::object) {
            throw ProjectProblems({m_path + ": has to be an object, “{ … }”, and is " + nameOfKind(root.kind)});
        }
        readMembers(root, keysOfProject, "");
        readProject(root);
        if (!m_problems.empty()) {
            throw ProjectProblems(std::move(m_problems));
        }
        return std::move(m_project);
    }

private:
    std::string placeOf(std::size_t offset) const {
        return m_path + ":" + std::to_string(lineOf(m_contents, offset)) + ": ";
    }

    void complain(const LocatedValue& value, const std::string& words) {
        m_problems.push_back(placeOf(value.offset) + words);
        if (m_problems.size() == mostProblems) {
            m_problems.push_back(m_path + ": more may be wrong; mend these first");
            throw ProjectProblems(std::move(m_problems));
        }
    }

    // Keys that are unknown or stand twice.
    void readMembers(const LocatedValue& object, std::span<const std::string_view> known, const std::string& within) {
        std::set<std::string> seen;
        for (const auto& [key, value] : object.members) {
            const std::string name = within + key;
            if (!seen.insert(key).second) {
                complain(value, quoted(name) + " stands there twice; leave out one");
            } else if (std::ranges::find(known, key) == known.end() && !(within.empty() && key == schemaKey)) {
                const auto nearest = nearestName(key, known);
                complain(value, quoted(name) + " is unknown" +
                                    (nearest ? "; is " + quoted(within + *nearest) + " meant?" : ""));
            }
        }
    }

    static const LocatedValue* find(const LocatedValue& object, std::string_view key) {
        const auto found = std::ranges::find(object.members, key, &LocatedMember::key);
        return found == object.members.end() ? nullptr : &found->value;
    }

    bool isOfKind(const LocatedValue& value, JsonKind kind, const std::string& key) {
        if (value.kind == kind) {
            return true;
        }
        const bool isUnquoted = kind == JsonKind::text && value.kind == JsonKind::number;
        complain(value, "“" + key + "” has to be " + nameOfKind(kind) + ", and is " + nameOfKind(value.kind) +
                            (isUnquoted ? "; write it in quotes" : ""));
        return false;
    }

    // A text without a NUL, which nothing could be called.
    std::optional<std::string> textOf(const LocatedValue& object, const char* key, const std::string& within = {}) {
        const LocatedValue* const value = find(object, key);
        if (value == nullptr || !isOfKind(*value, JsonKind::text, within + key)) {
            return std::nullopt;
        }
        if (value->text.find('\0') != std::string::npos) {
            complain(*value, "“" + within + key + "” holds a NUL");
            return std::nullopt;
        }
        return value->text;
    }

    std::optional<std::string> pathOf(const LocatedValue& object, const char* key, const std::string& within = {}) {
        auto path = textOf(object, key, within);
        if (path && path->empty()) {
            complain(*find(object, key), "“" + within + key + "” is empty; leave the key out where there is none");
            return std::nullopt;
        }
        if (path && !path->starts_with('/') && !m_folder.empty()) {
            path = kz::appendPathComponent(m_folder, *path);
        }
        return path;
    }

    void readProject(const LocatedValue& root) {
        m_project.name = textOf(root, "name").value_or("");
        m_project.version = textOf(root, "version").value_or("");
        m_project.author = textOf(root, "author").value_or("");
        m_project.identifier = textOf(root, "identifier").value_or("");
        m_project.agreement = pathOf(root, "agreement");
        m_project.background = pathOf(root, "background");
        m_project.preinstall = pathOf(root, "preinstall");
        m_project.postinstall = pathOf(root, "postinstall");
        m_project.tree = pathOf(root, "tree");
        const LocatedValue* const branding = find(root, "branding");
        if (branding != nullptr && isOfKind(*branding, JsonKind::boolean, "branding")) {
            m_project.removesBranding = !branding->flag;
        }
        const LocatedValue* const items = find(root, "items");
        if (items != nullptr && isOfKind(*items, JsonKind::list, "items")) {
            for (std::size_t at = 0; at < items->list.size(); ++at) {
                readItem(items->list[at], "items[" + std::to_string(at) + "]");
            }
        }
        const LocatedValue* const schema = find(root, schemaKey);
        if (schema != nullptr) {
            (void)isOfKind(*schema, JsonKind::text, std::string(schemaKey));
        }
    }

    void readItem(const LocatedValue& item, const std::string& name) {
        if (!isOfKind(item, JsonKind::object, name)) {
            return;
        }
        const std::string within = name + ".";
        readMembers(item, keysOfItem, within);
        for (const std::string_view key : keysOfItem) {
            if (find(item, key) == nullptr) {
                complain(item, "“" + within + std::string(key) + "” is missing");
            }
        }
        auto source = pathOf(item, "source", within);
        auto destination = textOf(item, "destination", within);
        if (source && destination) {
            m_project.items.push_back({std::move(*source), std::move(*destination)});
        }
    }

    std::string_view m_contents;
    const std::string& m_path;
    std::string m_folder;
    std::vector<std::string> m_problems;
    Project m_project;
};

// Why a file could not be read as a whole.
std::string objectionTo(const std::string& path) {
    auto& files = *platform::host().files;
    if (!files.fileExists(path)) {
        return "is not there";
    }
    if (files.isFolder(path)) {
        return "is a folder; name the project file in it";
    }
    const auto attributes = files.attributes(path);
    if (attributes && attributes->type == platform::FileType::other) {
        return "is a pipe, a socket or a device, and no project file";
    }
    if (attributes && attributes->size > largestFile) {
        return "is larger than 1 MiB, and no project file";
    }
    return "cannot be read";
}

}  // namespace

Project parseProject(std::string_view contents, const std::string& path) { return Reader(contents, path).read(); }

Project readProjectFile(const std::string& path) {
    const auto contents = platform::host().files->readFile(path, largestFile);
    if (!contents) {
        throw ProjectProblems({path + ": " + objectionTo(path)});
    }
    return parseProject(*contents, path);
}

std::span<const std::string_view> projectKeys() { return keysOfProject; }
std::span<const std::string_view> itemKeys() { return keysOfItem; }

}  // namespace wickfield_bundle
