// Property lists of any form: whatever is read can be written, and reads back as the same.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/linux/services/propertylists/LinuxPropertyLists.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    platform::linux_host::LinuxPropertyLists lists;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the fuzzer hands over bytes
    const auto read = lists.parse({reinterpret_cast<const char*>(bytes), size});
    if (const auto* value = std::get_if<platform::PropertyValue>(&read)) {
        const auto written = lists.serialize(*value);
        const auto again = lists.parse(written);
        // Compared as text, since "not a number" is unequal to itself.
        if (!std::holds_alternative<platform::PropertyValue>(again) ||
            lists.serialize(std::get<platform::PropertyValue>(again)) != written) {
            std::abort();
        }
    }
    return 0;
}
