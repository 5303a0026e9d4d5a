#include <nlohmann/json.hpp>

#include "lib/base/Text.h"
#include "tools/wickfield-bundle/NameBytes.h"
#include "tools/wickfield-bundle/show/PlanReport.h"
#include "tools/wickfield-bundle/show/PlanText.h"

namespace wickfield_bundle {

namespace {

using Json = nlohmann::ordered_json;

std::string dumped(const Json& json) { return json.dump(-1, ' ', true, Json::error_handler_t::replace); }

Json pathOrNull(const std::optional<std::string>& path) { return path ? Json(*path) : Json(nullptr); }

Json jsonOf(const std::optional<PlannedScript>& script) {
    return script ? Json{{"source", script->source}, {"interpreter", script->interpreter}, {"canRun", script->canRun}}
                  : Json(nullptr);
}

// Under the key, and its bytes beside it where it is no UTF-8.
void addPath(Json& json, const std::string& key, const std::optional<std::string>& path) {
    json[key] = pathOrNull(path);
    if (path && !kz::isUTF8(*path)) {
        json[key + "Bytes"] = hexadecimal(*path);
    }
}

Json jsonOf(const PlannedItem& item) {
    Json json;
    addPath(json, "source", item.source);
    addPath(json, "destination", item.destination);
    json["kind"] = nameOf(item.kind);
    json["state"] = nameOf(item.state);
    json["administrator"] = item.needsAdministrator;
    json["reason"] = item.reason;
    json["files"] = item.files;
    json["bytes"] = item.bytes;
    return json;
}

Json jsonOf(const std::string& path) {
    Json json;
    addPath(json, "path", path);
    return json;
}

Json jsonOf(const PlanTotals& totals, std::size_t items) {
    return {{"items", items},
            {"new", totals.added},
            {"replaced", totals.replaced},
            {"refused", totals.refused},
            {"unknown", totals.unknown},
            {"administrator", totals.needAdministrator},
            {"files", totals.files},
            {"bytes", totals.bytes}};
}

// One element to a line, and never all of them in memory.
template <typename Elements>
void printArray(const char* name, const Elements& elements, const Printer& print) {
    print(std::string("  \"") + name + "\": [");
    const char* separator = "\n";
    for (const auto& element : elements) {
        print(separator + ("    " + dumped(jsonOf(element))));
        separator = ",\n";
    }
    print(elements.empty() ? "],\n" : "\n  ],\n");
}

}  // namespace

void printJson(const Plan& plan, const Printer& print) {
    const auto member = [&](const char* name, const Json& value, const char* end = ",\n") {
        print(std::string("  \"") + name + "\": " + dumped(value) + end);
    };
    print("{\n");
    member("format", 1);
    member("bundle", plan.bundle);
    member("name", plan.name);
    member("version", plan.version);
    member("author", plan.author);
    member("home", pathOrNull(plan.home));
    member("preinstall", jsonOf(plan.before));
    member("postinstall", jsonOf(plan.after));
    printArray("items", plan.items, print);
    printArray("folders", plan.folders, print);
    printArray("passedOver", plan.passedOver, print);
    member("totals", jsonOf(totalsOf(plan), plan.items.size()), "\n");
    print("}\n");
}

}  // namespace wickfield_bundle
