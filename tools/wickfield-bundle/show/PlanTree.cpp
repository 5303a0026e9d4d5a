#include <map>
#include <memory>
#include <vector>

#include "platform/linux/services/ConsoleText.h"
#include "tools/commandline/Streams.h"
#include "tools/wickfield-bundle/check/ReportText.h"
#include "tools/wickfield-bundle/show/PlanReport.h"
#include "tools/wickfield-bundle/show/PlanText.h"

namespace wickfield_bundle {

namespace {

using platform::linux_host::consoleLine;

struct Node {
    std::map<std::string, std::unique_ptr<Node>, std::less<>> children;
    std::vector<const PlannedItem*> items;  // two, where two items have one destination
    bool isMade = false;

    Node& child(std::string_view name) {
        const auto found = children.find(name);
        return *(found != children.end() ? found : children.emplace(name, std::make_unique<Node>()).first)->second;
    }
};

Node& nodeAt(Node& root, std::string_view path) {
    Node* node = &root;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (end > 0) {
            node = &node->child(path.substr(0, end));
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return *node;
}

class TreePrinter {
public:
    TreePrinter(Drawing drawing, std::size_t columns, const Printer& print)
        : m_branch(drawing == Drawing::unicode ? "├── " : "|-- "),
          m_lastBranch(drawing == Drawing::unicode ? "└── " : "`-- "),
          m_line(drawing == Drawing::unicode ? "│   " : "|   "),
          m_columns(columns),
          m_print(print) {}

    // Paths are at most as long as the system allows, which bounds the depth.
    void printBelow(const Node& node, const std::string& margin) const {
        for (auto child = node.children.begin(); child != node.children.end(); ++child) {
            const bool isLast = std::next(child) == node.children.end();
            printChild(child->first, *child->second, margin, isLast);
        }
    }

private:
    void printChild(std::string name, const Node& child, const std::string& margin, bool isLast) const {
        const Node* node = &child;
        while (node->items.empty() && node->children.size() == 1 && node->children.begin()->second->items.empty()) {
            const auto& [below, next] = *node->children.begin();
            name += "/" + below;
            node = next.get();
        }
        const std::string inner = margin + (isLast ? "    " : m_line);
        m_print(margin + (isLast ? m_lastBranch : m_branch) + consoleLine(name));
        if (node->items.empty()) {
            m_print(std::string("/") + (node->isMade ? "  (new folder)" : "") + '\n');
        }
        bool isFirst = true;
        for (const PlannedItem* item : node->items) {
            m_print((isFirst ? "" : inner) + "  " + tintedName(item->state) + ", " +
                    (item->kind == ItemKind::package ? counted(item->files, "file") + ", " : "") +
                    sizeText(item->bytes) + '\n');
            isFirst = false;
            printNote(*item, inner);
        }
        printBelow(*node, inner);
    }

    void printNote(const PlannedItem& item, const std::string& margin) const {
        const std::string note = noteOn(item);
        const std::size_t taken = columnsOf(margin) + 2;
        std::string lines = note.empty() ? "" : paragraph(note, 0, m_columns > taken + 20 ? m_columns - taken : 0);
        for (std::size_t end = 0; !lines.empty(); lines.erase(0, end + 1)) {
            end = lines.find('\n');
            m_print(margin + "  " + lines.substr(0, end) + '\n');
        }
    }

    std::string m_branch;
    std::string m_lastBranch;
    std::string m_line;
    std::size_t m_columns;
    const Printer& m_print;
};

}  // namespace

void printTree(const Plan& plan, Drawing drawing, std::size_t columns, const Printer& print) {
    Node disk;
    Node elsewhere;
    for (const PlannedItem& item : plan.items) {
        const bool isOnDisk = item.destination && item.destination->starts_with('/');
        nodeAt(isOnDisk ? disk : elsewhere, isOnDisk ? *item.destination : item.path).items.push_back(&item);
    }
    for (const std::string& folder : plan.folders) {
        nodeAt(disk, folder).isMade = true;
    }
    print(headText(plan, columns));
    const TreePrinter printer(drawing, columns, print);
    if (!disk.children.empty()) {
        print("/\n");
        printer.printBelow(disk, "");
    }
    if (!elsewhere.children.empty()) {
        print("nowhere that is known\n");
        printer.printBelow(elsewhere, "");
    }
    print(footText(plan, columns));
}

}  // namespace wickfield_bundle
