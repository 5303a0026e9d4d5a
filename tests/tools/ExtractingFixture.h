#pragma once

#include <string>

#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/TreeExtractor.h"
#include "tests/tools/ToolsFixture.h"
#include "tests/tools/ZipMaker.h"

// Unpacks archives made by the test into the folder "out".
class Extracting : public ToolsFixture {
protected:
    // Empty when it went well.
    std::string extract(const std::string& bytes, const platform::linux_host::ExtractionLimits& limits = {}) {
        write("a.zip", bytes);
        try {
            platform::linux_host::extractArchive(place / "a.zip", place / "out", limits);
        } catch (const platform::linux_host::ToolFailure& failure) {
            return failure.what();
        }
        return {};
    }
    std::string extract(const ZipMaker& zip, const platform::linux_host::ExtractionLimits& limits = {}) {
        return extract(zip.bytes(), limits);
    }
    // Says so, and leaves nothing but the archive.
    void expectRefused(const ZipMaker& zip, const std::string& reason,
                       const platform::linux_host::ExtractionLimits& limits = {}) {
        EXPECT_THAT(extract(zip, limits), testing::HasSubstr(reason));
        EXPECT_THAT(tree(), testing::ElementsAre("a.zip"));
    }
};
