#include "platform/linux/rights/helper/PathWalk.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

namespace platform::rights {

namespace {

constexpr int mostLinks = 40;
constexpr int lookOnly = O_PATH | O_NOFOLLOW | O_CLOEXEC;

bool isWritableByOthers(const struct stat& folder) { return (folder.st_mode & (S_IWGRP | S_IWOTH)) != 0; }

std::vector<std::string> componentsOf(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (end > 0) {
            components.emplace_back(path.substr(0, end));
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return components;
}

class Walker {
public:
    explicit Walker(PathWalk::Ends ends) : m_ends(ends) {}

    std::variant<PathWalk, int> run(const std::string& path);

private:
    // A name to go to, or, at the end of a link that is not to be trusted, whose folder must have been reached there.
    struct Step {
        std::string name;
        std::optional<uid_t> owner;
    };

    int prepare(const std::string& path);
    int startAtRoot();
    int enter(posix::Descriptor folder);
    int noteForeign();
    int take(const Step& step);
    int goTo(const std::string& name);
    int follow(const posix::Descriptor& link);
    int endEarly();
    void push(const std::vector<std::string>& names);
    bool isLast() const;
    void noteRulersOf(const struct stat& item);
    void addRuler(uid_t user);

    const PathWalk::Ends m_ends;
    PathWalk m_walk;
    struct stat m_folder {};
    std::vector<Step> m_steps;  // the next is at the back
    int m_links = 0;
};

int Walker::prepare(const std::string& path) {
    auto components = componentsOf(path);
    const bool strays = std::ranges::any_of(components, [](const auto& name) { return name == "." || name == ".."; });
    if (!path.starts_with('/') || strays) {
        return EINVAL;
    }
    if (m_ends == PathWalk::Ends::atParent) {
        if (components.empty()) {
            return EINVAL;
        }
        components.pop_back();
    }
    push(components);
    return startAtRoot();
}

std::variant<PathWalk, int> Walker::run(const std::string& path) {
    int error = prepare(path);
    while (error == 0 && !m_steps.empty()) {
        const Step step = std::move(m_steps.back());
        m_steps.pop_back();
        error = take(step);
    }
    if (error != 0) {
        return error;
    }
    if (m_folder.st_uid != 0) {
        addRuler(m_folder.st_uid);
    } else if (isWritableByOthers(m_folder)) {
        m_walk.ruler.reset();
    }
    if (m_ends == PathWalk::Ends::atParent) {
        m_walk.item.reset();
    }
    return std::move(m_walk);
}

int Walker::startAtRoot() { return enter(posix::Descriptor(::open("/", lookOnly | O_DIRECTORY))); }

int Walker::enter(posix::Descriptor folder) {
    if (!folder || ::fstat(folder.get(), &m_folder) != 0) {
        return errno;
    }
    m_walk.folder = std::move(folder);
    m_walk.item = m_folder;
    if (m_walk.isRootsOwn && (m_folder.st_uid != 0 || isWritableByOthers(m_folder))) {
        m_walk.isRootsOwn = false;
        return noteForeign();
    }
    return 0;
}

int Walker::noteForeign() {
    m_walk.foreign.reset(::fcntl(m_walk.folder.get(), F_DUPFD_CLOEXEC, 0));
    std::for_each(m_steps.rbegin(), m_steps.rend(),
                  [this](const Step& step) { m_walk.beyondForeign.push_back(step.name); });
    return m_walk.foreign ? 0 : errno;
}

int Walker::take(const Step& step) {
    if (step.owner) {
        return m_folder.st_uid == *step.owner ? 0 : EPERM;
    }
    if (!m_walk.endsInFolder()) {
        return ENOTDIR;
    }
    if (step.name == ".") {
        return 0;
    }
    if (step.name == "..") {
        return enter(posix::Descriptor(::openat(m_walk.folder.get(), "..", lookOnly | O_DIRECTORY)));
    }
    return goTo(step.name);
}

int Walker::goTo(const std::string& name) {
    posix::Descriptor item(::openat(m_walk.folder.get(), name.c_str(), lookOnly));
    if (!item) {
        const bool mayBeMissing = isLast() ? m_ends != PathWalk::Ends::atParent : m_ends == PathWalk::Ends::atDeepest;
        return errno == ENOENT && mayBeMissing ? endEarly() : errno;
    }
    struct stat found {};
    if (::fstat(item.get(), &found) != 0) {
        return errno;
    }
    noteRulersOf(found);
    if (S_ISLNK(found.st_mode)) {
        return follow(item);
    }
    if (S_ISDIR(found.st_mode)) {
        return enter(std::move(item));
    }
    m_walk.item = found;
    return isLast() && m_ends != PathWalk::Ends::atParent ? 0 : ENOTDIR;
}

// Links that led here are still held to the folder in which the missing item would be made.
int Walker::endEarly() {
    m_walk.item.reset();
    std::erase_if(m_steps, [](const Step& step) { return !step.owner; });
    return 0;
}

int Walker::follow(const posix::Descriptor& link) {
    if (++m_links > mostLinks) {
        return ELOOP;
    }
    std::array<char, PATH_MAX> text;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
    const ssize_t length = ::readlinkat(link.get(), "", text.data(), text.size());
    if (length < 0) {
        return errno;
    }
    if (length == 0) {
        return ENOENT;
    }
    if (m_walk.ruler != uid_t{0}) {
        if (!m_walk.ruler) {
            return EPERM;
        }
        m_steps.push_back({.name = {}, .owner = m_walk.ruler});
    }
    const std::string_view target(text.data(), static_cast<std::size_t>(length));
    push(componentsOf(target));
    return target.starts_with('/') ? startAtRoot() : 0;
}

void Walker::push(const std::vector<std::string>& names) {
    std::for_each(names.rbegin(), names.rend(),
                  [this](const auto& name) { m_steps.push_back({.name = name, .owner = {}}); });
}

bool Walker::isLast() const {
    return std::ranges::all_of(m_steps, [](const Step& step) { return step.owner.has_value(); });
}

void Walker::noteRulersOf(const struct stat& item) {
    if (m_folder.st_uid != 0) {
        addRuler(m_folder.st_uid);
    } else if (isWritableByOthers(m_folder)) {
        if (item.st_uid != 0) {
            addRuler(item.st_uid);
        } else if ((m_folder.st_mode & S_ISVTX) == 0) {
            m_walk.ruler.reset();
        }
    }
    if (S_ISLNK(item.st_mode) && item.st_uid != 0) {
        addRuler(item.st_uid);
    }
}

void Walker::addRuler(uid_t user) {
    if (m_walk.ruler == uid_t{0}) {
        m_walk.ruler = user;
    } else if (m_walk.ruler != user) {
        m_walk.ruler.reset();
    }
}

}  // namespace

std::variant<PathWalk, int> walk(const std::string& path, PathWalk::Ends ends) { return Walker(ends).run(path); }

bool isBelow(const posix::Descriptor& folder, const posix::Descriptor& above) {
    struct stat searched {};
    struct stat here {};
    struct stat before {};
    if (::fstat(above.get(), &searched) != 0) {
        return false;
    }
    posix::Descriptor current(::openat(folder.get(), ".", lookOnly | O_DIRECTORY));
    while (current && ::fstat(current.get(), &here) == 0) {
        if (here.st_dev == searched.st_dev && here.st_ino == searched.st_ino) {
            return true;
        }
        if (here.st_dev == before.st_dev && here.st_ino == before.st_ino) {
            return false;
        }
        before = here;
        current.reset(::openat(current.get(), "..", lookOnly | O_DIRECTORY));
    }
    return false;
}

}  // namespace platform::rights
