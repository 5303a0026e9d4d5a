// Trees of files that installations and copies are measured with.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

namespace fs = std::filesystem;

inline void writeFile(const fs::path& path, std::size_t bytes, std::mt19937_64& random) {
    std::string block(std::min<std::size_t>(bytes, 1U << 20U), '\0');
    std::ofstream file(path, std::ios::binary);
    for (std::size_t written = 0; written < bytes; written += block.size()) {
        for (std::size_t at = 0; at + 8 <= block.size(); at += 8) {
            const auto value = random();
            block.replace(at, 8, reinterpret_cast<const char*>(&value), 8);
        }
        file.write(block.data(), static_cast<std::streamsize>(std::min(block.size(), bytes - written)));
    }
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

// Many small files: per 100 files 90 of 4 KiB, 9 of 64 KiB and 1 of 2 MiB, 20 to a folder.
inline void makeManyFiles(const fs::path& root, int count) {
    std::mt19937_64 random(1);
    for (int file = 0; file < count; ++file) {
        const auto folder = root / ("folder " + std::to_string(file / 20));
        if (file % 20 == 0) {
            fs::create_directories(folder);
        }
        const int kind = file % 100;
        const std::size_t bytes = kind == 99 ? 2U << 20U : kind >= 90 ? 64U << 10U : 4U << 10U;
        writeFile(folder / ("file " + std::to_string(file) + ".bin"), bytes, random);
    }
}

// Few large files.
inline void makeLargeFiles(const fs::path& root, int count, std::size_t megabytes) {
    std::mt19937_64 random(2);
    fs::create_directories(root);
    for (int file = 0; file < count; ++file) {
        writeFile(root / ("large " + std::to_string(file) + ".bin"), megabytes << 20U, random);
    }
}

// One file whose bytes look random, made as fast as it can be written.
inline void makeFile(const std::string& path, int megabytes) {
    std::ofstream file(path, std::ios::binary);
    std::vector<char> block(std::size_t{1} << 20U);
    unsigned value = 1;
    for (int written = 0; written < megabytes; ++written) {
        for (char& byte : block) {
            value = value * 1664525U + 1013904223U;
            byte = static_cast<char>(value >> 24U);
        }
        file.write(block.data(), static_cast<std::streamsize>(block.size()));
    }
}

}  // namespace bench
