#include "tools/kzfile/ProgressBar.h"

#include <algorithm>
#include <utility>

#include "lib/KZFileManager/Queries.h"
#include "lib/base/Format.h"
#include "platform/linux/services/ConsoleText.h"
#include "tools/commandline/Streams.h"

namespace kzfile {

namespace {

constexpr std::size_t longestBar = 40;
constexpr std::size_t longestName = 30;

// Text that is ASCII for the most part; cut between characters.
std::string shortened(std::string text, std::size_t longest) {
    if (text.size() <= longest) {
        return text;
    }
    std::size_t end = longest - 3;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    text.resize(end);
    return text + "...";
}

}  // namespace

ProgressBar::ProgressBar(std::string name, std::uint64_t total, Wanted wanted)
    : m_name(shortened(platform::linux_host::consoleLine(name), longestName)),
      m_total(total),
      m_active(wanted == Wanted::yes && commandline::isErrorTerminal()) {
    const std::lock_guard lock(m_mutex);
    draw(figures());
}

void ProgressBar::show(std::uint64_t done) {
    const std::lock_guard lock(m_mutex);
    if (done > m_done) {
        m_done = std::min(done, m_total);
        draw(figures());
    }
}

void ProgressBar::showWork(const std::string& work) {
    const std::lock_guard lock(m_mutex);
    draw(work);
}

void ProgressBar::finish(const std::string& words) {
    const std::lock_guard lock(m_mutex);
    m_done = m_total;
    draw(words.empty() ? figures() : figures() + ", " + words);
    if (std::exchange(m_active, false)) {
        commandline::printErrorAsItIs("\n");
    }
}

void ProgressBar::takeAway() {
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_active, false)) {
        commandline::printErrorAsItIs("\r\033[K");
    }
}

std::string ProgressBar::figures() const {
    using KZFileManager::formatFileSize;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    std::string text = formatFileSize(static_cast<double>(m_done));
    if (m_done < m_total) {
        text += " of " + formatFileSize(static_cast<double>(m_total));
    }
    return m_done > 0 ? text + ", " + formatFileSize(static_cast<double>(m_done) / std::max(seconds, 1e-3)) + "/s"
                      : text;
}

void ProgressBar::draw(const std::string& words) {
    if (!m_active) {
        return;
    }
    const double part = m_total == 0 ? 1 : static_cast<double>(m_done) / static_cast<double>(m_total);
    const std::string percent = kz::format("%3i%%", static_cast<int>(part * 100));
    const std::size_t taken = m_name.size() + percent.size() + words.size() + 7;
    const std::size_t width = commandline::errorTerminalWidth() - 1;
    std::string line = m_name + "  ";
    if (taken + 5 <= width) {
        const std::size_t length = std::min(longestBar, width - taken);
        const auto full = static_cast<std::size_t>(part * static_cast<double>(length));
        line += '[' + std::string(full, '#') + std::string(length - full, '.') + "] ";
    }
    line += percent + "  " + words;
    commandline::printErrorAsItIs('\r' + shortened(line, std::max<std::size_t>(width, 4)) + "\033[K");
}

}  // namespace kzfile
