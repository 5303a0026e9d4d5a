#include "tools/wickfield-bundle/check/MediaCheck.h"

#include <nlohmann/json.hpp>

#include "lib/base/PathText.h"
#include "platform/ports/Host.h"

namespace wickfield_bundle {

namespace {

constexpr std::chrono::seconds longestReading{10};
constexpr int cannotWork = 3;  // the helper's status where it finds no Qt to work with

MediaReport notChecked(std::string reason) {
    MediaReport report;
    report.reason = std::move(reason);
    return report;
}

MediaReport refused(std::string reason) {
    MediaReport report;
    report.outcome = MediaReport::Outcome::refused;
    report.reason = std::move(reason);
    return report;
}

std::size_t number(const nlohmann::json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_number_unsigned() ? found->get<std::size_t>() : 0;
}

MediaReport reportOf(const std::string& output) {
    const auto answer = nlohmann::json::parse(output, nullptr, false);
    const auto ok = answer.is_object() ? answer.find("ok") : answer.end();
    if (!answer.is_object() || ok == answer.end() || !ok->is_boolean()) {
        return notChecked("wickfield-media gave no answer");
    }
    if (!ok->get<bool>()) {
        const auto reason = answer.find("reason");
        return refused(reason != answer.end() && reason->is_string() ? reason->get<std::string>() : "it is damaged");
    }
    const auto complete = answer.find("complete");
    MediaReport report;
    report.outcome = MediaReport::Outcome::read;
    report.characters = number(answer, "characters");
    report.pictures = number(answer, "pictures");
    report.isComplete = complete == answer.end() || *complete != false;
    report.width = number(answer, "width");
    report.height = number(answer, "height");
    return report;
}

}  // namespace

MediaCheck::MediaCheck(const std::string& helper, Media media, const std::string& path)
    : m_run({.path = helper,
             .arguments = {media == Media::agreement ? "agreement" : "image", path},
             .environment = std::nullopt,
             .input = platform::ProcessOptions::Input::null,
             .output = platform::ProcessOptions::Output::pipe,
             .error = platform::ProcessOptions::Output::null},
            longestReading) {}

MediaReport MediaCheck::finish() {
    const TimedRun::Result result = m_run.finish();
    if (!result.started) {
        return notChecked("the program wickfield-media is missing");
    }
    if (result.timedOut) {
        return refused("reading it takes longer than ten seconds");
    }
    if (result.endedBySignal) {
        return refused("the program that reads it for the window ended of it");
    }
    if (result.status != 0) {
        return notChecked(result.status == cannotWork ? "Qt does not work here" : "wickfield-media failed");
    }
    return reportOf(result.output);
}

std::string mediaHelper() {
    const std::string folder = kz::deletingLastPathComponent(platform::host().bundle->executablePath());
    return kz::appendPathComponent(folder, "../libexec/wickfield/wickfield-media");
}

}  // namespace wickfield_bundle
