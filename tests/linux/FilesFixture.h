#pragma once

#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/services/files/LinuxFileManager.h"
#include "tests/fakes/FolderFixture.h"

// Real files in a folder of the test's own.
class FilesFixture : public FolderFixture {
protected:
    std::optional<std::string> attribute(const std::string& name, const char* key) const {
        std::string value(70'000, '\0');
        const ssize_t size = ::lgetxattr(at(name).c_str(), key, value.data(), value.size());
        value.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        return size < 0 ? std::nullopt : std::optional(value);
    }
    bool setAttribute(const std::string& name, const char* key, const std::string& value) const {
        return ::lsetxattr(at(name).c_str(), key, value.data(), value.size(), 0) == 0;
    }

    platform::linux_host::LinuxFileManager m_files;
};
