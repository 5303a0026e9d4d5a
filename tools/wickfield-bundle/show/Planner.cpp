#include "tools/wickfield-bundle/show/Planner.h"

#include <algorithm>
#include <set>
#include <utility>

#include "app/InstallationScripts.h"
#include "app/InstallationTree.h"
#include "app/InstallerSettings.h"
#include "app/UserPlaceholders.h"
#include "lib/KZLocalPaths.h"
#include "lib/base/Format.h"
#include "lib/base/PathText.h"
#include "platform/linux/services/LinuxMainBundle.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/Inventory.h"
#include "tools/wickfield-bundle/show/PlannedDisk.h"
#include "tools/wickfield-bundle/show/Rights.h"

namespace wickfield_bundle {

namespace {

using InstallationTree::Item;
using platform::FileType;

// Links between folders can make a tree without an end out of a few of them.
constexpr std::size_t mostItems = 2'000'000;
constexpr std::size_t mostFoldersAgain = 10'000;

struct Measure {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    bool isReadOnly = false;  // its owner may not write to it
    std::string obstacle;     // to copying it with this user's rights; "" when there is none
    bool holdsSpecials = false;
};

using Attributes = std::optional<platform::FileAttributes>;

bool isReadOnly(const Attributes& attributes) {
    constexpr unsigned ownerMayWrite = 0200;
    return attributes && (attributes->permissions & ownerMayWrite) == 0;
}

Measure measurePackage(const std::string& path) {
    Measure measure;
    const Inventory inventory = takeInventory(path);
    for (const InventoryEntry& entry : inventory.entries) {
        if (entry.type == FileType::folder) {
            continue;
        }
        ++measure.files;
        measure.bytes += entry.size;
        measure.holdsSpecials = measure.holdsSpecials || entry.type == FileType::other;
        if (entry.type == FileType::regular && measure.obstacle.empty() &&
            rightToRead(path + "/" + entry.path) != Right::granted) {
            measure.obstacle = "only an administrator may read " + entry.path + " in it";
        }
    }
    if (!inventory.unreadable.empty() && measure.obstacle.empty()) {
        measure.obstacle = "only an administrator may read " + inventory.unreadable.front().path + " in it";
    }
    if (measure.holdsSpecials && measure.obstacle.empty()) {
        measure.obstacle = "it holds a pipe, socket or device, which only an administrator's copy takes";
    }
    return measure;
}

Measure measureItem(const std::string& path, ItemKind kind, const Attributes& attributes) {
    Measure measure;
    if (kind == ItemKind::package) {
        measure = measurePackage(path);
    } else {
        measure.files = 1;
        measure.bytes = attributes ? attributes->size : 0;
    }
    if (kind == ItemKind::file && rightToRead(path) != Right::granted) {
        measure.obstacle = "only an administrator may read it";
    }
    measure.isReadOnly = kind != ItemKind::link && isReadOnly(attributes);
    return measure;
}

ItemKind kindOf(const Attributes& attributes) {
    switch (attributes ? attributes->type : FileType::regular) {
        case FileType::folder:
            return ItemKind::package;
        case FileType::symbolicLink:
            return ItemKind::link;
        case FileType::other:
            return ItemKind::special;
        case FileType::regular:
        case FileType::unknown:
            break;
    }
    return ItemKind::file;
}

class Planner {
public:
    explicit Planner(Plan& plan) : m_plan(plan) {}

    void walk() {
        const std::string tree = kz::appendPathComponent(m_plan.bundle, InstallationTree::pathInBundle);
        CountedFolders folders(*this);
        InstallationTree::visitItems(
            folders, tree, tree,
            [this](const Item& item) {
                take(item);
                return true;
            },
            [this](const Item& item) {
                countItem();
                m_plan.passedOver.push_back(inBundle(item.source));
            });
        explainEarlyLinks();
        m_plan.folders = m_disk.madeFolders();
        std::ranges::sort(m_plan.folders, comesBefore);
        std::ranges::sort(m_plan.passedOver, comesBefore);
        std::ranges::sort(m_plan.items, [](const PlannedItem& left, const PlannedItem& right) {
            const std::string& one = left.destination ? *left.destination : left.path;
            const std::string& other = right.destination ? *right.destination : right.path;
            return one != other ? comesBefore(one, other) : comesBefore(left.source, right.source);
        });
    }

private:
    class CountedFolders : public InstallationTree::Folders {
    public:
        explicit CountedFolders(Planner& planner) : m_planner(planner) {}

        std::optional<std::vector<platform::DirectoryEntry>> contents(const std::string& folder) override {
            m_planner.countFolder(folder);
            return Folders::contents(folder);
        }

    private:
        Planner& m_planner;
    };

    std::string inBundle(const std::string& source) const { return source.substr(m_plan.bundle.size() + 1); }

    void countItem() {
        if (++m_items > mostItems) {
            throw std::runtime_error("the tree has more than " + std::to_string(mostItems) + " items");
        }
    }

    void countFolder(const std::string& folder) {
        const auto identity = platform::host().files->identity(folder);
        if (identity && !m_folders.emplace(identity->device, identity->inode).second && ++m_again > mostFoldersAgain) {
            throw std::runtime_error(
                "the tree has no end that could be waited for: links lead to its folders again "
                "and again, as to " +
                folder);
        }
    }

    void take(const Item& item) {
        countItem();
        PlannedItem planned;
        planned.source = inBundle(item.source);
        planned.path = item.path;
        planned.destination = UserPlaceholders::replaced(item.path);
        const auto attributes = platform::host().files->attributes(item.source);
        planned.kind = kindOf(attributes);
        const Measure measure = measureItem(item.source, planned.kind, attributes);
        planned.files = measure.files;
        planned.bytes = measure.bytes;
        const auto verdict = attributes ? verdictOn(item.source, planned) : unreadable();
        if (!verdict.awaited.empty()) {
            m_earlyLinks.emplace_back(m_plan.items.size(), verdict.awaited);
        }
        planned.state = verdict.state;
        planned.needsAdministrator = verdict.needsAdministrator;
        planned.reason = verdict.reason;
        if (planned.state != ItemState::refused && !measure.obstacle.empty()) {
            planned.needsAdministrator = platform::host().identity->realUserID() != 0;
            planned.reason = measure.obstacle;
        }
        addQuestionForDate(planned, measure);
        m_plan.items.push_back(std::move(planned));
    }

    // The copy is given a fresh date, and the installer asks for an administrator where the user may not write to it.
    void addQuestionForDate(PlannedItem& item, const Measure& measure) const {
        const bool isLinkToForeign = item.kind == ItemKind::link && item.destination &&
                                     m_disk.isReadOnly(PlannedDisk::targetOf(fullPath(item), *item.destination));
        const bool isAsked = item.needsAdministrator || platform::host().identity->realUserID() == 0;
        if (item.state == ItemState::refused || isAsked || !(measure.isReadOnly || isLinkToForeign)) {
            return;
        }
        item.needsAdministrator = true;
        item.reason = std::string(isLinkToForeign ? "what it leads to" : "it") +
                      " is read-only, and only an administrator can give it a fresh date; it is installed without that "
                      "as well" +
                      (item.reason.empty() ? "" : "; ") + item.reason;
    }

    std::string fullPath(const PlannedItem& item) const { return kz::appendPathComponent(m_plan.bundle, item.source); }

    // Such as what lies deeper than any path of the system reaches.
    static PlannedDisk::Verdict unreadable() {
        return {.state = ItemState::refused,
                .needsAdministrator = false,
                .reason = "it cannot be looked at where it lies in the bundle",
                .awaited = {}};
    }

    PlannedDisk::Verdict verdictOn(const std::string& source, const PlannedItem& item) {
        if (!item.destination) {
            return {.state = ItemState::refused,
                    .needsAdministrator = false,
                    .reason = "nobody is there whose folder could be meant",
                    .awaited = {}};
        }
        if (!item.destination->starts_with('/')) {
            return {.state = ItemState::unknown,
                    .needsAdministrator = platform::host().identity->realUserID() != 0,
                    .reason =
                        "it lies at the very top of the tree, and so goes to whatever folder the installer is "
                        "started in",
                    .awaited = {}};
        }
        return m_disk.put(source, item.kind, *item.destination);
    }

    void explainEarlyLinks() {
        for (const auto& [item, target] : m_earlyLinks) {
            if (m_disk.exists(target)) {
                m_plan.items[item].reason += " (what it leads to is put there later, in the order of this file system)";
            }
        }
    }

    Plan& m_plan;
    PlannedDisk m_disk;
    std::vector<std::pair<std::size_t, std::string>> m_earlyLinks;  // numbers of items, and what they lead to
    std::size_t m_items = 0;
    std::size_t m_again = 0;                                      // folders that were there before
    std::set<std::pair<std::uint64_t, std::uint64_t>> m_folders;  // by device and inode
};

std::optional<PlannedScript> plannedScript(const std::string& name, const Plan& plan) {
    const auto script = InstallationScripts::find(platform::host().bundle->resourcePath(), name);
    if (!script) {
        return std::nullopt;
    }
    return PlannedScript{.source = script->path.substr(plan.bundle.size() + 1),
                         .interpreter = script->interpreter,
                         .canRun = platform::host().files->isExecutable(script->interpreter)};
}

void readSettings(Plan& plan) {
    const auto path = InstallerSettings::locate();
    if (!path) {
        throw NoInstaller("it has no " + std::string(InstallerSettings::fileName) + "." + InstallerSettings::fileType +
                          " among its resources: the installer calls itself damaged");
    }
    const auto settings = InstallerSettings::load(*path);
    plan.name = settings.pluginName();
    plan.version = settings.pluginVersion();
    plan.author = settings.author();
}

}  // namespace

Plan planInstallation(const std::string& bundle) {
    if (std::string whyNot; !isBundle(bundle, whyNot)) {
        throw NoInstaller(whyNot);
    }
    // The name of the program does not matter: only where it would lie.
    platform::linux_host::LinuxMainBundle resources(*platform::host().propertyLists, bundle + "/Contents/MacOS/-");
    platform::Host host = platform::host();
    host.bundle = &resources;
    const platform::ScopedHost scope(host);

    Plan plan;
    plan.bundle = bundle;
    plan.home = KZLocalPaths::userDirectory();
    readSettings(plan);
    if (!host.files->fileExists(kz::appendPathComponent(bundle, InstallationTree::pathInBundle))) {
        throw NoInstaller(std::string("it has no ") + InstallationTree::pathInBundle +
                          ": the installer calls itself damaged");
    }
    plan.before = plannedScript(InstallationScripts::before, plan);
    plan.after = plannedScript(InstallationScripts::after, plan);
    Planner(plan).walk();
    return plan;
}

PlanTotals totalsOf(const Plan& plan) {
    PlanTotals totals;
    for (const PlannedItem& item : plan.items) {
        switch (item.state) {
            case ItemState::added:
                ++totals.added;
                break;
            case ItemState::replaced:
                ++totals.replaced;
                break;
            case ItemState::refused:
                ++totals.refused;
                break;
            case ItemState::unknown:
                ++totals.unknown;
                break;
        }
        totals.needAdministrator += item.needsAdministrator ? 1 : 0;
        totals.files += item.files;
        totals.bytes += item.bytes;
    }
    return totals;
}

}  // namespace wickfield_bundle
