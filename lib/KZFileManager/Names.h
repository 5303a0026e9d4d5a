#pragma once

#include <optional>
#include <string>
#include <vector>

enum class SearchSubdirs { no, yes };

namespace KZFileManager {

std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern);
std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern,
                                                   const std::optional<std::string>& fromBasePath);
std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern,
                                                   const std::optional<std::string>& fromBasePath,
                                                   SearchSubdirs searchSubdirs);
std::string decodeWildcardPath(const std::string& pattern, const std::string& fromBasePath);
std::string validateFilename(const std::string& name);
std::string uniqueFilename(const std::string& path);

}  // namespace KZFileManager
