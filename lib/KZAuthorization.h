#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/Authorization.h"

enum class WithGUI { no, yes };
enum class Async { no, yes };

class KZAuthorization {
public:
    static KZAuthorization* sharedController();
    static KZAuthorization* sharedController(WithGUI gui);
    static KZAuthorization* alloc();

    bool isAuthorized() const;
    bool canAuthorize() const;
    bool authStart();
    void authEnd();

    std::int32_t authExecTask(const std::string& tool, const std::vector<std::string>& parameters);
    std::int32_t authExecTask(const std::string& tool, const std::vector<std::string>& parameters, Async async);
    bool authTrashFile(const std::string& path);
    bool authRemoveFile(const std::string& path);
    bool authCreateDir(const std::string& path);
    bool authCopyFile(const std::optional<std::string>& source, const std::optional<std::string>& toPath);
    bool authMoveFile(const std::optional<std::string>& source, const std::optional<std::string>& toPath);
};
