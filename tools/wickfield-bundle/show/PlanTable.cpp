#include <algorithm>
#include <vector>

#include "platform/linux/services/ConsoleText.h"
#include "tools/commandline/Streams.h"
#include "tools/wickfield-bundle/check/ReportText.h"
#include "tools/wickfield-bundle/show/PlanReport.h"
#include "tools/wickfield-bundle/show/PlanText.h"

namespace wickfield_bundle {

namespace {

constexpr std::size_t widestColumn = 64;  // longer destinations push what follows them aside
constexpr std::size_t noteIndent = 12;

struct Row {
    const PlannedItem* item;
    std::string size;
    std::string destination;
    std::string source;  // in the tree; "" where the destination tells it
};

std::string blanks(std::size_t wanted, std::size_t taken) {
    return std::string(wanted > taken ? wanted - taken : 0, ' ');
}

std::vector<Row> rowsOf(const Plan& plan) {
    std::vector<Row> rows;
    for (const PlannedItem& item : plan.items) {
        const std::string destination = item.destination.value_or("nowhere");
        rows.push_back({.item = &item,
                        .size = sizeText(item.bytes),
                        .destination = platform::linux_host::consoleLine(destination),
                        .source = destination == item.path ? "" : platform::linux_host::consoleLine(item.path)});
    }
    return rows;
}

}  // namespace

void printTable(const Plan& plan, std::size_t columns, const Printer& print) {
    const auto rows = rowsOf(plan);
    std::size_t size = std::string_view("SIZE").size();
    std::size_t destination = std::string_view("DESTINATION").size();
    bool hasSources = false;
    for (const Row& row : rows) {
        size = std::max(size, row.size.size());
        hasSources = hasSources || !row.source.empty();
        if (const std::size_t width = columnsOf(row.destination); width <= widestColumn) {
            destination = std::max(destination, width);
        }
    }
    print(headText(plan, columns));
    if (!rows.empty()) {
        print(commandline::boldForOutput("STATE     " + blanks(size, 4) + "SIZE  DESTINATION" +
                                         (hasSources ? blanks(destination, 11) + "  IN THE TREE" : "")) +
              '\n');
    }
    for (const Row& row : rows) {
        const ItemState state = row.item->state;
        print(tintedName(state) + blanks(8, nameOf(state).size()) + "  " + blanks(size, row.size.size()) + row.size +
              "  " + row.destination +
              (row.source.empty() ? "" : blanks(destination, columnsOf(row.destination)) + "  " + row.source) + '\n');
        if (const std::string note = noteOn(*row.item); !note.empty()) {
            print(paragraph(note, noteIndent, columns));
        }
    }
    print(footText(plan, columns));
}

}  // namespace wickfield_bundle
